// RANDOM_NUMBER and RANDOM_SEED: two multiplicative congruential generators.
//
// Generator 1: x' = 16807 x mod (2^31 - 1); the harvest is x' / (2^31 - 1).
// Generator 2: x' = 44485709377909 x mod 2^48; the harvest is x' / 2^48.
// Harvests are rounded toward zero, so that no value reaches 1. The step is done in exact
// integer arithmetic, which yields the same states as the floating-point scheme with
// fused multiply-adds under rounding toward zero, on any machine.
#include <pthread.h>

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

// ---- The steps ----

uint64_t Step1(uint64_t x) {
    uint64_t product = x * kMultiplier1;  // below 2^46
    uint64_t folded = (product & kModulus1) + (product >> 31);
    return folded >= kModulus1 ? folded - kModulus1 : folded;
}

uint64_t Step2(uint64_t x) { return (x * kMultiplier2) & kMask2; }

// x / (2^31 - 1) rounded toward zero: the quotient rounded to nearest, corrected by the
// exact remainder that a fused multiply-add gives.
double Harvest1(uint64_t x) {
    const double m = static_cast<double>(kModulus1);
    double value = static_cast<double>(x);
    double q = value / m;
    if (std::fma(q, m, -value) > 0) q = std::nextafter(q, 0.0);
    return q;
}

double Harvest2(uint64_t x) { return std::ldexp(static_cast<double>(x), -48); }

// A state from a seed as the program may have set it: the integer part, reduced.
uint64_t StateFrom(double seed, int32_t generator) {
    double whole = std::trunc(std::fabs(seed));
    if (!(whole < 18446744073709551616.0)) whole = 0;  // NaN or too large
    auto state = static_cast<uint64_t>(whole);
    return generator == 1 ? state % kModulus1 : state & kMask2;
}

// ---- Harvests of each kind ----

template <typename T>
void StoreHarvest(unsigned char* element, double value);

template <>
void StoreHarvest<float>(unsigned char* element, double value) {
    float single = static_cast<float>(value);
    if (single > value) single = std::nextafter(single, 0.0f);  // toward zero, as the kernels round
    std::memcpy(element, &single, sizeof single);
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

// Fills the harvest in array element order, one step per element. Strides are in
// elements; a zero stride counts as 1.
template <typename T, uint64_t (*Step)(uint64_t), double (*Harvest)(uint64_t)>
uint64_t Fill(const RTD* rtd, uint64_t state) {
    auto* base = reinterpret_cast<unsigned char*>(rtd->base_ptr);
    const int64_t size = static_cast<int64_t>(sizeof(T));
    if (rtd->header.dscr_type != RTD_ARRAY) {
        state = Step(state);
        StoreHarvest<T>(base, Harvest(state));
        return state;
    }
    const auto* array = reinterpret_cast<const RTDArray*>(rtd);
    int32_t rank = array->rank < kMaxRank ? array->rank : kMaxRank;
    int32_t extent[kMaxRank];
    int64_t stride[kMaxRank];
    for (int32_t d = 0; d < kMaxRank; ++d) {
        extent[d] = 1;
        stride[d] = 0;
    }
    for (int32_t d = 1; d <= rank; ++d) {
        RTDDimension entry = FortranDimension(array, d);
        if (entry.extent <= 0) return state;
        extent[d - 1] = entry.extent;
        int64_t elements = entry.multiplier / EffectiveLength(rtd);
        stride[d - 1] = (elements != 0 ? elements : 1) * size;
    }
    int32_t index[kMaxRank] = {};
    unsigned char* outer = base;
    for (;;) {
        unsigned char* element = outer;
        for (int32_t i = 0; i < extent[0]; ++i, element += stride[0]) {
            state = Step(state);
            StoreHarvest<T>(element, Harvest(state));
        }
        int32_t level = 1;
        for (; level < rank; ++level) {
            outer += stride[level];
            if (++index[level] < extent[level]) break;
            outer -= index[level] * stride[level];
            index[level] = 0;
        }
        if (level >= rank) return state;
    }
}

template <typename T>
void RandomNumber(const void* harvest) {
    const auto* rtd = static_cast<const RTD*>(harvest);
    int32_t zero = 0;
    int32_t generator = _smp_vrrnopt(&zero);
    double seed;
    _smp_vrrnget(&seed);
    uint64_t state = StateFrom(seed, generator);
    state = generator == 1 ? Fill<T, Step1, Harvest1>(rtd, state) : Fill<T, Step2, Harvest2>(rtd, state);
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
