#include "host/VxlanStateKeys.h"

#include <functional>

#include "host/CentralStateStore.h"
#include "host/StateChange.h"
#include "host/ValueText.h"
#include "host/YamlReader.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/bridging/HwCapabilities.h"
#include "runtime/state/irb/IgmpProxyStatus.h"
#include "runtime/state/irb/McastIrbStatus.h"
#include "runtime/state/multicast/HwRouteStatus.h"
#include "runtime/state/multicast/IpTunnelDecapConfig.h"
#include "runtime/state/multicast/IpTunnelForwardingStatus.h"
#include "runtime/state/vxlan/RemoteVniToVlanStatus.h"
#include "runtime/state/vxlan/VtiStatusDir.h"

namespace VekHost {

namespace {

constexpr std::int64_t maxVni = 0xffffff;
constexpr std::string_view kRemoteVniTables[] = {"static", "irb"};
constexpr std::string_view kProxyTables[] = {"igmp", "mld"};

int vlan(const YAML::Node& node, std::string_view what = "a VLAN") {
  return static_cast<int>(YamlReader::integer(node, what, 1, 4094));
}

std::uint32_t vni(const YAML::Node& node) {
  return static_cast<std::uint32_t>(YamlReader::integer(node, "a VNI", 0, maxVni));
}

// A map of keys to values, or in a removal also a list of keys; the values of a map are
// read (and so checked) all the same.
template <class Key, class Value>
void keyed(const YAML::Node& node, StateOp op, std::string_view what, std::map<Key, Value>& into,
           const std::function<Key(const YAML::Node&)>& readKey,
           const std::function<Value(const YAML::Node&)>& readValue) {
  if (op == StateOp::remove && node.IsSequence()) {
    for (const YAML::Node& element : node) into[readKey(element)] = Value{};
    return;
  }
  YamlReader::forEachEntry(node, what, [&](const YAML::Node& key, const YAML::Node& value) {
    into[readKey(key)] = readValue(value);
  });
}

// The families of a key, each with its own reader.
void byFamily(const ValueReader& values, const YAML::Node& node, std::string_view what,
              const std::function<void(Af, const YAML::Node&)>& read) {
  YamlReader::forEachEntry(node, what, [&](const YAML::Node& af, const YAML::Node& value) {
    read(values.af(af), value);
  });
}

std::string address(const YAML::Node& node, std::string_view what, Af af) {
  const std::string text = YamlReader::text(node, what);
  auto canonical = ValueText::address(text, af);
  if (!canonical) {
    YamlReader::fail(node, std::string(what) + " '" + text + "' is not an " +
                               std::string(afName(af)) + " address");
  }
  return *canonical;
}

RouteKey underlay(const ValueReader& values, const YAML::Node& map, Af af) {
  YamlReader::requireMapWithKeys(map, "an underlay route", {"source", "group"});
  return values.routeKey(map, af);
}

TunnelMappingChange mapping(const ValueReader& values, const YAML::Node& node, StateOp op,
                            Af af) {
  YamlReader::requireMapWithKeys(node, "a tunnel mapping", {"overlay", "underlay"});
  TunnelMappingChange change;
  const YAML::Node overlay = YamlReader::required(node, "overlay");
  YamlReader::requireMapWithKeys(overlay, "an overlay route", {"source", "group"});
  change.overlay = values.routeKey(overlay, af);
  if (op == StateOp::set || YamlReader::has(node, "underlay")) {
    change.underlay = underlay(values, YamlReader::required(node, "underlay"), af);
  }
  return change;
}

VtiChange vti(const ValueReader& values, const YAML::Node& node, StateOp op) {
  VtiChange change;
  if (op == StateOp::remove && node.IsNull()) {
    change.whole = true;
    return change;
  }
  YamlReader::requireMapWithKeys(node, "a VTI",
                                 {"srcIpIntf", "udpPort", "srcPort", "ttl", "vtep", "vtep6",
                                  "vlanToVni", "vrfToVni", "vrfToSbdVlan"});
  const bool clear = op == StateOp::remove;
  auto scalar = [&](const char* key, auto read) {
    const YAML::Node value = node[key];
    return clear && value.IsNull() ? decltype(read(value)){} : read(value);
  };
  for (auto it = node.begin(); it != node.end(); ++it) {
    const std::string& key = it->first.Scalar();
    const YAML::Node value = it->second;
    if (key == "srcIpIntf") {
      change.srcIpIntf = scalar("srcIpIntf", [&](auto& n) { return values.intf(n, "srcIpIntf"); });
    } else if (key == "udpPort" || key == "srcPort" || key == "ttl") {
      const std::int64_t max = key == "ttl" ? 255 : 65535;
      const auto number = scalar(key.c_str(), [&](auto& n) {
        return static_cast<std::uint32_t>(YamlReader::integer(n, key, 0, max));
      });
      (key == "udpPort" ? change.udpPort : key == "srcPort" ? change.srcPort : change.ttl) = number;
    } else if (key == "vtep" || key == "vtep6") {
      const Af af = key == "vtep" ? Af::ipv4 : Af::ipv6;
      (af == Af::ipv4 ? change.vtep : change.vtep6) =
          scalar(key.c_str(), [&](auto& n) { return address(n, key, af); });
    } else if (key == "vlanToVni") {
      keyed<int, std::uint32_t>(value, op, "vlanToVni", change.vlanToVni,
                                [](auto& n) { return vlan(n); }, [](auto& n) { return vni(n); });
    } else if (key == "vrfToVni") {
      keyed<std::string, std::uint32_t>(value, op, "vrfToVni", change.vrfToVni,
                                        [&](auto& n) { return values.vrf(n); },
                                        [](auto& n) { return vni(n); });
    } else {
      keyed<std::string, int>(value, op, "vrfToSbdVlan", change.vrfToSbdVlan,
                              [&](auto& n) { return values.vrf(n); },
                              [](auto& n) { return vlan(n, "an SBD VLAN"); });
    }
  }
  return change;
}

}  // namespace

void VxlanStateKeys::readFwdDevices(const ValueReader& values, const YAML::Node& node, StateOp op,
                                    VxlanChange& change) {
  if (op == StateOp::remove && node.IsSequence()) {
    for (const YAML::Node& af : node) change.fwdDevices[values.af(af)];
    return;
  }
  byFamily(values, node, "fwdDevices", [&](Af af, const YAML::Node& device) {
    change.fwdDevices[af] = values.name(device, "a forwarding device");
  });
}

void VxlanStateKeys::readHwCapabilities(const YAML::Node& node, StateOp op,
                                        VxlanChange& change) {
  YamlReader::requireMapWithKeys(node, "hwCapabilities", {"vxlanSwitchPktToMcastTunnelInSw"});
  const YAML::Node value = YamlReader::required(node, "vxlanSwitchPktToMcastTunnelInSw");
  const bool on = YamlReader::boolean(value, "vxlanSwitchPktToMcastTunnelInSw");
  change.vxlanSwitchPktToMcastTunnelInSw = op == StateOp::set && on;
}

void VxlanStateKeys::readVtis(const ValueReader& values, const YAML::Node& node, StateOp op,
                              VxlanChange& change) {
  auto name = [&](const YAML::Node& n) { return values.intf(n, "a VTI"); };
  if (op == StateOp::remove && node.IsSequence()) {
    for (const YAML::Node& element : node) change.vtis[name(element)].whole = true;
    return;
  }
  YamlReader::forEachEntry(node, "vtis", [&](const YAML::Node& key, const YAML::Node& value) {
    change.vtis[name(key)] = vti(values, value, op);
  });
}

void VxlanStateKeys::readRemoteVnis(const YAML::Node& node, StateOp op, VxlanChange& change) {
  const std::vector<std::string_view> tables(std::begin(kRemoteVniTables),
                                             std::end(kRemoteVniTables));
  YamlReader::forEachEntry(node, "remoteVnis", [&](const YAML::Node& table, const YAML::Node& map) {
    const std::string name(tables[YamlReader::choice(table, "a remote VNI table", tables)]);
    keyed<std::uint32_t, int>(map, op, "a remote VNI table", change.remoteVnis[name],
                              [](auto& n) { return vni(n); }, [](auto& n) { return vlan(n); });
  });
}

void VxlanStateKeys::readDecapRoutes(const ValueReader& values, const YAML::Node& node,
                                     StateOp, VxlanChange& change) {
  byFamily(values, node, "decapRoutes", [&](Af af, const YAML::Node& routes) {
    YamlReader::requireList(routes, "the decap routes of a family");
    for (const YAML::Node& route : routes) {
      change.decapRoutes[af].push_back(underlay(values, route, af));
    }
  });
}

void VxlanStateKeys::readTunnelMappings(const ValueReader& values, const YAML::Node& node,
                                        StateOp op, VxlanChange& change) {
  byFamily(values, node, "tunnelMappings", [&](Af af, const YAML::Node& vlans) {
    auto& byVlan = change.tunnelMappings[af];
    if (op == StateOp::remove && vlans.IsSequence()) {
      for (const YAML::Node& element : vlans) byVlan[vlan(element)];
      return;
    }
    YamlReader::forEachEntry(vlans, "the VLANs of a family", [&](const YAML::Node& key,
                                                                 const YAML::Node& list) {
      auto& mappings = byVlan[vlan(key)];
      if (op == StateOp::remove && list.IsNull()) return;
      YamlReader::requireList(list, "the tunnel mappings of a VLAN");
      for (const YAML::Node& element : list) mappings.push_back(mapping(values, element, op, af));
    });
  });
}

void VxlanStateKeys::readMcastIrb(const ValueReader& values, const YAML::Node& node, StateOp op,
                                  VxlanChange& change) {
  byFamily(values, node, "mcastIrb", [&](Af af, const YAML::Node& vlans) {
    keyed<int, int>(vlans, op, "the VLANs of a family", change.mcastIrb[af],
                    [](auto& n) { return vlan(n); },
                    [](auto& n) { return vlan(n, "an SBD VLAN"); });
  });
}

void VxlanStateKeys::readProxyVlans(const YAML::Node& node, StateOp, VxlanChange& change) {
  const std::vector<std::string_view> tables(std::begin(kProxyTables), std::end(kProxyTables));
  YamlReader::forEachEntry(node, "proxyVlans", [&](const YAML::Node& table, const YAML::Node& list) {
    const std::string name(tables[YamlReader::choice(table, "a proxy table", tables)]);
    YamlReader::requireList(list, "the VLANs of a proxy table");
    for (const YAML::Node& element : list) change.proxyVlans[name].push_back(vlan(element));
  });
}

// ---- Writing ----

namespace {

Lanx::AddressFamily family(Af af) {
  return af == Af::ipv6 ? Lanx::AddressFamily::ipv6 : Lanx::AddressFamily::ipv4;
}

Lanx::IpGenAddr addr(const std::string& text) {
  return text.empty() || text == "*" ? Lanx::IpGenAddr() : Lanx::IpGenAddr(text);
}

template <class Route>
Route route(const RouteKey& key) {
  return Route(addr(key.source), addr(key.group));
}

template <class T>
T& central(CentralStateStore& store, std::string_view path) {
  return *Lumo::ptrCast<T>(store.entityManager()->getEntity(path));
}

// A shared-memory table as its writer has it: made at its path if nobody made it yet, so
// that the agent's mount finds what was written before it came.
template <class T>
T& shared(CentralStateStore& store, std::string_view path) {
  if (auto present = Lumo::ptrCast<T>(store.sharedMem()->getEntity(path))) return *present;
  auto made = Lumo::makePtr<T>();
  store.sharedMem()->entityIs(path, made);
  return *made;
}

void writeVti(Vxlan::VtiStatusDir& dir, const std::string& name, const VtiChange& change,
              StateOp op) {
  const Lanx::IntfId intf(name);
  if (change.whole) {
    dir.vtiStatusDel(intf);
    return;
  }
  const bool set = op == StateOp::set;
  Vxlan::VtiStatus& vti = *dir.vtiStatusIs(intf);
  if (change.srcIpIntf) {
    vti.srcIpIntfIs(set && !change.srcIpIntf->empty() ? Lanx::IntfId(*change.srcIpIntf)
                                                      : Lanx::IntfId());
  }
  if (change.udpPort) vti.udpPortIs(set ? static_cast<std::uint16_t>(*change.udpPort) : 0);
  if (change.srcPort) vti.srcPortIs(set ? static_cast<std::uint16_t>(*change.srcPort) : 0);
  if (change.ttl) vti.ttlIs(set ? static_cast<std::uint8_t>(*change.ttl) : 0);
  if (change.vtep) vti.vtepAddrIs(set ? addr(*change.vtep) : Lanx::IpGenAddr());
  if (change.vtep6) vti.vtepAddr6Is(set ? addr(*change.vtep6) : Lanx::IpGenAddr());
  for (const auto& [vlan, vni] : change.vlanToVni) {
    const Bridging::VlanId id(static_cast<std::uint16_t>(vlan));
    set ? vti.vlanToVniMapIs(id, Vxlan::VniExtOrNone(vni)) : vti.vlanToVniMapDel(id);
  }
  for (const auto& [vrf, vni] : change.vrfToVni) {
    set ? vti.vrfToVniMapIs(L3::VrfName(vrf), Vxlan::VniExtOrNone(vni))
        : vti.vrfToVniMapDel(L3::VrfName(vrf));
  }
  for (const auto& [vrf, sbd] : change.vrfToSbdVlan) {
    set ? vti.vrfToSbdVlanMapIs(L3::VrfName(vrf),
                                Bridging::VlanIdOrNone(static_cast<std::uint16_t>(sbd)))
        : vti.vrfToSbdVlanMapDel(L3::VrfName(vrf));
  }
}

void writeTunnelMappings(Routing::Multicast::IpTunnelForwardingStatus& status, int vlan,
                         const std::vector<TunnelMappingChange>& mappings, StateOp op) {
  using Routing::Multicast::OverlayRoute;
  const Bridging::VlanId id(static_cast<std::uint16_t>(vlan));
  if (op == StateOp::remove && mappings.empty()) {
    status.vlanStatusDel(id);
    return;
  }
  auto vlanStatus = status.vlanStatusIs(id);
  for (const TunnelMappingChange& mapping : mappings) {
    const auto overlay = route<OverlayRoute>(mapping.overlay);
    if (op == StateOp::set) {
      vlanStatus->mappingIs(overlay, Routing::Multicast::IpTunnelMapping(
                                         route<Routing::Multicast::UnderlayRoute>(mapping.underlay)));
    } else {
      vlanStatus->mappingDel(overlay);
    }
  }
  // The routing agent lists a VLAN only while it has mappings.
  if (vlanStatus->mappings().empty()) status.vlanStatusDel(id);
}

}  // namespace

void VxlanStateKeys::write(CentralStateStore& store, const VxlanChange& change, StateOp op) {
  const bool set = op == StateOp::set;
  if (!change.fwdDevices.empty()) {
    auto status = central<Routing::Hardware::RouteStatus>(store, Routing::Hardware::RouteStatus::path)
                      .vrfStatusIs(L3::VrfName::defaultVrf());
    for (const auto& [af, device] : change.fwdDevices) {
      const auto ethType = af == Af::ipv6 ? Routing::Fwd0RoutingEthType::ipv6
                                          : Routing::Fwd0RoutingEthType::ipv4;
      set ? status->fwd0EthTypeEntryIs(ethType, Lumo::String(device))
          : status->fwd0EthTypeEntryDel(ethType);
    }
  }
  if (change.vxlanSwitchPktToMcastTunnelInSw) {
    central<Bridging::HwCapabilities>(store, Bridging::HwCapabilities::path)
        .vxlanSwitchPktToMcastTunnelInSwIs(*change.vxlanSwitchPktToMcastTunnelInSw);
  }
  auto& vtis = central<Vxlan::VtiStatusDir>(store, Vxlan::VtiStatusDir::path);
  for (const auto& [name, vti] : change.vtis) writeVti(vtis, name, vti, op);
  for (const auto& [table, vnis] : change.remoteVnis) {
    auto& status = shared<Vxlan::RemoteVniToVlanStatus>(
        store, Vxlan::RemoteVniToVlanStatus::mountPath(table, Lanx::IntfId("Vxlan1")));
    for (const auto& [vni, vlan] : vnis) {
      set ? status.vniToVlanIs(Vxlan::VniExtOrNone(vni),
                               Bridging::VlanId(static_cast<std::uint16_t>(vlan)))
          : status.vniToVlanDel(Vxlan::VniExtOrNone(vni));
    }
  }
  for (const auto& [af, routes] : change.decapRoutes) {
    auto& config = shared<Routing::Multicast::IpTunnelDecapConfig>(
        store, Routing::Multicast::IpTunnelDecapConfig::mountPath(family(af)));
    for (const RouteKey& key : routes) {
      const auto underlay = route<Routing::Multicast::UnderlayRoute>(key);
      set ? config.routeIs(underlay) : config.routeDel(underlay);
    }
  }
  for (const auto& [af, vlans] : change.mcastIrb) {
    auto& status = shared<Irb::Multicast::McastIrbStatus>(
        store, Irb::Multicast::McastIrbStatus::mountPath(family(af)));
    for (const auto& [vlan, sbd] : vlans) {
      const Bridging::VlanId id(static_cast<std::uint16_t>(vlan));
      set ? status.sbdVlanIs(id, Bridging::VlanId(static_cast<std::uint16_t>(sbd)))
          : status.sbdVlanDel(id);
    }
  }
  for (const auto& [af, vlans] : change.tunnelMappings) {
    auto& status = shared<Routing::Multicast::IpTunnelForwardingStatus>(
        store, Routing::Multicast::IpTunnelForwardingStatus::mountPath(family(af)));
    for (const auto& [vlan, mappings] : vlans) writeTunnelMappings(status, vlan, mappings, op);
  }
  for (const auto& [table, vlans] : change.proxyVlans) {
    auto& status = shared<Irb::Multicast::IgmpProxyStatus>(
        store, Irb::Multicast::IgmpProxyStatus::afMountPath(
                   table == "mld" ? Lanx::AddressFamily::ipv6 : Lanx::AddressFamily::ipv4));
    for (int vlan : vlans) {
      const Bridging::VlanId id(static_cast<std::uint16_t>(vlan));
      set ? status.vlanIs(id) : status.vlanDel(id);
    }
  }
}

}  // namespace VekHost
