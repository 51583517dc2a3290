// The accessors of RTD fields. Asking a descriptor for a field it lacks is a programming
// error of the caller and ends in an assertion failure.
#include <cstddef>

#include "core/export.h"
#include "desc/rtd.h"

// The C library's report of a failed assertion, whatever NDEBUG says.
extern "C" [[noreturn]] void __assert_fail(const char* assertion, const char* file, unsigned int line,
                                           const char* function) noexcept;

namespace {

constexpr const char* kSource = "dumpdesc";

[[noreturn]] void Fail(const char* condition, unsigned line, const char* accessor) {
    __assert_fail(condition, kSource, line, accessor);
}

const RTDArray* RequireArray(const void* rtd, const char* accessor) {
    const auto* head = static_cast<const RTD*>(rtd);
    if (head->header.dscr_type != RTD_ARRAY) Fail("desc->header.dscr_type == DSCR_TYPE_ARRAY", __LINE__, accessor);
    return static_cast<const RTDArray*>(rtd);
}

const unsigned char* RequireV2(const void* rtd, const char* accessor) {
    const unsigned char* fields = get_v2_fields(static_cast<const RTD*>(rtd));
    if (fields == nullptr) Fail("v2_fields != 0", __LINE__, accessor);
    return fields;
}

// The three pointers behind the V2 words need has_vft_tpt_tpv.
uintptr_t TypePointer(const void* rtd, size_t offset, const char* accessor) {
    const unsigned char* fields = RequireV2(rtd, accessor);
    if ((ReadField<uint32_t>(fields + offsetof(RTDV2Fields, flagsA)) & 0x80000000u) == 0) {
        Fail("(v2_fields->flagsA & 0x80000000) != 0", __LINE__, accessor);
    }
    return ReadField<uintptr_t>(fields + offset);
}

RTDDimension Dimension(const void* rtd, int32_t dim, const char* accessor) {
    const RTDArray* array = RequireArray(rtd, accessor);
    if (dim > array->rank) Fail("dim <= array->rank", __LINE__, accessor);
    return DimensionEntry(static_cast<const RTD*>(rtd), dim - 1);
}

}  // namespace

int32_t VersionNumber(const RTD* rtd) { return rtd->header.version & 0x7F; }

bool HasElementLength(const RTD* rtd) {
    return rtd->header.dscr_type == RTD_ARRAY || VersionNumber(rtd) >= 2 || rtd->header.data_type == RTD_TYPE_CHARACTER;
}

const unsigned char* get_v2_fields(const RTD* rtd) {
    if (VersionNumber(rtd) < 2) return nullptr;
    const auto* bytes = reinterpret_cast<const unsigned char*>(rtd);
    if (rtd->header.dscr_type == RTD_ARRAY) {
        const auto* array = reinterpret_cast<const RTDArray*>(rtd);
        return bytes + offsetof(RTDArray, dims) + sizeof(RTDDimension) * static_cast<size_t>(array->rank);
    }
    return bytes + sizeof(RTD);
}

VRN_EXPORT int32_t __vrnrtdgetversion(const void* rtd) { return VersionNumber(static_cast<const RTD*>(rtd)); }
VRN_EXPORT int32_t __vrnrtdgetflags(const void* rtd) { return static_cast<const RTD*>(rtd)->header.flags; }
VRN_EXPORT int32_t __vrnrtdgetdscr_type(const void* rtd) { return static_cast<const RTD*>(rtd)->header.dscr_type; }
VRN_EXPORT int32_t __vrnrtdgetdata_type(const void* rtd) { return static_cast<const RTD*>(rtd)->header.data_type; }

VRN_EXPORT int32_t __vrnrtdgetelement_len(const void* rtd) {
    const auto* head = static_cast<const RTD*>(rtd);
    if (!HasElementLength(head)) Fail("desc->header.dscr_type == DSCR_TYPE_ARRAY", __LINE__, "__vrnrtdgetelement_len");
    return head->element_len;
}

VRN_EXPORT uint32_t __vrnrtdgetflagsa(const void* rtd) {
    return ReadField<uint32_t>(RequireV2(rtd, "__vrnrtdgetflagsa") + offsetof(RTDV2Fields, flagsA));
}
VRN_EXPORT uint32_t __vrnrtdgetreserved(const void* rtd) {
    return ReadField<uint32_t>(RequireV2(rtd, "__vrnrtdgetreserved") + offsetof(RTDV2Fields, reserved));
}
VRN_EXPORT uintptr_t __vrnrtdgetreserved_ptr(const void* rtd) {
    return ReadField<uintptr_t>(RequireV2(rtd, "__vrnrtdgetreserved_ptr") + offsetof(RTDV2Fields, reserved_ptr));
}
VRN_EXPORT uintptr_t __vrnrtdgetchain_ptr(const void* rtd) {
    return ReadField<uintptr_t>(RequireV2(rtd, "__vrnrtdgetchain_ptr") + offsetof(RTDV2Fields, chain_ptr));
}
VRN_EXPORT uintptr_t __vrnrtdgetvft_ptr(const void* rtd) {
    return TypePointer(rtd, offsetof(RTDV2Fields, vft_ptr), "__vrnrtdgetvft_ptr");
}
VRN_EXPORT uintptr_t __vrnrtdgettpt_ptr(const void* rtd) {
    return TypePointer(rtd, offsetof(RTDV2Fields, tpt_ptr), "__vrnrtdgettpt_ptr");
}
VRN_EXPORT uintptr_t __vrnrtdgettpv_ptr(const void* rtd) {
    return TypePointer(rtd, offsetof(RTDV2Fields, tpv_ptr), "__vrnrtdgettpv_ptr");
}
VRN_EXPORT int32_t __vrnrtdgetrank(const void* rtd) { return RequireArray(rtd, "__vrnrtdgetrank")->rank; }
VRN_EXPORT int32_t __vrnrtdgetrvo(const void* rtd) { return RequireArray(rtd, "__vrnrtdgetrvo")->rel_virtual_org; }
VRN_EXPORT int32_t __vrnrtdgetlow_bound(const void* rtd, int32_t dim) {
    return Dimension(rtd, dim, "__vrnrtdgetlow_bound").low_bound;
}
VRN_EXPORT int32_t __vrnrtdgetextent(const void* rtd, int32_t dim) { return Dimension(rtd, dim, "__vrnrtdgetextent").extent; }
VRN_EXPORT int32_t __vrnrtdgetmultiplier(const void* rtd, int32_t dim) {
    return Dimension(rtd, dim, "__vrnrtdgetmultiplier").multiplier;
}
