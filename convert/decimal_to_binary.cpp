// Decimal to binary: gather up to 30 significant digits (45 for 16-byte reals) exactly in
// doubles and scale them by the decimal exponent as double-doubles. REAL(4) and REAL(8)
// results are then rounded once onto the target's grid in the ROUND= mode, with an exact
// comparison where the approximation is too near a boundary to decide; REAL(16) results
// are the normalised pair. Digits beyond are dropped but still counted in the exponent.
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "convert/convert.h"
#include "convert/eight_digits.h"
#include "convert/exact_compare.h"
#include "core/float_status.h"

namespace {

constexpr double kInfinity = __builtin_huge_val();
#include "convert/power_tables.inc"

constexpr int kBlockDigits = 15;
constexpr double kExponentLimit = 350;
constexpr double kPairExponentCap = 0x20000000;

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
bool IsExponentLetter(char c) { return c == 'e' || c == 'E' || c == 'd' || c == 'D' || c == 'q' || c == 'Q'; }

bool StartsWithFolded(const char* text, const char* word) {
    for (; *word != 0; ++text, ++word) {
        if (Lower(*text) != *word) return false;
    }
    return true;
}

// The significant digits of a decimal text in blocks of 15, and the power of ten that
// scales them: value = (block[0] 10^(n1+n2) + block[1] 10^n2 + block[2]) 10^exponent.
struct DecimalText {
    bool negative = false;
    bool anyDigit = false;
    double blocks[3] = {0, 0, 0};
    int blockDigits[3] = {0, 0, 0};
    double exponent = 0;
    const char* afterSign = nullptr;
    const char* end = nullptr;
};

// Appends one significant digit to the blocks; digits past the blocks only count.
struct DigitSink {
    DecimalText& d;
    int blockCount;
    uint64_t accumulator = 0;
    int block = 0;
    int inBlock = 0;

