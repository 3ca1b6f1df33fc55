#include <algorithm>
#include <cerrno>

#include "dataplane/Mfib.h"
#include "dataplane/TxDemuxer.h"
#include "tests/dataplane/ModelFixture.h"

namespace DataplaneTest {
namespace {

using Json = nlohmann::ordered_json;

class MfibTableTest : public ::testing::Test {
 protected:
  Dataplane::TaskIds taskIds;
  Dataplane::Mfib fib{Dataplane::ModuleContext{"MfibIpv4red", 8, 1, &taskIds}};
};

// The text forms of routes and settings in the dump are checked by the output-shape test
// and the scenarios; here how the table takes changes and refuses what it cannot hold.
TEST_F(MfibTableTest, TheLastAddDecidesAndDeletingWhatIsNotThereIsNoFault) {
  auto first = routeArg(v4Source, v4Group);
  first.add_gates()->set_gate(4);
  fib.addMroute(first);
  fib.addMroute(routeArg(v4Source, v4Group));
  EXPECT_TRUE(fib.dump()["routes"]["10.1.1.1,239.1.1.1"]["gates"].empty());
  EXPECT_FALSE(fib.deleteMroute(routeArg(v4Source, v4Group)).failed());
  EXPECT_FALSE(fib.deleteMroute(routeArg(v4Source, v4Group)).failed());
  EXPECT_TRUE(fib.dump()["routes"].empty());
}

TEST_F(MfibTableTest, MalformedRoutesAreRefusedAndLeaveTheTableAlone) {
  auto outOfRange = routeArg(v4Source, v4Group);
  outOfRange.add_gates()->set_gate(8);
  EXPECT_EQ(fib.addMroute(outOfRange).code, ERANGE);
  EXPECT_EQ(fib.addMroute(routeArg(v4Source, "")).code, EINVAL);
  EXPECT_EQ(fib.addMroute(routeArg("\x0a\x01", v4Group)).code, EINVAL);
  EXPECT_TRUE(fib.dump()["routes"].empty());
}

// Keys are kept raw and given their text for the dump and for a look at one route: many
// routes of both families, with and without a source, each found by its own text and by
// no other spelling, in text order in the dump, and deletes that leave the rest in place.
TEST_F(MfibTableTest, RoutesAreFoundByTheirTextsInTextOrder) {
  const std::string v6Group("\xff\x0e" + std::string(13, '\0') + "\x01");
  for (std::uint8_t i = 0; i < 200; ++i) {
    auto route = routeArg(i % 2 ? std::string("\x0a\x00\x00", 3) + char(i) : "", v4Group);
    route.set_iif(i);
    fib.addMroute(route);
  }
  fib.addMroute(routeArg("", v6Group));
  EXPECT_EQ(fib.routeCount(), 101u + 1u) << "every source-less v4 add replaced the one route";
  EXPECT_EQ(fib.routeDump("*,239.1.1.1")->at("iif"), "198");
  EXPECT_EQ(fib.routeDump("10.0.0.7,239.1.1.1")->at("iif"), "7");
  EXPECT_TRUE(fib.routeDump("*,ff0e::1"));
  for (const char* other : {"*,ff0e:0::1", "10.0.0.07,239.1.1.1", "10.0.0.7", "x,239.1.1.1",
                            "10.0.0.8,239.1.1.1"}) {
    EXPECT_FALSE(fib.routeDump(other)) << other;
  }
  for (std::uint8_t i = 1; i < 200; i += 4) {
    fib.deleteMroute(routeArg(std::string("\x0a\x00\x00", 3) + char(i), v4Group));
  }
  const Json table = fib.dump();
  std::vector<std::string> dumped;
  for (const auto& [text, route] : table["routes"].items()) dumped.push_back(text);
  EXPECT_EQ(dumped.size(), 102u - 50u);
  EXPECT_TRUE(std::is_sorted(dumped.begin(), dumped.end()));
  EXPECT_EQ(fib.routeDump("10.0.0.3,239.1.1.1")->at("iif"), "3");
}

TEST_F(MfibTableTest, SettingsTakeRemovalsAndRefuseABadMac) {
  vek::pb::EthernetConfigArg mac;
  mac.set_bridgemacaddr("short");
  EXPECT_EQ(fib.setBridgeMacAddr(mac).code, EINVAL);
  vek::pb::MulticastIntfArg intfs;
  intfs.add_intfids(5);
  intfs.add_intfids(9);
  fib.addMulticastIntfs(intfs);
  intfs.clear_intfids();
  intfs.add_intfids(5);
  fib.deleteMulticastIntfs(intfs);
  vek::pb::MfibCounterIdArg counters;
  counters.set_nocachecounter(3);
  fib.setCounterIds(counters);

  const Json table = fib.dump();
  EXPECT_TRUE(table["bridgeMacAddr"].is_null());
  EXPECT_EQ(table["multicastIntfs"].dump(), R"(["9"])");
  EXPECT_TRUE(table["maxUnresolvedPktBuffers"].is_null()) << "not set";
  EXPECT_EQ(table["counterIds"].dump(), R"({"noCacheCounter":3})");
}

TEST(TxDemuxerTableTest, EntriesAreReplacedAndVlansChecked) {
  Dataplane::TxDemuxer demux(Dataplane::ModuleContext{"TxDemuxer", 8, 1, nullptr});
  vek::pb::IntfGateArg entry;
  entry.set_intfid(12);
  entry.set_ogate(3);
  demux.addDstIntfIdToOutGate(entry);
  entry.set_ogate(5);
  entry.set_vlanid(10);
  demux.addDstIntfIdToOutGate(entry);
  entry.set_ogate(8);
  EXPECT_EQ(demux.addDstIntfIdToOutGate(entry).code, ERANGE);
  vek::pb::VrfVlanArg pmsi;
  pmsi.set_vrfid(2);
  EXPECT_EQ(demux.addVrfIdToPmsiVlan(pmsi).code, EINVAL) << "VLAN 0 is no provider VLAN";
  pmsi.set_vlanid(4094);
  EXPECT_FALSE(demux.addVrfIdToPmsiVlan(pmsi).failed());
  EXPECT_EQ(demux.dump().dump(),
            R"({"intfToOutGate":{"12":{"gate":5,"vlan":10}},"vrfIdToPmsiVlan":{"2":4094},)"
            R"("counterIds":null})");
}

}  // namespace
}  // namespace DataplaneTest
