#include "mfib/CompactRouteKey.h"

namespace VekL3Mcast {

namespace {

using Lanx::AddressFamily;
using Routing::Multicast::Fib::IpGenRouteKey;
using Routing::Multicast::Fib::MfibAppType;
using Routing::Multicast::Fib::MfibVrfDirRouteKey;

constexpr std::uint8_t hostLength = 32;

bool fits(const Lanx::IpGenPrefix& prefix) noexcept {
  return prefix.family() == AddressFamily::ipv4 || prefix.isNone();
}

Lanx::IpGenPrefix prefixOf(const std::array<std::uint8_t, 4>& bytes, std::uint8_t length,
                           bool ipv4) {
  if (!ipv4) return Lanx::IpGenPrefix();
  // The bytes were taken from a prefix, so they are masked already and the length fits; a
  // host prefix, the common one, needs no mask at all.
  const Lanx::IpGenAddr addr = Lanx::IpGenAddr::ipv4FromRaw(bytes.data());
  return length == hostLength ? Lanx::IpGenPrefix(addr) : Lanx::IpGenPrefix(addr, length);
}

}  // namespace

std::optional<CompactRouteKey> CompactRouteKey::of(const MfibVrfDirRouteKey& key) noexcept {
  const IpGenRouteKey& route = key.key();
  if (!fits(route.source()) || !fits(route.group())) return std::nullopt;
  CompactRouteKey compact;
  route.source().addr().copyToBuffer(compact.source_.data());
  route.group().addr().copyToBuffer(compact.group_.data());
  compact.sourceLength_ = route.source().length();
  compact.groupLength_ = route.group().length();
  compact.families_ = (route.source().isNone() ? 0 : sourceIpv4) |
                      (route.group().isNone() ? 0 : groupIpv4);
  compact.app_ = static_cast<std::uint8_t>(key.app());
  return compact;
}

MfibVrfDirRouteKey CompactRouteKey::key() const {
  return MfibVrfDirRouteKey(
      static_cast<MfibAppType>(app_),
      IpGenRouteKey(prefixOf(source_, sourceLength_, families_ & sourceIpv4),
                    prefixOf(group_, groupLength_, families_ & groupIpv4)));
}

}  // namespace VekL3Mcast
