#pragma once

#include <yaml-cpp/yaml.h>

#include "host/CentralStateStore.h"
#include "host/StateChange.h"
#include "host/ValueReader.h"

namespace VekHost {

// The multicast VPN keys of a scenario: `mvpnIntfs`, the provider interface of each VRF id
// that takes part in multicast VPN. A provider interface is a VLAN interface, as its VLAN
// is what the egress tags the VRF's tunnelled traffic with.
class MvpnStateKeys {
 public:
  // Reads `mvpnIntfs: {2: Vlan100}`; a removal may also list the ids (`[2]`).
  static void readMvpnIntfs(const ValueReader& values, const YAML::Node& node, StateOp op,
                            StateChange& change);
  static void write(CentralStateStore& store, const StateChange& change, StateOp op);
};

}  // namespace VekHost
