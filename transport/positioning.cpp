// Moving a unit's position: within a record, to a byte offset, to a record.
//
// filePosition is always the logical position, so every move is computed against it and
// the descriptor is brought there only when the buffer cannot serve the move.
#include <unistd.h>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "core/context.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "ufmt/byte_order.h"
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

namespace {

// Moves the cursor and column by delta, within the buffer when the bytes are there.
bool MoveColumn(LocalContext* context, int32_t target) {
    int64_t delta = static_cast<int64_t>(target) - context->column;
    if (delta == 0) return true;
    UnitRecord* unit = context->unit;
    if (!MoveWithinBuffer(unit, delta) && !RepositionUnit(context->global, unit, delta)) return false;
    context->column = target;
    return true;
}

// Reads forward from highWater until the target column, the newline that ends the
// record, or the end of the file. Positioning transfers nothing: charsTransferred stays.
bool WalkForward(LocalContext* context, int32_t target, bool toRecordEnd) {
    UnitRecord* unit = context->unit;
    if (context->column < context->highWater && !MoveColumn(context, context->highWater)) return false;
    while (context->column < target) {
        if (unit->bufferFill <= static_cast<int32_t>(unit->bufferOffset)) {
            int32_t filled = FillUnit(context->global, unit);
            if (filled < 0) return false;
            if (filled == 0) {
                context->recordLength = context->column;
                context->atEndOfFile = 1;
                return true;
            }
        }
        int32_t held = unit->bufferFill - static_cast<int32_t>(unit->bufferOffset);
        int32_t limit = static_cast<int32_t>(std::min<int64_t>(held, static_cast<int64_t>(target) - context->column));
        const char* newline = static_cast<const char*>(std::memchr(unit->cursor, '\n', static_cast<size_t>(limit)));
        int32_t take = newline != nullptr ? static_cast<int32_t>(newline - unit->cursor) : limit;
        unit->cursor += take;
        unit->bufferOffset += static_cast<uint32_t>(take);
        unit->filePosition += take;
        context->column += take;
        context->highWater = std::max(context->highWater, context->column);
        if (newline != nullptr) {
            context->recordLength = context->column;
            if (toRecordEnd) {  // behind the newline
                unit->cursor++;
                unit->bufferOffset++;
                unit->filePosition++;
            } else if (context->column < target) {
                context->recordOverflow = 1;
            }
            return true;
        }
    }
    return true;
}

}  // namespace

int32_t IOSetRecordOffset(LocalContext* context, int32_t offset) {
    bool toRecordEnd = offset == kEndOfRecordOffset;
    if (context->unit == nullptr) {
        context->column = toRecordEnd ? context->recordLength : offset;
        return 1;
    }
    UnitRecord* unit = context->unit;
    if (unit->direction != kDirectionRead) {
        int32_t target = toRecordEnd ? (context->recordLength >= 0 ? context->recordLength : context->highWater) : offset;
        return target == context->column || MoveColumn(context, target) ? 1 : 0;
    }
    if (!toRecordEnd && offset == context->column) return 1;
    bool formatted = unit->form != VRN_KEY_UNFORMATTED && unit->access != VRN_KEY_DIRECT;
    if (formatted && context->recordLength < 0 && (toRecordEnd || offset > context->highWater)) {
        return WalkForward(context, toRecordEnd ? INT32_MAX : offset, toRecordEnd) ? 1 : 0;
    }
    int32_t target = toRecordEnd ? context->recordLength : offset;
    if (context->recordLength >= 0) {
        if (target > context->recordLength) {
            context->recordOverflow = 1;
            target = context->recordLength;
        } else {
            context->recordOverflow = 0;
        }
    }
    return MoveColumn(context, target) ? 1 : 0;
}

int32_t IOSeekToColumn(LocalContext* context, int32_t offset, int32_t mode, int32_t deferred) {
    UnitRecord* unit = context->unit;
    int32_t current = context->column;
    if (unit != nullptr && deferred && unit->pendingColumn >= 0) current = unit->pendingColumn;
    int32_t target = mode == kSeekAbsolute ? context->leftLimit + offset - 1 : current + offset;
    // A child statement of defined I/O cannot go left of where its parent stood.
    int32_t limit = context->dtioChild ? context->parentLeftLimit : context->leftLimit;
    if (target < limit) target = limit;
    if (deferred && unit != nullptr) {
        unit->pendingColumn = target;
    } else {
        context->column = target;
    }
    return 1;
}

