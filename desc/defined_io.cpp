// Defined I/O procedures. The procedure's own statements run as child statements on a
// context pushed above the parent's: a copy of the parent's statement, which the frame
// recognises as a child by `nested`. So recursion is a stack of contexts, and a child can
// run children of its own.
#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/statement.h"
#include "core/unit.h"
#include "desc/rtd.h"
#include "desc/transfer_forms.h"
#include "format/format_control.h"
#include "listio/listio.h"
#include "vrn90.h"
#include "vrn90_keywords.h"

namespace {

constexpr int32_t kLocalMessageLength = 256;

// The child gets the parent's whole statement; what each context owns stays its own.
void CopyStatement(LocalContext* child, const LocalContext* parent) {
    LocalContext* next = child->next;
    LocalContext* prev = child->prev;
    LocalContext** anchor = child->anchor;
    char* rescanBuffer = child->ld_rescan_buffer;
    int32_t rescanSize = child->ld_rescan_size;
    uint8_t* swapArea = child->ufmt_swap_area;
    FormatCodeBuffer formatBuffer = child->formatBuffer;
    FormatCache* formatCache = child->formatCache;
    FormatStackEntry* stackBase = child->fmt.stackBase;
    int32_t stackCapacity = child->fmt.stackCapacity;

    std::memcpy(static_cast<void*>(child), parent, sizeof(LocalContext));

    child->next = next;
    child->prev = prev;
    child->anchor = anchor;
    child->ld_rescan_buffer = rescanBuffer;
    child->ld_rescan_cursor = rescanBuffer;
    child->ld_rescan_size = rescanSize;
    child->ld_rescan_fill = 0;
    child->ufmt_swap_area = swapArea;
    child->formatBuffer = formatBuffer;
    child->formatCache = formatCache;
    child->fmt.stackBase = stackBase;
    child->fmt.stackCapacity = stackCapacity;
}

void HandOverModes(LocalContext* child, const LocalContext* parent) {
    child->parentUnit = parent->unit;
    child->parentFlags = parent->statementFlags;
    child->parentBlank = parent->modeBlank;
    child->parentDelim = parent->modeDelim;
    child->parentRound = parent->modeRound;
    child->parentPad = parent->modePad;
    if ((parent->statementFlags & 0xFFu) == VRN_KIND_FORMATTED) {
        // SP, SS, DC and DP may have changed the modes since the statement began.
        child->parentSign = parent->fmt.signPlus ? VRN_KEY_PLUS : VRN_KEY_SUPPRESS;
        child->parentDecimal = parent->fmt.decimalComma ? VRN_KEY_COMMA : VRN_KEY_POINT;
    } else {
        child->parentSign = parent->modeSign;
        child->parentDecimal = parent->modeDecimal;
    }
    const UnitRecord* unit = parent->unit;
    child->parentLeftLimit = unit != nullptr && unit->pendingColumn >= 0 ? unit->pendingColumn : parent->column;
}

void CopyBack(LocalContext* parent, const LocalContext* child) {
    parent->charsTransferred = child->charsTransferred;
    parent->recordLength = child->recordLength;
    parent->column = child->column;
    parent->leftLimit = child->leftLimit;
    parent->highWater = child->highWater;
    parent->internalRecord = child->internalRecord;
    parent->internalEnd = child->internalEnd;
    parent->recordOverflow = child->recordOverflow;
    parent->atEndOfFile = child->atEndOfFile;
    parent->ld_last_was_char = child->ld_last_was_char;
    parent->ld_first_item = child->ld_first_item;
    parent->ld_skip_separator = child->ld_skip_separator;
    parent->ld_at_record_start = child->ld_at_record_start;
    // A list-directed child has scanned the separator behind its last value: the parent
    // goes on from there, not from where it stood before the child, or a comma after the
    // child's last value would read as a null value.
    uint32_t childFlags = child->dtioFlags;
    if (childFlags != kNoStatement && (childFlags & 0xFFu) == VRN_KIND_LIST_DIRECTED) parent->ld_state = child->ld_state;
}

int64_t ReadInteger(const void* at, int32_t width) {
    if (width == 8) return ReadField<int64_t>(at);
    int32_t value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

void WriteInteger(void* at, int32_t width, int64_t value) {
    if (width == 8) {
        std::memcpy(at, &value, sizeof value);
    } else {
        auto narrow = static_cast<int32_t>(value);
        std::memcpy(at, &narrow, sizeof narrow);
    }
}

struct FreeOnExit {
    void* memory;
    ~FreeOnExit() { std::free(memory); }
};

}  // namespace

int32_t RunDefinedIO(LocalContext* parent, void* object, const VrnDTIORow* row) {
    StatementShape shape = DecodeStatementFlags(parent->statementFlags);
    bool reading = shape.direction == VRN_DIRECTION_READ;
    bool listLike = shape.kind == VRN_KIND_LIST_DIRECTED || shape.kind == VRN_KIND_NAMELIST;

    DefinedEdit edit{};
    if (shape.kind == VRN_KIND_FORMATTED && !TakeDefinedEdit(parent, &edit)) return parent->status;
    FreeOnExit editBlock{edit.block};
    if (listLike) {
        edit.iotype = shape.kind == VRN_KIND_NAMELIST ? "NAMELIST" : "LISTDIRECTED";
        edit.iotypeLength = static_cast<int32_t>(std::strlen(edit.iotype));
        if (reading && !LdPositionForChild(parent)) return parent->status;
        if (!reading && shape.kind == VRN_KIND_LIST_DIRECTED) LdSeparateChild(parent);
        if (parent->itemsStopped) return parent->status;
    }

    if (parent->next == nullptr) GrowLocalContext(parent);
    LocalContext* child = parent->next;
    CopyStatement(child, parent);
    child->iostatAddress = nullptr;
    child->busy = 1;
    child->nested = 1;
    child->dtioChild = 0;
    HandOverModes(child, parent);
    _LocalContext[0] = child;

    auto* dtv = reinterpret_cast<RTD*>(row->rtd);
    if (dtv != nullptr) {
        dtv->base_ptr = reinterpret_cast<uintptr_t>(object);
        dtv->header.flags |= RTD_FLAG_IS_ASSOCIATED;
    }
    int32_t width = (parent->options & VRN_OPTION_DTIO_INTEGER8) ? 8 : 4;
    alignas(8) unsigned char unitValue[8];
    WriteInteger(unitValue, width, parent->unit != nullptr ? parent->unit->unitNumber : -2);
    alignas(8) unsigned char localIostat[8] = {};
    void* iostat = parent->iostatAddress != nullptr ? parent->iostatAddress : localIostat;
    int32_t iostatWidth = parent->iostatAddress != nullptr ? parent->iostatWidth : width;
    WriteInteger(iostat, iostatWidth, 0);
    char localMessage[kLocalMessageLength];
    std::memset(localMessage, ' ', sizeof localMessage);
    char* iomsg = parent->iomsgAddress != nullptr ? parent->iomsgAddress : localMessage;
    int32_t iomsgLength = parent->iomsgAddress != nullptr ? parent->iomsgLength : kLocalMessageLength;

    auto procedure = reinterpret_cast<VrnDefinedIO>(row->procedure);
    procedure(dtv, unitValue, edit.iotype, reinterpret_cast<uintptr_t>(edit.vlist),
              static_cast<uintptr_t>(edit.vlistCount), iostat, iomsg, row->value, edit.iotypeLength, iomsgLength);

    CopyBack(parent, child);
    int64_t value = ReadInteger(iostat, iostatWidth);
    child->busy = 0;
    child->nested = 0;
    _LocalContext[0] = parent;
    parent->dtioFlags = child->dtioFlags;
    if (value != 0) {
        parent->itemsStopped = 1;
        parent->status = value == -1 || value == -2 ? kKindEndOfFile : value == -4 ? kKindEndOfRecord : kKindError;
        parent->iostatValue = value;
        if (parent->iostatAddress == nullptr) {
            ErrorHandler(kClassSevere, parent->status, 205, static_cast<int32_t>(value),
                         ArgInt(1), static_cast<int32_t>(value), 0u);
        }
    }
    if (reading && shape.kind == VRN_KIND_NAMELIST) {
        parent->ld_state = parent->modeDecimal == VRN_KEY_COMMA ? 69 : 13;
    }
    return parent->status;
}
