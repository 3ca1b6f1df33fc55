#pragma once

#include <cstdint>
#include <string_view>

#include "pipeline/PathAttrs.h"
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
class McastAnyRx : public WithMetaDataModule<WithRxModule<WithBessPort<Qel::Entity>>> {
 public:
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

 private:
  L3::VrfName vrfName_;
  McastRxType rxType_;
  Lumo::Ptr<Lanx::PamRxBuf const> rxBufSize_;
};

}  // namespace VekL3Mcast
