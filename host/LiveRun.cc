#include "host/LiveRun.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cmath>

#include "host/DumpLayout.h"
#include "kernel/KernelError.h"
#include "kernel/NetnsScope.h"

namespace VekHost {

namespace {

// A task run's share of wall time: what the route benchmark runs with.
constexpr double kQuantum = 0.001;

}  // namespace

LiveRun::LiveRun(ScenarioDriver& driver, Kernel::KernelReader& reader, const std::string& app,
                 int workers)
    : driver_(driver), reader_(reader), feed_(app, reader.families()) {
  AgentSettings settings;
  settings.workers = workers;
  settings.realTimeQuantum = kQuantum;
  driver_.configure(settings);
}

void LiveRun::begin() {
  Kernel::NetnsScope inside(reader_.netns());
  const KernelFeed::Update first = feed_.update(reader_.tables(), reader_.tables().takeChanges());
  for (const auto& [change, op] : first.changes) driver_.applyState(change, op);
  driver_.createAgent();
  for (const VrfAf& vrfAf : first.starts) driver_.start(vrfAf);
  started_ = first.starts;
  driver_.settle();
}

LiveRun::Applied LiveRun::waitAndApply(double seconds) {
  Kernel::NetnsScope inside(reader_.netns());
  Applied applied;
  const double wait = std::clamp(seconds, 0.0, kTick);
  pollfd events{reader_.fd(), POLLIN, 0};
  const int ready = ::poll(&events, 1, static_cast<int>(std::lround(wait * 1000)));
  if (ready < 0 && errno != EINTR) throw Kernel::KernelError::fromErrno("waiting for the kernel", errno);
  if (ready > 0) {
    reader_.readPending();
    const auto changes = reader_.tables().takeChanges();
    if (!changes.empty()) applied = apply(feed_.update(reader_.tables(), changes));
  }
  driver_.settle();
  return applied;
}

LiveRun::Applied LiveRun::apply(const KernelFeed::Update& update) {
  Applied applied;
  for (const VrfAf& vrfAf : update.stops) {
    driver_.stop(vrfAf);
    std::erase(started_, vrfAf);
  }
  for (const auto& [change, op] : update.changes) {
    driver_.applyState(change, op);
    (op == StateOp::set ? applied.routesSet : applied.routesRemoved) += change.mroutes.size();
  }
  for (const VrfAf& vrfAf : update.starts) {
    driver_.start(vrfAf);
    started_.push_back(vrfAf);
  }
  return applied;
}

std::vector<std::pair<std::string, std::size_t>> LiveRun::fibRoutes() {
  std::vector<std::pair<std::string, std::size_t>> counts;
  for (const VrfAf& vrfAf : started_) {
    const std::string module = DumpLayout::fibModuleName(vrfAf);
    counts.emplace_back(module, driver_.fibRoute(module, RouteKey{"*", "224.0.0.0"}).routeCount);
  }
  return counts;
}

}  // namespace VekHost
