// The read side of the unit buffer: the raw byte source under the record layer.
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "core/unit.h"
#include "transport/transport.h"

int32_t FillUnit(GlobalContext*, UnitRecord* unit) {
    if (unit->recordBuffered) {
        // The tail from bufferKept on is the record being read: it stays.
        uint32_t kept = unit->bufferKept;
        int32_t tail = unit->bufferFill - static_cast<int32_t>(kept);
        if (kept > 0 && tail > 0) std::memmove(unit->buffer, unit->buffer + kept, static_cast<size_t>(tail));
        unit->bufferFill = tail > 0 ? tail : 0;
        unit->bufferOffset = unit->bufferOffset > kept ? unit->bufferOffset - kept : 0;
        unit->cursor = unit->buffer + unit->bufferOffset;
    } else {
        unit->bufferFill = 0;
        unit->bufferOffset = 0;
        unit->cursor = unit->buffer;
    }
    ssize_t got;
    do {
        got = read(unit->fd, unit->buffer + unit->bufferFill, unit->bufferSize - static_cast<uint32_t>(unit->bufferFill));
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        unit->permanentError = 1;
        return -1;
    }
    unit->bufferFill += static_cast<int32_t>(got);
    unit->bufferKept = 0;
    return static_cast<int32_t>(got);
}

int32_t ReadUnit(GlobalContext* global, UnitRecord* unit, void* into, int32_t count) {
    if (unit->direction == kDirectionWrite && !FlushUnit(global, unit, 1)) {
        unit->permanentError = 1;
        return -1;
    }
    unit->direction = kDirectionRead;
    if (count == 0) return 0;
    if (unit->buffer == nullptr) {
        errno = EBADF;
        return -1;
    }
    char* to = static_cast<char*>(into);
    int32_t delivered = 0;
    while (delivered < count) {
        int32_t held = unit->bufferFill - static_cast<int32_t>(unit->bufferOffset);
        if (held > 0) {
            int32_t take = held < count - delivered ? held : count - delivered;
            std::memcpy(to + delivered, unit->cursor, static_cast<size_t>(take));
            unit->cursor += take;
            unit->bufferOffset += static_cast<uint32_t>(take);
            delivered += take;
            continue;
        }
        int32_t left = count - delivered;
        if (!unit->recordBuffered && static_cast<uint32_t>(left) >= unit->blockSize) {
            // Large requests bypass the buffer.
            ssize_t got = read(unit->fd, to + delivered, static_cast<size_t>(left));
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) {
                unit->permanentError = 1;
                return -1;
            }
            if (got == 0) break;
            delivered += static_cast<int32_t>(got);
            continue;
        }
        int32_t filled = FillUnit(global, unit);
        if (filled < 0) return -1;
        if (filled == 0) break;  // end of file is no error here
    }
    return delivered;
}
