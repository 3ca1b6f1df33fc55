// Lookups in hash maps of a million interface ids and route keys, the size of the largest
// route and interface tables the agent keeps.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <unordered_set>
#include <vector>

#include "runtime/state/IntfId.h"
#include "runtime/state/IpGenRouteKey.h"

namespace {

using Lanx::IntfId;
using Lanx::IpGenAddr;
using Lanx::IpGenPrefix;
using Routing::Multicast::Fib::IpGenRouteKey;

constexpr std::uint32_t members = 1'000'000;

std::vector<IntfId> intfIds() {
  std::vector<IntfId> ids;
  ids.reserve(members);
  for (std::uint32_t i = 0; ids.size() < members; ++i) {
    ids.push_back(IntfId::ethernet(static_cast<std::uint16_t>(i / 4096 + 1),
                                   static_cast<std::uint16_t>(i % 4096)));
  }
  return ids;
}

std::vector<IpGenRouteKey> routeKeys() {
  std::vector<IpGenRouteKey> keys;
  keys.reserve(members);
  for (std::uint32_t i = 0; i < members; ++i) {
    keys.emplace_back(IpGenPrefix(IpGenAddr::ipv4(0x0a000000 + i / 16)),
                      IpGenPrefix(IpGenAddr::ipv4(0xe8000000 + i % 16)));
  }
  return keys;
}

template <class Key>
void lookUpEveryMember(benchmark::State& state, const std::vector<Key>& keys) {
  std::unordered_set<Key> set(keys.begin(), keys.end());
  std::size_t next = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(set.find(keys[next]));
    next = next + 1 == keys.size() ? 0 : next + 1;
  }
  state.counters["buckets"] = static_cast<double>(set.bucket_count());
}

void BM_IntfIdLookup(benchmark::State& state) { lookUpEveryMember(state, intfIds()); }
void BM_RouteKeyLookup(benchmark::State& state) { lookUpEveryMember(state, routeKeys()); }

void BM_IntfIdFromName(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(IntfId::fromName("Ethernet3/1/4"));
}

BENCHMARK(BM_IntfIdLookup);
BENCHMARK(BM_RouteKeyLookup);
BENCHMARK(BM_IntfIdFromName);

}  // namespace

BENCHMARK_MAIN();
