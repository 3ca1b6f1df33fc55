#include "pipeline/McastAnyRx.h"

#include "pipeline/McastRxPath.h"
#include "proto/vek.pb.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

namespace {
constexpr std::string_view anyDevice = "any";
constexpr std::uint32_t rxModuleOutGates = 1;
}  // namespace

McastAnyRx::McastAnyRx(L3::VrfName vrfName, McastRxType rxType,
                       Lumo::Ptr<Lanx::PamRxBuf const> rxBuf)
    : vrfName_(std::move(vrfName)), rxType_(rxType), rxBufSize_(std::move(rxBuf)) {}

Lumo::String McastAnyRx::portName() const {
  return joinedName({mcastRxPath(rxType_).anyPortStem, vrfName_.view()});
}

void McastAnyRx::createBessPort(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  if (bessPort()) return;
  const Lumo::String name = portName();
  VEK_TRACE(info, "port: {}, vrfName: {}, rxType: {}", name, vrfName_, rxType_);
  auto* arg = pcapPortArg(anyDevice, "", vrfName_.nsName(), rxBufSize_->adjustedPamRxBufSize(),
                          false);
  bessPortIs(name, "PCAPPort", arg, configGroup);
  sendPortCmd(configGroup, name, "setMcastMarkFilter", mcastMarkFilterArg(rxType_, true));
}

void McastAnyRx::createRxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (rxModule()) return;
  const Lumo::String name = joinedName({mcastRxPath(rxType_).rxModuleStem, vrfName_.view()});
  VEK_TRACE(info, "module: {}, vrfName: {}, rxType: {}", name, vrfName_, rxType_);
  rxModuleIs(name, rxModuleOutGates, portName(), modulePair);
}

void McastAnyRx::createMetaDataModule(Vrf::VrfIdMap::VrfId vrfId,
                                      const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (metaDataModule()) return;
  const McastRxPath& path = mcastRxPath(rxType_);
  const Lumo::String name = joinedName({path.metaDataStem, vrfName_.view()});
  VEK_TRACE(info, "module: {}, vrfName: {}, rxType: {}", name, vrfName_, rxType_);
  auto* arg = new vek::pb::MetaDataModuleArg;
  arg->set_portdeviceany(true);
  arg->set_mcasthwfwd(mcastHwFwdInMetadata(path.mcastHwFwd));
  arg->set_staticsrcintf(false);
  arg->set_rxpeerlinkorcore(path.rxPeerLinkOrCore);
  arg->set_vrfid(vrfId.value());
  metaDataModuleIs(name, arg, modulePair, vrfName_, true, path.mcastHwFwd, false,
                   noStaticSrcIntfId, path.rxPeerLinkOrCore);
}

void McastAnyRx::setIfIndexIntfId(std::uint32_t ifIndex, std::uint64_t intfId) {
  VEK_TRACE(info, "(vrfName: {}, rxType: {}) ifIndex: {}, intfId: {:#x}", vrfName_, rxType_,
            ifIndex, intfId);
  if (const auto& module = metaDataModule()) module->setIfIndexIntfId(ifIndex, intfId);
}

}  // namespace VekL3Mcast
