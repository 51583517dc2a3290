// Fuzzes namelist input: random records read against a group with a member of every type,
// arrays, a character array, and a derived type with named components, give values or
// numbered errors, never a fault or a leak. Each member lies between guard bytes that
// must come out as they went in: no value is stored outside its member. The program
// recovers from every error, as one with ERR_RECOVERY=YES.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "vrn90.h"

namespace {

constexpr uint32_t kInternalRead =
    VRN_STATEMENT_FLAGS(VRN_KIND_NAMELIST, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL) | VRN_FLAG_INTERNAL;
constexpr unsigned char kGuard = 0xA5;

struct CommaMode {
    uint32_t version = 1;
    uint32_t count = 3;
    KeywordEntry entries[3] = {{VRN_KEY_MSGLINE, 1, 0}, {VRN_KEY_MSGFILE, 0, 0}, {VRN_KEY_DECIMAL, 0, VRN_KEY_COMMA}};
};

// Every member in its own slot with guard bytes on both sides.
struct Slot {
    unsigned char before[16];
    alignas(16) unsigned char data[64];
    unsigned char after[16];
};

struct Inner {
    int32_t i;
    double x;
    char s[5];
    int16_t v[4];
};

struct Array1 {
    RTDArray head;
    RTDDimension dims[2];
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    static bool started = false;
    if (!started) {
        setrteopts_("err_recovery=yes:vrq_messages=no", 32);
        started = true;
    }
    uint32_t flags = data[0];
    int32_t records = 1 + static_cast<int32_t>(flags >> 5);
    size_t bytes = size - 1;
    int32_t length = static_cast<int32_t>(bytes) / records;
    if (length == 0) return 0;
    char* area = static_cast<char*>(std::malloc(static_cast<size_t>(length) * records));
    std::memcpy(area, data + 1, static_cast<size_t>(length) * records);
    InternalFile file{reinterpret_cast<uintptr_t>(area), static_cast<uintptr_t>(length) * records,
                      static_cast<uint32_t>(length)};
    InternalFile* address = &file;

    static Slot slots[12];
    for (Slot& slot : slots) {
        std::memset(slot.before, kGuard, sizeof slot.before);
        std::memset(slot.after, kGuard, sizeof slot.after);
        std::memset(slot.data, 0, sizeof slot.data);
    }
    auto at = [](int k) { return static_cast<void*>(slots[k].data); };
    // A(2,3) of INTEGER(4) in slot 8, CA(3) of CHARACTER(4) in slot 9.
    uint8_t version = sizeof(void*) == 8 ? RTD_VERSION_64BIT | 1 : 1;
    Array1 a{{reinterpret_cast<uintptr_t>(at(8)), {RTD_ARRAY, RTD_TYPE_INTEGER, 0, version}, 4, 2, 0}, {{1, 3, 8}, {1, 2, 4}}};
    Array1 ca{{reinterpret_cast<uintptr_t>(at(9)), {RTD_ARRAY, RTD_TYPE_CHARACTER, 0, version}, 4, 1, 0}, {{0, 3, 4}, {}}};

    alignas(8) static unsigned char tableStorage[sizeof(VrnDTTable) + 4 * sizeof(VrnDTRow)];
    auto* table = reinterpret_cast<VrnDTTable*>(tableStorage);
    table->count = 4;
    table->size = sizeof(Inner);
    table->rows[0] = VrnDTRow{0, 4, 4, {0, 0}, offsetof(Inner, i)};
    table->rows[1] = VrnDTRow{4, 8, 8, {0, 0}, offsetof(Inner, x)};
    table->rows[2] = VrnDTRow{2, 5, 5, {0, 0}, offsetof(Inner, s)};
    table->rows[3] = VrnDTRow{VRN_ARRAY_RUN, 2, 8, {0, 0}, offsetof(Inner, v)};
    static const VrnNamelistComponent components[4] = {
        {"I", nullptr, nullptr, 1}, {"X", nullptr, nullptr, 1}, {"S", nullptr, nullptr, 1}, {"V", nullptr, nullptr, 1}};
    VrnNamelistType inner{table, nullptr, nullptr, components};

    struct {
        VrnNamelistGroup group;
        VrnNamelistMember members[11];
    } g = {{"G", 1, 11},
           {{"I", at(0), nullptr, nullptr, 1, 0, 4, 0},
            {"J", at(1), nullptr, nullptr, 1, 0, 1, 0},
            {"L", at(2), nullptr, nullptr, 1, 1, 8, 0},
            {"C", at(3), nullptr, nullptr, 1, 2, 0, 9},
            {"B", at(4), nullptr, nullptr, 1, 3, 1, 0},
            {"R", at(5), nullptr, nullptr, 1, 4, 4, 0},
            {"Q", at(6), nullptr, nullptr, 1, 4, 16, 0},
            {"Z", at(7), nullptr, nullptr, 1, 5, 8, 0},
            {"A", nullptr, &a, nullptr, 1, 0, 4, 0},
            {"CA", nullptr, &ca, nullptr, 2, 2, 0, 4},
            {"T", at(10), nullptr, &inner, 1, 6, 0, 0}}};

    alignas(8) static CommaMode comma;
    const KeywordList* keywords = (flags & 1u) ? reinterpret_cast<const KeywordList*>(&comma) : nullptr;
    uint32_t options = (flags & 2u) ? VRN_OPTION_LD_INTERCHANGE : 0;
    int32_t iostat = 0;
    int32_t* status = (flags & 4u) ? &iostat : nullptr;
    if (status == nullptr) options |= VRN_OPTION_END;
    _vrnEndIO(_vrnBeginIO(&address, kInternalRead, keywords, options, status, 0, &g.group));

    for (const Slot& slot : slots) {
        for (unsigned char b : slot.before) if (b != kGuard) std::abort();
        for (unsigned char b : slot.after) if (b != kGuard) std::abort();
    }
    std::free(area);
    return 0;
}