    // Whether eight digits fit the block being filled, as TakeEight needs.
    bool RoomForEight() const { return block < blockCount && inBlock + 8 <= kBlockDigits; }
    void TakeEight(uint32_t value) {
        accumulator = accumulator * 100000000u + value;
        inBlock += 8;
        if (inBlock == kBlockDigits) Close();
    }
    // The result says whether the digit was kept.
    bool Take(int digit) {
        if (block >= blockCount) return false;
        accumulator = accumulator * 10 + static_cast<uint64_t>(digit);
        if (++inBlock == kBlockDigits) Close();
        return true;
    }
    void Close() {
        if (block >= blockCount || inBlock == 0) return;
        d.blocks[block] = static_cast<double>(accumulator);  // below 10^15: exact
        d.blockDigits[block] = inBlock;
        ++block;
        accumulator = 0;
        inBlock = 0;
    }
};

// Tested byte by byte so that nothing behind the text's end is read.
bool EightDigitsAt(const char* p) {
    for (int i = 0; i < 8; ++i) {
        if (!IsDigit(p[i])) return false;
    }
    return true;
}

DecimalText Scan(const char* text, int blockCount) {
    DecimalText d;
    const char* p = text;
    while (IsSpace(*p)) ++p;
    if (*p == '+' || *p == '-') d.negative = *p++ == '-';
    d.afterSign = p;
    DigitSink sink{d, blockCount};
    // In front of the point: leading zeros are passed over; dropped digits still count.
    const char* digitsStart = p;
    while (*p == '0') ++p;
    for (;;) {
        if (sink.RoomForEight() && EightDigitsAt(p)) {
            sink.TakeEight(eight_digits::Value(p));
            p += 8;
            continue;
        }
        if (!IsDigit(*p)) break;
        if (!sink.Take(*p - '0')) d.exponent += 1;
        ++p;
    }
    d.anyDigit = p != digitsStart;
    if (*p == '.') {
        ++p;
        const char* fractionStart = p;
        if (sink.block == 0 && sink.inBlock == 0) {
            // Zeros right behind the point only place it.
            for (; *p == '0'; ++p) d.exponent -= 1;
        }
        for (;;) {
            if (sink.RoomForEight() && EightDigitsAt(p)) {
                sink.TakeEight(eight_digits::Value(p));
                d.exponent -= 8;
                p += 8;
                continue;
            }
            if (!IsDigit(*p)) break;
            if (sink.Take(*p - '0')) d.exponent -= 1;
            ++p;
        }
        d.anyDigit = d.anyDigit || p != fractionStart;
    }
    sink.Close();
    if (d.anyDigit && IsExponentLetter(*p)) {
        const char* q = p + 1;
        bool negativeExponent = false;
        if (*q == '+' || *q == '-') negativeExponent = *q++ == '-';
        double value = 0;
        // Added in floating point, so that a huge exponent cannot wrap.
        for (; IsDigit(*q); ++q) {
            if (value < 1e300) value = value * 10 + (*q - '0');
        }
        d.exponent += negativeExponent ? -value : value;
        p = q;
    }
    d.end = p;
    return d;
}

// 10^n for |n| up to the size of the tables, as repeated multiplications by 10^+-64.
DoubleDouble ScaleByPowerOfTen(DoubleDouble value, int n, bool* overflow) {
    int magnitude = n < 0 ? -n : n;
    value = mf2x2(value, n < 0 ? kNegativePowersOfTen[magnitude & 63] : kPowersOfTen[magnitude & 63]);
    for (int k = magnitude >> 6; k > 0; --k) {
        value = mf2x2(value, n < 0 ? kNegativePowersOfTen64[1] : kPowersOfTen64[1]);
        if (std::isinf(value.hi)) {
            *overflow = true;
            return value;
        }
    }
    return value;
}

// How a magnitude is rounded: the ROUND= mode with the value's sign folded in.
enum class MagnitudeRounding { Nearest, Compatible, TowardZero, AwayFromZero };

MagnitudeRounding MagnitudeRoundingOf(int roundKey, int entryMode, bool negative) {
    int mode;
    switch (roundKey) {
    case kRoundUp: mode = FE_UPWARD; break;
    case kRoundDown: mode = FE_DOWNWARD; break;
    case kRoundZero: mode = FE_TOWARDZERO; break;
    case kRoundCompatible: return MagnitudeRounding::Compatible;
    case kRoundProcessorDefined: mode = entryMode; break;
    default: return MagnitudeRounding::Nearest;
    }
    switch (mode) {
    case FE_TOWARDZERO: return MagnitudeRounding::TowardZero;
    case FE_UPWARD: return negative ? MagnitudeRounding::TowardZero : MagnitudeRounding::AwayFromZero;
    case FE_DOWNWARD: return negative ? MagnitudeRounding::AwayFromZero : MagnitudeRounding::TowardZero;
    default: return MagnitudeRounding::Nearest;
    }
}

// The floating-point mode that rounds a magnitude that way (COMPATIBLE's ties aside).
int FenvModeOf(MagnitudeRounding rounding) {
    switch (rounding) {
    case MagnitudeRounding::TowardZero: return FE_TOWARDZERO;
    case MagnitudeRounding::AwayFromZero: return FE_UPWARD;
    default: return FE_TONEAREST;
    }
}

// A binary format's grid: `precision` significant bits, steps of 2^minExponent at the
// bottom, finite values below 2^(maxExponent + 1).
struct BinaryFormat {
    int precision;
    int minExponent;
    int maxExponent;
};
constexpr BinaryFormat kDoubleFormat{53, -1074, 1023};
constexpr BinaryFormat kFloatFormat{24, -149, 127};

constexpr double kTwoTo256 = 0x1p256;

// A decimal value mantissa 10^exponent of the scanned digits, and its approximation
// `approx` = value 2^shift as a double-double, within about 2^-100 of itself. The shift
// keeps every partial product of the approximation far from overflow and underflow.
struct ScaledDecimal {
    DecimalMantissa mantissa;
    int exponent;
    DoubleDouble approx;
    int shift;
};

// false for a value that the limits settle (0 or infinite), with *settled holding it.
bool Approximate(const DecimalText& d, ScaledDecimal* out, double* settled) {
    double sign = d.negative ? -1.0 : 1.0;
    if (d.blocks[0] == 0) {
        *settled = sign * 0.0;
        return false;
    }
    if (d.exponent > kExponentLimit) {
        *settled = sign * kInfinity;
        return false;
    }
    // The limit applies to the value, not to the exponent of its last kept digit: a
    // 30-digit mantissa of a subnormal may have an exponent below -350.
    if (d.exponent + d.blockDigits[0] + d.blockDigits[1] < -kExponentLimit) {
        *settled = sign * 0.0;
        return false;
    }
    out->mantissa = {static_cast<uint64_t>(d.blocks[0]), d.blockDigits[1], static_cast<uint64_t>(d.blocks[1])};
    out->exponent = static_cast<int>(d.exponent);
    // The up to 30 digits as one exact double-double: A 10^digits(B) + B. All parts are
    // whole numbers below 2^100, so the sums are exact.
    DoubleDouble mantissa{d.blocks[0], 0.0};
    if (d.blockDigits[1] > 0) {
        mantissa = AddDouble(TwoProduct(d.blocks[0], kPowersOfTen[d.blockDigits[1]].hi), d.blocks[1]);
    }
    int magnitude = out->exponent + d.blockDigits[0] + d.blockDigits[1];
    out->shift = magnitude > 300 ? -256 : magnitude < -290 ? 256 : 0;
    if (out->shift != 0) {
        double factor = out->shift > 0 ? kTwoTo256 : 1 / kTwoTo256;
        mantissa = {mantissa.hi * factor, mantissa.lo * factor};
    }
    bool overflow = false;
    out->approx = out->exponent == 0 ? mantissa : ScaleByPowerOfTen(mantissa, out->exponent, &overflow);
    return true;
}

// The exponent of a normal double: floor(log2(x)).
int BinaryExponent(double x) {
    uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return static_cast<int>((bits >> 52) & 0x7FF) - 1023;
}

// 2^e for e of a normal double's range.
double PowerOfTwo(int e) {
    uint64_t bits = static_cast<uint64_t>(e + 1023) << 52;
    double x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}

// A magnitude on a format's grid: n 2^q, n below 2^precision.
struct GridValue {
    uint64_t n;
    int q;
};

// Where the value lies between n 2^q and (n + 1) 2^q.
enum class Remainder { None, BelowHalf, Half, AboveHalf };

// The approximation decides the rounding unless it falls within this fraction of a grid
// step of a boundary; its error is below 2^-45 of a step.
constexpr double kAmbiguity = 0x1p-36;

// The value rounded onto the grid. The double-double places it between two grid points
// and measures how far along; only when that measure is near 0, 1/2 or 1 does an exact
// comparison with the boundary decide.
GridValue RoundOntoGrid(const ScaledDecimal& x, BinaryFormat format, MagnitudeRounding rounding) {
    const uint64_t top = uint64_t{1} << format.precision;
    int q = BinaryExponent(x.approx.hi) - x.shift - (format.precision - 1);
    if (q < format.minExponent) q = format.minExponent;
    uint64_t n = 0;
    double fraction = 0;
    for (int attempt = 0; attempt < 2; ++attempt) {
        // Exact: the approximation lies between 2^-967 and 2^1007 and the scaled value
        // below 2^55, so the factor is a normal power of two.
        double factor = PowerOfTwo(-q - x.shift);
        double hi = x.approx.hi * factor;
        double lo = x.approx.lo * factor;
        n = static_cast<uint64_t>(hi);  // truncation is the floor here
        double whole = static_cast<double>(n);
        fraction = (hi - whole) + lo;
        if (fraction < 0) {
            --n;
            fraction += 1;
        } else if (fraction >= 1) {
            ++n;
            fraction -= 1;
        }
        // Near a power of two the exponent taken from the high part can be one off.
        if (n >= top) {
            ++q;
        } else if (n < top / 2 && q > format.minExponent) {
            --q;
        } else {
            break;
        }
    }
    auto compare = [&](uint64_t mantissa, int exponent) {
        return CompareDecimalWithBinary(x.mantissa, x.exponent, mantissa, exponent);
    };
    Remainder remainder;
    if (fraction < kAmbiguity) {
        int order = compare(n, q);
        if (order >= 0) {
            remainder = order == 0 ? Remainder::None : Remainder::BelowHalf;
        } else {
            // Just below n 2^q: a step down, onto the finer grid below a power of two.
            remainder = Remainder::AboveHalf;
            if (n == top / 2 && q > format.minExponent) {
                n = top - 1;
                --q;
            } else {
                --n;
            }
        }
    } else if (fraction > 1 - kAmbiguity) {
        int order = compare(n + 1, q);
        if (order >= 0) {
            remainder = order == 0 ? Remainder::None : Remainder::BelowHalf;
            if (++n == top) {
                n = top / 2;
                ++q;
            }
        } else {
            remainder = Remainder::AboveHalf;
        }
    } else if (std::fabs(fraction - 0.5) < kAmbiguity) {
        int order = compare(2 * n + 1, q - 1);
        remainder = order < 0 ? Remainder::BelowHalf : order == 0 ? Remainder::Half : Remainder::AboveHalf;
    } else {
        remainder = fraction < 0.5 ? Remainder::BelowHalf : Remainder::AboveHalf;
    }
    bool up = false;
    switch (rounding) {
    case MagnitudeRounding::TowardZero: up = false; break;
    case MagnitudeRounding::AwayFromZero: up = remainder != Remainder::None; break;
    case MagnitudeRounding::Nearest:
        up = remainder == Remainder::AboveHalf || (remainder == Remainder::Half && (n & 1) != 0);
        break;
    case MagnitudeRounding::Compatible: up = remainder == Remainder::AboveHalf || remainder == Remainder::Half; break;
    }
    if (up && ++n == top) {
        n = top / 2;
        ++q;
    }
    return {n, q};
}

// n 2^q as a double; past the format's largest finite value, infinity, or that value
// when rounding toward zero.
double GridToDouble(GridValue g, BinaryFormat format, MagnitudeRounding rounding) {
    if (g.n == 0) return 0;
    if (63 - __builtin_clzll(g.n) + g.q > format.maxExponent) {
        if (rounding != MagnitudeRounding::TowardZero) return kInfinity;
        uint64_t largest = (uint64_t{1} << format.precision) - 1;
        return static_cast<double>(largest) * PowerOfTwo(format.maxExponent + 1 - format.precision);
    }
    // Both products exact: the value is on the format's grid.
    double n = static_cast<double>(g.n);
    if (g.q < -1022) return n * PowerOfTwo(g.q + 1022) * PowerOfTwo(-1022);
    return n * PowerOfTwo(g.q);
}

// The correctly rounded magnitude of the scanned text in the format, or -1 when the
// text's limits settle it (then *settled holds the signed value).
double ConvertMagnitude(const DecimalText& d, BinaryFormat format, MagnitudeRounding rounding, double* settled) {
    // Short mantissas with small exponents: one correctly rounded operation on exact
    // operands, when rounding to nearest.
    if (rounding == MagnitudeRounding::Nearest && d.blockDigits[1] == 0 && d.exponent >= -22 &&
        d.exponent <= 22 && d.blocks[0] != 0) {
        int e = static_cast<int>(d.exponent);
        if (format.precision == kDoubleFormat.precision) {
            double ten = kPowersOfTen[e < 0 ? -e : e].hi;
            return e < 0 ? d.blocks[0] / ten : d.blocks[0] * ten;
        }
        if (d.blocks[0] < 0x1p24 && e >= -10 && e <= 10) {
            float ten = static_cast<float>(kPowersOfTen[e < 0 ? -e : e].hi);
            float a = static_cast<float>(d.blocks[0]);
            return e < 0 ? a / ten : a * ten;
        }
    }
    ScaledDecimal x;
    if (!Approximate(d, &x, settled)) return -1;
    return GridToDouble(RoundOntoGrid(x, format, rounding), format, rounding);
}

// What a text without digits names, as an index into the IEEE value tables: 0 nothing
// (the value 0), 1 infinity, 2 quiet NaN, 3 signalling NaN.
int SpecialIndex(const DecimalText& d) {
    char first = *d.afterSign;
    if (first == 'i' || first == 'I') return checknf(d.afterSign) != 0 ? 1 : 0;
    if (first == 'n' || first == 'N') {
        int kind = checknan(d.afterSign);
        return kind == 2 ? 3 : kind != 0 ? 2 : 0;
    }
    return 0;
}

// The value from the type's own table, so that a signalling NaN is never converted (and
// quieted) on its way.
template <typename Float, typename Bits>
Float Special(const DecimalText& d, const Bits (&table)[7]) {
    int index = SpecialIndex(d);
    if (index == 0) return d.negative ? -Float(0) : Float(0);
    Bits bits = table[d.negative ? index + 3 : index];
    Float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

}  // namespace

int checknan(const char* text) {
    if (!StartsWithFolded(text, "nan")) return 0;
    char next = Lower(text[3]);
    if (next == 'q') return 1;
    if (next == 's') return 2;
    return 3;
}

int checknf(const char* text) {
    if (!StartsWithFolded(text, "inf")) return 0;
    return StartsWithFolded(text, "infinity") ? 8 : 3;
}

double ubx_atof(const char* text, int roundKey) {
    if (text == nullptr) return 0;
    DecimalText d = Scan(text, 2);
    if (!d.anyDigit) return Special<double>(d, d_ieee_val);
    NearestRoundingScope nearest;  // the double-double steps are exact only so
    double settled;
    double magnitude =
        ConvertMagnitude(d, kDoubleFormat, MagnitudeRoundingOf(roundKey, nearest.entry(), d.negative), &settled);
    if (magnitude < 0) return settled;
    return d.negative ? -magnitude : magnitude;
}

float ubx_strtof(const char* text, char** end, int roundKey) {
    if (end != nullptr) *end = const_cast<char*>(text);
    if (text == nullptr) return 0;
    DecimalText d = Scan(text, 2);
    if (end != nullptr) *end = const_cast<char*>(d.end);
    if (!d.anyDigit) return Special<float>(d, f_ieee_val);
    NearestRoundingScope nearest;
    double settled;
    // Rounded once, straight onto the float grid; the conversion to float is then exact.
    double magnitude =
        ConvertMagnitude(d, kFloatFormat, MagnitudeRoundingOf(roundKey, nearest.entry(), d.negative), &settled);
    if (magnitude < 0) return static_cast<float>(settled);
    float result = static_cast<float>(magnitude);
    return d.negative ? -result : result;
}

// Moves trailing zeros of the mantissa into the exponent. The pair is a sum of rounded
// products whose grouping depends on the digit count, so without this "0.5E-224" and
// "0.50000E-224" could differ in the last bit of the low part, and a value written with
// zeros behind its significant digits would not read back as itself.
void DropTrailingZeros(DecimalText& d) {
    for (int block = 2; block >= 0; --block) {
        if (d.blockDigits[block] == 0) continue;
        while (d.blockDigits[block] > 0 && std::fmod(d.blocks[block], 10.0) == 0.0) {
            d.blocks[block] /= 10.0;  // exact: a whole number below 10^15 that ten divides
            d.blockDigits[block] -= 1;
            d.exponent += 1;
        }
        if (d.blockDigits[block] > 0 || block == 0) return;
        d.blocks[block] = 0;
    }
}

DoubleDouble _qatof(const char* text, int roundKey) {
    DoubleDouble zero{0.0, 0.0};
    if (text == nullptr) return zero;
    DecimalText d = Scan(text, 3);
    DropTrailingZeros(d);
    if (!d.anyDigit) return {Special<double>(d, ld_ieee_val), 0.0};
    NearestRoundingScope rounding;
    double sign = d.negative ? -1.0 : 1.0;
    if (d.blocks[0] == 0) return {sign * 0.0, 0.0};
    if (d.exponent > kExponentLimit) return {sign * kInfinity, 0.0};
    if (d.exponent < -kExponentLimit - 2 * kBlockDigits) return {sign * 0.0, 0.0};
    int exponent = static_cast<int>(d.exponent > kPairExponentCap ? kPairExponentCap : d.exponent);
    // Far below 1, scale by 10^-256 last so that the blocks do not underflow on the way.
    bool tiny = exponent < -256;
    if (tiny) exponent += 256;
    DoubleDouble sum = zero;
    int behind = d.blockDigits[1] + d.blockDigits[2];
    bool overflow = false;
    for (int block = 0; block < 3 && d.blockDigits[block] > 0; ++block) {
        DoubleDouble part = ScaleByPowerOfTen({d.blocks[block], 0.0}, exponent + behind, &overflow);
        sum = Add(sum, part);
        if (block + 1 < 3) behind -= d.blockDigits[block + 1];
    }
    if (tiny) sum = mf2x2(sum, kTenToMinus256[0]);
    if (overflow || std::isinf(sum.hi)) return {sign * kInfinity, 0.0};
    // The last normalisation happens in the ROUND= mode. The operands and the sum pass
    // through memory so that the addition cannot move out of the mode's reach.
    volatile double parts[2] = {sum.hi, sum.lo};
    float_status::SetRoundingMode(FenvModeOf(MagnitudeRoundingOf(roundKey, rounding.entry(), d.negative)));
    volatile double high = parts[0] + parts[1];
    float_status::SetRoundingMode(FE_TONEAREST);
    double low = sum.lo - (high - sum.hi);
    return {sign * high, sign * low};
}

void ubx_qatof(double* result, const char* text, int roundKey) {
    DoubleDouble value = _qatof(text, roundKey);
    result[0] = value.hi;
    result[1] = value.lo;
}
