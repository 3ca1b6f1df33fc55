#pragma once

#include <cstdint>
#include <set>

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleTable.h"
#include "proto/bess.pb.h"

namespace Dataplane {

// A port of the "PCAPPort" driver: the multicast mark filter and the VLANs it admits.
class PcapPort final : public TableWithCommands<PcapPort> {
 public:
  static const CommandTable<PcapPort>& commands();

  nlohmann::ordered_json dump() const override;

  CommandResult setMcastMarkFilter(const bess::pb::PCAPPortFilterMcastMarkArg& arg);
  CommandResult addVlan(const bess::pb::PCAPPortVlanArg& arg);
  CommandResult removeVlan(const bess::pb::PCAPPortVlanArg& arg);

 private:
  nlohmann::ordered_json mcastMarkFilter_;
  std::set<std::uint32_t> vlans_;
};

}  // namespace Dataplane
