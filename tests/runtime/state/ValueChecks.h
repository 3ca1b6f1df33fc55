#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <unordered_set>
#include <vector>

// Values that are all different from each other: each equals only itself, orders strictly,
// hashes like an equal copy, and a hash set holds them all apart.
template <class T>
void expectDistinctKeys(const std::vector<T>& values) {
  std::unordered_set<T> set(values.begin(), values.end());
  EXPECT_EQ(set.size(), values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    T copy = values[i];
    EXPECT_EQ(std::hash<T>()(copy), std::hash<T>()(values[i])) << i;
    EXPECT_TRUE(set.contains(copy)) << i;
    for (std::size_t j = 0; j < values.size(); ++j) {
      EXPECT_EQ(values[i] == values[j], i == j) << i << " " << j;
      if (i != j) {
        EXPECT_TRUE((values[i] < values[j]) != (values[j] < values[i])) << i << " " << j;
      }
    }
  }
}
