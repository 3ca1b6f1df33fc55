#pragma once

#include "runtime/lumo/String.h"

namespace Vrf::VrfIdMap {

// One row of a VRF id table: the name the id stands for. The empty entry is "no VRF".
struct VrfEntry {
  Lumo::String name;

  bool isEmpty() const noexcept { return name.empty(); }
  friend bool operator==(const VrfEntry&, const VrfEntry&) = default;
};

}  // namespace Vrf::VrfIdMap
