#pragma once

#include <google/protobuf/message.h>

#include <cstdint>

#include "pipeline/BessPortOru.h"
#include "pipeline/MetaDataModule.h"
#include "pipeline/PortModules.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// The attributes that receive and transmit paths share, one mixin each, so that a path
// class names what it has: `class PimRegRx : public WithMetaDataModule<WithRxModule<
// WithBessPort<Qel::Entity>>>`. Each is set once by its instantiating `<attr>Is` and
// cleared by `<attr>Del`. The ids are shared by all path classes; a class has a subset.
namespace PathAttr {
enum : Qel::AttributeId {
  kMetaDataModule = 1,
  kTxModule,
  kRxModule,
  kBessPort,
  kVlanMetadataModule,
};
}  // namespace PathAttr

template <typename Base>
class WithBessPort : public Base {
 public:
  using Base::Base;
  const Lumo::Ptr<BessPortOru>& bessPort() const noexcept { return bessPort_.get(); }
  Lumo::Ptr<BessPortOru> bessPortIs(const Lumo::String& name, const Lumo::String& driver,
                                    google::protobuf::Message* initArgs,
                                    const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup) {
    return bessPort_.is(*this, name, driver, initArgs, configGroup);
  }
  void bessPortDel() { bessPort_.del(*this); }

 private:
  BessPortAttr<PathAttr::kBessPort, "bessPort"> bessPort_;
};

template <typename Base>
class WithRxModule : public Base {
 public:
  using Base::Base;
  const Lumo::Ptr<Vek::Module>& rxModule() const noexcept { return rxModule_.get(); }
  Lumo::Ptr<Vek::Module> rxModuleIs(const Lumo::String& name, std::uint32_t maxOutGate,
                                    const Lumo::String& portName,
                                    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
    return rxModule_.isWith(*this, &makeRxModule, name, maxOutGate, portName, modulePair);
  }
  void rxModuleDel() { rxModule_.del(*this); }

 private:
  RxModuleAttr<PathAttr::kRxModule, "rxModule"> rxModule_;
};

template <typename Base>
class WithTxModule : public Base {
 public:
  using Base::Base;
  const Lumo::Ptr<Vek::Module>& txModule() const noexcept { return txModule_.get(); }
  Lumo::Ptr<Vek::Module> txModuleIs(const Lumo::String& name, const Lumo::String& portName,
                                    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
    return txModule_.isWith(*this, &makeTxModule, name, portName, modulePair);
  }
  void txModuleDel() { txModule_.del(*this); }

 private:
  TxModuleAttr<PathAttr::kTxModule, "txModule"> txModule_;
};

template <typename Base>
class WithMetaDataModule : public Base {
 public:
  using Base::Base;
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

 private:
  MetaDataModuleAttr<PathAttr::kMetaDataModule, "metaDataModule"> metaDataModule_;
};

}  // namespace VekL3Mcast
