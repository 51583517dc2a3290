// _vrnBeginIO and _vrnEndIO: context selection and recursion, specifier parsing, the
// lookup or implicit opening of the unit, the match of statement and connection, the
// modes in force, and at the end IOSTAT= and IOMSG=.
#include "core/statement.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "core/keywords.h"
#include "core/unit.h"
#include "format/format_control.h"
#include "listio/listio.h"
#include "listio/namelist.h"
#include "desc/array_walk.h"
#include "transport/transport.h"
#include "ufmt/async_io.h"
#include "ufmt/unformatted.h"
#include "vrn90.h"

const BeginRoutine DispatchBeginIO[kDispatchEntries] = {
    BeginIOUfmt, BeginIOUfmt, BeginAIOUfmt, BeginAIOUfmt, // unformatted
    BeginIOReadLd, BeginIOWriteLd, nullptr, nullptr,  // list-directed
    BeginIOReadNl, BeginIOWriteNl, nullptr, nullptr,  // namelist
    BeginIOFmt, BeginIOFmt, nullptr, nullptr,   // formatted
};

namespace {

constexpr char kTransferRecursion[] = "VR Fortran (I/O initialization): I/O recursion detected.\n";
constexpr uint32_t kNotGiven = VRN_KEY_UNDEFINED;
constexpr int32_t kMaxMessageFileName = 4096;

const char* DirectionWord(uint32_t direction) { return direction == VRN_DIRECTION_READ ? "READ" : "WRITE"; }
const char* StatementWord(uint32_t direction) { return direction == VRN_DIRECTION_READ ? "READ" : "WRITE/PRINT"; }

// The specifiers of the statement that the checks and the modes use.
struct StatementSpecifiers {
    uint32_t blank = kNotGiven, delim = kNotGiven, pad = kNotGiven, sign = kNotGiven;
    uint32_t decimal = kNotGiven, round = kNotGiven;
    bool recordGiven = false;
    int64_t record = 0;
    bool positionGiven = false;
    int64_t position = 0;
    bool sizeGiven = false;
};

}  // namespace

bool TakeMessageSpecifier(LocalContext* context, const KeywordEntry& entry) {
    switch (entry.tag & 0xFFFFu) {
    case VRN_KEY_IOMSG:
        context->iomsgAddress = reinterpret_cast<char*>(entry.a);
        context->iomsgLength = static_cast<int32_t>(entry.b);
        return true;
    case VRN_KEY_MSGLINE: context->msgLine = static_cast<int32_t>(entry.a); return true;
    case VRN_KEY_MSGFILE: {
        // A long name keeps its last 4,096 characters; the length stays as given.
        const char* name = reinterpret_cast<const char*>(entry.a);
        int32_t length = static_cast<int32_t>(entry.b);
        if (length > kMaxMessageFileName) name += length - kMaxMessageFileName;
        context->msgFile = name;
        context->msgFileLength = length;
        return true;
    }
    case VRN_TAG_IOSTAT8:
        context->iostatWidth = 8;
        context->iostatAddress = reinterpret_cast<void*>(entry.a);
        return true;
    default: return false;
    }
}

void ReadMessageSpecifiers(LocalContext* context, const KeywordList* keywords) {
    if (keywords == nullptr || keywords->version != 1 || keywords->count == 0) return;
    for (uint32_t i = 0; i < keywords->count; ++i) TakeMessageSpecifier(context, keywords->entries[i]);
}

void DeliverIostatAndIomsg(LocalContext* context) {
    if (context->iostatAddress != nullptr) {
        if (context->iostatWidth == 8) {
            std::memcpy(context->iostatAddress, &context->iostatValue, sizeof(int64_t));
        } else {
            int32_t low = static_cast<int32_t>(context->iostatValue);
            std::memcpy(context->iostatAddress, &low, sizeof low);
        }
    }
    // A statement with no message leaves the variable alone.
    if (context->messageLength > 0) CopyToIomsg(context, context->messageBuffer, context->messageLength);
}

namespace {

void StartMessageState(LocalContext* context, void* iostatAddress, const KeywordList* keywords) {
    context->iostatAddress = iostatAddress;
    context->iostatValue = 0;
    if (iostatAddress != nullptr) context->iostatWidth = 4;
    context->iomsgLength = 0;
    context->messageLength = 0;
    context->msgLine = 0;
    context->msgFileLength = 0;
    ReadMessageSpecifiers(context, keywords);
}

}  // namespace

