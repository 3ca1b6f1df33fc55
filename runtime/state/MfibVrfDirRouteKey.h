#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>

#include "runtime/state/HashMix.h"
#include "runtime/state/IpGenRouteKey.h"
#include "runtime/state/MfibAppType.h"
#include "runtime/state/ToStringFormatter.h"

namespace Routing::Multicast::Fib {

// A route of one application's table: the application and the route key. The default value,
// no application and an empty key, stands for "no position" (a scan that has not begun).
class MfibVrfDirRouteKey {
 public:
  MfibVrfDirRouteKey() noexcept = default;
  MfibVrfDirRouteKey(MfibAppType app, const IpGenRouteKey& key) noexcept : app_(app), key_(key) {}

  MfibAppType app() const noexcept { return app_; }
  const IpGenRouteKey& key() const noexcept { return key_; }
  bool isNoPosition() const noexcept { return *this == MfibVrfDirRouteKey(); }

  // "<app>:<source>,<group>"; "none" for no position.
  std::string toString() const;
  // The hash of the route key alone: a hash collection of these keys walks in the order
  // of the route tables' own collections, so a pass over changed keys reads a table front
  // to back. Keys of one route in several tables are told apart by equality and order.
  std::size_t hash() const noexcept { return key_.hash(); }

  friend bool operator==(const MfibVrfDirRouteKey&, const MfibVrfDirRouteKey&) noexcept = default;
  friend std::strong_ordering operator<=>(const MfibVrfDirRouteKey&,
                                          const MfibVrfDirRouteKey&) noexcept = default;
  friend std::ostream& operator<<(std::ostream& os, const MfibVrfDirRouteKey& k) {
    return os << k.toString();
  }

 private:
  MfibAppType app_ = MfibAppType::none;
  IpGenRouteKey key_;
};

}  // namespace Routing::Multicast::Fib

template <>
struct std::hash<Routing::Multicast::Fib::MfibVrfDirRouteKey>
    : Lanx::MemberHash<Routing::Multicast::Fib::MfibVrfDirRouteKey> {};
template <>
struct fmt::formatter<Routing::Multicast::Fib::MfibVrfDirRouteKey>
    : Lanx::ToStringFormatter<Routing::Multicast::Fib::MfibVrfDirRouteKey> {};
