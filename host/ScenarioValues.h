#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace VekHost {

// The plain values a scenario speaks in. Interface names stay text: only the plug-in
// side knows how a name becomes an interface id.

enum class Af { ipv4, ipv6 };

std::string_view afName(Af af);

// A VRF and an address family: what start, stop and a route key name.
struct VrfAf {
  std::string vrf;
  Af af = Af::ipv4;
  bool operator==(const VrfAf&) const = default;
};

// Source and group in canonical address text; the source "*" means any source (*,G).
struct RouteKey {
  std::string source;
  std::string group;
  bool operator==(const RouteKey&) const = default;
  // "<source>,<group>", the key under which a FIB table holds the route.
  std::string text() const { return source + "," + group; }
};

struct RouteFlags {
  bool fastdrop = false;
  bool iifRegister = false;
  bool oifRegister = false;
  bool switching = false;
  bool operator==(const RouteFlags&) const = default;
};

// Names of the flags as scenarios and table dumps write them, in a fixed order.
inline constexpr std::string_view kRouteFlagNames[] = {"fastdrop", "iifRegister", "oifRegister",
                                                       "switching"};
bool* routeFlag(RouteFlags& flags, std::string_view name);
bool routeFlag(const RouteFlags& flags, std::string_view name);
// "[fastdrop, switching]": the flags that are set.
std::string routeFlagsText(const RouteFlags& flags);

}  // namespace VekHost
