#pragma once

#include <array>
#include <string_view>

#include "runtime/vek/DvModuleCounters.h"

namespace VekModules {

// The shared entity of a VRF's MPLS decapsulation module.
class DvMMplsOut final : public DvModuleCounters {
 public:
  static constexpr std::array<std::string_view, 8> kCounterNames = {
      "Incorrect_Bos_Flag",   "No_Lfib_Route",   "Incorrect_ViaSet_Type", "No_Via",
      "Incorrect_Ether_Type", "Invalid_Ip_Type", "Ipv4_Counter",          "Ipv6_Counter"};

  DvMMplsOut() : DvModuleCounters(kCounterNames) {}
  std::string_view typeName() const override { return "VekModules::DvMMplsOut"; }
};

}  // namespace VekModules
