#pragma once

#include <cstdint>
#include <functional>

#include "runtime/state/NumberOrNone.h"
#include "runtime/state/ToStringFormatter.h"

namespace Bridging {

// A VLAN id, 1 to 4094. The default value 0 is not a VLAN: it is only what an empty optional
// key holds. Building one from a number out of range raises Lumo::Exception.
class VlanId : public Lanx::NumberOrNone<VlanId, std::uint16_t, 0> {
 public:
  static constexpr std::uint16_t min = 1;
  static constexpr std::uint16_t max = 4094;

  constexpr VlanId() noexcept = default;
  explicit constexpr VlanId(std::uint16_t value) : NumberOrNone(checked(value)) {}

  static constexpr bool isValid(std::uint32_t value) noexcept {
    return value >= min && value <= max;
  }

 private:
  static constexpr std::uint16_t checked(std::uint16_t value) {
    if (!isValid(value)) throwOutOfRange(value);
    return value;
  }
  [[noreturn]] static void throwOutOfRange(std::uint32_t value);
};

}  // namespace Bridging

template <>
struct std::hash<Bridging::VlanId> : Lanx::MemberHash<Bridging::VlanId> {};
template <>
struct fmt::formatter<Bridging::VlanId> : Lanx::ToStringFormatter<Bridging::VlanId> {};
