#include <gtest/gtest.h>

#include "runtime/lumo/Exception.h"
#include "tests/runtime/vek/ChannelFixture.h"

namespace VekTest {
namespace {

using ::testing::ElementsAre;

class ModuleGateTest : public ChannelFixture {};

TEST_F(ModuleGateTest, AllocationTakesTheLowestFreeGateAboveTheReservedOnesAndReusesFreedGates) {
  auto demux = module("demux", 0, 2);
  auto a = module("a", 1, 0);
  auto b = module("b");
  auto c = module("c");
  demux->connectModule(a);
  demux->connectModule(b);
  EXPECT_EQ(demux->findGateByName("a", false), Vek::GateId(2));
  EXPECT_EQ(demux->findGateByName("b", false), Vek::GateId(3));
  EXPECT_EQ(a->inLinks().begin()->first, 1u) << "input gate 0 of a is reserved";

  demux->disconnectModule(a);
  EXPECT_FALSE(demux->findGateByName("a", false).isValid());
  EXPECT_FALSE(a->inGateInUse(1));
  demux->connectModule(c);
  EXPECT_EQ(demux->findGateByName("c", false), Vek::GateId(2)) << "the freed gate comes back";
}

TEST_F(ModuleGateTest, ReservedAndHeldGatesAreNeverHandedOutByTheAllocator) {
  auto mdata = module("mdata", 0, 4);
  auto mfib4 = module("mfib4");
  auto mfib6 = module("mfib6");
  auto demux = module("demux", 0, 2);
  auto tx = module("tx");
  mdata->connectViaReservedGate(mfib6, 1);
  mdata->connectViaReservedGate(mfib4, 0);
  EXPECT_EQ(mdata->findGateByName("mfib6", false), Vek::GateId(1));
  EXPECT_EQ(mfib6->inLinks().begin()->first, 0u);
  mdata->connectViaReservedGate(mfib4, 0);  // again: nothing new
  EXPECT_EQ(mdata->outLinks().size(), 2u);

  const Vek::GateId held = demux->getOutGate();
  EXPECT_EQ(held, Vek::GateId(2));
  demux->connectModule(tx);
  EXPECT_EQ(demux->findGateByName("tx", false), Vek::GateId(3)) << "a held gate is not reused";
  demux->disconnectModule(tx);
  demux->connectViaReservedGates(tx, held.value(), 3);
  EXPECT_EQ(tx->inLinks().begin()->first, 3u);
  demux->disconnectModule(tx);
  EXPECT_FALSE(demux->outGateInUse(held.value())) << "undoing the link frees the held gate";
}

TEST_F(ModuleGateTest, AReservedInputGateTakesSeveralFeedersAndIsFreedWithTheLast) {
  auto meet = module("meet", 1, 0);
  auto a = module("a", 0, 3);
  auto b = module("b", 0, 3);
  a->connectViaReservedGates(meet, 2, 0);
  b->connectViaReservedGates(meet, 2, 0);
  EXPECT_EQ(meet->inLinks().count(0), 2u);
  a->disconnectModule(meet);
  ASSERT_EQ(meet->inLinks().count(0), 1u);
  EXPECT_EQ(meet->inLinks().begin()->second.from, b.get()) << "the other feeder keeps its link";
  EXPECT_TRUE(meet->inGateInUse(0));
  b.reset();
  EXPECT_TRUE(meet->inLinks().empty());
  EXPECT_FALSE(meet->inGateInUse(0));
  channel->pump();
  EXPECT_THAT(backend.summary(),
              ElementsAre("createModule meet", "createModule a", "createModule b",
                          "connect a meet", "connect b meet", "disconnect a meet",
                          "disconnect b meet", "destroyModule b"));
}

TEST_F(ModuleGateTest, DisconnectOfNothingChangesNothingAndSendsNothing) {
  auto a = module("a");
  auto b = module("b");
  auto c = module("c");
  a->connectModule(b);
  a->connectModule(b);  // connected already
  channel->pump();
  const auto sent = backend.delivered.size();
  a->disconnectModule(nullptr);
  a->disconnectModule(c);
  b->disconnectModule(a);  // the link goes the other way
  channel->pump();
  EXPECT_EQ(backend.delivered.size(), sent);
  EXPECT_EQ(a->outLinks().size(), 1u);
}

TEST_F(ModuleGateTest, RunningOutOfGatesRaisesAndLeavesNoHalfLink) {
  auto a = module("a", 0, 0, 1);
  auto b = module("b", 0, 0, 1);
  auto c = module("c", 0, 0, 1);
  a->connectModule(b);
  EXPECT_THROW(a->connectModule(c), Lumo::Exception);
  EXPECT_THROW(c->connectModule(b), Lumo::Exception);
  EXPECT_FALSE(c->outGateInUse(0)) << "the output gate taken for the failed link is back";
}

TEST_F(ModuleGateTest, TheDaemonModuleIsCreatedAtFirstUseAndGoesWithItsLinks) {
  auto a = module("a");
  auto b = module("b");
  auto unused = module("unused");
  unused.reset();
  a->initArgsIs(new vek::pb::SizeArg);  // still before creation: it is sent
  a->connectModule(b);
  auto c = module("c");
  c->connectModule(a);
  a.reset();
  channel->pump();
  EXPECT_THAT(backend.summary(),
              ElementsAre("createModule a", "createModule b", "connect a b", "createModule c",
                          "connect c a", "disconnect a b", "disconnect c a", "destroyModule a"));
  EXPECT_EQ(backend.delivered[0]["init"]["@type"], "type.googleapis.com/vek.pb.SizeArg");
  EXPECT_TRUE(b->inLinks().empty());
  EXPECT_TRUE(c->outLinks().empty());
  EXPECT_FALSE(c->outGateInUse(0));
}

TEST_F(ModuleGateTest, AModuleNobodyUsedIsCreatedAtTheNextPump) {
  auto a = module("a");
  EXPECT_EQ(channel->pendingRecords(), 0u);
  channel->pump();
  EXPECT_THAT(backend.summary(), ElementsAre("createModule a"));
  EXPECT_TRUE(a->createdInDaemon());
}

}  // namespace
}  // namespace VekTest
