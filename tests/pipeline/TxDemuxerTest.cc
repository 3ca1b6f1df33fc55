#include <gtest/gtest.h>

#include "pipeline/VekTxDemuxerModule.h"
#include "tests/pipeline/PipelineFixture.h"

namespace PipelineTest {
namespace {

class TxDemuxerTest : public PipelineFixture {
 protected:
  Lumo::Ptr<VekTxDemuxer::TxDemuxer> demux =
      VekTxDemuxer::txDemuxerFactory("TxDemuxer", 8192, 8192, pair);
  const Lanx::IntfId et1 = Lanx::IntfId::ethernet(1);
  const Lanx::IntfId et2 = Lanx::IntfId::ethernet(2);
  static std::string id(Lanx::IntfId intf) { return std::to_string(intf.value()); }
};

TEST_F(TxDemuxerTest, InterfaceEntriesCarryGateAndVlanAndTheLastAddDecides) {
  demux->addIntfToOutGate(et1, Bridging::VlanIdOrNone(), Vek::GateId(2));
  demux->addIntfToOutGate(et2, Bridging::VlanIdOrNone(10), Vek::GateId(3));
  demux->addIntfToOutGate(et1, Bridging::VlanIdOrNone(20), Vek::GateId(4));
  demux->deleteIntfToOutGate(et2);
  demux->deleteIntfToOutGate(Lanx::IntfId::ethernet(9));  // no entry: accepted

  const Json entries = table("TxDemuxer")["intfToOutGate"];
  EXPECT_EQ(entries, Json::parse(R"({")" + id(et1) + R"(": {"gate": 4, "vlan": 20}})"));
  EXPECT_EQ(errorCount(), 0u);
}

}  // namespace
}  // namespace PipelineTest
