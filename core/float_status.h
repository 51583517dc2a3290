// The floating-point rounding mode and exception flags, read and set without the C
// library's <cfenv> on PowerPC: its fegetround and fesetround may use mffsl, an
// instruction of newer processors that the target, and qemu's model of it, do not have.
// There the status register is read with mffs and written with mtfsf, which every
// PowerPC has; elsewhere <cfenv> serves.
//
// Modes are the FE_ constants of <cfenv>; on PowerPC they are also the RN field's values
// (0 nearest, 1 toward zero, 2 up, 3 down).
#pragma once

#include <cfenv>
#include <cstdint>
#include <cstring>

namespace float_status {

#if defined(__powerpc__) && !defined(__NO_FPRS__)

static_assert(FE_TONEAREST == 0 && FE_TOWARDZERO == 1 && FE_UPWARD == 2 && FE_DOWNWARD == 3,
              "the RN field's encoding");

// The status register is the low word of the double that mffs delivers.
inline uint32_t ReadRegister() {
    double image;
    __asm__ __volatile__("mffs %0" : "=f"(image));
    uint64_t bits;
    std::memcpy(&bits, &image, sizeof bits);
    return static_cast<uint32_t>(bits);
}

inline int GetRoundingMode() { return static_cast<int>(ReadRegister() & 3u); }

// Only field 7 (XE, NI, RN) is written, with XE and NI kept as they were.
inline void SetRoundingMode(int mode) {
    uint64_t bits = (ReadRegister() & ~3u) | (static_cast<uint32_t>(mode) & 3u);
    double image;
    std::memcpy(&image, &bits, sizeof image);
    __asm__ __volatile__("mtfsf 1, %0" : : "f"(image) : "memory");
}

// The sticky exception bits: OX, UX, ZX, XX and VX (any invalid operation), as FE_ bits.
inline int RaisedExceptions() {
    uint32_t fpscr = ReadRegister();
    int raised = 0;
    if (fpscr & 0x10000000u) raised |= FE_OVERFLOW;
    if (fpscr & 0x08000000u) raised |= FE_UNDERFLOW;
    if (fpscr & 0x04000000u) raised |= FE_DIVBYZERO;
    if (fpscr & 0x02000000u) raised |= FE_INEXACT;
    if (fpscr & 0x20000000u) raised |= FE_INVALID;
    return raised;
}

#elif defined(__x86_64__) && defined(__SSE__)

// Double arithmetic runs in SSE here: its control register's RC field (bits 13 and 14)
// holds the mode in the order of the FE_ constants' bits 10 and 11, and reading it is far
// cheaper than fegetround, which also reads the x87 control word.
static_assert(FE_TONEAREST == 0 && FE_DOWNWARD == 0x400 && FE_UPWARD == 0x800 && FE_TOWARDZERO == 0xC00,
              "the x87 encoding of the modes");
inline int GetRoundingMode() { return static_cast<int>((__builtin_ia32_stmxcsr() >> 3) & 0xC00u); }
inline void SetRoundingMode(int mode) { std::fesetround(mode); }
inline int RaisedExceptions() { return std::fetestexcept(FE_ALL_EXCEPT); }

#else

inline int GetRoundingMode() { return std::fegetround(); }
inline void SetRoundingMode(int mode) { std::fesetround(mode); }
inline int RaisedExceptions() { return std::fetestexcept(FE_ALL_EXCEPT); }

#endif

}  // namespace float_status
