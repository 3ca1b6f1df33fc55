#pragma once

#include <compare>
#include <cstddef>
#include <ostream>
#include <string>

#include "runtime/state/HashMix.h"

namespace Lanx {

// A number of the system's state in which one value means "none" (a VRF id, a VNI, a VLAN id).
// Derived names the type, so two kinds of number never compare with each other.
template <class Derived, class T, T noneValue>
class NumberOrNone {
 public:
  using ValueType = T;

  constexpr NumberOrNone() noexcept = default;
  explicit constexpr NumberOrNone(T value) noexcept : value_(value) {}

  static constexpr Derived none() noexcept { return Derived(); }
  constexpr T value() const noexcept { return value_; }
  constexpr bool isNone() const noexcept { return value_ == noneValue; }

  std::size_t hash() const noexcept { return hashMix64(value_); }
  std::string toString() const { return isNone() ? std::string("none") : std::to_string(value_); }

  friend constexpr bool operator==(const Derived& a, const Derived& b) noexcept {
    return a.value() == b.value();
  }
  friend constexpr std::strong_ordering operator<=>(const Derived& a, const Derived& b) noexcept {
    return a.value() <=> b.value();
  }
  friend std::ostream& operator<<(std::ostream& os, const Derived& n) { return os << n.toString(); }

 private:
  T value_ = noneValue;
};

}  // namespace Lanx
