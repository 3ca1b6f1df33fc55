#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/multicast/OismVlanFloodSet.h"

namespace Routing::Multicast::Evpn {

// The flood sets of optimised inter-subnet multicast, by VLAN.
class OismFloodSet : public Lanx::StateEntity<"Routing::Multicast::Evpn::OismFloodSet"> {
 public:
  enum : Qel::AttributeId { kFloodSet = 1 };
  using FloodSets = Qel::HashMap2018<Bridging::VlanId, Lumo::Ptr<OismVlanFloodSet>>;

  static std::string_view mountPath() { return "routing/multicast/evpn/oismFloodSet"; }

  Lumo::Ptr<OismVlanFloodSet const> floodSet(Bridging::VlanId vlan) const {
    return floodSet_.get(vlan);
  }
  const FloodSets& floodSets() const noexcept { return floodSet_.members(); }
  // Finds or makes the VLAN's set; the writer then fills it.
  Lumo::Ptr<OismVlanFloodSet> floodSetIs(Bridging::VlanId vlan) {
    if (auto present = floodSet_.get(vlan)) return present;
    auto made = Lumo::makePtr<OismVlanFloodSet>(vlan);
    floodSet_.is(*this, vlan, made);
    return made;
  }
  void floodSetDel(Bridging::VlanId vlan) { floodSet_.del(*this, vlan); }

 private:
  Qel::HashCollectionAttr<Bridging::VlanId, Lumo::Ptr<OismVlanFloodSet>, kFloodSet> floodSet_;
};

}  // namespace Routing::Multicast::Evpn
