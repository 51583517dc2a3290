// Reductions over large REAL(8) and INTEGER(4) arrays against a plain loop over the same
// memory, which is the limit: the loop keeps the same single accumulator and order.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "bench/large_arrays.h"
#include "vrn90.h"

namespace {

template <typename T>
void Scalar(benchmark::State& state, void (*entry)(ResultRecord*, const void*, int32_t, const void*, const RTDArray*,
                                                   const RTDArray*, int32_t, int32_t),
            const std::vector<T>& values, uint8_t type) {
    PrepareArrays();
    Descriptor source({kLength}, sizeof(T), type);
    T result{};
    for (auto _ : state) {
        ResultRecord record{};
        record.base_ptr = reinterpret_cast<uintptr_t>(&result);
        record.header.flags = RTD_FLAG_IS_ALLOCATED;
        entry(&record, values.data(), 0, nullptr, source.rtd, nullptr, 0, 0);
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * int64_t{sizeof(T)});
}

void SumReal8(benchmark::State& state) { Scalar(state, _vrsmr8g, Reals(), RTD_TYPE_REAL); }
void MaxvalReal8(benchmark::State& state) { Scalar(state, _vrmxr8g, Reals(), RTD_TYPE_REAL); }
void SumInteger4(benchmark::State& state) { Scalar(state, _vrsmi4g, Integers(), RTD_TYPE_INTEGER); }

void PlainSumReal8(benchmark::State& state) {
    PrepareArrays();
    const double* v = Reals().data();
    for (auto _ : state) {
        double m = 0;
        for (int32_t i = 0; i < kLength; ++i) m += v[i];
        benchmark::DoNotOptimize(m);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 8);
}

void PlainMaxReal8(benchmark::State& state) {
    PrepareArrays();
    const double* v = Reals().data();
    for (auto _ : state) {
        double m = -HUGE_VAL;
        for (int32_t i = 0; i < kLength; ++i) m = v[i] < m ? m : v[i];
        benchmark::DoNotOptimize(m);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 8);
}

void PlainSumInteger4(benchmark::State& state) {
    PrepareArrays();
    const int32_t* v = Integers().data();
    for (auto _ : state) {
        uint32_t m = 0;
        for (int32_t i = 0; i < kLength; ++i) m += static_cast<uint32_t>(v[i]);
        benchmark::DoNotOptimize(m);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 4);
}

// SUM(A, DIM=d) of the 5000 x 5000 matrix held in the first 25,000,000 reals.
void SumAlong(benchmark::State& state) {
    PrepareArrays();
    int32_t dim = static_cast<int32_t>(state.range(0));
    Descriptor source({kSide, kSide}, 8, RTD_TYPE_REAL);
    std::vector<double> out(kSide);
    Descriptor outRtd({kSide}, 8, RTD_TYPE_REAL);
    for (auto _ : state) {
        ResultRecord record{};
        std::memcpy(&record.rtd_base_ptr, outRtd.rtd, sizeof(RTDArray) + sizeof(RTDDimension));
        record.base_ptr = record.rtd_base_ptr = reinterpret_cast<uintptr_t>(out.data());
        _vrsmr8g(&record, Reals().data(), dim, nullptr, source.rtd, nullptr, 1, 0);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kSide} * kSide * 8);
}

void PlainSumAlong(benchmark::State& state) {
    PrepareArrays();
    const double* a = Reals().data();
    std::vector<double> out(kSide);
    for (auto _ : state) {
        if (state.range(0) == 1) {
            for (int32_t j = 0; j < kSide; ++j) {
                double m = 0;
                for (int32_t i = 0; i < kSide; ++i) m += a[static_cast<size_t>(j) * kSide + i];
                out[static_cast<size_t>(j)] = m;
            }
        } else {
            std::fill(out.begin(), out.end(), 0.0);
            for (int32_t j = 0; j < kSide; ++j) {
                for (int32_t i = 0; i < kSide; ++i) out[static_cast<size_t>(i)] += a[static_cast<size_t>(j) * kSide + i];
            }
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kSide} * kSide * 8);
}

BENCHMARK(SumReal8)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainSumReal8)->Unit(benchmark::kMillisecond);
BENCHMARK(MaxvalReal8)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainMaxReal8)->Unit(benchmark::kMillisecond);
BENCHMARK(SumInteger4)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainSumInteger4)->Unit(benchmark::kMillisecond);
BENCHMARK(SumAlong)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainSumAlong)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
