// Decimal to binary: gather up to 30 significant digits (45 for 16-byte reals) exactly in
// doubles, scale them by the decimal exponent as double-doubles, and round the sum once
// in the ROUND= mode. Digits beyond are dropped but still counted in the exponent.
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "convert/convert.h"

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
    for (; IsDigit(*p); ++p) {
        if (!sink.Take(*p - '0')) d.exponent += 1;
    }
    d.anyDigit = p != digitsStart;
    if (*p == '.') {
        ++p;
        const char* fractionStart = p;
        if (sink.block == 0 && sink.inBlock == 0) {
            // Zeros right behind the point only place it.
            for (; *p == '0'; ++p) d.exponent -= 1;
        }
        for (; IsDigit(*p); ++p) {
            if (sink.Take(*p - '0')) d.exponent -= 1;
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

int FenvModeOf(int roundKey, int entryMode) {
    switch (roundKey) {
    case kRoundUp: return FE_UPWARD;
    case kRoundDown: return FE_DOWNWARD;
    case kRoundZero: return FE_TOWARDZERO;
    case kRoundProcessorDefined: return entryMode;
    default: return FE_TONEAREST;
    }
}

// The floating-point mode that rounds a magnitude as roundKey rounds the signed value.
int MagnitudeMode(int roundKey, int entryMode, bool negative) {
    int mode = FenvModeOf(roundKey, entryMode);
    if (negative && mode == FE_UPWARD) return FE_DOWNWARD;
    if (negative && mode == FE_DOWNWARD) return FE_UPWARD;
    return mode;
}

// hi + lo rounded once in the given mode. COMPATIBLE rounds to nearest, then moves an
// exact halfway case away from zero.
double RoundPair(DoubleDouble x, int mode, bool compatible) {
    if (mode != FE_TONEAREST) std::fesetround(mode);
    volatile double sum = x.hi + x.lo;  // volatile: the addition must happen in this mode
    double result = sum;
    if (mode != FE_TONEAREST) std::fesetround(FE_TONEAREST);
    if (compatible && x.lo != 0 && std::isfinite(x.hi)) {
        double neighbour = std::nextafter(x.hi, x.lo > 0 ? kInfinity : -kInfinity);
        if (std::isfinite(neighbour) && neighbour - x.hi == 2 * x.lo) {
            result = std::fabs(neighbour) > std::fabs(x.hi) ? neighbour : x.hi;
        }
    }
    return result;
}

double Special(const DecimalText& d) {
    char first = *d.afterSign;
    double value = 0;
    if (first == 'i' || first == 'I') {
        if (checknf(d.afterSign) != 0) value = kInfinity;
    } else if (first == 'n' || first == 'N') {
        int kind = checknan(d.afterSign);
        if (kind == 2) {
            uint64_t bits = 0x7FF5555555555555ull;
            std::memcpy(&value, &bits, sizeof value);
        } else if (kind != 0) {
            value = std::nan("");
        }
    }
    return d.negative ? -value : value;
}

constexpr double kTwoTo64 = 18446744073709551616.0;
constexpr double kTwoToMinus64 = 1.0 / kTwoTo64;

// The double-double value of the scanned digits, before the last rounding, divided by
// 2^*binaryShift: a value near the top of the range is computed 2^64 lower, so that no
// partial product overflows, and the last rounding's result is scaled back. false for a
// value that is exactly 0, infinite or too small to matter, with *settled holding it.
bool ExactPart(const DecimalText& d, DoubleDouble* out, double* settled, int* binaryShift) {
    double sign = d.negative ? -1.0 : 1.0;
    if (d.blocks[0] == 0) {
        *settled = sign * 0.0;
        return false;
    }
    if (d.exponent > kExponentLimit) {
        *settled = sign * kInfinity;
        return false;
    }
    if (d.exponent < -kExponentLimit) {
        *settled = sign * 0.0;
        return false;
    }
    // The up to 30 digits as one exact double-double: A 10^digits(B) + B.
    DoubleDouble mantissa{d.blocks[0], 0.0};
    if (d.blockDigits[1] > 0) {
        mantissa = AddDouble(TwoProduct(d.blocks[0], kPowersOfTen[d.blockDigits[1]].hi), d.blocks[1]);
    }
    int exponent = static_cast<int>(d.exponent);
    *binaryShift = 0;
    if (exponent + d.blockDigits[0] + d.blockDigits[1] > 300) {
        mantissa = {mantissa.hi * kTwoToMinus64, mantissa.lo * kTwoToMinus64};
        *binaryShift = 64;
    }
    bool overflow = false;
    *out = exponent == 0 ? mantissa : ScaleByPowerOfTen(mantissa, exponent, &overflow);
    if (overflow || std::isinf(out->hi)) {
        *settled = sign * kInfinity;
        return false;
    }
    return true;
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
    if (!d.anyDigit) return Special(d);
    NearestRoundingScope rounding;
    DoubleDouble exact;
    double settled;
    int shift;
    if (!ExactPart(d, &exact, &settled, &shift)) return settled;
    int mode = MagnitudeMode(roundKey, rounding.entry(), d.negative);
    double magnitude = RoundPair(exact, mode, roundKey == kRoundCompatible);
    if (shift != 0) {
        // Scaling back is exact, except that it overflows as the mode says it should.
        std::fesetround(mode);
        volatile double scaled = magnitude * kTwoTo64;
        magnitude = scaled;
        std::fesetround(FE_TONEAREST);
    }
    return d.negative ? -magnitude : magnitude;
}

float ubx_strtof(const char* text, char** end, int roundKey) {
    if (end != nullptr) *end = const_cast<char*>(text);
    if (text == nullptr) return 0;
    DecimalText d = Scan(text, 2);
    if (end != nullptr) *end = const_cast<char*>(d.end);
    if (!d.anyDigit) return static_cast<float>(Special(d));
    NearestRoundingScope rounding;
    DoubleDouble exact;
    double settled;
    int shift;
    if (!ExactPart(d, &exact, &settled, &shift)) return static_cast<float>(settled);
    if (shift != 0) return d.negative ? -HUGE_VALF : HUGE_VALF;  // far beyond the largest float
    // Round the double-double straight to float, so that nothing is rounded twice.
    int mode = MagnitudeMode(roundKey, rounding.entry(), d.negative);
    std::fesetround(mode);
    volatile float candidate = static_cast<float>(exact.hi);
    float result = candidate;
    std::fesetround(FE_TONEAREST);
    double back = static_cast<double>(result);
    if (exact.lo != 0 && std::isfinite(result)) {
        if (back == exact.hi) {
            // hi is a float: the low part decides a directed rounding.
            if (mode == FE_UPWARD && exact.lo > 0) result = std::nextafter(result, HUGE_VALF);
            if (mode == FE_DOWNWARD && exact.lo < 0) result = std::nextafter(result, -HUGE_VALF);
            if (mode == FE_TOWARDZERO && exact.lo < 0) result = std::nextafter(result, 0.0f);
        } else if (mode == FE_TONEAREST) {
            // hi exactly halfway between two floats: the low part breaks the tie, and
            // COMPATIBLE goes away from zero.
            float other = std::nextafter(result, back < exact.hi ? HUGE_VALF : -HUGE_VALF);
            double middle = (back + static_cast<double>(other)) / 2;
            if (middle == exact.hi) {
                bool towardOther = (exact.lo > 0) == (static_cast<double>(other) > back);
                if (towardOther) result = other;
            }
        }
        // Otherwise hi lies strictly between two floats and the low part cannot cross one.
    } else if (exact.lo == 0 && roundKey == kRoundCompatible && std::isfinite(result)) {
        float other = std::nextafter(result, back < exact.hi ? HUGE_VALF : -HUGE_VALF);
        if ((back + static_cast<double>(other)) / 2 == exact.hi && std::fabs(other) > std::fabs(result)) result = other;
    }
    return d.negative ? -result : result;
}

DoubleDouble _qatof(const char* text, int roundKey) {
    DoubleDouble zero{0.0, 0.0};
    if (text == nullptr) return zero;
    DecimalText d = Scan(text, 3);
    if (!d.anyDigit) return {Special(d), 0.0};
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
    // The last normalisation happens in the ROUND= mode.
    std::fesetround(MagnitudeMode(roundKey, rounding.entry(), d.negative));
    volatile double high = sum.hi + sum.lo;
    double low = sum.lo - (high - sum.hi);
    std::fesetround(FE_TONEAREST);
    return {sign * high, sign * low};
}

void ubx_qatof(double* result, const char* text, int roundKey) {
    DoubleDouble value = _qatof(text, roundKey);
    result[0] = value.hi;
    result[1] = value.lo;
}
