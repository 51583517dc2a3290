// Decimal to binary on the texts that random samples miss: exactly representable
// decimals, halfway cases and their nearest neighbours, values about the smallest normal
// and through the subnormals, and long mantissas. The expected result in every ROUND=
// mode comes from exact big-integer comparisons.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "convert/convert.h"
#include "tests/convert/exact_decimal.h"

namespace {

#if UINTPTR_MAX == 0xFFFFFFFFu
constexpr int kPerFamily = 150;
#else
constexpr int kPerFamily = 1500;
#endif

// A text's value: digits 10^exponent, at most 30 significant digits.
struct DecimalValue {
    std::string digits;
    int exponent;
};

DecimalValue Parse(const std::string& text) {
    DecimalValue v{"", 0};
    size_t i = text[0] == '-' || text[0] == '+' ? 1 : 0;
    bool point = false;
    for (; i < text.size() && text[i] != 'e'; ++i) {
        if (text[i] == '.') {
            point = true;
        } else {
            v.digits += text[i];
            if (point) --v.exponent;
        }
    }
    if (i < text.size()) v.exponent += std::atoi(text.c_str() + i + 1);
    return v;
}

// The sign of value - m 2^e, both sides made whole numbers first.
int Compare(const DecimalValue& value, const exact::BigInt& m, int e) {
    exact::BigInt left(0);
    for (char c : value.digits) {
        left.MultiplyBy(10);
        left.Add(exact::BigInt(static_cast<uint64_t>(c - '0')));
    }
    exact::BigInt right = m;
    if (value.exponent >= 0) {
        left.MultiplyByPower(5, value.exponent);
        left.MultiplyByPower(2, value.exponent);
    } else {
        right.MultiplyByPower(5, -value.exponent);
        right.MultiplyByPower(2, -value.exponent);
    }
    if (e >= 0) right.MultiplyByPower(2, e); else left.MultiplyByPower(2, -e);
    if (left.Less(right)) return -1;
    return right.Less(left) ? 1 : 0;
}

// Whether a value's last significant bit is 0.
template <typename Float>
bool IsEven(Float x) {
    if constexpr (sizeof(Float) == 4) {
        uint32_t bits;
        std::memcpy(&bits, &x, sizeof bits);
        return (bits & 1) == 0;
    } else {
        uint64_t bits;
        std::memcpy(&bits, &x, sizeof bits);
        return (bits & 1) == 0;
    }
}

template <typename Float>
struct Expected {
    Float nearest, compatible, zero, up, down;
};

// The correctly rounded results, found by walking from the C library's nearest value to
// the neighbours that enclose the text's value and comparing it with them exactly.
template <typename Float>
Expected<Float> Oracle(const std::string& text) {
    bool negative = text[0] == '-';
    DecimalValue value = Parse(text);
    const Float largest = std::numeric_limits<Float>::max();
    Float low = std::fabs(sizeof(Float) == 4 ? std::strtof(text.c_str(), nullptr)
                                             : static_cast<Float>(std::strtod(text.c_str(), nullptr)));
    if (low > largest) low = largest;
    auto compareWith = [&](Float x) {
        exact::Binary b = exact::Decompose(static_cast<double>(x));
        return Compare(value, exact::BigInt(b.mantissa), b.exponent);
    };
    while (low > 0 && compareWith(low) < 0) low = std::nextafter(low, Float(0));
    while (low < largest && compareWith(std::nextafter(low, largest)) >= 0) low = std::nextafter(low, largest);
    int exactly = compareWith(low);
    bool top = low == largest && exactly > 0;
    Float high = top ? std::numeric_limits<Float>::infinity() : std::nextafter(low, largest);
    // The midpoint (low + high) / 2 on a common scale.
    exact::Binary a = exact::Decompose(static_cast<double>(low));
    exact::Binary b = top ? (sizeof(Float) == 4 ? exact::Binary{1, 128} : exact::Binary{1, 1024})
                          : exact::Decompose(static_cast<double>(high));
    if (low == 0) a = {0, b.exponent};
    int scale = a.exponent < b.exponent ? a.exponent : b.exponent;
    exact::BigInt twice = exact::OnScale(a, scale);
    twice.Add(exact::OnScale(b, scale));
    int versusHalf = Compare(value, twice, scale - 1);
    bool lowIsEven = IsEven(low);
    Float nearest = versusHalf < 0 ? low : versusHalf > 0 ? high : lowIsEven ? low : high;
    Float compatible = versusHalf < 0 ? low : high;
    if (exactly == 0) nearest = compatible = low;
    Float away = exactly == 0 ? low : high;
    Float towardZero = low;
    Float sign = negative ? -1 : 1;
    return {sign * nearest, sign * compatible, sign * towardZero, sign * (negative ? towardZero : away),
            sign * (negative ? away : towardZero)};
}

template <typename Float>
Float Convert(const std::string& text, int key) {
    if constexpr (sizeof(Float) == 4) {
        return ubx_strtof(text.c_str(), nullptr, key);
    } else {
        return ubx_atof(text.c_str(), key);
    }
}

template <typename Float>
Float ExactRoad(const std::string& text, int key) {
    if constexpr (sizeof(Float) == 4) {
        return ExactRoadStrtof(text.c_str(), key);
    } else {
        return ExactRoadAtof(text.c_str(), key);
    }
}

template <typename Float>
void ExpectCorrectlyRounded(const std::string& text, int* failures) {
    Expected<Float> e = Oracle<Float>(text);
    struct {
        int key;
        Float expected;
    } modes[] = {{kRoundNearest, e.nearest},
                 {kRoundCompatible, e.compatible},
                 {kRoundZero, e.zero},
                 {kRoundUp, e.up},
                 {kRoundDown, e.down}};
    for (auto& m : modes) {
        // Both roads: the wide product with its fallback, and the fallback alone.
        for (Float got : {Convert<Float>(text, m.key), ExactRoad<Float>(text, m.key)}) {
            if (got != m.expected && *failures < 20) {
                ++*failures;
                ADD_FAILURE() << (sizeof(Float) == 4 ? "float " : "double ") << text << " key " << std::hex << m.key
                              << std::dec << ": got " << std::hexfloat << static_cast<double>(got) << " expected "
                              << static_cast<double>(m.expected) << std::defaultfloat;
            }
        }
    }
}

// "0.<digits>e<point>" for an exact decimal, negative or not.
std::string TextOf(const exact::Decimal& d, bool negative) {
    return (negative ? "-0." : "0.") + d.digits + "e" + std::to_string(d.point);
}

// The digits padded to 30 and moved by one unit of the last place either way.
std::vector<std::string> Neighbours(const exact::Decimal& d, bool negative) {
    std::vector<std::string> out;
    if (d.digits.size() >= 30) return out;
    std::string up = d.digits + std::string(29 - d.digits.size(), '0') + "1";
    out.push_back(TextOf({up, d.point}, negative));
    std::string down = d.digits;
    size_t i = down.size();
    while (i > 0 && down[i - 1] == '0') down[--i] = '9';
    if (i > 0) {
        --down[i - 1];
        out.push_back(TextOf({down + std::string(30 - down.size(), '9'), d.point}, negative));
    }
    return out;
}

// The exact decimal of m 2^e, when it has at most 30 digits.
bool ShortExpansion(uint64_t m, int e, exact::Decimal* out) {
    *out = exact::FromBinary(exact::BigInt(m), e);
    return out->digits.size() <= 30;
}

template <typename Float>
std::vector<std::string> Corpus() {
    constexpr bool single = sizeof(Float) == 4;
    constexpr int precision = single ? 24 : 53;
    std::mt19937_64 random(single ? 41 : 42);
    std::vector<std::string> texts;
    auto uniform = [&](int low, int high) { return low + static_cast<int>(random() % static_cast<uint64_t>(high - low + 1)); };
    // Exactly representable decimals, with and without trailing zeros.
    for (int i = 0; i < kPerFamily; ++i) {
        uint64_t m = (random() >> 11) >> uniform(0, 52) | 1;
        if (single) m &= (1u << 24) - 1;
        if (m == 0) m = 1;
        exact::Decimal d;
        if (!ShortExpansion(m, uniform(-60, 40), &d)) continue;
        bool negative = random() % 2;
        texts.push_back(TextOf(d, negative));
        texts.push_back(TextOf({d.digits + "000", d.point}, negative));
    }
    // Halfway cases between neighbours, and the decimals just beside them.
    for (int i = 0; i < kPerFamily; ++i) {
        uint64_t m = (uint64_t{1} << (precision - 1)) | (random() >> (64 - precision + 1));
        int e = single ? uniform(-40, 60) : uniform(-18, 40);
        exact::Decimal d;
        if (!ShortExpansion(2 * m + 1, e - 1, &d)) continue;
        bool negative = random() % 2;
        texts.push_back(TextOf(d, negative));
        for (const std::string& n : Neighbours(d, negative)) texts.push_back(n);
        // Cut after 19 and 20 digits, where the wide product's mantissa ends.
        for (size_t keep : {19, 20}) {
            if (d.digits.size() > keep) texts.push_back(TextOf({d.digits.substr(0, keep), d.point}, negative));
        }
    }
    // About the smallest normal and through the subnormals: values and halfway points
    // cut to 17 to 20, 25 and 30 digits, and moved by one in the last.
    const int minNormal = single ? -126 : -1022;
    const int minSubnormal = minNormal - precision + 1;
    for (int i = 0; i < kPerFamily; ++i) {
        int e = uniform(minSubnormal, minNormal + 6);
        uint64_t m = e < minNormal ? (random() >> (64 - (e - minSubnormal + 1))) | 1
                                   : (uint64_t{1} << (precision - 1)) | (random() >> (64 - precision + 1));
        int q = e < minNormal ? minSubnormal : e - precision + 1;
        bool half = random() % 2;
        exact::Decimal d = exact::FromBinary(exact::BigInt(half ? 2 * m + 1 : m), half ? q - 1 : q);
        for (int keep : {17, 18, 19, 20, 25, 30}) {
            exact::Decimal cut{d.digits.substr(0, static_cast<size_t>(keep)), d.point};
            texts.push_back(TextOf(cut, false));
            for (const std::string& n : Neighbours(cut, false)) texts.push_back(n);
        }
    }
    // Values just above the smallest normal printed with 17 digits: each reads back as
    // itself in NEAREST.
    for (int i = 0; i < kPerFamily; ++i) {
        int e = uniform(minNormal, minNormal + 25);
        uint64_t m = (uint64_t{1} << (precision - 1)) | (random() >> (64 - precision + 1));
        char text[64];
        std::snprintf(text, sizeof text, "%.16e", std::ldexp(static_cast<double>(m), e - precision + 1));
        texts.push_back(text);
    }
    // Long mantissas of 18 to 30 digits over the whole range.
    for (int i = 0; i < kPerFamily; ++i) {
        int digits = uniform(18, 30);
        std::string d(1, static_cast<char>('1' + random() % 9));
        for (int k = 1; k < digits; ++k) d += static_cast<char>('0' + random() % 10);
        texts.push_back(TextOf({d, single ? uniform(-46, 39) : uniform(-324, 309)}, random() % 2));
    }
    return texts;
}

TEST(DecimalToBinaryHardCases, TheReportedTexts) {
    int failures = 0;
    for (const char* text : {"0.0625", "9007199254740991.0", "0.5000", "1e-307", "2.2250738585072012e-308",
                             "2.4703282292062328e-324", "2.4703282292062327e-324", "3e-324", "4503599627370496.5",
                             "-4503599627370496.5", "4.9406564584124654e-324", "1.7976931348623158e308",
                             "1.7976931348623157e308", "179769313486231580793728971405301e276"}) {
        ExpectCorrectlyRounded<double>(text, &failures);
    }
    for (const char* text : {"0.5000", "0.0625", "1.17549435e-38", "1.4e-45", "7.006492e-46", "7.00649232e-46",
                             "3.40282357e38", "3.4028235677973366e38", "16777217", "16777216.5"}) {
        ExpectCorrectlyRounded<float>(text, &failures);
    }
    EXPECT_EQ(ubx_atof("0.0625", kRoundDown), 0x1p-4);
    EXPECT_EQ(ubx_atof("9007199254740991.0", kRoundUp), 9007199254740991.0);
    EXPECT_EQ(ubx_strtof("0.5000", nullptr, kRoundDown), 0.5f);
    EXPECT_EQ(ubx_atof("1e-307", kRoundNearest), 0x1.1fa182c40c60dp-1020);
    EXPECT_EQ(ubx_atof("2.2250738585072012e-308", kRoundNearest), DBL_MIN);
    EXPECT_EQ(ubx_atof("2.4703282292062328e-324", kRoundNearest), 0x1p-1074);
    EXPECT_EQ(ubx_atof("3e-324", kRoundDown), 0.0);
    EXPECT_EQ(ubx_atof("3e-324", kRoundUp), 0x1p-1074);
    EXPECT_EQ(ubx_atof("5e-324", kRoundDown), 0x1p-1074);
    EXPECT_EQ(ubx_atof("4503599627370496.5", kRoundCompatible), 4503599627370497.0);
    EXPECT_EQ(ubx_atof("4503599627370496.5", kRoundNearest), 4503599627370496.0);
}

TEST(DecimalToBinaryHardCases, DoublesInEveryMode) {
    int failures = 0;
    std::vector<std::string> texts = Corpus<double>();
    for (const std::string& text : texts) ExpectCorrectlyRounded<double>(text, &failures);
    std::printf("%zu hard texts for doubles\n", texts.size());
}

TEST(DecimalToBinaryHardCases, FloatsInEveryMode) {
    int failures = 0;
    std::vector<std::string> texts = Corpus<float>();
    for (const std::string& text : texts) ExpectCorrectlyRounded<float>(text, &failures);
    std::printf("%zu hard texts for floats\n", texts.size());
}

}  // namespace
