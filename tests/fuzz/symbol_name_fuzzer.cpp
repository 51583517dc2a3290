// Fuzzes the demangler: any symbol name, into a small room and a large one.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "diag/symbol_names.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<char> symbol(data, data + size);
    symbol.push_back(0);
    for (size_t capacity : {size_t{1}, size_t{16}, size_t{4096}}) {
        std::vector<char> out(capacity);
        size_t length = diag::ReadableName(symbol.data(), out.data(), capacity);
        if (length >= capacity || std::strlen(out.data()) != length) std::abort();
    }
    return 0;
}
