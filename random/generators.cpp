// RANDOM_NUMBER and RANDOM_SEED: the seed records, the fill routines over a harvest of any
// rank and stride, and the threaded fill of long harvests.
#include <pthread.h>
#include <unistd.h>

#include <algorithm>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "core/export.h"
#include "core/options.h"
#include "intrinsics/frame.h"
#include "random/kernel_modules.h"
#include "vrn90.h"

namespace {

// The 32-byte seed record: one for the process, one per thread for the threaded interface.
struct SeedRecord {
    int32_t generator;     // 1, 2, or -1 until chosen
    int32_t unused;
    int32_t seedCount[2];  // stored with each generator's seed
    double seed[2];        // each generator's state, an integer held exactly
};
static_assert(sizeof(SeedRecord) == 32, "the seed record is 32 bytes");

constexpr SeedRecord kFreshRecord = {-1, 0, {1, 1}, {1.0, 1.0}};
SeedRecord processRecord = kFreshRecord;

pthread_key_t threadKey;
pthread_once_t threadKeyOnce = PTHREAD_ONCE_INIT;

void seed_Free(void* record) { std::free(record); }

void _smp_create_key() { pthread_key_create(&threadKey, seed_Free); }

SeedRecord* _smp_initialize_seed() {
    pthread_once(&threadKeyOnce, _smp_create_key);
    auto* record = static_cast<SeedRecord*>(pthread_getspecific(threadKey));
    if (record == nullptr) {
        record = static_cast<SeedRecord*>(std::malloc(sizeof(SeedRecord)));
        if (record == nullptr) return &processRecord;  // no memory: share the process's sequence
        *record = kFreshRecord;
        pthread_setspecific(threadKey, record);
    }
    return record;
}

int32_t CurrentGenerator(SeedRecord& record) {
    if (record.generator != 1 && record.generator != 2) record.generator = get_default_generator();
    return record.generator;
}

int32_t ChooseGenerator(SeedRecord& record, const int32_t* request) {
    int32_t wanted = *request;
    if (wanted == 1 || wanted == 2) {
        record.generator = wanted;
    } else if (wanted != 0) {
        _vrnRecoverableError(166);
    }
    return CurrentGenerator(record);
}

void PutSeed(SeedRecord& record, const double* seed, const int32_t* count) {
    int32_t slot = CurrentGenerator(record) - 1;
    std::memcpy(&record.seed[slot], seed, sizeof(double));
    record.seedCount[slot] = *count;
}

int32_t GetSeed(SeedRecord& record, double* seed) {
    int32_t slot = CurrentGenerator(record) - 1;
    *seed = record.seed[slot];
    return record.seedCount[slot];
}

// A state from a seed as the program may have set it: the integer part, reduced. A seed
// that reduces to 0 would stay 0 for ever: it is rewritten through the mask 0x7FFFFFFE
// with bit 2 forced on, which gives a state in the range of both generators.
template <typename G>
uint64_t StateFrom(double seed) {
    double whole = std::trunc(std::fabs(seed));
    if (!(whole < 18446744073709551616.0)) whole = 0;  // NaN or too large
    uint64_t integer = static_cast<uint64_t>(whole);
    uint64_t state = G::Reduce(integer);
    if (state == 0) state = (integer & 0x7FFFFFFE) | 4;
    return state;
}

// The harvest's elements in array element order: extents and byte strides of up to 20
// dimensions; a zero stride counts as one element.
struct Layout {
    unsigned char* base = nullptr;
    int32_t rank = 0;
    int32_t extent[kMaxRank] = {};
    int64_t stride[kMaxRank] = {};
    int64_t count = 1;
};

template <typename T>
Layout Describe(const RTD* rtd) {
    Layout layout;
    layout.base = reinterpret_cast<unsigned char*>(rtd->base_ptr);
    if (rtd->header.dscr_type != RTD_ARRAY) return layout;
    const auto* array = reinterpret_cast<const RTDArray*>(rtd);
    layout.rank = array->rank < kMaxRank ? array->rank : kMaxRank;
    int32_t length = EffectiveLength(rtd);
    for (int32_t d = 1; d <= layout.rank; ++d) {
        RTDDimension entry = FortranDimension(array, d);
        layout.extent[d - 1] = entry.extent > 0 ? entry.extent : 0;
        int64_t elements = length != 0 ? entry.multiplier / length : 0;
        layout.stride[d - 1] = (elements != 0 ? elements : 1) * static_cast<int64_t>(sizeof(T));
        layout.count *= layout.extent[d - 1];
    }
    return layout;
}

// The machine class the serial fill's cut-offs are chosen by; this build is class 3.
int32_t _vr_architecture() { return 3; }

// Runs up to `length` long, or strided more widely than `stride` elements, are filled in
// line; the others in blocks, where the class has a block path.
struct FillLimits {
    int64_t length;
    int64_t stride;
    bool blocks;
};

FillLimits LimitsOf(int32_t architecture) {
    switch (architecture) {
    case 0: return {999, 0, false};
    case 1: return {4096, 4, true};
    default: return {512, 4, true};
    }
}

// One run of the inner dimension: in line when short or widely strided, else in blocks.
template <typename Module>
uint64_t FillRun(unsigned char* element, int64_t stride, int64_t n, uint64_t x, int64_t elementLength) {
    static const FillLimits limits = LimitsOf(_vr_architecture());
    int64_t elements = stride / elementLength;
    if (n <= limits.length || elements > limits.stride || elements < -limits.stride || !limits.blocks) {
        return Module::InLine(element, stride, n, x);
    }
    const int64_t block = Module::initialise_rand_f().length;
    for (int64_t done = 0; done < n; done += block) {
        x = Module::random_block_f(0, element + done * stride, stride, std::min(block, n - done), x);
    }
    return x;
}

// Elements first to first + count - 1 in array element order, from the state before
// element `first`; the state after the last.
template <typename T, typename Module>
uint64_t FillRange(const Layout& layout, int64_t first, int64_t count, uint64_t state) {
    constexpr int64_t length = sizeof(T);
    if (layout.rank == 0) return FillRun<Module>(layout.base, 0, 1, state, length);
    int32_t index[kMaxRank] = {};
    unsigned char* row = layout.base;
    int64_t rest = first;
    for (int32_t d = 0; d < layout.rank; ++d) {
        index[d] = static_cast<int32_t>(rest % layout.extent[d]);
        rest /= layout.extent[d];
        row += (d == 0 ? 0 : index[d]) * layout.stride[d];
    }
    while (count > 0) {
        int64_t n = std::min<int64_t>(layout.extent[0] - index[0], count);
        state = FillRun<Module>(row + index[0] * layout.stride[0], layout.stride[0], n, state, length);
        count -= n;
        index[0] = 0;
        for (int32_t d = 1; d < layout.rank; ++d) {
            row += layout.stride[d];
            if (++index[d] < layout.extent[d]) break;
            row -= index[d] * layout.stride[d];
            index[d] = 0;
        }
    }
    return state;
}

// Asked once: sysconf reads /sys each time, which would cost more than a short harvest.
int32_t _smp_rand_nthreads() {
    static const int32_t threads = [] {
        long online = sysconf(_SC_NPROCESSORS_ONLN);
        return online > 1 ? static_cast<int32_t>(2 * online) : 1;
    }();
    return threads;
}

// One thread's share of a threaded fill: it skips from the harvest's start state to its
// first element itself, so that the skips run in parallel too.
template <typename T, typename Module>
struct Share {
    const Layout* layout;
    int64_t first, count;
    uint64_t start;
};

template <typename T, typename Module>
uint64_t _smp_random_skip(const Share<T, Module>& share) {
    return Module::random_skip_f(static_cast<uint64_t>(share.first), share.start);
}

template <typename T, typename Module>
void* _smp_random_block(void* argument) {
    const auto& share = *static_cast<Share<T, Module>*>(argument);
    FillRange<T, Module>(*share.layout, share.first, share.count, _smp_random_skip(share));
    return nullptr;
}

// Long harvests are split into one share per thread, each a whole number of cache lines'
// worth of elements when contiguous; the numbers are those of the serial fill.
template <typename T, typename Module>
uint64_t _smp_vrdrand(const Layout& layout, uint64_t state) {
    constexpr int kMaxThreads = 256;
    int32_t threads = std::min(_smp_rand_nthreads(), kMaxThreads);
    Share<T, Module> shares[kMaxThreads];
    pthread_t ids[kMaxThreads];
    bool started[kMaxThreads] = {};
    const int64_t unit = std::max<int64_t>((int64_t{1} << Module::initialise_rand_f().shift) / sizeof(T), 1);
    int64_t each = (layout.count + threads - 1) / threads;
    if (each > unit) each = (each + unit - 1) / unit * unit;
    for (int32_t t = 0; t < threads; ++t) {
        int64_t first = std::min(layout.count, t * each);
        shares[t] = {&layout, first, std::min(each, layout.count - first), state};
        started[t] = t > 0 && shares[t].count > 0 &&
                     pthread_create(&ids[t], nullptr, _smp_random_block<T, Module>, &shares[t]) == 0;
    }
    // This thread takes the first share, and any share whose thread could not start.
    for (int32_t t = 0; t < threads; ++t) {
        if (!started[t] && shares[t].count > 0) _smp_random_block<T, Module>(&shares[t]);
    }
    for (int32_t t = 1; t < threads; ++t) {
        if (started[t]) pthread_join(ids[t], nullptr);
    }
    return Module::random_skip_f(static_cast<uint64_t>(layout.count), state);
}

template <typename T, typename Module>
uint64_t Fill(const Layout& layout, uint64_t state) {
    if (layout.count > 0x7FF && layout.count > int64_t{get_num_threads()} * 2048 - 1 && _smp_rand_nthreads() > 1) {
        return _smp_vrdrand<T, Module>(layout, state);
    }
    return FillRange<T, Module>(layout, 0, layout.count, state);
}

template <typename T>
void RandomNumber(const void* harvest) {
    Layout layout = Describe<T>(static_cast<const RTD*>(harvest));
    if (layout.count == 0) return;  // nothing to harvest: the seed stays as it is
    int32_t zero = 0;
    int32_t generator = _smp_vrrnopt(&zero);
    double seed;
    _smp_vrrnget(&seed);
    uint64_t state = generator == 1 ? Fill<T, KernelModule<T, Generator1>>(layout, StateFrom<Generator1>(seed))
                                    : Fill<T, KernelModule<T, Generator2>>(layout, StateFrom<Generator2>(seed));
    double stored = static_cast<double>(state);
    int32_t one = 1;
    _vrrnput_combined(&stored, &one);
}

}  // namespace

