#pragma once

#include <fmt/format.h>
#include <spdlog/common.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/trace/TraceRecord.h"

// Every record at or above the process's level (debug unless the host says otherwise)
// goes to two layers: the in-memory ring (SwiftLog), which keeps the last records and is
// written out on demand and when the process dies of a fault, and the text layer
// (DualLog), stderr or a file, which shows warnings and worse unless the host asks for
// more.
namespace Trace {

using Level = spdlog::level::level_enum;

namespace Impl {
inline std::atomic<int> threshold{spdlog::level::debug};
// For the layers: whether the record being written on this thread carries a time of the
// host's clock (see clockIs) rather than the wall clock's.
bool recordTimeSimulated() noexcept;
}  // namespace Impl

// Whether records of `level` are kept at all; the macro asks before it formats.
inline bool enabled(Level level) noexcept {
  return level >= Impl::threshold.load(std::memory_order_relaxed);
}

// One trace record: its level, where it was written and the function's signature.
// `file` and `function` must outlive the program, as literals do.
void emit(spdlog::level::level_enum level, const char* file, int line, const char* function,
          std::string_view text);
// Writes out what the in-memory ring holds; called before the process ends on a fault.
void fatalFlush() noexcept;

// Host side.
void levelIs(Level level);
Level level() noexcept;
void textLevelIs(Level level);
Level textLevel();
// Sends the text layer to `path` (appending), or back to stderr with an empty path.
void textFileIs(const std::string& path);
void ringCapacityIs(std::size_t records);
// Records take their time from `seconds`, a clock of the host's counted from its start (a
// simulated clock that drives the run), instead of the wall clock; an empty function goes
// back to the wall clock. The host clears it before the clock goes.
void clockIs(std::function<double()> seconds);
void dumpRing(std::FILE* out);

// Reading the ring: take a mark, act, then look at what was traced since.
std::uint64_t mark();
std::vector<TraceRecord> recordsSince(std::uint64_t mark);
bool contains(std::string_view text, std::uint64_t since = 0);

}  // namespace Trace

// VEK_TRACE(info, "Create PimRegRx( {} )", vrf): formats with fmt and tags the record with
// file:line and the enclosing function's signature. Nothing is formatted when the level
// is off.
#define VEK_TRACE(severity, ...)                                                           \
  (::Trace::enabled(::spdlog::level::severity)                                             \
       ? ::Trace::emit(::spdlog::level::severity, __FILE__, __LINE__, __PRETTY_FUNCTION__, \
                       ::fmt::format(__VA_ARGS__))                                         \
       : void())
