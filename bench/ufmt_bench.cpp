// Unformatted sequential files of REAL(8) arrays, as compiled code writes and reads them:
// one WRITE (u) x of 1 MB a record, the compiler knowing the length, to a file in the
// page cache; in the machine's order (unit 30) and swapped (unit 31, listed in
// UFMT_LITTLEENDIAN).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "vrn90.h"

namespace {

constexpr uint32_t kWrite = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t kRead = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
constexpr int64_t kRecordBytes = 1 << 20;
constexpr uint32_t kRealRun = 4u | VRN_UFMT_RUN;

int64_t TotalBytes() {
    const char* megabytes = std::getenv("VRN_BENCH_MB");
    return (megabytes != nullptr ? std::atoll(megabytes) : 100) << 20;
}

std::string PathOf(int32_t unit) {
    const char* directory = std::getenv("TMPDIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/vrn_bench_ufmt_" + std::to_string(unit);
}

struct Connection {
    int32_t unit;
    std::vector<uint64_t> storage = std::vector<uint64_t>(8, 0);
    std::string path;
    explicit Connection(int32_t number) : unit(number), path(PathOf(number)) {
        auto* list = reinterpret_cast<KeywordList*>(storage.data());
        list->version = 1;
        list->count = 2;
        list->entries[0] = KeywordEntry{VRN_KEY_FILE, reinterpret_cast<uintptr_t>(path.c_str()),
                                        static_cast<uint32_t>(path.size())};
        list->entries[1] = KeywordEntry{VRN_KEY_FORM, 0, VRN_KEY_UNFORMATTED};
        _vrnIOCmd(unit, VRN_COMMAND_OPEN, list, 0, nullptr);
    }
    ~Connection() { _vrnIOCmd(unit, VRN_COMMAND_CLOSE, nullptr, 0, nullptr); }
};

void Swapped() {
    static bool once = [] {
        setrteopts("ufmt_littleendian=31", 20);
        return true;
    }();
    (void)once;
}

void WriteFile(int32_t unit, const std::vector<double>& data, int64_t records) {
    Connection file(unit);
    int64_t known = kRecordBytes;
    int32_t length = static_cast<int32_t>(kRecordBytes), kind = 8;
    for (int64_t r = 0; r < records; ++r) {
        LocalContext* statement = _vrnBeginIO(&file.unit, kWrite, nullptr, 0, nullptr, 0, &known);
        _vrnWriteUfmt(statement, data.data(), &length, &kind, kRealRun);
        _vrnEndIO(statement);
    }
}

void WriteArrays(benchmark::State& state) {
    Swapped();
    auto unit = static_cast<int32_t>(state.range(0));
    int64_t records = TotalBytes() / kRecordBytes;
    std::vector<double> data(kRecordBytes / 8);
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<double>(i) * 0.25;
    unlink(PathOf(unit).c_str());
    for (auto _ : state) {
        WriteFile(unit, data, records);
        // Freeing the pages of the file is no part of writing it.
        state.PauseTiming();
        unlink(PathOf(unit).c_str());
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * records * kRecordBytes);
}
BENCHMARK(WriteArrays)->Arg(30)->Arg(31)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

void ReadArrays(benchmark::State& state) {
    Swapped();
    auto unit = static_cast<int32_t>(state.range(0));
    int64_t records = TotalBytes() / kRecordBytes;
    std::vector<double> data(kRecordBytes / 8, 1.5);
    unlink(PathOf(unit).c_str());
    WriteFile(unit, data, records);
    int32_t length = static_cast<int32_t>(kRecordBytes), kind = 8;
    for (auto _ : state) {
        Connection file(unit);
        for (int64_t r = 0; r < records; ++r) {
            LocalContext* statement = _vrnBeginIO(&file.unit, kRead, nullptr, 0, nullptr, 0, nullptr);
            _vrnReadUfmt(statement, data.data(), &length, &kind, kRealRun);
            _vrnEndIO(statement);
        }
        benchmark::DoNotOptimize(data.data());
    }
    if (data[7] != 1.5) state.SkipWithError("the file did not read back");
    state.SetBytesProcessed(state.iterations() * records * kRecordBytes);
    unlink(PathOf(unit).c_str());
}
BENCHMARK(ReadArrays)->Arg(30)->Arg(31)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
