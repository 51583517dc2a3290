// Walks over the arrays of the intrinsics: an array argument as extents and strides in
// elements, the loop order of the frame, and one walk that visits source, mask and result
// offsets together, with plain loops for ranks 1 and 2 and the 20-level nest above.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "convert/double_double.h"
#include "intrinsics/frame.h"

// One array argument: data, effective element length, and per Fortran dimension the
// extent and the stride in elements.
struct Operand {
    const unsigned char* data = nullptr;
    int32_t length = 0;
    int32_t rank = 0;
    int32_t extent[kMaxRank] = {};
    int32_t stride[kMaxRank] = {};
    int32_t multiplier[kMaxRank] = {};  // bytes, for choosing the loop order
};

inline Operand Describe(const void* data, const RTDArray* rtd) {
    Operand op;
    op.data = static_cast<const unsigned char*>(data);
    op.length = EffectiveLength(reinterpret_cast<const RTD*>(rtd));
    op.rank = rtd->header.dscr_type == RTD_ARRAY ? rtd->rank : 0;
    for (int32_t d = 0; d < op.rank; ++d) {
        RTDDimension entry = FortranDimension(rtd, d + 1);
        op.extent[d] = entry.extent;
        op.multiplier[d] = entry.multiplier;
        op.stride[d] = op.length != 0 ? entry.multiplier / op.length : 0;
    }
    return op;
}

// Calls visit(offset in elements) for every element of an array, as the fills do.
template <typename Visit>
void ForEachElement(const Operand& array, Visit visit) {
    int32_t extents[kMaxRank];
    int32_t strides[kMaxRank];
    for (int32_t d = 0; d < kMaxRank; ++d) {
        extents[d] = d < array.rank ? array.extent[d] : 1;
        strides[d] = d < array.rank ? array.stride[d] : 1;
    }
    WalkNest(extents, strides, visit);
}

// The loop order, innermost first, as Fortran dimension numbers counted from 0.
inline void LoopOrder(const Operand& source, int32_t (&order)[kMaxRank]) {
    int32_t rank = source.rank;
    bool firstEntryInner = false;
    if (rank == 2) {
        firstEntryInner = std::abs(source.multiplier[1]) < std::abs(source.multiplier[0]);
    } else if (rank >= 3) {
        // Only the two ends of the table are compared; there is no sort.
        firstEntryInner = std::abs(source.multiplier[rank - 1]) < std::abs(source.multiplier[0]);
    }
    for (int32_t i = 0; i < rank; ++i) order[i] = firstEntryInner ? rank - 1 - i : i;
}

// Tables for the nest in loop order, padded with extent 1. In the general path (rank 3
// and above) zero source strides become 1, as the strides are loop increments there.
struct Loops {
    int32_t rank;
    int32_t extent[kMaxRank];
    int32_t source[kMaxRank];
    int32_t mask[kMaxRank];
    int32_t result[kMaxRank];
};

inline Loops MakeLoops(const Operand& source, const Operand* mask, const int32_t (&order)[kMaxRank],
                const int32_t* resultStrideByDimension) {
    Loops loops;
    loops.rank = source.rank;
    for (int32_t i = 0; i < kMaxRank; ++i) {
        loops.extent[i] = 1;
        loops.source[i] = loops.mask[i] = 1;
        loops.result[i] = 0;
    }
    for (int32_t i = 0; i < source.rank; ++i) {
        int32_t d = order[i];
        loops.extent[i] = source.extent[d];
        loops.source[i] = source.stride[d] != 0 || source.rank < 3 ? source.stride[d] : 1;
        if (mask != nullptr) loops.mask[i] = mask->stride[d];
        if (resultStrideByDimension != nullptr) loops.result[i] = resultStrideByDimension[d];
    }
    return loops;
}

