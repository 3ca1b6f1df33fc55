#pragma once

#include <yaml-cpp/yaml.h>

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/ScenarioValues.h"
#include "host/ValueReader.h"

class CentralStateStore;

namespace VekHost {

enum class StateOp;

// One snooped VLAN as a scenario writes it. In a state change, what is named replaces
// what stands (the router ports, the members of each group named); in a removal the group
// MACs and router ports named go, and a VLAN named without anything goes whole.
struct SnoopedVlan {
  std::optional<std::vector<std::string>> routerIntfs;
  std::map<std::string, std::vector<std::string>> groups;  // MAC to member interfaces
  bool whole = false;                                      // a removal of the VLAN itself
};

// The snooping, flood-set and VTEP VLAN status keys of a state change.
struct SnoopingChange {
  std::map<Af, std::map<int, SnoopedVlan>> snooping;
  // VLAN to VTEP addresses; a removal with no addresses takes the VLAN's set away.
  std::map<int, std::vector<std::string>> oismFloodSet;
  std::vector<std::pair<std::string, int>> vxlanVtepVlanStatus;  // VTEP, VLAN

  bool empty() const {
    return snooping.empty() && oismFloodSet.empty() && vxlanVtepVlanStatus.empty();
  }
};

// Reads those keys, writes them into central state, and reads the VTEP VLAN status back
// for the dump.
class SnoopingStateKeys {
 public:
  static void readSnooping(const ValueReader& values, const YAML::Node& node, StateOp op,
                           SnoopingChange& change);
  static void readOismFloodSet(const YAML::Node& node, StateOp op, SnoopingChange& change);
  static void readVxlanVtepVlanStatus(const YAML::Node& node, SnoopingChange& change);

  static void write(CentralStateStore& store, const SnoopingChange& change, StateOp op);

  // The table as `outputs.vxlanVtepVlanStatus` shows it: {vtep, vlan} by VLAN, then address.
  static nlohmann::json vxlanVtepVlanStatusDump();
};

}  // namespace VekHost
