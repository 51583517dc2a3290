// The common formatted real field in one pass: its digits gathered as they are checked,
// eight at a time where they run on, and handed to the conversion as a number.
#include <cstdint>
#include <cstring>

#include "convert/convert.h"
#include "convert/eight_digits.h"

namespace {

bool IsDigit(char c) { return static_cast<unsigned char>(c - '0') <= 9u; }

bool IsExponentLetter(char c) {
    switch (c) {
    case 'E': case 'e': case 'D': case 'd': case 'Q': case 'q': return true;
    default: return false;
    }
}

// An explicit exponent beyond this settles the value all the same.
constexpr int64_t kExponentCap = 1000000000;

}  // namespace

bool ReadPlainReal(const char* field, int32_t width, int32_t readable, int32_t size, int roundKey, void* item) {
    if ((size != 4 && size != 8) || (roundKey != kRoundNearest && roundKey != kRoundCompatible)) return false;
    const char* p = field;
    const char* end = field + width;
    // Words of eight bytes are read wherever the buffer holds eight from p, the bytes
    // behind the field made to look like neither blank nor digit; the last few bytes of
    // a buffer go one at a time.
    auto wordFits = [&] { return (p - field) + 8 <= readable; };
    auto word = [&] { return eight_digits::LoadLowFirst(p) | ~eight_digits::LowBytes(static_cast<int32_t>(end - p)); };
    // Blanks and sign without a branch a byte: both vary from field to field, and a
    // mispredicted branch costs more than the word.
    for (int32_t blanks = 8; blanks == 8 && p < end && wordFits(); p += blanks) {
        blanks = eight_digits::LeadingBlanksOf(word());
    }
    while (p < end && *p == ' ') ++p;
    if (p == end) return false;
    DecimalDigits d{0, 0, 0, *p == '-'};
    p += static_cast<int>(*p == '-') | static_cast<int>(*p == '+');
    while (p < end && *p == '0') ++p;
    // Digits into d.digits; past 19 the sum wraps and the field goes the long way.
    auto gather = [&] {
        const char* first = p;
        while (p < end && wordFits()) {
            uint64_t run;
            int32_t length = eight_digits::LeadingDigitsOf(word(), &run);
            d.digits = d.digits * eight_digits::kRunScale[length] + run;
            p += length;
            if (length < 8) return static_cast<int32_t>(p - first);
        }
        for (; p < end && IsDigit(*p); ++p) d.digits = d.digits * 10 + static_cast<uint64_t>(*p - '0');
        return static_cast<int32_t>(p - first);
    };
    d.count = gather();
    if (p == end || *p != '.') return false;
    const char* fraction = ++p;
    if (d.count == 0) {
        while (p < end && *p == '0') ++p;  // they only place the point
        d.exponent = fraction - p;
    }
    int32_t behind = gather();
    d.count += behind;
    d.exponent -= behind;
    if (p == fraction || d.count == 0 || d.count > 19) return false;
    if (p < end) {
        if (!IsExponentLetter(*p++)) return false;
        bool negative = false;
        if (p < end && (*p == '+' || *p == '-')) negative = *p++ == '-';
        if (p == end) return false;
        int64_t exponent = 0;
        for (; p < end && IsDigit(*p); ++p) {
            if (exponent < kExponentCap) exponent = exponent * 10 + (*p - '0');
        }
        if (p != end) return false;
        d.exponent += negative ? -exponent : exponent;
    }
    if (size == 8) {
        double value = DigitsToDouble(d, roundKey);
        std::memcpy(item, &value, sizeof value);
    } else {
        float value = DigitsToFloat(d, roundKey);
        std::memcpy(item, &value, sizeof value);
    }
    return true;
}
