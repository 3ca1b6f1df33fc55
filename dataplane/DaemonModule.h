#pragma once

#include <google/protobuf/message.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "dataplane/ModuleTable.h"

namespace Dataplane {

// One end of a gate link, seen from the other end.
struct GateEnd {
  std::string module;
  std::uint32_t gate = 0;
};

// A module as the daemon holds it.
struct DaemonModule {
  std::uint32_t moduleClass = 0;
  std::uint32_t inGates = 0;
  std::uint32_t outGates = 0;
  std::uint32_t reservedIn = 0;
  std::uint32_t reservedOut = 0;
  std::shared_ptr<const google::protobuf::Message> init;
  std::map<std::uint32_t, GateEnd> out;  // output gate -> the module and input gate it feeds
  // input gate -> the modules and output gates feeding it; only a reserved input gate has
  // more than one
  std::multimap<std::uint32_t, GateEnd> in;
  std::map<std::string, std::uint32_t> counters;  // name -> id
  std::unique_ptr<ModuleTable> table;
};

}  // namespace Dataplane
