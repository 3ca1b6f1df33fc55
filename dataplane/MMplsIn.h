#pragma once

#include "dataplane/SharedCountersTable.h"
#include "runtime/vek/DvMMplsIn.h"

namespace Dataplane {

// The MPLS encapsulation module (class 140). Its tunnel tables come from the label tables
// of central state, which the daemon reads itself; what the agent gives it is the counter
// slots of its shared entity.
class MMplsIn final : public SharedCountersTable<VekModules::DvMMplsIn> {
 public:
  using SharedCountersTable::SharedCountersTable;
};

}  // namespace Dataplane
