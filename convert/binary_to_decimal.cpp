// Binary to decimal: scale the value by a power of ten so that the wanted digits stand in
// front of the point, round that double-double to a whole number in the ROUND= mode, and
// write its digits. At most 30 digits are computed; digits beyond are "0".
#include <cerrno>
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "convert/convert.h"
#include "core/float_status.h"

namespace {

constexpr double kInfinity = __builtin_huge_val();
#include "convert/power_tables.inc"

constexpr double kTwo52 = 4503599627370496.0;
constexpr double kTwo63 = 9223372036854775808.0;
constexpr DoubleDouble kTenTo46{1e46, 6.860180964052979e+28};
constexpr double kTinyLimit = 1e-275;
constexpr int kTinyShift = 46;
constexpr int kMaxPairDigits = 31;  // a pair of doubles carries about 32 digits

const char* const kSpellings[6] = {"INF", "NAN", "NAN", "Inf", "NaN(S)", "NaN(Q)"};

enum class Rounding { Nearest, Zero, Up, Down, Compatible };

Rounding RoundingOf(int roundKey) {
    switch (roundKey) {
    case kRoundNearest: return Rounding::Nearest;
    case kRoundZero: return Rounding::Zero;
    case kRoundUp: return Rounding::Up;
    case kRoundDown: return Rounding::Down;
    case kRoundProcessorDefined:
        switch (float_status::GetRoundingMode()) {
        case FE_TOWARDZERO: return Rounding::Zero;
        case FE_UPWARD: return Rounding::Up;
        case FE_DOWNWARD: return Rounding::Down;
        default: return Rounding::Nearest;
        }
    default: return Rounding::Compatible;  // COMPATIBLE and any unknown key
    }
}

// floor(log10(x)) or one less, from the exponent and leading fraction bits of x.
int EstimateExponent(double x) {
    uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    int32_t highWord = static_cast<int32_t>(bits >> 32);
    int64_t product = static_cast<int64_t>(highWord - 0x3FF00000) * (highWord < 0x3FF00000 ? 0x4D104D43LL : 0x4D104D42LL);
    int32_t high = static_cast<int32_t>(product >> 32);
    return high >> 20;
}

// The whole part of a non-negative double-double and what is left over, in [0, 1). The
// fraction keeps its low part: 0.5 plus a few units of 10^-18 is more than a half, and
// rounding to nearest must see it.
struct WholeAndFraction {
    DoubleDouble whole;
    DoubleDouble fraction;
};

WholeAndFraction SplitWhole(DoubleDouble x) {
    if (x.hi < kTwo52) {
        double whole = std::floor(x.hi);
        DoubleDouble rest = TwoSum(x.hi - whole, x.lo);  // x.hi - whole is exact
        if (rest.hi < 0 || (rest.hi == 0 && rest.lo < 0)) {
            whole -= 1;
            rest = AddDouble(rest, 1.0);
        } else if (rest.hi >= 1) {
            whole += 1;
            rest = AddDouble(rest, -1.0);
        }
        return {{whole, 0.0}, rest};
    }
    // x.hi is whole already; the low part holds the fraction.
    double low = std::floor(x.lo);
    return {Normalize(x.hi, low), {x.lo - low, 0.0}};
}

// Whether a whole double-double is odd. A part of 2^53 or more is a multiple of 2.
bool IsOdd(DoubleDouble whole) {
    double last = whole.lo != 0 ? whole.lo : whole.hi;
    if (std::fabs(last) >= kTwo52 * 2) return false;
    return (static_cast<int64_t>(last) & 1) != 0;
}

bool RoundsUp(Rounding rounding, DoubleDouble fraction, bool negative, DoubleDouble whole) {
    if (fraction.hi == 0 && fraction.lo == 0) return false;
    bool aboveHalf = fraction.hi > 0.5 || (fraction.hi == 0.5 && fraction.lo > 0);
    bool half = fraction.hi == 0.5 && fraction.lo == 0;
    switch (rounding) {
    case Rounding::Nearest: return aboveHalf || (half && IsOdd(whole));
    case Rounding::Zero: return false;
    case Rounding::Up: return !negative;  // the magnitude grows toward +infinity
    case Rounding::Down: return negative;
    default: return aboveHalf || half;
    }
}

// x >= y for non-negative normalized double-doubles.
bool NotLess(DoubleDouble x, DoubleDouble y) { return x.hi > y.hi || (x.hi == y.hi && x.lo >= y.lo); }

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Writes the low digits of v from `last` back to `first`, two at a time; the rest of
// v is returned.
uint64_t WriteDigits(uint64_t v, char*& last, char* first, int count) {
    for (; count >= 2 && last - 1 >= first; count -= 2) {
        unsigned pair = static_cast<unsigned>(v % 100) * 2;
        v /= 100;
        *last-- = kDigitPairs[pair + 1];
        *last-- = kDigitPairs[pair];
    }
    for (; count > 0 && last >= first; --count) {
        *last-- = static_cast<char>('0' + v % 10);
        v /= 10;
    }
    return v;
}

// Divides a 128-bit number, held as two halves, by 10^9 in place; the remainder.
uint32_t DivideByBillion(uint64_t& upper, uint64_t& lower) {
    constexpr uint64_t kBillion = 1000000000;
    uint32_t limbs[4] = {static_cast<uint32_t>(upper >> 32), static_cast<uint32_t>(upper),
                         static_cast<uint32_t>(lower >> 32), static_cast<uint32_t>(lower)};
    uint64_t remainder = 0;
    for (uint32_t& limb : limbs) {
        uint64_t current = (remainder << 32) | limb;
        limb = static_cast<uint32_t>(current / kBillion);
        remainder = current % kBillion;
    }
    upper = (static_cast<uint64_t>(limbs[0]) << 32) | limbs[1];
    lower = (static_cast<uint64_t>(limbs[2]) << 32) | limbs[3];
    return static_cast<uint32_t>(remainder);
}

// The digits of a whole double-double below 10^32, from `last` back to `first`. Above
// 2^63 the number is taken exactly into 128 bits: a quotient in doubles would pass 2^53
// and lose its last digits.
void cvtloop(double high, double low, char* last, char* first) {
    if (high < kTwo63) {
        WriteDigits(static_cast<uint64_t>(high) + static_cast<uint64_t>(static_cast<int64_t>(low)), last, first,
                    static_cast<int>(last - first + 1));
        return;
    }
    int exponent;
    uint64_t mantissa = static_cast<uint64_t>(std::ldexp(std::frexp(high, &exponent), 53));
    int shift = exponent - 53;  // at least 11, since high >= 2^63
    uint64_t upper = shift >= 64 ? mantissa << (shift - 64) : mantissa >> (64 - shift);
    uint64_t lower = shift >= 64 ? 0 : mantissa << shift;
    // low is whole and below an ulp of high, so it fits 64 bits with its sign.
    int64_t adjustment = static_cast<int64_t>(low);
    uint64_t sum = lower + static_cast<uint64_t>(adjustment);
    if (adjustment >= 0 && sum < lower) ++upper;
    if (adjustment < 0 && sum > lower) --upper;
    lower = sum;
    while (last >= first) {
        uint32_t group = DivideByBillion(upper, lower);
        WriteDigits(group, last, first, 9);
    }
}

int Invalid(char* buffer, int* decimalPoint, int* sign) {
    if (decimalPoint != nullptr) *decimalPoint = 0;
    if (sign != nullptr) *sign = 0;
    if (buffer != nullptr) buffer[0] = 0;
    errno = EINVAL;
    return -1;
}

int FillZeros(char* buffer, int bufferLength, int count) {
    if (count > bufferLength - 1) count = bufferLength - 1;
    if (count < 0) count = 0;
    std::memset(buffer, '0', static_cast<size_t>(count));
    buffer[count] = 0;
    return 0;
}

int NotFinite(double value, bool isNan, char* buffer, int bufferLength, int spelling) {
    const char* text;
    if (!isNan) {
        text = spelling == kSpellingUpper ? kSpellings[0] : kSpellings[3];
    } else {
        uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        bool quiet = (bits >> 51) & 1;
        text = spelling == kSpellingUpper ? kSpellings[quiet ? 2 : 1] : kSpellings[quiet ? 5 : 4];
    }
    int length = static_cast<int>(std::strlen(text));
    if (bufferLength <= (length > 3 ? length : 3)) {
        buffer[0] = 0;
        errno = EINVAL;
        return -1;
    }
    std::memcpy(buffer, text, static_cast<size_t>(length) + 1);
    return 0;
}

// The shared core of __cvt_r and _qcvt_r for a positive finite magnitude.
int ConvertMagnitude(DoubleDouble magnitude, bool pair, bool negative, int digits, int style, int computeLimit,
                     int* decimalPoint, char* buffer, int bufferLength, Rounding rounding) {
    int shift = 0;
    DoubleDouble value = magnitude;
    if (value.hi < kTinyLimit) {
        value = pair ? mf2x2(kTenTo46, value) : mf2x1(kTenTo46, value.hi);
        shift = kTinyShift;
    }
    int exponent = EstimateExponent(value.hi);
    DoubleDouble whole{0, 0};
    int count = 0;
    for (int attempt = 0; attempt < 4; ++attempt) {
        count = style != 0 ? computeLimit : exponent + 1 + digits - shift;
        if (count > computeLimit) count = computeLimit;
        if (count < 0) count = 0;
        int scale = count - (exponent + 1);
        DoubleDouble scaled;
        if (scale < 0 && scale >= -22) {
            // Dividing by an exact power of ten keeps an exact remainder: a whole result
            // comes out whole.
            double divisor = kPowersOfTen[-scale].hi;
            double quotient = value.hi / divisor;
            double remainder = std::fma(-quotient, divisor, value.hi);
            scaled = FastTwoSum(quotient, (remainder + value.lo) / divisor);
        } else if (pair || shift != 0) {
            scaled = mf2x2(pwr10(scale), value);
        } else {
            scaled = mf2x1(pwr10(scale), value.hi);
        }
        WholeAndFraction split = SplitWhole(scaled);
        whole = split.whole;
        if (RoundsUp(rounding, split.fraction, negative, whole)) whole = AddDouble(whole, 1.0);
        if (count < kMaxPairDigits + 1 && NotLess(whole, kPowersOfTen[count])) {
            ++exponent;  // the estimate was low, or the rounding carried
            continue;
        }
        if (style != 0 && count > 0 && whole.hi != 0 && !NotLess(whole, kPowersOfTen[count - 1])) {
            --exponent;  // an estimate one too high leaves a leading zero
            continue;
        }
        break;
    }
    *decimalPoint = exponent + 1 - shift;
    if (style == 0 && count == 0 && whole.hi >= 1) {
        // Less than one unit of the last place, rounded up to it: "1" at that place.
        count = 1;
        *decimalPoint = 1 - digits;
        whole = {1.0, 0.0};
    }
    if (style == 0) {
        if (whole.hi == 0) {
            *decimalPoint = 0;
            return FillZeros(buffer, bufferLength, digits);
        }
        int needed = digits > *decimalPoint + digits ? digits : *decimalPoint + digits;
        if (needed >= bufferLength) return -2;
    }
    if (count > bufferLength - 1) return -2;
    if (count > 0) cvtloop(whole.hi, whole.lo, buffer + count - 1, buffer);
    int total = style != 0 ? digits : *decimalPoint + digits;
    if (total > bufferLength - 1) total = bufferLength - 1;
    if (total < count) total = count;
    std::memset(buffer + count, '0', static_cast<size_t>(total - count));
    buffer[total] = 0;
    return 0;
}

}  // namespace

