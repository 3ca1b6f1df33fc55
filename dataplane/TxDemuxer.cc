#include "dataplane/TxDemuxer.h"

#include <string>

#include "runtime/vek/ProtoJson.h"

namespace Dataplane {

const CommandTable<TxDemuxer>& TxDemuxer::commands() {
  static const CommandTable<TxDemuxer> table{
      {"addDstIntfIdToOutGate", "vek.pb.IntfGateArg", &TxDemuxer::addDstIntfIdToOutGate},
      {"deleteDstIntfIdToOutGate", "vek.pb.IntfGateArg", &TxDemuxer::deleteDstIntfIdToOutGate},
      {"addVrfIdToPmsiVlan", "vek.pb.VrfVlanArg", &TxDemuxer::addVrfIdToPmsiVlan},
      {"deleteVrfIdToPmsiVlan", "vek.pb.VrfIdArg", &TxDemuxer::deleteVrfIdToPmsiVlan},
      {"setCounterIds", "vek.pb.TxDemuxerCounterIdArg", &TxDemuxer::setCounterIds},
  };
  return table;
}

namespace {
constexpr std::uint32_t maxVlanId = 4094;
}

CommandResult TxDemuxer::addDstIntfIdToOutGate(const vek::pb::IntfGateArg& arg) {
  if (arg.ogate() >= context_.outGates) {
    return CommandResult::error(ERANGE, fmt::format("gate {} out of range", arg.ogate()));
  }
  if (arg.vlanid() > maxVlanId) {
    return CommandResult::error(EINVAL, fmt::format("VLAN {} out of range", arg.vlanid()));
  }
  intfToOutGate_[arg.intfid()] = OutGate{arg.ogate(), arg.vlanid()};  // the last one decides
  return CommandResult::ok();
}

CommandResult TxDemuxer::deleteDstIntfIdToOutGate(const vek::pb::IntfGateArg& arg) {
  intfToOutGate_.erase(arg.intfid());
  return CommandResult::ok();
}

CommandResult TxDemuxer::addVrfIdToPmsiVlan(const vek::pb::VrfVlanArg& arg) {
  if (arg.vlanid() == 0 || arg.vlanid() > maxVlanId) {
    return CommandResult::error(EINVAL, fmt::format("VLAN {} out of range", arg.vlanid()));
  }
  vrfIdToPmsiVlan_[arg.vrfid()] = arg.vlanid();
  return CommandResult::ok();
}

CommandResult TxDemuxer::deleteVrfIdToPmsiVlan(const vek::pb::VrfIdArg& arg) {
  vrfIdToPmsiVlan_.erase(arg.vrfid());
  return CommandResult::ok();
}

CommandResult TxDemuxer::setCounterIds(const vek::pb::TxDemuxerCounterIdArg& arg) {
  counterIds_ = Vek::ProtoJson::of(arg);
  return CommandResult::ok();
}

nlohmann::ordered_json TxDemuxer::dump() const {
  nlohmann::ordered_json intfs = nlohmann::ordered_json::object();
  for (const auto& [intfId, out] : intfToOutGate_) {
    intfs[std::to_string(intfId)] = {{"gate", out.gate}, {"vlan", out.vlan}};
  }
  nlohmann::ordered_json vlans = nlohmann::ordered_json::object();
  for (const auto& [vrfId, vlan] : vrfIdToPmsiVlan_) vlans[std::to_string(vrfId)] = vlan;
  return {{"intfToOutGate", std::move(intfs)},
          {"vrfIdToPmsiVlan", std::move(vlans)},
          {"counterIds", counterIds_}};
}

}  // namespace Dataplane
