#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/MfibVrfAdapter.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VrfName.h"

namespace Routing::Multicast::Fib {

// The route-table adapters of the VRFs of one family, by VRF: a VRF has a member while at
// least one of its tables is mounted.
class MfibVrfDir : public Lanx::StateEntity<"Routing::Multicast::Fib::MfibVrfDir"> {
 public:
  enum : Qel::AttributeId { kVrfAdapter = 1 };
  using Adapters = Qel::HashMap2018<L3::VrfName, Lumo::Ptr<MfibVrfAdapter>>;

  explicit MfibVrfDir(Lanx::AddressFamily af) : af_(af) {}
  Lanx::AddressFamily af() const noexcept { return af_; }

  Lumo::Ptr<MfibVrfAdapter> vrfAdapter(const L3::VrfName& vrf) const {
    return vrfAdapter_.get(vrf);
  }
  const Adapters& vrfAdapters() const noexcept { return vrfAdapter_.members(); }
  // Finds or makes the adapter of a VRF.
  Lumo::Ptr<MfibVrfAdapter> vrfAdapterIs(const L3::VrfName& vrf) {
    if (auto present = vrfAdapter_.get(vrf)) return present;
    auto made = Lumo::makePtr<MfibVrfAdapter>(vrf, af_);
    vrfAdapter_.is(*this, vrf, made);
    return made;
  }
  void vrfAdapterDel(const L3::VrfName& vrf) { vrfAdapter_.del(*this, vrf); }

 private:
  Lanx::AddressFamily af_;
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<MfibVrfAdapter>, kVrfAdapter> vrfAdapter_;
};

}  // namespace Routing::Multicast::Fib
