/*
 * Files, units and status values, as the compiler calls the library:
 *
 *       INTEGER U, IOS
 *       CHARACTER(100) MSG
 *       OPEN (NEWUNIT=U, FILE='example.dat', STATUS='REPLACE', ACCESS='DIRECT',
 *    &       FORM='FORMATTED', RECL=8)
 *       WRITE (U, *, REC=2)                  ! an empty record 2: eight blanks
 *       WRITE (U, *, REC=0, IOSTAT=IOS, IOMSG=MSG)
 *       PRINT *                              ! a blank line on standard output
 *       CLOSE (U)
 *       END
 *
 * The program prints the unit NEWUNIT gave, the IOSTAT= value of the bad REC=, and the
 * size of the file: record 1 is there too, as the gap before record 2.
 */
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include "vrn90.h"

/* A KeywordList with room for a few specifiers, as the compiler lays it out. */
struct Specifiers {
    KeywordList list;
    KeywordEntry entries[8];
};

static void Add(struct Specifiers* s, uint32_t tag, uintptr_t a, uint32_t b) {
    KeywordEntry* e = &s->list.entries[s->list.count++];
    e->tag = tag;
    e->a = a;
    e->b = b;
}

int main(void) {
    int32_t unit = 0;
    static const char name[] = "example.dat";
    struct Specifiers open = {{1, 0}};
    Add(&open, VRN_KEY_NEWUNIT, (uintptr_t)&unit, 0);
    Add(&open, VRN_KEY_FILE, (uintptr_t)name, (uint32_t)strlen(name));
    Add(&open, VRN_KEY_STATUS, 0, VRN_KEY_REPLACE);          /* the compiler knew the value */
    Add(&open, VRN_KEY_ACCESS, (uintptr_t)"direct", 6);       /* a run-time text, any case */
    Add(&open, VRN_KEY_FORM, 0, VRN_KEY_FORMATTED);
    Add(&open, VRN_KEY_RECL, 8, 0);
    _vrnIOCmd(VRN_NEWUNIT_MARKER, VRN_COMMAND_OPEN, &open.list, 0, NULL);

    uint32_t directWrite = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_DIRECT);
    _vrnEndIO(_vrnBeginIO(&unit, directWrite, NULL, 0, NULL, 2, NULL));

    int32_t iostat = 0;
    char message[100];
    struct Specifiers bad = {{1, 0}};
    Add(&bad, VRN_KEY_MSGLINE, 5, 0);
    Add(&bad, VRN_KEY_MSGFILE, (uintptr_t)"files.f", 7);
    Add(&bad, VRN_KEY_IOMSG, (uintptr_t)message, sizeof message);
    _vrnEndIO(_vrnBeginIO(&unit, directWrite, &bad.list, 0, &iostat, 0, NULL));

    int32_t six = 6;
    _vrnEndIO(_vrnBeginIO(&six, VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, 0), NULL, 0, NULL, 0,
                          NULL));
    _vrnIOCmd(unit, VRN_COMMAND_CLOSE, NULL, 0, NULL);

    struct stat st;
    stat(name, &st);
    int length = sizeof message;
    while (length > 0 && (message[length - 1] == ' ' || message[length - 1] == '\n')) --length;
    printf("unit %d, IOSTAT %d, IOMSG '%.*s', file of %lld bytes\n", (int)unit, (int)iostat, length, message,
           (long long)st.st_size);
    remove(name);
    _vrnExit(0);
}
