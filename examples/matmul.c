/* MATMUL and DOT_PRODUCT as compiled code calls them for
 *
 *     REAL(8) :: A(2,3) = RESHAPE([1,4,2,5,3,6], [2,3]), B(3,2) = RESHAPE([7,9,11,8,10,12], [3,2]), C(2,2)
 *     C = MATMUL(A, B)
 *     PRINT *, DOT_PRODUCT([(0,1)], [(0,1)])
 *
 * Descriptors hold their dimensions in reverse: entry 0 is the last dimension. */
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "vrn90.h"

/* A contiguous rank-2 REAL(8) or rank-1 descriptor, built in a result record's room. */
static void describe(ResultRecord* record, void* data, int32_t rows, int32_t columns, int32_t length, uint8_t type) {
    memset(record, 0, sizeof *record);
    record->base_ptr = record->rtd_base_ptr = (uintptr_t)data;
    record->header.dscr_type = RTD_ARRAY;
    record->header.data_type = type;
    record->header.flags = RTD_FLAG_IS_ALLOCATED | RTD_FLAG_IS_CONTIGUOUS;
    record->element_len = length;
    if (columns == 0) {
        record->rank = 1;
        record->dims[0] = (RTDDimension){1, rows, length};
    } else {
        record->rank = 2;
        record->dims[0] = (RTDDimension){1, columns, length * rows};
        record->dims[1] = (RTDDimension){1, rows, length};
    }
}

static const RTDArray* rtd(const ResultRecord* record) { return (const RTDArray*)&record->rtd_base_ptr; }

int main(void) {
    double a[6] = {1, 4, 2, 5, 3, 6}, b[6] = {7, 9, 11, 8, 10, 12}, c[4];
    ResultRecord ad, bd, cd;
    describe(&ad, a, 2, 3, 8, RTD_TYPE_REAL);
    describe(&bd, b, 3, 2, 8, RTD_TYPE_REAL);
    describe(&cd, c, 2, 2, 8, RTD_TYPE_REAL);
    _vrmmr8(&cd, a, b, 0, rtd(&ad), rtd(&bd), 0);
    printf("%g %g\n%g %g\n", c[0], c[2], c[1], c[3]);

    double i[2] = {0, 1};
    ResultRecord id;
    describe(&id, i, 1, 0, 16, RTD_TYPE_COMPLEX);
    double _Complex d = _vrdpx16(i, i, rtd(&id), rtd(&id));
    printf("(%g,%g)\n", __real__ d, __imag__ d);
    return 0;
}
