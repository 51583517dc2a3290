// Fuzzes the option text parser and the keyword trie: any bytes must give a result or a
// message number, never a fault or a read past the text.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "core/context.h"
#include "core/options.h"
#include "vrn90.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static GlobalContext global;  // only its option block is used
    SetDefaultOptions(&global);
    std::vector<char> text(data, data + size);
    text.push_back(0);
    char option[64];
    char value[256];
    int32_t message = ParseRTEOptions(&global.options, text.data(), option, value);
    if (message != 0 && message != 37 && (message < 113 || message > 118) && message != 237) std::abort();
    std::free(global.options.ufmtUnits);
    global.options.ufmtUnits = nullptr;
    // The trie reads exactly the length it is given.
    std::vector<char> exact(data, data + size);
    uint32_t keyword = _vrnFindIOKeyword(exact.data(), static_cast<int32_t>(exact.size()));
    if ((keyword & 0xFFFFu) >= VRN_KEYWORD_COUNT) std::abort();
    return 0;
}