// One visit; a visit that returns bool ends the walk by returning false.
template <typename Visit>
bool Visit1(Visit& visit, int64_t s, int64_t m, int64_t r) {
    if constexpr (std::is_void_v<std::invoke_result_t<Visit&, int64_t, int64_t, int64_t>>) {
        visit(s, m, r);
        return true;
    } else {
        return visit(s, m, r);
    }
}

// Calls visit(sourceOffset, maskOffset, resultOffset) in elements for every element;
// false when a visit ended the walk early.
template <typename Visit>
bool Walk(const Loops& loops, Visit visit) {
    for (int32_t e : loops.extent) {
        if (e <= 0) return true;
    }
    if (loops.rank <= 2) {
        // Ranks 1 and 2 are most calls: two plain loops, not the nest.
        for (int64_t j = 0; j < loops.extent[1]; ++j) {
            int64_t s = j * loops.source[1], m = j * loops.mask[1], r = j * loops.result[1];
            for (int64_t i = 0; i < loops.extent[0]; ++i) {
                if (!Visit1(visit, s + i * loops.source[0], m + i * loops.mask[0], r + i * loops.result[0])) return false;
            }
        }
        return true;
    }
    int32_t index[kMaxRank] = {};
    int64_t s = 0, m = 0, r = 0;
    for (;;) {
        for (int32_t i = 0; i < loops.extent[0]; ++i) {
            if (!Visit1(visit, s + static_cast<int64_t>(i) * loops.source[0], m + static_cast<int64_t>(i) * loops.mask[0],
                        r + static_cast<int64_t>(i) * loops.result[0])) {
                return false;
            }
        }
        int level = 1;
        for (; level < kMaxRank; ++level) {
            s += loops.source[level];
            m += loops.mask[level];
            r += loops.result[level];
            if (++index[level] < loops.extent[level]) break;
            s -= static_cast<int64_t>(index[level]) * loops.source[level];
            m -= static_cast<int64_t>(index[level]) * loops.mask[level];
            r -= static_cast<int64_t>(index[level]) * loops.result[level];
            index[level] = 0;
        }
        if (level == kMaxRank) return true;
    }
}

template <typename T>
T Load(const unsigned char* base, int64_t offset) {
    T value;
    std::memcpy(&value, base + offset * static_cast<int64_t>(sizeof(T)), sizeof value);
    return value;
}

template <typename T>
void Store(unsigned char* base, int64_t offset, const T& value) {
    std::memcpy(base + offset * static_cast<int64_t>(sizeof(T)), &value, sizeof value);
}

inline bool MaskTrue(const Operand& mask, int64_t offset) { return IsTrue(mask.data + offset * mask.length, mask.length); }

// Blank-extended comparison of two strings, bytes unsigned: below 0, 0 or above 0.
inline int CompareBlankPadded(const unsigned char* a, int32_t aLength, const unsigned char* b, int32_t bLength) {
    int32_t common = aLength < bLength ? aLength : bLength;
    int order = std::memcmp(a, b, static_cast<size_t>(common));
    if (order != 0) return order;
    for (int32_t i = common; i < aLength; ++i) {
        if (a[i] != ' ') return a[i] < ' ' ? -1 : 1;
    }
    for (int32_t i = common; i < bLength; ++i) {
        if (b[i] != ' ') return b[i] < ' ' ? 1 : -1;
    }
    return 0;
}

inline void CopyBlankPadded(unsigned char* to, int32_t toLength, const unsigned char* from, int32_t fromLength) {
    int32_t n = fromLength < toLength ? fromLength : toLength;
    std::memmove(to, from, static_cast<size_t>(n));
    std::memset(to + n, ' ', static_cast<size_t>(toLength - n));
}

// m below x for 16-byte reals; a NaN makes it false either way.
inline bool PairLess(const DoubleDouble& m, const DoubleDouble& x) {
    if (std::isinf(m.hi)) return m.hi < x.hi;
    double d = (m.hi - x.hi) + (m.lo - x.lo);
    return d < 0;
}

