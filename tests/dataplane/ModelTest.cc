#include <cerrno>

#include "runtime/vek/ChannelErrorType.h"
#include "runtime/vek/ModuleCounters.h"
#include "runtime/vek/ModuleStatus.h"
#include "runtime/vek/TcManager.h"
#include "tests/dataplane/ModelFixture.h"

namespace DataplaneTest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ModelTest : public ModelFixture {};

TEST_F(ModelTest, CommandsItCannotApplyAreRefusedWithAnErrorRecord) {
  auto fib = mfib();
  send("Ghost", "addMroute", route(v4Source, v4Group));
  send("MfibIpv4red", "fly", new vek::pb::SizeArg);
  send("MfibIpv4red", "addMroute", new vek::pb::SizeArg);
  send("MfibIpv4red", "addMroute", route("\x01\x02", v4Group));
  channel->pump();
  EXPECT_THAT(
      takeErrors(),
      ElementsAre(fmt::format("Ghost 1 {} unknown module Ghost", ENOENT),
                  fmt::format("MfibIpv4red 1 {} unknown command fly", ENOTSUP),
                  fmt::format("MfibIpv4red 1 {} command addMroute takes "
                              "vek.pb.MfibRouteArg, not vek.pb.SizeArg",
                              EINVAL),
                  fmt::format("MfibIpv4red 1 {} malformed source or group address", EINVAL)));
  EXPECT_EQ(model.errors().size(), 4u);
  EXPECT_TRUE(model.dump()["modules"]["MfibIpv4red"]["table"]["routes"].empty());
}

TEST_F(ModelTest, LinksOutOfRangeOrOnTakenGatesAreRefused) {
  auto a = module("a", Vek::VekModule::metaData);
  auto b = module("b", Vek::VekModule::metaData);
  a->connectModule(b);
  channel->recordIs(Vek::ConnectRecord{{"a", 9000, "b", 1}});
  channel->recordIs(Vek::ConnectRecord{{"a", 0, "b", 1}});
  channel->recordIs(Vek::ConnectRecord{{"b", 0, "a", 9000}});
  channel->recordIs(Vek::ConnectRecord{{"b", 0, "ghost", 0}});
  channel->recordIs(Vek::ConnectRecord{{"b", 1, "b", 0}});
  channel->recordIs(Vek::DisconnectRecord{{"a", 0, "b", 5}});
  channel->pump();
  EXPECT_THAT(takeErrors(), ElementsAre(fmt::format("a 4 {} a has no output gate 9000", ERANGE),
                                        fmt::format("a 4 {} output gate 0 of a is linked", EBUSY),
                                        fmt::format("b 4 {} a has no input gate 9000", ERANGE),
                                        fmt::format("b 4 {} unknown module ghost", ENOENT),
                                        fmt::format("b 4 {} input gate 0 of b is linked", EBUSY),
                                        fmt::format("a 5 {} no link a:0 -> b:5", ENOENT)));
  EXPECT_EQ(model.module("a")->out.at(0).module, "b") << "the standing link is untouched";
}

TEST_F(ModelTest, AReservedInputGateTakesSeveralFeedersWhoLeaveOneByOne) {
  auto meet = Lumo::makePtr<Vek::Module>("meet", Vek::VekModule::metaData, 4, 3, 1, 0, nullptr,
                                         pair);
  auto a = module("a", Vek::VekModule::metaData, nullptr, 3);
  auto b = module("b", Vek::VekModule::metaData, nullptr, 3);
  a->connectViaReservedGates(meet, 2, 0);
  b->connectViaReservedGates(meet, 2, 0);
  channel->pump();
  EXPECT_EQ(model.module("meet")->in.count(0), 2u);
  a.reset();
  channel->pump();
  ASSERT_EQ(model.module("meet")->in.count(0), 1u);
  EXPECT_EQ(model.module("meet")->in.find(0)->second.module, "b");
  EXPECT_TRUE(model.errors().empty());
}

