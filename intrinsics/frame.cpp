// Result sizing, element addresses and the error hooks of the array intrinsics.
#include "intrinsics/frame.h"

#include "core/export.h"

int32_t LayOutContiguous(RTDArray* result, uint8_t type, int32_t length, const int32_t* extents, int32_t rank) {
    result->header.dscr_type = RTD_ARRAY;
    result->header.data_type = type;
    result->element_len = length;
    result->rank = rank;
    result->rel_virtual_org = 0;
    int32_t running = length;
    for (int32_t d = 1; d <= rank; ++d) {
        RTDDimension entry{1, extents[d - 1], running};
        std::memcpy(&result->dims[rank - d], &entry, sizeof entry);
        result->rel_virtual_org -= running;
        running *= entry.extent;
    }
    return running;
}

int32_t BuildReducedResult(RTDArray* result, const RTDArray* source, int32_t dim, bool hasDim) {
    int32_t length = EffectiveLength(reinterpret_cast<const RTD*>(source));
    uint8_t type = source->header.data_type;
    if (!hasDim || source->rank < 2) return LayOutContiguous(result, type, length, nullptr, 0);
    if (dim < 1 || dim > source->rank) {
        // The descriptor stays partly built with its rank as it was; nothing is reported,
        // the hook stays for a debugger.
        result->header.dscr_type = RTD_ARRAY;
        result->header.data_type = type;
        result->element_len = length;
        result->rel_virtual_org = 0;
        _vrmerr1(&dim);
        return length;
    }
    int32_t extents[kMaxRank];
    int32_t rank = 0;
    for (int32_t d = 1; d <= source->rank && d <= kMaxRank; ++d) {
        if (d != dim) extents[rank++] = FortranDimension(source, d).extent;
    }
    return LayOutContiguous(result, type, length, extents, rank);
}

namespace {

int32_t SizeReduction(void* result, const void* source, int32_t dim, int32_t hasDim) {
    return BuildReducedResult(static_cast<RTDArray*>(result), AsArray(source), dim, (hasDim & 1) != 0);
}

}  // namespace

VRN_EXPORT int32_t _vralsz(void* result, const void* source, int32_t dim, int32_t hasDim) {
    return SizeReduction(result, source, dim, hasDim);
}
VRN_EXPORT int32_t _vransz(void* result, const void* source, int32_t dim, int32_t hasDim) {
    return SizeReduction(result, source, dim, hasDim);
}

// COUNT's result is an integer of the kind compiled code preset in the result RTD: the
// shape as ALL's, the layout redone for that length.
VRN_EXPORT int32_t _vrcnsz(void* result, const void* source, int32_t dim, int32_t hasDim) {
    auto* rtd = static_cast<RTDArray*>(result);
    int32_t kind = rtd->element_len;
    SizeReduction(result, source, dim, hasDim);
    int32_t extents[kMaxRank];
    for (int32_t d = 1; d <= rtd->rank; ++d) extents[d - 1] = FortranDimension(rtd, d).extent;
    return LayOutContiguous(rtd, RTD_TYPE_INTEGER, kind, extents, rtd->rank);
}

// SUM, PRODUCT, MAXVAL and MINVAL size alike; the mask goes only to the error hook.
VRN_EXPORT int32_t _vrsmszg(void* result, const void* source, int32_t dim, const void* mask, int32_t hasDim) {
    (void)mask;
    return SizeReduction(result, source, dim, hasDim);
}
VRN_EXPORT int32_t _vrprszg(void* result, const void* source, int32_t dim, const void* mask, int32_t hasDim) {
    return _vrsmszg(result, source, dim, mask, hasDim);
}
VRN_EXPORT int32_t _vrmxszg(void* result, const void* source, int32_t dim, const void* mask, int32_t hasDim) {
    return _vrsmszg(result, source, dim, mask, hasDim);
}
VRN_EXPORT int32_t _vrmnszg(void* result, const void* source, int32_t dim, const void* mask, int32_t hasDim) {
    return _vrsmszg(result, source, dim, mask, hasDim);
}

VRN_EXPORT void _vrgetelemaddr(const ResultRecord* record, uintptr_t* table) {
    const RTDArray* rtd = ResultRTD(record);
    int32_t length = rtd->element_len < 0 ? 0 : rtd->element_len;
    if (length == 0) __builtin_trap();  // a zero-length character array must not come here
    // Array element order, dimension 1 fastest; byte strides are whole elements.
    int32_t extent[kMaxRank];
    int32_t stride[kMaxRank];
    for (int32_t d = 0; d < kMaxRank; ++d) {
        extent[d] = 1;
        stride[d] = 1;
    }
    for (int32_t d = 1; d <= rtd->rank && d <= kMaxRank; ++d) {
        RTDDimension entry = FortranDimension(rtd, d);
        extent[d - 1] = entry.extent;
        int32_t elements = entry.multiplier / length;
        stride[d - 1] = elements != 0 ? elements : 1;
    }
    uintptr_t base = record->base_ptr;
    size_t next = 0;
    WalkNest(extent, stride, [&](int64_t offset) {
        table[next++] = base + static_cast<uintptr_t>(offset * length);
    });
}

VRN_EXPORT void _vrmerr1(const void*) {}
VRN_EXPORT void _vrmerr2(const void*, const void*) {}
VRN_EXPORT void _vrmerr3(const void*, const void*, const void*) {}
VRN_EXPORT void _vrmerr4(const void*, const void*, const void*, const void*) {}
