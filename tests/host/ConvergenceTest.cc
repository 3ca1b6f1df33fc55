// Convergence: whatever order the inputs of the agent come in, and whatever came and went
// in between, the data plane ends up as a fresh agent builds it from the final state alone.
//
// Each case (ConvergenceCase.h) draws a final state (VRFs and their ids, multicast
// interfaces, kernel limits, routes of several applications, and in some cases the routed
// VXLAN inputs: VTI values and maps, remote VNIs, tunnel mappings) and the VRFs and
// families the hosting agent has started; several random orders of the events that lead
// there run through the host's own driver.
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
#include <sstream>
#include <string>
#include <vector>

#include "host/PluginDriver.h"
#include "runtime/sharedmem/EntityManager.h"
#include "tests/host/ConvergenceCase.h"

namespace VekHost {
namespace {

#ifdef VEK_SANITIZED_BUILD
constexpr int defaultCases = 12;
#else
constexpr int defaultCases = 150;
#endif
constexpr int ordersPerCase = 3;

// Parts of the dump that depend on history by design:
// - counter slots and task ids are handed out in order of allocation, module tasks go to
//   the workers round-robin, and the rate-limiting classes of a VRF that was stopped stay in
//   the daemon without tasks;
// - an input gate that is not reserved is handed out on connection, lowest free first, so
//   its number follows the order in which feeders came (the demultiplexer's and IGMPv2's
//   many feeders, the default FIBs fed by both encapsulation modules); a reserved one is
//   the agent's choice and stays;
// - the decapsulation module's gates to the tenant FIBs are handed out as the FIBs connect:
//   what counts is where each gate leads, and that each gate entry names the gate to its
//   VRF's FIB;
// - a module's init arguments are fixed when it is made, and a running VRF keeps its
//   modules through an id change: the FIB and metadata modules of a VRF whose id moved
//   carry the id that it had at its start.
void dropHistory(nlohmann::json& dump, const Case& c) {
  nlohmann::json& modules = dump["modules"];
  for (auto& [name, module] : modules.items()) {
    for (auto& [counter, id] : module["counters"].items()) id = 0;
    nlohmann::json& table = module["table"];
    if (table.contains("counterIds") && table["counterIds"].is_object()) {
      for (auto& [counter, id] : table["counterIds"].items()) id = 0;
    }
    if (table.contains("tasks")) table["tasks"] = table["tasks"].size();
    for (auto& [gate, edge] : module["out"].items()) {
      const auto to = modules.find(edge["to"].get<std::string>());
      if (to != modules.end() && edge["igate"] >= to->value("reservedIn", 0)) edge["igate"] = 0;
    }
    nlohmann::json& init = module["init"];
    if (init.is_object() && init.contains("vrfId")) {
      const std::string vrf = init.value("vrfName", name.substr(name.rfind('_') + 1));
      if (c.idMoved.count(vrf)) init.erase("vrfId");
    }
  }
  if (modules.contains("L3MVxlanOut")) {
    nlohmann::json& out = modules["L3MVxlanOut"];
    nlohmann::json byTarget = nlohmann::json::object();
    for (auto& [gate, edge] : out["out"].items()) byTarget[edge["to"].get<std::string>()] = edge;
    for (auto& [key, gate] : out["table"]["oGates"].items()) {
      const std::string at = std::to_string(gate.get<int>());
      gate = out["out"].contains(at) ? out["out"][at]["to"] : nlohmann::json("no link");
    }
    out["out"] = byTarget;
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
    for (const StateChange& piece : c.finalPieces) driver.applyState(piece, StateOp::set);
    driver.createAgent();
    for (const VrfAf& vrfAf : c.started) driver.start(vrfAf);
  } else {
    driver.createAgent();
  }
  static const std::vector<Event> none;
  for (const Event& event : events ? *events : none) {
    const std::size_t mark = sent ? driver.commandCount() : 0;
    switch (event.kind) {
      case Event::Kind::set:
        driver.applyState(event.change, StateOp::set);
        break;
      case Event::Kind::remove:
        driver.applyState(event.change, StateOp::remove);
        break;
      case Event::Kind::start:
        driver.start(event.vrfAf);
        break;
      case Event::Kind::stop:
        driver.stop(event.vrfAf);
        break;
      case Event::Kind::restart:
        driver.restart();
        break;
      case Event::Kind::settle:
        driver.settle();
        break;
      case Event::Kind::failNext:
        driver.failNext(event.failure);
        break;
    }
    if (!sent) continue;
    std::vector<FailNextStep>& commands = sent->emplace_back();
    for (const nlohmann::json& entry : driver.commandsSince(mark)) {
      if (entry["kind"] == "moduleCmd") commands.push_back({entry["module"], entry["cmd"], 5, ""});
    }
  }
  driver.settle();
  nlohmann::json dump = driver.dump();
  dropHistory(dump, c);
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
      ASSERT_TRUE(expected == actual)
          << "seed " << seed << ", order " << order
          << "; differences:" << differences(expected, actual) << "\nevents:" << describe(events);
      if (order == 0) first = events;
    }

    const std::vector<Event> faulted = withFault(first, sent, seed);
    if (faulted.empty()) continue;
    nlohmann::json actual = dumpAfter(c, &faulted);
    // The refusal happened, before the restart; its record is the one trace of it left.
    ASSERT_EQ(actual["errors"].size(), 1u) << "seed " << seed << "\nevents:" << describe(faulted);
    actual["errors"] = expected["errors"];
    ASSERT_TRUE(expected == actual)
        << "seed " << seed << ", with a refusal; differences:" << differences(expected, actual)
        << "\nevents:" << describe(faulted);
  }
}

}  // namespace
}  // namespace VekHost
