// The frame of an asynchronous unformatted statement and the preparation of a unit in
// asynchronous mode.
//
// A statement knows where its record lies before its first item: a direct record from
// REC=, a stream statement from POS= or the end of the unit's last request, a sequential
// record at that end too, behind its leading tag. Each item becomes a piece of the
// request at its own offset; the tags of a sequential record are queued at the end, when
// the length is known, so that -1 never stands in the file.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <initializer_list>

#include "core/context.h"
#include "core/errors.h"
#include "core/statement.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "ufmt/async_io.h"
#include "ufmt/byte_order.h"
#include "ufmt/unformatted.h"
#include "vrn90.h"

namespace {

AIORequest* RequestOf(const LocalContext* context) { return static_cast<AIORequest*>(context->aioRequest); }

// Where the unit's next sequential record or stream byte is.
int64_t CurrentPosition(const UnitRecord* unit) {
    return unit->aioEndPosition >= 0 ? unit->aioEndPosition : unit->filePosition;
}

// The bytes an item may still take: what is left of the record, or anything on a stream.
int32_t RoomInRecord(const LocalContext* context, int32_t limit) {
    if (context->unit->access == VRN_KEY_STREAM) return INT32_MAX;
    return std::max(0, limit - context->column);
}

void Advance(LocalContext* context, int32_t count) {
    context->column += count;
    context->highWater = std::max(context->highWater, context->column);
    context->charsTransferred += count;
}

// Memory for a piece of the record ran out: reported once, and no more items.
int32_t OutOfMemory(LocalContext* context, int32_t count) {
    ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
    context->itemsStopped = 1;
    return count;
}

int32_t AIOWriteItem(LocalContext* context, const void* bytes, int32_t count) {
    int32_t take = std::min(count, RoomInRecord(context, context->recordMax));
    if (take < count) context->recordOverflow = 1;
    AIORequest* request = RequestOf(context);
    if (QueueWrite(request, request->payloadStart + context->column, bytes, take, context->itemAsync != 0) < 0) {
        return OutOfMemory(context, count);
    }
    Advance(context, take);
    return take;
}

int32_t AIOReadItem(LocalContext* context, void* into, int32_t count) {
    int32_t limit = context->unit->access == VRN_KEY_SEQUENTIAL ? context->recordLength : context->recordMax;
    int32_t take = std::min(count, RoomInRecord(context, limit));
    if (take < count) context->recordOverflow = 1;
    AIORequest* request = RequestOf(context);
    int64_t offset = request->payloadStart + context->column;
    int32_t got = QueueRead(request, offset, into, take, context->itemAsync != 0);
    if (got == -1) return OutOfMemory(context, count);
    if (got < 0) {
        IORaisePermanentError(context, context->unit, errno);
        context->itemsStopped = 1;
        return count;
    }
    if (got < take) {
        // Read at once and found the end of the file: the unit stands there now.
        context->atEndOfFile = 1;
        if (context->unit->access != VRN_KEY_DIRECT) context->unit->aioEndPosition = offset + got;
    }
    Advance(context, got);
    return got;
}

void BeginSequentialRead(LocalContext* context, AIORequest* request) {
    UnitRecord* unit = context->unit;
    uint32_t width = unit->recordOverhead;
    uint8_t tag[16];
    int32_t got = 0;
    while (got < static_cast<int32_t>(width)) {
        ssize_t moved = pread64(unit->fd, tag + got, width - static_cast<uint32_t>(got), request->recordStart + got);
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) {
            IORaisePermanentError(context, unit, errno);
            context->itemsStopped = 1;
            return;
        }
        if (moved == 0) break;
        got += static_cast<int32_t>(moved);
    }
    if (got < static_cast<int32_t>(width)) {
        unit->aioEndPosition = request->recordStart + got;
        context->atEndOfFile = 1;
        unit->afterEndfile = 1;
        IORaiseEndOfFile(context);
        return;
    }
    TakeLeadingTag(context, tag);
}

bool Writing(const LocalContext* context) { return ((context->statementFlags >> 8) & 0xFFu) == VRN_DIRECTION_WRITE; }

bool QueueTag(LocalContext* context, int64_t offset, int64_t value) {
    UnitRecord* unit = context->unit;
    uint8_t tag[16];
    EncodeLengthTag(value, unit->recordOverhead, false, tag);
    if (QueueWrite(RequestOf(context), offset, tag, static_cast<int32_t>(unit->recordOverhead), false) >= 0) return true;
    OutOfMemory(context, 0);
    return false;
}

