#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "runtime/lumo/Assert.h"
#include "runtime/qel/HashHelper.h"
#include "runtime/qel/HashMap2018IteratorGeneric.h"
#include "runtime/qel/HashMap2018UnsafeIteratorConstGeneric.h"

namespace Qel {

template <typename Key, typename Value>
struct HashMap2018Entry {
  Key key;
  Value value;
};
template <typename Key>
struct HashMap2018Entry<Key, void> {
  Key key;
};

inline constexpr std::uint64_t kHashMap2018TypeConstant = 0x2018'0000'5eed'0001ull;

// The hash collection. Members stand in the order of their full 64-bit hash, which
// comes from std::hash<Key> mixed with the process seed and the collection type's
// constant. Storage is open addressing with linear probing that keeps the slots sorted
// by hash: a member's home slot is the top bits of its hash, a member never stands
// before its home, and there is no wrap-around (the last clusters spill into overflow
// slots at the end). So slot order is hash order: the position of a key that is not
// present is a short scan from its home slot, and a range of positions is a run of
// slots. Equal full hashes are ordered by key where keys are ordered, otherwise by
// insertion.
//
// Every structural change (insert, erase, clear, swap) moves a 23-bit version, which
// the checking iterator compares at each step.
template <typename Key, typename Value = void,
          std::uint64_t TypeConstant = kHashMap2018TypeConstant>
class HashMap2018 {
 public:
  using Entry = HashMap2018Entry<Key, Value>;
  using UnsafeIteratorConst = HashMap2018UnsafeIteratorConstGeneric<HashMap2018>;
  using Iterator = HashMap2018IteratorGeneric<HashMap2018>;
  using IteratorConst = HashMap2018IteratorGeneric<const HashMap2018>;
  static constexpr std::uint32_t kVersionMask = (1u << 23) - 1;
  static constexpr bool kOrderedKeys = std::totally_ordered<Key>;

  HashMap2018() : salt_(HashHelper::salt(TypeConstant)) {}
  HashMap2018(const HashMap2018& other) : salt_(other.salt_) { copyFrom(other); }
  HashMap2018(HashMap2018&& other) noexcept : HashMap2018() { swap(other); }
  HashMap2018& operator=(const HashMap2018& other) {
    if (this != &other) {
      HashMap2018 copy(other);
      swap(copy);
    }
    return *this;
  }
  HashMap2018& operator=(HashMap2018&& other) noexcept {
    if (this != &other) {
      HashMap2018 taken(std::move(other));
      swap(taken);
    }
    return *this;
  }
  ~HashMap2018() { releaseStorage(); }

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  std::uint32_t version() const noexcept { return version_; }

  bool has(const Key& key) const { return findEntry(key) != nullptr; }
  const Entry* findEntry(const Key& key) const {
    if (size_ == 0) return nullptr;
    const Location at = locate(hashOf(key), key);
    return at.found ? &entries_[at.index] : nullptr;
  }
  Entry* findEntry(const Key& key) {
    return const_cast<Entry*>(std::as_const(*this).findEntry(key));
  }
  // The member of this hash for which `matches(key)` holds: for a caller that keeps the
  // hash beside a key in another form, and so neither makes the key nor hashes it again.
  // `hash` is what hashOf() gives, as a work list of the same type constant keeps it.
  template <typename Matches>
  const Entry* findHashed(std::uint64_t hash, Matches&& matches) const {
    if (size_ == 0) return nullptr;
    std::size_t i = home(hash);
    while (i < slots_ && hashes_[i] != kEmpty && hashes_[i] < hash) ++i;
    for (; i < slots_ && hashes_[i] == hash; ++i) {
      if (matches(entries_[i].key)) return &entries_[i];
    }
    return nullptr;
  }
  template <typename V = Value>
    requires(!std::is_void_v<V>)
  const V* find(const Key& key) const {
    const Entry* entry = findEntry(key);
    return entry ? &entry->value : nullptr;
  }
  template <typename V = Value>
    requires(!std::is_void_v<V>)
  V* find(const Key& key) {
    Entry* entry = findEntry(key);
    return entry ? &entry->value : nullptr;
  }

  // Adds the member if its key is absent; a present member keeps its value. Returns the
  // member and whether it was added.
  template <typename... ValueArgs>
  std::pair<Entry*, bool> insert(const Key& key, ValueArgs&&... valueArgs) {
    return insertHashed(hashOf(key), key, std::forward<ValueArgs>(valueArgs)...);
  }
  // Adds the member or replaces the value of the one there.
  template <typename V = Value>
    requires(!std::is_void_v<V>)
  Entry* set(const Key& key, V value) {
    auto [entry, added] = insert(key, value);
    if (!added) entry->value = std::move(value);
    return entry;
  }

