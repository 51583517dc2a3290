// CSHIFT (ARRAY, SHIFT [, DIM]): each line along DIM rotated left by its SHIFT, which is a
// scalar or an array of rank one less holding one shift for each line, of any integer kind.
#include "core/export.h"
#include "intrinsics/data_movement.h"

namespace {

template <int Width>
void Cshift(ResultRecord* record, const void* arrayData, const void* shiftData, int32_t dim, const RTDArray* arrayRtd,
            const RTDArray* shiftRtd, int32_t hasDim) {
    if (!PrepareResult(record, [&](RTDArray* rtd) { return _vrcssz(rtd, arrayRtd); })) return;
    Operand array = Describe(arrayData, arrayRtd);
    Operand shift = Describe(shiftData, shiftRtd);
    Operand out = ResultOperand(record);
    const int32_t axis = ShiftAxis(dim, hasDim, array);
    if (axis < 0) return;
    unsigned char* result = Writable(out);
    const int32_t length = out.length;
    const int64_t n = array.extent[axis];
    const int64_t from = array.stride[axis], to = out.stride[axis];
    if (n <= 0) return;
    auto rotation = [&](int64_t shiftOffset) {
        int64_t k = ReadInteger(shift.data + shiftOffset * shift.length, shift.length) % n;
        return k < 0 ? k + n : k;
    };
    if (shift.rank == 0 && axis > 0) {
        const int64_t k = rotation(0);
        ForEachRunPlane(array, out, axis, [&](int64_t a, int64_t r) {
            for (int64_t j = 0; j < n; ++j) {
                int64_t source = j + k < n ? j + k : j + k - n;
                CopyRun<Width>(result + (r + j * to) * length, out.stride[0], array.data + (a + source * from) * length,
                               array.stride[0], array.extent[0], length);
            }
        });
        return;
    }
    Operand none;
    ForEachLine(array, out, axis, shift, none, [&](int64_t a, int64_t r, int64_t s, int64_t) {
        const int64_t k = rotation(s);
        CopyRun<Width>(result + r * length, to, array.data + (a + k * from) * length, from, n - k, length);
        CopyRun<Width>(result + (r + (n - k) * to) * length, to, array.data + a * length, from, k, length);
    });
}

}  // namespace

#define VRN_CSHIFT(letters, width, blank)                                                                         \
    VRN_EXPORT void _vrcs##letters(ResultRecord* result, const void* array, const void* shift, int32_t dim,      \
                                   const RTDArray* arrayRtd, const RTDArray* shiftRtd, int32_t hasDim) {         \
        Cshift<width>(result, array, shift, dim, arrayRtd, shiftRtd, hasDim);                                    \
    }
VRN_MOVED_TYPES(VRN_CSHIFT)
#undef VRN_CSHIFT
