#pragma once

#include <string_view>

#include "pipeline/McastL2VxlanRx.h"
#include "pipeline/VekMcastTypes.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/qel/InstantiatingCollectionAttr.h"
#include "runtime/state/PamRxBuf.h"

namespace VekL3Mcast {

// The fabric receive paths, one of each receive type.
class McastL2VxlanRxSet : public Qel::Entity {
 public:
  enum : Qel::AttributeId { kMcastL2VxlanRx = 1 };
  using Members = Qel::HashMap2018<McastRxType, Lumo::Ptr<McastL2VxlanRx>>;

  McastL2VxlanRxSet() = default;
  std::string_view typeName() const override { return "VekL3Mcast::McastL2VxlanRxSet"; }

  const Members& mcastL2VxlanRx() const noexcept { return mcastL2VxlanRx_.members(); }
  Lumo::Ptr<McastL2VxlanRx> mcastL2VxlanRx(McastRxType rxType) const {
    return mcastL2VxlanRx_.get(rxType);
  }
  std::size_t mcastL2VxlanRxs() const noexcept { return mcastL2VxlanRx_.size(); }
  Lumo::Ptr<McastL2VxlanRx> mcastL2VxlanRxIs(McastRxType rxType,
                                             const Lumo::Ptr<Lanx::PamRxBuf const>& rxBuf) {
    return mcastL2VxlanRx_.is(*this, rxType, rxType, rxBuf);
  }
  void mcastL2VxlanRxDel(McastRxType rxType) { mcastL2VxlanRx_.del(*this, rxType); }
  void mcastL2VxlanRxDelAll() { mcastL2VxlanRx_.delAll(*this); }

 private:
  Qel::InstantiatingCollectionAttr<McastRxType, McastL2VxlanRx, kMcastL2VxlanRx,
                                   "mcastL2VxlanRx", McastRxType, Lumo::Ptr<Lanx::PamRxBuf const>>
      mcastL2VxlanRx_;
};

}  // namespace VekL3Mcast
