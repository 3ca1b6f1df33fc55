#include "pipeline/McastL2VxlanRx.h"

#include "pipeline/McastRxPath.h"
#include "proto/vek.pb.h"
#include "runtime/state/VrfName.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

namespace {
constexpr std::uint32_t rxModuleOutGates = 1;
}  // namespace

McastL2VxlanRx::McastL2VxlanRx(McastRxType rxType, Lumo::Ptr<Lanx::PamRxBuf const> rxBuf)
    : rxType_(rxType), rxBufSize_(std::move(rxBuf)) {}

Lumo::String McastL2VxlanRx::portName() const {
  return Lumo::String(mcastRxPath(rxType_).fabricPort);
}

void McastL2VxlanRx::createBessPort(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  if (bessPort()) return;
  const Lumo::String name = portName();
  VEK_TRACE(info, "port: {}, vrfName: {}, rxType: {}", name, L3::VrfName::defaultVrf(), rxType_);
  auto* arg = pcapPortArg(fabricDevice, "", L3::VrfName::defaultVrf().nsName(),
                          rxBufSize_->adjustedPamRxBufSize(), false);
  bessPortIs(name, "PCAPPort", arg, configGroup);
  sendPortCmd(configGroup, name, "setMcastMarkFilter", mcastMarkFilterArg(rxType_, false));
}

void McastL2VxlanRx::createRxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (rxModule()) return;
  const Lumo::String name = joinedName({mcastRxPath(rxType_).rxModuleStem, fabricDevice});
  VEK_TRACE(info, "module: {}, vrfName: {}, rxType: {}", name, L3::VrfName::defaultVrf(),
            rxType_);
  rxModuleIs(name, rxModuleOutGates, portName(), modulePair);
}

void McastL2VxlanRx::createVlanMetadataModule(
    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (vlanMetadataModule()) return;
  const McastRxPath& path = mcastRxPath(rxType_);
  const Lumo::String name(path.vlanMetadataName);
  VEK_TRACE(info, "module: {}, vrfName: {}, rxType: {}", name, L3::VrfName::defaultVrf(),
            rxType_);
  auto* arg = new vek::pb::VlanMetadataArg;
  arg->set_mcasthwfwd(mcastHwFwdInMetadata(path.mcastHwFwd));
  arg->set_rxpeerlinkorcore(path.rxPeerLinkOrCore);
  vlanMetadataModuleIs(name, vlanMetadataInGates, vlanMetadataOutGates, arg, modulePair,
                       path.mcastHwFwd, path.rxPeerLinkOrCore);
}

}  // namespace VekL3Mcast
