#include "runtime/state/IpGenRouteKey.h"

#include <fmt/format.h>

namespace Routing::Multicast::Fib {

std::string IpGenRouteKey::toString() const { return fmt::format("{},{}", source_, group_); }

}  // namespace Routing::Multicast::Fib
