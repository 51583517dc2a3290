// Fuzzes the DWARF line-table reader: any bytes as .debug_line (and as the string
// sections of version 5), searched for a spread of addresses.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "diag/line_table.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    // The first byte picks the byte order; the copy is exactly as long as the input, so
    // that a read past it is seen.
    std::vector<uint8_t> lines(data + 1, data + size);
    diag::ElfImage image;
    image.bigEndian = data[0] & 1;
    image.is64 = data[0] & 2;
    image.debugLine = {lines.data(), lines.size()};
    image.debugLineStr = {lines.data(), lines.size()};
    image.debugStr = {lines.data(), lines.size() / 2};
    diag::LineQuery queries[8];
    for (int i = 0; i < 8; ++i) queries[i].address = static_cast<uint64_t>(i) * 0x11 + (data[0] >> 2);
    diag::FindLines(image, queries, 8);
    char file[32];
    for (const diag::LineQuery& query : queries) {
        size_t length = diag::LineFileName(image, query, file, sizeof file);
        if (length >= sizeof file) std::abort();
    }
    return 0;
}