LocalContext* PushLocalContext(LocalContext* beneath) {
    if (beneath->next == nullptr) GrowLocalContext(beneath);
    LocalContext* pushed = beneath->next;
    pushed->scanBuffer = beneath->scanBuffer;
    pushed->messageBuffer = beneath->messageBuffer;
    pushed->messageLength = beneath->messageLength;
    pushed->anchor = beneath->anchor;
    pushed->iostatAddress = nullptr;
    pushed->iomsgAddress = nullptr;
    pushed->iomsgLength = 0;
    pushed->dtioChild = 0;
    pushed->busy = 1;
    pushed->nested = 1;
    _LocalContext[0] = pushed;
    return pushed;
}

namespace {

void ResetStatement(LocalContext* context, uint32_t statementFlags, uint32_t options) {
    context->options = options;
    context->statementFlags = statementFlags;
    context->command = kCommandTransfer;
    context->status = 0;
    context->itemsStopped = 0;
    context->sizeAddress = nullptr;
    context->numAddress = nullptr;
    context->idAddress = nullptr;
    context->idAddress8 = nullptr;
    context->endRoutine = nullptr;
    context->readItem = nullptr;
    context->writeItem = nullptr;
    context->aioRequest = nullptr;
    context->streamPosition = -1;
    context->fmt.format = nullptr;
}

LocalContext* Stop(LocalContext* context) {
    context->itemsStopped = 1;
    return context;
}

// A bad specifier value: class 1 kind 3 with the text, and the unit for an external file.
// true when the caller is to recover (the mode is then "not given").
bool BadValue(int32_t message, const KeywordEntry& entry, const StatementShape& shape, int32_t unitNumber) {
    char text[kMaxValueText + 1];
    KeywordValueText(entry, text);
    int32_t answer = shape.internal
        ? ErrorHandler(kClassRecoverable, kKindError, message, message, ArgText(1), text, 0u)
        : ErrorHandler(kClassRecoverable, kKindError, message, message, ArgText(1), text, ArgInt(2), unitNumber, 0u);
    return answer == kRecover;
}

// One mode specifier: the value if it is one of `allowed`, kNotGiven after a recovered
// error; false when the statement must end.
bool TakeMode(const KeywordEntry& entry, std::initializer_list<uint32_t> allowed, int32_t message,
              const StatementShape& shape, int32_t unitNumber, uint32_t* mode) {
    uint32_t value = KeywordOfValue(entry.a, entry.b);
    if (entry.a == 0) {  // the compiler's own number is trusted
        *mode = value;
        return true;
    }
    for (uint32_t candidate : allowed) {
        if (candidate == value) {
            *mode = value;
            return true;
        }
    }
    *mode = kNotGiven;
    return BadValue(message, entry, shape, unitNumber);
}

bool RefuseInChild(LocalContext* context, int32_t unitNumber, uint32_t direction) {
    ErrorHandler(kClassRecoverable, kKindError, 202, 202, ArgInt(1), unitNumber, ArgText(2), DirectionWord(direction),
                 0u);
    context->itemsStopped = 1;
    return false;
}

// Step 6. false when the call is to end.
bool SecondPass(LocalContext* context, const KeywordList* keywords, const StatementShape& shape, int32_t unitNumber,
                StatementSpecifiers& given) {
    if (keywords == nullptr || keywords->count <= 2) return true;  // only MSGLINE and MSGFILE then
    if (keywords->version != 1) {
        ErrorHandler(kClassSevere, kKindInterface, 135, 135, ArgInt(1), static_cast<int32_t>(keywords->version),
                     ArgInt(2), 1, 0u);
        return false;
    }
    bool child = context->dtioChild != 0;
    for (uint32_t i = 0; i < keywords->count; ++i) {
        const KeywordEntry& entry = keywords->entries[i];
        bool ok = true;
        switch (entry.tag & 0xFFFFu) {
        case VRN_KEY_ADVANCE: {
            uint32_t value = KeywordOfValue(entry.a, entry.b);
            if (value == VRN_KEY_NO) {
                context->options |= VRN_OPTION_NONADVANCING;
            } else if (value == VRN_KEY_YES) {
                context->options |= child ? VRN_OPTION_NONADVANCING : VRN_OPTION_ADVANCE_YES;
            } else {
                ok = BadValue(136, entry, shape, unitNumber);
            }
            break;
        }
        case VRN_KEY_BLANK: ok = TakeMode(entry, {VRN_KEY_NULL, VRN_KEY_ZERO}, 209, shape, unitNumber, &given.blank); break;
        case VRN_KEY_DELIM:
            ok = TakeMode(entry, {VRN_KEY_APOSTROPHE, VRN_KEY_QUOTE, VRN_KEY_NONE}, shape.internal ? 214 : 211, shape,
                          unitNumber, &given.delim);
            break;
        case VRN_KEY_NUM: context->numAddress = reinterpret_cast<int32_t*>(entry.a); break;
        case VRN_KEY_PAD: ok = TakeMode(entry, {VRN_KEY_YES, VRN_KEY_NO}, 210, shape, unitNumber, &given.pad); break;
        case VRN_KEY_REC:
            given.recordGiven = true;
            given.record = static_cast<int64_t>((static_cast<uint64_t>(entry.a) << 32) | entry.b);
            break;
        case VRN_KEY_SIZE:
            context->sizeAddress = reinterpret_cast<int32_t*>(entry.a);
            given.sizeGiven = true;
            break;
        case VRN_KEY_ID:
            if (child) return RefuseInChild(context, unitNumber, shape.direction);
            context->idAddress = reinterpret_cast<int32_t*>(entry.a);
            break;
        case VRN_KEY_ASYNCH:
        case VRN_KEY_ASYNCHRONOUS:
            if (child) return RefuseInChild(context, unitNumber, shape.direction);
            break;
        case VRN_KEY_POS:
            given.positionGiven = true;
            given.position = static_cast<int32_t>(static_cast<uint32_t>(entry.a));
            break;
        case VRN_KEY_SIGN:
            ok = TakeMode(entry, {VRN_KEY_PLUS, VRN_KEY_SUPPRESS, VRN_KEY_PROCESSOR_DEFINED},
                          shape.internal ? 216 : 215, shape, unitNumber, &given.sign);
            break;
        case VRN_KEY_DECIMAL:
            ok = TakeMode(entry, {VRN_KEY_COMMA, VRN_KEY_POINT}, shape.internal ? 220 : 219, shape, unitNumber,
                          &given.decimal);
            break;
        case VRN_KEY_ROUND:
            ok = TakeMode(entry,
                          {VRN_KEY_UP, VRN_KEY_DOWN, VRN_KEY_NEAREST, VRN_KEY_COMPATIBLE, VRN_KEY_PROCESSOR_DEFINED,
                           VRN_KEY_ZERO},
                          223, shape, unitNumber, &given.round);
            break;
        case VRN_TAG_ID8: context->idAddress8 = reinterpret_cast<int64_t*>(entry.a); break;
        case VRN_TAG_POS8:
            given.positionGiven = true;
            given.position = static_cast<int64_t>((static_cast<uint64_t>(entry.a) << 32) | entry.b);
            break;
        default: break;
        }
        if (!ok) return false;
    }
    return true;
}

bool FormattedKind(uint32_t kind) { return kind != VRN_KIND_UNFORMATTED; }

// Step 7.6: the asynchronous property of the connection.
bool CheckAsynchronous(UnitRecord* unit, const StatementShape& shape) {
    if (unit->asynch == 0) {
        unit->asynch = VRN_KEY_NO;
        if (!shape.asynchronous) return true;
        if (!unit->canAsync) {
            ErrorHandler(kClassSevere, kKindError, 172, 172, ArgInt(1), unit->unitNumber, ArgText(2),
                         UnitNameForMessages(unit), 0u);
            return false;
        }
        unit->asynch = VRN_KEY_YES;
        return true;
    }
    if (shape.asynchronous && unit->asynch != VRN_KEY_YES) {
        ErrorHandler(kClassSevere, kKindError, 169, 169, ArgInt(1), unit->unitNumber, 0u);
        return false;
    }
    return true;
}

bool CheckForm(GlobalContext* global, UnitRecord* unit, const StatementShape& shape) {
    uint32_t wanted = FormattedKind(shape.kind) ? VRN_KEY_FORMATTED : VRN_KEY_UNFORMATTED;
    if (unit->form == 0) {
        // The first statement on a connection opened without a form decides it.
        unit->form = wanted;
        int32_t attached = AttachBufferToUnit(global, unit);
        if (attached == kAttachNoMemory) {
            ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
            return false;
        }
        if (attached == kAttachReclTooLarge) {
            ErrorHandler(kClassSevere, kKindError, 156, 156, ArgText(1), UnitNameForMessages(unit), ArgInt(2), unit->recl,
                         0u);
            return false;
        }
        return true;
    }
    if (unit->form == wanted) return true;
    int32_t message = FormattedKind(shape.kind) ? 20 : 19;
    ErrorHandler(kClassRecoverable, kKindError, message, message, ArgInt(1), unit->unitNumber, ArgText(2),
                 UnitNameForMessages(unit), 0u);
    return false;
}

bool CheckAccess(LocalContext* context, UnitRecord* unit, const StatementShape& shape, const StatementSpecifiers& given) {
    int32_t message = 0;
    switch (shape.access) {
    case VRN_ACCESS_DIRECT:
        if (unit->access != VRN_KEY_DIRECT) message = 22;
        break;
    case VRN_ACCESS_STREAM:
        if (unit->access != VRN_KEY_STREAM) message = 196;
        else if (!unit->seekable) message = 197;
        else context->streamPosition = given.position - 1;
        break;
    default:
        if (unit->access != VRN_KEY_SEQUENTIAL && unit->access != VRN_KEY_STREAM && !context->dtioChild) message = 21;
        break;
    }
    if (message == 0) return true;
    ErrorHandler(kClassRecoverable, kKindError, message, message, ArgInt(1), unit->unitNumber, ArgText(2),
                 UnitNameForMessages(unit), 0u);
    return false;
}

bool CheckAction(UnitRecord* unit, const StatementShape& shape) {
    bool refused = (shape.direction == VRN_DIRECTION_READ && unit->action == VRN_KEY_WRITE) ||
                   (shape.direction == VRN_DIRECTION_WRITE && unit->action == VRN_KEY_READ);
    if (!refused) return true;
    ErrorHandler(kClassSevere, kKindError, 139, 139, ArgInt(1), unit->unitNumber, ArgText(2),
                 StatementWord(shape.direction), 0u);
    return false;
}

// Step 7: the checks of an external statement, in the order of their errors. The unit
// found or opened is left in *unitOut; false when the call is to end.
bool CheckExternal(GlobalContext* global, LocalContext* context, const StatementShape& shape, int32_t unitNumber,
                   StatementSpecifiers& given, UnitRecord** unitOut) {
    if (FormattedKind(shape.kind) && !(context->options & VRN_OPTION_NONADVANCING)) {
        if (given.sizeGiven) {
            if (ErrorHandler(kClassRecoverable, kKindError, 137, 137, ArgText(1), "YES", 0u) != kRecover) return false;
            context->sizeAddress = nullptr;
        }
        if (context->options & VRN_OPTION_EOR) {
            if (ErrorHandler(kClassRecoverable, kKindError, 138, 138, ArgText(1), "YES", 0u) != kRecover) return false;
            context->options &= ~VRN_OPTION_EOR;
        }
    }
    if (shape.access == VRN_ACCESS_DIRECT) {
        if (context->recordNumber < 1) {
            ErrorHandler(kClassRecoverable, kKindError, 16, 16, ArgInt64(1),
                         static_cast<uint32_t>(static_cast<uint64_t>(context->recordNumber) >> 32),
                         static_cast<uint32_t>(context->recordNumber), 0u);
            return false;
        }
    }
    if (shape.access == VRN_ACCESS_STREAM && given.position < 1) {
        ErrorHandler(kClassRecoverable, kKindError, 195, 195, ArgInt(1), unitNumber, 0u);
        return false;
    }

    UnitRecord* unit;
    int32_t existed = 1;
    if (unitNumber < 0) {
        unit = LookUpUnit(global, unitNumber);
        if (unit == nullptr) {
            ErrorHandler(kClassRecoverable, kKindError, 36, 36, ArgInt(1), unitNumber, ArgText(2),
                         DirectionWord(shape.direction), 0u);
            return false;
        }
    } else {
        unit = GetUnit(global, context, unitNumber, &existed);
        if (unit == nullptr) {
            ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
            return false;
        }
    }
    if (!existed) {
        int32_t message = shape.access == VRN_ACCESS_DIRECT ? 18 : shape.access == VRN_ACCESS_STREAM ? 198 : 0;
        if (message != 0) {
            FreeUnit(global, context, unit);
            ErrorHandler(kClassRecoverable, kKindError, message, message, ArgInt(1), unitNumber, 0u);
            return false;
        }
        if (StrictLanguageLevel(global->options) &&
            ErrorHandler(kClassLanguage, kKindError, 140, 140, ArgText(1), StatementWord(shape.direction), ArgInt(2),
                         unitNumber, 0u) != kRecover) {
            FreeUnit(global, context, unit);
            return false;
        }
        if (ImplicitOpen(global, context, unit, context->statementFlags) != 1) return false;
        unit = LookUpUnit(global, unitNumber);
        if (unit == nullptr) return false;
        *unitOut = unit;
        return CheckAction(unit, shape) && CheckAsynchronous(unit, shape);
    }
    *unitOut = unit;
    return CheckAsynchronous(unit, shape) && CheckForm(global, unit, shape) && CheckAccess(context, unit, shape, given) &&
           CheckAction(unit, shape);
}

// Step 8: the changeable modes in force for this statement.
void SetModes(GlobalContext* global, LocalContext* context, const StatementShape& shape, const UnitRecord* unit,
              const StatementSpecifiers& given) {
    auto pick = [](uint32_t statementValue, uint32_t fallback) {
        return statementValue != kNotGiven ? statementValue : fallback;
    };
    if (context->dtioChild) {
        context->modeBlank = pick(given.blank, context->modeBlank);
        context->modeDelim = pick(given.delim, context->modeDelim);
        context->modePad = pick(given.pad, context->modePad);
        context->modeSign = pick(given.sign, context->modeSign);
        context->modeDecimal = pick(given.decimal, context->modeDecimal);
        context->modeRound = pick(given.round, context->modeRound);
    } else if (shape.internal) {
        bool namelistDelim = shape.kind == VRN_KIND_NAMELIST &&
                             (shape.direction == VRN_DIRECTION_READ ||
                              global->options.optInternalNlDelim == VRN_KEY_EXTENDED);
        context->modeDelim = pick(given.delim, namelistDelim ? VRN_KEY_APOSTROPHE : VRN_KEY_NONE);
        context->modeBlank = pick(given.blank, VRN_KEY_NULL);
        context->modePad = pick(given.pad, (context->options & VRN_OPTION_PAD_RULE) ? VRN_KEY_NO : VRN_KEY_YES);
        context->modeSign = pick(given.sign, VRN_KEY_PROCESSOR_DEFINED);
        context->modeDecimal = pick(given.decimal, VRN_KEY_POINT);
        context->modeRound = pick(given.round, VRN_KEY_PROCESSOR_DEFINED);
    } else {
        context->modeDelim = pick(given.delim, unit->delim);
        context->modeBlank = pick(given.blank, unit->blank);
        context->modePad = pick(given.pad, unit->pad);
        context->modeSign = pick(given.sign, unit->sign);
        context->modeDecimal = pick(given.decimal, unit->decimal);
        context->modeRound = pick(given.round, unit->round);
    }
    bool padYes = context->modePad == VRN_KEY_YES;
    // On an internal file without PAD= the mode alone decides, whatever the kind.
    if (shape.internal && !context->dtioChild && given.pad == kNotGiven) {
        context->padInput = padYes;
    } else {
        context->padInput = padYes && shape.kind == VRN_KIND_FORMATTED;
    }
}

// INQUIRE(IOLENGTH=) comes as a WRITE whose list names the variable: IOLENGTH with a 4-byte
// variable at a, or the INTEGER(8) form with the keyword in b.
bool FindIOLength(const KeywordList* keywords, void** variable, int32_t* width) {
    if (keywords == nullptr || keywords->version != 1) return false;
    for (uint32_t i = 0; i < keywords->count; ++i) {
        const KeywordEntry& entry = keywords->entries[i];
        uint32_t tag = entry.tag & 0xFFFFu;
        if (tag == VRN_KEY_IOLENGTH || (tag == VRN_TAG_INQUIRE_INT8 && entry.b == VRN_KEY_IOLENGTH)) {
            *variable = reinterpret_cast<void*>(entry.a);
            *width = tag == VRN_KEY_IOLENGTH ? 4 : 8;
            return true;
        }
    }
    return false;
}

void ResetListDirectedState(LocalContext* context) {
    context->ld_skip_separator = 0;
    context->ld_last_was_char = 0;
    context->ld_first_item = 0;
    context->ldSeparator = ' ';
    context->dtioFlags = kNoStatement;
    context->formatState[0] = 0;
    context->formatState[1] = 0;
}

// The child statement of a derived-type I/O procedure runs on its parent's context.
bool EnterChildStatement(LocalContext* context, StatementShape& shape, void* unitAddress, int32_t* unitNumber) {
    StatementShape parent = DecodeStatementFlags(context->parentFlags);
    if (parent.direction != shape.direction) {
        ErrorHandler(kClassRecoverable, kKindError, 204, 204, ArgText(1), DirectionWord(shape.direction), 0u);
        context->itemsStopped = 1;
        return false;
    }
    context->options |= VRN_OPTION_NONADVANCING;
    context->dtioChild = 1;
    if (parent.internal) {
        // Kept in the flags too, for the children this child may have.
        shape.internal = true;
        context->statementFlags |= VRN_FLAG_INTERNAL;
        std::memset(unitAddress, 0, sizeof(int32_t));
        *unitNumber = 0;
    } else if (context->parentUnit != nullptr && *unitNumber != context->parentUnit->unitNumber) {
        ErrorHandler(kClassRecoverable, kKindError, 203, 203, ArgInt(1), *unitNumber, 0u);
        context->itemsStopped = 1;
        return false;
    }
    if (shape.kind != VRN_KIND_UNFORMATTED) {
        context->modeBlank = context->parentBlank;
        context->modeDelim = context->parentDelim;
        context->modeSign = context->parentSign;
        context->modeDecimal = context->parentDecimal;
        context->modeRound = context->parentRound;
        context->modePad = context->parentPad;
    }
    return true;
}

}  // namespace

