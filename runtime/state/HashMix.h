#pragma once

#include <cstddef>
#include <cstdint>

#include "runtime/qel/HashHelper.h"

namespace Lanx {

// Spreads every input bit over the whole word. Interface ids and addresses differ mostly in a
// few bits at fixed places; mixed, they fill the buckets of any table size evenly.
// The same finaliser the hash collections use.
constexpr std::uint64_t hashMix64(std::uint64_t x) noexcept { return Qel::HashHelper::mix64(x); }

constexpr std::uint64_t hashCombine(std::uint64_t seed, std::uint64_t value) noexcept {
  return hashMix64(seed ^ (value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2)));
}

// std::hash of a value type that knows its own hash().
template <class T>
struct MemberHash {
  std::size_t operator()(const T& value) const noexcept { return value.hash(); }
};

}  // namespace Lanx
