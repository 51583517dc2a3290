// The frame of an unformatted record: its length tags, the end of the statement, and the
// reports of a short item transfer.
#include <cerrno>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/unit.h"
#include "format/format_control.h"
#include "transport/transport.h"
#include "ufmt/byte_order.h"
#include "ufmt/unformatted.h"
#include "vrn90.h"

namespace {

bool Writing(const LocalContext* context) { return ((context->statementFlags >> 8) & 0xFFu) == VRN_DIRECTION_WRITE; }
uint32_t StatementAccess(const LocalContext* context) { return (context->statementFlags >> 16) & 0x7Fu; }

bool OnSequentialUnit(const LocalContext* context) {
    return !context->dtioChild && context->unit != nullptr && context->unit->access == VRN_KEY_SEQUENTIAL;
}

const char* FileName(const LocalContext* context) {
    return context->unit != nullptr ? UnitNameForMessages(context->unit) : "(unknown)";
}

bool WriteTag(LocalContext* context, int64_t value) {
    UnitRecord* unit = context->unit;
    uint8_t tag[16];
    EncodeLengthTag(value, unit->recordOverhead, unit->byteSwap != 0, tag);
    int32_t width = static_cast<int32_t>(unit->recordOverhead);
    if (WriteUnit(context->global, unit, tag, width) == width) return true;
    IORaisePermanentError(context, unit, errno);
    context->itemsStopped = 1;
    return false;
}

void BeginWriteRecord(LocalContext* context, const int64_t* knownLength) {
    context->recordLength = knownLength != nullptr ? static_cast<int32_t>(*knownLength) : -1;
    WriteTag(context, context->recordLength);
}

}  // namespace

void TakeLeadingTag(LocalContext* context, const uint8_t* tag) {
    UnitRecord* unit = context->unit;
    context->recordTag = DecodeLengthTag(tag, unit->recordOverhead, unit->byteSwap != 0);
    if (context->recordTag < 0 || context->recordTag > INT32_MAX) {
        // No record has such a length; -1 stands in a record whose writing was cut off.
        context->recordTag = -1;
        context->recordLength = 0;
        ErrorHandler(kClassConversion, kKindError, 3, 3, ArgText(1), FileName(context), 0u);
        context->itemsStopped = 1;
        return;
    }
    int32_t length = static_cast<int32_t>(context->recordTag);
    context->recordLength = unit->recl >= 0 && unit->recl < length ? unit->recl : length;
}

namespace {

void BeginReadRecord(LocalContext* context) {
    UnitRecord* unit = context->unit;
    uint8_t tag[16];
    int32_t width = static_cast<int32_t>(unit->recordOverhead);
    int32_t got = ReadUnit(context->global, unit, tag, width);
    if (got < 0) {
        IORaisePermanentError(context, unit, errno);
        context->itemsStopped = 1;
        return;
    }
    // The logical position follows the bytes that came: after a cut tag it must still
    // be where the file ends, for a BACKSPACE and a WRITE that may follow.
    unit->filePosition += got;
    if (got < width) {
        context->atEndOfFile = 1;
        unit->afterEndfile = 1;
        IORaiseEndOfFile(context);
        return;
    }
    TakeLeadingTag(context, tag);
}

// The leading tag was written before the length was known: go back and put it right.
// On a unit that cannot seek back, the whole record is still in its buffer.
bool RewriteLeadingTag(LocalContext* context) {
    UnitRecord* unit = context->unit;
    context->recordLength = context->charsTransferred;
    if (!IOSetRecordOffset(context, -static_cast<int32_t>(unit->recordOverhead))) {
        IORaisePermanentError(context, unit, errno);
        return false;
    }
    if (!WriteTag(context, context->recordLength)) return false;
    context->column = 0;  // the tag is behind; the record's end is reached from its start
    return true;
}

}  // namespace

int32_t BeginIOUfmt(LocalContext* context, void* kindArgument) {
    context->endRoutine = EndIOUfmt;
    context->readItem = IORead;
    context->writeItem = IOWrite;
    context->recordTag = -1;
    if (!OnSequentialUnit(context) || context->itemsStopped) return context->status;
    if (Writing(context)) {
        BeginWriteRecord(context, static_cast<const int64_t*>(kindArgument));
    } else {
        BeginReadRecord(context);
    }
    return context->status;
}

