#include <gtest/gtest.h>

#include "pipeline/VekL3McastModuleManager.h"
#include "runtime/state/PamRxBuf.h"
#include "tests/pipeline/PipelineFixture.h"

namespace PipelineTest {
namespace {

using VekL3Mcast::McastModuleManager;

class ModuleManagerTest : public PipelineFixture {};

// The agent-up scenario sees the demultiplexer made; here the receive buffer that the
// ports share, which a resize keeps.
TEST_F(ModuleManagerTest, TheReceiveBufferIsMadeOnceAndKeptThroughAResize) {
  auto manager = VekL3Mcast::mcastModuleManagerFactory(pair);
  const Lumo::Ptr<Lanx::PamRxBuf const> sharedByPorts = manager->rxBufSize();
  ASSERT_TRUE(sharedByPorts);
  EXPECT_EQ(sharedByPorts->origSize(), 8388608u);
  EXPECT_TRUE(manager->vrfs().empty());
  manager->rxBufSizeIs(65536);
  EXPECT_EQ(manager->rxBufSize(), sharedByPorts);
  EXPECT_EQ(sharedByPorts->origSize(), 65536u);
}

TEST_F(ModuleManagerTest, BypassVariableOfAnyValueLeavesTheDemultiplexerOut) {
  ScopedEnv bypass("BYPASS_TXDEMUXER", "");
  auto manager = VekL3Mcast::mcastModuleManagerFactory(pair);
  EXPECT_FALSE(manager->txDemuxerModule());
  EXPECT_FALSE(hasModule("TxDemuxer"));
  EXPECT_TRUE(manager->rxBufSize());  // ports still need it
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
