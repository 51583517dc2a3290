// The table of units and the records of connected files.
//
// To find a unit by number without creating it: 0 to 99 in lowUnits, -3 to -99 in
// negativeUnits, all others through FindUnit (the 127-bucket unitHash).
#pragma once

#include <cstdint>

#include "core/lists.h"

struct GlobalContext;
struct LocalContext;
struct InodeRecord;

constexpr uint32_t kNoDirection = 0x80000000u;
constexpr uint32_t kDirectionRead = 0;
constexpr uint32_t kDirectionWrite = 1;

enum DeviceClass : uint32_t {
    kRegularFile = 1,
    kBlockDevice = 3,
    kCharacterDevice = 4,
    kSocket = 6,
    kFifo = 8,
};

struct UnitRecord {
    ListNode link;             // with unitNumber, makes the record a hash node
    int32_t unitNumber;
    InodeRecord* inode;
    int32_t fd;                // -1 when none
    uint32_t deviceClass;
    char* fileName;            // owned; null for a preconnected unit
    uint32_t direction;        // kDirectionRead, kDirectionWrite or kNoDirection
    uint32_t aioMode;
    uint32_t tapeBlock;
    uint32_t blockSize;
    char* buffer;
    char* cursor;
    uint32_t bufferSize;
    int32_t bufferFill;        // bytes of the buffer that hold data
    uint32_t bufferOffset;     // read side: cursor less buffer
    uint32_t bufferKept;
    int32_t maxRecord;         // the longest record payload
    int32_t recordCapacity;    // maxRecord plus framing
    int32_t savedRecordLength; // the record state carried across statements
    int32_t savedColumn;
    int32_t savedLeftLimit;
    int32_t savedHighWater;
    int64_t filePosition;      // the logical position, not the descriptor's
    int32_t pendingColumn;     // asked for by T, TL, TR or X; -1 for none
    uint32_t recordOverhead;
    uint64_t nextRecord;
    // Connection properties, each a keyword number, 0 when not set.
    uint32_t status;
    uint32_t access;
    uint32_t form;
    uint32_t asynch;
    uint32_t position;
    uint32_t action;
    uint32_t blank;
    uint32_t delim;
    uint32_t pad;
    uint32_t sign;
    uint32_t decimal;
    uint32_t round;
    int32_t recl;              // -1 when not given
    uint32_t seekable;
    uint32_t isNullDevice;
    uint32_t recordBuffered;
    uint32_t blockTransfers;
    uint32_t isTape;
    uint32_t rawDevice;
    uint32_t canAsync;
    uint32_t isTty;
    uint32_t preconnected;
    uint32_t flushEachRecord;
    uint32_t flushAfterWrite;
    uint32_t discardBeforeRead;
    uint32_t unbuffered;
    uint32_t appendPending;
    uint32_t permanentError;   // never cleared; the unit can only be closed
    uint32_t deleteOnClose;
    uint32_t afterEndfile;
    uint32_t endfileWritten;
    uint32_t needsReposition;
    ListHeader aioList;
    int64_t aioEndPosition;
    uint64_t aioPartialStart;
    uint32_t aioPartialLength;
    uint32_t byteSwap;
};

struct InodeRecord {
    ListNode link;
    uint64_t device;
    uint64_t inodeNumber;
    ListHeader units;          // UnitLink nodes in ascending unit number
    uint32_t unitCount;
};

struct UnitLink {
    ListNode link;
    UnitRecord* unit;
};

ListHeader* InitUnitTable(GlobalContext* global);
void FreeUnitTable(GlobalContext* global);
UnitRecord* GetUnit(GlobalContext* global, LocalContext* context, int32_t number, int32_t* existed);
UnitRecord* FindUnit(GlobalContext* global, LocalContext* context, int32_t number, ListNode** predecessor);
// Looks a unit up by the rule above, without creating it.
UnitRecord* LookUpUnit(GlobalContext* global, int32_t number);
UnitRecord* FindErrorUnit(GlobalContext* global);
void FreeUnit(GlobalContext* global, LocalContext* context, UnitRecord* unit);
int32_t CloseUnit(GlobalContext* global, LocalContext* context, UnitRecord* unit, int32_t closeDescriptor);
void CloseAllUnits(GlobalContext* global, LocalContext* context);
int32_t get_next_available_newunit_number(GlobalContext* global, LocalContext* context);

InodeRecord* FindInodeRecord(GlobalContext* global, LocalContext* context, uint64_t device,
                             uint64_t inodeNumber, ListNode** predecessor);
InodeRecord* GetInodeRecord(GlobalContext* global, LocalContext* context, uint64_t device,
                            uint64_t inodeNumber, int32_t* existed);
void FreeInodeRecord(GlobalContext* global, LocalContext* context, InodeRecord* record);
int32_t InsertUnitPtrRecord(UnitRecord* unit, InodeRecord* record);
void RemoveUnitPtrRecord(UnitRecord* unit);
UnitRecord* FindUnitRecordByName(const char* name, InodeRecord* record);
UnitRecord* FirstUnitOnInode(InodeRecord* record);

// "(standard output)" and its kin for a unit without a file name.
const char* StandardUnitName(int32_t unitNumber);
const char* UnitNameForMessages(const UnitRecord* unit);
