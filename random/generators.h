// The two multiplicative congruential generators.
//
// Generator 1: x' = 16807 x mod (2^31 - 1); the harvest is x' / (2^31 - 1).
// Generator 2: x' = 44485709377909 x mod 2^48; the harvest is x' / 2^48.
//
// Skips and seeds use exact integer arithmetic. The fill loops step in doubles, a lane
// at a time or four lanes at once, with the rounding mode set toward zero: there every
// step below is exact, and a harvest rounded toward zero never reaches 1.
#pragma once

#include <cfenv>
#include <cmath>
#include <cstdint>

#include "core/rounding_scope.h"

#if defined(__FMA__)
#include <immintrin.h>
#endif

// Only inline code passes vectors, so how a build without vector registers passes them
// does not matter.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpsabi"

// Four doubles, and a fused multiply-add on them and on single doubles.
typedef double Lanes4 __attribute__((vector_size(32)));

inline double FusedMultiplyAdd(double a, double b, double c) { return std::fma(a, b, c); }
inline Lanes4 FusedMultiplyAdd(Lanes4 a, Lanes4 b, Lanes4 c) {
#if defined(__FMA__)
    return _mm256_fmadd_pd(a, b, c);
#else
    Lanes4 r;
    for (int l = 0; l < 4; ++l) r[l] = std::fma(a[l], b[l], c[l]);
    return r;
#endif
}

// The fill loops' steps are exact only when rounding is toward zero.
using TowardZeroScope = RoundingScope<FE_TOWARDZERO>;

struct Generator1 {
    static constexpr uint64_t kModulus = (uint64_t{1} << 31) - 1;
    static constexpr uint64_t kMultiplier = 16807;
    // x y mod (2^31 - 1) for x, y below the modulus: the product is below 2^62.
    static constexpr uint64_t Multiply(uint64_t x, uint64_t y) {
        uint64_t product = x * y;
        uint64_t folded = (product & kModulus) + (product >> 31);
        folded = (folded & kModulus) + (folded >> 31);
        return folded >= kModulus ? folded - kModulus : folded;
    }
    static constexpr uint64_t Reduce(uint64_t state) { return state % kModulus; }

    // The multiplier c as the step takes it: the integer itself.
    static constexpr double Factor(uint64_t c) { return static_cast<double>(c); }

    // s c mod (2^31 - 1) for integers s, c below the modulus, and its harvest. s c is
    // held exactly as hi + lo; a quotient estimate within one of the true one leaves a
    // remainder that one correction each way brings into range.
    template <typename V>
    static V Step(V s, V c, V& harvest) {
        const double m = static_cast<double>(kModulus);
        V hi = s * c;
        V lo = FusedMultiplyAdd(s, c, -hi);
        V q = (hi * (1.0 / m) + 0x1p52) - 0x1p52;
        V r = FusedMultiplyAdd(-q, m + V{}, hi) + lo;
        r = r < 0 ? r + m : r;
        r = r >= m ? r - m : r;
        harvest = r / m;
        return r;
    }
};

struct Generator2 {
    static constexpr uint64_t kMask = (uint64_t{1} << 48) - 1;
    static constexpr uint64_t kMultiplier = 44485709377909u;
    static constexpr uint64_t Multiply(uint64_t x, uint64_t y) { return (x * y) & kMask; }
    static constexpr uint64_t Reduce(uint64_t state) { return state & kMask; }

    // The multiplier as a fraction of the modulus: c 2^-48, exact.
    static constexpr double Factor(uint64_t c) { return static_cast<double>(c) * 0x1p-48; }

    // The harvest is the fractional part of s t: its integer part comes from adding 2^52,
    // which truncates, and one fused multiply-add gives the rest exactly. It is the new
    // state as a fraction.
    template <typename V>
    static V Step(V s, V t, V& harvest) {
        V whole = FusedMultiplyAdd(s, t, 0x1p52 + V{}) - 0x1p52;
        harvest = FusedMultiplyAdd(s, t, -whole);
        return harvest * 0x1p48;
    }
};

#pragma GCC diagnostic pop
