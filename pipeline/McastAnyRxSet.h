#pragma once

#include <cstdint>
#include <string_view>

#include "pipeline/McastAnyRx.h"
#include "pipeline/VekMcastTypes.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/InstantiatingCollectionAttr.h"
#include "runtime/state/PamRxBuf.h"
#include "runtime/state/VrfName.h"

namespace VekL3Mcast {

// The any-device receive paths of one VRF, one of each receive type.
class McastAnyRxSet : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kMcastAnyRx = 1 };
  using Members = Qel::HashMap2018<McastRxType, Lumo::Ptr<McastAnyRx>>;

  explicit McastAnyRxSet(L3::VrfName vrfName) : vrfName_(std::move(vrfName)) {}
  std::string_view typeName() const override { return "VekL3Mcast::McastAnyRxSet"; }

  const L3::VrfName& vrfName() const noexcept { return vrfName_; }

  const Members& mcastAnyRx() const noexcept { return mcastAnyRx_.members(); }
  Lumo::Ptr<McastAnyRx> mcastAnyRx(McastRxType rxType) const { return mcastAnyRx_.get(rxType); }
  std::size_t mcastAnyRxs() const noexcept { return mcastAnyRx_.size(); }
  Lumo::Ptr<McastAnyRx> mcastAnyRxIs(const L3::VrfName& vrfName, McastRxType rxType,
                                     const Lumo::Ptr<Lanx::PamRxBuf const>& rxBuf) {
    return mcastAnyRx_.is(*this, rxType, vrfName, rxType, rxBuf);
  }
  void mcastAnyRxDel(McastRxType rxType) { mcastAnyRx_.del(*this, rxType); }
  void mcastAnyRxDelAll() { mcastAnyRx_.delAll(*this); }

  // Each ifIndex mapping reaches the metadata module of every path of the VRF.
  void setIfIndexIntfId(std::uint32_t ifIndex, std::uint64_t intfId);

 private:
  L3::VrfName vrfName_;
  Qel::InstantiatingCollectionAttr<McastRxType, McastAnyRx, kMcastAnyRx, "mcastAnyRx",
                                   L3::VrfName, McastRxType, Lumo::Ptr<Lanx::PamRxBuf const>>
      mcastAnyRx_;
};

}  // namespace VekL3Mcast
