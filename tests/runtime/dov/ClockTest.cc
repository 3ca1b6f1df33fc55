#include <gtest/gtest.h>

#include <vector>

#include "runtime/dov/TaskSchedulerRoot.h"
#include "runtime/qel/ActivityManagerConfig.h"
#include "runtime/qel/Clock.h"
#include "runtime/qel/System.h"

namespace {

struct Sleeper : Qel::Clock::NotifieeConst {
  void handleClock() override { woke.push_back(notifier()->currentTime()); }
  std::vector<double> woke;
};

class ClockTest : public ::testing::Test {
 protected:
  void SetUp() override { Dov::TaskSchedulerRoot::schedulerIs(scheduler_); }
  void TearDown() override { Dov::TaskSchedulerRoot::schedulerIs(nullptr); }

  Lumo::Ptr<Dov::TaskScheduler> scheduler_ = Dov::TaskScheduler::makeSimulation(64, 10.0);
};

TEST_F(ClockTest, ProcessClockFollowsTheInstalledScheduler) {
  Lumo::Ptr<Qel::Clock> clock = Qel::activityManager()->clock();
  EXPECT_EQ(&clock->scheduler(), scheduler_.get());
  EXPECT_EQ(Qel::activityManager()->clock(), clock) << "one clock per scheduler";
  scheduler_->advance(2.5);
  EXPECT_DOUBLE_EQ(Qel::System::currentTime(), 12.5);
  EXPECT_DOUBLE_EQ(clock->currentTime(), 12.5);

  auto other = Dov::TaskScheduler::makeSimulation(64, 99.0);
  Dov::TaskSchedulerRoot::schedulerIs(other);
  EXPECT_EQ(&Qel::activityManager()->clock()->scheduler(), other.get());
  EXPECT_DOUBLE_EQ(Qel::System::currentTime(), 99.0);
  EXPECT_EQ(Dov::TaskSchedulerRoot::findOrCreateScheduler(), other);
}

TEST_F(ClockTest, EachReactorWakesOnceAtItsOwnTime) {
  Lumo::Ptr<Qel::Clock> clock = Qel::activityManager()->clock();
  Sleeper a, b;
  a.notifierIs(clock);
  b.notifierIs(clock);
  EXPECT_TRUE(a.isRegisteredNotifiee());
  a.wakeupTimeIs(11.0);
  b.wakeupTimeIs(10.5);
  b.wakeupTimeIs(10.7);  // replaces
  scheduler_->advance(5.0);
  EXPECT_EQ(a.woke, (std::vector<double>{11.0}));
  EXPECT_EQ(b.woke, (std::vector<double>{10.7}));
  EXPECT_FALSE(a.wakeupPending());
}

TEST_F(ClockTest, UnregisteredReboundOrGoneReactorsAreNotWoken) {
  Lumo::Ptr<Qel::Clock> clock = Qel::activityManager()->clock();
  Sleeper quiet, moved;
  quiet.notifierIs(clock);
  quiet.isRegisteredNotifieeIs(false);
  quiet.wakeupTimeIs(10.1);
  moved.notifierIs(clock);
  moved.wakeupTimeIs(10.1);
  moved.notifierIs(Lumo::makePtr<Qel::Clock>(scheduler_));
  {
    Sleeper gone;
    gone.notifierIs(clock);
    gone.wakeupTimeIs(10.1);
  }
  scheduler_->advance(1.0);
  EXPECT_TRUE(quiet.woke.empty());
  EXPECT_TRUE(moved.woke.empty());
  EXPECT_EQ(scheduler_->timersWaiting(), 0u);
}

}  // namespace
