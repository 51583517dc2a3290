// Real output editing: the text of one F, E, D, Q, EN or ES field from the digits of the
// decimal conversion. The routines build the field without its leading blanks (and without
// the trailing blanks of a G rule); the write path pads it to its width.
//
// A conversion computes some thirty digits and every digit behind them is "0". The routines
// take from its text only the digits it gave and write the rest as runs of zeros, so that no
// request, however long, reads past the text or needs a text of the field's own length.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

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

// More digits than either conversion computes: asking for more changes nothing but the
// number of trailing zeros.
constexpr int kSignificantDigits = 40;
constexpr int32_t kShortZeroRun = 32;
constexpr char kZeros[kShortZeroRun + 1] = "00000000000000000000000000000000";

struct Digits {
    char text[kDigitBuffer];
    int point;
    int sign;
    int32_t count;  // the digits given, less trailing zeros: every digit from here on is "0"
};

// A `count` long run of the digits from `from` on, zeros where the conversion gave none.
void PutDigits(RealField* field, const Digits& digits, int64_t from, int64_t count) {
    int64_t given = from < digits.count ? digits.count - from : 0;
    if (given > count) given = count;
    if (given > 0) field->Put(digits.text + from, static_cast<int32_t>(given));
    field->PutZeros(count - given);
}

int SignificantConversion(const RealItem& item, int count, int spelling, int roundKey, Digits* digits) {
    return item.size == 16 ? ubx_qecvt_r(item.pair, count, &digits->point, &digits->sign, digits->text, kDigitBuffer,
                                         spelling, roundKey)
                           : ubx_ecvt_r(item.value, count, &digits->point, &digits->sign, digits->text, kDigitBuffer,
                                        spelling, roundKey);
}

int FixedConversion(const RealItem& item, int count, int spelling, int roundKey, Digits* digits) {
    return item.size == 16 ? ubx_qfcvt_r(item.pair, count, &digits->point, &digits->sign, digits->text, kDigitBuffer,
                                         spelling, roundKey)
                           : ubx_fcvt_r(item.value, count, &digits->point, &digits->sign, digits->text, kDigitBuffer,
                                        spelling, roundKey);
}

