// What a compiler does with a constant format: encode it once, at compile time, and pass
// the code in the format block.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "vrn90.h"

struct CompiledFormat {
    std::vector<uint8_t> code;
    VrnFormatBlock block{};
    explicit CompiledFormat(const char* text) {
        void* encoded = nullptr;
        int32_t bytes = 0, count = 0;
        VrnFormatExpression* table = nullptr;
        uint32_t flags = VRN_FMT_COMPILE_TIME | (sizeof(void*) == 8 ? VRN_FMT_64BIT : 0u);
        _vrnencodeformat(text, static_cast<int32_t>(std::strlen(text)), flags, nullptr, &count, &table, &encoded,
                         &bytes);
        code.assign(static_cast<uint8_t*>(encoded), static_cast<uint8_t*>(encoded) + bytes);
        block = VrnFormatBlock{1, nullptr, reinterpret_cast<uintptr_t>(code.data()), 0, nullptr};
    }
};
