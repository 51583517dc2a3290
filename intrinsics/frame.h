// The frame shared by the array intrinsics: result records, effective element lengths,
// the truth of logical elements, and results built from a source's shape.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "vrn90.h"

constexpr int kMaxRank = RTD_MAX_RANK;

// A padded array stores elements at double width; everything here uses the effective
// length, and results are never padded.
inline int32_t EffectiveLength(const RTD* rtd) {
    int32_t length = rtd->element_len < 0 ? 0 : rtd->element_len;
    if (rtd->header.data_type >= RTD_TYPE_INTEGER && (rtd->header.flags & RTD_FLAG_IS_PADDED)) length >>= 1;
    return length;
}
inline int32_t EffectiveLength(const RTDArray* rtd) { return EffectiveLength(reinterpret_cast<const RTD*>(rtd)); }

// The least significant byte of a logical element of any kind, which carries its truth.
inline unsigned char TruthByte(const unsigned char* element, int32_t length) {
#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    return element[length - 1];
#else
    (void)length;
    return element[0];
#endif
}

// A logical element is true when bit 0 of that byte is set.
inline bool IsTrue(const unsigned char* element, int32_t length) { return (TruthByte(element, length) & 1) != 0; }

inline const RTDArray* AsArray(const void* rtd) { return static_cast<const RTDArray*>(rtd); }

// Fortran dimension d (from 1) of an array descriptor: the table holds it at rank - d.
inline RTDDimension FortranDimension(const RTDArray* array, int32_t d) {
    RTDDimension entry;
    std::memcpy(&entry, &array->dims[array->rank - d], sizeof entry);
    return entry;
}

// The threads a threaded intrinsic (MATMUL, a long random fill) divides its work among:
// the option INTRINTHDS, else one per processor online.
int32_t get_num_threads();

// Lays out `result` as a contiguous array of `rank` extents given in Fortran order,
// lbound 1, with the type and element length given. The result is the size in bytes.
int32_t LayOutContiguous(RTDArray* result, uint8_t type, int32_t length, const int32_t* extents, int32_t rank);

// Fills `result` (an array RTD with room for kMaxRank dimensions) with the shape of
// `source` less dimension `dim` when hasDim and the rank is at least 2, else a scalar;
// element length and type from the source. The result is the size in bytes.
int32_t BuildReducedResult(RTDArray* result, const RTDArray* source, int32_t dim, bool hasDim);

// The RTD inside a result record.
inline RTDArray* ResultRTD(ResultRecord* record) { return reinterpret_cast<RTDArray*>(&record->rtd_base_ptr); }
inline const RTDArray* ResultRTD(const ResultRecord* record) {
    return reinterpret_cast<const RTDArray*>(&record->rtd_base_ptr);
}
static_assert(offsetof(ResultRecord, dims) - offsetof(ResultRecord, rtd_base_ptr) == offsetof(RTDArray, dims),
              "the result record holds an array RTD");

// Step 1 of every transformational entry: when the result is not allocated yet, build its
// descriptor by `build` and allocate it. false when the result is empty and nothing is to
// be done.
template <typename Build>
bool PrepareResult(ResultRecord* record, Build build) {
    RTDArray* rtd = ResultRTD(record);
    if (rtd->header.flags & RTD_FLAG_IS_ALLOCATED) return true;
    int32_t size = build(rtd);
    if (size <= 0) {
        record->base_ptr = 0;
        rtd->base_ptr = 0;
        return false;
    }
    // No check: these entries have no error path, and the first store faults instead.
    void* data = std::malloc(static_cast<size_t>(size));
    record->base_ptr = reinterpret_cast<uintptr_t>(data);
    rtd->base_ptr = record->base_ptr;
    rtd->header.flags |= RTD_FLAG_IS_ALLOCATED | RTD_FLAG_OK_TO_DEALLOCATE | RTD_FLAG_IS_CONTIGUOUS;
    return true;
}

// Tables of 20 entries for a walk over any rank: extents and strides in elements, padded
// with 1 beyond the rank, zero strides replaced by 1.
struct Nest {
    int32_t extent[kMaxRank];
    int32_t stride[kMaxRank];
};

// Visits offsets (in elements) of every element the tables reach, first table entry
// innermost; a zero extent anywhere visits nothing.
template <typename Visit>
void WalkNest(const int32_t (&extent)[kMaxRank], const int32_t (&stride)[kMaxRank], Visit visit) {
    for (int32_t e : extent) {
        if (e <= 0) return;
    }
    int32_t index[kMaxRank] = {};
    int64_t offset = 0;
    for (;;) {
        for (int32_t i = 0; i < extent[0]; ++i) visit(offset + static_cast<int64_t>(i) * stride[0]);
        int level = 1;
        for (; level < kMaxRank; ++level) {
            offset += stride[level];
            if (++index[level] < extent[level]) break;
            offset -= static_cast<int64_t>(index[level]) * stride[level];
            index[level] = 0;
        }
        if (level == kMaxRank) return;
    }
}