  // Makes room for `members` members in all, so that filling the map up to that many
  // does not grow it on the way. Filling a growing map in hash order (from a walk of
  // another map of the same order) would pile the members into its first slots.
  void reserve(std::size_t members) {
    const unsigned bits = bitsFor(members);
    if (slots_ == 0 || bits > bits_) rebuild(fittingBits(bits, 64));
  }

  bool erase(const Key& key) {
    if (size_ == 0) return false;
    const Location at = locate(hashOf(key), key);
    if (!at.found) return false;
    eraseSlots(at.index, at.index + 1);
    return true;
  }
  // Erase the members from the position of `from` up to, not including, the position
  // of `to`; neither key need be present. An empty or inverted range erases nothing.
  void eraseRange(const Key& from, const Key& to) {
    eraseSlots(positionOf(from), positionOf(to));
  }
  // Erase the members from the position of `from` to the end.
  void eraseFrom(const Key& from) { eraseSlots(positionOf(from), slots_); }
  // Erase the members from the beginning up to, not including, the position of `to`.
  void eraseBefore(const Key& to) { eraseSlots(0, positionOf(to)); }
  void clear() {
    releaseStorage();
    bump();
  }

  void swap(HashMap2018& other) noexcept {
    std::swap(hashes_, other.hashes_);
    std::swap(entries_, other.entries_);
    std::swap(slots_, other.slots_);
    std::swap(bits_, other.bits_);
    std::swap(size_, other.size_);
    std::swap(salt_, other.salt_);
    std::swap(firstHint_, other.firstHint_);
    std::swap(shrinkBelow_, other.shrinkBelow_);
    bump();
    other.bump();
  }
  // Takes every member of `other` in; where both hold a key, the value of `other` wins.
  // The smaller map is walked: a large one is taken over whole.
  void updateG(HashMap2018&& other) {
    const bool swapped = other.size_ > size_;
    if (swapped) swap(other);  // what was ours is now the smaller side, and it loses
    for (const Entry& entry : other) {
      if constexpr (std::is_void_v<Value>) {
        insert(entry.key);
      } else if (swapped) {
        insert(entry.key, entry.value);
      } else {
        set(entry.key, entry.value);
      }
    }
    other.clear();
  }

  UnsafeIteratorConst begin() const { return UnsafeIteratorConst(this, firstMember()); }
  UnsafeIteratorConst end() const { return UnsafeIteratorConst(this, slots_); }
  // Starts at the position `key` has, or would have if it is absent.
  UnsafeIteratorConst lowerBound(const Key& key) const {
    return UnsafeIteratorConst(this, firstFrom(positionOf(key)));
  }
  Iterator iterator() { return Iterator(this, firstMember()); }
  IteratorConst iterator() const { return IteratorConst(this, firstMember()); }
  Iterator iteratorAt(const Key& key) { return Iterator(this, firstFrom(positionOf(key))); }
  IteratorConst iteratorAt(const Key& key) const {
    return IteratorConst(this, firstFrom(positionOf(key)));
  }

  friend bool operator==(const HashMap2018& a, const HashMap2018& b) {
    if (a.size_ != b.size_) return false;
    for (const Entry& entry : a) {
      const Entry* other = b.findEntry(entry.key);
      if (!other) return false;
      if constexpr (!std::is_void_v<Value>) {
        if (!(other->value == entry.value)) return false;
      }
    }
    return true;
  }

  std::size_t capacityForTest() const noexcept { return slots_; }

 private:
  template <typename>
  friend class HashMap2018IteratorGeneric;
  template <typename>
  friend class HashMap2018UnsafeIteratorConstGeneric;

  static constexpr std::uint64_t kEmpty = 0;
  static constexpr unsigned kMinBits = 3;
  static constexpr std::size_t kLoadNumerator = 4;
  static constexpr std::size_t kLoadDenominator = 5;

  struct Location {
    std::size_t index;     // the member's slot, or where it would be inserted
    std::size_t runStart;  // first slot whose hash is not below the key's
    bool found;
  };

