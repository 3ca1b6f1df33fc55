#include "host/LoaderOptions.h"

#include "runtime/state/IntfId.h"
#include "runtime/state/MfibAppType.h"

namespace VekHost {

LoaderOptions runtimeLoaderOptions() {
  LoaderOptions options;
  options.intfId = [](std::string_view name) -> std::optional<std::uint64_t> {
    auto id = Lanx::IntfId::fromName(name);
    if (!id) return std::nullopt;
    return id->value();
  };
  options.isRouteApp = [](std::string_view app) {
    return Routing::Multicast::Fib::mfibAppTypeFromName(app).has_value();
  };
  return options;
}

}  // namespace VekHost
