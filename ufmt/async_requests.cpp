// Requests of asynchronous statements: their operations, queued with aio_read64 and
// aio_write64, completed with aio_suspend64, and retired by the waits.
//
// The system runs the operations of one descriptor one after another in the order they
// were queued, so two requests that write the same bytes leave the later one's in the
// file, as synchronous statements would. An operation the system refuses to queue is
// done at once, after everything queued on its unit before it.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/unit.h"
#include "ufmt/async_io.h"
#include "vrn90.h"

namespace {

// Below this an item is copied: an aio call costs more than copying a page.
constexpr int32_t kInPlaceMinimum = 4096;
// Copied bytes go out in pieces of at most this, so that the first ones are on their way
// while the statement goes on.
constexpr uint32_t kGatherLimit = 1u << 22;
// An item moved in place goes in pieces of this: the kernel's copy of each then stays in
// the cache, which makes a large transfer several times faster than one call for all.
constexpr int32_t kLargePiece = 1 << 20;

// The scope of a unit: the requests it has outstanding. It exists from the first request
// of the unit to the retirement of the last.
struct AIOScope {
    ListNode link;
    int32_t key;  // the unit number
    uint32_t requests;
};

constexpr uint32_t kCountQueued = 0;   // aioScopeCounters: requests ever made,
constexpr uint32_t kCountRetired = 1;  // and requests retired

AIORequest* RequestOfUnitLink(ListNode* node) {
    return reinterpret_cast<AIORequest*>(reinterpret_cast<char*>(node) - offsetof(AIORequest, unitLink));
}

AIOOperation* OperationOf(ListNode* node) { return reinterpret_cast<AIOOperation*>(node); }

template <typename Visit>
void ForEachOperation(AIORequest* request, Visit visit) {
    for (ListNode* node = request->operations.first; node->next != nullptr;) {
        ListNode* next = node->next;
        visit(OperationOf(node));
        node = next;
    }
}

template <typename Visit>
void ForEachRequestOfUnit(UnitRecord* unit, Visit visit) {
    for (ListNode* node = unit->aioList.first; node->next != nullptr;) {
        ListNode* next = node->next;
        visit(RequestOfUnitLink(node));
        node = next;
    }
}

int32_t NextFreeId(GlobalContext* global) {
    for (;;) {
        int32_t id = static_cast<int32_t>(global->nextAioId);
        global->nextAioId = global->nextAioId >= INT32_MAX ? 1 : global->nextAioId + 1;
        ListNode* predecessor;
        if (id > 0 && FindHashNode(global->aioRequests, kHashBuckets, id, &predecessor) == nullptr) return id;
    }
}

AIOScope* EnterScope(GlobalContext* global, UnitRecord* unit) {
    ListNode* predecessor;
    auto* scope = reinterpret_cast<AIOScope*>(FindHashNode(global->aioScopes, kHashBuckets, unit->unitNumber,
                                                           &predecessor));
    if (scope == nullptr) {
        scope = static_cast<AIOScope*>(std::calloc(1, sizeof(AIOScope)));
        if (scope == nullptr) return nullptr;
        scope->key = unit->unitNumber;
        ListInsertAfter(predecessor, &scope->link);
    }
    scope->requests++;
    return scope;
}

void LeaveScope(GlobalContext* global, int32_t unitNumber) {
    ListNode* predecessor;
    auto* scope = reinterpret_cast<AIOScope*>(FindHashNode(global->aioScopes, kHashBuckets, unitNumber, &predecessor));
    if (scope == nullptr) return;
    if (--scope->requests == 0) {
        ListUnlink(&scope->link);
        std::free(scope);
    }
}

AIOOperation* NewOperation(AIORequest* request, uint32_t flags, int64_t offset) {
    auto* operation = static_cast<AIOOperation*>(std::calloc(1, sizeof(AIOOperation)));
    if (operation == nullptr) return nullptr;
    operation->request = request;
    operation->flags = flags;
    operation->control.aio_offset = offset;
    operation->control.aio_sigevent.sigev_notify = SIGEV_NONE;
    ListAddTail(&request->operations, &operation->link);
    return operation;
}

void FreeOperation(AIOOperation* operation) {
    ListUnlink(&operation->link);
    std::free(operation->ownedBuffer);
    std::free(operation);
}

bool Reading(const AIOOperation* operation) { return (operation->flags & kOperationRead) != 0; }

// Moves what is left of the operation with pread or pwrite: after the system gave up on
// part of it, so that the reason is known; or instead of the system.
void ContinueNow(AIOOperation* operation) {
    aiocb64& control = operation->control;
    auto* bytes = static_cast<uint8_t*>(const_cast<void*>(control.aio_buf));
    while (static_cast<size_t>(operation->transferred) < control.aio_nbytes) {
        size_t left = control.aio_nbytes - static_cast<size_t>(operation->transferred);
        off64_t at = control.aio_offset + operation->transferred;
        ssize_t moved = Reading(operation) ? pread64(control.aio_fildes, bytes + operation->transferred, left, at)
                                           : pwrite64(control.aio_fildes, bytes + operation->transferred, left, at);
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) {
            operation->error = errno;
            return;
        }
        if (moved == 0) {
            // A read that finds nothing has met the end of the file; a write that cannot
            // place a byte has failed without saying why.
            if (!Reading(operation)) operation->error = EIO;
            return;
        }
        operation->transferred += moved;
    }
}

