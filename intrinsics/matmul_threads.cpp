// The threaded layer of MATMUL.
#include "intrinsics/matmul_threads.h"

#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "core/options.h"

namespace {

constexpr int32_t kIntrinsicThreadsOption = 111;
constexpr size_t kThreadStack = 0x100000;

struct Slot {
    pthread_t thread;
    int created;
    MatmulTask task;
};

void* RunTask(void* argument) {
    const auto* task = static_cast<const MatmulTask*>(argument);
    task->body(*task);
    return nullptr;
}

[[noreturn]] void OutOfMemory() {
    std::printf("Failed in MATMUL, there is not enough memory available\n");
    std::exit(-1);
}

}  // namespace

int32_t get_num_threads() {
    int32_t count = GetRTEOptsFromAnyThread(kIntrinsicThreadsOption);
    if (count > 0) return count;
    long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online < 2 ? 1 : static_cast<int32_t>(online);
}

void RunThreaded(const Flat& f, uint32_t code, int32_t t, size_t lenA, size_t lenC, void (*body)(const MatmulTask&)) {
    int32_t count = get_num_threads();
    // Fewer than three rows keep the count: the surplus threads get empty slices.
    if (f.m < count && f.m >= 3) count = static_cast<int32_t>(f.m);
    auto* slots = static_cast<Slot*>(std::calloc(static_cast<size_t>(count), sizeof(Slot)));
    if (slots == nullptr) OutOfMemory();
    ptrdiff_t share = f.m / count, extra = f.m % count;
    for (int32_t i = 0; i < count; ++i) {
        ptrdiff_t first = i < extra ? i * share + i : i * share + extra;
        Flat slice = f;
        slice.m = share + (i < extra ? 1 : 0);
        slice.a = static_cast<const char*>(f.a) + first * f.aRow * static_cast<ptrdiff_t>(lenA);
        slice.c = static_cast<char*>(f.c) + first * f.cRow * static_cast<ptrdiff_t>(lenC);
        slots[i].task = {slice, code, t, body};
    }
    if (count == 1) {
        body(slots[0].task);
    } else {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_JOINABLE);
        pthread_attr_setstacksize(&attributes, kThreadStack);
        for (int32_t i = 0; i < count; ++i) {
            slots[i].created = pthread_create(&slots[i].thread, &attributes, RunTask, &slots[i].task) == 0;
            // A thread that cannot be had is done here, now.
            if (!slots[i].created) body(slots[i].task);
        }
        pthread_attr_destroy(&attributes);
        for (int32_t i = 0; i < count; ++i) {
            if (slots[i].created) pthread_join(slots[i].thread, nullptr);
        }
    }
    std::free(slots);
}
