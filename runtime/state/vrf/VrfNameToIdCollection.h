#pragma once

#include "runtime/lumo/String.h"
#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VrfId.h"

// The VRF ids the forwarding agent shares among its libraries: the software id of each VRF
// name, as the multicast agent found it in central state, and the hardware id. The hosting
// agent makes it and hands it to each library.
class VrfNameToIdCollection : public Lanx::StateEntity<"VrfNameToIdCollection"> {
 public:
  enum : Qel::AttributeId { kVrfNameToId = 1, kHwVrfNameToId };
  using Ids = Qel::HashMap2018<Lumo::String, Vrf::VrfIdMap::VrfId>;

  // None for a name without an id.
  Vrf::VrfIdMap::VrfId vrfNameToId(const Lumo::String& name) const {
    return vrfNameToId_.get(name);
  }
  const Ids& vrfNameToIds() const noexcept { return vrfNameToId_.members(); }
  void vrfNameToIdIs(const Lumo::String& name, Vrf::VrfIdMap::VrfId id) {
    vrfNameToId_.is(*this, name, id);
  }
  void vrfNameToIdDel(const Lumo::String& name) { vrfNameToId_.del(*this, name); }
  void vrfNameToIdDelAll() { vrfNameToId_.delAll(*this); }

  Vrf::VrfIdMap::VrfId hwVrfNameToId(const Lumo::String& name) const {
    return hwVrfNameToId_.get(name);
  }
  const Ids& hwVrfNameToIds() const noexcept { return hwVrfNameToId_.members(); }
  void hwVrfNameToIdIs(const Lumo::String& name, Vrf::VrfIdMap::VrfId id) {
    hwVrfNameToId_.is(*this, name, id);
  }
  void hwVrfNameToIdDel(const Lumo::String& name) { hwVrfNameToId_.del(*this, name); }
  void hwVrfNameToIdDelAll() { hwVrfNameToId_.delAll(*this); }

 private:
  Qel::HashCollectionAttr<Lumo::String, Vrf::VrfIdMap::VrfId, kVrfNameToId> vrfNameToId_;
  Qel::HashCollectionAttr<Lumo::String, Vrf::VrfIdMap::VrfId, kHwVrfNameToId> hwVrfNameToId_;
};
