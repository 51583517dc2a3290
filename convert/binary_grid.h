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

// Whether a value n 2^q + remainder rounds to (n + 1) 2^q. A table rather than a switch:
// the remainder and, in the directed modes, the sign that picks the rounding vary from
// one value to the next, and a mispredicted branch costs more than the lookup.
inline bool RoundsUp(Remainder remainder, MagnitudeRounding rounding, uint64_t n) {
    constexpr unsigned kBelow = 1u << static_cast<int>(Remainder::BelowHalf);
    constexpr unsigned kHalf = 1u << static_cast<int>(Remainder::Half);
    constexpr unsigned kAbove = 1u << static_cast<int>(Remainder::AboveHalf);
    // The remainders that round up, by rounding; NEAREST's half goes by n's last bit.
    constexpr unsigned kUp[4] = {kAbove, kHalf | kAbove, 0, kBelow | kHalf | kAbove};
    static_assert(static_cast<int>(MagnitudeRounding::Nearest) == 0 && static_cast<int>(MagnitudeRounding::Compatible) == 1 &&
                      static_cast<int>(MagnitudeRounding::TowardZero) == 2 &&
                      static_cast<int>(MagnitudeRounding::AwayFromZero) == 3,
                  "the table's order");
    unsigned up = (kUp[static_cast<int>(rounding)] >> static_cast<int>(remainder)) & 1u;
    unsigned tie = (rounding == MagnitudeRounding::Nearest) & (remainder == Remainder::Half) & static_cast<unsigned>(n);
    return (up | tie) != 0;
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
