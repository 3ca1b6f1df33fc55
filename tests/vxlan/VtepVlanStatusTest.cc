#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

#include "runtime/dov/SimulationPolicy.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/state/multicast/OismFloodSet.h"
#include "runtime/state/vxlan/MVxlanTepModule.h"
#include "runtime/state/vxlan/VxlanVtepVlanStatus.h"
#include "runtime/trace/Trace.h"
#include "tests/vxlan/VxlanFixture.h"
#include "vxlan/VekMVxlanTepStep.h"
#include "vxlan/VekMVxlanVtepSm.h"

namespace VxlanTest {
namespace {

using Routing::Multicast::Evpn::OismFloodSet;
using VekMVxlan::VtepVlan;
using VekMVxlan::VxlanVtepVlanStatus;

VtepVlan key(const char* vtep, std::uint16_t id) { return VtepVlan{Lanx::IpGenAddr(vtep), vlan(id)}; }

// A hook on every change of the output table.
class OutputWatch : public Qel::NotifieeConstOf<VxlanVtepVlanStatus> {
 public:
  explicit OutputWatch(const Lumo::Ptr<VxlanVtepVlanStatus>& table) {
    notifierIs(table);
    isRegisteredNotifieeIs(true);
  }
  void onAttribute(Qel::AttributeId, const void* changed) override {
    if (onChange) onChange(*static_cast<const VtepVlan*>(changed));
  }
  std::function<void(const VtepVlan&)> onChange;
};

class VtepVlanStatusTest : public ::testing::Test {
 protected:
  VtepVlanStatusTest() {
    Qel::Entity::singletonDelAllForTest();
    table = VekMVxlan::MVxlanTepStep().vxlanVtepVlanStatus();
  }
  ~VtepVlanStatusTest() override { Qel::Entity::singletonDelAllForTest(); }

  void start() {
    sm = Lumo::makePtr<VekMVxlan::VxlanVtepVlanStatusSm>(floodSets, table, scheduler);
    sm->hasNotificationActiveIs(true);
  }
  void settle() { scheduler->runUntilIdle(); }
  void addVtep(std::uint16_t id, const char* vtep) {
    floodSets->floodSetIs(vlan(id))->vtepIs(Lanx::IpGenAddr(vtep));
  }
  std::set<VtepVlan> keys() const {
    std::set<VtepVlan> all;
    for (const auto& member : table->vlanStatuses()) all.insert(member.key);
    return all;
  }

  Lumo::Ptr<OismFloodSet> floodSets = Lumo::makePtr<OismFloodSet>();
  Lumo::Ptr<Dov::TaskScheduler> scheduler = Dov::TaskScheduler::makeSimulation();
  Lumo::Ptr<VxlanVtepVlanStatus> table;
  Lumo::Ptr<VekMVxlan::VxlanVtepVlanStatusSm> sm;
};

// The scan and the reconciliation yield; what changes between their runs, behind or
// ahead of the scan, ends right, and stale keys still go.
TEST_F(VtepVlanStatusTest, ScanAndReconciliationYieldAndMeetChangesOnTheWay) {
  for (std::uint16_t id = 1; id <= 40; ++id) {
    addVtep(id, "10.0.0.1");
    addVtep(id, "10.0.0.2");
    table->vlanStatusIs(key("10.0.0.3", id));  // stale
  }
  scheduler->simulation()->yieldEveryIs(5);
  const auto mark = Trace::mark();
  start();
  EXPECT_TRUE(sm->inputSmScanState().jov_pipeline0Scan);
  // Between two runs of the scan: a VLAN comes, one goes, a member of each kind changes.
  addVtep(41, "10.0.0.4");
  floodSets->floodSetDel(vlan(1));
  addVtep(2, "10.0.0.5");
  floodSets->floodSetIs(vlan(3))->vtepDel(Lanx::IpGenAddr("10.0.0.1"));
  // Between two runs of the reconciliation: a key that it must not take out.
  while (!sm->inputSmScanState().idle) scheduler->runOne();
  scheduler->runOne();
  EXPECT_FALSE(sm->outputState().ready);
  addVtep(42, "10.0.0.3");
  settle();

  std::set<VtepVlan> expected;
  for (std::uint16_t id = 2; id <= 40; ++id) {
    if (id != 3) expected.insert(key("10.0.0.1", id));
    expected.insert(key("10.0.0.2", id));
  }
  expected.insert(key("10.0.0.5", 2));
  expected.insert(key("10.0.0.4", 41));
  expected.insert(key("10.0.0.3", 42));
  EXPECT_EQ(keys(), expected);
  EXPECT_TRUE(Trace::contains("Initial scan yielding for child SM VxlanVtepVlanStatusSm.", mark));
  EXPECT_TRUE(Trace::contains("Yielding in reconciliation processing after processing", mark));
  EXPECT_TRUE(Trace::contains("Deletion scan for reconciliation is done", mark));
}

// A change made while the scan task runs, by a reader of the table, waits for the end of
// that run and is then worked with the state of that moment.
TEST_F(VtepVlanStatusTest, ChangeDuringTheScanRunWaitsForItsEnd) {
  addVtep(10, "10.0.0.7");
  addVtep(10, "10.0.0.8");
  OutputWatch watch(table);
  scheduler->simulation()->yieldEveryIs(1);
  bool done = false;
  watch.onChange = [&](const VtepVlan& changed) {
    if (done || !(changed == key("10.0.0.7", 10))) return;
    done = true;
    floodSets->floodSetIs(vlan(10))->vtepDel(Lanx::IpGenAddr("10.0.0.8"));
    floodSets->floodSetIs(vlan(10))->vtepIs(Lanx::IpGenAddr("10.0.0.9"));
  };
  start();
  settle();
  EXPECT_TRUE(done);
  EXPECT_EQ(keys(), std::set<VtepVlan>({key("10.0.0.7", 10), key("10.0.0.9", 10)}));
}

}  // namespace
}  // namespace VxlanTest
