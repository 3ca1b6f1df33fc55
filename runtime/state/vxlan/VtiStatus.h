#pragma once

#include <cstdint>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VlanIdOrNone.h"
#include "runtime/state/VniExtOrNone.h"
#include "runtime/state/VrfName.h"

namespace Vxlan {

// The status of one VXLAN tunnel interface: its tunnel parameters and which VLANs and VRFs
// it carries under which VNI. A VRF routed through the tunnel has a VNI and an SBD VLAN.
class VtiStatus : public Lanx::StateEntity<"Vxlan::VtiStatus"> {
 public:
  enum : Qel::AttributeId {
    kVlanToVniMap = 1,
    kVrfToVniMap,
    kVrfToSbdVlanMap,
    kSrcIpIntf,
    kUdpPort,
    kSrcPort,
    kTtl,
    kVtepAddr,
    kVtepAddr6,
  };
  using VlanToVni = Qel::HashMap2018<Bridging::VlanId, VniExtOrNone>;
  using VrfToVni = Qel::HashMap2018<L3::VrfName, VniExtOrNone>;
  using VrfToSbdVlan = Qel::HashMap2018<L3::VrfName, Bridging::VlanIdOrNone>;

  explicit VtiStatus(Lanx::IntfId intfId) : intfId_(intfId) {}

  Lanx::IntfId intfId() const noexcept { return intfId_; }

  const VniExtOrNone* vlanToVniMap(Bridging::VlanId vlan) const { return vlanToVni_.find(vlan); }
  const VlanToVni& vlanToVniMaps() const noexcept { return vlanToVni_.members(); }
  void vlanToVniMapIs(Bridging::VlanId vlan, VniExtOrNone vni) { vlanToVni_.is(*this, vlan, vni); }
  void vlanToVniMapDel(Bridging::VlanId vlan) { vlanToVni_.del(*this, vlan); }

  const VniExtOrNone* vrfToVniMap(const L3::VrfName& vrf) const { return vrfToVni_.find(vrf); }
  const VrfToVni& vrfToVniMaps() const noexcept { return vrfToVni_.members(); }
  void vrfToVniMapIs(const L3::VrfName& vrf, VniExtOrNone vni) { vrfToVni_.is(*this, vrf, vni); }
  void vrfToVniMapDel(const L3::VrfName& vrf) { vrfToVni_.del(*this, vrf); }

  const Bridging::VlanIdOrNone* vrfToSbdVlanMap(const L3::VrfName& vrf) const {
    return vrfToSbdVlan_.find(vrf);
  }
  const VrfToSbdVlan& vrfToSbdVlanMaps() const noexcept { return vrfToSbdVlan_.members(); }
  void vrfToSbdVlanMapIs(const L3::VrfName& vrf, Bridging::VlanIdOrNone sbd) {
    vrfToSbdVlan_.is(*this, vrf, sbd);
  }
  void vrfToSbdVlanMapDel(const L3::VrfName& vrf) { vrfToSbdVlan_.del(*this, vrf); }

  // The interface whose address is the tunnel's source.
  Lanx::IntfId srcIpIntf() const noexcept { return srcIpIntf_.get(); }
  void srcIpIntfIs(Lanx::IntfId intf) { srcIpIntf_.is(*this, intf); }
  // Destination UDP port of the tunnel's packets.
  std::uint16_t udpPort() const noexcept { return udpPort_.get(); }
  void udpPortIs(std::uint16_t port) { udpPort_.is(*this, port); }
  // First port of the tunnel's source port range.
  std::uint16_t srcPort() const noexcept { return srcPort_.get(); }
  void srcPortIs(std::uint16_t port) { srcPort_.is(*this, port); }
  std::uint8_t ttl() const noexcept { return ttl_.get(); }
  void ttlIs(std::uint8_t ttl) { ttl_.is(*this, ttl); }
  // The tunnel's own IPv4 and IPv6 addresses; no family when unset.
  const Lanx::IpGenAddr& vtepAddr() const noexcept { return vtepAddr_.get(); }
  void vtepAddrIs(const Lanx::IpGenAddr& addr) { vtepAddr_.is(*this, addr); }
  const Lanx::IpGenAddr& vtepAddr6() const noexcept { return vtepAddr6_.get(); }
  void vtepAddr6Is(const Lanx::IpGenAddr& addr) { vtepAddr6_.is(*this, addr); }

 private:
  Lanx::IntfId intfId_;
  Qel::HashCollectionAttr<Bridging::VlanId, VniExtOrNone, kVlanToVniMap> vlanToVni_;
  Qel::HashCollectionAttr<L3::VrfName, VniExtOrNone, kVrfToVniMap> vrfToVni_;
  Qel::HashCollectionAttr<L3::VrfName, Bridging::VlanIdOrNone, kVrfToSbdVlanMap> vrfToSbdVlan_;
  Qel::ValueAttr<Lanx::IntfId, kSrcIpIntf> srcIpIntf_;
  Qel::ValueAttr<std::uint16_t, kUdpPort> udpPort_;
  Qel::ValueAttr<std::uint16_t, kSrcPort> srcPort_;
  Qel::ValueAttr<std::uint8_t, kTtl> ttl_;
  Qel::ValueAttr<Lanx::IpGenAddr, kVtepAddr> vtepAddr_;
  Qel::ValueAttr<Lanx::IpGenAddr, kVtepAddr6> vtepAddr6_;
};

}  // namespace Vxlan
