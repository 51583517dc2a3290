// What each descriptor code means to the encoder and to format control: its name, its
// operands, the ranges they must lie in, and where omitted operands take their defaults.
#pragma once

#include <cstdint>

constexpr int kDescriptorCodes = 62;

// The code of an op word without its control and generic bits.
constexpr uint32_t DescriptorCode(uint32_t opWord) { return (opWord >> 16) & 0x3FFFu; }

struct OperandRange {
    int64_t minimum;
    int64_t maximum;
};

struct DefaultTriple {
    int32_t w, d, e;
};
using DefaultFunction = DefaultTriple (*)(int32_t bytes);

enum DefaultKind : uint8_t {
    kNoDefaults = 0,
    kDefaultsBySize = 1,
    kConstantDefaults = 2,
    kSizeIsWidth = 3,
    kDefaultFunction = 4,
};

struct DescDefaultRow {
    uint8_t rangeCount;       // 0 when the descriptor has no range
    OperandRange ranges[3];
    uint8_t anySize;          // an item of size 0 is acceptable
    uint8_t zeroWidthError;   // w = 0 is an error on input and at a standard level
    DefaultKind defaultKind;
    const int8_t* sizes;      // 17 entries by byte length, or null: the length as it is
    DefaultFunction defaultFunction;
    const DefaultTriple* const* defaultsBySize;  // 17 entries by normalised size
    const DefaultTriple* constantDefaults;
};

// Ranges for the 32-bit encoding and for format control.
extern const DescDefaultRow DescDefaultTable[kDescriptorCodes];
// The same with every bound of 2147483647 raised to 2^63-1: the 64-bit encoder's.
extern const DescDefaultRow DescDefaultTable64[kDescriptorCodes];

extern const int8_t IntSizes[17];
extern const int8_t RealSizes[17];

DefaultTriple GetBDefaults(int32_t bytes);
DefaultTriple GetODefaults(int32_t bytes);
DefaultTriple GetZDefaults(int32_t bytes);

// Operand words behind the op word, for every code (strings and DT say their own length).
extern const uint8_t DescOperands[kDescriptorCodes];
// The name a message prints for a code.
extern const char* const DescName[kDescriptorCodes];
// The name of each virtual code, which is what the encoder's diagnostics pass.
constexpr int kVirtualCodes = 42;
extern const char* const VirtualDescName[kVirtualCodes];
// The virtual code of each descriptor code, -1 for none.
extern const int8_t VirtualDescCode[kDescriptorCodes];
