// The unit buffer: the lower level of the record transport, working on a UnitRecord.
//
// Two regimes. Record buffered: the buffer holds a whole record of the largest allowed
// size and data is copied without a limit test (files that cannot be repositioned, short
// fixed records). Block buffered: the buffer is a disk block, flushed when full, and large
// transfers go straight from the caller's memory to write(2).
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "vrn90_keywords.h"

namespace {

constexpr int32_t kDefaultRecordMax = 32768;
constexpr uint32_t kTerminalBufferSize = 32768;
constexpr uint32_t kBufferSizeZeroLimit = 65536;

struct SequentialLimits {
    int32_t tail;             // the length tags behind the payload
    uint32_t overhead;
    int32_t defaultCapacity;
    int32_t largest;
};

SequentialLimits LimitsOf(uint32_t form) {
    if (form == VRN_KEY_UNFORMATTED) return {8, 4, 32776, 0x7FFFFFF7};
    return {1, 1, 32769, 0x7FFFFFFE};
}

bool IsSequentialShortFixed(const UnitRecord* unit) {
    return unit->access == VRN_KEY_SEQUENTIAL && unit->recl >= 0 &&
           static_cast<uint32_t>(unit->recl) < unit->blockSize / 4;
}

bool DecideRecordBuffered(const UnitRecord* unit) {
    if (unit->isNullDevice) return false;
    if (unit->isTty && unit->recl < 0 && (unit->form != VRN_KEY_UNFORMATTED || unit->access == VRN_KEY_DIRECT)) {
        return false;
    }
    return !unit->seekable || IsSequentialShortFixed(unit);
}

// A descriptor may have been left ahead of the logical position by a flush after a
// backward move inside a record; the next byte must go where the logical position is.
bool CatchUpDescriptor(UnitRecord* unit) {
    if (!unit->needsReposition || !unit->seekable || unit->bufferFill != 0 || unit->cursor != unit->buffer) {
        return true;
    }
    if (lseek64(unit->fd, unit->filePosition, SEEK_SET) < 0) return false;
    unit->needsReposition = 0;
    return true;
}

}  // namespace

int32_t AttachBufferToUnit(GlobalContext* global, UnitRecord* unit) {
    int32_t bufferSizeOption = global->options.optBufferSize;
    if (bufferSizeOption != -1 && !unit->isTape && !unit->rawDevice) {
        if (bufferSizeOption == 0) {
            unit->blockSize = std::min(unit->blockSize, kBufferSizeZeroLimit);
        } else {
            unit->blockSize = static_cast<uint32_t>(bufferSizeOption);
        }
    }
    unit->blockTransfers = unit->isTape;
    unit->flushEachRecord = unit->flushEachRecord && !unit->isTape;
    unit->recordBuffered = DecideRecordBuffered(unit);

    bool shortFixed = IsSequentialShortFixed(unit);
    int32_t slack = 0;
    if (unit->access == VRN_KEY_DIRECT) {
        unit->recordOverhead = 0;
        unit->maxRecord = unit->recl;
        unit->recordCapacity = unit->recl;
        unit->savedRecordLength = unit->recl;
    } else if (unit->access == VRN_KEY_STREAM) {
        unit->recordCapacity = 0x7FFFFFFF;
        unit->recordOverhead = unit->form == VRN_KEY_FORMATTED ? 1 : 0;
        unit->maxRecord = 0x7FFFFFFF - static_cast<int32_t>(unit->recordOverhead);
        unit->savedRecordLength = -1;
    } else {
        SequentialLimits limits = LimitsOf(unit->form);
        unit->recordOverhead = limits.overhead;
        if (unit->recordBuffered && (unit->isTape || shortFixed)) slack = static_cast<int32_t>(unit->blockSize) - 1;
        if (unit->recl < 0) {
            unit->maxRecord = unit->recordBuffered ? kDefaultRecordMax : limits.largest;
            unit->recordCapacity = unit->recordBuffered ? limits.defaultCapacity : 0x7FFFFFFF;
        } else if (unit->recl > limits.largest - slack) {
            unit->permanentError = 1;
            return kAttachReclTooLarge;
        } else {
            unit->maxRecord = unit->recl;
            unit->recordCapacity = unit->recl + limits.tail;
        }
        unit->savedRecordLength = -1;
    }

    uint32_t size;
    if (unit->recordBuffered) {
        size = static_cast<uint32_t>(slack) + static_cast<uint32_t>(unit->recordCapacity);
    } else {
        size = unit->isTty ? kTerminalBufferSize : unit->blockSize;
    }
    std::free(unit->buffer);
    unit->buffer = static_cast<char*>(std::malloc(size == 0 ? 1 : size));
    if (unit->buffer == nullptr) {
        unit->permanentError = 1;
        return kAttachNoMemory;
    }
    unit->bufferSize = size;
    unit->cursor = unit->buffer;
    unit->nextRecord = 1;
    unit->savedColumn = 0;
    unit->savedLeftLimit = 0;
    unit->savedHighWater = 0;
    unit->bufferFill = 0;
    unit->bufferOffset = 0;
    unit->bufferKept = 0;
    unit->needsReposition = 0;
    unit->pendingColumn = -1;
    return kAttachOk;
}

