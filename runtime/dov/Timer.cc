#include "runtime/dov/Timer.h"

#include "runtime/dov/TaskScheduler.h"

namespace Dov {

Timer::~Timer() {
  if (scheduler_) scheduler_->timerDel(this);
}

}  // namespace Dov
