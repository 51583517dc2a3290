// Moving a unit's position: within a record, to a byte offset, to a record.
//
// filePosition is always the logical position, so every move is computed against it and
// the descriptor is brought there only when the buffer cannot serve the move.
#include <unistd.h>

#include <cerrno>

#include "core/context.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "vrn90_keywords.h"

namespace {

void DiscardReadBuffer(UnitRecord* unit) {
    unit->cursor = unit->buffer;
    unit->bufferOffset = 0;
    unit->bufferFill = 0;
    unit->bufferKept = 0;
}

// Moves the cursor by delta when the bytes are in the buffer. The write side may move
// anywhere within the bytes written; the read side within the bytes read.
bool MoveWithinBuffer(UnitRecord* unit, int64_t delta) {
    if (unit->buffer == nullptr || unit->needsReposition) return false;
    int64_t at = unit->cursor - unit->buffer;
    int64_t target = at + delta;
    int64_t limit = unit->bufferFill;
    if (unit->direction == kDirectionWrite && at > limit) limit = at;
    if (target < 0 || target > limit) return false;
    unit->cursor = unit->buffer + target;
    if (unit->direction != kDirectionWrite) unit->bufferOffset = static_cast<uint32_t>(target);
    unit->filePosition += delta;
    return true;
}

bool DropForward(UnitRecord* unit, int64_t count) {
    char scratch[4096];
    while (count > 0) {
        size_t want = count < static_cast<int64_t>(sizeof scratch) ? static_cast<size_t>(count) : sizeof scratch;
        ssize_t got = read(unit->fd, scratch, want);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            if (got == 0) errno = EIO;
            return false;
        }
        count -= got;
    }
    return true;
}

}  // namespace

int32_t RepositionUnit(GlobalContext* global, UnitRecord* unit, int64_t offset) {
    if (unit->direction == kDirectionWrite) {
        if ((unit->bufferFill > 0 || unit->cursor != unit->buffer) && !FlushUnit(global, unit, 1)) return 0;
    } else {
        DiscardReadBuffer(unit);
    }
    int64_t target = unit->filePosition + offset;
    if (unit->isNullDevice) {
        unit->filePosition = target;
        return 1;
    }
    if (unit->seekable && !unit->rawDevice) {
        if (lseek64(unit->fd, target, SEEK_SET) < 0) {
            unit->permanentError = 1;
            return 0;
        }
        unit->needsReposition = 0;
        unit->filePosition = target;
        return 1;
    }
    if (offset < 0) {
        errno = EBADF;
        unit->permanentError = 1;
        return 0;
    }
    if (!DropForward(unit, offset)) {
        unit->permanentError = 1;
        return 0;
    }
    unit->filePosition = target;
    return 1;
}

int32_t IOSetRecordOffset(LocalContext* context, int32_t offset) {
    if (context->unit == nullptr) {
        context->column = offset == kEndOfRecordOffset ? context->recordLength : offset;
        return 1;
    }
    int32_t target = offset;
    if (offset == kEndOfRecordOffset) {
        target = context->recordLength >= 0 ? context->recordLength : context->highWater;
    }
    if (target == context->column) return 1;
    UnitRecord* unit = context->unit;
    int64_t delta = static_cast<int64_t>(target) - context->column;
    if (!MoveWithinBuffer(unit, delta) && !RepositionUnit(context->global, unit, delta)) return 0;
    context->column = target;
    return 1;
}

int32_t SeekUnitToFilePosition(GlobalContext* global, LocalContext* context, UnitRecord* unit, int64_t offset) {
    if (offset == unit->filePosition && !unit->needsReposition) return 1;
    int64_t delta = offset - unit->filePosition;
    if (!MoveWithinBuffer(unit, delta) && !RepositionUnit(global, unit, delta)) return 0;
    unit->filePosition = offset;
    unit->pendingColumn = -1;
    unit->savedRecordLength = -1;
    unit->savedColumn = 0;
    unit->savedLeftLimit = 0;
    unit->savedHighWater = 0;
    unit->afterEndfile = 0;
    if (context != nullptr && context->unit == unit) {
        context->column = 0;
        context->leftLimit = 0;
        context->highWater = 0;
        context->recordLength = -1;
    }
    return 1;
}

int32_t SeekUnitToRecord(GlobalContext* global, UnitRecord* unit, int64_t record, int32_t mode) {
    if (unit->access == VRN_KEY_DIRECT) {
        if (static_cast<uint64_t>(record) == unit->nextRecord && unit->bufferKept == 0 && !unit->needsReposition) {
            return 1;
        }
        int64_t target = static_cast<int64_t>(unit->recl) * (record - 1);
        int64_t delta = target - unit->filePosition;
        if (!MoveWithinBuffer(unit, delta) && !RepositionUnit(global, unit, delta)) return 0;
        unit->nextRecord = static_cast<uint64_t>(record);
        return 1;
    }
    if (unit->direction == kDirectionWrite && !FlushUnit(global, unit, 1)) return 0;
    unit->direction = kDirectionRead;
    DiscardReadBuffer(unit);
    switch (mode) {
    case kSeekStart:
        if (!unit->isNullDevice && lseek64(unit->fd, 0, SEEK_SET) < 0) {
            unit->permanentError = 1;
            return 0;
        }
        unit->filePosition = 0;
        unit->position = VRN_KEY_REWIND;
        break;
    case kSeekEnd: {
        off64_t end = lseek64(unit->fd, 0, SEEK_END);
        if (end < 0) {
            unit->permanentError = 1;
            return 0;
        }
        unit->filePosition = end;
        break;
    }
    default:
        // One record back belongs to BACKSPACE, which has its own routines.
        errno = ENOTSUP;
        return 0;
    }
    unit->needsReposition = 0;
    unit->pendingColumn = -1;
    unit->savedRecordLength = -1;
    unit->savedColumn = 0;
    unit->savedLeftLimit = 0;
    unit->savedHighWater = 0;
    return 1;
}
