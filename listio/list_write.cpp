// List-directed output: every value at its natural length, one separator between values,
// records split at the record length, and a blank at the start of every record.
#include <cmath>
#include <cstdint>
#include <cstring>

#include "convert/convert.h"
#include "convert/decimal_digits.h"
#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "listio/listio.h"
#include "transport/record_window.h"
#include "transport/transport.h"
#include "vrn90.h"

namespace {

constexpr int kScratchSize = 2048;
constexpr int kConversionBuffer = 512;
constexpr char kLogicalVals[2] = {'F', 'T'};

bool IsInternal(const LocalContext* context) { return context->unit == nullptr; }
int32_t SpaceLeft(const LocalContext* context) { return context->recordMax - context->column; }

// A value that can never be placed: class 2, kind 3. The answer 2 stops the statement.
void ReportUnplaceable(LocalContext* context, int32_t internalMessage, int32_t internalIostat) {
    bool internal = IsInternal(context);
    int32_t message = internal ? internalMessage : 158;
    int32_t iostat = internal ? internalIostat : 4;
    if (ErrorHandler(kClassConversion, kKindError, message, iostat, 0u) == kRecover) context->itemsStopped = 1;
}

bool NewRecord(LocalContext* context, bool withBlank) { return LdNewRecord(context, withBlank); }

bool Write(LocalContext* context, const char* bytes, int32_t count) {
    if (count <= 0) return true;
    if (IOWrite(context, bytes, count) == count) return true;
    context->itemsStopped = 1;
    return false;
}

void WriteSeparator(LocalContext* context) {
    char separator = context->ldSeparator;
    if (separator == ';' || separator == ',') {
        const char pair[2] = {separator, ' '};
        Write(context, pair, 2);
    } else {
        Write(context, &separator, 1);
    }
}

void SeparatorStep(LocalContext* context) {
    if (context->ld_first_item) {
        context->ld_first_item = 0;
        return;
    }
    if (context->ld_skip_separator) {
        context->ld_skip_separator = 0;
        return;
    }
    if (context->column < context->recordMax) WriteSeparator(context);
}

// Places a number's text of `length` bytes: on this record if it fits, else on the next.
void Place(LocalContext* context, const char* text, int32_t length) {
    if (length >= context->recordMax) {
        ReportUnplaceable(context, 158, 5);
        context->ld_last_was_char = 0;
        return;
    }
    if (length > SpaceLeft(context) && !NewRecord(context, true)) return;
    if (Write(context, text, length)) context->ld_last_was_char = 0;
}

// The separator and the value in one write, when the plain separator is due and both fit
// this record: the same text as the separator step followed by Place. `text` has a byte
// of room in front. false when the general path must run.
bool PlaceWithSeparator(LocalContext* context, char* text, int32_t length) {
    if (context->ld_first_item || context->ld_skip_separator || context->ldSeparator != ' ') return false;
    if (length + 1 > context->recordMax - context->column || length >= context->recordMax) return false;
    text[-1] = ' ';
    if (Write(context, text - 1, length + 1)) context->ld_last_was_char = 0;
    return true;
}

int64_t IntegerOfKind(const void* value, int32_t kind) {
    switch (kind) {
    case 1: return *static_cast<const int8_t*>(value);
    case 2: return *static_cast<const int16_t*>(value);
    case 4: return *static_cast<const int32_t*>(value);
    default: {
        int64_t wide;
        std::memcpy(&wide, value, sizeof wide);
        return wide;
    }
    }
}

void PlaceInteger(LocalContext* context, int64_t value) {
    uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    char sign = value < 0 ? '-' : context->modeSign == VRN_KEY_PLUS ? '+' : 0;
    // The common case: the plain separator is due and the field fits this record, so the
    // blank and the digits go straight into the unit's buffer, as PlaceWithSeparator would
    // write them.
    if (!context->ld_first_item && !context->ld_skip_separator && context->ldSeparator == ' ') {
        int32_t length = decimal_digits::Count(magnitude) + (sign != 0 ? 1 : 0);
        char* out = length < context->recordMax ? IOReserve(context, length + 1) : nullptr;
        if (out != nullptr) {
            out[0] = ' ';
            out[1] = sign;  // overwritten by the first digit when there is no sign
            decimal_digits::Write64(magnitude, out + 1 + length);
            IOCommit(context, length + 1);
            context->ld_last_was_char = 0;
            return;
        }
    }
    char buffer[32];
    char* end = buffer + sizeof buffer;
    char* start = decimal_digits::Write64(magnitude, end);
    if (sign != 0) *--start = sign;
    int32_t length = static_cast<int32_t>(end - start);
    if (PlaceWithSeparator(context, start, length)) return;
    SeparatorStep(context);
    if (!context->itemsStopped) Place(context, start, length);
}

// The spelling of NaN and infinity: OLD upper case, 2003STD mixed case.
bool Style2003(const LocalContext* context) {
    uint32_t style = context->global->options.optNanInfOutput;
    if (style == VRN_KEY_DEFAULT) return (context->options & VRN_OPTION_REAL_OUTPUT_RULE) != 0;
    return style == VRN_KEY_2003STD;
}

struct RealKind {
    int digits;         // D, the significant digits
    bool wideExponent;  // 3 exponent digits for a magnitude of 100 or more
    bool signedZero;    // a negative zero literal exists
};

// The layout shared by the three kinds, from the conversion's digits and point.
int32_t LayoutReal(LocalContext* context, const RealKind& kind, const char* digits, int point, bool negative,
                   bool notFinite, bool plus, bool comma, char* out) {
    char* p = out;
    char symbol = comma ? ',' : '.';
    if (notFinite) {
        bool style2003 = Style2003(context);
        if (negative) {
            *p++ = '-';
        } else if (plus && !(style2003 && digits[0] == 'N')) {
            *p++ = '+';
        }
        size_t length = std::strlen(digits);
        std::memcpy(p, digits, length);
        return static_cast<int32_t>(p - out + static_cast<int32_t>(length));
    }
    bool zero = point == 0 && digits[0] == '0';
    if (zero) {
        if (negative && kind.signedZero && (context->options & VRN_OPTION_NEGATIVE_ZERO_SIGN)) {
            *p++ = '-';
        } else if (plus) {
            *p++ = '+';
        }
        *p++ = '0';
        *p++ = symbol;
        std::memset(p, '0', static_cast<size_t>(kind.digits));
        p += kind.digits;
        std::memcpy(p, "E+00", 4);
        return static_cast<int32_t>(p + 4 - out);
    }
    if (negative) *p++ = '-';
    else if (plus) *p++ = '+';
    if (point > 0 && point < kind.digits) {
        std::memcpy(p, digits, static_cast<size_t>(point));
        p += point;
        *p++ = symbol;
        std::memcpy(p, digits + point, static_cast<size_t>(kind.digits - point));
        return static_cast<int32_t>(p + (kind.digits - point) - out);
    }
    *p++ = '0';
    *p++ = symbol;
    std::memcpy(p, digits, static_cast<size_t>(kind.digits));
    p += kind.digits;
    if (point == 0) return static_cast<int32_t>(p - out);
    *p++ = 'E';
    *p++ = point < 0 ? '-' : '+';
    int magnitude = point < 0 ? -point : point;
    if (kind.wideExponent && magnitude >= 100) *p++ = static_cast<char>('0' + magnitude / 100);
    *p++ = static_cast<char>('0' + magnitude / 10 % 10);
    *p++ = static_cast<char>('0' + magnitude % 10);
    return static_cast<int32_t>(p - out);
}

int Spelling(const LocalContext* context) { return Style2003(context) ? 0 : kSpellingUpper; }

}  // namespace

