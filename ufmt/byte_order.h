// Byte order of unformatted data, and the length tags that frame a sequential record.
//
// A file is in the machine's own order unless its unit swaps. Swapping reverses each
// numeric element in place; a 16-byte element is two 8-byte halves, each reversed and
// left where it stands, which is what a real made of two doubles needs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// Reverses `count` elements of `size` bytes lying one after the other, and the same while
// copying them elsewhere: the loops of a swapped array, one per size so that they run as
// straight word loops.
void ReverseEach(void* bytes, size_t count, uint32_t size);
void CopyReversed(void* to, const void* from, size_t count, uint32_t size);

// An element or tag of another size than 2, 4, 8 or 16 bytes is a fault of the caller's:
// the process ends with the text of the failed assertion.
[[noreturn]] void ElementSizeFault();

// One element of 2, 4, 8 or 16 bytes.
inline void ReverseByteOrder(void* bytes, uint32_t size) { ReverseEach(bytes, 1, size); }

// The widths a length tag may have; every connection is given 4.
inline bool ValidTagWidth(uint32_t width) { return width == 2 || width == 4 || width == 8 || width == 16; }

// A length tag as the file holds it: a signed integer of `width` bytes in the machine's
// order, reversed when the unit swaps.
inline void EncodeLengthTag(int64_t value, uint32_t width, bool swap, uint8_t* out) {
    for (uint32_t i = 0; i < width; ++i) {
        uint32_t shift = 8 * (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? width - 1 - i : i);
        out[i] = shift < 64 ? static_cast<uint8_t>(static_cast<uint64_t>(value) >> shift) : (value < 0 ? 0xFF : 0);
    }
    if (swap) ReverseByteOrder(out, width);
}

// The tag's value; one that does not fit 64 bits comes back as -1, which no record has.
inline int64_t DecodeLengthTag(const uint8_t* in, uint32_t width, bool swap) {
    uint8_t tag[16];
    std::memcpy(tag, in, width);
    if (swap) ReverseByteOrder(tag, width);
    uint64_t value = 0;
    bool negative = false;
    for (uint32_t i = 0; i < width; ++i) {
        uint32_t shift = 8 * (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? width - 1 - i : i);
        if (shift < 64) {
            value |= static_cast<uint64_t>(tag[i]) << shift;
        } else if (tag[i] != 0) {
            return -1;
        }
        if (shift == 8 * (width - 1)) negative = (tag[i] & 0x80) != 0;
    }
    if (width < 8 && negative) value |= ~uint64_t{0} << (8 * width);  // sign extension
    return static_cast<int64_t>(value);
}