int32_t StatementRoundKey(const LocalContext* context) {
    switch (context->modeRound) {
    case VRN_KEY_UP:
    case VRN_KEY_DOWN:
    case VRN_KEY_ZERO:
    case VRN_KEY_NEAREST:
    case VRN_KEY_COMPATIBLE:
    case VRN_KEY_PROCESSOR_DEFINED:
        return static_cast<int32_t>(context->modeRound);
    default:
        return VRN_KEY_PROCESSOR_DEFINED;
    }
}

StatementShape DecodeStatementFlags(uint32_t statementFlags) {
    return StatementShape{statementFlags & 0xFFu, (statementFlags >> 8) & 0xFFu, (statementFlags >> 16) & 0x7Fu,
                          (statementFlags & VRN_FLAG_INTERNAL) != 0, (statementFlags & VRN_FLAG_ASYNCHRONOUS) != 0};
}

VRN_EXPORT LocalContext* _vrnBeginIO(void* unitAddress, uint32_t statementFlags, const KeywordList* keywords,
                                     uint32_t options, void* iostatAddress, int32_t recordNumber, void* kindArgument) {
    EnsureRuntimeStarted();
    GlobalContext* global = _GlobalContext;
    LocalContext* context = _LocalContext[0];
    StartMessageState(context, iostatAddress, keywords);
    StatementShape shape = DecodeStatementFlags(statementFlags);
    // An IOLENGTH= statement touches no unit, so it nests as an internal one does.
    int32_t lengthWidth = 4;
    void* lengthVariable = nullptr;
    bool countsLength = FindIOLength(keywords, &lengthVariable, &lengthWidth);
    if (countsLength) {
        statementFlags = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL) |
                         VRN_FLAG_INTERNAL;
        shape = DecodeStatementFlags(statementFlags);
    }

    bool child = false;
    if (!context->busy) {
        context->busy = 1;
    } else if (shape.internal) {
        // An internal READ or WRITE in a function called from an I/O list is legal. The
        // pushed context has no IOSTAT= or IOMSG=: those went to the context beneath.
        context = PushLocalContext(context);
    } else if (context->nested) {
        child = true;
    } else {
        // A function in an I/O list doing I/O on a unit: the statement in progress may hold
        // the unit in any state, so there is no recovery.
        CatastrophicExit(kTransferRecursion);
    }

    ResetStatement(context, statementFlags, options);
    if (countsLength) {
        BeginIOLength(context, lengthVariable, lengthWidth);
        return context;
    }
    int32_t unitNumber = 0;
    if (!shape.internal) std::memcpy(&unitNumber, unitAddress, sizeof unitNumber);
    if (child && !EnterChildStatement(context, shape, unitAddress, &unitNumber)) return Stop(context);

    StatementSpecifiers given;
    if (!SecondPass(context, keywords, shape, unitNumber, given)) return Stop(context);
    if (child && (shape.access == VRN_ACCESS_DIRECT || shape.access == VRN_ACCESS_STREAM)) {
        const char* what = shape.access == VRN_ACCESS_DIRECT ? "REC=" : "POS=";
        ErrorHandler(kClassRecoverable, kKindError, 202, 202, ArgInt(1), unitNumber, ArgText(2), what, 0u);
        return Stop(context);
    }
    context->recordNumber = given.recordGiven ? given.record : recordNumber;

    UnitRecord* unit = child ? context->parentUnit : nullptr;
    if (!shape.internal && !child && !CheckExternal(global, context, shape, unitNumber, given, &unit)) {
        return Stop(context);
    }
    SetModes(global, context, shape, unit, given);

    // Only an unformatted transfer stays asynchronous, and not on a unit that swaps bytes,
    // whose items pass through the stack. Any other becomes synchronous, with ID= 0.
    bool asynchronous = shape.asynchronous && !shape.internal && !child;
    if (shape.asynchronous) {
        if (asynchronous && shape.kind == VRN_KIND_UNFORMATTED && !unit->byteSwap) {
            AIORequest* request = GetAIOHandleAndScope(global, context, unit);
            if (request == nullptr) return Stop(context);
            context->aioRequest = request;
            StoreAIORequestId(context, AIORequestId(request));
        } else {
            asynchronous = false;
            StoreAIORequestId(context, 0);
        }
    }

    uint32_t direction = shape.direction == VRN_DIRECTION_WRITE ? kDirectionWrite : kDirectionRead;
    if (shape.internal && !child) {
        context->unit = reinterpret_cast<UnitRecord*>(*static_cast<InternalFile**>(unitAddress));
    } else {
        context->unit = unit;
    }
    bool prepared = shape.internal || (!asynchronous && context->unit->aioMode == 0)
                        ? PrepareUnit(context, &context->unit, direction, false, shape.access, shape.internal)
                        : IOPrep(context, &context->unit, direction, asynchronous, shape.access, shape.internal);
    if (prepared) {
        if (!child) ResetListDirectedState(context);
        uint32_t index = shape.kind * 4 + (asynchronous ? 2 : 0) + shape.direction;
        BeginRoutine begin = index < kDispatchEntries ? DispatchBeginIO[index] : nullptr;
        if (begin != nullptr) begin(context, kindArgument);
    }
    // A statement that failed gives its request back; the program never sees its ID.
    if ((context->status != 0 || context->iostatValue != 0) && context->aioRequest != nullptr) {
        FreeAIORequest(global, static_cast<AIORequest*>(context->aioRequest), 1);
        context->aioRequest = nullptr;
        StoreAIORequestId(context, 0);
    }
    if (!prepared) return Stop(context);
    return context;
}

