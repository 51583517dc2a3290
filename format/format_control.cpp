// Format control: one call per data item walks the code to the next data descriptor,
// carrying out the control operations on the way, and leaves the descriptor, its operands
// and the item's size in the statement's FormatState.
//
// The code is read in either encoding: 32-bit words or 64-bit slots. Operand values are
// narrowed to 32 bits, saturating, since every width, count and position in force is one.
#include "format/format_control.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "core/context.h"
#include "core/errors.h"
#include "core/statement.h"
#include "core/unit.h"
#include "format/descriptor_table.h"
#include "format/edit_output.h"
#include "format/encoded_format.h"
#include "format/format_cache.h"
#include "transport/transport.h"
#include "vrn90.h"

constinit const char* const TypeName[6] = {"INTEGER", "LOGICAL", "CHARACTER", "BYTE", "REAL", "COMPLEX"};
constinit const int32_t NumDesc[kItemTypes] = {1, 1, 1, 1, 1, 2, 0};

namespace {

constexpr int32_t kFormatErrorIostat = 58;
constexpr int32_t kInitialStackEntries = 0x200;
constexpr int32_t kFirstInner = 1;  // a group directly inside the outer parentheses
constexpr uint32_t kAllValueOperands[5] = {0, 0x1, 0x11, 0x111, 0x1111};

constexpr DescTypeMatchTable BuildTypeMatch() {
    DescTypeMatchTable t{};
    for (int code = 20; code <= 27; ++code) t.rows[code][kTypeInteger] = 1;
    for (int code : {28, 30, 31, 32, 35, 36, 37, 38}) t.rows[code][kTypeReal] = t.rows[code][kTypeComplex] = 1;
    for (int code : {39, 40}) {
        for (int type : {kTypeInteger, kTypeLogical, kTypeCharacter, kTypeReal, kTypeComplex}) t.rows[code][type] = 1;
    }
    t.rows[43][kTypeLogical] = 1;
    t.rows[44][kTypeCharacter] = t.rows[45][kTypeCharacter] = 1;
    t.rows[50][kTypeDerived] = 1;
    return t;
}

}  // namespace

constinit const DescTypeMatchTable DescTypeMatch = BuildTypeMatch();

