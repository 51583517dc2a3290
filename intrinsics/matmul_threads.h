// The threaded layer of MATMUL: rows of A and C split among threads, B shared.
#pragma once

#include <cstddef>
#include <cstdint>

#include "intrinsics/frame.h"
#include "intrinsics/matmul_kernel.h"

// One slice's work: its part of the product, the operand code and the Strassen cut-off.
struct MatmulTask {
    Flat slice;
    uint32_t code;
    int32_t t;
    void (*body)(const MatmulTask&);
};

// Splits the rows of `f` among the threads and runs `body` on each slice; with one
// thread, on the caller's. lenA and lenC are the element lengths of A and the result.
void RunThreaded(const Flat& f, uint32_t code, int32_t t, size_t lenA, size_t lenC, void (*body)(const MatmulTask&));
