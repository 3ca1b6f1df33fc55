// Convergence: whatever order the inputs of the agent come in, and whatever came and went
// in between, the data plane ends up as a fresh agent builds it from the final state alone.
//
// Each case draws a final state (VRFs, multicast interfaces, kernel limits, routes of several
// applications) and the VRFs and families the hosting agent has started. The events that lead
// there are cut into chains whose order matters (a stray route is set before it is removed,
// a stop comes after its start); a random interleaving of the chains, with settles in between,
// is one order. Runs several orders per case through the host's own driver.
//
// Faults: in one more order per case the daemon refuses one module command in the middle
// of the history (one the same order sent without faults), and a restart later rebuilds
// what the refusal left wrong. The refusal is logged and not retried, so the data plane
// must again end as a fresh agent builds it.
//
// VEK_PROPERTY_CASES sets the number of cases; VEK_PROPERTY_SEED the first seed.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "host/PluginDriver.h"
#include "runtime/sharedmem/EntityManager.h"

namespace VekHost {
namespace {

#ifdef VEK_SANITIZED_BUILD
constexpr int defaultCases = 12;
#else
constexpr int defaultCases = 150;
#endif
constexpr int ordersPerCase = 3;

const std::vector<std::string> vrfNames = {"default", "red", "blue"};
const std::vector<std::string> intfNames = {"Ethernet1", "Ethernet2", "Ethernet3", "Ethernet4"};
const std::vector<std::string> appNames = {"pim", "static", "igmp"};

struct Event {
  enum class Kind { set, remove, start, stop, restart, settle, failNext } kind;
  StateChange change;
  VrfAf vrfAf;
  std::string text;
  FailNextStep failure = {};
};
using Chain = std::vector<Event>;

Event setEvent(StateChange change, std::string text) {
  return {Event::Kind::set, std::move(change), {}, "set " + std::move(text)};
}
Event removeEvent(StateChange change, std::string text) {
  return {Event::Kind::remove, std::move(change), {}, "remove " + std::move(text)};
}
Event startEvent(const VrfAf& vrfAf) {
  return {Event::Kind::start, {}, vrfAf, "start " + vrfAf.vrf + "/" + std::string(afName(vrfAf.af))};
}
Event stopEvent(const VrfAf& vrfAf) {
  return {Event::Kind::stop, {}, vrfAf, "stop " + vrfAf.vrf + "/" + std::string(afName(vrfAf.af))};
}

// One case: the final world and the chains of events that reach it.
class Case {
 public:
  explicit Case(unsigned seed) : rng_(seed) { draw(); }

  StateChange initial;     // present before the agent is made, in every run
  StateChange finalState;  // the rest of the final state, as events
  std::vector<VrfAf> started;
  std::vector<Chain> chains;

  // A random interleaving of the chains, with settles between some events.
  std::vector<Event> order(unsigned seed) const {
    std::mt19937 rng(seed);
    std::vector<std::size_t> next(chains.size(), 0);
    std::vector<Event> events;
    for (;;) {
      std::vector<std::size_t> open;
      for (std::size_t c = 0; c < chains.size(); ++c) {
        if (next[c] < chains[c].size()) open.push_back(c);
      }
      if (open.empty()) break;
      const std::size_t c = open[rng() % open.size()];
      events.push_back(chains[c][next[c]++]);
      if (rng() % 4 == 0) events.push_back({Event::Kind::settle, {}, {}, "settle"});
    }
    return events;
  }

 private:
  template <typename T>
  const T& pick(const std::vector<T>& from) {
    return from[rng_() % from.size()];
  }
  bool chance(unsigned percent) { return rng_() % 100 < percent; }

  Mroute drawRoute(const VrfAf& vrfAf) {
    const bool v6 = vrfAf.af == Af::ipv6;
    const unsigned group = rng_() % 6;
    Mroute route;
    route.table = {vrfAf, pick(appNames)};
    route.key.group = v6 ? "ff0e::" + std::to_string(group + 1) : "239.1.1." + std::to_string(group);
    route.key.source = chance(30) ? "*" : v6 ? "2001:db8::1" : "10.0.0.1";
    route.iif = pick(intfNames);
    for (const std::string& intf : intfNames) {
      if (intf != route.iif && chance(40)) route.oifs.push_back(intf);
    }
    route.flags.fastdrop = chance(20);
    return route;
  }

