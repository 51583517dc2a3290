// Record transport: moving bytes between the statement layers and files.
//
// The lower level works on a UnitRecord (the unit buffer, WriteUnit, FlushUnit); the
// upper level works on a LocalContext and knows records (IOPutByte, IOWrite, IOFill,
// IOTerminateRecord). Item layers call only the upper level, which serves internal and
// external files alike. Connection (OPEN, preconnection, implicit open) lives here too.
#pragma once

#include <cstdint>

struct GlobalContext;
struct LocalContext;
struct UnitRecord;
struct KeywordList;

// Results of AttachBufferToUnit.
constexpr int32_t kAttachOk = 0;
constexpr int32_t kAttachNoMemory = 1;
constexpr int32_t kAttachReclTooLarge = 2;

// ---- Unit buffer ----
int32_t AttachBufferToUnit(GlobalContext* global, UnitRecord* unit);
int32_t DetachBufferFromUnit(GlobalContext* global, UnitRecord* unit, int32_t closeDescriptor);
int32_t WriteUnit(GlobalContext* global, UnitRecord* unit, const void* bytes, int32_t count);
int32_t WriteNonstop(int fd, const void* bytes, int32_t count);
int32_t FlushUnit(GlobalContext* global, UnitRecord* unit, int32_t complete);
void FlushAllUnits(GlobalContext* global);
void FlushAllOutputUnits(GlobalContext* global);
int32_t TruncateUnit(GlobalContext* global, UnitRecord* unit);

// ---- Read side ----
int32_t FillUnit(GlobalContext* global, UnitRecord* unit);
int32_t ReadUnit(GlobalContext* global, UnitRecord* unit, void* into, int32_t count);
int32_t IOGetByte(LocalContext* context);
// Gives the byte IOGetByte returned last back to the record, for the next reader.
void IOUngetByte(LocalContext* context);
int32_t IORead(LocalContext* context, void* into, int32_t count);
// Reads up to `width` bytes of the current record, stopping behind `separator`, which is
// consumed and not stored.
int32_t IOReadAndScan(LocalContext* context, char* into, int32_t width, int separator, int32_t* separatorFound);
// The same without the padding: the bytes the record held.
int32_t IOReadFieldBytes(LocalContext* context, char* into, int32_t width, int separator, int32_t* separatorFound);
// The next `width` bytes where they stand (the unit's buffer or the internal record), or
// null when they are not all held there; they may run past the record's end, which the
// caller must recognise. IOConsumeInPlace then takes them as read.
const char* IOFieldInPlace(LocalContext* context, int32_t width);
void IOConsumeInPlace(LocalContext* context, int32_t width);
// All the bytes that can be read in place from the current column on: the rest of an
// internal record, or what the unit's buffer holds (which may run past an external
// record's newline). 0 when only IOGetByte can go on.
int32_t IORecordWindow(LocalContext* context, const char** window);
// Whether a field that the record's end cut short counts as complete: PAD="YES".
bool IOShortFieldPadded(const LocalContext* context);
// What the real-field scanner saw: its last state, where each state was entered, and
// where the first character that is not a blank stands (-1 for none).
struct RealFieldScan {
    int32_t state;
    int32_t first;
    int32_t entered[61];
};
// IOReadFieldBytes with the real-field scanner run over each byte as it is read.
int32_t IOReadRealAndScan(LocalContext* context, char* into, int32_t width, int separator, int32_t* separatorFound,
                          int32_t decimalComma, RealFieldScan* scan);
int32_t IOFindRemainingLength(LocalContext* context);
// The end of file of a READ: message 1 with IOSTAT= -1 on a unit, message 2 with -2 (or
// -1 under IOSTAT_END=2003STD) on an internal file.
void IORaiseEndOfFile(LocalContext* context);
// The read side of IOTerminateRecord: 1, or 0 at the end of the file or after an error.
int32_t TerminateReadRecord(LocalContext* context);

// ---- Records ----
int32_t IOPutByte(LocalContext* context, int byte);
int32_t IOWrite(LocalContext* context, const void* bytes, int32_t count);
int32_t IOFill(LocalContext* context, int byte, int32_t count);
int32_t IOTerminateRecord(LocalContext* context);

// ---- Positioning ----
constexpr int32_t kEndOfRecordOffset = INT32_MIN;
int32_t IOSetRecordOffset(LocalContext* context, int32_t offset);
constexpr int32_t kSeekRelative = 1;  // TR, X, and TL with a negative offset
constexpr int32_t kSeekAbsolute = 3;  // T
// Moves to a column of the current record by T, TL, TR or X; with `deferred` the column
// is only noted and the next transfer reaches it.
int32_t IOSeekToColumn(LocalContext* context, int32_t offset, int32_t mode, int32_t deferred);
int32_t IOSeekToEndOfFile(LocalContext* context);
// The size of the unit's file with the written bytes its buffer still holds; -1 when
// the file has no size (a pipe, a terminal).
int64_t UnitFileSize(const UnitRecord* unit);
int32_t RepositionUnit(GlobalContext* global, UnitRecord* unit, int64_t offset);
int32_t SeekUnitToFilePosition(GlobalContext* global, LocalContext* context, UnitRecord* unit, int64_t offset);
constexpr int32_t kSeekStart = 0;
constexpr int32_t kSeekBackOneRecord = 1;
constexpr int32_t kSeekEnd = 2;
int32_t SeekUnitToRecord(GlobalContext* global, UnitRecord* unit, int64_t record, int32_t mode);

// ---- Connection ----
constexpr int32_t kMaxFileName = 4096;
// Trims the trailing blanks and NULs of a FILE= value; 1 when a NUL stands inside the
// name, which is then cut there.
int32_t TrimFileName(const char* name, int32_t* length);
void PreconnectUnits(GlobalContext* global, LocalContext* context);
int32_t PreconnectOneUnit(GlobalContext* global, LocalContext* context, int32_t unitNumber, int descriptor);
int32_t QueryDeviceInfo(UnitRecord* unit, const char* nameForMessages);
int32_t ImplicitOpen(GlobalContext* global, LocalContext* context, UnitRecord* unit, uint32_t statementFlags);
int32_t OpenCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords);
int32_t CloseCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords);
int32_t RewindCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords);
int32_t BackspaceCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords);
int32_t EndfileCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords);
int32_t InquireCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords);
int32_t FlushCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords);
