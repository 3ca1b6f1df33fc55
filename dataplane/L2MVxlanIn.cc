#include "dataplane/L2MVxlanIn.h"

#include <fmt/format.h>

#include <cerrno>

#include "dataplane/AddressText.h"
#include "dataplane/TableJson.h"
#include "dataplane/VxlanArgCheck.h"
#include "runtime/vek/ProtoJson.h"

namespace Dataplane {

const CommandTable<L2MVxlanIn>& L2MVxlanIn::commands() {
  static const CommandTable<L2MVxlanIn> table{
      {"addVlan", "vek.pb.VlanVniArg", &L2MVxlanIn::addVlan},
      {"deleteVlan", "vek.pb.VlanVniArg", &L2MVxlanIn::deleteVlan},
      {"addVlanToSBDVlan", "vek.pb.VlanToSBDVlanArg", &L2MVxlanIn::addVlanToSBDVlan},
      {"delVlanToSBDVlan", "vek.pb.VlanToSBDVlanArg", &L2MVxlanIn::delVlanToSBDVlan},
      {"addVlanFloodSetEntry", "vek.pb.VlanVtepFloodSetArg", &L2MVxlanIn::addVlanFloodSetEntry},
      {"deleteVlanFloodSetEntry", "vek.pb.VlanVtepFloodSetArg",
       &L2MVxlanIn::deleteVlanFloodSetEntry},
      {"setSrcIpIntf", "vek.pb.IntfIdArg", &L2MVxlanIn::setSrcIpIntf},
      {"addOverlayVlanGroup", "vek.pb.L2MVxlanOverlayVlanGroupArg",
       &L2MVxlanIn::addOverlayVlanGroup},
      {"deleteOverlayVlanGroup", "vek.pb.L2MVxlanOverlayVlanGroupArg",
       &L2MVxlanIn::deleteOverlayVlanGroup},
      {"setVtepAddr", "vek.pb.IpGenAddrArg", &L2MVxlanIn::setVtepAddr},
      {"setVtepAddr6", "vek.pb.IpGenAddrArg", &L2MVxlanIn::setVtepAddr6},
      {"addGmpVlanGroupMember", "vek.pb.GmpVlanGroupMemberArg",
       &L2MVxlanIn::addGmpVlanGroupMember},
      {"deleteGmpVlanGroupMember", "vek.pb.GmpVlanGroupMemberArg",
       &L2MVxlanIn::deleteGmpVlanGroupMember},
      {"setLocalBridgeMacAddr", "vek.pb.EthernetConfigArg", &L2MVxlanIn::setLocalBridgeMacAddr},
      {"setVxlanSwitchPktToMcastTunnelInSw", "vek.pb.VxlanSwitchPktToMcastTunnelInSwArg",
       &L2MVxlanIn::setVxlanSwitchPktToMcastTunnelInSw},
      {"setCounterIds", "vek.pb.L2MVxlanInCounterIdArg", &L2MVxlanIn::setCounterIds},
  };
  return table;
}

namespace {
using Check = VxlanArgCheck;
}  // namespace

CommandResult L2MVxlanIn::addVlan(const vek::pb::VlanVniArg& arg) {
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  if (auto refused = Check::vni(arg.vni())) return std::move(*refused);
  vlanToVni_[arg.vlanid()] = arg.vni();
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::deleteVlan(const vek::pb::VlanVniArg& arg) {
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  vlanToVni_.erase(arg.vlanid());
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::addVlanToSBDVlan(const vek::pb::VlanToSBDVlanArg& arg) {
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  if (auto refused = Check::vlan("SBD VLAN", arg.sbdvlanid())) return std::move(*refused);
  vlanToSbdVlan_[arg.vlanid()] = arg.sbdvlanid();
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::delVlanToSBDVlan(const vek::pb::VlanToSBDVlanArg& arg) {
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  vlanToSbdVlan_.erase(arg.vlanid());
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::addVlanFloodSetEntry(const vek::pb::VlanVtepFloodSetArg& arg) {
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  if (auto refused = Check::addr("VTEP", arg.vtepaddr())) return std::move(*refused);
  floodSets_[arg.vlanid()].insert(*AddressText::ip(arg.vtepaddr()));
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::deleteVlanFloodSetEntry(const vek::pb::VlanVtepFloodSetArg& arg) {
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  if (auto refused = Check::addr("VTEP", arg.vtepaddr())) return std::move(*refused);
  auto set = floodSets_.find(arg.vlanid());
  if (set == floodSets_.end()) return CommandResult::ok();
  set->second.erase(*AddressText::ip(arg.vtepaddr()));
  if (set->second.empty()) floodSets_.erase(set);
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::setSrcIpIntf(const vek::pb::IntfIdArg& arg) {
  srcIpIntf_ = arg.intfid();
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::addOverlayVlanGroup(const vek::pb::L2MVxlanOverlayVlanGroupArg& arg) {
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  if (auto refused = Check::addr("overlay group", arg.overlaygroup())) return std::move(*refused);
  if (auto refused = Check::addrOrAny("underlay source", arg.underlaysource())) {
    return std::move(*refused);
  }
  if (auto refused = Check::addr("underlay group", arg.underlaygroup())) {
    return std::move(*refused);
  }
  overlayGroups_[{arg.vlanid(), *AddressText::ip(arg.overlaygroup())}] =
      Underlay{Check::addrTextOrAny(arg.underlaysource()), *AddressText::ip(arg.underlaygroup())};
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::deleteOverlayVlanGroup(
    const vek::pb::L2MVxlanOverlayVlanGroupArg& arg) {
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  if (auto refused = Check::addr("overlay group", arg.overlaygroup())) return std::move(*refused);
  overlayGroups_.erase({arg.vlanid(), *AddressText::ip(arg.overlaygroup())});
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::setVtep(std::string& vtep, std::size_t size,
                                  const vek::pb::IpGenAddrArg& arg) {
  if (!arg.addr().empty() && arg.addr().size() != size) {
    return CommandResult::error(
        EINVAL, fmt::format("a VTEP address here has {} bytes, not {}", size, arg.addr().size()));
  }
  vtep = arg.addr().empty() ? std::string() : *AddressText::ip(arg.addr());
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::setVtepAddr(const vek::pb::IpGenAddrArg& arg) {
  return setVtep(vtepAddr_, 4, arg);
}

CommandResult L2MVxlanIn::setVtepAddr6(const vek::pb::IpGenAddrArg& arg) {
  return setVtep(vtepAddr6_, 16, arg);
}

CommandResult L2MVxlanIn::addGmpVlanGroupMember(const vek::pb::GmpVlanGroupMemberArg& arg) {
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  auto member = AddressText::mac(arg.groupmember());
  if (!member) return CommandResult::error(EINVAL, "a group member is a MAC address of 6 bytes");
  std::vector<std::string> vteps;
  for (const std::string& vtep : arg.vtepaddr()) {
    if (auto refused = Check::addr("VTEP", vtep)) return std::move(*refused);
    vteps.push_back(*AddressText::ip(vtep));
  }
  groupMembers_[{arg.vlanid(), *member}] = std::move(vteps);  // the whole list, replaced
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::deleteGmpVlanGroupMember(const vek::pb::GmpVlanGroupMemberArg& arg) {
  if (auto refused = Check::vlan("VLAN", arg.vlanid())) return std::move(*refused);
  auto member = AddressText::mac(arg.groupmember());
  if (!member) return CommandResult::error(EINVAL, "a group member is a MAC address of 6 bytes");
  groupMembers_.erase({arg.vlanid(), *member});
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::setLocalBridgeMacAddr(const vek::pb::EthernetConfigArg& arg) {
  auto mac = AddressText::mac(arg.bridgemacaddr());
  if (!mac) return CommandResult::error(EINVAL, "a MAC address has six bytes");
  bridgeMacAddr_ = *mac;
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::setVxlanSwitchPktToMcastTunnelInSw(
    const vek::pb::VxlanSwitchPktToMcastTunnelInSwArg& arg) {
  switching_ = arg.switching();
  return CommandResult::ok();
}

CommandResult L2MVxlanIn::setCounterIds(const vek::pb::L2MVxlanInCounterIdArg& arg) {
  counterIds_ = Vek::ProtoJson::of(arg);
  return CommandResult::ok();
}

nlohmann::ordered_json L2MVxlanIn::dump() const {
  nlohmann::ordered_json groups = nlohmann::ordered_json::object();
  for (const auto& [key, underlay] : overlayGroups_) {
    groups[fmt::format("{},{}", key.first, key.second)] = {{"underlaySource", underlay.source},
                                                           {"underlayGroup", underlay.group}};
  }
  nlohmann::ordered_json members = nlohmann::ordered_json::object();
  for (const auto& [key, vteps] : groupMembers_) {
    members[fmt::format("{},{}", key.first, key.second)] = vteps;
  }
  return {{"vlanToVni", numberKeyed(vlanToVni_)},
          {"vlanToSbdVlan", numberKeyed(vlanToSbdVlan_)},
          {"floodSets", numberKeyed(floodSets_)},
          {"overlayGroups", std::move(groups)},
          {"groupMembers", std::move(members)},
          {"vtepAddr", textOrNull(vtepAddr_)},
          {"vtepAddr6", textOrNull(vtepAddr6_)},
          {"srcIpIntf", std::to_string(srcIpIntf_)},
          {"bridgeMacAddr", textOrNull(bridgeMacAddr_)},
          {"switching", switching_},
          {"counterIds", counterIds_}};
}

}  // namespace Dataplane
