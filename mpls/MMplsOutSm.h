#pragma once

#include <string_view>

#include "mpls/SharedEntityModuleSm.h"
#include "mpls/VekMMplsOutModule.h"
#include "runtime/state/VrfName.h"

namespace VekMMplsOut {

// Owns a VRF's MPLS decapsulation module, "MMplsOut_" and the VRF name.
class MMplsOutSm final : public VekMMpls::SharedEntityModuleSm<MMplsOut> {
 public:
  static constexpr std::uint32_t maxOutGate = 2;

  // Creates the module with its counters; raises if it found no shared entity.
  MMplsOutSm(L3::VrfName vrfName, Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
             Lumo::Ptr<Vek::VekCommonSmData> vekcsd);
  std::string_view typeName() const override { return "VekMMplsOut::MMplsOutSm"; }

  // A plain string with no limit of its own: a VRF name of the longest kind gives a name
  // longer than any VRF name.
  static Lumo::String moduleName(const L3::VrfName& vrfName);
  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  void handleInitialized() override;

 private:
  const L3::VrfName vrfName_;
};

}  // namespace VekMMplsOut