int32_t AllowIOAfterEOF(LocalContext* context, UnitRecord* unit, uint32_t direction) {
    if (!unit->afterEndfile) return 1;
    if (!(context->options & VRN_OPTION_IO_AFTER_ENDFILE) || unit->endfileWritten) {
        ErrorHandler(kClassRecoverable, kKindError, 145, 145, ArgInt(1), unit->unitNumber, 0u);
        context->itemsStopped = 1;
        return 0;
    }
    unit->afterEndfile = 0;
    context->atEndOfFile = direction == kDirectionRead;
    return 1;
}

namespace {

// Sets up the record state of an internal file. The unit word held the description.
bool PrepareInternal(LocalContext* context, const InternalFile* file) {
    char* base = reinterpret_cast<char*>(file->base);
    if (file->recordLength == 0 && file->lengthOrDescriptor != 0) {
        const void* descriptor = reinterpret_cast<const void*>(file->lengthOrDescriptor);
        context->recordLength = NCElementLength(descriptor);
        context->internalIterator = GetNCIterator(descriptor, base);
        if (context->internalIterator == nullptr) {
            if (context->parentUnit != nullptr) context->parentUnit->permanentError = 1;
            ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
            return false;
        }
        context->internalRecord = NCNextElement(context->internalIterator);
    } else {
        context->recordLength = static_cast<int32_t>(file->recordLength);
        context->internalRecord = base;
        context->internalEnd = base + file->lengthOrDescriptor;
    }
    context->recordMax = context->recordLength;
    context->column = 0;
    context->leftLimit = 0;
    context->highWater = 0;
    context->unit = nullptr;
    return true;
}

bool Flush(LocalContext* context, UnitRecord* unit, int32_t complete) {
    if (FlushUnit(context->global, unit, complete)) return true;
    IORaisePermanentError(context, unit, errno);
    return false;
}

bool PrepareDirect(LocalContext* context, UnitRecord* unit, uint32_t direction, bool asynchronous) {
    bool reading = direction == kDirectionRead;
    if (unit->direction != direction) {
        bool complete = asynchronous || static_cast<uint64_t>(context->recordNumber) == unit->nextRecord;
        if (!Flush(context, unit, complete)) return false;
        unit->direction = direction;
    } else if ((asynchronous || (unit->discardBeforeRead && reading)) && !Flush(context, unit, 1)) {
        return false;
    }
    if (static_cast<uint64_t>(context->recordNumber) != unit->nextRecord || unit->needsReposition) {
        if (!SeekUnitToRecord(context->global, unit, context->recordNumber, kSeekStart)) {
            IORaisePermanentError(context, unit, errno);
            return false;
        }
        unit->needsReposition = 0;
    }
    return true;
}

bool TakeAppend(LocalContext* context, UnitRecord* unit, uint32_t direction) {
    if (unit->appendPending && direction == kDirectionWrite &&
        !SeekUnitToRecord(context->global, unit, 0, kSeekEnd)) {
        unit->appendPending = 0;
        IORaisePermanentError(context, unit, errno);
        return false;
    }
    unit->appendPending = 0;
    return true;
}

bool PrepareSequential(LocalContext* context, UnitRecord* unit, uint32_t direction, bool asynchronous) {
    bool reading = direction == kDirectionRead;
    if (!TakeAppend(context, unit, direction)) return false;
    if (!AllowIOAfterEOF(context, unit, direction)) return false;
    if (unit->direction == direction) {
        if (((asynchronous && !reading) || (unit->discardBeforeRead && reading)) && !Flush(context, unit, 1)) {
            return false;
        }
    } else {
        if (!reading) {
            // A write after reads ends the file there.
            if (!TruncateUnit(context->global, unit)) {
                IORaisePermanentError(context, unit, errno);
                return false;
            }
            unit->savedRecordLength = -1;
            context->recordLength = -1;
        } else if (!Flush(context, unit, 1)) {
            return false;
        }
        unit->direction = direction;
    }
    if (unit->unbuffered) {
        off64_t here = lseek64(unit->fd, 0, SEEK_CUR);
        if (here >= 0) unit->filePosition = here;
    }
    return true;
}

bool PrepareStream(LocalContext* context, UnitRecord* unit, uint32_t direction, bool asynchronous) {
    bool reading = direction == kDirectionRead;
    if (!TakeAppend(context, unit, direction)) return false;
    if (unit->direction == direction) {
        if ((asynchronous || (unit->discardBeforeRead && reading)) && !Flush(context, unit, 1)) return false;
    } else {
        if (!Flush(context, unit, asynchronous || unit->pendingColumn == -1)) return false;
        unit->direction = direction;
    }
    if (context->streamPosition >= 0 && !asynchronous) {
        if (!SeekUnitToFilePosition(context->global, context, unit, context->streamPosition)) {
            IORaisePermanentError(context, unit, errno);
            return false;
        }
        context->streamPosition = -1;
    }
    return true;
}

}  // namespace