int32_t DetachBufferFromUnit(GlobalContext*, UnitRecord* unit, int32_t closeDescriptor) {
    std::free(unit->buffer);
    unit->buffer = nullptr;
    unit->cursor = nullptr;
    unit->bufferSize = 0;
    unit->bufferFill = 0;
    int32_t result = 1;
    if (closeDescriptor && unit->fd >= 0) {
        if (close(unit->fd) != 0) result = 0;
        unit->fd = -1;
    }
    return result;
}

constexpr size_t kLargeWrite = size_t{1} << 20;

int32_t WriteNonstop(int fd, const void* bytes, int32_t count) {
    const char* next = static_cast<const char*>(bytes);
    int32_t left = count;
    while (left > 0) {
        ssize_t written = write(fd, next, static_cast<size_t>(left));
        if (written < 0) {
            if (errno == EINTR) continue;
            return -1;
        }
        if (written == 0) {
            errno = EIO;
            return -1;
        }
        next += written;
        left -= static_cast<int32_t>(written);
    }
    return count;
}

int32_t WriteUnit(GlobalContext* global, UnitRecord* unit, const void* bytes, int32_t count) {
    if (unit->direction != kDirectionWrite) {
        if (!FlushUnit(global, unit, 1)) {
            unit->permanentError = 1;
            return -1;
        }
        unit->direction = kDirectionWrite;
    }
    if (unit->buffer == nullptr) {  // a connection whose form no statement has decided yet
        errno = EBADF;
        return -1;
    }
    if (!CatchUpDescriptor(unit)) {
        unit->permanentError = 1;
        return -1;
    }
    const char* next = static_cast<const char*>(bytes);
    if (unit->recordBuffered) {
        // The record layer has checked maxRecord, and the buffer holds the largest record.
        // Only a message written into a long record in progress on unit 0 can exceed it:
        // that goes out around the buffer rather than past its end.
        if (count > static_cast<int32_t>(unit->buffer + unit->bufferSize - unit->cursor)) {
            if (!FlushUnit(global, unit, 1) || WriteNonstop(unit->fd, next, count) < 0) {
                unit->permanentError = 1;
                return -1;
            }
            unit->filePosition += count;
            return count;
        }
        std::memcpy(unit->cursor, next, static_cast<size_t>(count));
        unit->cursor += count;
        unit->bufferFill = std::max(unit->bufferFill, static_cast<int32_t>(unit->cursor - unit->buffer));
        unit->filePosition += count;
        return count;
    }
    int32_t left = count;
    char* end = unit->buffer + unit->bufferSize;
    while (left > 0) {
        if (unit->cursor == end) {
            unit->bufferFill = static_cast<int32_t>(unit->bufferSize);
            if (!FlushUnit(global, unit, 0)) {
                unit->permanentError = 1;
                return -1;
            }
        }
        bool bufferEmpty = unit->bufferFill == 0 && unit->cursor == unit->buffer;
        if (bufferEmpty && static_cast<uint32_t>(left) >= unit->blockSize) {
            // Large transfers skip the copy. A very large one goes in pieces of 1 MB: the
            // kernel's copy of each then stays in the cache, which makes it several times
            // faster than one write of the whole.
            size_t chunk = unit->blockTransfers ? unit->blockSize : std::min<size_t>(static_cast<size_t>(left), kLargeWrite);
            ssize_t written = write(unit->fd, next, chunk);
            if (written < 0 && errno == EINTR) continue;
            if (written <= 0) {
                if (written == 0) errno = EIO;
                unit->permanentError = 1;
                return -1;
            }
            next += written;
            left -= static_cast<int32_t>(written);
            continue;
        }
        int32_t room = static_cast<int32_t>(end - unit->cursor);
        int32_t chunk = std::min(room, left);
        std::memcpy(unit->cursor, next, static_cast<size_t>(chunk));
        unit->cursor += chunk;
        unit->bufferFill = std::max(unit->bufferFill, static_cast<int32_t>(unit->cursor - unit->buffer));
        next += chunk;
        left -= chunk;
    }
    unit->filePosition += count;
    return count;
}

