#include "pipeline/FabricTx.h"

#include "runtime/state/VrfName.h"
#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

void FabricTx::createBessPort(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
  if (bessPort()) return;
  VEK_TRACE(info, "port: {}, vrfName: {}", portName, L3::VrfName::defaultVrf());
  auto* arg = pcapPortArg(fabricDevice, "", L3::VrfName::defaultVrf().nsName(),
                          rxBufSize_->adjustedPamRxBufSize(), true);
  bessPortIs(portName, "PCAPPort", arg, configGroup);
}

void FabricTx::createTxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (txModule()) return;
  VEK_TRACE(info, "module: {}, vrfName: {}", txModuleName, L3::VrfName::defaultVrf());
  txModuleIs(txModuleName, portName, modulePair);
}

}  // namespace VekL3Mcast