  void draw() {
    initial.vrfs = {{"default", 1}, {"red", 2}, {"blue", 3}};
    initial.bridgeMac = "00:1c:73:aa:bb:cc";
    for (const std::string& vrf : vrfNames) {
      for (Af af : {Af::ipv4, Af::ipv6}) {
        const VrfAf vrfAf{vrf, af};
        if (chance(60)) {
          started.push_back(vrfAf);
          chains.push_back({startEvent(vrfAf)});
        }
        drawInterfaces(vrfAf);
        if (chance(30)) drawKernelLimits(vrfAf);
        for (unsigned n = rng_() % 5; n > 0; --n) drawFinalRoute(vrfAf);
        if (chance(25)) drawStrayRoute(vrfAf);
        if (chance(15)) drawStrayStart(vrfAf);
      }
    }
    if (chance(30)) chains.push_back({{Event::Kind::restart, {}, {}, "restart"}});
  }

  void drawInterfaces(const VrfAf& vrfAf) {
    for (const std::string& intf : intfNames) {
      if (!chance(50)) continue;
      StateChange change;
      change.multicastIntfs[vrfAf.af][vrfAf.vrf] = {intf};
      finalState.multicastIntfs[vrfAf.af][vrfAf.vrf].push_back(intf);
      chains.push_back({setEvent(change, "intf " + intf + " " + vrfAf.vrf)});
    }
    // An interface that comes and goes again.
    if (chance(20)) {
      StateChange change;
      change.multicastIntfs[vrfAf.af][vrfAf.vrf] = {"Ethernet9"};
      chains.push_back({setEvent(change, "intf Ethernet9 " + vrfAf.vrf),
                        removeEvent(change, "intf Ethernet9 " + vrfAf.vrf)});
    }
  }

  void drawKernelLimits(const VrfAf& vrfAf) {
    StateChange change;
    change.kernelMfibConfig[vrfAf.af][vrfAf.vrf] = {static_cast<uint32_t>(rng_() % 500 + 1),
                                                    static_cast<uint32_t>(rng_() % 9 + 1)};
    finalState.kernelMfibConfig[vrfAf.af][vrfAf.vrf] = change.kernelMfibConfig[vrfAf.af][vrfAf.vrf];
    Chain chain;
    if (chance(30)) {
      StateChange earlier;
      earlier.kernelMfibConfig[vrfAf.af][vrfAf.vrf] = {7, 7};
      chain.push_back(setEvent(earlier, "limits " + vrfAf.vrf));
    }
    chain.push_back(setEvent(change, "limits " + vrfAf.vrf));
    chains.push_back(chain);
  }

  // Each route key has one final route per VRF and family; another application may have
  // held it first (the route moves), or the same table held another form of it.
  void drawFinalRoute(const VrfAf& vrfAf) {
    const Mroute route = drawRoute(vrfAf);
    for (const Mroute& present : finalState.mroutes) {
      if (present.table.vrfAf == vrfAf && present.key == route.key) return;
    }
    finalState.mroutes.push_back(route);
    const std::string text = "route " + route.key.text() + " " + vrfAf.vrf + "/" +
                             std::string(afName(vrfAf.af)) + " ";
    StateChange change;
    change.mroutes.push_back(route);
    Chain chain;
    if (chance(30)) {
      StateChange earlier;
      earlier.mroutes.push_back(drawRoute(vrfAf));
      earlier.mroutes.back().key = route.key;
      earlier.mroutes.back().table.app = route.table.app;
      chain.push_back(setEvent(earlier, text + route.table.app + " first form"));
    }
    chain.push_back(setEvent(change, text + route.table.app));
    if (chance(30)) {
      StateChange moved;
      moved.mroutes.push_back(drawRoute(vrfAf));
      moved.mroutes.back().key = route.key;
      if (moved.mroutes.back().table.app != route.table.app) {
        const std::string from = moved.mroutes.back().table.app;
        chain.insert(chain.begin(), setEvent(moved, text + from));
        chain.push_back(removeEvent(moved, text + from));
      }
    }
    chains.push_back(chain);
  }