  std::uint64_t hashOf(const Key& key) const noexcept {
    const std::uint64_t hash = hashSingleAttr(key, salt_);
    return hash == kEmpty ? 1 : hash;
  }
  std::size_t home(std::uint64_t hash) const noexcept { return hash >> (64 - bits_); }
  static std::size_t homeSlots(unsigned bits) noexcept { return std::size_t{1} << bits; }
  static std::size_t overflowSlots(unsigned bits) noexcept {
    return std::min<std::size_t>(homeSlots(bits) / 4 + 4, 64);
  }
  // The load limit, four fifths of the home slots: an insertion shifts the members up to
  // the next empty slot, and that distance grows steeply beyond.
  static bool overLoaded(std::size_t members, unsigned bits) noexcept {
    return members * kLoadDenominator > homeSlots(bits) * kLoadNumerator;
  }
  bool needsGrowth(std::size_t members) const noexcept {
    return slots_ == 0 || overLoaded(members, bits_);
  }
  static unsigned bitsFor(std::size_t members) noexcept {
    unsigned bits = kMinBits;
    while (overLoaded(members, bits)) ++bits;
    return bits;
  }

  Location locate(std::uint64_t hash, const Key& key) const {
    std::size_t i = home(hash);
    while (i < slots_ && hashes_[i] != kEmpty && hashes_[i] < hash) ++i;
    const std::size_t runStart = i;
    for (; i < slots_ && hashes_[i] == hash; ++i) {
      const Key& member = entries_[i].key;
      if (member == key) return {i, runStart, true};
      if constexpr (kOrderedKeys) {
        if (key < member) break;
      }
    }
    return {i, runStart, false};
  }
  template <typename... ValueArgs>
  std::pair<Entry*, bool> insertHashed(std::uint64_t hash, const Key& key,
                                       ValueArgs&&... valueArgs) {
    if (slots_ == 0) grow();
    // Look first: a key that is present may alias one of our own members.
    Location at = locate(hash, key);
    if (at.found) return {&entries_[at.index], false};
    // Made before anything moves, so that a throwing constructor leaves the map whole.
    Entry made{key, std::forward<ValueArgs>(valueArgs)...};
    if (needsGrowth(size_ + 1)) {
      grow();
      at = locate(hash, key);
    }
    for (;;) {
      std::size_t free = at.index;
      while (free < slots_ && hashes_[free] != kEmpty) ++free;
      if (free < slots_) {
        for (std::size_t i = free; i > at.index; --i) moveSlot(i - 1, i);
        break;
      }
      grow();  // the run would spill past the overflow slots
      at = locate(hash, key);
    }
    new (&entries_[at.index]) Entry(std::move(made));
    hashes_[at.index] = hash;
    firstHint_ = std::min(firstHint_, at.index);
    ++size_;
    bump();
    return {&entries_[at.index], true};
  }
  // The slot index of a key's position: its own slot, or the first slot after every
  // member ordered before it. Among equal hashes of unordered keys an absent key stands
  // first, so that a scan resumed there meets the others again rather than miss one.
  std::pair<std::size_t, bool> findPosition(const Key& key) const {
    if (slots_ == 0) return {0, false};
    const Location at = locate(hashOf(key), key);
    if (at.found || kOrderedKeys) return {at.index, at.found};
    return {at.runStart, false};
  }
  std::size_t positionOf(const Key& key) const { return findPosition(key).first; }
  // The first member's slot. Members never move before firstHint_ (a member moves
  // left only into a slot that was occupied), so the scan skips what a drain from the
  // beginning has emptied.
  std::size_t firstMember() const noexcept { return firstHint_ = firstFrom(firstHint_); }
  std::size_t firstFrom(std::size_t i) const noexcept {
    while (i < slots_ && hashes_[i] == kEmpty) ++i;
    return i;
  }

  void grow() {
    const unsigned from = slots_ == 0 ? kMinBits : bits_ + 1;
    rebuild(fittingBits(from, 64));
  }
  void bump() noexcept { version_ = (version_ + 1) & kVersionMask; }

  void moveSlot(std::size_t from, std::size_t to) {
    new (&entries_[to]) Entry(std::move(entries_[from]));
    entries_[from].~Entry();
    hashes_[to] = hashes_[from];
    hashes_[from] = kEmpty;
  }

