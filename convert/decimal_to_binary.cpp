// Decimal to binary: gather up to 30 significant digits (45 for 16-byte reals) exactly in
// doubles and scale them by the decimal exponent as double-doubles. REAL(4) and REAL(8)
// results are then rounded once onto the target's grid in the ROUND= mode, with an exact
// comparison where the approximation is too near a boundary to decide; REAL(16) results
// are the normalised pair. Digits beyond are dropped but still counted in the exponent.
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "convert/binary_grid.h"
#include "convert/convert.h"
#include "convert/eight_digits.h"
#include "convert/exact_compare.h"
#include "convert/power_product.h"
#include "core/float_status.h"

namespace {

constexpr double kInfinity = __builtin_huge_val();
#include "convert/power_tables.inc"

constexpr int kBlockDigits = 15;
constexpr int64_t kExponentLimit = 350;
constexpr int64_t kPairExponentCap = 0x20000000;

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

// Where a scanned text stands, whatever its digits were gathered into.
struct ScannedText {
    bool negative = false;
    bool anyDigit = false;
    int64_t exponent = 0;  // the power of ten of the last digit kept
    const char* afterSign = nullptr;
    const char* end = nullptr;
};

// The significant digits in blocks of 15, for the 16-byte path:
// value = (block[0] 10^(n1+n2) + block[1] 10^n2 + block[2]) 10^exponent.
struct DecimalText : ScannedText {
    double blocks[3] = {0, 0, 0};
    int blockDigits[3] = {0, 0, 0};
};

// Appends one significant digit to the blocks; digits past the blocks only count.
struct BlockSink {
    DecimalText& d;
    int blockCount;
    uint64_t accumulator = 0;
    int block = 0;
    int inBlock = 0;

    bool Empty() const { return block == 0 && inBlock == 0; }
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

// The first 30 significant digits as the 19 that fit a word and the 11 behind them:
// value = (lead 10^tailDigits + tail) 10^exponent.
constexpr int kLeadDigits = 19;
constexpr int kTailDigits = 11;

struct WideDecimal : ScannedText {
    uint64_t lead = 0;
    int leadDigits = 0;
    uint64_t tail = 0;
    int tailDigits = 0;
};

struct WideSink {
    WideDecimal& d;

