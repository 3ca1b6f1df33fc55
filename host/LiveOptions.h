#pragma once

#include <string>

#include "host/RunOutputs.h"

namespace VekHost {

// What `mfa-host live` is asked to do.
struct LiveOptions {
  std::string netns;        // empty: the namespace mfa-host runs in
  std::string app = "pim";  // the route application whose tables take the kernel's routes
  double seconds = 0;       // how long to follow the kernel; 0 until interrupted
  OutputFiles files;
};

}  // namespace VekHost
