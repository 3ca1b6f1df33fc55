#include "runtime/trace/TraceRecord.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>
#include <iterator>

namespace Trace {

namespace {
std::string_view baseName(const char* file) {
  std::string_view path(file ? file : "");
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}
}  // namespace

void formatTraceLine(std::string& out, spdlog::level::level_enum level,
                     spdlog::log_clock::time_point time, bool simulated, const char* file, int line,
                     const char* function, std::string_view text) {
  using namespace std::chrono;
  const auto seconds = time_point_cast<std::chrono::seconds>(time);
  const auto micros = duration_cast<microseconds>(time - seconds).count();
  auto at = std::back_inserter(out);
  if (simulated) {
    at = fmt::format_to(at, "sim {}.{:06}", seconds.time_since_epoch().count(), micros);
  } else {
    at = fmt::format_to(at, "{:%Y-%m-%d %H:%M:%S}.{:06}",
                        fmt::localtime(system_clock::to_time_t(seconds)), micros);
  }
  const auto levelName = spdlog::level::to_string_view(level);
  fmt::format_to(at, " {} {}:{} {}: {}\n", std::string_view(levelName.data(), levelName.size()),
                 baseName(file), line, function ? function : "", text);
}

std::string TraceRecord::format() const {
  std::string out;
  formatTraceLine(out, level, time, simulated, file, line, function, text);
  return out;
}

}  // namespace Trace
