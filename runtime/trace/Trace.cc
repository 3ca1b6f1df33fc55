#include "runtime/trace/Trace.h"

#include <spdlog/logger.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>

#include "runtime/lumo/Assert.h"
#include "runtime/trace/DualLog.h"
#include "runtime/trace/SwiftLog.h"

namespace Trace {

namespace {

struct Layers;
Layers& layers();

struct Layers {
  Layers()
      : ring(std::make_shared<SwiftLog>()),
        text(std::make_shared<DualLog>()),
        logger("vek", {ring, text}) {
    text->set_level(spdlog::level::warn);
    logger.set_level(spdlog::level::trace);
    logger.flush_on(spdlog::level::warn);
    // The layers live on past exit; what the text layer holds is written out before.
    std::atexit([] { layers().text->flush(); });
  }

  std::shared_ptr<SwiftLog> ring;
  std::shared_ptr<DualLog> text;
  spdlog::logger logger;
  std::mutex clockMutex;
  std::function<double()> clock;
};

thread_local bool recordSimulated = false;

// The host's clock's reading, if the host gave one.
std::optional<double> hostClock(Layers& all) {
  std::lock_guard lock(all.clockMutex);
  if (!all.clock) return std::nullopt;
  return all.clock();
}

Layers& layers() {
  // Never destroyed: traces from destructors of other statics still find it.
  static Layers* instance = new Layers;
  return *instance;
}

// A failed assertion's default report ends with what the ring holds; the assertion lives
// below this layer, so it is told as the library loads.
[[maybe_unused]] const bool ringOnFailedAssertion = (Lumo::fatalFlushIs(&fatalFlush), true);

}  // namespace

void emit(spdlog::level::level_enum level, const char* file, int line, const char* function,
          std::string_view text) {
  if (!enabled(level)) return;
  Layers& all = layers();
  const spdlog::source_loc where{file, line, function};
  const spdlog::string_view_t payload(text.data(), text.size());
  const std::optional<double> seconds = hostClock(all);
  if (!seconds) return all.logger.log(where, level, payload);
  // To the microsecond a line shows: 0.01 s reached by adding up steps reads 0.010000.
  const auto time = spdlog::log_clock::time_point(
      std::chrono::round<std::chrono::microseconds>(std::chrono::duration<double>(*seconds)));
  recordSimulated = true;
  all.logger.log(time, where, level, payload);
  recordSimulated = false;
}

bool Impl::recordTimeSimulated() noexcept { return recordSimulated; }

void clockIs(std::function<double()> seconds) {
  Layers& all = layers();
  std::lock_guard lock(all.clockMutex);
  all.clock = std::move(seconds);
}

void fatalFlush() noexcept {
  Layers& all = layers();
  all.ring->dumpNoWait(stderr);
  try {
    all.text->flush();
  } catch (...) {
    // Dying anyway.
  }
}

void levelIs(Level level) { Impl::threshold.store(level, std::memory_order_relaxed); }

Level level() noexcept {
  return static_cast<Level>(Impl::threshold.load(std::memory_order_relaxed));
}

void textLevelIs(Level level) { layers().text->set_level(level); }

Level textLevel() { return layers().text->level(); }

void textFileIs(const std::string& path) { layers().text->fileIs(path); }

void ringCapacityIs(std::size_t records) { layers().ring->capacityIs(records); }

void dumpRing(std::FILE* out) { layers().ring->dump(out); }

std::uint64_t mark() { return layers().ring->mark(); }

std::vector<TraceRecord> recordsSince(std::uint64_t mark) {
  return layers().ring->recordsSince(mark);
}

bool contains(std::string_view text, std::uint64_t since) {
  return layers().ring->contains(text, since);
}

}  // namespace Trace
