#pragma once

#include <cstdint>
#include <string_view>

#include "pipeline/McastL2VxlanRxSet.h"
#include "pipeline/MfaInputs.h"
#include "pipeline/McastL2VxlanTx.h"
#include "pipeline/VrfLifecycleListener.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/ByFamilyAttr.h"
#include "runtime/state/PamRxBuf.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VlanIdOrNone.h"
#include "runtime/state/VniExtOrNone.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/bridging/Config.h"
#include "runtime/state/bridging/HwCapabilities.h"
#include "runtime/state/irb/IgmpProxyStatus.h"
#include "runtime/state/irb/McastIrbStatus.h"
#include "runtime/state/multicast/IpTunnelDecapConfig.h"
#include "runtime/state/multicast/IpTunnelForwardingStatus.h"
#include "runtime/state/multicast/OverlayRoute.h"
#include "runtime/state/vxlan/RemoteVniToVlanStatus.h"
#include "runtime/state/vxlan/VtiStatusDir.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"
#include "vxlan/VekGmpVlanGroupMembershipSm.h"
#include "vxlan/VekOismFloodSetSm.h"
#include "vxlan/NestedSm_VlanStatus.h"
#include "vxlan/NestedSm_VtiStatus.h"
#include "vxlan/VekL2MVxlanInModule.h"
#include "vxlan/VekL2MVxlanOutModule.h"
#include "vxlan/VlanToOverlayGroup.h"
#include "vxlan/VxlanPipelineOwner.h"

namespace VekMVxlan {

// The VXLAN side of the agent: it decides whether the L2 VXLAN pipeline stands (the
// "fabric" device is up and a proxy or tunnel VLAN asks for it), builds and connects its
// modules, takes them down, and turns the VXLAN state of the system (VTIs, tunnel mappings,
// decap routes, SBD VLANs, proxy VLANs) into commands of the modules.
//
// The proxies keep no mirror of what they sent, so creating the pipeline walks every input
// again; whichever element comes last connects itself to what exists, so the graph does not
// depend on the order of events. The maps below mirror the inputs only where a deleted
// entry's old value is still needed.
class VxlanPipeline : public Qel::StateMachine, public VekL3Mcast::VrfLifecycleListener {
 public:
  enum : Qel::AttributeId {
    kMcastL2VxlanRxSet = 1,
    kMcastL2VxlanTx,
    kL2VxlanInModule,
    kL2VxlanOutModule,
    kVlanToVniMap,
    kVniToVlanMap,
    kVrfToSBDVlan,
    kSbdVlanToVrf,
    kRemoteVniToVlan,
    kVlanToOverlayGroup,
    kGmpVlanGroup4MembershipSm,
    kGmpVlanGroup6MembershipSm,
    kOismFloodSetSm,
  };

  // Reads its inputs from `inputs`, which the agent fills as it mounts them and which
  // outlives the pipeline.
  VxlanPipeline(VxlanPipelineOwner* owner, const VekL3Mcast::MfaInputs& inputs,
                Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair,
                Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup,
                Lumo::Ptr<Vek::VekCommonSmData> vekcsd, Lumo::Ptr<Lanx::PamRxBuf const> rxBuf);
  ~VxlanPipeline() override;
  std::string_view typeName() const override { return "VekMVxlan::VxlanPipeline"; }

  VxlanPipelineOwner& owner() const noexcept { return *owner_; }
  const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair() const noexcept { return modulePair_; }
  const Lumo::Ptr<Vek::CmdConfigGroup>& cmdConfigGroup() const noexcept { return cmdConfigGroup_; }
  const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd() const noexcept { return vekcsd_; }

  // ---- Inputs, as the agent mounted them ----

