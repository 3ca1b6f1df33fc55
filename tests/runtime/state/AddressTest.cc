#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "runtime/lumo/Exception.h"
#include "runtime/state/AddressFamily.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/IpGenPrefix.h"
#include "tests/runtime/state/ValueChecks.h"

namespace {

using Lanx::AddressFamily;
using Lanx::EthAddr;
using Lanx::IpGenAddr;
using Lanx::IpGenPrefix;

std::vector<std::uint8_t> bytesOf(const IpGenAddr& addr) {
  return {addr.rawBytes().begin(), addr.rawBytes().end()};
}

TEST(IpGenAddrTest, TextAndRawBytesOfBothFamilies) {
  IpGenAddr v4("10.1.2.3");
  EXPECT_EQ(v4.family(), AddressFamily::ipv4);
  EXPECT_EQ(v4.size(), 4u);
  EXPECT_EQ(bytesOf(v4), (std::vector<std::uint8_t>{10, 1, 2, 3}));
  EXPECT_EQ(v4.ipv4HostOrder(), 0x0a010203u);
  EXPECT_EQ(IpGenAddr::ipv4(0x0a010203), v4);
  EXPECT_EQ(v4.toString(), "10.1.2.3");

  IpGenAddr v6("FD00:0:0::9");
  EXPECT_EQ(v6.family(), AddressFamily::ipv6);
  EXPECT_EQ(v6.size(), 16u);
  std::vector<std::uint8_t> expected(16, 0);
  expected[0] = 0xfd;
  expected[15] = 9;
  EXPECT_EQ(bytesOf(v6), expected);
  EXPECT_EQ(v6.toString(), "fd00::9");
  EXPECT_EQ(v6.ipv4HostOrder(), 0u);

  for (const IpGenAddr& addr : {v4, v6}) {
    EXPECT_EQ(IpGenAddr::fromRawBytes(addr.rawBytes()), addr);
    std::array<std::uint8_t, 17> buffer{};
    buffer.fill(0xee);
    addr.copyToBuffer(buffer.data());
    EXPECT_EQ(std::vector<std::uint8_t>(buffer.begin(), buffer.begin() + addr.size()),
              bytesOf(addr));
    EXPECT_EQ(buffer[addr.size()], 0xee) << "wrote past the address";
  }
  std::array<std::uint8_t, 5> fiveBytes{};
  EXPECT_FALSE(IpGenAddr::fromRawBytes(fiveBytes));
  EXPECT_TRUE(IpGenAddr().isNone());
  EXPECT_EQ(IpGenAddr().size(), 0u);
  EXPECT_EQ(IpGenAddr().toString(), "none");
}

TEST(IpGenAddrTest, BadTextIsRefused) {
  for (std::string text : {"", "10.1.1", "10.1.1.256", "10.1.1.1 ", "fd00:::1", "none", "*",
                           "1:2:3:4:5:6:7:8:9:10:11:12:13:14:15:16:17:18:19:20"}) {
    std::string whyNot;
    EXPECT_FALSE(IpGenAddr::fromString(text, &whyNot)) << text;
    EXPECT_EQ(whyNot, "bad address \"" + text + "\": not an IPv4 or IPv6 address");
    EXPECT_THROW(IpGenAddr{text}, Lumo::Exception) << text;
  }
}

// 10.0.0.1 and a00:1:: have the same leading bytes; only the family tells them apart, and
// no family is a value of its own.
TEST(IpGenAddrTest, KeysOfBothFamiliesStayApart) {
  expectDistinctKeys<IpGenAddr>({IpGenAddr(), IpGenAddr("10.0.0.1"), IpGenAddr("a00:1::"),
                                 IpGenAddr("10.0.0.2"), IpGenAddr("10.0.0.10"), IpGenAddr("::"),
                                 IpGenAddr("0.0.0.0"), IpGenAddr("ff02::1")});
  EXPECT_LT(IpGenAddr("10.0.0.2"), IpGenAddr("10.0.0.10"));
  EXPECT_LT(IpGenAddr("255.255.255.255"), IpGenAddr("::"));
}

TEST(IpGenAddrTest, MulticastRanges) {
  const std::pair<const char*, bool> cases[] = {{"224.0.0.1", true},  {"239.255.255.255", true},
                                                {"240.0.0.1", false}, {"223.255.255.255", false},
                                                {"ff05::2", true},    {"fe80::1", false}};
  for (const auto& [text, multicast] : cases) {
    EXPECT_EQ(IpGenAddr(text).isMulticast(), multicast) << text;
  }
  EXPECT_FALSE(IpGenAddr().isMulticast());
}

// A prefix reads as an address with an optional length, "*" for none, and shows with its
// host bits cleared and the length left out for a host.
TEST(IpGenPrefixTest, TextFormsAndKeys) {
  const std::pair<const char*, const char*> forms[] = {{"*", "*"},
                                                       {"10.1.1.1", "10.1.1.1"},
                                                       {"10.1.1.1/32", "10.1.1.1"},
                                                       {"10.1.2.3/16", "10.1.0.0/16"},
                                                       {"10.255.255.255/9", "10.128.0.0/9"},
                                                       {"fd00:ffff::1/20", "fd00:f000::/20"},
                                                       {"1.2.3.4/0", "0.0.0.0/0"},
                                                       {"fd00::1", "fd00::1"}};
  for (const auto& [text, shown] : forms) {
    EXPECT_EQ(IpGenPrefix(text).toString(), shown) << text;
    EXPECT_EQ(IpGenPrefix(text), IpGenPrefix(shown)) << text;
  }
  EXPECT_TRUE(IpGenPrefix("*").isNone() && IpGenPrefix("*") == IpGenPrefix());
  EXPECT_EQ(IpGenPrefix("10.1.1.1").length(), 32);
  EXPECT_EQ(IpGenPrefix("fd00::1").length(), 128);
  // The length is part of the key.
  expectDistinctKeys<IpGenPrefix>({IpGenPrefix(), IpGenPrefix("10.0.0.0/8"),
                                   IpGenPrefix("10.0.0.0/16"), IpGenPrefix("10.0.0.0"),
                                   IpGenPrefix("0.0.0.0/0"), IpGenPrefix("::/0")});
}

TEST(IpGenPrefixTest, BadLengthsAreRefused) {
  for (std::string text :
       {"10.0.0.0/33", "fd00::/129", "10.0.0.0/", "10.0.0.0/x", "10.0.0.0/-1", "10.0.0.0/8/8"}) {
    std::string whyNot;
    EXPECT_FALSE(IpGenPrefix::fromString(text, &whyNot)) << text;
    EXPECT_NE(whyNot.find("bad prefix \"" + text + "\""), std::string::npos) << whyNot;
  }
  EXPECT_THROW(IpGenPrefix(IpGenAddr("10.0.0.0"), 33), Lumo::Exception);
  EXPECT_FALSE(IpGenPrefix::fromString("300.0.0.0/8"));
}

TEST(EthAddrTest, ParsesAndPrintsColonFormAndKeysStayApart) {
  EthAddr mac("00:1C:73:aa:bb:CC");
  EXPECT_EQ(mac.toString(), "00:1c:73:aa:bb:cc");
  EXPECT_EQ(std::vector<std::uint8_t>(mac.rawBytes().begin(), mac.rawBytes().end()),
            (std::vector<std::uint8_t>{0x00, 0x1c, 0x73, 0xaa, 0xbb, 0xcc}));
  EXPECT_EQ(mac.value(), 0x001c73aabbccu);
  EXPECT_FALSE(mac.isZero());
  EXPECT_TRUE(EthAddr().isZero());
  EXPECT_EQ(EthAddr("00:00:00:00:00:00"), EthAddr());
  EXPECT_EQ(fmt::format("{}", EthAddr("ff:ff:ff:ff:ff:ff")), "ff:ff:ff:ff:ff:ff");
  expectDistinctKeys<EthAddr>({EthAddr(), EthAddr("00:00:00:00:00:01"),
                               EthAddr("01:00:00:00:00:00"), EthAddr("01:00:5e:00:00:01"),
                               EthAddr("ff:ff:ff:ff:ff:ff")});
}

TEST(EthAddrTest, BadTextIsRefused) {
  for (std::string text : {"", "00:1c:73:aa:bb", "00-1c-73-aa-bb-cc", "00:1c:73:aa:bb:cg",
                           "00:1c:73:aa:bb:cc:dd", "0:1c:73:aa:bb:cc0", "+0:1c:73:aa:bb:cc"}) {
    std::string whyNot;
    EXPECT_FALSE(EthAddr::fromString(text, &whyNot)) << text;
    EXPECT_EQ(whyNot, "bad Ethernet address \"" + text + "\": expected xx:xx:xx:xx:xx:xx");
  }
  EXPECT_THROW(EthAddr("00:1c"), Lumo::Exception);
}

TEST(AddressFamilyTest, NamesOfTheFamilies) {
  EXPECT_EQ(Lanx::addressFamilyFromName("ipv4"), AddressFamily::ipv4);
  EXPECT_EQ(Lanx::addressFamilyFromName("ipv6"), AddressFamily::ipv6);
  EXPECT_FALSE(Lanx::addressFamilyFromName("none"));
  EXPECT_FALSE(Lanx::addressFamilyFromName("IPv4"));
  EXPECT_EQ(fmt::format("{}", AddressFamily::ipv6), "ipv6");
  EXPECT_EQ(Lanx::addressFamilyName(static_cast<AddressFamily>(7)), "unknown");
}

}  // namespace
