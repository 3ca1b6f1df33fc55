#include "runtime/state/MfibAppType.h"

namespace Routing::Multicast::Fib {

std::string_view mfibAppTypeName(MfibAppType app) noexcept {
  switch (app) {
    case MfibAppType::none:
      return "none";
    case MfibAppType::static_:
      return "static";
    case MfibAppType::pim:
      return "pim";
    case MfibAppType::igmp:
      return "igmp";
    case MfibAppType::mld:
      return "mld";
    case MfibAppType::mvpn:
      return "mvpn";
  }
  return "unknown";  // a byte from outside that names no application
}

std::optional<MfibAppType> mfibAppTypeFromName(std::string_view name) noexcept {
  for (MfibAppType app : allMfibAppTypes) {
    if (mfibAppTypeName(app) == name) return app;
  }
  return std::nullopt;
}

}  // namespace Routing::Multicast::Fib
