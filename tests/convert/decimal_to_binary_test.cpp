// Decimal to binary, proved against the C library under the same rounding mode, and
// 16-byte results against the exact value.
#include <gtest/gtest.h>

#include <cfenv>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <type_traits>

#include "convert/convert.h"
#include "core/float_status.h"
#include "tests/convert/exact_decimal.h"

namespace {

#if UINTPTR_MAX == 0xFFFFFFFFu
constexpr int kRandomTexts = 3000;
#else
constexpr int kRandomTexts = 40000;
#endif

struct RoundingCase {
    int key;
    int fenvMode;
};
constexpr RoundingCase kModes[] = {
    {kRoundNearest, FE_TONEAREST}, {kRoundZero, FE_TOWARDZERO}, {kRoundUp, FE_UPWARD}, {kRoundDown, FE_DOWNWARD}};

double LibraryDouble(const std::string& text, int mode) {
    float_status::SetRoundingMode(mode);
    double value = std::strtod(text.c_str(), nullptr);
    float_status::SetRoundingMode(FE_TONEAREST);
    return value;
}

float LibraryFloat(const std::string& text, int mode) {
    float_status::SetRoundingMode(mode);
    float value = std::strtof(text.c_str(), nullptr);
    float_status::SetRoundingMode(FE_TONEAREST);
    return value;
}

std::string RandomText(std::mt19937_64& random, int maxDigits, int minExponent, int maxExponent) {
    int digits = 1 + static_cast<int>(random() % static_cast<uint64_t>(maxDigits));
    std::string text = random() % 2 ? "-" : "";
    int point = static_cast<int>(random() % static_cast<uint64_t>(digits + 1));
    for (int i = 0; i < digits; ++i) {
        if (i == point) text += '.';
        text += static_cast<char>('0' + (i == 0 ? 1 + random() % 9 : random() % 10));
    }
    int exponent = minExponent + static_cast<int>(random() % static_cast<uint64_t>(maxExponent - minExponent + 1));
    return text + "e" + std::to_string(exponent);
}

// Keeps the first `keep` significant digits of a plain mantissa and counts the rest into
// the exponent: the value the conversion works from.
std::string Truncated(const std::string& text, int keep) {
    std::string mantissa = text.substr(0, text.find('e'));
    int exponent = std::atoi(text.c_str() + text.find('e') + 1);
    std::string digits;
    int pointAt = -1;
    for (char c : mantissa) {
        if (c == '.') pointAt = static_cast<int>(digits.size());
        else if (c >= '0' && c <= '9') digits += c;
    }
    if (pointAt < 0) pointAt = static_cast<int>(digits.size());
    exponent += pointAt - static_cast<int>(digits.size());
    if (static_cast<int>(digits.size()) > keep) {
        exponent += static_cast<int>(digits.size()) - keep;
        digits.resize(static_cast<size_t>(keep));
    }
    return (text[0] == '-' ? "-" : "") + digits + "e" + std::to_string(exponent);
}

// The text's value as an exact decimal (digits and point).
exact::Decimal TextValue(const std::string& text, int keep = 1000);

// Whether the text's value lies exactly halfway between two doubles.
bool IsExactMidpoint(const std::string& text, double up, double down) {
    exact::Decimal sum = exact::OfPair(up, down);  // |up| + |down|, exactly
    exact::Decimal value = TextValue(text);
    // 2 value == up + down: double the value's digits.
    exact::BigInt doubled(0);
    for (char c : value.digits) {
        doubled.MultiplyBy(10);
        doubled.Add(exact::BigInt(static_cast<uint64_t>(c - '0')));
    }
    doubled.MultiplyBy(2);
    exact::Decimal twice = exact::FromScaledInteger(doubled, value.point - static_cast<int>(value.digits.size()));
    return twice.digits == sum.digits && twice.point == sum.point;
}

TEST(DecimalToBinary, TextsOfThirtyDigitsOrFewerMatchStrtodInEveryMode) {
    std::mt19937_64 random(11);
    for (int i = 0; i < kRandomTexts; ++i) {
        std::string text = RandomText(random, 30, -290, 280);
        for (const RoundingCase& mode : kModes) {
            double got = ubx_atof(text.c_str(), mode.key);
            ASSERT_EQ(got, LibraryDouble(text, mode.fenvMode)) << text << " key " << mode.key;
        }
        double nearest = LibraryDouble(text, FE_TONEAREST);
        double compatible = ubx_atof(text.c_str(), kRoundCompatible);
        if (compatible != nearest) {
            // Only an exact tie may differ, and then away from zero.
            double up = LibraryDouble(text, FE_UPWARD);
            double down = LibraryDouble(text, FE_DOWNWARD);
            ASSERT_TRUE(IsExactMidpoint(text, up, down)) << text;
            ASSERT_EQ(compatible, std::fabs(up) > std::fabs(down) ? up : down) << text;
        }
    }
}

exact::Decimal TextValue(const std::string& text, int keep) {
    std::string kept = Truncated(text, keep);
    size_t start = kept[0] == '-' ? 1 : 0;
    std::string digits = kept.substr(start, kept.find('e') - start);
    int exponent = std::atoi(kept.c_str() + kept.find('e') + 1);
    exact::Decimal value{digits, static_cast<int>(digits.size()) + exponent};
    size_t first = value.digits.find_first_not_of('0');
    value.point -= static_cast<int>(first);
    value.digits.erase(0, first);
    while (value.digits.size() > 1 && value.digits.back() == '0') value.digits.pop_back();
    return value;
}

TEST(DecimalToBinary, DigitsBeyondThirtyAreDroppedButCounted) {
    std::mt19937_64 random(12);
    int differFromFullText = 0;
    for (int i = 0; i < kRandomTexts / 4; ++i) {
        std::string text = RandomText(random, 60, -250, 250);
        std::string kept = Truncated(text, 30);
        for (const RoundingCase& mode : kModes) {
            double got = ubx_atof(text.c_str(), mode.key);
            ASSERT_EQ(got, LibraryDouble(kept, mode.fenvMode)) << text << " key " << mode.key;
            if (got != LibraryDouble(text, mode.fenvMode)) ++differFromFullText;
        }
    }
    std::printf("long texts rounded differently from the full text: %d of %d\n", differFromFullText,
                kRandomTexts / 4 * 4);
    // A 40-digit integer keeps its magnitude.
    EXPECT_EQ(ubx_atof("1234567890123456789012345678901234567890", kRoundNearest), 1.2345678901234568e39);
}

TEST(DecimalToBinary, HalfwayCasesAndTheLimits) {
    struct Case {
        const char* text;
        double nearest;
        double compatible;
    } cases[] = {
        {"9007199254740993", 9007199254740992.0, 9007199254740994.0},     // 2^53 + 1: a tie
        {"-9007199254740993", -9007199254740992.0, -9007199254740994.0},
        {"9007199254740995", 9007199254740996.0, 9007199254740996.0},     // a tie toward the even one
        {"1.7976931348623157e308", DBL_MAX, DBL_MAX},
        {"2.2250738585072014e-308", DBL_MIN, DBL_MIN},
        {"1e400", INFINITY, INFINITY},
        {"-1e400", -INFINITY, -INFINITY},
        {"1e-400", 0.0, 0.0},
        {"0", 0.0, 0.0},
        {"000.000e99", 0.0, 0.0},
        {"  +12.5E+2", 1250.0, 1250.0},
        {"1.5d3", 1500.0, 1500.0},
        {"2.5q-1", 0.25, 0.25},
        {"1e99999999999999999999999", INFINITY, INFINITY},  // the exponent itself overflows
        {".5", 0.5, 0.5},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ubx_atof(c.text, kRoundNearest), c.nearest) << c.text;
        EXPECT_EQ(ubx_atof(c.text, kRoundCompatible), c.compatible) << c.text;
    }
    EXPECT_TRUE(std::signbit(ubx_atof("-1e-400", kRoundNearest)));
    EXPECT_TRUE(std::signbit(ubx_atof("-0.0", kRoundNearest)));
    EXPECT_EQ(ubx_atof("1e309", kRoundDown), DBL_MAX);  // the directed mode decides an overflow
    EXPECT_EQ(ubx_atof("1e309", kRoundNearest), INFINITY);
    EXPECT_EQ(ubx_atof(nullptr, kRoundNearest), 0.0);
    EXPECT_TRUE(std::isnan(ubx_atof("NaN", kRoundNearest)));
    EXPECT_EQ(ubx_atof("-Infinity", kRoundNearest), -INFINITY);
    // NaNs keep their kind in every width: the patterns of the IEEE value tables.
    auto bitsOf = [](auto value) {
        std::conditional_t<sizeof value == 4, uint32_t, uint64_t> bits;
        std::memcpy(&bits, &value, sizeof value);
        return bits;
    };
    EXPECT_EQ(bitsOf(ubx_strtof("NaNS", nullptr, kRoundNearest)), 0x7F855555u);
    EXPECT_EQ(bitsOf(ubx_strtof("-nanq", nullptr, kRoundNearest)), 0xFFC00000u);
    EXPECT_EQ(bitsOf(ubx_atof("nans", kRoundNearest)), 0x7FF5555555555555ull);
    EXPECT_EQ(bitsOf(ubx_atof("-nan", kRoundNearest)), 0xFFF8000000000000ull);
    EXPECT_EQ(bitsOf(_qatof("-nans", kRoundNearest).hi), 0xFFF5555555555555ull);
    EXPECT_EQ(ubx_atof("inf", kRoundNearest), INFINITY);
    EXPECT_EQ(ubx_atof("junk", kRoundNearest), 0.0);
    EXPECT_EQ(checknan("nanq"), 1);
    EXPECT_EQ(checknan("NANS"), 2);
    EXPECT_EQ(checknan("nan(x)"), 3);
    EXPECT_EQ(checknan("na"), 0);
    EXPECT_EQ(checknf("INFINITY"), 8);
    EXPECT_EQ(checknf("infx"), 3);
    EXPECT_EQ(checknf("in"), 0);
    // PROCESSOR_DEFINED takes the mode found at entry, and leaves it so.
    float_status::SetRoundingMode(FE_UPWARD);
    EXPECT_EQ(ubx_atof("0.3", kRoundProcessorDefined), std::nextafter(0.3, 1.0));
    EXPECT_EQ(float_status::GetRoundingMode(), FE_UPWARD);
    float_status::SetRoundingMode(FE_TONEAREST);
}

