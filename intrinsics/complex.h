// Complex elements of the array intrinsics: the real part, then the imaginary part, as
// they lie in memory.
#pragma once

template <typename T>
struct Complex {
    T re, im;
};
