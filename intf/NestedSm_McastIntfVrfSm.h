#pragma once

#include "intf/McastIntfVrfSmBase.h"

namespace VekL3Mcast {

// Follows the IPv4 multicast interfaces of one VRF for the interface tracker.
class NestedSm_McastIntfVrfSm : public McastIntfVrfSmBase {
 public:
  NestedSm_McastIntfVrfSm(McastIntfModuleSm* owner, Lumo::Ptr<Root const> root)
      : McastIntfVrfSmBase(owner, std::move(root)) {
    handleInitialized();
  }
  std::string_view typeName() const override { return "VekL3Mcast::NestedSm_McastIntfVrfSm"; }

  void handleInitialized() override { handleMcastVrf(); }
  void reviewMcastIntf(const L3::VrfName& vrfName, Lanx::IntfId intfId) {
    doSchedule(vrfName, intfId);
  }
  void handleMcastVrf() { doScheduleAll(); }
};

}  // namespace VekL3Mcast