TEST(DecimalToBinary, FloatsMatchStrtofInEveryMode) {
    std::mt19937_64 random(13);
    for (int i = 0; i < kRandomTexts; ++i) {
        std::string text = RandomText(random, 20, -50, 40);
        for (const RoundingCase& mode : kModes) {
            float got = ubx_strtof(text.c_str(), nullptr, mode.key);
            ASSERT_EQ(got, LibraryFloat(text, mode.fenvMode)) << text << " key " << mode.key;
        }
    }
    // Float halfway cases that a double would round first: no double rounding.
    EXPECT_EQ(ubx_strtof("1.00000005960464477539062500001", nullptr, kRoundNearest), 1.00000012f);
    EXPECT_EQ(ubx_strtof("1.000000059604644775390625", nullptr, kRoundNearest), 1.0f);
    EXPECT_EQ(ubx_strtof("1.000000059604644775390625", nullptr, kRoundCompatible), 1.00000012f);
    EXPECT_EQ(ubx_strtof("3.5e38", nullptr, kRoundNearest), INFINITY);
    EXPECT_EQ(ubx_strtof("1e-50", nullptr, kRoundNearest), 0.0f);
}

TEST(DecimalToBinary, SixteenByteRealsHoldThirtyDigits) {
    std::mt19937_64 random(14);
    for (int i = 0; i < kRandomTexts / 10; ++i) {
        std::string text = RandomText(random, 45, -200, 200);
        DoubleDouble pair = _qatof(text.c_str(), kRoundNearest);
        // The pair differs from the text's value by no more than a few units of its
        // 32nd significant digit: about 2^-104 of the value.
        exact::Decimal wanted = TextValue(text, 45);
        exact::Decimal got = exact::OfPair(pair.hi, pair.lo);
        ASSERT_LE(std::abs(wanted.point - got.point), 1) << text;
        auto units = [](const exact::Decimal& d) {
            std::string digits = d.digits;
            digits.resize(32, '0');
            exact::BigInt n(0);
            for (char c : digits) {
                n.MultiplyBy(10);
                n.Add(exact::BigInt(static_cast<uint64_t>(c - '0')));
            }
            return n;
        };
        exact::BigInt a = units(wanted);
        exact::BigInt b = units(got);
        if (wanted.point == got.point) {
            exact::BigInt difference = a.Less(b) ? b : a;
            difference.Subtract(a.Less(b) ? a : b);
            EXPECT_TRUE(difference.Less(exact::BigInt(20))) << text << " differs by " << difference.ToString();
        }
        EXPECT_EQ(std::signbit(pair.hi), text[0] == '-') << text;
    }
    double stored[2];
    ubx_qatof(stored, "0.1", kRoundNearest);
    EXPECT_EQ(stored[0], 0.1);
    EXPECT_EQ(stored[1], -5.551115123125783e-18);
    EXPECT_EQ(_qatof("1e-300", kRoundNearest).hi, 1e-300);  // scaled by 10^-256 last
}