namespace {

bool Writing(const LocalContext* context) {
    return ((context->statementFlags >> 8) & 0xFFu) == VRN_DIRECTION_WRITE;
}

int32_t Narrow(int64_t value) {
    if (value > INT32_MAX) return INT32_MAX;
    if (value < INT32_MIN) return INT32_MIN;
    return static_cast<int32_t>(value);
}

// One record ended by "/", by a reversion or by the end of the statement. An internal
// file has no record behind its last: ending one there is the end-of-file error, which
// also keeps "(1000000000/)" from spinning on it.
bool EndRecord(LocalContext* context) {
    if (Writing(context) && context->unit == nullptr && context->atEndOfFile) {
        FmtWriteError(context);
        context->itemsStopped = 1;
        return false;
    }
    if (IOTerminateRecord(context)) return true;
    if (!Writing(context)) FmtReadError(context);
    return false;
}

bool RaiseFormatError(int32_t message, const char* name, int32_t value) {
    return ErrorHandler(kClassRecoverable, kKindError, message, kFormatErrorIostat, ArgText(1), name, ArgInt(2), value,
                        0u) == kRecover;
}

// The stack survives statements; a deeper format than any before replaces it.
bool EnsureStack(FormatState& f, int64_t depth) {
    if (depth <= f.stackCapacity && f.stackBase != nullptr) return true;
    int64_t entries = depth > kInitialStackEntries ? depth : kInitialStackEntries;
    if (entries > INT32_MAX / static_cast<int64_t>(sizeof(FormatStackEntry))) return false;
    std::free(f.stackBase);
    f.stackBase = static_cast<FormatStackEntry*>(std::malloc(static_cast<size_t>(entries) * sizeof(FormatStackEntry)));
    f.stackCapacity = f.stackBase != nullptr ? static_cast<int32_t>(entries) : 0;
    return f.stackBase != nullptr;
}

// A malformed pre-encoded code may nest deeper than its header says.
bool Push(FormatState& f, int32_t count, const void* start) {
    if (f.top + 1 >= f.stackCapacity) {
        int64_t grown = static_cast<int64_t>(f.stackCapacity) * 2 + 1;
        auto* bigger = static_cast<FormatStackEntry*>(std::realloc(f.stackBase, static_cast<size_t>(grown) * sizeof(FormatStackEntry)));
        if (bigger == nullptr) return false;
        f.stackBase = bigger;
        f.stackCapacity = static_cast<int32_t>(grown);
    }
    f.stackBase[++f.top] = FormatStackEntry{count, start, f.effects};
    return true;
}

DefaultTriple DefaultsFor(const DescDefaultRow& row, int32_t size, int32_t bytes) {
    switch (row.defaultKind) {
    case kDefaultsBySize: {
        const DefaultTriple* triple = row.defaultsBySize[size > 16 ? 16 : (size < 0 ? 0 : size)];
        return triple != nullptr ? *triple : DefaultTriple{1, 0, 0};
    }
    case kConstantDefaults: return *row.constantDefaults;
    case kSizeIsWidth: return DefaultTriple{bytes, 0, 0};
    case kDefaultFunction: return row.defaultFunction(bytes);
    default: return DefaultTriple{0, 0, 0};
    }
}

// The normalised size of an item of `bytes` for a descriptor; false when it does not fit.
bool NormaliseSize(const DescDefaultRow& row, int32_t bytes, int32_t* size) {
    if (row.sizes != nullptr) {
        int8_t entry = row.sizes[bytes > 16 ? 16 : (bytes < 0 ? 0 : bytes)];
        *size = entry;
        return entry >= 0;
    }
    *size = bytes;
    return bytes != 0 || row.anySize;
}

// Step 5: the size, and a width of zero on input. `bytes` is the item's length.
int32_t CheckItemSize(LocalContext* context, int32_t bytes) {
    FormatState& f = context->fmt;
    const DescDefaultRow& row = DescDefaultTable[f.desc];
    if (!NormaliseSize(row, bytes, &f.size)) return kFormatMismatch;
    if (row.zeroWidthError && f.w == 0 && context->statementFlags != kNoStatement && !Writing(context)) {
        if (!RaiseFormatError(190, DescName[f.desc], 0)) return kFormatStop;
        f.w = DefaultsFor(row, f.size, bytes).w;
    }
    return kFormatTransfer;
}

uint32_t GenericTarget(uint32_t code, int32_t type) {
    switch (type) {
    case kTypeInteger:
    case kTypeByte: return VRN_FMT_I;
    case kTypeLogical: return VRN_FMT_L;
    case kTypeCharacter: return VRN_FMT_AW;
    case kTypeReal:
    case kTypeComplex: return code == VRN_FMT_G ? VRN_FMT_E : code - VRN_FMT_G + VRN_FMT_E;
    default: return code;
    }
}

template <class Unit>
struct Interpreter {
    static const Unit* At(const void* p) { return static_cast<const Unit*>(p); }
    static uint32_t OpWord(const void* p) { return static_cast<uint32_t>(At(p)[0]); }
    static int64_t Operand(const void* p, int index) { return static_cast<int64_t>(At(p)[index + 1]); }
    static const void* Advance(const void* p, int64_t units) { return At(p) + units; }

    static int32_t Control(LocalContext* context, int32_t endOfList, int32_t type, int32_t size, const void* item);
    static int32_t Setup(LocalContext* context, uint32_t code, int32_t size);
    static bool DefinedEditOf(LocalContext* context, DefinedEdit* edit);

