#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "runtime/qel/HashMap2018.h"

namespace Qel {

// A hash set whose additions wait in a short list and go in together, `kBatch` at a
// time or whenever the set is read. A work list that grows to a million keys is mostly
// written one key at a time by reactors, and there every single insertion would wait for
// its slot to come from memory; a batch fetches the slots of several keys at once.
//
// The content is the set and the list together: every read (has, size, iteration, erase)
// takes the list in first. So a key added twice is still one member, and the order is
// the set's own hash order. Reads are const and may take the list in: the collection
// belongs to one thread, like the rest of the machine that holds it.
//
// A pass works the set from its beginning (begin() takes the list in) and then drops what
// it worked with drainBefore or drainAll. Those leave the keys added since the pass began
// waiting, so that a key that changes during a pass is worked by the next one.
template <typename Key, std::uint64_t TypeConstant = kHashMap2018TypeConstant,
          unsigned MaxLoadPercent = kHashMap2018MaxLoadPercent>
class BufferedHashSet {
 public:
  using Set = HashSet2018<Key, TypeConstant, MaxLoadPercent>;
  using UnsafeIteratorConst = typename Set::UnsafeIteratorConst;
  static constexpr std::size_t kBatch = 256;

  BufferedHashSet() { waiting_.reserve(kBatch); }

  void insert(const Key& key) {
    // The same key again and again (a route that flaps) takes one place.
    if (!waiting_.empty() && waiting_.back() == key) return;
    waiting_.push_back(key);
    if (waiting_.size() >= kBatch) takeIn();
  }
  bool has(const Key& key) const { return members().has(key); }
  std::size_t size() const { return members().size(); }
  bool empty() const { return waiting_.empty() && set_.empty(); }
  // By value: taking the list in may move the member a reference would point at.
  bool erase(Key key) { return mutableMembers().erase(key); }
  void clear() {
    waiting_.clear();
    set_.clear();
  }
  void reserve(std::size_t members) { mutableMembers().reserve(members); }
  // Erases the members taken in that stand before the position of `to`, keeping the
  // storage (see the map); keys still waiting stay.
  void drainBefore(const Key& to) { set_.drainBefore(to); }
  // Erases every member taken in; keys still waiting stay.
  void drainAll() { set_.clear(); }
  void swap(BufferedHashSet& other) noexcept {
    set_.swap(other.set_);
    waiting_.swap(other.waiting_);
  }

  UnsafeIteratorConst begin() const { return members().begin(); }
  UnsafeIteratorConst end() const { return members().end(); }

  // The members, the waiting keys taken in.
  const Set& members() const {
    takeIn();
    return set_;
  }

 private:
  Set& mutableMembers() {
    takeIn();
    return set_;
  }
  // A throw while growing leaves the keys not yet in waiting: taking one in twice is
  // harmless.
  void takeIn() const {
    if (waiting_.empty()) return;
    set_.insertMany(waiting_.data(), waiting_.size());
    waiting_.clear();
  }

  mutable Set set_;
  mutable std::vector<Key> waiting_;
};

}  // namespace Qel
