#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "pipeline/FabricTx.h"
#include "pipeline/McastAnyRx.h"
#include "pipeline/McastIntf.h"
#include "pipeline/McastL2VxlanRx.h"
#include "pipeline/McastL2VxlanTx.h"
#include "pipeline/McastVpnToggles.h"
#include "pipeline/PimRegRx.h"
#include "pipeline/VlanMetadataModule.h"
#include "runtime/trace/Trace.h"
#include "tests/pipeline/PipelineFixture.h"

namespace PipelineTest {
namespace {

using namespace VekL3Mcast;

constexpr const char* pcapPortType = "type.googleapis.com/bess.pb.PCAPPortArg";

class ReceivePathsTest : public PipelineFixture {
 protected:
  ~ReceivePathsTest() override { toggleToloVekTxForgetForTest(); }

  static Json portInc(const std::string& port) {
    return {{"@type", "type.googleapis.com/bess.pb.PortIncArg"}, {"port", port}};
  }
  static Json portOut(const std::string& port) {
    return {{"@type", "type.googleapis.com/vek.pb.PortOutQosArg"}, {"port", port}};
  }

  Lumo::Ptr<Lanx::PamRxBuf const> rxBuf = Lumo::makePtr<Lanx::PamRxBuf>(8388608);
  const L3::VrfName red{"red"};
};

TEST_F(ReceivePathsTest, TxOnlyPortSendsWithASmallBufferAndHasNoReceiveSide) {
  auto intf = Lumo::makePtr<McastIntf>(red, Lanx::IntfId::ethernet(2), McastIntfType::txOnly);
  intf->createBessPort("et2", group);
  const Json arg = port("et2")["arg"];
  EXPECT_EQ(arg["bufSize"], 30720);
  EXPECT_EQ(arg["txFlag"], true);
  EXPECT_DEATH(intf->createRxModule("et2", pair), "intfType\\(\\) != VekL3Mcast::txOnly\\(\\)");
  EXPECT_DEATH(intf->createMetaDataModule(pair), "intfType\\(\\) != VekL3Mcast::txOnly\\(\\)");
}

// The mark filter of a receive port: the namespace-device override needs both the
// namespace test and the toggle.
TEST_F(ReceivePathsTest, MarkFilterFollowsTheNamespaceDeviceAndTheToggle) {
  struct Case {
    bool namespaceDut;
    bool toggle;
    McastRxType rxType;
    Json filter;  // without anyDevice
  };
  const Json hwFwd = {{"mark", 0x576}, {"mask", 0xFFF}, {"hwFwd", true}};
  const Json hwFwdNs = {{"mark", 0x576}, {"mask", 0xFFF}, {"hwFwd", true}, {"markNsOverride", true}};
  const Json swFwd = {{"mark", 0x576}, {"mask", 0xFFFF}};
  const Json peer = {{"mark", 0x7576}, {"mask", 0xFFFF}};
  const Json peerNs = {{"mark", 0x7576}, {"markNsOverride", true}};
  const Case cases[] = {
      {true, true, McastRxType::mcastHwFwd, hwFwdNs},
      {true, true, McastRxType::mcastSwFwd, swFwd},
      {true, true, McastRxType::mcastSwFwdPeerLinkOrCore, peerNs},
      {true, false, McastRxType::mcastHwFwd, hwFwd},
      {true, false, McastRxType::mcastSwFwdPeerLinkOrCore, peer},
      {false, true, McastRxType::mcastHwFwd, hwFwd},
      {false, true, McastRxType::mcastSwFwd, swFwd},
      {false, true, McastRxType::mcastSwFwdPeerLinkOrCore, peer},
  };
  for (const Case& c : cases) {
    Vek::namespaceDutIs(c.namespaceDut);
    Toggle::overrideIs("ToloVekTx", c.toggle);
    toggleToloVekTxForgetForTest();
    auto anyRx = Lumo::makePtr<McastAnyRx>(red, c.rxType, rxBuf);
    anyRx->createBessPort(group);
    auto fabricRx = Lumo::makePtr<McastL2VxlanRx>(c.rxType, rxBuf);
    fabricRx->createBessPort(group);

    Json anyFilter = c.filter;
    anyFilter["anyDevice"] = true;
    const std::string context =
        fmt::format("ns {} toggle {} {}", c.namespaceDut, c.toggle, c.rxType);
    Json anyState = port(std::string(anyRx->portName()))["state"]["mcastMarkFilter"];
    anyState.erase("@type");
    EXPECT_EQ(anyState, anyFilter) << context;
    Json fabricState = port(std::string(fabricRx->portName()))["state"]["mcastMarkFilter"];
    fabricState.erase("@type");
    EXPECT_EQ(fabricState, c.filter) << context;
  }
}

// A namespace device has no hardware forwarding: the message leaves the flag out while the
// proxy keeps what the path asked for. Other deliberate differences stand in the proxies.
TEST_F(ReceivePathsTest, MetadataProxiesDifferFromTheirMessagesOnPurpose) {
  const std::uint64_t mark = Trace::mark();
  auto hwRx = Lumo::makePtr<McastAnyRx>(red, McastRxType::mcastHwFwd, rxBuf);
  hwRx->createMetaDataModule(Vrf::VrfIdMap::VrfId(2), pair);
  auto fabricRx = Lumo::makePtr<McastL2VxlanRx>(McastRxType::mcastHwFwd, rxBuf);
  fabricRx->createVlanMetadataModule(pair);
  auto pimReg = Lumo::makePtr<PimRegRx>(red, Lanx::AddressFamily::ipv4);
  pimReg->createMetaDataModule(pair);

  EXPECT_TRUE(hwRx->metaDataModule()->mcastHwFwd());
  EXPECT_FALSE(moduleDump("Mdata_McastHwFwd_red")["init"].contains("mcastHwFwd"));
  EXPECT_EQ(hwRx->metaDataModule()->staticSrcIntfId(), 0xFFFFFFFFu);
  EXPECT_FALSE(moduleDump("Mdata_McastHwFwd_red")["init"].contains("staticSrcIntfId"));
  EXPECT_TRUE(fabricRx->vlanMetadataModule()->mcastHwFwd());
  EXPECT_FALSE(moduleDump("VlanMdata_McastHwFwd")["init"].contains("mcastHwFwd"));
  EXPECT_TRUE(pimReg->metaDataModule()->portDeviceAny());
  EXPECT_FALSE(moduleDump("Mdata_PimRegIpv4_red")["init"].contains("portDeviceAny"));

  std::size_t notices = 0;
  for (const auto& record : Trace::recordsSince(mark)) {
    if (record.text.find("not setting mcastHwFwd metadata") != std::string::npos) ++notices;
  }
  EXPECT_EQ(notices, 2u);  // once for each module made on the namespace device
}

TEST_F(ReceivePathsTest, CreatingWhatExistsSendsNothingWhateverTheArguments) {
  auto anyRx = Lumo::makePtr<McastAnyRx>(red, McastRxType::mcastSwFwd, rxBuf);
  anyRx->createBessPort(group);
  anyRx->createRxModule(pair);
  anyRx->createMetaDataModule(Vrf::VrfIdMap::VrfId(2), pair);
  auto intf = Lumo::makePtr<McastIntf>(red, Lanx::IntfId::ethernet(1), McastIntfType::rxAndTx);
  intf->createBessPort("et1", group);
  intf->createRxModule("et1", pair);
  intf->createTxModule("et1", pair);
  const std::uint64_t before = logSeq();

  auto otherGroup = Lumo::makePtr<Vek::CmdConfigGroup>("other");
  anyRx->createBessPort(otherGroup);
  anyRx->createRxModule(pair);
  anyRx->createMetaDataModule(Vrf::VrfIdMap::VrfId(9), pair);
  intf->createBessPort("et9", group);
  intf->createRxModule("et9", pair);
  intf->createTxModule("et9", pair);
  EXPECT_EQ(logSeq(), before);
  EXPECT_EQ(intf->rxModule()->name(), "Rx_et1");
}

TEST_F(ReceivePathsTest, PortLivesWithItsProxyAndCanBeSetUp) {
  auto fabricTx = Lumo::makePtr<FabricTx>(rxBuf);
  fabricTx->createBessPort(group);
  fabricTx->bessPort()->setPortConf();
  EXPECT_EQ(port("fabric_tx")["state"]["adminUp"], true);
  fabricTx->bessPortDel();
  EXPECT_FALSE(dump()["ports"].contains("fabric_tx"));
}

TEST(McastRxPathDeathTest, UnknownReceiveTypeIsAProgrammingError) {
  auto rx = Lumo::makePtr<McastAnyRx>(L3::VrfName("red"), static_cast<McastRxType>(7),
                                      Lumo::makePtr<Lanx::PamRxBuf>(4096));
  EXPECT_DEATH(rx->portName(), "Unsupported rxType");
}

}  // namespace
}  // namespace PipelineTest
