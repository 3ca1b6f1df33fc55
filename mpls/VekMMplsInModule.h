#pragma once

#include <cstdint>

#include "mpls/SharedEntityModule.h"
#include "runtime/vek/DvMMplsIn.h"

namespace VekMMpls {

// The module that puts a multicast packet into an MPLS tunnel; one per address family for
// the whole agent. Its single output gate leads to the fabric.
class MMplsIn final : public SharedEntityModule<VekModules::DvMMplsIn> {
 public:
  MMplsIn(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
          Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair);
};

}  // namespace VekMMpls
