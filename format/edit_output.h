// Formatted output: the item routines, the edit conversions they call, and the integer
// and real text builders behind them.
#pragma once

#include <cstdint>

#include "format/format_state.h"
#include "vrn90.h"

struct LocalContext;

// The statement's work area for one field; its size is the scan buffer's.
constexpr int32_t kScratchBytes = 2048;

using WriteFmtFunction = int32_t (*)(LocalContext*, const void*, const int32_t*, const int32_t*, int32_t);
// Row 6, the derived type, holds _vrnWriteFmtDT, whose arguments differ: cast it back.
extern const WriteFmtFunction WriteFmtFns[7];

// A write that came up short: the record overflowed (messages 4 and 5) or the file failed.
void FmtWriteError(LocalContext* context);

// ---- Integer text, written backward so that the result ends just before `end` ----
// Each returns the number of characters written.
int32_t FmtLongIntToDec(int32_t value, char* end, bool withPlus);
int32_t FmtI8ToDec(uint32_t high, uint32_t low, char* end, bool withPlus);
int32_t d8toa(uint64_t magnitude, char* end);
int32_t FmtLongIntToHex(uint32_t value, char* end);
int32_t FmtLongIntToOct(uint32_t value, char* end);
int32_t FmtLongIntToBin(uint32_t value, char* end);
// An item of any size, read as an unsigned number in the machine's byte order. `end`
// must have room for 8 * size digits.
int32_t FmtIToHex(int32_t size, const void* item, char* end);
int32_t FmtIToOct(int32_t size, const void* item, char* end);
int32_t FmtIToBin(int32_t size, const void* item, char* end);

// ---- Real editing ----
// Each builds the field of a real of `size` 4, 8 or 16 bytes into `buffer` (at least
// kRealFieldBytes long) under the state's w, d, e, scale and modes, without its leading
// and trailing blanks. The result is the text's start, its length in *length, or null
// when the field does not fit; a w of 0 in the state becomes the field's width.
constexpr int32_t kRealFieldBytes = 2200;
const char* FmtRToF(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                    int32_t* length);
const char* FmtRToQED(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                      int32_t* length, char letter);
const char* FmtRToEExp(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                       int32_t* length, char letter);
const char* FmtRToEN(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                     int32_t* length);
const char* FmtRToENExp(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                        int32_t* length);
const char* FmtRToES(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                     int32_t* length);
const char* FmtRToESExp(LocalContext* context, const void* value, int32_t size, char* buffer, FormatState* state,
                        int32_t* length);