  // Follows the inputs that the agent's bundle holds now and walks them; the agent calls it
  // again when it changes one of them.
  void handleInitialized() override;
  const VekL3Mcast::MfaInputs& inputs() const noexcept { return inputs_; }
  const Lumo::Ptr<Vxlan::VtiStatusDir const>& vtiStatusDir() const noexcept {
    return inputs_.vtiStatusDir;
  }
  const Lumo::Ptr<Routing::Multicast::IpTunnelForwardingStatus const>& tunnelFwdingStatus(
      Lanx::AddressFamily af) const noexcept {
    return inputs_.tunnelFwdingStatus[af];
  }
  const Lumo::Ptr<Routing::Multicast::IpTunnelDecapConfig const>& tunDecapConfig(
      Lanx::AddressFamily af) const noexcept {
    return inputs_.tunDecapConfig[af];
  }
  const Lumo::Ptr<Irb::Multicast::McastIrbStatus const>& mcastIrbStatus(
      Lanx::AddressFamily af) const noexcept {
    return inputs_.mcastIrbStatus[af];
  }
  const Lumo::Ptr<Irb::Multicast::IgmpProxyStatus const>& igmpProxyStatus() const noexcept {
    return inputs_.igmpProxyStatus;
  }
  const Lumo::Ptr<Irb::Multicast::IgmpProxyStatus const>& mldProxyStatus() const noexcept {
    return inputs_.mldProxyStatus;
  }

  // ---- The L2 pipeline ----

  // Stands while l2VxlanInModule is not null.
  const Lumo::Ptr<L2MVxlanIn>& l2VxlanInModule() const noexcept { return l2VxlanInModule_.get(); }
  const Lumo::Ptr<L2MVxlanOut>& l2VxlanOutModule() const noexcept {
    return l2VxlanOutModule_.get();
  }
  const Lumo::Ptr<VekL3Mcast::McastL2VxlanRxSet>& mcastL2VxlanRxSet() const noexcept {
    return mcastL2VxlanRxSet_.get();
  }
  const Lumo::Ptr<VekL3Mcast::McastL2VxlanTx>& mcastL2VxlanTx() const noexcept {
    return mcastL2VxlanTx_.get();
  }
  // Whether the fabric's coming up should build the pipeline: a tunnel or proxy VLAN asks.
  bool l2PipelineWanted() const;

  void doCreateL2MVxlanPipeline();
  void doDeleteL2MVxlanPipeline();
  void doConnectMfibToL2MVxlanIn(Lanx::AddressFamily af);
  void doConnectMfibToL2MVxlanOut(Lanx::AddressFamily af);
  void doConnectMfibToVlan(Lanx::AddressFamily af);
  // The gate of every proxy VLAN's interface in a default FIB; an invalid gate takes the
  // entries out.
  void doSetProxyVlanGates(VekL3Mcast::MfibAf& mfib, Vek::GateId gate);
  // The place where the L3 encapsulation modules meet the L2 one; whichever pipeline comes
  // second makes the link. Does nothing until the L3 side is there.
  void doConnectL3MVxlanInToL2MVxlanIn();
  void doDisconnectL3MVxlanInToL2MVxlanIn();

  // ---- Tables ----

  void handleDecapRoute(Lanx::AddressFamily af, const Routing::Multicast::UnderlayRoute& route);
  void handleVlanToSbdVlan(Lanx::AddressFamily af, Bridging::VlanId vlan);
  void handleTunnelMapping(Lanx::AddressFamily af, Bridging::VlanId vlan,
                           const Routing::Multicast::OverlayRoute& overlayRoute);
  void doDeleteOverlayGroup(const Routing::Multicast::OverlayVlanGroup& group);
  void doDeleteVlanOverlayGroups(Lanx::AddressFamily af, Bridging::VlanId vlan);
  void handleVxlanSwitchPktToMcastTunnelInSw();

  // Mirrors of the VTIs' VLAN to VNI maps, kept so that a deleted VLAN's VNI is known.
  Vxlan::VniExtOrNone vlanToVniMap(Bridging::VlanId vlan) const;
  bool vniToVlanMapHas(Vxlan::VniExtOrNone vni) const { return vniToVlanMap_.has(vni); }
  void vlanToVniMapIs(Bridging::VlanId vlan, Vxlan::VniExtOrNone vni) {
    vlanToVniMap_.is(*this, vlan, vni);
  }
  void vlanToVniMapDel(Bridging::VlanId vlan) { vlanToVniMap_.del(*this, vlan); }
  void vniToVlanMapIs(Vxlan::VniExtOrNone vni, Bridging::VlanId vlan) {
    vniToVlanMap_.is(*this, vni, vlan);
  }
  void vniToVlanMapDel(Vxlan::VniExtOrNone vni) { vniToVlanMap_.del(*this, vni); }