namespace {

int32_t CountLength(LocalContext* context, const void*, int32_t count) {
    context->ioLength += count;
    return count;
}

int32_t ReadNothing(LocalContext*, void*, int32_t) { return 0; }

int32_t EndIOLength(LocalContext* context) {
    if (context->ioLengthWidth == 8) {
        std::memcpy(context->ioLengthAddress, &context->ioLength, sizeof(int64_t));
    } else {
        auto length = static_cast<int32_t>(context->ioLength);
        std::memcpy(context->ioLengthAddress, &length, sizeof length);
    }
    return context->status;
}

}  // namespace

void BeginIOLength(LocalContext* context, void* variable, int32_t width) {
    context->ioLengthAddress = variable;
    context->ioLengthWidth = width;
    context->ioLength = 0;
    context->writeItem = CountLength;
    context->readItem = ReadNothing;
    context->endRoutine = variable != nullptr ? EndIOLength : nullptr;
    context->unit = nullptr;
    context->recordTag = -1;
}

bool CountsIOLength(const LocalContext* context) { return context->writeItem == CountLength; }

int32_t EndIOUfmt(LocalContext* context) {
    if (context->numAddress != nullptr) *context->numAddress = context->charsTransferred - context->charsBase;
    if (context->dtioChild) return context->status;
    UnitRecord* unit = context->unit;
    if (unit == nullptr || unit->permanentError) return context->status;
    if (unit->access != VRN_KEY_SEQUENTIAL) {
        IOTerminateRecord(context);
        return context->status;
    }
    if (!Writing(context)) {
        // At the end of the file, or after a tag no record has, there is nothing to skip.
        if (context->atEndOfFile || context->recordTag < 0) {
            context->recordLength = -1;
            context->column = 0;
            context->highWater = 0;
            return context->status;
        }
        context->recordLength = static_cast<int32_t>(context->recordTag);
        IOTerminateRecord(context);
        return context->status;
    }
    if (context->recordLength < 0 || context->recordLength != context->charsTransferred) {
        if (!RewriteLeadingTag(context)) return context->status;
    }
    IOTerminateRecord(context);
    return context->status;
}

void UfmtWriteError(LocalContext* context) {
    context->itemsStopped = 1;
    if (context->unit != nullptr && context->unit->permanentError) return;
    // With NUM= the program counts what went; an overrun is no error then.
    if (context->numAddress == nullptr) {
        ErrorHandler(kClassConversion, kKindError, 3, 3, ArgText(1), FileName(context), 0u);
    }
}

void UfmtReadError(LocalContext* context) {
    context->itemsStopped = 1;
    if (context->unit != nullptr && context->unit->permanentError) return;
    if (context->atEndOfFile && StatementAccess(context) == VRN_ACCESS_DIRECT) {
        if (context->column > 0) {
            ErrorHandler(kClassSevere, kKindError, 122, 122, ArgText(1), FileName(context), 0u);
        } else if (context->options & VRN_OPTION_END) {
            ErrorHandler(kClassSevere, kKindEndOfFile, 1, -1, ArgText(1), FileName(context), 0u);
        } else {
            ErrorHandler(kClassSevere, kKindError, 1, 1, ArgText(1), FileName(context), 0u);
        }
        return;
    }
    if (context->atEndOfFile) {
        // An asynchronous statement has put the unit's position at the end already.
        if (StatementAccess(context) == VRN_ACCESS_STREAM && context->aioRequest == nullptr) {
            IOSeekToEndOfFile(context);
        } else {
            context->column = 0;
            context->leftLimit = 0;
            context->highWater = 0;
            context->recordLength = -1;
        }
        ErrorHandler(kClassSevere, kKindEndOfFile, 1, -1, ArgText(1), FileName(context), 0u);
        return;
    }
    if (context->recordOverflow && context->numAddress == nullptr) {
        if (context->shortRecordSeen) {
            ErrorHandler(kClassConversion, kKindEndOfFile, 1, -1, ArgText(1), FileName(context), 0u);
        } else {
            ErrorHandler(kClassConversion, kKindError, 3, 3, ArgText(1), FileName(context), 0u);
        }
    }
}
