#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mfib/ChangedRouteSet.h"
#include "runtime/qel/HashMap2018.h"

namespace MfibTest {
namespace {

using Routing::Multicast::Fib::IpGenRouteKey;
using Routing::Multicast::Fib::MfibAppType;
using Routing::Multicast::Fib::MfibVrfDirRouteKey;
using VekL3Mcast::ChangedRouteSet;
using VekL3Mcast::CompactRouteKey;

MfibVrfDirRouteKey key(MfibAppType app, const char* source, const char* group) {
  return MfibVrfDirRouteKey(app, IpGenRouteKey(Lanx::IpGenPrefix(source), Lanx::IpGenPrefix(group)));
}

// The compact form must give back the very key, and hash as it, or a pass would read the
// route tables out of their order and a key could be worked under another's name.
TEST(CompactRouteKeyTest, IPv4KeysComeBackWholeAndHashAsThemselves) {
  const std::vector<MfibVrfDirRouteKey> keys = {
      key(MfibAppType::pim, "10.1.2.3", "239.1.1.1"),
      key(MfibAppType::static_, "10.1.2.0/24", "239.1.1.1"),
      key(MfibAppType::igmp, "*", "239.255.0.0/16"),
      key(MfibAppType::mvpn, "0.0.0.0/0", "224.0.0.0/4"),
      MfibVrfDirRouteKey(),
  };
  for (const MfibVrfDirRouteKey& k : keys) {
    const auto compact = CompactRouteKey::of(k);
    ASSERT_TRUE(compact) << k;
    EXPECT_EQ(compact->key(), k);
    EXPECT_EQ(compact->hash(), k.hash()) << k;
  }
  EXPECT_NE(CompactRouteKey::of(keys[0]), CompactRouteKey::of(keys[1]));
  EXPECT_FALSE(CompactRouteKey::of(key(MfibAppType::pim, "2001:db8::1", "ff0e::1")));
  EXPECT_FALSE(CompactRouteKey::of(key(MfibAppType::pim, "*", "ff0e::1")));
}

std::vector<MfibVrfDirRouteKey> walked(const ChangedRouteSet& set) {
  std::vector<MfibVrfDirRouteKey> keys;
  for (auto walk = set.walk(); !walk.done(); walk.next()) keys.push_back(walk.key());
  return keys;
}

TEST(ChangedRouteSetTest, KeysOfBothFormsAreHeldOnceAndWalkedInTheTablesOrder) {
  ChangedRouteSet set;
  Qel::HashMap2018<IpGenRouteKey, int> table;
  std::vector<MfibVrfDirRouteKey> sixes;
  for (int i = 0; i < 600; ++i) {
    const auto k = key(MfibAppType::pim, ("10.0." + std::to_string(i / 250) + "." +
                                          std::to_string(i % 250)).c_str(), "239.1.1.1");
    set.insert(k);
    set.insert(k);
    table.insert(k.key(), i);
  }
  const auto six = key(MfibAppType::pim, "2001:db8::1", "ff0e::1");
  set.insert(six);
  set.insert(six);
  EXPECT_EQ(set.size(), 601u);
  EXPECT_TRUE(set.has(six));
  EXPECT_TRUE(set.has(key(MfibAppType::pim, "10.0.1.7", "239.1.1.1")));
  EXPECT_FALSE(set.has(key(MfibAppType::igmp, "10.0.1.7", "239.1.1.1")));

  const std::vector<MfibVrfDirRouteKey> keys = walked(set);
  ASSERT_EQ(keys.size(), 601u);
  std::size_t i = 0;
  for (const auto& member : table) EXPECT_EQ(keys[i++].key(), member.key) << i;
  EXPECT_EQ(keys.back(), six);

  EXPECT_TRUE(set.erase(six));
  EXPECT_FALSE(set.erase(six));
  EXPECT_EQ(set.size(), 600u);
}

// A pass drops what it worked and nothing else: keys recorded while it ran wait for the
// next one, whichever part they went to.
TEST(ChangedRouteSetTest, APassDrainsOnlyWhatItWalkedPast) {
  ChangedRouteSet set;
  for (int i = 0; i < 40; ++i) {
    set.insert(key(MfibAppType::pim, ("10.0.0." + std::to_string(i)).c_str(), "239.1.1.1"));
  }
  set.insert(key(MfibAppType::pim, "2001:db8::1", "ff0e::1"));
  auto walk = set.walk();
  std::vector<MfibVrfDirRouteKey> worked;
  for (int n = 0; n < 10; ++n, walk.next()) worked.push_back(walk.key());
  const auto late = key(MfibAppType::pim, "10.9.9.9", "239.1.1.1");
  const auto late6 = key(MfibAppType::pim, "2001:db8::9", "ff0e::1");
  set.insert(late);
  set.insert(late6);
  set.drainBefore(walk);
  EXPECT_EQ(set.size(), 33u);
  for (const auto& k : worked) EXPECT_FALSE(set.has(k)) << k;
  EXPECT_TRUE(set.has(late));

  // Past the compact part: all of it goes, the other part keeps what the walk stands on.
  walk = set.walk();
  while (!(walk.key().key().family() == Lanx::AddressFamily::ipv6)) walk.next();
  set.drainBefore(walk);
  EXPECT_EQ(set.size(), 2u);
  EXPECT_TRUE(set.has(late6));
  set.drainAll();
  EXPECT_TRUE(set.empty());
}

}  // namespace
}  // namespace MfibTest