  private:
    static int32_t PrepareItem(LocalContext* context, int32_t type, int32_t size, const void* item);
    static int32_t Header(LocalContext* context, uint32_t op);
    static int32_t Literal(LocalContext* context);
    static bool ControlValue(LocalContext* context, uint32_t code, uint32_t op, int32_t message, bool* skip,
                             int32_t* value);
    static int32_t EndOfFormat(LocalContext* context, int32_t endOfList);
    static int32_t EndRecords(LocalContext* context, int32_t count);
    static int64_t OperandUnits(uint32_t op);
};

template <class Unit>
int64_t Interpreter<Unit>::OperandUnits(uint32_t op) {
    uint32_t code = DescriptorCode(op);
    if (code < static_cast<uint32_t>(kDescriptorCodes)) return DescOperands[code];
    // A code this run-time does not know: as many operands as it has kinds.
    int64_t count = 0;
    for (uint32_t kinds = op & 0xFFFFu; kinds != 0; kinds >>= 4) ++count;
    return count;
}

template <class Unit>
int32_t Interpreter<Unit>::Header(LocalContext* context, uint32_t op) {
    FormatState& f = context->fmt;
    f.sawData = f.reverted = f.dollar = 0;
    f.blankZero = context->modeBlank == VRN_KEY_ZERO;
    f.signPlus = context->modeSign == VRN_KEY_PLUS;
    f.scale = f.scaleSaved = 0;
    f.decimalComma = context->modeDecimal == VRN_KEY_COMMA;
    f.standardLevel = StrictLanguageLevel(context->global->options);
    f.roundMode = StatementRoundKey(context);
    f.processorRound = -1;
    if (!EnsureStack(f, Operand(f.current, VRN_FMT_HEADER_DEPTH - 1))) {
        ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
        return kFormatStop;
    }
    f.top = -1;
    f.reversion = f.next = Advance(f.current, 1 + OperandUnits(op));
    return kFormatTransfer;
}

// The value of P, T, TL, TR or X, or of a repeat count. false when the statement stops;
// *skip when a bad value was recovered from and the operation is to be skipped.
template <class Unit>
bool Interpreter<Unit>::ControlValue(LocalContext* context, uint32_t code, uint32_t op, int32_t message, bool* skip,
                                     int32_t* value) {
    FormatState& f = context->fmt;
    const DescDefaultRow& row = DescDefaultTable[code];
    *skip = false;
    switch (op & 0xFu) {
    case VRN_FMT_CONSTANT: *value = Narrow(Operand(f.current, 0)); return true;
    case VRN_FMT_VARIABLE: {
        int64_t index = Operand(f.current, 0);
        int64_t result = f.expressionTable != nullptr ? f.expressionTable[index](f.expressionEnv) : 0;
        if (row.rangeCount > 0 && (result < row.ranges[0].minimum || result > row.ranges[0].maximum)) {
            if (!RaiseFormatError(message, DescName[code], Narrow(result))) return false;
            if (row.defaultKind == kConstantDefaults && code != VRN_FMT_X) {
                *value = row.constantDefaults->w;
            } else {
                *skip = true;
            }
            return true;
        }
        *value = Narrow(result);
        return true;
    }
    case VRN_FMT_OMITTED:
        if (row.defaultKind == kConstantDefaults) *value = row.constantDefaults->w;
        else *skip = true;
        return true;
    default: return true;  // absent: the value stays
    }
}

template <class Unit>
int32_t Interpreter<Unit>::EndRecords(LocalContext* context, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        if (!EndRecord(context)) return kFormatStop;
    }
    return kFormatTransfer;
}

