#include "vxlan/VxlanPipeline.h"

#include "runtime/dov/TaskSchedulerRoot.h"
#include "runtime/lumo/Assert.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleCounters.h"
#include "runtime/state/VlanIntfId.h"
#include "runtime/vek/NamespaceDut.h"

namespace VekMVxlan {

using Lanx::AddressFamily;
using VekL3Mcast::McastL2VxlanRxSet;
using VekL3Mcast::McastRxType;

VxlanPipeline::VxlanPipeline(VxlanPipelineOwner* owner, const VekL3Mcast::MfaInputs& inputs,
                             Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair,
                             Lumo::Ptr<Vek::CmdConfigGroup> cmdConfigGroup,
                             Lumo::Ptr<Vek::VekCommonSmData> vekcsd,
                             Lumo::Ptr<Lanx::PamRxBuf const> rxBuf)
    : owner_(owner),
      modulePair_(std::move(modulePair)),
      cmdConfigGroup_(std::move(cmdConfigGroup)),
      vekcsd_(std::move(vekcsd)),
      rxBuf_(std::move(rxBuf)),
      inputs_(inputs) {
  handleInitialized();
}

VxlanPipeline::~VxlanPipeline() {
  hasNotificationActiveIs(false);
  qelDoZombieReactors(true);
}

// ---- Inputs ----

namespace {

template <typename Entity>
void follow(Qel::SmSubscriber<VxlanPipeline>& reactor, const Lumo::Ptr<Entity const>& entity) {
  reactor.publisherIs(const_cast<Entity*>(entity.get()));
  reactor.isRegisteredIs(true);
}

}  // namespace

void VxlanPipeline::handleInitialized() {
  follow(vtiStatusDirDispatch_, vtiStatusDir());
  for (AddressFamily af : Lanx::bothFamilies) {
    tunnelFwdingStatusDispatch_.publisherIs(af, tunnelFwdingStatus(af).get());
    tunDecapConfigDispatch_.publisherIs(af, tunDecapConfig(af).get());
    mcastIrbStatusDispatch_.publisherIs(af, mcastIrbStatus(af).get());
  }
  follow(igmpProxyStatusDispatch_, igmpProxyStatus());
  follow(mldProxyStatusDispatch_, mldProxyStatus());
  follow(hwCapabilitiesDispatch_, inputs_.hwCapabilities);

  HN_NestedSm_VtiStatus_.smDelAll();
  if (vtiStatusDir()) {
    for (const auto& member : vtiStatusDir()->vtiStatuses()) handleVtiStatus(member.key);
  }
  HN_NestedSm_VlanStatus4_.smDelAll();
  HN_NestedSm_VlanStatus6_.smDelAll();
  for (AddressFamily af : Lanx::bothFamilies) {
    if (!tunnelFwdingStatus(af)) continue;
    for (const auto& member : tunnelFwdingStatus(af)->vlanStatuses()) {
      handleVlanStatus(af, member.key);
    }
  }
  handleVxlanSwitchPktToMcastTunnelInSw();
}

void VxlanPipeline::handleVtiStatus(const Lanx::IntfId& intf) {
  if (Lumo::Ptr<Vxlan::VtiStatus const> status = vtiStatusDir()->vtiStatus(intf)) {
    HN_NestedSm_VtiStatus_.smIs(status);
  } else {
    // The VLANs of a VTI that went leave the L2 modules with it.
    if (const Lumo::Ptr<NestedSm_VtiStatus> gone = HN_NestedSm_VtiStatus_.sm(intf)) {
      gone->handleVtiGone();
    }
    HN_NestedSm_VtiStatus_.smDel(intf);
  }
}

void VxlanPipeline::handleVlanStatus(AddressFamily af, Bridging::VlanId vlan) {
  auto status = tunnelFwdingStatus(af)->vlanStatus(vlan);
  if (af == AddressFamily::ipv6) {
    if (status) {
      HN_NestedSm_VlanStatus6_.smIs(status);
    } else {
      HN_NestedSm_VlanStatus6_.smDel(vlan);
    }
  } else if (status) {
    HN_NestedSm_VlanStatus4_.smIs(status);
  } else {
    HN_NestedSm_VlanStatus4_.smDel(vlan);
  }
  if (!status) doDeleteVlanOverlayGroups(af, vlan);
}

// ---- The L2 pipeline ----

Lumo::Ptr<VekL3Mcast::MfibAf> VxlanPipeline::defaultMfib(AddressFamily af) const {
  return owner_->mfibModule(L3::VrfName::defaultVrf(), af);
}

bool VxlanPipeline::l2PipelineWanted() const {
  auto hasVlans = [](const auto& table) { return table && !table->vlanStatuses().empty(); };
  auto hasProxies = [](const auto& table) { return table && !table->empty(); };
  return hasVlans(tunnelFwdingStatus(AddressFamily::ipv4)) || hasVlans(tunnelFwdingStatus(AddressFamily::ipv6)) ||
         hasProxies(igmpProxyStatus()) || hasProxies(mldProxyStatus());
}

void VxlanPipeline::doCreateL2ReceiveSet() {
  auto set = Lumo::makePtr<McastL2VxlanRxSet>();
  mcastL2VxlanRxSet_.is(*this, set);
  for (McastRxType type : VekL3Mcast::allMcastRxTypes) {
    const auto rx = set->mcastL2VxlanRxIs(type, rxBuf_);
    rx->createBessPort(cmdConfigGroup_);
    rx->createRxModule(modulePair_);
    rx->createVlanMetadataModule(modulePair_);
    VekL3Mcast::addVlanMetadataCounters(rx->vlanMetadataModule(), vekcsd_);
    rx->rxModule()->connectModule(rx->vlanMetadataModule());
  }
  QEL_ASSERT(mcastL2VxlanRxSet() && mcastL2VxlanRxSet()->mcastL2VxlanRxs() == 3,
             "mcastL2VxlanRxSet and mcastL2VxlanRxSet->mcastL2VxlanRxs() == 3");
  owner_->attachMcastVxlanRxSetTasks(set);
}

void VxlanPipeline::doCreateL2Decap() {
  const auto out = l2MVxlanOutFactory(Lumo::String(L2MVxlanOut::defaultName),
                                      L2MVxlanOut::defaultInGates, L2MVxlanOut::defaultOutGates,
                                      modulePair_);
  l2VxlanOutModule_.is(*this, out);
  addL2MVxlanOutCounters(out, vekcsd_);
  doConnectMfibToL2MVxlanOut(AddressFamily::ipv4);
  doConnectMfibToL2MVxlanOut(AddressFamily::ipv6);
  const auto hwFwd = mcastL2VxlanRxSet()->mcastL2VxlanRx(McastRxType::mcastHwFwd);
  auto tx = Lumo::makePtr<VekL3Mcast::McastL2VxlanTx>(hwFwd->portName());
  mcastL2VxlanTx_.is(*this, tx);
  tx->createTxModule(modulePair_);
  owner_->attachMcastL2VxlanTxTasks(tx);
  out->connectModule(tx->txModule());
}

void VxlanPipeline::doCreateL2MVxlanPipeline() {
  VEK_TRACE(info, "Creating the L2 VXLAN pipeline");
  doCreateL2ReceiveSet();
  const auto in = l2MVxlanInFactory(Lumo::String(L2MVxlanIn::defaultName),
                                    L2MVxlanIn::defaultInGates, L2MVxlanIn::defaultOutGates,
                                    modulePair_);
  l2VxlanInModule_.is(*this, in);
  addL2MVxlanInCounters(in, vekcsd_);
  for (const auto& rx : mcastL2VxlanRxSet()->mcastL2VxlanRx()) {
    rx.value->vlanMetadataModule()->connectModule(in);
  }
  doConnectMfibToL2MVxlanIn(AddressFamily::ipv4);
  doConnectMfibToL2MVxlanIn(AddressFamily::ipv6);
  owner_->handleFwdDevStateSm();
  // Only a namespace device decapsulates; everywhere else the handlers find no decap
  // module and skip it.
  if (Vek::isNamespaceDut()) doCreateL2Decap();

  updateAllVlanGroups();
  doCreateSnoopingMachines();

  for (const auto& member : HN_NestedSm_VtiStatus_.members()) {
    NestedSm_VtiStatus& vti = *member.value;
    vti.handleSrcIpIntf();
    vti.handleVtepAddr(AddressFamily::ipv4);
    vti.handleVtepAddr(AddressFamily::ipv6);
    for (const auto& entry : vti.vtiStatus().vlanToVniMaps()) vti.handleVlanToVniMap(entry.key);
  }
  for (AddressFamily af : Lanx::bothFamilies) {
    if (!tunDecapConfig(af)) continue;
    for (const auto& route : tunDecapConfig(af)->routes()) handleDecapRoute(af, route.key);
  }
  for (AddressFamily af : Lanx::bothFamilies) {
    if (!mcastIrbStatus(af)) continue;
    for (const auto& entry : mcastIrbStatus(af)->sbdVlans()) handleVlanToSbdVlan(af, entry.key);
  }
  handleVxlanSwitchPktToMcastTunnelInSw();
  if (inputs_.bridgingConfig) in->setLocalBridgeMacAddr(inputs_.bridgingConfig->bridgeMacAddr());
  doConnectL3MVxlanInToL2MVxlanIn();
}

void VxlanPipeline::doDeleteL2MVxlanPipeline() {
  VEK_TRACE(info, "Deleting the L2 VXLAN pipeline");
  doDeleteSnoopingMachines();
  for (AddressFamily af : Lanx::bothFamilies) {
    const auto mfib = defaultMfib(af);
    if (!mfib) continue;
    if (l2VxlanInModule()) l2VxlanInModule()->disconnectModule(mfib);
    if (l2VxlanOutModule()) {
      // The proxy VLANs' gate goes with the link: their routes leave as a FIB without the
      // pipeline sends them, not by a gate that leads nowhere.
      doSetProxyVlanGates(*mfib, Vek::GateId());
      mfib->disconnectModule(l2VxlanOutModule());
    }
  }
  if (const auto& set = mcastL2VxlanRxSet()) {
    for (const auto& member : set->mcastL2VxlanRx()) {
      VekL3Mcast::McastL2VxlanRx& rx = *member.value;
      const Lumo::Ptr<VekL3Mcast::VlanMetadataModule> vlanMetadata = rx.vlanMetadataModule();
      if (!vlanMetadata) continue;
      if (rx.rxModule()) rx.rxModule()->disconnectModule(vlanMetadata);
      if (l2VxlanInModule()) vlanMetadata->disconnectModule(l2VxlanInModule());
      rx.vlanMetadataModuleDel();
      Vek::freeModuleCounters(vlanMetadata, vekcsd_);
    }
  }
  doDisconnectL3MVxlanInToL2MVxlanIn();
  if (Lumo::Ptr<L2MVxlanOut> out = l2VxlanOutModule()) {
    l2VxlanOutModule_.is(*this, Lumo::Ptr<L2MVxlanOut>());
    Vek::freeModuleCounters(out, vekcsd_);
  }
  if (Lumo::Ptr<L2MVxlanIn> in = l2VxlanInModule()) {
    l2VxlanInModule_.is(*this, Lumo::Ptr<L2MVxlanIn>());
    Vek::freeModuleCounters(in, vekcsd_);
  }
  owner_->handleFwdDevStateSm();
  mcastL2VxlanTx_.is(*this, Lumo::Ptr<VekL3Mcast::McastL2VxlanTx>());
  mcastL2VxlanRxSet_.is(*this, Lumo::Ptr<McastL2VxlanRxSet>());
}

void VxlanPipeline::doCreateSnoopingMachines() {
  const auto scheduler = Dov::TaskSchedulerRoot::findOrCreateScheduler();
  const auto make = [&](AddressFamily af) {
    auto sm = Lumo::makePtr<VekL3Mcast::VekGmpVlanGroupMembershipSm>(
        af, inputs_.gmpVlanGroupMembershipStatus[af], l2VxlanInModule(), scheduler);
    sm->hasNotificationActiveIs(true);
    return sm;
  };
  for (AddressFamily af : Lanx::bothFamilies) {
    if (inputs_.gmpVlanGroupMembershipStatus[af]) vekGmpVlanGroupMembershipSm_[af].is(*this, make(af));
  }
  if (inputs_.oismFloodSet) {
    auto floodSets = Lumo::makePtr<VekL3Mcast::VekOismFloodSetSm>(l2VxlanInModule(),
                                                                  inputs_.oismFloodSet, scheduler);
    floodSets->hasNotificationActiveIs(true);
    oismFloodSetSm_.is(*this, floodSets);
  }
}

void VxlanPipeline::doDeleteSnoopingMachines() {
  // Quiet first, so that no pending scan sends to a module on its way out.
  for (AddressFamily af : Lanx::bothFamilies) {
    if (const auto& sm = vekGmpVlanGroupMembershipSm_[af].get()) sm->hasNotificationActiveIs(false);
  }
  if (oismFloodSetSm_.get()) oismFloodSetSm_.get()->hasNotificationActiveIs(false);
  for (AddressFamily af : Lanx::bothFamilies) vekGmpVlanGroupMembershipSm_[af].is(*this, nullptr);
  oismFloodSetSm_.is(*this, nullptr);
}

void VxlanPipeline::doConnectMfibToL2MVxlanIn(AddressFamily af) {
  const auto mfib = defaultMfib(af);
  if (!mfib || !l2VxlanInModule()) return;
  l2VxlanInModule()->connectViaReservedGate(
      mfib, af == AddressFamily::ipv4 ? L2MVxlanIn::mfibGate : L2MVxlanIn::mfibGate + 1);
}

void VxlanPipeline::doConnectMfibToL2MVxlanOut(AddressFamily af) {
  const auto mfib = defaultMfib(af);
  if (!mfib || !l2VxlanOutModule()) return;
  mfib->connectModule(l2VxlanOutModule());
}

void VxlanPipeline::doConnectMfibToVlan(AddressFamily af) {
  const auto mfib = defaultMfib(af);
  // Without a decap module no VLAN leaves the FIB towards it; its name is what the FIB's
  // gate is found by.
  if (!mfib || !l2VxlanOutModule()) return;
  doSetProxyVlanGates(*mfib, mfib->findGateByName(l2VxlanOutModule()->name(), false));
}

void VxlanPipeline::doSetProxyVlanGates(VekL3Mcast::MfibAf& mfib, Vek::GateId gate) {
  for (const auto* table : {igmpProxyStatus().get(), mldProxyStatus().get()}) {
    if (!table) continue;
    for (const auto& vlan : table->vlans()) {
      doSetVlanGate(mfib, Lanx::VlanIntfId::vlanIdToIntfId(vlan.key), gate);
    }
  }
}

void VxlanPipeline::doConnectL3MVxlanInToL2MVxlanIn() {
  if (!l2VxlanInModule()) return;
  owner_->l2VxlanInModuleChanged(l2VxlanInModule());
}

void VxlanPipeline::doDisconnectL3MVxlanInToL2MVxlanIn() {
  if (!l2VxlanInModule()) return;
  owner_->l2VxlanInModuleChanged(nullptr);
}

// ---- The VRFs' life ----

void VxlanPipeline::vrfStarted(const L3::VrfName& vrf, AddressFamily af) {
  if (vrf != L3::VrfName::defaultVrf()) return;
  // The FIB's gate towards the decap module has to stand before the VLANs' entries name it.
  doConnectMfibToL2MVxlanIn(af);
  doConnectMfibToL2MVxlanOut(af);
  doConnectMfibToVlan(af);
}

void VxlanPipeline::vrfStopping(const L3::VrfName&, AddressFamily) {
  // A FIB module that goes takes its links with it.
}

void VxlanPipeline::vrfIdChanged(const L3::VrfName&, Vrf::VrfIdMap::VrfId,
                                 Vrf::VrfIdMap::VrfId) {
  // Only the L3 side knows VRFs by id.
}

}  // namespace VekMVxlan
