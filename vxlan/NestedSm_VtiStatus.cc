#include "vxlan/NestedSm_VtiStatus.h"

#include <vector>

#include "runtime/lumo/Assert.h"
#include "runtime/trace/Trace.h"
#include "vxlan/VxlanPipeline.h"

namespace VekMVxlan {

using Lanx::AddressFamily;
using Vxlan::VtiStatus;

NestedSm_VtiStatus::NestedSm_VtiStatus(VxlanPipeline* owner, Lumo::Ptr<VtiStatus const> status)
    : Qel::NotifieeConstOf<VtiStatus>(this), owner_(owner) {
  notifierIs(std::move(status));
  handleInitialized();
}

void NestedSm_VtiStatus::handleInitialized() {
  if (isZombie()) return;
  handleSrcIpIntf();
  handleUdpPort();
  handleVtepAddr(AddressFamily::ipv4);
  handleVtepAddr(AddressFamily::ipv6);
}

void NestedSm_VtiStatus::onAttribute(Qel::AttributeId id, const void* key) {
  switch (id) {
    case VtiStatus::kVtepAddr:
      handleVtepAddr(AddressFamily::ipv4);
      break;
    case VtiStatus::kVtepAddr6:
      handleVtepAddr(AddressFamily::ipv6);
      break;
    case VtiStatus::kSrcIpIntf:
      handleSrcIpIntf();
      break;
    case VtiStatus::kUdpPort:
      handleUdpPort();
      break;
    case VtiStatus::kVlanToVniMap:
      handleVlanToVniMap(*static_cast<const Bridging::VlanId*>(key));
      break;
    case VtiStatus::kVrfToVniMap:
      handleVrfToVniMap(*static_cast<const L3::VrfName*>(key));
      break;
    case VtiStatus::kVrfToSbdVlanMap:
      handleVrfToSBDVlan(*static_cast<const L3::VrfName*>(key));
      break;
    default:
      break;
  }
}

void NestedSm_VtiStatus::handleVtepAddr(AddressFamily af) {
  QEL_ASSERT(af == AddressFamily::ipv4 || af == AddressFamily::ipv6, "Unsupported address family");
  if (!owner_->owner().initialized()) return;
  const Lanx::IpGenAddr& vtep =
      af == AddressFamily::ipv4 ? vtiStatus().vtepAddr() : vtiStatus().vtepAddr6();
  if (const Lumo::Ptr<L2MVxlanIn>& in = owner_->l2VxlanInModule()) {
    if (af == AddressFamily::ipv4) {
      VEK_TRACE(info, "Set L2MVxlanIn VTEP addr: {}", vtep);
      in->setVtepAddr(vtep);
    } else {
      VEK_TRACE(info, "Set L2MVxlanIn VTEP6 addr: {}", vtep);
      in->setVtepAddr6(vtep);
    }
  }
  // The L3 encapsulation module of IPv4 takes the same addresses here.
}

void NestedSm_VtiStatus::handleSrcIpIntf() {
  if (!owner_->owner().initialized()) return;
  if (const Lumo::Ptr<L2MVxlanIn>& in = owner_->l2VxlanInModule()) {
    in->setSrcIpIntf(vtiStatus().srcIpIntf());
  }
}

void NestedSm_VtiStatus::handleUdpPort() {
  // The UDP port is the L3 decapsulation module's alone.
}

const Vxlan::VniExtOrNone* NestedSm_VtiStatus::mappedVni(Bridging::VlanId vlan) const {
  return gone_ ? nullptr : vtiStatus().vlanToVniMap(vlan);
}

void NestedSm_VtiStatus::handleVtiGone() {
  gone_ = true;
  std::vector<Bridging::VlanId> vlans;
  for (const auto& entry : vtiStatus().vlanToVniMaps()) vlans.push_back(entry.key);
  for (Bridging::VlanId vlan : vlans) handleVlanToVniMap(vlan);
}

void NestedSm_VtiStatus::handleVlanToVniMap(Bridging::VlanId vlan) {
  const Vxlan::VniExtOrNone* mapped = mappedVni(vlan);
  Vxlan::VniExtOrNone vni;
  // A VLAN that moves to another VNI leaves its old one behind in the decap module.
  Vxlan::VniExtOrNone replaced;
  if (mapped) {
    vni = *mapped;
    if (const Vxlan::VniExtOrNone old = owner_->vlanToVniMap(vlan); !old.isNone() && old != vni) {
      replaced = old;
      owner_->vniToVlanMapDel(old);
    }
    owner_->vlanToVniMapIs(vlan, vni);
    owner_->vniToVlanMapIs(vni, vlan);
  } else {
    vni = owner_->vlanToVniMap(vlan);
    owner_->vlanToVniMapDel(vlan);
    owner_->vniToVlanMapDel(vni);
  }
  if (!owner_->owner().initialized()) return;
  if (const Lumo::Ptr<L2MVxlanIn>& in = owner_->l2VxlanInModule()) {
    if (mapped) {
      in->addVlan(vlan, vni);
    } else {
      in->deleteVlan(vlan);
    }
  }
  if (const Lumo::Ptr<L2MVxlanOut>& out = owner_->l2VxlanOutModule()) {
    if (!replaced.isNone()) out->deleteVni(replaced);
    if (mapped) {
      out->addVni(vni, vlan);
    } else {
      out->deleteVni(vni);
    }
  }
  // The L3 decapsulation module's VNI to VLAN entry follows here.
}

void NestedSm_VtiStatus::handleVrfToVniMap(const L3::VrfName& vrf) {
  if (const Vxlan::VniExtOrNone* vni = vtiStatus().vrfToVniMap(vrf)) {
    vrfToVniMap_.is(*this, vrf, *vni);
    vniToVrfMap_.is(*this, *vni, vrf);
  } else {
    const Vxlan::VniExtOrNone* old = vrfToVniMap_.find(vrf);
    vniToVrfMap_.del(*this, old ? *old : Vxlan::VniExtOrNone());
    vrfToVniMap_.del(*this, vrf);
  }
  // The L3 modules' VNI to VRF entries follow here.
}

void NestedSm_VtiStatus::handleVrfToSBDVlan(const L3::VrfName&) {
  // The SBD VLANs of the VRFs are the L3 pipeline's.
}

}  // namespace VekMVxlan
