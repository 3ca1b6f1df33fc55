#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "runtime/lumo/Exception.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/IrVxlanIpv4TunnelId.h"
#include "runtime/state/McastTunnelIntfId.h"
#include "runtime/state/VlanIntfId.h"
#include "tests/runtime/state/ValueChecks.h"

namespace {

using Lanx::IntfId;
using Lanx::IpGenAddr;
using Lanx::VlanIntfId;
using Multicast::Tunnel::IrVxlanIpv4TunnelId;
using Multicast::Tunnel::McastTunnelIntfId;

struct NameForms {
  std::string name;
  std::string shortName;
};

const std::vector<NameForms> everyForm = {
    {"Ethernet1", "Et1"},
    {"Ethernet1/2", "Et1/2"},
    {"Ethernet3/1/4", "Et3/1/4"},
    {"Ethernet1/0", "Et1/0"},
    {"Ethernet1/0/0", "Et1/0/0"},
    {"Ethernet65535/65535/65535", "Et65535/65535/65535"},
    {"Vlan10", "Vl10"},
    {"Vlan4094", "Vl4094"},
    {"Vlan4095", "Vl4095"},
    {"Port-Channel5", "Po5"},
    {"Port-Channel4294967295", "Po4294967295"},
    {"Loopback0", "Lo0"},
    {"Vxlan1", "Vx1"},
    {"Null0", "Null0"},
    {"Register0", "Register0"},
    {"Tunnel7", "Tu7"},
    {"fwd0", "fwd0"},
    {"McastTunnel1-10.0.0.9", "Mt1-10.0.0.9"},
    {"McastTunnel2-10.0.0.9", "Mt2-10.0.0.9"},
    {"McastTunnel1-fd00::9", "Mt1-fd00::9"},
};

TEST(IntfIdTest, EveryNameFormRoundTripsThroughItsIdAndOrdersByNumber) {
  std::vector<IntfId> ids;
  for (const NameForms& form : everyForm) {
    IntfId id(form.name);
    EXPECT_FALSE(id.isEmpty()) << form.name;
    EXPECT_EQ(id.name(), form.name);
    EXPECT_EQ(id.shortName(), form.shortName);
    EXPECT_EQ(IntfId::fromNameOrThrow(form.shortName), id) << form.shortName;
    EXPECT_EQ(IntfId(id.value()), id);
    ids.push_back(id);
  }
  expectDistinctKeys(ids);
  // The kind words are read in any case and written as above.
  EXPECT_EQ(IntfId("ethernet1/2"), IntfId("Ethernet1/2"));
  EXPECT_EQ(IntfId("PO5"), IntfId("Port-Channel5"));
  EXPECT_EQ(IntfId("port-channel5").name(), "Port-Channel5");
  // Ids order by the numbers and format as the name.
  EXPECT_LT(IntfId("Ethernet1/2"), IntfId("Ethernet1/10"));
  EXPECT_LT(IntfId("Ethernet2"), IntfId("Ethernet10"));
  EXPECT_EQ(fmt::format("[{:>6}]", IntfId("Vlan10")), "[Vlan10]");
  EXPECT_EQ(fmt::format("{}", IntfId("Ethernet1/2")), "Ethernet1/2");
}

// Other programs take these numbers from "mfa-host intf-id"; the layout must not drift.
TEST(IntfIdTest, EncodingIsTheDocumentedOne) {
  EXPECT_EQ(IntfId("Ethernet1").value(), 0x0100010000000001u);
  EXPECT_EQ(IntfId("Ethernet3/1/4").value(), 0x0100030001000403u);
  EXPECT_EQ(IntfId("Vlan10").value(), 0x020000000000000au);
  EXPECT_EQ(IntfId("Port-Channel5").value(), 0x0300000000000005u);
  EXPECT_EQ(IntfId("Null0").value(), 0x0600000000000000u);
  EXPECT_EQ(IntfId("McastTunnel1-10.0.0.9").value(), 0x091000000a000009u);
  EXPECT_EQ(IntfId("fwd3").value(), 0x0a00000000000003u);
  EXPECT_TRUE(IntfId().isEmpty());
  EXPECT_EQ(IntfId::ethernet(3, 1, 4), IntfId("Ethernet3/1/4"));
}

TEST(IntfIdTest, BadNamesAreRefusedWithTheReason) {
  const std::vector<std::pair<std::string, std::string>> bad = {
      {"", "empty name"},
      {"Foo1", "unknown interface type \"Foo\""},
      {"Ethernet", "expected a number after \"Ethernet\""},
      {"Ethernet1/", "expected a number"},
      {"Ethernet1/2/3/4", "more than 3 numbers"},
      {"Ethernet01", "leading zero"},
      {"Ethernet65536", "out of range"},
      {"Vlan0", "out of range 1..4095"},
      {"Vlan4096", "out of range 1..4095"},
      {"Vlan10x", "expected a number"},
      {"Vlan 10", "unknown interface type"},
      {"Port-Channel99999999999", "out of range"},
      {"McastTunnel1", "expected <tunnel type>-<VTEP address>"},
      {"McastTunnel0-10.0.0.1", "tunnel type"},
      {"McastTunnel16-10.0.0.1", "tunnel type"},
      {"McastTunnel1-10.0.0.256", "bad address"},
      {"{tunnel: 1}", "bad address"},
      {"{tunnel: 1, vtep: 10.0.0.9, color: red}", "unknown key \"color\""},
  };
  for (const auto& [name, reason] : bad) {
    std::string whyNot;
    EXPECT_FALSE(IntfId::fromName(name, &whyNot)) << name;
    EXPECT_TRUE(whyNot.starts_with("bad interface name \"" + name + "\": ")) << whyNot;
    EXPECT_NE(whyNot.find(reason), std::string::npos) << whyNot;
    try {
      IntfId::fromNameOrThrow(name);
      ADD_FAILURE() << name;
    } catch (const Lumo::Exception& e) {
      EXPECT_EQ(e.msg().view(), whyNot);
    }
  }
}

TEST(VlanIntfIdTest, VlanNumbersGoInAndComeOut) {
  IntfId vlan10 = VlanIntfId::vlanIdToIntfId(std::uint16_t{10});
  EXPECT_EQ(vlan10, IntfId("Vlan10"));
  EXPECT_EQ(VlanIntfId::vlanIdToIntfId(Bridging::VlanId(10)), vlan10);
  EXPECT_TRUE(VlanIntfId::isVlanIntfId(vlan10));
  EXPECT_EQ(VlanIntfId::vlanId(vlan10), 10);

  // Ids past the last VLAN still say what they carry, so their users can refuse them.
  for (std::uint16_t tooLarge : {std::uint16_t{4095}, std::uint16_t{5000}, std::uint16_t{65535}}) {
    IntfId id = VlanIntfId::vlanIdToIntfId(tooLarge);
    EXPECT_TRUE(VlanIntfId::isVlanIntfId(id));
    EXPECT_EQ(VlanIntfId::vlanId(id), tooLarge);
  }
  for (IntfId other : {IntfId(), IntfId("Ethernet10"), IntfId("Port-Channel10")}) {
    EXPECT_FALSE(VlanIntfId::isVlanIntfId(other)) << other;
    EXPECT_EQ(VlanIntfId::vlanId(other), 0);
  }
}

TEST(McastTunnelIntfIdTest, TunnelTypeAndVtepComeBackFromTheId) {
  IpGenAddr v4("10.0.0.9");
  IpGenAddr v6("2001:db8::77");
  IntfId type1v4 = McastTunnelIntfId::intfId(1, v4);
  IntfId type2v6 = McastTunnelIntfId::intfId(2, v6);
  EXPECT_EQ(McastTunnelIntfId::tunnelType(type1v4), 1);
  EXPECT_EQ(McastTunnelIntfId::tunnelType(type2v6), 2);
  EXPECT_EQ(McastTunnelIntfId::vtep(type1v4), v4);
  EXPECT_EQ(McastTunnelIntfId::vtep(type2v6), v6);
  EXPECT_EQ(IntfId(type2v6.name()), type2v6);
  EXPECT_EQ(McastTunnelIntfId::intfId(2, IpGenAddr("2001:db8::77")), type2v6);

  EXPECT_EQ(IrVxlanIpv4TunnelId::vtepIp(type1v4), v4);
  EXPECT_TRUE(IrVxlanIpv4TunnelId::vtepIp(McastTunnelIntfId::intfId(2, v4)).isNone());

  for (IntfId other : {IntfId(), IntfId("Tunnel1"), IntfId("Vlan1"), IntfId("Ethernet1")}) {
    EXPECT_EQ(McastTunnelIntfId::tunnelType(other), 0) << other;
    EXPECT_TRUE(McastTunnelIntfId::vtep(other).isNone()) << other;
  }
  EXPECT_THROW(McastTunnelIntfId::intfId(0, v4), Lumo::Exception);
  EXPECT_THROW(McastTunnelIntfId::intfId(1, IpGenAddr()), Lumo::Exception);
  // The scenario form names the same tunnel.
  EXPECT_EQ(IntfId("{tunnel: 1, vtep: 10.0.0.9}"), type1v4);
  EXPECT_EQ(IntfId("{ vtep: 2001:db8::77 ,tunnel: 2 }"), type2v6);
}

// An IPv6 VTEP this process has not made an id of has no address to show; its name keeps the
// hash and still reads back to the same id.
TEST(McastTunnelIntfIdTest, UnknownIpv6VtepKeepsItsHashInTheName) {
  IntfId id("McastTunnel2-v6#0123456789ab");
  EXPECT_EQ(id.name(), "McastTunnel2-v6#0123456789ab");
  EXPECT_EQ(McastTunnelIntfId::tunnelType(id), 2);
  EXPECT_TRUE(McastTunnelIntfId::vtep(id).isNone());
  EXPECT_FALSE(IntfId::fromName("McastTunnel2-v6#1000000000000"));
}

}  // namespace
