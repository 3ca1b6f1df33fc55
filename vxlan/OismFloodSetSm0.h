#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "runtime/dov/TaskAttribute.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/NestedSmCollection.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/qel/StateMachine.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/VlanId.h"
#include "runtime/state/multicast/OismFloodSet.h"
#include "runtime/state/vxlan/VtepVlan.h"
#include "vxlan/FloodSetSm1.h"
#include "vxlan/ScanBudget.h"

namespace VekMVxlan {

class VxlanVtepVlanStatusSm;

// The reactor on the flood sets: one child per VLAN, and the input scan at start. The scan
// runs in its own task and yields, picking up at its place in the next run; a VLAN that
// comes meanwhile is worked at once and skipped by the scan.
class OismFloodSetSm0 : public Qel::StateMachine,
                        public Qel::NotifieeConstOf<Routing::Multicast::Evpn::OismFloodSet> {
 public:
  using OismFloodSet = Routing::Multicast::Evpn::OismFloodSet;
  using OismVlanFloodSet = Routing::Multicast::Evpn::OismVlanFloodSet;

  static constexpr std::string_view scanTaskName =
      "VekMVxlan::VxlanVtepVlanStatusSm-OismFloodSetSm0InputScanTask0";

  OismFloodSetSm0(VxlanVtepVlanStatusSm* owner, Lumo::Ptr<OismFloodSet const> oismFloodSet,
                  Lumo::Ptr<Dov::TaskScheduler> scheduler);
  ~OismFloodSetSm0() override;
  std::string_view typeName() const override { return "VekMVxlan::OismFloodSetSm0"; }

  VxlanVtepVlanStatusSm* owner() const noexcept { return owner_; }
  Lumo::Ptr<FloodSetSm1> floodSet(Bridging::VlanId vlan) const {
    return HN_FloodSetSm1_.sm(vlan);
  }
  std::size_t floodSetCount() const noexcept { return HN_FloodSetSm1_.size(); }
  bool scanDone() const noexcept { return scanDone_; }
  Dov::Task* task0() const noexcept { return task0_.get(); }

  // Makes the task, whose first run begins the scan at once.
  void handleInitialized() override;
  void onAttribute(Qel::AttributeId id, const void* key) override;

  // A VLAN's flood set came, went or was replaced.
  void handleFloodSet0(Bridging::VlanId vlan);
  void handleTask0Run();
  // While the scan task runs, a member that changes waits for the end of the run, so that
  // no member is worked twice within it. True if the change was put aside.
  bool deferToScan(Bridging::VlanId vlan, const Lanx::IpGenAddr& vtep);

 private:
  void doInputScan0();
  void doDeferred();

  VxlanVtepVlanStatusSm* owner_;
  const Lumo::Ptr<Dov::TaskScheduler> scheduler_;
  Qel::NestedSmCollection<OismFloodSetSm0, FloodSetSm1, &OismVlanFloodSet::vlanId>
      HN_FloodSetSm1_{this};
  Dov::TaskAttribute<OismFloodSetSm0, &OismFloodSetSm0::handleTask0Run> task0_{this};
  std::optional<OismFloodSet::FloodSets::IteratorConst> vlanIter_;
  Lumo::Ptr<FloodSetSm1> scanChild_;
  ScanBudget budget_;
  std::size_t children_ = 0;
  bool scanDone_ = false;
  Qel::HashSet2018<VtepVlan> deferred_;
};

}  // namespace VekMVxlan
