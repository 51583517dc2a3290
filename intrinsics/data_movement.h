// What the data-movement intrinsics (CSHIFT, EOSHIFT, TRANSPOSE, RESHAPE, SPREAD, PACK,
// UNPACK, MERGE, TRANSFER) share. They move elements without looking at them, so each is
// one template over the element's width in bytes (0: the width known only at run time, for
// characters), and the fifteen exported names of a family are stamped from one table.
#pragma once

#include <cstdint>
#include <cstring>

#include "intrinsics/array_walk.h"
#include "intrinsics/frame.h"
#include "vrn90.h"

// The element types of the data-movement families: letters, width (0 for the character
// length of the RTD), and whether EOSHIFT's default boundary is blanks.
#define VRN_MOVED_TYPES(X) \
    X(c, 0, true)          \
    X(i1, 1, false)        \
    X(i2, 2, false)        \
    X(i4, 4, false)        \
    X(i8, 8, false)        \
    X(l1, 1, false)        \
    X(l2, 2, false)        \
    X(l4, 4, false)        \
    X(l8, 8, false)        \
    X(r4, 4, false)        \
    X(r8, 8, false)        \
    X(r16, 16, false)      \
    X(x8, 8, false)        \
    X(x16, 16, false)      \
    X(x32, 32, false)

// Copies one element of `Width` bytes, or of `length` bytes when Width is 0.
template <int Width>
inline void CopyElement(unsigned char* to, const unsigned char* from, int32_t length) {
    if constexpr (Width > 0) {
        std::memcpy(to, from, Width);
    } else {
        std::memcpy(to, from, static_cast<size_t>(length));
    }
}

// `count` elements `fromStep` apart to `toStep` apart, steps in elements.
template <int Width>
inline void CopyRun(unsigned char* to, int64_t toStep, const unsigned char* from, int64_t fromStep, int64_t count,
                    int32_t length) {
    if (count <= 0) return;
    const int64_t bytes = Width > 0 ? Width : length;
    if (toStep == 1 && fromStep == 1) {
        std::memmove(to, from, static_cast<size_t>(count * bytes));
        return;
    }
    for (int64_t i = 0; i < count; ++i) CopyElement<Width>(to + i * toStep * bytes, from + i * fromStep * bytes, length);
}

// The strides of `operand` (zero for a scalar: it stands for every element) for the walk
// over `rank` dimensions.
inline void StridesOf(const Operand& operand, int32_t rank, int64_t (&strides)[kMaxRank]) {
    for (int32_t d = 0; d < kMaxRank; ++d) strides[d] = operand.rank > 0 && d < rank ? operand.stride[d] : 0;
}

// Calls visit(offsets) for every index tuple of `extent` in array element order, dimension
// 1 fastest; offsets[k], in elements of operand k, is the sum of index times strides[k].
template <int N, typename Visit>
void WalkTogether(int32_t rank, const int32_t* extent, const int64_t (&strides)[N][kMaxRank], Visit visit) {
    for (int32_t d = 0; d < rank; ++d) {
        if (extent[d] <= 0) return;
    }
    int64_t offset[N] = {};
    int32_t index[kMaxRank] = {};
    const int64_t inner = rank > 0 ? extent[0] : 1;
    for (;;) {
        int64_t at[N];
        for (int k = 0; k < N; ++k) at[k] = offset[k];
        for (int64_t i = 0; i < inner; ++i) {
            visit(static_cast<const int64_t*>(at));
            for (int k = 0; k < N; ++k) at[k] += strides[k][0];
        }
        int32_t d = 1;
        for (; d < rank; ++d) {
            for (int k = 0; k < N; ++k) offset[k] += strides[k][d];
            if (++index[d] < extent[d]) break;
            for (int k = 0; k < N; ++k) offset[k] -= static_cast<int64_t>(index[d]) * strides[k][d];
            index[d] = 0;
        }
        if (d >= rank) return;
    }
}

