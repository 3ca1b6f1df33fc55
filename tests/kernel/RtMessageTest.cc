#include "kernel/RtMessage.h"

#include <gtest/gtest.h>

#include "kernel/KernelTables.h"
#include "tests/kernel/NetlinkMessageBuilder.h"

namespace Kernel {
namespace {

std::vector<std::byte> vrfInfo(std::uint32_t table) {
  std::vector<std::byte> kind{std::byte{'v'}, std::byte{'r'}, std::byte{'f'}, std::byte{0}};
  std::vector<std::byte> tableBytes(4);
  std::memcpy(tableBytes.data(), &table, 4);
  const auto data = NetlinkMessageBuilder::attributes({{IFLA_VRF_TABLE, tableBytes}});
  return NetlinkMessageBuilder::attributes(
      {{IFLA_INFO_KIND, kind}, {IFLA_INFO_DATA | NLA_F_NESTED, data}});
}

TEST(RtMessageTest, McastRoutesDecodeWithTheirTableInterfacesAndAnySource) {
  const auto sg = NetlinkMessageBuilder::route(RTM_NEWROUTE, kIpv4McastFamily)
                      .u32(RTA_TABLE, 253)
                      .address(RTA_SRC, AF_INET, "10.1.0.5")
                      .address(RTA_DST, AF_INET, "239.1.1.1")
                      .u32(RTA_IIF, 3)
                      .nexthops({5, 7})
                      .bytes();
  const auto added = std::get<RouteAdded>(decodeRtMessage(sg)).route;
  EXPECT_EQ(added.key, (McastRouteKey{Family::ipv4, 253, "10.1.0.5", "239.1.1.1"}));
  EXPECT_EQ(added.iif, 3);
  EXPECT_EQ(added.oifs, (std::vector<int>{5, 7}));

  // A zero source is the kernel's way of writing any source; no outgoing list is none.
  const auto starG = NetlinkMessageBuilder::route(RTM_NEWROUTE, kIpv6McastFamily)
                         .u32(RTA_TABLE, 10)
                         .address(RTA_SRC, AF_INET6, "::")
                         .address(RTA_DST, AF_INET6, "ff3e::1")
                         .u32(RTA_IIF, 4)
                         .bytes();
  const auto any = std::get<RouteAdded>(decodeRtMessage(starG)).route;
  EXPECT_EQ(any.key, (McastRouteKey{Family::ipv6, 10, "*", "ff3e::1"}));
  EXPECT_TRUE(any.oifs.empty());

  const auto gone = NetlinkMessageBuilder::route(RTM_DELROUTE, kIpv4McastFamily)
                        .u32(RTA_TABLE, 253)
                        .address(RTA_SRC, AF_INET, "10.1.0.5")
                        .address(RTA_DST, AF_INET, "239.1.1.1")
                        .bytes();
  EXPECT_EQ(std::get<RouteRemoved>(decodeRtMessage(gone)).key, added.key);
}

TEST(RtMessageTest, WhatTheTablesDoNotKeepIsIgnored) {
  const auto unresolved =
      NetlinkMessageBuilder::route(RTM_NEWROUTE, kIpv4McastFamily, RTNH_F_UNRESOLVED)
          .address(RTA_DST, AF_INET, "239.1.1.1")
          .u32(RTA_IIF, 3)
          .bytes();
  const auto unicast = NetlinkMessageBuilder::route(RTM_NEWROUTE, AF_INET)
                           .address(RTA_DST, AF_INET, "10.0.0.0")
                           .u32(RTA_IIF, 3)
                           .bytes();
  const auto anyGroup = NetlinkMessageBuilder::route(RTM_NEWROUTE, kIpv4McastFamily)
                            .address(RTA_DST, AF_INET, "0.0.0.0")
                            .u32(RTA_IIF, 3)
                            .bytes();
  auto truncated = NetlinkMessageBuilder::route(RTM_NEWROUTE, kIpv4McastFamily)
                       .address(RTA_DST, AF_INET, "239.1.1.1")
                       .u32(RTA_IIF, 3)
                       .bytes();
  truncated[truncated.size() - 8] = std::byte{0x40};  // the last attribute runs past the end
  for (const auto& message : {unresolved, unicast, anyGroup, truncated}) {
    EXPECT_TRUE(std::holds_alternative<Ignored>(decodeRtMessage(message)));
  }
}

TEST(RtMessageTest, LinksTellStateEnslavementAndVrfTables) {
  const auto vrf = NetlinkMessageBuilder::link(RTM_NEWLINK, 9, IFF_UP | IFF_RUNNING | IFF_MASTER)
                       .text(IFLA_IFNAME, "red")
                       .nested(IFLA_LINKINFO | NLA_F_NESTED, vrfInfo(10))
                       .bytes();
  const Link red = std::get<LinkAdded>(decodeRtMessage(vrf)).link;
  EXPECT_EQ(red.name, "red");
  EXPECT_EQ(red.vrfTable, 10u);

  const auto port = NetlinkMessageBuilder::link(RTM_NEWLINK, 4, IFF_UP | IFF_MULTICAST)
                        .text(IFLA_IFNAME, "et2")
                        .u32(IFLA_MASTER, 9)
                        .bytes();
  const Link et2 = std::get<LinkAdded>(decodeRtMessage(port)).link;
  EXPECT_EQ(et2.master, 9);
  EXPECT_FALSE(et2.up) << "up but not running: its carrier is down";
  EXPECT_TRUE(et2.multicast);
  EXPECT_FALSE(et2.vrfTable);

  const auto loopback =
      NetlinkMessageBuilder::link(RTM_NEWLINK, 1, IFF_UP | IFF_RUNNING | IFF_LOOPBACK | IFF_MULTICAST)
          .text(IFLA_IFNAME, "lo")
          .bytes();
  EXPECT_FALSE(std::get<LinkAdded>(decodeRtMessage(loopback)).link.multicast);
  const auto removed = NetlinkMessageBuilder::link(RTM_DELLINK, 4, 0).bytes();
  EXPECT_EQ(std::get<LinkRemoved>(decodeRtMessage(removed)).index, 4);
}

TEST(KernelTablesTest, ChangesNameEachKeyThatDifferedOnceAndNothingElse) {
  const auto route = [](const char* group, std::vector<int> oifs) {
    return McastRoute{{Family::ipv4, 253, "10.1.0.5", group}, 3, std::move(oifs)};
  };
  KernelTables tables;
  tables.apply(RouteAdded{route("239.0.0.1", {5})});
  tables.apply(RouteAdded{route("239.0.0.2", {5})});
  tables.apply(RouteAdded{route("239.0.0.3", {5})});
  tables.apply(LinkAdded{Link{3, "et1", true, true, 0, {}}});
  EXPECT_EQ(tables.takeChanges().routes.size(), 3u);
  tables.apply(RouteAdded{route("239.0.0.1", {5})});  // the same again
  EXPECT_TRUE(tables.takeChanges().empty());

  // A dump read after lost notifications: .1 went, .2 changed, .3 stayed, .4 came.
  KernelTables fresh;
  fresh.apply(RouteAdded{route("239.0.0.2", {5, 6})});
  fresh.apply(RouteAdded{route("239.0.0.3", {5})});
  fresh.apply(RouteAdded{route("239.0.0.4", {5})});
  fresh.apply(LinkAdded{Link{3, "et1", true, true, 0, {}}});
  tables.replaceWith(std::move(fresh));
  const auto changes = tables.takeChanges();
  EXPECT_FALSE(changes.links);
  std::set<std::string> groups;
  for (const auto& key : changes.routes) groups.insert(key.group);
  EXPECT_EQ(groups, (std::set<std::string>{"239.0.0.1", "239.0.0.2", "239.0.0.4"}));
  EXPECT_EQ(tables.routes().size(), 3u);
  EXPECT_EQ(tables.route(route("239.0.0.2", {}).key)->oifs, (std::vector<int>{5, 6}));
}

}  // namespace
}  // namespace Kernel
