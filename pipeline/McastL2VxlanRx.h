#pragma once

#include <cstdint>
#include <string_view>

#include "pipeline/PathAttrs.h"
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
class McastL2VxlanRx : public WithRxModule<WithBessPort<Qel::Entity>> {
 public:
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
 private:
  McastRxType rxType_;
  Lumo::Ptr<Lanx::PamRxBuf const> rxBufSize_;
  Qel::InstantiatingAttr<VlanMetadataModule, PathAttr::kVlanMetadataModule, "vlanMetadataModule",
                         Lumo::String, std::uint32_t, std::uint32_t, google::protobuf::Message*,
                         Lumo::Ptr<Vek::ModuleConfigStatusPair>, bool, bool>
      vlanMetadataModule_;
};

}  // namespace VekL3Mcast
