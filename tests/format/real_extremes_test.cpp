// Real fields at the extremes: d up to 2000, w of 0 and w at its largest, the widest and
// narrowest values of every kind. A field holds only what a real field may hold, is as long
// as the rules make it, and shows the value's digits, checked against the C library's exact
// expansion; digits past those the conversion computes are zeros, never other bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <limits>
#include <regex>
#include <string>
#include <vector>

#include "tests/support/fortran.h"
#include "vrn90.h"

namespace {

using vrntest::FormatWriter;

class RealExtremes : public vrntest::RuntimeTest {};

constexpr uint32_t kRecord = 4096;

struct Value {
    double value;  // exactly the item's value
    int32_t kind;
};

std::vector<Value> Values() {
    std::vector<Value> values;
    for (double v : {DBL_MAX, DBL_MIN, std::numeric_limits<double>::denorm_min(), 1.0 - 0x1p-53, 1.0 + 0x1p-52, 0.75,
                     2.8e-306, 1e300, -1e300, -0.5, 0.0, 123.456}) {
        values.push_back({v, 8});
        values.push_back({v, 16});
    }
    for (float v : {FLT_MAX, FLT_MIN, std::numeric_limits<float>::denorm_min(), 1.0f - 0x1p-24f, 1.0f + 0x1p-23f,
                    0.75f, -0.5f, 0.0f}) {
        values.push_back({v, 4});
    }
    return values;
}

// One field between bars, from an internal record long enough for any of them.
std::string Field(const std::string& descriptor, const Value& v) {
    std::string record(kRecord, '\x01');
    FormatWriter writer(record.data(), kRecord, 1, "('|'," + descriptor + ",'|')");
    if (v.kind == 4) writer.Item(static_cast<float>(v.value));
    else if (v.kind == 8) writer.Item(v.value);
    else writer.Real16(v.value, 0.0);
    writer.End();
    size_t end = record.find('|', 1);
    EXPECT_NE(end, std::string::npos) << descriptor;
    return end == std::string::npos ? record : record.substr(1, end - 1);
}

std::string Printf(const char* format, int precision, double value) {
    int length = std::snprintf(nullptr, 0, format, precision, value);
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::snprintf(text.data(), text.size(), format, precision, value);
    text.resize(static_cast<size_t>(length));
    return text;
}

// The digits of a field with the sign, point and leading zeros taken out.
std::string SignificantDigits(const std::string& text) {
    std::string digits;
    for (char c : text) {
        if (c >= '0' && c <= '9' && !(digits.empty() && c == '0')) digits += c;
    }
    return digits;
}

// Ours and the exact expansion agree on the digits a conversion computes (some thirty;
// compared to 25), and ours has only zeros behind them.
void ExpectDigits(const std::string& ours, const std::string& exact, const std::string& what) {
    std::string a = SignificantDigits(ours), b = SignificantDigits(exact);
    ASSERT_EQ(a.size(), b.size()) << what << "\n ours  " << ours << "\n exact " << exact;
    EXPECT_EQ(a.substr(0, 25), b.substr(0, 25)) << what;
    if (a.size() > 32) EXPECT_EQ(a.find_first_not_of('0', 32), std::string::npos) << what << ": " << ours;
}

// F0.d: as long as the value needs, no leading zero, and the digits of "%.*f".
TEST_F(RealExtremes, FZeroWidthShowsEveryDigitTheRulesAskFor) {
    for (const Value& v : Values()) {
        for (int d : {0, 1, 2, 17, 31, 40, 250, 510, 511, 600, 922, 2000}) {
            std::string what = "F0." + std::to_string(d) + " of " + Printf("%.*g", 17, v.value) + " kind " +
                               std::to_string(v.kind);
            std::string ours = Field("F0." + std::to_string(d), v);
            std::string exact = Printf("%.*f", d, std::fabs(v.value));
            bool zero = exact.find_first_not_of("0.") == std::string::npos;
            std::string expected = zero ? exact : (v.value < 0 ? "-" : "") + exact;
            // A zero shows "0." only when d is 0; otherwise no digit goes in front of the point.
            if (expected.compare(0, 2, "0.") == 0 && d != 0) expected.erase(0, 1);
            if (expected.compare(0, 3, "-0.") == 0) expected.erase(1, 1);
            if (d == 0) expected += ".";
            ASSERT_EQ(ours.size(), expected.size()) << what << "\n ours " << ours;
            EXPECT_TRUE(std::regex_match(ours, std::regex(R"(-?[0-9]*\.[0-9]*)"))) << what << ": " << ours;
            ExpectDigits(ours, expected, what);
        }
    }
}

struct Descriptor {
    const char* name;      // letter(s) in front of w
    const char* exponent;  // "" or "E4"
    bool exponentForm;     // E, D, Q: a scale factor moves digits in front of the point
};

// Every real descriptor at w of 2000 (its largest), d up to 1960, with scale factors: the field
// is w long, or asterisks only where the rules fail it, and holds nothing but a real field's
// characters.
TEST_F(RealExtremes, EveryDescriptorFillsItsWidthWithARealField) {
    const std::string exponent = R"(([EDQ][-+][0-9]{2,}|[-+][0-9]{3}))";
    const Descriptor descriptors[] = {
        {"F", "", false},  {"E", "", true},   {"D", "", true},   {"Q", "", true},   {"E", "E4", true},
        {"EN", "", false}, {"ES", "", false}, {"ES", "E4", false}, {"EN", "E4", false},
    };
    const std::regex plainF(R"([-+]?[0-9]*\.[0-9]*)");
    const std::regex exponentField(R"([-+]?[0-9]*\.[0-9]*)" + exponent);
    for (const Value& v : Values()) {
        for (const Descriptor& desc : descriptors) {
            for (int d : {0, 1, 16, 35, 200, 1000, 1960}) {
                for (int scale : {-2, 0, 1, 2}) {
                    if (desc.name[0] == 'E' && desc.name[1] != 0 && scale != 0) continue;  // EN, ES
                    const int w = 2000;
                    std::string descriptorText = std::to_string(scale) + "P," + desc.name + std::to_string(w) + "." +
                                       std::to_string(d) + desc.exponent;
                    std::string what = descriptorText + " of " + Printf("%.*g", 17, v.value) + " kind " + std::to_string(v.kind);
                    std::string ours = Field(descriptorText, v);
                    ASSERT_EQ(ours.size(), static_cast<size_t>(w)) << what;
                    bool exponentForm = desc.exponentForm;
                    bool fails = exponentForm && (scale < -d || scale >= d + 2);
                    if (desc.name[0] == 'F' && v.value != 0) {
                        // Digits in front of the point, sign and point beside d (no value here
                        // is near a power of ten, where rounding could add one).
                        double inFront = std::floor(std::log10(std::fabs(v.value))) + 1 + scale;
                        fails = d + std::max(inFront, 0.0) + (v.value < 0 ? 1 : 0) + 1 > w;
                    }
                    if (fails) {
                        EXPECT_EQ(ours, std::string(w, '*')) << what;
                        continue;
                    }
                    size_t start = ours.find_first_not_of(' ');
                    ASSERT_NE(start, std::string::npos) << what;
                    std::string text = ours.substr(start);
                    bool f = desc.name[0] == 'F';
                    EXPECT_TRUE(std::regex_match(text, f ? plainF : exponentField)) << what << ": " << text;
                    size_t point = text.find('.');
                    ASSERT_NE(point, std::string::npos) << what;
                    size_t after = text.find_first_not_of("0123456789", point + 1);
                    size_t digitsAfter = (after == std::string::npos ? text.size() : after) - point - 1;
                    size_t wanted = exponentForm && scale > 0 ? static_cast<size_t>(d - scale + 1) : d;
                    EXPECT_EQ(digitsAfter, wanted) << what;
                    if (v.value == 0 || f || d == 0) continue;
                    // ES shows d + 1 significant digits, as "%.*e" does.
                    if (std::string(desc.name) == "ES") {
                        std::string exact = Printf("%.*e", d, v.value);
                        ExpectDigits(text.substr(0, text.find_first_of("EDQ+-", 1)),
                                     exact.substr(0, exact.find('e')), what);
                        int ours10 = std::stoi(text.substr(text.find_first_of("+-", 2)));
                        EXPECT_EQ(ours10, std::stoi(exact.substr(exact.find('e') + 1))) << what;
                    }
                }
            }
        }
    }
}

// Fields that do not fit their width are asterisks, never a field cut short or nothing at all.
TEST_F(RealExtremes, AFieldTooLongForItsWidthIsAsterisks) {
    Value big{1e300, 8};
    EXPECT_EQ(Field("F300.1", big), std::string(300, '*'));
    EXPECT_EQ(Field("F304.1", big), std::string(1, ' ') + "1000000000000000052504760255200" + std::string(270, '0') +
                                        ".0");
    EXPECT_EQ(Field("E5.1", big), "*****");
    Value pair{1e300, 16};
    EXPECT_EQ(Field("F0.250", pair).size(), 552u);
    EXPECT_EQ(Field("F0.250", big).size(), 552u);
}

}  // namespace
