// Formatted input of data items: format control picks the descriptor, the record layer
// hands over the field (a comma ends it early), and an edit conversion stores the value.
#include <cfenv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "convert/convert.h"
#include "convert/eight_digits.h"
#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "core/float_status.h"
#include "core/unit.h"
#include "format/descriptor_table.h"
#include "format/edit_input.h"
#include "format/edit_output.h"
#include "format/format_control.h"
#include "transport/transport.h"
#include "vrn90.h"

namespace {

// A field buffer: the statement's scratch, or a block of its own for a wide field.
class FieldBuffer {
public:
    FieldBuffer(LocalContext* context, int32_t bytes)
        : text_(bytes <= kScratchBytes ? context->scanBuffer : static_cast<char*>(std::malloc(static_cast<size_t>(bytes)))),
          owned_(bytes > kScratchBytes) {}
    ~FieldBuffer() {
        if (owned_) std::free(text_);
    }
    FieldBuffer(const FieldBuffer&) = delete;
    FieldBuffer& operator=(const FieldBuffer&) = delete;
    char* text() const { return text_; }

private:
    char* text_;
    bool owned_;
};

bool OutOfMemory(LocalContext* context) {
    ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
    context->itemsStopped = 1;
    return false;
}

int Separator(const FormatState& f) { return f.decimalComma ? ';' : ','; }

// The checks after a field was read: a record or file that ended before the field did is
// for FmtReadError to judge, unless a separator ended it or PAD="YES" pads it.
bool FieldComplete(LocalContext* context, int32_t got, int32_t width, int32_t separatorFound) {
    if (context->itemsStopped) return false;
    if (got < width && !separatorFound && !IOShortFieldPadded(context)) {
        FmtReadError(context);
        if (context->itemsStopped) return false;
    }
    return true;
}

using eight_digits::kEachByte;
using eight_digits::LoadLowFirst;
using eight_digits::LowBytes;

// A right-aligned field of 8 to 16 bytes, blanks, an optional sign and one to seven
// digits, read eight bytes at a time so that the varying number of blanks costs no
// mispredicted branches. False for anything else.
bool RightAlignedDigits(const char* field, int32_t width, uint32_t* value, bool* negative) {
    uint64_t tail = LoadLowFirst(field + width - 8);
    // A byte is a digit when its high nibble is 3 and adding 6 keeps it so.
    uint64_t notDigit = ((tail & 0xF0F0F0F0F0F0F0F0ull) ^ (0x30 * kEachByte)) |
                        ((((tail & (0x7F * kEachByte)) + 0x06 * kEachByte) & 0xF0F0F0F0F0F0F0F0ull) ^ (0x30 * kEachByte));
    uint64_t flagged = (((notDigit & (0x7F * kEachByte)) + 0x7F * kEachByte) | notDigit) & (0x80 * kEachByte);
    if (flagged == 0) return false;  // eight digits or more: the general path
    int32_t digits = __builtin_clzll(flagged) / 8;
    if (digits == 0) return false;
    int32_t before = width - digits;  // blanks and the sign
    char sign = field[before - 1];
    *negative = sign == '-';
    int32_t blanks = sign == '-' || sign == '+' ? before - 1 : before;
    uint64_t head = LoadLowFirst(field);
    if (((head ^ (0x20 * kEachByte)) & LowBytes(blanks)) != 0) return false;
    if (blanks > 8) {
        int32_t from = 16 - width;  // byte 8 of the field within the tail word
        uint64_t inTail = LowBytes(blanks - 8 + from) & ~LowBytes(from);
        if (((tail ^ (0x20 * kEachByte)) & inTail) != 0) return false;
    }
    // The digits as eight with leading zeros; the other bytes are cleared before the
    // subtraction, whose borrow would reach the first digit.
    uint64_t keep = ~LowBytes(8 - digits);
    *value = eight_digits::Combine((tail & keep) - (0x30 * kEachByte & keep));
    return true;
}

// The usual I field, read where it stands: blanks, a sign, and digits up to its end.
// Anything else (a separator, the record's end, an inner blank, a value too long to be
// sure of) is left to the general path, with nothing consumed.
bool PlainIntegerInPlace(LocalContext* context, void* item) {
    FormatState& f = context->fmt;
    int32_t width = f.w;
    if (f.size > 4 || width <= 0 || width > 64) return false;
    const char* field = IOFieldInPlace(context, width);
    if (field == nullptr) return false;
    bool negative = false;
    uint32_t value = 0;
    if (width >= 8 && width <= 16) {
        if (!RightAlignedDigits(field, width, &value, &negative)) return false;
    } else {
        int32_t i = 0;
        while (i < width && field[i] == ' ') ++i;
        if (i < width && (field[i] == '-' || field[i] == '+')) negative = field[i++] == '-';
        if (i == width || width - i > 9) return false;  // nine digits cannot overflow 32 bits
        for (; i < width; ++i) {
            uint32_t digit = static_cast<unsigned char>(field[i]) - static_cast<uint32_t>('0');
            if (digit > 9) return false;
            value = value * 10 + digit;
        }
    }
    uint32_t index = static_cast<uint32_t>(f.size);
    if (index != 1 && index != 2 && index != 4) return false;
    // The signs come at random: no branch on them.
    uint32_t minus = negative ? 1u : 0u;
    if (value > MaxPosInt[index] + minus) return false;
    IOConsumeInPlace(context, width);
    uint32_t stored = (value ^ (0u - minus)) + minus;
    if (index == 4) {
        std::memcpy(item, &stored, 4);
    } else if (index == 2) {
        auto two = static_cast<uint16_t>(stored);
        std::memcpy(item, &two, 2);
    } else {
        auto one = static_cast<uint8_t>(stored);
        std::memcpy(item, &one, 1);
    }
    return true;
}

// I, B, O, Z and L: the field's bytes, then the conversion.
bool EditIntegerLike(LocalContext* context, void* item, int32_t bytes) {
    FormatState& f = context->fmt;
    if ((f.desc == VRN_FMT_I || f.desc == VRN_FMT_IM) && PlainIntegerInPlace(context, item)) return true;
    int32_t width = f.w;
    FieldBuffer field(context, width);
    if (field.text() == nullptr) return OutOfMemory(context);
    int32_t found;
    int32_t got = IOReadFieldBytes(context, field.text(), width, Separator(f), &found);
    if (!FieldComplete(context, got, width, found)) return false;
    const char* text = field.text();
    switch (f.desc) {
    case VRN_FMT_I:
    case VRN_FMT_IM:
        return f.size == 8 ? FmtDecToI8(context, item, text, got, f.blankZero)
                           : FmtDecToLongInt(context, item, f.size, text, got, f.blankZero);
    case VRN_FMT_B:
    case VRN_FMT_BM:
        return f.size <= 4 ? FmtBinToLongInt(context, item, f.size, text, got, f.blankZero)
                           : FmtBinToI(context, item, f.size, text, got, f.blankZero);
    case VRN_FMT_O:
    case VRN_FMT_OM:
        return f.size <= 4 ? FmtOctToLongInt(context, item, f.size, text, got, f.blankZero)
                           : FmtOctToI(context, item, f.size, text, got, f.blankZero);
    case VRN_FMT_Z:
    case VRN_FMT_ZM:
        return f.size <= 4 ? FmtHexToLongInt(context, item, f.size, text, got, f.blankZero)
                           : FmtHexToI(context, item, f.size, text, got, f.blankZero);
    default: return FmtLToLogical(context, item, bytes < f.size ? bytes : f.size, text, got);
    }
}

// A: the rightmost `bytes` of a wider field win; a narrower field is blank-filled.
bool EditCharacter(LocalContext* context, void* item, int32_t bytes) {
    FormatState& f = context->fmt;
    char* to = static_cast<char*>(item);
    int32_t width = f.desc == VRN_FMT_A ? bytes : f.w;
    if (width > bytes) {
        for (int32_t skip = width - bytes; skip > 0;) {
            int32_t piece = skip < kScratchBytes ? skip : kScratchBytes;
            int32_t got = IORead(context, context->scanBuffer, piece);
            if (got < 0 || (got < piece && (FmtReadError(context), context->itemsStopped))) return false;
            skip -= piece;
        }
        width = bytes;
    }
    int32_t got = IORead(context, to, width);
    if (got < 0) return false;
    if (got < width) {
        FmtReadError(context);
        if (context->itemsStopped) return false;
    }
    if (width < bytes) std::memset(to + width, ' ', static_cast<size_t>(bytes - width));
    return true;
}

// Q: the bytes left in the record.
bool EditRemainingLength(LocalContext* context, void* item) {
    int32_t left = IOFindRemainingLength(context);
    if (left < 0) {
        context->itemsStopped = 1;
        return false;
    }
    if (context->atEndOfFile) {
        FmtReadError(context);
        if (context->itemsStopped) return false;
    }
    StoreInteger(item, context->fmt.size, static_cast<uint64_t>(static_cast<int64_t>(left)));
    return true;
}

// A value the scanner knew without converting: the short constants, infinity and NaN.
void StoreKnownValue(void* item, int32_t size, uint32_t n, bool negative) {
    if (n >= 6) {
        uint32_t index = n - 5 + (negative ? 3 : 0);
        if (size == 4) {
            std::memcpy(item, &f_ieee_val[index], 4);
        } else if (size == 8) {
            std::memcpy(item, &d_ieee_val[index], 8);
        } else {
            double pair[2];
            std::memcpy(&pair[0], &ld_ieee_val[index], 8);
            pair[1] = 0.0;
            std::memcpy(item, pair, 16);
        }
        return;
    }
    if (negative) n += 9;
    if (size == 4) {
        std::memcpy(item, &f_rfrval[n], 4);
    } else if (size == 8) {
        std::memcpy(item, &d_rfrval[n], 8);
    } else {
        double pair[2] = {ld_rfrval[n].hi, ld_rfrval[n].lo};
        std::memcpy(item, pair, 16);
    }
}

// The statement's rounding as NEAREST or COMPATIBLE, or 0 for a directed mode. The
// caller's mode cannot change within a statement (a procedure gives back the mode it
// found), so PROCESSOR_DEFINED reads it once.
int NearestRoundKey(FormatState& f) {
    if (f.roundMode == kRoundNearest || f.roundMode == kRoundCompatible) return f.roundMode;
    if (f.roundMode != kRoundProcessorDefined) return 0;
    if (f.processorRound < 0) f.processorRound = float_status::GetRoundingMode();
    return f.processorRound == FE_TONEAREST ? kRoundNearest : 0;
}

bool EditReal(LocalContext* context, void* item) {
    FormatState& f = context->fmt;
    int32_t width = f.w;
    // The common field where it stands in the buffer, read and converted in one pass.
    if (f.scale == 0 && !f.decimalComma) {
        const char* field = nullptr;
        int32_t readable = IORecordWindow(context, &field);
        if (readable >= width && ReadPlainReal(field, width, readable, f.size, NearestRoundKey(f), item)) {
            IOConsumeInPlace(context, width);
            return true;
        }
    }
    FieldBuffer field(context, width + FToRSlack(f.d));
    if (field.text() == nullptr) return OutOfMemory(context);
    char* text = field.text();
    int32_t found;
    RealFieldScan scan;
    int32_t got = IOReadRealAndScan(context, text, width, Separator(f), &found, f.decimalComma, &scan);
    if (!FieldComplete(context, got, width, found)) return false;
    uint32_t action = rfr_actions[scan.state];
    uint32_t n = action & 0xFFu;
    bool known = (action & kActionKnownValue) != 0;
    if ((action & kActionConvertLater) || (f.scale != 0 && ((known && n <= 5) || (action & kActionConvert)))) {
        return FmtFToR(context, item, f.size, text, got, f.blankZero, &f);
    }
    if (action & kActionConvert) {
        text[got] = 0;
        if (f.decimalComma) {
            for (int s : {8, 10, 14, 15}) {
                if (scan.entered[s] >= 0) text[scan.entered[s]] = '.';
            }
        }
        const char* from = text + (scan.first >= 0 ? scan.first : 0);
        if (f.size == 4) {
            float value = ubx_strtof(from, nullptr, f.roundMode);
            std::memcpy(item, &value, 4);
        } else if (f.size == 8) {
            double value = ubx_atof(from, f.roundMode);
            std::memcpy(item, &value, 8);
        } else {
            double pair[2];
            ubx_qatof(pair, from, f.roundMode);
            std::memcpy(item, pair, 16);
        }
        return true;
    }
    int32_t signAt = scan.entered[f.decimalComma ? 43 : 2];
    bool negative = signAt >= 0 && text[signAt] == '-';
    StoreKnownValue(item, f.size, n, negative);
    return true;
}

// The conversion of the descriptor format control has set.
bool EditPart(LocalContext* context, void* part, int32_t bytes) {
    switch (context->fmt.desc) {
    case VRN_FMT_I:
    case VRN_FMT_IM:
    case VRN_FMT_B:
    case VRN_FMT_BM:
    case VRN_FMT_O:
    case VRN_FMT_OM:
    case VRN_FMT_Z:
    case VRN_FMT_ZM:
    case VRN_FMT_L: return EditIntegerLike(context, part, bytes);
    case VRN_FMT_A:
    case VRN_FMT_AW: return EditCharacter(context, part, bytes);
    case VRN_FMT_Q: return EditRemainingLength(context, part);
    default:
        if (context->fmt.desc >= VRN_FMT_D && context->fmt.desc <= VRN_FMT_ESE) return EditReal(context, part);
        return true;
    }
}

// A non-advancing READ whose record has ended: the end-of-record condition ends it.
bool RecordGoesOn(LocalContext* context) {
    if (!(context->options & VRN_OPTION_NONADVANCING) || !context->recordOverflow) return true;
    FmtReadError(context);
    return false;
}

bool ReadPart(LocalContext* context, void* part, int32_t size, int32_t bytes, int32_t type) {
    FormatState& f = context->fmt;
    int32_t result = FormatControl(context, 0, type, size, part);
    if (result == kFormatStop) return false;
    if (result == kFormatMismatch) {
        // Nothing is consumed: the next item takes the next descriptor.
        return ErrorHandler(kClassRecoverable, kKindError, 110, 110, ArgText(1), DescName[f.desc], ArgText(2), "READ",
                            0u) == kRecover;
    }
    if (f.standardLevel && type < kTypeDerived && !DescTypeMatch.rows[f.desc][type]) {
        if (ErrorHandler(kClassLanguage, kKindError, 53, 53, ArgText(1), DescName[f.desc], ArgText(2), TypeName[type],
                         ArgText(3), "READ", 0u) != kRecover) {
            return false;
        }
    }
    return EditPart(context, part, bytes) && RecordGoesOn(context);
}

void ReadItem(LocalContext* context, char* item, int32_t totalLength, int32_t elementLength, int32_t type) {
    if (type < 0 || type >= kItemTypes) return;
    if (type == kTypeComplex) {
        if (ReadPart(context, item, elementLength, elementLength, type)) {
            ReadPart(context, item + totalLength / 2, elementLength, elementLength, type);
        }
        return;
    }
    if (NumDesc[type] == 0) return;
    int32_t size = type == kTypeCharacter ? totalLength : elementLength;
    ReadPart(context, item, size, size, type);
}

}  // namespace