int32_t LdNlR4ToDec(LocalContext* context, const void* value, char* out, bool plus, bool comma) {
    float single;
    std::memcpy(&single, value, sizeof single);
    char digits[kConversionBuffer];
    int point, sign;
    ubx_ecvt_r(WidenKeepingNaNKind(single), 10, &point, &sign, digits, sizeof digits, Spelling(context),
               static_cast<int>(context->modeRound));
    return LayoutReal(context, {10, false, true}, digits, point, sign != 0, !std::isfinite(single), plus, comma, out);
}

int32_t LdNlR8ToDec(LocalContext* context, const void* value, char* out, bool plus, bool comma) {
    double number;
    std::memcpy(&number, value, sizeof number);
    char digits[kConversionBuffer];
    int point, sign;
    ubx_ecvt_r(number, 18, &point, &sign, digits, sizeof digits, Spelling(context), static_cast<int>(context->modeRound));
    return LayoutReal(context, {18, true, true}, digits, point, sign != 0, !std::isfinite(number), plus, comma, out);
}

int32_t LdNlR16ToDec(LocalContext* context, const void* value, char* out, bool plus, bool comma) {
    DoubleDouble pair;
    std::memcpy(&pair, value, sizeof pair);
    char digits[kConversionBuffer];
    int point, sign;
    ubx_qecvt_r(pair, 35, &point, &sign, digits, sizeof digits, Spelling(context), static_cast<int>(context->modeRound));
    bool notFinite = !std::isfinite(pair.hi) || !std::isfinite(pair.lo);
    // The 16-byte kind has no negative zero literal: -0 prints like +0.
    return LayoutReal(context, {35, true, false}, digits, point, sign != 0 && !(digits[0] == '0' && point == 0),
                      notFinite, plus, comma, out);
}

