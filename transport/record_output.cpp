// The upper level of the record transport: records, for internal and external files alike.
//
// A format or list-directed routine does not know where its bytes go. A record that
// overflows is no error here: the caller gets a short count and recordOverflow, and the
// item layer decides what it means.
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/unit.h"
#include "desc/array_walk.h"
#include "transport/record_window.h"
#include "transport/transport.h"
#include "ufmt/byte_order.h"
#include "vrn90.h"

namespace {

constexpr int kFillChunk = 256;

bool IsInternal(const LocalContext* context) { return context->unit == nullptr; }

void RaiseHighWater(LocalContext* context) { context->highWater = std::max(context->highWater, context->column); }

void Advance(LocalContext* context, int32_t count) {
    context->column += count;
    context->charsTransferred += count;
    RaiseHighWater(context);
}

// Columns skipped by X or T on an internal file become blanks when data follows them.
void BlankInternalGap(LocalContext* context) {
    if (context->column <= context->highWater) return;
    int32_t end = std::min(context->column, context->recordLength);
    if (end > context->highWater) {
        std::memset(context->internalRecord + context->highWater, ' ', static_cast<size_t>(end - context->highWater));
    }
}

// Bytes that fit in the record from the current column, at most `count`.
int32_t RoomFor(LocalContext* context, int32_t limit, int32_t count) {
    int64_t end = static_cast<int64_t>(context->column) + count;
    if (end <= limit) return count;
    context->recordOverflow = 1;
    return limit - context->column;
}

// Reaches a column that T, TL, TR or X asked for before the next byte is written.
// 1 on success, -1 after a raised error.
int32_t ReachPendingColumn(LocalContext* context) {
    UnitRecord* unit = context->unit;
    int32_t target = unit->pendingColumn;
    if (target < 0) return 1;
    unit->pendingColumn = -1;
    if (target == context->column) return 1;
    if (target <= context->highWater) {
        if (IOSetRecordOffset(context, target)) return 1;
        IORaisePermanentError(context, unit, errno);
        return -1;
    }
    if (context->column != context->highWater && !IOSetRecordOffset(context, context->highWater)) {
        IORaisePermanentError(context, unit, errno);
        return -1;
    }
    int32_t end = std::min(target, context->recordMax);
    if (end > context->column && IOFill(context, ' ', end - context->column) < 0) return -1;
    return 1;
}

// The end of a record on an external file, write side. 1, or 0 with errno set.
int32_t FinishExternalWriteRecord(LocalContext* context) {
    GlobalContext* global = context->global;
    UnitRecord* unit = context->unit;
    unit->pendingColumn = -1;
    if (context->recordLength < 0) {
        // Bytes that T skipped over stay in the record.
        if (context->column < context->highWater && !IOSetRecordOffset(context, context->highWater)) return 0;
    } else if (context->highWater < context->recordLength) {
        if (context->column != context->highWater && !IOSetRecordOffset(context, context->highWater)) return 0;
        int32_t gap = context->recordLength - context->highWater;
        if (IOFill(context, ' ', gap) != gap) return -1;
    } else if (context->column < context->recordLength) {
        if (!IOSetRecordOffset(context, context->recordLength)) return 0;
    }

    bool formatted = unit->form != VRN_KEY_UNFORMATTED;
    if (unit->access == VRN_KEY_DIRECT) {
        if (!(context->statementFlags & VRN_FLAG_ASYNCHRONOUS)) {
            // Records count from 1 in recordNumber and from 0 in the file.
            unit->filePosition = context->recordNumber * static_cast<int64_t>(context->recordLength);
        }
    } else if (formatted) {
        if (char* window = UnitReserve(unit, 1)) {
            *window = '\n';
            UnitCommit(unit, 1);
        } else if (WriteUnit(global, unit, "\n", 1) != 1) {
            return 0;
        }
        context->recordLength = -1;
    } else if (unit->access == VRN_KEY_SEQUENTIAL) {
        uint8_t tag[16];
        uint32_t size = unit->recordOverhead;
        if (!ValidTagWidth(size)) ElementSizeFault();
        EncodeLengthTag(context->recordLength, size, unit->byteSwap != 0, tag);
        if (WriteUnit(global, unit, tag, static_cast<int32_t>(size)) != static_cast<int32_t>(size)) return 0;
        context->recordLength = -1;
    } else {
        context->recordLength = -1;  // unformatted stream: there are no records
    }
    unit->nextRecord += 1;

    bool bufferLow = unit->recordBuffered &&
                     static_cast<int64_t>(unit->bufferSize) - (unit->cursor - unit->buffer) < unit->recordCapacity;
    if (unit->flushEachRecord || unit->flushAfterWrite || unit->unbuffered || bufferLow) {
        if (!FlushUnit(global, unit, 1)) return 0;
    }
    return 1;
}

void FinishInternalWriteRecord(LocalContext* context) {
    if (context->atEndOfFile) return;
    // The whole rest of the element is blank, whatever the column.
    if (context->highWater < context->recordLength) {
        std::memset(context->internalRecord + context->highWater, ' ',
                    static_cast<size_t>(context->recordLength - context->highWater));
    }
    if (context->internalIterator != nullptr) {
        context->internalRecord = NCNextElement(context->internalIterator);
        if (context->internalRecord == nullptr) context->atEndOfFile = 1;
        return;
    }
    context->internalRecord += context->recordLength;
    if (context->internalRecord >= context->internalEnd) context->atEndOfFile = 1;
}

// Stores into an internal record what fits of `count` bytes; `store` puts them at the
// destination. The result is the count stored.
template <typename Store>
int32_t PutInternal(LocalContext* context, int32_t count, Store store) {
    if (context->atEndOfFile) return 0;  // past the last record: nothing to store into
    BlankInternalGap(context);
    int32_t fits = RoomFor(context, context->recordLength, count);
    if (fits <= 0) return 0;
    store(context->internalRecord + context->column, fits);
    Advance(context, fits);
    return fits;
}

void ClearRecordState(LocalContext* context) {
    context->column = 0;
    context->leftLimit = 0;
    context->highWater = 0;
    context->recordOverflow = 0;
    context->parentLeftLimit = 0;
}

}  // namespace

