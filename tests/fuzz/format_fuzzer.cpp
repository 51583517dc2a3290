// Fuzzes the format encoder: any text under any flags gives a well-formed code or a clean
// stop, never a fault, a leak or a read past the text.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "format/descriptor_table.h"
#include "format/encoded_format.h"
#include "vrn90.h"

namespace {

intptr_t answer = 1;
intptr_t Callback(intptr_t code, intptr_t, intptr_t, intptr_t virtualCode, intptr_t, intptr_t, intptr_t, intptr_t) {
    if (code < 1 || code > 50 || virtualCode < 0 || virtualCode >= kVirtualCodes) std::abort();
    return answer;
}

// Walks the operations to End: every op known, every length consistent with the header.
template <class Unit>
void CheckCode(Unit* code, int32_t bytes) {
    if (bytes != code[VRN_FMT_HEADER_LENGTH] * static_cast<int32_t>(sizeof(Unit))) std::abort();
    bool contiguous = (code[VRN_FMT_HEADER_FLAGS] & VRN_FMT_CONTIGUOUS) != 0;
    int64_t counted = kHeaderUnits;
    Unit* op = code + kHeaderUnits;
    for (;;) {
        if (contiguous && (op - code) >= code[VRN_FMT_HEADER_LENGTH]) std::abort();
        auto word = static_cast<uint32_t>(op[0]);
        if (word == kContOpWord) {
            op = ContTarget(op);
            if (op == nullptr || contiguous) std::abort();
            continue;
        }
        uint32_t descriptor = DescriptorCode(word);
        if (descriptor >= kDescriptorCodes) std::abort();
        int64_t units = 1 + DescOperands[descriptor];
        if (descriptor >= VRN_FMT_APOSTROPHE && descriptor <= VRN_FMT_H) units = op[2];
        if (descriptor == VRN_FMT_DT) units = op[4];
        if (units < 1) std::abort();
        counted += units;
        if (word == 0x80050000u) break;
        op += units;
    }
    if (counted != code[VRN_FMT_HEADER_LENGTH]) std::abort();
}

template <class Unit>
void Release(void* code, bool compileTime, void (*freeExtensions)(void*)) {
    auto* header = static_cast<Unit*>(code);
    if (compileTime) {
        if (code != CompileTimeBuffer(sizeof(Unit) == 8)->base) std::free(code);  // a packed chain
    } else {
        freeExtensions(header);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    uint32_t flags = data[0] | (uint32_t{data[1]} << 8);
    answer = data[2] & 1 ? 1 : (data[2] & 2 ? 0 : 5);
    if (data[2] & 0x80) answer = 1;
    // Exactly the text's bytes on the heap, so that a read past them is caught.
    size_t length = size - 3;
    auto* exact = static_cast<char*>(std::malloc(length + 1));
    if (length > 0) std::memcpy(exact, data + 3, length);
    void* code = nullptr;
    int32_t bytes = 0, count = 0;
    VrnFormatExpression* expressions = nullptr;
    intptr_t result = _vrnencodeformat(exact, static_cast<int32_t>(length), flags, Callback, &count,
                                       &expressions, &code, &bytes);
    std::free(exact);
    if (result != 1) {
        if (result != answer && result != 0) std::abort();
        return 0;
    }
    bool compileTime = flags & VRN_FMT_COMPILE_TIME;
    bool wide = _vrnEncodingMode(code) == 2;
    if (wide != ((flags & 0x201u) == 0x201u) || (!wide && _vrnEncodingMode(code) != 1)) std::abort();
    // A compile-time code goes into an object file: packed, with no Cont address.
    if (compileTime && (wide ? static_cast<int64_t*>(code)[VRN_FMT_HEADER_FIRST_CONT]
                             : static_cast<int32_t*>(code)[VRN_FMT_HEADER_FIRST_CONT]) != 0) {
        std::abort();
    }
    if (count > 0 && (expressions == nullptr || !(flags & VRN_FMT_EXPRESSIONS))) std::abort();
    for (int32_t i = 0; i < count; ++i) {
        if (expressions[i].byteOffset < -1 || expressions[i].byteOffset >= bytes) std::abort();
    }
    if (wide) {
        CheckCode(static_cast<int64_t*>(code), bytes);
        Release<int64_t>(code, compileTime, FreeFormatExtensions64);
    } else {
        CheckCode(static_cast<int32_t*>(code), bytes);
        Release<int32_t>(code, compileTime, FreeFormatExtensions);
    }
    return 0;
}