namespace {

int32_t RealText(LocalContext* context, const void* value, int32_t kind, char* out) {
    bool plus = context->modeSign == VRN_KEY_PLUS;
    bool comma = context->modeDecimal == VRN_KEY_COMMA;
    switch (kind) {
    case 4: return LdNlR4ToDec(context, value, out, plus, comma);
    case 8: return LdNlR8ToDec(context, value, out, plus, comma);
    default: return LdNlR16ToDec(context, value, out, plus, comma);
    }
}


void WriteUndelimited(LocalContext* context, const char* text, int32_t length) {
    if (context->ld_first_item || !context->ld_last_was_char || context->ld_in_namelist) SeparatorStep(context);
    if (context->itemsStopped) return;
    if (context->recordMax == 1) {
        bool internal = IsInternal(context);
        ErrorHandler(kClassConversion, kKindError, internal ? 9 : 158, internal ? 9 : 4, 0u);
        return;
    }
    // Straight from the caller's storage; every continuation record begins with a blank.
    while (length > SpaceLeft(context)) {
        int32_t piece = SpaceLeft(context);
        if (!Write(context, text, piece) || !NewRecord(context, true)) return;
        text += piece;
        length -= piece;
    }
    if (Write(context, text, length)) context->ld_last_was_char = 1;
}

// Writes the scratch buffer's text and empties it.
bool Drain(LocalContext* context, char* buffer, int32_t* used) {
    bool ok = Write(context, buffer, *used);
    *used = 0;
    return ok;
}

void WriteDelimited(LocalContext* context, const char* text, int32_t length) {
    SeparatorStep(context);
    if (context->itemsStopped) return;
    char buffer[kScratchSize];
    int32_t used = 0;
    char delimiter = context->ld_delim_char;
    bool blankAfterBreak = context->ld_in_namelist != 0;
    auto breakRecord = [&]() { return Drain(context, buffer, &used) && NewRecord(context, blankAfterBreak); };
    // A delimited value continues in column 1 of the next record: a blank there would
    // become part of the value when it is read.
    if (SpaceLeft(context) <= 0 && !NewRecord(context, blankAfterBreak)) return;
    buffer[used++] = delimiter;
    for (int32_t i = 0; i < length;) {
        if (used == kScratchSize && !Drain(context, buffer, &used)) return;
        int32_t free = SpaceLeft(context) - used;
        char c = text[i];
        if (free <= 0) {
            if (!breakRecord()) return;
            continue;
        }
        if (c != delimiter) {
            buffer[used++] = c;
            ++i;
            continue;
        }
        if (free >= 2) {
            if (used + 2 > kScratchSize && !Drain(context, buffer, &used)) return;
            buffer[used++] = c;
            buffer[used++] = c;
            ++i;
            continue;
        }
        // A doubled delimiter is never split between two records.
        if (context->recordMax < 3) {
            bool internal = IsInternal(context);
            Drain(context, buffer, &used);
            ErrorHandler(kClassConversion, kKindError, internal ? 9 : 158, internal ? 9 : 4, 0u);
            return;
        }
        if (!breakRecord()) return;
    }
    if (SpaceLeft(context) - used <= 0 && !breakRecord()) return;
    if (used == kScratchSize && !Drain(context, buffer, &used)) return;
    buffer[used++] = delimiter;
    Drain(context, buffer, &used);
}

}  // namespace

