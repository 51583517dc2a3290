// The read side of the record transport: the unit buffer's raw byte source (FillUnit,
// ReadUnit) and the record level above it (IOGetByte, IORead, the end of a read record).
//
// On the read side the buffer holds the file's bytes from filePosition - bufferOffset on,
// bufferFill of them. A record-buffered unit (a pipe or a terminal, which cannot seek)
// keeps the current record from bufferKept on, so that T and TL can go back in it.
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cerrno>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "convert/convert.h"
#include "core/unit.h"
#include "desc/array_walk.h"
#include "transport/transport.h"
#include "ufmt/byte_order.h"
#include "vrn90.h"

int32_t FillUnit(GlobalContext*, UnitRecord* unit) {
    if (unit->recordBuffered) {
        uint32_t kept = std::min(unit->bufferKept, static_cast<uint32_t>(unit->bufferFill));
        int32_t tail = unit->bufferFill - static_cast<int32_t>(kept);
        if (kept > 0 && tail > 0) std::memmove(unit->buffer, unit->buffer + kept, static_cast<size_t>(tail));
        unit->bufferFill = tail;
        unit->bufferOffset -= std::min(unit->bufferOffset, kept);
        unit->bufferKept = 0;
    } else {
        unit->bufferFill = 0;
        unit->bufferOffset = 0;
        unit->bufferKept = 0;
    }
    unit->cursor = unit->buffer + unit->bufferOffset;
    uint32_t room = unit->bufferSize - static_cast<uint32_t>(unit->bufferFill);
    if (room == 0) return 0;  // a record as long as the buffer: the record layer stops at maxRecord
    ssize_t got;
    do {
        got = read(unit->fd, unit->buffer + unit->bufferFill, room);
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        unit->permanentError = 1;
        return -1;
    }
    unit->bufferFill += static_cast<int32_t>(got);
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
            int32_t take = std::min(held, count - delivered);
            std::memcpy(to + delivered, unit->cursor, static_cast<size_t>(take));
            unit->cursor += take;
            unit->bufferOffset += static_cast<uint32_t>(take);
            delivered += take;
            continue;
        }
        int32_t left = count - delivered;
        if (!unit->recordBuffered && static_cast<uint32_t>(left) >= unit->blockSize) {
            // Large requests go straight into the caller's storage; the buffer is empty.
            unit->cursor = unit->buffer;
            unit->bufferOffset = 0;
            unit->bufferFill = 0;
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

namespace {

bool IsStream(const UnitRecord* unit) { return unit->access == VRN_KEY_STREAM; }
bool IsFormatted(const UnitRecord* unit) { return unit->form != VRN_KEY_UNFORMATTED; }

// A T, TL, TR or X position asked for and not reached yet is reached before a read.
bool ReachPendingColumnForRead(LocalContext* context) {
    UnitRecord* unit = context->unit;
    if (unit->pendingColumn < 0) return true;
    int32_t target = unit->pendingColumn;
    unit->pendingColumn = -1;
    if (IOSetRecordOffset(context, target)) return true;
    IORaisePermanentError(context, unit, errno);
    return false;
}

bool TurnToReading(LocalContext* context) {
    UnitRecord* unit = context->unit;
    if (unit->direction == kDirectionWrite && !FlushUnit(context->global, unit, 1)) {
        IORaisePermanentError(context, unit, errno);
        return false;
    }
    unit->direction = kDirectionRead;
    return true;
}

// Refills an empty buffer. 1 with bytes held, 0 at end of file, -1 after a raised error.
int32_t EnsureBytes(LocalContext* context) {
    UnitRecord* unit = context->unit;
    if (unit->bufferFill > static_cast<int32_t>(unit->bufferOffset)) return 1;
    int32_t filled = FillUnit(context->global, unit);
    if (filled > 0) return 1;
    if (filled < 0) {
        IORaisePermanentError(context, unit, errno);
        return -1;
    }
    return 0;
}

void NoteEndOfFile(LocalContext* context) {
    context->atEndOfFile = 1;
    if (context->column == 0 && !IsStream(context->unit)) context->unit->afterEndfile = 1;
}

void Consumed(LocalContext* context, int32_t count) {
    UnitRecord* unit = context->unit;
    unit->cursor += count;
    unit->bufferOffset += static_cast<uint32_t>(count);
    unit->filePosition += count;
    context->column += count;
    context->charsTransferred += count;
    context->highWater = std::max(context->highWater, context->column);
}

bool ShortRecordCounts(const LocalContext* context) {
    return context->global->options.optIostatEnd == VRN_KEY_2003STD && context->unit->access == VRN_KEY_SEQUENTIAL;
}

// Reads up to `count` bytes of a record whose end has not been seen, stopping at its
// newline. The result is the bytes delivered, or -1.
int32_t ReadUntilNewline(LocalContext* context, char* to, int32_t count) {
    UnitRecord* unit = context->unit;
    int32_t delivered = 0;
    while (delivered < count) {
        if (context->column >= context->recordMax) {
            context->recordOverflow = 1;
            break;
        }
        int32_t available = EnsureBytes(context);
        if (available < 0) return -1;
        if (available == 0) {
            // The end of the file ends the record; with nothing read it is the end of file.
            if (IsStream(unit) || (delivered == 0 && context->column == 0)) {
                context->atEndOfFile = 1;
            } else {
                context->recordOverflow = 1;
            }
            if (unit->access != VRN_KEY_DIRECT) context->recordLength = context->column;
            break;
        }
        int32_t held = unit->bufferFill - static_cast<int32_t>(unit->bufferOffset);
        int32_t limit = std::min({held, count - delivered, context->recordMax - context->column});
        const char* newline = static_cast<const char*>(std::memchr(unit->cursor, '\n', static_cast<size_t>(limit)));
        int32_t take = newline != nullptr ? static_cast<int32_t>(newline - unit->cursor) : limit;
        std::memcpy(to + delivered, unit->cursor, static_cast<size_t>(take));
        Consumed(context, take);
        delivered += take;
        if (newline != nullptr) {
            // The cursor stays on the newline, which ends the record and is not part of it.
            context->recordLength = context->column;
            context->recordOverflow = 1;
            if (ShortRecordCounts(context) && delivered < count) context->shortRecordSeen = 1;
            break;
        }
    }
    return delivered;
}

}  // namespace

int32_t IOGetByte(LocalContext* context) {
    if (context->unit == nullptr) {
        if (context->column >= context->recordLength) {
            if (!context->atEndOfFile) context->recordOverflow = 1;
            return -1;
        }
        if (context->atEndOfFile) return -1;
        unsigned char byte = static_cast<unsigned char>(context->internalRecord[context->column]);
        context->column++;
        context->charsTransferred++;
        context->highWater = std::max(context->highWater, context->column);
        return byte;
    }
    UnitRecord* unit = context->unit;
    // The path with no calls: a byte in the buffer, inside a record of unknown length.
    if (unit->pendingColumn < 0 && unit->direction == kDirectionRead && context->recordLength < 0 &&
        context->column < context->recordMax && unit->bufferFill > static_cast<int32_t>(unit->bufferOffset) &&
        *unit->cursor != '\n') {
        unsigned char byte = static_cast<unsigned char>(*unit->cursor);
        Consumed(context, 1);
        return byte;
    }
    if (!ReachPendingColumnForRead(context) || !TurnToReading(context)) return -1;
    int32_t limit = context->recordLength >= 0 ? context->recordLength : context->recordMax;
    if (context->column >= limit) {
        context->recordOverflow = 1;
        return -1;
    }
    int32_t available = EnsureBytes(context);
    if (available < 0) return -1;
    if (available == 0) {
        NoteEndOfFile(context);
        return -1;
    }
    unsigned char byte = static_cast<unsigned char>(*unit->cursor);
    if (context->recordLength < 0 && byte == '\n' && IsFormatted(unit)) {
        context->recordLength = context->column;
        context->recordOverflow = 1;
        return -1;
    }
    Consumed(context, 1);
    return byte;
}

int32_t IORead(LocalContext* context, void* into, int32_t count) {
    if (count <= 0) return 0;
    char* to = static_cast<char*>(into);
    if (context->unit == nullptr) {
        int32_t available = std::max(0, context->recordLength - context->column);
        int32_t take = count;
        if (context->atEndOfFile) {
            take = 0;
        } else if (count > available) {
            take = available;
            context->recordOverflow = 1;
            if (context->global->options.optIostatEnd == VRN_KEY_2003STD &&
                context->internalRecord + context->recordLength >= context->internalEnd) {
                context->atEndOfFile = 1;
            }
        }
        std::memmove(to, context->internalRecord + context->column, static_cast<size_t>(take));
        context->column += take;
        context->charsTransferred += take;
        context->highWater = std::max(context->highWater, context->column);
        if (take < count && context->padInput && !(context->atEndOfFile && !context->recordOverflow)) {
            std::memset(to + take, ' ', static_cast<size_t>(count - take));
            return count;
        }
        return take;
    }
    UnitRecord* unit = context->unit;
    if (!TurnToReading(context)) return -1;
    if (IsStream(unit) && !IsFormatted(unit)) {
        // Unformatted stream: no records, only bytes.
        int32_t got = ReadUnit(context->global, unit, to, count);
        if (got < 0) {
            IORaisePermanentError(context, unit, errno);
            return -1;
        }
        if (got < count) context->atEndOfFile = 1;
        unit->filePosition += got;
        context->column += got;
        context->charsTransferred += got;
        return got;
    }
    if (!ReachPendingColumnForRead(context)) return -1;
    int32_t delivered;
    if (context->recordLength < 0 && IsFormatted(unit) && unit->access != VRN_KEY_DIRECT) {
        delivered = ReadUntilNewline(context, to, count);
        if (delivered < 0) return -1;
    } else {
        int32_t left = std::max(0, (context->recordLength >= 0 ? context->recordLength : context->recordMax) - context->column);
        int32_t want = count;
        if (want > left) {
            want = left;
            context->recordOverflow = 1;
            if (ShortRecordCounts(context)) context->shortRecordSeen = 1;
        }
        delivered = ReadUnit(context->global, unit, to, want);
        if (delivered < 0) {
            IORaisePermanentError(context, unit, errno);
            return -1;
        }
        unit->filePosition += delivered;
        context->column += delivered;
        context->charsTransferred += delivered;
        context->highWater = std::max(context->highWater, context->column);
        if (delivered < want) {
            // The file ended. An unformatted record that it cuts is an end of file too: its
            // length said there was more.
            if (!IsFormatted(unit) || (delivered == 0 && context->column == 0)) {
                context->atEndOfFile = 1;
            } else {
                context->recordOverflow = 1;
            }
        }
    }
    if (context->atEndOfFile && delivered == 0 && context->column == 0 && !IsStream(unit)) {
        unit->afterEndfile = 1;
        context->recordOverflow = 0;
    }
    bool padAllowed = !(context->atEndOfFile && !context->recordOverflow) || (IsStream(unit) && IsFormatted(unit));
    if (delivered < count && context->padInput && padAllowed) {
        std::memset(to + delivered, ' ', static_cast<size_t>(count - delivered));
        return count;
    }
    return delivered;
}

namespace {

// The bytes of the current record that can be scanned in place: on an internal file the
// rest of the record, on an external one what the buffer holds of it. 0 sends the caller
// to IOGetByte, which refills, reaches a pending column or meets the record's end.
int32_t HeldRecordBytes(LocalContext* context, const char** window, int32_t want) {
    if (context->unit == nullptr) {
        if (context->atEndOfFile) return 0;
        *window = context->internalRecord + context->column;
        return std::min(want, context->recordLength - context->column);
    }
    UnitRecord* unit = context->unit;
    if (unit->pendingColumn >= 0 || unit->direction != kDirectionRead || context->recordLength >= 0) return 0;
    *window = unit->cursor;
    return std::min({want, unit->bufferFill - static_cast<int32_t>(unit->bufferOffset),
                     context->recordMax - context->column});
}

void ConsumedInternal(LocalContext* context, int32_t count) {
    context->column += count;
    context->charsTransferred += count;
    context->highWater = std::max(context->highWater, context->column);
}

// A last record with no newline is a whole record: its end is the end of the record, and
// the next READ meets the end of the file.
void EndOfFileEndsRecord(LocalContext* context) {
    if (context->unit == nullptr || !context->atEndOfFile || context->column == 0) return;
    context->atEndOfFile = 0;
    context->recordOverflow = 1;
    context->recordLength = context->column;
}

// Reads up to `width` bytes of the record into `into`, stopping behind `separator`, and
// shows each stored byte to `observe`. The result is the bytes stored; no padding.
template <class Observe>
int32_t ScanField(LocalContext* context, char* into, int32_t width, int separator, int32_t* separatorFound,
                  Observe&& observe) {
    *separatorFound = 0;
    int32_t stored = 0;
    const char stop = static_cast<char>(separator);
    // A newline ends an external record; internal records may hold one as data.
    const char recordEnd = context->unit != nullptr ? '\n' : stop;
    while (stored < width) {
        const char* window = nullptr;
        int32_t held = HeldRecordBytes(context, &window, width - stored);
        if (held > 0) {
            int32_t i = 0;
            for (; i < held; ++i) {
                char c = window[i];
                if (c == stop || c == recordEnd) break;
                into[stored + i] = c;
                observe(c, stored + i);
            }
            if (context->unit == nullptr) ConsumedInternal(context, i); else Consumed(context, i);
            stored += i;
            if (i == held) continue;
            if (window[i] == stop) {
                if (context->unit == nullptr) ConsumedInternal(context, 1); else Consumed(context, 1);
                *separatorFound = 1;
                return stored;
            }
            // The newline: the cursor stays on it.
            context->recordLength = context->column;
            context->recordOverflow = 1;
            break;
        }
        int byte = IOGetByte(context);
        if (byte < 0) break;
        if (byte == separator) {
            *separatorFound = 1;
            return stored;
        }
        into[stored] = static_cast<char>(byte);
        observe(static_cast<char>(byte), stored);
        ++stored;
    }
    EndOfFileEndsRecord(context);
    return stored;
}

}  // namespace

const char* IOFieldInPlace(LocalContext* context, int32_t width) {
    const char* window = nullptr;
    return HeldRecordBytes(context, &window, width) == width ? window : nullptr;
}

int32_t IORecordWindow(LocalContext* context, const char** window) {
    return HeldRecordBytes(context, window, INT32_MAX);
}

void IOConsumeInPlace(LocalContext* context, int32_t width) {
    if (context->unit == nullptr) ConsumedInternal(context, width); else Consumed(context, width);
}

int32_t IOReadAndScan(LocalContext* context, char* into, int32_t width, int separator, int32_t* separatorFound) {
    int32_t stored = ScanField(context, into, width, separator, separatorFound, [](char, int32_t) {});
    if (stored < width && !*separatorFound && IOShortFieldPadded(context)) {
        std::memset(into + stored, ' ', static_cast<size_t>(width - stored));
        return width;
    }
    return stored;
}

int32_t IOReadFieldBytes(LocalContext* context, char* into, int32_t width, int separator, int32_t* separatorFound) {
    return ScanField(context, into, width, separator, separatorFound, [](char, int32_t) {});
}

static_assert(sizeof(RealFieldScan::entered) / sizeof(int32_t) == kRealScannerStates);

namespace {

// The scanner's transitions as bytes, rows of 32 for a shift, and for each state whether
// every digit leads back to it: the long digit runs of a mantissa then cost no steps.
struct CompactScanner {
    uint8_t next[kRealScannerStates][32];
    bool digitsStay[kRealScannerStates];
    CompactScanner() : next{}, digitsStay{} {
        for (int state = 0; state < kRealScannerStates; ++state) {
            for (int c = 0; c < kScannerClasses; ++c) next[state][c] = static_cast<uint8_t>(_rfrscan_transition[state][c][0]);
            digitsStay[state] = true;
            for (char digit = '0'; digit <= '9'; ++digit) {
                if (next[state][_RFRCharClass[static_cast<unsigned char>(digit)]] != state) digitsStay[state] = false;
            }
        }
    }
};

const CompactScanner& Scanner() {
    static const CompactScanner scanner;
    return scanner;
}

}  // namespace

namespace {

void RunScanner(const char* text, int32_t length, int32_t decimalComma, RealFieldScan* scan) {
    const CompactScanner& scanner = Scanner();
    const uint32_t start = decimalComma ? kScannerStartComma : kScannerStart;
    uint32_t state = start;
    for (int s : {2, 8, 10, 14, 15, 43}) scan->entered[s] = -1;
    scan->entered[state] = 0;
    int32_t at = 0;
    while (at < length && text[at] == ' ') ++at;  // the start state keeps its blanks
    scan->first = at < length ? at : -1;
    for (; at < length; ++at) {
        uint32_t next = scanner.next[state][_RFRCharClass[static_cast<unsigned char>(text[at])]];
        if (next != state) {
            scan->entered[next] = at;
            state = next;
        }
        if (scanner.digitsStay[state]) {
            while (at + 1 < length && static_cast<unsigned char>(text[at + 1] - '0') <= 9u) ++at;
        }
    }
    scan->state = static_cast<int32_t>(state);
}

}  // namespace

int32_t IOReadRealAndScan(LocalContext* context, char* into, int32_t width, int separator, int32_t* separatorFound,
                          int32_t decimalComma, RealFieldScan* scan) {
    // A whole field in the buffer is scanned where it stands. A separator or a newline in
    // it would kill the scanner (neither is part of any number), so a live last state
    // shows that the field is all of one record.
    if (const char* field = IOFieldInPlace(context, width); field != nullptr) {
        RunScanner(field, width, decimalComma, scan);
        if (scan->state != 0) {
            std::memcpy(into, field, static_cast<size_t>(width));
            IOConsumeInPlace(context, width);
            *separatorFound = 0;
            return width;
        }
    }
    int32_t stored = ScanField(context, into, width, separator, separatorFound, [](char, int32_t) {});
    RunScanner(into, stored, decimalComma, scan);
    return stored;
}

bool IOShortFieldPadded(const LocalContext* context) { return context->padInput && context->recordOverflow; }

int32_t IOFindRemainingLength(LocalContext* context) {
    if (context->unit == nullptr) return std::max(0, context->recordLength - context->column);
    if (context->recordLength < 0) {
        // Find the record's end: walk to it, which sets recordLength, and come back.
        int32_t from = context->column;
        uint32_t overflow = context->recordOverflow;
        if (!IOSetRecordOffset(context, context->recordMax)) return 0;
        int32_t end = context->column;
        IOSetRecordOffset(context, from);
        context->recordOverflow = overflow;
        return std::max(0, end - from);
    }
    return std::max(0, context->recordLength - context->column);
}

void IORaiseEndOfFile(LocalContext* context) {
    context->itemsStopped = 1;
    if (context->unit == nullptr) {
        bool standard = context->global->options.optIostatEnd == VRN_KEY_2003STD;
        ErrorHandler(kClassSevere, kKindEndOfFile, 2, standard ? -1 : -2, 0u);
        return;
    }
    ErrorHandler(kClassSevere, kKindEndOfFile, 1, -1, ArgText(1), UnitNameForMessages(context->unit), 0u);
}

namespace {

// Skips the rest of a formatted record and its newline. 0 when the record was the end of
// the file: nothing of it was there.
int32_t SkipFormattedRecord(LocalContext* context) {
    UnitRecord* unit = context->unit;
    if (context->recordLength >= 0 && context->column != context->recordLength &&
        !IOSetRecordOffset(context, context->recordLength)) {
        return -1;
    }
    bool readSomething = context->column > 0;
    for (;;) {
        int32_t available = EnsureBytes(context);
        if (available < 0) return -1;
        if (available == 0) {
            if (readSomething || context->recordLength > 0) return 1;  // a last record with no newline
            NoteEndOfFile(context);
            return 0;
        }
        int32_t held = unit->bufferFill - static_cast<int32_t>(unit->bufferOffset);
        const char* newline = static_cast<const char*>(std::memchr(unit->cursor, '\n', static_cast<size_t>(held)));
        int32_t take = newline != nullptr ? static_cast<int32_t>(newline - unit->cursor) + 1 : held;
        unit->cursor += take;
        unit->bufferOffset += static_cast<uint32_t>(take);
        unit->filePosition += take;
        if (take > 0) readSomething = true;
        if (newline != nullptr) return 1;
    }
}

}  // namespace

// The end of a record on the read side. 1, or 0 at the end of the file (atEndOfFile set)
// or after a raised error.
int32_t TerminateReadRecord(LocalContext* context) {
    if (context->unit == nullptr) {
        if (context->atEndOfFile) return 0;
        if (context->internalIterator != nullptr) {
            context->internalRecord = NCNextElement(context->internalIterator);
            if (context->internalRecord == nullptr) context->atEndOfFile = 1;
        } else {
            context->internalRecord += context->recordLength;
            if (context->internalRecord >= context->internalEnd) context->atEndOfFile = 1;
        }
        return 1;
    }
    UnitRecord* unit = context->unit;
    unit->pendingColumn = -1;
    if (!TurnToReading(context)) return 0;
    int32_t result = 1;
    if (unit->access == VRN_KEY_DIRECT) {
        unit->filePosition = context->recordNumber * static_cast<int64_t>(unit->recl);
        unit->needsReposition = 1;  // the rest of the record was not read
    } else if (IsFormatted(unit)) {
        if (context->atEndOfFile) {
            context->recordLength = -1;  // nothing of this record is left for the next statement
            return 0;
        }
        result = SkipFormattedRecord(context);
        if (result < 0) return 0;
        context->recordLength = -1;
    } else if (!IsStream(unit)) {
        // An unformatted record: the rest of the payload, then the trailing length tag.
        int32_t end = context->recordLength >= 0 ? context->recordLength : context->column;
        if (end != context->column && !IOSetRecordOffset(context, end)) {
            IORaisePermanentError(context, unit, errno);
            return 0;
        }
        uint8_t tag[16];
        int32_t width = static_cast<int32_t>(unit->recordOverhead);
        int32_t got = ReadUnit(context->global, unit, tag, width);
        if (got < 0) {
            IORaisePermanentError(context, unit, errno);
            return 0;
        }
        unit->filePosition += got;
        context->recordLength = -1;
        // A trailing tag that is cut or differs from the leading one shows a damaged file.
        // A statement that has met an error already is not told twice.
        if (!context->itemsStopped &&
            (got != width || DecodeLengthTag(tag, unit->recordOverhead, unit->byteSwap != 0) != context->recordTag)) {
            ErrorHandler(kClassConversion, kKindError, 3, 3, ArgText(1), UnitNameForMessages(unit), 0u);
            context->itemsStopped = 1;
            result = 0;
        }
    }
    if (result == 1) unit->nextRecord += 1;
    unit->bufferKept = unit->bufferOffset;  // the next record starts here
    return result;
}

void IOUngetByte(LocalContext* context) {
    context->column--;
    context->charsTransferred--;
    if (context->highWater > context->column) context->highWater--;
    if (UnitRecord* unit = context->unit) {
        unit->cursor--;
        unit->bufferOffset--;
        unit->filePosition--;
    }
}
