#include <gtest/gtest.h>

#include <string>

#include "runtime/lumo/Exception.h"
#include "runtime/state/NamespaceName.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/VlanIdOrNone.h"
#include "runtime/state/VniExtOrNone.h"
#include "runtime/state/VrfId.h"
#include "runtime/state/VrfName.h"
#include "tests/runtime/state/ValueChecks.h"

namespace {

using Bridging::VlanId;
using Bridging::VlanIdOrNone;
using L3::VrfName;
using Lanx::NamespaceName;

template <class Fn>
std::string thrownText(Fn&& fn) {
  try {
    fn();
  } catch (const Lumo::Exception& e) {
    return std::string(e.msg().view());
  }
  return "nothing thrown";
}

// Every way in must enforce the bound, not only the std::string one.
TEST(BoundedStringTest, NamesTakeAtMostTheirBound) {
  std::string longest(100, 'v');
  EXPECT_EQ(VrfName(longest).view(), longest);
  const std::string tooLong = "Qel::String::bytes > maxLength() not allowed";
  std::string oneMore = longest + "v";
  EXPECT_EQ(thrownText([&] { VrfName{oneMore}; }), tooLong);
  EXPECT_EQ(thrownText([&] { VrfName{std::string_view(oneMore)}; }), tooLong);
  EXPECT_EQ(thrownText([&] { VrfName{oneMore.c_str()}; }), tooLong);
  EXPECT_EQ(thrownText([&] { VrfName{Lumo::String(oneMore)}; }), tooLong);
  EXPECT_EQ(NamespaceName(std::string(150, 'n')).size(), 150u);
  EXPECT_EQ(thrownText([&] { NamespaceName{std::string(151, 'n')}; }),
            "Qel::String::bytes > 150 not allowed");
}

TEST(BoundedStringTest, CompareHashAndFormatByText) {
  EXPECT_EQ(VrfName("red"), "red");
  EXPECT_LT(VrfName("blue"), VrfName("red"));
  EXPECT_EQ(fmt::format("vrf {}", VrfName("red")), "vrf red");
  expectDistinctKeys<VrfName>({VrfName(), VrfName("default"), VrfName("red"), VrfName("Red")});
}

// Each number type has a none of its own that no real number equals.
TEST(NumberOrNoneTest, NoneIsApartFromEveryNumber) {
  EXPECT_TRUE(Vrf::VrfIdMap::VrfId().isNone());
  EXPECT_FALSE(Vrf::VrfIdMap::VrfId(0).isNone());
  EXPECT_EQ(fmt::format("{} {}", Vrf::VrfIdMap::VrfId(12), Vrf::VrfIdMap::VrfId()), "12 none");
  expectDistinctKeys<Vrf::VrfIdMap::VrfId>(
      {Vrf::VrfIdMap::VrfId(0), Vrf::VrfIdMap::VrfId(1), Vrf::VrfIdMap::VrfId::none()});
  EXPECT_TRUE(Vxlan::VniExtOrNone::none().isNone());
  EXPECT_FALSE(Vxlan::VniExtOrNone(0).isNone());
  EXPECT_TRUE(VlanIdOrNone().isNone());
  EXPECT_EQ(VlanIdOrNone(VlanId(10)), VlanIdOrNone(std::uint16_t{10}));
  EXPECT_EQ(VlanIdOrNone(std::uint16_t{10}).vlanId(), VlanId(10));
}

TEST(NumberOrNoneTest, VlanIdsOutOfRangeAreRefused) {
  EXPECT_EQ(VlanId(1).value(), 1);
  EXPECT_EQ(VlanId(4094).value(), 4094);
  EXPECT_EQ(thrownText([] { VlanId(0); }), "VLAN id 0 out of range 1..4094");
  EXPECT_EQ(thrownText([] { VlanId(4095); }), "VLAN id 4095 out of range 1..4094");
  EXPECT_THROW(VlanIdOrNone(std::uint16_t{4095}), Lumo::Exception);
  EXPECT_THROW(VlanIdOrNone().vlanId(), Lumo::Exception);
}

}  // namespace
