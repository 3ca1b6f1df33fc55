#pragma once

#include <google/protobuf/any.pb.h>

#include <memory>
#include <optional>
#include <string>

#include "dataplane/ModuleTable.h"

namespace Dataplane {

// A port as the daemon holds it: its driver, the driver's argument, and what its commands
// and its configuration set.
struct DaemonPort {
  std::string driver;
  google::protobuf::Any arg;
  std::optional<bool> adminUp;
  std::unique_ptr<ModuleTable> table;
};

}  // namespace Dataplane
