#pragma once

#include <optional>
#include <string_view>

#include "proto/dataplane_control.pb.h"

namespace VekFuzz {

// Reads one line of the command log back into the command a daemon process receives for
// it, so that logs of real runs can feed the daemon's side. A line that is no command (an
// error record, text that is not a JSON object, an `arg` that is not a message of a known
// type) gives nothing.
std::optional<vek::control::QueuedCommand> commandOfLogLine(std::string_view line);

}  // namespace VekFuzz
