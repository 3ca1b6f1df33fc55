#pragma once

#include <fmt/format.h>
#include <spdlog/common.h>

#include <string_view>

namespace Trace {

// One trace record: its level, where it was written and the function's signature.
void emit(spdlog::level::level_enum level, const char* file, int line, const char* function,
          std::string_view text);
// Writes out what the in-memory ring holds; called before the process ends on a fault.
void fatalFlush() noexcept;

}  // namespace Trace

// VEK_TRACE(info, "Create PimRegRx( {} )", vrf): formats with fmt and tags the record with
// file:line and the enclosing function's signature.
#define VEK_TRACE(severity, ...)                                                         \
  ::Trace::emit(::spdlog::level::severity, __FILE__, __LINE__, __PRETTY_FUNCTION__,        \
                ::fmt::format(__VA_ARGS__))
