// _vrdmprtd: an array descriptor shown through the library's own list-directed output on
// unit 6, with warnings for values that ordinary arrays never have. It is meant to be
// called by hand from a debugger or a Fortran program, so it goes where the program's own
// output goes and in its order.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/export.h"
#include "vrn90.h"

namespace {

constexpr int32_t kShownDimensions = RTD_MAX_RANK;

// One WRITE (6, *) statement built item by item.
class Line {
public:
    Line() { context_ = _vrnBeginIO(&unit_, kListWrite, nullptr, 0, nullptr, 0, nullptr); }
    ~Line() { _vrnEndIO(context_); }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    Line& Text(const char* text) {
        int32_t length = static_cast<int32_t>(std::strlen(text));
        _vrnWriteLDChar(context_, text, &length);
        return *this;
    }
    Line& Number(int64_t value) {
        int32_t kind = 8;
        _vrnWriteLDInt(context_, &value, 0, &kind);
        return *this;
    }

private:
    static constexpr uint32_t kListWrite =
        VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
    int32_t unit_ = 6;
    LocalContext* context_;
};

// Addresses print as non-negative numbers whatever the width of a pointer.
int64_t Address(const void* address) { return static_cast<int64_t>(reinterpret_cast<uintptr_t>(address)); }

}  // namespace

VRN_EXPORT void _vrdmprtd(const void* header, const void* data) {
    const auto* rtd = reinterpret_cast<const RTDArray*>(static_cast<const unsigned char*>(header) -
                                                        offsetof(RTDArray, header));
    RTDArray fields;
    std::memcpy(&fields, rtd, sizeof fields);
    Line().Text("= R T D =");
    Line().Text(" arr location = ").Number(Address(data));
    Line().Text(" rtd location = ").Number(Address(rtd));
    Line().Text("    desc_type = ").Number(fields.header.dscr_type);
    Line().Text("     dataType = ").Number(fields.header.data_type);
    Line().Text("        flags = ").Number(fields.header.flags);
    Line().Text("      version = ").Number(fields.header.version);
    Line().Text("  element len = ").Number(fields.element_len);
    Line().Text("   array rank = ").Number(fields.rank);
    Line().Text("   array  rvo = ").Number(fields.rel_virtual_org);

    int32_t shown = fields.rank < 0 ? 0 : fields.rank > kShownDimensions ? kShownDimensions : fields.rank;
    RTDDimension dims[kShownDimensions];
    for (int32_t d = 1; d <= shown; ++d) {
        std::memcpy(&dims[d - 1], &rtd->dims[shown - d], sizeof(RTDDimension));
        const RTDDimension& entry = dims[d - 1];
        Line().Number(d).Text(":  lbound, extent, mult = ").Number(entry.low_bound).Number(entry.extent).Number(
            entry.multiplier);
        if (fields.element_len > 0 && entry.multiplier % fields.element_len != 0) {
            Line().Text(" WARNING: multiplier is not divisible by elementLen");
        }
    }

    if (reinterpret_cast<uintptr_t>(rtd) % 4 != 0) Line().Text(" WARNING: rtd address is not fullword aligned.");
    if (fields.header.dscr_type < 2 || fields.header.dscr_type > 4) Line().Text(" WARNING: desc_type is invalid");
    if (fields.header.data_type == 0 || fields.header.data_type > 17) Line().Text(" WARNING: dataType is invalid");
    if (fields.element_len < 0) Line().Text(" WARNING: elementLen is negative");
    if (fields.rank > kShownDimensions) Line().Text(" WARNING: rank is invalid");
    if (fields.rel_virtual_org >= 0) Line().Text(" WARNING: rvo may be invalid");
    for (int32_t d = 1; d <= shown; ++d) {
        const RTDDimension& entry = dims[d - 1];
        if (entry.extent < 0) Line().Text(" WARNING:     extent(").Number(d).Text(") is invalid");
        if (std::abs(static_cast<int64_t>(entry.multiplier)) > 4096) {
            Line().Text(" WARNING: multiplier(").Number(d).Text(") exceeds 4096");
        }
        if (entry.multiplier < 1) Line().Text(" WARNING: multiplier(").Number(d).Text(") <= 0");
    }
    Line().Text("= E N D =");
}
