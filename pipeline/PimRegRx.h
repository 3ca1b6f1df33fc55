#pragma once

#include <cstdint>
#include <string_view>

#include "pipeline/BessPortOru.h"
#include "pipeline/MetaDataModule.h"
#include "pipeline/PortModules.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// The receive path of the PIM register packets of one VRF and family: the kernel's
// register device, a receive module, and a metadata module that stamps "Register0" as the
// source interface.
class PimRegRx : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kMetaDataModule = 1, kRxModule, kBessPort };

  PimRegRx(L3::VrfName vrfName, Lanx::AddressFamily af)
      : vrfName_(std::move(vrfName)), af_(af) {}
  std::string_view typeName() const override { return "VekL3Mcast::PimRegRx"; }

  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  Lanx::AddressFamily af() const noexcept { return af_; }
  // "pimregIpv4_<vrf>" or "pimregIpv6_<vrf>".
  Lumo::String portName() const;

  void createBessPort(const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void createRxModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);
  void createMetaDataModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);

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
  std::string_view afWord() const noexcept;

  L3::VrfName vrfName_;
  Lanx::AddressFamily af_;
  MetaDataModuleAttr<kMetaDataModule, "metaDataModule"> metaDataModule_;
  RxModuleAttr<kRxModule, "rxModule"> rxModule_;
  BessPortAttr<kBessPort, "bessPort"> bessPort_;
};

}  // namespace VekL3Mcast
