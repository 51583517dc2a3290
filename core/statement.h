// The I/O statement frame: what is common to every data transfer statement, and the
// dispatch to the Begin routine of its kind.
#pragma once

#include <cstdint>

struct LocalContext;
struct UnitRecord;

// What the packed statement flags say.
struct StatementShape {
    uint32_t kind;       // VRN_KIND_...
    uint32_t direction;  // VRN_DIRECTION_...
    uint32_t access;     // VRN_ACCESS_...
    bool internal;
    bool asynchronous;
};

StatementShape DecodeStatementFlags(uint32_t statementFlags);

// The statement's ROUND= mode as a conversion routine takes it: its keyword number, or
// PROCESSOR_DEFINED when the mode holds none.
int32_t StatementRoundKey(const LocalContext* context);

// A Begin routine sets endRoutine (or leaves it null) and returns status.
using BeginRoutine = int32_t (*)(LocalContext* context, void* kindArgument);
constexpr int kDispatchEntries = 16;
// Indexed by kind * 4 + asynchronous * 2 + direction; the routines of each kind of
// transfer fill their entries. A null entry means nothing is done between the items.
extern const BeginRoutine DispatchBeginIO[kDispatchEntries];

int32_t PrepareUnit(LocalContext* context, UnitRecord** unit, uint32_t direction, bool asynchronous, uint32_t access,
                    bool internal);
int32_t AllowIOAfterEOF(LocalContext* context, UnitRecord* unit, uint32_t direction);

struct KeywordList;
struct KeywordEntry;
// What the error reporter needs before anything can go wrong: IOMSG=, MSGLINE, MSGFILE and
// a 64-bit IOSTAT=.
void ReadMessageSpecifiers(LocalContext* context, const KeywordList* keywords);
// One entry of that reading: false when the entry is no message specifier. For a
// statement that reads its list in one pass of its own.
bool TakeMessageSpecifier(LocalContext* context, const KeywordEntry& entry);
// Stores IOSTAT= and, when there is a message, IOMSG= (blank-padded).
void DeliverIostatAndIomsg(LocalContext* context);

// Pushes the context above a busy one: it shares the message and scan buffers of the one
// beneath and starts with no IOSTAT= or IOMSG= of its own.
LocalContext* PushLocalContext(LocalContext* beneath);
