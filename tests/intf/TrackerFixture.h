#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "intf/VekL3McastIntfSm.h"
#include "pipeline/IntfAllMulti.h"
#include "runtime/dov/SimulationPolicy.h"
#include "runtime/dov/TaskSchedulerRoot.h"
#include "runtime/qel/ActivityManagerConfig.h"
#include "runtime/state/multicast/MulticastIntfsAppDir.h"
#include "runtime/trace/Trace.h"
#include "tests/pipeline/PipelineFixture.h"

namespace IntfTest {

using Lanx::AddressFamily;
using PipelineTest::Json;
using VekL3Mcast::McastIntfModuleSm;

// The tracker on its own, with the inputs the agent hands it, simulated time and the
// data-plane model behind the module manager.
class TrackerFixture : public PipelineTest::PipelineFixture {
 protected:
  TrackerFixture() {
    Dov::TaskSchedulerRoot::schedulerIs(scheduler);
    scheduler->afterEachRunIs([this] { channel->pump(); });
    VekL3Mcast::allMultiObserverIsForTest(
        [this](std::string_view device, bool on) { allMulti.emplace_back(device, on); });
    tracker = Lumo::makePtr<McastIntfModuleSm>(
        manager, vekcsd, group, root4, root6, deviceDir, vlanTable,
        Qel::activityManager()->clock());
    tracker->hasNotificationActiveIs(true);
  }
  ~TrackerFixture() override {
    tracker = nullptr;
    VekL3Mcast::allMultiObserverIsForTest({});
    Qel::Entity::singletonDelAllForTest();
  }

  // A kernel device of the VRF's namespace standing for the interface.
  void device(const L3::VrfName& vrf, const char* intf, const char* name, std::uint32_t ifIndex) {
    deviceDir->deviceVrfIntfStatusDirIs(vrf.nsName())
        ->deviceIntfStatusDirIs(Lumo::String(Interface::DeviceVrfIntfStatusDir::kernelIntfs))
        ->deviceIntfStatusIs(Lanx::IntfId(intf), Interface::DeviceIntfStatus{name, ifIndex, 1});
  }
  // A multicast interface of the VRF and family, as the agent's start follows it.
  void mcast(AddressFamily af, const L3::VrfName& vrf, const char* intf, bool on = true) {
    auto& dir = af == AddressFamily::ipv6 ? appDir6 : appDir4;
    (af == AddressFamily::ipv6 ? root6 : root4)->vrfSmIs(vrf, af, dir);
    if (on) {
      dir->vrfIs(vrf)->multicastIntfIs(Lanx::IntfId(intf));
    } else {
      dir->vrfIs(vrf)->multicastIntfDel(Lanx::IntfId(intf));
    }
  }
  bool tracked(const char* intf) { return vekcsd->mcastIntfHas(Lanx::IntfId(intf)); }
  static std::string id(const char* intf) { return std::to_string(Lanx::IntfId(intf).value()); }

  Lumo::Ptr<Dov::TaskScheduler> scheduler = Dov::TaskScheduler::makeSimulation();
  Lumo::Ptr<VekL3Mcast::McastModuleManager> manager =
      VekL3Mcast::mcastModuleManagerFactory(pair);
  Lumo::Ptr<Routing::Multicast::MulticastIntfsAppDir> appDir4 =
      Lumo::makePtr<Routing::Multicast::MulticastIntfsAppDir>();
  Lumo::Ptr<Routing::Multicast::MulticastIntfsAppDir> appDir6 =
      Lumo::makePtr<Routing::Multicast::MulticastIntfsAppDir>();
  Lumo::Ptr<McastIntfModuleSm::Roots> root4 = Lumo::makePtr<McastIntfModuleSm::Roots>();
  Lumo::Ptr<McastIntfModuleSm::Roots> root6 = Lumo::makePtr<McastIntfModuleSm::Roots>();
  Lumo::Ptr<Interface::VrfDeviceIntfStatusDir> deviceDir =
      Lumo::makePtr<Interface::VrfDeviceIntfStatusDir>("vdisd");
  Lumo::Ptr<IntfVlanId::Table> vlanTable = IntfVlanId::Table::tableIs("intfVlanIdTable");
  Lumo::Ptr<McastIntfModuleSm> tracker;
  std::vector<std::pair<std::string, bool>> allMulti;
  const L3::VrfName red{"red"};
};

}  // namespace IntfTest
