#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/ScenarioValues.h"
#include "host/VxlanStateKeys.h"
#include "host/SnoopingStateKeys.h"

namespace VekHost {

// Whether a StateChange writes (upserts) or removes what it names.
enum class StateOp { set, remove };

struct KernelDevice {
  int ifIndex = 0;
  bool up = true;
  std::string intf;  // the interface the device stands for; empty for none
};

struct KernelMfibConfig {
  std::optional<uint32_t> maxUnresolvedCacheEntries;
  std::optional<uint32_t> maxUnresolvedPktBuffers;
};

// One route table: a VRF, a family and the application that writes it.
struct RouteTableName {
  VrfAf vrfAf;
  std::string app;
  int line = 0;  // where the scenario names it
};

struct Mroute {
  RouteTableName table;  // its line is the route's
  RouteKey key;
  std::string iif;  // empty for none
  std::vector<std::string> oifs;
  RouteFlags flags;
};

// A piece of central state, as written under `state:`, `set:` or `delete:`. Only what the
// scenario names is present. In a removal the keys are what counts: values given with them
// (a VRF id, a route's oifs) are checked when loading but not compared.
struct StateChange {
  std::map<std::string, uint32_t> vrfs;    // VRF name to software VRF id
  std::map<std::string, uint32_t> hwVrfs;  // VRF name to hardware VRF id
  std::optional<std::string> bridgeMac;    // lower-case "xx:xx:xx:xx:xx:xx"
  // VRF name (its namespace) to device name to device.
  std::map<std::string, std::map<std::string, KernelDevice>> kernel;
  // Family to VRF to interface names.
  std::map<Af, std::map<std::string, std::vector<std::string>>> multicastIntfs;
  std::map<Af, std::map<std::string, KernelMfibConfig>> kernelMfibConfig;
  std::map<std::string, int> intfVlans;  // interface name to VLAN id
  std::vector<Mroute> mroutes;
  std::vector<RouteTableName> tables;
  VxlanChange vxlan;  // the VXLAN, fabric and proxy keys
  std::map<uint32_t, std::string> mvpnIntfs;  // VRF id to provider interface; empty in a removal
  SnoopingChange snoop;  // snooping, oismFloodSet, vxlanVtepVlanStatus
};

}  // namespace VekHost