// The elements of an array one after another in array element order, starting again
// after the last.
class ElementCursor {
public:
    explicit ElementCursor(const Operand& array) : array_(array) {
        for (int32_t d = 0; d < array.rank; ++d) size_ *= array.extent[d] > 0 ? array.extent[d] : 0;
    }
    int64_t size() const { return size_; }
    const unsigned char* Next() {
        const unsigned char* element = array_.data + offset_ * array_.length;
        for (int32_t d = 0; d < array_.rank; ++d) {
            offset_ += array_.stride[d];
            if (++index_[d] < array_.extent[d]) return element;
            offset_ -= static_cast<int64_t>(index_[d]) * array_.stride[d];
            index_[d] = 0;
        }
        return element;  // the last, or the only element of a scalar: the next is the first
    }

private:
    Operand array_;
    int64_t size_ = 1;
    int64_t offset_ = 0;
    int32_t index_[kMaxRank] = {};
};

// Whether the array's elements lie one after another in array element order.
inline bool Contiguous(const Operand& array) {
    int64_t running = 1;
    for (int32_t d = 0; d < array.rank; ++d) {
        if (array.extent[d] != 1 && array.stride[d] != running) return false;
        running *= array.extent[d];
    }
    return true;
}

inline int64_t ElementCount(const Operand& array) {
    int64_t count = 1;
    for (int32_t d = 0; d < array.rank; ++d) count *= array.extent[d] > 0 ? array.extent[d] : 0;
    return count;
}

// An INTEGER of kind 1, 2, 4 or 8 (of 8 bytes the whole value).
inline int64_t ReadInteger(const unsigned char* at, int32_t kind) {
    switch (kind) {
    case 1: return Load<int8_t>(at, 0);
    case 2: return Load<int16_t>(at, 0);
    case 8: return Load<int64_t>(at, 0);
    default: return Load<int32_t>(at, 0);
    }
}

// The result's data and shape, once the frame has prepared it.
inline Operand ResultOperand(ResultRecord* record) {
    return Describe(reinterpret_cast<unsigned char*>(record->base_ptr), ResultRTD(record));
}

// The result's data, which Describe holds as read-only.
inline unsigned char* Writable(const Operand& result) { return const_cast<unsigned char*>(result.data); }

// The dimension (from 0) a shift goes along: DIM, or the first when DIM is absent; -1, after
// the hook, when DIM names no dimension of the array.
inline int32_t ShiftAxis(int32_t dim, int32_t hasDim, const Operand& array) {
    const int32_t axis = (hasDim & 1) ? dim - 1 : 0;
    if (axis >= 0 && axis < array.rank) return axis;
    _vrmerr1(&dim);
    return -1;
}

// The lines of `array` along dimension `axis` (from 0), each with the matching line of the
// result and the elements of SHIFT and BOUNDARY (arrays of rank one less, or scalars) that
// go with it: line(arrayOffset, resultOffset, shiftOffset, boundaryOffset), in elements.
template <typename Line>
void ForEachLine(const Operand& array, const Operand& out, int32_t axis, const Operand& shift,
                 const Operand& boundary, Line line) {
    int32_t extents[kMaxRank];
    int64_t strides[4][kMaxRank] = {};
    int32_t rank = 0;
    for (int32_t d = 0; d < array.rank; ++d) {
        if (d == axis) continue;
        extents[rank] = array.extent[d];
        strides[0][rank] = array.stride[d];
        strides[1][rank] = out.stride[d];
        strides[2][rank] = shift.rank > 0 ? shift.stride[rank] : 0;
        strides[3][rank] = boundary.rank > 0 ? boundary.stride[rank] : 0;
        ++rank;
    }
    WalkTogether<4>(rank, extents, strides, [&](const int64_t* at) { line(at[0], at[1], at[2], at[3]); });
}

// With a scalar SHIFT along a dimension above the first, whole runs of dimension 1 move
// together: run(arrayOffset, resultOffset) for every combination of the dimensions other
// than the first and `axis`, the caller going along `axis` itself.
template <typename Run>
void ForEachRunPlane(const Operand& array, const Operand& out, int32_t axis, Run run) {
    int32_t extents[kMaxRank];
    int64_t strides[2][kMaxRank] = {};
    int32_t rank = 0;
    for (int32_t d = 1; d < array.rank; ++d) {
        if (d == axis) continue;
        extents[rank] = array.extent[d];
        strides[0][rank] = array.stride[d];
        strides[1][rank] = out.stride[d];
        ++rank;
    }
    WalkTogether<2>(rank, extents, strides, [&](const int64_t* at) { run(at[0], at[1]); });
}
