// Snooped membership and flood sets at scale, on the real-time scheduler (1 ms share).
//
//   vtep_membership [VLANS [PAIRS]]        default: 10000 100000
//
// Membership: VLANS VLANs x 10 groups x 8 tunnel members programmed from a standing
// snooping state, then a burst that replaces every member of every group once (two
// changes per member). The burst must cost one command per group, with its final list.
//
// Flood sets: PAIRS (VLAN, VTEP) pairs over 4000 VLANs scanned at start by the VTEP VLAN status
// machine over a table prefilled with half of the pairs plus as many stale keys, and
// programmed into the encapsulation module's flood-set table.
//
// Printed: CPU time per item, commands sent against the distinct keys changed, the
// longest task run, and the heap each pending key costs.
#include <malloc.h>
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <algorithm>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "runtime/dov/TaskScheduler.h"
#include "runtime/qel/NotifieeConst.h"
#include "runtime/state/McastTunnelIntfId.h"
#include "runtime/state/bridging/IgmpSnoopingStatus.h"
#include "runtime/state/multicast/OismFloodSet.h"
#include "runtime/state/vxlan/MVxlanTepModule.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "vxlan/VekGmpVlanGroupMembershipSm.h"
#include "vxlan/VekL2MVxlanInModule.h"
#include "vxlan/VekMVxlanVtepSm.h"
#include "vxlan/VekOismFloodSetSm.h"

