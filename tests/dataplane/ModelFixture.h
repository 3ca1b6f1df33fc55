#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dataplane/Model.h"
#include "proto/bess.pb.h"
#include "proto/vek.pb.h"
#include "runtime/vek/BessPort.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/GrpcGlobalCmdConfig.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

namespace DataplaneTest {

// 10.1.1.1 and 239.1.1.1 as route messages carry them.
inline const std::string v4Source("\x0a\x01\x01\x01", 4);
inline const std::string v4Group("\xef\x01\x01\x01", 4);

inline vek::pb::MfibRouteArg routeArg(std::string source, std::string group) {
  vek::pb::MfibRouteArg arg;
  arg.set_source(std::move(source));
  arg.set_group(std::move(group));
  return arg;
}

// A port proxy that travels through a command group, as the agent's ports do.
class GroupPort : public Vek::BessPort {
 public:
  GroupPort(const char* name, const char* driver, google::protobuf::Message* arg,
            Lumo::Ptr<Vek::CmdConfigGroup> group)
      : BessPort(name, driver, arg, 0, 0, 0, 0), group_(std::move(group)) {}
  void sendCmd(const Lumo::Ptr<Vek::GrpcCmd>& cmd) override {
    group_->cmdBatchEnq(cmd);
    group_->enqueueVersionInc(1);
  }

 private:
  Lumo::Ptr<Vek::CmdConfigGroup> group_;
};

// The host's set-up: a channel whose far end is the data-plane model with two workers, the
// agent's command group, and the shared data.
struct ModelWorld {
  ModelWorld() {
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

class ModelFixture : public ::testing::Test, protected ModelWorld {
 protected:
  Lumo::Ptr<Vek::Module> module(const char* name, Vek::VekModule::ModuleClass moduleClass,
                                google::protobuf::Message* init = nullptr,
                                std::uint32_t reservedOut = 0) {
    return Lumo::makePtr<Vek::Module>(name, moduleClass, 8192, 8192, 0, reservedOut, init, pair);
  }
  Lumo::Ptr<Vek::Module> mfib(const char* name = "MfibIpv4red") {
    auto* arg = new vek::pb::MfibArg;
    arg->set_vrfname("red");
    arg->set_af(1);
    arg->set_size(1024);
    arg->set_mode(true);
    arg->set_vrfid(2);
    return module(name, Vek::VekModule::mfib, arg, 4);
  }

  void send(const char* moduleName, const char* cmd, google::protobuf::Message* arg) {
    pair->config()->cmdBatchEnq(Vek::moduleCmdFactory(moduleName, cmd, arg, true));
  }
  void sendGroup(google::protobuf::Message* message, Vek::GrpcRequestType type) {
    group->cmdBatchEnq(Lumo::makePtr<Vek::GrpcCmd>(message, type));
    group->enqueueVersionInc(1);
  }
  static vek::pb::MfibRouteArg* route(std::string source, std::string group) {
    return new vek::pb::MfibRouteArg(routeArg(std::move(source), std::move(group)));
  }

  // The error records on the queue, as "module type code msg".
  std::vector<std::string> takeErrors() {
    std::vector<std::string> errors;
    while (auto e = pair->status()->errorQueueDeq()) {
      errors.push_back(fmt::format("{} {} {} {}", e->module(), e->type(), e->code(), e->msg()));
    }
    return errors;
  }
};

}  // namespace DataplaneTest
