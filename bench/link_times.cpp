// The link's work in time, for people. scripts/test checks only what link_cost.cpp can count.

#include <benchmark/benchmark.h>

#include "link_work.h"

namespace {

constexpr uint64_t kBatch = 1000;

template <class Work>
void time(benchmark::State& state, Work work) {
  for (auto unused : state)
    work();
  state.SetItemsProcessed(static_cast<int64_t>(kBatch) * state.iterations());
}

uint32_t argument(const benchmark::State& state, int number) {
  return static_cast<uint32_t>(state.range(number));
}

void Frame(benchmark::State& state) {
  time(state, [&] { bench::frame(argument(state, 0), kBatch); });
}

void ReadFrame(benchmark::State& state) {
  time(state, [&] { bench::read(argument(state, 0), argument(state, 1), kBatch); });
}

void ReaderPath(benchmark::State& state) {
  time(state, [&] { bench::path(argument(state, 0), argument(state, 1), kBatch); });
}

void CopyAndSum(benchmark::State& state) {
  time(state, [&] { bench::copyAndSum(argument(state, 0), kBatch); });
}

BENCHMARK(Frame)->Arg(10)->Arg(33)->Arg(250);
BENCHMARK(ReadFrame)->ArgsProduct({{10, 33, 250}, {64, 4096, 200000}});
BENCHMARK(ReaderPath)->ArgsProduct({{33}, {64, 4096}});
BENCHMARK(CopyAndSum)->Arg(10)->Arg(33)->Arg(250);

}  // namespace

BENCHMARK_MAIN();