// The parts of a complex item that lie apart go where they belong once they are read.
void Scatter(AIOOperation* operation) {
    if (operation->scatterTo == nullptr || operation->error != 0) return;
    int32_t kind = operation->scatterKind;
    int32_t got = static_cast<int32_t>(operation->transferred);
    std::memcpy(operation->scatterTo, operation->data, static_cast<size_t>(std::min(got, kind)));
    if (got > kind) {
        std::memcpy(operation->scatterTo + operation->scatterLength / 2, operation->data + kind,
                    static_cast<size_t>(got - kind));
    }
}

void Complete(AIOOperation* operation) {
    if (operation->flags & kOperationComplete) return;
    if (operation->flags & kOperationQueued) {
        const aiocb64* list[1] = {&operation->control};
        int status;
        while ((status = aio_error64(&operation->control)) == EINPROGRESS) aio_suspend64(list, 1, nullptr);
        ssize_t result = aio_return64(&operation->control);
        if (status != 0) {
            operation->error = status;
        } else {
            operation->transferred = result;
        }
    }
    if (operation->error == 0 && static_cast<size_t>(operation->transferred) < operation->control.aio_nbytes) {
        ContinueNow(operation);
    }
    Scatter(operation);
    operation->flags |= kOperationComplete;
}

bool Finished(AIOOperation* operation) {
    if (operation->flags & kOperationComplete) return true;
    if (!(operation->flags & kOperationQueued)) return false;
    return aio_error64(&operation->control) != EINPROGRESS;
}

// Everything queued on the unit so far completes: what follows may then be done at once
// without overtaking it.
void DrainUnit(UnitRecord* unit) {
    ForEachRequestOfUnit(unit, [](AIORequest* request) {
        ForEachOperation(request, [](AIOOperation* operation) {
            if (operation->flags & kOperationQueued) Complete(operation);
        });
    });
}

void Queue(AIORequest* request, AIOOperation* operation, const void* bytes, size_t count) {
    aiocb64& control = operation->control;
    control.aio_fildes = request->unit->fd;
    control.aio_buf = const_cast<void*>(bytes);
    control.aio_nbytes = count;
    int result = Reading(operation) ? aio_read64(&control) : aio_write64(&control);
    if (result == 0) {
        operation->flags |= kOperationQueued;
        return;
    }
    // No room in the system's queue, or no asynchronous I/O at all: the transfer is done
    // now, in its turn.
    DrainUnit(request->unit);
    ContinueNow(operation);
    Scatter(operation);
    operation->flags |= kOperationComplete;
}

void QueueGathered(AIORequest* request) {
    AIOOperation* gathering = request->gathering;
    if (gathering == nullptr) return;
    request->gathering = nullptr;
    const uint8_t* bytes = gathering->ownedBuffer != nullptr ? gathering->ownedBuffer : gathering->data;
    Queue(request, gathering, bytes, gathering->control.aio_nbytes);
}

