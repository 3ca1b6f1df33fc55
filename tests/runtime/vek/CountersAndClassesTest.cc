#include <gtest/gtest.h>

#include "runtime/vek/ManagementSm.h"
#include "runtime/vek/ModuleCounters.h"
#include "runtime/vek/TcManager.h"
#include "runtime/vek/VekCommonSmData.h"
#include "tests/runtime/vek/ChannelFixture.h"

namespace VekTest {
namespace {

using ::testing::ElementsAre;

class CountersAndClassesTest : public ChannelFixture {
 protected:
  Lumo::Ptr<Vek::VekCommonSmData> vekcsd = Lumo::makePtr<Vek::VekCommonSmData>(2);
};

TEST_F(CountersAndClassesTest, CountersAreKnownAtOnceAndFreedIdsAreReused) {
  auto igmp = module("igmp");
  auto mfib = module("mfib");
  const Vek::CounterId pkt = Vek::allocateModulePacketCounter(igmp, vekcsd, "Pkt", 1);
  const Vek::CounterId proto = Vek::allocateModulePacketCounter(igmp, vekcsd, "Proto", 1);
  const Vek::CounterId other = Vek::allocateModulePacketCounter(mfib, vekcsd, "Other", 1);
  EXPECT_TRUE(pkt.isValid());
  EXPECT_NE(pkt, proto);
  EXPECT_NE(proto, other);

  Vek::freeModuleCounters(igmp, vekcsd);
  Vek::freeModuleCounters(igmp, vekcsd);  // nothing left: nothing sent
  EXPECT_EQ(Vek::allocateModulePacketCounter(mfib, vekcsd, "Again", 1), pkt);
  channel->pump();
  EXPECT_THAT(backend.summary(), ElementsAre("createModule igmp", "createModule mfib",
                                             "allocateCounter Pkt igmp",
                                             "allocateCounter Proto igmp",
                                             "allocateCounter Other mfib", "freeCounters igmp",
                                             "allocateCounter Again mfib"));
  EXPECT_EQ(backend.delivered[2]["name"], "Pkt");
  EXPECT_EQ(backend.delivered[2]["id"], pkt.value());
}

TEST_F(CountersAndClassesTest, WorkersAreChosenByTheBalanceOfWeights) {
  Vek::ManagementSm sm(3);
  EXPECT_EQ(sm.allocNextWorker(2, false), 0u);
  EXPECT_EQ(sm.allocNextWorker(1, false), 1u);
  EXPECT_EQ(sm.allocNextWorker(1, false), 2u);
  EXPECT_EQ(sm.allocNextWorker(1, false), 1u) << "the heavy worker 0 is passed over";
  EXPECT_EQ(sm.allocNextWorker(1, false), 2u);
  EXPECT_EQ(sm.allocNextWorker(1, false), 0u) << "ties go to the lowest id";
  EXPECT_EQ(sm.workerLoad(0), 3u);
  Vek::ManagementSm none(0);
  EXPECT_EQ(none.allocNextWorker(1, false), 0u);
}

TEST_F(CountersAndClassesTest, TrafficClassRequestsTravelThroughTheGroup) {
  const Lumo::String tc = Vek::TcManager::getTcName("noCacheRateLimit_red", 1, "packet", 1000);
  EXPECT_NE(tc, Vek::TcManager::getTcName("noCacheRateLimit_red", 0, "packet", 1000));
  vekcsd->tcManager()->createRateLimitTc(group, tc.view(), "", 1, "packet", 1000, -1);
  vekcsd->tcManager()->attachTaskToTc(group, "task", tc.view(), 9, 1);
  channel->pump();
  EXPECT_TRUE(backend.delivered.empty()) << "the caller raises the version";
  group->enqueueVersionInc(1);
  channel->pump();
  ASSERT_EQ(backend.delivered.size(), 2u);
  EXPECT_EQ(backend.delivered[0].dump(),
            fmt::format(R"({{"kind":"createRateLimitTc","tc":"{}","worker":1,"unit":"packet",)"
                        R"("limit":1000,"burst":-1}})",
                        tc));
  EXPECT_EQ(
      backend.delivered[1].dump(),
      fmt::format(R"({{"kind":"attachTaskToTc","task":"task","tc":"{}","id":9,"weight":1}})", tc));
}

}  // namespace
}  // namespace VekTest
