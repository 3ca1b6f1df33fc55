#pragma once

#include "runtime/state/AddressFamily.h"

namespace Lanx {

// A value of each of the two families, reached by the family: code written once for a
// family then serves the other, and neither can be forgotten. Anything but ipv6 reads the
// IPv4 value; callers check the family first where another one is an error.
template <typename T>
struct ByFamily {
  T ipv4{};
  T ipv6{};

  T& operator[](AddressFamily af) noexcept { return af == AddressFamily::ipv6 ? ipv6 : ipv4; }
  const T& operator[](AddressFamily af) const noexcept {
    return af == AddressFamily::ipv6 ? ipv6 : ipv4;
  }
};

// The two families in the order the agent works them.
inline constexpr AddressFamily bothFamilies[] = {AddressFamily::ipv4, AddressFamily::ipv6};

}  // namespace Lanx
