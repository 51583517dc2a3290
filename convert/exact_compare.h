// Exact comparison of a decimal value with a binary one, for the few conversions whose
// double-double approximation lies too near a rounding boundary to decide it.
#pragma once

#include <cstdint>

// A decimal mantissa of up to 30 digits, held as high 10^lowDigits + low.
struct DecimalMantissa {
    uint64_t high;
    int lowDigits;
    uint64_t low;
};

// The sign of mantissa 10^decimalExponent - binaryMantissa 2^binaryExponent: -1, 0 or 1.
// |decimalExponent| up to 400 and |binaryExponent| up to 1200.
int CompareDecimalWithBinary(DecimalMantissa mantissa, int decimalExponent, uint64_t binaryMantissa,
                             int binaryExponent);
