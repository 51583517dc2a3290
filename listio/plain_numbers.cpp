// Plain numbers taken in place: the list-directed scanner's shortcut for the values that
// most input is made of.
#include <cstring>

#include "convert/eight_digits.h"
#include "core/context.h"
#include "listio/list_scanner.h"
#include "transport/transport.h"
#include "vrn90.h"

namespace {

bool IsDigit(char byte) { return static_cast<unsigned char>(byte - '0') <= 9; }

// Skips blanks and tabs from `at`, eight bytes at a time while the window has them.
int32_t SkipBlanks(const char* window, int32_t at, int32_t size) {
    while (at + 8 <= size) {
        int32_t blanks = eight_digits::LeadingBlanks(window + at);
        at += blanks;
        if (blanks < 8) break;
    }
    while (at < size && (window[at] == ' ' || window[at] == '\t')) ++at;
    return at;
}

// The length of the run of digits at `at` (at most 8), and its value.
int32_t EightOrFewerDigits(const char* window, int32_t at, int32_t size, uint64_t* value) {
    if (at + 8 <= size) return eight_digits::LeadingDigits(window + at, value);
    int32_t count = 0;
    uint64_t sum = 0;
    while (count < 8 && at + count < size && IsDigit(window[at + count])) {
        sum = sum * 10 + static_cast<uint64_t>(window[at + count] - '0');
        ++count;
    }
    *value = sum;
    return count;
}

// A run of up to 19 digits: its length and, below 19, its value.
int32_t DigitRun(const char* window, int32_t at, int32_t size, uint64_t* value) {
    uint64_t part;
    int32_t count = EightOrFewerDigits(window, at, size, &part);
    uint64_t sum = part;
    while (count % 8 == 0 && count > 0 && count < 19) {
        int32_t more = EightOrFewerDigits(window, at + count, size, &part);
        if (more == 0) break;
        sum = sum * eight_digits::kRunScale[more] + part;
        count += more;
    }
    *value = sum;
    return count;
}

// Most values are plain numbers between blanks or commas, and the table would take them
// byte by byte to the same end. When the next value in place is one, it is taken here at
// once: the same value, the same number text up to leading zeros, and the scan left in
// the state the table would leave it in. Anything else, and any value the record or the
// buffer cuts, goes to the table.
}  // namespace

bool PlainNumberInPlace(LocalContext* context) {
    uint32_t type = context->ld_item_type;
    bool integer = type == 0 || type == 3;
    if (!integer && type != 4) return false;
    uint32_t state = context->ld_state;
    if ((state != 1 && state != 2 && state != 13) || context->ld_pending_char >= 0 ||
        context->ld_blank_zero || (context->options & VRN_OPTION_LD_INTERCHANGE)) {
        return false;
    }
    const char* window;
    int32_t size = IORecordWindow(context, &window);
    if (size <= 0 || context->ld_skip_column) return false;
    int32_t at = SkipBlanks(window, 0, size);
    int32_t start = at;
    if (at < size && (window[at] == '+' || window[at] == '-')) ++at;
    uint64_t magnitude;
    int32_t digits = DigitRun(window, at, size, &magnitude);
    at += digits;
    if (integer) {
        if (digits == 0 || digits > 18) return false;
    } else {
        if (at < size && window[at] == '.') {
            ++at;
            int32_t fractionStart = at;
            while (at < size && IsDigit(window[at])) ++at;
            digits += at - fractionStart;
        }
        if (digits == 0) return false;
        if (at < size && (window[at] == 'E' || window[at] == 'e')) {
            ++at;
            if (at < size && (window[at] == '+' || window[at] == '-')) ++at;
            int32_t exponentStart = at;
            while (at < size && IsDigit(window[at])) ++at;
            if (at == exponentStart) return false;
        }
        if (at - start > 64) return false;
    }
    if (at >= size || (window[at] != ' ' && window[at] != ',')) return false;
    if (integer) {
        int64_t value = static_cast<int64_t>(magnitude);
        context->ld_int_value = window[start] == '-' ? -value : value;
        context->ld_overflow_size = 0;
    } else {
        std::memcpy(context->scanBuffer, window + start, static_cast<size_t>(at - start));
        context->scanBuffer[at - start] = '\0';
        context->ld_ieee_kind = 0;
    }
    // The separator goes with the value, as the table's finish behind it does.
    context->ld_state = window[at] == ',' ? 2 : 13;
    IOConsumeInPlace(context, at + 1);
    context->ld_at_record_start = 0;
    context->nl_name_pending = 0;
    context->ld_repeat = 1;
    context->ld_null_value = 0;
    return true;
}

