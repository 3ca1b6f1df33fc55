#pragma once

#include "dataplane/SharedCountersTable.h"
#include "runtime/vek/DvMMplsOut.h"

namespace Dataplane {

// A VRF's MPLS decapsulation module (class 141). It reads the decapsulation label table of
// central state itself; what the agent gives it is the counter slots of its shared entity.
class MMplsOut final : public SharedCountersTable<VekModules::DvMMplsOut> {
 public:
  using SharedCountersTable::SharedCountersTable;
};

}  // namespace Dataplane
