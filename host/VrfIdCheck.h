#pragma once

#include <string>
#include <vector>

#include "host/LoadError.h"
#include "host/Scenario.h"

namespace VekHost {

// The host plays the hosting agent, which starts a VRF only once the VRF has an id: follows
// the ids a scenario gives and takes away, step by step, and refuses a start of a VRF that
// has none at that point unless the step asks for it (`unknownId: true`). A route, route
// table or route expectation that names a VRF which nothing in the file ever gives an id
// is most likely a typo: it gets a warning. The ids that count are the software ids of the
// full agent and the hardware ids of the reduced one, the ones each looks its VRFs up in.
class VrfIdCheck {
 public:
  // Adds an error per refused start; gives the warnings, each "line: text".
  static std::vector<LoadError> check(const Scenario& scenario, std::vector<LoadError>& errors);
};

}  // namespace VekHost
