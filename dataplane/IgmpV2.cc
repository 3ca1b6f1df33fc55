#include "dataplane/IgmpV2.h"

#include "runtime/vek/ProtoJson.h"

namespace Dataplane {

const CommandTable<IgmpV2>& IgmpV2::commands() {
  static const CommandTable<IgmpV2> table{
      {"addVrf", "vek.pb.IgmpV2VrfArg", &IgmpV2::addVrf},
      {"delVrf", "vek.pb.IgmpV2VrfArg", &IgmpV2::delVrf},
      {"setCounterIds", "vek.pb.IgmpV2CounterIdArg", &IgmpV2::setCounterIds},
  };
  return table;
}

CommandResult IgmpV2::addVrf(const vek::pb::IgmpV2VrfArg& arg) {
  if (arg.vrfname().empty()) return CommandResult::error(EINVAL, "a VRF needs a name");
  vrfs_[arg.vrfname()] = arg.vrfid();
  return CommandResult::ok();
}

CommandResult IgmpV2::delVrf(const vek::pb::IgmpV2VrfArg& arg) {
  vrfs_.erase(arg.vrfname());
  return CommandResult::ok();
}

CommandResult IgmpV2::setCounterIds(const vek::pb::IgmpV2CounterIdArg& arg) {
  counterIds_ = Vek::ProtoJson::of(arg);
  return CommandResult::ok();
}

nlohmann::ordered_json IgmpV2::dump() const {
  return {
      {"vrfs", vrfs_.empty() ? nlohmann::ordered_json::object() : nlohmann::ordered_json(vrfs_)},
      {"counterIds", counterIds_}};
}

}  // namespace Dataplane
