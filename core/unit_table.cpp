#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "ufmt/async_io.h"

namespace {

constexpr int32_t kNewUnitMarker = INT32_MIN;
constexpr int32_t kFirstNewUnit = -3;
constexpr int32_t kLastArrayNewUnit = -99;
// The counter hands out numbers down to here before the last-resort scan takes over.
constexpr int32_t kNewUnitCounterFloor = -2147483638;

bool InLowArray(int32_t number) { return number >= 0 && number < kLowUnits; }
bool InNegativeArray(int32_t number) { return number <= kFirstNewUnit && number >= kLastArrayNewUnit; }

UnitRecord** ArraySlot(GlobalContext* global, int32_t number) {
    if (InLowArray(number)) return &global->lowUnits[number];
    if (InNegativeArray(number)) return &global->negativeUnits[-number];
    return nullptr;
}

}  // namespace

ListHeader* InitUnitTable(GlobalContext* global) {
    std::memset(global->lowUnits, 0, sizeof global->lowUnits);
    std::memset(global->negativeUnits, 0, sizeof global->negativeUnits);
    global->unitHash = MakeNewHashTable(kHashBuckets);
    return global->unitHash;
}

void FreeUnitTable(GlobalContext* global) {
    if (global->unitHash != nullptr) FreeHashTable(&global->unitHash);
}

UnitRecord* FindUnit(GlobalContext* global, LocalContext*, int32_t number, ListNode** predecessor) {
    return reinterpret_cast<UnitRecord*>(FindHashNode(global->unitHash, kHashBuckets, number, predecessor));
}

UnitRecord* LookUpUnit(GlobalContext* global, int32_t number) {
    if (UnitRecord** slot = ArraySlot(global, number)) return *slot;
    ListNode* predecessor;
    return FindUnit(global, nullptr, number, &predecessor);
}

UnitRecord* FindErrorUnit(GlobalContext* global) { return global->lowUnits[0]; }

UnitRecord* GetUnit(GlobalContext* global, LocalContext* context, int32_t number, int32_t* existed) {
    *existed = 0;
    if (number == kNewUnitMarker) {
        number = get_next_available_newunit_number(global, context);
        if (number == kNewUnitMarker) return nullptr;
    }
    UnitRecord** slot = ArraySlot(global, number);
    ListNode* predecessor = nullptr;
    UnitRecord* found = slot != nullptr ? *slot : FindUnit(global, context, number, &predecessor);
    if (found != nullptr) {
        *existed = 1;
        return found;
    }
    auto* unit = static_cast<UnitRecord*>(std::calloc(1, sizeof(UnitRecord)));
    if (unit == nullptr) return nullptr;
    unit->direction = kNoDirection;
    unit->unitNumber = number;
    unit->fd = -1;
    ListInit(&unit->aioList);
    unit->aioEndPosition = -1;
    if (slot != nullptr) {
        *slot = unit;
    } else {
        ListInsertAfter(predecessor, &unit->link);
    }
    return unit;
}

void FreeUnit(GlobalContext* global, LocalContext*, UnitRecord* unit) {
    if (unit == nullptr) return;
    if (UnitRecord** slot = ArraySlot(global, unit->unitNumber)) {
        if (*slot == unit) *slot = nullptr;
    } else if (unit->link.next != nullptr) {
        ListUnlink(&unit->link);
    }
    std::free(unit);
}

int32_t get_next_available_newunit_number(GlobalContext* global, LocalContext* context) {
    int32_t n = global->nextNewUnit;
    // -3 to -99 are each handed out once, in order, whatever was closed meanwhile.
    if (n >= kLastArrayNewUnit) {
        global->nextNewUnit = n - 1;
        return n;
    }
    for (int32_t candidate = kFirstNewUnit; candidate >= kLastArrayNewUnit; --candidate) {
        if (global->negativeUnits[-candidate] == nullptr) return candidate;
    }
    if (n > kNewUnitCounterFloor) {
        global->nextNewUnit = n - 1;
        return n;
    }
    // The last resort of a program with two thousand million open units: scan upward from
    // -100, through -1, 0 and the positive numbers, and give up only after wrapping round.
    int32_t candidate = -100;
    do {
        if (LookUpUnit(global, candidate) == nullptr) return candidate;
        candidate = static_cast<int32_t>(static_cast<uint32_t>(candidate) + 1u);
    } while (candidate != -100);
    (void)context;
    return kNewUnitMarker;
}

// ---- Inode records --------------------------------------------------------------

namespace {

uint32_t InodeBucket(uint64_t device, uint64_t inodeNumber) {
    return static_cast<uint32_t>((device + inodeNumber) % kHashBuckets);
}

bool InodeBefore(const InodeRecord* record, uint64_t device, uint64_t inodeNumber) {
    if (record->inodeNumber != inodeNumber) return record->inodeNumber < inodeNumber;
    return record->device < device;
}

}  // namespace

InodeRecord* FindInodeRecord(GlobalContext* global, LocalContext*, uint64_t device, uint64_t inodeNumber,
                             ListNode** predecessor) {
    ListHeader* bucket = &global->inodeHash[InodeBucket(device, inodeNumber)];
    ListNode* before = ListHeadNode(bucket);
    for (ListNode* node = bucket->first; node->next != nullptr; node = node->next) {
        auto* record = reinterpret_cast<InodeRecord*>(node);
        if (record->device == device && record->inodeNumber == inodeNumber) {
            *predecessor = before;
            return record;
        }
        if (!InodeBefore(record, device, inodeNumber)) break;
        before = node;
    }
    *predecessor = before;
    return nullptr;
}

