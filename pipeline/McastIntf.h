#pragma once

#include <cstdint>
#include <string_view>

#include "pipeline/PathAttrs.h"
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
class McastIntf
    : public WithMetaDataModule<WithTxModule<WithRxModule<WithBessPort<Vek::McastIntfBase>>>> {
 public:
  enum : Qel::AttributeId { kRxBufSize = PathAttr::kVlanMetadataModule + 1 };
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

  const Lumo::Ptr<Lanx::PamRxBuf const>& rxBufSize() const noexcept { return rxBufSize_.get(); }
  void rxBufSizeIs(Lumo::Ptr<Lanx::PamRxBuf const> rxBuf) { rxBufSize_.is(*this, std::move(rxBuf)); }
 private:
  McastIntfType intfType_;
  Qel::ValueAttr<Lumo::Ptr<Lanx::PamRxBuf const>, kRxBufSize> rxBufSize_;
};

}  // namespace VekL3Mcast
