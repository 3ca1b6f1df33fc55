#pragma once

#include <cstdint>
#include <string_view>

#include "runtime/qel/Entity.h"
#include "runtime/qel/ValueAttr.h"

namespace Routing::KernelMfib {

// The kernel multicast FIB limits of one VRF and address family: how many unresolved
// routes the kernel caches and how many packets it buffers for each. Each change
// publishes its attribute.
class Config : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kMaxUnresolvedCacheEntries = 1, kMaxUnresolvedPktBuffers = 2 };

  Config() = default;
  Config(std::uint32_t maxUnresolvedCacheEntries, std::uint32_t maxUnresolvedPktBuffers) {
    maxUnresolvedCacheEntriesIs(maxUnresolvedCacheEntries);
    maxUnresolvedPktBuffersIs(maxUnresolvedPktBuffers);
  }
  std::string_view typeName() const override { return "Routing::KernelMfib::Config"; }

  std::uint32_t maxUnresolvedCacheEntries() const noexcept {
    return maxUnresolvedCacheEntries_.get();
  }
  void maxUnresolvedCacheEntriesIs(std::uint32_t entries) {
    maxUnresolvedCacheEntries_.is(*this, entries);
  }
  std::uint32_t maxUnresolvedPktBuffers() const noexcept { return maxUnresolvedPktBuffers_.get(); }
  void maxUnresolvedPktBuffersIs(std::uint32_t buffers) {
    maxUnresolvedPktBuffers_.is(*this, buffers);
  }

 private:
  Qel::ValueAttr<std::uint32_t, kMaxUnresolvedCacheEntries> maxUnresolvedCacheEntries_;
  Qel::ValueAttr<std::uint32_t, kMaxUnresolvedPktBuffers> maxUnresolvedPktBuffers_;
};

}  // namespace Routing::KernelMfib
