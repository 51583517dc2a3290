#include "core/context.h"

#include <nl_types.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "core/errors.h"
#include "core/export.h"
#include "core/unit.h"
#include "format/format_cache.h"
#include "listio/listio.h"
#include "transport/transport.h"
#include "ufmt/async_io.h"
#include "vrn90.h"

uint32_t RTE_Initialized = 0;
GlobalContext* _GlobalContext = nullptr;
LocalContext* _LocalContext[2] = {nullptr, nullptr};

namespace {

constexpr char kOutOfMemory[] = "VR Fortran (initialization): Out of memory.\n";

// So that reads and writes of the run-time interrupted by a signal restart by themselves.
// Handlers the program installed beforehand keep working.
void InitializeIOSignals() {
    for (int signalNumber = 1; signalNumber <= SIGRTMAX; ++signalNumber) {
        struct sigaction action;
        if (sigaction(signalNumber, nullptr, &action) != 0) continue;
        action.sa_flags |= SA_RESTART;
        sigaction(signalNumber, &action, nullptr);
    }
}

void SetGlobalOptions(GlobalContext* global) {
    if (global->parent != nullptr) {
        CopyOptions(global->parent, global);
        return;
    }
    SetDefaultOptions(global);
    if (const char* text = std::getenv("VRNRTEOPTS")) {
        ProcessRTEOptions(global, text, static_cast<int32_t>(std::strlen(text)));
    }
    SetOldOptions(global);
}

}  // namespace

[[noreturn]] void CatastrophicExit(const char* text) {
    WriteNonstop(2, text, static_cast<int32_t>(std::strlen(text)));
    kill(getpid(), SIGABRT);
    // Should the signal be blocked or caught and returned from, the program still must not go on.
    std::_Exit(134);
}

void InitializeRTE() {
    GlobalContext* global = CreateGlobalContext(0, nullptr);
    if (global == nullptr) CatastrophicExit(kOutOfMemory);
    _GlobalContext = global;
    InitializeIOSignals();
    LocalContext* context = CreateLocalContext(global);
    if (context == nullptr) CatastrophicExit(kOutOfMemory);
    _LocalContext[0] = context;
    _LocalContext[1] = context;
    context->anchor = _LocalContext;
    PreconnectUnits(global, context);
    SetGlobalOptions(global);
    FillScannerStateTables(global);
    SetBufferingFlag(global, context);
    RTE_Initialized = 1;
    // A program that returns from main or calls exit, with no STOP, must still find its
    // records in its files: the clean-up runs at every normal end of the process. Once,
    // since the run-time may be started again after an explicit clean-up.
    static bool cleanupRegistered = false;
    if (!cleanupRegistered) cleanupRegistered = std::atexit(RTECleanup) == 0;
}

GlobalContext* CreateGlobalContext(uint32_t task, GlobalContext* parent) {
    auto* global = static_cast<GlobalContext*>(std::calloc(1, sizeof(GlobalContext)));
    if (global == nullptr) return nullptr;
    global->nextAioId = 1;
    global->parent = parent;
    global->task = task;
    global->catalog = reinterpret_cast<nl_catd>(-1);
    global->fallbackCatalog = reinterpret_cast<nl_catd>(-1);
    global->nextNewUnit = -3;
    if (InitUnitTable(global) == nullptr || (global->inodeHash = MakeNewHashTable(kHashBuckets)) == nullptr ||
        (global->aioRequests = MakeNewHashTable(kHashBuckets)) == nullptr ||
        (global->aioScopes = MakeNewHashTable(kHashBuckets)) == nullptr) {
        DestroyGlobalContext(global);
        return nullptr;
    }
    return global;
}

void DestroyGlobalContext(GlobalContext* global) {
    if (global == nullptr) return;
    FreeUnitTable(global);
    if (global->inodeHash != nullptr) {
        // Units are closed by now; any record left is unreachable otherwise.
        for (int bucket = 0; bucket < kHashBuckets; ++bucket) {
            while (ListNode* node = ListRemoveHead(&global->inodeHash[bucket])) {
                FreeInodeRecord(global, nullptr, reinterpret_cast<InodeRecord*>(node));
            }
        }
        FreeHashTable(&global->inodeHash);
    }
    FreeAllAIORequests(global);
    if (global->aioRequests != nullptr) FreeHashTable(&global->aioRequests);
    if (global->aioScopes != nullptr) FreeHashTable(&global->aioScopes);
    if (global->parent == nullptr) std::free(global->options.ufmtUnits);
    std::free(global);
}

