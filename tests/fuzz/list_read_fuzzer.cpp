// Fuzzes list-directed input: random records read into random sequences of items give
// values or numbered errors, never a fault, a leak or a read outside the records. The
// records lie in a block of their exact size, so that the address sanitizer sees any byte
// read behind it. The program recovers from every error, as one with ERR_RECOVERY=YES.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "vrn90.h"

namespace {

constexpr uint32_t kInternalRead =
    VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL) | VRN_FLAG_INTERNAL;

struct CommaMode {
    uint32_t version = 1;
    uint32_t count = 1;
    KeywordEntry entry{VRN_KEY_DECIMAL, 0, VRN_KEY_COMMA};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4) return 0;
    static bool started = false;
    if (!started) {
        setrteopts_("err_recovery=yes:vrq_messages=no", 32);
        started = true;
    }
    uint32_t flags = data[0];
    uint32_t options = (flags & 1u) ? VRN_OPTION_LD_INTERCHANGE : 0;
    alignas(8) static CommaMode comma;
    const KeywordList* keywords = (flags & 2u) ? reinterpret_cast<const KeywordList*>(&comma) : nullptr;
    int32_t records = 1 + static_cast<int32_t>(flags >> 6);
    size_t bytes = size - 3;
    int32_t length = static_cast<int32_t>(bytes) / records;
    if (length == 0) return 0;
    char* area = static_cast<char*>(std::malloc(static_cast<size_t>(length) * records));
    std::memcpy(area, data + 3, static_cast<size_t>(length) * records);
    InternalFile file{reinterpret_cast<uintptr_t>(area), static_cast<uintptr_t>(length) * records,
                      static_cast<uint32_t>(length)};
    InternalFile* address = &file;
    // IOSTAT= or END= keeps the end of the records from ending the program.
    int32_t iostat = 0;
    int32_t* status = (flags & 4u) ? &iostat : nullptr;
    if (status == nullptr) options |= VRN_OPTION_END;
    LocalContext* statement = _vrnBeginIO(&address, kInternalRead, keywords, options, status, 0, nullptr);
    int64_t integer = 0;
    int8_t byte = 0;
    double pair[2] = {};
    float single = 0;
    float complexSingle[2] = {};
    double complexDouble[4] = {};
    char text[7];
    int32_t one = 1, two = 2, four = 4, eight = 8, sixteen = 16, seven = 7, thirtyTwo = 32;
    uint32_t kinds = static_cast<uint32_t>(data[1]) | static_cast<uint32_t>(data[2]) << 8;
    for (int32_t i = 0; i < 12; ++i) {
        switch ((kinds >> (i % 12)) % 11) {
        case 0: _vrnReadLDInt(statement, &integer, 0, &four); break;
        case 1: _vrnReadLDInt(statement, &integer, 0, &eight); break;
        case 2: _vrnReadLDInt(statement, &integer, 0, &two); break;
        case 3: _vrnReadLDReal(statement, pair, 0, &eight); break;
        case 4: _vrnReadLDReal(statement, &single, 0, &four); break;
        case 5: _vrnReadLDReal(statement, pair, 0, &sixteen); break;
        case 6: _vrnReadLDCmplx(statement, complexSingle, &eight, &four); break;
        case 7: _vrnReadLDCmplx(statement, complexDouble, &thirtyTwo, &sixteen); break;
        case 8: _vrnReadLDChar(statement, text, &seven); break;
        case 9: _vrnReadLDLog(statement, &integer, 0, &one); break;
        default: _vrnReadLDByte(statement, &byte, 0, &one); break;
        }
    }
    _vrnEndIO(statement);
    std::free(area);
    return 0;
}
