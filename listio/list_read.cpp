// List-directed READ: the statement's start and end, and one item routine per type.
//
// Each item asks the scanner for the next value, or takes the value in hand while a
// repeat count still serves it. A value of another type than the one in hand is read
// again from the rescan buffer, so "3*5" gives 5, 5.0 and "5" to an integer, a real and a
// character item.
#include <cstring>

#include "convert/convert.h"
#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "core/statement.h"
#include "listio/list_scanner.h"
#include "listio/listio.h"
#include "transport/transport.h"
#include "vrn90.h"
#include "vrn90_keywords.h"

namespace {

constexpr uint32_t kInteger = 0, kLogical = 1, kCharacter = 2, kByte = 3, kReal = 4, kComplex = 5;

bool DecimalComma(const LocalContext* context) { return context->modeDecimal == VRN_KEY_COMMA; }
uint32_t P(const LocalContext* context, uint32_t point, uint32_t comma) {
    return DecimalComma(context) ? comma : point;
}
bool Interchange(const LocalContext* context) { return (context->options & VRN_OPTION_LD_INTERCHANGE) != 0; }

// Where a value for an integer item begins when it is read again.
uint32_t IntegerStart(const LocalContext* context) {
    return Interchange(context) ? P(context, 34, 90) : P(context, 15, 71);
}

// The value for an item of `type`: the one in hand when a repeat count still serves the
// item and `inHand` says it will do, otherwise a scan, which reads the value in hand again
// from `replayState` while a repeat count is pending. False when the statement stops.
bool NextValue(LocalContext* context, uint32_t type, bool inHand, uint32_t replayState) {
    int32_t scanned;
    if (context->ld_repeat > 0) {
        if (inHand) return true;
        context->ld_item_type = type;
        context->ld_state = replayState;
        scanned = LDScan(context, 1, 0);
    } else {
        context->ld_item_type = type;
        scanned = LDScan(context, 0, 0);
    }
    if (!scanned) context->itemsStopped = 1;
    return scanned != 0;
}

int32_t IntegerSize(int32_t kind) { return kind == 1 || kind == 2 || kind == 4 ? kind : 8; }

void StoreInteger(void* item, int32_t size, int64_t value) {
    switch (size) {
    case 1: { auto v = static_cast<int8_t>(value); std::memcpy(item, &v, 1); break; }
    case 2: { auto v = static_cast<int16_t>(value); std::memcpy(item, &v, 2); break; }
    case 4: { auto v = static_cast<int32_t>(value); std::memcpy(item, &v, 4); break; }
    default: std::memcpy(item, &value, 8); break;
    }
}

const char* const kHighLimitText[9] = {nullptr, "127", "32767", nullptr, "2147483647",
                                       nullptr, nullptr, nullptr, "9223372036854775807"};
const char* const kLowLimitText[9] = {nullptr, "-128", "-32768", nullptr, "-2147483648",
                                      nullptr, nullptr, nullptr, "-9223372036854775808"};

// Stores the integer in hand at `size` bytes, or the limit of the side it fell on after
// message 96. An overflow found once stays with the value for the rest of its repeat
// count, and is reported again for each item it does not fit.
void StoreInRange(LocalContext* context, void* item, int32_t size) {
    int64_t value = context->ld_int_value;
    int64_t high = size == 8 ? INT64_MAX : (int64_t{1} << (size * 8 - 1)) - 1;
    int64_t low = -high - 1;
    if (context->ld_overflow_size < size) {
        if (value >= low && value <= high) {
            StoreInteger(item, size, value);
            return;
        }
        context->ld_overflow_size = size;
    }
    bool above = value >= 0;
    const char* limit = above ? kHighLimitText[size] : kLowLimitText[size];
    if (ErrorHandler(kClassConversion, kKindError, 96, 96, ArgText(1), limit, 0u) == kStatementStops) return;
    StoreInteger(item, size, above ? high : low);
}

// The infinity and NaN patterns by row of ld_ieee_kind. The 16-byte form of the negative
// signalling NaN is not the double pattern: it is stored as the compiler's programs have
// always received it.
uint64_t QuadSpecialHigh(uint32_t row) { return row == 6 ? 0xFFF0AAAA00000000ull : d_ieee_val[row]; }

// Converts the real value in hand (the number text or a special row) into `to`, 4, 8 or
// 16 bytes.
void ConvertReal(LocalContext* context, void* to, int32_t size) {
    uint32_t row = context->ld_ieee_kind;
    const char* text = context->scanBuffer;
    int round = StatementRoundKey(context);
    if (size == 4) {
        if (row != 0) {
            std::memcpy(to, &f_ieee_val[row], 4);
            return;
        }
        float value = ubx_strtof(text, nullptr, round);
        std::memcpy(to, &value, 4);
    } else if (size == 8) {
        if (row != 0) {
            std::memcpy(to, &d_ieee_val[row], 8);
            return;
        }
        double value = ubx_atof(text, round);
        std::memcpy(to, &value, 8);
    } else {
        double pair[2];
        if (row != 0) {
            uint64_t bits[2] = {QuadSpecialHigh(row), 0};
            std::memcpy(pair, bits, 16);
        } else {
            ubx_qatof(pair, text, round);
        }
        std::memcpy(to, pair, 16);
    }
}

int32_t RealSize(int32_t kind) { return kind == 4 || kind == 8 ? kind : 16; }

}  // namespace


