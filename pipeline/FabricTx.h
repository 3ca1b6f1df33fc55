#pragma once

#include <string_view>

#include "pipeline/BessPortOru.h"
#include "pipeline/PortModules.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/PamRxBuf.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// The transmit path onto the "fabric" device of the default VRF: a port that only sends,
// and its transmit module.
class FabricTx : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kTxModule = 1, kBessPort };
  static constexpr std::string_view portName = "fabric_tx";
  static constexpr std::string_view txModuleName = "FabricTx_fabric";
  static constexpr std::string_view fabricDevice = "fabric";

  explicit FabricTx(Lumo::Ptr<Lanx::PamRxBuf const> rxBuf) : rxBufSize_(std::move(rxBuf)) {}
  std::string_view typeName() const override { return "VekL3Mcast::FabricTx"; }

  const Lumo::Ptr<Lanx::PamRxBuf const>& rxBufSize() const noexcept { return rxBufSize_; }

  void createBessPort(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void createTxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);

  const Lumo::Ptr<Vek::Module>& txModule() const noexcept { return txModule_.get(); }
  Lumo::Ptr<Vek::Module> txModuleIs(const Lumo::String& name, const Lumo::String& port,
                                    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
    return txModule_.isWith(*this, &makeTxModule, name, port, modulePair);
  }
  void txModuleDel() { txModule_.del(*this); }

  const Lumo::Ptr<BessPortOru>& bessPort() const noexcept { return bessPort_.get(); }
  Lumo::Ptr<BessPortOru> bessPortIs(const Lumo::String& name, const Lumo::String& driver,
                                    google::protobuf::Message* initArgs,
                                    const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
    return bessPort_.is(*this, name, driver, initArgs, configGroup);
  }
  void bessPortDel() { bessPort_.del(*this); }

 private:
  Lumo::Ptr<Lanx::PamRxBuf const> rxBufSize_;
  TxModuleAttr<kTxModule, "txModule"> txModule_;
  BessPortAttr<kBessPort, "bessPort"> bessPort_;
};

}  // namespace VekL3Mcast
