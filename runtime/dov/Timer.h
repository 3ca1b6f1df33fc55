#pragma once

#include <cstdint>

namespace Dov {

class TaskScheduler;

// Something a scheduler wakes at a point of its clock, once per arming. A timer that goes
// away is disarmed first.
class Timer {
 public:
  Timer() = default;
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  virtual ~Timer();

  bool timerArmed() const noexcept { return scheduler_ != nullptr; }
  // The time it is armed for; meaningful only while armed.
  double timerDue() const noexcept { return due_; }

 protected:
  virtual void handleTimer() = 0;

 private:
  friend class TaskScheduler;
  TaskScheduler* scheduler_ = nullptr;
  double due_ = 0;
  std::uint64_t sequence_ = 0;
};

}  // namespace Dov
