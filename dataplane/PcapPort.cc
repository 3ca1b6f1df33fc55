#include "dataplane/PcapPort.h"

#include "runtime/vek/ProtoJson.h"

namespace Dataplane {

const CommandTable<PcapPort>& PcapPort::commands() {
  static const CommandTable<PcapPort> table{
      {"setMcastMarkFilter", "bess.pb.PCAPPortFilterMcastMarkArg", &PcapPort::setMcastMarkFilter},
      {"addVlan", "bess.pb.PCAPPortVlanArg", &PcapPort::addVlan},
      {"removeVlan", "bess.pb.PCAPPortVlanArg", &PcapPort::removeVlan},
  };
  return table;
}

CommandResult PcapPort::setMcastMarkFilter(const bess::pb::PCAPPortFilterMcastMarkArg& arg) {
  mcastMarkFilter_ = Vek::ProtoJson::of(arg);
  return CommandResult::ok();
}

CommandResult PcapPort::addVlan(const bess::pb::PCAPPortVlanArg& arg) {
  vlans_.insert(arg.vlanids().begin(), arg.vlanids().end());
  return CommandResult::ok();
}

CommandResult PcapPort::removeVlan(const bess::pb::PCAPPortVlanArg& arg) {
  for (std::uint32_t vlan : arg.vlanids()) vlans_.erase(vlan);
  return CommandResult::ok();
}

nlohmann::ordered_json PcapPort::dump() const {
  return {{"mcastMarkFilter", mcastMarkFilter_}, {"vlans", vlans_}};
}

}  // namespace Dataplane