LocalContext* CreateLocalContext(GlobalContext* global) {
    auto* block = static_cast<LocalContext*>(std::calloc(kContextBlock, sizeof(LocalContext)));
    auto* messageBuffer = static_cast<char*>(std::calloc(1, kMessageBufferSize));
    auto* scanBuffer = static_cast<char*>(std::calloc(1, kScanBufferSize));
    if (block == nullptr || messageBuffer == nullptr || scanBuffer == nullptr) {
        std::free(block);
        std::free(messageBuffer);
        std::free(scanBuffer);
        return nullptr;
    }
    for (int i = 0; i < kContextBlock; ++i) {
        LocalContext& context = block[i];
        context.next = i + 1 < kContextBlock ? &block[i + 1] : nullptr;
        context.prev = i > 0 ? &block[i - 1] : nullptr;
        context.global = global;
        context.statementFlags = kNoStatement;
        context.command = kCommandNone;
        context.ld_pending_char = -1;
    }
    block[0].messageBuffer = messageBuffer;
    block[0].scanBuffer = scanBuffer;
    return block;
}

void GrowLocalContext(LocalContext* context) {
    // A pushed context always takes the two shared buffers from the one beneath it, so the
    // new block's own are freed at once. There is no recovery from a failure here.
    LocalContext* block = CreateLocalContext(context->global);
    if (block == nullptr) CatastrophicExit(kOutOfMemory);
    std::free(block[0].messageBuffer);
    std::free(block[0].scanBuffer);
    block[0].messageBuffer = nullptr;
    block[0].scanBuffer = nullptr;
    context->next = block;
    block[0].prev = context;
}

void NeuterLocalContext(LocalContext* context) {
    if (context == nullptr) return;
    context->status = 0;
    context->itemsStopped = 0;
    context->options = 0;
    context->sizeAddress = nullptr;
    context->numAddress = nullptr;
    context->endRoutine = nullptr;
    context->iostatAddress = nullptr;
    context->statementFlags = kNoStatement;
    context->command = kCommandNone;
}

void FreeLocalContext(LocalContext** anchor) {
    LocalContext* block = anchor[1];
    if (block == nullptr) return;
    std::free(block->messageBuffer);
    std::free(block->scanBuffer);
    while (block != nullptr) {
        LocalContext* nextBlock = block[kContextBlock - 1].next;
        for (int i = 0; i < kContextBlock; ++i) {
            LDReadCleanup(&block[i]);
            std::free(block[i].formatBuffer.base);
            FreeFormatCache(block[i].formatCache);
            std::free(block[i].ufmt_swap_area);
            std::free(block[i].fmt.stackBase);
        }
        std::free(block);
        block = nextBlock;
    }
    anchor[0] = nullptr;
    anchor[1] = nullptr;
}

GlobalContext* FindGlobalContext(int32_t) { return _GlobalContext; }

void SetBufferingFlag(GlobalContext* global, LocalContext* context) {
    uint32_t buffering = global->options.optBuffering;
    if (buffering != VRN_KEY_DISABLE_PRECONN && buffering != VRN_KEY_DISABLE_ALL) return;
    for (int32_t number : {0, 5, 6}) {
        UnitRecord* unit = global->lowUnits[number];
        if (unit == nullptr || !unit->seekable || !unit->preconnected) continue;
        unit->unbuffered = 1;
        if (!FlushUnit(global, unit, 1)) IORaisePermanentError(context, unit, errno);
    }
}

void FillScannerStateTables(GlobalContext* global) {
    for (int i = 0; i < kScannerStates; ++i) {
        global->ldPointStates[i] = static_cast<uint32_t>(i);
        global->ldCommaStates[i] = static_cast<uint32_t>(i);
    }
    // The list-directed scanner has a twin of each number state for DECIMAL="COMMA".
    uint32_t commaState = 60;
    auto map = [&](int from, int to) {
        for (int state = from; state <= to; ++state) {
            global->ldCommaStates[state] = commaState;
            global->ldPointStates[commaState] = static_cast<uint32_t>(state);
            ++commaState;
        }
    };
    map(1, 2);
    map(4, 10);
    map(13, 27);
    commaState = 86;
    map(30, 53);
    map(55, 59);
    const int pointSingles[] = {115, 119, 126};
    const int commaSingles[] = {116, 121, 128};
    for (int i = 0; i < 3; ++i) {
        global->ldCommaStates[pointSingles[i]] = static_cast<uint32_t>(commaSingles[i]);
        global->ldPointStates[commaSingles[i]] = static_cast<uint32_t>(pointSingles[i]);
    }
}

VRN_EXPORT int32_t _vrnRegisterTask(void* task) { return task != nullptr ? 7 : 0; }
VRN_EXPORT int32_t _vrnDeregisterTask(void* task) { return task != nullptr ? 7 : 0; }