  // Erases the members in slots [first, last) and pulls the members after the range
  // back towards their home slots, so that no member stands behind an empty slot.
  void eraseSlots(std::size_t first, std::size_t last) {
    first = std::max(first, firstHint_);
    last = std::min(last, slots_);
    if (first >= last) return;
    std::size_t erased = 0;
    for (std::size_t i = first; i < last; ++i) {
      if (hashes_[i] == kEmpty) continue;
      entries_[i].~Entry();
      hashes_[i] = kEmpty;
      ++erased;
    }
    if (erased == 0) return;
    std::size_t write = first;
    for (std::size_t i = last; i < slots_ && hashes_[i] != kEmpty; ++i) {
      const std::size_t target = std::max(home(hashes_[i]), write);
      if (target >= i) break;  // at home: this member and all after it stay
      moveSlot(i, target);
      write = target + 1;
    }
    size_ -= erased;
    bump();
    if (size_ == 0) {
      releaseStorage();
    } else if (bits_ > kMinBits && size_ * 16 < homeSlots(bits_) &&
               size_ < shrinkBelow_) {
      shrink();
    }
  }

  // Gives back what a past burst took. Members that a drain in hash order left packed
  // into one stretch of hashes may not fit a smaller table; then the next try waits
  // until half of them are gone.
  void shrink() {
    const unsigned bits = fittingBits(bitsFor(size_) + 1, bits_);
    if (bits < bits_) {
      rebuild(bits);
    } else {
      shrinkBelow_ = size_ / 2;
    }
  }

  void allocate(unsigned bits) {
    bits_ = bits;
    slots_ = homeSlots(bits) + overflowSlots(bits);
    hashes_ = new std::uint64_t[slots_]();
    entries_ = std::allocator<Entry>().allocate(slots_);
  }
  void releaseStorage() noexcept {
    if (slots_ == 0) return;
    if constexpr (!std::is_trivially_destructible_v<Entry>) {
      for (std::size_t i = 0; i < slots_; ++i) {
        if (hashes_[i] != kEmpty) entries_[i].~Entry();
      }
    }
    delete[] hashes_;
    std::allocator<Entry>().deallocate(entries_, slots_);
    hashes_ = nullptr;
    entries_ = nullptr;
    firstHint_ = 0;
    shrinkBelow_ = std::numeric_limits<std::size_t>::max();
    slots_ = 0;
    bits_ = 0;
    size_ = 0;
  }

  // The smallest table size from `from` up to, not including, `limit` that holds every
  // member without running past its overflow slots; `limit` if none does.
  unsigned fittingBits(unsigned from, unsigned limit) const noexcept {
    unsigned bits = from;
    while (bits < limit && !fitsIn(bits)) ++bits;
    return bits;
  }
  bool fitsIn(unsigned bits) const noexcept {
    if (slots_ == 0) return true;
    const std::size_t limit = homeSlots(bits) + overflowSlots(bits);
    std::size_t next = 0;
    for (std::size_t i = 0; i < slots_; ++i) {
      if (hashes_[i] == kEmpty) continue;
      next = std::max<std::size_t>(hashes_[i] >> (64 - bits), next) + 1;
      if (next > limit) return false;
    }
    return true;
  }

  // Moves every member into a table of 2^bits home slots, which they fit. Members are
  // taken in slot order, which is hash order, so each one goes to its new home or just
  // after the one placed before it.
  void rebuild(unsigned bits) {
    HashMap2018 fresh;
    fresh.salt_ = salt_;
    fresh.allocate(bits);
    std::size_t next = 0;
    for (std::size_t i = 0; i < slots_; ++i) {
      if (hashes_[i] == kEmpty) continue;
      const std::size_t target = std::max(fresh.home(hashes_[i]), next);
      new (&fresh.entries_[target]) Entry(std::move(entries_[i]));
      fresh.hashes_[target] = hashes_[i];
      next = target + 1;
    }
    fresh.size_ = size_;
    swap(fresh);
  }

  void copyFrom(const HashMap2018& other) {
    if (other.slots_ == 0) return;
    allocate(other.bits_);
    for (std::size_t i = 0; i < slots_; ++i) {
      if (other.hashes_[i] == kEmpty) continue;
      new (&entries_[i]) Entry(other.entries_[i]);
      hashes_[i] = other.hashes_[i];
      ++size_;
    }
  }

  std::uint64_t* hashes_ = nullptr;
  Entry* entries_ = nullptr;
  std::size_t slots_ = 0;
  std::size_t size_ = 0;
  std::uint64_t salt_;
  mutable std::size_t firstHint_ = 0;  // no member stands before this slot
  // Shrinking waits until there are fewer members than this.
  std::size_t shrinkBelow_ = std::numeric_limits<std::size_t>::max();
  unsigned bits_ = 0;
  std::uint32_t version_ = 0;
};

// The set form: a hash collection of keys without values.
template <typename Key, std::uint64_t TypeConstant = kHashMap2018TypeConstant>
using HashSet2018 = HashMap2018<Key, void, TypeConstant>;

}  // namespace Qel
