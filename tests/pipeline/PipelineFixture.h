#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "dataplane/Model.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/toggle/ToggleState.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/GrpcGlobalCmdConfig.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/NamespaceDut.h"
#include "runtime/vek/VekCommonSmData.h"

namespace PipelineTest {

using Json = nlohmann::ordered_json;

// Sets an environment variable for the life of the object.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : name_(name) { ::setenv(name, value, 1); }
  ~ScopedEnv() { ::unsetenv(name_); }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  const char* name_;
};

// The host's set-up: a channel whose far end is the data-plane model, the agent's command
// group, and the shared data.
struct PipelineWorld {
  PipelineWorld() {
    channel->backendIs(&model);
    global->cmdConfigGroupIs(group);
  }

  Dataplane::Model model{2};
  Lumo::Ptr<Vek::CommandChannel> channel = Lumo::makePtr<Vek::CommandChannel>();
  Lumo::Ptr<Vek::ModuleConfigStatusPair> pair = Lumo::makePtr<Vek::ModuleConfigStatusPair>(channel);
  Lumo::Ptr<Vek::GrpcGlobalCmdConfig> global = Lumo::makePtr<Vek::GrpcGlobalCmdConfig>(channel);
  Lumo::Ptr<Vek::CmdConfigGroup> group = Lumo::makePtr<Vek::CmdConfigGroup>("mfaAgent");
  Lumo::Ptr<Vek::VekCommonSmData> vekcsd = Lumo::makePtr<Vek::VekCommonSmData>(2);
};

// Each test starts on a namespace device with every toggle on.
class PipelineFixture : public ::testing::Test, protected PipelineWorld {
 protected:
  PipelineFixture() {
    Vek::namespaceDutIs(true);
    Toggle::overrideDelAll();
  }
  ~PipelineFixture() override {
    Vek::namespaceDutIs(true);
    Toggle::overrideDelAll();
  }

  // Carries everything queued to the model and returns what it holds.
  Json dump() {
    channel->pump();
    return model.dump();
  }
  Json moduleDump(const std::string& name) { return dump()["modules"][name]; }
  Json table(const std::string& name) { return moduleDump(name)["table"]; }
  Json port(const std::string& name) { return dump()["ports"][name]; }
  // The number of records the channel has carried so far.
  std::uint64_t logSeq() {
    channel->pump();
    return channel->commandLog().lastSeq();
  }
  bool hasModule(const std::string& name) { return dump()["modules"].contains(name); }
  std::size_t errorCount() {
    channel->pump();
    return model.errors().size();
  }
};

}  // namespace PipelineTest
