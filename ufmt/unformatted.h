// Unformatted I/O: the Begin and End routines that frame a record, and the errors of its
// item routines (_vrnWriteUfmt and _vrnReadUfmt, declared in the public header).
//
// A sequential record is a length tag, the payload and the tag again. The leading tag is
// written before the items from the length the compiler knew, or as -1 and rewritten at
// the end; the trailing one is written by the record layer. Direct records are RECL bytes
// without tags, stream files are bytes only.
#pragma once

#include <cstdint>

struct LocalContext;

// The kind argument is null or the address of the 64-bit payload length the compiler knew.
int32_t BeginIOUfmt(LocalContext* context, void* kindArgument);
int32_t EndIOUfmt(LocalContext* context);

// INQUIRE(IOLENGTH=): a WRITE that writes nothing. Its items go through the unformatted
// item routines, whose writeItem only counts; the end stores the count.
void BeginIOLength(LocalContext* context, void* variable, int32_t width);
bool CountsIOLength(const LocalContext* context);

// The leading length tag of a sequential record just read: the record's length, or
// message 3 for a tag no record can have.
void TakeLeadingTag(LocalContext* context, const uint8_t* tag);

// A short write or read of an item: the report its cause calls for, and no more items.
void UfmtWriteError(LocalContext* context);
void UfmtReadError(LocalContext* context);

// Bits of the type word of an unformatted item, above its type code in bits 0 to 15.
constexpr uint32_t kUfmtTypeMask = 0xFFFFu;
constexpr uint32_t kUfmtVector = 1u << 26;     // a 16-byte vector of kind-sized elements
constexpr uint32_t kUfmtAsynchronous = 1u << 29;
constexpr uint32_t kUfmtComponent = 1u << 30;  // a derived-type component in its array form
constexpr uint32_t kUfmtRun = 1u << 31;        // a contiguous run of elements
