// Decimal digits of an unsigned integer, written backward from the end of a field, two
// at a time from a 200-byte table. Nine- and ten-digit values split their low eight digits
// into two halves whose pairs are computed side by side rather than in one chain of
// divisions. Shared by list-directed and I editing, so both spell a number alike.
#pragma once

#include <cstdint>
#include <cstring>

namespace decimal_digits {

inline constexpr char kPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

inline constexpr uint64_t kPowersOfTen[20] = {1ull,
                                              10ull,
                                              100ull,
                                              1000ull,
                                              10000ull,
                                              100000ull,
                                              1000000ull,
                                              10000000ull,
                                              100000000ull,
                                              1000000000ull,
                                              10000000000ull,
                                              100000000000ull,
                                              1000000000000ull,
                                              10000000000000ull,
                                              100000000000000ull,
                                              1000000000000000ull,
                                              10000000000000000ull,
                                              100000000000000000ull,
                                              1000000000000000000ull,
                                              10000000000000000000ull};

// How many digits `v` has (1 for 0), without a division: the bit length times log10(2)
// (1233/4096) is the count or one more than it, and one comparison decides.
inline int32_t Count(uint64_t v) {
    v |= 1;  // the same count, and 0 counted as 1
    int32_t bits = 64 - __builtin_clzll(v);
    int32_t guess = (bits * 1233) >> 12;
    return guess + (v >= kPowersOfTen[guess] ? 1 : 0);
}

inline void PutPair(char* at, uint32_t pair) { std::memcpy(at, kPairs + 2 * pair, 2); }

// Exactly eight digits of `v` (below 10^8), leading zeros kept, into end - 8 .. end.
inline void PutEight(uint32_t v, char* end) {
    uint32_t high = v / 10000, low = v % 10000;
    PutPair(end - 8, high / 100);
    PutPair(end - 6, high % 100);
    PutPair(end - 4, low / 100);
    PutPair(end - 2, low % 100);
}

// The digits of `v`, ending at `end`; the result points at the first.
inline char* Write32(uint32_t v, char* end) {
    if (v >= 100000000u) {
        PutEight(v % 100000000u, end);
        end -= 8;
        v /= 100000000u;  // 1 to 42
    } else if (v >= 10000u) {
        uint32_t low = v % 10000u;
        v /= 10000u;  // 1 to 9999
        PutPair(end - 4, low / 100);
        PutPair(end - 2, low % 100);
        end -= 4;
    }
    if (v >= 100) {
        end -= 2;
        PutPair(end, v % 100);
        v /= 100;
    }
    if (v >= 10) {
        end -= 2;
        PutPair(end, v);
    } else {
        *--end = static_cast<char>('0' + v);
    }
    return end;
}

inline char* Write64(uint64_t v, char* end) {
    while (v > 0xFFFFFFFFu) {
        PutEight(static_cast<uint32_t>(v % 100000000u), end);
        end -= 8;
        v /= 100000000u;
    }
    return Write32(static_cast<uint32_t>(v), end);
}

}  // namespace decimal_digits