VRN_EXPORT int32_t get_default_generator() {
    return GetRTEOptsFromAnyThread(VRN_KEY_RANDOM) == VRN_KEY_GENERATOR2 ? 2 : 1;
}

VRN_EXPORT int32_t _vrrnopt(const int32_t* generator) { return ChooseGenerator(processRecord, generator); }
VRN_EXPORT void _vrrnput(const double* seed, const int32_t* count) { PutSeed(processRecord, seed, count); }
VRN_EXPORT int32_t _vrrnget(double* seed) { return GetSeed(processRecord, seed); }

VRN_EXPORT int32_t _smp_vrrnopt(const int32_t* generator) { return ChooseGenerator(*_smp_initialize_seed(), generator); }
VRN_EXPORT void _smp_vrrnput(const double* seed, const int32_t* count) { PutSeed(*_smp_initialize_seed(), seed, count); }
VRN_EXPORT int32_t _smp_vrrnget(double* seed) { return GetSeed(*_smp_initialize_seed(), seed); }
VRN_EXPORT void _vrrnput_combined(const double* seed, const int32_t* count) { _smp_vrrnput(seed, count); }

VRN_EXPORT void _vrrrand(const void* harvest) { RandomNumber<float>(harvest); }
VRN_EXPORT void _vrdrand(const void* harvest) { RandomNumber<double>(harvest); }
VRN_EXPORT void _vrqrand(const void* harvest) { RandomNumber<Quad>(harvest); }
