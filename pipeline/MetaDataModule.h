#pragma once

#include <google/protobuf/message.h>

#include <cstdint>

#include "pipeline/VekMcastTypes.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/qel/InstantiatingAttr.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/VrfName.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekL3Mcast {

// Stamps each packet of one receive path with what the path knows (VRF, source interface,
// mark class) before it goes on. One input gate; its four output gates are all reserved,
// one for each peer (Constants).
//
// The attributes are what the proxy was made with; they may differ from the init message
// on purpose (a namespace device leaves the hardware flag out of the message only).
class MetaDataModule : public Vek::Module {
 public:
  static constexpr std::uint32_t maxInGate = 1;
  static constexpr std::uint32_t maxOutGate = 4;

  // Takes `initArgs`.
  MetaDataModule(Lumo::String name, google::protobuf::Message* initArgs,
                 Lumo::Ptr<Vek::ModuleConfigStatusPair> modulePair, L3::VrfName vrfName,
                 bool portDeviceAny, bool mcastHwFwd, bool staticSrcIntf,
                 std::uint64_t staticSrcIntfId, bool rxPeerLinkOrCore);

  // The output gate towards the FIB of a family: IPv4's, or IPv6's for any other.
  static constexpr std::uint32_t reservedMfibGate(Lanx::AddressFamily af) noexcept {
    return af == Lanx::AddressFamily::ipv4 ? Constants::reservedMfibIpv4Gate
                                           : Constants::reservedMfibIpv6Gate;
  }

  const L3::VrfName& vrfName() const noexcept { return vrfName_; }
  bool portDeviceAny() const noexcept { return portDeviceAny_; }
  bool mcastHwFwd() const noexcept { return mcastHwFwd_; }
  bool staticSrcIntf() const noexcept { return staticSrcIntf_; }
  std::uint64_t staticSrcIntfId() const noexcept { return staticSrcIntfId_; }
  bool rxPeerLinkOrCore() const noexcept { return rxPeerLinkOrCore_; }

  // Maps a kernel ifIndex to the interface a packet arrived on.
  void setIfIndexIntfId(std::uint32_t ifIndex, std::uint64_t intfId);

 private:
  L3::VrfName vrfName_;
  bool portDeviceAny_;
  bool mcastHwFwd_;
  bool staticSrcIntf_;
  std::uint64_t staticSrcIntfId_;
  bool rxPeerLinkOrCore_;
};

// The attribute of a receive path that holds its metadata module.
template <Qel::AttributeId Id, Qel::AttrName Name>
using MetaDataModuleAttr =
    Qel::InstantiatingAttr<MetaDataModule, Id, Name, Lumo::String, google::protobuf::Message*,
                           Lumo::Ptr<Vek::ModuleConfigStatusPair>, L3::VrfName, bool, bool, bool,
                           std::uint64_t, bool>;

}  // namespace VekL3Mcast
