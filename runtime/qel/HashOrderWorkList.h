#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "runtime/lumo/Assert.h"
#include "runtime/qel/HashHelper.h"
#include "runtime/qel/HashMap2018.h"

namespace Qel {

// A work list of keys that is worked in the hash order of a HashMap2018 of the same type
// constant: the order in which a table of those keys iterates, so that the work reads its
// tables from front to back.
//
// A key is recorded by appending it to the bucket of its hash's top bits, without looking
// for it: a reactor that records a million changed keys at random then writes to the ends
// of a few thousand short lists instead of probing a set of the whole million for each
// key, which waits for memory at every key. The work takes the lowest bucket, orders it
// and drops the copies of a key recorded more than once, so a key is worked once however
// often it was recorded before its turn.
//
// A pass works from the front (front(), popFront()). Keys recorded between two runs of a
// pass are worked by the next run in their order, before the rest if they stand before
// it; nothing may be recorded while a run works the front.
//
// Buckets double when they hold more than kKeysPerBucket keys on average and do not
// shrink: an idle list keeps one empty bucket per kKeysPerBucket keys of its largest
// burst, and a bucket lets its storage go when it empties.
template <std::totally_ordered Key, std::uint64_t TypeConstant = kHashMap2018TypeConstant>
class HashOrderWorkList {
 public:
  static constexpr std::size_t kKeysPerBucket = 64;
  static constexpr std::size_t kBatch = 256;
  // A bucket's first storage: its share of a burst, so that it grows once at most on the
  // way; and large enough that the storage of buckets which grew and emptied never lands
  // among the allocator's smallest blocks, whose merging at some later large allocation
  // would stall a task run for a millisecond and more.
  static constexpr std::size_t kFirstRoom = 64;

  HashOrderWorkList() : salt_(HashHelper::salt(TypeConstant)), buckets_(1) {}

  void insert(const Key& key) {
    insertMade(std::hash<Key>{}(key), [&key](Key& into) { into = key; });
  }
  // Records the key that `make(Key&)` writes in its place, whose hash() is `keyHash`: a
  // key made in place is not read back from a copy just written, which stalls the
  // processor for each key of a burst.
  template <typename Make>
  void insertMade(std::size_t keyHash, Make&& make) {
    if (staged_.capacity() == 0) staged_.reserve(kBatch);
    Entry& entry = staged_.emplace_back();
    entry.hash = salted(keyHash);
    make(entry.key);
    // The same key again and again (a route that flaps) takes one place.
    const std::size_t count = staged_.size();
    if (count >= 2 && staged_[count - 2].hash == entry.hash && staged_[count - 2].key == entry.key) {
      staged_.pop_back();
      return;
    }
    if (count >= kBatch) takeIn();
  }

  bool has(const Key& key) const {
    takeIn();
    const std::size_t at = bucketOf(hashOf(key));
    const std::vector<Entry>& bucket = buckets_[at];
    const std::size_t first = at == head_ ? headConsumed_ : 0;
    return std::any_of(bucket.begin() + first, bucket.end(),
                       [&](const Entry& entry) { return entry.key == key; });
  }
  // Every copy of the key.
  bool erase(const Key& key) {
    takeIn();
    const std::size_t at = bucketOf(hashOf(key));
    if (at == head_) compactHead();
    std::vector<Entry>& bucket = buckets_[at];
    const std::size_t before = bucket.size();
    std::erase_if(bucket, [&](const Entry& entry) { return entry.key == key; });
    const std::size_t erased = before - bucket.size();
    size_ -= erased;
    if (bucket.empty()) bucketEmptied(at);
    return erased > 0;
  }
  // Keys waiting; a key recorded more than once may count more than once until its
  // bucket's turn.
  std::size_t size() const noexcept { return size_ + staged_.size(); }
  bool empty() const noexcept { return size_ == 0 && staged_.empty(); }
  void clear() {
    for (std::vector<Entry>& bucket : buckets_) std::vector<Entry>().swap(bucket);
    staged_.clear();
    std::vector<Entry>().swap(sorted_);
    size_ = 0;
    head_ = buckets_.size();
    headConsumed_ = 0;
    headOrdered_ = false;
  }
  // Enough buckets for that many keys, made before a burst of known size.
  void reserve(std::size_t keys) {
    takeIn();
    while (keys > buckets_.size() * kKeysPerBucket) grow();
  }

