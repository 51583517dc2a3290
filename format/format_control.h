// Format control: the interpreter of an encoded format, run once for every data item, and
// the Begin and End routines of a formatted statement.
#pragma once

#include <cstdint>

#include "format/format_state.h"

struct LocalContext;

// Data item types, as the compiler passes them.
constexpr int32_t kTypeInteger = 0;
constexpr int32_t kTypeLogical = 1;
constexpr int32_t kTypeCharacter = 2;
constexpr int32_t kTypeByte = 3;
constexpr int32_t kTypeReal = 4;
constexpr int32_t kTypeComplex = 5;
constexpr int32_t kTypeDerived = 6;
constexpr int kItemTypes = 7;

extern const char* const TypeName[6];
// Edit descriptors an item of each type takes: a complex value takes two.
extern const int32_t NumDesc[kItemTypes];
// What the standard allows: a row of seven truths by item type for each descriptor code.
struct DescTypeMatchTable {
    uint8_t rows[62][kItemTypes];
};
extern const DescTypeMatchTable DescTypeMatch;

// Results of FormatControl and SetupDataDescriptor.
constexpr int32_t kFormatTransfer = 0;  // the descriptor is set: transfer the item
constexpr int32_t kFormatMismatch = 1;  // the item does not fit the descriptor
constexpr int32_t kFormatStop = 3;      // an error has been handled: transfer no more

// formatBlock is the compiler's VrnFormatBlock.
int32_t BeginIOFmt(LocalContext* context, void* formatBlock);
int32_t EndIORWFmt(LocalContext* context);

// Runs the format to the next data descriptor for an item of `type`, `size` bytes at
// `item` (read by the G rules). With endOfList it runs to the format's natural stop.
int32_t FormatControl(LocalContext* context, int32_t endOfList, int32_t type, int32_t size, const void* item);
int32_t SetupDataDescriptor(LocalContext* context, uint32_t code, int32_t size);

// The G rules of a real value of size 4, 8 or 16: E stays, or F with trailing blanks.
void ApplyF77Rules(FormatState* state, int32_t operandCount, int32_t size, const void* item);
void ApplyF90Rules(FormatState* state, int32_t operandCount, int32_t size, const void* item);

// A read that ended short: the end of the file or of an internal file, or a record that
// PAD="NO" does not let end early.
void FmtReadError(LocalContext* context);

// What a DT edit descriptor gives a defined I/O procedure: "DT" and its type text, and its
// v-list as integers of the width the format was encoded for. All of it lives in `block`,
// which the caller frees.
struct DefinedEdit {
    void* block;
    const char* iotype;
    int32_t iotypeLength;
    const void* vlist;
    int32_t vlistCount;
};
// Runs format control to the data descriptor of a derived-type item. false when the
// statement is to stop: an error was handled, the descriptor is not DT (message 110), or
// there was no memory (message 37).
bool TakeDefinedEdit(LocalContext* context, DefinedEdit* edit);
