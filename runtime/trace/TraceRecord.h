#pragma once

#include <spdlog/common.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace Trace {

// One record as the ring keeps it. `file` and `function` point at the literals the
// trace macro passes, which live as long as the program.
struct TraceRecord {
  std::uint64_t sequence = 0;
  spdlog::level::level_enum level = spdlog::level::info;
  spdlog::log_clock::time_point time;
  // The time is a simulated clock's, counted from its start, not the wall clock's.
  bool simulated = false;
  const char* file = "";
  int line = 0;
  const char* function = "";
  std::string text;

  // "2024-05-01 10:00:00.123456 info Task.cc:42 void Dov::Task::f(): text", or with a
  // simulated time "sim 2.500000 info Task.cc:42 ...": seconds since the clock's start,
  // in two fields as the date and time are, so that a reader splits both alike.
  std::string format() const;
};

// The one layout of a trace line, shared by the ring's dump and the text layer.
void formatTraceLine(std::string& out, spdlog::level::level_enum level,
                     spdlog::log_clock::time_point time, bool simulated, const char* file, int line,
                     const char* function, std::string_view text);

}  // namespace Trace