bool LdNewRecord(LocalContext* context, bool withBlank) {
    if (!IOTerminateRecord(context)) {
        context->itemsStopped = 1;
        return false;
    }
    if (context->atEndOfFile) {
        // An internal file has no further record.
        int32_t iostat = (context->options & VRN_OPTION_LD_OVERFLOW_MINUS2) ? -2 : 2;
        ErrorHandler(kClassSevere, kKindError, 2, iostat, 0u);
        context->itemsStopped = 1;
        return false;
    }
    if (withBlank && IOPutByte(context, ' ') != 1) {
        context->itemsStopped = 1;
        return false;
    }
    return true;
}

int32_t EndIOWriteLd(LocalContext* context) { return IOTerminateRecord(context); }

int32_t BeginIOWriteLd(LocalContext* context, void*) {
    switch (context->modeDelim) {
    case VRN_KEY_APOSTROPHE:
        context->ld_delimited = 1;
        context->ld_delim_char = '\'';
        break;
    case VRN_KEY_QUOTE:
        context->ld_delimited = 1;
        context->ld_delim_char = '"';
        break;
    case 0:
    case VRN_KEY_NONE:
    case VRN_KEY_UNDEFINED:
        context->ld_delimited = 0;
        break;
    default: break;
    }
    context->ld_in_namelist = 0;
    if (!context->dtioChild) {
        context->ldSeparator = ' ';
        context->endRoutine = EndIOWriteLd;
    }
    // Every list-directed record begins with a blank, which is not carriage control.
    if (context->column != 0) return context->status;
    if (IOPutByte(context, ' ') != 1) {
        context->itemsStopped = 1;
        return context->status;
    }
    context->ld_first_item = 1;
    return context->status;
}

VRN_EXPORT int32_t _vrnWriteLDInt(LocalContext* context, const void* value, int32_t, const int32_t* kind) {
    if (!context->itemsStopped) PlaceInteger(context, IntegerOfKind(value, *kind));
    return context->status;
}

VRN_EXPORT int32_t _vrnWriteLDByte(LocalContext* context, const void* value) {
    if (!context->itemsStopped) PlaceInteger(context, *static_cast<const int8_t*>(value));
    return context->status;
}

VRN_EXPORT int32_t _vrnWriteLDLog(LocalContext* context, const void* value, int32_t, const int32_t* kind) {
    if (context->itemsStopped) return context->status;
    SeparatorStep(context);
    if (context->itemsStopped) return context->status;
    if (context->recordMax < 2) {
        ReportUnplaceable(context, 158, 5);
        return context->status;
    }
    int64_t whole = IntegerOfKind(value, *kind == 1 || *kind == 2 || *kind == 4 ? *kind : 8);
    // Truth is bit 0 of the least significant byte, unless the program asked for non-zero.
    bool truth = (context->options & VRN_OPTION_LOGICAL_OUTPUT) ? whole != 0 : (whole & 1) != 0;
    if (context->column >= context->recordMax && !NewRecord(context, true)) return context->status;
    if (Write(context, &kLogicalVals[truth ? 1 : 0], 1)) context->ld_last_was_char = 0;
    return context->status;
}

