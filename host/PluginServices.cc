#include "host/PluginServices.h"

#include <memory>

#include "host/PluginDriver.h"
#include "host/PluginLibrary.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/MfibAppType.h"

namespace VekHost {

// The agent comes from libVekL3Mcast.so; interface ids and route applications are the
// shared runtime's own.
HostServices pluginServices() {
  HostServices services;
  services.driverFactory = [] { return std::make_unique<PluginDriver>(); };
  services.loadAgent = [] { PluginLibrary::instance(); };
  services.intfId = [](std::string_view name) -> std::optional<uint64_t> {
    auto id = Lanx::IntfId::fromName(name);
    if (!id) return std::nullopt;
    return id->value();
  };
  services.isRouteApp = [](std::string_view app) {
    return Routing::Multicast::Fib::mfibAppTypeFromName(app).has_value();
  };
  return services;
}

}  // namespace VekHost
