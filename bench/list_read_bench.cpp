// List-directed READs from a file in the page cache, as compiled code issues them: one
// READ (u, *) of ten values a record, ns per value.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "bench/open_unit.h"
#include "vrn90.h"

namespace {

constexpr uint32_t kListRead = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
constexpr int64_t kPerRecord = 10;

std::string PathOf(const char* name) {
    const char* directory = std::getenv("TMPDIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/" + name;
}

template <class Field>
void WriteFile(const char* name, int64_t count, Field field) {
    FILE* out = std::fopen(PathOf(name).c_str(), "w");
    for (int64_t i = 0; i < count; ++i) {
        field(out, i);
        if ((i + 1) % kPerRecord == 0) std::fputc('\n', out);
    }
    std::fclose(out);
}

template <class Item>
void ReadValues(benchmark::State& state, const char* name, int64_t count, Item item) {
    for (auto _ : state) {
        OpenUnit file(name, true);
        for (int64_t i = 0; i < count; i += kPerRecord) {
            LocalContext* statement = _vrnBeginIO(&file.unit, kListRead, nullptr, 0, nullptr, 0, nullptr);
            for (int64_t k = i; k < i + kPerRecord; ++k) item(statement, k);
            _vrnEndIO(statement);
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}

void ReadReal8(benchmark::State& state) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> values(-1e6, 1e6);
    WriteFile("vrn_bench_ld_r8.txt", state.range(0), [&](FILE* out, int64_t) { std::fprintf(out, "%25.16E", values(random)); });
    std::vector<double> data(static_cast<size_t>(state.range(0)));
    int32_t kind = 8;
    ReadValues(state, "vrn_bench_ld_r8.txt", state.range(0),
               [&](LocalContext* s, int64_t k) { _vrnReadLDReal(s, &data[static_cast<size_t>(k)], 0, &kind); });
    benchmark::DoNotOptimize(data.data());
    unlink(PathOf("vrn_bench_ld_r8.txt").c_str());
}
BENCHMARK(ReadReal8)->Arg(2000000)->Unit(benchmark::kMillisecond)->UseRealTime();

void ReadInteger4(benchmark::State& state) {
    std::mt19937 random(3);
    WriteFile("vrn_bench_ld_i4.txt", state.range(0),
              [&](FILE* out, int64_t) { std::fprintf(out, "%12d", static_cast<int32_t>(random()) / 1000); });
    std::vector<int32_t> data(static_cast<size_t>(state.range(0)));
    int32_t kind = 4;
    ReadValues(state, "vrn_bench_ld_i4.txt", state.range(0),
               [&](LocalContext* s, int64_t k) { _vrnReadLDInt(s, &data[static_cast<size_t>(k)], 0, &kind); });
    benchmark::DoNotOptimize(data.data());
    unlink(PathOf("vrn_bench_ld_i4.txt").c_str());
}
BENCHMARK(ReadInteger4)->Arg(5000000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
