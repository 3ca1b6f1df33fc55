#include "pipeline/VekL3McastModuleManager.h"

#include <cstdlib>

#include "runtime/trace/Trace.h"

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

Lumo::Ptr<McastModuleManager> mcastModuleManagerFactory(
    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
  return Lumo::makePtr<McastModuleManager>(modulePair);
}

}  // namespace VekL3Mcast