// Room for `count` more bytes in the gathering operation; false when memory ran out.
bool MakeRoom(AIOOperation* operation, uint32_t count) {
    uint32_t used = static_cast<uint32_t>(operation->control.aio_nbytes);
    uint32_t capacity = operation->ownedBuffer != nullptr ? operation->capacity : sizeof operation->data;
    if (used + count <= capacity) return true;
    uint32_t wanted = std::max({used + count, 2 * capacity, 4096u});
    auto* grown = static_cast<uint8_t*>(std::realloc(operation->ownedBuffer, wanted));
    if (grown == nullptr) return false;
    if (operation->ownedBuffer == nullptr) std::memcpy(grown, operation->data, used);
    operation->ownedBuffer = grown;
    operation->capacity = wanted;
    return true;
}

// Copies `count` bytes (or that many of `fill`, when `bytes` is null) to `offset`.
bool Gather(AIORequest* request, int64_t offset, const void* bytes, int32_t count, int fill) {
    while (count > 0) {
        AIOOperation* gathering = request->gathering;
        bool follows = gathering != nullptr &&
                       gathering->control.aio_offset + static_cast<int64_t>(gathering->control.aio_nbytes) == offset &&
                       gathering->control.aio_nbytes < kGatherLimit;
        if (!follows) {
            QueueGathered(request);
            gathering = request->gathering = NewOperation(request, 0, offset);
            if (gathering == nullptr) return false;
        }
        uint32_t piece = std::min(static_cast<uint32_t>(count),
                                  kGatherLimit - static_cast<uint32_t>(gathering->control.aio_nbytes));
        if (!MakeRoom(gathering, piece)) return false;
        uint8_t* base = gathering->ownedBuffer != nullptr ? gathering->ownedBuffer : gathering->data;
        uint8_t* at = base + gathering->control.aio_nbytes;
        if (bytes != nullptr) {
            std::memcpy(at, bytes, piece);
            bytes = static_cast<const uint8_t*>(bytes) + piece;
        } else {
            std::memset(at, fill, piece);
        }
        gathering->control.aio_nbytes += piece;
        offset += piece;
        count -= static_cast<int32_t>(piece);
    }
    return true;
}

int32_t QueueInPlace(AIORequest* request, uint32_t flags, int64_t offset, void* bytes, int32_t count) {
    for (int32_t done = 0; done < count;) {
        int32_t piece = std::min(kLargePiece, count - done);
        AIOOperation* operation = NewOperation(request, flags, offset + done);
        if (operation == nullptr) return -1;
        Queue(request, operation, static_cast<uint8_t*>(bytes) + done, static_cast<size_t>(piece));
        done += piece;
    }
    return count;
}

void Retire(GlobalContext* global, AIORequest* request) {
    ForEachOperation(request, FreeOperation);
    ListUnlink(&request->link);
    if (request->unitLink.next != nullptr) {
        ListUnlink(&request->unitLink);
        LeaveScope(global, request->unit->unitNumber);
    }
    global->aioOutstanding--;
    global->aioScopeCounters[kCountRetired]++;
    std::free(request);
}

}  // namespace

AIORequest* GetAIOHandleAndScope(GlobalContext* global, LocalContext*, UnitRecord* unit) {
    auto* request = static_cast<AIORequest*>(std::calloc(1, sizeof(AIORequest)));
    if (request == nullptr) {
        ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
        return nullptr;
    }
    request->key = NextFreeId(global);
    request->unit = unit;
    ListInit(&request->operations);
    ListNode* predecessor;
    FindHashNode(global->aioRequests, kHashBuckets, request->key, &predecessor);
    ListInsertAfter(predecessor, &request->link);
    global->aioOutstanding++;
    global->aioScopeCounters[kCountQueued]++;
    return request;
}

void AttachAIORequestToUnit(AIORequest* request, UnitRecord* unit, uint32_t direction) {
    request->unit = unit;
    request->direction = direction;
    request->access = unit->access;
    if (request->unitLink.next != nullptr) return;
    // Without a scope (no memory for it) the request still counts: the waits read the
    // unit's list, and the scope only says which units have requests.
    EnterScope(_GlobalContext, unit);
    ListAddTail(&unit->aioList, &request->unitLink);
}

