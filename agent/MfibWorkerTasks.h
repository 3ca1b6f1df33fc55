#pragma once

#include <google/protobuf/any.pb.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "pipeline/FabricTx.h"
#include "pipeline/McastAnyRxSet.h"
#include "pipeline/McastL2VxlanRxSet.h"
#include "pipeline/McastL2VxlanTx.h"
#include "pipeline/PimRegRx.h"
#include "pipeline/RegistrationReplyTable.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/SmSubscriber.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleStatus.h"

namespace VekL3Mcast {

class MfaAgent;

// The worker tasks of the data-plane modules. A module's own task goes under the weighted
// class of the next worker when the module is made; a FIB module registers its no-cache and
// cleanup tasks, the daemon answers with their names and ids, and each task then goes under
// a rate-limiting class of its worker. The daemon's replies are dispatched by their action
// through a table that other parts put their own registrations' actions into.
class MfibWorkerTasks : public Qel::StateMachine {
 public:
  static constexpr std::string_view tcConfigGroupName = "mfaAgentTc";

  explicit MfibWorkerTasks(MfaAgent* agent);
  std::string_view typeName() const override { return "VekL3Mcast::MfibWorkerTasks"; }

  // Follows the response queue of the channel's status; what waits there is taken now.
  void moduleStatusIs(const Lumo::Ptr<Vek::ModuleStatus>& status);
  void handleResp();
  RegistrationReplyTable& registrationReplies() noexcept { return registrationReplies_; }

  // Puts a module's task under the weighted class of the worker that is next in line.
  void attachModuleTask(const Lumo::Ptr<Vek::Module>& module, std::uint32_t taskWeight);
  // Receive modules weigh 128 for hardware-forwarded packets and 512 for the others; the
  // other port modules weigh 512. A missing module is traced and gets no task.
  void attachMcastAnyRxSetTasks(const Lumo::Ptr<McastAnyRxSet>& set);
  void attachMcastVxlanRxSetTasks(const Lumo::Ptr<McastL2VxlanRxSet>& set);
  void attachPimRegRxTasks(const Lumo::Ptr<PimRegRx>& port);
  void attachMcastL2VxlanTxTasks(const Lumo::Ptr<McastL2VxlanTx>& tx);
  void attachFabricTxTasks(const Lumo::Ptr<FabricTx>& tx);
  // The classes of a VRF's tasks stay in the daemon after its stop, and a new start makes
  // the same names again; there is nothing to remove.
  void removeMfibCleanupTc(const std::string& tcName) { (void)tcName; }

  void handleCleanup() { moduleStatusResponseReactor_.isRegisteredIs(false); }

 private:
  struct TaskKind;
  static const TaskKind noCacheTask;
  static const TaskKind cleanupTask;
  // Replies to the registration of the FIB modules' worker tasks, for one worker or all.
  void createMfibTc(const google::protobuf::Any& any, const TaskKind& kind);
  void createMfibTcForAllWorkers(const google::protobuf::Any& any, const TaskKind& kind);
  void attachRxTask(const Lumo::Ptr<Vek::Module>& rxModule, McastRxType type,
                    std::string_view pathKind);
  void attachTxOrRxTask(const Lumo::Ptr<Vek::Module>& module, std::string_view missing);
  // Puts a worker task under its rate-limiting class of that worker.
  void doAttachWorkerTask(std::uint32_t worker, const TaskKind& kind, const std::string& vrf,
                          const std::string& taskName, std::uint32_t taskId);

  // The group the rate-limiting classes go through.
  const Lumo::Ptr<Vek::CmdConfigGroup>& tcConfigGroup();

  MfaAgent* agent_;
  // The reduced agent's group for its classes, and nothing else.
  Lumo::Ptr<Vek::CmdConfigGroup> tcConfigGroup_;
  RegistrationReplyTable registrationReplies_;
  Qel::SmSubscriber<MfibWorkerTasks> moduleStatusResponseReactor_{
      this, &Qel::reactorDispatch<MfibWorkerTasks, Vek::ModuleStatus::responseQueueAttrId,
                                  &MfibWorkerTasks::handleResp>};
};

}  // namespace VekL3Mcast