// fixed: `count` digits behind the point; otherwise `count` significant digits.
bool Convert(const RealItem& item, int64_t count, bool fixed, int spelling, int roundKey, Digits* digits) {
    if (count < 0) count = 0;
    int result = -1;
    if (fixed && count < kDigitBuffer) result = FixedConversion(item, static_cast<int>(count), spelling, roundKey, digits);
    if (!fixed || (result < 0 && item.finite)) {
        // A fixed text that does not fit the buffer has its last place hundreds of digits
        // behind the first significant one, far past the computed digits, so rounding there
        // leaves them as they are: they are the significant digits themselves.
        int wanted = count < kSignificantDigits ? static_cast<int>(count) : kSignificantDigits;
        result = SignificantConversion(item, wanted, spelling, roundKey, digits);
    }
    if (result < 0) return false;
    int32_t length = static_cast<int32_t>(std::strlen(digits->text));
    if (item.finite) {
        while (length > 0 && digits->text[length - 1] == '0') --length;
    }
    digits->count = length;
    return true;
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

void PutSign(RealField* field, char sign) {
    if (sign != 0) field->Put(sign);
}

bool NotFinite(FormatState* state, const Digits& digits, int spelling, bool fDescriptor, RealField* field) {
    const char* text = digits.text;
    int32_t textLength = static_cast<int32_t>(std::strlen(text));
    bool nanText = text[0] == 'N';
    char sign = 0;
    if (digits.sign) sign = '-';
    else if (state->signPlus && !(spelling == kSpelling2003 && nanText)) sign = '+';
    int32_t signWidth = sign != 0 ? 1 : 0;
    if (fDescriptor && state->w == 0) state->w = textLength + signWidth;
    if (spelling == kSpelling2003 && nanText && state->w - signWidth < 6) textLength = 3;
    if (textLength + signWidth > state->w) return false;
    PutSign(field, sign);
    field->Put(text, textLength);
    return true;
}

int DecimalLength(int value) {
    int count = 1;
    while (value >= 10) {
        value /= 10;
        ++count;
    }
    return count;
}

// The exponent part of E, D, Q, EN and ES without an exponent width: the letter, the sign
// and two digits, or from 100 on the sign and three digits in the letter's place.
void PutPlainExponent(RealField* field, int exponent, char letter) {
    char text[5];
    char* p = text;
    int magnitude = exponent < 0 ? -exponent : exponent;
    if (magnitude < 100) *p++ = letter;
    *p++ = exponent < 0 ? '-' : '+';
    if (magnitude >= 100) {
        *p++ = static_cast<char>('0' + magnitude / 100);
        magnitude %= 100;
    }
    *p++ = static_cast<char>('0' + magnitude / 10);
    *p++ = static_cast<char>('0' + magnitude % 10);
    field->Put(text, static_cast<int32_t>(p - text));
}

// With an exponent width: the letter, the sign and exactly `width` digits; false when the
// exponent needs more.
bool PutWideExponent(RealField* field, int exponent, char letter, int32_t width) {
    int magnitude = exponent < 0 ? -exponent : exponent;
    int32_t length = DecimalLength(magnitude);
    if (length > width) return false;
    char sign[2] = {letter, exponent < 0 ? '-' : '+'};
    field->Put(sign, 2);
    field->PutZeros(width - length);
    char text[12];
    for (int32_t i = length - 1; i >= 0; --i) {
        text[i] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    }
    field->Put(text, length);
    return true;
}

bool PutExponent(RealField* field, int exponent, char letter, int32_t exponentWidth) {
    if (exponentWidth > 0) return PutWideExponent(field, exponent, letter, exponentWidth);
    PutPlainExponent(field, exponent, letter);
    return true;
}

// The room of the exponent part: letter, sign and digits.
int64_t ExponentRoom(int32_t exponentWidth) { return exponentWidth > 0 ? 2 + int64_t{exponentWidth} : 4; }

// E, D and Q, with or without an exponent width (exponentWidth 0).
bool ExponentForm(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state,
                  char letter, int32_t exponentWidth) {
    RealItem item = ReadReal(value, size);
    int spelling = Spelling(context);
    int64_t d = state->d;
    int64_t scale = state->scale;
    int64_t count;
    if (scale <= 0) {
        if (scale < -d) return false;
        count = d + scale;
    } else {
        if (scale >= d + 2) return false;
        count = d + 1;
    }
    // A count of 0 (scale -d) shows no digits; one digit still gives the exponent.
    Digits digits;
    if (!Convert(item, count > 0 ? count : 1, false, spelling, state->roundMode, &digits)) return false;
    if (!item.finite) return NotFinite(state, digits, spelling, false, field);
    bool zero = digits.count == 0;
    char sign = zero ? ZeroSign(context, state, digits, size) : NonzeroSign(state, digits);
    int64_t before = scale > 0 ? scale : 0;
    int64_t zerosAfter = scale < 0 ? -scale : 0;
    int64_t needed = count + (sign != 0 ? 1 : 0) + zerosAfter + 1 + ExponentRoom(exponentWidth);
    if (needed > state->w) return false;
    bool leadingZero = before == 0 && state->w > needed && !NoLeadingZero(context);
    PutSign(field, sign);
    if (leadingZero) field->Put('0');
    PutDigits(field, digits, 0, before);
    field->Put(PointCharacter(state));
    field->PutZeros(zerosAfter);
    PutDigits(field, digits, before, count - before);
    int exponent = zero ? 0 : digits.point - static_cast<int>(scale);
    return PutExponent(field, exponent, letter, exponentWidth) && !field->overflow;
}

// The zero of EN and ES: "0", the point, d zeros and a zero exponent.
bool EngineeringZero(LocalContext* context, RealField* field, FormatState* state, const Digits& digits, int32_t size,
                     int32_t exponentWidth) {
    char sign = ZeroSign(context, state, digits, size);
    int64_t needed = int64_t{state->d} + (sign != 0 ? 1 : 0) + 2 + ExponentRoom(exponentWidth);
    if (needed > state->w) return false;
    PutSign(field, sign);
    field->Put('0');
    field->Put(PointCharacter(state));
    field->PutZeros(state->d);
    return PutExponent(field, 0, 'E', exponentWidth) && !field->overflow;
}

// EN, and ES as its special case of one digit in front of the point.
bool Engineering(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state,
                 int32_t exponentWidth, bool scientific) {
    RealItem item = ReadReal(value, size);
    int spelling = Spelling(context);
    int64_t d = state->d;
    Digits digits;
    if (!Convert(item, scientific ? d + 1 : d + 3, false, spelling, state->roundMode, &digits)) return false;
    if (!item.finite) return NotFinite(state, digits, spelling, false, field);
    if (digits.count == 0) return EngineeringZero(context, field, state, digits, size, exponentWidth);
    int point = digits.point;
    int k = 1;
    int carried = 0;
    if (!scientific) {
        k = ((point % 3) + 3) % 3;
        if (k == 0) k = 3;
    }
    if (!scientific && k != 3) {
        // Rounding at k + d digits can carry into a new leading digit.
        if (!Convert(item, d + k, false, spelling, state->roundMode, &digits)) return false;
        carried = digits.point != point ? 1 : 0;
    }
    char sign = NonzeroSign(state, digits);
    int64_t needed = d + k + carried + (sign != 0 ? 1 : 0) + 1 + ExponentRoom(exponentWidth);
    if (needed > state->w) return false;
    PutSign(field, sign);
    PutDigits(field, digits, 0, k);
    if (carried) field->Put('0');
    field->Put(PointCharacter(state));
    PutDigits(field, digits, k, d);
    return PutExponent(field, digits.point - (k + carried), 'E', exponentWidth) && !field->overflow;
}

// The width F editing gives itself under a w of 0; false when no field could be that long.
bool TakeWidth(FormatState* state, int64_t needed) {
    if (needed > std::numeric_limits<int32_t>::max()) return false;
    state->w = static_cast<int32_t>(needed);
    return true;
}

}  // namespace

