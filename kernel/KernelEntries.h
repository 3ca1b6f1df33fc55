#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Kernel {

enum class Family : std::uint8_t { ipv4, ipv6 };

// A network device as the link table tells it.
struct Link {
  int index = 0;
  std::string name;
  bool up = false;         // administratively up and running
  bool multicast = false;  // can take part in multicast routing (not a loopback)
  int master = 0;          // the device it is enslaved to (a VRF device), 0 for none
  std::optional<std::uint32_t> vrfTable;  // set for a VRF device: its routing table
  bool operator==(const Link&) const = default;
};

// A multicast forwarding cache entry is known by its table, source and group. Addresses
// are canonical text; a source of "*" stands for any source.
struct McastRouteKey {
  Family family = Family::ipv4;
  std::uint32_t table = 0;
  std::string source;
  std::string group;
  auto operator<=>(const McastRouteKey&) const = default;
};

struct McastRoute {
  McastRouteKey key;
  int iif = 0;                // device index of the incoming interface
  std::vector<int> oifs;      // device indexes of the outgoing interfaces, in kernel order
  bool operator==(const McastRoute&) const = default;
};

}  // namespace Kernel