// A literal: written, or on input skipped over in the record.
template <class Unit>
int32_t Interpreter<Unit>::Literal(LocalContext* context) {
    FormatState& f = context->fmt;
    int32_t length = Narrow(Operand(f.current, 0));
    int64_t totalUnits = Operand(f.current, 1);
    f.next = Advance(f.current, totalUnits > 0 ? totalUnits : 3);
    int32_t times = f.repeat + 1;
    f.repeat = 0;
    const char* text = reinterpret_cast<const char*>(At(f.current) + 3);
    for (int32_t i = 0; i < times; ++i) {
        if (!Writing(context)) {
            IOSeekToColumn(context, length, kSeekRelative, 1);
            continue;
        }
        int32_t written = IOWrite(context, text, length);
        if (written < 0) return kFormatStop;
        if (written < length) {
            FmtWriteError(context);
            return kFormatStop;
        }
    }
    return kFormatTransfer;
}

template <class Unit>
int32_t Interpreter<Unit>::EndOfFormat(LocalContext* context, int32_t endOfList) {
    FormatState& f = context->fmt;
    if (endOfList) return kFormatTransfer;
    if (!f.sawData) {
        if (ErrorHandler(kClassRecoverable, kKindError, 157, kFormatErrorIostat, 0u) == kRecover) {
            context->itemsStopped = 1;
        }
        return kFormatStop;
    }
    if (f.top >= 0) --f.top;
    f.reverted = 1;
    f.sawData = 0;
    f.next = f.reversion;
    if (f.dollar) {
        f.dollar = 0;
        return kFormatTransfer;
    }
    return EndRecords(context, 1);
}

