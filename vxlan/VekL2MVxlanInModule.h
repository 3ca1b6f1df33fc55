#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VniExtOrNone.h"
#include "runtime/state/multicast/OverlayVlanGroup.h"
#include "runtime/state/multicast/UnderlayRoute.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"
#include "vxlan/ModuleCounterIds.h"
#include "vxlan/VtepList.h"

namespace VekMVxlan {

// The proxy of the module that takes bridged multicast of the local VLANs into the VXLAN
// underlay. Its reserved output gates 0 and 1 lead to the default VRF's IPv4 and IPv6 FIB,
// its reserved input gate 0 takes the routed traffic of the L3 encapsulation modules; the
// other inputs take the fabric receive paths.
//
// It keeps no table: whoever builds the pipeline sends every table again, so each call here
// is exactly one command.
class L2MVxlanIn : public Vek::Module {
 public:
  static constexpr std::string_view defaultName = "L2MVxlanIn";
  static constexpr std::uint32_t defaultInGates = 4;
  static constexpr std::uint32_t defaultOutGates = 3;
  static constexpr std::uint32_t reservedInGates = 1;
  static constexpr std::uint32_t reservedOutGates = 2;
  static constexpr std::uint32_t mfibGate = 0;       // IPv4; IPv6 is the next one
  static constexpr std::uint32_t routedInGate = 0;   // from the L3 encapsulation modules
  // The one output left over goes to the forwarding device.
  static constexpr std::uint32_t fwdDeviceGate = 2;

  static constexpr std::array<std::string_view, 12> counterNames{
      "No_Vlan_Md",  "No_Vni",       "Unknown_Multicast",  "Link_Local",
      "Non_Ip",      "No_Route",     "Prepend_Fail",       "V6_Underlay",
      "No_Underlay_Source", "Non_Linear_Pkt_Her_Fail", "No_Flood_Set_Entry",
      "Rx_Peer_Link_Or_Core"};
  using CounterIds = VekMVxlan::CounterIds<counterNames.size()>;

  L2MVxlanIn(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
             Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair);

  void addVlan(Bridging::VlanId vlanId, Vxlan::VniExtOrNone vni);
  void deleteVlan(Bridging::VlanId vlanId);
  void addVlanToSBDVlan(Bridging::VlanId vlanId, Bridging::VlanId sbdVlanId);
  void delVlanToSBDVlan(Bridging::VlanId vlanId);
  void addVlanFloodSetEntry(Bridging::VlanId vlanId, const Lanx::IpGenAddr& vtep);
  void deleteVlanFloodSetEntry(Bridging::VlanId vlanId, const Lanx::IpGenAddr& vtep);
  void setSrcIpIntf(Lanx::IntfId intfId);
  // Asserts that the underlay group is an address other than zero; a zero underlay source
  // means any source.
  void addOverlayVlanGroup(const Routing::Multicast::OverlayVlanGroup& group,
                           const Routing::Multicast::UnderlayRoute& route);
  void deleteOverlayVlanGroup(const Routing::Multicast::OverlayVlanGroup& group);
  // The IPv4 and the IPv6 VTEP address; the zero address (or none) clears it.
  void setVtepAddr(const Lanx::IpGenAddr& vtep);
  void setVtepAddr6(const Lanx::IpGenAddr& vtep);
  void addGmpVlanGroupMember(Bridging::VlanId vlanId, const Lanx::EthAddr& member,
                             const Lumo::Ptr<VtepList const>& vtepList);
  void deleteGmpVlanGroupMember(Bridging::VlanId vlanId, const Lanx::EthAddr& member);
  void setLocalBridgeMacAddr(const Lanx::EthAddr& mac);
  void setVxlanSwitchPktToMcastTunnelInSw(bool switching);
  void setCounterIds(const CounterIds& ids);

 private:
  void setVtep(std::string_view cmdName, const Lanx::IpGenAddr& vtep);
};

Lumo::Ptr<L2MVxlanIn> l2MVxlanInFactory(Lumo::String name, std::uint32_t maxInGate,
                                        std::uint32_t maxOutGate,
                                        Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair);

// Allocates the module's twelve counters and sends their ids.
void addL2MVxlanInCounters(const Lumo::Ptr<L2MVxlanIn>& module,
                           const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd);

}  // namespace VekMVxlan
