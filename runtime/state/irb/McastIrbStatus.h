#pragma once

#include <string_view>

#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VashMapBase.h"
#include "runtime/state/VlanId.h"

namespace Irb::Multicast {

// Multicast routing status of the routed VLAN interfaces of one family: for each VLAN that
// routes multicast through a VRF's supplementary broadcast domain, that SBD VLAN. A
// shared-memory table keyed by VLAN; a change publishes kSbdVlan with the VLAN.
class McastIrbStatus : public Lanx::StateEntity<"Irb::Multicast::McastIrbStatus">,
                       public Vash::VashMapBase {
 public:
  enum : Qel::AttributeId { kSbdVlan = 1 };
  using Members = Qel::HashMap2018<Bridging::VlanId, Bridging::VlanId>;

  static std::string_view mountPath(Lanx::AddressFamily af) {
    return af == Lanx::AddressFamily::ipv6 ? "irb/multicast6/status" : "irb/multicast/status";
  }

  const Members& sbdVlans() const noexcept { return sbdVlan_.members(); }
  // The SBD VLAN of a VLAN, or null when the table has no entry for it.
  const Bridging::VlanId* sbdVlan(Bridging::VlanId vlan) const { return sbdVlan_.find(vlan); }

  // Writer side.
  void sbdVlanIs(Bridging::VlanId vlan, Bridging::VlanId sbd) { sbdVlan_.is(*this, vlan, sbd); }
  void sbdVlanDel(Bridging::VlanId vlan) { sbdVlan_.del(*this, vlan); }

 private:
  Qel::HashCollectionAttr<Bridging::VlanId, Bridging::VlanId, kSbdVlan> sbdVlan_;
};

}  // namespace Irb::Multicast
