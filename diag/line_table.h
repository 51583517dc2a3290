// The DWARF line tables (.debug_line, versions 2 to 5) of an object: the source file and
// line of code addresses. All addresses of one traceback are looked up in one pass over
// the tables, which costs no allocation and reads each table once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "diag/elf_image.h"

namespace diag {

struct LineQuery {
    uint64_t address = 0;  // at the object's link address
    size_t frame = 0;      // the caller's: the queries are sorted by address
    bool found = false;
    uint32_t line = 0;
    uint64_t unitOffset = 0;  // the line table the row is in
    uint64_t file = 0;        // its file number there
};

// Fills `found`, `line`, `unitOffset` and `file` of each query whose address a row of
// the tables covers. Damaged tables end the search of the table, not the program.
void FindLines(const ElfImage& image, LineQuery* queries, size_t count);

// The name of the query's file, with its directory when the table gives one and the
// name is relative, cut to `capacity` - 1 characters; 0 when it cannot be found.
size_t LineFileName(const ElfImage& image, const LineQuery& query, char* out, size_t capacity);

}  // namespace diag
