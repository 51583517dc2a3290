// List-directed and namelist I/O: the Begin and End routines of those statements and
// their item routines.
#pragma once

#include <cstdint>

struct LocalContext;

// A list-directed WRITE starts its record with one blank and ends it at _vrnEndIO.
int32_t BeginIOWriteLd(LocalContext* context, void* kindArgument);
int32_t EndIOWriteLd(LocalContext* context);
// Ends the record being written and begins the next, with a blank when asked; the end of
// an internal file is message 2. false when the statement must stop.
bool LdNewRecord(LocalContext* context, bool withBlank);

// A list-directed READ skips the rest of its last record at _vrnEndIO.
int32_t BeginIOReadLd(LocalContext* context, void* kindArgument);
int32_t EndIOReadLd(LocalContext* context);
// A statement's scan from its first byte: nothing pending, every class its own.
void LDStartScan(LocalContext* context);
// End of file in a list-directed READ.
int32_t LDEndOfFileError(LocalContext* context);
// Frees a context's rescan buffer when the contexts go.
void LDReadCleanup(LocalContext* context);

// The item routines of list-directed input by item type code. Their arguments differ by
// type; callers cast. The _DTIO table differs in its derived-type entry.
using ReadLDFunction = void (*)(void);
extern const ReadLDFunction ReadLDFns[7];
extern const ReadLDFunction ReadLDFns_DTIO[7];
// Before a defined input procedure: skips the separators ahead of its value and gives the
// byte after them back to the input, so that the child's scan starts on it. false when
// the statement stopped on the way (end of file, an error).
bool LdPositionForChild(LocalContext* context);

// The real-number text of list-directed and namelist output; the result is its length.
int32_t LdNlR4ToDec(LocalContext* context, const void* value, char* out, bool plus, bool comma);
int32_t LdNlR8ToDec(LocalContext* context, const void* value, char* out, bool plus, bool comma);
int32_t LdNlR16ToDec(LocalContext* context, const void* value, char* out, bool plus, bool comma);

// The item routines by item type code (0 integer ... 6 derived type). Their arguments
// differ by type; callers cast to the routine's own type.
using LdWriteFunction = void (*)(void);
extern const LdWriteFunction LdWriteFunctions[7];
extern const LdWriteFunction LdWriteFunctions_DTIO[7];
// Before a defined output procedure: the separator its first item would have written, so
// that the child's first item writes none.
void LdSeparateChild(LocalContext* context);
