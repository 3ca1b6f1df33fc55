#pragma once

#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/StateEntity.h"

namespace Routing::Multicast {

// The multicast-enabled interfaces of one VRF and family.
class MulticastIntfs : public Lanx::StateEntity<"Routing::Multicast::MulticastIntfs"> {
 public:
  enum : Qel::AttributeId { kMulticastIntf = 1 };
  using Intfs = Qel::HashSet2018<Lanx::IntfId>;

  bool multicastIntfHas(Lanx::IntfId intf) const { return multicastIntf_.has(intf); }
  const Intfs& multicastIntfs() const noexcept { return multicastIntf_.members(); }

  void multicastIntfIs(Lanx::IntfId intf) { multicastIntf_.is(*this, intf); }
  void multicastIntfDel(Lanx::IntfId intf) { multicastIntf_.del(*this, intf); }
  void multicastIntfDelAll() { multicastIntf_.delAll(*this); }

 private:
  Qel::SetAttr<Lanx::IntfId, kMulticastIntf> multicastIntf_;
};

}  // namespace Routing::Multicast
