#include "host/MvpnStateKeys.h"

#include "host/YamlReader.h"
#include "runtime/state/IntfId.h"
#include "runtime/state/MvpnIntfStatus.h"
#include "runtime/state/VlanIntfId.h"

namespace VekHost {

namespace {

std::string providerIntf(const ValueReader& values, const YAML::Node& node) {
  std::string name = values.intf(node, "a provider interface");
  const std::optional<Lanx::IntfId> id = Lanx::IntfId::fromName(name);
  const std::uint16_t vlan = id ? Lanx::VlanIntfId::vlanId(*id) : 0;
  if (vlan < 1 || vlan > 4094) {
    YamlReader::fail(node, "provider interface '" + name +
                               "' is not a VLAN interface (Vlan1 to Vlan4094)");
  }
  return name;
}

}  // namespace

void MvpnStateKeys::readMvpnIntfs(const ValueReader& values, const YAML::Node& node, StateOp op,
                                  StateChange& change) {
  if (op == StateOp::remove && node.IsSequence()) {
    for (const YAML::Node& id : node) change.mvpnIntfs[values.vrfId(id)] = "";
    return;
  }
  YamlReader::forEachEntry(node, "mvpnIntfs", [&](const YAML::Node& id, const YAML::Node& intf) {
    change.mvpnIntfs[values.vrfId(id)] = providerIntf(values, intf);
  });
}

void MvpnStateKeys::write(CentralStateStore& store, const StateChange& change, StateOp op) {
  Routing::Multicast::MvpnIntfStatus& table = store.mvpnIntfs();
  for (const auto& [id, intf] : change.mvpnIntfs) {
    if (op == StateOp::set) {
      table.intfIs(Vrf::VrfIdMap::VrfId(id), Lanx::IntfId(intf));
    } else {
      table.intfDel(Vrf::VrfIdMap::VrfId(id));
    }
  }
}

}  // namespace VekHost
