// Eight decimal digits at a time: text read as one word, whatever the machine's byte
// order, and combined into their value in three multiplications.
#pragma once

#include <cstdint>
#include <cstring>

namespace eight_digits {

constexpr uint64_t kEachByte = 0x0101010101010101ull;

// Eight bytes with the first in the low byte.
inline uint64_t LoadLowFirst(const char* bytes) {
    uint64_t word;
    std::memcpy(&word, bytes, 8);
    if constexpr (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__) word = __builtin_bswap64(word);
    return word;
}

// The bytes below `count` (0 to 8) of a low-first word.
constexpr uint64_t LowBytes(int32_t count) { return count >= 8 ? ~0ull : (1ull << (8 * count)) - 1; }

// The value of eight digit values (0 to 9, one a byte, the most significant first in the
// low byte).
inline uint32_t Combine(uint64_t values) {
    values = values * 10 + (values >> 8);
    values = (((values & 0x000000FF000000FFull) * (100 + (1000000ull << 32))) +
              (((values >> 16) & 0x000000FF000000FFull) * (1 + (10000ull << 32)))) >>
             32;
    return static_cast<uint32_t>(values);
}

// The value of the eight digit characters at `text`, which must all be digits.
inline uint32_t Value(const char* text) { return Combine(LoadLowFirst(text) - 0x30 * kEachByte); }

// The length (0 to 8) of the run of digits at the start of a low-first word, and its
// value, without a branch for each byte. A byte below "0" borrows from the byte behind
// it, and one far above "9" carries into it: both lie behind the end of the run and so
// change nothing.
inline int32_t LeadingDigitsOf(uint64_t word, uint64_t* value) {
    uint64_t digits = word - 0x30 * kEachByte;
    uint64_t beyond = ((digits + 0x76 * kEachByte) | digits) & (0x80 * kEachByte);
    int32_t count = beyond == 0 ? 8 : __builtin_ctzll(beyond) >> 3;
    // The run moved to the top of the word, with zeros in front, makes its value.
    *value = count == 0 ? 0 : Combine(digits << (8 * (8 - count)));
    return count;
}

// The same for the eight bytes at `text`.
inline int32_t LeadingDigits(const char* text, uint64_t* value) { return LeadingDigitsOf(LoadLowFirst(text), value); }

// The number (0 to 8) of blanks at the start of a low-first word.
inline int32_t LeadingBlanksOf(uint64_t word) {
    uint64_t others = word ^ (0x20 * kEachByte);
    return others == 0 ? 8 : __builtin_ctzll(others) >> 3;
}

// The same for the eight bytes at `text`.
inline int32_t LeadingBlanks(const char* text) { return LeadingBlanksOf(LoadLowFirst(text)); }

// 10^n for n from 0 to 8: the scale of a run that LeadingDigits returns.
constexpr uint32_t kRunScale[9] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};

}  // namespace eight_digits
