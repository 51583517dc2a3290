// Formatted output of data items: format control picks the descriptor, the conversion
// builds the field in the statement's scratch buffer, and one IOWrite sends it.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "convert/decimal_digits.h"
#include "core/unit.h"
#include "format/descriptor_table.h"
#include "format/edit_output.h"
#include "format/format_control.h"
#include "transport/record_window.h"
#include "transport/transport.h"
#include "vrn90.h"

namespace {

// ---- Sending a field ----

constexpr int32_t kShortBlanks = 32;
constexpr char kBlanks[kShortBlanks + 1] = "                                ";

// A short count from the record layer: a negative one has been reported already.
bool Sent(LocalContext* context, int32_t written, int32_t wanted) {
    if (written == wanted) return true;
    if (written >= 0) FmtWriteError(context);
    context->itemsStopped = 1;
    return false;
}

bool Fill(LocalContext* context, int byte, int32_t count) {
    if (count <= 0) return true;
    return Sent(context, IOFill(context, byte, count), count);
}

bool Write(LocalContext* context, const char* text, int32_t count) {
    if (count <= 0) return true;
    return Sent(context, IOWrite(context, text, count), count);
}

// `length` characters of text, blanks in front up to `width`, then `trailing` blanks. The
// text may already stand at the end of the scratch buffer with room in front of it.
bool EmitField(LocalContext* context, const char* text, int32_t length, int32_t width, int32_t trailing) {
    int32_t lead = width - length;
    if (lead < 0) lead = 0;
    char* scratch = context->scanBuffer;
    int64_t total = static_cast<int64_t>(lead) + length + trailing;
    if (trailing == 0 && text >= scratch + lead && text + length == scratch + kScratchBytes) {
        char* start = const_cast<char*>(text) - lead;
        if (lead <= kShortBlanks && text >= scratch + kShortBlanks) {
            // A few blanks, as most fields have: one fixed-size copy instead of a call.
            std::memcpy(const_cast<char*>(text) - kShortBlanks, kBlanks, kShortBlanks);
        } else {
            std::memset(start, ' ', static_cast<size_t>(lead));
        }
        return Write(context, start, lead + length);
    }
    if (total <= kScratchBytes && (text < scratch || text >= scratch + kScratchBytes)) {
        std::memset(scratch, ' ', static_cast<size_t>(lead));
        std::memcpy(scratch + lead, text, static_cast<size_t>(length));
        std::memset(scratch + lead + length, ' ', static_cast<size_t>(trailing));
        return Write(context, scratch, static_cast<int32_t>(total));
    }
    return Fill(context, ' ', lead) && Write(context, text, length) && Fill(context, ' ', trailing);
}

bool Stars(LocalContext* context, int32_t width) { return Fill(context, '*', width); }

// `count` blanks at `p`, and not a byte beyond: a field's few leading blanks as two
// overlapping word stores rather than a call.
void FillBlanks(char* p, int32_t count) {
    if (count >= 8 && count <= 16) {
        std::memcpy(p, kBlanks, 8);
        std::memcpy(p + count - 8, kBlanks, 8);
    } else if (count >= 4 && count < 8) {
        std::memcpy(p, kBlanks, 4);
        std::memcpy(p + count - 4, kBlanks, 4);
    } else if (count < 4) {
        for (int32_t i = 0; i < count; ++i) p[i] = ' ';
    } else {
        std::memset(p, ' ', static_cast<size_t>(count));
    }
}

// ---- Integers ----

template <class T>
T Load(const void* item) {
    T value;
    std::memcpy(&value, item, sizeof value);
    return value;
}

int64_t SignedValue(const void* item, int32_t size) {
    switch (size) {
    case 1: return Load<int8_t>(item);
    case 2: return Load<int16_t>(item);
    case 4: return Load<int32_t>(item);
    default: return Load<int64_t>(item);
    }
}

uint32_t UnsignedSmall(const void* item, int32_t size) {
    switch (size) {
    case 1: return Load<uint8_t>(item);
    case 2: return Load<uint16_t>(item);
    default: return Load<uint32_t>(item);
    }
}

// The digits of the value, backward from `end`; the sign separately.
int32_t DecimalDigits(int64_t value, char* end) {
    uint64_t magnitude = value < 0 ? 0u - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    return FmtI8ToDec(static_cast<uint32_t>(magnitude >> 32), static_cast<uint32_t>(magnitude), end, false);
}

// The rule of I, B, O and Z with m: at least m digits, the sign in front of them.
bool WithMinimumDigits(LocalContext* context, char* digitsStart, int32_t count, char sign) {
    FormatState& f = context->fmt;
    int32_t m = f.d;
    int32_t signWidth = sign != 0 ? 1 : 0;
    if (f.w == 0) f.w = (count > m ? count : m) + signWidth;
    if (count == 1 && *digitsStart == '0' && m == 0) return Fill(context, ' ', f.w);
    if (count > f.w - signWidth || m > f.w - signWidth) return Stars(context, f.w);
    char* p = digitsStart;
    char* end = digitsStart + count;
    for (int32_t i = count; i < m; ++i) *--p = '0';
    if (sign != 0) *--p = sign;
    return EmitField(context, p, static_cast<int32_t>(end - p), f.w, 0);
}

bool EditInteger(LocalContext* context, const void* item) {
    FormatState& f = context->fmt;
    char* end = context->scanBuffer + kScratchBytes;
    int64_t value = SignedValue(item, f.size);
    if (f.desc == VRN_FMT_IM) {
        int32_t count = DecimalDigits(value, end);
        char sign = value < 0 ? '-' : f.signPlus ? '+' : 0;
        return WithMinimumDigits(context, end - count, count, sign);
    }
    // Iw with room in the record and the buffer: the field is made where it is written.
    if (f.w > 0) {
        uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
        char sign = value < 0 ? '-' : f.signPlus ? '+' : 0;
        int32_t length = decimal_digits::Count(magnitude) + (sign != 0 ? 1 : 0);
        if (length > f.w) return Stars(context, f.w);
        if (char* out = IOReserve(context, f.w)) {
            int32_t lead = f.w - length;
            FillBlanks(out, lead);
            if (sign != 0) out[lead] = sign;
            decimal_digits::Write64(magnitude, out + f.w);
            IOCommit(context, f.w);
            return true;
        }
    }
    int32_t count = f.size <= 4 ? FmtLongIntToDec(static_cast<int32_t>(value), end, f.signPlus != 0)
                                : FmtI8ToDec(static_cast<uint32_t>(static_cast<uint64_t>(value) >> 32),
                                             static_cast<uint32_t>(value), end, f.signPlus != 0);
    if (f.w == 0) f.w = count;
    if (count > f.w) return Stars(context, f.w);
    return EmitField(context, end - count, count, f.w, 0);
}

enum class Radix { kBinary, kOctal, kHex };

Radix RadixOf(uint32_t desc) {
    if (desc == VRN_FMT_B || desc == VRN_FMT_BM) return Radix::kBinary;
    if (desc == VRN_FMT_O || desc == VRN_FMT_OM) return Radix::kOctal;
    return Radix::kHex;
}

int32_t FullDigits(Radix radix, int32_t size) {
    switch (radix) {
    case Radix::kBinary: return 8 * size;
    case Radix::kOctal: return (8 * size + 2) / 3;
    default: return 2 * size;
    }
}

bool EditRadix(LocalContext* context, const void* item) {
    FormatState& f = context->fmt;
    Radix radix = RadixOf(f.desc);
    int32_t size = f.size;
    // Long items can need more digits than the scratch buffer holds.
    int32_t room = FullDigits(radix, size) + kScratchBytes;  // zeros up to m stand in front
    char* owned = nullptr;
    char* end = context->scanBuffer + kScratchBytes;
    if (FullDigits(radix, size) + 8 > kScratchBytes) {
        owned = static_cast<char*>(std::malloc(static_cast<size_t>(room)));
        if (owned == nullptr) {
            ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
            return false;
        }
        end = owned + room;
    }
    int32_t count;
    if (size == 1 || size == 2 || size == 4) {
        uint32_t value = UnsignedSmall(item, size);
        count = radix == Radix::kBinary ? FmtLongIntToBin(value, end)
                : radix == Radix::kOctal ? FmtLongIntToOct(value, end)
                                         : FmtLongIntToHex(value, end);
    } else {
        count = radix == Radix::kBinary ? FmtIToBin(size, item, end)
                : radix == Radix::kOctal ? FmtIToOct(size, item, end)
                                         : FmtIToHex(size, item, end);
    }
    bool withM = f.desc == VRN_FMT_BM || f.desc == VRN_FMT_OM || f.desc == VRN_FMT_ZM;
    bool ok;
    if (withM) {
        ok = WithMinimumDigits(context, end - count, count, 0);
    } else if ((context->options & VRN_OPTION_BOZ_RULE) && f.w != 0) {
        // The low-order digits that fit, zero-filled up to the item's full width: no stars.
        if (count > f.w) {
            ok = Write(context, end - f.w, f.w);
        } else {
            int32_t full = FullDigits(radix, size);
            int32_t zeros = (full < f.w ? full : f.w) - count;
            char* p = end - count;
            for (int32_t i = 0; i < zeros; ++i) *--p = '0';
            ok = EmitField(context, p, static_cast<int32_t>(end - p), f.w, 0);
        }
    } else {
        if (f.w == 0) f.w = count;
        ok = count > f.w ? Stars(context, f.w) : EmitField(context, end - count, count, f.w, 0);
    }
    std::free(owned);
    return ok;
}

// ---- Logical and character ----

bool EditLogical(LocalContext* context, const void* item, int32_t bytes) {
    FormatState& f = context->fmt;
    bool truth;
    if (context->options & VRN_OPTION_LOGICAL_OUTPUT) {
        truth = SignedValue(item, f.size) != 0;
    } else {
        // The low bit of the least significant byte.
        const auto* b = static_cast<const uint8_t*>(item);
        int32_t length = bytes < f.size ? bytes : f.size;
        uint8_t low = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? b[length - 1] : b[0];
        truth = (low & 1u) != 0;
    }
    char letter = truth ? 'T' : 'F';
    return EmitField(context, &letter, 1, f.w, 0);
}

// On a formatted stream file a newline inside a character value ends a record there: the
// column continues from the bytes behind it.
void FollowStreamNewline(LocalContext* context, const char* written, int32_t count) {
    UnitRecord* unit = context->unit;
    if (unit == nullptr || unit->access != VRN_KEY_STREAM || unit->form != VRN_KEY_FORMATTED) return;
    for (int32_t i = count - 1; i >= 0; --i) {
        if (written[i] == '\n') {
            context->column = context->highWater = count - 1 - i;
            return;
        }
    }
}

bool EditCharacter(LocalContext* context, const void* item, int32_t bytes) {
    FormatState& f = context->fmt;
    const char* text = static_cast<const char*>(item);
    int32_t count = bytes;
    bool ok;
    if (f.desc == VRN_FMT_A) {
        ok = Write(context, text, count);
    } else if (bytes >= f.w) {
        count = f.w;
        ok = Write(context, text, count);
    } else {
        ok = Fill(context, ' ', f.w - bytes) && Write(context, text, count);
    }
    if (ok) FollowStreamNewline(context, text, count);
    return ok;
}

// ---- Reals ----

// A real field: its text, with its long runs of zeros sent as fills.
bool EmitRealField(LocalContext* context, const RealField& field, int32_t width, int32_t trailing) {
    int32_t plainLength = 0;
    if (const char* plain = field.Plain(&plainLength)) return EmitField(context, plain, plainLength, width, trailing);
    int64_t lead = width - field.length;
    if (!Fill(context, ' ', lead > 0 ? static_cast<int32_t>(lead) : 0)) return false;
    for (int32_t i = 0; i < field.pieceCount; ++i) {
        const RealField::Piece& piece = field.pieces[i];
        if (!Write(context, field.text + piece.start, piece.length) ||
            !Fill(context, '0', static_cast<int32_t>(piece.zerosAfter))) {
            return false;
        }
    }
    return Fill(context, ' ', trailing);
}

bool EditReal(LocalContext* context, const void* item) {
    FormatState& f = context->fmt;
    RealField field;
    bool ok = false;
    bool withTrailing = true;
    switch (f.desc) {
    case VRN_FMT_D: ok = FmtRToQED(context, item, f.size, &field, &f, 'D'), withTrailing = false; break;
    case VRN_FMT_QWD: ok = FmtRToQED(context, item, f.size, &field, &f, 'Q'), withTrailing = false; break;
    case VRN_FMT_F: ok = FmtRToF(context, item, f.size, &field, &f); break;
    case VRN_FMT_E: ok = FmtRToQED(context, item, f.size, &field, &f, 'E'), withTrailing = false; break;
    case VRN_FMT_EE: ok = FmtRToEExp(context, item, f.size, &field, &f, 'E'), withTrailing = false; break;
    case VRN_FMT_ED: ok = FmtRToEExp(context, item, f.size, &field, &f, 'D'), withTrailing = false; break;
    case VRN_FMT_EQ: ok = FmtRToEExp(context, item, f.size, &field, &f, 'Q'), withTrailing = false; break;
    case VRN_FMT_EN: ok = FmtRToEN(context, item, f.size, &field, &f); break;
    case VRN_FMT_ENE: ok = FmtRToENExp(context, item, f.size, &field, &f); break;
    case VRN_FMT_ES: ok = FmtRToES(context, item, f.size, &field, &f); break;
    case VRN_FMT_ESE: ok = FmtRToESExp(context, item, f.size, &field, &f); break;
    default: return true;
    }
    int32_t trailing = withTrailing ? f.trailingBlanks : 0;
    if (!ok) {
        int64_t width = static_cast<int64_t>(f.w) + trailing;
        return Stars(context, width > 0 ? static_cast<int32_t>(width) : 0);
    }
    return EmitRealField(context, field, f.w, trailing);
}

// ---- One item ----

// One descriptor for one part of an item; false when the transfer ends.
bool WritePart(LocalContext* context, const void* part, int32_t size, int32_t bytes, int32_t type) {
    FormatState& f = context->fmt;
    int32_t result = FormatControl(context, 0, type, size, part);
    if (result == kFormatStop) return false;
    if (result == kFormatMismatch) {
        if (ErrorHandler(kClassRecoverable, kKindError, 110, 110, ArgText(1), DescName[f.desc], ArgText(2), "WRITE",
                         0u) != kRecover) {
            return false;
        }
        return f.w <= 0 || Stars(context, f.w);
    }
    if (f.standardLevel && type < kTypeDerived && !DescTypeMatch.rows[f.desc][type]) {
        if (ErrorHandler(kClassLanguage, kKindError, 53, 53, ArgText(1), DescName[f.desc], ArgText(2), TypeName[type],
                         ArgText(3), "WRITE", 0u) != kRecover) {
            return false;
        }
    }
    switch (f.desc) {
    case VRN_FMT_I:
    case VRN_FMT_IM: return EditInteger(context, part);
    case VRN_FMT_B:
    case VRN_FMT_BM:
    case VRN_FMT_O:
    case VRN_FMT_OM:
    case VRN_FMT_Z:
    case VRN_FMT_ZM: return EditRadix(context, part);
    case VRN_FMT_L: return EditLogical(context, part, bytes);
    case VRN_FMT_A:
    case VRN_FMT_AW: return EditCharacter(context, part, bytes);
    default: return EditReal(context, part);
    }
}

void WriteItem(LocalContext* context, const char* item, int32_t totalLength, int32_t elementLength, int32_t type) {
    if (type < 0 || type >= kItemTypes) return;
    if (type == kTypeComplex) {
        if (WritePart(context, item, elementLength, elementLength, type)) {
            WritePart(context, item + totalLength / 2, elementLength, elementLength, type);
        }
        return;
    }
    if (NumDesc[type] == 0) return;
    int32_t size = type == kTypeCharacter ? totalLength : elementLength;
    WritePart(context, item, size, size, type);
}

}  // namespace

