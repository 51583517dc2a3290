// The edit conversions of formatted input: field text to integers of every size, to bit
// patterns in base 2, 8 and 16, to logicals, and to reals through the decimal converter.
#include <cstdint>
#include <cstring>

#include "convert/convert.h"
#include "core/context.h"
#include "core/errors.h"
#include "core/unit.h"
#include "format/edit_input.h"

constinit const uint32_t MaxPosInt[5] = {0, 127, 32767, 8388607, 2147483647u};
constinit const uint32_t MaxNegInt[5] = {0, 128, 32768, 8388608, 2147483648u};
constinit const char* const MaxPosIntStr[9] = {"0", "127", "32767", "8388607", "2147483647", "", "", "",
                                               "9223372036854775807"};
constinit const char* const MaxNegIntStr[9] = {"0", "-128", "-32768", "-8388608", "-2147483648", "", "", "",
                                               "-9223372036854775808"};
constinit const uint8_t MaxHexDigits[9] = {0, 2, 4, 6, 8, 10, 12, 14, 16};
constinit const uint8_t MaxBinDigits[9] = {0, 8, 16, 24, 32, 40, 48, 56, 64};
constinit const uint8_t MaxOctDigits[9] = {0, 2, 5, 8, 10, 13, 16, 18, 21};
constinit const uint8_t MaxHighOctDigit[9] = {0, 3, 1, 0, 3, 1, 0, 3, 1};

void StoreInteger(void* item, int32_t size, uint64_t value) {
    switch (size) {
    case 1: {
        auto v = static_cast<uint8_t>(value);
        std::memcpy(item, &v, 1);
        break;
    }
    case 2: {
        auto v = static_cast<uint16_t>(value);
        std::memcpy(item, &v, 2);
        break;
    }
    case 4: {
        auto v = static_cast<uint32_t>(value);
        std::memcpy(item, &v, 4);
        break;
    }
    default: std::memcpy(item, &value, 8); break;
    }
}