void LDStartScan(LocalContext* context) {
    context->ld_pending_char = -1;
    context->ld_at_record_start = 0;
    context->ld_skip_column = 0;
    context->ld_in_subscript = 0;
    context->nl_name_begun = 0;
    context->ld_in_namelist = 0;
    context->ld_blank_zero = 0;
    context->ld_type_error = 0;
    context->ld_undelimited_ok = 1;
    for (uint32_t i = 0; i < 25; ++i) context->ld_class_map[i] = i;
}

int32_t EndIOReadLd(LocalContext* context) {
    // A non-advancing READ leaves the record where it stands.
    if (!context->advancing) return context->status;
    if (context->atEndOfFile) {
        // The values ran up to the end of the file: that last record is complete, and the
        // next READ meets the end.
        IOTerminateRecord(context);
        return context->status;
    }
    if (context->ld_at_record_start) return context->status;
    if (!IOTerminateRecord(context) && context->atEndOfFile) LDEndOfFileError(context);
    return context->status;
}

int32_t BeginIOReadLd(LocalContext* context, void*) {
    if (context->ld_rescan_buffer == nullptr && !LDReadInit(context)) {
        context->itemsStopped = 1;
        return context->status;
    }
    context->ld_repeat = 0;
    bool comma = DecimalComma(context);
    bool listParent = (context->parentFlags & 0xFFu) == VRN_KIND_LIST_DIRECTED;
    if (context->dtioChild && listParent) {
        // The child reads on where its parent's scan stands, in its own decimal mode.
        const uint32_t* translate = comma ? context->global->ldCommaStates : context->global->ldPointStates;
        context->ld_state = translate[context->ld_state];
        context->ld_type_error = 0;
    } else {
        LDStartScan(context);
        context->ld_state = comma ? 60 : 1;
        // "&", "$" and ":" mean something only to namelist input.
        context->ld_class_map[16] = 0;
        context->ld_class_map[17] = 0;
        context->ld_class_map[19] = 0;
    }
    if (!context->dtioChild) context->endRoutine = EndIOReadLd;
    return context->status;
}

VRN_EXPORT int32_t _vrnReadLDInt(LocalContext* context, void* item, int32_t, const int32_t* kind) {
    if (context->itemsStopped) return context->status;
    bool inHand = context->ld_item_type == kInteger;
    if (!NextValue(context, kInteger, inHand, IntegerStart(context))) return context->status;
    context->ld_repeat--;
    if (context->ld_null_value) return context->status;
    StoreInRange(context, item, IntegerSize(*kind));
    return context->status;
}

VRN_EXPORT int32_t _vrnReadLDByte(LocalContext* context, void* item, int32_t, const int32_t*) {
    if (context->itemsStopped) return context->status;
    uint32_t held = context->ld_item_type;
    bool inHand = held == kByte || held == kInteger || (held == kLogical && Interchange(context));
    if (!NextValue(context, kByte, inHand, IntegerStart(context))) return context->status;
    context->ld_item_type = kByte;
    context->ld_repeat--;
    if (context->ld_null_value || context->ld_type_error) return context->status;
    StoreInRange(context, item, 1);
    return context->status;
}

VRN_EXPORT int32_t _vrnReadLDLog(LocalContext* context, void* item, int32_t, const int32_t* kind) {
    if (context->itemsStopped) return context->status;
    uint32_t held = context->ld_item_type;
    bool inHand = held == kLogical || ((held == kInteger || held == kByte) && Interchange(context));
    if (!NextValue(context, kLogical, inHand, P(context, 37, 93))) return context->status;
    context->ld_repeat--;
    if (context->ld_null_value || context->ld_type_error) return context->status;
    int32_t size = IntegerSize(*kind);
    if (Interchange(context)) {
        StoreInRange(context, item, size);  // a number may stand for a logical here
    } else {
        StoreInteger(item, size, context->ld_int_value != 0 ? 1 : 0);
    }
    return context->status;
}

VRN_EXPORT int32_t _vrnReadLDReal(LocalContext* context, void* item, int32_t, const int32_t* kind) {
    if (context->itemsStopped) return context->status;
    bool inHand = context->ld_item_type == kReal;
    if (!NextValue(context, kReal, inHand, P(context, 20, 76))) return context->status;
    context->ld_item_kind = 0;
    context->ld_repeat--;
    if (context->ld_null_value) return context->status;
    // Each item of a repeat count converts the text anew, at its own kind.
    ConvertReal(context, item, RealSize(*kind));
    return context->status;
}

