#include "pipeline/McastIntf.h"

#include "proto/vek.pb.h"
#include "runtime/lumo/Assert.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

McastIntf::McastIntf(L3::VrfName vrfName, Lanx::IntfId intfId, McastIntfType intfType)
    : WithMetaDataModule(std::move(vrfName), intfId), intfType_(intfType) {}

void McastIntf::createBessPort(const Lumo::String& deviceName,
                               const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  if (bessPort()) return;
  VEK_TRACE(info, "port: {}, vrfName: {}", deviceName, vrfName());
  const bool txOnly = intfType_ == McastIntfType::txOnly;
  auto* arg = pcapPortArg(deviceName, multicastFilter, vrfName().nsName(),
                          txOnly ? txOnlyBufSize : 0, txOnly);
  bessPortIs(deviceName, "PCAPPort", arg, configGroup);
}

void McastIntf::createRxModule(const Lumo::String& deviceName,
                               const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (rxModule()) return;
  QEL_ASSERT(intfType() != McastIntfType::txOnly, "intfType() != VekL3Mcast::txOnly()");
  const Lumo::String name = joinedName({"Rx_", deviceName});
  VEK_TRACE(info, "module: {}, vrfName: {}", name, vrfName());
  rxModuleIs(name, rxModuleOutGates, deviceName, modulePair);
}

void McastIntf::createMetaDataModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (metaDataModule()) return;
  QEL_ASSERT(intfType() != McastIntfType::txOnly, "intfType() != VekL3Mcast::txOnly()");
  const Lumo::String name = joinedName({"Mdata_", intfId().shortName()});
  VEK_TRACE(info, "module: {}, vrfName: {}", name, vrfName());
  auto* arg = new vek::pb::MetaDataModuleArg;
  arg->set_portdeviceany(false);
  arg->set_mcasthwfwd(false);
  arg->set_staticsrcintf(true);
  arg->set_rxpeerlinkorcore(false);
  arg->set_staticsrcintfid(intfId().value());
  metaDataModuleIs(name, arg, modulePair, vrfName(), false, false, true, intfId().value(), false);
}

void McastIntf::createTxModule(const Lumo::String& deviceName,
                               const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (txModule()) return;
  const Lumo::String name = joinedName({"Tx_", deviceName});
  VEK_TRACE(info, "module: {}, vrfName: {}", name, vrfName());
  txModuleIs(name, deviceName, modulePair);
}

}  // namespace VekL3Mcast