  Lumo::Ptr<VlanToOverlayGroup> vlanToOverlayGroup(Bridging::VlanId vlan) const {
    return vlanToOverlayGroup_.get(vlan);
  }
  std::size_t vlanToOverlayGroups() const noexcept { return vlanToOverlayGroup_.size(); }

  Lumo::Ptr<NestedSm_VtiStatus> vtiStatusSm(Lanx::IntfId intf) const {
    return HN_NestedSm_VtiStatus_.sm(intf);
  }

  // ---- Proxy VLANs ----

  void handleIgmpProxyVlan(Bridging::VlanId vlan);
  void handleMldProxyVlan(Bridging::VlanId vlan);
  void addVlan(Bridging::VlanId vlan);
  void deleteVlan(Bridging::VlanId vlan);
  void addVlanFilterGrpc(Bridging::VlanId vlan);
  void deleteVlanFilterGrpc(Bridging::VlanId vlan);
  void addAllVlansFilterGrpc();
  // Walks the tunnel mappings and the proxy VLANs again and sends every filter.
  void updateAllVlanGroups();

  // ---- The VRFs' life ----

  void vrfStarted(const L3::VrfName& vrf, Lanx::AddressFamily af) override;
  void vrfStopping(const L3::VrfName& vrf, Lanx::AddressFamily af) override;
  void vrfIdChanged(const L3::VrfName& vrf, Vrf::VrfIdMap::VrfId oldId,
                    Vrf::VrfIdMap::VrfId newId) override;

 private:
  using VlanStatusColl4 =
      Qel::NestedSmCollection<VxlanPipeline, NestedSm_VlanStatus4,
                              &Routing::Multicast::IpTunnelVlanForwardingStatus::vlanId>;
  using VlanStatusColl6 =
      Qel::NestedSmCollection<VxlanPipeline, NestedSm_VlanStatus6,
                              &Routing::Multicast::IpTunnelVlanForwardingStatus::vlanId>;

  void handleVtiStatus(const Lanx::IntfId& intf);
  void handleVlanStatus(Lanx::AddressFamily af, Bridging::VlanId vlan);
  void igmpProxyStatusDispatch(const Bridging::VlanId& vlan);
  void mldProxyStatusDispatch(const Bridging::VlanId& vlan);
  // The default VRF's FIB module of a family, or null.
  Lumo::Ptr<VekL3Mcast::MfibAf> defaultMfib(Lanx::AddressFamily af) const;
  // Sets or, with an invalid gate, removes a VLAN's gate entry in a FIB module; the FIB's
  // routes are sent again if it changed.
  void doSetVlanGate(VekL3Mcast::MfibAf& mfib, Lanx::IntfId vlanIntf, Vek::GateId gate);
  // One port command per fabric receive path.
  void sendVlanFilter(std::string_view cmd, const std::vector<std::uint32_t>& vlans);
  void doCreateL2ReceiveSet();
  void doCreateL2Decap();
  // The snooping and flood-set machines, made with the encapsulation module and dropped
  // before it goes.
  void doCreateSnoopingMachines();
  void doDeleteSnoopingMachines();

  VxlanPipelineOwner* owner_;
  Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair_;
  Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup_;
  Lumo::Ptr<Vek::VekCommonSmData> vekcsd_;
  Lumo::Ptr<Lanx::PamRxBuf const> rxBuf_;
  const VekL3Mcast::MfaInputs& inputs_;