template <class Unit>
int32_t Interpreter<Unit>::Control(LocalContext* context, int32_t endOfList, int32_t type, int32_t size,
                                   const void* item) {
    FormatState& f = context->fmt;
    if (f.repeat > 0) {
        if (endOfList) return kFormatTransfer;
        --f.repeat;
        f.scale = f.scaleSaved;
        f.trailingBlanks = 0;
        if (f.allConstant && !f.generic) {
            f.w = f.wSaved;
            return CheckItemSize(context, size);
        }
        return PrepareItem(context, type, size, item);
    }
    for (;;) {
        f.current = f.next;
        uint32_t op = OpWord(f.current);
        if (!(op & 0x80000000u)) {
            if (endOfList) return kFormatTransfer;
            ++f.effects;
            f.sawData = 1;
            f.scale = f.scaleSaved;
            f.generic = (op >> 30) & 1;
            f.opWord = op;
            uint32_t code = DescriptorCode(op);
            f.next = Advance(f.current, code == VRN_FMT_DT ? Operand(f.current, 3) : 1 + OperandUnits(op));
            f.expressionDone[0] = f.expressionDone[1] = f.expressionDone[2] = 0;
            return PrepareItem(context, type, size, item);
        }
        uint32_t code = DescriptorCode(op);
        f.next = Advance(f.current, 1 + OperandUnits(op));
        bool skip;
        int32_t value;
        switch (code) {
        case VRN_FMT_HEADER:
        case VRN_FMT_HEADER_PADDED:
            if (Header(context, op) == kFormatStop) return kFormatStop;
            break;
        case VRN_FMT_LPAREN: {
            if (!Push(f, f.repeat, f.next)) {
                ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
                return kFormatStop;
            }
            if (f.top == kFirstInner && !f.reverted) {
                f.sawData = 0;
                f.reversion = f.repeat > 0 ? f.repeatAt : f.current;
            }
            f.repeat = 0;
            break;
        }
        case VRN_FMT_RPAREN: {
            if (f.top < 0) break;
            FormatStackEntry& group = f.stackBase[f.top];
            // A pass that transferred nothing and moved nothing only set modes again: the
            // passes left would do the same, however many a repeat count asks for.
            if (group.count > 0 && group.effectsMark != f.effects) {
                --group.count;
                group.effectsMark = f.effects;
                f.next = group.start;
            } else {
                --f.top;
            }
            break;
        }
        case VRN_FMT_REPEAT:
            if (!ControlValue(context, code, op, 65, &skip, &value)) return kFormatStop;
            if (skip) value = 1;
            f.repeatAt = f.current;
            f.repeat = value - 1;
            break;
        case VRN_FMT_END:
            if (EndOfFormat(context, endOfList) == kFormatStop) return kFormatStop;
            if (endOfList) return kFormatTransfer;
            break;
        case VRN_FMT_CONT: f.next = ContTarget(At(f.current)); break;
        case VRN_FMT_SLASH: {
            ++f.effects;
            int32_t times = f.repeat + 1;
            f.repeat = 0;
            if (EndRecords(context, times) == kFormatStop) return kFormatStop;
            break;
        }
        case VRN_FMT_COLON:
            if (endOfList) return kFormatTransfer;
            break;
        case VRN_FMT_BN: f.blankZero = 0; break;
        case VRN_FMT_BZ: f.blankZero = 1; break;
        case VRN_FMT_P:
            value = f.scale;
            if (!ControlValue(context, code, op, 70, &skip, &value)) return kFormatStop;
            f.scale = f.scaleSaved = skip ? 0 : value;
            break;
        case VRN_FMT_S:
        case VRN_FMT_SS: f.signPlus = 0; break;
        case VRN_FMT_SP: f.signPlus = 1; break;
        case VRN_FMT_T:
        case VRN_FMT_TL:
        case VRN_FMT_TR:
        case VRN_FMT_X: {
            value = 0;
            ++f.effects;
            if (!ControlValue(context, code, op, 74, &skip, &value)) return kFormatStop;
            if (skip) break;
            if (code == VRN_FMT_T) IOSeekToColumn(context, value, kSeekAbsolute, 1);
            else IOSeekToColumn(context, code == VRN_FMT_TL ? -value : value, kSeekRelative, 1);
            break;
        }
        case VRN_FMT_DOLLAR:
            if (Writing(context) && ((context->statementFlags >> 16) & 0x7Fu) != VRN_ACCESS_DIRECT) f.dollar = 1;
            break;
        case VRN_FMT_APOSTROPHE:
        case VRN_FMT_QUOTE:
        case VRN_FMT_H:
            ++f.effects;
            if (Literal(context) == kFormatStop) return kFormatStop;
            break;
        case VRN_FMT_DC: f.decimalComma = 1; break;
        case VRN_FMT_DP: f.decimalComma = 0; break;
        case VRN_FMT_RU: f.roundMode = VRN_KEY_UP; break;
        case VRN_FMT_RD: f.roundMode = VRN_KEY_DOWN; break;
        case VRN_FMT_RZ: f.roundMode = VRN_KEY_ZERO; break;
        case VRN_FMT_RN: f.roundMode = VRN_KEY_NEAREST; break;
        case VRN_FMT_RC: f.roundMode = VRN_KEY_COMPATIBLE; break;
        case VRN_FMT_RP: f.roundMode = VRN_KEY_PROCESSOR_DEFINED; break;
        default: break;  // a no-op, or a code this run-time steps over
        }
    }
}

// Steps 4 and 5 for the data op at `current`, first time or repeated.
template <class Unit>
int32_t Interpreter<Unit>::PrepareItem(LocalContext* context, int32_t type, int32_t size, const void* item) {
    FormatState& f = context->fmt;
    uint32_t op = f.opWord;
    uint32_t code = DescriptorCode(op);
    f.trailingBlanks = 0;
    if (f.generic) {
        f.allConstant = 0;
        uint32_t target = GenericTarget(code, type);
        int32_t result = Setup(context, target, size);
        if (result == kFormatTransfer && Writing(context) && (type == kTypeReal || type == kTypeComplex)) {
            if (context->options & VRN_OPTION_FORMAT_CONTROL_RULE) {
                ApplyF77Rules(&f, DescOperands[target], f.size, item);
            } else {
                ApplyF90Rules(&f, DescOperands[target], f.size, item);
            }
        }
        return result;
    }
    int32_t count = code < static_cast<uint32_t>(kDescriptorCodes) ? DescOperands[code] : 0;
    if (code == VRN_FMT_DT || count > 3 || (op & 0xFFFFu) != kAllValueOperands[count]) {
        f.allConstant = 0;
        return Setup(context, code, size);
    }
    f.allConstant = 1;
    f.desc = code;
    f.w = count > 0 ? Narrow(Operand(f.current, 0)) : 0;
    f.d = count > 1 ? Narrow(Operand(f.current, 1)) : 0;
    f.e = count > 2 ? Narrow(Operand(f.current, 2)) : 0;
    f.wSaved = f.w;
    return CheckItemSize(context, size);
}