DoubleDouble pwr10(int n) {
    if (n >= 0) {
        if (n < 64) return kPowersOfTen[n];
        int k = n >> 6;
        if (k > 5) return kPowersOfTen64[6];
        return mf2x2(kPowersOfTen[n & 63], kPowersOfTen64[k]);
    }
    int m = -n;
    if (m < 64) return kNegativePowersOfTen[m];
    int k = m >> 6;
    if (k > 5) return kNegativePowersOfTen64[6];
    return mf2x2(kNegativePowersOfTen[m & 63], kNegativePowersOfTen64[k]);
}

int __cvt_r(double value, int digits, int* decimalPoint, int* sign, int exponentStyle, char* buffer, int bufferLength,
            int strict, int spelling, int roundKey) {
    if (buffer == nullptr || decimalPoint == nullptr || sign == nullptr || bufferLength < 2) {
        return Invalid(buffer, decimalPoint, sign);
    }
    buffer[0] = 0;
    if (digits < 0) digits = 0;
    if (exponentStyle != 0 && digits >= bufferLength) {
        if (strict) return Invalid(buffer, decimalPoint, sign);
        digits = bufferLength - 1;
    }
    *sign = std::signbit(value) ? 1 : 0;
    double magnitude = std::fabs(value);
    if (magnitude == 0) {
        *decimalPoint = 0;
        return FillZeros(buffer, bufferLength, digits);
    }
    if (!std::isfinite(magnitude)) return NotFinite(value, std::isnan(value), buffer, bufferLength, spelling);
    Rounding rounding = RoundingOf(roundKey);  // before the mode is set to nearest
    NearestRoundingScope nearest;
    int computeLimit = exponentStyle != 0 ? (digits < kMaxComputedDigits ? digits : kMaxComputedDigits)
                                          : kMaxComputedDigits;
    int result = ConvertMagnitude({magnitude, 0.0}, false, *sign != 0, digits, exponentStyle, computeLimit,
                                  decimalPoint, buffer, bufferLength, rounding);
    if (result == -2) return Invalid(buffer, decimalPoint, sign);
    return result;
}

