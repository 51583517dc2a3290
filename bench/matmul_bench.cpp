// REAL(8) MATMUL of square matrices, n = 500, 1000 and 2000, in GFLOP/s (2 n^3 a
// product): ours with one thread and with two, the conventional kernel and the Strassen
// recursion at its default cut-off, beside OpenBLAS dgemm with the same thread counts.
#include <benchmark/benchmark.h>
#include <cblas.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "vrn90.h"

namespace {

struct Square {
    std::vector<double> a, b, c;
    alignas(8) unsigned char storage[3][sizeof(RTDArray) + 2 * sizeof(RTDDimension)] = {};
    ResultRecord result{};

    explicit Square(int32_t n) : a(size_t(n) * n), b(size_t(n) * n), c(size_t(n) * n) {
        std::mt19937_64 random(1);
        std::uniform_real_distribution<double> unit(-1, 1);
        for (auto* v : {&a, &b}) {
            for (double& x : *v) x = unit(random);
        }
        for (int i = 0; i < 3; ++i) {
            auto* rtd = reinterpret_cast<RTDArray*>(storage[i]);
            rtd->header = RTDHeader{RTD_ARRAY, RTD_TYPE_REAL, RTD_FLAG_IS_ALLOCATED, 1};
            rtd->element_len = 8;
            rtd->rank = 2;
            rtd->dims[0] = RTDDimension{1, n, 8 * n};  // dimension 2
            rtd->dims[1] = RTDDimension{1, n, 8};      // dimension 1
        }
        std::memcpy(&result.rtd_base_ptr, storage[2], sizeof storage[2]);
        result.base_ptr = reinterpret_cast<uintptr_t>(c.data());
    }
    const RTDArray* Rtd(int i) const { return reinterpret_cast<const RTDArray*>(storage[i]); }
};

void Flops(benchmark::State& state, int64_t n) {
    state.counters["GFLOPS"] =
        benchmark::Counter(2.0 * n * n * n * state.iterations() / 1e9, benchmark::Counter::kIsRate);
}

// Arguments: n, threads, Strassen (1) or not (0).
void Ours(benchmark::State& state) {
    const int32_t n = static_cast<int32_t>(state.range(0));
    std::string threads = "intrinthds=" + std::to_string(state.range(1));
    setrteopts(threads.c_str(), static_cast<int32_t>(threads.size()));
    Square s(n);
    for (auto _ : state) {
        _vrmmr8(&s.result, s.a.data(), s.b.data(), 1, s.Rtd(0), s.Rtd(1), static_cast<int32_t>(state.range(2)));
        benchmark::ClobberMemory();
    }
    Flops(state, n);
}

void OpenBlas(benchmark::State& state) {
    const int32_t n = static_cast<int32_t>(state.range(0));
    openblas_set_num_threads(static_cast<int>(state.range(1)));
    Square s(n);
    for (auto _ : state) {
        cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1.0, s.a.data(), n, s.b.data(), n, 0.0,
                    s.c.data(), n);
        benchmark::ClobberMemory();
    }
    Flops(state, n);
}

void Shapes(benchmark::internal::Benchmark* b, bool strassen) {
    for (int64_t n : {500, 1000, 2000}) {
        for (int64_t threads : {1, 2}) {
            if (strassen && n != 2000) continue;  // m + n + k must reach 3600
            b->Args({n, threads, strassen ? 1 : 0});
        }
    }
}

BENCHMARK(Ours)->Apply([](auto* b) { Shapes(b, false); })->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Ours)->Apply([](auto* b) { Shapes(b, true); })->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(OpenBlas)->Apply([](auto* b) { Shapes(b, false); })->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
