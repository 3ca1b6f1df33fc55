#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "runtime/state/VlanIntfId.h"
#include "runtime/state/multicast/IpTunnelForwardingStatus.h"
#include "runtime/state/multicast/MulticastIntfsAppDir.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSmColl.h"
#include "runtime/state/vrf/NameToIdMapWrapper.h"
#include "runtime/state/vxlan/VtiStatusDir.h"
#include "tests/dataplane/ModelFixture.h"
#include "vxlan/L3MVxlanInSm.h"

namespace VxlanTest {

using Json = nlohmann::ordered_json;
using Routing::Multicast::IpTunnelMapping;
using Routing::Multicast::OverlayRoute;
using Routing::Multicast::UnderlayRoute;

// The inputs of the L3 encapsulation machines as central state holds them, with a channel
// to the data-plane model at the far end.
struct L3VxlanWorld : DataplaneTest::ModelWorld {
  using Af = Lanx::AddressFamily;

  L3VxlanWorld() { nameStatus->nameToIdMapIs(names); }

  Lumo::Ptr<VekMVxlan::L3MVxlanInSm> makeSm(Af af = Af::ipv4) {
    auto sm = Lumo::makePtr<VekMVxlan::L3MVxlanInSm>(
        af, nameStatus, vti, af == Af::ipv4 ? tunnels : tunnels6,
        af == Af::ipv4 ? intfRoots : intfRoots6, pair, vekcsd);
    sm->hasNotificationActiveIs(true);
    return sm;
  }

  // What the daemon's module of that name holds now.
  Json table(const std::string& module = "L3MVxlanIn") {
    channel->pump();
    return model.dump()["modules"][module]["table"];
  }
  Json groups(const std::string& module = "L3MVxlanIn") {
    return table(module)["vrfOverlayToUnderlayGroup"];
  }
  Json srcIntfs() { return table()["srcIntfIdToVni"]; }
  std::size_t errorCount() {
    channel->pump();
    return model.errors().size();
  }

  // ---- Central state ----

  void vrfId(const char* vrf, std::uint32_t id) { names->vrfIdIs(Lumo::String(vrf), VrfId(id)); }
  void vrfIdDel(const char* vrf) { names->vrfIdDel(Lumo::String(vrf)); }
  void sbd(const char* vrf, std::uint16_t vlan) {
    vti->vrfToSbdVlanMapIs(L3::VrfName(vrf), Bridging::VlanIdOrNone(vlan));
  }
  void sbdDel(const char* vrf) { vti->vrfToSbdVlanMapDel(L3::VrfName(vrf)); }
  void vrfVni(const char* vrf, std::uint32_t vni) {
    vti->vrfToVniMapIs(L3::VrfName(vrf), Vxlan::VniExtOrNone(vni));
  }
  void vlanVni(std::uint16_t vlan, std::uint32_t vni) {
    vti->vlanToVniMapIs(Bridging::VlanId(vlan), Vxlan::VniExtOrNone(vni));
  }
  void mapping(std::uint16_t vlan, const char* overlayGroup, const char* underlayGroup,
               const char* overlaySource = nullptr) {
    tunnels->vlanStatusIs(Bridging::VlanId(vlan))
        ->mappingIs(overlay(overlayGroup, overlaySource),
                    IpTunnelMapping(UnderlayRoute(Lanx::IpGenAddr("10.0.0.1"),
                                                  Lanx::IpGenAddr(underlayGroup))));
  }
  void mappingDel(std::uint16_t vlan, const char* overlayGroup,
                  const char* overlaySource = nullptr) {
    tunnels->vlanStatusIs(Bridging::VlanId(vlan))->mappingDel(overlay(overlayGroup, overlaySource));
  }
  // A multicast interface of a VRF, IPv4; the VRF's follower is made with the first one.
  void mcastIntf(const char* vrf, const char* intf) {
    appDir->vrfIs(L3::VrfName(vrf))->multicastIntfIs(Lanx::IntfId(intf));
    intfRoots->vrfSmIs(L3::VrfName(vrf), Af::ipv4, appDir);
  }
  static std::string intfKey(const char* intf) {
    return std::to_string(Lanx::IntfId(intf).value());
  }
  static OverlayRoute overlay(const char* group, const char* source = nullptr) {
    return OverlayRoute(source ? Lanx::IpGenAddr(source) : Lanx::IpGenAddr(),
                        Lanx::IpGenAddr(group));
  }

  using VrfId = Vrf::VrfIdMap::VrfId;
  Lumo::Ptr<Vrf::VrfIdMap::NameToIdMapWrapper> nameStatus =
      Lumo::makePtr<Vrf::VrfIdMap::NameToIdMapWrapper>();
  Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap> names = Lumo::makePtr<Vrf::VrfIdMap::NameToIdMap>();
  Lumo::Ptr<Vxlan::VtiStatusDir> vtiDir = Lumo::makePtr<Vxlan::VtiStatusDir>();
  Lumo::Ptr<Vxlan::VtiStatus> vti = vtiDir->vtiStatusIs(Lanx::IntfId("Vxlan1"));
  Lumo::Ptr<Routing::Multicast::IpTunnelForwardingStatus> tunnels =
      Lumo::makePtr<Routing::Multicast::IpTunnelForwardingStatus>();
  Lumo::Ptr<Routing::Multicast::IpTunnelForwardingStatus> tunnels6 =
      Lumo::makePtr<Routing::Multicast::IpTunnelForwardingStatus>();
  Lumo::Ptr<Routing::Multicast::MulticastIntfsAppDir> appDir =
      Lumo::makePtr<Routing::Multicast::MulticastIntfsAppDir>();
  Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl> intfRoots =
      Lumo::makePtr<Routing::Multicast::MulticastIntfsAppRootSmColl>();
  Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSmColl> intfRoots6 =
      Lumo::makePtr<Routing::Multicast::MulticastIntfsAppRootSmColl>();
};

class L3VxlanFixture : public ::testing::Test, protected L3VxlanWorld {};

}  // namespace VxlanTest
