#include "runtime/dov/TaskScheduler.h"

#include <fmt/format.h>

#include <chrono>

#include "runtime/dov/NoProgressException.h"
#include "runtime/dov/RealTimePolicy.h"
#include "runtime/dov/SimulationPolicy.h"
#include "runtime/dov/Task.h"
#include "runtime/dov/Timer.h"
#include "runtime/lumo/Assert.h"

namespace Dov {

namespace {

// Opens a run on the policy and closes it however the run ends; measures wall time.
class RunScope {
 public:
  explicit RunScope(SchedulingPolicy& policy)
      : policy_(policy), outer_(policy.runBegin()), start_(std::chrono::steady_clock::now()) {}
  ~RunScope() { policy_.runEnd(outer_); }
  RunScope(const RunScope&) = delete;
  RunScope& operator=(const RunScope&) = delete;

  double elapsed() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  SchedulingPolicy& policy_;
  SchedulingPolicy::RunMark outer_;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace

Lumo::Ptr<TaskScheduler> TaskScheduler::makeRealTime(double quantum) {
  return Lumo::makePtr<TaskScheduler>(std::make_unique<RealTimePolicy>(quantum));
}

Lumo::Ptr<TaskScheduler> TaskScheduler::makeSimulation(unsigned yieldEvery, double startTime) {
  return Lumo::makePtr<TaskScheduler>(std::make_unique<SimulationPolicy>(yieldEvery, startTime));
}

TaskScheduler::TaskScheduler(std::unique_ptr<SchedulingPolicy> policy)
    : policy_(std::move(policy)) {
  QEL_ASSERT(policy_, "a scheduler needs a policy");
  if (policy_->simulated()) simulation_ = static_cast<SimulationPolicy*>(policy_.get());
}

TaskScheduler::~TaskScheduler() {
  // Tasks hold their scheduler, so none is armed here; timers may still be.
  for (const TimerKey& key : timers_) std::get<Timer*>(key)->scheduler_ = nullptr;
}

void TaskScheduler::readyAppend(Task* task) noexcept {
  ReadyList& list = ready_[task->priority_];
  task->readyPrev_ = list.tail;
  task->readyNext_ = nullptr;
  (list.tail ? list.tail->readyNext_ : list.head) = task;
  list.tail = task;
  ++armedTasks_;
}

void TaskScheduler::readyRemove(Task* task) noexcept {
  ReadyList& list = ready_[task->priority_];
  (task->readyPrev_ ? task->readyPrev_->readyNext_ : list.head) = task->readyNext_;
  (task->readyNext_ ? task->readyNext_->readyPrev_ : list.tail) = task->readyPrev_;
  task->readyPrev_ = task->readyNext_ = nullptr;
  --armedTasks_;
}

Task* TaskScheduler::readyPop() noexcept {
  for (auto list = ready_.rbegin(); list != ready_.rend(); ++list) {
    if (Task* task = list->head) {
      readyRemove(task);
      task->armed_ = false;
      return task;
    }
  }
  return nullptr;
}

void TaskScheduler::timerIs(Timer* timer, double due) {
  QEL_ASSERT(timer->scheduler_ == nullptr || timer->scheduler_ == this,
             "a timer is armed on one scheduler at a time");
  timerDel(timer);
  timer->scheduler_ = this;
  timer->due_ = due;
  timer->sequence_ = ++timerSequence_;
  timers_.emplace(due, timer->sequence_, timer);
}

void TaskScheduler::timerDel(Timer* timer) noexcept {
  if (timer->scheduler_ != this) return;
  timers_.erase(TimerKey(timer->due_, timer->sequence_, timer));
  timer->scheduler_ = nullptr;
}

std::optional<double> TaskScheduler::nextTimerDue() const {
  if (timers_.empty()) return std::nullopt;
  return std::get<double>(*timers_.begin());
}

bool TaskScheduler::timerDue() const {
  return !timers_.empty() && std::get<double>(*timers_.begin()) <= policy_->currentTime();
}

bool TaskScheduler::pending() const { return armedTasks_ > 0 || timerDue(); }

void TaskScheduler::recordRun(double seconds, std::string_view name) {
  if (seconds > stats_.longestRun) {
    stats_.longestRun = seconds;
    stats_.longestRunName = name;
  }
}

void TaskScheduler::fireFirstTimer() {
  Timer* timer = std::get<Timer*>(*timers_.begin());
  timers_.erase(timers_.begin());
  timer->scheduler_ = nullptr;
  ++stats_.timerRuns;
  RunScope run(*policy_);
  timer->handleTimer();
  recordRun(run.elapsed(), "timer");
}

bool TaskScheduler::runTask(Task& task) {
  // Whoever drops the last pointer during the run still leaves the task alive to its end.
  // A task that no pointer counts (one on the stack) is left alone.
  Lumo::Ptr<Task> keep(task.references() > 0 ? &task : nullptr);
  RunScope run(*policy_);
  ++task.runDepth_;
  ++task.stats_.runs;
  struct DepthGuard {
    Task& task;
    ~DepthGuard() { --task.runDepth_; }
  } depth{task};
  const std::uint64_t workBefore = task.stats_.workCount;
  task.publishChange(Task::kRun, nullptr, nullptr);
  const double seconds = run.elapsed();
  if (seconds > task.stats_.longestRun) task.stats_.longestRun = seconds;
  recordRun(seconds, task.taskName().view());
  // A run that counted work, or did not ask for another, is not stuck.
  if (task.armed_ && task.stats_.workCount == workBefore) {
    ++task.stats_.runsWithoutProgress;
  } else {
    task.stats_.runsWithoutProgress = 0;
  }
  return noProgressLimit_ > 0 && task.stats_.runsWithoutProgress >= noProgressLimit_;
}

bool TaskScheduler::runOne() {
  std::string stuck;
  if (timerDue()) {
    fireFirstTimer();
  } else if (Task* task = readyPop()) {
    ++stats_.taskRuns;
    Lumo::Ptr<Task> keep(task->references() > 0 ? task : nullptr);
    if (runTask(*task)) {
      stuck = task->taskName().view();
      task->stats_.runsWithoutProgress = 0;
    }
  } else {
    return false;
  }
  if (afterEachRun_) afterEachRun_();
  if (!stuck.empty()) {
    throw NoProgressException(
        fmt::format("task \"{}\" ran {} times in a row without progress", stuck, noProgressLimit_));
  }
  return true;
}

std::size_t TaskScheduler::runUntilIdle(std::size_t maxRuns) {
  std::size_t runs = 0;
  while (runs < maxRuns && runOne()) ++runs;
  return runs;
}

void TaskScheduler::advanceTo(double time) {
  simulation_->timeIs(time);
  runUntilIdle();
}

void TaskScheduler::advance(double seconds) {
  QEL_ASSERT(simulation_, "advance needs the simulation policy");
  QEL_ASSERT(seconds >= 0, "time does not go back");
  const double target = simulation_->time() + seconds;
  runUntilIdle();
  for (auto due = nextTimerDue(); due && *due <= target; due = nextTimerDue()) advanceTo(*due);
  advanceTo(target);
}

double TaskScheduler::settle(double horizon) {
  runUntilIdle();
  if (!simulation_) return 0;
  const double start = simulation_->time();
  for (auto due = nextTimerDue(); due && *due <= start + horizon; due = nextTimerDue()) {
    advanceTo(*due);
  }
  return simulation_->time() - start;
}

}  // namespace Dov
