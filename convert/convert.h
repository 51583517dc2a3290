// Decimal conversion: binary floating point to decimal digits and back, in every ROUND=
// mode, with double-double arithmetic and no C library conversion.
#pragma once

#include <cstdint>
#include <cstring>

#include "convert/double_double.h"

// The ROUND= mode in force, as its keyword number.
constexpr int kRoundUp = 0x85;
constexpr int kRoundDown = 0x86;
constexpr int kRoundZero = 0x39;
constexpr int kRoundNearest = 0x87;
constexpr int kRoundCompatible = 0x88;
constexpr int kRoundProcessorDefined = 0x7D;

// The spelling of infinities and NaNs: kSpellingUpper gives "INF" and "NAN", anything
// else "Inf", "NaN(S)" and "NaN(Q)".
constexpr int kSpellingUpper = 0x22;

constexpr int kMaxComputedDigits = 30;

// ---- Binary to decimal ----

// Writes the digits of |value| into buffer (NUL-terminated): `digits` significant digits
// when exponentStyle is not 0, else `digits` digits behind the decimal point. The decimal
// point's position relative to the first digit goes to *decimalPoint, the sign bit to
// *sign. 0, or -1 with errno EINVAL.
int __cvt_r(double value, int digits, int* decimalPoint, int* sign, int exponentStyle, char* buffer, int bufferLength,
            int strict, int spelling, int roundKey);
int ubx_ecvt_r(double value, int digits, int* decimalPoint, int* sign, char* buffer, int bufferLength, int spelling,
               int roundKey);
int ubx_fcvt_r(double value, int digits, int* decimalPoint, int* sign, char* buffer, int bufferLength, int spelling,
               int roundKey);
// Through one static buffer of 670 bytes: not re-entrant.
char* ubx_ecvt(double value, int digits, int* decimalPoint, int* sign, int spelling, int roundKey);
char* ubx_fcvt(double value, int digits, int* decimalPoint, int* sign, int spelling, int roundKey);

// The same for a 16-byte real held as a pair of doubles.
int _qcvt_r(DoubleDouble value, int digits, int* decimalPoint, int* sign, int exponentStyle, char* buffer,
            int bufferLength, int spelling, int roundKey);
int ubx_qecvt_r(DoubleDouble value, int digits, int* decimalPoint, int* sign, char* buffer, int bufferLength,
                int spelling, int roundKey);
int ubx_qfcvt_r(DoubleDouble value, int digits, int* decimalPoint, int* sign, char* buffer, int bufferLength,
                int spelling, int roundKey);

// 10^n as a double-double.
DoubleDouble pwr10(int n);

// A REAL(4) value as a double for the conversions, a signalling NaN kept signalling:
// the hardware conversion of some machines quiets it, which would print "NaN(Q)".
inline double WidenKeepingNaNKind(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    if ((bits & 0x7F800000u) != 0x7F800000u || (bits & 0x007FFFFFu) == 0) return value;
    uint64_t wide = (uint64_t{bits & 0x80000000u} << 32) | 0x7FF0000000000000ull | (uint64_t{bits & 0x007FFFFFu} << 29);
    double result;
    std::memcpy(&result, &wide, sizeof result);
    return result;
}

// ---- Decimal to binary ----

double ubx_atof(const char* text, int roundKey);
float ubx_strtof(const char* text, char** end, int roundKey);
DoubleDouble _qatof(const char* text, int roundKey);
// A decimal value by its significant digits (at most 19, as a whole number), the power of
// ten of the last and its sign, as an input editor gathers them while it reads a field;
// converted as ubx_atof and ubx_strtof convert the same text.
struct DecimalDigits {
    uint64_t digits;
    int32_t count;
    int64_t exponent;
    bool negative;
};
double DigitsToDouble(const DecimalDigits& digits, int roundKey);
float DigitsToFloat(const DecimalDigits& digits, int roundKey);
// A formatted real field of the plain shape, read and converted in one pass: blanks, an
// optional sign, digits with a point and at least one digit behind it, and an optional
// exponent letter (E, D or Q in either case) with an optional sign and at least one
// digit, filling the field to its end. Taken only where the scanner's tables would give
// the same value, which is the conversion of the text: a mantissa not zero of at most
// 19 significant digits, a 4- or 8-byte item, and a key of NEAREST or COMPATIBLE (the
// tables' 0.1 and 1.1 are the nearest values). Stores the value and returns true, or
// returns false having stored nothing. `readable` (at least `width`) bytes from `field`
// may be read.
bool ReadPlainReal(const char* field, int32_t width, int32_t readable, int32_t size, int roundKey, void* item);
// ubx_atof and ubx_strtof without the wide-product shortcut: the exact road that decides
// whatever the shortcut cannot, for tests to hold the shortcut against.
double ExactRoadAtof(const char* text, int roundKey);
float ExactRoadStrtof(const char* text, int roundKey);
void ubx_qatof(double* result, const char* text, int roundKey);
// After an "N" at the start of a mantissa: 1 "nanq", 2 "nans", 3 "nan" and anything else.
int checknan(const char* text);
// After an "I": 0 unless "inf"; 8 for "infinity", 3 for anything else behind "inf".
int checknf(const char* text);

// ---- The real-field scanner ----

constexpr int kScannerClasses = 21;
constexpr int kRealScannerStates = 61;
constexpr int kScannerStart = 1;
constexpr int kScannerStartComma = 42;
constexpr uint32_t kActionConvertLater = 0x8000;  // FmtFToR: implied point, odd blanks, errors
constexpr uint32_t kActionConvert = 0x4000;       // the text converts at once
constexpr uint32_t kActionKnownValue = 0x2000;    // plus an index into the value tables

extern const uint8_t _RFRCharClass[256];
extern const uint32_t _rfrscan_transition[kRealScannerStates][kScannerClasses][2];
extern const uint32_t rfr_actions[kRealScannerStates];
extern const float f_rfrval[18];
extern const double d_rfrval[18];
extern const DoubleDouble ld_rfrval[18];
extern const uint32_t f_ieee_val[7];
extern const uint64_t d_ieee_val[7];
extern const uint64_t ld_ieee_val[7];
