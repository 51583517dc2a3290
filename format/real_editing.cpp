// Real output editing: the text of one F, E, D, Q, EN or ES field from the digits of the
// decimal conversion. The routines build the field without its leading blanks (and without
// the trailing blanks of a G rule); the write path pads it to its width.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "convert/convert.h"
#include "core/context.h"
#include "format/edit_output.h"
#include "vrn90.h"

namespace {

constexpr int kDigitBuffer = 512;
constexpr int kSpelling2003 = 0x74;

struct RealItem {
    int32_t size;
    double value;       // sizes 4 and 8
    DoubleDouble pair;  // size 16
    bool finite;
};

RealItem ReadReal(const void* value, int32_t size) {
    RealItem item{size, 0.0, {0.0, 0.0}, true};
    if (size == 4) {
        float single;
        std::memcpy(&single, value, sizeof single);
        item.value = WidenKeepingNaNKind(single);
        item.finite = std::isfinite(single);
    } else if (size == 16) {
        std::memcpy(&item.pair, value, sizeof item.pair);
        item.finite = std::isfinite(item.pair.hi) && std::isfinite(item.pair.lo);
    } else {
        std::memcpy(&item.value, value, sizeof item.value);
        item.finite = std::isfinite(item.value);
    }
    return item;
}

struct Digits {
    char text[kDigitBuffer];
    int point;
    int sign;
};

// fixed: `count` digits behind the point; otherwise `count` significant digits.
bool Convert(const RealItem& item, int count, bool fixed, int spelling, int roundKey, Digits* digits) {
    if (count < 0) count = 0;
    int result;
    if (item.size == 16) {
        result = fixed ? ubx_qfcvt_r(item.pair, count, &digits->point, &digits->sign, digits->text, kDigitBuffer,
                                     spelling, roundKey)
                       : ubx_qecvt_r(item.pair, count, &digits->point, &digits->sign, digits->text, kDigitBuffer,
                                     spelling, roundKey);
        // The pair conversion limits its digits instead of failing: a longer field does not fit.
        if (result == 0 && item.finite && !fixed && count > kDigitBuffer - 2) result = -1;
    } else {
        result = fixed ? ubx_fcvt_r(item.value, count, &digits->point, &digits->sign, digits->text, kDigitBuffer,
                                    spelling, roundKey)
                       : ubx_ecvt_r(item.value, count, &digits->point, &digits->sign, digits->text, kDigitBuffer,
                                    spelling, roundKey);
    }
    return result >= 0;
}

int Spelling(const LocalContext* context) {
    switch (context->global->options.optNanInfOutput) {
    case VRN_KEY_OLD: return kSpellingUpper;
    case VRN_KEY_2003STD: return kSpelling2003;
    default: return (context->options & VRN_OPTION_REAL_OUTPUT_RULE) ? kSpelling2003 : kSpellingUpper;
    }
}

char PointCharacter(const FormatState* state) { return state->decimalComma ? ',' : '.'; }

bool NoLeadingZero(const LocalContext* context) { return (context->options & VRN_OPTION_NO_LEADING_ZERO) != 0; }

// The sign of a value whose digits are all zero: a negative one shows "-" only under the
// negative-zero rule, and never for the 16-byte kind.
char ZeroSign(const LocalContext* context, const FormatState* state, const Digits& digits, int32_t size) {
    if (digits.sign && (context->options & VRN_OPTION_NEGATIVE_ZERO_SIGN) && size != 16) return '-';
    return state->signPlus ? '+' : 0;
}

char NonzeroSign(const FormatState* state, const Digits& digits) {
    if (digits.sign) return '-';
    return state->signPlus ? '+' : 0;
}

const char* NotFinite(FormatState* state, const Digits& digits, int spelling, bool fDescriptor, char* buffer,
                      int32_t* length) {
    const char* text = digits.text;
    int32_t textLength = static_cast<int32_t>(std::strlen(text));
    bool nanText = text[0] == 'N';
    char sign = 0;
    if (digits.sign) sign = '-';
    else if (state->signPlus && !(spelling == kSpelling2003 && nanText)) sign = '+';
    int32_t signWidth = sign != 0 ? 1 : 0;
    if (fDescriptor && state->w == 0) state->w = textLength + signWidth;
    if (spelling == kSpelling2003 && nanText && state->w - signWidth < 6) textLength = 3;
    if (textLength + signWidth > state->w) return nullptr;
    char* p = buffer;
    if (sign != 0) *p++ = sign;
    std::memcpy(p, text, static_cast<size_t>(textLength));
    *length = textLength + signWidth;
    return buffer;
}

// The exponent part of E, D, Q, EN and ES without an exponent width: the letter, the sign
// and two digits, or from 100 on the sign and three digits in the letter's place.
char* PlainExponent(char* p, int exponent, char letter) {
    int magnitude = exponent < 0 ? -exponent : exponent;
    if (magnitude < 100) *p++ = letter;
    *p++ = exponent < 0 ? '-' : '+';
    if (magnitude >= 100) {
        *p++ = static_cast<char>('0' + magnitude / 100);
        magnitude %= 100;
    }
    *p++ = static_cast<char>('0' + magnitude / 10);
    *p++ = static_cast<char>('0' + magnitude % 10);
    return p;
}

int DecimalLength(int value) {
    int count = 1;
    while (value >= 10) {
        value /= 10;
        ++count;
    }
    return count;
}

// With an exponent width: the letter, the sign and exactly `width` digits; null when the
// exponent needs more.
char* WideExponent(char* p, int exponent, char letter, int32_t width) {
    int magnitude = exponent < 0 ? -exponent : exponent;
    if (DecimalLength(magnitude) > width) return nullptr;
    *p++ = letter;
    *p++ = exponent < 0 ? '-' : '+';
    for (int32_t i = width - 1; i >= 0; --i) {
        p[i] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    }
    return p + width;
}

// The room a field needs beyond the digit buffer: sign, zeros, point and exponent.
bool FitsBuffer(int64_t length) { return length <= kRealFieldBytes; }

// E, D and Q, with or without an exponent width (exponentWidth 0).
const char* ExponentForm(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                         int32_t* length, char letter, int32_t exponentWidth) {
    RealItem item = ReadReal(value, size);
    int spelling = Spelling(context);
    int32_t d = state->d;
    int32_t scale = state->scale;
    int32_t count;
    if (scale <= 0) {
        if (scale < -d) return nullptr;
        count = d + scale;
    } else {
        if (scale >= d + 2) return nullptr;
        count = d + 1;
    }
    // A count of 0 (scale -d) shows no digits; one digit still gives the exponent.
    Digits digits;
    if (!Convert(item, count > 0 ? count : 1, false, spelling, state->roundMode, &digits)) return nullptr;
    if (!item.finite) return NotFinite(state, digits, spelling, false, buffer, length);
    bool zero = digits.text[0] == '0';
    char sign = zero ? ZeroSign(context, state, digits, size) : NonzeroSign(state, digits);
    int32_t signWidth = sign != 0 ? 1 : 0;
    int32_t before = scale > 0 ? scale : 0;
    int32_t zerosAfter = scale < 0 ? -scale : 0;
    int64_t needed = static_cast<int64_t>(count) + signWidth + zerosAfter + (exponentWidth > 0 ? 3 + exponentWidth : 5);
    if (needed > state->w || !FitsBuffer(needed + 1)) return nullptr;
    bool leadingZero = before == 0 && state->w > needed && !NoLeadingZero(context);
    char* p = buffer;
    if (sign != 0) *p++ = sign;
    if (leadingZero) *p++ = '0';
    std::memcpy(p, digits.text, static_cast<size_t>(before));
    p += before;
    *p++ = PointCharacter(state);
    std::memset(p, '0', static_cast<size_t>(zerosAfter));
    p += zerosAfter;
    std::memcpy(p, digits.text + before, static_cast<size_t>(count - before));
    p += count - before;
    int exponent = zero ? 0 : digits.point - scale;
    if (exponentWidth > 0) {
        p = WideExponent(p, exponent, letter, exponentWidth);
        if (p == nullptr) return nullptr;
    } else {
        p = PlainExponent(p, exponent, letter);
    }
    *length = static_cast<int32_t>(p - buffer);
    return buffer;
}

// The zero of EN and ES: "0", the point, d zeros and a zero exponent.
const char* EngineeringZero(LocalContext* context, char* buffer, FormatState* state, const Digits& digits,
                            int32_t size, int32_t* length, int32_t exponentWidth) {
    char sign = ZeroSign(context, state, digits, size);
    int32_t signWidth = sign != 0 ? 1 : 0;
    int64_t needed = static_cast<int64_t>(state->d) + signWidth + (exponentWidth > 0 ? 4 + exponentWidth : 6);
    if (needed > state->w || !FitsBuffer(needed)) return nullptr;
    char* p = buffer;
    if (sign != 0) *p++ = sign;
    *p++ = '0';
    *p++ = PointCharacter(state);
    std::memset(p, '0', static_cast<size_t>(state->d));
    p += state->d;
    p = exponentWidth > 0 ? WideExponent(p, 0, 'E', exponentWidth) : PlainExponent(p, 0, 'E');
    *length = static_cast<int32_t>(p - buffer);
    return buffer;
}

// EN, and ES as its special case of one digit in front of the point.
const char* Engineering(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                        int32_t* length, int32_t exponentWidth, bool scientific) {
    RealItem item = ReadReal(value, size);
    int spelling = Spelling(context);
    int32_t d = state->d;
    Digits digits;
    if (!Convert(item, scientific ? d + 1 : d + 3, false, spelling, state->roundMode, &digits)) return nullptr;
    if (!item.finite) return NotFinite(state, digits, spelling, false, buffer, length);
    if (digits.text[0] == '0') return EngineeringZero(context, buffer, state, digits, size, length, exponentWidth);
    int point = digits.point;
    int k = 1;
    int carried = 0;
    if (!scientific) {
        k = ((point % 3) + 3) % 3;
        if (k == 0) k = 3;
    }
    if (!scientific && k != 3) {
        // Rounding at k + d digits can carry into a new leading digit.
        if (!Convert(item, d + k, false, spelling, state->roundMode, &digits)) return nullptr;
        carried = digits.point != point ? 1 : 0;
    }
    char sign = NonzeroSign(state, digits);
    int32_t signWidth = sign != 0 ? 1 : 0;
    int64_t needed = static_cast<int64_t>(d) + k + carried + signWidth + (exponentWidth > 0 ? 3 + exponentWidth : 5);
    if (needed > state->w || !FitsBuffer(needed)) return nullptr;
    char* p = buffer;
    if (sign != 0) *p++ = sign;
    std::memcpy(p, digits.text, static_cast<size_t>(k));
    p += k;
    if (carried) *p++ = '0';
    *p++ = PointCharacter(state);
    std::memcpy(p, digits.text + k, static_cast<size_t>(d));
    p += d;
    int exponent = digits.point - (k + carried);
    p = exponentWidth > 0 ? WideExponent(p, exponent, 'E', exponentWidth) : PlainExponent(p, exponent, 'E');
    if (p == nullptr) return nullptr;
    *length = static_cast<int32_t>(p - buffer);
    return buffer;
}

}  // namespace

