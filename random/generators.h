// The two multiplicative congruential generators, in exact integer arithmetic.
//
// Generator 1: x' = 16807 x mod (2^31 - 1); the harvest is x' / (2^31 - 1).
// Generator 2: x' = 44485709377909 x mod 2^48; the harvest is x' / 2^48.
// Harvests are rounded toward zero, so that no value reaches 1. The integer step yields
// the same states as the floating-point scheme with fused multiply-adds under rounding
// toward zero, on any machine.
#pragma once

#include <cstdint>
#include <cstring>
#include <cmath>

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
    // x / (2^31 - 1) rounded toward zero. x times the rounded reciprocal is within an
    // ulp or so; the exact remainders that fused multiply-adds give pick the neighbour
    // that is the truncated quotient, without a branch.
    static double Harvest(uint64_t x) {
        const double m = static_cast<double>(kModulus);
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
    static constexpr uint64_t Reduce(uint64_t state) { return state % kModulus; }
};

struct Generator2 {
    static constexpr uint64_t kMask = (uint64_t{1} << 48) - 1;
    static constexpr uint64_t kMultiplier = 44485709377909u;
    static constexpr uint64_t Multiply(uint64_t x, uint64_t y) { return (x * y) & kMask; }
    static double Harvest(uint64_t x) { return static_cast<double>(x) * 0x1p-48; }
    static constexpr uint64_t Reduce(uint64_t state) { return state & kMask; }
};
