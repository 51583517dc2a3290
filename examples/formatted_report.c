/*
 * A formatted report, as the compiler calls the library for
 *
 *       CHARACTER(8) :: NAME(3) = ['Mercury ', 'Venus   ', 'Earth   ']
 *       INTEGER :: MOONS(3) = [0, 0, 1]
 *       REAL(8) :: AU(3) = [0.387D0, 0.723D0, 1.0D0], MASS(3) = [3.301D23, 4.867D24, 5.972D24]
 *       LOGICAL :: ROCKY(3) = .TRUE.
 *       WRITE (6, '(A8,T12,"moons",T25,"au",T34,"mass kg",T42,"1e24 kg",T52,"rocky")') 'planet'
 *       WRITE (6, '(A8,I8,F10.3,ES14.4,G12.4,L4)') (NAME(I), MOONS(I), AU(I), MASS(I), &
 *                                                 MASS(I) / 1.0D24, ROCKY(I), I = 1, 3)
 *       WRITE (6, '("total",T12,I4/(2X,F6.1,:,","))') SUM(MOONS), AU * 10
 *       END
 *
 * The format of the table is compiled once, as a compiler does for a constant format;
 * the others are given as text and encoded at run time. The second WRITE reverts to the
 * start of its format for each planet; the third reverts to its group, one value a record.
 */
#include <stddef.h>
#include <string.h>

#include "vrn90.h"

static LocalContext* Start(int32_t* unit, VrnFormatBlock* block) {
    uint32_t write = VRN_STATEMENT_FLAGS(VRN_KIND_FORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
    return _vrnBeginIO(unit, write, NULL, 0, NULL, 0, block);
}

static VrnFormatBlock TextFormat(const char* text) {
    VrnFormatBlock block = {1, text, strlen(text), 0, NULL};
    return block;
}

int main(void) {
    int32_t unit = 6;
    const char* names[3] = {"Mercury ", "Venus   ", "Earth   "};
    int32_t moons[3] = {0, 0, 1};
    double au[3] = {0.387, 0.723, 1.0};
    double mass[3] = {3.301e23, 4.867e24, 5.972e24};
    int32_t rocky = 1;
    int32_t four = 4, eight = 8, nameLength = 8;

    VrnFormatBlock heading = TextFormat("(A8,T12,\"moons\",T25,\"au\",T34,\"mass kg\",T42,\"1e24 kg\",T52,\"rocky\")");
    LocalContext* s = Start(&unit, &heading);
    _vrnWriteFmt(s, "planet  ", &nameLength, &nameLength, 2);
    _vrnEndIO(s);

    /* The compiler's encoding of a constant format: 64-bit slots for a 64-bit run-time. */
    static const char table[] = "(A8,I8,F10.3,ES14.4,G12.4,L4)";
    void* code = NULL;
    int32_t bytes = 0, expressions = 0;
    VrnFormatExpression* expressionTable = NULL;
    uint32_t flags = VRN_FMT_COMPILE_TIME | (sizeof(void*) == 8 ? VRN_FMT_64BIT : 0u);
    _vrnencodeformat(table, (int32_t)strlen(table), flags, NULL, &expressions, &expressionTable, &code, &bytes);
    VrnFormatBlock compiled = {1, NULL, (uintptr_t)code, 0, NULL};
    s = Start(&unit, &compiled);
    for (int i = 0; i < 3; ++i) {
        double scaled = mass[i] / 1.0e24;
        _vrnWriteFmt(s, names[i], &nameLength, &nameLength, 2);
        _vrnWriteFmt(s, &moons[i], &four, &four, 0);
        _vrnWriteFmt(s, &au[i], &eight, &eight, 4);
        _vrnWriteFmt(s, &mass[i], &eight, &eight, 4);
        _vrnWriteFmt(s, &scaled, &eight, &eight, 4);
        _vrnWriteFmt(s, &rocky, &four, &four, 1);
    }
    _vrnEndIO(s);
    _vrnFreeFormatMemory();

    VrnFormatBlock total = TextFormat("(\"total\",T12,I4/(2X,F6.1,:,\",\"))");
    s = Start(&unit, &total);
    int32_t sum = moons[0] + moons[1] + moons[2];
    double tenths[3] = {au[0] * 10, au[1] * 10, au[2] * 10};
    _vrnWriteFmt(s, &sum, &four, &four, 0);
    _vrnWriteFmtSeg(s, tenths, (int32_t)sizeof tenths, 8, 4, 0);
    _vrnEndIO(s);
    _vrnExit(0);
}
