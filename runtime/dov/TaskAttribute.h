#pragma once

#include <type_traits>

#include "runtime/dov/Task.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/Publisher.h"
#include "runtime/lumo/String.h"

namespace Dov {

// The task attribute of an owner whose run handler is `Handler`. The owner spells out
//   void taskIs(Lumo::Ptr<Dov::TaskScheduler> s, Dov::TaskPriority p, Lumo::String n)
//       { task_.is(std::move(s), p, std::move(n)); }
//   void taskDel() { task_.del(); }
//   Dov::Task* task() const { return task_.get(); }
//   Dov::TaskAttribute<Owner, &Owner::handleTask> task_{this};
template <typename Owner, void (Owner::*Handler)()>
class TaskAttribute {
 public:
  explicit TaskAttribute(Owner* owner) noexcept : subscriber_(owner, &dispatch) {}
  TaskAttribute(const TaskAttribute&) = delete;
  TaskAttribute& operator=(const TaskAttribute&) = delete;
  ~TaskAttribute() { del(); }

  Task* get() const noexcept { return task_.get(); }
  Task* operator->() const noexcept { return task_.get(); }
  explicit operator bool() const noexcept { return static_cast<bool>(task_); }

  // A task on the same scheduler only takes the new priority, and is kept if its name is
  // the same too; anything else replaces it. Either way the owner's handler then runs once
  // at once, so the first pass does not wait for the scheduler. No scheduler: no task.
  void is(Lumo::Ptr<TaskScheduler> scheduler, TaskPriority priority, Lumo::String name) {
    if (!scheduler) {
      del();
      return;
    }
    const bool sameScheduler = task_ && task_->taskScheduler() == scheduler;
    if (sameScheduler) task_->taskPriorityIs(priority);
    if (!sameScheduler || task_->taskName() != name) {
      del();
      task_ = Lumo::makePtr<Task>(std::move(scheduler), priority, std::move(name));
      task_->subscriberAdd(&subscriber_, false);
    }
    task_->runNow();
  }

  void del() noexcept {
    if (!task_) return;
    task_->subscriberRemove(&subscriber_);
    task_.reset();
  }

 private:
  // Reactors let no exception pass: one that gets here ends the process.
  static void dispatch(Lumo::Publisher*, Lumo::Subscriber* subscriber, short attributeId,
                       const void*, const void*) noexcept {
    if (attributeId != Task::kRun) return;
    Owner* owner = Lumo::OwnedSubscriber<Owner>::ownerOf(subscriber);
    if constexpr (std::is_base_of_v<Lumo::Node, Owner>) {
      if (owner->nodeFlag(Lumo::Node::zombie)) return;
    }
    (owner->*Handler)();
  }

  Lumo::OwnedSubscriber<Owner> subscriber_;
  Lumo::Ptr<Task> task_;
};

}  // namespace Dov
