#include "runtime/trace/Trace.h"

#include <spdlog/logger.h>

#include <cstdlib>
#include <memory>

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
};

Layers& layers() {
  // Never destroyed: traces from destructors of other statics still find it.
  static Layers* instance = new Layers;
  return *instance;
}

}  // namespace

void emit(spdlog::level::level_enum level, const char* file, int line, const char* function,
          std::string_view text) {
  if (!enabled(level)) return;
  layers().logger.log(spdlog::source_loc{file, line, function}, level,
                      spdlog::string_view_t(text.data(), text.size()));
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
