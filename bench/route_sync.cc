// Route synchronisation at scale: one VRF, one route table of N routes with three outgoing
// interfaces each, the route machine under the real-time scheduler and a channel whose far
// end serialises every module command as the wire would and keeps nothing.
//
//   route_sync [--channel inproc|grpc|both] [N ...]   default: both, 10000 100000 1000000
//
// With grpc the far end is a daemon process of the run's own on a Unix socket, reached
// through the host's daemon link; the CPU figures stay those of the agent thread, and the
// wall time until the daemon has answered every command of the review gives the commands
// per second through the channel.
//
// Figures per N, in ns per route:
//   (a) review: from mfibVrfAdapterIs (which records every key of the table as changed)
//       to the last command of the review handed to the channel;
//   (a2) the second pass over the keys the table's walk recorded, which follows the
//       review by design;
//   (b) changed: every route changed once after the review, the reactors' share of the
//       writes plus the task runs that send them, the least of three rounds;
//   (c) burst: ten changes on each of N/10 keys, which must give N/10 route commands;
//   (d) floor: building and serialising the same N route messages and nothing else.
#include <malloc.h>
#include <sys/resource.h>

#include <time.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "host/DaemonLink.h"
#include "mfib/VekL3MfibModule.h"
#include "mfib/VekL3MfibSm.h"
#include "proto/vek.pb.h"
#include "runtime/dov/TaskScheduler.h"
#include "runtime/state/MfibRoute.h"
#include "runtime/state/MfibStatus.h"
#include "runtime/state/MfibVrfAdapter.h"
#include "runtime/trace/Trace.h"
#include "runtime/vek/ChannelBackend.h"
#include "runtime/vek/CmdConfigGroup.h"
#include "runtime/vek/CommandChannel.h"
#include "runtime/vek/ModuleConfigStatusPair.h"
#include "runtime/vek/VekCommonSmData.h"

namespace {

// The machine is shared: figures are the CPU time of this thread (user and kernel), which
// other processes do not stretch.
struct Clock {
  using time_point = double;
  static double now() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
  }
};
using Routing::Multicast::Fib::IpGenRouteKey;
using Routing::Multicast::Fib::MfibAppType;
using Vash::Multicast::Fib::Route;
using Vash::Multicast::Fib::RouteIntf;
using Vash::Multicast::Fib::Status;

double seconds(double from, double to) { return to - from; }

// Heap in use, small chunks and mapped ones alike.
std::size_t heapInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// The far end: serialises each module command into one reused buffer and answers nothing.
class WireBackend final : public Vek::ChannelBackend {
 public:
  void deliver(const Vek::ChannelRecord& record) override {
    const auto* cmd = std::get_if<Vek::ModuleCmdRecord>(&record);
    if (!cmd) return;
    cmd->cmd->message()->SerializeToString(&wire_);
    bytes += wire_.size();
  }
  std::uint64_t bytes = 0;

 private:
  std::string wire_;
};

// The far end as it is, with the route commands counted on the way.
class CountingBackend final : public Vek::ChannelBackend {
 public:
  explicit CountingBackend(Vek::ChannelBackend& inner) : inner_(inner) {}
  void deliver(const Vek::ChannelRecord& record) override {
    giveSinkOnce();
    if (const auto* cmd = std::get_if<Vek::ModuleCmdRecord>(&record)) {
      // Compared as views of known length: the count must cost the far end next to nothing.
      const std::string_view name = cmd->cmd->cmdName().view();
      if (name == std::string_view("addMroute") || name == std::string_view("deleteMroute")) {
        ++routeCommands;
      }
    }
    inner_.deliver(record);
  }
  void flush() override { inner_.flush(); }
  // The first pump collects before it delivers, and a daemon that is slow to come up has
  // its absence to report by then.
  void collectReplies() override {
    giveSinkOnce();
    inner_.collectReplies();
  }
  std::uint64_t routeCommands = 0;

