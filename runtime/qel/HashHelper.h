#pragma once

#include <cstdint>
#include <functional>

namespace Qel {

// The process-wide seed of every hash collection. It is drawn once per process, so
// that no code comes to lean on one particular iteration order; the environment variable
// VEK_HASH_SEED (a decimal number) fixes it instead.
class HashHelper {
 public:
  static constexpr const char* seedEnv = "VEK_HASH_SEED";
  static std::uint32_t hashSeed32() noexcept { return seed_; }
  // Fixes the seed; collections made afterwards use it.
  static void hashSeed32IsForTest(std::uint32_t seed) noexcept { seed_ = seed; }

  // A bijective 64-bit finaliser: distinct inputs stay distinct, every input bit
  // reaches every output bit.
  static constexpr std::uint64_t mix64(std::uint64_t x) noexcept {
    x ^= x >> 30;
    x *= 0xbf58476d1ce4e5b9ull;
    x ^= x >> 27;
    x *= 0x94d049bb133111ebull;
    x ^= x >> 31;
    return x;
  }

  // The salt of one collection: the process seed mixed with the collection type's constant.
  static std::uint64_t salt(std::uint64_t typeConstant) noexcept {
    return mix64((static_cast<std::uint64_t>(hashSeed32()) << 32) ^ typeConstant);
  }

 private:
  static std::uint32_t randomSeed() noexcept;
  static inline std::uint32_t seed_ = randomSeed();
};

// The full 64-bit hash of one key under a collection's salt. Value types specialise
// std::hash; the mix spreads whatever they give over all 64 bits.
template <typename Key>
std::uint64_t hashSingleAttr(const Key& key, std::uint64_t salt) noexcept {
  return HashHelper::mix64(static_cast<std::uint64_t>(std::hash<Key>{}(key)) + salt);
}

}  // namespace Qel
