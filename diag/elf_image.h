// An ELF object on disk, mapped read-only: the sections a traceback needs (the symbol
// table and the DWARF line tables) and the search of a function by address. 32- and
// 64-bit objects of either byte order; nothing is allocated but the mapping.
#pragma once

#include <cstddef>
#include <cstdint>

#include "diag/byte_reader.h"

namespace diag {

struct ElfImage {
    const uint8_t* mapped = nullptr;
    size_t mappedSize = 0;
    bool is64 = false;
    bool bigEndian = false;
    ByteView symbols;      // .symtab, or .dynsym when the object is stripped
    ByteView symbolNames;  // its string table
    ByteView debugLine;
    ByteView debugLineStr;
    ByteView debugStr;
};

// Maps the file and finds its sections; false when it is not a readable ELF object.
// A damaged section table leaves the sections it could not find empty.
bool OpenElfImage(const char* path, ElfImage* image);
void CloseElfImage(ElfImage* image);

struct FunctionSymbol {
    const char* name = nullptr;
    uint64_t start = 0;  // the symbol's value, at the object's link address
};

// The function whose symbol covers `address` (at the object's link address): the one
// whose range holds it, else the nearest function symbol below it without a size.
bool FindFunction(const ElfImage& image, uint64_t address, FunctionSymbol* found);

struct FunctionQuery {
    uint64_t address = 0;  // at the object's link address
    size_t frame = 0;      // the caller's: the queries are sorted by address
    FunctionSymbol covering;
    FunctionSymbol below;
};

// FindFunction for many addresses in one pass over the symbol table; the answer of each
// is Answer(query).
void FindFunctions(const ElfImage& image, FunctionQuery* queries, size_t count);
bool Answer(const FunctionQuery& query, FunctionSymbol* found);

}  // namespace diag
