// RANDOM_NUMBER of a 50,000,000-element REAL(8) array: one thread (harvests of 2,047
// elements, below the shared-fill length), the whole array at once (threaded), and a
// plain loop writing the same memory, which is the limit.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "vrn90.h"

namespace {

constexpr int32_t kLength = 50'000'000;
constexpr int32_t kSerialPiece = 2047;

struct Vector {
    alignas(8) unsigned char storage[sizeof(RTDArray) + sizeof(RTDDimension)] = {};
    RTDArray* rtd = reinterpret_cast<RTDArray*>(storage);

    Vector(double* data, int32_t extent) {
        rtd->base_ptr = reinterpret_cast<uintptr_t>(data);
        rtd->header = RTDHeader{RTD_ARRAY, RTD_TYPE_REAL, RTD_FLAG_IS_ALLOCATED, 1};
        rtd->element_len = 8;
        rtd->rank = 1;
        rtd->rel_virtual_org = -8;
        rtd->dims[0] = RTDDimension{1, extent, 8};
    }
};

std::vector<double>& Harvest() {
    static std::vector<double> values(kLength, 0.0);
    return values;
}

void OneThread(benchmark::State& state) {
    double* data = Harvest().data();
    for (auto _ : state) {
        for (int32_t first = 0; first < kLength; first += kSerialPiece) {
            Vector piece(data + first, std::min(kSerialPiece, kLength - first));
            _vrdrand(piece.rtd);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kLength);
}

void Threaded(benchmark::State& state) {
    Vector whole(Harvest().data(), kLength);
    for (auto _ : state) {
        _vrdrand(whole.rtd);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kLength);
}

void PlainWrite(benchmark::State& state) {
    double* data = Harvest().data();
    for (auto _ : state) {
        for (int32_t i = 0; i < kLength; ++i) data[i] = static_cast<double>(i) * 0x1p-48;
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kLength);
}

BENCHMARK(OneThread)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Threaded)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(PlainWrite)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
