// The list-directed scanner, shared by list-directed input, namelist input and namelist
// subscripts. The item routines drive it; the fields it keeps live in LocalContext.
#pragma once

#include <cstdint>

struct LocalContext;

// Reads one value into the context's fields: 1 when a value or a null value is ready, 0
// when the statement is to stop (a "/", the end of the file, an error). With `rescan` it
// reads the bytes of the value in hand again; with `resume` it goes on where the last
// scan finished, for the rest of a complex value.
int32_t LDScan(LocalContext* context, int32_t rescan, int32_t resume);

// When the next value in place is a plain number of the item's type between blanks or
// commas, takes it as the scan would and says so; otherwise takes nothing.
bool PlainNumberInPlace(LocalContext* context);

// The rescan buffer: allocated on a statement's first need and grown by 4096 bytes.
int32_t LDReadInit(LocalContext* context);
int32_t LDGrowRescanBuffer(LocalContext* context);

// Reports; each gives the answer of ErrorHandler.
int32_t LDItemNotLogical(LocalContext* context);
int32_t LDItemNotComplex(LocalContext* context);
int32_t LDReportSyntaxError(LocalContext* context);

// Blanks the rest of the character item being read.
void LDBlankFillCharacter(LocalContext* context);
