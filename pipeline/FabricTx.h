#pragma once

#include <string_view>

#include "pipeline/PathAttrs.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/PamRxBuf.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// The transmit path onto the "fabric" device of the default VRF: a port that only sends,
// and its transmit module.
class FabricTx : public WithTxModule<WithBessPort<Qel::Entity>> {
 public:
  static constexpr std::string_view portName = "fabric_tx";
  static constexpr std::string_view txModuleName = "FabricTx_fabric";
  static constexpr std::string_view fabricDevice = "fabric";

  explicit FabricTx(Lumo::Ptr<Lanx::PamRxBuf const> rxBuf) : rxBufSize_(std::move(rxBuf)) {}
  std::string_view typeName() const override { return "VekL3Mcast::FabricTx"; }

  const Lumo::Ptr<Lanx::PamRxBuf const>& rxBufSize() const noexcept { return rxBufSize_; }

  void createBessPort(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void createTxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);

 private:
  Lumo::Ptr<Lanx::PamRxBuf const> rxBufSize_;
};

}  // namespace VekL3Mcast