namespace {

// Message 97 for a character no numeric field may hold. True when the program goes on
// with a 0 in its place.
bool BadCharacter(LocalContext* context, char c) {
    char text[2] = {c, 0};
    if (ErrorHandler(kClassConversion, kKindError, 97, 97, ArgText(1), text, 0u) == kRecover) return true;
    context->itemsStopped = 1;
    return false;
}

int32_t SkipBlanks(const char* text, int32_t length) {
    int32_t i = 0;
    while (i < length && text[i] == ' ') ++i;
    return i;
}

// The decimal digits of an I field into `limit` at most; the sign decides the limit.
// `sizeIndex` picks the texts of message 96.
bool DecimalToInteger(LocalContext* context, void* item, int32_t size, const char* text, int32_t length,
                      int32_t blankZero, uint64_t positiveLimit, uint64_t negativeLimit, int32_t sizeIndex) {
    int32_t i = SkipBlanks(text, length);
    bool negative = false;
    if (i < length && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
    uint64_t limit = negative ? negativeLimit : positiveLimit;
    // value * 10 + digit > limit, without a division for each digit.
    const uint64_t tenth = limit / 10;
    const uint32_t lastDigit = static_cast<uint32_t>(limit % 10);
    uint64_t value = 0;
    for (; i < length; ++i) {
        auto c = static_cast<unsigned char>(text[i]);
        uint32_t digit;
        if (static_cast<unsigned>(c - '0') <= 9u) {
            digit = c - '0';
        } else if (c == ' ') {
            if (!blankZero) continue;
            digit = 0;
        } else if (BadCharacter(context, static_cast<char>(c))) {
            digit = 0;
        } else {
            return false;
        }
        if (value >= tenth && (value > tenth || digit > lastDigit)) {
            StoreInteger(item, size, negative ? 0 - limit : limit);
            const char* shown = negative ? MaxNegIntStr[sizeIndex] : MaxPosIntStr[sizeIndex];
            if (ErrorHandler(kClassConversion, kKindError, 96, 96, ArgText(1), shown, 0u) != kRecover) {
                context->itemsStopped = 1;
                return false;
            }
            return true;
        }
        value = value * 10 + digit;
    }
    StoreInteger(item, size, negative ? 0 - value : value);
    return true;
}

enum class Base { kBinary = 1, kOctal = 3, kHex = 4 };

const char* LetterOf(Base base) { return base == Base::kBinary ? "B" : base == Base::kOctal ? "O" : "Z"; }

int32_t DigitValue(unsigned char c) {
    if (static_cast<unsigned>(c - '0') <= 9u) return c - '0';
    if (static_cast<unsigned>((c | 0x20) - 'a') <= 5u) return (c | 0x20) - 'a' + 10;
    return -1;
}

// B, O and Z: the digits are put in from the right, so that after message 98 the
// low-order bits stand. The item is built little end first and stored in machine order.
bool RadixToBytes(LocalContext* context, void* item, int32_t size, char* scratch, const char* text, int32_t length,
                  int32_t blankZero, Base base) {
    const int32_t radix = 1 << static_cast<int>(base);
    // The digit values, in order, in the caller's scratch of `length` bytes.
    int32_t count = 0;
    for (int32_t i = SkipBlanks(text, length); i < length; ++i) {
        auto c = static_cast<unsigned char>(text[i]);
        int32_t digit = DigitValue(c);
        if (c == ' ') {
            if (!blankZero) continue;
            digit = 0;
        }
        if (digit < 0 || digit >= radix) {
            char shown[2] = {static_cast<char>(c), 0};
            if (ErrorHandler(kClassConversion, kKindError, 56, 56, ArgText(1), shown, ArgText(2), LetterOf(base), 0u) !=
                kRecover) {
                context->itemsStopped = 1;
                return false;
            }
            digit = 0;
        }
        scratch[count++] = static_cast<char>(digit);
    }
    int32_t first = 0;
    while (first < count && scratch[first] == 0) ++first;  // leading zeros do not count
    int32_t significant = count - first;
    bool tooMany;
    if (base == Base::kOctal) {
        // The octal limits count the whole digits; one more, partial, digit may stand in
        // front of them, no higher than the bits left over allow.
        int32_t whole = size <= 8 ? MaxOctDigits[size] : 8 * size / 3;
        int32_t highest = size <= 8 ? MaxHighOctDigit[size] : (1 << (8 * size % 3)) - 1;
        tooMany = significant > whole + 1 || (significant == whole + 1 && scratch[first] > highest);
    } else {
        int32_t most = size > 8 ? 8 * size / static_cast<int>(base)
                       : base == Base::kHex ? MaxHexDigits[size] : MaxBinDigits[size];
        tooMany = significant > most;
    }

    uint8_t bytes[64] = {};
    int32_t bits = 8 * (size < 64 ? size : 64);
    int32_t at = 0;
    for (int32_t i = count - 1; i >= first && at < bits; --i, at += static_cast<int>(base)) {
        uint32_t digit = static_cast<uint8_t>(scratch[i]);
        for (int b = 0; b < static_cast<int>(base) && at + b < bits; ++b) {
            if (digit & (1u << b)) bytes[(at + b) / 8] |= static_cast<uint8_t>(1u << ((at + b) % 8));
        }
    }
    auto* out = static_cast<uint8_t*>(item);
    for (int32_t i = 0; i < size && i < 64; ++i) {
        out[__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? size - 1 - i : i] = bytes[i];
    }
    if (tooMany && ErrorHandler(kClassConversion, kKindError, 98, 98, 0u) != kRecover) {
        context->itemsStopped = 1;
        return false;
    }
    return true;
}

// The scratch for the digit values: the statement's, or the text itself, which has been
// read already when the digits are written behind it.
bool Radix(LocalContext* context, void* item, int32_t size, const char* text, int32_t length, int32_t blankZero,
           Base base) {
    char local[256];
    char* scratch = length <= static_cast<int32_t>(sizeof local) ? local : const_cast<char*>(text);
    return RadixToBytes(context, item, size, scratch, text, length, blankZero, base);
}

}  // namespace

bool FmtDecToLongInt(LocalContext* context, void* item, int32_t size, const char* text, int32_t length,
                     int32_t blankZero) {
    int32_t index = size < 1 ? 1 : size > 4 ? 4 : size;
    return DecimalToInteger(context, item, size, text, length, blankZero, MaxPosInt[index], MaxNegInt[index], index);
}

bool FmtDecToI8(LocalContext* context, void* item, const char* text, int32_t length, int32_t blankZero) {
    return DecimalToInteger(context, item, 8, text, length, blankZero, 9223372036854775807ull, 9223372036854775808ull,
                            8);
}

bool FmtHexToLongInt(LocalContext* context, void* item, int32_t size, const char* text, int32_t length,
                     int32_t blankZero) {
    return Radix(context, item, size, text, length, blankZero, Base::kHex);
}
bool FmtOctToLongInt(LocalContext* context, void* item, int32_t size, const char* text, int32_t length,
                     int32_t blankZero) {
    return Radix(context, item, size, text, length, blankZero, Base::kOctal);
}
bool FmtBinToLongInt(LocalContext* context, void* item, int32_t size, const char* text, int32_t length,
                     int32_t blankZero) {
    return Radix(context, item, size, text, length, blankZero, Base::kBinary);
}
bool FmtHexToI(LocalContext* context, void* item, int32_t size, const char* text, int32_t length, int32_t blankZero) {
    return Radix(context, item, size, text, length, blankZero, Base::kHex);
}
bool FmtOctToI(LocalContext* context, void* item, int32_t size, const char* text, int32_t length, int32_t blankZero) {
    return Radix(context, item, size, text, length, blankZero, Base::kOctal);
}
bool FmtBinToI(LocalContext* context, void* item, int32_t size, const char* text, int32_t length, int32_t blankZero) {
    return Radix(context, item, size, text, length, blankZero, Base::kBinary);
}

bool FmtLToLogical(LocalContext* context, void* item, int32_t size, const char* text, int32_t length) {
    int32_t i = SkipBlanks(text, length);
    if (i == length) {
        StoreInteger(item, size, 0);
        return true;
    }
    for (; i < length; ++i) {
        char c = static_cast<char>(text[i] | 0x20);
        if (c == 't' || c == 'f') {
            StoreInteger(item, size, c == 't' ? 1 : 0);
            return true;
        }
    }
    int32_t answer = context->unit != nullptr
                         ? ErrorHandler(kClassConversion, kKindError, 41, 41, ArgText(1),
                                        UnitNameForMessages(context->unit), 0u)
                         : ErrorHandler(kClassConversion, kKindError, 42, 42, 0u);
    if (answer == kRecover) return true;
    context->itemsStopped = 1;
    return false;
}

namespace {

void StoreReal(void* item, int32_t size, const char* text, int32_t roundKey) {
    if (size == 4) {
        float value = ubx_strtof(text, nullptr, roundKey);
        std::memcpy(item, &value, 4);
    } else if (size == 8) {
        double value = ubx_atof(text, roundKey);
        std::memcpy(item, &value, 8);
    } else {
        double pair[2];
        ubx_qatof(pair, text, roundKey);
        std::memcpy(item, pair, 16);
    }
}

void StoreZero(void* item, int32_t size) { std::memset(item, 0, static_cast<size_t>(size == 4 ? 4 : size == 8 ? 8 : 16)); }

bool IsExponentLetter(char c) {
    char lower = static_cast<char>(c | 0x20);
    return lower == 'e' || lower == 'd' || lower == 'q';
}

}  // namespace

bool FmtFToR(LocalContext* context, void* item, int32_t size, char* text, int32_t length, int32_t blankZero,
             const FormatState* state) {
    int32_t in = SkipBlanks(text, length);
    if (in == length) {
        StoreZero(item, size);
        return true;
    }
    const char point = state->decimalComma ? ',' : '.';
    int32_t out = 0;
    if (text[in] == '+' || text[in] == '-') text[out++] = text[in++];
    const int32_t mantissaStart = out;
    int32_t mantissaDigits = 0;
    int32_t exponentAt = -1;     // where "E" stands or is to stand
    bool letter = false;         // the exponent came with a letter
    bool exponentSign = false;
    bool exponentDigits = false;
    bool sawPoint = false;
    for (; in < length; ++in) {
        char c = text[in];
        bool inExponent = exponentAt >= 0;
        if (c == ' ') {
            if (inExponent && letter && !exponentSign && !exponentDigits) continue;  // behind the letter
            if (!blankZero) continue;
            c = '0';
        }
        if (static_cast<unsigned char>(c - '0') <= 9u) {
            text[out++] = c;
            if (inExponent) exponentDigits = true; else ++mantissaDigits;
        } else if (c == point && !sawPoint && !inExponent) {
            text[out++] = '.';
            sawPoint = true;
        } else if (IsExponentLetter(c) && !inExponent) {
            exponentAt = out;
            text[out++] = 'E';
            letter = true;
        } else if ((c == '+' || c == '-') && !exponentSign && !exponentDigits && (!inExponent || letter)) {
            if (!inExponent) exponentAt = out;  // "1+2": the sign starts the exponent
            text[out++] = c;
            exponentSign = true;
        } else if (BadCharacter(context, c)) {
            text[out++] = '0';
            if (inExponent) exponentDigits = true; else ++mantissaDigits;
        } else {
            return false;
        }
    }
    if (mantissaDigits == 0) {
        StoreZero(item, size);
        return true;
    }
    if (exponentAt >= 0 && !letter) {
        std::memmove(text + exponentAt + 1, text + exponentAt, static_cast<size_t>(out - exponentAt));
        text[exponentAt] = 'E';
        ++out;
    }
    if (!sawPoint && state->d > 0) {
        int32_t mantissaEnd = exponentAt >= 0 ? exponentAt : out;
        int32_t d = state->d;
        int32_t zeros = d > mantissaDigits ? d - mantissaDigits : 0;
        int32_t at = zeros > 0 ? mantissaStart : mantissaEnd - d;
        std::memmove(text + at + 1 + zeros, text + at, static_cast<size_t>(out - at));
        text[at] = '.';
        std::memset(text + at + 1, '0', static_cast<size_t>(zeros));
        out += 1 + zeros;
    }
    if (exponentAt < 0 && state->scale != 0) {
        int32_t scale = state->scale;
        uint32_t magnitude = scale < 0 ? 0u - static_cast<uint32_t>(scale) : static_cast<uint32_t>(scale);
        text[out++] = 'E';
        text[out++] = scale > 0 ? '-' : '+';
        char digits[12];
        int n = 0;
        do {
            digits[n++] = static_cast<char>('0' + magnitude % 10);
            magnitude /= 10;
        } while (magnitude != 0 || n < 3);
        while (n > 0) text[out++] = digits[--n];
    }
    text[out] = 0;
    StoreReal(item, size, text, state->roundMode);
    return true;
}
