/*
 * A C procedure that Fortran calls with an array section and an unallocated allocatable:
 *
 *       INTERFACE
 *          SUBROUTINE row_sums(a, sums) BIND(C)
 *             REAL(8), INTENT(IN) :: a(:,:)
 *             REAL(8), ALLOCATABLE, INTENT(OUT) :: sums(:)
 *          END SUBROUTINE
 *       END INTERFACE
 *       REAL(8) :: grid(6,4) = RESHAPE([(i, i = 1, 24)], [6,4])
 *       REAL(8), ALLOCATABLE :: sums(:)
 *       CALL row_sums(grid(2:6:2, :), sums)      ! rows 2, 4 and 6
 *       PRINT *, LBOUND(sums), sums
 *       END
 *
 * row_sums walks its argument with CFI_address, takes the section of every other column
 * with CFI_section, and allocates its result with CFI_allocate. main plays the compiler:
 * it describes the actual arguments by RTDs and converts them around the call.
 */
#include <ISO_Fortran_binding.h>
#include <stdio.h>
#include <string.h>

#include "vrn90.h"

/* The sum of each row of `a` over its odd-numbered columns (1, 3, ...), into `sums`,
 * allocated with the bounds of a's rows from 1. */
void row_sums(const CFI_cdesc_t* a, CFI_cdesc_t* sums) {
    CFI_index_t rows = a->dim[0].extent, columns = a->dim[1].extent;

    /* a(:, 1::2): all rows, every other column. The section keeps a's type and length. */
    CFI_CDESC_T(2) odd;
    CFI_establish((CFI_cdesc_t*)&odd, NULL, CFI_attribute_other, a->type, a->elem_len, 2, NULL);
    CFI_index_t lower[2] = {0, 0}, upper[2] = {rows - 1, columns - 1}, strides[2] = {1, 2};
    if (CFI_section((CFI_cdesc_t*)&odd, a, lower, upper, strides) != CFI_SUCCESS) return;

    CFI_index_t first[1] = {1}, last[1] = {rows};
    if (CFI_allocate(sums, first, last, 0) != CFI_SUCCESS) return;
    for (CFI_index_t i = 0; i < rows; ++i) {
        double total = 0;
        for (CFI_index_t j = 0; j < odd.dim[1].extent; ++j) {
            CFI_index_t at[2] = {i, j};
            total += *(const double*)CFI_address((CFI_cdesc_t*)&odd, at);
        }
        CFI_index_t element[1] = {i + 1};
        *(double*)CFI_address(sums, element) = total;
    }
}

/* An array RTD with room for two dimensions; entry 0 is Fortran dimension 2. */
typedef struct {
    RTDArray head;
    RTDDimension room[2];
} RTD2;

static void Describe(RTDArray* rtd, void* data, uint8_t flags, int32_t rank, const RTDDimension* fortranOrder) {
    rtd->base_ptr = (uintptr_t)data;
    rtd->header.dscr_type = RTD_ARRAY;
    rtd->header.data_type = RTD_TYPE_REAL;
    rtd->header.flags = flags;
    rtd->header.version = sizeof(void*) == 8 ? RTD_VERSION_64BIT | 1 : 1;
    rtd->element_len = 8;
    rtd->rank = rank;
    rtd->rel_virtual_org = 0;
    for (int32_t d = 0; d < rank; ++d) {
        memcpy(&rtd->dims[rank - 1 - d], &fortranOrder[d], sizeof(RTDDimension));
        rtd->rel_virtual_org -= fortranOrder[d].low_bound * fortranOrder[d].multiplier;
    }
}

int main(void) {
    double grid[24];
    for (int i = 0; i < 24; ++i) grid[i] = i + 1;

    /* grid(2:6:2, :) starts at grid(2,1), steps 16 bytes down a column and 48 across. */
    RTD2 section, sums;
    RTDDimension sectionDims[2] = {{1, 3, 16}, {1, 4, 48}};
    Describe(&section.head, &grid[1], 0, 2, sectionDims);
    RTDDimension none[1] = {{1, 0, 8}};
    Describe(&sums.head, NULL, 0, 1, none);

    CFI_CDESC_T(2) a;
    CFI_CDESC_T(1) result;
    if (__vrn_rtd_to_cfi((CFI_cdesc_t*)&a, &section, CFI_attribute_other) != CFI_SUCCESS ||
        __vrn_rtd_to_cfi((CFI_cdesc_t*)&result, &sums, CFI_attribute_allocatable) != CFI_SUCCESS) {
        return 1;
    }
    row_sums((const CFI_cdesc_t*)&a, (CFI_cdesc_t*)&result);
    if (__vrn_cfi_to_rtd(&sums, (CFI_cdesc_t*)&result) != CFI_SUCCESS) return 1;

    /* PRINT *, LBOUND(sums), sums */
    RTDDimension shape;
    memcpy(&shape, &sums.head.dims[0], sizeof shape);
    const double* values = (const double*)sums.head.base_ptr;
    printf("allocated %d, lower bound %d:", (sums.head.header.flags & RTD_FLAG_IS_ALLOCATED) != 0, shape.low_bound);
    for (int32_t i = 0; i < shape.extent; ++i) printf(" %g", values[i]);
    printf("\n");
    return CFI_deallocate((CFI_cdesc_t*)&result) == CFI_SUCCESS ? 0 : 1;
}
