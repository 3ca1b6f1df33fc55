#pragma once

#include <cstdint>
#include <functional>

#include "runtime/state/NumberOrNone.h"
#include "runtime/state/ToStringFormatter.h"
#include "runtime/state/VlanId.h"

namespace Bridging {

// A VLAN id or none (0); travels as 16 bits. Numbers above 4094 raise Lumo::Exception.
class VlanIdOrNone : public Lanx::NumberOrNone<VlanIdOrNone, std::uint16_t, 0> {
 public:
  constexpr VlanIdOrNone() noexcept = default;
  constexpr VlanIdOrNone(VlanId vlan) noexcept : NumberOrNone(vlan.value()) {}  // NOLINT
  explicit constexpr VlanIdOrNone(std::uint16_t value)
      : NumberOrNone(value == 0 ? value : VlanId(value).value()) {}

  // The VLAN itself; raises Lumo::Exception when there is none.
  VlanId vlanId() const;
};

}  // namespace Bridging

template <>
struct std::hash<Bridging::VlanIdOrNone> : Lanx::MemberHash<Bridging::VlanIdOrNone> {};
template <>
struct fmt::formatter<Bridging::VlanIdOrNone> : Lanx::ToStringFormatter<Bridging::VlanIdOrNone> {};
