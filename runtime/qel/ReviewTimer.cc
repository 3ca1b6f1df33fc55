#include "runtime/qel/ReviewTimer.h"

#include <algorithm>

#include "runtime/lumo/Assert.h"
#include "runtime/lumo/Exceptions.h"

namespace Dov {

ReviewTimer::ReviewTimer(Qel::Clock::NotifieeConst* clockNotifiee, float fillInterval,
                         unsigned maxCredits, float minDelay, float maxDelay)
    : clockNotifiee_(clockNotifiee),
      fillInterval_(fillInterval),
      maxCredits_(maxCredits),
      minDelay_(minDelay),
      maxDelay_(maxDelay),
      credits_(maxCredits) {
  if (!clockNotifiee_) Qel::throwMutatorArgNullPointerException("Dov::ReviewTimer::clockNotifiee");
  if (!(fillInterval > 0)) Qel::throwRangeException("Dov::ReviewTimer::fillInterval must be > 0");
  if (!(minDelay >= 0 && minDelay <= maxDelay)) {
    Qel::throwRangeException("Dov::ReviewTimer: need 0 <= minDelay <= maxDelay");
  }
  refilledAt_ = now();
}

double ReviewTimer::now() const {
  QEL_ASSERT(clockNotifiee_->notifier(), "a review timer needs a reactor bound to a clock");
  return clockNotifiee_->notifier()->currentTime();
}

void ReviewTimer::reviewQuantumIs(double seconds) {
  if (!(seconds > 0)) Qel::throwRangeException("Dov::ReviewTimer::reviewQuantum must be > 0");
  reviewQuantum_ = seconds;
}

void ReviewTimer::doRefillCredits(double time) {
  credits_ = std::min<double>(maxCredits_, credits_ + (time - refilledAt_) / fillInterval_);
  refilledAt_ = time;
}

double ReviewTimer::credits() {
  doRefillCredits(now());
  return credits_;
}

void ReviewTimer::doUpdateNextReviewImmediately() {
  if (clockNotifiee_->wakeupPending()) return;
  const double time = now();
  doRefillCredits(time);
  double delay = maxDelay_;
  if (credits_ >= 1) {
    credits_ -= 1;
    delay = minDelay_;
  }
  clockNotifiee_->wakeupTimeIs(time + delay);
}

}  // namespace Dov
