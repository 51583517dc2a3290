// A window onto the unit's buffer for the record being written: an item layer that knows
// how long its field is asks for that many bytes, writes them in place and commits them,
// instead of building the field aside and handing it to IOWrite to copy.
#pragma once

#include <cstdint>

#include "core/context.h"
#include "core/unit.h"
#include "transport/transport.h"

// Where `count` bytes of the current record go, when the plain path applies: a block-
// buffered unit that is writing, no pending column, and room in both the record and the
// buffer. Null otherwise; the caller then takes IOWrite, which handles every other case.
inline char* IOReserve(LocalContext* context, int32_t count) {
    UnitRecord* unit = context->unit;
    if (unit == nullptr || unit->pendingColumn >= 0 || unit->direction != kDirectionWrite || unit->recordBuffered ||
        unit->needsReposition || unit->buffer == nullptr || count > context->recordMax - context->column ||
        count > unit->buffer + unit->bufferSize - unit->cursor) {
        return nullptr;
    }
    return unit->cursor;
}

// The `count` bytes written at IOReserve's window become part of the record.
inline void IOCommit(LocalContext* context, int32_t count) {
    UnitRecord* unit = context->unit;
    unit->cursor += count;
    int32_t used = static_cast<int32_t>(unit->cursor - unit->buffer);
    if (used > unit->bufferFill) unit->bufferFill = used;
    unit->filePosition += count;
    context->column += count;
    context->charsTransferred += count;
    if (context->column > context->highWater) context->highWater = context->column;
}
