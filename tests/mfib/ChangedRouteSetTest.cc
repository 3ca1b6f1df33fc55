#include <gtest/gtest.h>

#include <cstdint>
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

// The compact form must give back the very key, hash as it and match it alone, or a pass
// would read the route tables out of their order, or work a key under another's name.
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
    for (const MfibVrfDirRouteKey& other : keys) {
      EXPECT_EQ(compact->sameAs(other.key()), other.key() == k.key()) << k << " " << other;
    }
  }
  EXPECT_NE(CompactRouteKey::of(keys[0]), CompactRouteKey::of(keys[1]));
  EXPECT_FALSE(CompactRouteKey::of(key(MfibAppType::pim, "2001:db8::1", "ff0e::1")));
  EXPECT_FALSE(CompactRouteKey::of(key(MfibAppType::pim, "*", "ff0e::1")));
}

MfibVrfDirRouteKey ipv4Key(MfibAppType app, int i) {
  return key(app, ("10." + std::to_string(i / 62500) + "." + std::to_string(i / 250 % 250) + "." +
                   std::to_string(i % 250)).c_str(),
             "239.1.1.1");
}

std::vector<MfibVrfDirRouteKey> worked(ChangedRouteSet& set, std::size_t most = SIZE_MAX) {
  std::vector<MfibVrfDirRouteKey> keys;
  for (; !set.empty() && keys.size() < most; set.popFront()) keys.push_back(set.front());
  return keys;
}

// The order a route table of these keys has.
std::vector<MfibVrfDirRouteKey> tableOrder(const std::vector<MfibVrfDirRouteKey>& keys) {
  Qel::HashSet2018<MfibVrfDirRouteKey> table;
  for (const auto& k : keys) table.insert(k);
  std::vector<MfibVrfDirRouteKey> ordered;
  for (const auto& member : table) ordered.push_back(member.key);
  return ordered;
}

// Keys recorded many times are worked once, in the route tables' order, the compact part
// first; keys of one route in two tables hash alike and still stand in the tables' order.
TEST(ChangedRouteSetTest, EachKeyIsWorkedOnceInTheTablesOrder) {
  ChangedRouteSet set;
  std::vector<MfibVrfDirRouteKey> fours;
  for (int i = 0; i < 3000; ++i) {
    fours.push_back(ipv4Key(i % 7 ? MfibAppType::pim : MfibAppType::igmp, i));
    if (i % 50 == 0) fours.push_back(ipv4Key(MfibAppType::static_, i));
  }
  for (const auto& k : fours) set.insert(k);
  for (const auto& k : fours) set.insert(k);
  std::vector<MfibVrfDirRouteKey> sixes;
  for (int i = 1; i < 40; ++i) {
    sixes.push_back(key(MfibAppType::pim, ("2001:db8::" + std::to_string(i)).c_str(), "ff0e::1"));
  }
  for (const auto& k : sixes) set.insert(k);
  for (const auto& k : sixes) set.insert(k);
  const auto& six = sixes[0];
  EXPECT_TRUE(set.has(six));
  EXPECT_TRUE(set.has(fours[1234]));
  EXPECT_FALSE(set.has(ipv4Key(MfibAppType::mvpn, 1234)));

  std::vector<MfibVrfDirRouteKey> expected = tableOrder(fours);
  for (const auto& k : tableOrder(sixes)) expected.push_back(k);
  EXPECT_EQ(worked(set), expected);
  EXPECT_EQ(set.size(), 0u);
}

// Between two runs of a pass: keys recorded before the rest are worked first, copies of
// waiting keys and keys worked already are worked once more, erased keys not at all, and
// buckets that split meanwhile keep the order.
TEST(ChangedRouteSetTest, KeysRecordedBetweenRunsJoinTheOrder) {
  ChangedRouteSet set;
  std::vector<MfibVrfDirRouteKey> first;
  for (int i = 0; i < 100; ++i) first.push_back(ipv4Key(MfibAppType::pim, i));
  for (const auto& k : first) set.insert(k);
  const std::vector<MfibVrfDirRouteKey> ordered = tableOrder(first);
  const std::vector<MfibVrfDirRouteKey> done = worked(set, 30);
  ASSERT_EQ(done, std::vector<MfibVrfDirRouteKey>(ordered.begin(), ordered.begin() + 30));

  std::vector<MfibVrfDirRouteKey> waiting(ordered.begin() + 30, ordered.end());
  for (int i = 100; i < 5000; ++i) waiting.push_back(ipv4Key(MfibAppType::pim, i));
  for (const auto& k : waiting) set.insert(k);
  for (int i = 0; i < 30; i += 3) {
    set.insert(done[i]);
    waiting.push_back(done[i]);
  }
  for (int i = 0; i < 30; i += 5) set.insert(ordered[40 + i]);
  EXPECT_TRUE(set.erase(ordered[99]));
  EXPECT_FALSE(set.erase(ordered[99]));
  std::erase(waiting, ordered[99]);

  EXPECT_EQ(worked(set), tableOrder(waiting));
  EXPECT_TRUE(set.empty());
}

}  // namespace
}  // namespace MfibTest
