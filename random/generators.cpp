// RANDOM_NUMBER and RANDOM_SEED: two multiplicative congruential generators.
//
// Generator 1: x' = 16807 x mod (2^31 - 1); the harvest is x' / (2^31 - 1).
// Generator 2: x' = 44485709377909 x mod 2^48; the harvest is x' / 2^48.
// Harvests are rounded toward zero, so that no value reaches 1. The step is done in exact
// integer arithmetic, which yields the same states as the floating-point scheme with
// fused multiply-adds under rounding toward zero, on any machine.
#include <pthread.h>
#include <unistd.h>

#include <algorithm>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "core/export.h"
#include "intrinsics/frame.h"
#include "vrn90.h"

namespace {

constexpr uint64_t kModulus1 = (uint64_t{1} << 31) - 1;
constexpr uint64_t kMultiplier1 = 16807;
constexpr uint64_t kMask2 = (uint64_t{1} << 48) - 1;
constexpr uint64_t kMultiplier2 = 44485709377909u;

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

// ---- The generators ----

struct Generator1 {
    static constexpr uint64_t kMultiplier = kMultiplier1;
    // x y mod (2^31 - 1) for x, y below the modulus: the product is below 2^62.
    static uint64_t Multiply(uint64_t x, uint64_t y) {
        uint64_t product = x * y;
        uint64_t folded = (product & kModulus1) + (product >> 31);
        folded = (folded & kModulus1) + (folded >> 31);
        return folded >= kModulus1 ? folded - kModulus1 : folded;
    }
    // x / (2^31 - 1) rounded toward zero. x times the rounded reciprocal is within an
    // ulp or so; the exact remainders that fused multiply-adds give pick the neighbour
    // that is the truncated quotient, without a branch.
    static double Harvest(uint64_t x) {
        const double m = static_cast<double>(kModulus1);
        const double inverse = 1.0 / m;
        double value = static_cast<double>(x);
        double q = value * inverse;
        uint64_t bits;
        std::memcpy(&bits, &q, sizeof bits);
        double up;
        uint64_t upBits = bits + 1;
        std::memcpy(&up, &upBits, sizeof up);
        // Both tests computed, their truth added: data-dependent branches would mispredict.
        bits += static_cast<uint64_t>(std::fma(up, m, -value) <= 0) - static_cast<uint64_t>(std::fma(q, m, -value) > 0);
        std::memcpy(&q, &bits, sizeof q);
        return q;
    }
    static uint64_t Reduce(uint64_t state) { return state % kModulus1; }
};

struct Generator2 {
    static constexpr uint64_t kMultiplier = kMultiplier2;
    static uint64_t Multiply(uint64_t x, uint64_t y) { return (x * y) & kMask2; }
    static double Harvest(uint64_t x) { return static_cast<double>(x) * 0x1p-48; }
    static uint64_t Reduce(uint64_t state) { return state & kMask2; }
};

// x times a^n: squares of the multiplier, one bit of n at a time.
template <typename G>
uint64_t Skip(uint64_t x, uint64_t n) {
    uint64_t square = G::kMultiplier;
    for (; n != 0; n >>= 1) {
        if (n & 1) x = G::Multiply(x, square);
        square = G::Multiply(square, square);
    }
    return x;
}

// a^1 to a^8, for eight independent steps from one state.
template <typename G>
struct Powers {
    uint64_t value[8];
    Powers() {
        value[0] = G::kMultiplier;
        for (int k = 1; k < 8; ++k) value[k] = G::Multiply(value[k - 1], G::kMultiplier);
    }
};

// A state from a seed as the program may have set it: the integer part, reduced.
template <typename G>
uint64_t StateFrom(double seed) {
    double whole = std::trunc(std::fabs(seed));
    if (!(whole < 18446744073709551616.0)) whole = 0;  // NaN or too large
    return G::Reduce(static_cast<uint64_t>(whole));
}

// ---- Harvests of each kind ----

template <typename T>
void StoreHarvest(unsigned char* element, double value);

template <>
void StoreHarvest<float>(unsigned char* element, double value) {
    // Toward zero, as the kernels round: one step down when rounding went up. The value
    // is not negative, so the step is one off the bits.
    float single = static_cast<float>(value);
    uint32_t bits;
    std::memcpy(&bits, &single, sizeof bits);
    bits -= static_cast<uint32_t>(single > value);
    std::memcpy(element, &bits, sizeof bits);
}

template <>
void StoreHarvest<double>(unsigned char* element, double value) {
    std::memcpy(element, &value, sizeof value);
}

// REAL(16): the pair (value, 0).
struct Quad {
    double hi, lo;
};
template <>
void StoreHarvest<Quad>(unsigned char* element, double value) {
    Quad pair{value, 0.0};
    std::memcpy(element, &pair, sizeof pair);
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

// One run of n elements `stride` bytes apart, eight independent steps at a time so that
// the multiplications overlap; the states are those of single steps.
template <typename T, typename G>
uint64_t Run(unsigned char* element, int64_t stride, int64_t n, uint64_t x, const Powers<G>& powers) {
    int64_t i = 0;
    for (; i + 8 <= n; i += 8) {
        uint64_t y[8];
        for (int k = 0; k < 8; ++k) y[k] = G::Multiply(x, powers.value[k]);
        for (int k = 0; k < 8; ++k, element += stride) StoreHarvest<T>(element, G::Harvest(y[k]));
        x = y[7];
    }
    for (; i < n; ++i, element += stride) {
        x = G::Multiply(x, G::kMultiplier);
        StoreHarvest<T>(element, G::Harvest(x));
    }
    return x;
}

// Elements first to first + count - 1 in array element order, from the state before
// element `first`; the state after the last.
template <typename T, typename G>
uint64_t FillRange(const Layout& layout, int64_t first, int64_t count, uint64_t state) {
    static const Powers<G> powers;
    if (layout.rank == 0) return Run<T, G>(layout.base, 0, 1, state, powers);
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
        state = Run<T, G>(row + index[0] * layout.stride[0], layout.stride[0], n, state, powers);
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

template <typename T, typename G>
struct Share {
    const Layout* layout;
    int64_t first, count;
    uint64_t state;
};

template <typename T, typename G>
void* FillShare(void* argument) {
    auto* share = static_cast<Share<T, G>*>(argument);
    FillRange<T, G>(*share->layout, share->first, share->count, share->state);
    return nullptr;
}

// Long harvests are split into one share per thread; each share starts from the state
// skipped ahead to its first element, so the numbers are those of the serial fill.
template <typename T, typename G>
uint64_t Fill(const Layout& layout, uint64_t state) {
    constexpr int kMaxThreads = 256;
    if (layout.count <= 0x7FF) return FillRange<T, G>(layout, 0, layout.count, state);
    int32_t threads = std::min(_smp_rand_nthreads(), kMaxThreads);
    if (layout.count <= int64_t{threads} * 2048 - 1 || threads < 2) return FillRange<T, G>(layout, 0, layout.count, state);
    Share<T, G> shares[kMaxThreads];
    pthread_t ids[kMaxThreads];
    bool started[kMaxThreads] = {};
    int64_t each = (layout.count + threads - 1) / threads;
    for (int32_t t = 0; t < threads; ++t) {
        int64_t first = std::min(layout.count, t * each);
        shares[t] = {&layout, first, std::min(each, layout.count - first), Skip<G>(state, static_cast<uint64_t>(first))};
        started[t] = t > 0 && pthread_create(&ids[t], nullptr, FillShare<T, G>, &shares[t]) == 0;
    }
    // This thread takes the first share, and any share whose thread could not start.
    for (int32_t t = 0; t < threads; ++t) {
        if (!started[t]) FillShare<T, G>(&shares[t]);
    }
    for (int32_t t = 1; t < threads; ++t) {
        if (started[t]) pthread_join(ids[t], nullptr);
    }
    return Skip<G>(state, static_cast<uint64_t>(layout.count));
}

template <typename T>
void RandomNumber(const void* harvest) {
    Layout layout = Describe<T>(static_cast<const RTD*>(harvest));
    int32_t zero = 0;
    int32_t generator = _smp_vrrnopt(&zero);
    double seed;
    _smp_vrrnget(&seed);
    uint64_t state = generator == 1 ? Fill<T, Generator1>(layout, StateFrom<Generator1>(seed))
                                    : Fill<T, Generator2>(layout, StateFrom<Generator2>(seed));
    double stored = static_cast<double>(state);
    int32_t one = 1;
    _vrrnput_combined(&stored, &one);
}

}  // namespace

VRN_EXPORT int32_t get_default_generator() {
    return _vrnGetRTEOpts(VRN_KEY_RANDOM) == VRN_KEY_GENERATOR2 ? 2 : 1;
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
