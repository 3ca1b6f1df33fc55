#pragma once

#include <google/protobuf/message.h>

#include <string_view>

#include "runtime/vek/Module.h"
#include "runtime/vek/ModuleCmdBase.h"

namespace VekL3Mcast {

// Queues one command for a module on the module's own channel; takes the message. The
// proxies never wait for the reply.
inline void enqueueModuleCmd(const Vek::Module& module, std::string_view cmdName,
                             google::protobuf::Message* message) {
  module.configStatusPair()->config()->cmdBatchEnq(
      Vek::moduleCmdFactory(module.name(), Lumo::String(cmdName), message, true));
}

}  // namespace VekL3Mcast
