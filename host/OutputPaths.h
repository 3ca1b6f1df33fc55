#pragma once

#include <string>
#include <vector>

#include "host/RunOutputs.h"

namespace VekHost {

// Checks the output files of a run before it starts, so that a run is not wasted on a path
// it cannot write: each must be a file that can be written (or made) in a folder that
// exists, none may be the scenario file, and no two may be the same file.
class OutputPaths {
 public:
  // One message per problem, naming the option, the path and the reason.
  static std::vector<std::string> check(const OutputFiles& files, const std::string& scenario);
};

}  // namespace VekHost
