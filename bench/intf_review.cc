// The interface tracker under a burst: N interfaces of 100 VRFs become multicast at once,
// each with a kernel device already in its VRF's namespace. The tracker queues them and its
// review works them off in slices of reviewQuantum (0.5 s); each check drops and remakes
// the interface's McastIntf and maps its ifIndex in the VRF's receive paths. The far end is
// the data-plane model with the command log off.
//
//   intf_review [N ...]        default: 10000 100000
//
// Two runs per N:
//   real time: the real-time scheduler; the time from the burst to the end of the last
//     review (pacing waits included), the CPU time of the agent thread, the slices and the
//     longest slice, against the quantum plus the longest single check seen;
//   simulated: the simulation scheduler, each clock read inside a run costing the mean
//     check time of the real-time run, so that simulated time models the work; the
//     simulated time to converge and the slices.
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "dataplane/Model.h"
#include "intf/VekL3McastIntfSm.h"
#include "runtime/dov/SimulationPolicy.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/dov/TaskSchedulerRoot.h"
#include "runtime/qel/ActivityManagerConfig.h"
#include "runtime/qel/System.h"
#include "runtime/state/multicast/MulticastIntfsAppDir.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/GrpcGlobalCmdConfig.h"

namespace {

using Lanx::AddressFamily;
using VekL3Mcast::McastIntfModuleSm;

constexpr std::uint32_t vrfCount = 100;

double cpuNow() {
  timespec ts{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

struct Figures {
  double converge = 0;      // scheduler seconds from the burst to the last review's end
  double cpu = 0;           // CPU seconds of the whole run, burst included
  std::uint64_t slices = 0;
  double longestSlice = 0;  // scheduler seconds
  double longestCheck = 0;  // wall seconds of the longest single check (real time only)
  std::size_t tracked = 0;
};

// The host's side of one run: channel, model, manager and the tracker's inputs.
class World {
 public:
  World(Lumo::Ptr<Dov::TaskScheduler> scheduler, std::uint32_t n) : scheduler_(scheduler) {
    Dov::TaskSchedulerRoot::schedulerIs(scheduler_);
    channel_->commandLog().enabledIs(false);
    channel_->backendIs(&model_);
    global_->cmdConfigGroupIs(group_);
    scheduler_->afterEachRunIs([this] { channel_->pump(); });
    for (std::uint32_t v = 0; v < vrfCount; ++v) {
      const L3::VrfName vrf("vrf" + std::to_string(v));
      vrfs_.push_back(vrf);
      manager_->createMcastAnyRxSet(vrf, Vrf::VrfIdMap::VrfId(v + 2), group_);
      manager_->createMfibModule(AddressFamily::ipv4, vrf, Vrf::VrfIdMap::VrfId(v + 2), true);
      root4_->vrfSmIs(vrf, AddressFamily::ipv4, appDir4_);
      deviceDir_->deviceVrfIntfStatusDirIs(vrf.nsName())
          ->deviceIntfStatusDirIs(Lumo::String(Interface::DeviceVrfIntfStatusDir::kernelIntfs));
    }
    for (std::uint32_t i = 0; i < n; ++i) {
      const std::uint32_t v = i % vrfCount;
      const Lanx::IntfId intf = intfOf(i);
      deviceDir_->deviceVrfIntfStatusDir(vrfs_[v].nsName())
          ->kernelIntfStatusDir()
          ->deviceIntfStatusIs(intf, {Lumo::String("et" + std::to_string(i)), i + 10, 1});
    }
    channel_->pump();
    tracker_ = Lumo::makePtr<McastIntfModuleSm>(manager_, vekcsd_, group_, root4_, root6_,
                                                 deviceDir_, vlanTable_,
                                                 Qel::activityManager()->clock());
    tracker_->hasNotificationActiveIs(true);
  }
  ~World() {
    tracker_ = nullptr;
    Qel::Entity::singletonDelAllForTest();
  }

  static Lanx::IntfId intfOf(std::uint32_t i) {
    return Lanx::IntfId::ethernet(static_cast<std::uint16_t>(1 + i / 1000),
                                  static_cast<std::uint16_t>(1 + i % 1000));
  }

  // Every interface becomes multicast; the reactors only queue.
  void burst(std::uint32_t n) {
    for (std::uint32_t i = 0; i < n; ++i) {
      appDir4_->vrfIs(vrfs_[i % vrfCount])->multicastIntfIs(intfOf(i));
    }
  }
  bool converged() const {
    return tracker_->changedVrfIntfs(AddressFamily::ipv4).empty() &&
           tracker_->changedVrfIntfs(AddressFamily::ipv6).empty();
  }
  const Lumo::Ptr<McastIntfModuleSm>& tracker() const { return tracker_; }
  std::size_t tracked() const { return vekcsd_->mcastIntfs().size(); }

 private:
  Lumo::Ptr<Dov::TaskScheduler> scheduler_;
  Dataplane::Model model_{2};
  Lumo::Ptr<Vek::CommandChannel> channel_ = Lumo::makePtr<Vek::CommandChannel>();
  Lumo::Ptr<Vek::ModuleConfigStatusPair> pair_ =
      Lumo::makePtr<Vek::ModuleConfigStatusPair>(channel_);
  Lumo::Ptr<Vek::GrpcGlobalCmdConfig> global_ = Lumo::makePtr<Vek::GrpcGlobalCmdConfig>(channel_);
  Lumo::Ptr<Vek::CmdConfigGroup> group_ = Lumo::makePtr<Vek::CmdConfigGroup>("mfaAgent");
  Lumo::Ptr<Vek::VekCommonSmData> vekcsd_ = Lumo::makePtr<Vek::VekCommonSmData>(2);
  Lumo::Ptr<VekL3Mcast::McastModuleManager> manager_ =
      VekL3Mcast::mcastModuleManagerFactory(pair_);
  Lumo::Ptr<Routing::Multicast::MulticastIntfsAppDir> appDir4_ =
      Lumo::makePtr<Routing::Multicast::MulticastIntfsAppDir>();
  Lumo::Ptr<McastIntfModuleSm::Roots> root4_ = Lumo::makePtr<McastIntfModuleSm::Roots>();
  Lumo::Ptr<McastIntfModuleSm::Roots> root6_ = Lumo::makePtr<McastIntfModuleSm::Roots>();
  Lumo::Ptr<Interface::VrfDeviceIntfStatusDir> deviceDir_ =
      Lumo::makePtr<Interface::VrfDeviceIntfStatusDir>("vdisd");
  Lumo::Ptr<IntfVlanId::Table> vlanTable_ = IntfVlanId::Table::tableIs("intfVlanIdTable");
  std::vector<L3::VrfName> vrfs_;
  Lumo::Ptr<McastIntfModuleSm> tracker_;
};

Figures realTimeRun(std::uint32_t n) {
  auto scheduler = Dov::TaskScheduler::makeRealTime();
  World world(scheduler, n);
  Figures figures;
  const double cpuStart = cpuNow();
  const double start = Qel::System::currentTime();
  world.burst(n);
  while (!world.converged() || scheduler->pending()) {
    if (scheduler->runOne()) continue;
    const auto due = scheduler->nextTimerDue();
    if (!due) break;
    const double wait = *due - Qel::System::currentTime();
    if (wait > 0) std::this_thread::sleep_for(std::chrono::duration<double>(wait));
  }
  figures.converge = Qel::System::currentTime() - start;
  figures.cpu = cpuNow() - cpuStart;
  figures.slices = world.tracker()->reviewSlices();
  figures.longestSlice = world.tracker()->longestReviewSlice();
  figures.longestCheck = world.tracker()->longestReviewStep();
  figures.tracked = world.tracked();
  return figures;
}

Figures simulatedRun(std::uint32_t n, double readCost) {
  auto scheduler = Dov::TaskScheduler::makeSimulation();
  World world(scheduler, n);
  scheduler->simulation()->readCostIs(readCost);
  Figures figures;
  const double cpuStart = cpuNow();
  const double start = scheduler->currentTime();
  world.burst(n);
  scheduler->settle(3600);
  figures.converge = scheduler->currentTime() - start;
  figures.cpu = cpuNow() - cpuStart;
  figures.slices = world.tracker()->reviewSlices();
  figures.longestSlice = world.tracker()->longestReviewSlice();
  figures.tracked = world.tracked();
  return figures;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::uint32_t> sizes;
  for (int i = 1; i < argc; ++i) sizes.push_back(static_cast<std::uint32_t>(std::atol(argv[i])));
  if (sizes.empty()) sizes = {10000, 100000};
  // Traces go to the in-memory ring as in the agent; the text layer is off, as the failed
  // flag changes (there are no such namespaces here) would print two lines a check.
  Trace::levelIs(spdlog::level::info);
  Trace::textLevelIs(spdlog::level::off);
  std::printf("%8s | %-9s | %10s %9s | %6s | %9s %9s | %s\n", "intfs", "clock", "converge",
              "cpu", "slices", "longest", "check", "tracked");
  for (std::uint32_t n : sizes) {
    const Figures real = realTimeRun(n);
    const double quantum = McastIntfModuleSm::defaultReviewQuantum;
    std::printf("%8u | %-9s | %9.3fs %8.3fs | %6llu | %8.3fs %7.1fus | %zu%s\n", n, "real",
                real.converge, real.cpu, static_cast<unsigned long long>(real.slices),
                real.longestSlice, real.longestCheck * 1e6, real.tracked,
                real.longestSlice <= quantum + real.longestCheck ? "  (slice ok)"
                                                                 : "  (slice over budget)");
    // One clock read per check inside a review: a read costs one check's mean time.
    const double meanCheck = real.cpu / n;
    const Figures sim = simulatedRun(n, meanCheck);
    std::printf("%8u | %-9s | %9.3fs %8.3fs | %6llu | %8.3fs %9s | %zu\n", n, "simulated",
                sim.converge, sim.cpu, static_cast<unsigned long long>(sim.slices),
                sim.longestSlice, "", sim.tracked);
  }
  return 0;
}