VRN_EXPORT int32_t _vrnReadFmt(LocalContext* context, void* item, const int32_t* totalLength,
                               const int32_t* elementLength, int32_t type) {
    if (context->itemsStopped || context->fmt.format == nullptr) return context->status;
    ReadItem(context, static_cast<char*>(item), *totalLength, *elementLength, type);
    return context->status;
}

VRN_EXPORT int32_t _vrnReadFmtSeg(LocalContext* context, void* base, int32_t totalBytes, int32_t elementLength,
                                  int32_t type, int32_t characterLength) {
    if (context->itemsStopped || context->fmt.format == nullptr) return context->status;
    FormatState& f = context->fmt;
    char* item = static_cast<char*>(base);
    char* end = item + totalBytes;
    int32_t step = type == kTypeCharacter ? characterLength : elementLength;
    if (type == kTypeComplex) step = elementLength * 2;
    if (step <= 0) return context->status;
    int32_t partLength = type == kTypeComplex ? elementLength : step;
    while (item < end && !context->itemsStopped) {
        // A repetition of a descriptor whose operands are constants needs no trip through
        // format control.
        if (f.repeat > 0 && f.allConstant && !f.generic && type != kTypeComplex) {
            --f.repeat;
            f.scale = f.scaleSaved;
            f.w = f.wSaved;
            if (!EditPart(context, item, partLength) || !RecordGoesOn(context)) break;
        } else {
            ReadItem(context, item, type == kTypeComplex ? step : partLength, partLength, type);
        }
        item += step;
    }
    return context->status;
}

