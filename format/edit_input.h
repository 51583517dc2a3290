// Formatted input: the item routines and the edit conversions from field text to values.
#pragma once

#include <cstdint>

#include "format/format_state.h"

struct LocalContext;

using ReadFmtFunction = int32_t (*)(LocalContext*, void*, const int32_t*, const int32_t*, int32_t);
// Row 6, the derived type, holds _vrnReadFmtDT, whose arguments differ: cast it back.
extern const ReadFmtFunction ReadFmtFns[7];

// Limits by item size in bytes, and the same limits as text for message 96.
extern const uint32_t MaxPosInt[5];
extern const uint32_t MaxNegInt[5];
extern const char* const MaxPosIntStr[9];
extern const char* const MaxNegIntStr[9];
extern const uint8_t MaxHexDigits[9];
extern const uint8_t MaxBinDigits[9];
extern const uint8_t MaxOctDigits[9];
extern const uint8_t MaxHighOctDigit[9];

// An integer into an item of 1, 2, 4 or 8 bytes, in the machine's byte order.
void StoreInteger(void* item, int32_t size, uint64_t value);

// Each converts `length` bytes of field text and stores the value in the item; false when
// a conversion error stopped the statement. An error that the program recovers from
// leaves the value that recovery defines.
bool FmtDecToLongInt(LocalContext* context, void* item, int32_t size, const char* text, int32_t length,
                     int32_t blankZero);
bool FmtDecToI8(LocalContext* context, void* item, const char* text, int32_t length, int32_t blankZero);
bool FmtHexToLongInt(LocalContext* context, void* item, int32_t size, const char* text, int32_t length,
                     int32_t blankZero);
bool FmtOctToLongInt(LocalContext* context, void* item, int32_t size, const char* text, int32_t length,
                     int32_t blankZero);
bool FmtBinToLongInt(LocalContext* context, void* item, int32_t size, const char* text, int32_t length,
                     int32_t blankZero);
bool FmtHexToI(LocalContext* context, void* item, int32_t size, const char* text, int32_t length, int32_t blankZero);
bool FmtOctToI(LocalContext* context, void* item, int32_t size, const char* text, int32_t length, int32_t blankZero);
bool FmtBinToI(LocalContext* context, void* item, int32_t size, const char* text, int32_t length, int32_t blankZero);
// The L field: stores 1 or 0, or leaves the item alone after message 41 or 42.
bool FmtLToLogical(LocalContext* context, void* item, int32_t size, const char* text, int32_t length);

// Room FmtFToR needs behind a field of `length` bytes read with d digits: it edits the
// text in place and may insert a point, zeros and an exponent.
constexpr int32_t FToRSlack(int32_t d) { return (d > 0 ? d : 0) + 24; }
// A real field of `size` 4, 8 or 16 to its value, with the implied point of d, the scale
// factor, BLANK= and ROUND= of the state.
bool FmtFToR(LocalContext* context, void* item, int32_t size, char* text, int32_t length, int32_t blankZero,
             const FormatState* state);
