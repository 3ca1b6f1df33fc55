#include <gtest/gtest.h>

#include "pipeline/TxDemuxerModuleProgrammer.h"
#include "pipeline/VekL3McastModuleManager.h"
#include "pipeline/VekMcastL3IntfSm.h"
#include "runtime/state/MvpnIntfStatus.h"
#include "runtime/state/VlanIntfId.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/L3Intf.h"
#include "tests/pipeline/PipelineFixture.h"

namespace PipelineTest {
namespace {

using VekL3Mcast::McastModuleManager;
using VekL3Mcast::VekMcastL3IntfSm;

class RoutedIntfTest : public PipelineFixture {
 protected:
  Lumo::Ptr<VekMcastL3IntfSm> makeSm(const Lumo::Ptr<McastModuleManager>& manager) {
    auto sm = Lumo::makePtr<VekMcastL3IntfSm>(vekcsd, manager);
    sm->hasNotificationActiveIs(true);
    return sm;
  }
  void addL3Intf(Lanx::IntfId id) { vekcsd->l3IntfIs(Lumo::makePtr<Vek::L3Intf>(id)); }
  Json demuxEntry(Lanx::IntfId id) {
    return table("TxDemuxer")["intfToOutGate"][std::to_string(id.value())];
  }

  const Lanx::IntfId et1 = Lanx::IntfId::ethernet(1);
  const Lanx::IntfId et2 = Lanx::IntfId::ethernet(2);
};

TEST_F(RoutedIntfTest, EachRoutedIntfGetsAnUnreservedGateOfItsOwn) {
  addL3Intf(et1);
  auto manager = VekL3Mcast::mcastModuleManagerFactory(pair);
  auto sm = makeSm(manager);
  addL3Intf(et2);

  const Vek::GateId gate1 = sm->intfToGate(et1);
  const Vek::GateId gate2 = sm->intfToGate(et2);
  ASSERT_TRUE(gate1.isValid() && gate2.isValid());
  EXPECT_NE(gate1, gate2);
  EXPECT_GE(gate1.value(), 2u);  // the two low gates are reserved
  EXPECT_GE(gate2.value(), 2u);
  EXPECT_EQ(demuxEntry(et1), Json({{"gate", gate1.value()}, {"vlan", 0}}));
  EXPECT_EQ(demuxEntry(et2), Json({{"gate", gate2.value()}, {"vlan", 0}}));
  EXPECT_EQ(vekcsd->l3Intf(et1)->egressSources().at(0).etherType, 0x800);
}

TEST_F(RoutedIntfTest, IntfThatGoesLosesItsEntryAndComesBackWithANewGate) {
  auto manager = VekL3Mcast::mcastModuleManagerFactory(pair);
  auto sm = makeSm(manager);
  addL3Intf(et1);
  const Vek::GateId first = sm->intfToGate(et1);

  vekcsd->l3IntfDel(et1);
  EXPECT_FALSE(sm->intfToGate(et1).isValid());
  EXPECT_TRUE(demuxEntry(et1).is_null());

  addL3Intf(et1);
  EXPECT_NE(sm->intfToGate(et1), first);
  EXPECT_EQ(demuxEntry(et1)["gate"], sm->intfToGate(et1).value());
}

TEST_F(RoutedIntfTest, WithoutDemultiplexerNothingHappensUntilItArrives) {
  Lumo::Ptr<McastModuleManager> manager;
  {
    ScopedEnv bypass("BYPASS_TXDEMUXER", "1");
    manager = VekL3Mcast::mcastModuleManagerFactory(pair);
  }
  auto sm = makeSm(manager);
  addL3Intf(et1);
  EXPECT_TRUE(sm->intfToGates().empty());

  const std::uint64_t mark = Trace::mark();
  manager->txDemuxerModuleIs("TxDemuxer", 8192, 8192, pair);
  EXPECT_TRUE(Trace::contains(" txDemuxer created", mark));
  EXPECT_TRUE(sm->intfToGate(et1).isValid());
  EXPECT_FALSE(demuxEntry(et1).is_null());
}

TEST_F(RoutedIntfTest, DemultiplexerGateFeedsAnExistingEgressModule) {
  auto egress = Lumo::makePtr<Vek::Module>("Egress_Et1", Vek::VekModule::portOut, 4, 0, 0, 0,
                                           nullptr, pair);
  auto l3Intf = Lumo::makePtr<Vek::L3Intf>(et1);
  l3Intf->egressModuleIs(egress);
  vekcsd->l3IntfIs(l3Intf);
  auto manager = VekL3Mcast::mcastModuleManagerFactory(pair);
  auto sm = makeSm(manager);

  const std::string gate = std::to_string(sm->intfToGate(et1).value());
  EXPECT_EQ(moduleDump("TxDemuxer")["out"][gate]["to"], "Egress_Et1");
}

class ProviderVlanTest : public PipelineFixture {
 protected:
  using VrfId = Vrf::VrfIdMap::VrfId;
  Lumo::Ptr<VekTxDemuxer::TxDemuxerModuleProgrammer> makeProgrammer() {
    auto programmer = Lumo::makePtr<VekTxDemuxer::TxDemuxerModuleProgrammer>(status, demux);
    programmer->hasNotificationActiveIs(true);
    return programmer;
  }
  Json pmsiVlans() { return table("TxDemuxer")["vrfIdToPmsiVlan"]; }

  Lumo::Ptr<Routing::Multicast::MvpnIntfStatus> status =
      Lumo::makePtr<Routing::Multicast::MvpnIntfStatus>();
  Lumo::Ptr<VekTxDemuxer::TxDemuxer> demux =
      VekTxDemuxer::txDemuxerFactory("TxDemuxer", 8192, 8192, pair);
};

// The table following the status from the start and on change is driven by the MPLS
// scenarios; here the entries it must not take.
TEST_F(ProviderVlanTest, ProviderIntfThatIsNoVlanIsRefusedWithAMessage) {
  status->intfIs(VrfId(2), Lanx::VlanIntfId::vlanIdToIntfId(100));
  status->intfIs(VrfId(3), Lanx::VlanIntfId::vlanIdToIntfId(300));
  auto programmer = makeProgrammer();
  const std::uint64_t mark = Trace::mark();
  status->intfIs(VrfId(2), Lanx::IntfId::ethernet(1));
  EXPECT_TRUE(Trace::contains("is no VLAN interface", mark));
  status->intfIs(VrfId(3), Lanx::IntfId());  // the default value means none
  EXPECT_EQ(pmsiVlans(), Json::object());
  EXPECT_EQ(errorCount(), 0u);
}

}  // namespace
}  // namespace PipelineTest
