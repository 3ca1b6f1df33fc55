#include <gtest/gtest.h>

#include "runtime/state/IpGenRouteKey.h"
#include "runtime/state/MfibAppType.h"
#include "runtime/state/MfibVrfDirRouteKey.h"
#include "tests/runtime/state/ValueChecks.h"

namespace {

using Lanx::IpGenPrefix;
using Routing::Multicast::Fib::IpGenRouteKey;
using Routing::Multicast::Fib::MfibAppType;
using Routing::Multicast::Fib::MfibVrfDirRouteKey;

IpGenRouteKey key(const char* source, const char* group) {
  return IpGenRouteKey(IpGenPrefix(source), IpGenPrefix(group));
}

TEST(IpGenRouteKeyTest, TextStarGAndKeys) {
  IpGenRouteKey sg = key("10.1.1.1", "239.1.1.1");
  EXPECT_FALSE(sg.isStarG());
  EXPECT_EQ(sg.toString(), "10.1.1.1,239.1.1.1");
  EXPECT_EQ(sg.family(), Lanx::AddressFamily::ipv4);

  IpGenRouteKey starG = key("*", "239.2.2.2");
  EXPECT_TRUE(starG.isStarG());
  EXPECT_EQ(fmt::format("{}", starG), "*,239.2.2.2");

  IpGenRouteKey v6 = key("*", "ff05::1");
  EXPECT_EQ(v6.toString(), "*,ff05::1");
  EXPECT_EQ(v6.family(), Lanx::AddressFamily::ipv6);

  // Source and group both count.
  expectDistinctKeys<IpGenRouteKey>({IpGenRouteKey(), key("10.1.1.1", "239.1.1.1"),
                                     key("239.1.1.1", "10.1.1.1"), key("*", "239.1.1.1"),
                                     key("10.1.1.2", "239.1.1.1"), key("10.1.1.1", "239.1.1.2"),
                                     key("*", "ff05::1")});
}

// Scenario files name the applications; the numbers are those of the route tables.
TEST(MfibAppTypeTest, NamesAndValues) {
  const std::pair<const char*, int> apps[] = {
      {"static", 1}, {"pim", 2}, {"igmp", 3}, {"mld", 4}, {"mvpn", 5}};
  for (const auto& [name, value] : apps) {
    std::optional<MfibAppType> app = Routing::Multicast::Fib::mfibAppTypeFromName(name);
    ASSERT_TRUE(app) << name;
    EXPECT_EQ(static_cast<int>(*app), value);
    EXPECT_EQ(fmt::format("{}", *app), name);
  }
  EXPECT_EQ(Routing::Multicast::Fib::allMfibAppTypes.size(), std::size(apps));
  EXPECT_FALSE(Routing::Multicast::Fib::mfibAppTypeFromName("none"));
  EXPECT_FALSE(Routing::Multicast::Fib::mfibAppTypeFromName("PIM"));
  EXPECT_EQ(Routing::Multicast::Fib::mfibAppTypeName(MfibAppType::none), "none");
}

TEST(MfibVrfDirRouteKeyTest, NoPositionTextAndKeys) {
  EXPECT_TRUE(MfibVrfDirRouteKey().isNoPosition());
  EXPECT_EQ(MfibVrfDirRouteKey().toString(), "none");
  EXPECT_FALSE(MfibVrfDirRouteKey(MfibAppType::none, key("*", "239.1.1.1")).isNoPosition());
  EXPECT_FALSE(MfibVrfDirRouteKey(MfibAppType::pim, IpGenRouteKey()).isNoPosition());
  EXPECT_EQ(MfibVrfDirRouteKey(MfibAppType::pim, key("10.1.1.1", "239.1.1.1")).toString(),
            "pim:10.1.1.1,239.1.1.1");
  IpGenRouteKey sg = key("10.1.1.1", "239.1.1.1");
  expectDistinctKeys<MfibVrfDirRouteKey>(
      {MfibVrfDirRouteKey(), MfibVrfDirRouteKey(MfibAppType::static_, sg),
       MfibVrfDirRouteKey(MfibAppType::pim, sg),
       MfibVrfDirRouteKey(MfibAppType::pim, key("*", "239.1.1.1"))});
}

}  // namespace
