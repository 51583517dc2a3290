// Asynchronous unformatted transfers and the waits that complete them.
//
// An asynchronous READ or WRITE becomes a request: the pieces of its record, each one
// aio_read64 or aio_write64 at an explicit file offset, queued while the statement runs
// and owned by the request until a wait retires it. The unit's descriptor offset and
// buffer are not used while the unit is in asynchronous mode: the logical position is
// aioEndPosition, and leaving the mode puts the descriptor there.
//
// Items that may move asynchronously (bit 29 of the type word) are transferred straight
// from or into the program's storage, which stays the program's until the wait. Every
// other item, the length tags and the blank fill of a short direct record are copied
// into memory the request owns, or read at once.
//
// A failure of a request is reported once: by the WAIT, INQUIRE(PENDING=) or statement
// that waits for it. Nothing queued is ever dropped: CLOSE and every ending of the
// program wait for the unit first.
#pragma once

#include <aio.h>

#include <cstdint>

#include "core/lists.h"

struct KeywordEntry;

struct GlobalContext;
struct LocalContext;
struct UnitRecord;
struct KeywordList;
struct AIORequest;
struct AIOOperation;

// One aio call of a request. Also the 224-byte request that a complex item whose parts
// lie apart gets: its parts are gathered into (or scattered from) `data`.
struct AIOOperation {
    ListNode link;               // in the request's list, in the order of queueing
    AIORequest* request;
    uint32_t flags;              // kOperation... below
    uint8_t* ownedBuffer;        // copied bytes, when they outgrew `data`; freed with the operation
    uint32_t capacity;           // of ownedBuffer
    uint8_t* scatterTo;          // a split complex read: the item, its length and part kind
    int32_t scatterLength;
    int32_t scatterKind;
    int32_t error;               // errno of the transfer, 0
    int64_t transferred;         // bytes moved when it is complete
    struct aiocb64 control;
    alignas(8) uint8_t data[32];
};

#if defined(__powerpc__) && !defined(__powerpc64__)
static_assert(sizeof(AIOOperation) == 224, "the request of a split complex item is 224 bytes on the target");
#endif

constexpr uint32_t kOperationRead = 1u << 0;
constexpr uint32_t kOperationQueued = 1u << 1;    // handed to aio_read64 or aio_write64
constexpr uint32_t kOperationComplete = 1u << 2;

// The request of one asynchronous statement. The first fields make it a node of the
// global table, keyed by its ID.
struct AIORequest {
    ListNode link;
    int32_t key;                 // the ID, above 0
    ListNode unitLink;           // in the unit's list, oldest first; unlinked: both null
    UnitRecord* unit;
    uint32_t direction;          // kDirectionRead or kDirectionWrite
    uint32_t access;             // the unit's ACCESS keyword
    int64_t recordStart;         // the statement's first byte: a direct record, a leading tag
    int64_t payloadStart;        // where its items begin
    ListHeader operations;       // AIOOperation, in the order of queueing
    AIOOperation* gathering;     // copied bytes not queued yet
};

// What a retired request left to report.
enum class AIOOutcome : uint32_t { kDone, kFailed, kEndOfFile, kEndInsideRecord };

// ---- Requests (async_requests.cpp) ----

// The request of an asynchronous statement on `unit`, with a fresh ID, entered in the
// global table and the unit's scope; null after the error has been reported.
AIORequest* GetAIOHandleAndScope(GlobalContext* global, LocalContext* context, UnitRecord* unit);
// Gives a request back: with `waitFirst` every queued transfer is completed before its
// memory goes. Null is allowed.
void FreeAIORequest(GlobalContext* global, AIORequest* request, int32_t waitFirst);
int32_t AIORequestId(const AIORequest* request);
AIORequest* FindAIORequest(GlobalContext* global, int32_t id);
UnitRecord* AIORequestUnit(const AIORequest* request);
void AttachAIORequestToUnit(AIORequest* request, UnitRecord* unit, uint32_t direction);

