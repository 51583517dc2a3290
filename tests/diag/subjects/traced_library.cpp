// A shared object with line tables whose function takes a traceback.
#include "vrn90.h"

extern "C" __attribute__((noinline, visibility("default"))) int traced_library_entry(int depth) {
    if (depth > 0) return traced_library_entry(depth - 1) + 1;
    vr__trbk();  // TRACE: library
    return 0;
}
