#pragma once

#include "dataplane/CommandTable.h"
#include "dataplane/ModuleTable.h"

namespace Dataplane {

// A port input or output module (classes 5 and 6), and a port driver that takes no
// commands: nothing to set after creation.
class PortModule final : public TableWithCommands<PortModule> {
 public:
  static const CommandTable<PortModule>& commands() {
    static const CommandTable<PortModule> table{};
    return table;
  }

  nlohmann::ordered_json dump() const override { return nlohmann::ordered_json::object(); }
};

}  // namespace Dataplane
