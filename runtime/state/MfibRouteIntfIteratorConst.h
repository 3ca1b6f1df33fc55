#pragma once

#include <cstdint>

#include "runtime/lumo/Assert.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/MfibRouteIntf.h"

namespace Vash::Multicast::Fib {

// Walks the interface list of one route:
//   for (auto it = route.oifIteratorConst(); !it.done(); it.next()) ... it.intfId(), it.flags()
// The route must stay as it is while the walk lasts.
class RouteIntfIteratorConst {
 public:
  RouteIntfIteratorConst(const RouteIntf* first, const RouteIntf* end) noexcept
      : at_(first), end_(end) {}

  bool done() const noexcept { return at_ == end_; }
  explicit operator bool() const noexcept { return !done(); }
  Lanx::IntfId intfId() const {
    QEL_ASSERT(!done(), "iter_");
    return at_->intfId;
  }
  std::uint8_t flags() const {
    QEL_ASSERT(!done(), "iter_");
    return at_->flags;
  }
  void next() {
    QEL_ASSERT(!done(), "iter_");
    ++at_;
  }

 private:
  const RouteIntf* at_;
  const RouteIntf* end_;
};

}  // namespace Vash::Multicast::Fib
