#pragma once

#include <cstdint>
#include <iosfwd>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "proto/vek.pb.h"
#include "runtime/vek/ChannelRecord.h"

namespace Vek {

// The command log: one JSON object for every record that crosses the channel, numbered in
// channel order. Kept in memory and, if a stream is given, written there as JSON Lines.
class CommandLog {
 public:
  using Entry = nlohmann::ordered_json;

  void write(const ChannelRecord& record);
  void writeError(const vek::pb::ModuleError& error);
  void writeGroupError(std::string_view group, std::uint32_t type, std::int32_t code,
                       std::string_view msg);

  // While disabled nothing is built or kept; the sequence still counts.
  void enabledIs(bool enabled) noexcept { enabled_ = enabled; }
  bool enabled() const noexcept { return enabled_; }
  // Not owned; null stops the writing.
  void streamIs(std::ostream* stream) noexcept { stream_ = stream; }

  const std::vector<Entry>& entries() const noexcept { return entries_; }
  std::uint64_t lastSeq() const noexcept { return seq_; }
  // The entries with a sequence number above `seq`.
  std::vector<Entry> entriesSince(std::uint64_t seq) const;

  // The line of one record, as the log writes it; "seq" is left for the caller.
  static Entry entryOf(const ChannelRecord& record);

 private:
  void append(Entry entry);

  std::vector<Entry> entries_;
  std::ostream* stream_ = nullptr;
  std::uint64_t seq_ = 0;
  bool enabled_ = true;
};

}  // namespace Vek
