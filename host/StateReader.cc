#include "host/StateReader.h"

#include <fmt/format.h>

#include <functional>
#include <map>
#include <unordered_map>
#include <tuple>

#include "host/MvpnStateKeys.h"
#include "host/ValueText.h"
#include "host/YamlReader.h"

namespace VekHost {

namespace {

// A map of names to values. A removal names only the keys, so it may also be a list of
// names; values given in the map form are read (and so checked) all the same.
template <class Value>
std::map<std::string, Value> keyedMap(const YAML::Node& node, StateOp op, std::string_view what,
                                      const std::function<std::string(const YAML::Node&)>& readKey,
                                      const std::function<Value(const YAML::Node&)>& readValue) {
  std::map<std::string, Value> result;
  if (op == StateOp::remove && node.IsSequence()) {
    for (const YAML::Node& element : node) result[readKey(element)] = Value{};
    return result;
  }
  YamlReader::forEachEntry(node, what, [&](const YAML::Node& key, const YAML::Node& value) {
    result[readKey(key)] = readValue(value);
  });
  return result;
}

template <class Value>
void mergeInto(std::map<std::string, Value>& into, std::map<std::string, Value> from) {
  for (auto& [key, value] : from) into[key] = std::move(value);
}

}  // namespace

const std::vector<StateReader::Key>& StateReader::keys() {
  static const std::vector<Key> table = {
      {"vrfs", &StateReader::vrfs},
      {"hwVrfs", &StateReader::hwVrfs},
      {"bridgeMac", &StateReader::bridgeMac},
      {"kernel", &StateReader::kernel},
      {"multicastIntfs", &StateReader::multicastIntfs},
      {"kernelMfibConfig", &StateReader::kernelMfibConfig},
      {"intfVlans", &StateReader::intfVlans},
      {"mroutes", &StateReader::mroutes},
      {"tables", &StateReader::tables},
      {"fwdDevices", &StateReader::fwdDevices},
      {"hwCapabilities", &StateReader::hwCapabilities},
      {"vtis", &StateReader::vtis},
      {"remoteVnis", &StateReader::remoteVnis},
      {"decapRoutes", &StateReader::decapRoutes},
      {"tunnelMappings", &StateReader::tunnelMappings},
      {"mcastIrb", &StateReader::mcastIrb},
      {"proxyVlans", &StateReader::proxyVlans},
      {"mvpnIntfs", &StateReader::mvpnIntfs},
      {"snooping", &StateReader::snooping},
      {"oismFloodSet", &StateReader::oismFloodSet},
      {"vxlanVtepVlanStatus", &StateReader::vxlanVtepVlanStatus},
  };
  return table;
}

std::vector<std::string_view> StateReader::keyNames() {
  std::vector<std::string_view> names;
  for (const Key& key : keys()) names.push_back(key.name);
  return names;
}

void StateReader::read(const YAML::Node& map, StateOp op, StateChange& change,
                       std::vector<LoadError>& errors) const {
  const std::string_view what = op == StateOp::set ? "a state change" : "a removal";
  try {
    YamlReader::requireMapWithKeys(map, what, keyNames());
  } catch (const LoadError& error) {
    errors.push_back(error);
    return;
  }
  for (auto it = map.begin(); it != map.end(); ++it) {
    for (const Key& key : keys()) {
      if (it->first.Scalar() != key.name) continue;
      try {
        (this->*key.read)(it->second, op, change);
      } catch (const LoadError& error) {
        errors.push_back(error);
      }
    }
  }
}

void StateReader::vrfs(const YAML::Node& node, StateOp op, StateChange& change) const {
  mergeInto(change.vrfs, keyedMap<uint32_t>(
                             node, op, "vrfs", [&](auto& n) { return values_.vrf(n); },
                             [&](auto& n) { return values_.vrfId(n); }));
}

void StateReader::hwVrfs(const YAML::Node& node, StateOp op, StateChange& change) const {
  mergeInto(change.hwVrfs, keyedMap<uint32_t>(
                               node, op, "hwVrfs", [&](auto& n) { return values_.vrf(n); },
                               [&](auto& n) { return values_.vrfId(n); }));
}

void StateReader::bridgeMac(const YAML::Node& node, StateOp op, StateChange& change) const {
  if (op == StateOp::remove && node.IsNull()) {
    change.bridgeMac = "";
    return;
  }
  std::string text = YamlReader::text(node, "bridgeMac");
  auto mac = ValueText::mac(text);
  if (!mac)
    YamlReader::fail(node, "bridgeMac '" + text + "' is not a MAC address (xx:xx:xx:xx:xx:xx)");
  change.bridgeMac = *mac;
}

KernelDevice StateReader::device(const YAML::Node& node, StateOp op) const {
  YamlReader::requireMapWithKeys(node, "a kernel device", {"ifIndex", "up", "intf"});
  KernelDevice device;
  if (op == StateOp::set || YamlReader::has(node, "ifIndex")) {
    device.ifIndex = static_cast<int>(
        YamlReader::integer(YamlReader::required(node, "ifIndex"), "ifIndex", 1, INT32_MAX));
  }
  if (YamlReader::has(node, "up")) device.up = YamlReader::boolean(node["up"], "up");
  if (YamlReader::has(node, "intf")) device.intf = values_.intf(node["intf"], "intf");
  return device;
}

void StateReader::kernel(const YAML::Node& node, StateOp op, StateChange& change) const {
  YamlReader::forEachEntry(node, "kernel", [&](const YAML::Node& vrf, const YAML::Node& devices) {
    mergeInto(change.kernel[values_.vrf(vrf)],
              keyedMap<KernelDevice>(
                  devices, op, "the devices of a namespace",
                  [&](auto& n) { return values_.name(n, "a device name"); },
                  [&](auto& n) { return device(n, op); }));
  });
}

void StateReader::multicastIntfs(const YAML::Node& node, StateOp, StateChange& change) const {
  YamlReader::forEachEntry(
      node, "multicastIntfs", [&](const YAML::Node& af, const YAML::Node& vrfs) {
        auto& byVrf = change.multicastIntfs[values_.af(af)];
        YamlReader::forEachEntry(
            vrfs, "the VRFs of a family", [&](const YAML::Node& vrf, const YAML::Node& intfs) {
              auto& names = byVrf[values_.vrf(vrf)];
              for (std::string& name : values_.intfList(intfs, "multicastIntfs")) {
                names.push_back(std::move(name));
              }
            });
      });
}

KernelMfibConfig StateReader::mfibConfig(const YAML::Node& node) const {
  YamlReader::requireMapWithKeys(node, "a kernel MFIB config",
                                 {"maxUnresolvedCacheEntries", "maxUnresolvedPktBuffers"});
  KernelMfibConfig config;
  for (auto it = node.begin(); it != node.end(); ++it) {
    const std::string& key = it->first.Scalar();
    auto value = static_cast<uint32_t>(YamlReader::integer(it->second, key, 0, UINT32_MAX));
    (key == "maxUnresolvedCacheEntries" ? config.maxUnresolvedCacheEntries
                                        : config.maxUnresolvedPktBuffers) = value;
  }
  return config;
}

void StateReader::kernelMfibConfig(const YAML::Node& node, StateOp op, StateChange& change) const {
  YamlReader::forEachEntry(
      node, "kernelMfibConfig", [&](const YAML::Node& af, const YAML::Node& vrfs) {
        mergeInto(change.kernelMfibConfig[values_.af(af)],
                  keyedMap<KernelMfibConfig>(
                      vrfs, op, "the VRFs of a family", [&](auto& n) { return values_.vrf(n); },
                      [&](auto& n) { return mfibConfig(n); }));
      });
}

void StateReader::intfVlans(const YAML::Node& node, StateOp op, StateChange& change) const {
  mergeInto(
      change.intfVlans,
      keyedMap<int>(
          node, op, "intfVlans", [&](auto& n) { return values_.intf(n, "an interface"); },
          [&](auto& n) { return static_cast<int>(YamlReader::integer(n, "a VLAN", 1, 4094)); }));
}

void StateReader::mvpnIntfs(const YAML::Node& node, StateOp op, StateChange& change) const {
  MvpnStateKeys::readMvpnIntfs(values_, node, op, change);
}

RouteTableName StateReader::table(const YAML::Node& map) const {
  return RouteTableName{values_.vrfAf(map), values_.app(YamlReader::required(map, "app")),
                        YamlReader::line(map)};
}

// A removal names the route by its key; the other fields are checked all the same.
Mroute StateReader::mroute(const YAML::Node& node) const {
  YamlReader::requireMapWithKeys(node, "a route",
                                 {"vrf", "af", "app", "source", "group", "iif", "oifs", "flags"});
  Mroute route;
  route.table = table(node);
  route.key = values_.routeKey(node, route.table.vrfAf.af);
  if (YamlReader::has(node, "iif")) route.iif = values_.intf(node["iif"], "iif");
  if (YamlReader::has(node, "oifs")) route.oifs = values_.intfList(node["oifs"], "oifs");
  if (YamlReader::has(node, "flags")) route.flags = values_.flags(node["flags"]);
  return route;
}

void StateReader::mroutes(const YAML::Node& node, StateOp, StateChange& change) const {
  YamlReader::requireList(node, "mroutes");
  // One list writes a route once: a second entry for a key would silently win. Hashed, as
  // lists run to millions of routes and an ordered tree costs a climb per route.
  std::unordered_map<std::string, int> firstLine;
  auto readEntries = [&](const YAML::Node& list, int linesBefore) {
    for (const YAML::Node& element : list) {
      Mroute route;
      try {
        route = mroute(element);
      } catch (const LoadError& error) {
        throw LoadError(error.line() + linesBefore, error.what());
      }
      route.table.line += linesBefore;
      const auto [it, first] = firstLine.try_emplace(
          fmt::format("{}\n{}\n{}\n{}", route.table.vrfAf.vrf, static_cast<int>(route.table.vrfAf.af),
                      route.table.app, route.key.text()),
          route.table.line);
      if (!first) {
        throw LoadError(route.table.line, "route " + route.key.text() + " of " + route.table.app +
                                              " in VRF " + route.table.vrfAf.vrf +
                                              " is given twice in this list (first on line " +
                                              std::to_string(it->second) + ")");
      }
      change.mroutes.push_back(std::move(route));
    }
  };
  if (const RouteLists::List* list = routeLists_ ? routeLists_->list(node) : nullptr) {
    routeLists_->forEachSlice(*list, readEntries);
  } else {
    readEntries(node, 0);
  }
}

void StateReader::snooping(const YAML::Node& node, StateOp op, StateChange& change) const {
  SnoopingStateKeys::readSnooping(values_, node, op, change.snoop);
}

void StateReader::oismFloodSet(const YAML::Node& node, StateOp op, StateChange& change) const {
  SnoopingStateKeys::readOismFloodSet(node, op, change.snoop);
}

void StateReader::vxlanVtepVlanStatus(const YAML::Node& node, StateOp, StateChange& change) const {
  SnoopingStateKeys::readVxlanVtepVlanStatus(node, change.snoop);
}

void StateReader::tables(const YAML::Node& node, StateOp, StateChange& change) const {
  YamlReader::requireList(node, "tables");
  for (const YAML::Node& element : node) {
    YamlReader::requireMapWithKeys(element, "a route table", {"vrf", "af", "app"});
    change.tables.push_back(table(element));
  }
}

// The VXLAN keys read in a file of their own.
void StateReader::fwdDevices(const YAML::Node& node, StateOp op, StateChange& change) const {
  VxlanStateKeys::readFwdDevices(values_, node, op, change.vxlan);
}

void StateReader::hwCapabilities(const YAML::Node& node, StateOp op, StateChange& change) const {
  VxlanStateKeys::readHwCapabilities(node, op, change.vxlan);
}

void StateReader::vtis(const YAML::Node& node, StateOp op, StateChange& change) const {
  VxlanStateKeys::readVtis(values_, node, op, change.vxlan);
}

void StateReader::remoteVnis(const YAML::Node& node, StateOp op, StateChange& change) const {
  VxlanStateKeys::readRemoteVnis(node, op, change.vxlan);
}

void StateReader::decapRoutes(const YAML::Node& node, StateOp op, StateChange& change) const {
  VxlanStateKeys::readDecapRoutes(values_, node, op, change.vxlan);
}

void StateReader::tunnelMappings(const YAML::Node& node, StateOp op, StateChange& change) const {
  VxlanStateKeys::readTunnelMappings(values_, node, op, change.vxlan);
}

void StateReader::mcastIrb(const YAML::Node& node, StateOp op, StateChange& change) const {
  VxlanStateKeys::readMcastIrb(values_, node, op, change.vxlan);
}

void StateReader::proxyVlans(const YAML::Node& node, StateOp op, StateChange& change) const {
  VxlanStateKeys::readProxyVlans(node, op, change.vxlan);
}

}  // namespace VekHost
