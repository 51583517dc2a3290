// The array fill helpers: one template over the element's width, stamped out for each
// type letter. The reductions use them to set a result to its initial value.
#include <cstring>

#include "core/export.h"
#include "intrinsics/frame.h"

namespace {

// Copies `width` bytes of value into every element the tables reach. A zero stride is
// a loop that runs once.
template <int Width>
void Fill(void* base, const void* value, const int32_t* extents, const int32_t* strides) {
    int32_t extent[kMaxRank];
    int32_t stride[kMaxRank];
    for (int d = 0; d < kMaxRank; ++d) {
        extent[d] = extents[d];
        stride[d] = strides[d];
        if (stride[d] == 0) extent[d] = extent[d] > 0 ? 1 : extent[d];
    }
    auto* bytes = static_cast<unsigned char*>(base);
    unsigned char element[Width];
    std::memcpy(element, value, Width);
    WalkNest(extent, stride, [&](int64_t offset) { std::memcpy(bytes + offset * Width, element, Width); });
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
    int32_t extent[kMaxRank];
    int32_t stride[kMaxRank];
    for (int d = 0; d < kMaxRank; ++d) {
        extent[d] = extents[d];
        stride[d] = strides[d];
        if (stride[d] == 0) extent[d] = extent[d] > 0 ? 1 : extent[d];
    }
    if (targetLength <= 0) return;
    int32_t copied = valueLength < targetLength ? (valueLength > 0 ? valueLength : 0) : targetLength;
    auto* bytes = static_cast<unsigned char*>(base);
    WalkNest(extent, stride, [&](int64_t offset) {
        unsigned char* target = bytes + offset * targetLength;
        std::memcpy(target, value, static_cast<size_t>(copied));
        std::memset(target + copied, ' ', static_cast<size_t>(targetLength - copied));
    });
}
