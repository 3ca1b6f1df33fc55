#include "pipeline/McastVrfContainer.h"

#include <unistd.h>

#include "pipeline/IntfAllMulti.h"
#include "pipeline/MetaDataModule.h"
#include "pipeline/VekL3McastModuleManager.h"
#include "proto/vek.pb.h"
#include "runtime/lumo/Assert.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

namespace {

template <typename Arg>
Arg* mfibArg(const L3::VrfName& vrfName, Lanx::AddressFamily af, bool mode,
             Vrf::VrfIdMap::VrfId vrfId) {
  auto* arg = new Arg;
  arg->set_vrfname(std::string(vrfName.view()));
  arg->set_af(static_cast<std::uint32_t>(af));
  arg->set_size(McastVrfContainer::mfibSize);
  arg->set_mode(mode);
  arg->set_vrfid(vrfId.value());
  return arg;
}

std::uint32_t mfibGate(const Lumo::Ptr<MfibAf>& mfib) {
  return MetaDataModule::reservedMfibGate(mfib->af());
}

}  // namespace

McastVrfContainer::McastVrfContainer(McastModuleManager* manager, L3::VrfName vrfName)
    : manager_(manager), vrfName_(std::move(vrfName)) {}

McastVrfContainer::~McastVrfContainer() { ioctlFdClose(); }

void McastVrfContainer::ioctlFdClose() noexcept {
  if (ioctlFd_ < 0) return;
  ::close(ioctlFd_);
  ioctlFd_ = -1;
}

const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& McastVrfContainer::txDemuxer() const {
  return manager_->txDemuxerModule();
}

const Lumo::Ptr<IgmpV2>& McastVrfContainer::igmpV2() const { return manager_->igmpV2Module(); }

bool McastVrfContainer::isDefault() const noexcept {
  return mfibModule_.empty() && intf_.empty() && !mcastAnyRxSet() && pimRegRxAf_.empty();
}

void McastVrfContainer::mMplsOutSmDel() { mMplsOutSm_ = nullptr; }

void McastVrfContainer::mMplsOutSmIs(Lumo::Ptr<Qel::StateMachine> sm) {
  mMplsOutSm_ = std::move(sm);
}

// ---- FIB modules ----

Lumo::Ptr<MfibAf> McastVrfContainer::createMfibModule(
    Lanx::AddressFamily af, Vrf::VrfIdMap::VrfId vrfId, bool oru,
    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (Lumo::Ptr<MfibAf> existing = mfibModule(af)) return existing;
  const Lumo::String name =
      joinedName({af == Lanx::AddressFamily::ipv4 ? "MfibIpv4" : "MfibIpv6", vrfName_.view()});
  google::protobuf::Message* arg = nullptr;
  if (oru) {
    VEK_TRACE(info, "{}: create Mfib module {}", vrfName_, af);
    arg = mfibArg<vek::pb::MfibArg>(vrfName_, af, true, vrfId);
  } else {
    VEK_TRACE(info, "{}: create MfibVek module {}", vrfName_, af);
    arg = mfibArg<vek::pb::MfibVekArg>(vrfName_, af, false, vrfId);
  }
  Lumo::Ptr<MfibAf> mfib =
      mfibModuleIs(name, oru ? Vek::VekModule::mfib : Vek::VekModule::mfibVek, mfibGates,
                   mfibGates, arg, modulePair, vrfName_, af);
  connectMfibModule(af);
  return mfib;
}

void McastVrfContainer::connectMfibModule(Lanx::AddressFamily af) {
  const Lumo::Ptr<MfibAf> mfib = mfibModule(af);
  const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& demux = txDemuxer();
  QEL_ASSERT(demux, "txDemuxer");
  mfib->connectModule(demux);
  mfib->txDemuxerGateIdIs(mfib->findGateByName(demux->name(), false));
  if (const auto& set = mcastAnyRxSet()) {
    for (const auto& rx : set->mcastAnyRx()) connectMcastAnyRxMfib(rx.value, mfib);
  }
  if (const Lumo::Ptr<PimRegRx> pimRegRx = pimRegRxAf(af)) connectPimRegRxMfib(pimRegRx, mfib);
  for (const auto& intf : intfs()) connectIntfMfib(intf.value, mfib, demux);
}

void McastVrfContainer::disconnectMfibModule(Lanx::AddressFamily af) {
  const Lumo::Ptr<MfibAf> mfib = mfibModule(af);
  if (const Lumo::Ptr<PimRegRx> pimRegRx = pimRegRxAf(af)) disconnectPimRegRxMfib(pimRegRx, mfib);
  for (const auto& intf : intfs()) disconnectIntfMfib(intf.value, mfib);
  if (const auto& set = mcastAnyRxSet()) {
    for (const auto& rx : set->mcastAnyRx()) disconnectMcastAnyRxMfib(rx.value, mfib);
  }
  const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& demux = txDemuxer();
  QEL_ASSERT(demux, "txDemuxer");
  mfib->disconnectModule(demux);
}

