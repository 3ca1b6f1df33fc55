#include "runtime/trace/SwiftLog.h"

#include <algorithm>

#include "runtime/trace/Trace.h"

namespace Trace {

void SwiftLog::capacityIs(std::size_t records) {
  std::lock_guard lock(mutex_);
  capacity_ = records;
  while (ring_.size() > capacity_) ring_.pop_front();
}

std::uint64_t SwiftLog::mark() {
  std::lock_guard lock(mutex_);
  return next_;
}

std::vector<TraceRecord> SwiftLog::recordsSince(std::uint64_t mark) {
  std::lock_guard lock(mutex_);
  auto first = std::find_if(ring_.begin(), ring_.end(),
                            [mark](const TraceRecord& r) { return r.sequence >= mark; });
  return {first, ring_.end()};
}

bool SwiftLog::contains(std::string_view text, std::uint64_t since) {
  std::lock_guard lock(mutex_);
  return std::any_of(ring_.begin(), ring_.end(), [&](const TraceRecord& r) {
    return r.sequence >= since && r.text.find(text) != std::string::npos;
  });
}

void SwiftLog::dump(std::FILE* out) {
  std::lock_guard lock(mutex_);
  dumpLocked(out);
}

void SwiftLog::dumpNoWait(std::FILE* out) noexcept {
  std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock.owns_lock()) return;
  try {
    dumpLocked(out);
  } catch (...) {
    // Dying anyway: a record that cannot be written is left out.
  }
}

void SwiftLog::dumpLocked(std::FILE* out) {
  std::fprintf(out, "--- trace ring: last %zu records ---\n", ring_.size());
  for (const TraceRecord& record : ring_) std::fputs(record.format().c_str(), out);
  std::fflush(out);
}

void SwiftLog::sink_it_(const spdlog::details::log_msg& msg) {
  if (capacity_ == 0) return;
  if (ring_.size() == capacity_) ring_.pop_front();
  ring_.push_back(TraceRecord{next_++, msg.level, msg.time, Impl::recordTimeSimulated(),
                              msg.source.filename, msg.source.line, msg.source.funcname,
                              std::string(msg.payload.data(), msg.payload.size())});
}

}  // namespace Trace
