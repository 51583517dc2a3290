// The traceback of a 20-frame stack through a large program: this one, linked with
// 300,000 functions of 24 lines each before its own code, so that the symbol table and
// the line tables are those of a program of about 50 MB.
//
//   FirstTraceback  a fresh process's first: maps the program, scans its symbols and
//                   line tables (a child per iteration, timed inside it)
//   LaterTraceback  the same again in a process that printed one before
//
// The output goes to /dev/null; the target is under 200 ms for the first.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>

#include "vrn90.h"

namespace {

constexpr int kDepth = 20;

__attribute__((noinline)) int Descend(int depth) {
    if (depth == 0) {
        vr__trbk();
        return 0;
    }
    int below = Descend(depth - 1);
    benchmark::DoNotOptimize(below);
    return below + 1;
}

double TimedTraceback() {
    auto start = std::chrono::steady_clock::now();
    Descend(kDepth - 1);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void ToDevNull() {
    int fd = open("/dev/null", O_WRONLY);
    dup2(fd, 2);
    close(fd);
}

double ProgramMegabytes() {
    struct stat status;
    return stat("/proc/self/exe", &status) == 0 ? static_cast<double>(status.st_size) / 1e6 : 0;
}

void FirstTraceback(benchmark::State& state) {
    for (auto _ : state) {
        int channel[2];
        if (pipe(channel) != 0) std::abort();
        pid_t child = fork();
        if (child == 0) {
            ToDevNull();
            double seconds = TimedTraceback();
            ssize_t ignored = write(channel[1], &seconds, sizeof seconds);
            (void)ignored;
            _exit(0);
        }
        double seconds = 0;
        ssize_t got = read(channel[0], &seconds, sizeof seconds);
        close(channel[0]);
        close(channel[1]);
        waitpid(child, nullptr, 0);
        if (got != sizeof seconds) std::abort();
        state.SetIterationTime(seconds);
    }
    state.counters["program_MB"] = ProgramMegabytes();
}

void LaterTraceback(benchmark::State& state) {
    int saved = dup(2);
    ToDevNull();
    TimedTraceback();
    for (auto _ : state) state.SetIterationTime(TimedTraceback());
    dup2(saved, 2);
    close(saved);
}

BENCHMARK(FirstTraceback)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(LaterTraceback)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace

BENCHMARK_MAIN();
