#pragma once

#include <string>
#include <vector>

#include "host/AgentSettings.h"
#include "host/StateChange.h"
#include "host/Step.h"

namespace VekHost {

// A loaded and fully checked scenario file.
struct Scenario {
  std::string file;
  AgentSettings agent;
  StateChange state;  // central state present before the agent is constructed
  std::vector<Step> steps;
};

}  // namespace VekHost
