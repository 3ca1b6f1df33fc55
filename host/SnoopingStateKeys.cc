#include "host/SnoopingStateKeys.h"

#include <algorithm>
#include <set>

#include "host/CentralStateStore.h"
#include "host/StateChange.h"
#include "host/ValueText.h"
#include "host/YamlReader.h"
#include "runtime/state/EthAddr.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/IpGenAddr.h"
#include "runtime/state/bridging/IgmpSnoopingStatus.h"
#include "runtime/state/multicast/OismFloodSet.h"
#include "runtime/state/vxlan/MVxlanTepModule.h"

namespace VekHost {

namespace {

int vlanOf(const YAML::Node& node) {
  return static_cast<int>(YamlReader::integer(node, "a VLAN", 1, 4094));
}

std::string macOf(const YAML::Node& node) {
  const std::string text = YamlReader::text(node, "a group");
  const auto mac = ValueText::mac(text);
  if (!mac) YamlReader::fail(node, "group '" + text + "' is not a MAC address (xx:xx:xx:xx:xx:xx)");
  return *mac;
}

// A VTEP: an IPv4 or IPv6 unicast address, in canonical text.
std::string vtepOf(const YAML::Node& node) {
  const std::string text = YamlReader::text(node, "a VTEP");
  const auto addr = Lanx::IpGenAddr::fromString(text);
  if (!addr || addr->isMulticast()) {
    YamlReader::fail(node, "VTEP '" + text + "' is not a unicast IPv4 or IPv6 address");
  }
  return addr->toString();
}

// An interface, or a multicast tunnel in the form {tunnel: 1, vtep: 10.0.0.9}.
std::string intfOf(const ValueReader& values, const YAML::Node& node, std::string_view what) {
  if (!node.IsMap()) return values.intf(node, what);
  YamlReader::requireMapWithKeys(node, "a tunnel", {"tunnel", "vtep"});
  const auto type = YamlReader::integer(YamlReader::required(node, "tunnel"), "tunnel", 1, 15);
  const std::string text = "{tunnel: " + std::to_string(type) +
                           ", vtep: " + vtepOf(YamlReader::required(node, "vtep")) + "}";
  std::string whyNot;
  if (!Lanx::IntfId::fromName(text, &whyNot)) YamlReader::fail(node, "tunnel: " + whyNot);
  return text;
}

std::vector<std::string> intfsOf(const ValueReader& values, const YAML::Node& node,
                                 std::string_view what) {
  if (node.IsNull()) return {};
  YamlReader::requireList(node, what);
  std::vector<std::string> intfs;
  for (const YAML::Node& element : node) intfs.push_back(intfOf(values, element, what));
  return intfs;
}

SnoopedVlan snoopedVlan(const ValueReader& values, const YAML::Node& node, StateOp op) {
  SnoopedVlan vlan;
  if (node.IsNull()) {
    vlan.whole = op == StateOp::remove;
    return vlan;
  }
  YamlReader::requireMapWithKeys(node, "a snooped VLAN", {"routerIntfs", "groups"});
  if (YamlReader::has(node, "routerIntfs")) {
    vlan.routerIntfs = intfsOf(values, node["routerIntfs"], "routerIntfs");
  }
  if (!YamlReader::has(node, "groups")) return vlan;
  const YAML::Node groups = node["groups"];
  if (op == StateOp::remove && groups.IsSequence()) {
    for (const YAML::Node& mac : groups) vlan.groups[macOf(mac)] = {};
    return vlan;
  }
  YamlReader::forEachEntry(groups, "the groups of a VLAN",
                           [&](const YAML::Node& mac, const YAML::Node& members) {
                             vlan.groups[macOf(mac)] = intfsOf(values, members, "group members");
                           });
  return vlan;
}

// Makes `set` hold exactly `wanted`, with the entity's own mutators.
template <typename Key, typename Current, typename Add, typename Del>
void replaceSet(const Current& current, const std::set<Key>& wanted, Add add, Del del) {
  std::vector<Key> gone;
  for (const auto& member : current) {
    if (!wanted.count(member.key)) gone.push_back(member.key);
  }
  for (const auto& key : gone) del(key);
  for (const auto& key : wanted) add(key);
}

template <typename Key>
std::set<Key> keysOf(const std::vector<std::string>& texts) {
  std::set<Key> keys;
  for (const std::string& text : texts) keys.insert(Key(text));
  return keys;
}

void writeSnoopedVlan(Bridging::IgmpSnooping::Status& status, int id, const SnoopedVlan& vlan,
                      StateOp op) {
  const Bridging::VlanId vlanId(static_cast<std::uint16_t>(id));
  if (op == StateOp::remove) {
    if (vlan.whole) {
      status.vlanStatusDel(vlanId);
      return;
    }
    auto present = status.vlanStatus(vlanId);
    if (!present) return;
    auto& writable = *status.vlanStatusIs(vlanId);
    if (vlan.routerIntfs) {
      for (const auto& intf : keysOf<Lanx::IntfId>(*vlan.routerIntfs)) writable.routerIntfDel(intf);
    }
    for (const auto& [mac, members] : vlan.groups) writable.ethGroupDel(Lanx::EthAddr(mac));
    return;
  }
  auto& writable = *status.vlanStatusIs(vlanId);
  if (vlan.routerIntfs) {
    replaceSet(
        writable.routerIntfs(), keysOf<Lanx::IntfId>(*vlan.routerIntfs),
        [&](Lanx::IntfId intf) { writable.routerIntfIs(intf); },
        [&](Lanx::IntfId intf) { writable.routerIntfDel(intf); });
  }
  for (const auto& [mac, members] : vlan.groups) {
    auto& group = *writable.ethGroupIs(Lanx::EthAddr(mac));
    replaceSet(
        group.memberIntfs(), keysOf<Lanx::IntfId>(members),
        [&](Lanx::IntfId intf) { group.memberIntfIs(intf); },
        [&](Lanx::IntfId intf) { group.memberIntfDel(intf); });
  }
}

void writeFloodSet(Routing::Multicast::Evpn::OismFloodSet& floodSets, int id,
                   const std::vector<std::string>& vteps, StateOp op) {
  const Bridging::VlanId vlanId(static_cast<std::uint16_t>(id));
  if (op == StateOp::remove) {
    if (vteps.empty()) {
      floodSets.floodSetDel(vlanId);
      return;
    }
    if (!floodSets.floodSet(vlanId)) return;
    auto& floodSet = *floodSets.floodSetIs(vlanId);
    for (const std::string& vtep : vteps) floodSet.vtepDel(Lanx::IpGenAddr(vtep));
    return;
  }
  auto& floodSet = *floodSets.floodSetIs(vlanId);
  replaceSet(
      floodSet.vteps(), keysOf<Lanx::IpGenAddr>(vteps),
      [&](const Lanx::IpGenAddr& vtep) { floodSet.vtepIs(vtep); },
      [&](const Lanx::IpGenAddr& vtep) { floodSet.vtepDel(vtep); });
}

template <typename T>
T& entityAt(const Lumo::Ptr<Qel::Entity>& entity) {
  auto* typed = dynamic_cast<T*>(entity.get());
  QEL_ASSERT(typed, "central state holds another type at the path");
  return *typed;
}

}  // namespace

void SnoopingStateKeys::readSnooping(const ValueReader& values, const YAML::Node& node,
                                     StateOp op, SnoopingChange& change) {
  YamlReader::forEachEntry(node, "snooping", [&](const YAML::Node& af, const YAML::Node& vlans) {
    auto& byVlan = change.snooping[values.af(af)];
    if (op == StateOp::remove && vlans.IsSequence()) {
      for (const YAML::Node& vlan : vlans) byVlan[vlanOf(vlan)].whole = true;
      return;
    }
    YamlReader::forEachEntry(vlans, "the VLANs of a family",
                             [&](const YAML::Node& vlan, const YAML::Node& value) {
                               byVlan[vlanOf(vlan)] = snoopedVlan(values, value, op);
                             });
  });
}

void SnoopingStateKeys::readOismFloodSet(const YAML::Node& node, StateOp op,
                                         SnoopingChange& change) {
  if (op == StateOp::remove && node.IsSequence()) {
    for (const YAML::Node& vlan : node) change.oismFloodSet[vlanOf(vlan)] = {};
    return;
  }
  YamlReader::forEachEntry(node, "oismFloodSet", [&](const YAML::Node& vlan, const YAML::Node& vteps) {
    auto& list = change.oismFloodSet[vlanOf(vlan)];
    list.clear();
    if (vteps.IsNull()) return;
    YamlReader::requireList(vteps, "the VTEPs of a flood set");
    for (const YAML::Node& vtep : vteps) list.push_back(vtepOf(vtep));
  });
}

void SnoopingStateKeys::readVxlanVtepVlanStatus(const YAML::Node& node, SnoopingChange& change) {
  YamlReader::requireList(node, "vxlanVtepVlanStatus");
  for (const YAML::Node& element : node) {
    YamlReader::requireMapWithKeys(element, "a VTEP VLAN status key", {"vtep", "vlan"});
    change.vxlanVtepVlanStatus.emplace_back(vtepOf(YamlReader::required(element, "vtep")),
                                            vlanOf(YamlReader::required(element, "vlan")));
  }
}

void SnoopingStateKeys::write(CentralStateStore& store, const SnoopingChange& change, StateOp op) {
  for (const auto& [af, vlans] : change.snooping) {
    auto& status = entityAt<Bridging::IgmpSnooping::Status>(store.entityManager()->getEntity(
        af == Af::ipv4 ? Bridging::IgmpSnooping::Status::igmpPath
                       : Bridging::IgmpSnooping::Status::mldPath));
    for (const auto& [vlan, value] : vlans) writeSnoopedVlan(status, vlan, value, op);
  }
  if (!change.oismFloodSet.empty()) {
    auto& floodSets = entityAt<Routing::Multicast::Evpn::OismFloodSet>(
        store.sharedMem()->getEntity(Routing::Multicast::Evpn::OismFloodSet::mountPath()));
    for (const auto& [vlan, vteps] : change.oismFloodSet) writeFloodSet(floodSets, vlan, vteps, op);
  }
  if (!change.vxlanVtepVlanStatus.empty()) {
    auto& table = *VekModules::MVxlanTepModule::moduleIs()->vxlanVtepVlanStatus();
    for (const auto& [vtep, vlan] : change.vxlanVtepVlanStatus) {
      const VekMVxlan::VtepVlan key{Lanx::IpGenAddr(vtep),
                                    Bridging::VlanId(static_cast<std::uint16_t>(vlan))};
      if (op == StateOp::set) {
        table.vlanStatusIs(key);
      } else {
        table.vlanStatusDel(key);
      }
    }
  }
}

nlohmann::json SnoopingStateKeys::vxlanVtepVlanStatusDump() {
  std::vector<VekMVxlan::VtepVlan> keys;
  if (Qel::Entity::singletonExists(VekModules::MVxlanTepModule::singletonName)) {
    for (const auto& member : VekModules::MVxlanTepModule::moduleIs()->vxlanVtepVlanStatus()->vlanStatuses()) {
      keys.push_back(member.key);
    }
  }
  std::sort(keys.begin(), keys.end());
  nlohmann::json list = nlohmann::json::array();
  for (const auto& key : keys) {
    list.push_back({{"vtep", key.vtep.toString()}, {"vlan", key.vlan.value()}});
  }
  return list;
}

}  // namespace VekHost
