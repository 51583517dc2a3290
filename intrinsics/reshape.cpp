// RESHAPE (SOURCE, SHAPE [, PAD] [, ORDER]): the elements of SOURCE in array element order,
// then those of PAD over and over, laid into the result in the order of its subscripts
// permuted by ORDER (ORDER(1) fastest).
#include "core/export.h"
#include "intrinsics/data_movement.h"

namespace {

template <int Width>
void Reshape(ResultRecord* record, const void* sourceData, const void* shape, const void* pad, const void* order,
             const RTDArray* sourceRtd, const RTDArray* shapeRtd, const RTDArray* padRtd, const RTDArray* orderRtd,
             int32_t hasPad, int32_t hasOrder) {
    if (!PrepareResult(record, [&](RTDArray* rtd) { return _vrrssz(rtd, sourceRtd, shapeRtd, 0, 0, shape); })) return;
    Operand source = Describe(sourceData, sourceRtd);
    Operand out = ResultOperand(record);
    unsigned char* result = Writable(out);
    const int32_t length = out.length;
    const int64_t sourceCount = ElementCount(source);
    const int64_t resultCount = ElementCount(out);
    const bool permuted = (hasOrder & 1) != 0;
    if (!permuted && Contiguous(out) && Contiguous(source) && sourceCount >= resultCount) {
        std::memmove(result, source.data, static_cast<size_t>(resultCount * length));
        return;
    }
    // The result's dimensions in the order they are filled.
    int32_t dims[kMaxRank];
    for (int32_t d = 0; d < out.rank; ++d) dims[d] = d;
    if (permuted) {
        Operand orderVector = Describe(order, orderRtd);
        for (int32_t d = 0; d < out.rank && d < orderVector.extent[0]; ++d) {
            int64_t value = ReadInteger(orderVector.data + d * orderVector.stride[0] * orderVector.length, orderVector.length);
            if (value >= 1 && value <= out.rank) dims[d] = static_cast<int32_t>(value - 1);
        }
    }
    int32_t extents[kMaxRank];
    int64_t strides[1][kMaxRank] = {};
    for (int32_t d = 0; d < out.rank; ++d) {
        extents[d] = out.extent[dims[d]];
        strides[0][d] = out.stride[dims[d]];
    }
    ElementCursor fromSource(source);
    Operand padding = (hasPad & 1) ? Describe(pad, padRtd) : Operand{};
    ElementCursor fromPad(padding);
    const bool padded = (hasPad & 1) && fromPad.size() > 0;
    int64_t left = sourceCount;
    WalkTogether<1>(out.rank, extents, strides, [&](const int64_t* at) {
        const unsigned char* from;
        if (left > 0) {
            from = fromSource.Next();
            --left;
        } else if (padded) {
            from = fromPad.Next();
        } else {
            return;  // SOURCE too short and no PAD: not a conforming call
        }
        CopyElement<Width>(result + at[0] * length, from, length);
    });
}

}  // namespace

#define VRN_RESHAPE(letters, width, blank)                                                                          \
    VRN_EXPORT void _vrrs##letters##g(ResultRecord* result, const void* source, const void* shape, const void* pad,  \
                                      const void* order, const RTDArray* sourceRtd, const RTDArray* shapeRtd,       \
                                      const RTDArray* padRtd, const RTDArray* orderRtd, int32_t hasPad,             \
                                      int32_t hasOrder) {                                                           \
        Reshape<width>(result, source, shape, pad, order, sourceRtd, shapeRtd, padRtd, orderRtd, hasPad, hasOrder); \
    }
VRN_MOVED_TYPES(VRN_RESHAPE)
#undef VRN_RESHAPE
