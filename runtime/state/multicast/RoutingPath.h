#pragma once

#include <string>
#include <string_view>

#include "runtime/state/AddressFamily.h"

namespace Routing {

// Central-state paths of routing keep IPv4 under "routing/" and IPv6 under "routing6/":
// "routing6/multicast/fib" is the IPv6 twin of "routing/multicast/fib".
inline std::string routingPath(Lanx::AddressFamily af, std::string_view rest) {
  return std::string(af == Lanx::AddressFamily::ipv6 ? "routing6/" : "routing/") +
         std::string(rest);
}

}  // namespace Routing
