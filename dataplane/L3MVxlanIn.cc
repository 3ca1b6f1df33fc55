#include "dataplane/L3MVxlanIn.h"

#include "dataplane/VxlanArgs.h"
#include "runtime/vek/ProtoJson.h"

namespace Dataplane {

const CommandTable<L3MVxlanIn>& L3MVxlanIn::commands() {
  static const CommandTable<L3MVxlanIn> table{
      {"setVxlanDestPort", "vek.pb.UdpPortArg", &L3MVxlanIn::setVxlanDestPort},
      {"setVxlanSrcPort", "vek.pb.UdpPortArg", &L3MVxlanIn::setVxlanSrcPort},
      {"setVxlanTTL", "vek.pb.TtlArg", &L3MVxlanIn::setVxlanTTL},
      {"setVtepIntfId", "vek.pb.IntfIdArg", &L3MVxlanIn::setVtepIntfId},
      {"addSrcIntfIdToVni", "vek.pb.IntfIdVniArg", &L3MVxlanIn::addSrcIntfIdToVni},
      {"deleteSrcIntfIdToVni", "vek.pb.IntfIdArg", &L3MVxlanIn::deleteSrcIntfIdToVni},
      {"setVtepAddr", "vek.pb.IpGenAddrArg", &L3MVxlanIn::setVtepAddr},
      {"setVtepAddr6", "vek.pb.IpGenAddrArg", &L3MVxlanIn::setVtepAddr6},
      {"addVrfOverlayToUnderlayGroup", "vek.pb.VrfOverlayToUnderlayGroupArg",
       &L3MVxlanIn::addVrfOverlayToUnderlayGroup},
      {"deleteVrfOverlayToUnderlayGroup", "vek.pb.VrfOverlayToUnderlayGroupArg",
       &L3MVxlanIn::deleteVrfOverlayToUnderlayGroup},
      {"setCounterIds", "vek.pb.L3MVxlanInCounterIdArg", &L3MVxlanIn::setCounterIds},
  };
  return table;
}

// Port 0 and TTL 0 are values the module takes: they mean "not configured".
CommandResult L3MVxlanIn::setVxlanDestPort(const vek::pb::UdpPortArg& arg) {
  if (auto refused = VxlanArgs::port(arg.udpport())) return std::move(*refused);
  destPort_ = arg.udpport();
  return CommandResult::ok();
}

CommandResult L3MVxlanIn::setVxlanSrcPort(const vek::pb::UdpPortArg& arg) {
  if (auto refused = VxlanArgs::port(arg.udpport())) return std::move(*refused);
  srcPort_ = arg.udpport();
  return CommandResult::ok();
}

CommandResult L3MVxlanIn::setVxlanTTL(const vek::pb::TtlArg& arg) {
  if (arg.ttl() > 255) return CommandResult::error(EINVAL, fmt::format("TTL {} > 255", arg.ttl()));
  ttl_ = arg.ttl();
  return CommandResult::ok();
}

CommandResult L3MVxlanIn::setVtepIntfId(const vek::pb::IntfIdArg& arg) {
  vtepIntfId_ = arg.intfid();
  return CommandResult::ok();
}

CommandResult L3MVxlanIn::addSrcIntfIdToVni(const vek::pb::IntfIdVniArg& arg) {
  if (arg.srcintfid() == 0) return CommandResult::error(EINVAL, "no source interface");
  if (auto refused = VxlanArgs::vni(arg.vni())) return std::move(*refused);
  srcIntfIdToVni_[arg.srcintfid()] = arg.vni();
  return CommandResult::ok();
}

CommandResult L3MVxlanIn::deleteSrcIntfIdToVni(const vek::pb::IntfIdArg& arg) {
  srcIntfIdToVni_.erase(arg.intfid());
  return CommandResult::ok();
}

CommandResult L3MVxlanIn::setVtepAddr(const vek::pb::IpGenAddrArg& arg) {
  if (!arg.addr().empty()) {
    if (auto refused = VxlanArgs::addr("IPv4 VTEP address", arg.addr(), 4)) {
      return std::move(*refused);
    }
  }
  vtepAddr_ = arg.addr().empty() ? std::string() : VxlanArgs::text(arg.addr());
  return CommandResult::ok();
}

CommandResult L3MVxlanIn::setVtepAddr6(const vek::pb::IpGenAddrArg& arg) {
  if (!arg.addr().empty()) {
    if (auto refused = VxlanArgs::addr("IPv6 VTEP address", arg.addr(), 16)) {
      return std::move(*refused);
    }
  }
  vtepAddr6_ = arg.addr().empty() ? std::string() : VxlanArgs::text(arg.addr());
  return CommandResult::ok();
}

CommandResult L3MVxlanIn::addVrfOverlayToUnderlayGroup(
    const vek::pb::VrfOverlayToUnderlayGroupArg& arg) {
  if (auto refused = VxlanArgs::vrfId(arg.vrfid())) return std::move(*refused);
  if (auto refused = VxlanArgs::addr("overlay group", arg.overlaygroup())) {
    return std::move(*refused);
  }
  if (auto refused = VxlanArgs::addr("underlay group", arg.underlaygroup())) {
    return std::move(*refused);
  }
  if (arg.underlaygroup().find_first_not_of('\0') == std::string::npos) {
    return CommandResult::error(EINVAL, "the underlay group is zero");
  }
  groups_[arg.vrfid()][VxlanArgs::text(arg.overlaygroup())] =
      VxlanArgs::text(arg.underlaygroup());
  return CommandResult::ok();
}

CommandResult L3MVxlanIn::deleteVrfOverlayToUnderlayGroup(
    const vek::pb::VrfOverlayToUnderlayGroupArg& arg) {
  if (arg.allgroups()) {
    groups_.erase(arg.vrfid());
    return CommandResult::ok();
  }
  if (auto refused = VxlanArgs::addr("overlay group", arg.overlaygroup())) {
    return std::move(*refused);
  }
  if (auto vrf = groups_.find(arg.vrfid()); vrf != groups_.end()) {
    vrf->second.erase(VxlanArgs::text(arg.overlaygroup()));
    if (vrf->second.empty()) groups_.erase(vrf);
  }
  return CommandResult::ok();
}

CommandResult L3MVxlanIn::setCounterIds(const vek::pb::L3MVxlanInCounterIdArg& arg) {
  counterIds_ = Vek::ProtoJson::of(arg);
  return CommandResult::ok();
}

nlohmann::ordered_json L3MVxlanIn::dump() const {
  nlohmann::ordered_json srcIntfs = nlohmann::ordered_json::object();
  for (const auto& [intfId, vni] : srcIntfIdToVni_) srcIntfs[std::to_string(intfId)] = vni;
  nlohmann::ordered_json groups = nlohmann::ordered_json::object();
  for (const auto& [vrfId, byGroup] : groups_) groups[std::to_string(vrfId)] = byGroup;
  return {{"vxlanDestPort", destPort_},
          {"vxlanSrcPort", srcPort_},
          {"vxlanTtl", ttl_},
          {"vtepIntfId", std::to_string(vtepIntfId_)},
          {"vtepAddr", vtepAddr_},
          {"vtepAddr6", vtepAddr6_},
          {"srcIntfIdToVni", std::move(srcIntfs)},
          {"vrfOverlayToUnderlayGroup", std::move(groups)},
          {"counterIds", counterIds_}};
}

}  // namespace Dataplane
