// WRITE (u, *) of many values, ten a statement, to a file: ns per value.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "vrn90.h"

namespace {

constexpr uint32_t kListWrite = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);

std::string OutputPath() {
    const char* directory = std::getenv("TMPDIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/vrn_bench_list.txt";
}

struct OpenUnit {
    std::string path = OutputPath();
    std::vector<uint64_t> storage;
    int32_t unit = 30;
    OpenUnit() {
        storage.assign(4, 0);
        auto* list = reinterpret_cast<KeywordList*>(storage.data());
        list->version = 1;
        list->count = 1;
        list->entries[0] = KeywordEntry{VRN_KEY_FILE, reinterpret_cast<uintptr_t>(path.c_str()),
                                        static_cast<uint32_t>(path.size())};
        _vrnIOCmd(unit, VRN_COMMAND_OPEN, list, 0, nullptr);
    }
    ~OpenUnit() {
        _vrnIOCmd(unit, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
        unlink(path.c_str());
    }
};

void WriteReals(benchmark::State& state) {
    const int64_t count = state.range(0);
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> values(-1e6, 1e6);
    std::vector<double> data(static_cast<size_t>(count));
    for (double& x : data) x = values(random);
    int32_t kind = 8;
    for (auto _ : state) {
        OpenUnit file;
        for (int64_t i = 0; i < count; i += 10) {
            LocalContext* statement = _vrnBeginIO(&file.unit, kListWrite, nullptr, 0, nullptr, 0, nullptr);
            for (int64_t j = i; j < i + 10; ++j) _vrnWriteLDReal(statement, &data[static_cast<size_t>(j)], 0, &kind);
            _vrnEndIO(statement);
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(WriteReals)->Arg(2000000)->Unit(benchmark::kMillisecond)->UseRealTime();

void WriteIntegers(benchmark::State& state) {
    const int64_t count = state.range(0);
    std::mt19937 random(3);
    std::vector<int32_t> data(static_cast<size_t>(count));
    for (int32_t& x : data) x = static_cast<int32_t>(random());
    int32_t kind = 4;
    for (auto _ : state) {
        OpenUnit file;
        for (int64_t i = 0; i < count; i += 10) {
            LocalContext* statement = _vrnBeginIO(&file.unit, kListWrite, nullptr, 0, nullptr, 0, nullptr);
            for (int64_t j = i; j < i + 10; ++j) _vrnWriteLDInt(statement, &data[static_cast<size_t>(j)], 0, &kind);
            _vrnEndIO(statement);
        }
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(WriteIntegers)->Arg(5000000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
