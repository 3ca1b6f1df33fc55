#include "host/PluginServices.h"

#include <memory>
#include <utility>

#include "host/LoaderOptions.h"
#include "host/PluginDriver.h"
#include "host/PluginLibrary.h"

namespace VekHost {

// The agent comes from libVekL3Mcast.so; interface ids and route applications are the
// shared runtime's own.
HostServices pluginServices() {
  HostServices services;
  services.driverFactory = [] { return std::make_unique<PluginDriver>(); };
  services.loadAgent = [] { PluginLibrary::instance(); };
  LoaderOptions names = runtimeLoaderOptions();
  services.intfId = std::move(names.intfId);
  services.isRouteApp = std::move(names.isRouteApp);
  return services;
}

}  // namespace VekHost
