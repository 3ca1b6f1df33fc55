#pragma once

#include "runtime/lumo/Node.h"
#include "runtime/qel/Clock.h"

namespace Dov {

// Paces the reviews of a clock reactor with credits. A credit comes back every
// fillInterval seconds, up to maxCredits, and the timer starts full. A wake-up asked for
// while one is pending changes nothing. Otherwise, with a whole credit the wake-up comes
// minDelay from now and spends it; without one it comes maxDelay from now. So a burst of
// work gets up to maxCredits quick reviews, and steady work one review every maxDelay.
class ReviewTimer : public Lumo::Node {
 public:
  static constexpr double kDefaultReviewQuantum = 0.002;

  ReviewTimer(Qel::Clock::NotifieeConst* clockNotifiee, float fillInterval, unsigned maxCredits,
              float minDelay, float maxDelay);

  float fillInterval() const noexcept { return fillInterval_; }
  unsigned maxCredits() const noexcept { return maxCredits_; }
  float minDelay() const noexcept { return minDelay_; }
  float maxDelay() const noexcept { return maxDelay_; }
  // The time budget of one review, in seconds; the reactor reads it as handleClock starts.
  double reviewQuantum() const noexcept { return reviewQuantum_; }
  void reviewQuantumIs(double seconds);
  // The credits as of now, a fraction included.
  double credits();

  // Asks the reactor's clock for the next review under the credit rule; called whenever
  // work has been added or is left.
  void doUpdateNextReviewImmediately();

 private:
  double now() const;
  void doRefillCredits(double time);

  Qel::Clock::NotifieeConst* clockNotifiee_;
  float fillInterval_;
  unsigned maxCredits_;
  float minDelay_;
  float maxDelay_;
  double reviewQuantum_ = kDefaultReviewQuantum;
  double credits_;
  double refilledAt_;
};

}  // namespace Dov
