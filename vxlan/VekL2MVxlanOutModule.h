#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VniExtOrNone.h"
#include "runtime/state/multicast/UnderlayRoute.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"
#include "vxlan/ModuleCounterIds.h"

namespace VekMVxlan {

// The proxy of the module that takes underlay multicast from the default VRF's FIB modules
// (one input per family), strips the VXLAN header and hands the inner frame to the fabric's
// transmit module. Only a namespace device has one. Like the encapsulation side it keeps no
// table: one call, one command.
class L2MVxlanOut : public Vek::Module {
 public:
  static constexpr std::string_view defaultName = "L2MVxlanOut";
  static constexpr std::uint32_t defaultInGates = 2;
  static constexpr std::uint32_t defaultOutGates = 1;

  static constexpr std::array<std::string_view, 11> counterNames{
      "V6_Underlay", "Non_Ip",    "Non_Udp", "Wrong_Dst_Port", "No_Decap_Route", "No_Vlan",
      "Wrong_Vlan_Md", "Link_Local", "Q_In_Q", "Prepend_Fail", "Non_Mcast"};
  using CounterIds = VekMVxlan::CounterIds<counterNames.size()>;

  L2MVxlanOut(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
              Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair);

  void addVni(Vxlan::VniExtOrNone vni, Bridging::VlanId vlanId);
  void deleteVni(Vxlan::VniExtOrNone vni);
  // A zero source or group of the route is sent empty: any.
  void addDecapRoute(const Routing::Multicast::UnderlayRoute& route);
  void deleteDecapRoute(const Routing::Multicast::UnderlayRoute& route);
  void setCounterIds(const CounterIds& ids);

 private:
  void sendDecapRoute(std::string_view cmdName, const Routing::Multicast::UnderlayRoute& route);
};

Lumo::Ptr<L2MVxlanOut> l2MVxlanOutFactory(Lumo::String name, std::uint32_t maxInGate,
                                          std::uint32_t maxOutGate,
                                          Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair);

// Allocates the module's eleven counters and sends their ids.
void addL2MVxlanOutCounters(const Lumo::Ptr<L2MVxlanOut>& module,
                            const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd);

}  // namespace VekMVxlan
