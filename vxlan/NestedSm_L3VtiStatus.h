#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VniExtOrNone.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/vxlan/VtiStatus.h"

namespace VekMVxlan {

class L3VxlanPipeline;

// Follows one VTI for the L3 pipeline: its VLAN and VRF VNIs, its VRFs' SBD VLANs and its
// UDP port. It mirrors the two VNI maps both ways, so that a VNI that went is still known
// and a remote VNI can be told local at a glance.
class NestedSm_L3VtiStatus : public Qel::StateMachine,
                             public Qel::NotifieeConstOf<Vxlan::VtiStatus> {
 public:
  NestedSm_L3VtiStatus(L3VxlanPipeline* owner, Lumo::Ptr<Vxlan::VtiStatus const> vti);
  std::string_view typeName() const override { return "VekMVxlan::NestedSm_L3VtiStatus"; }

  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override;

  // Records the VTI's VNI of the VLAN (none when it has none); gives the VNI it had.
  Vxlan::VniExtOrNone vlanVniIs(Bridging::VlanId vlan);
  Vxlan::VniExtOrNone vrfVniIs(const L3::VrfName& vrf);
  bool vniToVlanHas(Vxlan::VniExtOrNone vni) const { return vniToVlan_.has(vni); }
  bool vniToVrfHas(Vxlan::VniExtOrNone vni) const { return vniToVrf_.has(vni); }

 private:
  template <typename Key, typename Forward, typename Back>
  static Vxlan::VniExtOrNone mirror(const Key& key, const Vxlan::VniExtOrNone* now,
                                    Forward& forward, Back& back);

  L3VxlanPipeline* owner_;
  Qel::HashMap2018<Bridging::VlanId, Vxlan::VniExtOrNone> vlanToVni_;
  Qel::HashMap2018<Vxlan::VniExtOrNone, Bridging::VlanId> vniToVlan_;
  Qel::HashMap2018<L3::VrfName, Vxlan::VniExtOrNone> vrfToVni_;
  Qel::HashMap2018<Vxlan::VniExtOrNone, L3::VrfName> vniToVrf_;
};

}  // namespace VekMVxlan