    bool Empty() const { return d.leadDigits == 0; }
    bool RoomForEight() const {
        return d.leadDigits + 8 <= kLeadDigits || (d.leadDigits == kLeadDigits && d.tailDigits + 8 <= kTailDigits);
    }
    void TakeEight(uint32_t value) {
        if (d.leadDigits + 8 <= kLeadDigits) {
            d.lead = d.lead * 100000000u + value;
            d.leadDigits += 8;
        } else {
            d.tail = d.tail * 100000000u + value;
            d.tailDigits += 8;
        }
    }
    bool Take(int digit) {
        if (d.leadDigits < kLeadDigits) {
            d.lead = d.lead * 10 + static_cast<uint64_t>(digit);
            ++d.leadDigits;
        } else if (d.tailDigits < kTailDigits) {
            d.tail = d.tail * 10 + static_cast<uint64_t>(digit);
            ++d.tailDigits;
        } else {
            return false;
        }
        return true;
    }
    void Close() {}
};

// A text and the NUL that ends it: words of eight bytes are read only before the NUL.
struct TextSpan {
    const char* text;
    const char* end;
};

// Whether the eight bytes at p are all digits; p + 8 must not pass the span's end.
bool EightDigitsAt(const char* p) {
    uint64_t word = eight_digits::LoadLowFirst(p);
    // Each byte 0x30 to 0x39: its high half is 3, and adding 6 keeps it so.
    constexpr uint64_t kHighHalves = 0xF0F0F0F0F0F0F0F0ull;
    constexpr uint64_t kThrees = 0x3030303030303030ull;
    return (word & kHighHalves) == kThrees && ((word + 0x0606060606060606ull) & kHighHalves) == kThrees;
}

// The largest explicit exponent kept: any beyond settles the value as zero or infinity
// all the same, and the sums with digit counts cannot wrap.
constexpr int64_t kExponentCap = 1000000000000000;

// An exponent letter with its optional sign and digits, added to *exponent; the text
// behind it.
inline const char* ScanExponent(const char* p, int64_t* exponent) {
    if (!IsExponentLetter(*p)) return p;
    const char* q = p + 1;
    bool negative = false;
    if (*q == '+' || *q == '-') negative = *q++ == '-';
    int64_t value = 0;
    for (; IsDigit(*q); ++q) {
        if (value < kExponentCap) value = value * 10 + (*q - '0');
    }
    *exponent += negative ? -value : value;
    return q;
}

// Sign, digits (into the sink), point and exponent of a text.
template <typename Sink>
void Scan(TextSpan span, ScannedText& d, Sink& sink) {
    const char* p = span.text;
    // Eight more bytes before the NUL: enough to take a word of digits.
    auto roomForWord = [&](const char* at) { return span.end - at >= 8; };
    while (IsSpace(*p)) ++p;
    if (*p == '+' || *p == '-') d.negative = *p++ == '-';
    d.afterSign = p;
    int64_t exponent = 0;
    // In front of the point: leading zeros are passed over; dropped digits still count.
    const char* digitsStart = p;
    while (*p == '0') ++p;
    for (;;) {
        if (roomForWord(p) && sink.RoomForEight() && EightDigitsAt(p)) {
            sink.TakeEight(eight_digits::Value(p));
            p += 8;
            continue;
        }
        if (!IsDigit(*p)) break;
        if (!sink.Take(*p - '0')) exponent += 1;
        ++p;
    }
    d.anyDigit = p != digitsStart;
    if (*p == '.') {
        ++p;
        const char* fractionStart = p;
        if (sink.Empty()) {
            // Zeros right behind the point only place it.
            for (; *p == '0'; ++p) exponent -= 1;
        }
        for (;;) {
            if (roomForWord(p) && sink.RoomForEight() && EightDigitsAt(p)) {
                sink.TakeEight(eight_digits::Value(p));
                exponent -= 8;
                p += 8;
                continue;
            }
            if (!IsDigit(*p)) break;
            if (sink.Take(*p - '0')) exponent -= 1;
            ++p;
        }
        d.anyDigit = d.anyDigit || p != fractionStart;
    }
    sink.Close();
    if (d.anyDigit) p = ScanExponent(p, &exponent);
    d.exponent = exponent;
    d.end = p;
}

// A mantissa of at most 19 significant digits, the common case, gathered in one word
// with no test per digit of where it goes. False for a longer mantissa, which the
// general scan then takes again.
__attribute__((always_inline)) inline bool ScanShort(TextSpan span, WideDecimal& d) {
    const char* p = span.text;
    while (IsSpace(*p)) ++p;
    if (*p == '+' || *p == '-') d.negative = *p++ == '-';
    d.afterSign = p;
    const char* digitsStart = p;
    while (*p == '0') ++p;
    uint64_t value = 0;  // wraps past 19 digits, when it is not used
    auto gather = [&] {
        const char* first = p;
        while (span.end - p >= 8) {
            uint64_t run;
            int32_t length = eight_digits::LeadingDigits(p, &run);
            value = value * eight_digits::kRunScale[length] + run;
            p += length;
            if (length < 8) return p - first;
        }
        for (; IsDigit(*p); ++p) value = value * 10 + static_cast<uint64_t>(*p - '0');
        return p - first;
    };
    int64_t count = gather();
    d.anyDigit = p != digitsStart;
    int64_t exponent = 0;
    if (*p == '.') {
        ++p;
        const char* fractionStart = p;
        if (count == 0) {
            while (*p == '0') ++p;  // only place the point
            exponent = fractionStart - p;
        }
        int64_t behind = gather();
        count += behind;
        exponent -= behind;
        d.anyDigit = d.anyDigit || p != fractionStart;
    }
    if (count > kLeadDigits) return false;
    if (d.anyDigit) p = ScanExponent(p, &exponent);
    d.lead = value;
    d.leadDigits = static_cast<int>(count);
    d.exponent = exponent;
    d.end = p;
    return true;
}

DecimalText ScanBlocks(const char* text, int blockCount) {
    DecimalText d;
    BlockSink sink{d, blockCount};
    Scan({text, text + std::strlen(text)}, d, sink);
    return d;
}

// A mantissa past 19 digits, taken again from the start.
__attribute__((noinline)) void ScanLong(TextSpan span, WideDecimal& d) {
    d = WideDecimal{};
    WideSink sink{d};
    Scan(span, d, sink);
}

// Most texts are taken in one pass; a mantissa past 19 digits is taken again.
__attribute__((always_inline)) inline void ScanWide(TextSpan span, WideDecimal& d) {
    if (!ScanShort(span, d)) ScanLong(span, d);
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

inline MagnitudeRounding MagnitudeRoundingOf(int roundKey, int entryMode, bool negative) {
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

// The rounding of a text's magnitude; only PROCESSOR_DEFINED reads the caller's mode.
inline MagnitudeRounding RoundingOfText(int roundKey, bool negative) {
    int entry = roundKey == kRoundProcessorDefined ? float_status::GetRoundingMode() : FE_TONEAREST;
    return MagnitudeRoundingOf(roundKey, entry, negative);
}

// The floating-point mode that rounds a magnitude that way (COMPATIBLE's ties aside).
int FenvModeOf(MagnitudeRounding rounding) {
    switch (rounding) {
    case MagnitudeRounding::TowardZero: return FE_TOWARDZERO;
    case MagnitudeRounding::AwayFromZero: return FE_UPWARD;
    default: return FE_TONEAREST;
    }
}

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

// The up to 30 digits lead 10^tailDigits + tail as a double-double, exactly: the lead is
// split into its nearest double and a remainder below 2^11, and every partial sum is a
// whole number that the pair holds.
DoubleDouble ExactMantissa(const WideDecimal& d) {
    double leadHigh = static_cast<double>(d.lead);
    double leadLow = static_cast<double>(static_cast<int64_t>(d.lead - static_cast<uint64_t>(leadHigh)));
    if (d.tailDigits == 0) return FastTwoSum(leadHigh, leadLow);
    double scale = kPowersOfTen[d.tailDigits].hi;
    return AddDouble(TwoProduct(leadHigh, scale), leadLow * scale + static_cast<double>(d.tail));
}

// Needs round-to-nearest, as the double-double steps do.
ScaledDecimal Approximate(const WideDecimal& d) {
    ScaledDecimal x;
    x.mantissa = {d.lead, d.tailDigits, d.tail};
    x.exponent = static_cast<int>(d.exponent);
    DoubleDouble mantissa = ExactMantissa(d);
    int magnitude = x.exponent + d.leadDigits + d.tailDigits;
    x.shift = magnitude > 300 ? -256 : magnitude < -290 ? 256 : 0;
    if (x.shift != 0) {
        double factor = x.shift > 0 ? kTwoTo256 : 1 / kTwoTo256;
        mantissa = {mantissa.hi * factor, mantissa.lo * factor};
    }
    bool overflow = false;
    x.approx = x.exponent == 0 ? mantissa : ScaleByPowerOfTen(mantissa, x.exponent, &overflow);
    return x;
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
            GridValue next = StepUp({n, q}, format);
            n = next.n;
            q = next.q;
        } else {
            remainder = Remainder::AboveHalf;
        }
    } else if (std::fabs(fraction - 0.5) < kAmbiguity) {
        int order = compare(2 * n + 1, q - 1);
        remainder = order < 0 ? Remainder::BelowHalf : order == 0 ? Remainder::Half : Remainder::AboveHalf;
    } else {
        remainder = fraction < 0.5 ? Remainder::BelowHalf : Remainder::AboveHalf;
    }
    GridValue g{n, q};
    return RoundsUp(remainder, rounding, n) ? StepUp(g, format) : g;
}

// Which way a conversion may go: the exact road alone is there for the tests.
enum class Road { Fastest, ExactOnly };

// 5^k for k up to 27, the largest power below 2^64.
constexpr int kLastFiveInAWord = 27;
struct FivesInAWord {
    uint64_t power[kLastFiveInAWord + 1];
    constexpr FivesInAWord() : power{} {
        power[0] = 1;
        for (int k = 1; k <= kLastFiveInAWord; ++k) power[k] = power[k - 1] * 5;
    }
};
constexpr FivesInAWord kFivesInAWord{};

// The rounded magnitude of the scanned digits by the wide product, when it can tell. A
// mantissa cut at 19 digits is decided only when the value with the next 19-digit
// mantissa rounds to the same grid point: rounding is monotone, so every value between
// does too. A value that lies exactly on a grid point or halfway between two, such as
// "1.5" or "0.25", leaves the product undecided when q is negative (5^q is rounded):
// when 5^-q divides the mantissa, the value is w / 5^-q 2^q, which the product takes
// exactly.
__attribute__((always_inline)) inline bool RoundByProduct(const WideDecimal& d, BinaryFormat format,
                                                          MagnitudeRounding rounding, GridValue* g) {
    int q = static_cast<int>(d.exponent) + d.tailDigits;
    if (RoundByPowerProduct(d.lead, q, 0, format, rounding, g)) {
        if (d.tail == 0) return true;
        GridValue above;
        return RoundByPowerProduct(d.lead + 1, q, 0, format, rounding, &above) && above.n == g->n && above.q == g->q;
    }
    if (d.tail != 0 || q >= 0 || q < -kLastFiveInAWord || d.lead % kFivesInAWord.power[-q] != 0) return false;
    return RoundByPowerProduct(d.lead / kFivesInAWord.power[-q], 0, q, format, rounding, g);
}

// The exact road, kept out of line so that the common one stays small: the
// double-double approximation and, near a boundary, the exact comparison.
__attribute__((noinline)) GridValue RoundExactly(const WideDecimal& d, BinaryFormat format,
                                                 MagnitudeRounding rounding) {
    NearestRoundingScope nearest;  // the double-double steps are exact only so
    return RoundOntoGrid(Approximate(d), format, rounding);
}

// The signed value of the scanned digits in the format, as its bit pattern: the limits
// settle zeros and infinities before any rounding, as they always have.
__attribute__((always_inline)) inline uint64_t ConvertToBits(const WideDecimal& d, BinaryFormat format, int roundKey, Road road) {
    const uint64_t sign = uint64_t{d.negative ? 1u : 0u} << SignBit(format);
    const uint64_t infinity = static_cast<uint64_t>(2 * format.maxExponent + 1) << (format.precision - 1);
    if (d.lead == 0) return sign;
    if (d.exponent > kExponentLimit) return sign | infinity;
    // The limit applies to the value, not to the exponent of its last kept digit: a
    // 30-digit mantissa of a subnormal may have an exponent below -350.
    if (d.exponent + d.leadDigits + d.tailDigits < -kExponentLimit) return sign;
    MagnitudeRounding rounding = RoundingOfText(roundKey, d.negative);
    GridValue g;
    if (road != Road::Fastest || !RoundByProduct(d, format, rounding, &g)) g = RoundExactly(d, format, rounding);
    if (Overflows(g, format)) {
        // Past the largest finite value: infinity, or that value when rounding toward zero.
        return sign | (rounding == MagnitudeRounding::TowardZero ? infinity - 1 : infinity);
    }
    return sign | GridBits(g, format);
}

// What a text without digits names, as an index into the IEEE value tables: 0 nothing
// (the value 0), 1 infinity, 2 quiet NaN, 3 signalling NaN.
int SpecialIndex(const ScannedText& d) {
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
Float Special(const ScannedText& d, const Bits (&table)[7]) {
    int index = SpecialIndex(d);
    if (index == 0) return d.negative ? -Float(0) : Float(0);
    Bits bits = table[d.negative ? index + 3 : index];
    Float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double TextToDouble(const char* text, int roundKey, Road road) {
    if (text == nullptr) return 0;
    WideDecimal d;
    ScanWide({text, text + std::strlen(text)}, d);
    if (!d.anyDigit) return Special<double>(d, d_ieee_val);
    uint64_t bits = ConvertToBits(d, kDoubleFormat, roundKey, road);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

float TextToFloat(const char* text, char** end, int roundKey, Road road) {
    WideDecimal d;
    ScanWide({text, text + std::strlen(text)}, d);
    if (end != nullptr) *end = const_cast<char*>(d.end);
    if (!d.anyDigit) return Special<float>(d, f_ieee_val);
    // Rounded once, straight onto the float grid.
    uint32_t bits = static_cast<uint32_t>(ConvertToBits(d, kFloatFormat, roundKey, road));
    float value;
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

double ubx_atof(const char* text, int roundKey) { return TextToDouble(text, roundKey, Road::Fastest); }

float ubx_strtof(const char* text, char** end, int roundKey) {
    if (end != nullptr) *end = const_cast<char*>(text);
    if (text == nullptr) return 0;
    return TextToFloat(text, end, roundKey, Road::Fastest);
}

// Digits an input editor has already gathered: no text to read again.
uint64_t DigitsToBits(const DecimalDigits& digits, BinaryFormat format, int roundKey) {
    WideDecimal d;
    d.negative = digits.negative;
    d.anyDigit = true;
    d.exponent = digits.exponent;
    d.lead = digits.digits;
    d.leadDigits = digits.count;
    return ConvertToBits(d, format, roundKey, Road::Fastest);
}

double DigitsToDouble(const DecimalDigits& digits, int roundKey) {
    uint64_t bits = DigitsToBits(digits, kDoubleFormat, roundKey);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

float DigitsToFloat(const DecimalDigits& digits, int roundKey) {
    uint32_t bits = static_cast<uint32_t>(DigitsToBits(digits, kFloatFormat, roundKey));
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double ExactRoadAtof(const char* text, int roundKey) { return TextToDouble(text, roundKey, Road::ExactOnly); }

float ExactRoadStrtof(const char* text, int roundKey) {
    return text == nullptr ? 0 : TextToFloat(text, nullptr, roundKey, Road::ExactOnly);
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
    DecimalText d = ScanBlocks(text, 3);
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
