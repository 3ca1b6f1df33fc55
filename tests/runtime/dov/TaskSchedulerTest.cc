#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "runtime/dov/NoProgressException.h"
#include "runtime/dov/RealTimePolicy.h"
#include "runtime/dov/SimulationPolicy.h"
#include "runtime/dov/Task.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/dov/Timer.h"
#include "runtime/lumo/Exception.h"
#include "tests/runtime/dov/RunProbe.h"

namespace {

using DovTest::RunProbe;

Lumo::Ptr<Dov::Task> makeTask(const Lumo::Ptr<Dov::TaskScheduler>& s, Dov::TaskPriority p,
                              const char* name) {
  return Lumo::makePtr<Dov::Task>(s, p, name);
}

class TaskOrderTest : public ::testing::Test {
 protected:
  RunProbe& probe(Dov::TaskPriority priority, std::string name) {
    probes_.push_back(std::make_unique<RunProbe>(makeTask(scheduler_, priority, name.c_str()),
                                                 [this, name] { order_.push_back(name); }));
    return *probes_.back();
  }

  Lumo::Ptr<Dov::TaskScheduler> scheduler_ = Dov::TaskScheduler::makeSimulation();
  std::vector<std::unique_ptr<RunProbe>> probes_;
  std::vector<std::string> order_;
};

TEST_F(TaskOrderTest, HigherPriorityFirstThenArmingOrderAndPriorityChangesRequeue) {
  RunProbe& low = probe(1, "low");
  RunProbe& highA = probe(5, "highA");
  RunProbe& mid = probe(3, "mid");
  RunProbe& highB = probe(5, "highB");
  RunProbe& moved = probe(5, "moved");
  low.task().scheduleTask();
  moved.task().scheduleTask();
  highB.task().scheduleTask();
  mid.task().scheduleTask();
  highA.task().scheduleTask();
  moved.task().taskPriorityIs(1);  // behind low now
  low.task().taskPriorityIs(1);    // unchanged: keeps its place
  EXPECT_EQ(scheduler_->runUntilIdle(), 5u);
  EXPECT_EQ(order_, (std::vector<std::string>{"highB", "highA", "mid", "low", "moved"}));
  EXPECT_FALSE(scheduler_->pending());
}

TEST_F(TaskOrderTest, ArmingTwiceRunsOnceARunMayArmAgainAndTheHookSeesEachRun) {
  std::vector<std::string> hooks;
  scheduler_->afterEachRunIs([&] { hooks.push_back(order_.back()); });
  RunProbe& once = probe(3, "once");
  int again = 1;
  RunProbe self(makeTask(scheduler_, 3, "self"), [&] {
    order_.push_back("self");
    if (again-- > 0) self.task().scheduleTask();
  });
  once.task().scheduleTask();
  once.task().scheduleTask();
  self.task().scheduleTask();
  EXPECT_TRUE(scheduler_->runOne());
  EXPECT_EQ(hooks, (std::vector<std::string>{"once"}));
  scheduler_->runUntilIdle();
  EXPECT_EQ(hooks, (std::vector<std::string>{"once", "self", "self"}));
  EXPECT_EQ(scheduler_->stats().taskRuns, 3u);
}

TEST_F(TaskOrderTest, DroppingATaskThatIsArmedOrRunningIsSafe) {
  {
    RunProbe gone(makeTask(scheduler_, 3, "gone"), [&] { order_.push_back("gone"); });
    gone.task().scheduleTask();
  }
  RunProbe* owner = nullptr;
  owner = new RunProbe(makeTask(scheduler_, 3, "drop"), [&owner] { delete owner; });
  owner->task().scheduleTask();
  EXPECT_EQ(scheduler_->runUntilIdle(), 1u);
  EXPECT_TRUE(order_.empty());
  EXPECT_EQ(scheduler_->stats().longestRunName, "drop");
}

// --- yielding

TEST(YieldTest, SimulationYieldsOnTheNthAskOfEachRun) {
  auto scheduler = Dov::TaskScheduler::makeSimulation(3);
  std::vector<int> processedPerRun;
  int left = 7;
  RunProbe p(makeTask(scheduler, 3, "drain"), [&] {
    int processed = 0;
    do {
      --left;
      ++processed;
    } while (left > 0 && !p.task().taskShouldYield());
    processedPerRun.push_back(processed);
    if (left > 0) p.task().scheduleTask();
  });
  p.task().scheduleTask();
  scheduler->runUntilIdle();
  // The first item is free, then the third ask says yield: three items a run.
  EXPECT_EQ(processedPerRun, (std::vector<int>{3, 3, 1}));
}

TEST(YieldTest, DirectRunInsideARunKeepsTheOuterCount) {
  auto scheduler = Dov::TaskScheduler::makeSimulation(2);
  std::vector<bool> answers;
  RunProbe inner(makeTask(scheduler, 3, "inner"),
                 [&] { answers.push_back(inner.task().taskShouldYield()); });
  RunProbe outer(makeTask(scheduler, 3, "outer"), [&] {
    answers.push_back(outer.task().taskShouldYield());
    inner.task().runNow();
    answers.push_back(outer.task().taskShouldYield());
  });
  outer.task().scheduleTask();
  scheduler->runUntilIdle();
  EXPECT_EQ(answers, (std::vector<bool>{false, false, true}));
}

// Asks come far faster than the clock is read: the answer still turns only once the
// share is used, and a share smaller than any run is used by the first ask.
TEST(YieldTest, RealTimeYieldsOnlyOnceTheQuantumIsUsed) {
  auto scheduler = Dov::TaskScheduler::makeRealTime(0.002);
  auto& policy = static_cast<Dov::RealTimePolicy&>(scheduler->policy());
  std::vector<std::uint64_t> asksPerRun;
  RunProbe p(makeTask(scheduler, 3, "rt"), [&] {
    std::uint64_t asks = 0;
    while (!p.task().taskShouldYield()) ++asks;
    asksPerRun.push_back(asks);
  });
  const double start = Dov::RealTimePolicy::monotonicTime();
  p.task().runNow();
  EXPECT_GE(Dov::RealTimePolicy::monotonicTime() - start, 0.002);
  policy.quantumIs(1e-12);
  p.task().runNow();
  ASSERT_EQ(asksPerRun.size(), 2u);
  EXPECT_GT(asksPerRun[0], 100u);
  EXPECT_EQ(asksPerRun[1], 0u);
  EXPECT_EQ(scheduler->simulation(), nullptr);
  EXPECT_THROW(policy.quantumIs(0), Lumo::Exception);
}

// A task that arms itself again without counting work would keep a run-until-idle loop
// going for ever; the limit stops it and names it. Work counted in between starts the
// count again, and so does a run that does not ask for another.
TEST(NoProgressTest, ATaskStuckForTheLimitOfRunsIsNamedAndOneThatWorksIsNot) {
  auto scheduler = Dov::TaskScheduler::makeSimulation(1);
  scheduler->noProgressLimitIs(5);
  int runs = 0;
  RunProbe slow(makeTask(scheduler, 3, "slow"), [&] {
    ++runs;
    if (runs % 4 == 0) slow.task().taskWorkCountInc(1);
    if (runs < 20) slow.task().scheduleTask();
  });
  slow.task().scheduleTask();
  EXPECT_EQ(scheduler->runUntilIdle(), 20u);

  int hooks = 0;
  scheduler->afterEachRunIs([&] { ++hooks; });
  RunProbe stuck(makeTask(scheduler, 3, "stuck"), [&] {
    if (!stuck.task().taskShouldYield()) stuck.task().taskWorkCountInc(1);
    stuck.task().scheduleTask();
  });
  stuck.task().scheduleTask();
  try {
    scheduler->runUntilIdle();
    ADD_FAILURE() << "a stuck task ran on";
  } catch (const Dov::NoProgressException& error) {
    EXPECT_STREQ(error.what(), "task \"stuck\" ran 5 times in a row without progress");
  }
  EXPECT_EQ(hooks, 5) << "the run that reaches the limit is carried out to its hook";
  EXPECT_TRUE(stuck.task().taskScheduled());
}

// --- timers and simulated time

struct Alarm : Dov::Timer {
  Alarm(Dov::TaskScheduler& s, std::vector<std::pair<std::string, double>>& log, std::string n)
      : scheduler(s), fired(log), name(std::move(n)) {}
  void handleTimer() override {
    fired.emplace_back(name, scheduler.currentTime());
    if (then) then();
  }
  Dov::TaskScheduler& scheduler;
  std::vector<std::pair<std::string, double>>& fired;
  std::string name;
  std::function<void()> then;
};

class SimulatedTimeTest : public ::testing::Test {
 protected:
  using Fired = std::vector<std::pair<std::string, double>>;
  Lumo::Ptr<Dov::TaskScheduler> scheduler_ = Dov::TaskScheduler::makeSimulation(64, 100.0);
  Fired fired_;
};

TEST_F(SimulatedTimeTest, AdvanceFiresTimersInTimeOrderAndRunsWhatTheyMadeReady) {
  Alarm late(*scheduler_, fired_, "late"), early(*scheduler_, fired_, "early"),
      tie(*scheduler_, fired_, "tie"), beyond(*scheduler_, fired_, "beyond");
  RunProbe work(makeTask(scheduler_, 3, "work"),
                [&] { fired_.emplace_back("work", scheduler_->currentTime()); });
  early.then = [&] { work.task().scheduleTask(); };
  scheduler_->timerIs(&late, 100.3);
  scheduler_->timerIs(&early, 100.1);
  scheduler_->timerIs(&tie, 100.3);
  scheduler_->timerIs(&beyond, 101.0);
  scheduler_->advance(0.5);
  EXPECT_EQ(fired_, (Fired{{"early", 100.1}, {"work", 100.1}, {"late", 100.3}, {"tie", 100.3}}));
  EXPECT_DOUBLE_EQ(scheduler_->currentTime(), 100.5);
  EXPECT_TRUE(beyond.timerArmed());
  EXPECT_FALSE(scheduler_->pending()) << "a timer that is not due is not pending";
}

TEST_F(SimulatedTimeTest, DueTimerGoesBeforeReadyTasksAndCancelledOneNeverFires) {
  Alarm due(*scheduler_, fired_, "due"), cancelled(*scheduler_, fired_, "cancelled");
  RunProbe work(makeTask(scheduler_, 9, "work"),
                [&] { fired_.emplace_back("work", scheduler_->currentTime()); });
  work.task().scheduleTask();
  scheduler_->timerIs(&due, 99.0);
  scheduler_->timerIs(&cancelled, 99.5);
  scheduler_->timerDel(&cancelled);
  {
    Alarm destroyed(*scheduler_, fired_, "destroyed");
    scheduler_->timerIs(&destroyed, 99.0);
  }
  scheduler_->runUntilIdle();
  EXPECT_EQ(fired_, (Fired{{"due", 100.0}, {"work", 100.0}}));
  EXPECT_EQ(scheduler_->stats().timerRuns, 1u);
}

TEST_F(SimulatedTimeTest, ReArmingMovesATimerAndSettleJumpsToEachTimer) {
  Alarm tick(*scheduler_, fired_, "tick");
  int ticks = 3;
  tick.then = [&] {
    if (--ticks > 0) scheduler_->timerIs(&tick, scheduler_->currentTime() + 2.0);
  };
  scheduler_->timerIs(&tick, 150.0);
  scheduler_->timerIs(&tick, 101.0);
  EXPECT_DOUBLE_EQ(*scheduler_->nextTimerDue(), 101.0);
  EXPECT_DOUBLE_EQ(scheduler_->settle(), 5.0);
  EXPECT_EQ(fired_, (Fired{{"tick", 101.0}, {"tick", 103.0}, {"tick", 105.0}}));
  EXPECT_FALSE(scheduler_->nextTimerDue());
}

TEST_F(SimulatedTimeTest, ReadCostMovesTheClockOnlyInsideRuns) {
  scheduler_->simulation()->readCostIs(0.25);
  EXPECT_DOUBLE_EQ(scheduler_->currentTime(), 100.0);
  std::vector<double> seen;
  RunProbe p(makeTask(scheduler_, 3, "reader"), [&] {
    seen.push_back(scheduler_->currentTime());
    seen.push_back(scheduler_->currentTime());
  });
  p.task().runNow();
  EXPECT_EQ(seen, (std::vector<double>{100.25, 100.5}));
  EXPECT_DOUBLE_EQ(scheduler_->currentTime(), 100.5);
}

TEST(SchedulerDeathTest, AdvanceNeedsSimulatedTime) {
  auto scheduler = Dov::TaskScheduler::makeRealTime();
  EXPECT_DEATH(scheduler->advance(1.0), "simulation");
}

}  // namespace