void RealField::Put(const char* characters, int32_t count) {
    if (count <= 0) return;
    if (used + count > kTextBytes) {
        overflow = true;
        return;
    }
    if (pieceCount == 0 || pieces[pieceCount - 1].zerosAfter != 0) {
        if (pieceCount == kPieces) {
            overflow = true;
            return;
        }
        pieces[pieceCount++] = {used, 0, 0};
    }
    std::memcpy(text + used, characters, static_cast<size_t>(count));
    used += count;
    pieces[pieceCount - 1].length += count;
    length += count;
}

void RealField::PutZeros(int64_t count) {
    if (count <= 0) return;
    bool inRun = pieceCount > 0 && pieces[pieceCount - 1].zerosAfter != 0;
    // A short run is text, so that an ordinary field stays one piece.
    if (!inRun && count <= kShortZeroRun && used + count <= kTextBytes) {
        Put(kZeros, static_cast<int32_t>(count));
        return;
    }
    if (pieceCount == 0) pieces[pieceCount++] = {used, 0, 0};
    pieces[pieceCount - 1].zerosAfter += count;
    length += count;
}

const char* RealField::Plain(int32_t* plainLength) const {
    if (pieceCount > 1 || (pieceCount == 1 && pieces[0].zerosAfter != 0)) return nullptr;
    *plainLength = used;
    return text;
}

bool FmtRToF(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state) {
    RealItem item = ReadReal(value, size);
    int spelling = Spelling(context);
    int64_t d = state->d;
    Digits digits;
    if (!Convert(item, d + state->scale, true, spelling, state->roundMode, &digits)) return false;
    if (!item.finite) return NotFinite(state, digits, spelling, true, field);
    int32_t skipped = 0;
    while (skipped < digits.count && digits.text[skipped] == '0') ++skipped;
    bool widthGiven = state->w != 0 || state->generic;
    if (skipped == digits.count) {
        char sign = ZeroSign(context, state, digits, size);
        int64_t needed = d + (sign != 0 ? 1 : 0) + 1 + (d == 0 ? 1 : 0);
        bool leadingZero = d == 0;
        if (!widthGiven) {
            if (!TakeWidth(state, needed)) return false;
        } else {
            if (needed > state->w) return false;
            if (d != 0) leadingZero = !NoLeadingZero(context) && state->w > needed;
        }
        PutSign(field, sign);
        if (leadingZero) field->Put('0');
        field->Put(PointCharacter(state));
        field->PutZeros(d);
        return !field->overflow;
    }
    int64_t before = int64_t{digits.point} - skipped + state->scale;  // may be zero or negative
    char sign = NonzeroSign(state, digits);
    int64_t needed = d + (before > 0 ? before : 0) + (sign != 0 ? 1 : 0) + 1;
    bool leadingZero = false;
    if (!widthGiven) {
        if (!TakeWidth(state, needed)) return false;
    } else {
        if (needed > state->w) return false;
        leadingZero = before <= 0 && !NoLeadingZero(context) && state->w > needed;
    }
    PutSign(field, sign);
    if (leadingZero) field->Put('0');
    int64_t from = skipped;
    if (before > 0) {
        PutDigits(field, digits, from, before);
        from += before;
    }
    field->Put(PointCharacter(state));
    int64_t zeros = before < 0 ? -before : 0;
    if (zeros > d) zeros = d;
    field->PutZeros(zeros);
    PutDigits(field, digits, from, d - zeros);
    return !field->overflow;
}

bool FmtRToQED(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state,
               char letter) {
    return ExponentForm(context, value, size, field, state, letter, 0);
}

bool FmtRToEExp(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state,
                char letter) {
    return ExponentForm(context, value, size, field, state, letter, state->e > 0 ? state->e : 1);
}

bool FmtRToEN(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state) {
    return Engineering(context, value, size, field, state, 0, false);
}

bool FmtRToENExp(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state) {
    return Engineering(context, value, size, field, state, state->e > 0 ? state->e : 1, false);
}

bool FmtRToES(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state) {
    return Engineering(context, value, size, field, state, 0, true);
}

bool FmtRToESExp(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state) {
    return Engineering(context, value, size, field, state, state->e > 0 ? state->e : 1, true);
}
