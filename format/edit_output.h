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
// The text of one real field. Past the digits a conversion computes, every digit is "0",
// and d (up to 2000, or any size under G) can ask for far more of them than a buffer on the
// stack should hold, so runs of "0" are kept as counts: a field is pieces of text, each
// followed by a run of zeros.
struct RealField {
    static constexpr int32_t kTextBytes = 192;  // sign, digits, point and exponent digits
    static constexpr int32_t kPieces = 8;
    struct Piece {
        int32_t start;       // into text
        int32_t length;
        int64_t zerosAfter;  // "0" characters behind the piece's text
    };
    char text[kTextBytes];
    Piece pieces[kPieces];
    int32_t pieceCount = 0;
    int32_t used = 0;
    int64_t length = 0;   // the whole field
    bool overflow = false;

    void Put(char c) { Put(&c, 1); }
    void Put(const char* characters, int32_t count);
    void PutZeros(int64_t count);
    // The single piece of a field without long zero runs, or null.
    const char* Plain(int32_t* plainLength) const;
};

// Each builds the field of a real of `size` 4, 8 or 16 bytes into `field` under the state's
// w, d, e, scale and modes, without its leading and trailing blanks. The result is false
// when the field does not fit; a w of 0 in the state becomes the field's width.
bool FmtRToF(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state);
bool FmtRToQED(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state,
               char letter);
bool FmtRToEExp(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state,
                char letter);
bool FmtRToEN(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state);
bool FmtRToENExp(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state);
bool FmtRToES(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state);
bool FmtRToESExp(LocalContext* context, const void* value, int32_t size, RealField* field, FormatState* state);
