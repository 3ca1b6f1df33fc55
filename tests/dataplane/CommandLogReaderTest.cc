#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <variant>

#include "dataplane/CommandLogReader.h"

namespace DataplaneTest {
namespace {

using ::testing::HasSubstr;

// A line that is no command the log could have written gives no record and says why; the
// reason names what is wrong where there is a name for it. (Lines that the log does write
// read back whole: the host's replay of the examples' logs shows it.)
TEST(CommandLogReaderTest, LinesTheLogCannotHaveWrittenAreRefusedWithAReason) {
  const std::pair<std::string, std::string> refused[] = {
      {"", "not a JSON object"},
      {"[1]", "not a JSON object"},
      {R"({"seq":1,"name":"m"})", "no kind"},
      {R"({"seq":1,"kind":"error","module":"m","type":1,"code":5,"msg":"no room"})",
       "kind error is no command"},
      {R"({"seq":1,"kind":"destroyModule","name":"m","class":26})", "class"},
      {R"({"seq":1,"kind":"createModule","name":"m","class":"big"})", "class"},
      {R"({"seq":1,"kind":"connect","from":"a","ogate":-1,"to":"b","igate":0})", "ogate"},
      {R"({"seq":1,"kind":"connect","from":"a","ogate":1.5,"to":"b","igate":0})", "ogate"},
      {R"({"seq":1,"kind":"moduleCmd","module":"m","cmd":"c","arg":{"@type":"type.googleapis.com/vek.pb.NoSuch"}})",
       "NoSuch"},
      {R"({"seq":1,"kind":"groupCmd","group":"g","type":10,"arg":{}})", "argument"},
  };
  Dataplane::CommandLogReader reader;
  for (const auto& [line, reason] : refused) {
    const Dataplane::CommandLogReader::Read read = reader.read(line);
    EXPECT_EQ(read.record, nullptr) << line;
    EXPECT_THAT(read.problem, HasSubstr(reason)) << line;
  }
}

// What the log leaves out comes back as the agent sends it: a module command asks for its
// response, a port command names no group, and an absent argument stays absent.
TEST(CommandLogReaderTest, WhatTheLogLeavesOutComesBackAsTheAgentSendsIt) {
  Dataplane::CommandLogReader reader;
  const auto command =
      reader.read(R"({"seq":4,"kind":"moduleCmd","module":"m","cmd":"c","arg":null})");
  ASSERT_NE(command.record, nullptr) << command.problem;
  const auto& cmd = std::get<Vek::ModuleCmdRecord>(*command.record);
  EXPECT_TRUE(cmd.wantResponse);
  EXPECT_EQ(cmd.cmd->message(), nullptr);

  const auto port = reader.read(R"({"seq":5,"kind":"destroyPort","name":"p"})");
  ASSERT_NE(port.record, nullptr) << port.problem;
  const auto& group = std::get<Vek::GroupCmdRecord>(*port.record);
  EXPECT_TRUE(group.group.str().empty());
  EXPECT_EQ(group.cmd->requestType(), Vek::destroyPortRequest);
}

}  // namespace
}  // namespace DataplaneTest
