#pragma once

#include "intf/McastIntfVrfSmBase.h"

namespace VekL3Mcast {

// Follows the IPv6 multicast interfaces of one VRF for the interface tracker.
class NestedSm_McastIntfVrfSm6 : public McastIntfVrfSmBase {
 public:
  NestedSm_McastIntfVrfSm6(McastIntfModuleSm* owner, Lumo::Ptr<Root const> root)
      : McastIntfVrfSmBase(owner, std::move(root)) {
    handleInitialized();
  }
  std::string_view typeName() const override { return "VekL3Mcast::NestedSm_McastIntfVrfSm6"; }

  void handleInitialized() override { handleMcastVrf6(); }
  void reviewMcastIntf6(const L3::VrfName& vrfName, Lanx::IntfId intfId) {
    doSchedule(vrfName, intfId);
  }
  void handleMcastVrf6() { doScheduleAll(); }
};

}  // namespace VekL3Mcast
