#include "vxlan/NestedSm_L3VtiStatus.h"

#include <vector>

#include "vxlan/L3VxlanPipeline.h"

namespace VekMVxlan {

NestedSm_L3VtiStatus::NestedSm_L3VtiStatus(L3VxlanPipeline* owner,
                                           Lumo::Ptr<Vxlan::VtiStatus const> vti)
    : Qel::NotifieeConstOf<Vxlan::VtiStatus>(this), owner_(owner) {
  notifierIs(std::move(vti));
  handleInitialized();
}

void NestedSm_L3VtiStatus::handleInitialized() {
  const Vxlan::VtiStatus* vti = notifier();
  std::vector<Bridging::VlanId> vlans;
  for (const auto& entry : vti->vlanToVniMaps()) vlans.push_back(entry.key);
  std::vector<L3::VrfName> vrfs;
  for (const auto& entry : vti->vrfToVniMaps()) vrfs.push_back(entry.key);
  for (const auto& entry : vti->vrfToSbdVlanMaps()) vrfs.push_back(entry.key);
  // The SBD VLANs first: the first of them makes the pipeline, and what follows then
  // reaches its modules.
  for (const L3::VrfName& vrf : vrfs) owner_->handleVrfToSBDVlan(vrf);
  for (Bridging::VlanId vlan : vlans) owner_->handleVlanToVniMap(*this, vlan);
  for (const L3::VrfName& vrf : vrfs) owner_->handleVrfToVniMap(*this, vrf);
  owner_->handleUdpPort(*this);
}

void NestedSm_L3VtiStatus::onAttribute(Qel::AttributeId id, const void* key) {
  using Vti = Vxlan::VtiStatus;
  guarded("VTI status", [&] {
    switch (id) {
      case Vti::kVlanToVniMap:
        owner_->handleVlanToVniMap(*this, *static_cast<const Bridging::VlanId*>(key));
        break;
      case Vti::kVrfToVniMap:
        owner_->handleVrfToVniMap(*this, *static_cast<const L3::VrfName*>(key));
        break;
      case Vti::kVrfToSbdVlanMap:
        owner_->handleVrfToSBDVlan(*static_cast<const L3::VrfName*>(key));
        break;
      case Vti::kUdpPort:
        owner_->handleUdpPort(*this);
        break;
      default:
        break;
    }
  });
}

template <typename Key, typename Forward, typename Back>
Vxlan::VniExtOrNone NestedSm_L3VtiStatus::mirror(const Key& key, const Vxlan::VniExtOrNone* now,
                                                 Forward& forward, Back& back) {
  const Vxlan::VniExtOrNone* before = forward.find(key);
  const Vxlan::VniExtOrNone old = before ? *before : Vxlan::VniExtOrNone();
  if (!old.isNone()) back.erase(old);
  if (now) {
    forward.set(key, *now);
    back.set(*now, key);
    return old;
  }
  forward.erase(key);
  return old;
}

Vxlan::VniExtOrNone NestedSm_L3VtiStatus::vlanVniIs(Bridging::VlanId vlan) {
  return mirror(vlan, notifier()->vlanToVniMap(vlan), vlanToVni_, vniToVlan_);
}

Vxlan::VniExtOrNone NestedSm_L3VtiStatus::vrfVniIs(const L3::VrfName& vrf) {
  return mirror(vrf, notifier()->vrfToVniMap(vrf), vrfToVni_, vniToVrf_);
}

}  // namespace VekMVxlan
