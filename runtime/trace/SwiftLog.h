#pragma once

#include <spdlog/sinks/base_sink.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <mutex>
#include <string_view>
#include <vector>

#include "runtime/trace/TraceRecord.h"

namespace Trace {

// The in-memory layer: the last `capacity` records, each with a sequence number, so that
// a reader can ask for what came after a mark. Dumped on demand and when the process
// dies of a fault.
class SwiftLog final : public spdlog::sinks::base_sink<std::mutex> {
 public:
  static constexpr std::size_t kDefaultCapacity = 8192;

  explicit SwiftLog(std::size_t capacity = kDefaultCapacity) : capacity_(capacity) {}

  void capacityIs(std::size_t records);
  // The sequence number the next record will get.
  std::uint64_t mark();
  std::vector<TraceRecord> recordsSince(std::uint64_t mark);
  bool contains(std::string_view text, std::uint64_t since);
  void dump(std::FILE* out);
  // For the fatal path: gives up rather than wait if the ring is being written.
  void dumpNoWait(std::FILE* out) noexcept;

 protected:
  void sink_it_(const spdlog::details::log_msg& msg) override;
  void flush_() override {}

 private:
  void dumpLocked(std::FILE* out);

  std::size_t capacity_;
  std::deque<TraceRecord> ring_;
  std::uint64_t next_ = 0;
};

}  // namespace Trace
