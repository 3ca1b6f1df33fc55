#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace VekHost {

// Records numbered from 0 in the order they came. A mark is a count of them, taken before
// a step, so that what the step added reads back as everything since the mark.
template <typename Record>
class MarkedLog {
 public:
  void add(Record record) { records_.push_back(std::move(record)); }
  std::size_t count() const noexcept { return records_.size(); }
  // Nothing for a mark at or past the end.
  std::vector<Record> since(std::size_t mark) const {
    if (mark >= records_.size()) return {};
    return {records_.begin() + static_cast<std::ptrdiff_t>(mark), records_.end()};
  }

 private:
  std::vector<Record> records_;
};

}  // namespace VekHost
