#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>

#include "runtime/state/MfibVrfDirRouteKey.h"

namespace VekL3Mcast {

// A changed IPv4 route as the changed set keeps it: 12 bytes where the general key takes
// 37, so that a million waiting keys fit in half the memory and twice as many of them in
// the cache. Only keys whose source and group are IPv4 or absent have this form.
//
// It hashes as the key it stands for, so that a set of these walks in the order of the
// route tables, as a set of the general keys does.
class CompactRouteKey {
 public:
  CompactRouteKey() noexcept = default;

  // Whether `key` has a compact form: its source and group are IPv4 or absent.
  static bool fits(const Routing::Multicast::Fib::IpGenRouteKey& key) noexcept {
    return fits(key.source()) && fits(key.group());
  }
  // Writes the compact form of a key that fits into `into`. Every changed route's reactor
  // makes one, so it stays inline.
  static void write(CompactRouteKey& into, Routing::Multicast::Fib::MfibAppType app,
                    const Routing::Multicast::Fib::IpGenRouteKey& key) noexcept {
    // An absent address's bytes are zero, as the compact form keeps them.
    std::memcpy(into.source_.data(), key.source().addr().rawBytes().data(), 4);
    std::memcpy(into.group_.data(), key.group().addr().rawBytes().data(), 4);
    into.sourceLength_ = key.source().length();
    into.groupLength_ = key.group().length();
    into.families_ = static_cast<std::uint8_t>((key.source().isNone() ? 0 : sourceIpv4) |
                                               (key.group().isNone() ? 0 : groupIpv4));
    into.app_ = static_cast<std::uint8_t>(app);
  }
  // The compact form of `key`, if it has one.
  static std::optional<CompactRouteKey> of(
      const Routing::Multicast::Fib::MfibVrfDirRouteKey& key) noexcept {
    if (!fits(key.key())) return std::nullopt;
    CompactRouteKey compact;
    write(compact, key.app(), key.key());
    return compact;
  }
  Routing::Multicast::Fib::MfibVrfDirRouteKey key() const;
  Routing::Multicast::Fib::MfibAppType app() const noexcept {
    return static_cast<Routing::Multicast::Fib::MfibAppType>(app_);
  }
  // Whether `route` is the route key this stands for, without making that key: the pass
  // finds each waiting key's route by the hash it kept and this comparison.
  bool sameAs(const Routing::Multicast::Fib::IpGenRouteKey& route) const noexcept {
    return samePrefix(route.source(), source_, sourceLength_, sourceIpv4) &&
           samePrefix(route.group(), group_, groupLength_, groupIpv4);
  }

  std::size_t hash() const noexcept {
    using Routing::Multicast::Fib::IpGenRouteKey;
    return IpGenRouteKey::hashOfWords(
        IpGenRouteKey::prefixWord(addrWord(source_, sourceIpv4), sourceLength_),
        IpGenRouteKey::prefixWord(addrWord(group_, groupIpv4), groupLength_));
  }
  friend bool operator==(const CompactRouteKey&, const CompactRouteKey&) noexcept = default;
  friend std::strong_ordering operator<=>(const CompactRouteKey&,
                                          const CompactRouteKey&) noexcept = default;

 private:
  static constexpr std::uint8_t sourceIpv4 = 1;
  static constexpr std::uint8_t groupIpv4 = 2;

  static bool fits(const Lanx::IpGenPrefix& prefix) noexcept {
    return prefix.family() == Lanx::AddressFamily::ipv4 || prefix.isNone();
  }
  bool samePrefix(const Lanx::IpGenPrefix& prefix, const std::array<std::uint8_t, 4>& raw,
                  std::uint8_t length, std::uint8_t ipv4) const noexcept {
    if (prefix.length() != length) return false;
    if (!(families_ & ipv4)) return prefix.isNone();
    return prefix.family() == Lanx::AddressFamily::ipv4 &&
           std::memcmp(prefix.addr().rawBytes().data(), raw.data(), raw.size()) == 0;
  }
  // The address's hashWord(): an absent one has no family and no bytes.
  std::uint64_t addrWord(const std::array<std::uint8_t, 4>& raw, std::uint8_t ipv4) const noexcept {
    return (families_ & ipv4) ? Lanx::IpGenAddr::ipv4HashWord(raw.data()) : 0;
  }

  // Raw address bytes in network order, zero for an absent source.
  std::array<std::uint8_t, 4> source_{};
  std::array<std::uint8_t, 4> group_{};
  std::uint8_t sourceLength_ = 0;
  std::uint8_t groupLength_ = 0;
  // sourceIpv4 and groupIpv4.
  std::uint8_t families_ = 0;
  std::uint8_t app_ = 0;
};

static_assert(sizeof(CompactRouteKey) == 12);

}  // namespace VekL3Mcast

template <>
struct std::hash<VekL3Mcast::CompactRouteKey> : Lanx::MemberHash<VekL3Mcast::CompactRouteKey> {};
