// Diagnostics: the traceback of the stack with function names, files and lines read from
// the program's own objects, and the handlers that report a fatal signal. Everything here
// may run in a signal handler: no allocation, no stdio, output by write(2).
#pragma once

#include <cstddef>
#include <cstdint>

namespace diag {

struct Frame {
    uintptr_t pc = 0;
    // The pc is the instruction itself (where a signal struck), not a return address,
    // whose call is the instruction before it.
    bool exact = false;
};

constexpr int kMaxFrames = 128;

// The stack from the caller of this function outwards; the number of frames.
int CaptureFrames(Frame* frames, int capacity);

// One line a frame, numbered from 0: address, function, and file and line where the
// object has line tables (else the object's name), up to the program's main. With
// `leaveOutRuntime`, the run-time's frames at the inner end of the stack are not shown.
void PrintFrames(const Frame* frames, int count, int fd, bool leaveOutRuntime);

// "ADDRESS in FUNCTION at FILE:LINE" (or the object's name for the file and line) into
// `out`, NUL-terminated; its length.
size_t DescribeAddress(const Frame& frame, char* out, size_t capacity);

}  // namespace diag
