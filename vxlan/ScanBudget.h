#pragma once

#include <cstdint>

#include "runtime/dov/Task.h"

namespace VekMVxlan {

// The items of one run of an input scan, counted across the parent's walk and its
// children's: the task is asked whether to yield before each item but the first, so a
// run always makes progress.
struct ScanBudget {
  Dov::Task* task = nullptr;
  unsigned items = 0;       // this run
  std::uint64_t total = 0;  // since the scan began

  bool shouldYield() const { return items > 0 && task && task->taskShouldYield(); }
  void itemDone() noexcept {
    ++items;
    ++total;
  }
};

}  // namespace VekMVxlan
