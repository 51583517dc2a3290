// PACK (ARRAY, MASK [, VECTOR]) and UNPACK (VECTOR, MASK, FIELD): the elements of ARRAY
// where MASK is true, in array element order, into a vector; and back, VECTOR's elements
// in order into the places where MASK is true, FIELD elsewhere. MASK is a logical of any
// kind, and for PACK may be a scalar; FIELD may be a scalar.
#include "core/export.h"
#include "intrinsics/data_movement.h"

namespace {

// PACK's result, when the frame allocates it, has the room _vrpkszg gives, which without
// VECTOR is every element of ARRAY; its extent is then set to the elements packed, here and
// in a result the caller provided, so that no second pass over MASK is needed to size it.
template <int Width>
void Pack(ResultRecord* record, const void* arrayData, const void* maskData, const void* vectorData,
          const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, int32_t hasVector) {
    if (!PrepareResult(record, [&](RTDArray* rtd) {
            return _vrpkszg(rtd, arrayRtd, maskData, vectorRtd, hasVector);
        })) {
        return;
    }
    Operand array = Describe(arrayData, arrayRtd);
    Operand mask = Describe(maskData, maskRtd);
    Operand out = ResultOperand(record);
    unsigned char* result = Writable(out);
    const int32_t length = out.length;
    const int64_t step = int64_t{out.stride[0]} * length;
    int64_t packed = 0;
    if (mask.rank == 0) {
        if (IsTrue(mask.data, mask.length)) {
            ElementCursor elements(array);
            for (; packed < elements.size(); ++packed) CopyElement<Width>(result + packed * step, elements.Next(), length);
        }
    } else if (Width > 0 && Contiguous(array) && Contiguous(mask) && out.stride[0] == 1) {
        const int64_t count = ElementCount(array);
        const int32_t truthLength = mask.length;
        for (int64_t i = 0; i < count; ++i) {
            if (IsTrue(mask.data + i * truthLength, truthLength)) {
                CopyElement<Width>(result + packed++ * Width, array.data + i * Width, Width);
            }
        }
    } else {
        int64_t strides[2][kMaxRank];
        StridesOf(array, array.rank, strides[0]);
        StridesOf(mask, array.rank, strides[1]);
        WalkTogether<2>(array.rank, array.extent, strides, [&](const int64_t* at) {
            if (!IsTrue(mask.data + at[1] * mask.length, mask.length)) return;
            CopyElement<Width>(result + packed * step, array.data + at[0] * length, length);
            ++packed;
        });
    }
    if (hasVector & 1) {
        // The rest of the result from VECTOR's elements at the same places.
        Operand vector = Describe(vectorData, vectorRtd);
        const int64_t vectorStep = int64_t{vector.stride[0]} * length;
        for (int64_t i = packed; i < out.extent[0] && i < vector.extent[0]; ++i) {
            CopyElement<Width>(result + i * step, vector.data + i * vectorStep, length);
        }
        return;
    }
    RTDArray* rtd = ResultRTD(record);
    RTDDimension entry = FortranDimension(rtd, 1);
    entry.extent = static_cast<int32_t>(packed);
    std::memcpy(&rtd->dims[rtd->rank - 1], &entry, sizeof entry);
}

template <int Width>
void Unpack(ResultRecord* record, const void* vectorData, const void* maskData, const void* fieldData,
            const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd) {
    if (!PrepareResult(record, [&](RTDArray* rtd) { return _vrupsz(rtd, vectorRtd, maskRtd); })) return;
    Operand vector = Describe(vectorData, vectorRtd);
    Operand mask = Describe(maskData, maskRtd);
    Operand field = Describe(fieldData, fieldRtd);
    Operand out = ResultOperand(record);
    unsigned char* result = Writable(out);
    const int32_t length = out.length;
    const int64_t vectorStep = int64_t{vector.stride[0]} * length;
    int64_t taken = 0;
    if (Width > 0 && Contiguous(out) && Contiguous(mask) && vector.stride[0] == 1 &&
        (field.rank == 0 || Contiguous(field))) {
        const int64_t count = ElementCount(out);
        const int32_t truthLength = mask.length;
        const int64_t fieldStep = field.rank == 0 ? 0 : Width;
        for (int64_t i = 0; i < count; ++i) {
            bool truth = IsTrue(mask.data + i * truthLength, truthLength);
            CopyElement<Width>(result + i * Width, truth ? vector.data + taken * Width : field.data + i * fieldStep, Width);
            taken += truth;
        }
        return;
    }
    int64_t strides[3][kMaxRank];
    StridesOf(out, out.rank, strides[0]);
    StridesOf(mask, out.rank, strides[1]);
    StridesOf(field, out.rank, strides[2]);
    WalkTogether<3>(out.rank, out.extent, strides, [&](const int64_t* at) {
        if (IsTrue(mask.data + at[1] * mask.length, mask.length)) {
            CopyElement<Width>(result + at[0] * length, vector.data + taken++ * vectorStep, length);
        } else {
            CopyElement<Width>(result + at[0] * length, field.data + at[2] * length, length);
        }
    });
}

}  // namespace

#define VRN_PACK(letters, width, blank)                                                                            \
    VRN_EXPORT void _vrpk##letters##g(ResultRecord* result, const void* array, const void* mask, const void* vector, \
                                      const RTDArray* arrayRtd, const RTDArray* maskRtd, const RTDArray* vectorRtd, \
                                      int32_t hasVector) {                                                         \
        Pack<width>(result, array, mask, vector, arrayRtd, maskRtd, vectorRtd, hasVector);                         \
    }                                                                                                              \
    VRN_EXPORT void _vrup##letters(ResultRecord* result, const void* vector, const void* mask, const void* field,   \
                                   const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd) { \
        Unpack<width>(result, vector, mask, field, vectorRtd, maskRtd, fieldRtd);                                  \
    }
VRN_MOVED_TYPES(VRN_PACK)
#undef VRN_PACK

// UNPACK of any type, its elements moved by the length VECTOR's RTD gives.
VRN_EXPORT void _vrups(ResultRecord* result, const void* vector, const void* mask, const void* field,
                       const RTDArray* vectorRtd, const RTDArray* maskRtd, const RTDArray* fieldRtd) {
    Unpack<0>(result, vector, mask, field, vectorRtd, maskRtd, fieldRtd);
}