 private:
  void giveSinkOnce() {
    if (sinkGiven_) return;
    inner_.replySinkIs(&replies());
    sinkGiven_ = true;
  }
  Vek::ChannelBackend& inner_;
  bool sinkGiven_ = false;
};

enum class ChannelKind { inproc, grpc };

double wallNow() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

const Lanx::IntfId iif("Ethernet1");
const Lanx::IntfId oifs[] = {Lanx::IntfId("Ethernet2"), Lanx::IntfId("Ethernet3"),
                             Lanx::IntfId("Ethernet4")};
const Lanx::IntfId otherOif("Ethernet5");

IpGenRouteKey keyOf(std::uint32_t n) {
  return IpGenRouteKey(Lanx::IpGenPrefix(Lanx::IpGenAddr::ipv4(0x0a000000u + n / 64)),
                       Lanx::IpGenPrefix(Lanx::IpGenAddr::ipv4(0xe8000000u + n % 64)));
}

Route routeOf(const IpGenRouteKey& key, Lanx::IntfId lastOif) {
  return Route(key, iif, Route::fastdropFlag,
               {RouteIntf{iif, RouteIntf::incomingFlag},
                RouteIntf{oifs[0], RouteIntf::outgoingFlag},
                RouteIntf{oifs[1], RouteIntf::outgoingFlag},
                RouteIntf{lastOif, RouteIntf::outgoingFlag}});
}

// (d): the same messages, built and serialised, nothing else.
double floorSeconds(std::uint32_t n) {
  std::string wire;
  std::uint64_t bytes = 0;
  const auto start = Clock::now();
  for (std::uint32_t i = 0; i < n; ++i) {
    const IpGenRouteKey key = keyOf(i);
    vek::pb::MfibRouteArg arg;
    const auto source = key.source().addr().rawBytes();
    const auto group = key.group().addr().rawBytes();
    arg.set_source(reinterpret_cast<const char*>(source.data()), source.size());
    arg.set_group(reinterpret_cast<const char*>(group.data()), group.size());
    arg.set_iif(iif.value());
    arg.set_fastdrop(true);
    for (std::uint32_t g = 0; g < 3; ++g) {
      auto* gate = arg.add_gates();
      gate->set_intfid(oifs[g].value());
      gate->set_gate(10 + g);
    }
    arg.SerializeToString(&wire);
    bytes += wire.size();
  }
  const double elapsed = seconds(start, Clock::now());
  if (bytes == 0) std::puts("");  // keeps the loop from being optimised away
  return elapsed;
}

// When the review of all routes ended: the moment `reviewedOnce` is published, right
// after its last command was handed to the channel.
double reviewEnd = 0;
void reviewedOnceDispatch(Lumo::Publisher*, Lumo::Subscriber*, short attributeId, const void*,
                          const void*) noexcept {
  if (attributeId == VekL3Mcast::VekL3MfibSm::kReviewedOnce) reviewEnd = Clock::now();
}

struct Figures {
  double review = 0;
  double secondPass = 0;
  double changed = 0;
  double changedReactors = 0;
  double burst = 0;
  std::uint64_t burstCommands = 0;
  double floor = 0;
  double longestRun = 0;
  double longestPreemptedRun = 0;
  std::uint64_t runs = 0;
  std::uint64_t preemptedRuns = 0;
  std::vector<double> runTimes;  // of the runs not preempted

  // The run time that all but one in a thousand runs stay within.
  double runTimeP999() const {
    if (runTimes.empty()) return 0;
    std::vector<double> sorted = runTimes;
    std::sort(sorted.begin(), sorted.end());
    return sorted[std::min(sorted.size() - 1, sorted.size() * 999 / 1000)];
  }
  double bytesPerPendingKey = 0;
  // grpc only: wall time from the review's start until the daemon answered all of it.
  double reviewAnsweredWall = 0;
  std::uint64_t reviewCommands = 0;
};