int32_t PrepareUnit(LocalContext* context, UnitRecord** unitAddress, uint32_t direction, bool asynchronous,
                    uint32_t access, bool internal) {
    if (context->dtioChild) {
        context->charsBase = context->charsTransferred;
    } else {
        context->recordOverflow = 0;
        context->atEndOfFile = 0;
        context->shortRecordSeen = 0;
        context->charsTransferred = 0;
        context->charsBase = 0;
    }
    bool ok = true;
    if (internal && !context->dtioChild) {
        ok = PrepareInternal(context, reinterpret_cast<const InternalFile*>(*unitAddress));
    } else if (!internal) {
        UnitRecord* unit = *unitAddress;
        if (unit->permanentError) {
            ErrorHandler(kClassSevere, kKindError, 15, 15, ArgText(1), UnitNameForMessages(unit), ArgInt(2),
                         unit->unitNumber, 0u);
            return 0;
        }
        if (!context->dtioChild) {
            context->recordLength = unit->savedRecordLength;
            context->recordMax = unit->maxRecord;
            context->column = unit->savedColumn;
            context->leftLimit = unit->savedLeftLimit;
            context->highWater = unit->savedHighWater;
            unit->bufferKept = unit->bufferOffset;
            switch (access) {
            case VRN_ACCESS_DIRECT: ok = PrepareDirect(context, unit, direction, asynchronous); break;
            case VRN_ACCESS_STREAM: ok = PrepareStream(context, unit, direction, asynchronous); break;
            default:
                ok = unit->access == VRN_KEY_STREAM ? PrepareStream(context, unit, direction, asynchronous)
                                                    : PrepareSequential(context, unit, direction, asynchronous);
                break;
            }
        }
    }
    if (!ok) return 0;
    context->advancing = (context->options & VRN_OPTION_NONADVANCING) ? 0 : 1;
    return 1;
}

