#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "pipeline/VekL3McastModuleManager.h"
#include "runtime/trace/Trace.h"
#include "tests/pipeline/PipelineFixture.h"

namespace PipelineTest {
namespace {

using namespace VekL3Mcast;
using Lanx::AddressFamily;
using VrfId = Vrf::VrfIdMap::VrfId;

const L3::VrfName red("red");
const Lanx::IntfId et1 = Lanx::IntfId::ethernet(1);
const Lanx::IntfId et2 = Lanx::IntfId::ethernet(2);

class VrfContainerTest : public PipelineFixture {
 protected:
  Lumo::Ptr<McastModuleManager> manager = mcastModuleManagerFactory(pair);

  std::vector<std::string> outLinks(const std::string& module) {
    std::vector<std::string> links;
    const Json out = moduleDump(module)["out"];
    for (const auto& [gate, to] : out.items()) {
      links.push_back(gate + ">" + to["to"].get<std::string>());
    }
    return links;
  }
  bool linked(const std::string& from, const std::string& to) {
    for (const std::string& link : outLinks(from)) {
      if (link.substr(link.find('>') + 1) == to) return true;
    }
    return false;
  }
  // The "from" of each disconnect record after `seq`.
  std::vector<std::string> disconnectsSince(std::uint64_t seq) {
    channel->pump();
    std::vector<std::string> froms;
    for (const auto& entry : channel->commandLog().entriesSince(seq)) {
      if (entry["kind"] == "disconnect") froms.push_back(entry["from"]);
    }
    return froms;
  }
};

// One daemon and one agent side, for runs that must not share anything.
struct World : DataplaneTest::ModelWorld {
  Lumo::Ptr<McastModuleManager> manager = mcastModuleManagerFactory(pair);
};

TEST_F(VrfContainerTest, PimRegisterPathFeedsOnlyTheFibOfItsFamily) {
  manager->createMfibModule(AddressFamily::ipv4, red, VrfId(2), true);
  manager->createPimRegRx(AddressFamily::ipv6, red, group);
  manager->createMcastAnyRxSet(red, VrfId(2), group);
  manager->createIntfModule(red, et1, "et1", false, group);
  manager->createMfibModule(AddressFamily::ipv6, red, VrfId(2), true);

  EXPECT_EQ(outLinks("Mdata_PimRegIpv6_red"), std::vector<std::string>{"1>MfibIpv6red"});
  for (const char* meta : {"Mdata_McastHwFwd_red", "Mdata_McastSwFwd_red",
                           "Mdata_McastSwFwd_PeerLinkOrCore_red", "Mdata_Et1"}) {
    EXPECT_EQ(outLinks(meta), (std::vector<std::string>{"0>MfibIpv4red", "1>MfibIpv6red"}))
        << meta;
  }
  EXPECT_EQ(outLinks("MfibIpv4red"), std::vector<std::string>{"4>TxDemuxer"});
  EXPECT_EQ(outLinks("TxDemuxer"), std::vector<std::string>{"2>Tx_et1"});
  EXPECT_EQ(table("TxDemuxer")["intfToOutGate"][std::to_string(et1.value())]["gate"], 2);
}

TEST_F(VrfContainerTest, TxOnlyIntfIsAnEgressEntryOfEachFibAndNothingMore) {
  manager->createMfibModule(AddressFamily::ipv4, red, VrfId(2), true);
  const std::uint64_t before = logSeq();
  const auto intf = manager->createIntfModule(red, et2, "et2", true, group);
  EXPECT_EQ(logSeq(), before);  // no port, no module, no demultiplexer entry
  const auto mfib = manager->vrf(red)->mfibModule(AddressFamily::ipv4);
  EXPECT_EQ(mfib->intfIdToOutGate(et2), mfib->txDemuxerGateId());

  // Asked again, with the other type, it is the same interface.
  EXPECT_EQ(manager->createIntfModule(red, et2, "et2", false, group), intf);
  EXPECT_EQ(logSeq(), before);

  manager->deleteIntfModule(red, et2, "et2");
  EXPECT_FALSE(mfib->intfIdToOutGate(et2).isValid());
}

TEST_F(VrfContainerTest, FibIsDisconnectedInItsOwnOrderBeforeItGoes) {
  manager->createIntfModule(red, et1, "et1", false, group);
  manager->createMcastAnyRxSet(red, VrfId(2), group);
  manager->createPimRegRx(AddressFamily::ipv4, red, group);
  manager->createMfibModule(AddressFamily::ipv4, red, VrfId(2), true);
  const std::uint64_t before = logSeq();
  manager->deleteMfibModule(AddressFamily::ipv4, red);

  std::vector<std::string> froms = disconnectsSince(before);
  ASSERT_EQ(froms.size(), 6u);
  // PIM register first, then the interface, then the three any-device paths in the set's
  // order, and the link to the demultiplexer last.
  EXPECT_EQ(froms[0], "Mdata_PimRegIpv4_red");
  EXPECT_EQ(froms[1], "Mdata_Et1");
  std::sort(froms.begin() + 2, froms.begin() + 5);
  EXPECT_EQ(std::vector<std::string>(froms.begin() + 2, froms.begin() + 5),
            (std::vector<std::string>{"Mdata_McastHwFwd_red", "Mdata_McastSwFwd_PeerLinkOrCore_red",
                                      "Mdata_McastSwFwd_red"}));
  EXPECT_EQ(froms[5], "MfibIpv4red");
  EXPECT_FALSE(hasModule("MfibIpv4red"));
}

TEST_F(VrfContainerTest, InterfaceDeleteUndoesItsEntriesAndKeepsTheReceiveLink) {
  manager->createMfibModule(AddressFamily::ipv4, red, VrfId(2), true);
  manager->createMfibModule(AddressFamily::ipv6, red, VrfId(2), true);
  manager->createIntfModule(red, et1, "et1", false, group);
  auto container = manager->vrf(red);
  auto intf = container->intf(et1);
  container->disconnectIntfModule(et1);

  EXPECT_TRUE(linked("Rx_et1", "Mdata_Et1"));
  EXPECT_TRUE(outLinks("Mdata_Et1").empty());
  EXPECT_FALSE(linked("TxDemuxer", "Tx_et1"));
  EXPECT_TRUE(table("TxDemuxer")["intfToOutGate"].empty());
  for (const auto& mfib : container->mfibModules()) {
    EXPECT_FALSE(mfib.value->intfIdToOutGate(et1).isValid());
  }
}

TEST_F(VrfContainerTest, ContainerGoesWithItsLastElementOnly) {
  manager->createMfibModule(AddressFamily::ipv4, red, VrfId(2), true);
  manager->createPimRegRx(AddressFamily::ipv4, red, group);
  manager->createMcastAnyRxSet(red, VrfId(2), group);
  manager->createIntfModule(red, et2, "et2", true, group);
  manager->createIgmpV2Module(AddressFamily::ipv4, red, VrfId(2), true, vekcsd);
  manager->vrf(red)->mMplsOutSmIs(Lumo::makePtr<Qel::StateMachine>());

  manager->deleteMfibModule(AddressFamily::ipv4, red);
  manager->deletePimRegRx(AddressFamily::ipv4, red);
  manager->deleteMcastAnyRxSet(red);
  EXPECT_TRUE(manager->vrfHas(red));
  manager->deleteIntfModule(red, et2, "et2");  // neither IGMPv2 nor MPLS keeps it
  EXPECT_FALSE(manager->vrfHas(red));
  EXPECT_TRUE(manager->igmpV2Module());

  // Deletes of what is not there change nothing and make no container.
  const std::uint64_t before = logSeq();
  manager->deleteMfibModule(AddressFamily::ipv6, red);
  manager->deleteIntfModule(red, et1, "et1");
  manager->deletePimRegRx(AddressFamily::ipv6, L3::VrfName("blue"));
  manager->deleteMcastAnyRxSet(L3::VrfName("blue"));
  EXPECT_EQ(logSeq(), before);
  EXPECT_TRUE(manager->vrfs().empty());
}

TEST_F(VrfContainerTest, SocketOfTheVrfIsClosedWithItsContainer) {
  manager->createIntfModule(L3::VrfName::defaultVrf(), et2, "lo", true, group);
  const int fd = manager->vrf(L3::VrfName::defaultVrf())->ioctlFd();
  ASSERT_GE(fd, 0);
  manager->deleteIntfModule(L3::VrfName::defaultVrf(), et2, "lo");
  EXPECT_FALSE(manager->vrfHas(L3::VrfName::defaultVrf()));
  EXPECT_EQ(::fcntl(fd, F_GETFD), -1);
}

TEST_F(VrfContainerTest, WithoutVrfSocketEveryIntfSaysSoAndIsWiredAnyway) {
  const std::uint64_t mark = Trace::mark();
  manager->createMfibModule(AddressFamily::ipv4, L3::VrfName("nosuchvrf"), VrfId(5), true);
  EXPECT_TRUE(Trace::contains("ioctl socket error: ", mark));

  std::uint64_t since = Trace::mark();
  manager->createIntfModule(L3::VrfName("nosuchvrf"), et1, "et1", false, group);
  EXPECT_TRUE(Trace::contains("SIOCGIFFLAGS error: ", since));
  EXPECT_TRUE(linked("Mdata_Et1", "MfibIpv4nosuchvrf"));
  EXPECT_TRUE(linked("TxDemuxer", "Tx_et1"));

  since = Trace::mark();
  manager->deleteIntfModule(L3::VrfName("nosuchvrf"), et1, "et1");
  EXPECT_TRUE(Trace::contains("SIOCGIFFLAGS error: ", since));
  EXPECT_FALSE(hasModule("Mdata_Et1"));
}

class IgmpV2ModuleTest : public VrfContainerTest {};

TEST_F(IgmpV2ModuleTest, Ipv6MakesNothingAndIpv4RegistersTheVrfEvenWithoutContainer) {
  EXPECT_FALSE(manager->createIgmpV2Module(AddressFamily::ipv6, red, VrfId(2), true, vekcsd));
  EXPECT_FALSE(hasModule("IgmpV2"));

  const auto igmp = manager->createIgmpV2Module(AddressFamily::ipv4, red, VrfId(2), false, vekcsd);
  ASSERT_TRUE(igmp);
  EXPECT_FALSE(manager->vrfHas(red));
  const Json m = moduleDump("IgmpV2");
  EXPECT_FALSE(m["init"].contains("oru"));  // false is left out of the message
  EXPECT_EQ(m["table"]["vrfs"], Json({{"red", 2}}));
  const auto pkt = m["counters"]["Igmpv2_Pkt"];
  const auto proto = m["counters"]["Igmpv2_Unknown_Proto"];
  const auto vrf = m["counters"]["Igmpv2_Unknown_Vrf"];
  EXPECT_TRUE(pkt < proto && proto < vrf);
  EXPECT_EQ(m["table"]["counterIds"], Json({{"pktCounter", pkt},
                                            {"unknownProtoCounter", proto},
                                            {"unknownVrfCounter", vrf}}));
  EXPECT_EQ(manager->createIgmpV2Module(AddressFamily::ipv6, red, VrfId(2), true, vekcsd), igmp);
}

// Every receive set feeds the one module while it stands, whichever VRFs it serves: the
// graph then depends on what exists, not on the order of starts and stops.
TEST_F(IgmpV2ModuleTest, EveryReceiveSetFeedsTheModuleUntilItsLastVrfGoes) {
  const L3::VrfName blue("blue"), green("green");
  const auto feeding = [&](const L3::VrfName& vrf) {
    std::vector<std::string> links;
    for (const auto& rx : manager->vrf(vrf)->mcastAnyRxSet()->mcastAnyRx()) {
      for (const std::string& link : outLinks(std::string(rx.value->metaDataModule()->name()))) {
        if (link.ends_with(">IgmpV2")) links.push_back(link);
      }
    }
    return links;
  };
  const std::vector<std::string> allThree = {"2>IgmpV2", "2>IgmpV2", "2>IgmpV2"};

  // red's set stands before the module, green's comes after it; the module serves blue.
  manager->createMcastAnyRxSet(red, VrfId(2), group);
  manager->createIgmpV2Module(AddressFamily::ipv4, blue, VrfId(3), true, vekcsd);
  manager->createMcastAnyRxSet(green, VrfId(4), group);
  EXPECT_EQ(feeding(red), allThree);
  EXPECT_EQ(feeding(green), allThree);

  // red comes and goes; its set feeds the module as before.
  manager->createIgmpV2Module(AddressFamily::ipv4, red, VrfId(2), true, vekcsd);
  manager->deleteIgmpV2Module(AddressFamily::ipv4, red, VrfId(2), vekcsd);
  manager->deleteIgmpV2Module(AddressFamily::ipv6, blue, VrfId(3), vekcsd);
  // A VRF that was never added is still sent; the mirror stays as it was.
  manager->deleteIgmpV2Module(AddressFamily::ipv4, L3::VrfName("gold"), VrfId(5), vekcsd);
  EXPECT_EQ(manager->igmpV2Module()->vrfs().size(), 1u);
  EXPECT_EQ(feeding(red), allThree);

  // The last VRF goes: the sets are parted from the module before it goes.
  const std::uint64_t before = logSeq();
  manager->deleteIgmpV2Module(AddressFamily::ipv4, blue, VrfId(3), vekcsd);
  EXPECT_FALSE(manager->igmpV2Module());
  EXPECT_FALSE(hasModule("IgmpV2"));
  EXPECT_TRUE(feeding(red).empty());
  EXPECT_TRUE(feeding(green).empty());
  EXPECT_TRUE(manager->vrfHas(red));  // IGMPv2 does not decide about the container
  channel->pump();
  std::vector<std::string> kinds;
  for (const auto& entry : channel->commandLog().entriesSince(before)) kinds.push_back(entry["kind"]);
  EXPECT_EQ(kinds, (std::vector<std::string>{"moduleCmd", "disconnect", "disconnect",
                                             "disconnect", "disconnect", "disconnect",
                                             "disconnect", "freeCounters", "destroyModule"}));
  EXPECT_TRUE(model.dump()["errors"].empty());
}

TEST(VrfContainerDeathTest, WiringWithoutDemultiplexerIsAProgrammingError) {
  ScopedEnv bypass("BYPASS_TXDEMUXER", "1");
  World w;
  EXPECT_DEATH(w.manager->createMfibModule(AddressFamily::ipv4, red, VrfId(2), true), "txDemuxer");
  EXPECT_DEATH(w.manager->createIntfModule(red, et1, "et1", true, w.group), "txDemuxer");
}

}  // namespace
}  // namespace PipelineTest
