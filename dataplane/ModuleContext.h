#pragma once

#include <cstdint>
#include <string>

namespace Dataplane {

// Hands out the daemon's task ids, unique over all modules.
class TaskIds {
 public:
  std::uint32_t next() noexcept { return next_++; }

 private:
  std::uint32_t next_ = 1;
};

// What a module's table may know of its module and of the daemon.
struct ModuleContext {
  std::string name;
  std::uint32_t outGates = 0;
  std::uint16_t workers = 1;
  TaskIds* taskIds = nullptr;
};

}  // namespace Dataplane
