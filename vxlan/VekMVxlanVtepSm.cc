#include "vxlan/VekMVxlanVtepSm.h"

#include "runtime/lumo/Assert.h"
#include "runtime/trace/Trace.h"

namespace VekMVxlan {

VxlanVtepVlanStatusSm::VxlanVtepVlanStatusSm(Lumo::Ptr<OismFloodSet const> oismFloodSet,
                                             Lumo::Ptr<VxlanVtepVlanStatus> vxlanVtepVlanStatus,
                                             Lumo::Ptr<Dov::TaskScheduler> scheduler)
    : oismFloodSet_(std::move(oismFloodSet)),
      output_(std::move(vxlanVtepVlanStatus)),
      scheduler_(std::move(scheduler)) {
  QEL_ASSERT(oismFloodSet_ && output_,
             "Pointer SM args cannot be null unless they are marked Optional");
  handleInitialized();
}

VxlanVtepVlanStatusSm::~VxlanVtepVlanStatusSm() {
  hasNotificationActiveIs(false);
  outputTask_.del();
  if (oismFloodSetSm0_) smMemberDel(oismFloodSetSm0_.get());
}

void VxlanVtepVlanStatusSm::handleInitialized() {
  VEK_TRACE(debug, "create non-public arg SMs");
  VEK_TRACE(debug, "create local SMs");
  // The reconciliation task exists before the scan, which may end within its first run.
  outputTask_.is(scheduler_, taskPriority, Lumo::String(outputTaskName));
  oismFloodSetSm0_ = Lumo::makePtr<OismFloodSetSm0>(this, oismFloodSet_, scheduler_);
  smMemberAdd(oismFloodSetSm0_.get());
  oismFloodSetSm0_->hasNotificationActiveIs(hasNotificationActive());
}

void VxlanVtepVlanStatusSm::eventToJov_pipeline0(Bridging::VlanId vlanId,
                                                 const Lanx::IpGenAddr& vtep, bool present) {
  VEK_TRACE(debug, "Line 15: from( oismFloodSet.floodSet[].vtep[] ): vlanId={} vtep={} v={}",
            vlanId, vtep, present);
  const VtepVlan key{vtep, vlanId};
  if (present) {
    VEK_TRACE(debug, "into( vxlanVtepVlanStatus.vlanStatus[ k ] ): inserting k1={}", key);
    // Until the reconciliation is over, every key put in must survive it.
    if (!outputState_.vxlanVtepVlanStatusVlanStatusOutputReady) seen_.insert(key);
    output_->vlanStatusIs(key);
  } else {
    VEK_TRACE(debug, "into( vxlanVtepVlanStatus.vlanStatus[ k ] ): deleting k1={}", key);
    seen_.erase(key);
    output_->vlanStatusDel(key);
  }
}

void VxlanVtepVlanStatusSm::handleInitialScanDone() {
  VEK_TRACE(info, "Initial scan done for child SMs. Now scanning with events triggered.");
  scanState_.jov_pipeline0Scan = false;
  scanState_.idle = true;
  handleVxlanVtepVlanStatusVlanStatusOutputInputReady();
}

void VxlanVtepVlanStatusSm::handleVxlanVtepVlanStatusVlanStatusOutputInputReady() {
  VEK_TRACE(info, "Input scans for vxlanVtepVlanStatusVlanStatusOutput complete");
  outputTask_->scheduleTask();
}

void VxlanVtepVlanStatusSm::handleOutputTaskRun() {
  if (!scanState_.idle) return;  // the task's first run, at its creation
  if (outputState_.vxlanVtepVlanStatusVlanStatusOutputReady) {
    VEK_TRACE(info, "vxlanVtepVlanStatusVlanStatusOutput already ready, not reconciling.");
    return;
  }
  Dov::Task& task = *outputTask_.get();
  if (!reconcileIter_) reconcileIter_.emplace(output_->vlanStatuses().iterator());
  unsigned processed = 0;
  unsigned deleted = 0;
  while (!reconcileIter_->done()) {
    if (processed > 0 && task.taskShouldYield()) {
      VEK_TRACE(info,
                "Yielding in reconciliation processing after processing {} items, including {} "
                "deletions .",
                processed, deleted);
      task.scheduleTask();
      return;
    }
    const VtepVlan key = reconcileIter_->currNodeMaybeStale().key;
    reconcileIter_->advance();
    VEK_TRACE(debug, "Reconciling vxlanVtepVlanStatusVlanStatusOutput: {:}", key);
    if (!seen_.has(key)) {
      output_->vlanStatusDel(key);
      ++deleted;
    }
    ++processed;
  }
  VEK_TRACE(info,
            "Deletion scan for reconciliation is done, last task run processed {} items, "
            "deleting {} items.",
            processed, deleted);
  reconcileIter_.reset();
  seen_.clear();
  outputState_.vxlanVtepVlanStatusVlanStatusOutputReady = true;
  outputState_.ready = true;
}

}  // namespace VekMVxlan
