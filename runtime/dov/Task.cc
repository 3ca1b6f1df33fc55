#include "runtime/dov/Task.h"

#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Assert.h"

namespace Dov {

Task::Task(Lumo::Ptr<TaskScheduler> scheduler, TaskPriority priority, Lumo::String name)
    : scheduler_(std::move(scheduler)), priority_(priority), name_(std::move(name)) {
  QEL_ASSERT(scheduler_, "a task needs a scheduler");
  QEL_ASSERT(priority_ <= kTaskPriorityMax, "task priority out of range");
}

Task::~Task() {
  if (armed_) scheduler_->readyRemove(this);
}

void Task::taskPriorityIs(TaskPriority priority) {
  QEL_ASSERT(priority <= kTaskPriorityMax, "task priority out of range");
  if (priority == priority_) return;
  if (!armed_) {
    priority_ = priority;
    return;
  }
  // An armed task goes to the end of the line of its new priority.
  scheduler_->readyRemove(this);
  priority_ = priority;
  scheduler_->readyAppend(this);
}

void Task::scheduleTask() {
  if (armed_) return;
  armed_ = true;
  scheduler_->readyAppend(this);
}

bool Task::taskShouldYield() const { return scheduler_->shouldYield(); }

void Task::runNow() { scheduler_->runTask(*this); }

}  // namespace Dov
