#include <gtest/gtest.h>

#include "host/DumpPath.h"
#include "host/JsonMatch.h"

namespace VekHost {
namespace {

using nlohmann::json;

const json kDump = json::parse(R"({
  "modules": {"MfibIpv4red": {"class": 26, "table": {"routes": {
      "10.1.1.1,239.1.1.1": {"iif": "17", "gates": [{"intf": "18", "gate": 4}]}}}}},
  "errors": [{"code": 5, "msg": "no room"}]
})");

TEST(DumpPathTest, KeysWithDotsArrayPositionsAndWhereAWalkStops) {
  std::string error;
  auto path =
      DumpPath::parse(R"(modules.MfibIpv4red.table.routes["10.1.1.1,239.1.1.1"].iif)", &error);
  ASSERT_TRUE(path) << error;
  std::string missing;
  const json* found = path->find(kDump, &missing);
  ASSERT_TRUE(found) << missing;
  EXPECT_EQ(*found, "17");

  for (const char* text : {"errors.0.msg", "errors[0].msg", "errors[0][\"msg\"]"}) {
    path = DumpPath::parse(text, &error);
    ASSERT_TRUE(path) << text << ": " << error;
    EXPECT_EQ(*path->find(kDump, &missing), "no room") << text;
  }

  path = DumpPath::parse("modules.IgmpV2.table", &error);
  EXPECT_FALSE(path->find(kDump, &missing));
  EXPECT_EQ(missing, "no key 'IgmpV2' in 'modules'");
  path = DumpPath::parse("errors.3", &error);
  EXPECT_FALSE(path->find(kDump, &missing));
  EXPECT_EQ(missing, "no position 3 in 'errors' (1 entries)");
  path = DumpPath::parse("modules.MfibIpv4red.class.x", &error);
  EXPECT_FALSE(path->find(kDump, &missing));
  EXPECT_EQ(missing, "'modules.MfibIpv4red.class' is number, not an object or array");
}

TEST(DumpPathTest, MalformedPathsAreRefused) {
  for (const char* text : {"", "a.", ".a", "a..b", "a[", "a[\"b\"", "a[\"b\"]c", "a[x]", "a]"}) {
    std::string error;
    EXPECT_FALSE(DumpPath::parse(text, &error)) << text;
    EXPECT_FALSE(error.empty()) << text;
  }
}

TEST(JsonMatchTest, EqualsIsDeepAndOrderedAndTakesIntegersForDecimalStrings) {
  EXPECT_TRUE(JsonMatch::equals(json{{"red", 2}}, json{{"red", 2}}));
  EXPECT_FALSE(JsonMatch::equals(json{{"red", 2}}, json{{"red", 2}, {"blue", 3}}));
  EXPECT_FALSE(JsonMatch::equals(json{1, 2}, json{2, 1}));
  EXPECT_TRUE(JsonMatch::equals(json{{"id", 17}}, json{{"id", "17"}}));
  EXPECT_TRUE(JsonMatch::equals(json(18446744073709551615ull), json("18446744073709551615")));
  EXPECT_FALSE(JsonMatch::equals(json(17), json("017")));
  EXPECT_FALSE(JsonMatch::equals(json("17"), json(17))) << "a string never matches a number";
  EXPECT_FALSE(JsonMatch::equals(json(true), json(1)));
}

TEST(JsonMatchTest, ContainsIsASubsetMatchAtEveryLevel) {
  const json actual = json::parse(R"({"vrfs": {"red": 2, "blue": 3},
      "gates": [{"intf": "18", "gate": 4}, {"intf": "19", "gate": 5}], "name": "MfibIpv4red"})");
  using S = JsonMatch::Strings;
  EXPECT_TRUE(JsonMatch::contains(json::parse(R"({"vrfs": {"red": 2}})"), actual, S::substring));
  EXPECT_FALSE(JsonMatch::contains(json::parse(R"({"vrfs": {"red": 3}})"), actual, S::substring));
  EXPECT_TRUE(
      JsonMatch::contains(json::parse(R"({"gates": [{"gate": 5}]})"), actual, S::substring));
  EXPECT_TRUE(
      JsonMatch::contains(json::parse(R"({"gates": [{"intf": 19}]})"), actual, S::substring));
  EXPECT_TRUE(JsonMatch::contains(json::parse(R"({"name": "Ipv4"})"), actual, S::substring));
  EXPECT_FALSE(JsonMatch::contains(json::parse(R"({"name": "Ipv4"})"), actual, S::exact));
  EXPECT_FALSE(JsonMatch::contains(json::parse(R"({"vrfs": [2]})"), actual, S::substring));
}

TEST(JsonMatchTest, ArrayElementsEachNeedTheirOwnPartner) {
  using S = JsonMatch::Strings;
  EXPECT_FALSE(JsonMatch::contains(json{1, 1}, json{1, 2}, S::exact));
  EXPECT_TRUE(JsonMatch::contains(json{1, 1}, json{2, 1, 1}, S::exact));
  // A first-come pairing would give {"a":1} the element it needs for {"a":1,"b":2}.
  const json expected = json::parse(R"([{"a": 1}, {"a": 1, "b": 2}])");
  const json actual = json::parse(R"([{"a": 1, "b": 2}, {"a": 1}])");
  EXPECT_TRUE(JsonMatch::contains(expected, actual, S::exact));
}

TEST(JsonMatchTest, UnmatchedNamesTheItemsLeftAlone) {
  auto equal = [](std::size_t e, std::size_t a) { return e % 2 == a; };
  EXPECT_EQ(JsonMatch::unmatched(4, 2, equal), (std::vector<std::size_t>{2, 3}));
  EXPECT_TRUE(JsonMatch::unmatched(0, 0, equal).empty());
}

}  // namespace
}  // namespace VekHost
