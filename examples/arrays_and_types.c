/*
 * Array sections and a derived type with a defined output procedure, as the compiler
 * calls the library:
 *
 *       TYPE point
 *          INTEGER :: x, y
 *       CONTAINS
 *          GENERIC :: WRITE(FORMATTED) => write_point
 *       END TYPE
 *       REAL(8) :: grid(4,3) = RESHAPE([(i, i = 1, 12)], [4,3])
 *       WRITE (*, '(2F5.1)') grid(2:4:2, :)       ! every second row: a described section
 *       READ ('70 80 90', *) grid(1, :)           ! the first row, four elements apart
 *       WRITE (*, '(3F5.1)') grid(1, :)
 *       WRITE (*, '(A,DT"pt"(3),A)') 'p = ', point(3, -4), '.'
 *       END
 *
 *       SUBROUTINE write_point(dtv, unit, iotype, v_list, iostat, iomsg)
 *          ! writes "(x,y)", each number v_list(1) wide, and the iotype it was given
 *          WRITE (unit, '(A,I<w>,A,I<w>,A,A)', IOSTAT=iostat) '(', dtv%x, ',', dtv%y, ') ', iotype
 */
#include <stdio.h>
#include <string.h>

#include "vrn90.h"

typedef struct {
    int32_t x, y;
} Point;

/* One dimension entry of a descriptor; the table holds Fortran dimension 1 last. */
static void SetDimension(RTDArray* rtd, int32_t entry, int32_t extent, int32_t multiplier) {
    RTDDimension dimension = {1, extent, multiplier};
    memcpy(&rtd->dims[entry], &dimension, sizeof dimension);
}

static void WritePoint(const RTD* dtv, const void* unit, const char* iotype, uintptr_t vlist, uintptr_t count,
                       void* iostat, char* iomsg, uintptr_t value, int32_t iotypeLength, int32_t iomsgLength) {
    (void)iomsg, (void)value, (void)iomsgLength;
    const Point* p = (const Point*)dtv->base_ptr;
    int32_t width = count > 0 ? ((const int32_t*)vlist)[0] : 0;
    char format[40];
    snprintf(format, sizeof format, "(A,I%d,A,I%d,A,A)", width, width);
    VrnFormatBlock block = {1, format, strlen(format), 0, NULL};
    uint32_t write = VRN_STATEMENT_FLAGS(VRN_KIND_FORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
    int32_t one = 1, two = 2, four = 4;
    LocalContext* s = _vrnBeginIO((void*)unit, write, NULL, 0, iostat, 0, &block);
    _vrnWriteFmt(s, "(", &one, &one, 2);
    _vrnWriteFmt(s, &p->x, &four, &four, 0);
    _vrnWriteFmt(s, ",", &one, &one, 2);
    _vrnWriteFmt(s, &p->y, &four, &four, 0);
    _vrnWriteFmt(s, ") ", &two, &two, 2);
    _vrnWriteFmt(s, iotype, &iotypeLength, &iotypeLength, 2);
    _vrnEndIO(s);
}

int main(void) {
    int32_t unit = 6, eight = 8;
    uint32_t write = VRN_STATEMENT_FLAGS(VRN_KIND_FORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
    uint32_t read = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
    double grid[12];
    for (int i = 0; i < 12; ++i) grid[i] = i + 1;

    /* grid(2:4:2, :): two rows of three columns, 16 and 32 bytes apart. */
    union {
        RTDArray rtd;
        unsigned char room[sizeof(RTDArray) + 2 * sizeof(RTDDimension)];
    } section;
    memset(&section, 0, sizeof section);
    section.rtd.header = (RTDHeader){RTD_ARRAY, RTD_TYPE_REAL, RTD_FLAG_IS_ASSOCIATED, 1};
    section.rtd.element_len = 8;
    section.rtd.rank = 2;
    SetDimension(&section.rtd, 1, 2, 16);
    SetDimension(&section.rtd, 0, 3, 32);
    uintptr_t descriptor = (uintptr_t)&section.rtd;
    VrnFormatBlock pairs = {1, "(2F5.1)", 7, 0, NULL};
    LocalContext* s = _vrnBeginIO(&unit, write, NULL, 0, NULL, 0, &pairs);
    _vrnWriteFmtArray(s, &grid[1], &descriptor, &eight, 4 | VRN_ARRAY_DESCRIBED, 0);
    _vrnEndIO(s);

    /* grid(1, :) from an internal file. */
    SetDimension(&section.rtd, 1, 3, 32);
    section.rtd.rank = 1;
    char text[] = "70 80 90";
    InternalFile file = {(uintptr_t)text, sizeof text - 1, sizeof text - 1};
    InternalFile* fileAddress = &file;
    s = _vrnBeginIO(&fileAddress, read | VRN_FLAG_INTERNAL, NULL, 0, NULL, 0, NULL);
    _vrnReadLDArray(s, &grid[0], &descriptor, &eight, 4 | VRN_ARRAY_DESCRIBED, 0);
    _vrnEndIO(s);
    VrnFormatBlock row = {1, "(3F5.1)", 7, 0, NULL};
    s = _vrnBeginIO(&unit, write, NULL, 0, NULL, 0, &row);
    _vrnWriteFmtArray(s, &grid[0], &descriptor, &eight, 4 | VRN_ARRAY_DESCRIBED, 0);
    _vrnEndIO(s);

    /* The type's table (two INTEGER(4) components) and its defined output procedure. */
    uintptr_t table[2 + 2 * 6] = {2, sizeof(Point), 0, 4, 0, 0, 0, 0, 0, 4, 0, 0, 0, 4};
    const VrnDTTable* tableAddress = (const VrnDTTable*)table;
    RTD dtv = {0, {RTD_SCALAR, RTD_TYPE_DERIVED, 0, 2}, sizeof(Point)};
    VrnDTIORow procedure = {(uintptr_t)WritePoint, (uintptr_t)&dtv, 0, 0, 0, 0};
    const VrnDTIORow* dtio = &procedure;
    Point p = {3, -4};
    int32_t four = 4, one = 1;
    VrnFormatBlock labelled = {1, "(A,DT\"pt\"(3),A)", 15, 0, NULL};
    s = _vrnBeginIO(&unit, write, NULL, 0, NULL, 0, &labelled);
    _vrnWriteFmt(s, "p = ", &four, &four, 2);
    _vrnWriteFmtDT_DTIO(s, &p, 0, &tableAddress, &dtio);
    _vrnWriteFmt(s, ".", &one, &one, 2);
    _vrnEndIO(s);
    _vrnExit(0);
}