VRN_EXPORT int32_t _vrnEndIO(LocalContext* context) {
    if (context->dtioChild) {
        // The list-directed scanner may hold one character read ahead; a child gives it back.
        if (context->ld_pending_char > ' ') {
            if (context->highWater == context->column) context->highWater--;
            context->column--;
            context->charsTransferred--;
            if (UnitRecord* unit = context->unit) {
                unit->cursor--;
                unit->bufferOffset--;
                unit->filePosition--;
            }
        }
        context->ld_pending_char = -1;
        if (context->unit != nullptr && !context->unit->seekable) context->leftLimit = context->column;
        context->dtioFlags = context->statementFlags;
    }
    if (context->endRoutine != nullptr) context->endRoutine(context);
    if (!context->dtioChild) {
        std::free(context->internalIterator);
        context->internalIterator = nullptr;
    }
    if (UnitRecord* unit = context->unit; unit != nullptr && !(context->statementFlags & VRN_FLAG_INTERNAL)) {
        unit->savedColumn = context->column;
        unit->savedLeftLimit = context->column;
        unit->savedHighWater = context->highWater;
        unit->savedRecordLength = context->recordLength;
    }
    context->unit = nullptr;
    if (context->aioRequest != nullptr) {
        // From here the request belongs to the unit and the waits, unless the statement failed.
        if (context->status != 0 || context->iostatValue != 0) {
            FreeAIORequest(context->global, static_cast<AIORequest*>(context->aioRequest), 1);
            StoreAIORequestId(context, 0);
        }
        context->aioRequest = nullptr;
    }
    DeliverIostatAndIomsg(context);
    if (!context->nested) context->busy = 0;
    if (context->dtioChild) {
        context->dtioChild = 0;
    } else if (context->nested) {
        context->busy = 0;
        context->nested = 0;
        _LocalContext[0] = context->prev;
    }
    context->statementFlags = kNoStatement;
    context->command = kCommandNone;
    return context->status;
}