void FreeAIORequest(GlobalContext* global, AIORequest* request, int32_t waitFirst) {
    if (request == nullptr) return;
    request->gathering = nullptr;  // never queued: it only goes
    ForEachOperation(request, [waitFirst](AIOOperation* operation) {
        if (waitFirst && (operation->flags & kOperationQueued)) Complete(operation);
    });
    Retire(global, request);
}

int32_t AIORequestId(const AIORequest* request) { return request->key; }

UnitRecord* AIORequestUnit(const AIORequest* request) { return request->unitLink.next != nullptr ? request->unit : nullptr; }

AIORequest* FindAIORequest(GlobalContext* global, int32_t id) {
    if (id <= 0) return nullptr;
    ListNode* predecessor;
    return reinterpret_cast<AIORequest*>(FindHashNode(global->aioRequests, kHashBuckets, id, &predecessor));
}

int32_t QueueWrite(AIORequest* request, int64_t offset, const void* bytes, int32_t count, bool inPlace) {
    if (count <= 0) return 0;
    if (inPlace && count >= kInPlaceMinimum) {
        QueueGathered(request);
        return QueueInPlace(request, 0, offset, const_cast<void*>(bytes), count);
    }
    return Gather(request, offset, bytes, count, 0) ? count : -1;
}

int32_t QueueFill(AIORequest* request, int64_t offset, int byte, int32_t count) {
    if (count <= 0) return 0;
    return Gather(request, offset, nullptr, count, byte) ? count : -1;
}

int32_t QueueRead(AIORequest* request, int64_t offset, void* into, int32_t count, bool inPlace) {
    if (count <= 0) return 0;
    if (inPlace) return QueueInPlace(request, kOperationRead, offset, into, count);
    // The item must hold its value when the call returns.
    int32_t got = 0;
    while (got < count) {
        ssize_t moved = pread64(request->unit->fd, static_cast<uint8_t*>(into) + got, static_cast<size_t>(count - got),
                                offset + got);
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) return got > 0 ? got : -2;
        if (moved == 0) break;
        got += static_cast<int32_t>(moved);
    }
    return got;
}

AIOOperation* NewSplitOperation(AIORequest* request) {
    // Its own operation: the gathered bytes must not be merged with others, since a read
    // scatters them when it completes.
    QueueGathered(request);
    return NewOperation(request, 0, 0);
}

void QueueSplitWrite(AIORequest* request, AIOOperation* operation, int64_t offset, int32_t count) {
    operation->control.aio_offset = offset;
    Queue(request, operation, operation->data, static_cast<size_t>(count));
}

void QueueSplitRead(AIORequest* request, AIOOperation* operation, int64_t offset, uint8_t* item, int32_t length,
                    int32_t kind) {
    operation->flags |= kOperationRead;
    operation->control.aio_offset = offset;
    operation->scatterTo = item;
    operation->scatterLength = length;
    operation->scatterKind = kind;
    Queue(request, operation, operation->data, static_cast<size_t>(2 * kind));
}

void SubmitAIORequest(AIORequest* request) { QueueGathered(request); }

bool AIORequestComplete(AIORequest* request) {
    bool complete = true;
    ForEachOperation(request, [&complete](AIOOperation* operation) { complete = complete && Finished(operation); });
    return complete;
}

AIOOutcome CompleteAIORequest(AIORequest* request, int32_t* error, int64_t* endOffset) {
    QueueGathered(request);
    AIOOutcome outcome = AIOOutcome::kDone;
    ForEachOperation(request, [&](AIOOperation* operation) {
        Complete(operation);
        if (outcome != AIOOutcome::kDone) return;
        if (operation->error != 0) {
            outcome = AIOOutcome::kFailed;
            *error = operation->error;
        } else if (Reading(operation) && static_cast<size_t>(operation->transferred) < operation->control.aio_nbytes) {
            *endOffset = operation->control.aio_offset + operation->transferred;
            bool inside = request->access == VRN_KEY_DIRECT && *endOffset > request->recordStart;
            outcome = inside ? AIOOutcome::kEndInsideRecord : AIOOutcome::kEndOfFile;
        }
    });
    return outcome;
}

