#pragma once

#include <cstdint>

#include "runtime/state/IntfId.h"
#include "runtime/state/VlanId.h"

namespace Lanx {

// The interface ids of VLAN interfaces ("Vlan10"). An id may carry any 16-bit number, so a
// VLAN id above 4094 that reached central state can be seen and refused by its user.
class VlanIntfId {
 public:
  static constexpr IntfId vlanIdToIntfId(std::uint16_t vlanId) noexcept {
    return IntfId::numbered(IntfId::Kind::vlan, vlanId);
  }
  static constexpr IntfId vlanIdToIntfId(Bridging::VlanId vlanId) noexcept {
    return vlanIdToIntfId(vlanId.value());
  }
  static constexpr bool isVlanIntfId(IntfId id) noexcept { return id.kind() == IntfId::Kind::vlan; }
  // The VLAN number of a VLAN interface id, unchecked; 0 for any other id.
  static constexpr std::uint16_t vlanId(IntfId id) noexcept {
    return isVlanIntfId(id) ? static_cast<std::uint16_t>(id.payload()) : 0;
  }
};

}  // namespace Lanx
