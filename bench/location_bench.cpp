// MAXLOC and FINDLOC over large REAL(8) and INTEGER(4) arrays against plain loops over the
// same memory, written as a programmer would: one pass in memory order, the first maximum
// kept, the search ended at the first match.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "bench/large_arrays.h"
#include "vrn90.h"

namespace {

// A result of one INTEGER(4) subscript in the caller's storage.
ResultRecord ScalarResult(int32_t* answer, int32_t extent) {
    ResultRecord record{};
    record.base_ptr = record.rtd_base_ptr = reinterpret_cast<uintptr_t>(answer);
    record.header = RTDHeader{RTD_ARRAY, RTD_TYPE_INTEGER, RTD_FLAG_IS_ALLOCATED, 1};
    record.element_len = 4;
    record.rank = 1;
    record.dims[0] = RTDDimension{1, extent, 4};
    return record;
}

void MaxlocReal8(benchmark::State& state) {
    PrepareArrays();
    Descriptor source({kLength}, 8, RTD_TYPE_REAL);
    Descriptor mask({kLength}, 4, RTD_TYPE_LOGICAL);
    bool masked = state.range(0) != 0;
    int32_t answer = 0;
    for (auto _ : state) {
        ResultRecord record = ScalarResult(&answer, 1);
        _vrmxlocr8g(&record, Reals().data(), 0, masked ? HalfMask().data() : nullptr, source.rtd,
                    masked ? mask.rtd : nullptr, 0, masked);
        benchmark::DoNotOptimize(answer);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 8);
}

void PlainMaxlocReal8(benchmark::State& state) {
    PrepareArrays();
    const double* v = Reals().data();
    const int32_t* m = HalfMask().data();
    bool masked = state.range(0) != 0;
    for (auto _ : state) {
        double best = -HUGE_VAL;
        int32_t where = 0;
        for (int32_t i = 0; i < kLength; ++i) {
            if ((!masked || m[i]) && v[i] > best) {
                best = v[i];
                where = i + 1;
            }
        }
        benchmark::DoNotOptimize(where);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 8);
}

void MaxlocInteger4(benchmark::State& state) {
    PrepareArrays();
    Descriptor source({kLength}, 4, RTD_TYPE_INTEGER);
    int32_t answer = 0;
    for (auto _ : state) {
        ResultRecord record = ScalarResult(&answer, 1);
        _vrmxloci4g(&record, Integers().data(), 0, nullptr, source.rtd, nullptr, 0, 0);
        benchmark::DoNotOptimize(answer);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 4);
}

void PlainMaxlocInteger4(benchmark::State& state) {
    PrepareArrays();
    const int32_t* v = Integers().data();
    for (auto _ : state) {
        int32_t best = INT32_MIN;
        int32_t where = 0;
        for (int32_t i = 0; i < kLength; ++i) {
            if (v[i] > best) {
                best = v[i];
                where = i + 1;
            }
        }
        benchmark::DoNotOptimize(where);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 4);
}

// FINDLOC of a value that is not there: the whole array is read.
void FindlocReal8(benchmark::State& state) {
    PrepareArrays();
    Descriptor source({kLength}, 8, RTD_TYPE_REAL);
    Descriptor mask({kLength}, 4, RTD_TYPE_LOGICAL);
    bool masked = state.range(0) != 0;
    const double value = 5000.0;
    int32_t answer = 0;
    for (auto _ : state) {
        ResultRecord record = ScalarResult(&answer, 1);
        _vrfindlocr8g(&record, Reals().data(), &value, 0, masked ? HalfMask().data() : nullptr, source.rtd,
                      masked ? mask.rtd : nullptr, 0, masked, 8);
        benchmark::DoNotOptimize(answer);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 8);
}

void PlainFindlocReal8(benchmark::State& state) {
    PrepareArrays();
    const double* v = Reals().data();
    const int32_t* m = HalfMask().data();
    bool masked = state.range(0) != 0;
    double value = 5000.0;
    benchmark::DoNotOptimize(value);
    for (auto _ : state) {
        int32_t where = 0;
        for (int32_t i = 0; i < kLength; ++i) {
            if ((!masked || m[i]) && v[i] == value) {
                where = i + 1;
                break;
            }
        }
        benchmark::DoNotOptimize(where);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 8);
}

void FindlocInteger4(benchmark::State& state) {
    PrepareArrays();
    Descriptor source({kLength}, 4, RTD_TYPE_INTEGER);
    const int32_t value = 1000;
    int32_t answer = 0;
    for (auto _ : state) {
        ResultRecord record = ScalarResult(&answer, 1);
        _vrfindloci4g(&record, Integers().data(), &value, 0, nullptr, source.rtd, nullptr, 0, 0, 4);
        benchmark::DoNotOptimize(answer);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 4);
}

void PlainFindlocInteger4(benchmark::State& state) {
    PrepareArrays();
    const int32_t* v = Integers().data();
    int32_t value = 1000;
    benchmark::DoNotOptimize(value);
    for (auto _ : state) {
        int32_t where = 0;
        for (int32_t i = 0; i < kLength; ++i) {
            if (v[i] == value) {
                where = i + 1;
                break;
            }
        }
        benchmark::DoNotOptimize(where);
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kLength} * 4);
}

// MAXLOC(A, DIM=d) of the 5000 x 5000 matrix held in the first 25,000,000 reals.
void MaxlocAlong(benchmark::State& state) {
    PrepareArrays();
    int32_t dim = static_cast<int32_t>(state.range(0));
    Descriptor source({kSide, kSide}, 8, RTD_TYPE_REAL);
    std::vector<int32_t> out(kSide);
    for (auto _ : state) {
        ResultRecord record = ScalarResult(out.data(), kSide);
        _vrmxlocr8g(&record, Reals().data(), dim, nullptr, source.rtd, nullptr, 1, 0);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kSide} * kSide * 8);
}

// The plain loops a programmer writes: along a column, or row by row keeping a running
// maximum for every row.
void PlainMaxlocAlong(benchmark::State& state) {
    PrepareArrays();
    const double* a = Reals().data();
    std::vector<int32_t> out(kSide);
    std::vector<double> best(kSide);
    for (auto _ : state) {
        if (state.range(0) == 1) {
            for (int32_t j = 0; j < kSide; ++j) {
                const double* column = a + static_cast<size_t>(j) * kSide;
                double m = -HUGE_VAL;
                int32_t where = 0;
                for (int32_t i = 0; i < kSide; ++i) {
                    if (column[i] > m) {
                        m = column[i];
                        where = i + 1;
                    }
                }
                out[static_cast<size_t>(j)] = where;
            }
        } else {
            std::fill(best.begin(), best.end(), -HUGE_VAL);
            std::fill(out.begin(), out.end(), 0);
            for (int32_t j = 0; j < kSide; ++j) {
                const double* column = a + static_cast<size_t>(j) * kSide;
                for (int32_t i = 0; i < kSide; ++i) {
                    if (column[i] > best[static_cast<size_t>(i)]) {
                        best[static_cast<size_t>(i)] = column[i];
                        out[static_cast<size_t>(i)] = j + 1;
                    }
                }
            }
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * int64_t{kSide} * kSide * 8);
}

BENCHMARK(MaxlocReal8)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainMaxlocReal8)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(MaxlocInteger4)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainMaxlocInteger4)->Unit(benchmark::kMillisecond);
BENCHMARK(FindlocReal8)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainFindlocReal8)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(FindlocInteger4)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainFindlocInteger4)->Unit(benchmark::kMillisecond);
BENCHMARK(MaxlocAlong)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainMaxlocAlong)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
