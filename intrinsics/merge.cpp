// MERGE (TSOURCE, FSOURCE, MASK): each element from TSOURCE where MASK is true, else from
// FSOURCE. Any of the three may be a scalar standing for every element; MASK is a logical
// of any kind.
#include "core/export.h"
#include "intrinsics/data_movement.h"

namespace {

template <int Width>
void Merge(ResultRecord* record, const void* tsource, const void* fsource, const void* mask, const RTDArray* tRtd,
           const RTDArray* fRtd, const RTDArray* maskRtd) {
    if (!PrepareResult(record, [&](RTDArray* rtd) { return _vrmrsz(rtd, tRtd, fRtd, maskRtd); })) return;
    Operand out = ResultOperand(record);
    Operand t = Describe(tsource, tRtd), f = Describe(fsource, fRtd), m = Describe(mask, maskRtd);
    const int32_t length = out.length;
    unsigned char* result = Writable(out);
    if (out.rank == 0) {
        CopyElement<Width>(result, IsTrue(m.data, m.length) ? t.data : f.data, length);
        return;
    }
    if (Width > 0 && t.rank > 0 && f.rank > 0 && m.rank > 0 && Contiguous(out) && Contiguous(t) && Contiguous(f) &&
        Contiguous(m)) {
        const int64_t count = ElementCount(out);
        const int32_t truthLength = m.length;
        for (int64_t i = 0; i < count; ++i) {
            // Both elements are loaded and one is chosen: the mask decides no branch.
            unsigned char either[2][Width > 0 ? Width : 1];
            CopyElement<Width>(either[0], f.data + i * Width, Width);
            CopyElement<Width>(either[1], t.data + i * Width, Width);
            CopyElement<Width>(result + i * Width, either[IsTrue(m.data + i * truthLength, truthLength)], Width);
        }
        return;
    }
    int64_t strides[4][kMaxRank];
    StridesOf(t, out.rank, strides[0]);
    StridesOf(f, out.rank, strides[1]);
    StridesOf(m, out.rank, strides[2]);
    StridesOf(out, out.rank, strides[3]);
    WalkTogether<4>(out.rank, out.extent, strides, [&](const int64_t* at) {
        bool truth = IsTrue(m.data + at[2] * m.length, m.length);
        CopyElement<Width>(result + at[3] * length, truth ? t.data + at[0] * length : f.data + at[1] * length, length);
    });
}

}  // namespace

#define VRN_MERGE(letters, width, blank)                                                                        \
    VRN_EXPORT void _vrmr##letters(ResultRecord* result, const void* tsource, const void* fsource,             \
                                   const void* mask, const RTDArray* tsourceRtd, const RTDArray* fsourceRtd,   \
                                   const RTDArray* maskRtd) {                                                  \
        Merge<width>(result, tsource, fsource, mask, tsourceRtd, fsourceRtd, maskRtd);                         \
    }
VRN_MOVED_TYPES(VRN_MERGE)
#undef VRN_MERGE
