// The grid of a binary floating-point format and the rounding of a magnitude onto it:
// what the decimal-to-binary paths share, whichever of them places the value.
#pragma once

#include <cstdint>

// A binary format's grid: `precision` significant bits, steps of 2^minExponent at the
// bottom, finite values below 2^(maxExponent + 1).
struct BinaryFormat {
    int precision;
    int minExponent;
    int maxExponent;
};
constexpr BinaryFormat kDoubleFormat{53, -1074, 1023};
constexpr BinaryFormat kFloatFormat{24, -149, 127};

// The sign's bit: above the significand's stored bits and the exponent field, which
// holds 2 maxExponent + 1 for infinity.
inline int SignBit(BinaryFormat format) {
    return format.precision - 1 + (32 - __builtin_clz(static_cast<unsigned>(2 * format.maxExponent + 1)));
}

// How a magnitude is rounded: the ROUND= mode with the value's sign folded in.
enum class MagnitudeRounding { Nearest, Compatible, TowardZero, AwayFromZero };

// A magnitude on a format's grid: n 2^q, n below 2^precision.
struct GridValue {
    uint64_t n;
    int q;
};

// Where the value lies between n 2^q and (n + 1) 2^q.
enum class Remainder { None, BelowHalf, Half, AboveHalf };

// Whether a value n 2^q + remainder rounds to (n + 1) 2^q.
inline bool RoundsUp(Remainder remainder, MagnitudeRounding rounding, uint64_t n) {
    switch (rounding) {
    case MagnitudeRounding::TowardZero: return false;
    case MagnitudeRounding::AwayFromZero: return remainder != Remainder::None;
    case MagnitudeRounding::Nearest:
        return remainder == Remainder::AboveHalf || (remainder == Remainder::Half && (n & 1) != 0);
    case MagnitudeRounding::Compatible: return remainder == Remainder::AboveHalf || remainder == Remainder::Half;
    }
    return false;
}

// n 2^q rounded up by one step, carried into the next binade when n fills the precision.
inline GridValue StepUp(GridValue g, BinaryFormat format) {
    if (++g.n == uint64_t{1} << format.precision) {
        g.n >>= 1;
        ++g.q;
    }
    return g;
}

// Whether n 2^q lies beyond the format's largest finite value.
inline bool Overflows(GridValue g, BinaryFormat format) {
    return g.n != 0 && 63 - __builtin_clzll(g.n) + g.q > format.maxExponent;
}

// The bit pattern of a finite n 2^q: the biased exponent field is q - minExponent when n
// has its leading bit, and the leading bit itself lands as the one that adds to it, so
// subnormals (q at minExponent, n below the leading bit) come out of the same sum.
inline uint64_t GridBits(GridValue g, BinaryFormat format) {
    return (static_cast<uint64_t>(g.q - format.minExponent) << (format.precision - 1)) + g.n;
}