int32_t IOPutByte(LocalContext* context, int byte) {
    if (char* window = IOReserve(context, 1)) {
        *window = static_cast<char>(byte);
        IOCommit(context, 1);
        return 1;
    }
    if (IsInternal(context)) {
        return PutInternal(context, 1, [byte](char* to, int32_t) { *to = static_cast<char>(byte); });
    }
    if (ReachPendingColumn(context) < 0) return -1;
    if (context->column >= context->recordMax) {
        context->recordOverflow = 1;
        return 0;
    }
    char value = static_cast<char>(byte);
    if (WriteUnit(context->global, context->unit, &value, 1) != 1) {
        IORaisePermanentError(context, context->unit, errno);
        return -1;
    }
    Advance(context, 1);
    return 1;
}

int32_t IOWrite(LocalContext* context, const void* bytes, int32_t count) {
    if (count <= 0) return 0;
    if (char* window = IOReserve(context, count)) {
        std::memcpy(window, bytes, static_cast<size_t>(count));
        IOCommit(context, count);
        return count;
    }
    if (IsInternal(context)) {
        return PutInternal(context, count,
                           [bytes](char* to, int32_t fits) { std::memmove(to, bytes, static_cast<size_t>(fits)); });
    }
    if (ReachPendingColumn(context) < 0) return -1;
    int32_t fits = RoomFor(context, context->recordMax, count);
    if (fits < 1) return 0;
    if (WriteUnit(context->global, context->unit, bytes, fits) != fits) {
        IORaisePermanentError(context, context->unit, errno);
        return -1;
    }
    Advance(context, fits);
    return fits;
}

int32_t IOFill(LocalContext* context, int byte, int32_t count) {
    if (count <= 0) return 0;
    if (IsInternal(context)) {
        return PutInternal(context, count,
                           [byte](char* to, int32_t fits) { std::memset(to, byte, static_cast<size_t>(fits)); });
    }
    if (ReachPendingColumn(context) < 0) return -1;
    int32_t fits = RoomFor(context, context->recordMax, count);
    if (fits < 1) return 0;
    char chunk[kFillChunk];
    std::memset(chunk, byte, sizeof chunk);
    int32_t done = 0;
    while (done < fits) {
        int32_t piece = std::min(fits - done, kFillChunk);
        if (WriteUnit(context->global, context->unit, chunk, piece) != piece) {
            IORaisePermanentError(context, context->unit, errno);
            return -1;
        }
        Advance(context, piece);  // a later failed chunk leaves this one counted
        done += piece;
    }
    return fits;
}

int32_t IOTerminateRecord(LocalContext* context) {
    bool writing = ((context->statementFlags >> 8) & 0xFFu) == VRN_DIRECTION_WRITE;
    if (!writing) {
        int32_t ended = TerminateReadRecord(context);
        ClearRecordState(context);
        return ended;
    }
    {
        if (IsInternal(context)) {
            FinishInternalWriteRecord(context);
        } else {
            int32_t finished = FinishExternalWriteRecord(context);
            if (finished == 0) {
                IORaisePermanentError(context, context->unit, errno);
                ClearRecordState(context);
                return 0;
            }
            if (finished < 0) {  // the short fill has raised its error already
                ClearRecordState(context);
                return 0;
            }
        }
    }
    ClearRecordState(context);
    return 1;
}
