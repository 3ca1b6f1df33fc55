#pragma once

#include <string_view>

#include "mpls/SharedEntityModuleSm.h"
#include "mpls/VekMMplsInModule.h"
#include "runtime/state/AddressFamily.h"

namespace VekMMpls {

// Owns the agent's MPLS encapsulation module of one address family: "MMplsIn" for IPv4,
// "MMplsIn6" otherwise.
class MMplsInSm final : public SharedEntityModuleSm<MMplsIn> {
 public:
  static constexpr std::uint32_t maxOutGate = 1;

  // Creates the module with its counters; raises if it found no shared entity.
  MMplsInSm(Lanx::AddressFamily af, Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
            Lumo::Ptr<Vek::VekCommonSmData> vekcsd);
  std::string_view typeName() const override { return "VekMMpls::MMplsInSm"; }

  static Lumo::String moduleName(Lanx::AddressFamily af);
  Lanx::AddressFamily af() const noexcept { return af_; }
  void handleInitialized() override;

 private:
  const Lanx::AddressFamily af_;
};

}  // namespace VekMMpls
