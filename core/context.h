// The two state records that every I/O layer shares, and the start-up that makes them.
//
// GlobalContext is the one per-process record. LocalContext is the record of the I/O
// statement in progress; contexts form a stack (allocated in blocks of ten) so that a
// statement can run inside another one. The run-time takes no lock: only one thread may
// be inside the I/O layers at a time, and `busy` is the only guard.
#pragma once

#include <nl_types.h>

#include <cstdint>

#include "core/lists.h"
#include "core/options.h"
#include "format/format_state.h"

struct UnitRecord;
struct InternalFile;
struct LocalContext;

constexpr int kLowUnits = 100;              // units 0 to 99 live in an array
constexpr int kNegativeUnits = 100;         // so do -3 to -99, indexed by the negated number
constexpr int kContextBlock = 10;           // contexts are allocated ten at a time
constexpr int kMessageBufferSize = 5120;    // shared by all contexts of the stack
constexpr int kScanBufferSize = 2048;       // list-directed input work area, shared likewise
constexpr int kScannerStates = 137;
constexpr uint32_t kNoStatement = 0x80000000u;
constexpr int32_t kCommandTransfer = 9;     // 0 to 8 are the commands of _vrnIOCmd
constexpr int32_t kCommandNone = 10;

struct GlobalContext {
    GlobalContext* parent;  // when set, options are copied from it
    uint32_t task;
    UnitRecord* lowUnits[kLowUnits];
    UnitRecord* negativeUnits[kNegativeUnits];
    ListHeader* unitHash;   // every other unit number
    ListHeader* inodeHash;
    ListHeader* aioRequests;
    uint32_t aioOutstanding;
    uint32_t nextAioId;
    ListHeader* aioScopes;
    uint32_t aioScopeCounters[2];
    OptionBlock options;
    nl_catd catalog;
    int32_t catalogFailed;
    nl_catd fallbackCatalog;
    int32_t fallbackCatalogFailed;
    uint32_t ldPointStates[kScannerStates];  // scanner state translation DECIMAL=COMMA -> POINT
    uint32_t ldCommaStates[kScannerStates];  // and POINT -> COMMA
    int32_t nextNewUnit;
};

using EndRoutine = int32_t (*)(LocalContext*);

// The buffer a format encoding writes its first chunk into; it survives the encoding.
struct FormatCache;

struct FormatCodeBuffer {
    void* base;
    int32_t bytes;
};
// The byte movers of an unformatted statement: IORead and IOWrite, or an asynchronous
// layer's routines of the same shape.
using ReadItemRoutine = int32_t (*)(LocalContext*, void*, int32_t);
using WriteItemRoutine = int32_t (*)(LocalContext*, const void*, int32_t);

