// Fuzzes formatted output: any format text, any statement options and any item values
// give fields or numbered errors, never a fault or a write outside the record. The
// program recovers from every error, as a program with ERR_RECOVERY=YES does.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "vrn90.h"

namespace {

constexpr uint32_t kInternalWrite =
    VRN_STATEMENT_FLAGS(VRN_KIND_FORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL) | VRN_FLAG_INTERNAL;
constexpr int32_t kRecord = 64;
constexpr int32_t kRecords = 4;

// The statement options that change editing.
constexpr uint32_t kOptionBits[] = {VRN_OPTION_BOZ_RULE, VRN_OPTION_NO_LEADING_ZERO, VRN_OPTION_FORMAT_CONTROL_RULE,
                                    VRN_OPTION_NEGATIVE_ZERO_SIGN, VRN_OPTION_LOGICAL_OUTPUT,
                                    VRN_OPTION_REAL_OUTPUT_RULE, 0x1u, 0x4u};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 24) return 0;
    static bool started = false;
    if (!started) {
        setrteopts_("err_recovery=yes:vrq_messages=no", 32);
        started = true;
    }
    uint32_t options = 0;
    for (int bit = 0; bit < 8; ++bit) {
        if (data[0] & (1u << bit)) options |= kOptionBits[bit];
    }
    // Item values from the bytes after the options; the format text is what remains.
    int64_t integer;
    double real;
    float single;
    std::memcpy(&integer, data + 1, sizeof integer);
    std::memcpy(&real, data + 9, sizeof real);
    std::memcpy(&single, data + 17, sizeof single);
    int32_t itemCount = data[21] % 12;
    std::string format(reinterpret_cast<const char*>(data + 22), size - 22);
    // Repeat counts multiply through nested groups, and a format asking for 10^12 moves
    // of the column takes its time legitimately: keep the work of one input bounded. The
    // encoder's own harness sees the large numbers.
    int32_t digitRun = 0, groups = 0;
    for (char c : format) {
        digitRun = (c >= '0' && c <= '9') ? digitRun + 1 : 0;
        if (c == '(') ++groups;
        if (digitRun > 2 || groups > 4) return 0;
    }

    // Guard bytes on both sides of the internal file catch a write outside it.
    char area[kRecord * kRecords + 32];
    std::memset(area, '#', sizeof area);
    InternalFile file{reinterpret_cast<uintptr_t>(area + 16), kRecord * kRecords, kRecord};
    InternalFile* address = &file;
    VrnFormatBlock block{1, format.data(), format.size(), 0, nullptr};
    int32_t iostat = 0;
    LocalContext* statement = _vrnBeginIO(&address, kInternalWrite, nullptr, options, &iostat, 0, &block);
    double pair[2] = {real, real * 1e-17};
    float complexValue[2] = {single, -single};
    const char text[] = "Fortran";
    int32_t one = 1, two = 2, four = 4, eight = 8, sixteen = 16, seven = 7;
    for (int32_t i = 0; i < itemCount; ++i) {
        switch ((data[21] / 12 + i) % 8) {
        case 0: _vrnWriteFmt(statement, &integer, &four, &four, 0); break;
        case 1: _vrnWriteFmt(statement, &integer, &eight, &eight, 0); break;
        case 2: _vrnWriteFmt(statement, &real, &eight, &eight, 4); break;
        case 3: _vrnWriteFmt(statement, &single, &four, &four, 4); break;
        case 4: _vrnWriteFmt(statement, pair, &sixteen, &sixteen, 4); break;
        case 5: _vrnWriteFmt(statement, complexValue, &eight, &four, 5); break;
        case 6: _vrnWriteFmt(statement, text, &seven, &seven, 2); break;
        default: _vrnWriteFmt(statement, &integer, i % 2 ? &one : &two, i % 2 ? &one : &two, 1); break;
        }
    }
    _vrnEndIO(statement);
    for (int i = 0; i < 16; ++i) {
        if (area[i] != '#' || area[sizeof area - 1 - i] != '#') std::abort();
    }
    // Every byte of the records is a field's character, one the format text holds (escapes
    // included) or one of an item's own bytes (A editing of any type copies them), never one
    // from elsewhere.
    bool known[256] = {};
    auto allow = [&](const void* bytes, size_t count) {
        for (size_t i = 0; i < count; ++i) known[static_cast<const unsigned char*>(bytes)[i]] = true;
    };
    allow(format.data(), format.size());
    if (format.find('\\') != std::string::npos) allow("\n\r\t\b\f", 6);  // backslash escapes, NUL too
    allow(data + 1, 21);
    allow(pair, sizeof pair);
    allow(complexValue, sizeof complexValue);
    for (int32_t i = 16; i < 16 + kRecord * kRecords; ++i) {
        auto byte = static_cast<unsigned char>(area[i]);
        if ((byte < 0x20 || byte > 0x7E) && !known[byte]) std::abort();
    }
    return 0;
}