int ubx_ecvt_r(double value, int digits, int* decimalPoint, int* sign, char* buffer, int bufferLength, int spelling,
               int roundKey) {
    return __cvt_r(value, digits, decimalPoint, sign, 1, buffer, bufferLength, 1, spelling, roundKey);
}

int ubx_fcvt_r(double value, int digits, int* decimalPoint, int* sign, char* buffer, int bufferLength, int spelling,
               int roundKey) {
    return __cvt_r(value, digits, decimalPoint, sign, 0, buffer, bufferLength, 1, spelling, roundKey);
}

namespace {
char sharedBuffer[670];
}

char* ubx_ecvt(double value, int digits, int* decimalPoint, int* sign, int spelling, int roundKey) {
    __cvt_r(value, digits, decimalPoint, sign, 1, sharedBuffer, sizeof sharedBuffer, 0, spelling, roundKey);
    return sharedBuffer;
}

char* ubx_fcvt(double value, int digits, int* decimalPoint, int* sign, int spelling, int roundKey) {
    __cvt_r(value, digits, decimalPoint, sign, 0, sharedBuffer, sizeof sharedBuffer, 0, spelling, roundKey);
    return sharedBuffer;
}

int _qcvt_r(DoubleDouble value, int digits, int* decimalPoint, int* sign, int exponentStyle, char* buffer,
            int bufferLength, int spelling, int roundKey) {
    if (buffer == nullptr || decimalPoint == nullptr || sign == nullptr || bufferLength < 2) {
        return Invalid(buffer, decimalPoint, sign);
    }
    buffer[0] = 0;
    if (digits < 0) digits = 0;
    if (digits > bufferLength - 2) digits = bufferLength - 2;
    // A pair whose low part is the larger is normalised first, unless that part is infinite.
    if (std::fabs(value.lo) > std::fabs(value.hi) && std::isfinite(value.lo)) value = TwoSum(value.hi, value.lo);
    *sign = std::signbit(value.hi) ? 1 : 0;
    if (!std::isfinite(value.hi) || !std::isfinite(value.lo)) {
        double odd = std::isfinite(value.hi) ? value.lo : value.hi;
        buffer[0] = 0;
        return NotFinite(odd, std::isnan(odd), buffer, bufferLength, spelling);
    }
    DoubleDouble magnitude = *sign ? Negate(value) : value;
    if (magnitude.hi == 0) {
        *decimalPoint = 0;
        return FillZeros(buffer, bufferLength, digits);
    }
    Rounding rounding = RoundingOf(roundKey);  // before the mode is set to nearest
    NearestRoundingScope nearest;
    int computeLimit = exponentStyle != 0 ? (digits < kMaxPairDigits ? digits : kMaxPairDigits) : kMaxPairDigits;
    int result = ConvertMagnitude(magnitude, true, *sign != 0, digits, exponentStyle, computeLimit, decimalPoint, buffer,
                                  bufferLength, rounding);
    if (result == -2) return Invalid(buffer, decimalPoint, sign);
    return result;
}

int ubx_qecvt_r(DoubleDouble value, int digits, int* decimalPoint, int* sign, char* buffer, int bufferLength,
                int spelling, int roundKey) {
    return _qcvt_r(value, digits, decimalPoint, sign, 1, buffer, bufferLength, spelling, roundKey);
}

int ubx_qfcvt_r(DoubleDouble value, int digits, int* decimalPoint, int* sign, char* buffer, int bufferLength,
                int spelling, int roundKey) {
    return _qcvt_r(value, digits, decimalPoint, sign, 0, buffer, bufferLength, spelling, roundKey);
}
