#pragma once

#include <cstddef>
#include <vector>

namespace Lumo {

class Publisher;
class Subscriber;

using DispatchFunction = void (*)(Publisher* publisher, Subscriber* subscriber, short attributeId,
                                  const void* key, const void* value);

// The light reactor: a member of its owner with a static dispatch function that
// compares the attribute id, returns if the owner is a zombie, and calls the handler.
class Subscriber {
 public:
  explicit Subscriber(DispatchFunction dispatch) noexcept : dispatch_(dispatch) {}
  Subscriber(const Subscriber&) = delete;
  Subscriber& operator=(const Subscriber&) = delete;
  ~Subscriber();

  Publisher* publisher() const noexcept { return publisher_; }
  bool subscribed() const noexcept { return publisher_ != nullptr; }

 private:
  friend class Publisher;
  DispatchFunction dispatch_;
  Publisher* publisher_ = nullptr;
};

// Delivers attribute changes to its subscribers, synchronously, in subscription order.
// Subscribers may be added or removed while a change is being delivered: one removed is
// skipped, one added hears from the next change on.
class Publisher {
 public:
  Publisher() = default;
  Publisher(const Publisher&) = delete;
  Publisher& operator=(const Publisher&) = delete;
  virtual ~Publisher();

  // `first` puts the subscriber ahead of those already there.
  void subscriberAdd(Subscriber* subscriber, bool first = false);
  void subscriberRemove(Subscriber* subscriber);
  std::size_t subscribers() const noexcept;

  // Delivers one change to this publisher's subscribers.
  void publishChange(short attributeId, const void* key, const void* value);
  // Delivers one change here and then to the subscribers of every enclosing publisher.
  // `equal` says the stored value did not change, and then nothing is delivered.
  void publishChangeRecursive(short attributeId, const void* key, const void* value, bool equal);

  Publisher* enclosingPublisher() const noexcept { return enclosing_; }
  void enclosingPublisherIs(Publisher* enclosing) noexcept { enclosing_ = enclosing; }

 private:
  void compact();

  std::vector<Subscriber*> subscribers_;
  Publisher* enclosing_ = nullptr;
  bool* aliveDuringDispatch_ = nullptr;
  int dispatchDepth_ = 0;
  bool holes_ = false;
};

}  // namespace Lumo

namespace Lumo {

// A subscriber that knows its owner, so that a static dispatch function can reach it.
template <typename Owner>
class OwnedSubscriber : public Subscriber {
 public:
  OwnedSubscriber(Owner* owner, DispatchFunction dispatch) noexcept
      : Subscriber(dispatch), owner_(owner) {}
  Owner* owner() const noexcept { return owner_; }
  static Owner* ownerOf(Subscriber* subscriber) noexcept {
    return static_cast<OwnedSubscriber*>(subscriber)->owner_;
  }

 private:
  Owner* owner_;
};

}  // namespace Lumo
