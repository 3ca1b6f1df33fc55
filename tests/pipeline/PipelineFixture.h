#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "runtime/toggle/ToggleState.h"
#include "runtime/vek/NamespaceDut.h"
#include "tests/dataplane/ModelFixture.h"

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

// Each test starts on a namespace device with every toggle on.
class PipelineFixture : public ::testing::Test, protected DataplaneTest::ModelWorld {
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
