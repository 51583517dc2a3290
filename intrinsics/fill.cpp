// The array fill helpers: one template over the element's width, stamped out for each
// type letter. The reductions use them to set a result to its initial value.
#include <cstring>

#include "core/export.h"
#include "intrinsics/frame.h"

namespace {

// The caller's tables, where a zero stride is a loop that runs once.
Nest FillNest(const int32_t* extents, const int32_t* strides) {
    Nest nest;
    for (int d = 0; d < kMaxRank; ++d) {
        nest.extent[d] = extents[d];
        nest.stride[d] = strides[d];
        if (nest.stride[d] == 0) nest.extent[d] = nest.extent[d] > 0 ? 1 : nest.extent[d];
    }
    return nest;
}

// Copies `width` bytes of value into every element the tables reach.
template <int Width>
void Fill(void* base, const void* value, const int32_t* extents, const int32_t* strides) {
    Nest nest = FillNest(extents, strides);
    auto* bytes = static_cast<unsigned char*>(base);
    unsigned char element[Width];
    std::memcpy(element, value, Width);
    WalkNest(nest.extent, nest.stride, [&](int64_t offset) { std::memcpy(bytes + offset * Width, element, Width); });
}

}  // namespace

#define VRN_FILL(name, width)                                                                   \
    VRN_EXPORT void name(void* base, const void* value, const int32_t* extents, const int32_t* strides) { \
        Fill<width>(base, value, extents, strides);                                             \
    }
VRN_FILL(_vriai1, 1)
VRN_FILL(_vriai2, 2)
VRN_FILL(_vriai4, 4)
VRN_FILL(_vriai8, 8)
VRN_FILL(_vriar4, 4)
VRN_FILL(_vriar8, 8)
VRN_FILL(_vriar16, 16)
VRN_FILL(_vriax8, 8)
VRN_FILL(_vriax16, 16)
VRN_FILL(_vriax32, 32)
#undef VRN_FILL

VRN_EXPORT void _vriac(void* base, const void* value, const int32_t* extents, const int32_t* strides,
                       int32_t valueLength, int32_t targetLength) {
    Nest nest = FillNest(extents, strides);
    if (targetLength <= 0) return;
    int32_t copied = valueLength < targetLength ? (valueLength > 0 ? valueLength : 0) : targetLength;
    auto* bytes = static_cast<unsigned char*>(base);
    WalkNest(nest.extent, nest.stride, [&](int64_t offset) {
        unsigned char* target = bytes + offset * targetLength;
        std::memcpy(target, value, static_cast<size_t>(copied));
        std::memset(target + copied, ' ', static_cast<size_t>(targetLength - copied));
    });
}
