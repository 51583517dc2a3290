// Symbol names as a programmer wrote them: C++ names demangled (the Itanium C++ ABI, as
// g++ mangles them), Fortran module procedures as module::name. No allocation, so that
// a signal handler may use it.
#pragma once

#include <cstddef>

namespace diag {

// Writes the readable form of `symbol` into `out` (NUL-terminated, cut to `capacity` - 1
// characters) and returns its length. A name it cannot read is copied unchanged.
size_t ReadableName(const char* symbol, char* out, size_t capacity);

}  // namespace diag
