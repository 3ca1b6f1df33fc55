#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VlanIdOrNone.h"

namespace IntfVlanId {

// The VLAN of each interface that has one. The table is process-wide and found by its name:
// the bridging side writes it, readers open it by the same name.
class Table : public Lanx::StateEntity<"IntfVlanId::Table"> {
 public:
  enum : Qel::AttributeId { kIntfIdToVlanId = 1 };
  using Vlans = Qel::HashMap2018<Lanx::IntfId, Bridging::VlanIdOrNone>;

  // The table of that name, made empty on first use.
  static Lumo::Ptr<Table> tableIs(std::string_view name) {
    return Qel::Entity::singletonIs<Table>(name);
  }

  // None for an interface without a VLAN.
  Bridging::VlanIdOrNone intfIdToVlanId(Lanx::IntfId intf) const {
    return intfIdToVlanId_.get(intf);
  }
  const Vlans& vlans() const noexcept { return intfIdToVlanId_.members(); }

  void intfIdToVlanIdIs(Lanx::IntfId intf, Bridging::VlanIdOrNone vlan) {
    intfIdToVlanId_.is(*this, intf, vlan);
  }
  void intfIdToVlanIdDel(Lanx::IntfId intf) { intfIdToVlanId_.del(*this, intf); }

 private:
  Qel::HashCollectionAttr<Lanx::IntfId, Bridging::VlanIdOrNone, kIntfIdToVlanId> intfIdToVlanId_;
};

}  // namespace IntfVlanId