const char* FmtRToF(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                    int32_t* length) {
    RealItem item = ReadReal(value, size);
    int spelling = Spelling(context);
    int32_t d = state->d;
    Digits digits;
    if (!Convert(item, d + state->scale, true, spelling, state->roundMode, &digits)) return nullptr;
    if (!item.finite) return NotFinite(state, digits, spelling, true, buffer, length);
    const char* text = digits.text;
    while (*text == '0') ++text;
    bool widthGiven = state->w != 0 || state->generic;
    char* p = buffer;
    if (*text == 0) {
        char sign = ZeroSign(context, state, digits, size);
        int64_t needed = static_cast<int64_t>(d) + (sign != 0 ? 1 : 0) + 1 + (d == 0 ? 1 : 0);
        if (!FitsBuffer(needed + 1)) return nullptr;
        bool leadingZero = d == 0;
        if (!widthGiven) {
            state->w = static_cast<int32_t>(needed);
        } else {
            if (needed > state->w) return nullptr;
            if (d != 0) leadingZero = !NoLeadingZero(context) && state->w > needed;
        }
        if (sign != 0) *p++ = sign;
        if (leadingZero) *p++ = '0';
        *p++ = PointCharacter(state);
        std::memset(p, '0', static_cast<size_t>(d));
        p += d;
        *length = static_cast<int32_t>(p - buffer);
        return buffer;
    }
    int32_t skipped = static_cast<int32_t>(text - digits.text);
    int32_t before = digits.point - skipped + state->scale;  // may be zero or negative
    char sign = NonzeroSign(state, digits);
    int64_t needed = static_cast<int64_t>(d) + (before > 0 ? before : 0) + (sign != 0 ? 1 : 0) + 1;
    if (!FitsBuffer(needed + 1)) return nullptr;
    bool leadingZero = false;
    if (!widthGiven) {
        state->w = static_cast<int32_t>(needed);
    } else {
        if (needed > state->w) return nullptr;
        leadingZero = before <= 0 && !NoLeadingZero(context) && state->w > needed;
    }
    if (sign != 0) *p++ = sign;
    if (leadingZero) *p++ = '0';
    if (before > 0) {
        std::memcpy(p, text, static_cast<size_t>(before));
        p += before;
        text += before;
    }
    *p++ = PointCharacter(state);
    int32_t zeros = before < 0 ? -before : 0;
    if (zeros > d) zeros = d;
    std::memset(p, '0', static_cast<size_t>(zeros));
    p += zeros;
    int32_t rest = d - zeros;
    std::memcpy(p, text, static_cast<size_t>(rest));
    p += rest;
    *length = static_cast<int32_t>(p - buffer);
    return buffer;
}

const char* FmtRToQED(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                      int32_t* length, char letter) {
    return ExponentForm(context, value, size, buffer, state, length, letter, 0);
}

const char* FmtRToEExp(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                       int32_t* length, char letter) {
    return ExponentForm(context, value, size, buffer, state, length, letter, state->e > 0 ? state->e : 1);
}

const char* FmtRToEN(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                     int32_t* length) {
    return Engineering(context, value, size, buffer, state, length, 0, false);
}

const char* FmtRToENExp(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                        int32_t* length) {
    return Engineering(context, value, size, buffer, state, length, state->e > 0 ? state->e : 1, false);
}

const char* FmtRToES(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                     int32_t* length) {
    return Engineering(context, value, size, buffer, state, length, 0, true);
}

const char* FmtRToESExp(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                        int32_t* length) {
    return Engineering(context, value, size, buffer, state, length, state->e > 0 ? state->e : 1, true);
}
