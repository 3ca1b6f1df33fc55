#include "pipeline/McastL2VxlanTx.h"

#include "runtime/trace/Trace.h"

namespace VekL3Mcast {

void McastL2VxlanTx::createTxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  if (txModule()) return;
  VEK_TRACE(info, "module: {}, port: {}", txModuleName, portName_);
  txModuleIs(txModuleName, portName_, modulePair);
}

}  // namespace VekL3Mcast
