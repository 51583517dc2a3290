// Asynchronous WRITE overlapping the program's work, as compiled code does it: 1 GB of
// REAL(8) in 64 MB pieces, each piece computed into one of two buffers while the other
// is being written, with arithmetic calibrated to take about as long as the write.
//
//   ComputeOnly   the arithmetic alone
//   WriteOnly     the writes alone, synchronous
//   Synchronous   compute, then write, piece after piece: the sum of the two
//   Overlapped    compute piece k+1 while piece k is written, WAIT before reuse
//   ThreadLimit   the same overlap without the run-time: a thread of pwrite(2) calls
//
// Each as sequential records on a new file (argument 0), and as direct-access records
// rewritten in a file that holds them already (argument 1). On a new file the kernel
// allocates and clears every page while the program computes, and on this kind of virtual
// machine that slows the other core as well: ThreadLimit shows what any overlap can reach
// there. A sequential WRITE ends the file behind it, so only direct access rewrites pages
// that the page cache has.
// The target is Overlapped within 1.15 times the longer of ComputeOnly and WriteOnly.
// VRN_ASYNC_MB sets the total (default 1024), VRN_ASYNC_WORK the arithmetic per element in
// tenths of a round instead of the calibration (VRN_ASYNC_REWRITE_WORK for the rewritten
// file).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "vrn90.h"

namespace {

constexpr int32_t kUnit = 40;
constexpr size_t kPieceBytes = size_t{64} << 20;
constexpr size_t kPieceElements = kPieceBytes / sizeof(double);
constexpr uint32_t kWrite = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t kDirectWrite = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_DIRECT);
constexpr uint32_t kRealRun = 4u | VRN_UFMT_RUN;

int Pieces() {
    const char* megabytes = std::getenv("VRN_ASYNC_MB");
    int64_t total = megabytes != nullptr ? std::atoll(megabytes) : 1024;
    return static_cast<int>(std::max<int64_t>(1, (total << 20) / static_cast<int64_t>(kPieceBytes)));
}

