#include <gtest/gtest.h>

#include "runtime/qel/HashMap2018.h"

namespace {

// Filling a map in the hash order of another map of the same type is what a walk of one
// collection into another does; with room made first, the map does not grow on the way
// and holds every member.
TEST(HashMap2018ReserveTest, AFillInHashOrderAfterReserveNeedsNoGrowth) {
  Qel::HashSet2018<std::uint64_t> source;
  for (std::uint64_t i = 0; i < 50'000; ++i) source.insert(i * 7919);
  Qel::HashSet2018<std::uint64_t> copy;
  copy.insert(1);  // one member already there is kept
  copy.reserve(source.size() + 1);
  const std::size_t capacity = copy.capacityForTest();
  for (const auto& member : source) copy.insert(member.key);
  EXPECT_EQ(copy.capacityForTest(), capacity);
  EXPECT_EQ(copy.size(), source.size() + 1);
  for (const auto& member : source) ASSERT_TRUE(copy.has(member.key));
  EXPECT_TRUE(copy.has(1));

  copy.reserve(10);  // never shrinks
  EXPECT_EQ(copy.capacityForTest(), capacity);
}

}  // namespace
