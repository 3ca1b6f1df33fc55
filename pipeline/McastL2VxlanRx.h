#pragma once

#include <cstdint>
#include <string_view>

#include "pipeline/BessPortOru.h"
#include "pipeline/PortModules.h"
#include "pipeline/VekMcastTypes.h"
#include "pipeline/VlanMetadataModule.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/state/PamRxBuf.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// One receive path on the "fabric" device of the default VRF, for the packets of one mark
// class: port, receive module, VLAN metadata module.
class McastL2VxlanRx : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kVlanMetadataModule = 1, kRxModule, kBessPort };
  static constexpr std::string_view fabricDevice = "fabric";
  static constexpr std::uint32_t vlanMetadataInGates = 2;
  static constexpr std::uint32_t vlanMetadataOutGates = 1;

  McastL2VxlanRx(McastRxType rxType, Lumo::Ptr<Lanx::PamRxBuf const> rxBuf);
  std::string_view typeName() const override { return "VekL3Mcast::McastL2VxlanRx"; }

  McastRxType rxType() const noexcept { return rxType_; }
  const Lumo::Ptr<Lanx::PamRxBuf const>& rxBufSize() const noexcept { return rxBufSize_; }
  Lumo::String portName() const;

  // The port, then its mark filter, both through the group.
  void createBessPort(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void createRxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);
  void createVlanMetadataModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);

  const Lumo::Ptr<VlanMetadataModule>& vlanMetadataModule() const noexcept {
    return vlanMetadataModule_.get();
  }
  Lumo::Ptr<VlanMetadataModule> vlanMetadataModuleIs(
      const Lumo::String& name, std::uint32_t maxInGate, std::uint32_t maxOutGate,
      google::protobuf::Message* initArgs, const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair,
      bool mcastHwFwd, bool rxPeerLinkOrCore) {
    return vlanMetadataModule_.is(*this, name, maxInGate, maxOutGate, initArgs, modulePair,
                                  mcastHwFwd, rxPeerLinkOrCore);
  }
  void vlanMetadataModuleDel() { vlanMetadataModule_.del(*this); }

  const Lumo::Ptr<Vek::Module>& rxModule() const noexcept { return rxModule_.get(); }
  Lumo::Ptr<Vek::Module> rxModuleIs(const Lumo::String& name, std::uint32_t maxOutGate,
                                    const Lumo::String& portName,
                                    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
    return rxModule_.isWith(*this, &makeRxModule, name, maxOutGate, portName, modulePair);
  }
  void rxModuleDel() { rxModule_.del(*this); }

  const Lumo::Ptr<BessPortOru>& bessPort() const noexcept { return bessPort_.get(); }
  Lumo::Ptr<BessPortOru> bessPortIs(const Lumo::String& name, const Lumo::String& driver,
                                    google::protobuf::Message* initArgs,
                                    const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
    return bessPort_.is(*this, name, driver, initArgs, configGroup);
  }
  void bessPortDel() { bessPort_.del(*this); }

 private:
  McastRxType rxType_;
  Lumo::Ptr<Lanx::PamRxBuf const> rxBufSize_;
  Qel::InstantiatingAttr<VlanMetadataModule, kVlanMetadataModule, "vlanMetadataModule",
                         Lumo::String, std::uint32_t, std::uint32_t, google::protobuf::Message*,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair>, bool, bool>
      vlanMetadataModule_;
  RxModuleAttr<kRxModule, "rxModule"> rxModule_;
  BessPortAttr<kBessPort, "bessPort"> bessPort_;
};

}  // namespace VekL3Mcast