int64_t UnitFileSize(const UnitRecord* unit) {
    struct stat64 fileStat;
    if (unit->fd < 0 || fstat64(unit->fd, &fileStat) != 0) return -1;
    if (!S_ISREG(fileStat.st_mode) && !S_ISBLK(fileStat.st_mode)) return -1;
    // Written bytes still in the buffer may lie beyond the size the file has now.
    int64_t size = fileStat.st_size;
    if (unit->direction == kDirectionWrite && unit->buffer != nullptr) {
        size = std::max<int64_t>(size, unit->filePosition - (unit->cursor - unit->buffer) + unit->bufferFill);
    }
    return size;
}

int32_t IOSeekToEndOfFile(LocalContext* context) {
    UnitRecord* unit = context->unit;
    int64_t size = UnitFileSize(unit);
    if (size < 0) return 0;
    return SeekUnitToFilePosition(context->global, context, unit, size);
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

namespace {

// The offset of the start of the record before `position` in a formatted file: just
// behind the newline before the one that ends the previous record; when the position
// stands inside a record, the start of that record. -1 after a failed read.
int64_t PreviousRecordStart(int fd, int64_t position) {
    char chunk[4096];
    int64_t scan = position;
    bool skipFirstNewline = true;  // the newline just before the position ends the previous record
    bool first = true;
    while (scan > 0) {
        int64_t from = scan > static_cast<int64_t>(sizeof chunk) ? scan - static_cast<int64_t>(sizeof chunk) : 0;
        size_t length = static_cast<size_t>(scan - from);
        ssize_t got = pread64(fd, chunk, length, from);
        if (got != static_cast<ssize_t>(length)) {
            if (got >= 0) errno = EIO;
            return -1;
        }
        for (int64_t i = static_cast<int64_t>(length) - 1; i >= 0; --i) {
            if (first) {
                first = false;
                skipFirstNewline = chunk[i] == '\n';
                if (skipFirstNewline) continue;
            }
            if (chunk[i] == '\n') return from + i + 1;
        }
        scan = from;
    }
    return 0;  // reaching the start of the file is success
}

// Before the trailing length tag of the previous unformatted record lies its payload and
// its leading tag.
int64_t PreviousUnformattedRecordStart(const UnitRecord* unit, int64_t position) {
    uint32_t tagSize = unit->recordOverhead;
    if (position < static_cast<int64_t>(2 * tagSize)) return position == 0 ? 0 : (errno = EIO, -1);
    uint8_t tag[16];
    ssize_t got = ValidTagWidth(tagSize) ? pread64(unit->fd, tag, tagSize, position - static_cast<int64_t>(tagSize)) : 0;
    if (got != static_cast<ssize_t>(tagSize)) {
        if (got >= 0) errno = EIO;
        return -1;
    }
    int64_t length = DecodeLengthTag(tag, tagSize, unit->byteSwap != 0);
    int64_t start = position - 2 * static_cast<int64_t>(tagSize) - length;
    if (length < 0 || start < 0) {
        errno = EIO;
        return -1;
    }
    return start;
}

bool Backspace(UnitRecord* unit) {
    // After the end-of-file record, one step back stands before it.
    if (unit->afterEndfile) {
        unit->afterEndfile = 0;
        unit->endfileWritten = 0;
        return true;
    }
    if (unit->filePosition == 0 || unit->isNullDevice) return true;
    int64_t start = unit->form == VRN_KEY_UNFORMATTED && unit->access == VRN_KEY_SEQUENTIAL
                        ? PreviousUnformattedRecordStart(unit, unit->filePosition)
                        : PreviousRecordStart(unit->fd, unit->filePosition);
    if (start < 0 || lseek64(unit->fd, start, SEEK_SET) < 0) {
        unit->permanentError = 1;
        return false;
    }
    unit->filePosition = start;
    if (unit->nextRecord > 1) unit->nextRecord -= 1;
    return true;
}

}  // namespace

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
        unit->nextRecord = 1;
        unit->afterEndfile = 0;
        unit->endfileWritten = 0;
        break;
    case kSeekBackOneRecord:
        if (!Backspace(unit)) return 0;
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
        errno = EINVAL;
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
