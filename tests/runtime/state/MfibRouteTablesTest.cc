#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "runtime/lumo/Exception.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/state/MfibRoute.h"
#include "runtime/state/MfibStatus.h"
#include "runtime/state/MfibVrfAdapter.h"
#include "runtime/state/MfibVrfRouteIteratorConst.h"

namespace {

using ::testing::ElementsAre;
using Lanx::IntfId;
using Routing::Multicast::Fib::IpGenRouteKey;
using Routing::Multicast::Fib::MfibAppType;
using Routing::Multicast::Fib::MfibVrfAdapter;
using Routing::Multicast::Fib::MfibVrfRouteIteratorConst;
using Vash::Multicast::Fib::Route;
using Vash::Multicast::Fib::RouteIntf;
using Vash::Multicast::Fib::Status;

IpGenRouteKey key(int n) {
  return IpGenRouteKey(Lanx::IpGenAddr::ipv4(0x0a000000u + static_cast<std::uint32_t>(n)),
                       Lanx::IpGenPrefix("239.1.1.1"));
}

Route route(int n) {
  return Route::withOifs(key(n), IntfId("Ethernet1"), 0, {IntfId("Ethernet2")});
}

Lumo::Ptr<Status> table(MfibAppType app, std::initializer_list<int> keys) {
  auto status = Lumo::makePtr<Status>(app, L3::VrfName("red"), Lanx::AddressFamily::ipv4);
  for (int n : keys) status->routeIs(route(n));
  return status;
}

// Hears the changes of one entity as "attribute:key", or "attribute" for a value.
template <typename Key>
class Heard : public Qel::NotifieeConst {
 public:
  explicit Heard(const Qel::Entity& entity) {
    notifierIs(Lumo::Ptr<Qel::Entity const>(&entity));
    isRegisteredNotifieeIs(true);
  }
  void onAttribute(Qel::AttributeId id, const void* key) override {
    keys.push_back(key ? fmt::format("{}:{}", id, *static_cast<const Key*>(key))
                       : std::to_string(id));
  }
  std::vector<std::string> keys;
};

// The walk as (app, source) pairs.
std::vector<std::pair<MfibAppType, int>> walk(MfibVrfRouteIteratorConst it) {
  std::vector<std::pair<MfibAppType, int>> seen;
  for (; !it.done(); it.updateToBestRouteIterators(MfibAppType::none, IpGenRouteKey())) {
    EXPECT_EQ(it.route().key(), it.key());
    seen.emplace_back(it.mfibAppKey(),
                      static_cast<int>(it.key().source().addr().ipv4HostOrder() - 0x0a000000u));
  }
  return seen;
}

TEST(MfibRouteTest, AnEmptyRouteIsNoRouteAndTheInterfaceListKeepsItsFlags) {
  EXPECT_TRUE(Route().isEmpty());
  EXPECT_TRUE(Route().oifIteratorConst().done());
  EXPECT_FALSE(Route(IpGenRouteKey(), IntfId(), Route::switchingFlag).isEmpty());

  Route r = Route::withOifs(key(1), IntfId("Ethernet1"),
                            Route::fastdropFlag | Route::oifRegisterFlag, {IntfId("Ethernet2")});
  r.intfIs(IntfId("Ethernet3"), RouteIntf::incomingFlag | RouteIntf::outgoingFlag);
  EXPECT_TRUE(r.fastdrop());
  EXPECT_FALSE(r.iifRegister());
  EXPECT_TRUE(r.oifRegister());
  std::vector<std::string> members;
  for (auto it = r.oifIteratorConst(); !it.done(); it.next()) {
    members.push_back(fmt::format("{}:{}", it.intfId().shortName(), it.flags()));
  }
  EXPECT_THAT(members, ElementsAre("Et1:2", "Et2:1", "Et3:3"));
  Route same = r;
  EXPECT_TRUE(same.isEq(r));
  same.intfDel(IntfId("Ethernet3"));
  EXPECT_FALSE(same.isEq(r));
}

TEST(MfibStatusTest, EachRealChangePublishesTheKeyOnce) {
  auto status = table(MfibAppType::pim, {});
  Heard<IpGenRouteKey> heard(*status);
  status->routeIs(route(1));
  status->routeIs(route(1));  // the same route again: no change
  Route changed = route(1);
  changed.routeFlagsIs(Route::fastdropFlag);
  status->routeIs(changed);
  status->routeDel(key(1));
  status->routeDel(key(1));  // absent: nothing
  EXPECT_THAT(heard.keys, ElementsAre("1:10.0.0.1,239.1.1.1", "1:10.0.0.1,239.1.1.1",
                                      "1:10.0.0.1,239.1.1.1"));
  EXPECT_TRUE(status->route(key(1)).isEmpty());
  EXPECT_EQ(status->routeFind(key(1)), nullptr);
}

// The most preferred application holding a key has its best route, and a walk of the VRF
// meets every key once, in the table of its best route.
TEST(MfibVrfAdapterTest, BestRoutePerKeyAndAWalkThatMeetsEachKeyThere) {
  auto adapterPtr = Lumo::makePtr<MfibVrfAdapter>(L3::VrfName("red"), Lanx::AddressFamily::ipv4);
  MfibVrfAdapter& adapter = *adapterPtr;
  EXPECT_TRUE(MfibVrfRouteIteratorConst(adapter).done());
  Heard<MfibAppType> heard(adapter);
  adapter.mfibVashIs(MfibAppType::igmp, table(MfibAppType::igmp, {1, 2, 3, 5}));
  adapter.mfibVashIs(MfibAppType::pim, table(MfibAppType::pim, {2, 6}));
  adapter.mfibVashIs(MfibAppType::mvpn, table(MfibAppType::mvpn, {3, 4}));
  adapter.mfibVashIs(MfibAppType::static_, table(MfibAppType::static_, {}));

  const std::map<int, MfibAppType> best{{1, MfibAppType::igmp}, {2, MfibAppType::pim},
                                        {3, MfibAppType::igmp}, {4, MfibAppType::mvpn},
                                        {5, MfibAppType::igmp}, {6, MfibAppType::pim}};
  std::map<int, MfibAppType> seen;
  for (const auto& [app, n] : walk(MfibVrfRouteIteratorConst(adapter))) {
    EXPECT_TRUE(seen.emplace(n, app).second) << "key met twice: " << n;
  }
  EXPECT_EQ(seen, best);
  for (const auto& [n, app] : best) EXPECT_EQ(adapter.mfibAppKey(key(n)), app) << n;
  EXPECT_EQ(adapter.mfibAppKey(key(7)), MfibAppType::none);
  EXPECT_TRUE(adapter.isBestRoute(MfibAppType::pim, key(2)));
  EXPECT_FALSE(adapter.isBestRoute(MfibAppType::igmp, key(2)));
  EXPECT_FALSE(adapter.isBestRoute(MfibAppType::pim, key(1)));  // pim does not hold it
  EXPECT_FALSE(adapter.isBestRoute(MfibAppType::static_, key(1)));

  adapter.mfibVashDel(MfibAppType::pim);
  EXPECT_EQ(adapter.mfibAppKey(key(2)), MfibAppType::igmp);
  EXPECT_EQ(adapter.mfibVashFind(MfibAppType::pim), nullptr);
  EXPECT_THAT(heard.keys, ElementsAre("1:igmp", "1:pim", "1:mvpn", "1:static", "1:pim"));

  EXPECT_THROW(adapter.mfibVashIs(MfibAppType::pim, table(MfibAppType::mld, {})),
               Lumo::Exception);
  EXPECT_THROW(adapter.mfibVashIs(MfibAppType::pim, nullptr), Lumo::Exception);
}

TEST(MfibVrfRouteIteratorTest, AWalkRebuiltAtABookmarkMeetsTheRestExactlyOnce) {
  auto adapterPtr = Lumo::makePtr<MfibVrfAdapter>(L3::VrfName("red"), Lanx::AddressFamily::ipv4);
  MfibVrfAdapter& adapter = *adapterPtr;
  auto pim = table(MfibAppType::pim, {});
  auto igmp = table(MfibAppType::igmp, {});
  for (int n = 0; n < 300; ++n) (n % 3 ? pim : igmp)->routeIs(route(n));
  adapter.mfibVashIs(MfibAppType::pim, pim);
  adapter.mfibVashIs(MfibAppType::igmp, igmp);
  const auto full = walk(MfibVrfRouteIteratorConst(adapter));
  ASSERT_EQ(full.size(), 300u);

  // Stop after 150, as a run that yields would, with the bookmark on the next route; that
  // route then goes away before the next run.
  MfibVrfRouteIteratorConst it(adapter);
  for (int i = 0; i < 150; ++i) it.updateToBestRouteIterators(MfibAppType::none, IpGenRouteKey());
  const MfibAppType bookmarkApp = it.mfibAppKey();
  const IpGenRouteKey bookmarkKey = it.key();
  (bookmarkApp == MfibAppType::pim ? pim : igmp)->routeDel(bookmarkKey);

  MfibVrfRouteIteratorConst resumed(adapter, adapter.mfibVashIteratorConstAt(bookmarkApp),
                                    adapter.mfibVash(bookmarkApp)->routeIteratorConstAt(bookmarkKey));
  EXPECT_EQ(walk(std::move(resumed)),
            (std::vector<std::pair<MfibAppType, int>>(full.begin() + 151, full.end())));

  MfibVrfRouteIteratorConst seeked(adapter);
  seeked.updateToBestRouteIterators(bookmarkApp, bookmarkKey);
  EXPECT_EQ(walk(std::move(seeked)).size(), 149u);
}

}  // namespace
