#include <set>

#include "tests/mfib/RouteSyncFixture.h"

namespace MfibTest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RouteReviewTest : public RouteSyncFixture {
 protected:
  // `n` routes, two of each three in pim and the rest in igmp, with one key in both.
  void fill(int n) {
    for (int i = 0; i < n; ++i) {
      table(i % 3 ? MfibAppType::pim : MfibAppType::igmp)
          ->routeIs(route(key(i), "Ethernet1", {"Ethernet2"}));
    }
    table(MfibAppType::igmp)->routeIs(route(key(1), "Ethernet1", {"Ethernet3"}));
  }
  // How often the review and the changed-route pass worked each key since `mark`.
  std::map<std::string, int> reviewed(std::uint64_t mark) { return worked("Syncing ", mark); }
  std::map<std::string, int> changed(std::uint64_t mark) { return worked("Syncing key ", mark); }

 private:
  static std::map<std::string, int> worked(const std::string& prefix, std::uint64_t mark) {
    std::map<std::string, int> counts;
    for (const auto& record : Trace::recordsSince(mark)) {
      if (record.text.rfind(prefix, 0) != 0) continue;
      const std::string rest = record.text.substr(prefix.size());
      if (prefix == "Syncing " && rest.rfind("key ", 0) == 0) continue;
      // The review is counted by route key, the changed set by application and key.
      ++counts[prefix == "Syncing " ? rest.substr(0, rest.find(' ')) : rest];
    }
    return counts;
  }
};

TEST_F(RouteReviewTest, AReviewThatYieldsResumesAtItsBookmarkAndMeetsEveryRouteOnce) {
  fill(60);
  scheduler->simulation()->yieldEveryIs(7);
  const auto mark = Trace::mark();
  auto sm = makeSm();
  sm->mfibVrfAdapterIs(adapter);
  runOnce();  // the arming of the start, before there was an adapter
  runOnce();
  ASSERT_FALSE(sm->reviewedOnce());
  ASSERT_TRUE(sm->bookmarkNotNull());
  // The route at the bookmark goes before the next run. Where the bookmark falls follows
  // the hash order; when it falls on the key two tables hold, the other table's route is
  // still there and is reviewed in its place.
  const auto bookmark = sm->bookmark();
  const bool heldTwice = text(bookmark.vashBookmark) == "10.0.0.1,239.1.1.1";
  table(bookmark.mfibAppKey)->routeDel(bookmark.vashBookmark);
  settle();

  ASSERT_TRUE(sm->reviewedOnce());
  EXPECT_FALSE(sm->bookmarkNotNull());
  const auto counts = reviewed(mark);
  EXPECT_EQ(counts.size(), heldTwice ? 60u : 59u);
  for (const auto& [k, times] : counts) EXPECT_EQ(times, 1) << k;
  EXPECT_EQ(counts.count(text(bookmark.vashBookmark)), heldTwice ? 1u : 0u);
  EXPECT_GT(traced("Suspending review at", mark), 3u);
  // Every key of the tables is worked once more after the review, each once; the key
  // held by two tables once for each.
  const auto again = changed(mark);
  EXPECT_EQ(again.size(), 61u);
  for (const auto& [k, times] : again) EXPECT_EQ(times, 1) << k;
  // The key held twice was reviewed from its best table that still holds it.
  const std::string best = heldTwice ? "igmp" : "pim";
  EXPECT_EQ(traced("Syncing 10.0.0.1,239.1.1.1 from mfib table " + best, mark), 1u);
  EXPECT_EQ(routes().size(), heldTwice ? 60u : 59u);
  EXPECT_THAT(gatesOf("10.0.0.1,239.1.1.1"), ElementsAre(heldTwice ? "Et3:4" : "Et2:4"));
}

TEST_F(RouteReviewTest, AYieldOnTheLastRouteFinishesTheReviewInThatRun) {
  fill(9);  // nine keys
  scheduler->simulation()->yieldEveryIs(9);
  const auto mark = Trace::mark();
  auto sm = makeSm();
  sm->mfibVrfAdapterIs(adapter);
  runOnce();
  runOnce();
  EXPECT_TRUE(sm->reviewedOnce());
  EXPECT_FALSE(sm->bookmarkNotNull());
  EXPECT_EQ(traced("Suspending review at", mark), 0u);
  EXPECT_EQ(reviewed(mark).size(), 9u);
}

