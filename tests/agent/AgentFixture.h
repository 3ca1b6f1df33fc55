#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "agent/VekMfaAgent.h"
#include "dataplane/Model.h"
#include "host/CentralStateStore.h"
#include "plugin/MfaAgentEntryPoints.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/dov/TaskSchedulerRoot.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/Entity.h"
#include "runtime/sharedmem/EntityManager.h"
#include "runtime/state/SharedMemName.h"
#include "runtime/toggle/ToggleState.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/NamespaceDut.h"

namespace AgentTest {

using Json = nlohmann::ordered_json;
using Lanx::AddressFamily;

// The hosting agent's world for one test: simulated time, the channel to the data-plane
// model, the shared data and a fresh central state with every path the agent reads.
class AgentFixture : public ::testing::Test {
 protected:
  AgentFixture() {
    Dov::TaskSchedulerRoot::schedulerIs(Dov::TaskScheduler::makeSimulation());
    channel->backendIs(&model);
    Vek::namespaceDutIs(true);
    Toggle::overrideDelAll();
  }
  ~AgentFixture() override {
    agent = nullptr;
    state.reset();
    QelSharedMem::EntityManager::managersDelAllForTest();
    Qel::Entity::singletonDelAllForTest();
    Toggle::overrideDelAll();
  }

  Lumo::Ptr<VekL3Mcast::MfaAgent> makeAgent(bool oru = true) {
    const VekMfaAgentArgs args{state->entityManager(), pair, global, vekcsd,
                               vekcsd->managementSm(), vrfIds, oru};
    VekL3Mcast::MfaAgent* made = mfaAgentFactory(&args);
    EXPECT_NE(made, nullptr);
    agent = made;
    if (made) made->deleteRef();  // the Ptr holds the factory's reference now
    return agent;
  }
  // Carries what is queued to the model and gives what it holds.
  Json dump() {
    channel->pump();
    return model.dump();
  }
  std::vector<Json> commandsSince(std::uint64_t seq) {
    channel->pump();
    return channel->commandLog().entriesSince(seq);
  }
  // "mount <path> <type>" or "unmount <path>", one per record of the shared-memory log.
  std::vector<std::string> mountLog() const {
    std::vector<std::string> lines;
    for (const auto& record : state->sharedMem()->mountLogForTest()) {
      lines.push_back(record.event == QelSharedMem::MountEvent::mount
                          ? "mount " + record.path + " " + record.typeName
                          : "unmount " + record.path);
    }
    return lines;
  }
  std::vector<std::string> tracesSince(std::uint64_t mark) const {
    std::vector<std::string> texts;
    for (const auto& record : Trace::recordsSince(mark)) texts.push_back(record.text);
    return texts;
  }

  Dataplane::Model model{2};
  Lumo::Ptr<Vek::CommandChannel> channel = Lumo::makePtr<Vek::CommandChannel>();
  Lumo::Ptr<Vek::ModuleConfigStatusPair> pair = Lumo::makePtr<Vek::ModuleConfigStatusPair>(channel);
  Lumo::Ptr<Vek::GrpcGlobalCmdConfig> global = Lumo::makePtr<Vek::GrpcGlobalCmdConfig>(channel);
  Lumo::Ptr<Vek::VekCommonSmData> vekcsd = Lumo::makePtr<Vek::VekCommonSmData>(2);
  Lumo::Ptr<VrfNameToIdCollection> vrfIds = Lumo::makePtr<VrfNameToIdCollection>();
  std::unique_ptr<CentralStateStore> state =
      std::make_unique<CentralStateStore>(Lanx::sharedMemManagerName);
  Lumo::Ptr<VekL3Mcast::MfaAgent> agent;
};

}  // namespace AgentTest
