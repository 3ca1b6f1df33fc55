#include "dataplane/MetaData.h"

#include <string>

namespace Dataplane {

const CommandTable<MetaData>& MetaData::commands() {
  static const CommandTable<MetaData> table{
      {"setIfIndexIntfId", "vek.pb.IfIndexIntfIdArg", &MetaData::setIfIndexIntfId},
  };
  return table;
}

CommandResult MetaData::setIfIndexIntfId(const vek::pb::IfIndexIntfIdArg& arg) {
  ifIndexToIntfId_[arg.ifindex()] = arg.intfid();
  return CommandResult::ok();
}

nlohmann::ordered_json MetaData::dump() const {
  nlohmann::ordered_json map = nlohmann::ordered_json::object();
  for (const auto& [ifIndex, intfId] : ifIndexToIntfId_) {
    map[std::to_string(ifIndex)] = std::to_string(intfId);
  }
  return {{"ifIndexToIntfId", std::move(map)}};
}

}  // namespace Dataplane
