#include <gtest/gtest.h>

#include <vector>

#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Exception.h"
#include "runtime/qel/Clock.h"
#include "runtime/qel/ReviewTimer.h"

namespace {

constexpr double kEps = 1e-6;

// A clock reactor that reviews `work` items, one a wake-up, and asks for more while
// work is left, as the interface tracker does.
struct Reviewer : Qel::Clock::NotifieeConst {
  void handleClock() override {
    const double now = notifier()->currentTime();
    delays.push_back(now - askedAt);
    if (work > 0 && --work > 0) ask();
  }
  void ask() {
    askedAt = notifier()->currentTime();
    timer->doUpdateNextReviewImmediately();
  }
  Lumo::Ptr<Dov::ReviewTimer> timer;
  int work = 0;
  double askedAt = 0;
  std::vector<double> delays;
};

class ReviewTimerTest : public ::testing::Test {
 protected:
  ReviewTimerTest() {
    reviewer_.notifierIs(Lumo::makePtr<Qel::Clock>(scheduler_));
    reviewer_.timer = Lumo::makePtr<Dov::ReviewTimer>(&reviewer_, 1.0f, 4u, 0.01f, 0.05f);
  }
  void workIs(int items) {
    reviewer_.work = items;
    reviewer_.delays.clear();
    reviewer_.ask();
  }

  Lumo::Ptr<Dov::TaskScheduler> scheduler_ = Dov::TaskScheduler::makeSimulation();
  Reviewer reviewer_;
};

// A burst spends the credits on quick reviews, then the pace slows; the credits come back
// over time, up to the maximum.
TEST_F(ReviewTimerTest, BurstSpendsTheCreditsOnQuickReviewsAndTimeBringsThemBack) {
  workIs(8);
  scheduler_->settle();
  ASSERT_EQ(reviewer_.delays.size(), 8u);
  for (int i = 0; i < 4; ++i) EXPECT_NEAR(reviewer_.delays[i], 0.01, kEps) << i;
  for (int i = 4; i < 8; ++i) EXPECT_NEAR(reviewer_.delays[i], 0.05, kEps) << i;
  const double spent = reviewer_.timer->credits();
  EXPECT_LT(spent, 1.0);

  scheduler_->advance(2.0);
  EXPECT_NEAR(reviewer_.timer->credits(), spent + 2.0, 0.01);
  workIs(3);
  scheduler_->settle();
  EXPECT_NEAR(reviewer_.delays[0], 0.01, kEps);
  EXPECT_NEAR(reviewer_.delays[1], 0.01, kEps);
  EXPECT_NEAR(reviewer_.delays[2], 0.05, kEps);

  scheduler_->advance(100.0);
  EXPECT_DOUBLE_EQ(reviewer_.timer->credits(), 4.0);
}

TEST_F(ReviewTimerTest, AskingWhileAWakeupIsPendingSpendsNothing) {
  for (int i = 0; i < 10; ++i) reviewer_.timer->doUpdateNextReviewImmediately();
  EXPECT_EQ(scheduler_->timersWaiting(), 1u);
  EXPECT_NEAR(reviewer_.timer->credits(), 3.0, kEps);
}

TEST_F(ReviewTimerTest, EveryDelayStaysBetweenTheBounds) {
  // Bursts of changing size with pauses of changing length in between.
  unsigned seed = 7;
  for (int burst = 0; burst < 40; ++burst) {
    seed = seed * 1103515245u + 12345u;
    workIs(1 + static_cast<int>(seed % 9));
    scheduler_->settle();
    for (double delay : reviewer_.delays) {
      EXPECT_GE(delay, 0.01 - kEps);
      EXPECT_LE(delay, 0.05 + kEps);
    }
    scheduler_->advance(0.1 * static_cast<double>(seed % 13));
  }
}

TEST_F(ReviewTimerTest, BadValuesAreRefused) {
  EXPECT_THROW(reviewer_.timer->reviewQuantumIs(0), Lumo::Exception);
  EXPECT_THROW(Dov::ReviewTimer(&reviewer_, 0.0f, 4u, 0.01f, 0.05f), Lumo::Exception);
  EXPECT_THROW(Dov::ReviewTimer(&reviewer_, 1.0f, 4u, 0.06f, 0.05f), Lumo::Exception);
  EXPECT_THROW(Dov::ReviewTimer(nullptr, 1.0f, 4u, 0.01f, 0.05f), Lumo::Exception);
}

}  // namespace
