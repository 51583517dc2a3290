// TRANSPOSE (MATRIX): element (i, j) of the result is element (j, i) of the matrix. The copy
// goes by square tiles, so that both the rows read and the columns written stay in cache.
#include "core/export.h"
#include "intrinsics/data_movement.h"

namespace {

constexpr int64_t kTile = 64;

template <int Width>
void Transpose(ResultRecord* record, const void* matrixData, const RTDArray* matrixRtd) {
    if (!PrepareResult(record, [&](RTDArray* rtd) { return _vrtssz(rtd, matrixRtd); })) return;
    Operand matrix = Describe(matrixData, matrixRtd);
    Operand out = ResultOperand(record);
    if (matrix.rank != 2 || out.rank != 2) return;
    unsigned char* result = Writable(out);
    const int64_t bytes = out.length;
    const int64_t rows = matrix.extent[0], columns = matrix.extent[1];
    const int64_t m0 = matrix.stride[0], m1 = matrix.stride[1], r0 = out.stride[0], r1 = out.stride[1];
    // Tiles of the matrix, read down its columns, which lie in memory order, and written
    // along the result's rows; 64 x 64 measured best for REAL(8) here.
    for (int64_t j0 = 0; j0 < columns; j0 += kTile) {
        const int64_t j1 = j0 + kTile < columns ? j0 + kTile : columns;
        for (int64_t i0 = 0; i0 < rows; i0 += kTile) {
            const int64_t i1 = i0 + kTile < rows ? i0 + kTile : rows;
            for (int64_t j = j0; j < j1; ++j) {
                const unsigned char* from = matrix.data + (i0 * m0 + j * m1) * bytes;
                unsigned char* to = result + (j * r0 + i0 * r1) * bytes;
                for (int64_t i = i0; i < i1; ++i, from += m0 * bytes, to += r1 * bytes) {
                    CopyElement<Width>(to, from, static_cast<int32_t>(bytes));
                }
            }
        }
    }
}

}  // namespace

#define VRN_TRANSPOSE(letters, width, blank)                                                          \
    VRN_EXPORT void _vrts##letters(ResultRecord* result, const void* matrix, const RTDArray* matrixRtd) { \
        Transpose<width>(result, matrix, matrixRtd);                                                 \
    }
VRN_MOVED_TYPES(VRN_TRANSPOSE)
#undef VRN_TRANSPOSE
