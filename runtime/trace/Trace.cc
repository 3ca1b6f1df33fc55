#include "runtime/trace/Trace.h"

#include <spdlog/spdlog.h>

namespace Trace {

void emit(spdlog::level::level_enum level, const char* file, int line, const char* function,
          std::string_view text) {
  spdlog::log(spdlog::source_loc{file, line, function}, level, "{}", text);
}

void fatalFlush() noexcept {}

}  // namespace Trace
