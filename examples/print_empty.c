/*
 * The smallest Fortran program with output, as the compiler calls the library:
 *
 *       PRINT *
 *       END
 *
 * It writes one record holding a single blank (" \n") on unit 6.
 */
#include <stddef.h>

#include "vrn90.h"

int main(void) {
    int32_t unit = 6;
    LocalContext* statement = _vrnBeginIO(
        &unit, VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL), NULL, 0, NULL,
        0, NULL);
    _vrnEndIO(statement);
    _vrnExit(0); /* END: flushes and closes every unit */
}
