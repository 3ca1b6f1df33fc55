#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "runtime/lumo/Exception.h"
#include "runtime/trace/Trace.h"

namespace {

// Restores what a test changed of the process's trace settings.
class TraceTest : public ::testing::Test {
 protected:
  void TearDown() override {
    Trace::levelIs(spdlog::level::debug);
    Trace::textLevelIs(spdlog::level::warn);
    Trace::textFileIs("");
    Trace::ringCapacityIs(8192);
    Trace::clockIs({});
  }
};

void tracedHere(int value) { VEK_TRACE(info, "Create PimRegRx( {} )", value); }

TEST_F(TraceTest, RecordsCarryPlaceAndSignatureAndCanBeReadSinceAMark) {
  tracedHere(1);
  const auto mark = Trace::mark();
  tracedHere(2);
  const auto records = Trace::recordsSince(mark);
  ASSERT_EQ(records.size(), 1u);
  const Trace::TraceRecord& record = records.front();
  EXPECT_EQ(record.text, "Create PimRegRx( 2 )");
  EXPECT_EQ(record.level, spdlog::level::info);
  EXPECT_NE(std::string(record.file).find("TraceTest.cc"), std::string::npos);
  EXPECT_GT(record.line, 0);
  EXPECT_NE(std::string(record.function).find("tracedHere(int)"), std::string::npos);
  const std::string line = record.format();
  EXPECT_NE(line.find(" info TraceTest.cc:"), std::string::npos) << line;
  EXPECT_NE(line.find("tracedHere(int): Create PimRegRx( 2 )"), std::string::npos) << line;

  EXPECT_TRUE(Trace::contains("PimRegRx( 1 )"));
  EXPECT_FALSE(Trace::contains("PimRegRx( 1 )", mark));
}

TEST_F(TraceTest, RecordsTakeTheHostsClockWhileItGivesOne) {
  double now = 2.5;
  Trace::clockIs([&now] { return now; });
  const auto mark = Trace::mark();
  tracedHere(3);
  now = 0.000002;
  tracedHere(4);
  Trace::clockIs({});
  tracedHere(5);
  const auto records = Trace::recordsSince(mark);
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[0].format().rfind("sim 2.500000 info TraceTest.cc:", 0), 0u)
      << records[0].format();
  EXPECT_EQ(records[1].format().rfind("sim 0.000002 info ", 0), 0u) << records[1].format();
  EXPECT_FALSE(records[2].simulated);
  EXPECT_NE(records[2].format().substr(0, 4), "sim ") << records[2].format();
}

TEST_F(TraceTest, LevelsBelowTheThresholdAreNeitherFormattedNorKept) {
  Trace::levelIs(spdlog::level::info);
  int formatted = 0;
  auto count = [&formatted] { return ++formatted; };
  const auto mark = Trace::mark();
  VEK_TRACE(debug, "hidden {}", count());
  VEK_TRACE(warn, "shown {}", count());
  EXPECT_EQ(formatted, 1);
  EXPECT_FALSE(Trace::contains("hidden", mark));
  EXPECT_TRUE(Trace::contains("shown 1", mark));
}

TEST_F(TraceTest, RingKeepsTheLastRecords) {
  Trace::ringCapacityIs(3);
  const auto mark = Trace::mark();
  for (int i = 0; i < 5; ++i) VEK_TRACE(info, "ring {}", i);
  const auto records = Trace::recordsSince(mark);
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records.front().text, "ring 2");
  EXPECT_EQ(records.back().sequence, Trace::mark() - 1);
}

// What the text layer writes, and at which level, the trace outcome scenarios check
// through mfa-host; here a file it cannot open.
TEST_F(TraceTest, ATextFileThatCannotBeOpenedIsRefused) {
  EXPECT_THROW(Trace::textFileIs("/nonexistent-dir/trace.log"), Lumo::Exception);
}

TEST(TraceDeathTest, FatalFlushWritesTheRingToStderr) {
  EXPECT_DEATH(
      {
        VEK_TRACE(info, "last words before the fault");
        Trace::fatalFlush();
        std::abort();
      },
      "last words before the fault");
}

}  // namespace
