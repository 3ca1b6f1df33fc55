#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "dataplane/ModuleContext.h"
#include "dataplane/ModuleTable.h"

namespace Dataplane {

// The module classes and port drivers the daemon knows.
class TableFactory {
 public:
  // Null for a class the daemon does not have.
  static std::unique_ptr<ModuleTable> moduleTable(std::uint32_t moduleClass,
                                                  const ModuleContext& context);
  // Null for a driver the daemon does not have.
  static std::unique_ptr<ModuleTable> portTable(std::string_view driver);
};

}  // namespace Dataplane
