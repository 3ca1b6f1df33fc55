#pragma once

#include <cstdint>
#include <string_view>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/lumo/String.h"
#include "runtime/vek/CmdConfigGroup.h"

namespace Vek {

// Traffic classes of the daemon's workers. The requests go through a command group; the
// caller raises the group's version when it has queued what belongs together.
class TcManager : public Lumo::Node {
 public:
  // "<name>_w<worker>_<unit>_<limit>": one class name per worker, unit and limit.
  static Lumo::String getTcName(std::string_view name, std::uint32_t worker, std::string_view unit,
                                int limit);
  // The weighted class that the daemon keeps for each worker from its start.
  static Lumo::String workerClassName(std::uint32_t worker);

  void createRateLimitTc(const Lumo::Ptr<CmdConfigGroup>& group, std::string_view tcName,
                         std::string_view parent, int worker, std::string_view unit,
                         std::int64_t limit, int burst) const;
  // `id` is 0 for a module and the daemon's task id for a worker task.
  void attachTaskToTc(const Lumo::Ptr<CmdConfigGroup>& group, std::string_view taskName,
                      std::string_view tcName, std::uint32_t id, std::uint32_t weight) const;
};

}  // namespace Vek
