#pragma once

#include <array>
#include <string_view>

#include "runtime/vek/DvModuleCounters.h"

namespace VekModules {

// The shared entity of the MPLS encapsulation module.
class DvMMplsIn final : public DvModuleCounters {
 public:
  static constexpr std::array<std::string_view, 9> kCounterNames = {
      "Mpls_Core_Routed", "No_Src_Intf_Md", "No_Encap_Status",
      "No_Encap_Tunnel",  "No_Tunnel_Mrib", "No_Tunnel",
      "No_Label",         "Arp_Failure",    "Unsupported_Platform"};

  DvMMplsIn() : DvModuleCounters(kCounterNames) {}
  std::string_view typeName() const override { return "VekModules::DvMMplsIn"; }
};

}  // namespace VekModules
