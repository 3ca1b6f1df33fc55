#pragma once

#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Ptr.h"

namespace Dov {

// The process's scheduler: the one the agent's tasks, the clock and the review timers
// run on. The host installs one with the policy it wants before it makes the agent;
// without that, the first user gets a real-time scheduler.
class TaskSchedulerRoot {
 public:
  static Lumo::Ptr<TaskScheduler> findOrCreateScheduler();
  // The same without taking a count, for the hot readers of the clock.
  static TaskScheduler& scheduler();
  // Replaces the process's scheduler; what was made on the old one keeps it alive.
  static void schedulerIs(Lumo::Ptr<TaskScheduler> scheduler);
};

}  // namespace Dov
