/*
 * List-directed output of each kind of value, as the compiler calls the library:
 *
 *       PRINT *, 42, 3.14159, (1.5, -2.0), .TRUE., 'Fortran'
 *       PRINT *, 1.0D0 / 3.0D0, -0.0, 1.0E10, 'A', 'B'
 *       END
 */
#include <stddef.h>

#include "vrn90.h"

int main(void) {
    int32_t unit = 6;
    uint32_t print = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
    int32_t four = 4, eight = 8, length = 7, one = 1, complexLength = 8;

    LocalContext* s = _vrnBeginIO(&unit, print, NULL, 0, NULL, 0, NULL);
    int32_t answer = 42;
    float pi = 3.14159f;
    float z[2] = {1.5f, -2.0f};
    int32_t yes = 1;
    _vrnWriteLDInt(s, &answer, 0, &four);
    _vrnWriteLDReal(s, &pi, 0, &four);
    _vrnWriteLDCmplx(s, z, &complexLength, &four);
    _vrnWriteLDLog(s, &yes, 0, &four);
    _vrnWriteLDChar(s, "Fortran", &length);
    _vrnEndIO(s);

    s = _vrnBeginIO(&unit, print, NULL, 0, NULL, 0, NULL);
    double third = 1.0 / 3.0;
    float negativeZero = -0.0f, big = 1.0e10f;
    _vrnWriteLDReal(s, &third, 0, &eight);
    _vrnWriteLDReal(s, &negativeZero, 0, &four);
    _vrnWriteLDReal(s, &big, 0, &four);
    _vrnWriteLDChar(s, "A", &one);
    _vrnWriteLDChar(s, "B", &one);  /* two character values in a row: no separator */
    _vrnEndIO(s);
    _vrnExit(0);
}