TEST_F(ModelTest, ModulesOfUnknownClassesOrNamesInUseAreNotCreated) {
  auto first = module("dup", Vek::VekModule::metaData);
  auto second = module("dup", Vek::VekModule::igmpV2);
  auto odd = Lumo::makePtr<Vek::Module>("odd", static_cast<Vek::VekModule::ModuleClass>(999), 1, 1,
                                        0, 0, nullptr, pair);
  channel->pump();
  EXPECT_THAT(takeErrors(), ElementsAre(fmt::format("dup 2 {} module dup exists", EEXIST),
                                        fmt::format("odd 2 {} unknown module class 999", EINVAL)));
  EXPECT_EQ(model.module("dup")->moduleClass, Vek::VekModule::metaData);
}

// The answers to registrations reach the agent's classes in the scenarios; here a module
// that registers again, which keeps its task.
TEST_F(ModelTest, AModuleThatRegistersAgainKeepsItsTask) {
  auto fib = mfib();
  pair->config()->ignoreResponseIs(false);
  vek::pb::MfibTaskIdArg answers[2];
  for (vek::pb::MfibTaskIdArg& answer : answers) {
    auto* ask = new vek::pb::MfibTaskIdArg;
    ask->set_vrf("red");
    send("MfibIpv4red", "regMfibTasks", ask);
    channel->pump();
    auto response = pair->status()->responseQueueDeq();
    ASSERT_TRUE(response);
    ASSERT_TRUE(response->payload().UnpackTo(&answer));
  }
  EXPECT_NE(answers[0].nocachetid(), 0u);
  EXPECT_EQ(answers[1].nocachetid(), answers[0].nocachetid());
}

TEST_F(ModelTest, RegistrationsSentWhileIgnoringRepliesAreAppliedButNotAnswered) {
  auto fib = mfib();
  send("MfibIpv4red", "regCleanupTask", new vek::pb::MfibTaskIdArg);
  auto* all = new vek::pb::MfibTaskIdsArg;
  all->add_wid(7);
  send("MfibIpv4red", "regMfibTasksForAllWorkers", all);
  channel->pump();
  EXPECT_EQ(pair->status()->responseQueueSize(), 0u);
  EXPECT_THAT(takeErrors(), ElementsAre(fmt::format("MfibIpv4red 1 {} no worker 7", EINVAL)));
  EXPECT_EQ(model.dump()["modules"]["MfibIpv4red"]["table"]["tasks"].size(), 1u);
}

TEST_F(ModelTest, FailNextRefusesOnlyTheNextMatchingCommand) {
  auto fib = mfib();
  model.failNextForTest("MfibIpv4red", "addMroute", 5, "no room");
  send("MfibIpv4red", "setMaxUnresolvedPktBuffers", new vek::pb::SizeArg);
  send("MfibIpv4red", "addMroute", route(v4Source, v4Group));
  channel->pump();
  EXPECT_THAT(takeErrors(), ElementsAre("MfibIpv4red 1 5 no room"));
  EXPECT_TRUE(model.dump()["modules"]["MfibIpv4red"]["table"]["routes"].empty());
  send("MfibIpv4red", "addMroute", route(v4Source, v4Group));
  channel->pump();
  EXPECT_THAT(takeErrors(), IsEmpty());
  EXPECT_TRUE(
      model.dump()["modules"]["MfibIpv4red"]["table"]["routes"].contains("10.1.1.1,239.1.1.1"));
}

TEST_F(ModelTest, ADestroyedModuleTakesItsLinksCountersAndTasksAlong) {
  auto fib = mfib();
  auto demux = module("TxDemuxer", Vek::VekModule::txDemuxer, nullptr, 2);
  auto other = mfib("MfibIpv4blue");
  fib->connectModule(demux);
  Vek::allocateModulePacketCounter(fib, vekcsd, "No_Cache", 1);
  const auto tc = Vek::TcManager::getTcName("noCacheRateLimit_red", 0, "packet", 1000);
  vekcsd->tcManager()->createRateLimitTc(group, tc.view(), "", 0, "packet", 1000, -1);
  vekcsd->tcManager()->attachTaskToTc(group, "MfibIpv4red", tc.view(), 0, 1);
  group->enqueueVersionInc(1);
  channel->pump();
  ASSERT_THAT(model.trafficClasses().at(tc.str()).tasks, ElementsAre("MfibIpv4red"));

  fib.reset();
  channel->recordIs(Vek::ConnectRecord{{"MfibIpv4blue", 4, "TxDemuxer", 0}});
  channel->pump();
  EXPECT_THAT(takeErrors(), IsEmpty()) << "the input gate of the gone link is free again";
  EXPECT_EQ(model.module("MfibIpv4red"), nullptr);
  EXPECT_THAT(model.trafficClasses().at(tc.str()).tasks, IsEmpty());
}