TEST_F(RouteReviewTest, ChangesDuringTheReviewWaitForItAndAreWorkedOnceAfter) {
  fill(30);
  scheduler->simulation()->yieldEveryIs(5);
  auto sm = makeSm();
  sm->mfibVrfAdapterIs(adapter);
  runOnce();
  runOnce();
  ASSERT_FALSE(sm->reviewedOnce());
  const auto mark = Trace::mark();
  for (const char* oif : {"Ethernet5", "Ethernet6", "Ethernet7"}) {
    table(MfibAppType::pim)->routeIs(route(key(2), "Ethernet1", {oif}));
  }
  table(MfibAppType::static_)->routeIs(route(key(100), "Ethernet1", {"Ethernet8"}));
  // A table that comes while the review is under way has its keys recorded: the review
  // may have passed their positions.
  auto mvpn = Lumo::makePtr<Status>(MfibAppType::mvpn, L3::VrfName("red"),
                                    Lanx::AddressFamily::ipv4);
  mvpn->routeIs(route(key(200), "Ethernet1", {"Ethernet9"}));
  mvpn->routeIs(route(key(2), "Ethernet1", {"Ethernet9"}));
  adapter->mfibVashIs(MfibAppType::mvpn, mvpn);
  EXPECT_TRUE(sm->changedRouteHas({MfibAppType::pim, key(2)}));
  EXPECT_TRUE(sm->changedRouteHas({MfibAppType::mvpn, key(200)}));
  while (!sm->reviewedOnce()) {
    runOnce();
    if (!sm->reviewedOnce()) {
      EXPECT_THAT(changed(mark), IsEmpty());
    }
  }
  settle();

  // The 31 keys of the first tables, the static key and the two of mvpn; a key that
  // changed three times is worked once.
  const auto counts = changed(mark);
  EXPECT_EQ(counts.size(), 34u);
  for (const auto& [k, times] : counts) EXPECT_EQ(times, 1) << k;
  EXPECT_EQ(sm->changedRouteCount(), 0u);
  EXPECT_THAT(gatesOf(text(key(2))), ElementsAre("Et7:4"));
  EXPECT_THAT(gatesOf(text(key(100))), ElementsAre("Et8:4"));
  EXPECT_THAT(gatesOf(text(key(200))), ElementsAre("Et9:4"));
  EXPECT_EQ(sm->task()->taskStats().workPending, 0u);
}

TEST_F(RouteReviewTest, AChangedRoutePassThatYieldsGoesOnInTheNextRun) {
  auto sm = makeSm();
  sm->mfibVrfAdapterIs(adapter);
  table(MfibAppType::pim);
  settle();
  ASSERT_TRUE(sm->reviewedOnce());
  scheduler->simulation()->yieldEveryIs(4);
  for (int i = 0; i < 10; ++i) table(MfibAppType::pim)->routeIs(route(key(i), "Ethernet1", {}));
  runOnce();
  EXPECT_GT(sm->changedRouteCount(), 0u);
  EXPECT_TRUE(sm->task()->taskScheduled());
  EXPECT_EQ(sm->task()->taskStats().workPending, sm->changedRouteCount());
  // Every route changes again while the pass is half way: worked or not, each ends up
  // with its last state.
  for (int i = 0; i < 10; ++i) {
    table(MfibAppType::pim)->routeIs(route(key(i), "Ethernet1", {"Ethernet9"}));
  }
  settle();
  EXPECT_EQ(routes().size(), 10u);
  for (int i = 0; i < 10; ++i) EXPECT_THAT(gatesOf(text(key(i))), ElementsAre("Et9:4")) << i;
  EXPECT_EQ(sm->changedRouteCount(), 0u);
}

