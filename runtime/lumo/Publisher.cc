#include "runtime/lumo/Publisher.h"

#include <algorithm>

namespace Lumo {

Subscriber::~Subscriber() {
  if (publisher_) publisher_->subscriberRemove(this);
}

Publisher::~Publisher() {
  if (aliveDuringDispatch_) *aliveDuringDispatch_ = false;
  for (Subscriber* s : subscribers_) {
    if (s) s->publisher_ = nullptr;
  }
}

void Publisher::subscriberAdd(Subscriber* subscriber, bool first) {
  if (subscriber->publisher_ == this) return;
  if (subscriber->publisher_) subscriber->publisher_->subscriberRemove(subscriber);
  subscriber->publisher_ = this;
  if (first && dispatchDepth_ == 0) {
    subscribers_.insert(subscribers_.begin(), subscriber);
  } else {
    subscribers_.push_back(subscriber);
  }
}

void Publisher::subscriberRemove(Subscriber* subscriber) {
  if (subscriber->publisher_ != this) return;
  subscriber->publisher_ = nullptr;
  auto it = std::find(subscribers_.begin(), subscribers_.end(), subscriber);
  if (it == subscribers_.end()) return;
  if (dispatchDepth_ > 0) {
    *it = nullptr;  // the loop under way skips the hole; compaction follows
    holes_ = true;
  } else {
    subscribers_.erase(it);
  }
}

std::size_t Publisher::subscribers() const noexcept {
  return static_cast<std::size_t>(
      std::count_if(subscribers_.begin(), subscribers_.end(), [](Subscriber* s) { return s; }));
}

void Publisher::publishChange(short attributeId, const void* key, const void* value) {
  if (subscribers_.empty()) return;
  bool alive = true;
  bool* outerAlive = aliveDuringDispatch_;
  aliveDuringDispatch_ = &alive;
  ++dispatchDepth_;
  const std::size_t count = subscribers_.size();
  for (std::size_t i = 0; i < count && alive; ++i) {
    Subscriber* s = subscribers_[i];
    if (s) s->dispatch_(this, s, attributeId, key, value);
  }
  if (!alive) {
    if (outerAlive) *outerAlive = false;
    return;
  }
  aliveDuringDispatch_ = outerAlive;
  if (--dispatchDepth_ == 0 && holes_) compact();
}

void Publisher::publishChangeRecursive(short attributeId, const void* key, const void* value,
                                       bool equal) {
  if (equal) return;
  Publisher* enclosing = enclosing_;
  bool alive = true;
  bool* outerAlive = aliveDuringDispatch_;
  // Watch for this publisher going away while its own subscribers run; the enclosing
  // publisher is read before and still hears about the change.
  aliveDuringDispatch_ = &alive;
  publishChange(attributeId, key, value);
  if (alive) aliveDuringDispatch_ = outerAlive;
  if (enclosing) enclosing->publishChangeRecursive(attributeId, key, value, false);
}

void Publisher::compact() {
  subscribers_.erase(std::remove(subscribers_.begin(), subscribers_.end(), nullptr),
                     subscribers_.end());
  holes_ = false;
}

}  // namespace Lumo
