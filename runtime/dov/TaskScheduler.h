#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>

#include "runtime/dov/SchedulingPolicy.h"
#include "runtime/dov/TaskPriority.h"
#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"

namespace Dov {

class SimulationPolicy;
class Task;
class Timer;

// Runs armed tasks, highest priority first and in arming order within a priority, and
// fires timers in time order. Nothing runs by itself: the host drives it with runOne,
// runUntilIdle, advance or settle, and learns after every run through the after-run hook.
// Due timers go before ready tasks, so that a busy task cannot hold time back.
class TaskScheduler : public Lumo::Node {
 public:
  struct Stats {
    std::uint64_t taskRuns = 0;
    std::uint64_t timerRuns = 0;
    double longestRun = 0;  // wall seconds of the longest task or timer run
    std::string longestRunName;
  };

  static Lumo::Ptr<TaskScheduler> makeRealTime(double quantum = 0.001);
  static Lumo::Ptr<TaskScheduler> makeSimulation(unsigned yieldEvery = 64, double startTime = 0);

  explicit TaskScheduler(std::unique_ptr<SchedulingPolicy> policy);
  ~TaskScheduler() override;

  SchedulingPolicy& policy() const noexcept { return *policy_; }
  // The simulation policy, or null under real time.
  SimulationPolicy* simulation() const noexcept { return simulation_; }
  double currentTime() const { return policy_->currentTime(); }

  // Host side. Each returns after the after-run hook of its last run.
  bool runOne();
  std::size_t runUntilIdle(std::size_t maxRuns = SIZE_MAX);
  // Simulation only: moves the clock on by `seconds`, stopping at each timer on the way
  // to fire it and to run what became ready.
  void advance(double seconds);
  // Runs until idle and, under simulation, jumps to each timer within `horizon` seconds
  // until none is left; gives the simulated seconds that passed.
  double settle(double horizon = 60.0);
  // Armed tasks or due timers.
  bool pending() const;
  std::size_t armedTasks() const noexcept { return armedTasks_; }
  std::size_t timersWaiting() const noexcept { return timers_.size(); }
  std::optional<double> nextTimerDue() const;
  void afterEachRunIs(std::function<void()> hook) { afterEachRun_ = std::move(hook); }
  const Stats& stats() const noexcept { return stats_; }
  // A task that arms itself again this many runs in a row without counting any work
  // (taskWorkCountInc) is stuck: the run that reaches the limit raises NoProgressException
  // naming it, after its after-run hook. 0, the default, sets no limit.
  void noProgressLimitIs(std::uint64_t runs) noexcept { noProgressLimit_ = runs; }
  std::uint64_t noProgressLimit() const noexcept { return noProgressLimit_; }

  // Tasks and timers.
  bool shouldYield() const { return policy_->shouldYield(); }
  void timerIs(Timer* timer, double due);
  void timerDel(Timer* timer) noexcept;

 private:
  friend class Task;
  struct ReadyList {
    Task* head = nullptr;
    Task* tail = nullptr;
  };
  using TimerKey = std::tuple<double, std::uint64_t, Timer*>;

  void readyAppend(Task* task) noexcept;
  void readyRemove(Task* task) noexcept;
  Task* readyPop() noexcept;
  bool timerDue() const;
  void fireFirstTimer();
  // Gives whether the task ended the run stuck (see noProgressLimitIs).
  bool runTask(Task& task);
  void advanceTo(double time);
  void recordRun(double seconds, std::string_view name);

  std::unique_ptr<SchedulingPolicy> policy_;
  SimulationPolicy* simulation_ = nullptr;
  std::array<ReadyList, kTaskPriorityMax + 1> ready_;
  std::size_t armedTasks_ = 0;
  std::set<TimerKey> timers_;
  std::uint64_t timerSequence_ = 0;
  std::function<void()> afterEachRun_;
  std::uint64_t noProgressLimit_ = 0;
  Stats stats_;
};

}  // namespace Dov