template <class Unit>
int32_t Interpreter<Unit>::Setup(LocalContext* context, uint32_t code, int32_t bytes) {
    FormatState& f = context->fmt;
    if (code >= static_cast<uint32_t>(kDescriptorCodes)) code = 0;
    const DescDefaultRow& row = DescDefaultTable[code];
    int32_t result = kFormatTransfer;
    f.desc = code;
    if (!NormaliseSize(row, bytes, &f.size)) {
        result = kFormatMismatch;
        f.size = 4;
    }
    bool standard90 = context->global->options.optLangLvl == VRN_KEY_90STD;
    int32_t count = code == VRN_FMT_DT ? 0 : DescOperands[code];
    if (count > 3) count = 3;
    int32_t values[3] = {0, 0, 0};
    bool haveDefaults = false;
    DefaultTriple defaults{};
    auto fallback = [&](int index) {
        if (!haveDefaults) {
            defaults = DefaultsFor(row, f.size, bytes);
            haveDefaults = true;
        }
        return index == 0 ? defaults.w : index == 1 ? defaults.d : defaults.e;
    };
    for (int i = 0; i < count; ++i) {
        uint32_t kind = (f.opWord >> (4 * i)) & 0xFu;
        int64_t value;
        bool checked = true;
        if (kind == VRN_FMT_CONSTANT) {
            value = Operand(f.current, i);
            checked = f.generic;
        } else if (kind == VRN_FMT_VARIABLE) {
            if (!f.expressionDone[i]) {
                int64_t index = Operand(f.current, i);
                int64_t computed = f.expressionTable != nullptr ? f.expressionTable[index](f.expressionEnv) : 0;
                f.expressionValue[i] = Narrow(computed);
                f.expressionDone[i] = 1;
            }
            value = f.expressionValue[i];
        } else if (kind == VRN_FMT_OMITTED) {
            values[i] = fallback(i);
            continue;
        } else {
            continue;
        }
        bool outside = checked && i < row.rangeCount &&
                       (value < row.ranges[i].minimum || value > row.ranges[i].maximum);
        if (checked && f.generic && i == 0 && value == 0) outside = true;
        const char* name = f.generic ? DescName[VRN_FMT_G] : DescName[code];
        if (outside) {
            bool withM = code == VRN_FMT_IM || code == VRN_FMT_BM || code == VRN_FMT_OM || code == VRN_FMT_ZM;
            int32_t message = i == 0 ? 61 : i == 1 ? (withM ? 80 : 81) : 83;
            if (!RaiseFormatError(message, name, Narrow(value))) return kFormatStop;
            value = fallback(i);
        } else if (value == 0 && i == 0 && row.zeroWidthError) {
            if (checked && standard90) {
                if (!RaiseFormatError(189, name, 0)) return kFormatStop;
                value = fallback(i);
            }
            if (value == 0 && !Writing(context) && context->statementFlags != kNoStatement) {
                if (!RaiseFormatError(190, name, 0)) return kFormatStop;
                value = fallback(i);
            }
        }
        values[i] = Narrow(value);
    }
    f.w = values[0];
    f.d = values[1];
    f.e = values[2];
    return result;
}