void FmtReadError(LocalContext* context) {
    if (context->status != 0) {
        context->itemsStopped = 1;
        return;
    }
    UnitRecord* unit = context->unit;
    bool standardEnd = context->global->options.optIostatEnd == VRN_KEY_2003STD;
    if (context->atEndOfFile && !context->recordOverflow) {
        if (unit != nullptr && context->shortRecordSeen) {
            ErrorHandler(kClassSevere, kKindEndOfFile, 122, -1, ArgText(1), UnitNameForMessages(unit), 0u);
        } else {
            IORaiseEndOfFile(context);
        }
        context->itemsStopped = 1;
        return;
    }
    if (!context->recordOverflow) return;
    if (context->options & VRN_OPTION_NONADVANCING) {
        ErrorHandler(kClassSevere, kKindEndOfRecord, 31, -4, 0u);
        // The file stands behind the record that ended, so that the next READ reads on.
        IOTerminateRecord(context);
        context->itemsStopped = 1;
        return;
    }
    if (context->padInput) return;
    int32_t answer;
    if (unit == nullptr) {
        answer = standardEnd && context->atEndOfFile ? ErrorHandler(kClassConversion, kKindEndOfFile, 2, -1, 0u)
                                                     : ErrorHandler(kClassConversion, kKindError, 5, 5, 0u);
    } else if (context->atEndOfFile || context->shortRecordSeen) {
        answer = ErrorHandler(kClassConversion, kKindEndOfFile, 1, -1, ArgText(1), UnitNameForMessages(unit), 0u);
    } else {
        answer = ErrorHandler(kClassConversion, kKindError, 4, 4, ArgText(1), UnitNameForMessages(unit), 0u);
    }
    if (answer == kRecover) context->itemsStopped = 1;
}

// Not constinit: clang does not take a cast function address as a constant expression,
// though both compilers still initialise the table statically.
const ReadFmtFunction ReadFmtFns[7] = {_vrnReadFmt, _vrnReadFmt, _vrnReadFmt, _vrnReadFmt,
                                                _vrnReadFmt, _vrnReadFmt,
                                                reinterpret_cast<ReadFmtFunction>(reinterpret_cast<void (*)()>(_vrnReadFmtDT))};
