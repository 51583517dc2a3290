// Walking an array that compiled code passes whole: as one run of bytes where its storage
// allows, as one run per column where only the first dimension is dense, and element by
// element otherwise.
#pragma once

#include <cstdint>

#include "vrn90.h"

struct LocalContext;

// Bits of the type word of an array item, above its type code in bits 0 to 15.
constexpr uint32_t kArrayTypeMask = 0xFFFFu;
constexpr uint32_t kArrayDescribed = 1u << 30;  // the length word holds the address of an RTD
constexpr uint32_t kArrayRun = 1u << 31;        // one contiguous run; the length word is its bytes
constexpr uint32_t kArrayBits = kArrayDescribed | kArrayRun;

// The kind of an item: the int32 word at `kindWord`, except for a derived type, whose kind
// word is the address of its table.
int32_t KindOf(int32_t type, const void* kindWord);
// The table of a derived type from the address of its address; null when there is none.
const VrnDTTable* DerivedTable(const void* kindWord);

// The bytes of one element: the kind, twice it for complex, the element length for
// character, the `size` word of the table for a derived type (0 without one).
int32_t ArrayStepSize(int32_t type, const void* kindWord, int32_t elementLength);

// The element size when every innermost row of the described array is one dense run of
// bytes, so that it can move in one go; 0 when not. `rtdAddress` is the address of the
// descriptor's address, `fallbackLength` the element length when the type has no size.
int32_t CheckSegment(const uintptr_t* rtdAddress, const void* kindWord, uint32_t typeWord, int32_t characterLength,
                     int32_t fallbackLength);

// What an item routine is told about the item besides its address.
struct ItemShape {
    int32_t length;        // bytes of the item: an element, or a run with kArrayRun
    const void* kindWord;  // as KindOf reads it
    uint32_t typeWord;     // type code, with kArrayRun for a run
    int32_t elementLength; // the length argument of the array form (character length)
    const void* dtio;      // address of the address of a DTIO table, or null
};
// Returns non-zero to stop the walk.
using ItemRoutine = int32_t (*)(LocalContext* context, void* item, const ItemShape& shape);

// Runs of `extent * elementSize` bytes, one for each innermost row of the described array,
// through a fixed nest of loops: no iterator to allocate.
int32_t IterateSegment(LocalContext* context, void* address, const RTDArray* rtd, const ItemShape& shape,
                       int32_t elementSize, ItemRoutine routine);

// The general walk of an item of any form (see kArrayDescribed and kArrayRun). With
// `merge`, neighbouring elements of a described array go to the routine as one run.
// Keeps arrayActive and arrayIndex, which tell the scanner and messages where it is; a
// walk that stops early leaves both 0.
int32_t IterateArray(LocalContext* context, void* address, const uintptr_t* lengthWord, const ItemShape& shape,
                     ItemRoutine routine, bool merge);

// An iterator over the elements of a described array whose first element is at `base`;
// null when it cannot be allocated. Free it with std::free.
void* GetNCIterator(const void* rtd, char* base);
// The current element, then moves on; null past the last.
char* NCNextElement(void* iterator);
// The next run of elements that follow each other at `elementSize` apart in storage, as
// many as there are; its address, with the bytes in *length. Null past the last element.
char* NCNextSegment(void* iterator, int32_t elementSize, int32_t* length);
// The element length of a described character array.
int32_t NCElementLength(const void* rtd);
