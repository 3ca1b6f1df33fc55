#pragma once

#include <yaml-cpp/yaml.h>

#include <string_view>
#include <vector>

#include "host/LoadError.h"
#include "host/RouteLists.h"
#include "host/StateChange.h"
#include "host/ValueReader.h"

namespace VekHost {

// Reads the central-state keys of `state:`, `set:` and `delete:`. Each key has one entry in
// the table of keys, so a new kind of state is a field of StateChange, a reader here and a
// row in the table.
class StateReader {
 public:
  explicit StateReader(const ValueReader& values) : values_(values) {}

  // Reads every key of `map` into `change`; a bad key adds its error and the others are
  // still read, so one pass reports all of them.
  void read(const YAML::Node& map, StateOp op, StateChange& change,
            std::vector<LoadError>& errors) const;

  static std::vector<std::string_view> keyNames();

  // Where the route lists that were cut out of the document are read from, for the time
  // of one load; null reads every list from the document.
  void routeListsIs(const RouteLists* lists) const { routeLists_ = lists; }

 private:
  using KeyReader = void (StateReader::*)(const YAML::Node&, StateOp, StateChange&) const;
  struct Key {
    std::string_view name;
    KeyReader read;
  };
  static const std::vector<Key>& keys();

  void vrfs(const YAML::Node& node, StateOp op, StateChange& change) const;
  void hwVrfs(const YAML::Node& node, StateOp op, StateChange& change) const;
  void bridgeMac(const YAML::Node& node, StateOp op, StateChange& change) const;
  void kernel(const YAML::Node& node, StateOp op, StateChange& change) const;
  void multicastIntfs(const YAML::Node& node, StateOp op, StateChange& change) const;
  void kernelMfibConfig(const YAML::Node& node, StateOp op, StateChange& change) const;
  void intfVlans(const YAML::Node& node, StateOp op, StateChange& change) const;
  void mroutes(const YAML::Node& node, StateOp op, StateChange& change) const;
  void tables(const YAML::Node& node, StateOp op, StateChange& change) const;
  void fwdDevices(const YAML::Node& node, StateOp op, StateChange& change) const;
  void hwCapabilities(const YAML::Node& node, StateOp op, StateChange& change) const;
  void vtis(const YAML::Node& node, StateOp op, StateChange& change) const;
  void remoteVnis(const YAML::Node& node, StateOp op, StateChange& change) const;
  void decapRoutes(const YAML::Node& node, StateOp op, StateChange& change) const;
  void tunnelMappings(const YAML::Node& node, StateOp op, StateChange& change) const;
  void mcastIrb(const YAML::Node& node, StateOp op, StateChange& change) const;
  void proxyVlans(const YAML::Node& node, StateOp op, StateChange& change) const;
  void mvpnIntfs(const YAML::Node& node, StateOp op, StateChange& change) const;
  void snooping(const YAML::Node& node, StateOp op, StateChange& change) const;
  void oismFloodSet(const YAML::Node& node, StateOp op, StateChange& change) const;
  void vxlanVtepVlanStatus(const YAML::Node& node, StateOp op, StateChange& change) const;

  KernelDevice device(const YAML::Node& node, StateOp op) const;
  KernelMfibConfig mfibConfig(const YAML::Node& node) const;
  RouteTableName table(const YAML::Node& map) const;
  Mroute mroute(const YAML::Node& node) const;

  const ValueReader& values_;
  mutable const RouteLists* routeLists_ = nullptr;
};

}  // namespace VekHost
