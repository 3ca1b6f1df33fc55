#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "runtime/dov/TaskAttribute.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/multicast/OismFloodSet.h"
#include "runtime/state/vxlan/VtepVlan.h"
#include "runtime/state/vxlan/VxlanVtepVlanStatus.h"
#include "vxlan/OismFloodSetSm0.h"

namespace VekMVxlan {

// Keeps the VTEP VLAN status equal to the flood sets turned round: one key for each VTEP
// and VLAN in whose flood set it stands.
//
// The table outlives the agent, so at start it may hold what a predecessor wrote. The
// input scan puts every key of the flood sets in and remembers which it met; once the
// scan is done, one reconciliation takes out the keys it did not meet. A key that is
// still right is never taken out and put back. Both run in tasks that yield; changes
// that come meanwhile go straight to the table.
class VxlanVtepVlanStatusSm : public Qel::StateMachine {
 public:
  using OismFloodSet = Routing::Multicast::Evpn::OismFloodSet;
  using Keys = Qel::HashSet2018<VtepVlan>;

  static constexpr Dov::TaskPriority taskPriority = 3;
  static constexpr std::string_view outputTaskName =
      "VxlanVtepVlanStatusSm-vxlanVtepVlanStatusVlanStatusOutputTask";

  struct InputSmScanState {
    bool jov_pipeline0Scan = true;  // the input scan is under way
    bool idle = false;              // it is done; changes flow straight through
  };
  struct OutputState {
    bool ready = false;
    bool vxlanVtepVlanStatusVlanStatusOutputReady = false;  // reconciled
  };

  VxlanVtepVlanStatusSm(Lumo::Ptr<OismFloodSet const> oismFloodSet,
                        Lumo::Ptr<VxlanVtepVlanStatus> vxlanVtepVlanStatus,
                        Lumo::Ptr<Dov::TaskScheduler> scheduler);
  ~VxlanVtepVlanStatusSm() override;
  std::string_view typeName() const override { return "VekMVxlan::VxlanVtepVlanStatusSm"; }

  const Lumo::Ptr<VxlanVtepVlanStatus>& vxlanVtepVlanStatus() const noexcept { return output_; }
  const Lumo::Ptr<OismFloodSetSm0>& oismFloodSetSm0() const noexcept { return oismFloodSetSm0_; }
  const InputSmScanState& inputSmScanState() const noexcept { return scanState_; }
  const OutputState& outputState() const noexcept { return outputState_; }
  const Keys& vxlanVtepVlanStatusVlanStatusOutputSeen() const noexcept { return seen_; }
  Dov::Task* outputTask() const noexcept { return outputTask_.get(); }

  void handleInitialized() override;
  // One member of one VLAN's flood set, present or not: its key goes into the table or
  // out of it.
  void eventToJov_pipeline0(Bridging::VlanId vlanId, const Lanx::IpGenAddr& vtep, bool present);
  void handleInitialScanDone();
  void handleVxlanVtepVlanStatusVlanStatusOutputInputReady();
  // The reconciliation, one slice per run.
  void handleOutputTaskRun();

 private:
  const Lumo::Ptr<OismFloodSet const> oismFloodSet_;
  const Lumo::Ptr<VxlanVtepVlanStatus> output_;
  const Lumo::Ptr<Dov::TaskScheduler> scheduler_;
  Keys seen_;
  InputSmScanState scanState_;
  OutputState outputState_;
  std::optional<Keys::IteratorConst> reconcileIter_;
  Dov::TaskAttribute<VxlanVtepVlanStatusSm, &VxlanVtepVlanStatusSm::handleOutputTaskRun>
      outputTask_{this};
  Lumo::Ptr<OismFloodSetSm0> oismFloodSetSm0_;
};

}  // namespace VekMVxlan
