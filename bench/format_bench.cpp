// Encoding a typical run-time format, beside strlen of the same text as the floor.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>

#include "vrn90.h"

extern "C" void* __real_malloc(size_t size);
namespace {
long mallocCalls = 0;
}
extern "C" void* __wrap_malloc(size_t size) {
    ++mallocCalls;
    return __real_malloc(size);
}

namespace {

const char kFormat[] = "(1X,I5,2(F10.3,1X),A,ES24.16)";

intptr_t Quiet(intptr_t, intptr_t, intptr_t, intptr_t, intptr_t, intptr_t, intptr_t, intptr_t) { return 1; }

void Encode(benchmark::State& state, uint32_t flags) {
    const char* volatile text = kFormat;
    VrnFormatText format{text, static_cast<int32_t>(sizeof kFormat - 1)};
    void* code = nullptr;
    int32_t bytes = 0, count = 0;
    _vrnEncodeFormat(&format, flags, Quiet, &count, nullptr, &code, &bytes);  // the first call allocates
    long before = mallocCalls;
    for (auto _ : state) {
        _vrnEncodeFormat(&format, flags, Quiet, &count, nullptr, &code, &bytes);
        benchmark::DoNotOptimize(code);
    }
    state.counters["mallocs_per_encoding"] =
        static_cast<double>(mallocCalls - before) / static_cast<double>(state.iterations());
}

void EncodeRuntime(benchmark::State& state) { Encode(state, 0); }
void EncodeCompileTime(benchmark::State& state) { Encode(state, VRN_FMT_COMPILE_TIME); }
void EncodeCompileTime64(benchmark::State& state) { Encode(state, VRN_FMT_COMPILE_TIME | VRN_FMT_64BIT); }

void StrlenFloor(benchmark::State& state) {
    const char* volatile text = kFormat;
    for (auto _ : state) benchmark::DoNotOptimize(std::strlen(text));
}

BENCHMARK(EncodeRuntime);
BENCHMARK(EncodeCompileTime);
BENCHMARK(EncodeCompileTime64);
BENCHMARK(StrlenFloor);

}  // namespace

BENCHMARK_MAIN();
