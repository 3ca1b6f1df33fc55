#include "host/PluginServices.h"

namespace VekHost {

// No agent is wired in yet: run and check refuse, intf-id has no encoding.
HostServices pluginServices() { return HostServices{}; }

}  // namespace VekHost
