// WAIT, and the PENDING= of INQUIRE: the statements that complete asynchronous requests.
//
// WAIT with ID= completes that request; without, every request of the unit. ID= 0 is
// the ID of a statement that ran synchronously, complete when it ended. DONE= asks
// without waiting: true, and the request is retired as by a WAIT, once its transfers
// have finished; false while one runs.
#include "core/context.h"
#include "core/errors.h"
#include "core/keywords.h"
#include "core/unit.h"
#include "ufmt/async_io.h"
#include "vrn90.h"

int32_t RequestIdOf(const KeywordEntry& entry) {
    if ((entry.tag & 0xFFFFu) != VRN_TAG_ID8) return static_cast<int32_t>(static_cast<uint32_t>(entry.a));
    auto wide = static_cast<int64_t>((static_cast<uint64_t>(entry.a) << 32) | entry.b);
    return wide >= 0 && wide <= INT32_MAX ? static_cast<int32_t>(wide) : -1;
}

namespace {

struct WaitSpecifiers {
    bool idGiven = false;
    int32_t id = 0;
    void* done = nullptr;
    uint32_t doneSize = 4;
};

WaitSpecifiers ReadWaitSpecifiers(const KeywordList* keywords) {
    WaitSpecifiers given;
    if (keywords == nullptr || keywords->version != 1) return given;
    for (uint32_t i = 0; i < keywords->count; ++i) {
        const KeywordEntry& entry = keywords->entries[i];
        switch (entry.tag & 0xFFFFu) {
        case VRN_KEY_ID:
        case VRN_TAG_ID8:
            given.idGiven = true;
            given.id = RequestIdOf(entry);
            break;
        case VRN_KEY_DONE:
            given.done = reinterpret_cast<void*>(entry.a);
            given.doneSize = entry.b;
            break;
        default: break;
        }
    }
    return given;
}

void NotFound(int32_t unitNumber, int32_t id) {
    ErrorHandler(kClassRecoverable, kKindError, 224, 224, ArgInt(1), unitNumber, ArgInt(2), id, 0u);
}

// A WAIT in a defined I/O procedure on the unit whose statement is in progress would
// retire that statement's own request.
bool StatementInProgressOn(const LocalContext* context, const UnitRecord* unit) {
    for (const LocalContext* below = context->prev; below != nullptr; below = below->prev) {
        if (below->busy && below->unit == unit) return true;
        if (!below->nested) break;
    }
    return false;
}

}  // namespace

int32_t WaitCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords) {
    WaitSpecifiers given = ReadWaitSpecifiers(keywords);
    UnitRecord* unit = LookUpUnit(global, unitNumber);
    AIORequest* request = given.idGiven ? FindAIORequest(global, given.id) : nullptr;
    if (given.idGiven && given.id != 0 && (request == nullptr || unit == nullptr || AIORequestUnit(request) != unit)) {
        NotFound(unitNumber, given.id);
        return context->status;
    }
    // No unit, nothing outstanding, or a statement that completed synchronously.
    if (unit == nullptr || (given.idGiven && given.id == 0) || ListIsEmpty(&unit->aioList)) {
        StoreLogicalSpecifier(given.done, given.doneSize, true);
        return context->status;
    }
    if (context->nested && StatementInProgressOn(context, unit)) {
        ErrorHandler(kClassRecoverable, kKindError, 227, 227, ArgInt(1), unitNumber, 0u);
        return context->status;
    }
    if (given.done != nullptr) {
        bool finished = request != nullptr ? AIORequestComplete(request) : AIOUnitComplete(unit);
        StoreLogicalSpecifier(given.done, given.doneSize, finished);
        if (!finished) return context->status;
    }
    if (request != nullptr) {
        AIOWaitRequest(global, context, request);
    } else {
        AIOWaitUnit(global, context, unit, 1);
    }
    return context->status;
}

bool AIOInquirePending(GlobalContext* global, LocalContext* context, UnitRecord* unit, bool idGiven, int32_t id,
                       bool* pending) {
    *pending = false;
    if (unit == nullptr) return true;
    if (idGiven) {
        // An ID already waited for, or of another unit, is no pending transfer of this one.
        AIORequest* request = FindAIORequest(global, id);
        if (request == nullptr || AIORequestUnit(request) != unit) return true;
        if (!AIORequestComplete(request)) {
            *pending = true;
            return true;
        }
        return AIOWaitRequest(global, context, request) != 0;
    }
    if (ListIsEmpty(&unit->aioList)) return true;
    if (!AIOUnitComplete(unit)) {
        *pending = true;
        return true;
    }
    return AIOWaitUnit(global, context, unit, 1) != 0;
}