void McastVrfContainer::deleteMfibModule(Lanx::AddressFamily af) {
  if (!mfibModule(af)) return;
  disconnectMfibModule(af);
  mfibModuleDel(af);
}

// ---- Any-device receive paths ----

Lumo::Ptr<McastAnyRxSet> McastVrfContainer::createMcastAnyRxSet(
    Vrf::VrfIdMap::VrfId vrfId, const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair,
    const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  if (const auto& existing = mcastAnyRxSet()) return existing;
  const Lumo::Ptr<McastAnyRxSet> set = mcastAnyRxSetIs(vrfName_);
  for (McastRxType rxType : allMcastRxTypes) {
    const Lumo::Ptr<McastAnyRx> rx = set->mcastAnyRxIs(vrfName_, rxType, manager_->rxBufSize());
    rx->createBessPort(configGroup);
    rx->createRxModule(modulePair);
    rx->createMetaDataModule(vrfId, modulePair);
  }
  QEL_ASSERT(mcastAnyRxSet() && (mcastAnyRxSet()->mcastAnyRxs() == 3),
             "mcastAnyRxSet() and ( mcastAnyRxSet()->mcastAnyRxs() == 3 )");
  connectMcastAnyRxSet();
  return set;
}

void McastVrfContainer::connectMcastAnyRxSet() {
  for (const auto& member : mcastAnyRxSet()->mcastAnyRx()) {
    const Lumo::Ptr<McastAnyRx>& rx = member.value;
    rx->rxModule()->connectModule(rx->metaDataModule());
    for (const auto& mfib : mfibModules()) connectMcastAnyRxMfib(rx, mfib.value);
    // Every receive type of every VRF feeds IGMPv2 alike while the module exists, whether or
    // not it serves this VRF: the module tells the VRFs apart by the metadata's VRF id.
    if (const Lumo::Ptr<IgmpV2>& igmp = igmpV2()) connectMcastAnyRxIgmpV2(rx, igmp);
  }
}

// The link from each receive module to its metadata module goes with the modules.
void McastVrfContainer::disconnectMcastAnyRxSet() {
  for (const auto& member : mcastAnyRxSet()->mcastAnyRx()) {
    for (const auto& mfib : mfibModules()) disconnectMcastAnyRxMfib(member.value, mfib.value);
    if (const Lumo::Ptr<IgmpV2>& igmp = igmpV2()) disconnectMcastAnyRxIgmpV2(member.value, igmp);
  }
}

void McastVrfContainer::deleteMcastAnyRxSet() {
  VEK_TRACE(info, "vrfName: {}", vrfName_);
  if (!mcastAnyRxSet()) return;
  disconnectMcastAnyRxSet();
  mcastAnyRxSetDel();
}

void McastVrfContainer::connectMcastAnyRxMfib(const Lumo::Ptr<McastAnyRx>& rx,
                                              const Lumo::Ptr<MfibAf>& mfib) {
  rx->metaDataModule()->connectViaReservedGate(mfib, mfibGate(mfib));
}

void McastVrfContainer::disconnectMcastAnyRxMfib(const Lumo::Ptr<McastAnyRx>& rx,
                                                 const Lumo::Ptr<MfibAf>& mfib) {
  rx->metaDataModule()->disconnectModule(mfib);
}

void McastVrfContainer::connectMcastAnyRxIgmpV2(const Lumo::Ptr<McastAnyRx>& rx,
                                                const Lumo::Ptr<IgmpV2>& igmpV2) {
  rx->metaDataModule()->connectViaReservedGate(igmpV2, Constants::reservedIgmpV2Gate);
}

void McastVrfContainer::disconnectMcastAnyRxIgmpV2(const Lumo::Ptr<McastAnyRx>& rx,
                                                   const Lumo::Ptr<IgmpV2>& igmpV2) {
  rx->metaDataModule()->disconnectModule(igmpV2);
}

// ---- PIM register paths ----

Lumo::Ptr<PimRegRx> McastVrfContainer::createPimRegRx(
    Lanx::AddressFamily af, const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair,
    const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  if (Lumo::Ptr<PimRegRx> existing = pimRegRxAf(af)) return existing;
  const Lumo::Ptr<PimRegRx> pimRegRx = pimRegRxAfIs(vrfName_, af);
  pimRegRx->createBessPort(configGroup);
  pimRegRx->createRxModule(modulePair);
  pimRegRx->createMetaDataModule(modulePair);
  connectPimRegRx(af);
  return pimRegRx;
}

void McastVrfContainer::connectPimRegRx(Lanx::AddressFamily af) {
  const Lumo::Ptr<PimRegRx> pimRegRx = pimRegRxAf(af);
  pimRegRx->rxModule()->connectModule(pimRegRx->metaDataModule());
  if (const Lumo::Ptr<MfibAf> mfib = mfibModule(af)) connectPimRegRxMfib(pimRegRx, mfib);
}

void McastVrfContainer::disconnectPimRegRx(Lanx::AddressFamily af) {
  if (const Lumo::Ptr<MfibAf> mfib = mfibModule(af)) disconnectPimRegRxMfib(pimRegRxAf(af), mfib);
}