int32_t FlushUnit(GlobalContext*, UnitRecord* unit, int32_t complete) {
    if (unit->permanentError) return 0;
    if (unit->direction == kDirectionWrite) {
        if (unit->bufferFill == 0) {
            unit->bufferOffset = 0;
            return 1;
        }
        int32_t logical = static_cast<int32_t>(unit->cursor - unit->buffer);
        if (WriteNonstop(unit->fd, unit->buffer, unit->bufferFill) < 0) {
            unit->permanentError = 1;
            return 0;
        }
        if (unit->bufferFill > logical) unit->needsReposition = 1;
        unit->cursor = unit->buffer;
        unit->bufferFill = 0;
        unit->bufferOffset = 0;
        unit->bufferKept = 0;
        return 1;
    }
    if (unit->direction == kDirectionRead) {
        int32_t unread = unit->bufferFill - static_cast<int32_t>(unit->bufferOffset);
        unit->cursor = unit->buffer;
        unit->bufferFill = 0;
        unit->bufferOffset = 0;
        unit->bufferKept = 0;
        if (unread < 1 || !complete || unit->isNullDevice) return 1;
        // The read-ahead must go back to the descriptor, which a pipe cannot do.
        if (unit->seekable) {
            if (lseek64(unit->fd, -static_cast<off64_t>(unread), SEEK_CUR) < 0) {
                unit->permanentError = 1;
                return 0;
            }
            return 1;
        }
        unit->permanentError = 1;
        ErrorHandler(kClassSevere, kKindError, 159, 159, ArgInt(1), unit->unitNumber, ArgText(2),
                     UnitNameForMessages(unit), 0u);
        return 0;
    }
    return 1;
}

namespace {

template <typename Visit>
void ForEachUnit(GlobalContext* global, Visit visit) {
    for (int number = 0; number < kLowUnits; ++number) {
        if (UnitRecord* unit = global->lowUnits[number]) visit(unit);
    }
    for (int number = 3; number < kNegativeUnits; ++number) {
        if (UnitRecord* unit = global->negativeUnits[number]) visit(unit);
    }
    for (int bucket = 0; bucket < kHashBuckets; ++bucket) {
        ListHeader* list = &global->unitHash[bucket];
        for (ListNode* node = list->first; node->next != nullptr; node = node->next) {
            visit(reinterpret_cast<UnitRecord*>(node));
        }
    }
}

}  // namespace

void FlushAllUnits(GlobalContext* global) {
    if (RTE_Initialized == 0) return;
    ForEachUnit(global, [global](UnitRecord* unit) { FlushUnit(global, unit, 1); });
}

void FlushAllOutputUnits(GlobalContext* global) {
    if (RTE_Initialized == 0) return;
    ForEachUnit(global, [global](UnitRecord* unit) {
        if (unit->direction == kDirectionWrite) FlushUnit(global, unit, 1);
    });
}

int32_t TruncateUnit(GlobalContext* global, UnitRecord* unit) {
    if (unit->permanentError || !FlushUnit(global, unit, 1)) {
        unit->permanentError = 1;
        return 0;
    }
    if (!unit->seekable) return 1;
    off64_t here = lseek64(unit->fd, 0, SEEK_CUR);
    if (here < 0) {
        unit->permanentError = 1;
        return 0;
    }
    // Only a file that goes on behind the position is cut: cutting one that does not
    // would still make some file systems write the file back when it is closed.
    struct stat64 status;
    if (fstat64(unit->fd, &status) == 0 && status.st_size <= here) return 1;
    // Devices that look seekable may refuse; that is no failure of the program's.
    if (ftruncate64(unit->fd, here) != 0 && errno != EINVAL) {
        unit->permanentError = 1;
        return 0;
    }
    return 1;
}