bool AIOUnitComplete(UnitRecord* unit) {
    bool complete = true;
    ForEachRequestOfUnit(unit, [&complete](AIORequest* request) { complete = complete && AIORequestComplete(request); });
    return complete;
}

namespace {

const char* NameOf(UnitRecord* unit) { return UnitNameForMessages(unit); }

// Where the unit stands after a request that met the end of the file: at that end.
void NoteEndOfFile(UnitRecord* unit, const AIORequest* request, int64_t endOffset) {
    if (request->access == VRN_KEY_DIRECT) return;
    unit->aioEndPosition = endOffset;
    if (request->access == VRN_KEY_SEQUENTIAL) unit->afterEndfile = 1;
}

// The report of a request that did not go as asked; the answer of ErrorHandler.
int32_t Report(LocalContext* context, UnitRecord* unit, AIOOutcome outcome, int32_t error) {
    switch (outcome) {
    case AIOOutcome::kFailed:
        return ErrorHandler(kClassSevere, kKindError, 178, 178, ArgInt(1), unit->unitNumber, ArgErrno(2), error, 0u);
    case AIOOutcome::kEndInsideRecord:
        return ErrorHandler(kClassSevere, kKindError, 122, 122, ArgText(1), NameOf(unit), 0u);
    case AIOOutcome::kEndOfFile:
        if (unit->access == VRN_KEY_DIRECT && !(context->options & VRN_OPTION_END)) {
            return ErrorHandler(kClassSevere, kKindError, 1, 1, ArgText(1), NameOf(unit), 0u);
        }
        return ErrorHandler(kClassSevere, kKindEndOfFile, 1, -1, ArgText(1), NameOf(unit), 0u);
    default: return kRecover;
    }
}

constexpr int32_t kNothingReported = -1;

// Completes and retires one request; reports its failure when `report` is set. The
// answer of ErrorHandler, or kNothingReported.
int32_t WaitAndRetire(GlobalContext* global, LocalContext* context, AIORequest* request, bool report) {
    int32_t error = 0;
    int64_t endOffset = 0;
    AIOOutcome outcome = CompleteAIORequest(request, &error, &endOffset);
    UnitRecord* unit = request->unit;
    bool attached = request->unitLink.next != nullptr;
    if (attached && (outcome == AIOOutcome::kEndOfFile || outcome == AIOOutcome::kEndInsideRecord)) {
        NoteEndOfFile(unit, request, endOffset);
    }
    Retire(global, request);
    if (!report || !attached || outcome == AIOOutcome::kDone) return kNothingReported;
    return Report(context, unit, outcome, error);
}

}  // namespace

int32_t AIOWaitUnit(GlobalContext* global, LocalContext* context, UnitRecord* unit, int32_t report) {
    // Only the first failure is reported: the standard's one condition per statement.
    int32_t answer = kNothingReported;
    while (!ListIsEmpty(&unit->aioList)) {
        AIORequest* request = RequestOfUnitLink(unit->aioList.first);
        int32_t result = WaitAndRetire(global, context, request, report && answer == kNothingReported);
        if (answer == kNothingReported) answer = result;
    }
    return answer == kNothingReported || answer == kRecover ? 1 : 0;
}

int32_t AIOWaitRequest(GlobalContext* global, LocalContext* context, AIORequest* request) {
    int32_t answer = WaitAndRetire(global, context, request, true);
    return answer == kNothingReported || answer == kRecover ? 1 : 0;
}

void FreeAllAIORequests(GlobalContext* global) {
    if (global->aioRequests != nullptr) {
        for (int bucket = 0; bucket < kHashBuckets; ++bucket) {
            while (!ListIsEmpty(&global->aioRequests[bucket])) {
                FreeAIORequest(global, reinterpret_cast<AIORequest*>(global->aioRequests[bucket].first), 1);
            }
        }
    }
    if (global->aioScopes != nullptr) {
        for (int bucket = 0; bucket < kHashBuckets; ++bucket) {
            while (ListNode* node = ListRemoveHead(&global->aioScopes[bucket])) std::free(node);
        }
    }
}
