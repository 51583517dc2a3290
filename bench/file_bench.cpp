// Reading and writing a large formatted file record by record through the record layer,
// beside read(2) and write(2) of the same bytes in 64 KiB blocks (what dd does: the limit).
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

constexpr uint32_t kListRead = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t kListWrite = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
constexpr int kRecordLength = 80;

std::string Directory() {
    const char* directory = std::getenv("TMPDIR");
    return directory != nullptr ? directory : "/tmp";
}

int64_t FileBytes() {
    const char* megabytes = std::getenv("VRN_BENCH_MB");
    return (megabytes != nullptr ? std::atoll(megabytes) : 100) * 1000 * 1000;
}

// The input: records of 80 characters and a newline, made once.
const std::string& InputFile() {
    static const std::string path = [] {
        std::string name = Directory() + "/vrn_bench_input.txt";
        int fd = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        std::string block;
        for (int i = 0; block.size() < (1 << 16); ++i) {
            std::string record(kRecordLength, static_cast<char>('a' + i % 26));
            block += record + "\n";
        }
        for (int64_t written = 0; written < FileBytes(); written += static_cast<int64_t>(block.size())) {
            if (write(fd, block.data(), block.size()) != static_cast<ssize_t>(block.size())) std::abort();
        }
        close(fd);
        return name;
    }();
    return path;
}

int64_t SizeOf(const std::string& path) {
    int fd = open(path.c_str(), O_RDONLY);
    int64_t size = lseek64(fd, 0, SEEK_END);
    close(fd);
    return size;
}

KeywordList* FileSpecifier(const std::string& path) {
    auto* list = static_cast<KeywordList*>(std::calloc(1, sizeof(KeywordList) + sizeof(KeywordEntry)));
    list->version = 1;
    list->count = 1;
    list->entries[0] = KeywordEntry{VRN_KEY_FILE, reinterpret_cast<uintptr_t>(path.c_str()),
                                    static_cast<uint32_t>(path.size())};
    return list;
}

void ReadRecords(benchmark::State& state) {
    const std::string& path = InputFile();
    KeywordList* open = FileSpecifier(path);
    std::vector<char> record(32768);
    for (auto _ : state) {
        _vrnIOCmd(10, VRN_COMMAND_OPEN, open, 0, nullptr);
        int32_t unit = 10;
        int32_t iostat = 0;
        int64_t records = 0;
        for (;;) {
            LocalContext* statement = _vrnBeginIO(&unit, kListRead, nullptr, 0, &iostat, 0, nullptr);
            int32_t got = IORead(statement, record.data(), static_cast<int32_t>(record.size()));
            bool atEnd = got <= 0 && statement->atEndOfFile;
            _vrnEndIO(statement);
            if (atEnd) break;
            ++records;
        }
        benchmark::DoNotOptimize(records);
        _vrnIOCmd(10, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
    }
    state.SetBytesProcessed(state.iterations() * SizeOf(path));
    std::free(open);
}
BENCHMARK(ReadRecords)->Unit(benchmark::kMillisecond)->UseRealTime();

void WriteRecords(benchmark::State& state) {
    std::string path = Directory() + "/vrn_bench_output.txt";
    KeywordList* open = FileSpecifier(path);
    const std::string record(kRecordLength - 1, 'x');  // with the leading blank, 80 characters
    int64_t records = FileBytes() / (kRecordLength + 1);
    for (auto _ : state) {
        _vrnIOCmd(11, VRN_COMMAND_OPEN, open, 0, nullptr);
        int32_t unit = 11;
        for (int64_t i = 0; i < records; ++i) {
            LocalContext* statement = _vrnBeginIO(&unit, kListWrite, nullptr, 0, nullptr, 0, nullptr);
            IOWrite(statement, record.data(), static_cast<int32_t>(record.size()));
            _vrnEndIO(statement);
        }
        _vrnIOCmd(11, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
    }
    state.SetBytesProcessed(state.iterations() * records * (kRecordLength + 1));
    unlink(path.c_str());
    std::free(open);
}
BENCHMARK(WriteRecords)->Unit(benchmark::kMillisecond)->UseRealTime();

// What the gfortran peer does: each record read, then written.
void CopyRecords(benchmark::State& state) {
    const std::string& input = InputFile();
    std::string output = Directory() + "/vrn_bench_copy.txt";
    KeywordList* openInput = FileSpecifier(input);
    KeywordList* openOutput = FileSpecifier(output);
    std::vector<char> record(32768);
    for (auto _ : state) {
        _vrnIOCmd(12, VRN_COMMAND_OPEN, openInput, 0, nullptr);
        _vrnIOCmd(13, VRN_COMMAND_OPEN, openOutput, 0, nullptr);
        int32_t in = 12;
        int32_t out = 13;
        int32_t iostat = 0;
        for (;;) {
            LocalContext* read = _vrnBeginIO(&in, kListRead, nullptr, 0, &iostat, 0, nullptr);
            int32_t got = IORead(read, record.data(), static_cast<int32_t>(record.size()));
            bool atEnd = got <= 0 && read->atEndOfFile;
            _vrnEndIO(read);
            if (atEnd) break;
            LocalContext* write = _vrnBeginIO(&out, kListWrite, nullptr, 0, nullptr, 0, nullptr);
            IOWrite(write, record.data(), got);
            _vrnEndIO(write);
        }
        _vrnIOCmd(12, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
        _vrnIOCmd(13, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
    }
    state.SetBytesProcessed(state.iterations() * SizeOf(input));
    unlink(output.c_str());
    std::free(openInput);
    std::free(openOutput);
}
BENCHMARK(CopyRecords)->Unit(benchmark::kMillisecond)->UseRealTime();

void ReadBlocksLimit(benchmark::State& state) {
    const std::string& path = InputFile();
    std::vector<char> block(1 << 16);
    for (auto _ : state) {
        int fd = open(path.c_str(), O_RDONLY);
        while (read(fd, block.data(), block.size()) > 0) {
        }
        close(fd);
    }
    state.SetBytesProcessed(state.iterations() * SizeOf(path));
}
BENCHMARK(ReadBlocksLimit)->Unit(benchmark::kMillisecond)->UseRealTime();

void WriteBlocksLimit(benchmark::State& state) {
    std::string path = Directory() + "/vrn_bench_output.txt";
    std::vector<char> block(1 << 16, 'x');
    int64_t total = FileBytes() / (kRecordLength + 1) * (kRecordLength + 1);
    for (auto _ : state) {
        int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        for (int64_t done = 0; done < total; done += static_cast<int64_t>(block.size())) {
            size_t piece = static_cast<size_t>(std::min<int64_t>(total - done, static_cast<int64_t>(block.size())));
            benchmark::DoNotOptimize(write(fd, block.data(), piece));
        }
        close(fd);
    }
    state.SetBytesProcessed(state.iterations() * total);
    unlink(path.c_str());
}
BENCHMARK(WriteBlocksLimit)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
