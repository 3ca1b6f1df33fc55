#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "runtime/toggle/ToggleState.h"
#include "runtime/trace/Trace.h"

namespace {

class ToggleStateTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::path(::testing::TempDir()) /
           ::testing::UnitTest::GetInstance()->current_test_info()->name();
    std::filesystem::create_directories(dir_);
    ::setenv("VEK_TOGGLE_DIR", dir_.c_str(), 1);
  }
  void TearDown() override {
    ::unsetenv("VEK_TOGGLE_DIR");
    Toggle::overrideDelAll();
    std::filesystem::remove_all(dir_);
  }
  void write(const char* file, const std::string& text) { std::ofstream(dir_ / file) << text; }

  std::filesystem::path dir_;
};

TEST_F(ToggleStateTest, ValuesComeFromTheNamedFile) {
  write("Mroute.json", R"({"MfaWcFwd": false, "Other": true})");
  write("MvpnLib.json", R"({"MvpnVek": false})");
  EXPECT_FALSE(getToggleState("MfaWcFwd", "Mroute.json", true));
  EXPECT_TRUE(getToggleState("Other", "Mroute.json", false));
  EXPECT_FALSE(getToggleState("MvpnVek", "MvpnLib.json", true));
  EXPECT_TRUE(getToggleState("MfaWcFwd", "MvpnLib.json", true)) << "not in that file";
  EXPECT_FALSE(getToggleState("MfaWcFwd", "Absent.json", false));
  ::unsetenv("VEK_TOGGLE_DIR");
  EXPECT_TRUE(getToggleState("MfaWcFwd", "Mroute.json", true));
}

TEST_F(ToggleStateTest, BadFilesAndValuesGiveTheDefaultAndATrace) {
  const auto mark = Trace::mark();
  write("Broken.json", "{not json");
  write("List.json", "[true]");
  write("Typed.json", R"({"Flag": "yes"})");
  EXPECT_TRUE(getToggleState("Flag", "Broken.json", true));
  EXPECT_TRUE(getToggleState("Flag", "List.json", true));
  EXPECT_FALSE(getToggleState("Flag", "Typed.json", false));
  EXPECT_TRUE(Trace::contains("is not a JSON object", mark));
  EXPECT_TRUE(Trace::contains("Toggle Flag in", mark));
}

TEST_F(ToggleStateTest, OverrideWinsUntilCleared) {
  write("Mroute.json", R"({"MfaWcFwd": true})");
  Toggle::overrideIs("MfaWcFwd", false);
  EXPECT_FALSE(getToggleState("MfaWcFwd", "Mroute.json", true));
  EXPECT_FALSE(getToggleState("MfaWcFwd", "Elsewhere.json", true));
  Toggle::overrideDel("MfaWcFwd");
  EXPECT_TRUE(getToggleState("MfaWcFwd", "Mroute.json", false));
}

}  // namespace
