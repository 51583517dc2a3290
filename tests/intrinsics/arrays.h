// Array descriptors built the way compiled code builds them, for the intrinsic tests.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
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

// A random section inside a larger buffer: permuted dimensions, gaps, negative strides.
struct Section {
    std::vector<int32_t> extents;
    std::vector<int32_t> strides;
    int64_t first = 0;  // element offset of the first element in the buffer
    int64_t span = 0;   // elements the buffer needs

    int64_t Offset(const std::vector<int32_t>& index) const {
        int64_t offset = first;
        for (size_t d = 0; d < index.size(); ++d) offset += static_cast<int64_t>(index[d]) * strides[d];
        return offset;
    }
};

inline Section RandomSection(const std::vector<int32_t>& extents, std::mt19937& random) {
    Section section;
    section.extents = extents;
    size_t rank = extents.size();
    std::vector<size_t> order(rank);
    for (size_t d = 0; d < rank; ++d) order[d] = d;
    std::shuffle(order.begin(), order.end(), random);
    section.strides.assign(rank, 0);
    int32_t running = 1 + static_cast<int32_t>(random() % 2);
    for (size_t d : order) {
        int32_t stride = running;
        if (random() % 3 == 0) stride = -stride;
        // A zero stride repeats one element; beyond rank 2 only where it cannot matter.
        if (random() % 6 == 0 && (rank <= 2 || extents[d] == 1)) stride = 0;
        section.strides[d] = stride;
        running *= std::max(extents[d], 1) + static_cast<int32_t>(random() % 2);
    }
    int64_t low = 0, high = 0;
    for (size_t d = 0; d < rank; ++d) {
        int64_t reach = static_cast<int64_t>(std::max(extents[d] - 1, 0)) * section.strides[d];
        (reach < 0 ? low : high) += reach;
    }
    section.first = -low;
    section.span = high - low + 1;
    return section;
}

// Calls visit(index) for every index tuple in array element order.
inline void ForEachIndex(const std::vector<int32_t>& extents, const std::function<void(const std::vector<int32_t>&)>& visit) {
    for (int32_t e : extents) {
        if (e <= 0) return;
    }
    std::vector<int32_t> index(extents.size(), 0);
    for (;;) {
        visit(index);
        size_t d = 0;
        for (; d < extents.size(); ++d) {
            if (++index[d] < extents[d]) break;
            index[d] = 0;
        }
        if (d == extents.size()) return;
    }
}

inline std::vector<int32_t> RandomExtents(size_t rank, std::mt19937& random) {
    std::vector<int32_t> extents(rank, 1);
    if (rank <= 4) {
        for (auto& e : extents) e = static_cast<int32_t>(random() % 5);
        if (random() % 4 != 0) {
            for (auto& e : extents) e = std::max(e, 1);
        }
    } else {
        for (int k = 0; k < 6; ++k) extents[random() % rank] = 2 + static_cast<int32_t>(random() % 2);
    }
    return extents;
}

// Integers of 1, 2, 4 or 8 bytes in the machine's own order.
inline void StoreInteger(unsigned char* to, int32_t kind, uint64_t value) {
    uint8_t v1 = static_cast<uint8_t>(value);
    uint16_t v2 = static_cast<uint16_t>(value);
    uint32_t v4 = static_cast<uint32_t>(value);
    const void* from = kind == 1 ? static_cast<const void*>(&v1) : kind == 2 ? static_cast<const void*>(&v2)
                       : kind == 4 ? static_cast<const void*>(&v4) : static_cast<const void*>(&value);
    std::memcpy(to, from, static_cast<size_t>(kind));
}

inline int64_t LoadInteger(const unsigned char* from, int32_t kind) {
    int8_t v1;
    int16_t v2;
    int32_t v4;
    int64_t v8;
    switch (kind) {
        case 1: std::memcpy(&v1, from, 1); return v1;
        case 2: std::memcpy(&v2, from, 2); return v2;
        case 4: std::memcpy(&v4, from, 4); return v4;
        default: std::memcpy(&v8, from, 8); return v8;
    }
}