  Qel::ValueAttr<Lumo::Ptr<VekL3Mcast::McastL2VxlanRxSet>, kMcastL2VxlanRxSet> mcastL2VxlanRxSet_;
  Qel::ValueAttr<Lumo::Ptr<VekL3Mcast::McastL2VxlanTx>, kMcastL2VxlanTx> mcastL2VxlanTx_;
  Qel::ValueAttr<Lumo::Ptr<L2MVxlanIn>, kL2VxlanInModule> l2VxlanInModule_;
  Qel::ValueAttr<Lumo::Ptr<L2MVxlanOut>, kL2VxlanOutModule> l2VxlanOutModule_;
  // Snooped membership and flood sets reach the encapsulation module while it stands.
  Lanx::ByFamilyAttr<Qel::ValueAttr<Lumo::Ptr<VekL3Mcast::VekGmpVlanGroupMembershipSm>,
                                    kGmpVlanGroup4MembershipSm>,
                     kGmpVlanGroup6MembershipSm>
      vekGmpVlanGroupMembershipSm_;
  Qel::ValueAttr<Lumo::Ptr<VekL3Mcast::VekOismFloodSetSm>, kOismFloodSetSm> oismFloodSetSm_;

  Qel::HashCollectionAttr<Bridging::VlanId, Vxlan::VniExtOrNone, kVlanToVniMap> vlanToVniMap_;
  Qel::HashCollectionAttr<Vxlan::VniExtOrNone, Bridging::VlanId, kVniToVlanMap> vniToVlanMap_;
  Qel::HashCollectionAttr<L3::VrfName, Bridging::VlanIdOrNone, kVrfToSBDVlan> vrfToSBDVlan_;
  Qel::HashCollectionAttr<Bridging::VlanIdOrNone, L3::VrfName, kSbdVlanToVrf> sbdVlanToVrf_;
  Qel::HashCollectionAttr<Vxlan::VniExtOrNone, Bridging::VlanId, kRemoteVniToVlan>
      remoteVniToVlan_;
  Qel::HashCollectionAttr<Bridging::VlanId, Lumo::Ptr<VlanToOverlayGroup>, kVlanToOverlayGroup>
      vlanToOverlayGroup_;

  Qel::NestedSmCollection<VxlanPipeline, NestedSm_VtiStatus, &Vxlan::VtiStatus::intfId>
      HN_NestedSm_VtiStatus_{this};
  VlanStatusColl4 HN_NestedSm_VlanStatus4_{this};
  VlanStatusColl6 HN_NestedSm_VlanStatus6_{this};

  // Reactors, declared last so that they go before what they watch.
  Qel::SmSubscriber<VxlanPipeline> vtiStatusDirDispatch_{
      this, &Qel::reactorDispatch<VxlanPipeline, Vxlan::VtiStatusDir::kVtiStatus,
                                  &VxlanPipeline::handleVtiStatus>};
  Lanx::ByFamilyReactor<VxlanPipeline,
                        Routing::Multicast::IpTunnelForwardingStatus::kVlanStatus,
                        &VxlanPipeline::handleVlanStatus>
      tunnelFwdingStatusDispatch_{this};
  Lanx::ByFamilyReactor<VxlanPipeline, Routing::Multicast::IpTunnelDecapConfig::kRoute,
                        &VxlanPipeline::handleDecapRoute>
      tunDecapConfigDispatch_{this};
  Lanx::ByFamilyReactor<VxlanPipeline, Irb::Multicast::McastIrbStatus::kSbdVlan,
                        &VxlanPipeline::handleVlanToSbdVlan>
      mcastIrbStatusDispatch_{this};
  Qel::SmSubscriber<VxlanPipeline> igmpProxyStatusDispatch_{
      this, &Qel::reactorDispatch<VxlanPipeline, Irb::Multicast::IgmpProxyStatus::kVlan,
                                  &VxlanPipeline::igmpProxyStatusDispatch>};
  Qel::SmSubscriber<VxlanPipeline> mldProxyStatusDispatch_{
      this, &Qel::reactorDispatch<VxlanPipeline, Irb::Multicast::IgmpProxyStatus::kVlan,
                                  &VxlanPipeline::mldProxyStatusDispatch>};
  Qel::SmSubscriber<VxlanPipeline> hwCapabilitiesDispatch_{
      this,
      &Qel::reactorDispatch<VxlanPipeline, Bridging::HwCapabilities::kVxlanSwitchPktToMcastTunnelInSw,
                            &VxlanPipeline::handleVxlanSwitchPktToMcastTunnelInSw>};
};

}  // namespace VekMVxlan
