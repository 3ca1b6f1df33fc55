#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

#include "runtime/state/HashMix.h"
#include "runtime/state/IpGenPrefix.h"
#include "runtime/state/ToStringFormatter.h"

namespace Routing::Multicast::Fib {

// The key of a multicast route: source and group. A source without family makes it a *,G
// route.
class IpGenRouteKey {
 public:
  IpGenRouteKey() noexcept = default;
  IpGenRouteKey(const Lanx::IpGenPrefix& source, const Lanx::IpGenPrefix& group) noexcept
      : source_(source), group_(group) {}

  const Lanx::IpGenPrefix& source() const noexcept { return source_; }
  const Lanx::IpGenPrefix& group() const noexcept { return group_; }
  Lanx::AddressFamily family() const noexcept { return group_.family(); }
  bool isStarG() const noexcept { return source_.isNone(); }

  // "<source>,<group>", with "*" for the source of a *,G route: the key of the route in the
  // data plane's table dump.
  std::string toString() const;
  // A route key is hashed at every step of a changed route (the reactor's record, the
  // table's lookup), and the hash collections mix what they are given once more: so the
  // source is mixed once and the group only multiplied, a third of the cost of mixing
  // each part on its own.
  std::size_t hash() const noexcept { return hashOfWords(prefixWord(source_), prefixWord(group_)); }
  // The same from the parts, for a key kept in another form: a prefix's word is its
  // address's hashWord() and its length.
  static std::uint64_t prefixWord(std::uint64_t addrWord, std::uint8_t length) noexcept {
    return addrWord ^ (std::uint64_t{length} * 0x9ddfea08eb382d69ULL);
  }
  static std::size_t hashOfWords(std::uint64_t sourceWord, std::uint64_t groupWord) noexcept {
    return Lanx::hashMix64(sourceWord) ^ (groupWord * 0xc2b2ae3d27d4eb4fULL);
  }

  friend bool operator==(const IpGenRouteKey&, const IpGenRouteKey&) noexcept = default;
  friend std::strong_ordering operator<=>(const IpGenRouteKey&,
                                          const IpGenRouteKey&) noexcept = default;
  friend std::ostream& operator<<(std::ostream& os, const IpGenRouteKey& k) {
    return os << k.toString();
  }

 private:
  static std::uint64_t prefixWord(const Lanx::IpGenPrefix& prefix) noexcept {
    return prefixWord(prefix.addr().hashWord(), prefix.length());
  }

  Lanx::IpGenPrefix source_;
  Lanx::IpGenPrefix group_;
};

// Tables hold a million of these: no padding, no pointers.
static_assert(sizeof(IpGenRouteKey) == 36);

}  // namespace Routing::Multicast::Fib

template <>
struct std::hash<Routing::Multicast::Fib::IpGenRouteKey>
    : Lanx::MemberHash<Routing::Multicast::Fib::IpGenRouteKey> {};
template <>
struct fmt::formatter<Routing::Multicast::Fib::IpGenRouteKey>
    : Lanx::ToStringFormatter<Routing::Multicast::Fib::IpGenRouteKey> {};
