#include <map>
#include <sstream>

#include "runtime/vek/ModuleCounters.h"
#include "tests/dataplane/ModelFixture.h"

namespace DataplaneTest {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using Json = nlohmann::ordered_json;

std::vector<std::string> keys(const Json& object) {
  std::vector<std::string> names;
  for (const auto& item : object.items()) names.push_back(item.key());
  return names;
}

// One of everything the channel carries, through the proxies, as the agent would do it.
class OutputShapeTest : public ModelFixture {
 protected:
  void runEverything() {
    channel->commandLog().streamIs(&lines);
    auto demux = module("TxDemuxer", Vek::VekModule::txDemuxer, nullptr, 2);
    auto fib = mfib();
    auto* incArg = new bess::pb::PortIncArg;
    incArg->set_port("any_McastHwFwd_red");
    auto rx = module("Rx_McastHwFwd_red", Vek::VekModule::portInc, incArg);
    auto* txArg = new vek::pb::PortOutQosArg;
    txArg->set_port("et2");
    auto tx = module("Tx_et2", Vek::VekModule::portOut, txArg);
    fib->connectModule(demux);
    demux->connectModule(tx);
    auto* pcap = new bess::pb::PCAPPortArg;
    pcap->set_dev("any");
    pcap->set_bufsize(30720);
    GroupPort port("any_McastHwFwd_red", "PCAPPort", pcap, group);
    port.handleInit();
    GroupPort gone("et2", "PCAPPort", new bess::pb::PCAPPortArg, group);
    gone.handleInit();
    gone.handleDeInit();
    auto* conf = new bess::pb::SetPortConfRequest;
    conf->set_name("any_McastHwFwd_red");
    conf->mutable_conf()->set_adminup(true);
    group->cmdBatchEnq(Vek::portGrpcCmdFactory(conf, Vek::portConfRequest));
    group->enqueueVersionInc(1);
    Vek::allocateModulePacketCounter(fib, vekcsd, "Non_Mcast_Iif", 1);
    Vek::freeModuleCounters(demux, vekcsd);
    Vek::allocateModulePacketCounter(demux, vekcsd, "No_Intf_Dst", 1);
    Vek::freeModuleCounters(demux, vekcsd);
    auto* arg = route(v4Source, v4Group);
    arg->set_iif(1ull << 40);
    auto* gate = arg->add_gates();
    gate->set_intfid(1ull << 41);
    gate->set_gate(fib->findGateByName("TxDemuxer", false).value());
    send("MfibIpv4red", "addMroute", arg);
    vekcsd->tcManager()->createRateLimitTc(group, "tc", "", 0, "packet", 1000, -1);
    vekcsd->tcManager()->attachTaskToTc(group, "MfibIpv4red", "tc", 0, 1);
    group->enqueueVersionInc(1);
    model.failNextForTest("MfibIpv4red", "setBridgeMacAddr", 5, "no room");
    send("MfibIpv4red", "setBridgeMacAddr", new vek::pb::EthernetConfigArg);
    auto extra = module("Extra", Vek::VekModule::metaData);
    extra->connectModule(demux);
    extra.reset();
    channel->pump();
  }

