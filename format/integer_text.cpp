// Integer to text for I, B, O and Z editing. Every converter writes backward from `end`,
// so that a caller can put blanks, zeros or a sign in front without moving the digits.
#include <cstdint>
#include <cstring>

#include "convert/decimal_digits.h"
#include "format/edit_output.h"

namespace {

constexpr char kODHDigits[] = "0123456789ABCDEF";

int32_t Signed(char* end, char* p, bool negative, bool withPlus) {
    if (negative) *--p = '-';
    else if (withPlus) *--p = '+';
    return static_cast<int32_t>(end - p);
}

// The byte of an item that holds bits 8k to 8k + 7 of its value.
uint8_t ByteOfSignificance(const uint8_t* item, int32_t size, int32_t k) {
    if constexpr (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__) return item[size - 1 - k];
    else return item[k];
}

int32_t StripLeadingZeros(char* end, char* p) {
    while (p < end - 1 && *p == '0') ++p;
    return static_cast<int32_t>(end - p);
}

}  // namespace

int32_t FmtLongIntToDec(int32_t value, char* end, bool withPlus) {
    uint32_t magnitude = value < 0 ? 0u - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
    return Signed(end, decimal_digits::Write32(magnitude, end), value < 0, withPlus);
}

int32_t d8toa(uint64_t magnitude, char* end) { return static_cast<int32_t>(end - decimal_digits::Write64(magnitude, end)); }

int32_t FmtI8ToDec(uint32_t high, uint32_t low, char* end, bool withPlus) {
    int64_t value = static_cast<int64_t>((static_cast<uint64_t>(high) << 32) | low);
    uint64_t magnitude = value < 0 ? 0u - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    return Signed(end, decimal_digits::Write64(magnitude, end), value < 0, withPlus);
}

int32_t FmtLongIntToHex(uint32_t value, char* end) {
    char* p = end;
    do {
        *--p = kODHDigits[value & 0xFu];
        value >>= 4;
    } while (value != 0);
    return static_cast<int32_t>(end - p);
}

int32_t FmtLongIntToOct(uint32_t value, char* end) {
    char* p = end;
    do {
        *--p = static_cast<char>('0' + (value & 7u));
        value >>= 3;
    } while (value != 0);
    return static_cast<int32_t>(end - p);
}

int32_t FmtLongIntToBin(uint32_t value, char* end) {
    char* p = end;
    do {
        *--p = static_cast<char>('0' + (value & 1u));
        value >>= 1;
    } while (value != 0);
    return static_cast<int32_t>(end - p);
}

int32_t FmtIToHex(int32_t size, const void* item, char* end) {
    const auto* bytes = static_cast<const uint8_t*>(item);
    char* p = end;
    for (int32_t k = 0; k < size; ++k) {
        uint8_t byte = ByteOfSignificance(bytes, size, k);
        *--p = kODHDigits[byte & 0xFu];
        *--p = kODHDigits[byte >> 4];
    }
    return StripLeadingZeros(end, p);
}

int32_t FmtIToOct(int32_t size, const void* item, char* end) {
    const auto* bytes = static_cast<const uint8_t*>(item);
    char* p = end;
    uint32_t pending = 0;  // bits taken from bytes but not yet written
    int32_t pendingBits = 0;
    for (int32_t k = 0; k < size; ++k) {
        pending |= static_cast<uint32_t>(ByteOfSignificance(bytes, size, k)) << pendingBits;
        pendingBits += 8;
        while (pendingBits >= 3) {
            *--p = static_cast<char>('0' + (pending & 7u));
            pending >>= 3;
            pendingBits -= 3;
        }
    }
    if (pendingBits > 0) *--p = static_cast<char>('0' + pending);
    return StripLeadingZeros(end, p);
}

int32_t FmtIToBin(int32_t size, const void* item, char* end) {
    const auto* bytes = static_cast<const uint8_t*>(item);
    char* p = end;
    for (int32_t k = 0; k < size; ++k) {
        uint8_t byte = ByteOfSignificance(bytes, size, k);
        for (int bit = 0; bit < 8; ++bit) *--p = static_cast<char>('0' + ((byte >> bit) & 1u));
    }
    return StripLeadingZeros(end, p);
}
