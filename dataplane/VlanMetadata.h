#pragma once

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleTable.h"
#include "proto/vek.pb.h"

namespace Dataplane {

// A VLAN metadata module (class 83): only its counters are set by command.
class VlanMetadata final : public TableWithCommands<VlanMetadata> {
 public:
  static const CommandTable<VlanMetadata>& commands();

  nlohmann::ordered_json dump() const override { return {{"counterIds", counterIds_}}; }

  CommandResult setCounterIds(const vek::pb::VlanMetadataCounterIdArg& arg);

 private:
  nlohmann::ordered_json counterIds_;
};

}  // namespace Dataplane
