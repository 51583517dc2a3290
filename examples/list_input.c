/*
 * List-directed input of each kind of value from standard input, as the compiler calls
 * the library, echoed by list-directed output:
 *
 *       INTEGER N, I, J, K, L
 *       REAL(8) X
 *       COMPLEX Z
 *       LOGICAL FLAG
 *       CHARACTER(8) NAME
 *       K = -1
 *       READ *, N, X, Z, FLAG, NAME, I, J, K, L
 *       PRINT *, N, X, Z, FLAG, NAME, I, J, K, L
 *       END
 *
 * Given the line   7 2.5D0 (1.0,-0.5) .true. 'It''s' 2*4 ,, 9
 * K keeps its value: the two commas give it a null value.
 */
#include <stddef.h>

#include "vrn90.h"

int main(void) {
    int32_t input = 5, output = 6;
    uint32_t read = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
    uint32_t print = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
    int32_t four = 4, eight = 8, nameLength = 8;
    int32_t n = 0, i = 0, j = 0, k = -1, l = 0, flag = 0;
    double x = 0;
    float z[2] = {0, 0};
    char name[8];

    LocalContext* s = _vrnBeginIO(&input, read, NULL, 0, NULL, 0, NULL);
    _vrnReadLDInt(s, &n, 0, &four);
    _vrnReadLDReal(s, &x, 0, &eight);
    _vrnReadLDCmplx(s, z, &eight, &four);
    _vrnReadLDLog(s, &flag, 0, &four);
    _vrnReadLDChar(s, name, &nameLength);
    _vrnReadLDInt(s, &i, 0, &four);
    _vrnReadLDInt(s, &j, 0, &four);
    _vrnReadLDInt(s, &k, 0, &four);
    _vrnReadLDInt(s, &l, 0, &four);
    _vrnEndIO(s);

    s = _vrnBeginIO(&output, print, NULL, 0, NULL, 0, NULL);
    _vrnWriteLDInt(s, &n, 0, &four);
    _vrnWriteLDReal(s, &x, 0, &eight);
    _vrnWriteLDCmplx(s, z, &eight, &four);
    _vrnWriteLDLog(s, &flag, 0, &four);
    _vrnWriteLDChar(s, name, &nameLength);
    _vrnWriteLDInt(s, &i, 0, &four);
    _vrnWriteLDInt(s, &j, 0, &four);
    _vrnWriteLDInt(s, &k, 0, &four);
    _vrnWriteLDInt(s, &l, 0, &four);
    _vrnEndIO(s);
    _vrnExit(0);
}
