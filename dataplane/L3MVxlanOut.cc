#include "dataplane/L3MVxlanOut.h"

#include "dataplane/VxlanArgs.h"
#include "runtime/vek/ProtoJson.h"

namespace Dataplane {

const CommandTable<L3MVxlanOut>& L3MVxlanOut::commands() {
  static const CommandTable<L3MVxlanOut> table{
      {"setUdpPort", "vek.pb.UdpPortArg", &L3MVxlanOut::setUdpPort},
      {"addVrfSBDVlan", "vek.pb.VrfVlanArg", &L3MVxlanOut::addVrfSBDVlan},
      {"deleteVrfSBDVlan", "vek.pb.VrfVlanArg", &L3MVxlanOut::deleteVrfSBDVlan},
      {"addOGateEntry", "vek.pb.AfVrfOGateArg", &L3MVxlanOut::addOGateEntry},
      {"deleteOGateEntry", "vek.pb.AfVrfOGateArg", &L3MVxlanOut::deleteOGateEntry},
      {"addVniVlan", "vek.pb.VlanVniArg", &L3MVxlanOut::addVniVlan},
      {"deleteVniVlan", "vek.pb.VlanVniArg", &L3MVxlanOut::deleteVniVlan},
      {"addVniVrf", "vek.pb.VniVrfArg", &L3MVxlanOut::addVniVrf},
      {"deleteVniVrf", "vek.pb.VniVrfArg", &L3MVxlanOut::deleteVniVrf},
      {"setCounterIds", "vek.pb.L3MVxlanOutCounterIdArg", &L3MVxlanOut::setCounterIds},
  };
  return table;
}

namespace {
// The key of the gate table, or nothing for a family the module does not know.
std::optional<std::string> familyVrfKey(std::uint32_t af, std::uint32_t vrfId) {
  if (af != 1 && af != 2) return std::nullopt;
  return fmt::format("{}:{}", af == 1 ? "ipv4" : "ipv6", vrfId);
}
}  // namespace

// Port 0 would make the module take every UDP packet for VXLAN: it is refused.
CommandResult L3MVxlanOut::setUdpPort(const vek::pb::UdpPortArg& arg) {
  if (arg.udpport() == 0) return CommandResult::error(EINVAL, "UDP port 0");
  if (auto refused = VxlanArgs::port(arg.udpport())) return std::move(*refused);
  udpPort_ = arg.udpport();
  return CommandResult::ok();
}

CommandResult L3MVxlanOut::addVrfSBDVlan(const vek::pb::VrfVlanArg& arg) {
  if (auto refused = VxlanArgs::vrfId(arg.vrfid())) return std::move(*refused);
  if (auto refused = VxlanArgs::vlan(arg.vlanid())) return std::move(*refused);
  vrfSbdVlan_[arg.vrfid()] = arg.vlanid();
  return CommandResult::ok();
}

CommandResult L3MVxlanOut::deleteVrfSBDVlan(const vek::pb::VrfVlanArg& arg) {
  vrfSbdVlan_.erase(arg.vrfid());
  return CommandResult::ok();
}

CommandResult L3MVxlanOut::addOGateEntry(const vek::pb::AfVrfOGateArg& arg) {
  const auto key = familyVrfKey(arg.af(), arg.vrfid());
  if (!key) return CommandResult::error(EINVAL, fmt::format("address family {}", arg.af()));
  if (auto refused = VxlanArgs::vrfId(arg.vrfid())) return std::move(*refused);
  if (arg.ogate() >= context_.outGates) {
    return CommandResult::error(ERANGE, fmt::format("gate {} out of range", arg.ogate()));
  }
  oGates_[*key] = arg.ogate();
  return CommandResult::ok();
}

CommandResult L3MVxlanOut::deleteOGateEntry(const vek::pb::AfVrfOGateArg& arg) {
  const auto key = familyVrfKey(arg.af(), arg.vrfid());
  if (!key) return CommandResult::error(EINVAL, fmt::format("address family {}", arg.af()));
  oGates_.erase(*key);
  return CommandResult::ok();
}

CommandResult L3MVxlanOut::addVniVlan(const vek::pb::VlanVniArg& arg) {
  if (auto refused = VxlanArgs::vni(arg.vni())) return std::move(*refused);
  if (auto refused = VxlanArgs::vlan(arg.vlanid())) return std::move(*refused);
  vniVlan_[arg.vni()] = arg.vlanid();
  return CommandResult::ok();
}

CommandResult L3MVxlanOut::deleteVniVlan(const vek::pb::VlanVniArg& arg) {
  vniVlan_.erase(arg.vni());
  return CommandResult::ok();
}

CommandResult L3MVxlanOut::addVniVrf(const vek::pb::VniVrfArg& arg) {
  if (auto refused = VxlanArgs::vni(arg.vni())) return std::move(*refused);
  if (auto refused = VxlanArgs::vrfId(arg.vrfid())) return std::move(*refused);
  vniVrf_[arg.vni()] = arg.vrfid();
  return CommandResult::ok();
}

CommandResult L3MVxlanOut::deleteVniVrf(const vek::pb::VniVrfArg& arg) {
  vniVrf_.erase(arg.vni());
  return CommandResult::ok();
}

CommandResult L3MVxlanOut::setCounterIds(const vek::pb::L3MVxlanOutCounterIdArg& arg) {
  counterIds_ = Vek::ProtoJson::of(arg);
  return CommandResult::ok();
}

namespace {
nlohmann::ordered_json byNumber(const std::map<std::uint32_t, std::uint32_t>& table) {
  nlohmann::ordered_json out = nlohmann::ordered_json::object();
  for (const auto& [key, value] : table) out[std::to_string(key)] = value;
  return out;
}
}  // namespace

nlohmann::ordered_json L3MVxlanOut::dump() const {
  return {{"udpPort", udpPort_},
          {"vrfSbdVlan", byNumber(vrfSbdVlan_)},
          {"oGates", oGates_.empty() ? nlohmann::ordered_json::object()
                                     : nlohmann::ordered_json(oGates_)},
          {"vniVlan", byNumber(vniVlan_)},
          {"vniVrf", byNumber(vniVrf_)},
          {"counterIds", counterIds_}};
}

}  // namespace Dataplane
