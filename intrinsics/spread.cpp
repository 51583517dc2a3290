// SPREAD (SOURCE, DIM, NCOPIES): the source repeated NCOPIES times along a new dimension
// DIM; NCOPIES of 0 or less gives an empty result. SOURCE may be a scalar.
#include "core/export.h"
#include "intrinsics/data_movement.h"

namespace {

template <int Width>
void Spread(ResultRecord* record, const void* sourceData, int32_t dim, int32_t ncopies, const RTDArray* sourceRtd) {
    if (!PrepareResult(record, [&](RTDArray* rtd) { return _vrspsz(rtd, sourceRtd, dim, ncopies); })) return;
    Operand source = Describe(sourceData, sourceRtd);
    if (dim < 1 || dim > source.rank + 1) return;  // the sizing function has called the hook
    Operand out = ResultOperand(record);
    unsigned char* result = Writable(out);
    const int32_t length = out.length;
    const int32_t axis = dim - 1;
    const int64_t copies = out.extent[axis];
    const int64_t block = ElementCount(source);
    if (Width > 0 && Contiguous(out) && Contiguous(source)) {
        const int64_t bytes = Width;
        if (axis == source.rank) {
            // The whole source, once for each copy.
            for (int64_t c = 0; c < copies; ++c) std::memcpy(result + c * block * bytes, source.data, block * bytes);
            return;
        }
        if (axis == 0) {
            // Each element, NCOPIES times in a row.
            for (int64_t e = 0; e < block; ++e) {
                for (int64_t c = 0; c < copies; ++c) CopyElement<Width>(result + (e * copies + c) * bytes, source.data + e * bytes, Width);
            }
            return;
        }
    }
    // Walk the result; the source's subscripts are the result's without DIM.
    int64_t strides[2][kMaxRank];
    StridesOf(out, out.rank, strides[1]);
    for (int32_t d = 0, s = 0; d < kMaxRank; ++d) strides[0][d] = d == axis || d >= out.rank ? 0 : source.stride[s++];
    WalkTogether<2>(out.rank, out.extent, strides, [&](const int64_t* at) {
        CopyElement<Width>(result + at[1] * length, source.data + at[0] * length, length);
    });
}

}  // namespace

#define VRN_SPREAD(letters, width, blank)                                                                     \
    VRN_EXPORT void _vrsp##letters(ResultRecord* result, const void* source, int32_t dim, int32_t ncopies,   \
                                   const RTDArray* sourceRtd) {                                              \
        Spread<width>(result, source, dim, ncopies, sourceRtd);                                              \
    }
VRN_MOVED_TYPES(VRN_SPREAD)
#undef VRN_SPREAD
