#pragma once

#include <cstdint>
#include <string_view>

#include "pipeline/BessPortOru.h"
#include "pipeline/MetaDataModule.h"
#include "pipeline/PortModules.h"
#include "pipeline/VekMcastTypes.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/PamRxBuf.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// One receive path of a VRF that captures on the VRF's "any" device the packets of one
// mark class: port, receive module, metadata module.
class McastAnyRx : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kMetaDataModule = 1, kRxModule, kBessPort };
  // The metadata proxy of an any-device path names no source interface.
  static constexpr std::uint64_t noStaticSrcIntfId = 0xFFFFFFFF;

  McastAnyRx(L3::VrfName vrfName, McastRxType rxType, Lumo::Ptr<Lanx::PamRxBuf const> rxBuf);
  std::string_view typeName() const override { return "VekL3Mcast::McastAnyRx"; }

  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  McastRxType rxType() const noexcept { return rxType_; }
  const Lumo::Ptr<Lanx::PamRxBuf const>& rxBufSize() const noexcept { return rxBufSize_; }
  Lumo::String portName() const;

  // The port, then its mark filter, both through the group.
  void createBessPort(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void createRxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);
  void createMetaDataModule(Vrf::VrfIdMap::VrfId vrfId,
                            const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);
  // Passed on to the metadata module, if there is one.
  void setIfIndexIntfId(std::uint32_t ifIndex, std::uint64_t intfId);

  const Lumo::Ptr<MetaDataModule>& metaDataModule() const noexcept { return metaDataModule_.get(); }
  Lumo::Ptr<MetaDataModule> metaDataModuleIs(
      const Lumo::String& name, google::protobuf::Message* initArgs,
      const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair, const L3::VrfName& vrfName,
      bool portDeviceAny, bool mcastHwFwd, bool staticSrcIntf, std::uint64_t staticSrcIntfId,
      bool rxPeerLinkOrCore) {
    return metaDataModule_.is(*this, name, initArgs, modulePair, vrfName, portDeviceAny,
                              mcastHwFwd, staticSrcIntf, staticSrcIntfId, rxPeerLinkOrCore);
  }
  void metaDataModuleDel() { metaDataModule_.del(*this); }

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
  L3::VrfName vrfName_;
  McastRxType rxType_;
  Lumo::Ptr<Lanx::PamRxBuf const> rxBufSize_;
  MetaDataModuleAttr<kMetaDataModule, "metaDataModule"> metaDataModule_;
  RxModuleAttr<kRxModule, "rxModule"> rxModule_;
  BessPortAttr<kBessPort, "bessPort"> bessPort_;
};

}  // namespace VekL3Mcast
