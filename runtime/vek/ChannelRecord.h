#pragma once

#include <google/protobuf/message.h>

#include <cstdint>
#include <memory>
#include <variant>

#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/vek/CounterId.h"
#include "runtime/vek/GrpcCmd.h"
#include "runtime/vek/ModuleCmdBase.h"

namespace Vek {

// The records that cross the command channel, in the order the logic queued them. A backend
// turns each into whatever its daemon speaks; the command log writes each as one line.

struct CreateModuleRecord {
  Lumo::String name;
  std::uint32_t moduleClass = 0;
  std::uint32_t inGates = 0;
  std::uint32_t outGates = 0;
  std::uint32_t reservedIn = 0;
  std::uint32_t reservedOut = 0;
  std::shared_ptr<const google::protobuf::Message> init;  // null: the class takes none
};

struct DestroyModuleRecord {
  Lumo::String name;
};

struct GateLink {
  Lumo::String from;
  std::uint32_t ogate = 0;
  Lumo::String to;
  std::uint32_t igate = 0;
};

struct ConnectRecord : GateLink {};
struct DisconnectRecord : GateLink {};

struct ModuleCmdRecord {
  Lumo::Ptr<ModuleCmdBase> cmd;
  bool wantResponse = false;  // the daemon answers only commands sent while responses are read
};

struct GroupCmdRecord {
  Lumo::String group;
  Lumo::Ptr<GrpcCmd> cmd;
};

struct AllocateCounterRecord {
  Lumo::String module;
  Lumo::String name;
  CounterUnit unit = counterUnitPackets;
  CounterId id;
};

struct FreeCountersRecord {
  Lumo::String module;
};

using ChannelRecord =
    std::variant<CreateModuleRecord, DestroyModuleRecord, ConnectRecord, DisconnectRecord,
                 ModuleCmdRecord, GroupCmdRecord, AllocateCounterRecord, FreeCountersRecord>;

}  // namespace Vek