std::string FilePath() {
    const char* directory = std::getenv("TMPDIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/vrn_bench_async";
}

// A KeywordList of up to six entries, laid out as the compiler lays it out.
struct Keywords {
    uint64_t storage[32] = {};
    KeywordList* list() { return reinterpret_cast<KeywordList*>(storage); }
    Keywords& Add(uint32_t tag, uintptr_t a, uint32_t b) {
        KeywordList* l = list();
        l->version = 1;
        l->entries[l->count++] = KeywordEntry{tag, a, b};
        return *this;
    }
};

const std::string& Path() {
    static const std::string path = FilePath();
    return path;
}

// A new file for sequential records, or the one the last pass left, for direct access.
void OpenFile(bool asynchronous, bool rewrite) {
    Keywords k;
    k.Add(VRN_KEY_FILE, reinterpret_cast<uintptr_t>(Path().c_str()), static_cast<uint32_t>(Path().size()))
        .Add(VRN_KEY_FORM, 0, VRN_KEY_UNFORMATTED)
        .Add(VRN_KEY_STATUS, 0, rewrite ? VRN_KEY_UNKNOWN : VRN_KEY_REPLACE)
        .Add(VRN_KEY_ASYNCHRONOUS, 0, asynchronous ? VRN_KEY_YES : VRN_KEY_NO);
    if (rewrite) {
        k.Add(VRN_KEY_ACCESS, 0, VRN_KEY_DIRECT).Add(VRN_KEY_RECL, kPieceBytes, 0);
    }
    _vrnIOCmd(kUnit, VRN_COMMAND_OPEN, k.list(), 0, nullptr);
}

void CloseFile(bool rewrite) {
    Keywords k;
    k.Add(VRN_KEY_STATUS, 0, rewrite ? VRN_KEY_KEEP : VRN_KEY_DELETE);
    _vrnIOCmd(kUnit, VRN_COMMAND_CLOSE, k.list(), 0, nullptr);
}

// WRITE (u [, REC=record] [, ASYNCHRONOUS='YES', ID=id]) piece; record 0 for sequential.
void WritePiece(const std::vector<double>& piece, bool asynchronous, int32_t* id, int32_t record = 0) {
    static const char kFile[] = "async_bench.f90";
    Keywords k;
    k.Add(VRN_KEY_MSGLINE, 1, 0).Add(VRN_KEY_MSGFILE, reinterpret_cast<uintptr_t>(kFile), sizeof kFile - 1);
    if (asynchronous) k.Add(VRN_KEY_ID, reinterpret_cast<uintptr_t>(id), 0);
    int32_t unit = kUnit;
    int64_t known = static_cast<int64_t>(kPieceBytes);
    uint32_t flags = (record > 0 ? kDirectWrite : kWrite) | (asynchronous ? VRN_FLAG_ASYNCHRONOUS : 0u);
    LocalContext* context = _vrnBeginIO(&unit, flags, k.list(), 0, nullptr, record, &known);
    int32_t length = static_cast<int32_t>(kPieceBytes), kind = 8;
    _vrnWriteUfmt(context, piece.data(), &length, &kind, kRealRun | (asynchronous ? VRN_UFMT_ASYNCHRONOUS : 0u));
    _vrnEndIO(context);
}

void Wait(int32_t id) {
    Keywords k;
    k.Add(VRN_KEY_ID, static_cast<uintptr_t>(id), 0);
    _vrnIOCmd(kUnit, VRN_COMMAND_WAIT, k.list(), 0, nullptr);
}

// The program's work: a chain of multiply-adds per element, independent across elements,
// `work` tenths of a round on average (element i has one round more than work / 10 when
// i % 10 < work % 10), so that the work can match the writes closely.
__attribute__((noinline)) void Compute(std::vector<double>& piece, int piece_number, int work) {
    double* x = piece.data();
    int base = work / 10, extra = work % 10;
    for (size_t i = 0; i < kPieceElements; ++i) {
        double v = static_cast<double>(i + static_cast<size_t>(piece_number));
        int rounds = base + (static_cast<int>(i % 10) < extra ? 1 : 0);
        for (int r = 0; r < rounds; ++r) v = v * 0.999999 + 1e-7;
        x[i] = v;
    }
}

double Seconds(const std::function<void()>& work) {
    auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The work per element that takes as long as writing a piece to a new file (0) or
// rewriting it (1).
int CalibratedWork(bool rewrite) {
    static int works[2] = {0, 0};
    int& known = works[rewrite ? 1 : 0];
    if (known != 0) return known;
    if (const char* given = std::getenv(rewrite ? "VRN_ASYNC_REWRITE_WORK" : "VRN_ASYNC_WORK")) {
        return known = std::max(1, std::atoi(given));
    }
    std::vector<double> piece(kPieceElements, 1.0);
    // As WriteOnly measures it: whole passes, the better of two (after one that leaves the
    // file to rewrite).
    double write = 1e9;
    for (int pass = rewrite ? -1 : 0; pass < 2; ++pass) {
        double seconds = Seconds([&] {
            OpenFile(false, rewrite);
            for (int k = 0; k < Pieces(); ++k) WritePiece(piece, false, nullptr, rewrite ? k + 1 : 0);
            CloseFile(rewrite);
        });
        if (pass >= 0) write = std::min(write, seconds / Pieces());
    }
    ::unlink(Path().c_str());
    // The time grows with the work, though not in proportion (the processor overlaps the
    // chains of neighbouring elements): bisection.
    auto piece_time = [&](int work) {
        double best = 1e9;
        for (int i = 0; i < 2; ++i) best = std::min(best, Seconds([&] { Compute(piece, i, work); }));
        return best;
    };
    int low = 1, high = 2000;
    while (low < high) {
        int middle = (low + high) / 2;
        if (piece_time(middle) < write) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return known = low;
}

struct Buffers {
    std::vector<double> piece[2] = {std::vector<double>(kPieceElements, 0.0), std::vector<double>(kPieceElements, 0.0)};
};

void ComputeOnly(benchmark::State& state) {
    Buffers b;
    int work = CalibratedWork(state.range(0) != 0);
    for (auto _ : state) {
        for (int k = 0; k < Pieces(); ++k) Compute(b.piece[k & 1], k, work);
        benchmark::DoNotOptimize(b.piece[0].data());
    }
    state.counters["work"] = work;
}

// Runs `pass` as often as the state asks, on a new file or on the file of a pass before.
template <typename Pass>
void Passes(benchmark::State& state, Pass pass) {
    bool rewrite = state.range(0) != 0;
    if (rewrite) pass(rewrite);  // the file to rewrite, and its pages
    for (auto _ : state) pass(rewrite);
    ::unlink(Path().c_str());
}

void WriteOnly(benchmark::State& state) {
    Buffers b;
    Passes(state, [&](bool rewrite) {
        OpenFile(false, rewrite);
        for (int k = 0; k < Pieces(); ++k) WritePiece(b.piece[k & 1], false, nullptr, rewrite ? k + 1 : 0);
        CloseFile(rewrite);
    });
}

void Synchronous(benchmark::State& state) {
    Buffers b;
    int work = CalibratedWork(state.range(0) != 0);
    Passes(state, [&](bool rewrite) {
        OpenFile(false, rewrite);
        for (int k = 0; k < Pieces(); ++k) {
            Compute(b.piece[k & 1], k, work);
            WritePiece(b.piece[k & 1], false, nullptr, rewrite ? k + 1 : 0);
        }
        CloseFile(rewrite);
    });
}

void Overlapped(benchmark::State& state) {
    Buffers b;
    int work = CalibratedWork(state.range(0) != 0);
    Passes(state, [&](bool rewrite) {
        OpenFile(true, rewrite);
        int32_t ids[2] = {0, 0};
        for (int k = 0; k < Pieces(); ++k) {
            // The buffer of piece k was written two pieces ago: its transfer must be done.
            if (k >= 2) Wait(ids[k & 1]);
            Compute(b.piece[k & 1], k, work);
            WritePiece(b.piece[k & 1], true, &ids[k & 1], rewrite ? k + 1 : 0);
        }
        CloseFile(rewrite);  // waits for the last two
    });
}

// The same records written by a thread of the program's own with pwrite(2) in 1 MB calls.
void ThreadLimit(benchmark::State& state) {
    Buffers b;
    int work = CalibratedWork(state.range(0) != 0);
    auto write_piece = [](int fd, const std::vector<double>* piece, int64_t offset, bool tags) {
        uint32_t tag = static_cast<uint32_t>(kPieceBytes);
        if (tags) offset += pwrite(fd, &tag, 4, offset);
        for (size_t done = 0; done < kPieceBytes;) {
            ssize_t wrote = pwrite(fd, reinterpret_cast<const char*>(piece->data()) + done,
                                   std::min<size_t>(kPieceBytes - done, 1 << 20), offset + static_cast<int64_t>(done));
            if (wrote <= 0) std::abort();
            done += static_cast<size_t>(wrote);
        }
        if (tags) pwrite(fd, &tag, 4, offset + static_cast<int64_t>(kPieceBytes));
    };
    Passes(state, [&](bool rewrite) {
        int fd = ::open(Path().c_str(), O_WRONLY | O_CREAT | (rewrite ? 0 : O_TRUNC), 0644);
        std::thread writer;
        for (int k = 0; k < Pieces(); ++k) {
            Compute(b.piece[k & 1], k, work);
            if (writer.joinable()) writer.join();
            int64_t record_bytes = static_cast<int64_t>(kPieceBytes) + (rewrite ? 0 : 8);
            writer = std::thread(write_piece, fd, &b.piece[k & 1], k * record_bytes, !rewrite);
        }
        writer.join();
        ::close(fd);
        if (!rewrite) ::unlink(Path().c_str());
    });
}

BENCHMARK(ComputeOnly)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(WriteOnly)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(Synchronous)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(Overlapped)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK(ThreadLimit)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