  // The first key in order. The list must not be empty.
  const Key& front() {
    orderHead();
    return buckets_[head_][headConsumed_].key;
  }
  // Its hash, as a HashMap2018 of the same type constant has it for the key.
  std::uint64_t frontHash() {
    orderHead();
    return buckets_[head_][headConsumed_].hash;
  }
  void popFront() {
    orderHead();
    ++headConsumed_;
    --size_;
    if (headConsumed_ == buckets_[head_].size()) bucketEmptied(head_);
  }

 private:
  struct Entry {
    std::uint64_t hash;
    Key key;
  };

  // The collection's own hash, so that the order is the tables' order.
  std::uint64_t hashOf(const Key& key) const noexcept {
    return salted(std::hash<Key>{}(key));
  }
  std::uint64_t salted(std::size_t keyHash) const noexcept {
    const std::uint64_t hash = HashHelper::mix64(static_cast<std::uint64_t>(keyHash) + salt_);
    return hash == 0 ? 1 : hash;
  }
  std::size_t bucketOf(std::uint64_t hash) const noexcept {
    return bits_ == 0 ? 0 : static_cast<std::size_t>(hash >> (64 - bits_));
  }

  // Appends the staged keys to their buckets: first the buckets' heads are fetched, then
  // their ends, so that the waits for memory of a whole batch overlap.
  void takeIn() const {
    if (staged_.empty()) return;
    while (size_ + staged_.size() > buckets_.size() * kKeysPerBucket) grow();
    for (const Entry& entry : staged_) __builtin_prefetch(&buckets_[bucketOf(entry.hash)]);
    for (const Entry& entry : staged_) {
      const std::vector<Entry>& bucket = buckets_[bucketOf(entry.hash)];
      __builtin_prefetch(bucket.data() + bucket.size(), 1);
    }
    for (const Entry& entry : staged_) {
      const std::size_t at = bucketOf(entry.hash);
      if (at < head_) {
        compactHead();
        head_ = at;
      }
      if (at == head_) headOrdered_ = false;
      std::vector<Entry>& bucket = buckets_[at];
      if (bucket.capacity() == 0) bucket.reserve(kFirstRoom);
      bucket.push_back(entry);
    }
    size_ += staged_.size();
    staged_.clear();
  }