TEST_F(RouteReviewTest, TablesThatComeGoOrAreReplacedHaveEachOfTheirKeysDecided) {
  auto sm = makeSm();
  sm->mfibVrfAdapterIs(adapter);
  auto pim = table(MfibAppType::pim);
  pim->routeIs(route(key(1), "Ethernet1", {"Ethernet2"}));
  pim->routeIs(route(key(2), "Ethernet1", {"Ethernet2"}));
  settle();
  ASSERT_TRUE(sm->reviewedOnce());
  routeCommands();

  table(MfibAppType::mvpn);  // empty: nothing to do
  EXPECT_EQ(sm->mfibVashCount(), 2u);
  EXPECT_FALSE(sm->task()->taskScheduled());

  auto igmp = Lumo::makePtr<Status>(MfibAppType::igmp, L3::VrfName("red"),
                                    Lanx::AddressFamily::ipv4);
  igmp->routeIs(route(key(2), "Ethernet1", {"Ethernet3"}));
  igmp->routeIs(route(key(3), "Ethernet1", {"Ethernet3"}));
  adapter->mfibVashIs(MfibAppType::igmp, igmp);
  EXPECT_TRUE(sm->changedRouteHas({MfibAppType::igmp, key(3)}));
  settle();
  EXPECT_THAT(routeCommands(), ElementsAre("addMroute 10.0.0.3,239.1.1.1"));

  // A replacement: keys of the old table and of the new one.
  auto replacement = Lumo::makePtr<Status>(MfibAppType::pim, L3::VrfName("red"),
                                           Lanx::AddressFamily::ipv4);
  replacement->routeIs(route(key(4), "Ethernet1", {"Ethernet2"}));
  replacement->routeIs(route(key(2), "Ethernet1", {"Ethernet2"}));
  adapter->mfibVashIs(MfibAppType::pim, replacement);
  settle();
  EXPECT_THAT(routeCommands(), ::testing::UnorderedElementsAre(
                                   "deleteMroute 10.0.0.1,239.1.1.1", "addMroute 10.0.0.2,239.1.1.1",
                                   "addMroute 10.0.0.4,239.1.1.1"));
  EXPECT_EQ(pim->subscribers(), 0u);

  // A table that goes: its keys fall to the next table or leave the module.
  adapter->mfibVashDel(MfibAppType::pim);
  settle();
  EXPECT_FALSE(routes().contains(text(key(4))));
  EXPECT_THAT(gatesOf(text(key(2))), ElementsAre("Et3:4"));
  EXPECT_EQ(sm->mfibVashCount(), 2u);
  EXPECT_EQ(replacement->subscribers(), 0u);
}

TEST_F(RouteReviewTest, DestructionSendsNothingAndLeavesNoReactorBehind) {
  fill(10);
  auto sm = makeSm();
  sm->mfibVrfAdapterIs(adapter);
  sm->kernelMfibConfigIs(Lumo::makePtr<Routing::KernelMfib::Config>(100, 5));
  settle();
  commandsSinceLast();
  sm.reset();
  EXPECT_THAT(commandsSinceLast(), IsEmpty());
  EXPECT_EQ(table(MfibAppType::pim)->subscribers(), 0u);
  EXPECT_EQ(adapter->subscribers(), 0u);
  EXPECT_FALSE(scheduler->pending());
}

TEST_F(RouteReviewTest, WithoutAKernelConfigTheDefaultLimitsHold) {
  auto sm = makeSm();
  settle();  // without an adapter the task does nothing
  EXPECT_FALSE(sm->reviewedOnce());
  const auto mark = Trace::mark();
  sm->kernelMfibConfigDel();
  EXPECT_EQ(fibTable()["maxUnresolvedCacheEntries"], 4000);
  EXPECT_EQ(fibTable()["maxUnresolvedPktBuffers"], 3);
  EXPECT_EQ(traced("No kernel mfib config, setting default value", mark), 2u);

  auto config = Lumo::makePtr<Routing::KernelMfib::Config>(100, 5);
  sm->kernelMfibConfigIs(config);
  EXPECT_EQ(fibTable()["maxUnresolvedCacheEntries"], 100);
  config->maxUnresolvedPktBuffersIs(6);
  EXPECT_EQ(fibTable()["maxUnresolvedPktBuffers"], 6);
  commandsSinceLast();

  // A replacement: the defaults first, then the new values.
  sm->kernelMfibConfigIs(Lumo::makePtr<Routing::KernelMfib::Config>(200, 7));
  EXPECT_EQ(fibTable()["maxUnresolvedCacheEntries"], 200);
  EXPECT_EQ(fibTable()["maxUnresolvedPktBuffers"], 7);
  EXPECT_EQ(commandsSinceLast().size(), 4u);
  config->maxUnresolvedPktBuffersIs(9);  // the old one is heard no more
  EXPECT_THAT(commandsSinceLast(), IsEmpty());

  sm->kernelMfibConfigDel();
  EXPECT_EQ(fibTable()["maxUnresolvedCacheEntries"], 4000);
  EXPECT_EQ(fibTable()["maxUnresolvedPktBuffers"], 3);
}

}  // namespace
}  // namespace MfibTest
