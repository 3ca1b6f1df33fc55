#pragma once

#include <cstdint>
#include <map>

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleTable.h"
#include "proto/vek.pb.h"

namespace Dataplane {

// A metadata module (class 28): kernel ifIndex to interface id, for stamping packets.
class MetaData final : public TableWithCommands<MetaData> {
 public:
  static const CommandTable<MetaData>& commands();

  nlohmann::ordered_json dump() const override;

  CommandResult setIfIndexIntfId(const vek::pb::IfIndexIntfIdArg& arg);

 private:
  std::map<std::uint32_t, std::uint64_t> ifIndexToIntfId_;
};

}  // namespace Dataplane
