#pragma once

#include "runtime/lumo/String.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VrfId.h"

namespace Vrf::VrfIdMap {

// VRF name to software VRF id, as the VRF manager publishes it. Names are plain text here:
// a reader turns them into L3::VrfName and so meets an overlong name itself.
class NameToIdMap : public Lanx::StateEntity<"Vrf::VrfIdMap::NameToIdMap"> {
 public:
  enum : Qel::AttributeId { kVrfId = 1 };
  using Ids = Qel::HashMap2018<Lumo::String, VrfId>;

  // The id of a name; none for a name that has no id.
  VrfId vrfId(const Lumo::String& name) const { return vrfId_.get(name); }
  bool vrfIdHas(const Lumo::String& name) const { return vrfId_.has(name); }
  const Ids& vrfIds() const noexcept { return vrfId_.members(); }

  void vrfIdIs(const Lumo::String& name, VrfId id) { vrfId_.is(*this, name, id); }
  void vrfIdDel(const Lumo::String& name) { vrfId_.del(*this, name); }

 private:
  Qel::HashCollectionAttr<Lumo::String, VrfId, kVrfId> vrfId_;
};

}  // namespace Vrf::VrfIdMap
