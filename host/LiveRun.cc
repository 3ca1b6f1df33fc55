#include "host/LiveRun.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cmath>

#include "kernel/KernelError.h"

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
  const KernelFeed::Update first = feed_.update(reader_.tables(), reader_.tables().takeChanges());
  for (const auto& [change, op] : first.changes) driver_.applyState(change, op);
  driver_.createAgent();
  for (const VrfAf& vrfAf : first.starts) driver_.start(vrfAf);
  driver_.settle();
}

void LiveRun::waitAndApply(double seconds) {
  const double wait = std::clamp(seconds, 0.0, kTick);
  pollfd events{reader_.fd(), POLLIN, 0};
  const int ready = ::poll(&events, 1, static_cast<int>(std::lround(wait * 1000)));
  if (ready < 0 && errno != EINTR) throw Kernel::KernelError::fromErrno("waiting for the kernel", errno);
  if (ready > 0) {
    reader_.readPending();
    const auto changes = reader_.tables().takeChanges();
    if (!changes.empty()) apply(feed_.update(reader_.tables(), changes));
  }
  driver_.settle();
}

void LiveRun::apply(const KernelFeed::Update& update) {
  for (const VrfAf& vrfAf : update.stops) driver_.stop(vrfAf);
  for (const auto& [change, op] : update.changes) driver_.applyState(change, op);
  for (const VrfAf& vrfAf : update.starts) driver_.start(vrfAf);
}

}  // namespace VekHost
