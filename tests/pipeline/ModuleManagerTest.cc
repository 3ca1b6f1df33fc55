#include <gtest/gtest.h>

#include "pipeline/VekL3McastModuleManager.h"
#include "runtime/state/PamRxBuf.h"
#include "runtime/trace/Trace.h"
#include "tests/pipeline/PipelineFixture.h"

namespace PipelineTest {
namespace {

using VekL3Mcast::McastModuleManager;

class ModuleManagerTest : public PipelineFixture {};

TEST_F(ModuleManagerTest, ConstructionMakesTheDemultiplexerAndTheReceiveBuffer) {
  const std::uint64_t mark = Trace::mark();
  auto manager = VekL3Mcast::mcastModuleManagerFactory(pair);
  EXPECT_TRUE(Trace::contains(" Creating TxDemuxer module", mark));
  ASSERT_TRUE(manager->txDemuxerModule());

  EXPECT_TRUE(hasModule("TxDemuxer"));
  ASSERT_TRUE(manager->rxBufSize());
  EXPECT_EQ(manager->rxBufSize()->origSize(), 8388608u);
  EXPECT_TRUE(manager->vrfs().empty());
  EXPECT_FALSE(manager->igmpV2Module());
}

TEST_F(ModuleManagerTest, BypassVariableOfAnyValueLeavesTheDemultiplexerOut) {
  ScopedEnv bypass("BYPASS_TXDEMUXER", "");
  auto manager = VekL3Mcast::mcastModuleManagerFactory(pair);
  EXPECT_FALSE(manager->txDemuxerModule());
  EXPECT_FALSE(hasModule("TxDemuxer"));
  EXPECT_TRUE(manager->rxBufSize());  // ports still need it
}

TEST_F(ModuleManagerTest, ResizingKeepsTheBufferThatPortsShare) {
  auto manager = VekL3Mcast::mcastModuleManagerFactory(pair);
  const Lumo::Ptr<Lanx::PamRxBuf const> sharedByPorts = manager->rxBufSize();
  manager->rxBufSizeIs(65536);
  EXPECT_EQ(manager->rxBufSize(), sharedByPorts);
  EXPECT_EQ(sharedByPorts->origSize(), 65536u);
}

TEST(PamRxBufTest, AdjustedSizeIsWholePagesOfAtLeastOne) {
  const struct {
    std::uint32_t orig;
    std::uint32_t adjusted;
  } cases[] = {{8388608, 8388608}, {0, 4096},       {1, 4096},
               {4096, 4096},       {4097, 8192},    {0xffffffff, 0xfffff000}};
  for (const auto& c : cases) {
    EXPECT_EQ(Lanx::PamRxBuf(c.orig).adjustedPamRxBufSize(), c.adjusted) << c.orig;
  }
}

}  // namespace
}  // namespace PipelineTest
