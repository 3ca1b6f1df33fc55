#include "runtime/dov/TaskSchedulerRoot.h"

namespace Dov {

namespace {
Lumo::Ptr<TaskScheduler>& processScheduler() {
  static Lumo::Ptr<TaskScheduler> scheduler;
  return scheduler;
}
}  // namespace

TaskScheduler& TaskSchedulerRoot::scheduler() {
  Lumo::Ptr<TaskScheduler>& current = processScheduler();
  if (!current) current = TaskScheduler::makeRealTime();
  return *current;
}

Lumo::Ptr<TaskScheduler> TaskSchedulerRoot::findOrCreateScheduler() { return &scheduler(); }

void TaskSchedulerRoot::schedulerIs(Lumo::Ptr<TaskScheduler> scheduler) {
  processScheduler() = std::move(scheduler);
}

}  // namespace Dov
