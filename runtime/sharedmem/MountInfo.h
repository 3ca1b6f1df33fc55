#pragma once

#include <cstdint>

namespace QelVash {

// How a reader mounts a shared-memory table. The agent mounts with readerAwaitingWriter:
// the mount finishes when the writer has the table up, which may be later than asked.
enum class QelVashType : std::uint8_t {
  none = 0,
  reader = 1,
  writer = 2,
  readerAwaitingWriter = 3,
};

class MountInfo {
 public:
  explicit MountInfo(QelVashType mode = QelVashType::readerAwaitingWriter) noexcept : mode_(mode) {}
  QelVashType mode() const noexcept { return mode_; }

 private:
  QelVashType mode_;
};

}  // namespace QelVash