void McastVrfContainer::deletePimRegRx(Lanx::AddressFamily af) {
  if (!pimRegRxAf(af)) return;
  disconnectPimRegRx(af);
  pimRegRxAfDel(af);
}

void McastVrfContainer::connectPimRegRxMfib(const Lumo::Ptr<PimRegRx>& pimRegRx,
                                            const Lumo::Ptr<MfibAf>& mfib) {
  pimRegRx->metaDataModule()->connectViaReservedGate(mfib, mfibGate(mfib));
}

void McastVrfContainer::disconnectPimRegRxMfib(const Lumo::Ptr<PimRegRx>& pimRegRx,
                                               const Lumo::Ptr<MfibAf>& mfib) {
  pimRegRx->metaDataModule()->disconnectModule(mfib);
}

// ---- Interfaces ----

Lumo::Ptr<McastIntf> McastVrfContainer::createIntfModule(
    Lanx::IntfId intfId, const Lumo::String& deviceName, bool txOnly,
    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair,
    const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  if (Lumo::Ptr<McastIntf> existing = intf(intfId)) return existing;
  const Lumo::Ptr<McastIntf> made =
      intfIs(vrfName_, intfId, txOnly ? McastIntfType::txOnly : McastIntfType::rxAndTx);
  if (!txOnly) {
    made->createBessPort(deviceName, configGroup);
    made->createRxModule(deviceName, modulePair);
    made->createMetaDataModule(modulePair);
    made->createTxModule(deviceName, modulePair);
  }
  allMultiIs(ioctlFd_, deviceName, true);
  connectIntfModule(intfId, txOnly);
  return made;
}

void McastVrfContainer::connectIntfModule(Lanx::IntfId intfId, bool txOnly) {
  VEK_TRACE(info, "vrfName: {}, intfId: {}", vrfName_, intfId);
  const Lumo::Ptr<McastIntf> mcastIntf = intf(intfId);
  if (mcastIntf->intfType() == McastIntfType::rxAndTx) {
    mcastIntf->rxModule()->connectModule(mcastIntf->metaDataModule());
  }
  const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& demux = txDemuxer();
  QEL_ASSERT(demux, "txDemuxer");
  if (!txOnly) {
    demux->connectModule(mcastIntf->txModule());
    const Vek::GateId gate = demux->findGateByName(mcastIntf->txModule()->name(), false);
    VEK_TRACE(info, "{}: Adding intfId ( {} ) vlanId ( {} ) to oGate ( {} ) entry in TxDemuxer",
              vrfName_, intfId, 0, gate);
    demux->addIntfToOutGate(intfId, Bridging::VlanIdOrNone(), gate);
  }
  for (const auto& mfib : mfibModules()) connectIntfMfib(mcastIntf, mfib.value, demux);
}

void McastVrfContainer::connectIntfMfib(const Lumo::Ptr<McastIntf>& intf,
                                        const Lumo::Ptr<MfibAf>& mfib,
                                        const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& txDemuxer) {
  if (intf->intfType() == McastIntfType::rxAndTx) {
    intf->metaDataModule()->connectViaReservedGate(mfib, mfibGate(mfib));
  }
  QEL_ASSERT(txDemuxer, "txDemuxer");
  mfib->intfIdToOutGateIs(intf->intfId(), mfib->findGateByName(txDemuxer->name(), false));
}

void McastVrfContainer::disconnectIntfMfib(const Lumo::Ptr<McastIntf>& intf,
                                           const Lumo::Ptr<MfibAf>& mfib) {
  if (intf->intfType() == McastIntfType::rxAndTx) intf->metaDataModule()->disconnectModule(mfib);
  mfib->intfIdToOutGateDel(intf->intfId());
}

// The demultiplexer entry and link are undone for every interface, also for a txOnly one
// that never had them: the daemon accepts deleting an absent entry, and disconnecting from
// no transmit module does nothing. The receive module's link to its metadata module goes
// with the modules.
void McastVrfContainer::disconnectIntfModule(Lanx::IntfId intfId) {
  const Lumo::Ptr<McastIntf> mcastIntf = intf(intfId);
  const Lumo::Ptr<VekTxDemuxer::TxDemuxer>& demux = txDemuxer();
  QEL_ASSERT(demux, "txDemuxer");
  VEK_TRACE(info, "{}: Deleting intfId ( {} ) to oGate entry in TxDemuxer", vrfName_, intfId);
  demux->deleteIntfToOutGate(intfId);
  demux->disconnectModule(mcastIntf->txModule());
  for (const auto& mfib : mfibModules()) disconnectIntfMfib(mcastIntf, mfib.value);
}

// Any interface of the device name clears the flag; there is no count of users.
void McastVrfContainer::deleteIntfModule(Lanx::IntfId intfId, const Lumo::String& deviceName) {
  if (!intf(intfId)) return;
  disconnectIntfModule(intfId);
  allMultiIs(ioctlFd_, deviceName, false);
  intfDel(intfId);
}

}  // namespace VekL3Mcast