Figures run(std::uint32_t n, ChannelKind kind) {
  Figures f;
  WireBackend wire;
  std::unique_ptr<VekHost::DaemonLink> daemon;
  if (kind == ChannelKind::grpc) daemon = std::make_unique<VekHost::DaemonLink>("spawn", 1);
  CountingBackend backend(daemon ? daemon->backend() : static_cast<Vek::ChannelBackend&>(wire));
  auto channel = Lumo::makePtr<Vek::CommandChannel>();
  channel->commandLog().enabledIs(false);
  channel->backendIs(&backend);
  auto pair = Lumo::makePtr<Vek::ModuleConfigStatusPair>(channel);
  auto fib = Lumo::makePtr<VekL3Mcast::MfibAf>("MfibIpv4red", Vek::VekModule::mfib, 8192, 8192,
                                               new vek::pb::MfibArg, pair, L3::VrfName("red"),
                                               Lanx::AddressFamily::ipv4);
  for (std::uint32_t g = 0; g < 3; ++g) fib->intfIdToOutGateIs(oifs[g], Vek::GateId(10 + g));
  fib->intfIdToOutGateIs(otherOif, Vek::GateId(13));
  auto scheduler = Dov::TaskScheduler::makeRealTime(0.001);
  auto sm = VekL3Mcast::vekL3MfibSmFactory(
      L3::VrfName("red"), Lanx::AddressFamily::ipv4, true, fib, pair,
      Lumo::makePtr<Vek::CmdConfigGroup>("mfaAgent"), Lumo::makePtr<Vek::VekCommonSmData>(1),
      scheduler);
  sm->hasNotificationActiveIs(true);
  Lumo::Subscriber reviewWatch(&reviewedOnceDispatch);
  sm->subscriberAdd(&reviewWatch);
  // Runs the task until idle, keeping the longest run in CPU time. A run during which the
  // thread was preempted has its CPU time stretched by the machine's other load (steal on
  // a shared host): it counts apart.
  auto drain = [&] {
    for (;;) {
      rusage before{};
      getrusage(RUSAGE_THREAD, &before);
      const double runStart = Clock::now();
      if (!scheduler->runOne()) break;
      const double runTime = Clock::now() - runStart;
      rusage after{};
      getrusage(RUSAGE_THREAD, &after);
      ++f.runs;
      if (after.ru_nivcsw != before.ru_nivcsw) {
        ++f.preemptedRuns;
        f.longestPreemptedRun = std::max(f.longestPreemptedRun, runTime);
      } else {
        f.longestRun = std::max(f.longestRun, runTime);
        f.runTimes.push_back(runTime);
      }
      channel->pump();
    }
    channel->pump();
  };
  drain();

  auto table = Lumo::makePtr<Status>(MfibAppType::pim, L3::VrfName("red"),
                                     Lanx::AddressFamily::ipv4);
  for (std::uint32_t i = 0; i < n; ++i) table->routeIs(routeOf(keyOf(i), oifs[2]));
  auto adapter = Lumo::makePtr<Routing::Multicast::Fib::MfibVrfAdapter>(
      L3::VrfName("red"), Lanx::AddressFamily::ipv4);
  adapter->mfibVashIs(MfibAppType::pim, table);

  // Everything so far (the module, its gates) answered, so the wall time below is the review's.
  if (daemon) daemon->settle(*channel);

  // (a) The review, from the adapter to the last command.
  const std::uint64_t commandsBeforeReview = backend.routeCommands;
  const double wallStart = wallNow();
  auto start = Clock::now();
  sm->mfibVrfAdapterIs(adapter);
  drain();
  if (!sm->reviewedOnce()) std::fprintf(stderr, "review did not finish\n");
  f.review = seconds(start, reviewEnd);
  f.secondPass = seconds(reviewEnd, Clock::now());
  if (daemon) {
    daemon->settle(*channel);
    f.reviewAnsweredWall = wallNow() - wallStart;
    f.reviewCommands = backend.routeCommands - commandsBeforeReview;
  }
  // The watch only times the review: nothing in the agent subscribes to the machine, and
  // it would otherwise hear of every changed key below.
  sm->subscriberRemove(&reviewWatch);

  // (b) Every route changed once, in three rounds, each a change of every route: the same
  // writes on a table nobody watches give the writer's own share, which is taken off. The
  // least of the rounds on either side: a round the machine slowed would otherwise add its
  // slowness to (b), or take it off as if the agent had been faster. The writes alone cost
  // about as much as the agent's share, so their noise is (b)'s.
  auto unwatched = Lumo::makePtr<Status>(MfibAppType::pim, L3::VrfName("red"),
                                         Lanx::AddressFamily::ipv4);
  for (std::uint32_t i = 0; i < n; ++i) unwatched->routeIs(routeOf(keyOf(i), oifs[2]));
  auto lastOifOfRound = [](int round) { return round % 2 ? oifs[2] : otherOif; };
  constexpr int kRounds = 3;
  double writesAlone = 0;
  for (int round = 0; round < kRounds; ++round) {
    start = Clock::now();
    for (std::uint32_t i = 0; i < n; ++i) {
      unwatched->routeIs(routeOf(keyOf(i), lastOifOfRound(round)));
    }
    const double took = seconds(start, Clock::now());
    writesAlone = round == 0 ? took : std::min(writesAlone, took);
  }
  unwatched.reset();
  for (int round = 0; round < kRounds; ++round) {
    start = Clock::now();
    for (std::uint32_t i = 0; i < n; ++i) table->routeIs(routeOf(keyOf(i), lastOifOfRound(round)));
    const double reactors = seconds(start, Clock::now()) - writesAlone;
    drain();
    const double changed = seconds(start, Clock::now()) - writesAlone;
    f.changedReactors = round == 0 ? reactors : std::min(f.changedReactors, reactors);
    f.changed = round == 0 ? changed : std::min(f.changed, changed);
  }

  // (c) Ten changes on each of N/10 keys between two task runs.
  const std::uint64_t before = backend.routeCommands;
  start = Clock::now();
  for (std::uint32_t i = 0; i < n / 10; ++i) {
    for (int round = 0; round < 10; ++round) {
      table->routeIs(routeOf(keyOf(i), round % 2 ? otherOif : oifs[2]));
    }
  }
  drain();
  f.burst = seconds(start, Clock::now());
  f.burstCommands = backend.routeCommands - before;
  if (daemon) daemon->settle(*channel);

  // Memory of the changed set: N pending keys, made directly.
  const std::size_t heapBefore = heapInUse();
  for (std::uint32_t i = 0; i < n; ++i) {
    sm->changedRouteIs(Routing::Multicast::Fib::MfibVrfDirRouteKey(MfibAppType::pim, keyOf(i)));
  }
  f.bytesPerPendingKey = static_cast<double>(heapInUse() - heapBefore) / n;
  sm->changedRouteDelAll();

  f.floor = std::min({floorSeconds(n), floorSeconds(n), floorSeconds(n)});
  return f;
}

