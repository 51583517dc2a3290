// A window onto the unit's buffer for the record being written: an item layer that knows
// how long its field is asks for that many bytes, writes them in place and commits them,
// instead of building the field aside and handing it to IOWrite to copy.
#pragma once

#include <cstdint>

#include "core/context.h"
#include "core/unit.h"
#include "transport/transport.h"

// Where `count` bytes go straight into the unit's buffer: a unit that is writing, whose
// descriptor is where its position is, with that much room left. Null otherwise, and
// WriteUnit, which can flush, switch direction or reposition, must take them.
inline char* UnitReserve(UnitRecord* unit, int32_t count) {
    if (unit->direction != kDirectionWrite || unit->needsReposition || unit->buffer == nullptr ||
        count > unit->buffer + unit->bufferSize - unit->cursor) {
        return nullptr;
    }
    return unit->cursor;
}

inline void UnitCommit(UnitRecord* unit, int32_t count) {
    unit->cursor += count;
    int32_t used = static_cast<int32_t>(unit->cursor - unit->buffer);
    if (used > unit->bufferFill) unit->bufferFill = used;
    unit->filePosition += count;
}

// Where `count` bytes of the current record go, when the plain path applies: an external
// unit with no pending column and room in the record and in the buffer. Null otherwise;
// the caller then takes IOWrite, which handles every other case.
inline char* IOReserve(LocalContext* context, int32_t count) {
    UnitRecord* unit = context->unit;
    if (unit == nullptr || unit->pendingColumn >= 0 || count > context->recordMax - context->column) return nullptr;
    return UnitReserve(unit, count);
}

// The `count` bytes written at IOReserve's window become part of the record.
inline void IOCommit(LocalContext* context, int32_t count) {
    UnitCommit(context->unit, count);
    context->column += count;
    context->charsTransferred += count;
    if (context->column > context->highWater) context->highWater = context->column;
}
