#pragma once

#include <cstdint>

#include "mpls/SharedEntityModule.h"
#include "runtime/vek/DvMMplsOut.h"

namespace VekMMplsOut {

// The module that takes a multicast packet out of an MPLS tunnel and hands it to its VRF's
// FIB: output gate 0 to the IPv4 FIB, gate 1 to the IPv6 FIB. One per VRF.
class MMplsOut final : public VekMMpls::SharedEntityModule<VekModules::DvMMplsOut> {
 public:
  static constexpr std::uint32_t ipv4FibGate = 0;
  static constexpr std::uint32_t ipv6FibGate = 1;

  MMplsOut(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
           Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair);
};

}  // namespace VekMMplsOut