VRN_EXPORT int32_t _vrnWriteLDReal(LocalContext* context, const void* value, int32_t, const int32_t* kind) {
    if (context->itemsStopped) return context->status;
    char buffer[kScratchSize];
    char* text = buffer + 1;  // room for the separator in front
    int32_t length = RealText(context, value, *kind, text);
    if (PlaceWithSeparator(context, text, length)) return context->status;
    SeparatorStep(context);
    if (!context->itemsStopped) Place(context, text, length);
    return context->status;
}

VRN_EXPORT int32_t _vrnWriteLDCmplx(LocalContext* context, const void* value, const int32_t* totalLength,
                                    const int32_t* partKind) {
    if (context->itemsStopped) return context->status;
    SeparatorStep(context);
    if (context->itemsStopped) return context->status;
    char text[kScratchSize];
    char* p = text;
    *p++ = '(';
    int32_t real = RealText(context, value, *partKind, p);
    p += real;
    *p++ = context->modeDecimal == VRN_KEY_COMMA ? ';' : ',';
    int32_t imaginary = RealText(context, static_cast<const char*>(value) + *totalLength / 2, *partKind, p);
    p += imaginary;
    *p++ = ')';
    int32_t total = static_cast<int32_t>(p - text);
    if (total <= SpaceLeft(context)) {
        if (Write(context, text, total)) context->ld_last_was_char = 0;
        return context->status;
    }
    if (total < context->recordMax) {
        if (NewRecord(context, true) && Write(context, text, total)) context->ld_last_was_char = 0;
        return context->status;
    }
    // Broken after the part separator, when both pieces fit a record.
    if (context->recordMax > real + 2 && context->recordMax > imaginary + 1) {
        if (real + 2 > SpaceLeft(context) && !NewRecord(context, true)) return context->status;
        if (!Write(context, text, real + 2) || !NewRecord(context, true)) return context->status;
        if (Write(context, text + real + 2, imaginary + 1)) context->ld_last_was_char = 0;
        return context->status;
    }
    ReportUnplaceable(context, 9, 5);
    return context->status;
}

VRN_EXPORT int32_t _vrnWriteLDChar(LocalContext* context, const char* text, const int32_t* length) {
    if (context->itemsStopped) return context->status;
    if (context->ld_delimited) {
        WriteDelimited(context, text, *length);
    } else {
        WriteUndelimited(context, text, *length);
    }
    return context->status;
}

void LdSeparateChild(LocalContext* context) {
    if (context->ld_delimited || context->ld_first_item || context->ld_last_was_char) return;
    if (context->ld_skip_separator) {
        context->ld_skip_separator = 0;
        return;
    }
    if (context->column < context->recordMax) WriteSeparator(context);
    context->ld_skip_separator = 1;
}

// Indexed by item type code.
const LdWriteFunction LdWriteFunctions[7] = {
    reinterpret_cast<LdWriteFunction>(_vrnWriteLDInt),  reinterpret_cast<LdWriteFunction>(_vrnWriteLDLog),
    reinterpret_cast<LdWriteFunction>(_vrnWriteLDChar), reinterpret_cast<LdWriteFunction>(_vrnWriteLDByte),
    reinterpret_cast<LdWriteFunction>(_vrnWriteLDReal), reinterpret_cast<LdWriteFunction>(_vrnWriteLDCmplx),
    reinterpret_cast<LdWriteFunction>(_vrnWriteLDDT),
};
const LdWriteFunction LdWriteFunctions_DTIO[7] = {
    reinterpret_cast<LdWriteFunction>(_vrnWriteLDInt),  reinterpret_cast<LdWriteFunction>(_vrnWriteLDLog),
    reinterpret_cast<LdWriteFunction>(_vrnWriteLDChar), reinterpret_cast<LdWriteFunction>(_vrnWriteLDByte),
    reinterpret_cast<LdWriteFunction>(_vrnWriteLDReal), reinterpret_cast<LdWriteFunction>(_vrnWriteLDCmplx),
    reinterpret_cast<LdWriteFunction>(_vrnWriteLDDT_DTIO),
};
