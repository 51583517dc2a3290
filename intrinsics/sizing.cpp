// Sizing functions of the transformational intrinsics other than the reductions: each
// fills the result RTD compiled code passes (lbound 1, contiguous) and returns the size
// of the result in bytes. They allocate nothing and report nothing.
#include <algorithm>

#include "core/export.h"
#include "intrinsics/frame.h"

namespace {

int32_t Rank(const RTDArray* rtd) { return rtd->header.dscr_type == RTD_ARRAY ? rtd->rank : 0; }

// The extents of an array in Fortran order; the count is the rank.
int32_t Extents(const RTDArray* rtd, int32_t (&extents)[kMaxRank]) {
    int32_t rank = std::min(Rank(rtd), kMaxRank);
    for (int32_t d = 1; d <= rank; ++d) extents[d - 1] = FortranDimension(rtd, d).extent;
    return rank;
}

int32_t Length(const RTDArray* rtd) { return EffectiveLength(reinterpret_cast<const RTD*>(rtd)); }

int32_t SameShape(void* result, const void* source) {
    int32_t extents[kMaxRank];
    int32_t rank = Extents(AsArray(source), extents);
    return LayOutContiguous(static_cast<RTDArray*>(result), AsArray(source)->header.data_type, Length(AsArray(source)),
                      extents, rank);
}

// MAXLOC and MINLOC give subscripts: integers of the kind compiled code preset.
int32_t LocationVector(void* result, const void* source) {
    auto* rtd = static_cast<RTDArray*>(result);
    int32_t extent = Rank(AsArray(source));
    return LayOutContiguous(rtd, RTD_TYPE_INTEGER, rtd->element_len, &extent, 1);
}

int32_t LocationSize(void* result, const void* source, int32_t dim, const void* mask, int32_t flag) {
    if (flag != 1) return LocationVector(result, source);
    auto* rtd = static_cast<RTDArray*>(result);
    int32_t kind = rtd->element_len;
    const RTDArray* array = AsArray(source);
    int32_t extents[kMaxRank];
    int32_t rank = Extents(array, extents);
    if (dim < 1 || dim > rank) {
        _vrmerr2(&dim, mask);
        return kind;
    }
    std::copy(extents + dim, extents + rank, extents + dim - 1);
    return LayOutContiguous(rtd, RTD_TYPE_INTEGER, kind, extents, rank - 1);
}

}  // namespace

VRN_EXPORT int32_t _vrhaszg(void* result, const void* source, int32_t dim, const void* mask, int32_t flag) {
    return LocationSize(result, source, dim, mask, flag);
}
VRN_EXPORT int32_t _vrhzszg(void* result, const void* source, int32_t dim, const void* mask, int32_t flag) {
    return LocationSize(result, source, dim, mask, flag);
}
VRN_EXPORT int32_t _vrlaszg(void* result, const void* source) { return LocationVector(result, source); }
VRN_EXPORT int32_t _vrlzszg(void* result, const void* source) { return LocationVector(result, source); }

VRN_EXPORT int32_t _vrcssz(void* result, const void* source) { return SameShape(result, source); }
VRN_EXPORT int32_t _vressz(void* result, const void* source) { return SameShape(result, source); }

VRN_EXPORT int32_t _vrspsz(void* result, const void* source, int32_t dim, int32_t ncopies) {
    const RTDArray* array = AsArray(source);
    auto* rtd = static_cast<RTDArray*>(result);
    int32_t extents[kMaxRank + 1];
    int32_t own[kMaxRank];
    int32_t rank = Extents(array, own);
    if (dim < 1 || dim > rank + 1 || rank + 1 > kMaxRank) {
        _vrmerr1(&dim);
        return Length(array);
    }
    std::copy(own, own + dim - 1, extents);
    extents[dim - 1] = std::max(ncopies, 0);
    std::copy(own + dim - 1, own + rank, extents + dim);
    return LayOutContiguous(rtd, array->header.data_type, Length(array), extents, rank + 1);
}

VRN_EXPORT int32_t _vrmrsz(void* result, const void* tsource, const void* fsource, const void* mask) {
    const RTDArray* shaped = AsArray(tsource);
    for (const void* candidate : {tsource, fsource, mask}) {
        if (Rank(AsArray(candidate)) >= 1) {
            shaped = AsArray(candidate);
            break;
        }
    }
    int32_t extents[kMaxRank];
    int32_t rank = Extents(shaped, extents);
    return LayOutContiguous(static_cast<RTDArray*>(result), AsArray(tsource)->header.data_type, Length(AsArray(tsource)),
                      extents, rank);
}

VRN_EXPORT int32_t _vrupsz(void* result, const void* vector, const void* mask) {
    int32_t extents[kMaxRank];
    int32_t rank = Extents(AsArray(mask), extents);
    return LayOutContiguous(static_cast<RTDArray*>(result), AsArray(vector)->header.data_type, Length(AsArray(vector)),
                      extents, rank);
}

