#pragma once

#include <array>
#include <string_view>
#include <cstdint>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VlanIdOrNone.h"
#include "runtime/state/VniExtOrNone.h"
#include "runtime/state/VrfId.h"
#include "runtime/vek/CounterId.h"
#include "vxlan/ModuleCounterIds.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

namespace VekMVxlan {

// The proxy of the module that takes VXLAN traffic from the default VRF's FIBs, strips the
// tunnel and hands the inner packet to the FIB of the VRF and family it belongs to. Its
// output gates are made one per VRF FIB; the module learns which gate serves which VRF
// and family, and which VNI belongs to which VLAN and VRF, from the commands below. It
// keeps no state: what to send is its owner's decision.
class L3MVxlanOut : public Vek::Module {
 public:
  static constexpr std::array<std::string_view, 9> counterNames{
    "Non_Ip_Underlay", "Non_Udp",       "Wrong_Dst_Port", "No_Vlan_Intf_Id", "No_Vrf",
    "No_Sbd_Vlan",     "Wrong_Vlan_Md", "Non_Ip_Overlay", "No_Gate_Mapping"};
  using CounterIds = VekMVxlan::CounterIds<counterNames.size()>;

  L3MVxlanOut(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
              Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair);

  void setUdpPort(std::uint16_t port);
  void addVrfSBDVlan(Vrf::VrfIdMap::VrfId vrfId, Bridging::VlanIdOrNone vlan);
  void deleteVrfSBDVlan(Vrf::VrfIdMap::VrfId vrfId);
  void addOGateEntry(Lanx::AddressFamily af, Vrf::VrfIdMap::VrfId vrfId, std::uint32_t oGate);
  void deleteOGateEntry(Lanx::AddressFamily af, Vrf::VrfIdMap::VrfId vrfId);
  void addVniVlan(Vxlan::VniExtOrNone vni, Bridging::VlanId vlan);
  void deleteVniVlan(Vxlan::VniExtOrNone vni);
  void addVniVrf(Vxlan::VniExtOrNone vni, Vrf::VrfIdMap::VrfId vrfId);
  void deleteVniVrf(Vxlan::VniExtOrNone vni);
  // One id per name of counterNames, in that order.
  void setCounterIds(const CounterIds& ids);
};

// Allocates the module's counters and tells it their ids.
void addL3MVxlanOutCounters(const Lumo::Ptr<L3MVxlanOut>& module,
                            const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd);

}  // namespace VekMVxlan
