// Array descriptors built the way compiled code builds them, for the intrinsic tests.
#pragma once

#include <cstring>
#include <vector>

#include "intrinsics/frame.h"

// An array RTD of up to 20 dimensions: `extents` in Fortran order, contiguous unless
// strides (in elements, possibly negative or zero) are given.
struct Array {
    alignas(8) unsigned char storage[sizeof(RTDArray) + kMaxRank * sizeof(RTDDimension)] = {};
    RTDArray* rtd = reinterpret_cast<RTDArray*>(storage);

    Array(std::vector<int32_t> extents, int32_t length, uint8_t type, std::vector<int32_t> strides = {}) {
        rtd->header = RTDHeader{RTD_ARRAY, type, RTD_FLAG_IS_ALLOCATED, 1};
        rtd->element_len = length;
        rtd->rank = static_cast<int32_t>(extents.size());
        int32_t running = 1;
        for (size_t d = 0; d < extents.size(); ++d) {
            int32_t stride = strides.empty() ? running : strides[d];
            RTDDimension entry{1, extents[d], stride * length};
            std::memcpy(&rtd->dims[rtd->rank - 1 - static_cast<int32_t>(d)], &entry, sizeof entry);
            rtd->rel_virtual_org -= entry.multiplier;
            running *= extents[d];
        }
    }
};

inline ResultRecord Unallocated(int32_t presetLength = 0) {
    ResultRecord record{};
    record.element_len = presetLength;
    return record;
}