  // Puts the head bucket in order from its first unworked key: the worked ones go, the
  // rest is sorted as the tables order it and each key's copies collapse into one.
  void orderHead() {
    takeIn();
    QEL_ASSERT(size_ > 0, "the work list is empty");
    if (headOrdered_) return;
    compactHead();
    std::vector<Entry>& bucket = buckets_[head_];
    if (!std::is_sorted(bucket.begin(), bucket.end(), Before{})) sortBucket(bucket);
    const std::size_t recorded = bucket.size();
    bucket.erase(std::unique(bucket.begin(), bucket.end(), SameKey{}), bucket.end());
    size_ -= recorded - bucket.size();
    headOrdered_ = true;
  }
  // A bucket's hashes are spread evenly below its top bits: a counting pass on the next
  // kSpreadBits bits leaves each key within a place or two of its own, and a pass of
  // insertions finishes. Comparison sorting a bucket of this size mispredicts a branch at
  // almost every step.
  void sortBucket(std::vector<Entry>& bucket) {
    // A bucket far past its share (many keys of one hash prefix) sorts as any range does.
    if (bucket.size() > 4 * kKeysPerBucket) {
      std::sort(bucket.begin(), bucket.end(), Before{});
      return;
    }
    constexpr unsigned kSpreadBits = 6;
    std::array<std::uint32_t, (1u << kSpreadBits) + 1> start{};
    const unsigned shift = 64 - bits_ - kSpreadBits;
    auto spread = [shift](const Entry& entry) {
      return static_cast<std::size_t>((entry.hash >> shift) & ((1u << kSpreadBits) - 1));
    };
    for (const Entry& entry : bucket) ++start[spread(entry) + 1];
    for (std::size_t i = 1; i < start.size(); ++i) start[i] += start[i - 1];
    sorted_.resize(bucket.size());
    for (const Entry& entry : bucket) sorted_[start[spread(entry)]++] = entry;
    for (std::size_t i = 1; i < sorted_.size(); ++i) {
      Entry entry = sorted_[i];
      std::size_t at = i;
      for (; at > 0 && Before{}(entry, sorted_[at - 1]); --at) sorted_[at] = sorted_[at - 1];
      sorted_[at] = entry;
    }
    // The bucket takes the ordered storage and leaves its own for the next bucket.
    bucket.swap(sorted_);
  }
  // Equal hashes stand in the order of their keys, as in the tables.
  struct Before {
    bool operator()(const Entry& a, const Entry& b) const noexcept {
      return a.hash != b.hash ? a.hash < b.hash : a.key < b.key;
    }
  };
  struct SameKey {
    bool operator()(const Entry& a, const Entry& b) const noexcept {
      return a.hash == b.hash && a.key == b.key;
    }
  };

  void compactHead() const {
    if (head_ >= buckets_.size() || headConsumed_ == 0) return;
    std::vector<Entry>& bucket = buckets_[head_];
    bucket.erase(bucket.begin(), bucket.begin() + static_cast<std::ptrdiff_t>(headConsumed_));
    headConsumed_ = 0;
  }
  void bucketEmptied(std::size_t at) {
    std::vector<Entry>().swap(buckets_[at]);
    if (at != head_) return;
    headConsumed_ = 0;
    headOrdered_ = false;
    if (size_ == 0) {
      // An idle list keeps no storage for ordering either.
      std::vector<Entry>().swap(sorted_);
      head_ = buckets_.size();
      return;
    }
    while (buckets_[head_].empty()) ++head_;
  }
  // Each bucket splits in two by the next bit of its keys' hashes; both halves keep the
  // order they had.
  void grow() const {
    compactHead();
    const std::size_t count = buckets_.size();
    std::vector<std::vector<Entry>> split(count * 2);
    for (std::size_t i = 0; i < count; ++i) {
      for (Entry& entry : buckets_[i]) {
        std::vector<Entry>& half = split[2 * i + ((entry.hash >> (63 - bits_)) & 1)];
        if (half.capacity() == 0) half.reserve(std::max(kFirstRoom, buckets_[i].size() / 2));
        half.push_back(std::move(entry));
      }
    }
    buckets_.swap(split);
    ++bits_;
    if (head_ < count) {
      head_ *= 2;
      while (buckets_[head_].empty()) ++head_;
    } else {
      head_ = buckets_.size();
    }
    headOrdered_ = false;
  }

  // Reads are const and may take the staged keys in: the list belongs to one thread, like
  // the rest of the machine that holds it.
  std::uint64_t salt_;
  mutable unsigned bits_ = 0;
  mutable std::vector<std::vector<Entry>> buckets_;
  mutable std::vector<Entry> staged_;
  // Where the head bucket is put in order; its storage passes from bucket to bucket.
  std::vector<Entry> sorted_;
  mutable std::size_t size_ = 0;
  // The lowest bucket that holds keys (the bucket count when none does), how many of its
  // keys the pass has worked, and whether it is in order from there on.
  mutable std::size_t head_ = 1;
  mutable std::size_t headConsumed_ = 0;
  mutable bool headOrdered_ = false;
};

}  // namespace Qel
