// Decimal to binary by one wide product: w 10^q is placed on a binary grid from w times
// a 128-bit power of five, in integer arithmetic, without touching the floating-point
// status. The truncation of the power bounds the product's error; when that bound cannot
// tell on which side of a rounding boundary the value lies, the caller decides exactly.
#pragma once

#include <cstdint>

#include "convert/binary_grid.h"

// The value w 10^q = w 5^q 2^q. With w shifted to fill 64 bits (w') and 5^q taken from the
// table as a 128-bit mantissa T rounded down (5^q = (T + f) 2^e, 0 <= f < 1), the exact
// 192-bit product P = w' T lies at most w' < 2^64 below the true w' (T + f), and equals it
// when f is 0 (q from 0 to 55, where 5^q fits in 128 bits). The format's significand is
// the top bits of P; the bits beneath say where the value lies between two grid points,
// and the error bound says whether they can be trusted.
namespace power_product {

struct PowerOfFive {
    uint64_t high;
    uint64_t low;
    int exponent;
};
// The table's range: below it every value is far beneath the smallest subnormal, above
// it every value overflows.
constexpr int kFirstPowerOfFive = -342;
constexpr int kLastPowerOfFive = 308;
// 5^q = (high 2^64 + low + f) 2^exponent, 0 <= f < 1, for q from kFirstPowerOfFive.
extern const PowerOfFive kPowersOfFive[kLastPowerOfFive - kFirstPowerOfFive + 1];

// The largest q whose power of five fits its mantissa exactly.
constexpr int kLastExactPowerOfFive = 55;

struct Product128 {
    uint64_t high;
    uint64_t low;
};

// a b as 128 bits; on targets without a 128-bit type, from four 32-bit products.
inline Product128 Multiply(uint64_t a, uint64_t b) {
#if defined(__SIZEOF_INT128__)
    unsigned __int128 p = static_cast<unsigned __int128>(a) * b;
    return {static_cast<uint64_t>(p >> 64), static_cast<uint64_t>(p)};
#else
    uint64_t aLow = static_cast<uint32_t>(a), aHigh = a >> 32;
    uint64_t bLow = static_cast<uint32_t>(b), bHigh = b >> 32;
    uint64_t lowLow = aLow * bLow;
    uint64_t highLow = aHigh * bLow;
    uint64_t lowHigh = aLow * bHigh;
    uint64_t highHigh = aHigh * bHigh;
    uint64_t middle = (lowLow >> 32) + static_cast<uint32_t>(highLow) + static_cast<uint32_t>(lowHigh);
    return {highHigh + (highLow >> 32) + (lowHigh >> 32) + (middle >> 32), (middle << 32) | static_cast<uint32_t>(lowLow)};
#endif
}

// A 192-bit quantity beneath the significand, most significant word first.
struct Bits192 {
    uint64_t top;
    uint64_t middle;
    uint64_t bottom;
};

inline bool IsZero(Bits192 x) { return (x.top | x.middle | x.bottom) == 0; }

// x at most `top` 2^128 (the lower words of the bound being 0).
inline bool AtMost(Bits192 x, uint64_t top) { return x.top < top || (x.top == top && (x.middle | x.bottom) == 0); }

inline Bits192 Plus(Bits192 x, uint64_t y) {
    uint64_t bottom = x.bottom + y;
    uint64_t middle = x.middle + (bottom < y ? 1 : 0);
    uint64_t top = x.top + (middle < x.middle ? 1 : 0);
    return {top, middle, bottom};
}

}  // namespace power_product

// w 10^q 2^e (w not 0) rounded onto the format's grid: true with *rounded set, or false
// when the product cannot decide, q lies beyond the table or the value is far below the
// smallest subnormal. Overflow is left to the caller: *rounded may lie past the largest
// finite value. (2^e serves an exact decimal whose mantissa the power of five divides.)
inline bool RoundByPowerProduct(uint64_t w, int q, int e, BinaryFormat format, MagnitudeRounding rounding,
                                GridValue* rounded) {
    using namespace power_product;
    if (q < kFirstPowerOfFive || q > kLastPowerOfFive) return false;
    const PowerOfFive& power = kPowersOfFive[q - kFirstPowerOfFive];
    int shift = __builtin_clzll(w);
    uint64_t filled = w << shift;
    Product128 upper = Multiply(filled, power.high);
    Product128 lower = Multiply(filled, power.low);
    // P = upper 2^64 + lower, in three words; P lies in [2^190, 2^192).
    uint64_t middle = upper.low + lower.high;
    uint64_t top = upper.high + (middle < upper.low ? 1 : 0);
    uint64_t bottom = lower.low;
    // Bits of the top two words beneath the significand, and the grid exponent: the value
    // is P 2^(exponent + q + e - shift), and the significand's last bit weighs 2^(beneath + 64) of P.
    int leading = top >> 63 != 0 ? 127 : 126;
    int beneath = leading - (format.precision - 1);
    int gridExponent = beneath + 64 + power.exponent + q + e - shift;
    if (gridExponent < format.minExponent) {
        beneath += format.minExponent - gridExponent;
        gridExponent = format.minExponent;
        if (beneath > 127) return false;  // below half the smallest step: the exact path
    }
    // beneath >= 74 for the formats here, so the significand and half a step lie in the
    // top word: k bits of it are beneath the significand.
    int k = beneath - 64;
    uint64_t n = top >> k;
    uint64_t full = uint64_t{1} << k;
    uint64_t half = full >> 1;
    Bits192 rest{top & (full - 1), middle, bottom};
    Remainder remainder;
    if (q >= 0 && q <= kLastExactPowerOfFive) {
        // P is the value: the bits beneath are the remainder itself.
        if (IsZero(rest)) {
            remainder = Remainder::None;
        } else if (rest.top < half) {
            remainder = Remainder::BelowHalf;
        } else {
            remainder = AtMost(rest, half) ? Remainder::Half : Remainder::AboveHalf;
        }
    } else {
        // The value lies strictly inside (rest, rest + w') above n 2^k: it is decided
        // when that whole interval is on one side of half a step and short of a full one.
        Bits192 bound = Plus(rest, filled);
        if (AtMost(bound, half)) {
            remainder = Remainder::BelowHalf;
        } else if (rest.top >= half && AtMost(bound, full)) {
            remainder = Remainder::AboveHalf;
        } else {
            return false;
        }
    }
    GridValue g{n, gridExponent};
    *rounded = RoundsUp(remainder, rounding, n) ? StepUp(g, format) : g;
    return true;
}
