#pragma once

namespace Lumo {

// One process-wide switch: while clear, use counts change by plain instructions; once
// another thread exists, the process sets it and counts change atomically.
class ThreadControl {
 public:
  static inline bool tsp_ = false;
};

}  // namespace Lumo
