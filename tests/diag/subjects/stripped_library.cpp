// A shared object stripped of its symbol table and line tables: its exported function
// keeps its name through the dynamic symbols, its hidden one has none.
#include "vrn90.h"

__attribute__((noinline)) static int stripped_hidden(int x) {
    vr__trbk();
    return x + 1;
}

extern "C" __attribute__((noinline, visibility("default"))) int stripped_library_entry(int x) {
    return stripped_hidden(x) * 2;
}
