// EOSHIFT (ARRAY, SHIFT [, BOUNDARY] [, DIM]): each line along DIM shifted by its SHIFT, the
// places left open filled with its BOUNDARY. SHIFT and BOUNDARY are scalars or arrays of
// rank one less; without BOUNDARY the fill is zero, false, or blanks for characters.
#include <cstdlib>

#include "core/export.h"
#include "intrinsics/data_movement.h"

namespace {

template <int Width>
void FillRun(unsigned char* to, int64_t step, const unsigned char* element, int64_t count, int32_t length) {
    const int64_t bytes = Width > 0 ? Width : length;
    for (int64_t i = 0; i < count; ++i) CopyElement<Width>(to + i * step * bytes, element, length);
}

template <int Width, bool BlankFill>
void Eoshift(ResultRecord* record, const void* arrayData, const void* shiftData, const void* boundaryData,
             int32_t dim, const RTDArray* arrayRtd, const RTDArray* shiftRtd, const RTDArray* boundaryRtd,
             int32_t hasBoundary, int32_t hasDim) {
    if (!PrepareResult(record, [&](RTDArray* rtd) { return _vressz(rtd, arrayRtd); })) return;
    Operand array = Describe(arrayData, arrayRtd);
    Operand shift = Describe(shiftData, shiftRtd);
    Operand out = ResultOperand(record);
    const int32_t axis = ShiftAxis(dim, hasDim, array);
    if (axis < 0) return;
    unsigned char* result = Writable(out);
    const int32_t length = out.length;
    // The default boundary: one element of zero bytes, or of blanks.
    unsigned char small[64];
    unsigned char* fill = small;
    struct Release {
        void* room;
        ~Release() { std::free(room); }
    } release{nullptr};
    Operand boundary;
    if (hasBoundary & 1) {
        boundary = Describe(boundaryData, boundaryRtd);
    } else {
        if (length > static_cast<int32_t>(sizeof small)) {
            fill = static_cast<unsigned char*>(std::malloc(static_cast<size_t>(length)));
            if (fill == nullptr) return;
            release.room = fill;
        }
        std::memset(fill, BlankFill ? ' ' : 0, static_cast<size_t>(length));
        boundary.data = fill;
        boundary.length = length;
    }
    const int64_t n = array.extent[axis];
    const int64_t from = array.stride[axis], to = out.stride[axis];
    // How many places the line moves left (negative: right), no more than its length.
    auto places = [&](int64_t shiftOffset) {
        int64_t k = ReadInteger(shift.data + shiftOffset * shift.length, shift.length);
        return k > n ? n : k < -n ? -n : k;
    };
    if (shift.rank == 0 && boundary.rank == 0 && axis > 0) {
        const int64_t k = places(0);
        ForEachRunPlane(array, out, axis, [&](int64_t a, int64_t r) {
            for (int64_t j = 0; j < n; ++j) {
                unsigned char* line = result + (r + j * to) * length;
                if (j + k >= 0 && j + k < n) {
                    CopyRun<Width>(line, out.stride[0], array.data + (a + (j + k) * from) * length, array.stride[0],
                                   array.extent[0], length);
                } else {
                    FillRun<Width>(line, out.stride[0], boundary.data, array.extent[0], length);
                }
            }
        });
        return;
    }
    ForEachLine(array, out, axis, shift, boundary, [&](int64_t a, int64_t r, int64_t s, int64_t b) {
        const int64_t k = places(s);
        const unsigned char* edge = boundary.data + b * boundary.length;
        if (k >= 0) {
            CopyRun<Width>(result + r * length, to, array.data + (a + k * from) * length, from, n - k, length);
            FillRun<Width>(result + (r + (n - k) * to) * length, to, edge, k, length);
        } else {
            FillRun<Width>(result + r * length, to, edge, -k, length);
            CopyRun<Width>(result + (r - k * to) * length, to, array.data + a * length, from, n + k, length);
        }
    });
}

}  // namespace

#define VRN_EOSHIFT(letters, width, blank)                                                                          \
    VRN_EXPORT void _vres##letters##g(ResultRecord* result, const void* array, const void* shift,                  \
                                      const void* boundary, int32_t dim, const RTDArray* arrayRtd,                \
                                      const RTDArray* shiftRtd, const RTDArray* boundaryRtd, int32_t hasBoundary, \
                                      int32_t hasDim) {                                                           \
        Eoshift<width, blank>(result, array, shift, boundary, dim, arrayRtd, shiftRtd, boundaryRtd, hasBoundary,  \
                              hasDim);                                                                            \
    }
VRN_MOVED_TYPES(VRN_EOSHIFT)
#undef VRN_EOSHIFT
