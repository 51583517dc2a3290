// Whole arrays of 10,000,000 REAL(8) as single items, as compiled code passes them:
// WRITE (u, '(5ES24.16)') x, WRITE (u, *) x and WRITE (u) x with their READs, and the
// unformatted section x(1:n:2) of an array twice as long, through its descriptor.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "bench/open_unit.h"
#include "vrn90.h"

namespace {

constexpr int64_t kCount = 10000000;
constexpr uint32_t kRealRun = 4u | VRN_ARRAY_RUN;
constexpr uint32_t kRealDescribed = 4u | VRN_ARRAY_DESCRIBED;
const int32_t kEight = 8;

std::vector<double>& Values() {
    static std::vector<double> values = [] {
        std::vector<double> x(kCount);
        std::mt19937_64 random(7);
        std::uniform_real_distribution<double> spread(-1.0e6, 1.0e6);
        for (double& v : x) v = spread(random);
        return x;
    }();
    return values;
}

uint32_t Flags(uint32_t kind, uint32_t direction) { return VRN_STATEMENT_FLAGS(kind, direction, VRN_ACCESS_SEQUENTIAL); }

// One statement of the whole array; the format block is null for list-directed and
// unformatted statements.
void Statement(OpenUnit& file, uint32_t kind, uint32_t direction, double* data, uintptr_t lengthWord,
               uint32_t typeWord, VrnFormatBlock* format) {
    LocalContext* s = _vrnBeginIO(&file.unit, Flags(kind, direction), nullptr, 0, nullptr, 0, format);
    bool reading = direction == VRN_DIRECTION_READ;
    switch (kind) {
    case VRN_KIND_FORMATTED:
        if (reading) _vrnReadFmtArray(s, data, &lengthWord, &kEight, typeWord, 0);
        else _vrnWriteFmtArray(s, data, &lengthWord, &kEight, typeWord, 0);
        break;
    case VRN_KIND_LIST_DIRECTED:
        if (reading) _vrnReadLDArray(s, data, &lengthWord, &kEight, typeWord, 0);
        else _vrnWriteLDArray(s, data, &lengthWord, &kEight, typeWord, 0);
        break;
    default:
        if (reading) _vrnReadUfmtArray(s, data, &lengthWord, &kEight, typeWord, 0);
        else _vrnWriteUfmtArray(s, data, &lengthWord, &kEight, typeWord, 0);
        break;
    }
    _vrnEndIO(s);
}

VrnFormatBlock es24{1, "(5ES24.16)", 10, 0, nullptr};

// Text: ns per value. The file is written once more for the read, outside the timing.
void Text(benchmark::State& state, uint32_t kind, uint32_t direction) {
    std::vector<double>& x = Values();
    VrnFormatBlock* format = kind == VRN_KIND_FORMATTED ? &es24 : nullptr;
    uintptr_t bytes = kCount * 8;
    std::vector<double> back(kCount);
    for (auto _ : state) {
        OpenUnit file("vrn_bench_array.txt");
        if (direction == VRN_DIRECTION_WRITE) {
            Statement(file, kind, direction, x.data(), bytes, kRealRun, format);
            continue;
        }
        state.PauseTiming();
        Statement(file, kind, VRN_DIRECTION_WRITE, x.data(), bytes, kRealRun, format);
        _vrnIOCmd(file.unit, VRN_COMMAND_REWIND, nullptr, 0, nullptr);
        state.ResumeTiming();
        Statement(file, kind, direction, back.data(), bytes, kRealRun, format);
    }
    if (direction == VRN_DIRECTION_READ && back[kCount - 1] != x[kCount - 1]) state.SkipWithError("no round trip");
    state.SetItemsProcessed(state.iterations() * kCount);
}

void WriteES24(benchmark::State& state) { Text(state, VRN_KIND_FORMATTED, VRN_DIRECTION_WRITE); }
void ReadES24(benchmark::State& state) { Text(state, VRN_KIND_FORMATTED, VRN_DIRECTION_READ); }
void WriteList(benchmark::State& state) { Text(state, VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE); }
void ReadList(benchmark::State& state) { Text(state, VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_READ); }
BENCHMARK(WriteES24)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadES24)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(WriteList)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadList)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// x(1:2n:2) of an array of 2n: one dimension of n elements 16 bytes apart.
struct EverySecond {
    alignas(8) unsigned char storage[sizeof(RTDArray) + sizeof(RTDDimension)] = {};
    EverySecond() {
        auto* rtd = reinterpret_cast<RTDArray*>(storage);
        rtd->header = RTDHeader{RTD_ARRAY, RTD_TYPE_REAL, RTD_FLAG_IS_ASSOCIATED, 1};
        rtd->element_len = 8;
        rtd->rank = 1;
        RTDDimension dimension{1, static_cast<int32_t>(kCount), 16};
        std::memcpy(&rtd->dims[0], &dimension, sizeof dimension);
    }
    uintptr_t address() const { return reinterpret_cast<uintptr_t>(storage); }
};

// Unformatted: bytes per second of the array's own bytes, one record a statement.
void Unformatted(benchmark::State& state, uint32_t direction, bool strided) {
    static std::vector<double> wide(2 * kCount, 1.5);
    std::vector<double>& x = strided ? wide : Values();
    EverySecond section;
    uintptr_t lengthWord = strided ? section.address() : kCount * 8;
    uint32_t typeWord = strided ? kRealDescribed : kRealRun;
    std::string path;
    for (auto _ : state) {
        {
            OpenUnit file("vrn_bench_array.dat", true, true);
            path = file.path;
            if (direction == VRN_DIRECTION_READ) {
                state.PauseTiming();
                Statement(file, VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE, x.data(), lengthWord, typeWord, nullptr);
                _vrnIOCmd(file.unit, VRN_COMMAND_REWIND, nullptr, 0, nullptr);
                state.ResumeTiming();
            }
            Statement(file, VRN_KIND_UNFORMATTED, direction, x.data(), lengthWord, typeWord, nullptr);
        }
        // Freeing the file's pages is no part of the transfer.
        state.PauseTiming();
        unlink(path.c_str());
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * kCount * 8);
}

void WriteUfmt(benchmark::State& state) { Unformatted(state, VRN_DIRECTION_WRITE, state.range(0) != 0); }
void ReadUfmt(benchmark::State& state) { Unformatted(state, VRN_DIRECTION_READ, state.range(0) != 0); }
BENCHMARK(WriteUfmt)->Arg(0)->Arg(1)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadUfmt)->Arg(0)->Arg(1)->Iterations(3)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
