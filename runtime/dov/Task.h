#pragma once

#include <cstdint>

#include "runtime/dov/TaskPriority.h"
#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/Publisher.h"
#include "runtime/lumo/String.h"

namespace Dov {

class TaskScheduler;

// Cooperative work on the agent thread. A run is published to the task's subscribers as a
// change of attribute kRun; the owner subscribes and its dispatch calls its run handler.
// A task runs only when armed, once per arming, and never preempts anything.
class Task : public Lumo::Node, public Lumo::Publisher {
 public:
  static constexpr short kRun = 1;

  struct Stats {
    std::uint64_t runs = 0;
    std::uint64_t workCount = 0;
    std::uint64_t workPending = 0;
    double longestRun = 0;  // wall seconds
    // Runs in a row that armed the task again and counted no work.
    std::uint64_t runsWithoutProgress = 0;
  };

  Task(Lumo::Ptr<TaskScheduler> scheduler, TaskPriority priority, Lumo::String name);
  ~Task() override;

  const Lumo::Ptr<TaskScheduler>& taskScheduler() const noexcept { return scheduler_; }
  TaskPriority taskPriority() const noexcept { return priority_; }
  const Lumo::String& taskName() const noexcept { return name_; }

  void taskPriorityIs(TaskPriority priority);
  // Arms the task: the scheduler runs it once, later. Arming an armed task does nothing.
  void scheduleTask();
  bool taskScheduled() const noexcept { return armed_; }
  // Asked between units of work: true when this run has had its share.
  bool taskShouldYield() const;
  void taskWorkCountInc(std::uint64_t count) noexcept { stats_.workCount += count; }
  void taskWorkPendingIs(std::uint64_t count) noexcept { stats_.workPending = count; }
  bool taskCurrentlyRunning() const noexcept { return runDepth_ > 0; }
  const Stats& taskStats() const noexcept { return stats_; }

  // One run now, on this stack, without waiting for the scheduler; an arming stays.
  void runNow();

 private:
  friend class TaskScheduler;

  Lumo::Ptr<TaskScheduler> scheduler_;
  TaskPriority priority_;
  Lumo::String name_;
  Stats stats_;
  unsigned runDepth_ = 0;
  bool armed_ = false;
  // Links of the scheduler's ready list of this priority, while armed.
  Task* readyPrev_ = nullptr;
  Task* readyNext_ = nullptr;
};

}  // namespace Dov