// With no VECTOR the extent is an upper bound: every element of ARRAY.
VRN_EXPORT int32_t _vrpkszg(void* result, const void* array, const void* maskData, const void* vector,
                            int32_t vectorPresent) {
    (void)maskData;
    int32_t extent = 1;
    if (vectorPresent & 1) {
        extent = FortranDimension(AsArray(vector), 1).extent;
    } else {
        int32_t extents[kMaxRank];
        int32_t rank = Extents(AsArray(array), extents);
        for (int32_t d = 0; d < rank; ++d) extent *= extents[d];
    }
    return LayOutContiguous(static_cast<RTDArray*>(result), AsArray(array)->header.data_type, Length(AsArray(array)), &extent,
                      1);
}

VRN_EXPORT int32_t _vrtssz(void* result, const void* source) {
    int32_t extents[kMaxRank];
    Extents(AsArray(source), extents);
    int32_t swapped[2] = {extents[1], extents[0]};
    return LayOutContiguous(static_cast<RTDArray*>(result), AsArray(source)->header.data_type, Length(AsArray(source)),
                      swapped, 2);
}

VRN_EXPORT int32_t _vrtfsz(void* result, const void* source, const void* mold, int32_t size, int32_t sizePresent) {
    const RTDArray* moldArray = AsArray(mold);
    int32_t moldLength = Length(moldArray);
    auto* rtd = static_cast<RTDArray*>(result);
    if (sizePresent & 1) return LayOutContiguous(rtd, moldArray->header.data_type, moldLength, &size, 1);
    if (Rank(moldArray) == 0) return LayOutContiguous(rtd, moldArray->header.data_type, moldLength, nullptr, 0);
    int32_t extents[kMaxRank];
    int32_t rank = Extents(AsArray(source), extents);
    int64_t bytes = Length(AsArray(source));
    for (int32_t d = 0; d < rank; ++d) bytes *= extents[d];
    // Applied as it stands: no bytes give 1 element, or 0 for a mold of length 1.
    int32_t extent = moldLength != 0 ? static_cast<int32_t>((bytes - 1) / moldLength + 1) : 0;
    return LayOutContiguous(rtd, moldArray->header.data_type, moldLength, &extent, 1);
}

VRN_EXPORT int32_t _vrrssz(void* result, const void* source, const void* shape, uintptr_t, uintptr_t,
                           const void* shapeData) {
    const RTDArray* shapeArray = AsArray(shape);
    RTDDimension entry = FortranDimension(shapeArray, 1);
    int32_t rank = std::min(entry.extent, kMaxRank);
    int32_t width = shapeArray->element_len;
    int32_t extents[kMaxRank];
    const auto* bytes = static_cast<const unsigned char*>(shapeData);
    for (int32_t d = 0; d < rank; ++d) {
        const unsigned char* element = bytes + static_cast<int64_t>(d) * entry.multiplier;
        int8_t one;
        int16_t two;
        int32_t four;
        int64_t eight;
        switch (width) {
            case 1: std::memcpy(&one, element, 1); extents[d] = one; break;
            case 2: std::memcpy(&two, element, 2); extents[d] = two; break;
            case 8: std::memcpy(&eight, element, 8); extents[d] = static_cast<int32_t>(eight); break;  // the low word
            default: std::memcpy(&four, element, 4); extents[d] = four; break;
        }
    }
    return LayOutContiguous(static_cast<RTDArray*>(result), AsArray(source)->header.data_type, Length(AsArray(source)),
                      extents, rank);
}

VRN_EXPORT int32_t _vrmmsz(void* result, const void* a, const void* b) {
    const RTDArray* left = AsArray(a);
    const RTDArray* right = AsArray(b);
    uint8_t leftType = left->header.data_type;
    uint8_t rightType = right->header.data_type;
    int32_t leftLength = Length(left);
    int32_t rightLength = Length(right);
    int32_t length;
    if (leftType == rightType) {
        length = std::max(leftLength, rightLength);
    } else if (leftType == RTD_TYPE_INTEGER) {
        length = rightLength;
    } else if (rightType == RTD_TYPE_INTEGER) {
        length = leftLength;
    } else if (leftType == RTD_TYPE_REAL) {
        length = std::max(rightLength, 2 * leftLength);
    } else {
        length = std::max(leftLength, 2 * rightLength);
    }
    uint8_t type = std::max(leftType, rightType);
    int32_t rightLast = FortranDimension(right, right->rank).extent;
    auto* rtd = static_cast<RTDArray*>(result);
    if (left->rank == 1) return LayOutContiguous(rtd, type, length, &rightLast, 1);
    int32_t leftFirst = FortranDimension(left, 1).extent;
    if (right->rank == 1) return LayOutContiguous(rtd, type, length, &leftFirst, 1);
    int32_t extents[2] = {leftFirst, rightLast};
    return LayOutContiguous(rtd, type, length, extents, 2);
}

VRN_EXPORT int32_t _vrrptsz(uintptr_t, int32_t length, int32_t ncopies) {
    return ncopies < 0 ? 0 : length * ncopies;
}
