#pragma once

#include <cstdint>
#include <map>

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleContext.h"
#include "dataplane/ModuleTable.h"
#include "proto/vek.pb.h"

namespace Dataplane {

// The egress demultiplexer (class 105): destination interface to output gate and VLAN tag,
// VRF id to provider VLAN, and its counters.
class TxDemuxer final : public TableWithCommands<TxDemuxer> {
 public:
  static const CommandTable<TxDemuxer>& commands();

  explicit TxDemuxer(ModuleContext context) : context_(std::move(context)) {}

  nlohmann::ordered_json dump() const override;

  CommandResult addDstIntfIdToOutGate(const vek::pb::IntfGateArg& arg);
  CommandResult deleteDstIntfIdToOutGate(const vek::pb::IntfGateArg& arg);
  CommandResult addVrfIdToPmsiVlan(const vek::pb::VrfVlanArg& arg);
  CommandResult deleteVrfIdToPmsiVlan(const vek::pb::VrfIdArg& arg);
  CommandResult setCounterIds(const vek::pb::TxDemuxerCounterIdArg& arg);

 private:
  struct OutGate {
    std::uint32_t gate = 0;
    std::uint32_t vlan = 0;
  };

  ModuleContext context_;
  std::map<std::uint64_t, OutGate> intfToOutGate_;
  std::map<std::uint32_t, std::uint32_t> vrfIdToPmsiVlan_;
  nlohmann::ordered_json counterIds_;
};

}  // namespace Dataplane