InodeRecord* GetInodeRecord(GlobalContext* global, LocalContext* context, uint64_t device,
                            uint64_t inodeNumber, int32_t* existed) {
    ListNode* predecessor;
    InodeRecord* record = FindInodeRecord(global, context, device, inodeNumber, &predecessor);
    *existed = record != nullptr;
    if (record != nullptr) return record;
    record = static_cast<InodeRecord*>(std::calloc(1, sizeof(InodeRecord)));
    if (record == nullptr) return nullptr;
    record->device = device;
    record->inodeNumber = inodeNumber;
    ListInit(&record->units);
    ListInsertAfter(predecessor, &record->link);
    return record;
}

void FreeInodeRecord(GlobalContext*, LocalContext*, InodeRecord* record) {
    if (record == nullptr) return;
    while (ListNode* link = ListRemoveHead(&record->units)) std::free(link);
    if (record->link.next != nullptr) ListUnlink(&record->link);
    std::free(record);
}

int32_t InsertUnitPtrRecord(UnitRecord* unit, InodeRecord* record) {
    auto* link = static_cast<UnitLink*>(std::calloc(1, sizeof(UnitLink)));
    if (link == nullptr) return 0;
    link->unit = unit;
    // Ascending unit number, so that the first link is the lowest unit on the file.
    ListNode* before = ListHeadNode(&record->units);
    for (ListNode* node = record->units.first; node->next != nullptr; node = node->next) {
        if (reinterpret_cast<UnitLink*>(node)->unit->unitNumber > unit->unitNumber) break;
        before = node;
    }
    ListInsertAfter(before, &link->link);
    record->unitCount++;
    unit->inode = record;
    return 1;
}

void RemoveUnitPtrRecord(UnitRecord* unit) {
    InodeRecord* record = unit->inode;
    if (record == nullptr) return;
    for (ListNode* node = record->units.first; node->next != nullptr; node = node->next) {
        if (reinterpret_cast<UnitLink*>(node)->unit == unit) {
            ListUnlink(node);
            std::free(node);
            record->unitCount--;
            return;
        }
    }
}

UnitRecord* FindUnitRecordByName(const char* name, InodeRecord* record) {
    for (ListNode* node = record->units.first; node->next != nullptr; node = node->next) {
        UnitRecord* unit = reinterpret_cast<UnitLink*>(node)->unit;
        if (unit->fileName != nullptr && std::strcmp(unit->fileName, name) == 0) return unit;
    }
    return nullptr;
}

UnitRecord* FirstUnitOnInode(InodeRecord* record) {
    if (record == nullptr || ListIsEmpty(&record->units)) return nullptr;
    return reinterpret_cast<UnitLink*>(record->units.first)->unit;
}

// ---- Closing --------------------------------------------------------------------

int32_t CloseUnit(GlobalContext* global, LocalContext* context, UnitRecord* unit, int32_t closeDescriptor) {
    bool failed = false;
    // Nothing queued is lost: the transfers finish before the descriptor goes. Their
    // failures were the program's to ask for with WAIT.
    if (!ListIsEmpty(&unit->aioList)) AIOWaitUnit(global, context, unit, 0);
    if (unit->direction == kDirectionWrite && !FlushUnit(global, unit, 1)) failed = true;
    if (!DetachBufferFromUnit(global, unit, closeDescriptor)) failed = true;
    if (InodeRecord* record = unit->inode) {
        RemoveUnitPtrRecord(unit);
        if (record->unitCount == 0) FreeInodeRecord(global, context, record);
        unit->inode = nullptr;
    }
    if (unit->fileName != nullptr) {
        // A scratch file that failed to flush stays on disk: its data may be all there is.
        if (unit->deleteOnClose && !failed && unlink(unit->fileName) != 0) failed = true;
        std::free(unit->fileName);
        unit->fileName = nullptr;
    }
    FreeUnit(global, context, unit);
    return failed ? 0 : 1;
}

void CloseAllUnits(GlobalContext* global, LocalContext* context) {
    // Unit 0 receives the messages, so it goes last; preconnected descriptors stay open.
    for (int number = 1; number < kLowUnits; ++number) {
        if (UnitRecord* unit = global->lowUnits[number]) CloseUnit(global, context, unit, !unit->preconnected);
    }
    for (int number = 3; number < kNegativeUnits; ++number) {
        if (UnitRecord* unit = global->negativeUnits[number]) CloseUnit(global, context, unit, !unit->preconnected);
    }
    for (int bucket = 0; bucket < kHashBuckets; ++bucket) {
        ListHeader* list = &global->unitHash[bucket];
        while (!ListIsEmpty(list)) CloseUnit(global, context, reinterpret_cast<UnitRecord*>(list->first), 1);
    }
    if (UnitRecord* unit = global->lowUnits[0]) CloseUnit(global, context, unit, !unit->preconnected);
}

const char* StandardUnitName(int32_t unitNumber) {
    switch (unitNumber) {
    case 5: return "(standard input)";
    case 6: return "(standard output)";
    case 0: return "(standard error)";
    default: return "(unknown)";
    }
}

const char* UnitNameForMessages(const UnitRecord* unit) {
    return unit->fileName != nullptr ? unit->fileName : StandardUnitName(unit->unitNumber);
}