// The record is complete: its tags, its fill, and where the unit stands after it.
void FinishRecord(LocalContext* context, AIORequest* request) {
    UnitRecord* unit = context->unit;
    int64_t end = request->payloadStart + context->column;
    switch (unit->access) {
    case VRN_KEY_SEQUENTIAL:
        if (Writing(context)) {
            if (!QueueTag(context, request->recordStart, context->column) || !QueueTag(context, end, context->column)) {
                return;
            }
            unit->aioEndPosition = end + unit->recordOverhead;
        } else if (context->recordTag >= 0) {
            unit->aioEndPosition = request->payloadStart + context->recordTag + unit->recordOverhead;
        }
        break;
    case VRN_KEY_DIRECT:
        if (Writing(context) && context->column < unit->recl) {
            unit->aioPartialStart = static_cast<uint64_t>(end);
            unit->aioPartialLength = static_cast<uint32_t>(unit->recl - context->column);
            AIOFillDirectRecord(context, unit);
        }
        unit->nextRecord = static_cast<uint64_t>(context->recordNumber) + 1;
        break;
    default: unit->aioEndPosition = end; break;
    }
}

int32_t FailWithErrno(LocalContext* context, UnitRecord* unit) {
    IORaisePermanentError(context, unit, errno);
    return 0;
}

}  // namespace

int32_t BeginAIOUfmt(LocalContext* context, void*) {
    context->endRoutine = EndAIOUfmt;
    context->readItem = AIOReadItem;
    context->writeItem = AIOWriteItem;
    context->recordTag = -1;
    UnitRecord* unit = context->unit;
    AIORequest* request = RequestOf(context);
    AttachAIORequestToUnit(request, unit, Writing(context) ? kDirectionWrite : kDirectionRead);
    switch (unit->access) {
    case VRN_KEY_DIRECT:
        request->recordStart = (context->recordNumber - 1) * static_cast<int64_t>(unit->recl);
        request->payloadStart = request->recordStart;
        context->recordMax = unit->recl;
        break;
    case VRN_KEY_STREAM:
        request->recordStart = context->streamPosition >= 0 ? context->streamPosition : CurrentPosition(unit);
        request->payloadStart = request->recordStart;
        context->streamPosition = -1;
        break;
    default:
        request->recordStart = CurrentPosition(unit);
        request->payloadStart = request->recordStart + unit->recordOverhead;
        if (!Writing(context)) BeginSequentialRead(context, request);
        break;
    }
    return context->status;
}

int32_t EndAIOUfmt(LocalContext* context) {
    if (context->numAddress != nullptr) *context->numAddress = context->charsTransferred - context->charsBase;
    AIORequest* request = RequestOf(context);
    // A statement that failed (IOSTAT= alone leaves `status` 0) queues no more of its record.
    bool failed = context->status != 0 || context->iostatValue != 0;
    if (!failed && request != nullptr) {
        FinishRecord(context, request);
        SubmitAIORequest(request);
    }
    // The record state carried to the next statement is that of a record boundary.
    context->column = 0;
    context->leftLimit = 0;
    context->highWater = 0;
    context->recordLength = -1;
    return context->status;
}

void StoreAIORequestId(LocalContext* context, int32_t id) {
    if (context->idAddress != nullptr) std::memcpy(context->idAddress, &id, sizeof id);
    if (context->idAddress8 != nullptr) {
        int64_t wide = id;
        std::memcpy(context->idAddress8, &wide, sizeof wide);
    }
}

int32_t AIOFillDirectRecord(LocalContext* context, UnitRecord* unit) {
    uint32_t length = unit->aioPartialLength;
    if (length == 0) return 1;
    auto start = static_cast<int64_t>(unit->aioPartialStart);
    unit->aioPartialLength = 0;
    unit->aioPartialStart = 0;
    AIORequest* request = RequestOf(context);
    if (request != nullptr && request->unit == unit) {
        if (QueueFill(request, start, ' ', static_cast<int32_t>(length)) < 0) OutOfMemory(context, 0);
        return 1;
    }
    // No request to carry it: the fill is written now.
    char blanks[512];
    std::memset(blanks, ' ', sizeof blanks);
    while (length > 0) {
        size_t piece = std::min<size_t>(length, sizeof blanks);
        ssize_t written = pwrite64(unit->fd, blanks, piece, start);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            if (written == 0) errno = EIO;
            return FailWithErrno(context, unit);
        }
        start += written;
        length -= static_cast<uint32_t>(written);
    }
    return 1;
}