// Runs the real-field scanner over a text and gives the action of the state it ends in.
uint32_t ActionOf(const char* text, int start = kScannerStart) {
    uint32_t state = static_cast<uint32_t>(start);
    for (const char* p = text; *p != 0; ++p) {
        state = _rfrscan_transition[state][_RFRCharClass[static_cast<unsigned char>(*p)]][0];
    }
    return rfr_actions[state];
}

TEST(RealScanner, ShortConstantsAreKnownWithoutConversion) {
    for (const char* one : {"1.0", "1.00", "1.0E0", "1.D+00", "  1.", "+1.0e-0"}) {
        EXPECT_EQ(ActionOf(one), kActionKnownValue + 3) << one;
    }
    EXPECT_EQ(ActionOf("0.5"), kActionKnownValue + 2);
    EXPECT_EQ(ActionOf("0.1"), kActionKnownValue + 1);
    EXPECT_EQ(ActionOf(".1"), kActionConvert);  // the state table sends a point-first digit to 12
    EXPECT_EQ(ActionOf("1.1"), kActionKnownValue + 4);
    EXPECT_EQ(ActionOf("1.50"), kActionKnownValue + 5);
    for (const char* zero : {".", "E5", "+", "", "   ", "0.0", "000"}) EXPECT_EQ(ActionOf(zero), kActionKnownValue) << zero;
    EXPECT_EQ(ActionOf("1.1E+1"), kActionConvert);
    EXPECT_EQ(ActionOf("3.25"), kActionConvert);
    EXPECT_EQ(ActionOf("12"), kActionConvertLater);  // F5.1 supplies the point
    EXPECT_EQ(ActionOf("1 2"), kActionConvertLater);  // odd blanks: the dead state
    EXPECT_EQ(ActionOf("nan"), kActionKnownValue + 7);
    EXPECT_EQ(ActionOf("NaN(S)"), kActionKnownValue + 8);
    EXPECT_EQ(ActionOf("nan(abc)"), kActionKnownValue + 7);
    EXPECT_EQ(ActionOf("NAN("), kActionConvertLater);
    EXPECT_EQ(ActionOf("INF"), kActionKnownValue + 6);
    EXPECT_EQ(ActionOf("-Infinity  "), kActionKnownValue + 6);
    EXPECT_EQ(ActionOf("INFIN"), kActionConvertLater);
    EXPECT_EQ(ActionOf("1,5", kScannerStartComma), kActionKnownValue + 5);
    EXPECT_EQ(ActionOf("1.5", kScannerStartComma), kActionConvertLater);
    // The value tables.
    EXPECT_EQ(d_rfrval[3], 1.0);
    EXPECT_EQ(d_rfrval[3 + 9], -1.0);
    EXPECT_EQ(f_rfrval[1], 0.1f);
    EXPECT_EQ(d_ieee_val[3], 0x7FF5555555555555ull);
    EXPECT_EQ(f_ieee_val[2], 0x7FC00000u);
}

}  // namespace
