#include "runtime/state/MfibVrfDirRouteKey.h"

#include <fmt/format.h>

namespace Routing::Multicast::Fib {

std::string MfibVrfDirRouteKey::toString() const {
  if (isNoPosition()) return "none";
  return fmt::format("{}:{}", app_, key_);
}

}  // namespace Routing::Multicast::Fib
