#pragma once

#include <compare>
#include <functional>
#include <string>
#include <utility>

#include "runtime/state/HashMix.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/ToStringFormatter.h"

namespace Routing::Multicast {

// A source and group pair on one side of a multicast tunnel; the tag keeps the overlay and
// the underlay side apart as types. A source without family stands for any source.
template <typename Side>
class TunnelRoute {
 public:
  TunnelRoute() = default;
  TunnelRoute(Lanx::IpGenAddr source, Lanx::IpGenAddr group)
      : source_(std::move(source)), group_(std::move(group)) {}

  const Lanx::IpGenAddr& source() const noexcept { return source_; }
  const Lanx::IpGenAddr& group() const noexcept { return group_; }

  std::size_t hash() const noexcept {
    return Lanx::hashMix64(source_.hashWord() ^ (group_.hashWord() * 0x9e3779b97f4a7c15ULL));
  }
  std::string toString() const {
    return (source_.isNone() ? std::string("*") : source_.toString()) + "," + group_.toString();
  }
  friend bool operator==(const TunnelRoute&, const TunnelRoute&) noexcept = default;
  friend std::strong_ordering operator<=>(const TunnelRoute&, const TunnelRoute&) noexcept =
      default;

 private:
  Lanx::IpGenAddr source_;
  Lanx::IpGenAddr group_;
};

}  // namespace Routing::Multicast

template <typename Side>
struct std::hash<Routing::Multicast::TunnelRoute<Side>>
    : Lanx::MemberHash<Routing::Multicast::TunnelRoute<Side>> {};
template <typename Side>
struct fmt::formatter<Routing::Multicast::TunnelRoute<Side>>
    : Lanx::ToStringFormatter<Routing::Multicast::TunnelRoute<Side>> {};
