// The data-movement intrinsics on large REAL(8) arrays beside the limits of this machine: a
// memcpy of the same bytes for the ones that only copy, and a plain loop for PACK, UNPACK
// and MERGE, which look at a mask.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "bench/large_arrays.h"
#include "vrn90.h"

namespace {

constexpr int32_t kTransposed = 4000;  // TRANSPOSE: 4000 x 4000

std::vector<double>& Out() {
    static std::vector<double> out(kLength, 1.0);  // touched once, so that no timed run pays for its pages
    return out;
}

void Prepare() {
    PrepareArrays();
    benchmark::DoNotOptimize(Out().data());
}

// A result in the caller's storage of the given extents.
ResultRecord Into(double* data, std::vector<int32_t> extents) {
    Descriptor shape(extents, 8, RTD_TYPE_REAL);
    ResultRecord record{};
    std::memcpy(&record.rtd_base_ptr, shape.rtd, sizeof(RTDArray) + extents.size() * sizeof(RTDDimension));
    record.base_ptr = record.rtd_base_ptr = reinterpret_cast<uintptr_t>(data);
    return record;
}

void Bytes(benchmark::State& state, int64_t elements) { state.SetBytesProcessed(state.iterations() * elements * 8); }

void MemoryCopy(benchmark::State& state) {
    Prepare();
    const int64_t n = int64_t{kSide} * kSide;
    for (auto _ : state) {
        std::memcpy(Out().data(), Reals().data(), static_cast<size_t>(n) * 8);
        benchmark::ClobberMemory();
    }
    Bytes(state, n);
}

void Transpose(benchmark::State& state) {
    Prepare();
    Descriptor source({kTransposed, kTransposed}, 8, RTD_TYPE_REAL);
    for (auto _ : state) {
        ResultRecord record = Into(Out().data(), {kTransposed, kTransposed});
        _vrtsr8(&record, Reals().data(), source.rtd);
        benchmark::ClobberMemory();
    }
    Bytes(state, int64_t{kTransposed} * kTransposed);
}

void Cshift(benchmark::State& state) {
    Prepare();
    int32_t dim = static_cast<int32_t>(state.range(0));
    Descriptor source({kSide, kSide}, 8, RTD_TYPE_REAL);
    const int32_t shift = 7;
    Descriptor shiftRtd({}, 4, RTD_TYPE_INTEGER);
    for (auto _ : state) {
        ResultRecord record = Into(Out().data(), {kSide, kSide});
        _vrcsr8(&record, Reals().data(), &shift, dim, source.rtd, shiftRtd.rtd, 1);
        benchmark::ClobberMemory();
    }
    Bytes(state, int64_t{kSide} * kSide);
}

void Eoshift(benchmark::State& state) {
    Prepare();
    int32_t dim = static_cast<int32_t>(state.range(0));
    Descriptor source({kSide, kSide}, 8, RTD_TYPE_REAL);
    const int32_t shift = -7;
    Descriptor shiftRtd({}, 4, RTD_TYPE_INTEGER);
    for (auto _ : state) {
        ResultRecord record = Into(Out().data(), {kSide, kSide});
        _vresr8g(&record, Reals().data(), &shift, nullptr, dim, source.rtd, shiftRtd.rtd, nullptr, 0, 1);
        benchmark::ClobberMemory();
    }
    Bytes(state, int64_t{kSide} * kSide);
}

void Reshape(benchmark::State& state) {
    Prepare();
    Descriptor source({kSide * kSide}, 8, RTD_TYPE_REAL);
    const int32_t shape[2] = {kSide, kSide};
    Descriptor shapeRtd({2}, 4, RTD_TYPE_INTEGER);
    for (auto _ : state) {
        ResultRecord record = Into(Out().data(), {kSide, kSide});
        _vrrsr8g(&record, Reals().data(), shape, nullptr, nullptr, source.rtd, shapeRtd.rtd, nullptr, nullptr, 0, 0);
        benchmark::ClobberMemory();
    }
    Bytes(state, int64_t{kSide} * kSide);
}

// SPREAD of a 5000-vector into 5000 x 5000, along DIM; the bytes are those written.
void Spread(benchmark::State& state) {
    Prepare();
    int32_t dim = static_cast<int32_t>(state.range(0));
    Descriptor source({kSide}, 8, RTD_TYPE_REAL);
    for (auto _ : state) {
        ResultRecord record = Into(Out().data(), {kSide, kSide});
        _vrspr8(&record, Reals().data(), dim, kSide, source.rtd);
        benchmark::ClobberMemory();
    }
    Bytes(state, int64_t{kSide} * kSide);
}

void Merge(benchmark::State& state) {
    Prepare();
    const int64_t n = int64_t{kSide} * kSide;
    Descriptor array({kSide, kSide}, 8, RTD_TYPE_REAL);
    Descriptor mask({kSide, kSide}, 4, RTD_TYPE_LOGICAL);
    for (auto _ : state) {
        ResultRecord record = Into(Out().data(), {kSide, kSide});
        _vrmrr8(&record, Reals().data(), Reals().data() + n, HalfMask().data(), array.rtd, array.rtd, mask.rtd);
        benchmark::ClobberMemory();
    }
    Bytes(state, n);
}

void PlainMerge(benchmark::State& state) {
    Prepare();
    const int64_t n = int64_t{kSide} * kSide;
    const double* t = Reals().data();
    const double* f = t + n;
    const int32_t* m = HalfMask().data();
    for (auto _ : state) {
        double* out = Out().data();
        for (int64_t i = 0; i < n; ++i) out[i] = m[i] ? t[i] : f[i];
        benchmark::ClobberMemory();
    }
    Bytes(state, n);
}

void Pack(benchmark::State& state) {
    Prepare();
    Descriptor array({kLength}, 8, RTD_TYPE_REAL);
    Descriptor mask({kLength}, 4, RTD_TYPE_LOGICAL);
    for (auto _ : state) {
        ResultRecord record = Into(Out().data(), {kLength});
        _vrpkr8g(&record, Reals().data(), HalfMask().data(), nullptr, array.rtd, mask.rtd, nullptr, 0);
        benchmark::ClobberMemory();
    }
    Bytes(state, kLength);
}

void PlainPack(benchmark::State& state) {
    Prepare();
    const double* a = Reals().data();
    const int32_t* m = HalfMask().data();
    for (auto _ : state) {
        double* out = Out().data();
        int64_t k = 0;
        for (int64_t i = 0; i < kLength; ++i) {
            if (m[i]) out[k++] = a[i];
        }
        benchmark::DoNotOptimize(k);
        benchmark::ClobberMemory();
    }
    Bytes(state, kLength);
}

void Unpack(benchmark::State& state) {
    Prepare();
    Descriptor vector({kLength}, 8, RTD_TYPE_REAL);
    Descriptor mask({kLength}, 4, RTD_TYPE_LOGICAL);
    const double field = 0;
    Descriptor fieldRtd({}, 8, RTD_TYPE_REAL);
    for (auto _ : state) {
        ResultRecord record = Into(Out().data(), {kLength});
        _vrupr8(&record, Reals().data(), HalfMask().data(), &field, vector.rtd, mask.rtd, fieldRtd.rtd);
        benchmark::ClobberMemory();
    }
    Bytes(state, kLength);
}

void PlainUnpack(benchmark::State& state) {
    Prepare();
    const double* v = Reals().data();
    const int32_t* m = HalfMask().data();
    for (auto _ : state) {
        double* out = Out().data();
        int64_t k = 0;
        for (int64_t i = 0; i < kLength; ++i) out[i] = m[i] ? v[k++] : 0.0;
        benchmark::ClobberMemory();
    }
    Bytes(state, kLength);
}

BENCHMARK(MemoryCopy)->Unit(benchmark::kMillisecond);
BENCHMARK(Transpose)->Unit(benchmark::kMillisecond);
BENCHMARK(Cshift)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(Eoshift)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(Reshape)->Unit(benchmark::kMillisecond);
BENCHMARK(Spread)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(Merge)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainMerge)->Unit(benchmark::kMillisecond);
BENCHMARK(Pack)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainPack)->Unit(benchmark::kMillisecond);
BENCHMARK(Unpack)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainUnpack)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
