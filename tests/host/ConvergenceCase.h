#pragma once

// The cases of the convergence test: a random final world, and the chains of events that
// lead there. A chain holds events whose order matters (a stray route is set before it is
// removed, a stop comes after its start); a random interleaving of the chains, with
// settles in between, is one order of the history.

#include <random>
#include <set>
#include <string>
#include <vector>

#include "host/StateChange.h"
#include "host/Step.h"

namespace VekHost {

struct Event {
  enum class Kind { set, remove, start, stop, restart, settle, failNext } kind;
  StateChange change;
  VrfAf vrfAf;
  std::string text;
  FailNextStep failure = {};
};
using Chain = std::vector<Event>;

Event setEvent(StateChange change, std::string text);
Event removeEvent(StateChange change, std::string text);

// One case: the final world and the chains of events that reach it.
class Case {
 public:
  explicit Case(unsigned seed);

  StateChange initial;     // present before the agent is made, in every run
  StateChange finalState;  // the rest of the final state, as events
  // More of the final state, set after `finalState` where one change cannot hold both.
  std::vector<StateChange> finalPieces;
  std::vector<VrfAf> started;
  std::vector<Chain> chains;
  // VRFs whose id was not the same through the whole history.
  std::set<std::string> idMoved;

  // A random interleaving of the chains, with settles between some events.
  std::vector<Event> order(unsigned seed) const;

 private:
  template <typename T>
  const T& pick(const std::vector<T>& from) {
    return from[rng_() % from.size()];
  }
  bool chance(unsigned percent) { return rng_() % 100 < percent; }

  void draw();
  Mroute drawRoute(const VrfAf& vrfAf);
  void drawVrfId(const std::string& vrf, std::uint32_t id, std::uint32_t otherId);
  static std::string strayIntf(const std::string& vrf);
  bool intfOfVrf(const std::string& intf, const std::string& vrf) const;
  void drawInterfaces(const VrfAf& vrfAf);
  void drawKernelLimits(const VrfAf& vrfAf);
  void drawFinalRoute(const VrfAf& vrfAf);
  void drawStrayRoute(const VrfAf& vrfAf);
  void drawStrayStart(const VrfAf& vrfAf);

  // The routed VXLAN world (ConvergenceVxlan.cc): the VTI's values and maps, remote VNIs
  // and tunnel mappings of the SBD VLANs.
  void drawRoutedVxlan();
  template <typename T>
  void drawVtiValue(std::optional<T> VtiChange::*field, const std::string& name, T value, T earlier,
                    bool clearable);
  template <typename K, typename V>
  void drawVtiEntry(std::map<K, V> VtiChange::*map, const std::string& name, const K& key, V value,
                    V earlier);
  void drawBridgedVxlan();
  void finalOrStray(const StateChange& change, const std::string& text, bool final);
  void drawRemoteVnis();
  void drawTunnelMappings(Af af);

  std::mt19937 rng_;
  // Interfaces that routes and multicast interfaces draw from; a case with the routed
  // pipeline adds the SBD and VNI VLANs.
  std::vector<std::string> intfNames_;
  bool routed_ = false;
};

}  // namespace VekHost
