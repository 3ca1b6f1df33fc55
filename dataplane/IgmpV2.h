#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleTable.h"
#include "proto/vek.pb.h"

namespace Dataplane {

// The IGMPv2 module (class 120): the VRFs it serves, by name and id, and its counters.
class IgmpV2 final : public TableWithCommands<IgmpV2> {
 public:
  static const CommandTable<IgmpV2>& commands();

  nlohmann::ordered_json dump() const override;

  CommandResult addVrf(const vek::pb::IgmpV2VrfArg& arg);
  CommandResult delVrf(const vek::pb::IgmpV2VrfArg& arg);
  CommandResult setCounterIds(const vek::pb::IgmpV2CounterIdArg& arg);

 private:
  std::map<std::string, std::uint32_t> vrfs_;
  nlohmann::ordered_json counterIds_;
};

}  // namespace Dataplane
