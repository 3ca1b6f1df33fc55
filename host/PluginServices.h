#pragma once

#include "host/HostServices.h"

namespace VekHost {

// The services of the build mfa-host runs in: how it reaches the agent, and the interface
// id encoding. Defined next to main, outside the VekHost library.
HostServices pluginServices();

}  // namespace VekHost
