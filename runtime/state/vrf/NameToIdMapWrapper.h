#pragma once

#include <string_view>

#include "runtime/lumo/Ptr.h"
#include "runtime/qel/ValueAttr.h"
#include "runtime/state/StateEntity.h"
#include "runtime/state/vrf/NameToIdMap.h"

namespace Vrf::VrfIdMap {

// The published VRF name status ("vrf/vrfNameStatus"): it carries the name-to-id map, which
// its writer may replace as a whole. A reader watches the wrapper for a new map and the
// map for its names.
class NameToIdMapWrapper : public Lanx::StateEntity<"Vrf::VrfIdMap::NameToIdMapWrapper"> {
 public:
  enum : Qel::AttributeId { kNameToIdMap = 1 };
  static constexpr std::string_view path = "vrf/vrfNameStatus";

  Lumo::Ptr<NameToIdMap const> nameToIdMap() const { return nameToIdMap_.get(); }
  // The id of a name in the current map; none without a map or a name.
  VrfId vrfId(const Lumo::String& name) const {
    return nameToIdMap_.get() ? nameToIdMap_.get()->vrfId(name) : VrfId();
  }

  void nameToIdMapIs(Lumo::Ptr<NameToIdMap> map) { nameToIdMap_.is(*this, std::move(map)); }

 private:
  Qel::ValueAttr<Lumo::Ptr<NameToIdMap>, kNameToIdMap> nameToIdMap_;
};

}  // namespace Vrf::VrfIdMap
