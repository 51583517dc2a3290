// Records per second through the statement frame and the record layer, beside write(2)
// of the same bytes, which is the limit.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "core/context.h"
#include "transport/transport.h"
#include "vrn90.h"

namespace {

constexpr uint32_t kListWrite = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
const std::string kRecord(80, 'x');

std::string ScratchPath(const char* stem) {
    const char* directory = std::getenv("TMPDIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/" + stem;
}

// Standard output on a file for the length of a benchmark; the run-time starts afresh
// so that unit 6 is preconnected to it.
class StdoutToFile {
public:
    explicit StdoutToFile(const std::string& path) : path_(path) {
        RTECleanup();
        saved_ = dup(1);
        int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(fd, 1);
        close(fd);
    }
    ~StdoutToFile() {
        RTECleanup();
        dup2(saved_, 1);
        close(saved_);
        unlink(path_.c_str());
    }

private:
    std::string path_;
    int saved_;
};

void EmptyPrint(benchmark::State& state) {
    StdoutToFile redirect(ScratchPath("vrn_bench_print.txt"));
    int32_t unit = 6;
    for (auto _ : state) _vrnEndIO(_vrnBeginIO(&unit, kListWrite, nullptr, 0, nullptr, 0, nullptr));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(EmptyPrint);

void Write80ByteRecords(benchmark::State& state) {
    std::string path = ScratchPath("vrn_bench_records.txt");
    KeywordList* list = static_cast<KeywordList*>(std::calloc(1, sizeof(KeywordList) + sizeof(KeywordEntry)));
    list->version = 1;
    list->count = 1;
    list->entries[0] = KeywordEntry{VRN_KEY_FILE, reinterpret_cast<uintptr_t>(path.c_str()),
                                    static_cast<uint32_t>(path.size())};
    _vrnIOCmd(10, VRN_COMMAND_OPEN, list, 0, nullptr);
    int32_t unit = 10;
    for (auto _ : state) {
        LocalContext* statement = _vrnBeginIO(&unit, kListWrite, nullptr, 0, nullptr, 0, nullptr);
        IOWrite(statement, kRecord.data(), static_cast<int32_t>(kRecord.size()));
        _vrnEndIO(statement);
    }
    _vrnIOCmd(10, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
    std::free(list);
    unlink(path.c_str());
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * 82);
}
BENCHMARK(Write80ByteRecords);

// The same bytes a record (blank, data, newline) straight to write(2), gathered into
// 4 KiB blocks as a buffered writer would: the limit. The argument is the record's size.
void Write2Limit(benchmark::State& state) {
    std::string path = ScratchPath("vrn_bench_limit.txt");
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::string record = " " + std::string(static_cast<size_t>(state.range(0)) - 2, 'x') + "\n";
    std::vector<char> block(4096);
    size_t used = 0;
    for (auto _ : state) {
        if (used + record.size() > block.size()) {
            benchmark::DoNotOptimize(write(fd, block.data(), used));
            used = 0;
        }
        std::memcpy(block.data() + used, record.data(), record.size());
        used += record.size();
    }
    benchmark::DoNotOptimize(write(fd, block.data(), used));
    close(fd);
    unlink(path.c_str());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Write2Limit)->Arg(2)->Arg(82);

// One write(2) a record: what an unbuffered writer costs.
void Write2PerRecord(benchmark::State& state) {
    std::string path = ScratchPath("vrn_bench_each.txt");
    int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    std::string record = " " + kRecord + "\n";
    for (auto _ : state) benchmark::DoNotOptimize(write(fd, record.data(), record.size()));
    close(fd);
    unlink(path.c_str());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Write2PerRecord);

}  // namespace

BENCHMARK_MAIN();
