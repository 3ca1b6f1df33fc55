#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <vector>

#include "runtime/lumo/Node.h"
#include "runtime/lumo/Ptr.h"
#include "runtime/qel/HashMap2018.h"

namespace {

// Keys whose std::hash collides a lot, so that members with equal full hashes meet.
struct OrderedClash {
  int v;
  auto operator<=>(const OrderedClash&) const = default;
};
struct UnorderedClash {
  int v;
  bool operator==(const UnorderedClash&) const = default;
};

}  // namespace

template <>
struct std::hash<OrderedClash> {
  std::size_t operator()(const OrderedClash& k) const noexcept { return k.v % 7; }
};
template <>
struct std::hash<UnorderedClash> {
  std::size_t operator()(const UnorderedClash& k) const noexcept { return k.v % 5; }
};

namespace {

int valueOf(int k) { return k; }
int valueOf(const OrderedClash& k) { return k.v; }
int valueOf(const UnorderedClash& k) { return k.v; }

template <typename Map>
std::vector<int> keysOf(const Map& map) {
  std::vector<int> keys;
  for (const auto& entry : map) keys.push_back(valueOf(entry.key));
  return keys;
}

// The order the map promises, kept by a sorted model: by full hash, then by key.
template <typename Key>
class OrderModel {
 public:
  using Map = Qel::HashMap2018<Key, int>;
  using Position = std::pair<std::uint64_t, Key>;

  Position positionOf(const Key& key) const {
    return {Qel::hashSingleAttr(key, Qel::HashHelper::salt(Qel::kHashMap2018TypeConstant)), key};
  }
  void set(const Key& key, int value) { members_[positionOf(key)] = value; }
  void erase(const Key& key) { members_.erase(positionOf(key)); }
  // [from, to); a missing bound is the beginning or the end.
  void eraseRange(const Key* from, const Key* to) {
    auto first = from ? members_.lower_bound(positionOf(*from)) : members_.begin();
    auto last = to ? members_.lower_bound(positionOf(*to)) : members_.end();
    if (first != members_.end() && (last == members_.end() || first->first < last->first)) {
      members_.erase(first, last);
    }
  }
  std::vector<int> keysFrom(const Key& key) const {
    std::vector<int> keys;
    for (auto it = members_.lower_bound(positionOf(key)); it != members_.end(); ++it) {
      keys.push_back(valueOf(it->first.second));
    }
    return keys;
  }
  std::vector<int> keys() const {
    std::vector<int> keys;
    for (const auto& [position, value] : members_) keys.push_back(valueOf(position.second));
    return keys;
  }
  std::size_t size() const { return members_.size(); }