// The better of two runs, figure by figure: the machine is shared, and its noise only ever
// adds.
Figures best(const Figures& a, const Figures& b) {
  Figures f = a;
  f.review = std::min(a.review, b.review);
  f.secondPass = std::min(a.secondPass, b.secondPass);
  f.changed = std::min(a.changed, b.changed);
  f.changedReactors = std::min(a.changedReactors, b.changedReactors);
  f.burst = std::min(a.burst, b.burst);
  f.burstCommands = std::max(a.burstCommands, b.burstCommands);
  f.floor = std::min(a.floor, b.floor);
  f.longestRun = std::max(a.longestRun, b.longestRun);
  f.longestPreemptedRun = std::max(a.longestPreemptedRun, b.longestPreemptedRun);
  f.runs = a.runs + b.runs;
  f.runTimes.insert(f.runTimes.end(), b.runTimes.begin(), b.runTimes.end());
  f.preemptedRuns = a.preemptedRuns + b.preemptedRuns;
  f.reviewAnsweredWall = std::min(a.reviewAnsweredWall, b.reviewAnsweredWall);
  return f;
}

}  // namespace

int main(int argc, char** argv) {
  // A process that holds million-route tables keeps the memory it freed: giving 40 MB
  // back to the kernel and faulting it in again costs milliseconds a time.
  bool keepHeap = true;
  std::vector<std::uint32_t> sizes;
  std::vector<ChannelKind> kinds{ChannelKind::inproc, ChannelKind::grpc};
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--default-malloc") {
      keepHeap = false;
    } else if (arg == "--channel" && i + 1 < argc) {
      const std::string which = argv[++i];
      if (which == "inproc") {
        kinds = {ChannelKind::inproc};
      } else if (which == "grpc") {
        kinds = {ChannelKind::grpc};
      } else if (which != "both") {
        std::fprintf(stderr, "route_sync: --channel takes inproc, grpc or both\n");
        return 2;
      }
    } else {
      sizes.push_back(static_cast<std::uint32_t>(std::atol(argv[i])));
    }
  }
  if (keepHeap) {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
  }
  if (sizes.empty()) sizes = {10'000, 100'000, 1'000'000};
  // Per-route traces are below this level and cost nothing.
  Trace::levelIs(Trace::Level::info);
  Trace::textLevelIs(Trace::Level::warn);

  std::printf("channels: in-process (its far end serialises every module command and keeps "
              "nothing) and grpc (a daemon process of the run's own on a Unix socket, which "
              "applies every command); command log disabled, pumped after each task run\n");
  std::printf("scheduler: real time, 1 ms share per run; traces at info (per-route ones are "
              "debug); malloc: %s\n",
              keepHeap ? "freed memory kept (mmap and trim thresholds 1 GiB)" : "defaults");
  std::printf("times: CPU time of the agent thread, best of two runs; ns per route\n\n");
  std::printf("%-6s %9s %7s %7s %7s %9s %6s %7s %7s %12s %9s %9s\n", "chan", "routes", "(a)", "(a2)", "(b)",
              "(c)/key", "(d)", "(a)/(d)", "(b)/(d)", "(c) commands", "longest", "B/pending");
  for (std::uint32_t n : sizes) {
   for (ChannelKind kind : kinds) {
    const Figures f = best(run(n, kind), run(n, kind));
    std::printf("%-6s ", kind == ChannelKind::grpc ? "grpc" : "inproc");
    const double perRoute = 1e9 / n;
    const std::uint32_t keys = n / 10;
    std::printf("%9u %7.0f %7.0f %7.0f %9.0f %6.0f %7.2f %7.2f %7llu %-4s %7.2fms %9.1f\n", n,
                f.review * perRoute, f.secondPass * perRoute, f.changed * perRoute, f.burst * 1e9 / keys,
                f.floor * perRoute, f.review / f.floor, f.changed / f.floor,
                static_cast<unsigned long long>(f.burstCommands),
                f.burstCommands == keys ? "ok" : "BAD", f.longestRun * 1e3,
                f.bytesPerPendingKey);
    std::printf("%16s reactors' share of (b) %.0f ns; runs: 99.9%% within %.2f ms; %llu of %llu "
                "preempted by the OS and left out of 'longest' (longest of those %.2f ms)\n",
                "", f.changedReactors * perRoute, f.runTimeP999() * 1e3,
                static_cast<unsigned long long>(f.preemptedRuns),
                static_cast<unsigned long long>(f.runs), f.longestPreemptedRun * 1e3);
    if (kind == ChannelKind::grpc) {
      std::printf("%16s review answered by the daemon after %.0f ms wall: %.2f million route "
                  "commands per second through the channel\n",
                  "", f.reviewAnsweredWall * 1e3,
                  static_cast<double>(f.reviewCommands) / f.reviewAnsweredWall / 1e6);
    }
   }
  }
  return 0;
}
