#include "runtime/vek/ModuleCmdBase.h"

#include <new>
#include <thread>
#include <vector>

// gcc says it builds under the address sanitizer by a macro, clang by a feature test.
#if defined(__SANITIZE_ADDRESS__)
#define VEK_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEK_ADDRESS_SANITIZER 1
#endif
#endif

namespace Vek {

namespace {

// Blocks of commands that went, kept for the thread that first made a command (the agent's).
// It holds as many as the shared pool of route messages, a whole task run's worth: a run
// of more commands than are kept makes the rest with the allocator. The list is never
// destroyed: commands may still go while the process exits. Under the address sanitizer
// nothing is kept, so that a command used after it went is caught.
struct KeptBlocks {
  static constexpr std::size_t kMost = 16384;
  KeptBlocks() { blocks.reserve(kMost); }
  std::thread::id owner = std::this_thread::get_id();
  std::vector<void*> blocks;  // never grows past its first room: no throw on the way back
};

KeptBlocks* keptBlocksOfThisThread() {
#if defined(VEK_ADDRESS_SANITIZER)
  return nullptr;
#else
  static KeptBlocks* const kept = new KeptBlocks;
  return kept->owner == std::this_thread::get_id() ? kept : nullptr;
#endif
}

}  // namespace

void* ModuleCmdBase::operator new(std::size_t size) {
  KeptBlocks* kept = size == sizeof(ModuleCmdBase) ? keptBlocksOfThisThread() : nullptr;
  if (kept && !kept->blocks.empty()) {
    void* block = kept->blocks.back();
    kept->blocks.pop_back();
    return block;
  }
  return ::operator new(size);
}

void ModuleCmdBase::operator delete(void* block, std::size_t size) noexcept {
  KeptBlocks* kept = size == sizeof(ModuleCmdBase) ? keptBlocksOfThisThread() : nullptr;
  if (kept && kept->blocks.size() < KeptBlocks::kMost) {
    kept->blocks.push_back(block);
    return;
  }
  ::operator delete(block);
}

}  // namespace Vek
