#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "proto/vek.pb.h"
#include "runtime/vek/ChannelBackend.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/CommandLog.h"
#include "runtime/vek/GrpcGlobalCmdConfig.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"

namespace VekTest {

// A daemon that keeps what it was sent, as log lines, and answers as the test tells it.
class RecordingBackend : public Vek::ChannelBackend {
 public:
  void deliver(const Vek::ChannelRecord& record) override {
    delivered.push_back(Vek::CommandLog::entryOf(record));
    if (answer) answer(record, replies());
  }
  // Answers kept for later are given at the next collection, as a daemon in another
  // process would give them.
  void collectReplies() override {
    auto due = std::move(later);
    later.clear();
    for (auto& answerNow : due) answerNow(replies());
  }
  void flush() override { flushedAt.push_back(delivered.size()); }

  // "kind module-or-name cmd" of each delivered record, for order checks.
  std::vector<std::string> summary() const {
    std::vector<std::string> lines;
    for (const auto& entry : delivered) {
      std::string line = entry["kind"].get<std::string>();
      for (const char* key : {"name", "module", "from", "group", "cmd", "to", "tc", "task"}) {
        if (entry.contains(key)) line += " " + entry[key].get<std::string>();
      }
      lines.push_back(line);
    }
    return lines;
  }

  std::vector<Vek::CommandLog::Entry> delivered;
  std::function<void(const Vek::ChannelRecord&, Vek::ChannelReplySink&)> answer;
  std::vector<std::function<void(Vek::ChannelReplySink&)>> later;
  // How many records had been delivered at each flush.
  std::vector<std::size_t> flushedAt;
};

class ChannelFixture : public ::testing::Test {
 protected:
  ChannelFixture() {
    channel->backendIs(&backend);
    global->cmdConfigGroupIs(group);
  }

  Lumo::Ptr<Vek::Module> module(const char* name, std::uint32_t reservedIn = 0,
                                std::uint32_t reservedOut = 0, std::uint32_t gates = 8) {
    return Lumo::makePtr<Vek::Module>(name, Vek::VekModule::metaData, gates, gates, reservedIn,
                                      reservedOut, nullptr, pair);
  }

  static Lumo::Ptr<Vek::ModuleCmdBase> command(const char* moduleName, const char* cmd) {
    auto* arg = new vek::pb::SizeArg;
    arg->set_size(7);
    return Vek::moduleCmdFactory(moduleName, cmd, arg, true);
  }

  RecordingBackend backend;
  Lumo::Ptr<Vek::CommandChannel> channel = Lumo::makePtr<Vek::CommandChannel>();
  Lumo::Ptr<Vek::ModuleConfigStatusPair> pair = Lumo::makePtr<Vek::ModuleConfigStatusPair>(channel);
  Lumo::Ptr<Vek::GrpcGlobalCmdConfig> global = Lumo::makePtr<Vek::GrpcGlobalCmdConfig>(channel);
  Lumo::Ptr<Vek::CmdConfigGroup> group = Lumo::makePtr<Vek::CmdConfigGroup>("agent");
};

}  // namespace VekTest