VRN_EXPORT int32_t _vrnReadLDCmplx(LocalContext* context, void* item, const int32_t* totalLength,
                                   const int32_t* partKind) {
    if (context->itemsStopped) return context->status;
    int32_t part = RealSize(*partKind);
    bool cached = context->ld_repeat > 0 && context->ld_item_type == kComplex &&
                  context->ld_item_kind == static_cast<uint32_t>(part);
    if (!cached) {
        bool replay = context->ld_repeat > 0;
        context->ld_item_kind = static_cast<uint32_t>(part);
        if (!NextValue(context, kComplex, false, P(context, 30, 86))) return context->status;
        if (!context->ld_null_value) {
            ConvertReal(context, context->ld_value_cache[0], part);
            // The separator and the imaginary part, then the closing parenthesis.
            context->ld_state = P(context, 31, 87);
            if (!LDScan(context, replay, 1)) {
                context->itemsStopped = 1;
                return context->status;
            }
            ConvertReal(context, context->ld_value_cache[1], part);
            context->ld_state = P(context, 33, 89);
            if (!LDScan(context, replay, 1)) {
                context->itemsStopped = 1;
                return context->status;
            }
        }
    }
    context->ld_repeat--;
    if (context->ld_null_value) return context->status;
    char* to = static_cast<char*>(item);
    std::memcpy(to, context->ld_value_cache[0], static_cast<size_t>(part));
    std::memcpy(to + *totalLength / 2, context->ld_value_cache[1], static_cast<size_t>(part));
    return context->status;
}

VRN_EXPORT int32_t _vrnReadLDChar(LocalContext* context, char* item, const int32_t* length) {
    if (context->itemsStopped) return context->status;
    context->ld_char_dest = item;
    context->ld_char_room = *length;
    if (context->ld_repeat > 0 && context->ld_null_value) {
        context->ld_repeat--;
        return context->status;
    }
    // Never copied from the item before: the text goes from the buffer straight into this
    // item, so a repeat serves items of any length.
    if (!NextValue(context, kCharacter, false, P(context, 41, 97))) return context->status;
    context->ld_repeat--;
    return context->status;
}

const ReadLDFunction ReadLDFns[7] = {
    reinterpret_cast<ReadLDFunction>(_vrnReadLDInt),  reinterpret_cast<ReadLDFunction>(_vrnReadLDLog),
    reinterpret_cast<ReadLDFunction>(_vrnReadLDChar), reinterpret_cast<ReadLDFunction>(_vrnReadLDByte),
    reinterpret_cast<ReadLDFunction>(_vrnReadLDReal), reinterpret_cast<ReadLDFunction>(_vrnReadLDCmplx),
    reinterpret_cast<ReadLDFunction>(_vrnReadLDDT),
};
const ReadLDFunction ReadLDFns_DTIO[7] = {
    reinterpret_cast<ReadLDFunction>(_vrnReadLDInt),  reinterpret_cast<ReadLDFunction>(_vrnReadLDLog),
    reinterpret_cast<ReadLDFunction>(_vrnReadLDChar), reinterpret_cast<ReadLDFunction>(_vrnReadLDByte),
    reinterpret_cast<ReadLDFunction>(_vrnReadLDReal), reinterpret_cast<ReadLDFunction>(_vrnReadLDCmplx),
    reinterpret_cast<ReadLDFunction>(_vrnReadLDDT_DTIO),
};

bool LdPositionForChild(LocalContext* context) {
    uint32_t savedState = context->ld_state;
    int64_t savedRepeat = context->ld_repeat;
    bool comma = DecimalComma(context);
    uint32_t kind = context->statementFlags & 0xFFu;
    bool formattedParent = context->dtioChild && (context->parentFlags & 0xFFu) == VRN_KIND_FORMATTED;
    uint32_t state;
    if (context->arrayActive && context->arrayIndex > 1 && kind != VRN_KIND_FORMATTED && formattedParent) {
        state = comma ? 134 : 132;
    } else if (kind != VRN_KIND_NAMELIST || context->nl_equal_seen) {
        state = 133;
    } else {
        state = 136;
        if (context->ld_pending_char != '=') context->ld_pending_char = -1;
    }
    context->ld_state = state;
    LDScan(context, 0, 0);
    context->ld_state = savedState;
    context->ld_repeat = savedRepeat;
    // The byte the scan stopped at belongs to the child: it goes back into the input.
    if (context->ld_pending_char > ' ') IOUngetByte(context);
    context->ld_pending_char = -1;
    context->ld_rescan_fill = 0;
    context->ld_rescan_cursor = context->ld_rescan_buffer;
    return !context->itemsStopped;
}
