#pragma once

#include <atomic>
#include <cstdint>

#include "runtime/lumo/ThreadControl.h"

namespace Lumo {

// Base of every heap object of the runtime. The use count and two flag bits share one
// word: the count moves in steps of four, the low two bits are the flags. Every test for
// the last user masks the flags away.
class Node {
 public:
  enum Flag : std::uint32_t { notificationActive = 1u, zombie = 2u };
  static constexpr std::uint32_t kFlagMask = 3u;
  static constexpr std::uint32_t kOneUse = 4u;

  Node() = default;
  Node(const Node&) : word_(0) {}
  Node& operator=(const Node&) { return *this; }
  virtual ~Node() = default;

  void newRef() const noexcept { add(kOneUse); }
  void deleteRef() const noexcept {
    if ((add(0u - kOneUse) & ~kFlagMask) == 0) const_cast<Node*>(this)->lastUserGone();
  }
  std::uint32_t references() const noexcept { return load() >> 2; }

  bool nodeFlag(Flag flag) const noexcept { return (load() & flag) != 0; }
  void nodeFlagSet(Flag flag, bool on) const noexcept;

 protected:
  // Called when the last pointer goes; the default destroys the object.
  virtual void lastUserGone() { delete this; }

 private:
  std::uint32_t add(std::uint32_t delta) const noexcept {
    if (ThreadControl::tsp_) {
      return std::atomic_ref<std::uint32_t>(word_).fetch_add(delta) + delta;
    }
    return word_ += delta;
  }
  std::uint32_t load() const noexcept {
    if (ThreadControl::tsp_) return std::atomic_ref<std::uint32_t>(word_).load();
    return word_;
  }

  mutable std::uint32_t word_ = 0;
};

inline void Node::nodeFlagSet(Flag flag, bool on) const noexcept {
  if (ThreadControl::tsp_) {
    std::atomic_ref<std::uint32_t> word(word_);
    if (on) {
      word.fetch_or(flag);
    } else {
      word.fetch_and(~static_cast<std::uint32_t>(flag));
    }
    return;
  }
  word_ = on ? (word_ | flag) : (word_ & ~static_cast<std::uint32_t>(flag));
}

}  // namespace Lumo
