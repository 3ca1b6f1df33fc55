#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VniExtOrNone.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/vxlan/VtiStatus.h"

namespace VekMVxlan {

class VxlanPipeline;

// Follows one VTI for the VXLAN pipeline: its tunnel values go to the encapsulation
// modules, its VLAN to VNI map to both L2 modules. Every handler updates the pipeline's
// mirrors first and touches no module until the agent is initialized, so that the start's
// replay finds the mirrors right.
class NestedSm_VtiStatus : public Qel::StateMachine, public Qel::NotifieeConstOf<Vxlan::VtiStatus> {
 public:
  enum : Qel::AttributeId { kVrfToVniMap = 1, kVniToVrfMap };

  NestedSm_VtiStatus(VxlanPipeline* owner, Lumo::Ptr<Vxlan::VtiStatus const> status);
  std::string_view typeName() const override { return "VekMVxlan::NestedSm_VtiStatus"; }

  const Vxlan::VtiStatus& vtiStatus() const noexcept { return *notifier(); }

  // The tunnel values; the maps are walked by whoever builds a pipeline.
  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override;

  void handleVtepAddr(Lanx::AddressFamily af);
  void handleSrcIpIntf();
  void handleUdpPort();
  void handleVlanToVniMap(Bridging::VlanId vlan);
  // The VTI left its directory: each VLAN it listed goes as if its entry had gone. The
  // entity, held here still, lists them as they were.
  void handleVtiGone();
  void handleVrfToVniMap(const L3::VrfName& vrf);
  void handleVrfToSBDVlan(const L3::VrfName& vrf);

  // Mirrors of the VTI's VRF to VNI map, for the L3 side.
  bool vniToVrfMapHas(Vxlan::VniExtOrNone vni) const { return vniToVrfMap_.has(vni); }
  bool vrfToVniMapHas(const L3::VrfName& vrf) const { return vrfToVniMap_.has(vrf); }

 private:
  // A VLAN's VNI as the VTI has it, or null; none for every VLAN once the VTI went.
  const Vxlan::VniExtOrNone* mappedVni(Bridging::VlanId vlan) const;

  VxlanPipeline* owner_;
  bool gone_ = false;
  Qel::HashCollectionAttr<L3::VrfName, Vxlan::VniExtOrNone, kVrfToVniMap> vrfToVniMap_;
  Qel::HashCollectionAttr<Vxlan::VniExtOrNone, L3::VrfName, kVniToVrfMap> vniToVrfMap_;
};

}  // namespace VekMVxlan