TEST_F(ModelTest, PortsLiveByGroupCommandsAndRefuseWhatTheyDoNotKnow) {
  auto* pcap = new bess::pb::PCAPPortArg;
  pcap->set_dev("any");
  GroupPort port("any_McastHwFwd_red", "PCAPPort", pcap, group);
  port.handleInit();
  GroupPort odd("odd", "NoSuchDriver", nullptr, group);
  odd.handleInit();

  auto command = [](const char* name, const char* cmd, const google::protobuf::Message& arg) {
    auto* request = new bess::pb::CommandRequest;
    request->set_name(name);
    request->set_cmd(cmd);
    request->mutable_arg()->PackFrom(arg);
    return request;
  };
  bess::pb::PCAPPortFilterMcastMarkArg filter;
  filter.set_mark(0x576);
  filter.set_mask(0xfff);
  sendGroup(command("any_McastHwFwd_red", "setMcastMarkFilter", filter), Vek::portCmdRequest);
  sendGroup(command("nowhere", "setMcastMarkFilter", filter), Vek::portCmdRequest);
  sendGroup(command("any_McastHwFwd_red", "spin", filter), Vek::portCmdRequest);
  sendGroup(new bess::pb::EmptyRequest, Vek::createPortRequest);
  channel->pump();

  const auto& errors = model.errors();
  ASSERT_EQ(errors.size(), 4u);
  EXPECT_EQ(errors[0]["msg"], "unknown port driver NoSuchDriver");
  EXPECT_EQ(errors[1]["msg"], "unknown port nowhere");
  EXPECT_EQ(errors[2]["msg"], "unknown command spin");
  EXPECT_EQ(errors[3]["msg"], "request type 20 cannot take bess.pb.EmptyRequest");
  EXPECT_EQ(errors[3]["group"], "mfaAgent");
  const auto state = model.dump()["ports"]["any_McastHwFwd_red"]["state"];
  EXPECT_EQ(state["mcastMarkFilter"]["mark"], 0x576);

  port.handleDeInit();
  port.handleDeInit();  // once is enough
  channel->pump();
  EXPECT_FALSE(model.ports().contains("any_McastHwFwd_red"));
  EXPECT_EQ(model.errors().size(), 4u);
}

TEST_F(ModelTest, TrafficClassesAreCheckedAgainstWorkersAndExistingClasses) {
  auto tcManager = vekcsd->tcManager();
  tcManager->createRateLimitTc(group, "a", "", 0, "packet", 1000, -1);
  tcManager->createRateLimitTc(group, "a", "", 0, "packet", 1000, -1);  // the same again
  tcManager->createRateLimitTc(group, "a", "", 0, "count", 1, -1);
  tcManager->createRateLimitTc(group, "b", "", 2, "count", 1, -1);
  tcManager->attachTaskToTc(group, "t", "missing", 3, 1);
  tcManager->attachTaskToTc(group, "t", vekcsd->widToWeightedClass(1).view(), 0, 1);
  group->enqueueVersionInc(1);
  sendGroup(new bess::pb::EmptyRequest, Vek::resumeAllRequest);
  channel->pump();
  std::vector<std::string> messages;
  for (const auto& e : model.errors()) messages.push_back(e["msg"]);
  EXPECT_THAT(messages, ElementsAre("traffic class a exists with other limits", "no worker 2",
                                    "unknown traffic class missing"));
  EXPECT_EQ(model.trafficClasses().at("a").unit, "packet");
  EXPECT_THAT(model.trafficClasses().at("worker1").tasks, ElementsAre("t"));
  EXPECT_TRUE(model.workersResumed());
}

}  // namespace
}  // namespace DataplaneTest