// The op of DT: the type text's length, the v-list's element width and byte length, the
// op's total units, then the type text padded to a unit, then the v-list in groups.
template <class Unit>
bool Interpreter<Unit>::DefinedEditOf(LocalContext* context, DefinedEdit* edit) {
    FormatState& f = context->fmt;
    const Unit* op = At(f.current);
    auto typeLength = static_cast<int32_t>(op[1]);
    auto width = static_cast<int32_t>(op[2]);
    auto listBytes = static_cast<int32_t>(op[3]);
    if (width != 2 && width != 8) width = 4;
    const auto* typeText = reinterpret_cast<const uint8_t*>(op + 5);
    const uint8_t* list = typeText + (typeLength + sizeof(Unit) - 1) / sizeof(Unit) * sizeof(Unit);
    // Every entry takes at least 2 bytes of the list, so this bounds the count.
    int32_t most = listBytes / 2;
    int32_t textBytes = (2 + typeLength + 7) / 8 * 8;
    auto* block = static_cast<uint8_t*>(std::malloc(static_cast<size_t>(textBytes + most * 8 + 8)));
    if (block == nullptr) {
        ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
        return false;
    }
    block[0] = 'D';
    block[1] = 'T';
    if (typeLength > 0) std::memcpy(block + 2, typeText, static_cast<size_t>(typeLength));
    uint8_t* values = block + textBytes;
    int32_t count = 0;
    auto store = [&](int64_t value) {
        int16_t narrow = static_cast<int16_t>(value);
        int32_t middle = static_cast<int32_t>(value);
        uint8_t* at = values + static_cast<ptrdiff_t>(count) * width;
        if (width == 2) std::memcpy(at, &narrow, 2);
        else if (width == 4) std::memcpy(at, &middle, 4);
        else std::memcpy(at, &value, 8);
        ++count;
    };
    for (int32_t offset = 0; offset + 4 <= listBytes;) {
        uint32_t head;
        std::memcpy(&head, list + offset, 4);
        uint32_t entries = head & 0x3FFFFFFFu;
        uint32_t group = head >> 30;
        offset += 4;
        int32_t entryBytes = group == 0 ? width : 4;
        for (uint32_t i = 0; i < entries && offset + entryBytes <= listBytes && count < most; ++i) {
            int64_t value = 0;
            if (group == 0 && width == 2) {
                int16_t v;
                std::memcpy(&v, list + offset, 2);
                value = v;
            } else if (group == 0 && width == 8) {
                std::memcpy(&value, list + offset, 8);
            } else {
                int32_t v;
                std::memcpy(&v, list + offset, 4);
                value = v;
                if (group == 1) value = f.expressionTable != nullptr ? f.expressionTable[v](f.expressionEnv) : 0;
            }
            store(value);
            offset += entryBytes;
        }
    }
    *edit = DefinedEdit{block, reinterpret_cast<const char*>(block), 2 + typeLength, values, count};
    return true;
}

}  // namespace

int32_t FormatControl(LocalContext* context, int32_t endOfList, int32_t type, int32_t size, const void* item) {
    if (context->fmt.wide) return Interpreter<int64_t>::Control(context, endOfList, type, size, item);
    return Interpreter<int32_t>::Control(context, endOfList, type, size, item);
}

bool TakeDefinedEdit(LocalContext* context, DefinedEdit* edit) {
    int32_t result = FormatControl(context, 0, kTypeDerived, 0, nullptr);
    if (result == kFormatStop) return false;
    if (result == kFormatMismatch || context->fmt.desc != VRN_FMT_DT) {
        const char* name = context->fmt.desc < static_cast<uint32_t>(kDescriptorCodes) ? DescName[context->fmt.desc] : "";
        ErrorHandler(kClassRecoverable, kKindError, 110, 110, ArgText(1), name, ArgText(2),
                     Writing(context) ? "WRITE" : "READ", 0u);
        context->itemsStopped = 1;
        return false;
    }
    if (context->fmt.wide) return Interpreter<int64_t>::DefinedEditOf(context, edit);
    return Interpreter<int32_t>::DefinedEditOf(context, edit);
}