namespace {

constexpr unsigned groupsPerVlan = 10;
constexpr unsigned membersPerGroup = 8;

double cpuNow() {
  timespec ts{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

// Bytes allocated, large blocks that malloc maps on their own included.
std::size_t heapInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// The far end of the channel: counts the commands by name and drops them.
class CommandCounter : public Vek::ChannelBackend {
 public:
  void deliver(const Vek::ChannelRecord& record) override {
    if (const auto* cmd = std::get_if<Vek::ModuleCmdRecord>(&record)) {
      ++byName[std::string(cmd->cmd->cmdName().view())];
    }
  }
  std::size_t take(const std::string& name) {
    const std::size_t count = byName[name];
    byName[name] = 0;
    return count;
  }
  std::map<std::string, std::size_t> byName;
};

// Counts the keys put into and taken out of the VTEP VLAN status.
class TableWatch : public Qel::NotifieeConstOf<VekMVxlan::VxlanVtepVlanStatus> {
 public:
  explicit TableWatch(Lumo::Ptr<VekMVxlan::VxlanVtepVlanStatus> table) {
    notifierIs(std::move(table));
    isRegisteredNotifieeIs(true);
  }
  void onAttribute(Qel::AttributeId, const void* key) override {
    ++(notifier()->vlanStatusHas(*static_cast<const VekMVxlan::VtepVlan*>(key)) ? inserted
                                                                                : deleted);
  }
  std::size_t inserted = 0;
  std::size_t deleted = 0;
};

Lanx::IpGenAddr vtepOf(std::uint32_t index) { return Lanx::IpGenAddr::ipv4(0x0a000000u + index); }
Lanx::IntfId tunnelOf(std::uint32_t index) {
  return Multicast::Tunnel::McastTunnelIntfId::intfId(1, vtepOf(index));
}
Lanx::EthAddr groupMac(unsigned g) {
  return Lanx::EthAddr({0x01, 0x00, 0x5e, 0x01, 0x00, static_cast<std::uint8_t>(g + 1)});
}

struct World {
  World() {
    channel->commandLog().enabledIs(false);
    channel->backendIs(&counter);
    // A run's CPU time is what the thread used between the end of the last pump and the
    // end of the run: on a shared machine wall time mostly measures the other processes.
    scheduler->afterEachRunIs([this] {
      longestRunCpu = std::max(longestRunCpu, cpuNow() - pumpEnd);
      channel->pump();
      pumpEnd = cpuNow();
    });
  }
  // Resets the CPU mark before work that is not a task run (reactors, set-up).
  void runsBegin() { pumpEnd = cpuNow(); }
  void drain() {
    scheduler->runUntilIdle();
    channel->pump();
  }

  CommandCounter counter;
  Lumo::Ptr<Vek::CommandChannel> channel = Lumo::makePtr<Vek::CommandChannel>();
  Lumo::Ptr<Vek::ModuleConfigStatusPair> pair = Lumo::makePtr<Vek::ModuleConfigStatusPair>(channel);
  Lumo::Ptr<VekMVxlan::L2MVxlanIn> module =
      Lumo::makePtr<VekMVxlan::L2MVxlanIn>("L2MVxlanIn", 4, 3, pair);
  Lumo::Ptr<Dov::TaskScheduler> scheduler = Dov::TaskScheduler::makeRealTime(0.001);
  double pumpEnd = 0;
  double longestRunCpu = 0;
};

// One family's snooping state holds at most 4094 VLANs: larger counts take several
// states, each with its machine, all on the one scheduler.
struct SnoopedFamily {
  Lumo::Ptr<Bridging::IgmpSnooping::Status> status;
  Lumo::Ptr<VekL3Mcast::VekGmpVlanGroupMembershipSm> sm;
};

void membership(unsigned vlans) {
  World world;
  std::vector<SnoopedFamily> families;
  std::uint32_t next = 0;  // the next member's VTEP
  for (unsigned made = 0; made < vlans;) {
    auto status = Lumo::makePtr<Bridging::IgmpSnooping::Status>();
    for (unsigned v = 1; v <= Bridging::VlanId::max && made < vlans; ++v, ++made) {
      auto& vlan = *status->vlanStatusIs(Bridging::VlanId(static_cast<std::uint16_t>(v)));
      for (unsigned g = 0; g < groupsPerVlan; ++g) {
        auto& group = *vlan.ethGroupIs(groupMac(g));
        for (unsigned m = 0; m < membersPerGroup; ++m) group.memberIntfIs(tunnelOf(next++));
      }
    }
    families.push_back({status, nullptr});
  }
  const std::uint32_t members = next;
  const std::size_t groups = static_cast<std::size_t>(vlans) * groupsPerVlan;

  double cpu = cpuNow();
  for (std::size_t i = 0; i < families.size(); ++i) {
    auto& family = families[i];
    family.sm = Lumo::makePtr<VekL3Mcast::VekGmpVlanGroupMembershipSm>(
        i % 2 ? Lanx::AddressFamily::ipv6 : Lanx::AddressFamily::ipv4, family.status,
        world.module, world.scheduler);
    family.sm->hasNotificationActiveIs(true);
  }
  world.runsBegin();
  world.drain();
  const double startCpu = cpuNow() - cpu;
  const std::size_t startCommands = world.counter.take("addGmpVlanGroupMember");

  // Every member is replaced by a tunnel to another VTEP: two changes per member.
  const std::size_t heapBefore = heapInUse();
  cpu = cpuNow();
  for (auto& family : families) {
    for (const auto& vlan : family.status->vlanStatuses()) {
      for (const auto& group : vlan.value->ethGroups()) {
        auto& writable = *vlan.value->ethGroupIs(group.key);
        std::vector<Lanx::IntfId> old;
        for (const auto& member : writable.memberIntfs()) old.push_back(member.key);
        for (const Lanx::IntfId intf : old) {
          writable.memberIntfDel(intf);
          writable.memberIntfIs(tunnelOf(next++));
        }
      }
    }
  }
  const double burstCpu = cpuNow() - cpu;
  std::size_t pending = 0;
  for (const auto& family : families) pending += family.sm->vlanEthGroupBacklogCount();
  const double heapPerKey =
      pending ? static_cast<double>(heapInUse() - heapBefore) / static_cast<double>(pending) : 0;
  cpu = cpuNow();
  world.runsBegin();
  world.drain();
  const double drainCpu = cpuNow() - cpu;
  const std::size_t burstCommands = world.counter.take("addGmpVlanGroupMember");
  double longestGroupRun = 0;
  for (const auto& family : families) {
    longestGroupRun =
        std::max(longestGroupRun, family.sm->vlanEthGroupTask()->taskStats().longestRun);
  }

  std::printf("membership: %u VLANs (%zu snooping states) x %u groups x %u tunnel members\n",
              vlans, families.size(), groupsPerVlan, membersPerGroup);
  std::printf("  start:  %zu groups, %zu commands, %.2f us CPU per group\n", groups,
              startCommands, startCpu * 1e6 / static_cast<double>(groups));
  std::printf("  burst:  %u member changes, %.3f us CPU per change in the reactors\n",
              2 * members, burstCpu * 1e6 / (2.0 * members));
  std::printf("          %zu keys pending, %.0f bytes of heap per pending key\n", pending,
              heapPerKey);
  std::printf("  drain:  %zu commands for %zu distinct groups changed (%s), %.2f us CPU each\n",
              burstCommands, groups, burstCommands == groups ? "equal" : "DIFFERENT",
              drainCpu * 1e6 / static_cast<double>(burstCommands ? burstCommands : 1));
  std::printf("  longest task run: %.3f ms CPU (wall %.3f ms, group task %.3f ms)\n",
              world.longestRunCpu * 1e3, world.scheduler->stats().longestRun * 1e3,
              longestGroupRun * 1e3);
}

void floodSets(unsigned wantedPairs) {
  constexpr unsigned vlans = 4000;
  const unsigned vtepsPerVlan = (wantedPairs + vlans - 1) / vlans;
  World world;
  auto input = Lumo::makePtr<Routing::Multicast::Evpn::OismFloodSet>();
  auto table = VekModules::MVxlanTepModule::moduleIs()->vxlanVtepVlanStatus();
  std::size_t pairs = 0;
  std::size_t stale = 0;
  for (unsigned v = 0; v < vlans; ++v) {
    const Bridging::VlanId vlan(static_cast<std::uint16_t>(v + 1));
    auto& set = *input->floodSetIs(vlan);
    for (unsigned t = 0; t < vtepsPerVlan; ++t) {
      const std::uint32_t index = t;
      set.vtepIs(vtepOf(index));
      ++pairs;
      // Half of the pairs stand in the table already, beside as many that are stale.
      if (t % 2 == 0) {
        table->vlanStatusIs(VekMVxlan::VtepVlan{vtepOf(index), vlan});
        table->vlanStatusIs(VekMVxlan::VtepVlan{vtepOf(index + 0x100000), vlan});
        ++stale;
      }
    }
  }
  TableWatch watch(table);

  double cpu = cpuNow();
  auto status = Lumo::makePtr<VekMVxlan::VxlanVtepVlanStatusSm>(input, table, world.scheduler);
  status->hasNotificationActiveIs(true);
  world.runsBegin();
  world.drain();
  const double statusCpu = cpuNow() - cpu;

  const std::size_t heapBefore = heapInUse();
  cpu = cpuNow();
  auto flood = Lumo::makePtr<VekL3Mcast::VekOismFloodSetSm>(world.module, input, world.scheduler);
  flood->hasNotificationActiveIs(true);
  const std::size_t pending = flood->vlanVtepBacklogCount();
  const double heapPerKey =
      pending ? static_cast<double>(heapInUse() - heapBefore) / static_cast<double>(pending) : 0;
  world.runsBegin();
  world.drain();
  const double floodCpu = cpuNow() - cpu;
  const std::size_t commands = world.counter.take("addVlanFloodSetEntry");

  std::printf("flood sets: %zu (VLAN, VTEP) pairs, table prefilled with %zu of them and %zu stale\n",
              pairs, stale, stale);
  std::printf("  status table: %.2f us CPU per pair; %zu keys put in, %zu taken out (%s), %zu held\n",
              statusCpu * 1e6 / static_cast<double>(pairs), watch.inserted, watch.deleted,
              watch.deleted == stale ? "only the stale ones" : "WRONG",
              table->vlanStatuses().size());
  std::printf("  longest wall run: scan %.3f ms, reconciliation %.3f ms\n",
              status->oismFloodSetSm0()->task0()->taskStats().longestRun * 1e3,
              status->outputTask()->taskStats().longestRun * 1e3);
  std::printf("  module flood sets: %zu commands for %zu pairs (%s), %.2f us CPU each\n", commands,
              pairs, commands == pairs ? "equal" : "DIFFERENT",
              floodCpu * 1e6 / static_cast<double>(pairs));
  std::printf("          %zu keys pending at start, %.0f bytes of heap per pending key\n", pending,
              heapPerKey);
  std::printf("  longest task run: %.3f ms CPU (wall %.3f ms)\n", world.longestRunCpu * 1e3,
              world.scheduler->stats().longestRun * 1e3);
}

}  // namespace

int main(int argc, char** argv) {
  Trace::levelIs(Trace::Level::warn);
  const unsigned vlans = argc > 1 ? static_cast<unsigned>(std::strtoul(argv[1], nullptr, 10)) : 10000;
  const unsigned pairs = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : 100000;
  membership(vlans);
  floodSets(pairs);
  return 0;
}
