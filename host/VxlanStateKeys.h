#pragma once

#include <yaml-cpp/yaml.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/ScenarioValues.h"
#include "host/ValueReader.h"

class CentralStateStore;

namespace VekHost {

enum class StateOp;

// One VTI as a scenario writes it. In a state change the values named are set and the map
// entries named are upserted; in a removal the map entries named go, a value named is
// cleared, and a VTI named without anything goes whole.
struct VtiChange {
  std::optional<std::string> srcIpIntf;  // empty: cleared
  std::optional<std::uint32_t> udpPort;
  std::optional<std::uint32_t> srcPort;
  std::optional<std::uint32_t> ttl;
  std::optional<std::string> vtep;   // canonical text; empty: cleared
  std::optional<std::string> vtep6;
  std::map<int, std::uint32_t> vlanToVni;
  std::map<std::string, std::uint32_t> vrfToVni;
  std::map<std::string, int> vrfToSbdVlan;
  bool whole = false;
};

// One tunnel mapping of a VLAN: the overlay route and the underlay route that carries it.
// A removal names only the overlay route.
struct TunnelMappingChange {
  RouteKey overlay;
  RouteKey underlay;
};

// The VXLAN, fabric and proxy keys of a state change.
struct VxlanChange {
  std::map<Af, std::string> fwdDevices;  // ether type's family to forwarding device
  std::optional<bool> vxlanSwitchPktToMcastTunnelInSw;
  std::map<std::string, VtiChange> vtis;
  std::map<std::string, std::map<std::uint32_t, int>> remoteVnis;  // "static"/"irb": VNI to VLAN
  std::map<Af, std::vector<RouteKey>> decapRoutes;
  // A removal with no mappings takes the VLAN's whole status away.
  std::map<Af, std::map<int, std::vector<TunnelMappingChange>>> tunnelMappings;
  std::map<Af, std::map<int, int>> mcastIrb;                // VLAN to SBD VLAN
  std::map<std::string, std::vector<int>> proxyVlans;       // "igmp"/"mld"
};

// Reads those keys with their checks (each failure at the line of the value) and writes
// them into central state as the VXLAN, bridging and routing agents would.
class VxlanStateKeys {
 public:
  static void readFwdDevices(const ValueReader& values, const YAML::Node& node, StateOp op,
                             VxlanChange& change);
  static void readHwCapabilities(const YAML::Node& node, StateOp op, VxlanChange& change);
  static void readVtis(const ValueReader& values, const YAML::Node& node, StateOp op,
                       VxlanChange& change);
  static void readRemoteVnis(const YAML::Node& node, StateOp op, VxlanChange& change);
  static void readDecapRoutes(const ValueReader& values, const YAML::Node& node, StateOp op,
                              VxlanChange& change);
  static void readTunnelMappings(const ValueReader& values, const YAML::Node& node, StateOp op,
                                 VxlanChange& change);
  static void readMcastIrb(const ValueReader& values, const YAML::Node& node, StateOp op,
                           VxlanChange& change);
  static void readProxyVlans(const YAML::Node& node, StateOp op, VxlanChange& change);

  static void write(CentralStateStore& store, const VxlanChange& change, StateOp op);
};

}  // namespace VekHost