VRN_EXPORT int32_t _vrnWriteFmt(LocalContext* context, const void* item, const int32_t* totalLength,
                                const int32_t* elementLength, int32_t type) {
    if (context->itemsStopped || context->fmt.format == nullptr) return context->status;
    WriteItem(context, static_cast<const char*>(item), *totalLength, *elementLength, type);
    return context->status;
}

VRN_EXPORT int32_t _vrnWriteFmtSeg(LocalContext* context, const void* base, int32_t totalBytes, int32_t elementLength,
                                   int32_t type, int32_t characterLength) {
    if (context->itemsStopped || context->fmt.format == nullptr) return context->status;
    FormatState& f = context->fmt;
    const char* item = static_cast<const char*>(base);
    const char* end = item + totalBytes;
    int32_t step = type == kTypeCharacter ? characterLength : elementLength;
    if (type == kTypeComplex) step = elementLength * 2;
    if (step <= 0) return context->status;
    int32_t partLength = type == kTypeComplex ? elementLength : step;
    while (item < end && !context->itemsStopped) {
        // A repetition of a descriptor whose operands are constants needs no trip through
        // format control: only its width comes back.
        if (f.repeat > 0 && f.allConstant && !f.generic && type != kTypeComplex) {
            --f.repeat;
            f.scale = f.scaleSaved;
            f.w = f.wSaved;
            bool ok = false;
            switch (f.desc) {
            case VRN_FMT_I:
            case VRN_FMT_IM: ok = EditInteger(context, item); break;
            case VRN_FMT_B:
            case VRN_FMT_BM:
            case VRN_FMT_O:
            case VRN_FMT_OM:
            case VRN_FMT_Z:
            case VRN_FMT_ZM: ok = EditRadix(context, item); break;
            case VRN_FMT_L: ok = EditLogical(context, item, partLength); break;
            case VRN_FMT_A:
            case VRN_FMT_AW: ok = EditCharacter(context, item, partLength); break;
            default: ok = EditReal(context, item); break;
            }
            if (!ok) break;
        } else {
            WriteItem(context, item, type == kTypeComplex ? step : partLength, partLength, type);
        }
        item += step;
    }
    return context->status;
}

void FmtWriteError(LocalContext* context) {
    if (context->recordOverflow) {
        int32_t answer;
        if (context->unit != nullptr) {
            answer = ErrorHandler(kClassConversion, kKindError, 4, 4, ArgText(1), UnitNameForMessages(context->unit),
                                  0u);
        } else {
            answer = ErrorHandler(kClassConversion, kKindError, 5, 5, 0u);
        }
        if (answer == kRecover) context->itemsStopped = 1;
        return;
    }
    int32_t iostat = (context->options & VRN_OPTION_LD_OVERFLOW_MINUS2) ? -2 : 2;
    ErrorHandler(kClassSevere, kKindError, 2, iostat, 0u);
}

// Not constinit: clang does not take a cast function address as a constant expression,
// though both compilers still initialise the table statically.
const WriteFmtFunction WriteFmtFns[7] = {_vrnWriteFmt, _vrnWriteFmt, _vrnWriteFmt, _vrnWriteFmt,
                                                  _vrnWriteFmt, _vrnWriteFmt,
                                                  reinterpret_cast<WriteFmtFunction>(reinterpret_cast<void (*)()>(_vrnWriteFmtDT))};