// A piece of the record: `count` bytes at `offset`. With `inPlace` the bytes are moved
// where they stand; otherwise written ones are copied first, and read ones are read now.
// The result is the bytes accepted, -1 when memory ran out (reported by the caller).
int32_t QueueWrite(AIORequest* request, int64_t offset, const void* bytes, int32_t count, bool inPlace);
int32_t QueueRead(AIORequest* request, int64_t offset, void* into, int32_t count, bool inPlace);
// An operation of its own for a complex item whose parts lie apart; null when memory ran out.
// `count` bytes of `byte` at `offset`, copied.
int32_t QueueFill(AIORequest* request, int64_t offset, int byte, int32_t count);
AIOOperation* NewSplitOperation(AIORequest* request);
void QueueSplitWrite(AIORequest* request, AIOOperation* operation, int64_t offset, int32_t count);
void QueueSplitRead(AIORequest* request, AIOOperation* operation, int64_t offset, uint8_t* item, int32_t length,
                    int32_t kind);
// Queues what the statement left gathered. Called at the end of the statement.
void SubmitAIORequest(AIORequest* request);

// Whether every transfer of the request has finished; nothing waits.
bool AIORequestComplete(AIORequest* request);
// Completes every transfer of the request and says how it went; `endOffset` receives
// where the bytes read stopped when the outcome is an end of file.
AIOOutcome CompleteAIORequest(AIORequest* request, int32_t* error, int64_t* endOffset);
// The pending requests of a unit: complete all of them, retire them, and report the
// first failure through the statement of `context` when `report` is set. 0 when that
// report stopped the statement.
int32_t AIOWaitUnit(GlobalContext* global, LocalContext* context, UnitRecord* unit, int32_t report);
// The same for one request.
int32_t AIOWaitRequest(GlobalContext* global, LocalContext* context, AIORequest* request);
bool AIOUnitComplete(UnitRecord* unit);
// Frees every request left (the process is ending, units are closed).
void FreeAllAIORequests(GlobalContext* global);

// ---- The statement (async_statement.cpp) ----

// The preparation of a statement on a unit in asynchronous mode, or of an asynchronous one.
int32_t IOPrep(LocalContext* context, UnitRecord** unitAddress, uint32_t direction, bool asynchronous,
               uint32_t access, bool internal);
// Puts the descriptor at the position the requests reached and ends asynchronous mode.
int32_t LeaveAIOMode(LocalContext* context, UnitRecord* unit);
// Fills the rest of a direct record written short with blanks.
int32_t AIOFillDirectRecord(LocalContext* context, UnitRecord* unit);
int32_t BeginAIOUfmt(LocalContext* context, void* kindArgument);
int32_t EndAIOUfmt(LocalContext* context);
// Stores the ID of the statement's request, or 0, in its ID= variable.
void StoreAIORequestId(LocalContext* context, int32_t id);
// A complex item whose parts lie apart, in an asynchronous statement.
void AIOWriteSplitComplex(LocalContext* context, const uint8_t* item, int32_t length, int32_t kind);
void AIOReadSplitComplex(LocalContext* context, uint8_t* item, int32_t length, int32_t kind);

// ---- WAIT and INQUIRE (wait_statement.cpp) ----

// The request an ID= entry names (VRN_KEY_ID, or VRN_TAG_ID8 with the value's halves in a
// and b). No request has an ID outside 32 bits: such a value names none, -1.
int32_t RequestIdOf(const KeywordEntry& entry);
int32_t WaitCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords);
// PENDING= of INQUIRE: true while a transfer of the request `id` (or, with `id` 0 and no
// ID= given, of the unit) runs. A finished one is waited for, as a WAIT would, and its
// failure reported. false when that report stopped the statement.
bool AIOInquirePending(GlobalContext* global, LocalContext* context, UnitRecord* unit, bool idGiven, int32_t id,
                       bool* pending);
