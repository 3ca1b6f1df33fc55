// A run's command log is a faithful account of what the daemon was told: read back line by
// line and handed to a fresh data plane, it writes the same log again and builds the same
// data plane. The examples between them write every kind of line.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "dataplane/CommandLogReader.h"
#include "dataplane/Model.h"
#include "host/LoaderOptions.h"
#include "host/PluginDriver.h"
#include "host/ScenarioLoader.h"
#include "host/ScenarioRunner.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/vek/CommandChannel.h"

namespace VekHost {
namespace {

class CommandLogReplayTest : public ::testing::TestWithParam<const char*> {};

TEST_P(CommandLogReplayTest, ALogReadBackWritesItselfAgainAndBuildsTheSameDataPlane) {
  QelSharedMem::EntityManager::managersDelAllForTest();
  const LoaderOptions names = runtimeLoaderOptions();
  const std::filesystem::path file = std::filesystem::path(VEK_SOURCE_DIR) / "examples" /
                                     (std::string(GetParam()) + ".yaml");
  const LoadResult loaded = ScenarioLoader(names).load(file.string());
  ASSERT_TRUE(loaded.scenario) << loaded.errors.front();
  PluginDriver driver;
  ASSERT_EQ(ScenarioRunner(driver, names.intfId).run(*loaded.scenario).status,
            RunResult::Status::passed);
  const std::vector<nlohmann::json> written = driver.commandsSince(0);

  Dataplane::Model model(static_cast<std::uint16_t>(loaded.scenario->agent.workers));
  const auto channel = Lumo::makePtr<Vek::CommandChannel>();
  channel->backendIs(&model);
  Dataplane::CommandLogReader reader;
  for (const nlohmann::json& line : written) {
    const Dataplane::CommandLogReader::Read read = reader.read(line.dump());
    ASSERT_TRUE(read.record) << line.dump() << ": " << read.problem;
    channel->recordIs(*read.record);
  }
  channel->pump();

  const auto& rewritten = channel->commandLog().entries();
  ASSERT_EQ(rewritten.size(), written.size());
  for (std::size_t i = 0; i < written.size(); ++i) {
    ASSERT_EQ(nlohmann::json(rewritten[i]), written[i]) << "line " << i + 1;
  }
  nlohmann::json ran = driver.dump();
  ran.erase("outputs");
  const nlohmann::json replayed(model.dump());
  EXPECT_TRUE(replayed == ran) << nlohmann::json::diff(ran, replayed).dump();
}

INSTANTIATE_TEST_SUITE_P(Examples, CommandLogReplayTest,
                         ::testing::Values("demo", "evpn-l2", "evpn-l3"));

}  // namespace
}  // namespace VekHost