  std::ostringstream lines;
};

TEST_F(OutputShapeTest, EveryLogLineHasTheFieldsOfItsKindInOrder) {
  runEverything();
  const std::map<std::string, std::vector<std::string>> shapes{
      {"createModule",
       {"seq", "kind", "name", "class", "inGates", "outGates", "reservedIn", "reservedOut",
        "init"}},
      {"connect", {"seq", "kind", "from", "ogate", "to", "igate"}},
      {"disconnect", {"seq", "kind", "from", "ogate", "to", "igate"}},
      {"destroyModule", {"seq", "kind", "name"}},
      {"moduleCmd", {"seq", "kind", "module", "cmd", "arg"}},
      {"createPort", {"seq", "kind", "name", "driver", "arg"}},
      {"destroyPort", {"seq", "kind", "name"}},
      {"groupCmd", {"seq", "kind", "group", "type", "arg"}},
      {"allocateCounter", {"seq", "kind", "module", "name", "unit", "id"}},
      {"freeCounters", {"seq", "kind", "module"}},
      {"createRateLimitTc", {"seq", "kind", "tc", "worker", "unit", "limit", "burst"}},
      {"attachTaskToTc", {"seq", "kind", "task", "tc", "id", "weight"}},
      {"error", {"seq", "kind", "module", "type", "code", "msg"}},
  };
  std::istringstream stream(lines.str());
  std::set<std::string> seen;
  std::uint64_t seq = 0;
  for (std::string line; std::getline(stream, line);) {
    const Json entry = Json::parse(line);
    EXPECT_EQ(entry["seq"], ++seq);
    const std::string kind = entry["kind"];
    ASSERT_TRUE(shapes.contains(kind)) << line;
    EXPECT_THAT(keys(entry), ElementsAreArray(shapes.at(kind))) << line;
    seen.insert(kind);
  }
  EXPECT_EQ(seen.size(), shapes.size()) << "every kind was written";
  EXPECT_EQ(channel->commandLog().entries().size(), seq);

  const auto& log = channel->commandLog().entries();
  auto first = [&log](const char* kind) {
    return *std::find_if(log.begin(), log.end(),
                         [kind](const Json& e) { return e["kind"] == kind; });
  };
  const Json demux = first("createModule");
  EXPECT_EQ(demux["name"], "TxDemuxer");
  EXPECT_EQ(demux["reservedOut"], 2);
  EXPECT_TRUE(demux["init"].is_null()) << "a module without init message says null";
  const Json cmd = first("moduleCmd");
  EXPECT_EQ(cmd["arg"]["@type"], "type.googleapis.com/vek.pb.MfibRouteArg");
  EXPECT_EQ(cmd["arg"]["iif"], "1099511627776") << "64-bit integers as decimal strings";
  EXPECT_EQ(cmd["arg"]["gates"][0]["intfId"], "2199023255552");
  EXPECT_EQ(cmd["arg"]["source"], "CgEBAQ==") << "bytes in base64";
  EXPECT_EQ(first("createPort")["arg"]["@type"], "type.googleapis.com/bess.pb.PCAPPortArg");
  EXPECT_EQ(first("groupCmd")["type"], 31);
}

TEST_F(OutputShapeTest, TheDumpHasTheDocumentedShape) {
  runEverything();
  const Json dump = model.dump();
  EXPECT_THAT(keys(dump),
              ElementsAre("workersResumed", "modules", "ports", "trafficClasses", "errors"));
  const Json fib = dump["modules"]["MfibIpv4red"];
  EXPECT_THAT(keys(fib), ElementsAre("class", "inGates", "outGates", "reservedIn", "reservedOut",
                                     "init", "out", "counters", "table"));
  EXPECT_EQ(fib["out"].dump(), R"({"4":{"to":"TxDemuxer","igate":0}})");
  EXPECT_EQ(fib["counters"].dump(), R"({"Non_Mcast_Iif":1})");
  EXPECT_EQ(fib["init"]["vrfName"], "red");
  EXPECT_THAT(keys(fib["table"]),
              ElementsAre("routes", "multicastIntfs", "maxUnresolvedCacheEntries",
                          "maxUnresolvedPktBuffers", "bridgeMacAddr", "counterIds", "tasks"));
  EXPECT_EQ(fib["table"]["routes"]["10.1.1.1,239.1.1.1"]["gates"].dump(),
            R"([{"intfId":"2199023255552","gate":4}])");
  EXPECT_EQ(dump["modules"]["TxDemuxer"]["counters"].dump(), "{}");
  EXPECT_FALSE(dump["modules"].contains("Extra"));

  const Json port = dump["ports"]["any_McastHwFwd_red"];
  EXPECT_THAT(keys(port), ElementsAre("driver", "arg", "state"));
  EXPECT_EQ(port["arg"]["bufSize"], 30720);
  EXPECT_EQ(port["state"]["adminUp"], true);
  EXPECT_FALSE(dump["ports"].contains("et2"));

  EXPECT_EQ(dump["trafficClasses"]["tc"].dump(),
            R"({"worker":0,"unit":"packet","limit":1000,"burst":-1,"tasks":["MfibIpv4red"]})");
  EXPECT_EQ(dump["errors"].dump(),
            R"([{"module":"MfibIpv4red","type":1,"code":5,"msg":"no room"}])");
}

TEST_F(OutputShapeTest, TheDrawingClustersEachVrfAndLabelsLinksWithTheirGates) {
  runEverything();
  const std::string dot = model.dot();
  const auto cluster = dot.find("subgraph \"cluster_red\"");
  ASSERT_NE(cluster, std::string::npos) << dot;
  const auto clusterEnd = dot.find("  }\n", cluster);
  const std::string red = dot.substr(cluster, clusterEnd - cluster);
  EXPECT_THAT(red, HasSubstr("\"MfibIpv4red\""));
  EXPECT_THAT(red, HasSubstr("\"any_McastHwFwd_red\""));
  EXPECT_THAT(red, HasSubstr("\"Rx_McastHwFwd_red\""));
  EXPECT_THAT(red, ::testing::Not(HasSubstr("\"TxDemuxer\""))) << "shared by every VRF";
  // A module by its class's name and number; a FIB with the routes it holds.
  EXPECT_THAT(dot, HasSubstr("\"MfibIpv4red\" [label=\"MfibIpv4red\\nFIB (26)\\n1 route\"];"));
  EXPECT_THAT(dot, HasSubstr("\"TxDemuxer\" [label=\"TxDemuxer\\ndemultiplexer (105)\"];"));
  EXPECT_THAT(dot, HasSubstr("\"MfibIpv4red\" -> \"TxDemuxer\" [label=\"4→0\"];"));
  EXPECT_THAT(dot, HasSubstr("\"any_McastHwFwd_red\" -> \"Rx_McastHwFwd_red\" [style=dashed];"));
}

}  // namespace
}  // namespace DataplaneTest
