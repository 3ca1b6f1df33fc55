#pragma once

#include <cstdint>
#include <string_view>

#include "pipeline/BessPortOru.h"
#include "pipeline/MetaDataModule.h"
#include "pipeline/PortModules.h"
#include "pipeline/VekMcastTypes.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/PamRxBuf.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/McastIntfBase.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// One multicast interface of a VRF. An `rxAndTx` interface has its own capture port on the
// kernel device, a receive module, a metadata module that stamps the interface, and a
// transmit module; a `txOnly` interface is only an egress entry and has none of them.
class McastIntf : public Vek::McastIntfBase {
 public:
  enum : Qel::AttributeId {
    kMetaDataModule = 1,
    kTxModule,
    kRxModule,
    kBessPort,
    kRxBufSize,
  };
  // Every interface captures with the same filter: multicast frames of IPv6 outside the
  // scopes 1, 2 and 3, and of IPv4 outside 224.0.0.0/24.
  static constexpr std::string_view multicastFilter =
      "ether multicast and (((ether proto 0x86dd) and (ip6[24:2] & 0xff0f != 0xff01) and "
      "(ip6[24:2] & 0xff0f != 0xff02) and (ip6[24:2] & 0xff0f != 0xff03)) or ((ether proto "
      "0x800) and not (ip[16] = 224 and ip[17] = 0 and ip[18] = 0)))";
  static constexpr std::uint32_t txOnlyBufSize = 30720;
  static constexpr std::uint32_t rxModuleOutGates = 4;

  McastIntf(L3::VrfName vrfName, Lanx::IntfId intfId, McastIntfType intfType);
  std::string_view typeName() const override { return "VekL3Mcast::McastIntf"; }

  McastIntfType intfType() const noexcept { return intfType_; }

  void createBessPort(const Lumo::String& deviceName,
                      const Lumo::Ptr<Vek::CmdConfigGroup>& configGroup);
  void createRxModule(const Lumo::String& deviceName,
                      const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);
  void createMetaDataModule(const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);
  void createTxModule(const Lumo::String& deviceName,
                      const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair);

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

  const Lumo::Ptr<Vek::Module>& txModule() const noexcept { return txModule_.get(); }
  Lumo::Ptr<Vek::Module> txModuleIs(const Lumo::String& name, const Lumo::String& portName,
                                    const Lumo::Ptr<Vek::ModuleConfigStatusPair>& modulePair) {
    return txModule_.isWith(*this, &makeTxModule, name, portName, modulePair);
  }
  void txModuleDel() { txModule_.del(*this); }

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

  const Lumo::Ptr<Lanx::PamRxBuf const>& rxBufSize() const noexcept { return rxBufSize_.get(); }
  void rxBufSizeIs(Lumo::Ptr<Lanx::PamRxBuf const> rxBuf) { rxBufSize_.is(*this, std::move(rxBuf)); }

 private:
  McastIntfType intfType_;
  MetaDataModuleAttr<kMetaDataModule, "metaDataModule"> metaDataModule_;
  TxModuleAttr<kTxModule, "txModule"> txModule_;
  RxModuleAttr<kRxModule, "rxModule"> rxModule_;
  BessPortAttr<kBessPort, "bessPort"> bessPort_;
  Qel::ValueAttr<Lumo::Ptr<Lanx::PamRxBuf const>, kRxBufSize> rxBufSize_;
};

}  // namespace VekL3Mcast
