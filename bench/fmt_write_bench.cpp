// Formatted WRITEs to a file, as compiled code issues them: ns per value, and ns per
// statement for one-item statements with the format pre-encoded and given as text.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench/compiled_format.h"
#include "bench/open_unit.h"
#include "vrn90.h"

namespace {

constexpr uint32_t kFormattedWrite = VRN_STATEMENT_FLAGS(VRN_KIND_FORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);

constexpr char kFileName[] = "vrn_bench_fmt.txt";

std::vector<double> Reals(int64_t count) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> values(-1e6, 1e6);
    std::vector<double> data(static_cast<size_t>(count));
    for (double& x : data) x = values(random);
    return data;
}

// `perStatement` items a statement, through the segment entry as for an array section.
void WriteValues(benchmark::State& state, const char* format, const void* data, int64_t count, int32_t length,
                 int32_t type, int64_t perStatement) {
    CompiledFormat compiled(format);
    const auto* bytes = static_cast<const char*>(data);
    for (auto _ : state) {
        OpenUnit file(kFileName);
        for (int64_t i = 0; i < count; i += perStatement) {
            LocalContext* statement = _vrnBeginIO(&file.unit, kFormattedWrite, nullptr, 0, nullptr, 0, &compiled.block);
            _vrnWriteFmtSeg(statement, bytes + i * length, static_cast<int32_t>(perStatement * length), length, type, 0);
            _vrnEndIO(statement);
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}

void WriteES24(benchmark::State& state) {
    std::vector<double> data = Reals(state.range(0));
    WriteValues(state, "(5ES24.16)", data.data(), state.range(0), 8, 4, 5);
}
BENCHMARK(WriteES24)->Arg(2000000)->Unit(benchmark::kMillisecond)->UseRealTime();

void WriteF12(benchmark::State& state) {
    std::vector<double> data = Reals(state.range(0));
    WriteValues(state, "(10F12.4)", data.data(), state.range(0), 8, 4, 10);
}
BENCHMARK(WriteF12)->Arg(2000000)->Unit(benchmark::kMillisecond)->UseRealTime();

void WriteI12(benchmark::State& state) {
    std::mt19937 random(3);
    std::vector<int32_t> data(static_cast<size_t>(state.range(0)));
    for (int32_t& x : data) x = static_cast<int32_t>(random()) / 1000;
    WriteValues(state, "(10I12)", data.data(), state.range(0), 4, 0, 10);
}
BENCHMARK(WriteI12)->Arg(5000000)->Unit(benchmark::kMillisecond)->UseRealTime();

// One-item statements: the statement frame and format start dominate.
void OneItemStatements(benchmark::State& state) {
    const bool asText = state.range(1) != 0;
    const int64_t count = state.range(0);
    CompiledFormat compiled("(I5)");
    static const char kText[] = "(I5)";
    VrnFormatBlock text{1, kText, 4, 0, nullptr};
    VrnFormatBlock* block = asText ? &text : &compiled.block;
    int32_t four = 4;
    for (auto _ : state) {
        OpenUnit file(kFileName);
        for (int64_t i = 0; i < count; ++i) {
            int32_t value = static_cast<int32_t>(i % 10000);
            LocalContext* statement = _vrnBeginIO(&file.unit, kFormattedWrite, nullptr, 0, nullptr, 0, block);
            _vrnWriteFmt(statement, &value, &four, &four, 0);
            _vrnEndIO(statement);
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(OneItemStatements)->Args({2000000, 0})->Args({2000000, 1})->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
