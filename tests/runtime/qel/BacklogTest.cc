#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>

#include "runtime/lumo/Exception.h"
#include "tests/runtime/qel/ExampleEntities.h"

namespace {

using Example::VrfSm;
using Keys = std::vector<int>;

class BacklogTest : public ::testing::Test {
 protected:
  // The keys in the order a run meets them.
  static Keys hashOrder(const Keys& keys) {
    Qel::HashSet2018<int> set;
    for (int k : keys) set.insert(k);
    Keys order;
    for (const auto& member : set) order.push_back(member.key);
    return order;
  }
  void add(const Keys& keys) {
    for (int k : keys) vrf->addVlanToBacklog(k);
  }
  Keys backlog() const {
    Keys present;
    for (int k : order) {
      if (vrf->vlanBacklogHas(k)) present.push_back(k);
    }
    return present;
  }
  Keys slice(std::size_t from, std::size_t to) const {
    return Keys(order.begin() + static_cast<long>(from), order.begin() + static_cast<long>(to));
  }
  static Keys concat(Keys a, const Keys& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
  }

  Lumo::Ptr<VrfSm> vrf = Lumo::makePtr<VrfSm>();
  Keys order = hashOrder({10, 11, 12, 13, 14, 15, 16, 17, 18, 19});
};

// However eagerly the scheduler wants the thread back, the first key of a run is worked.
TEST_F(BacklogTest, YieldAtOnceStillWorksOneKey) {
  vrf->task.yieldAfter = 0;
  add({5});
  const auto progress = vrf->handleVlanTask();
  EXPECT_EQ(vrf->worked, Keys{5});
  EXPECT_FALSE(progress.yielded);
  EXPECT_EQ(progress.processed, 1u);
  EXPECT_EQ(progress.pending, 0u);
  EXPECT_EQ(progress.passes, 2u);  // the sweep, and the backlog found empty
  EXPECT_FALSE(vrf->vlanBookmark());
  EXPECT_EQ(vrf->vlanBacklogSize(), 0u);
  EXPECT_EQ(vrf->task.scheduled, 1);  // only by the reactor
}

TEST_F(BacklogTest, YieldAfterFirstOfThreeBookmarksTheSecondAndDrainsInSlices) {
  order = hashOrder({1, 2, 3});
  vrf->task.yieldAfter = 1;
  add(order);
  const auto progress = vrf->handleVlanTask();
  EXPECT_TRUE(progress.yielded);
  EXPECT_EQ(progress.processed, 1u);
  EXPECT_EQ(progress.pending, 2u);
  EXPECT_EQ(progress.remaining, 2u);
  EXPECT_EQ(vrf->vlanBookmark(), Qel::Optional<int>(order[1]));
  EXPECT_EQ(backlog(), slice(1, 3));
  EXPECT_EQ(vrf->task.pending, 2u);
  EXPECT_EQ(vrf->task.scheduled, 4);  // three by the reactor, one to come back

  vrf->handleVlanTask();
  vrf->handleVlanTask();
  EXPECT_EQ(vrf->worked, order);
  EXPECT_EQ(vrf->task.workCount, 3u);
  EXPECT_EQ(vrf->task.pending, 0u);
  EXPECT_EQ(vrf->task.scheduled, 5);
  EXPECT_FALSE(vrf->vlanBookmark());
}

// A run from a bookmark works to the end, wraps to the beginning and stops before the
// bookmark; yielding inside the wrap leaves exactly the keys not reached.
TEST_F(BacklogTest, RunFromBookmarkWrapsAroundOnce) {
  add(order);
  vrf->vlanBookmarkIs(order[5]);
  auto progress = vrf->handleVlanTask();
  EXPECT_EQ(vrf->worked, concat(slice(5, 10), slice(0, 5)));
  EXPECT_EQ(progress.passes, 3u);
  EXPECT_EQ(vrf->vlanBacklogSize(), 0u);
  EXPECT_FALSE(vrf->vlanBookmark());

  vrf->worked.clear();
  add(order);
  vrf->vlanBookmarkIs(order[5]);
  vrf->task.yieldAfter = 7;
  progress = vrf->handleVlanTask();
  EXPECT_EQ(vrf->worked, concat(slice(5, 10), slice(0, 2)));
  EXPECT_EQ(vrf->vlanBookmark(), Qel::Optional<int>(order[2]));
  EXPECT_EQ(backlog(), slice(2, 5));
  EXPECT_EQ(progress.passes, 1u);
}

// The bookmark's key went between two runs: the next run starts at its position and
// still reaches every key, the new ones included.
TEST_F(BacklogTest, BookmarkWhoseKeyWentStillReachesAllKeys) {
  add(order);
  vrf->task.yieldAfter = 3;
  vrf->handleVlanTask();
  ASSERT_EQ(vrf->vlanBookmark(), Qel::Optional<int>(order[3]));
  vrf->vlanBacklogDel(order[3]);
  add({1, 2, 3});
  vrf->task.yieldAfter = ~0u;
  vrf->handleVlanTask();
  Keys expected = concat(order, {1, 2, 3});
  expected.erase(expected.begin() + 3);
  EXPECT_EQ(std::multiset<int>(vrf->worked.begin(), vrf->worked.end()),
            std::multiset<int>(expected.begin(), expected.end()));
  EXPECT_EQ(vrf->vlanBacklogSize(), 0u);
}

// A key added during the run is in the backlog afterwards, even one the run already
// worked, and stands there once; the task comes back for it.
TEST_F(BacklogTest, KeysAddedDuringTheRunAreWorkedAgain) {
  order = hashOrder({1, 2, 3});
  add(order);
  vrf->task.yieldAfter = 1;
  vrf->onVlan = [&](int vlan) {
    vrf->vlanBacklogIs(vlan);      // worked already: must come again
    vrf->vlanBacklogIs(order[2]);  // not reached yet: must stand once
    vrf->vlanBacklogIs(99);
  };
  const int scheduledBefore = vrf->task.scheduled;
  const auto progress = vrf->handleVlanTask();
  EXPECT_EQ(progress.addedMeanwhile, 3u);
  EXPECT_EQ(progress.remaining, 2u);
  EXPECT_EQ(progress.pending, 4u);
  EXPECT_TRUE(vrf->vlanBacklogHas(order[0]));
  EXPECT_TRUE(vrf->vlanBacklogHas(99));
  EXPECT_EQ(vrf->task.scheduled, scheduledBefore + 1);
}

// Removing keys by hand during a run raises; like any exception from the work on a key
// it gives every key of the run back and leaves the bookmark where it was, even when it
// comes in the wrap part of the run.
TEST_F(BacklogTest, ExceptionInTheRunRestoresKeysAndBookmark) {
  using Remove = std::function<void()>;
  for (const auto& [remove, expectedText] :
       {std::pair<Remove, std::string>{[&] { vrf->vlanBacklogDel(order[9]); }, "BacklogDel"},
        std::pair<Remove, std::string>{[&] { vrf->vlanBacklogDelAll(); }, "BacklogDelAll"},
        std::pair<Remove, std::string>{[] { throw Lumo::Exception("work failed"); },
                                       "work failed"}}) {
    add(order);
    vrf->vlanBookmarkIs(order[6]);
    vrf->onVlan = [&](int vlan) {
      if (vlan == order[1]) remove();
    };
    try {
      vrf->handleVlanTask();
      ADD_FAILURE() << "the run must raise";
    } catch (const Lumo::Exception& e) {
      EXPECT_NE(e.msg().str().find(expectedText), std::string::npos) << e.msg();
    }
    EXPECT_EQ(backlog(), order);
    EXPECT_EQ(vrf->vlanBookmark(), Qel::Optional<int>(order[6]));
    EXPECT_FALSE(vrf->vlanBacklogProcessing());
  }
  vrf->onVlan = nullptr;
  vrf->vlanBacklogDel(order[0]);  // allowed again outside a run
  vrf->worked.clear();
  vrf->handleVlanTask();
  EXPECT_EQ(vrf->worked.size(), 9u);
}

// Random slices and random additions during the runs: when the task has nothing left,
// every key was worked after the last time it was added.
TEST_F(BacklogTest, DrainingWorksEveryKeyAfterItsLastChange) {
  std::mt19937 rng(7);
  std::map<int, int> lastAdded;
  std::map<int, int> lastWorked;
  int tick = 0;
  auto addKey = [&](int k) {
    vrf->vlanBacklogIs(k);
    lastAdded[k] = ++tick;
  };
  for (int k = 0; k < 300; ++k) addKey(k);
  vrf->onVlan = [&](int vlan) {
    lastWorked[vlan] = ++tick;
    if (rng() % 4 == 0) addKey(static_cast<int>(rng() % 400));
  };
  int runs = 0;
  do {
    vrf->task.yieldAfter = 1 + rng() % 20;
    vrf->handleVlanTask();
    ASSERT_LT(++runs, 10000);
  } while (vrf->task.pending != 0);
  for (const auto& [key, added] : lastAdded) EXPECT_GT(lastWorked[key], added) << key;
}

}  // namespace
