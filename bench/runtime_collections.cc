// The hash collection next to std::unordered_map, and the throughput of backlog runs.

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

#include "runtime/qel/BacklogAttr.h"
#include "runtime/qel/HashMap2018.h"
#include "runtime/qel/Optional.h"
#include "runtime/qel/ProcessBacklog.h"

namespace {

using Key = std::uint64_t;
using QelMap = Qel::HashMap2018<Key, Key>;
using StdMap = std::unordered_map<Key, Key>;

std::vector<Key> randomKeys(std::size_t count, std::uint64_t seed) {
  std::mt19937_64 rng(seed);
  std::vector<Key> keys(count);
  for (Key& key : keys) key = rng();
  return keys;
}

void put(QelMap& map, Key key) { map.insert(key, key); }
void put(StdMap& map, Key key) { map.emplace(key, key); }
bool present(const QelMap& map, Key key) { return map.find(key) != nullptr; }
bool present(const StdMap& map, Key key) { return map.find(key) != map.end(); }
Key valueOf(const QelMap::Entry& member) { return member.value; }
Key valueOf(const StdMap::value_type& member) { return member.second; }

template <typename Map>
void BM_Insert(benchmark::State& state) {
  const auto keys = randomKeys(static_cast<std::size_t>(state.range(0)), 1);
  for (auto _ : state) {
    Map map;
    for (Key key : keys) put(map, key);
    benchmark::DoNotOptimize(map);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Half the lookups find their key, half do not.
template <typename Map>
void BM_Lookup(benchmark::State& state) {
  const auto keys = randomKeys(static_cast<std::size_t>(state.range(0)), 1);
  const auto absent = randomKeys(keys.size(), 2);
  Map map;
  for (Key key : keys) put(map, key);
  for (auto _ : state) {
    std::size_t found = 0;
    for (std::size_t i = 0; i < keys.size(); ++i) {
      found += present(map, keys[i]);
      found += present(map, absent[i]);
    }
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0) * 2);
}

template <typename Map>
void BM_Erase(benchmark::State& state) {
  const auto keys = randomKeys(static_cast<std::size_t>(state.range(0)), 1);
  for (auto _ : state) {
    state.PauseTiming();
    Map map;
    for (Key key : keys) put(map, key);
    state.ResumeTiming();
    for (Key key : keys) map.erase(key);
    benchmark::DoNotOptimize(map);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <typename Map>
void BM_Iterate(benchmark::State& state) {
  const auto keys = randomKeys(static_cast<std::size_t>(state.range(0)), 1);
  Map map;
  for (Key key : keys) put(map, key);
  for (auto _ : state) {
    Key sum = 0;
    for (const auto& member : map) sum += valueOf(member);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// A scheduler that wants the thread back after every `slice` keys.
struct SliceTask {
  bool taskShouldYield() { return ++asked % slice == 0; }
  unsigned slice;
  unsigned asked = 0;
};

struct BacklogOwner {
  void work(std::uint32_t key) { sum += key; }
  // Runs the task until the backlog is empty; returns the keys worked.
  std::uint64_t drain(unsigned slice) {
    SliceTask task{slice};
    std::uint64_t processed = 0;
    QelLumo::DvBacklogProgress progress;
    do {
      progress = QelLumo::Impl::_processBacklog(
          backlog, bookmark, QelLumo::DvBacklogTaskShouldYield(task),
          QelLumo::ProcessOneBacklogElemKey(this, &BacklogOwner::work));
      processed += progress.processed;
    } while (progress.pending != 0);
    return processed;
  }

  Qel::BacklogAttr<std::uint32_t, "benchBacklog"> backlog;
  Qel::Optional<std::uint32_t> bookmark;
  std::uint64_t sum = 0;
};

// Keys per second through backlog runs of 64 keys each.
void BM_BacklogDrain(benchmark::State& state) {
  const auto keys = randomKeys(static_cast<std::size_t>(state.range(0)), 3);
  BacklogOwner owner;
  for (auto _ : state) {
    state.PauseTiming();
    for (Key key : keys) owner.backlog.is(static_cast<std::uint32_t>(key));
    state.ResumeTiming();
    benchmark::DoNotOptimize(owner.drain(64));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// A burst of changes over few keys: each change is a reactor's add, and the drain after
// the burst works each key once. Items are changes.
void BM_BacklogBurst(benchmark::State& state) {
  const std::size_t changes = static_cast<std::size_t>(state.range(0));
  const auto keys = randomKeys(changes, 4);
  BacklogOwner owner;
  for (auto _ : state) {
    for (Key key : keys) owner.backlog.is(static_cast<std::uint32_t>(key % 1000));
    benchmark::DoNotOptimize(owner.drain(64));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

}  // namespace

#define VEK_COLLECTION_BENCH(name)                                                 \
  BENCHMARK_TEMPLATE(name, QelMap)->RangeMultiplier(10)->Range(10'000, 1'000'000); \
  BENCHMARK_TEMPLATE(name, StdMap)->RangeMultiplier(10)->Range(10'000, 1'000'000)

VEK_COLLECTION_BENCH(BM_Insert);
VEK_COLLECTION_BENCH(BM_Lookup);
VEK_COLLECTION_BENCH(BM_Erase);
VEK_COLLECTION_BENCH(BM_Iterate);
BENCHMARK(BM_BacklogDrain)->RangeMultiplier(10)->Range(10'000, 1'000'000);
BENCHMARK(BM_BacklogBurst)->Arg(1'000'000);

// Every growth of a table touches fresh pages. glibc serves large blocks by mmap and
// gives them back at once, so a loop that builds and drops maps pays a page fault per
// page each time, and on a virtual machine that dwarfs the work measured here. A
// long-lived process keeps its heap warm; so does this program.
int main(int argc, char** argv) {
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 256 << 20);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
