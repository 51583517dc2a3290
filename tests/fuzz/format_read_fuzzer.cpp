// Fuzzes formatted input: random records read under a mix of descriptors, with random
// item types, give values or numbered errors, never a fault or a read outside the
// records. The records lie in a block of their exact size, so that the address sanitizer
// sees any byte read behind it. The program recovers from every error, as a program
// with ERR_RECOVERY=YES does.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "vrn90.h"

namespace {

constexpr uint32_t kInternalRead =
    VRN_STATEMENT_FLAGS(VRN_KIND_FORMATTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL) | VRN_FLAG_INTERNAL;

const char* const kFormats[] = {
    "(5I4)", "(3F8.3,BZ,2E10.2)", "(2ES12.4E2,DC,F6.1)", "(I3,Z4,O5,B9,L3,A5)", "(10I12)", "(5ES24.16)",
    "(T5,I2,TL3,F4.1,3X,A2/I8)", "(2P,F7.0,-1P,E9.1,Q,A)", "(SP,G10.3,RU,F9.4,RD,F9.4,RC,D12.3)", "(I2,:,F3.0)",
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4) return 0;
    static bool started = false;
    if (!started) {
        setrteopts_("err_recovery=yes:vrq_messages=no", 32);
        started = true;
    }
    const char* format = kFormats[data[0] % (sizeof kFormats / sizeof kFormats[0])];
    uint32_t options = data[1] & 1u;  // the Q count descriptor
    int32_t records = 1 + data[1] / 64;
    size_t bytes = size - 3;
    int32_t length = static_cast<int32_t>(bytes) / records;
    if (length == 0) return 0;
    char* area = static_cast<char*>(std::malloc(static_cast<size_t>(length) * records));
    std::memcpy(area, data + 3, static_cast<size_t>(length) * records);
    InternalFile file{reinterpret_cast<uintptr_t>(area), static_cast<uintptr_t>(length) * records,
                      static_cast<uint32_t>(length)};
    InternalFile* address = &file;
    VrnFormatBlock block{1, format, std::strlen(format), 0, nullptr};
    int32_t iostat = 0;
    LocalContext* statement = _vrnBeginIO(&address, kInternalRead, nullptr, options, &iostat, 0, &block);
    int64_t integer = 0;
    double pair[2] = {};
    float complexValue[2] = {};
    char text[9];
    int32_t one = 1, two = 2, four = 4, eight = 8, sixteen = 16, nine = 9;
    uint32_t kinds = data[2];
    for (int32_t i = 0; i < 12; ++i) {
        switch ((kinds + static_cast<uint32_t>(i) * 7) % 9) {
        case 0: _vrnReadFmt(statement, &integer, &four, &four, 0); break;
        case 1: _vrnReadFmt(statement, &integer, &eight, &eight, 0); break;
        case 2: _vrnReadFmt(statement, pair, &eight, &eight, 4); break;
        case 3: _vrnReadFmt(statement, complexValue, &four, &four, 4); break;
        case 4: _vrnReadFmt(statement, pair, &sixteen, &sixteen, 4); break;
        case 5: _vrnReadFmt(statement, complexValue, &eight, &four, 5); break;
        case 6: _vrnReadFmt(statement, text, &nine, &nine, 2); break;
        case 7: _vrnReadFmt(statement, &integer, &two, &two, 0); break;
        default: _vrnReadFmt(statement, &integer, &one, &one, 1); break;
        }
    }
    _vrnEndIO(statement);
    std::free(area);
    return 0;
}