 private:
  std::map<Position, int> members_;
};

template <typename Key>
class HashMap2018OrderTest : public ::testing::Test {};
using OrderedKeys = ::testing::Types<int, OrderedClash>;
TYPED_TEST_SUITE(HashMap2018OrderTest, OrderedKeys);

// Random inserts, erases and range erases over a key space small enough to hit present
// and absent keys alike; after each step the map must hold the model's members in the
// model's order, and iteration from any key must start at the model's position.
TYPED_TEST(HashMap2018OrderTest, FollowsHashOrderThroughGrowthShrinkAndRangeErase) {
  using Key = TypeParam;
  OrderModel<Key> model;
  typename OrderModel<Key>::Map map;
  std::mt19937 rng(2018);
  auto randomKey = [&rng] { return Key{static_cast<int>(rng() % 3000)}; };
  for (int step = 0; step < 6000; ++step) {
    const Key a = randomKey();
    const Key b = randomKey();
    const std::uint32_t before = map.version();
    switch (rng() % 10) {
      case 0:
        map.eraseRange(a, b);
        model.eraseRange(&a, &b);
        break;
      case 1:
        if (step % 7 == 0) {
          map.eraseFrom(a);
          model.eraseRange(&a, nullptr);
        } else if (step % 7 == 1) {
          map.eraseBefore(a);
          model.eraseRange(nullptr, &a);
        }
        break;
      case 2:
      case 3:
      case 4: {
        const bool erased = map.erase(a);
        EXPECT_EQ(erased, map.version() != before);
        model.erase(a);
        break;
      }
      default:
        map.set(a, step);
        model.set(a, step);
    }
    ASSERT_EQ(map.size(), model.size());
    if (step % 97 == 0) {
      ASSERT_EQ(keysOf(map), model.keys()) << "step " << step;
      std::vector<int> fromB;
      for (auto it = map.lowerBound(b); it != map.end(); ++it) fromB.push_back(valueOf(it->key));
      ASSERT_EQ(fromB, model.keysFrom(b)) << "step " << step;
    }
  }
  EXPECT_EQ(keysOf(map), model.keys());
  EXPECT_LE(map.version(), (Qel::HashMap2018<Key, int>::kVersionMask));
}

// The storage follows the size: a burst grows it and erasing most of it gives it back. It
// stays where shrinking would only cost: room made first is kept through a fill in another
// map's hash order (a walk of one collection into another) and through a reserve of less.
TEST(HashMap2018Test, StorageGrowsShrinksAndStaysWhereItShould) {
  Qel::HashSet2018<int> set;
  for (int k = 0; k < 50'000; ++k) set.insert(k * 7919);
  const std::size_t grown = set.capacityForTest();

  Qel::HashSet2018<int> copy;
  copy.insert(1);  // one member already there is kept
  copy.reserve(set.size() + 1);
  const std::size_t reserved = copy.capacityForTest();
  for (const auto& member : set) copy.insert(member.key);
  copy.reserve(10);
  EXPECT_EQ(copy.capacityForTest(), reserved);
  EXPECT_EQ(copy.size(), set.size() + 1);
  for (const auto& member : set) ASSERT_TRUE(copy.has(member.key));

  for (int k = 10; k < 50'000; ++k) set.erase(k * 7919);
  EXPECT_LT(set.capacityForTest(), grown / 100);
  EXPECT_EQ(keysOf(set).size(), 10u);
  set.eraseBefore(5 * 7919);
  set.eraseFrom(5 * 7919);
  EXPECT_TRUE(set.empty());
}

TEST(HashMap2018Test, VersionMovesOnlyWithStructuralChange) {
  Qel::HashMap2018<int, int> map;
  map.set(1, 1);
  const std::uint32_t v = map.version();
  map.insert(1, 5);  // present: keeps its value and the structure
  map.set(1, 2);     // a new value is no structural change
  map.erase(99);
  map.eraseRange(5, 5);
  EXPECT_EQ(map.version(), v);
  EXPECT_EQ(*map.find(1), 2);
  map.set(2, 2);
  EXPECT_NE(map.version(), v);
}

// Unordered keys with equal hashes keep insertion order among themselves; a scan that
// resumes at a deleted key meets the others again rather than skip one.
TEST(HashMap2018Test, UnorderedEqualHashesAreNeitherLostNorSkipped) {
  Qel::HashSet2018<UnorderedClash> set;
  for (int k = 0; k < 40; ++k) set.insert({k});
  const std::vector<int> order = keysOf(set);
  ASSERT_EQ(order.size(), 40u);
  for (int k : order) {
    auto it = set.lowerBound({k});
    ASSERT_EQ(it->key.v, k);
  }
  set.eraseRange({order[5]}, {order[25]});
  std::vector<int> expected(order.begin(), order.begin() + 5);
  expected.insert(expected.end(), order.begin() + 25, order.end());
  EXPECT_EQ(keysOf(set), expected);

  std::vector<int> seen;
  for (auto it = set.iterator(); it; it.advance()) {
    const int k = it.currNodeMaybeStale().key.v;
    seen.push_back(k);
    set.erase({k});
  }
  EXPECT_EQ(seen, expected);
  EXPECT_TRUE(set.empty());
}

TEST(HashMap2018Test, CopyEqualityAndMerge) {
  Qel::HashMap2018<int, int> a;
  for (int k = 0; k < 50; ++k) a.set(k, k);
  Qel::HashMap2018<int, int> b = a;
  EXPECT_EQ(a, b);
  b.set(3, 30);
  EXPECT_FALSE(a == b);
  Qel::HashMap2018<int, int> extra;
  extra.set(3, 33);
  extra.set(100, 100);
  b.updateG(std::move(extra));
  EXPECT_EQ(b.size(), 51u);
  EXPECT_EQ(*b.find(3), 33);
  EXPECT_TRUE(extra.empty());
  Qel::HashMap2018<int, int> small;  // merging a larger map into it takes that one over
  small.set(3, -1);
  small.set(-5, -5);
  small.updateG(std::move(b));
  EXPECT_EQ(small.size(), 52u);
  EXPECT_EQ(*small.find(3), 33);
}

struct Counted : Lumo::Node {
  explicit Counted(int* alive) : alive_(alive) { ++*alive_; }
  ~Counted() override { --*alive_; }
  int* alive_;
};

// A scan that deletes the member under it and adds others: every member there at the
// start is met exactly once, the deleted member's value stays alive until the scan moves
// on, and a member the scan added ahead of itself is met too.
TEST(HashMap2018IteratorTest, SafeScanSurvivesDeletionAndInsertion) {
  int alive = 0;
  Qel::HashMap2018<int, Lumo::Ptr<Counted>> map;
  for (int k = 0; k < 200; ++k) map.set(k, Lumo::makePtr<Counted>(&alive));
  std::multiset<int> seen;
  int added = 1000;
  for (auto it = map.iterator(); it; it.advance()) {
    const int k = it.currNodeMaybeStale().key;
    seen.insert(k);
    ASSERT_NE(it.currNodeNonStale(), nullptr);
    if (k % 2 == 0) {
      map.erase(k);
      EXPECT_EQ(it.currNodeNonStale(), nullptr);
      EXPECT_EQ(alive, static_cast<int>(map.size()) + 1);  // the scan's copy holds it
    }
    if (k < 200 && k % 3 == 0) map.set(added++, Lumo::makePtr<Counted>(&alive));  // may grow
  }
  for (int k = 0; k < 200; ++k) EXPECT_EQ(seen.count(k), 1u) << k;
  for (const auto& entry : map) EXPECT_LE(seen.count(entry.key), 1u);
  EXPECT_EQ(alive, static_cast<int>(map.size()));
}

using HashMap2018DeathTest = ::testing::Test;

TEST_F(HashMap2018DeathTest, CheckingIteratorEndsProcessOnChangeOrExhaustion) {
  EXPECT_DEATH(
      {
        Qel::HashSet2018<int> set;
        for (int k = 0; k < 8; ++k) set.insert(k);
        for (const auto& entry : set) set.erase(entry.key);
      },
      "version_ == hashMap_->version\\(\\)");
  EXPECT_DEATH(
      {
        Qel::HashSet2018<int> set;
        set.insert(1);
        auto it = set.begin();
        ++it;
        (void)it->key;
      },
      "iter_");
}

}  // namespace
