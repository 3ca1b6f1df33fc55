#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VlanIdOrNone.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/multicast/IpTunnelForwardingStatus.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSmColl.h"
#include "runtime/state/multicast/OverlayRoute.h"
#include "runtime/state/vrf/NameToIdMapWrapper.h"
#include "runtime/state/vxlan/VtiStatus.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"
#include "vxlan/NestedSm_McastIntfVrfSm.h"
#include "vxlan/NestedSm_VlanForwardStatus.h"
#include "vxlan/VekL3MVxlanInModule.h"

namespace VekMVxlan {

// Keeps one L3 encapsulation module (one per overlay family) programmed on its own: the
// tunnel values of the VTI, the VNI each multicast interface of a routed VRF sends with,
// and per VRF id the underlay group of each overlay group of the VRF's SBD VLAN. The owner
// only makes and drops the machine and wires its module.
//
// The group table is keyed by VRF id, so it follows three inputs at once: the VRF's id
// (vrfNameToId), the VRF's SBD VLAN (vrfToSBDVlan) and the SBD VLAN's tunnel mappings.
// Each keeps the last value it saw so that a change can take back what the old value sent.
class L3MVxlanInSm : public Qel::StateMachine {
 public:
  enum : Qel::AttributeId {
    kInitialized = 1,
    kModule,
    kVrfNameToId,
    kVrfToSBDVlan,
    kSbdVlanToVrf,
  };
  using Vrfs = Routing::Multicast::MulticastIntfsAppRootSmColl;
  using TunnelStatus = Routing::Multicast::IpTunnelForwardingStatus;
  using NameStatus = Vrf::VrfIdMap::NameToIdMapWrapper;
  using VrfId = Vrf::VrfIdMap::VrfId;

  static constexpr std::uint32_t moduleInGates = 2;
  static constexpr std::uint32_t moduleOutGates = 8192;
  // "L3MVxlanIn" for IPv4, "L3MVxlanIn6" for IPv6.
  static Lumo::String moduleName(Lanx::AddressFamily af);

  L3MVxlanInSm(Lanx::AddressFamily af, Lumo::Ptr<NameStatus const> vrfNameStatus,
               Lumo::Ptr<Vxlan::VtiStatus const> vtiStatus,
               Lumo::Ptr<TunnelStatus const> tunnelFwdingStatus,
               Lumo::Ptr<Vrfs const> mcastIntfRoot,
               Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair,
               Lumo::Ptr<Vek::VekCommonSmData> vekcsd);
  ~L3MVxlanInSm() override;
  std::string_view typeName() const override { return "VekMVxlan::L3MVxlanInSm"; }

  // ---- Operations ----

  void handleInitialized() override;
  // Frees the module's counters and drops it.
  void cleanup();
  void addCounters();

  // ---- Reactors and what they share ----

  void handleVlanToVniMap(Bridging::VlanId vlan);
  void handleVrfToVniMap(const L3::VrfName& vrf);
  void handleVrfToVniMap();
  void handleVrfToSbdVlanMap(const L3::VrfName& vrf);
  void handleTtl();
  void handleDestPort();
  void handleSrcPortRange();
  void handleSrcIpIntf();
  void handleVtepAddr();
  void handleVtepAddr6();
  void handleNameToIdMap();
  void handleVrfName(const Lumo::String& name);
  void handleVlanStatus(Bridging::VlanId vlan);
  void handleMcastIntfRoot(const L3::VrfName& vrf);

  void handleMcastIntf(const L3::VrfName& vrf, Lanx::IntfId intf);
  void handleTunnelMapping(Bridging::VlanId vlan, const Routing::Multicast::OverlayRoute& route);
  void handleVrfId(const Lumo::String& name, VrfId id, VrfId oldId);
  void handleVrfToSBDVlan(const L3::VrfName& vrf, Bridging::VlanIdOrNone sbd,
                          Bridging::VlanIdOrNone oldSbd);
  void updateSrcIntfToVni(const L3::VrfName& vrf, Lanx::IntfId intf);
  void updateVrfOverlayToUnderlayGroup(const L3::VrfName& vrf, VrfId vrfId,
                                       const Routing::Multicast::OverlayRoute& route);
  void updateVrfAllGroups(const L3::VrfName& vrf, VrfId vrfId);

  // ---- Attributes ----

  Lanx::AddressFamily af() const noexcept { return af_; }
  bool initialized() const noexcept { return initialized_.get(); }
  const Lumo::Ptr<L3MVxlanIn>& module() const noexcept { return module_.get(); }
  const Lumo::Ptr<Vxlan::VtiStatus const>& vtiStatus() const noexcept { return vtiStatus_; }

  // The last id seen of a VRF name; none if it has none.
  VrfId vrfNameToId(const Lumo::String& name) const;
  void vrfNameToIdIs(const Lumo::String& name, VrfId id);
  void vrfNameToIdDel(const Lumo::String& name);
  // Takes the ids of this map: names it lacks lose theirs.
  void vrfIdMapIs(Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap const> map);