  // A route that comes and goes; if it shares a final route's key and app it is skipped.
  void drawStrayRoute(const VrfAf& vrfAf) {
    Mroute route = drawRoute(vrfAf);
    route.key.group = vrfAf.af == Af::ipv6 ? "ff0e::99" : "239.9.9.9";
    StateChange change;
    change.mroutes.push_back(route);
    const std::string text = "stray route " + vrfAf.vrf + "/" + std::string(afName(vrfAf.af));
    chains.push_back({setEvent(change, text), removeEvent(change, text)});
  }

  // The hosting agent starts a VRF and family and stops it again, or stops and restarts
  // one that ends started.
  void drawStrayStart(const VrfAf& vrfAf) {
    const bool ends = std::find(started.begin(), started.end(), vrfAf) != started.end();
    if (ends) {
      chains.push_back({stopEvent(vrfAf), startEvent(vrfAf)});
    } else {
      chains.push_back({startEvent(vrfAf), stopEvent(vrfAf)});
    }
  }

  std::mt19937 rng_;
};

// Parts of the dump that depend on history by design: counter slots and task ids are handed
// out in order of allocation, module tasks go to the workers round-robin, the input gates of
// the shared modules in order of connection, and the rate-limiting classes of a VRF that was
// stopped stay in the daemon without tasks.
void dropHistory(nlohmann::json& dump) {
  for (auto& [name, module] : dump["modules"].items()) {
    for (auto& [counter, id] : module["counters"].items()) id = 0;
    nlohmann::json& table = module["table"];
    if (table.contains("counterIds") && table["counterIds"].is_object()) {
      for (auto& [counter, id] : table["counterIds"].items()) id = 0;
    }
    if (table.contains("tasks")) table["tasks"] = table["tasks"].size();
    for (auto& [gate, edge] : module["out"].items()) {
      if (edge["to"] == "TxDemuxer" || edge["to"] == "IgmpV2") edge["igate"] = 0;
    }
  }
  nlohmann::json classes = nlohmann::json::object();
  std::vector<std::string> moduleTasks;
  for (auto& [name, tc] : dump["trafficClasses"].items()) {
    if (tc["unit"].is_null()) {
      for (const auto& task : tc["tasks"]) moduleTasks.push_back(task);
    } else if (!tc["tasks"].empty()) {
      classes[name] = {{"unit", tc["unit"]}, {"limit", tc["limit"]}, {"tasks", tc["tasks"].size()}};
    }
  }
  std::sort(moduleTasks.begin(), moduleTasks.end());
  classes["moduleTasks"] = moduleTasks;
  dump["trafficClasses"] = classes;
}

// The module commands each event of a run sent, by event, as module and command name.
using SentByEvent = std::vector<std::vector<FailNextStep>>;

// The data plane after the events on a driver of its own; without events, as a fresh agent
// builds it from the final state. Each run stands alone, as a run of mfa-host does in its own
// process: shared memory that a run before wrote is gone. With `sent`, what each event sent
// is noted there.
nlohmann::json dumpAfter(const Case& c, const std::vector<Event>* events,
                         SentByEvent* sent = nullptr) {
  QelSharedMem::EntityManager::managersDelAllForTest();
  AgentSettings settings;
  settings.workers = 2;
  settings.yieldEvery = 3;  // small, so that tasks yield in the middle of their work
  PluginDriver driver;
  driver.configure(settings);
  driver.applyState(c.initial, StateOp::set);
  if (!events) {
    driver.applyState(c.finalState, StateOp::set);
    driver.createAgent();
    for (const VrfAf& vrfAf : c.started) driver.start(vrfAf);
  } else {
    driver.createAgent();
  }
  static const std::vector<Event> none;
  for (const Event& event : events ? *events : none) {
    const std::size_t mark = sent ? driver.commandCount() : 0;
    switch (event.kind) {
      case Event::Kind::set: driver.applyState(event.change, StateOp::set); break;
      case Event::Kind::remove: driver.applyState(event.change, StateOp::remove); break;
      case Event::Kind::start: driver.start(event.vrfAf); break;
      case Event::Kind::stop: driver.stop(event.vrfAf); break;
      case Event::Kind::restart: driver.restart(); break;
      case Event::Kind::settle: driver.settle(); break;
      case Event::Kind::failNext: driver.failNext(event.failure); break;
    }
    if (!sent) continue;
    std::vector<FailNextStep>& commands = sent->emplace_back();
    for (const nlohmann::json& entry : driver.commandsSince(mark)) {
      if (entry["kind"] == "moduleCmd") commands.push_back({entry["module"], entry["cmd"], 5, ""});
    }
  }
  driver.settle();
  nlohmann::json dump = driver.dump();
  dropHistory(dump);
  return dump;
}

// The events of an order with one refusal put in: the daemon refuses a command that one
// event sent (the same events sent it in the same way before the refusal), and a restart
// comes at some point after that event, the tasks having run first.
std::vector<Event> withFault(const std::vector<Event>& events, const SentByEvent& sent,
                             unsigned seed) {
  std::mt19937 rng(seed);
  std::vector<std::size_t> sending;
  for (std::size_t i = 0; i < sent.size(); ++i) {
    if (!sent[i].empty()) sending.push_back(i);
  }
  if (sending.empty()) return {};
  const std::size_t at = sending[rng() % sending.size()];
  Event fault{Event::Kind::failNext, {}, {}, "", sent[at][rng() % sent[at].size()]};
  fault.failure.msg = "refused";
  fault.text = "failNext " + fault.failure.module + " " + fault.failure.cmd;
  const std::size_t restartAt = at + 1 + rng() % (events.size() - at);
  std::vector<Event> faulted(events.begin(), events.begin() + static_cast<long>(at));
  faulted.push_back(fault);
  faulted.insert(faulted.end(), events.begin() + static_cast<long>(at),
                 events.begin() + static_cast<long>(restartAt));
  faulted.push_back({Event::Kind::settle, {}, {}, "settle"});
  faulted.push_back({Event::Kind::restart, {}, {}, "restart"});
  faulted.insert(faulted.end(), events.begin() + static_cast<long>(restartAt), events.end());
  return faulted;
}

int envNumber(const char* name, int fallback) {
  const char* text = std::getenv(name);
  return text ? std::atoi(text) : fallback;
}

std::string describe(const std::vector<Event>& events) {
  std::ostringstream out;
  for (const Event& event : events) out << "\n  " << event.text;
  return out.str();
}

// The first few differences of two dumps, for the failure message.
std::string differences(const nlohmann::json& expected, const nlohmann::json& actual) {
  const nlohmann::json patch = nlohmann::json::diff(expected, actual);
  std::string text;
  for (std::size_t i = 0; i < patch.size() && i < 6; ++i) text += "\n  " + patch[i].dump();
  return text;
}

TEST(Convergence, AnyOrderOfEventsEndsAsAFreshAgentOnTheFinalState) {
  const int cases = envNumber("VEK_PROPERTY_CASES", defaultCases);
  const auto firstSeed = static_cast<unsigned>(envNumber("VEK_PROPERTY_SEED", 1));
  for (unsigned seed = firstSeed; seed < firstSeed + static_cast<unsigned>(cases); ++seed) {
    const Case c(seed);
    const nlohmann::json expected = dumpAfter(c, nullptr);
    SentByEvent sent;
    std::vector<Event> first;
    for (unsigned order = 0; order < ordersPerCase; ++order) {
      const std::vector<Event> events = c.order(seed * 31 + order);
      const nlohmann::json actual = dumpAfter(c, &events, order == 0 ? &sent : nullptr);
      ASSERT_TRUE(expected == actual) << "seed " << seed << ", order " << order
                                  << "; differences:" << differences(expected, actual)
                                  << "\nevents:" << describe(events);
      if (order == 0) first = events;
    }

    const std::vector<Event> faulted = withFault(first, sent, seed);
    if (faulted.empty()) continue;
    nlohmann::json actual = dumpAfter(c, &faulted);
    // The refusal happened, before the restart; its record is the one trace of it left.
    ASSERT_EQ(actual["errors"].size(), 1u) << "seed " << seed << "\nevents:" << describe(faulted);
    actual["errors"] = expected["errors"];
    ASSERT_TRUE(expected == actual) << "seed " << seed << ", with a refusal; differences:"
                                    << differences(expected, actual)
                                    << "\nevents:" << describe(faulted);
  }
}

}  // namespace
}  // namespace VekHost
