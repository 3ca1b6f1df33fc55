#pragma once

#include <fmt/format.h>

#include <cerrno>
#include <string>

#include "dataplane/ModuleContext.h"
#include "dataplane/ModuleTable.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/vek/CounterId.h"
#include "runtime/vek/ModuleRegistry.h"

namespace Dataplane {

// A module class that takes no commands: its table is the shared entity of type Dv that the
// module meets its proxy in, found under the instance name or made there when the daemon's
// module comes first. What it shows is the entity's counter slots.
template <typename Dv>
class SharedCountersTable : public ModuleTable {
 public:
  explicit SharedCountersTable(const ModuleContext& context)
      : entity_(VekModules::ModuleRegistry::entityIs<Dv>(context.name)) {}

  CommandResult apply(std::string_view cmd, const google::protobuf::Message*) override {
    return CommandResult::error(ENOTSUP, fmt::format("unknown command {}", cmd));
  }

  // {"counterIds": {name: id}} for the filled slots, in the module's order; `entity` is
  // false when the name holds an entity of another type.
  nlohmann::ordered_json dump() const override {
    if (!entity_) return {{"entity", false}};
    nlohmann::ordered_json ids = nlohmann::ordered_json::object();
    for (std::string_view name : entity_->counterNames()) {
      const Vek::CounterId id = entity_->counterId(name);
      if (id.isValid()) ids[std::string(name)] = id.value();
    }
    return {{"counterIds", ids}};
  }

 private:
  Lumo::Ptr<Dv> entity_;
};

}  // namespace Dataplane
