#pragma once

#include <array>
#include <string_view>
#include <cstdint>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/VniExtOrNone.h"
#include "runtime/state/VrfId.h"
#include "runtime/vek/CounterId.h"
#include "vxlan/ModuleCounterIds.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekMVxlan {

// The proxy of the module that puts routed overlay multicast of a VRF into the underlay
// with a VXLAN header. Reserved output gates 0 and 1 lead to the default VRF's FIB of each
// family, gate 2 to the L2 encapsulation module. Its input gates are reserved: the FIBs of
// all tenant VRFs of its family meet at input gate 0, so any number of VRFs feed it. It
// keeps no state: its owner sends what the module has to hold.
class L3MVxlanIn : public Vek::Module {
 public:
  static constexpr std::uint32_t reservedInGates = 2;
  static constexpr std::uint32_t tenantFibInGate = 0;
  static constexpr std::uint32_t reservedOutGates = 3;
  static constexpr std::uint32_t l2MVxlanInGate = 2;
  // The names of the counters, in the order setCounterIds takes them.
  static constexpr std::array<std::string_view, 11> counterNames{
    "Vxlan_Core_Routed", "No_Vtep_Intf_Id", "No_Vrf_Md", "No_Src_Intf_Md",
    "No_Underlay_Group", "No_Vni",          "Non_Ip",    "Prepend_Fail",
    "V6_Underlay",       "No_Underlay_Source", "No_Ttl"};
  using CounterIds = VekMVxlan::CounterIds<counterNames.size()>;

  L3MVxlanIn(Lumo::String name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
             Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair);

  void setVxlanDestPort(std::uint16_t port);
  void setVxlanSrcPort(std::uint16_t port);
  void setVxlanTTL(std::uint8_t ttl);
  void setVtepIntfId(Lanx::IntfId intfId);
  void addSrcIntfIdToVni(Lanx::IntfId intfId, Vxlan::VniExtOrNone vni);
  void deleteSrcIntfIdToVni(Lanx::IntfId intfId);
  // An address that is not set goes as empty bytes.
  void setVtepAddr(const Lanx::IpGenAddr& addr);
  void setVtepAddr6(const Lanx::IpGenAddr& addr);
  // The underlay group must be set: a route without one is not a mapping.
  void addVrfOverlayToUnderlayGroup(Vrf::VrfIdMap::VrfId vrfId, const Lanx::IpGenAddr& overlayGroup,
                                    const Lanx::IpGenAddr& underlayGroup);
  void deleteVrfOverlayToUnderlayGroup(Vrf::VrfIdMap::VrfId vrfId,
                                       const Lanx::IpGenAddr& overlayGroup);
  // Forgets every group of the VRF, by the same command with no group.
  void deleteVrfAllGroups(Vrf::VrfIdMap::VrfId vrfId);
  // One id per name of counterNames, in that order.
  void setCounterIds(const CounterIds& ids);
};

}  // namespace VekMVxlan
