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
