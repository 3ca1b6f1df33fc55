#pragma once

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VrfName.h"
#include "runtime/state/multicast/MulticastIntfsAppRootSm.h"

namespace Routing::Multicast {

// The followers of the multicast interfaces of the VRFs of one family, by VRF. A follower
// runs on its own from the moment it is made.
class MulticastIntfsAppRootSmColl
    : public Lanx::StateEntity<"Routing::Multicast::MulticastIntfsAppRootSmColl"> {
 public:
  enum : Qel::AttributeId { kVrfSm = 1 };
  using Machines = Qel::HashMap2018<L3::VrfName, Lumo::Ptr<MulticastIntfsAppRootSm>>;

  ~MulticastIntfsAppRootSmColl() override { vrfSmDelAll(); }

  Lumo::Ptr<MulticastIntfsAppRootSm> vrfSm(const L3::VrfName& vrf) const {
    return vrfSm_.get(vrf);
  }
  const Machines& vrfSms() const noexcept { return vrfSm_.members(); }
  // Makes the follower of a VRF; one that stands is kept.
  Lumo::Ptr<MulticastIntfsAppRootSm> vrfSmIs(const L3::VrfName& vrf, Lanx::AddressFamily af,
                                             Lumo::Ptr<MulticastIntfsAppDir const> appDir);
  void vrfSmDel(const L3::VrfName& vrf);
  void vrfSmDelAll();

 private:
  Qel::HashCollectionAttr<L3::VrfName, Lumo::Ptr<MulticastIntfsAppRootSm>, kVrfSm> vrfSm_;
};

}  // namespace Routing::Multicast
