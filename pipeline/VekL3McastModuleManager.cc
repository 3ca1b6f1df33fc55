#include "pipeline/VekL3McastModuleManager.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "proto/vek.pb.h"
#include "runtime/lanx/SocketAt.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ModuleCounters.h"

namespace VekL3Mcast {

McastModuleManager::McastModuleManager(Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair) {
  modulePair_.is(*this, std::move(modulePair));
  handleInitialized();
}

void McastModuleManager::handleInitialized() {
  VEK_TRACE(info, " Creating TxDemuxer module");
  if (std::getenv(bypassTxDemuxerEnv) == nullptr) {
    txDemuxerModuleIs(txDemuxerName, txDemuxerGates, txDemuxerGates, modulePair());
  }
  // Ports need the receive buffer whether or not the demultiplexer is bypassed.
  rxBufSizeIs(rxBufBytes);
}

void McastModuleManager::rxBufSizeIs(std::uint32_t origSize) {
  if (const auto& existing = rxBufSize()) {
    existing->origSizeIs(origSize);
    return;
  }
  rxBufSize_.is(*this, Lumo::makePtr<Lanx::PamRxBuf>(origSize));
}

Lumo::Ptr<McastVrfContainer> McastModuleManager::createVrfContainer(const L3::VrfName& vrfName) {
  VEK_TRACE(info, " Creating VRF container: {}", vrfName);
  Lumo::Ptr<McastVrfContainer> container = vrfIs(this, vrfName);
  if (container->ioctlFd() < 0) {
    const Lanx::NamespaceName ns = vrfName.nsName();
    const int fd = ioctlSocketOpener_ ? ioctlSocketOpener_(ns)
                                      : Lanx::socketAt(AF_INET, SOCK_DGRAM, 0, ns);
    if (fd < 0) VEK_TRACE(err, "ioctl socket error: {}", std::strerror(errno));
    container->ioctlFdIs(fd);
  }
  return container;
}

void McastModuleManager::maybeDeleteVrfContainer(const Lumo::Ptr<McastVrfContainer>& container) {
  if (!container->isDefault()) return;
  VEK_TRACE(info, "Deleting VRF container: {}", container->vrfName());
  container->ioctlFdClose();
  vrfDel(container->vrfName());
}

Lumo::Ptr<MfibAf> McastModuleManager::createMfibModule(Lanx::AddressFamily af,
                                                       const L3::VrfName& vrfName,
                                                       Vrf::VrfIdMap::VrfId vrfId, bool oru) {
  return createVrfContainer(vrfName)->createMfibModule(af, vrfId, oru, modulePair());
}

void McastModuleManager::deleteMfibModule(Lanx::AddressFamily af, const L3::VrfName& vrfName) {
  const Lumo::Ptr<McastVrfContainer> container = vrf(vrfName);
  if (!container) return;
  container->deleteMfibModule(af);
  maybeDeleteVrfContainer(container);
}

Lumo::Ptr<PimRegRx> McastModuleManager::createPimRegRx(
    Lanx::AddressFamily af, const L3::VrfName& vrfName,
    const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  return createVrfContainer(vrfName)->createPimRegRx(af, modulePair(), configGroup);
}

void McastModuleManager::deletePimRegRx(Lanx::AddressFamily af, const L3::VrfName& vrfName) {
  const Lumo::Ptr<McastVrfContainer> container = vrf(vrfName);
  if (!container) return;
  container->deletePimRegRx(af);
  maybeDeleteVrfContainer(container);
}

Lumo::Ptr<McastAnyRxSet> McastModuleManager::createMcastAnyRxSet(
    const L3::VrfName& vrfName, Vrf::VrfIdMap::VrfId vrfId,
    const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  return createVrfContainer(vrfName)->createMcastAnyRxSet(vrfId, modulePair(), configGroup);
}

void McastModuleManager::deleteMcastAnyRxSet(const L3::VrfName& vrfName) {
  const Lumo::Ptr<McastVrfContainer> container = vrf(vrfName);
  if (!container) return;
  container->deleteMcastAnyRxSet();
  maybeDeleteVrfContainer(container);
}

Lumo::Ptr<McastIntf> McastModuleManager::createIntfModule(
    const L3::VrfName& vrfName, Lanx::IntfId intfId, const Lumo::String& deviceName,
    bool txOnly, const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  return createVrfContainer(vrfName)->createIntfModule(intfId, deviceName, txOnly, modulePair(),
                                                       configGroup);
}

void McastModuleManager::deleteIntfModule(const L3::VrfName& vrfName, Lanx::IntfId intfId,
                                          const Lumo::String& deviceName) {
  const Lumo::Ptr<McastVrfContainer> container = vrf(vrfName);
  if (!container) return;
  container->deleteIntfModule(intfId, deviceName);
  maybeDeleteVrfContainer(container);
}

Lumo::Ptr<IgmpV2> McastModuleManager::createIgmpV2Module(
    Lanx::AddressFamily af, const L3::VrfName& vrfName, Vrf::VrfIdMap::VrfId vrfId, bool oru,
    const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd) {
  if (af != Lanx::AddressFamily::ipv4) return igmpV2Module();
  if (!igmpV2Module()) {
    auto* arg = new vek::pb::IgmpV2ModuleArg;
    arg->set_oru(oru);
    const Lumo::Ptr<IgmpV2> made = igmpV2ModuleIs(igmpV2Name, Vek::VekModule::igmpV2, igmpV2Gates,
                                                  igmpV2Gates, arg, modulePair());
    const Vek::CounterId pkt =
        Vek::allocateModulePacketCounter(made, vekcsd, "Igmpv2_Pkt", Vek::counterUnitPackets);
    const Vek::CounterId unknownProto = Vek::allocateModulePacketCounter(
        made, vekcsd, "Igmpv2_Unknown_Proto", Vek::counterUnitPackets);
    const Vek::CounterId unknownVrf = Vek::allocateModulePacketCounter(
        made, vekcsd, "Igmpv2_Unknown_Vrf", Vek::counterUnitPackets);
    made->setCounterIds(pkt, unknownProto, unknownVrf);
    // The module comes last for the receive sets of every VRF, also of those started for
    // IPv6 alone: it joins them all, as each set joins the module when the set comes last.
    for (const auto& container : vrfs()) doWireIgmpV2(*container.value, true);
  }
  const Lumo::Ptr<IgmpV2>& igmpV2 = igmpV2Module();
  igmpV2->addVrf(vrfName, vrfId);
  if (const Lumo::Ptr<McastVrfContainer> container = vrf(vrfName)) {
    doWireIgmpV2(*container, true);
  }
  return igmpV2;
}

void McastModuleManager::doWireIgmpV2(McastVrfContainer& container, bool connect) {
  const Lumo::Ptr<McastAnyRxSet>& set = container.mcastAnyRxSet();
  if (!set) return;
  for (const auto& rx : set->mcastAnyRx()) {
    if (connect) {
      container.connectMcastAnyRxIgmpV2(rx.value, igmpV2Module());
    } else {
      container.disconnectMcastAnyRxIgmpV2(rx.value, igmpV2Module());
    }
  }
}

void McastModuleManager::deleteIgmpV2Module(Lanx::AddressFamily af, const L3::VrfName& vrfName,
                                            Vrf::VrfIdMap::VrfId vrfId,
                                            const Lumo::Ptr<Vek::VekCommonSmData>& vekcsd) {
  const Lumo::Ptr<IgmpV2> igmpV2 = igmpV2Module();
  if (!igmpV2) return;
  // A VRF that leaves the module keeps its receive set's links while the module stays, as a
  // set made now would have them; the module's going takes the links of every set.
  if (af == Lanx::AddressFamily::ipv4) igmpV2->delVrf(vrfName, vrfId);
  if (igmpV2->vrfs().empty()) {
    for (const auto& container : vrfs()) doWireIgmpV2(*container.value, false);
    VEK_TRACE(info, "Deleting IgmpV2 module");
    Vek::freeModuleCounters(igmpV2, vekcsd);
    igmpV2ModuleDel();
  }
}

void McastModuleManager::igmpV2VrfIdIs(const L3::VrfName& vrfName, Vrf::VrfIdMap::VrfId vrfId) {
  const Lumo::Ptr<IgmpV2>& igmpV2 = igmpV2Module();
  if (vrfId.isNone() || !igmpV2 || !igmpV2->vrfHas(vrfName) || igmpV2->vrf(vrfName) == vrfId) {
    return;
  }
  // The module keeps one entry a name: the new one takes the old one's place.
  igmpV2->addVrf(vrfName, vrfId);
}

Lumo::Ptr<McastModuleManager> mcastModuleManagerFactory(
    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  return Lumo::makePtr<McastModuleManager>(modulePair);
}

}  // namespace VekL3Mcast
