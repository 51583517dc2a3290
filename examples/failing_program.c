/*
 * A program that fails, and what its user sees: with ERRTRACE=YES in VRNRTEOPTS, a
 * traceback after the message of the error that ends it.
 *
 *       PROGRAM FAILING
 *       CALL LOAD_SETTINGS()
 *       END
 *       SUBROUTINE LOAD_SETTINGS()
 *       CALL OPEN_INPUT('settings.dat')
 *       END
 *       SUBROUTINE OPEN_INPUT(NAME)
 *       CHARACTER(*) NAME
 *       OPEN (10, FILE=NAME, STATUS='OLD')     ! line 12: the file is not there
 *       END
 *
 * Built with -g, the traceback names each function with its file and line.
 */
#include <string.h>

#include "vrn90.h"

struct Specifiers {
    KeywordList list;
    KeywordEntry entries[4];
};

static void Add(struct Specifiers* s, uint32_t tag, uintptr_t a, uint32_t b) {
    KeywordEntry* e = &s->list.entries[s->list.count++];
    e->tag = tag;
    e->a = a;
    e->b = b;
}

__attribute__((noinline)) void open_input(const char* name) {
    struct Specifiers open = {{1, 0}};
    Add(&open, VRN_KEY_MSGLINE, 12, 0);
    Add(&open, VRN_KEY_MSGFILE, (uintptr_t)"failing.f", 9);
    Add(&open, VRN_KEY_FILE, (uintptr_t)name, (uint32_t)strlen(name));
    Add(&open, VRN_KEY_STATUS, 0, VRN_KEY_OLD);
    _vrnIOCmd(10, VRN_COMMAND_OPEN, &open.list, 0, NULL);
    __asm__ __volatile__("" ::: "memory");
}

__attribute__((noinline)) void load_settings(void) {
    open_input("settings.dat");
    __asm__ __volatile__("" ::: "memory");
}

int main(void) {
    load_settings();
    return 0;
}
