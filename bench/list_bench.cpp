// WRITE (u, *) of many values, ten a statement, to a file: ns per value.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "bench/open_unit.h"
#include "vrn90.h"

namespace {

constexpr uint32_t kListWrite = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);

constexpr char kFileName[] = "vrn_bench_list.txt";

void WriteReals(benchmark::State& state) {
    const int64_t count = state.range(0);
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> values(-1e6, 1e6);
    std::vector<double> data(static_cast<size_t>(count));
    for (double& x : data) x = values(random);
    int32_t kind = 8;
    for (auto _ : state) {
        OpenUnit file(kFileName);
        for (int64_t i = 0; i < count; i += 10) {
            LocalContext* statement = _vrnBeginIO(&file.unit, kListWrite, nullptr, 0, nullptr, 0, nullptr);
            for (int64_t j = i; j < i + 10; ++j) _vrnWriteLDReal(statement, &data[static_cast<size_t>(j)], 0, &kind);
            _vrnEndIO(statement);
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(WriteReals)->Arg(2000000)->Unit(benchmark::kMillisecond)->UseRealTime();

void WriteIntegers(benchmark::State& state) {
    const int64_t count = state.range(0);
    std::mt19937 random(3);
    std::vector<int32_t> data(static_cast<size_t>(count));
    for (int32_t& x : data) x = static_cast<int32_t>(random());
    int32_t kind = 4;
    for (auto _ : state) {
        OpenUnit file(kFileName);
        for (int64_t i = 0; i < count; i += 10) {
            LocalContext* statement = _vrnBeginIO(&file.unit, kListWrite, nullptr, 0, nullptr, 0, nullptr);
            for (int64_t j = i; j < i + 10; ++j) _vrnWriteLDInt(statement, &data[static_cast<size_t>(j)], 0, &kind);
            _vrnEndIO(statement);
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(WriteIntegers)->Arg(5000000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
