#include "mfib/CompactRouteKey.h"

namespace VekL3Mcast {

namespace {

using Routing::Multicast::Fib::IpGenRouteKey;
using Routing::Multicast::Fib::MfibAppType;
using Routing::Multicast::Fib::MfibVrfDirRouteKey;

constexpr std::uint8_t hostLength = 32;

Lanx::IpGenPrefix prefixOf(const std::array<std::uint8_t, 4>& bytes, std::uint8_t length,
                           bool ipv4) {
  if (!ipv4) return Lanx::IpGenPrefix();
  // The bytes were taken from a prefix, so they are masked already and the length fits; a
  // host prefix, the common one, needs no mask at all.
  const Lanx::IpGenAddr addr = Lanx::IpGenAddr::ipv4FromRaw(bytes.data());
  return length == hostLength ? Lanx::IpGenPrefix(addr) : Lanx::IpGenPrefix(addr, length);
}

}  // namespace

MfibVrfDirRouteKey CompactRouteKey::key() const {
  return MfibVrfDirRouteKey(
      static_cast<MfibAppType>(app_),
      IpGenRouteKey(prefixOf(source_, sourceLength_, families_ & sourceIpv4),
                    prefixOf(group_, groupLength_, families_ & groupIpv4)));
}

}  // namespace VekL3Mcast
