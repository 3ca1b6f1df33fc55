#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "runtime/qel/BufferedHashSet.h"

namespace {

// Keys of few distinct hashes, so that equal full hashes meet in and across batches.
struct Clash {
  int v;
  auto operator<=>(const Clash&) const = default;
};

}  // namespace

template <>
struct std::hash<Clash> {
  std::size_t operator()(const Clash& k) const noexcept { return k.v % 11; }
};

namespace {

template <typename Set>
std::vector<int> keysOf(const Set& set) {
  std::vector<int> keys;
  for (const auto& entry : set) keys.push_back(entry.key.v);
  return keys;
}

// Every key three times, shuffled, some repeats back to back: across several batches
// the set must hold each key once, in the order a plain set of the same keys has, and
// answer for keys still waiting as for keys taken in.
TEST(BufferedHashSetTest, HoldsEachKeyOnceInThePlainSetsOrder) {
  std::vector<Clash> writes;
  for (int k = 0; k < 700; ++k) {
    for (int i = 0; i < 3; ++i) writes.push_back({k});
  }
  std::shuffle(writes.begin(), writes.end(), std::mt19937(7));
  writes.insert(writes.begin() + 100, 5, Clash{42});

  Qel::BufferedHashSet<Clash> buffered;
  Qel::HashSet2018<Clash> plain;
  std::set<int> model;
  for (std::size_t i = 0; i < writes.size(); ++i) {
    buffered.insert(writes[i]);
    plain.insert(writes[i]);
    model.insert(writes[i].v);
    // A read halfway through a batch takes the waiting keys in.
    if (i % 1000 == 999) {
      ASSERT_EQ(buffered.size(), model.size());
      ASSERT_TRUE(buffered.has(writes[i]));
    }
  }
  buffered.insert({9999});
  EXPECT_TRUE(buffered.has({9999}));
  plain.insert({9999});
  EXPECT_EQ(buffered.size(), model.size() + 1);
  EXPECT_EQ(keysOf(buffered), keysOf(plain));
}

// Removals and swapping meet keys that have not been taken in yet; drains leave them.
TEST(BufferedHashSetTest, RemovalsSeeWaitingKeysAndDrainsLeaveThem) {
  Qel::BufferedHashSet<Clash> set;
  Qel::HashSet2018<Clash> plain;
  for (int k = 0; k < 20; ++k) {
    set.insert({k});
    plain.insert({k});
  }
  EXPECT_TRUE(set.erase({3}));
  EXPECT_FALSE(set.erase({3}));
  EXPECT_FALSE(set.has({3}));
  plain.erase({3});

  // A pass drains what it worked; keys added during the pass stay for the next one.
  const Clash middle{keysOf(set)[10]};
  for (int k = 100; k < 110; ++k) set.insert({k});
  set.drainBefore(middle);
  plain.drainBefore(middle);
  for (int k = 100; k < 110; ++k) plain.insert({k});
  EXPECT_EQ(keysOf(set), keysOf(plain));

  Qel::BufferedHashSet<Clash> other;
  other.insert({7});
  set.swap(other);
  EXPECT_EQ(keysOf(set), std::vector<int>{7});
  EXPECT_EQ(keysOf(other), keysOf(plain));

  other.insert({201});
  other.drainAll();
  EXPECT_EQ(keysOf(other), std::vector<int>{201});

  other.insert({202});
  other.clear();
  EXPECT_TRUE(other.empty());
  EXPECT_EQ(other.size(), 0u);
}

}  // namespace
