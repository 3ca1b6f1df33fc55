#pragma once

#include <cstdint>

#include "runtime/lumo/String.h"

namespace Interface {

// The kernel device that stands for an interface in a namespace: its name, ifIndex and
// flags (bit 0 is "up"). The empty value is "no device".
struct DeviceIntfStatus {
  Lumo::String deviceName;
  std::uint32_t ifIndex = 0;
  std::uint32_t flags = 0;

  friend bool operator==(const DeviceIntfStatus&, const DeviceIntfStatus&) = default;
};

}  // namespace Interface
