#include "dataplane/VlanMetadata.h"

#include "runtime/vek/ProtoJson.h"

namespace Dataplane {

const CommandTable<VlanMetadata>& VlanMetadata::commands() {
  static const CommandTable<VlanMetadata> table{
      {"setCounterIds", "vek.pb.VlanMetadataCounterIdArg", &VlanMetadata::setCounterIds},
  };
  return table;
}

CommandResult VlanMetadata::setCounterIds(const vek::pb::VlanMetadataCounterIdArg& arg) {
  counterIds_ = Vek::ProtoJson::of(arg);
  return CommandResult::ok();
}

}  // namespace Dataplane