int32_t SetupDataDescriptor(LocalContext* context, uint32_t code, int32_t size) {
    if (context->fmt.wide) return Interpreter<int64_t>::Setup(context, code, size);
    return Interpreter<int32_t>::Setup(context, code, size);
}

int32_t BeginIOFmt(LocalContext* context, void* formatBlock) {
    FormatState& f = context->fmt;
    f.format = nullptr;
    const auto* block = static_cast<const VrnFormatBlock*>(formatBlock);
    // No block: the statement has no format (the record layer is driven directly), and
    // neither items nor an end routine run.
    if (block == nullptr) return context->status;
    uintptr_t version = block->version;
    if (version != 1) {
        ErrorHandler(kClassSevere, kKindError, 135, 135, ArgInt(1), static_cast<int32_t>(version), ArgInt(2), 1, 0u);
        return context->status;
    }
    const void* code;
    bool wide;
    if (block->text != nullptr) {
        uint32_t flags = RuntimeEncodingFlags(context->global->options, context->options);
        code = RuntimeFormatCode(context, block->text, static_cast<int32_t>(block->lengthOrCode), flags);
        if (code == nullptr) {
            context->itemsStopped = 1;
            return context->status;
        }
        wide = sizeof(void*) > 4;  // the encoding a run-time of this word size makes
    } else {
        code = reinterpret_cast<const void*>(block->lengthOrCode);
        wide = !Is32BitEncoding(code) && Is64BitEncoding(code);
    }
    f.wide = wide;
    f.format = f.current = f.next = code;
    f.expressionEnv = block->expressionEnvironment;
    f.expressionTable = block->expressionTable;
    f.repeat = 0;
    f.dollar = 0;
    f.top = -1;
    f.trailingBlanks = 0;
    f.allConstant = 0;
    f.generic = 0;
    if (!context->dtioChild) context->endRoutine = EndIORWFmt;
    return context->status;
}

namespace {

bool ErrorPending(const LocalContext* context) { return context->status != 0 || context->iostatValue != 0; }

bool Contiguous(const FormatState& f) {
    if (f.wide) return (static_cast<const int64_t*>(f.format)[VRN_FMT_HEADER_FLAGS] & VRN_FMT_CONTIGUOUS) != 0;
    return (static_cast<const int32_t*>(f.format)[VRN_FMT_HEADER_FLAGS] & VRN_FMT_CONTIGUOUS) != 0;
}

}  // namespace

int32_t EndIORWFmt(LocalContext* context) {
    FormatState& f = context->fmt;
    if (context->sizeAddress != nullptr) *context->sizeAddress = context->charsTransferred - context->charsBase;
    if (f.format == nullptr) return context->status;
    if (!context->itemsStopped) FormatControl(context, 1, 0, 0, nullptr);
    if (!Contiguous(f)) {
        if (f.wide) FreeFormatExtensions64(const_cast<void*>(f.format));
        else FreeFormatExtensions(const_cast<void*>(f.format));
    }
    f.format = nullptr;
    if (ErrorPending(context)) return context->status;
    bool writing = Writing(context);
    if (context->advancing && !f.dollar) {
        if (!EndRecord(context)) return context->status;
    } else if (writing && context->unit != nullptr && (context->unit->flushAfterWrite || context->unit->flushEachRecord)) {
        // The record stays open: a prompt written with "$" or ADVANCE="NO" must show.
        if (!FlushUnit(context->global, context->unit, 1)) IORaisePermanentError(context, context->unit, errno);
        return context->status;
    }
    if (writing && context->unit != nullptr && context->unit->flushAfterWrite) {
        if (!FlushUnit(context->global, context->unit, 1)) IORaisePermanentError(context, context->unit, errno);
    }
    return context->status;
}
