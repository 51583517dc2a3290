/*
 * Unformatted sequential records in the machine's byte order and swapped, as the
 * compiler calls the library:
 *
 *       CALL SETRTEOPTS('ufmt_littleendian=11')  ! or VRNRTEOPTS in the environment
 *       INTEGER N
 *       REAL(8) X, A(3)
 *       CHARACTER(3) T
 *       OPEN (10, FILE='plain.dat', FORM='UNFORMATTED', STATUS='REPLACE')
 *       OPEN (11, FILE='swapped.dat', FORM='UNFORMATTED', STATUS='REPLACE')
 *       DO U = 10, 11
 *         WRITE (U) 42, 2.5D0, 'TAG'
 *         WRITE (U) (/ 1.5D0, -2D0, 0.25D0 /)
 *         REWIND (U)
 *         READ (U) N, X, T
 *         READ (U) A
 *         PRINT *, N, X, T, A
 *       END DO
 *       END
 *
 * Before the values it prints the first record of each file in hexadecimal: the length
 * tag, the three items, the tag again. The character data is the same in both files.
 */
#include <stdio.h>
#include <string.h>

#include "vrn90.h"

struct Specifiers {
    KeywordList list;
    KeywordEntry entries[4];
};

static void Connect(int32_t unit, const char* name) {
    struct Specifiers open = {{1, 0}};
    KeywordEntry entries[3] = {{VRN_KEY_FILE, (uintptr_t)name, (uint32_t)strlen(name)},
                               {VRN_KEY_FORM, 0, VRN_KEY_UNFORMATTED},
                               {VRN_KEY_STATUS, 0, VRN_KEY_REPLACE}};
    for (int i = 0; i < 3; ++i) open.list.entries[open.list.count++] = entries[i];
    _vrnIOCmd(unit, VRN_COMMAND_OPEN, &open.list, 0, NULL);
}

/* The first record of the file: tag | payload fields | tag, in hexadecimal. */
static void Dump(const char* name) {
    static const int fields[] = {4, 0, 4, 8, 3, 0, 4};
    unsigned char bytes[23];
    FILE* file = fopen(name, "rb");
    size_t got = file != NULL ? fread(bytes, 1, sizeof bytes, file) : 0;
    if (file != NULL) fclose(file);
    printf("%-12s", name);
    size_t at = 0;
    for (size_t f = 0; f < sizeof fields / sizeof fields[0] && at < got; ++f) {
        printf(fields[f] == 0 ? " |" : " ");
        for (int i = 0; i < fields[f]; ++i) printf("%02x", bytes[at++]);
    }
    printf("\n");
}

int main(void) {
    setrteopts("ufmt_littleendian=11", 20);
    uint32_t write = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
    uint32_t read = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
    uint32_t list = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
    int32_t four = 4, eight = 8, three = 3, one = 1, arrayBytes = 24, output = 6;
    const int32_t n = 42;
    const double x = 2.5, a[3] = {1.5, -2.0, 0.25};
    int64_t arrayLength = 24; /* the compiler knows the length of the array record */
    const char* names[2] = {"plain.dat", "swapped.dat"};

    for (int32_t unit = 10; unit <= 11; ++unit) {
        Connect(unit, names[unit - 10]);
        LocalContext* s = _vrnBeginIO(&unit, write, NULL, 0, NULL, 0, NULL);
        _vrnWriteUfmt(s, &n, &four, &four, 0);
        _vrnWriteUfmt(s, &x, &eight, &eight, 4);
        _vrnWriteUfmt(s, "TAG", &three, &one, 2);
        _vrnEndIO(s);
        s = _vrnBeginIO(&unit, write, NULL, 0, NULL, 0, &arrayLength);
        _vrnWriteUfmt(s, a, &arrayBytes, &eight, 4 | VRN_UFMT_RUN);
        _vrnEndIO(s);
        _vrnIOCmd(unit, VRN_COMMAND_FLUSH, NULL, 0, NULL);
    }
    Dump(names[0]);
    Dump(names[1]);
    fflush(stdout);

    for (int32_t unit = 10; unit <= 11; ++unit) {
        int32_t nBack = 0;
        double xBack = 0, aBack[3] = {0, 0, 0};
        char t[3];
        _vrnIOCmd(unit, VRN_COMMAND_REWIND, NULL, 0, NULL);
        LocalContext* s = _vrnBeginIO(&unit, read, NULL, 0, NULL, 0, NULL);
        _vrnReadUfmt(s, &nBack, &four, &four, 0);
        _vrnReadUfmt(s, &xBack, &eight, &eight, 4);
        _vrnReadUfmt(s, t, &three, &one, 2);
        _vrnEndIO(s);
        s = _vrnBeginIO(&unit, read, NULL, 0, NULL, 0, NULL);
        _vrnReadUfmt(s, aBack, &arrayBytes, &eight, 4 | VRN_UFMT_RUN);
        _vrnEndIO(s);
        s = _vrnBeginIO(&output, list, NULL, 0, NULL, 0, NULL);
        _vrnWriteLDInt(s, &nBack, 0, &four);
        _vrnWriteLDReal(s, &xBack, 0, &eight);
        _vrnWriteLDChar(s, t, &three);
        for (int i = 0; i < 3; ++i) _vrnWriteLDReal(s, &aBack[i], 0, &eight);
        _vrnEndIO(s);
    }
    _vrnExit(0);
}
