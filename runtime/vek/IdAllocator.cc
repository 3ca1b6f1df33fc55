#include "runtime/vek/IdAllocator.h"

#include <bit>

namespace Vek {

std::optional<std::uint32_t> IdAllocator::allocate() {
  for (std::uint32_t word = floor_ / wordBits;; ++word) {
    const std::uint32_t base = word * wordBits;
    if (base >= limit_) return std::nullopt;
    std::uint64_t bits = word < used_.size() ? used_[word] : 0;
    if (base < floor_) bits |= (std::uint64_t{1} << (floor_ - base)) - 1;  // below the floor
    if (bits == ~std::uint64_t{0}) continue;
    const std::uint32_t id = base + static_cast<std::uint32_t>(std::countr_one(bits));
    if (id >= limit_) return std::nullopt;
    take(id);
    return id;
  }
}

bool IdAllocator::take(std::uint32_t id) {
  if (id >= limit_ || inUse(id)) return false;
  const std::uint32_t word = id / wordBits;
  if (word >= used_.size()) used_.resize(word + 1, 0);
  used_[word] |= std::uint64_t{1} << (id % wordBits);
  return true;
}

void IdAllocator::release(std::uint32_t id) {
  const std::uint32_t word = id / wordBits;
  if (word < used_.size()) used_[word] &= ~(std::uint64_t{1} << (id % wordBits));
}

bool IdAllocator::inUse(std::uint32_t id) const {
  const std::uint32_t word = id / wordBits;
  return word < used_.size() && (used_[word] >> (id % wordBits) & 1u) != 0;
}

}  // namespace Vek
