#pragma once

#include <functional>
#include <string_view>

#include "host/IntfIdEncoder.h"

namespace VekHost {

// What the loader may ask of the build it runs in. Without them it checks the form of
// names only.
struct LoaderOptions {
  // When set, every interface name in the file must have an interface id.
  IntfIdEncoder intfId;
  // When set, every route application name must pass.
  std::function<bool(std::string_view app)> isRouteApp;
};

// Interface ids and route applications as the shared runtime has them: what mfa-host checks
// a scenario against.
LoaderOptions runtimeLoaderOptions();

}  // namespace VekHost
