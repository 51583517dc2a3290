// Formatted READs from a file in the page cache, as compiled code issues them: ns per
// value, for reals with ES and F and integers with I.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench/compiled_format.h"
#include "bench/open_unit.h"
#include "vrn90.h"

namespace {

constexpr uint32_t kFormattedRead = VRN_STATEMENT_FLAGS(VRN_KIND_FORMATTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);

std::string PathOf(const char* name) {
    const char* directory = std::getenv("TMPDIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/" + name;
}

// The file the READs take, written once with printf: `perRecord` fields a record.
template <class Field>
void WriteFile(const char* name, int64_t count, int64_t perRecord, Field field) {
    FILE* out = std::fopen(PathOf(name).c_str(), "w");
    for (int64_t i = 0; i < count; ++i) {
        field(out, i);
        if ((i + 1) % perRecord == 0) std::fputc('\n', out);
    }
    std::fclose(out);
}

// One READ statement a record, through the segment entry as for an array section.
void ReadValues(benchmark::State& state, const char* name, const char* format, int64_t count, int32_t length,
                int32_t type, int64_t perRecord) {
    CompiledFormat compiled(format);
    std::vector<char> data(static_cast<size_t>(count * length));
    for (auto _ : state) {
        OpenUnit file(name, true);
        for (int64_t i = 0; i < count; i += perRecord) {
            LocalContext* statement = _vrnBeginIO(&file.unit, kFormattedRead, nullptr, 0, nullptr, 0, &compiled.block);
            _vrnReadFmtSeg(statement, data.data() + i * length, static_cast<int32_t>(perRecord * length), length, type,
                           0);
            _vrnEndIO(statement);
        }
        benchmark::DoNotOptimize(data.data());
    }
    state.SetItemsProcessed(state.iterations() * count);
}

void ReadES24(benchmark::State& state) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> values(-1e6, 1e6);
    WriteFile("vrn_bench_read_es.txt", state.range(0), 5,
              [&](FILE* out, int64_t) { std::fprintf(out, "%24.16E", values(random)); });
    ReadValues(state, "vrn_bench_read_es.txt", "(5ES24.16)", state.range(0), 8, 4, 5);
    unlink(PathOf("vrn_bench_read_es.txt").c_str());
}
BENCHMARK(ReadES24)->Arg(2000000)->Unit(benchmark::kMillisecond)->UseRealTime();

void ReadF12(benchmark::State& state) {
    std::mt19937_64 random(4);
    std::uniform_real_distribution<double> values(-1e6, 1e6);
    WriteFile("vrn_bench_read_f.txt", state.range(0), 10,
              [&](FILE* out, int64_t) { std::fprintf(out, "%12.4f", values(random)); });
    ReadValues(state, "vrn_bench_read_f.txt", "(10F12.4)", state.range(0), 8, 4, 10);
    unlink(PathOf("vrn_bench_read_f.txt").c_str());
}
BENCHMARK(ReadF12)->Arg(2000000)->Unit(benchmark::kMillisecond)->UseRealTime();

void ReadI12(benchmark::State& state) {
    std::mt19937 random(3);
    WriteFile("vrn_bench_read_i.txt", state.range(0), 10,
              [&](FILE* out, int64_t) { std::fprintf(out, "%12d", static_cast<int32_t>(random()) / 1000); });
    ReadValues(state, "vrn_bench_read_i.txt", "(10I12)", state.range(0), 4, 0, 10);
    unlink(PathOf("vrn_bench_read_i.txt").c_str());
}
BENCHMARK(ReadI12)->Arg(5000000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
