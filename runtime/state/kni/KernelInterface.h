#pragma once

#include <cstdint>

#include "runtime/state/IntfId.h"

namespace KernelNetInfo {

// One kernel network device of a namespace: its ifIndex, its flags as the kernel keeps them
// (bit 0 is "up") and the interface it stands for (the empty id for none). The empty
// Interface is "no such device".
struct Interface {
  static constexpr std::uint32_t upFlag = 1;

  std::uint32_t ifIndex = 0;
  std::uint32_t flags = 0;
  Lanx::IntfId intfId;

  bool up() const noexcept { return (flags & upFlag) != 0; }
  friend bool operator==(const Interface&, const Interface&) = default;
};

}  // namespace KernelNetInfo