int32_t LeaveAIOMode(LocalContext* context, UnitRecord* unit) {
    unit->aioMode = 0;
    if (unit->access == VRN_KEY_DIRECT) {
        if (!AIOFillDirectRecord(context, unit)) return 0;
        unit->needsReposition = 1;
        return 1;
    }
    if (unit->aioEndPosition < 0) return 1;
    int64_t position = unit->aioEndPosition;
    unit->aioEndPosition = -1;
    // The buffer's bytes, read ahead before the asynchronous statements, are stale now.
    unit->cursor = unit->buffer;
    unit->bufferFill = 0;
    unit->bufferOffset = 0;
    unit->bufferKept = 0;
    unit->filePosition = position;
    unit->needsReposition = 0;
    if (lseek64(unit->fd, position, SEEK_SET) < 0) return FailWithErrno(context, unit);
    return 1;
}

int32_t IOPrep(LocalContext* context, UnitRecord** unitAddress, uint32_t direction, bool asynchronous, uint32_t access,
               bool internal) {
    UnitRecord* unit = *unitAddress;
    if (unit->permanentError) {
        ErrorHandler(kClassSevere, kKindError, 15, 15, ArgText(1), UnitNameForMessages(unit), ArgInt(2),
                     unit->unitNumber, 0u);
        return 0;
    }
    context->recordLength = unit->savedRecordLength;
    context->column = unit->savedColumn;
    GlobalContext* global = context->global;
    if (asynchronous != (unit->aioMode != 0)) {
        if (!asynchronous) {
            if (!AIOWaitUnit(global, context, unit, 1) || !LeaveAIOMode(context, unit)) return 0;
        } else {
            unit->aioEndPosition = -1;
            unit->aioPartialStart = 0;
            unit->aioPartialLength = 0;
        }
        unit->aioMode = asynchronous ? 1 : 0;
        return PrepareUnit(context, unitAddress, direction, asynchronous, access, internal);
    }
    if (direction != unit->direction) {
        if (!AIOWaitUnit(global, context, unit, 1)) return 0;
        if (direction == kDirectionWrite && unit->access == VRN_KEY_SEQUENTIAL &&
            ftruncate64(unit->fd, CurrentPosition(unit)) != 0 && errno != EINVAL) {
            return FailWithErrno(context, unit);
        }
        if (unit->access == VRN_KEY_DIRECT && !AIOFillDirectRecord(context, unit)) return 0;
    }
    unit->direction = direction;
    context->unit = unit;
    context->recordMax = unit->maxRecord;
    context->recordLength = -1;
    context->column = 0;
    context->leftLimit = 0;
    context->highWater = 0;
    context->recordOverflow = 0;
    context->atEndOfFile = 0;
    context->shortRecordSeen = 0;
    context->charsTransferred = 0;
    context->charsBase = 0;
    if (unit->access != VRN_KEY_STREAM && !AllowIOAfterEOF(context, unit, direction)) return 0;
    context->advancing = 1;
    return 1;
}

void AIOWriteSplitComplex(LocalContext* context, const uint8_t* item, int32_t length, int32_t kind) {
    int32_t count = 2 * kind;
    if (RoomInRecord(context, context->recordMax) < count) {
        context->recordOverflow = 1;
        UfmtWriteError(context);
        return;
    }
    AIORequest* request = RequestOf(context);
    AIOOperation* operation = NewSplitOperation(request);
    if (operation == nullptr) {
        ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
        UfmtWriteError(context);
        return;
    }
    std::memcpy(operation->data, item, static_cast<size_t>(kind));
    std::memcpy(operation->data + kind, item + length / 2, static_cast<size_t>(kind));
    QueueSplitWrite(request, operation, request->payloadStart + context->column, count);
    Advance(context, count);
}

void AIOReadSplitComplex(LocalContext* context, uint8_t* item, int32_t length, int32_t kind) {
    int32_t count = 2 * kind;
    int32_t limit = context->unit->access == VRN_KEY_SEQUENTIAL ? context->recordLength : context->recordMax;
    if (!context->itemAsync || RoomInRecord(context, limit) < count) {
        // Read now, part by part, where the item wants them.
        for (uint8_t* part : {item, item + length / 2}) {
            if (AIOReadItem(context, part, kind) != kind) {
                UfmtReadError(context);
                return;
            }
        }
        return;
    }
    AIORequest* request = RequestOf(context);
    AIOOperation* operation = NewSplitOperation(request);
    if (operation == nullptr) {
        ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
        UfmtReadError(context);
        return;
    }
    QueueSplitRead(request, operation, request->payloadStart + context->column, item, length, kind);
    Advance(context, count);
}
