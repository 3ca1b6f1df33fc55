#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/intf/TrackerFixture.h"

namespace IntfTest {
namespace {

// The review works the queued interfaces in slices of reviewQuantum; a slice that runs out
// of time leaves a bookmark in each set, and the next slice resumes there.
class ReviewTest : public TrackerFixture {
 protected:
  // Runs the next review alone; gives the interfaces it checked, in order.
  std::vector<std::string> nextSlice() {
    const auto mark = Trace::mark();
    const auto due = scheduler->nextTimerDue();
    EXPECT_TRUE(due.has_value()) << "a review is asked for while work is left";
    if (due) scheduler->advance(*due - scheduler->currentTime());
    std::vector<std::string> checked;
    for (const auto& record : Trace::recordsSince(mark)) {
      if (record.text.starts_with("checkMcastIntf( ")) checked.push_back(record.text);
    }
    return checked;
  }
  static std::string checkText(const VekL3Mcast::VrfIntfPair& pair) {
    return fmt::format("checkMcastIntf( {}, {} )", pair.vrfName, pair.intfId);
  }
};

TEST_F(ReviewTest, ASliceOutOfTimeResumesAtItsBookmarks) {
  constexpr int perFamily = 40;
  for (int i = 1; i <= perFamily; ++i) {
    const std::string v4 = "Ethernet" + std::to_string(i);
    const std::string v6 = "Ethernet" + std::to_string(100 + i);
    device(red, v4.c_str(), ("et" + std::to_string(i)).c_str(), i);
    device(red, v6.c_str(), ("et" + std::to_string(100 + i)).c_str(), 100 + i);
    mcast(AddressFamily::ipv4, red, v4.c_str());
    mcast(AddressFamily::ipv6, red, v6.c_str());
  }
  // Each clock read costs 10 ms inside a run, so a 95 ms slice checks about ten interfaces.
  scheduler->simulation()->readCostIs(0.01);
  tracker->reviewQuantumIs(0.095);

  std::multiset<std::string> seen;
  std::vector<std::string> slice = nextSlice();
  ASSERT_GT(slice.size(), 2u);
  ASSERT_LT(slice.size(), 2u * perFamily) << "the first slice must run out of time";
  // Work that comes in meanwhile lands all over the set, before the bookmark too.
  constexpr int late = 20;
  for (int i = 1; i <= late; ++i) {
    const std::string intf = "Ethernet" + std::to_string(200 + i);
    device(red, intf.c_str(), ("et" + std::to_string(200 + i)).c_str(), 200 + i);
    mcast(AddressFamily::ipv4, red, intf.c_str());
  }
  while (true) {
    const auto mark4 = tracker->bookmarkVrfIntf(AddressFamily::ipv4);
    const auto mark6 = tracker->bookmarkVrfIntf(AddressFamily::ipv6);
    seen.insert(slice.begin(), slice.end());
    if (tracker->changedVrfIntfs(AddressFamily::ipv4).empty() &&
        tracker->changedVrfIntfs(AddressFamily::ipv6).empty()) {
      break;
    }
    const std::string expect4 = mark4.hasValue() ? checkText(mark4.value()) : "";
    const std::string expect6 = mark6.hasValue() ? checkText(mark6.value()) : "";
    const bool v4Left = !tracker->changedVrfIntfs(AddressFamily::ipv4).empty();
    slice = nextSlice();
    ASSERT_FALSE(slice.empty());
    // Slices alternate the families, IPv4 first.
    if (mark4.hasValue()) {
      EXPECT_TRUE(slice[0].starts_with(expect4)) << slice[0];
    }
    if (mark6.hasValue() && slice.size() > 1) {
      EXPECT_TRUE(slice[v4Left ? 1 : 0].starts_with(expect6));
    }
  }
  EXPECT_EQ(seen.size(), 2u * perFamily + late);
  EXPECT_EQ(std::set<std::string>(seen.begin(), seen.end()).size(), seen.size())
      << "no interface is checked twice";
  EXPECT_GT(tracker->reviewSlices(), 3u);
  EXPECT_TRUE(tracked("Ethernet1") && tracked("Ethernet140"));
}

TEST_F(ReviewTest, AReviewDueWhileNotificationIsOffRunsWhenItIsBack) {
  device(red, "Ethernet1", "et1", 1);
  mcast(AddressFamily::ipv4, red, "Ethernet1");
  tracker->hasNotificationActiveIs(false);
  scheduler->settle();  // the wake-up comes and goes unheard
  ASSERT_FALSE(tracked("Ethernet1"));
  ASSERT_FALSE(scheduler->nextTimerDue().has_value());

  tracker->hasNotificationActiveIs(true);
  scheduler->settle();
  EXPECT_TRUE(tracked("Ethernet1"));
  EXPECT_TRUE(tracker->changedVrfIntfs(AddressFamily::ipv4).empty());
}

}  // namespace
}  // namespace IntfTest
