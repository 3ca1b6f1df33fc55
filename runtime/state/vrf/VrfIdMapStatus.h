#pragma once

#include "runtime/qel/CollectionAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/vrf/VrfEntry.h"

namespace Vrf::VrfIdMap {

// A shared-memory table of VRF id to VRF entry: the hardware ids at
// "vrf/hardware/vrfIdMapStatus", the software ids at "vrf/vrfIdMapStatus".
class Status : public Lanx::StateEntity<"Vrf::VrfIdMap::Status"> {
 public:
  enum : Qel::AttributeId { kVrfEntry = 1 };
  using Entries = Qel::HashMap2018<VrfId, VrfEntry>;

  static constexpr std::string_view hardwarePath = "vrf/hardware/vrfIdMapStatus";
  static constexpr std::string_view softwarePath = "vrf/vrfIdMapStatus";

  // The entry of an id; the empty entry for an id the table does not have.
  VrfEntry vrfEntry(VrfId id) const { return vrfEntry_.get(id); }
  const Entries& vrfEntries() const noexcept { return vrfEntry_.members(); }

  void vrfEntryIs(VrfId id, VrfEntry entry) { vrfEntry_.is(*this, id, std::move(entry)); }
  void vrfEntryDel(VrfId id) { vrfEntry_.del(*this, id); }

 private:
  Qel::HashCollectionAttr<VrfId, VrfEntry, kVrfEntry> vrfEntry_;
};

}  // namespace Vrf::VrfIdMap
