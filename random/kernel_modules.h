// The kernel modules: the fast loops of one generator for one harvest kind, with the
// entries the fill routines call. _hpf_random_module1r, 1d and 1q are generator 1 for
// REAL(4), REAL(8) and REAL(16); 2r, 2d and 2q generator 2.
#pragma once

#include <cstdint>
#include <cstring>

#include "random/generators.h"

// REAL(16) harvests: the pair (value, 0).
struct Quad {
    double hi, lo;
};

// Harvests are computed in doubles rounded toward zero; a REAL(4) harvest is that value
// narrowed in the same mode, and a REAL(16) one the pair (value, 0).
template <typename T>
void StoreHarvest(unsigned char* element, double value) {
    if constexpr (sizeof(T) == 4) {
        float single = static_cast<float>(value);
        std::memcpy(element, &single, sizeof single);
    } else if constexpr (sizeof(T) == 8) {
        std::memcpy(element, &value, sizeof value);
    } else {
        Quad pair{value, 0.0};
        std::memcpy(element, &pair, sizeof pair);
    }
}

template <typename T>
void StoreHarvests(unsigned char* element, int64_t stride, Lanes4 values) {
    if (sizeof(T) == 8 && stride == 8) {
        std::memcpy(element, &values, sizeof values);
        return;
    }
    for (int l = 0; l < 4; ++l, element += stride) StoreHarvest<T>(element, values[l]);
}

// What initialise_rand_f gives the fills: the length of a block of the serial block path
// in elements; the eight-way groups a block's start is prepared with (kept, not needed
// by these loops); and the base-2 logarithm of the bytes to which the shares of a
// threaded fill are rounded, so that no two threads write the same cache line.
struct RandomBlockShape {
    int32_t length;
    int32_t groups;
    int32_t shift;
};

template <typename T, typename G>
struct KernelModule {
    // a^(2^k) for k = 0 to 63: the skipping table.
    struct SkipTable {
        uint64_t value[64];
        constexpr SkipTable() : value() {
            value[0] = G::kMultiplier;
            for (int k = 1; k < 64; ++k) value[k] = G::Multiply(value[k - 1], value[k - 1]);
        }
    };
    static constexpr SkipTable kSkip{};

    // a^1 to a^8: the eight-way loops' multipliers.
    struct PowerTable {
        uint64_t value[8];
        constexpr PowerTable() : value() {
            value[0] = G::kMultiplier;
            for (int k = 1; k < 8; ++k) value[k] = G::Multiply(value[k - 1], G::kMultiplier);
        }
    };
    static constexpr PowerTable kPowers{};

    // x times a^n, one bit of n at a time.
    static uint64_t power_a(uint64_t n, uint64_t x) {
        for (int k = 0; n != 0; ++k, n >>= 1) {
            if (n & 1) x = G::Multiply(x, kSkip.value[k]);
        }
        return x;
    }

    // The state n steps on, two bits of n at a time from the table.
    static uint64_t random_skip_f(uint64_t n, uint64_t x) {
        for (int k = 0; n != 0; k += 2, n >>= 2) {
            if (n & 1) x = G::Multiply(x, kSkip.value[k]);
            if (n & 2) x = G::Multiply(x, kSkip.value[k + 1]);
        }
        return x;
    }

    // The block shape: 4-byte harvests take blocks twice as long.
    static RandomBlockShape initialise_rand_f() {
        if constexpr (sizeof(T) == 4) return {0x4000, 2, 18};
        else return {0x2000, 9, 17};
    }

    // The multipliers a to a^8 as the double step takes them.
    struct LaneTable {
        Lanes4 low, high;  // a to a^4, a^5 to a^8
        double single;
        LaneTable() : low(), high(), single(G::Factor(G::kMultiplier)) {
            for (int l = 0; l < 4; ++l) {
                low[l] = G::Factor(kPowers.value[l]);
                high[l] = G::Factor(kPowers.value[l + 4]);
            }
        }
    };
    static const LaneTable& Lanes() {
        static const LaneTable table;
        return table;
    }

    // One element from the state x; the new state. Rounding must be toward zero.
    static uint64_t Single(unsigned char* element, uint64_t x) {
        double harvest;
        double s = G::Step(static_cast<double>(x), Lanes().single, harvest);
        StoreHarvest<T>(element, harvest);
        return static_cast<uint64_t>(s);
    }

    // n elements `stride` bytes apart from the state x; the state after the last. A
    // contiguous run first reaches a 128-byte line boundary one element at a time (a
    // whole line when it starts on one), then goes eight independent steps at a time, so
    // that the multiplications overlap; the states are those of single steps.
    static uint64_t random_sequence(unsigned char* element, int64_t stride, int64_t n, uint64_t x) {
        TowardZeroScope rounding;
        const LaneTable& lanes = Lanes();
        int64_t single = 0;
        if (stride == static_cast<int64_t>(sizeof(T))) {
            auto address = reinterpret_cast<uintptr_t>(element);
            single = static_cast<int64_t>((128 - address % 128) / sizeof(T));
        }
        int64_t i = 0;
        for (; i < n && i < single; ++i, element += stride) x = Single(element, x);
        // The lanes only harvest: the state goes on by one integer step of a^8, which is
        // a shorter chain from group to group than the lanes' own.
        for (; i + 8 <= n; i += 8) {
            Lanes4 state = static_cast<double>(x) + Lanes4{}, low, high;
            G::Step(state, lanes.low, low);
            G::Step(state, lanes.high, high);
            StoreHarvests<T>(element, stride, low);
            StoreHarvests<T>(element + 4 * stride, stride, high);
            element += 8 * stride;
            x = G::Multiply(x, kPowers.value[7]);
        }
        for (; i < n; ++i, element += stride) x = Single(element, x);
        return x;
    }

    // `skip` steps ahead of x, then n elements.
    static uint64_t random_block_f(uint64_t skip, unsigned char* element, int64_t stride, int64_t n, uint64_t x) {
        return random_sequence(element, stride, n, random_skip_f(skip, x));
    }

    // The in-line loop of short or widely strided runs: n mod 4 elements singly, then four
    // at a time with a to a^4 on one state.
    static uint64_t InLine(unsigned char* element, int64_t stride, int64_t n, uint64_t x) {
        TowardZeroScope rounding;
        const LaneTable& lanes = Lanes();
        int64_t i = 0;
        for (; i < n % 4; ++i, element += stride) x = Single(element, x);
        for (; i < n; i += 4, element += 4 * stride) {
            Lanes4 harvests;
            G::Step(static_cast<double>(x) + Lanes4{}, lanes.low, harvests);
            StoreHarvests<T>(element, stride, harvests);
            x = G::Multiply(x, kPowers.value[3]);
        }
        return x;
    }
};

using _hpf_random_module1r = KernelModule<float, Generator1>;
using _hpf_random_module1d = KernelModule<double, Generator1>;
using _hpf_random_module1q = KernelModule<Quad, Generator1>;
using _hpf_random_module2r = KernelModule<float, Generator2>;
using _hpf_random_module2d = KernelModule<double, Generator2>;
using _hpf_random_module2q = KernelModule<Quad, Generator2>;
