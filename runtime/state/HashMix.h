#pragma once

#include <cstddef>
#include <cstdint>

namespace Lanx {

// Spreads every input bit over the whole word. Interface ids and addresses differ mostly in a
// few bits at fixed places; mixed, they fill the buckets of any table size evenly.
constexpr std::uint64_t hashMix64(std::uint64_t x) noexcept {
  x ^= x >> 33;
  x *= 0xff51afd7ed558ccdULL;
  x ^= x >> 33;
  x *= 0xc4ceb9fe1a85ec53ULL;
  x ^= x >> 33;
  return x;
}

constexpr std::uint64_t hashCombine(std::uint64_t seed, std::uint64_t value) noexcept {
  return hashMix64(seed ^ (value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2)));
}

// std::hash of a value type that knows its own hash().
template <class T>
struct MemberHash {
  std::size_t operator()(const T& value) const noexcept { return value.hash(); }
};

}  // namespace Lanx
