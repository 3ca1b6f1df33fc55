#pragma once

#include <cstdint>
#include <functional>

#include "runtime/state/NumberOrNone.h"
#include "runtime/state/ToStringFormatter.h"

namespace Vrf::VrfIdMap {

// A VRF's number in the data plane (software or hardware id); 0 is a real id (the hardware id
// of the default VRF), so "no id" is 0xffffff.
class VrfId : public Lanx::NumberOrNone<VrfId, std::uint32_t, 0xffffff> {
 public:
  using NumberOrNone::NumberOrNone;
};

}  // namespace Vrf::VrfIdMap

template <>
struct std::hash<Vrf::VrfIdMap::VrfId> : Lanx::MemberHash<Vrf::VrfIdMap::VrfId> {};
template <>
struct fmt::formatter<Vrf::VrfIdMap::VrfId> : Lanx::ToStringFormatter<Vrf::VrfIdMap::VrfId> {};