struct LocalContext {
    LocalContext* next;
    LocalContext* prev;
    GlobalContext* global;
    int32_t status;          // 0, or the kind of the failure a specifier took over
    uint32_t busy;
    uint32_t itemsStopped;   // item calls return at once
    uint32_t options;
    uint32_t statementFlags; // kNoStatement when idle
    UnitRecord* unit;        // null for an internal file
    int32_t charsTransferred;
    int32_t charsBase;
    int32_t recordLength;    // -1 while unknown
    int32_t recordMax;
    int32_t column;
    int32_t leftLimit;
    int32_t highWater;
    uint32_t padInput;
    uint32_t advancing;
    char* internalRecord;
    char* internalEnd;
    void* internalIterator;  // non-contiguous internal array; owned, freed by _vrnEndIO
    uint32_t formatState[2]; // cleared at every statement start
    uint32_t recordOverflow;
    uint32_t atEndOfFile;
    EndRoutine endRoutine;
    void* iostatAddress;
    int64_t iostatValue;
    int32_t iostatWidth;     // 4 or 8
    char* iomsgAddress;
    int32_t iomsgLength;
    char* messageBuffer;
    int32_t messageLength;
    int32_t* sizeAddress;
    int32_t* numAddress;
    int32_t* idAddress;
    int64_t* idAddress8;
    int64_t recordNumber;
    char* scanBuffer;
    // List-directed output state; the item routines own its meaning.
    uint32_t ld_skip_separator;
    uint32_t ld_first_item;
    uint32_t ld_last_was_char;  // an undelimited character value was the last item
    uint32_t ld_delimited;
    uint32_t ld_in_namelist;
    char ld_delim_char;
    char ldSeparator;
    // List-directed input: the scanner keeps its place here from item to item, and a
    // repeat count keeps the value in hand for the items it serves.
    uint32_t ld_state;
    int32_t ld_pending_char;        // a byte kept for the next scan, or -1
    uint32_t ld_pending_class;
    uint32_t ld_at_record_start;    // a record was just ended; the statement's end skips none
    uint32_t ld_skip_column;        // drop the next byte (first column of a namelist record)
    uint32_t ld_in_subscript;
    uint8_t ld_subscript_end;
    uint32_t ld_class_map[25];
    int64_t ld_repeat;              // items the value in hand still serves
    char* ld_rescan_buffer;         // every byte of the value in hand, kept between statements
    char* ld_rescan_cursor;
    int32_t ld_rescan_size;
    int32_t ld_rescan_fill;
    char* ld_name_start;
    int32_t ld_name_length;
    uint32_t ld_null_value;
    uint32_t ld_type_error;
    uint32_t ld_item_type;
    uint32_t ld_item_kind;          // part length of a complex value in hand, 0 for a real one
    char* ld_char_dest;
    int32_t ld_char_room;
    uint32_t ld_blank_zero;
    int64_t ld_int_value;
    int32_t ld_overflow_size;       // byte size at which the value in hand overflows, or 0
    alignas(8) unsigned char ld_value_cache[2][16];
    uint32_t ld_undelimited_ok;
    uint32_t ld_next_name;
    uint32_t ld_ieee_kind;          // 0, or the row of the infinity or NaN scanned
    uint32_t array_abandon;         // the scanner asks the array in progress to stop
    uint32_t arrayActive;           // an array is being walked: arrayIndex says where
    int32_t arrayIndex;             // 1-based element of the array in progress
    uint32_t nl_name_pending;
    uint32_t nl_equal_seen;
    uint32_t nl_name_begun;
    uint32_t nl_end_seen;
    const char* nl_group_name;      // the group a namelist READ looks for
    int32_t nl_group_length;
    uint32_t nl_mixed_case;         // group names compare as they stand, not upper-cased
    void* aioRequest;
    ReadItemRoutine readItem;
    WriteItemRoutine writeItem;
    int64_t recordTag;       // the leading length tag of the unformatted record being read
    void* ioLengthAddress;   // INQUIRE(IOLENGTH=): the variable, 4 or 8 bytes wide,
    int32_t ioLengthWidth;
    int64_t ioLength;        // and the bytes the items would take
    uint32_t itemAsync;      // the item in hand may move asynchronously
    uint8_t* ufmt_swap_area; // where swapped runs are reversed; owned, kept between statements
    int64_t streamPosition;  // POS= minus 1, -1 when not given
    uint32_t shortRecordSeen;
    UnitRecord* parentUnit;  // what a derived-type I/O parent leaves for its child
    uint32_t parentFlags;
    int32_t parentLeftLimit;
    uint32_t parentBlank;
    uint32_t parentDelim;
    uint32_t parentSign;
    uint32_t parentDecimal;
    uint32_t parentRound;
    uint32_t parentPad;
    uint32_t dtioChild;
    uint32_t nested;         // pushed on top of a busy context
    uint32_t dtioFlags;
    LocalContext** anchor;   // address of _LocalContext
    int32_t msgLine;
    const char* msgFile;
    int32_t msgFileLength;
    uint32_t modePad;
    uint32_t modeDelim;
    uint32_t modeBlank;
    uint32_t modeSign;
    uint32_t modeDecimal;
    uint32_t modeRound;
    int32_t command;
    // The code of a format encoded at run time. Each context has its own, so that a
    // statement started inside another one does not overwrite its parent's format.
    FormatCodeBuffer formatBuffer;
    FormatCache* formatCache;  // the codes of recent format texts; format/format_cache.h
    FormatState fmt;
};

// The process-wide state. _LocalContext[0] is the top of the context stack, [1] the
// bottom context of the first block.
extern uint32_t RTE_Initialized;
extern GlobalContext* _GlobalContext;
extern LocalContext* _LocalContext[2];

void InitializeRTE();

// Every exported entry point calls this before anything else; there is no constructor.
inline void EnsureRuntimeStarted() {
    if (RTE_Initialized == 0) InitializeRTE();
}

GlobalContext* CreateGlobalContext(uint32_t task, GlobalContext* parent);
void DestroyGlobalContext(GlobalContext* global);
LocalContext* CreateLocalContext(GlobalContext* global);
void GrowLocalContext(LocalContext* context);
void NeuterLocalContext(LocalContext* context);
void FreeLocalContext(LocalContext** anchor);
GlobalContext* FindGlobalContext(int32_t flag);
void SetBufferingFlag(GlobalContext* global, LocalContext* context);
void FillScannerStateTables(GlobalContext* global);

// Writes a fixed text to descriptor 2 and sends the process signal 6: for failures where
// no message machinery can be trusted.
[[noreturn]] void CatastrophicExit(const char* text);

// The end of the run-time: flushes and closes every unit and frees all state. A later
// call starts the run-time anew.
void RTECleanup();
[[noreturn]] void AbnormalExit(int32_t status);
// The message of STOP and ERROR STOP (row 0 and 1) on unit 0, with the flag report.
struct StopCode;
void PrintStop(const StopCode* code, int32_t value, const int32_t* flags, int row);
