#include <gtest/gtest.h>

#include <vector>

#include "runtime/dov/TaskAttribute.h"
#include "runtime/dov/TaskScheduler.h"

namespace {

// An owner as the state machines spell theirs.
class Owner : public Lumo::Node {
 public:
  void taskIs(Lumo::Ptr<Dov::TaskScheduler> s, Dov::TaskPriority p, Lumo::String n) {
    task_.is(std::move(s), p, std::move(n));
  }
  void taskDel() { task_.del(); }
  Dov::Task* task() const { return task_.get(); }

  void handleTask() {
    ++runs;
    sawRunning = task() && task()->taskCurrentlyRunning();
  }

  int runs = 0;
  bool sawRunning = false;

 private:
  Dov::TaskAttribute<Owner, &Owner::handleTask> task_{this};
};

// Every test starts with the owner's task set once.
class TaskAttributeTest : public ::testing::Test {
 protected:
  TaskAttributeTest() { owner_->taskIs(scheduler_, 3, "OwnerTask"); }

  Lumo::Ptr<Dov::TaskScheduler> scheduler_ = Dov::TaskScheduler::makeSimulation();
  Lumo::Ptr<Owner> owner_ = Lumo::makePtr<Owner>();
};

TEST_F(TaskAttributeTest, FirstSettingRunsTheHandlerAtOnceAndRunsReachALiveOwnerOnly) {
  ASSERT_NE(owner_->task(), nullptr);
  EXPECT_EQ(owner_->runs, 1);
  EXPECT_TRUE(owner_->sawRunning);
  EXPECT_EQ(owner_->task()->subscribers(), 1u);
  EXPECT_FALSE(scheduler_->pending()) << "the first pass does not go through the scheduler";
  owner_->task()->scheduleTask();
  scheduler_->runUntilIdle();
  EXPECT_EQ(owner_->runs, 2);

  owner_->nodeFlagSet(Lumo::Node::zombie, true);  // a zombie owner hears nothing
  owner_->task()->scheduleTask();
  scheduler_->runUntilIdle();
  EXPECT_EQ(owner_->runs, 2);
}

TEST_F(TaskAttributeTest, SameSchedulerAndNameOnlyTakesThePriority) {
  Dov::Task* first = owner_->task();
  first->scheduleTask();
  owner_->taskIs(scheduler_, 5, "OwnerTask");
  EXPECT_EQ(owner_->task(), first);
  EXPECT_EQ(first->taskPriority(), 5u);
  EXPECT_TRUE(first->taskScheduled()) << "the arming survives";
  EXPECT_EQ(owner_->runs, 2) << "the handler still runs once at once";
}

TEST_F(TaskAttributeTest, OtherNameOrSchedulerReplacesTheTask) {
  Lumo::Ptr<Dov::Task> first = owner_->task();
  owner_->taskIs(scheduler_, 3, "Renamed");
  ASSERT_NE(owner_->task(), first.get());
  EXPECT_EQ(owner_->task()->taskName(), "Renamed");
  EXPECT_EQ(first->subscribers(), 0u) << "the old task no longer reaches the owner";

  Lumo::Ptr<Dov::Task> second = owner_->task();
  auto other = Dov::TaskScheduler::makeSimulation();
  owner_->taskIs(other, 4, "Renamed");
  EXPECT_NE(owner_->task(), second.get());
  EXPECT_EQ(owner_->task()->taskScheduler(), other);
  EXPECT_EQ(owner_->task()->taskPriority(), 4u);
  EXPECT_EQ(owner_->runs, 3);

  // A run of a dropped task, armed before it went, reaches nobody.
  first->scheduleTask();
  scheduler_->runUntilIdle();
  EXPECT_EQ(owner_->runs, 3);
}

TEST_F(TaskAttributeTest, DelDropsAndNullSchedulerMeansNoTask) {
  owner_->task()->scheduleTask();
  owner_->taskDel();
  EXPECT_EQ(owner_->task(), nullptr);
  EXPECT_EQ(scheduler_->armedTasks(), 0u) << "the only pointer went, and the arming with it";
  owner_->taskIs(nullptr, 3, "OwnerTask");
  EXPECT_EQ(owner_->task(), nullptr);
  EXPECT_EQ(owner_->runs, 1);
}

}  // namespace
