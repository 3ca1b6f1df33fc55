#pragma once

#include <google/protobuf/message.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "dataplane/CommandResult.h"

namespace Dataplane {

// What one module or port of the daemon holds, changed only by its commands.
class ModuleTable {
 public:
  virtual ~ModuleTable() = default;
  virtual CommandResult apply(std::string_view cmd, const google::protobuf::Message* arg) = 0;
  virtual nlohmann::ordered_json dump() const = 0;
  // The worker tasks the module registered; they go with the module.
  virtual std::vector<std::string> taskNames() const { return {}; }
};

// A table whose commands come from the class's own command table, Derived::commands().
template <typename Derived>
class TableWithCommands : public ModuleTable {
 public:
  CommandResult apply(std::string_view cmd, const google::protobuf::Message* arg) override {
    return Derived::commands().dispatch(static_cast<Derived&>(*this), cmd, arg);
  }
};

}  // namespace Dataplane