  // The last SBD VLAN seen of a VRF; none if it has none.
  Bridging::VlanIdOrNone vrfToSBDVlan(const L3::VrfName& vrf) const;
  void vrfToSBDVlanIs(const L3::VrfName& vrf, Bridging::VlanIdOrNone sbd);
  void vrfToSBDVlanDel(const L3::VrfName& vrf);
  // The VRF of an SBD VLAN; empty if none.
  L3::VrfName sbdVlanToVrf(Bridging::VlanId sbd) const;

  void vlanForwardStatusIs(Lumo::Ptr<Routing::Multicast::IpTunnelVlanForwardingStatus const> s);
  void vlanForwardStatusDel(Bridging::VlanId vlan);
  bool vlanForwardStatusHas(Bridging::VlanId vlan) const {
    return vlanForwardStatus_.has(vlan);
  }
  void mcastIntfVrfSmIs(Lumo::Ptr<Routing::Multicast::MulticastIntfsAppRootSm const> root);
  void mcastIntfVrfSmDel(const L3::VrfName& vrf);
  bool mcastIntfVrfSmHas(const L3::VrfName& vrf) const { return mcastIntfVrfSm_.has(vrf); }

 private:
  static void vtiStatusDispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber, short id,
                                const void* key, const void*) noexcept;
  void handleVtiStatus(Qel::AttributeId id, const void* key);
  // The group the VRF's traffic goes to in the underlay for an overlay route; none when
  // the VRF's SBD VLAN has no usable mapping for it.
  Lanx::IpGenAddr underlayGroup(Bridging::VlanId sbd,
                                const Routing::Multicast::OverlayRoute& route) const;
  Bridging::VlanIdOrNone vtiSbdVlan(const L3::VrfName& vrf) const;
  VrfId lastVrfId(const L3::VrfName& vrf) const { return vrfNameToId(vrf.str()); }

  Lanx::AddressFamily af_;
  Lumo::Ptr<NameStatus const> vrfNameStatus_;
  Lumo::Ptr<Vxlan::VtiStatus const> vtiStatus_;
  Lumo::Ptr<TunnelStatus const> tunnelFwdingStatus_;
  Lumo::Ptr<Vrfs const> mcastIntfRoot_;
  Lumo::Ptr<Vek::ModuleConfigStatusPair> configStatusPair_;
  Lumo::Ptr<Vek::VekCommonSmData> vekcsd_;
  Lumo::Ptr<Vrf::VrfIdMap::NameToIdMap const> nameToIdMap_;

  Qel::ValueAttr<bool, kInitialized> initialized_;
  Qel::InstantiatingAttr<L3MVxlanIn, kModule, "module", Lumo::String, std::uint32_t,
                         std::uint32_t, Lumo::Ptr<Vek::ModuleConfigStatusPair>>
      module_;
  Qel::HashCollectionAttr<Lumo::String, VrfId, kVrfNameToId> vrfNameToId_;
  Qel::HashCollectionAttr<L3::VrfName, Bridging::VlanIdOrNone, kVrfToSBDVlan> vrfToSBDVlan_;
  Qel::HashCollectionAttr<Bridging::VlanId, L3::VrfName, kSbdVlanToVrf> sbdVlanToVrf_;
  Qel::NestedSmCollection<L3MVxlanInSm, NestedSm_VlanForwardStatus,
                          &Routing::Multicast::IpTunnelVlanForwardingStatus::vlanId>
      vlanForwardStatus_{this};
  Qel::NestedSmCollection<L3MVxlanInSm, NestedSm_McastIntfVrfSm,
                          &Routing::Multicast::MulticastIntfsAppRootSm::vrfName>
      mcastIntfVrfSm_{this};

  Qel::SmSubscriber<L3MVxlanInSm> vtiStatusReactor_{this, &L3MVxlanInSm::vtiStatusDispatch};
  Qel::SmSubscriber<L3MVxlanInSm> vrfNameStatusReactor_{
      this, &Qel::reactorDispatch<L3MVxlanInSm, NameStatus::kNameToIdMap,
                                  &L3MVxlanInSm::handleNameToIdMap>};
  Qel::SmSubscriber<L3MVxlanInSm> nameToIdMapReactor_{
      this, &Qel::reactorDispatch<L3MVxlanInSm, Vrf::VrfIdMap::NameToIdMap::kVrfId,
                                  &L3MVxlanInSm::handleVrfName>};
  Qel::SmSubscriber<L3MVxlanInSm> tunnelFwdingStatusReactor_{
      this, &Qel::reactorDispatch<L3MVxlanInSm, TunnelStatus::kVlanStatus,
                                  &L3MVxlanInSm::handleVlanStatus>};
  Qel::SmSubscriber<L3MVxlanInSm> mcastIntfRootReactor_{
      this,
      &Qel::reactorDispatch<L3MVxlanInSm, Vrfs::kVrfSm, &L3MVxlanInSm::handleMcastIntfRoot>};
};

}  // namespace VekMVxlan
