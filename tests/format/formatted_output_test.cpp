// Formatted output through the statement calls: format control, the edit conversions and
// real editing, checked against the fields the Fortran rules give.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/fortran.h"
#include "vrn90.h"

namespace {

using vrntest::FormatWriter;
using vrntest::Formatted;
using vrntest::Specifiers;

class FormattedOutput : public vrntest::RuntimeTest {};

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr uint32_t kNegativeZero = VRN_OPTION_NEGATIVE_ZERO_SIGN;

struct IntegerCase {
    const char* format;
    int64_t value;
    int32_t kind;
    uint32_t options;
    const char* expected;
};

TEST_F(FormattedOutput, IntegerFields) {
    const IntegerCase cases[] = {
        {"(I3)", -123, 4, 0, "***"},
        {"(I3)", 123, 4, 0, "123"},
        {"(I0)", 0, 4, 0, "0"},
        {"(I0.0,'|')", 0, 4, 0, " |"},
        {"(I3.0,'|')", 0, 4, 0, "   |"},
        {"(SP,I3.0,'|')", 0, 4, 0, "   |"},
        {"(I5.3)", 7, 4, 0, "  007"},
        {"(SP,I5.3)", 7, 4, 0, " +007"},
        {"(I5.3)", -7, 4, 0, " -007"},
        {"(I4.4)", -7, 4, 0, "****"},
        {"(I0.3)", -7, 4, 0, "-007"},
        {"(SP,I4)", 12, 4, 0, " +12"},
        {"(I6)", -128, 1, 0, "  -128"},
        {"(I7)", -32768, 2, 0, " -32768"},
        {"(I11)", INT32_MIN, 4, 0, "-2147483648"},
        {"(I21)", INT64_MIN, 8, 0, " -9223372036854775808"},
        {"(I20)", INT64_MAX, 8, 0, " 9223372036854775807"},
        {"(I0)", 4294967296LL, 8, 0, "4294967296"},
        {"(I12)", 1000000000000LL, 8, 0, "************"},
        {"(I13)", 1000000000000LL, 8, 0, "1000000000000"},
        {"(Z0)", 255, 4, 0, "FF"},
        {"(B0)", -1, 2, 0, "1111111111111111"},
        {"(O0)", -1, 1, 0, "377"},
        {"(Z4)", 0xABCDE, 4, 0, "****"},
        {"(Z17)", -1, 8, 0, " FFFFFFFFFFFFFFFF"},
        {"(O23)", -1, 8, 0, " 1777777777777777777777"},
        {"(B6.4)", 5, 4, 0, "  0101"},
        {"(Z3.0,'|')", 0, 4, 0, "   |"},
        {"(Z2.3)", 5, 4, 0, "**"},
        // The old rule for B, O and Z: the low digits that fit, zeros up to the item's width.
        {"(Z4)", 0xABCDE, 4, VRN_OPTION_BOZ_RULE, "BCDE"},
        {"(Z6)", 0xAB, 2, VRN_OPTION_BOZ_RULE, "  00AB"},
        {"(B10)", 5, 1, VRN_OPTION_BOZ_RULE, "  00000101"},
        {"(G6)", -42, 4, 0, "   -42"},
    };
    for (const IntegerCase& c : cases) {
        EXPECT_EQ(Formatted(c.format, [&](FormatWriter& w) { w.Integer(c.value, c.kind); }, c.options),
                  std::string(c.expected) + "\n")
            << c.format << " " << c.value;
    }
}

TEST_F(FormattedOutput, LogicalAndCharacterFields) {
    EXPECT_EQ(Formatted("(L1)", [](FormatWriter& w) { w.Logical(1); }), "T\n");
    EXPECT_EQ(Formatted("(L3,L2)", [](FormatWriter& w) { w.Logical(0).Logical(1, 1); }), "  F T\n");
    EXPECT_EQ(Formatted("(L2)", [](FormatWriter& w) { w.Logical(2); }), " F\n");  // only the low bit
    EXPECT_EQ(Formatted("(L2)", [](FormatWriter& w) { w.Logical(2); }, VRN_OPTION_LOGICAL_OUTPUT), " T\n");
    EXPECT_EQ(Formatted("(A5)", [](FormatWriter& w) { w.Item("AB"); }), "   AB\n");
    EXPECT_EQ(Formatted("(A3)", [](FormatWriter& w) { w.Item("ABCDEF"); }), "ABC\n");
    EXPECT_EQ(Formatted("(A,'|')", [](FormatWriter& w) { w.Item("xy "); }), "xy |\n");
    EXPECT_EQ(Formatted("(G4)", [](FormatWriter& w) { w.Item("z"); }), "   z\n");
}

struct RealCase {
    const char* format;
    double value;
    uint32_t options;
    const char* expected;
};

TEST_F(FormattedOutput, RealFields) {
    const RealCase cases[] = {
        {"(F5.2)", 0.5, 0, " 0.50"},
        {"(F3.2)", 0.5, 0, ".50"},
        {"(F0.2)", 0.5, 0, ".50"},
        {"(F0.0)", 0.0, 0, "0."},
        {"(F4.2)", -0.001, 0, "0.00"},
        {"(F4.2)", -0.001, kNegativeZero, "-.00"},
        {"(F5.2)", -0.001, kNegativeZero, "-0.00"},
        {"(SP,F5.2)", 0.0, 0, "+0.00"},
        {"(F5.1)", 1.0e6, 0, "*****"},
        {"(F8.3)", -3.14159, 0, "  -3.142"},
        {"(F6.3)", 0.25, VRN_OPTION_NO_LEADING_ZERO, "  .250"},
        {"(F0.3)", -12.5, 0, "-12.500"},
        {"(2PF8.2)", 1.234, 0, "  123.40"},
        {"(-1PF8.3)", 1.234, 0, "   0.123"},
        {"(F10.0)", 1.0e9, 0, "**********"},
        {"(F11.0)", 1.0e9, 0, "1000000000."},
        {"(F5.1)", 0.05, 0, "  0.1"},
        {"(E10.3)", 1234.6, 0, " 0.123E+04"},
        {"(1PE10.3)", 1234.6, 0, " 1.235E+03"},
        {"(-1PE10.3)", 1234.6, 0, " 0.012E+05"},
        {"(2PE10.1)", 1234.6, 0, "   12.E+02"},
        {"(3PE10.1)", 1234.6, 0, "**********"},
        {"(E10.3)", 1.0e100, 0, " 0.100+101"},
        {"(E10.3)", -1.0e-100, 0, "-0.100E-99"},
        {"(E10.3)", -1.0e-101, 0, "-0.100-100"},
        {"(E12.3E3)", 1.0e100, 0, "  0.100E+101"},
        {"(E10.3E1)", 1.0e10, 0, "**********"},
        {"(E9.3)", -1234.6, 0, "-.123E+04"},
        {"(E10.3)", 0.0, 0, " 0.000E+00"},
        {"(E12.4E4)", 0.0, 0, "0.0000E+0000"},
        {"(D10.3)", 1234.6, 0, " 0.123D+04"},
        {"(E11.3D3)", 1234.6, 0, " 0.123D+004"},
        {"(EN10.2)", 1234.6, 0, "  1.23E+03"},
        {"(EN9.1)", 99.96, 0, "100.0E+00"},
        {"(EN10.2)", 0.0123, 0, " 12.30E-03"},
        {"(EN12.3)", -0.5, 0, "-500.000E-03"},
        {"(EN9.2)", 0.0, 0, " 0.00E+00"},
        {"(EN12.2E3)", 1234.6, 0, "   1.23E+003"},
        {"(ES10.2)", 0.00123, 0, "  1.23E-03"},
        {"(ES10.2)", 9.999, 0, "  1.00E+01"},
        {"(ES11.3E1)", 5.0e-5, 0, "   5.000E-5"},
        {"(ES11.3E1)", 5.0e-15, 0, "*"},
        {"(ES24.16)", 0.1, 0, "  1.0000000000000001E-01"},
        {"(ES10.3)", 1.0e-300, 0, " 1.000-300"},
        {"(DC,F5.2)", 1.5, 0, " 1,50"},
        {"(DC,ES10.2)", 1.5, 0, "  1,50E+00"},
        {"(RZ,F4.1)", 0.99, 0, " 0.9"},
        {"(RU,F4.1)", 0.99, 0, " 1.0"},
        {"(RD,F5.1)", -0.91, 0, " -1.0"},
        {"(RN,F4.1)", 0.25, 0, " 0.2"},
        {"(RC,F4.1)", 0.25, 0, " 0.3"},
        {"(F8.2)", kInf, 0, "     INF"},
        {"(F8.2)", -kInf, 0, "    -INF"},
        {"(SP,E9.2)", kInf, 0, "     +INF"},
        {"(F0.1)", -kInf, 0, "-INF"},
        {"(F2.1)", kInf, 0, "**"},
        {"(F8.2)", kInf, VRN_OPTION_REAL_OUTPUT_RULE, "     Inf"},
        {"(F8.2)", std::nan(""), 0, "     NAN"},
        {"(F8.2)", std::nan(""), VRN_OPTION_REAL_OUTPUT_RULE, "  NaN(Q)"},
        {"(F3.0)", std::nan(""), VRN_OPTION_REAL_OUTPUT_RULE, "NaN"},
        {"(SP,F8.0)", std::nan(""), VRN_OPTION_REAL_OUTPUT_RULE, "  NaN(Q)"},
    };
    for (const RealCase& c : cases) {
        std::string expected = std::string(c.expected);
        if (expected == "*") expected = std::string(11, '*');
        EXPECT_EQ(Formatted(c.format, [&](FormatWriter& w) { w.Item(c.value); }, c.options), expected + "\n")
            << c.format << " " << c.value;
    }
}

TEST_F(FormattedOutput, RealKindsAndComplex) {
    EXPECT_EQ(Formatted("(F10.4)", [](FormatWriter& w) { w.Item(1.5f); }), "    1.5000\n");
    EXPECT_EQ(Formatted("(E15.7)", [](FormatWriter& w) { w.Item(0.1f); }), "  0.1000000E+00\n");
    EXPECT_EQ(Formatted("(ES14.7)", [](FormatWriter& w) { w.Item(-3.0e38f); }), "-3.0000000E+38\n");
    // 1/3 as a pair of doubles: 32 correct digits.
    double third = 1.0 / 3.0;
    double low = std::fma(-3.0, third, 1.0) / 3.0;
    EXPECT_EQ(Formatted("(F34.30)", [&](FormatWriter& w) { w.Real16(third, low); }),
              "  0.333333333333333333333333333333\n");
    EXPECT_EQ(Formatted("(ES40.30)", [&](FormatWriter& w) { w.Real16(-third, -low); }),
              "   -3.333333333333333333333333333333E-01\n");
    // A negative 16-byte value rounding to zero keeps no sign even under the negative-zero rule.
    EXPECT_EQ(Formatted("(F5.2)", [](FormatWriter& w) { w.Real16(-0.001, 0.0); }, kNegativeZero), " 0.00\n");
    EXPECT_EQ(Formatted("(F5.1,F5.1)", [](FormatWriter& w) { w.Complex(1.0, -2.0); }), "  1.0 -2.0\n");
    EXPECT_EQ(Formatted("(F5.1)", [](FormatWriter& w) { w.Complex(1.0f, -2.0f); }), "  1.0\n -2.0\n");
}

TEST_F(FormattedOutput, GeneralEditingOnBothRuleSets) {
    struct Case {
        const char* format;
        double value;
        uint32_t options;
        const char* expected;
    };
    const uint32_t f77 = VRN_OPTION_FORMAT_CONTROL_RULE;
    const Case cases[] = {
        {"(G10.3,'|')", 0.0, 0, "  0.00    |"},
        {"(G10.3,'|')", 0.0, f77, " 0.000E+00|"},
        {"(G10.3,'|')", 12345.678, 0, " 0.123E+05|"},
        {"(G10.3,'|')", 999.6, 0, " 0.100E+04|"},
        {"(G10.3,'|')", 999.4, 0, "  999.    |"},
        {"(G10.3,'|')", 99.96, 0, "  100.    |"},
        {"(G10.3,'|')", 0.09996, 0, " 0.100    |"},
        {"(G10.3,'|')", 0.09994, 0, " 0.999E-01|"},
        {"(G10.3,'|')", 0.09996, f77, " 0.100E+00|"},
        {"(G10.3,'|')", 999.6, f77, " 1000.    |"},
        {"(G10.3,'|')", 1000.0, f77, " 0.100E+04|"},
        {"(G10.3,'|')", 0.1, 0, " 0.100    |"},
        {"(G10.3,'|')", 1.0, 0, "  1.00    |"},
        {"(G10.3,'|')", -9.9951, 0, " -10.0    |"},
        {"(G11.3E3,'|')", 5.0, 0, "  5.00     |"},
        {"(G11.3E3,'|')", 5.0e7, 0, " 0.500E+008|"},
        {"(2PG10.3,'|')", 5.0, 0, "  5.00    |"},
        {"(2PG10.3,'|')", 5.0e7, 0, " 50.00E+06|"},
        {"(G4.1,'|')", 1.0, 0, "****|"},
        {"(G9.2,'|')", kInf, 0, "      INF|"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Formatted(c.format, [&](FormatWriter& w) { w.Item(c.value); }, c.options),
                  std::string(c.expected) + "\n")
            << c.format << " " << c.value << " " << c.options;
    }
    // A 16-byte value just below a boundary stays below it.
    EXPECT_EQ(Formatted("(G10.3,'|')", [](FormatWriter& w) { w.Real16(999.5, -1e-20); }), "  999.    |\n");
    EXPECT_EQ(Formatted("(G10.3,'|')", [](FormatWriter& w) { w.Real16(999.5, 0.0); }), " 0.100E+04|\n");
    EXPECT_EQ(Formatted("(G10.3,'|')", [](FormatWriter& w) { w.Item(999.4f); }), "  999.    |\n");
}

TEST_F(FormattedOutput, ReversionRepeatsAndControl) {
    EXPECT_EQ(Formatted("(I5)", [](FormatWriter& w) { w.Item(1).Item(2).Item(3); }), "    1\n    2\n    3\n");
    EXPECT_EQ(Formatted("(I2,(I3,I4))", [](FormatWriter& w) { w.Item(1).Item(2).Item(3).Item(4).Item(5); }),
              " 1  2   3\n  4   5\n");
    EXPECT_EQ(Formatted("(2(I2,I3))", [](FormatWriter& w) { w.Item(1).Item(2).Item(3).Item(4).Item(5); }),
              " 1  2 3  4\n 5\n");
    EXPECT_EQ(Formatted("(I1,2(I2,I3))",
                        [](FormatWriter& w) { for (int i = 1; i <= 7; ++i) w.Item(i); }),
              "1 2  3 4  5\n 6  7\n");
    EXPECT_EQ(Formatted("('X=',I3,:,' Y=',I3)", [](FormatWriter& w) { w.Item(1); }), "X=  1\n");
    EXPECT_EQ(Formatted("('X=',I3,' Y=',I3)", [](FormatWriter& w) { w.Item(1); }), "X=  1 Y=\n");
    EXPECT_EQ(Formatted("(I2/I2,2/'end')", [](FormatWriter& w) { w.Item(1).Item(2); }), " 1\n 2\n\nend\n");
    EXPECT_EQ(Formatted("(I3,T8,A,TL6,A,TR1,A)", [](FormatWriter& w) { w.Item(1).Item("abc").Item("Q").Item("z"); }),
              "  1 Q zabc\n");
    EXPECT_EQ(Formatted("(3X,I1,2X,I1)", [](FormatWriter& w) { w.Item(7).Item(8); }), "   7  8\n");
    EXPECT_EQ(Formatted("('it''s',1H;,\"q\")", [](FormatWriter&) {}), "it's;q\n");
    EXPECT_EQ(Formatted("(3I3)", [](FormatWriter& w) { w.Item(1).Item(2); }), "  1  2\n");
    // Passes over a group that only set modes are not repeated two billion times.
    EXPECT_EQ(Formatted("(2000000000(SP,BN,2000000000(DC)),I3)", [](FormatWriter& w) { w.Item(1); }), " +1\n");
    // Modes stay across a reversion (it goes round the header) unless the format sets them again.
    EXPECT_EQ(Formatted("(SP,I3,SS,I3)", [](FormatWriter& w) { w.Item(1).Item(2).Item(3); }), " +1  2\n +3\n");
    EXPECT_EQ(Formatted("(I3,(SS,I3,SP))", [](FormatWriter& w) { w.Item(1).Item(2).Item(3); },
                        0),
              "  1  2\n  3\n");
    EXPECT_EQ(Formatted("(I3,(I3,SP))", [](FormatWriter& w) { w.Item(1).Item(2).Item(3); }), "  1  2\n +3\n");
    EXPECT_EQ(Formatted("(DC,F4.1,(F4.1))", [](FormatWriter& w) { w.Item(1.0).Item(1.0).Item(1.0); }),
              " 1,0 1,0\n 1,0\n");
    // A scale factor does not reach F beyond its own descriptor list position.
    EXPECT_EQ(Formatted("(1P,F6.2,E10.3)", [](FormatWriter& w) { w.Item(1.0).Item(1.0); }), " 10.00 1.000E+00\n");
}

TEST_F(FormattedOutput, FormatErrorsHaveTheirNumbers) {
    int32_t iostat = 0;
    EXPECT_EQ(Formatted("(5X)", [](FormatWriter& w) { w.Item(1); }, 0, &iostat), "");
    EXPECT_EQ(iostat, 58);
    // A mismatch: F on a 2-byte integer. Nothing is written and the statement stops.
    iostat = 0;
    Formatted("(F5.1)", [](FormatWriter& w) { w.Integer(1, 2); }, 0, &iostat);
    EXPECT_EQ(iostat, 110);
    // The record of an internal file overflows.
    iostat = 0;
    char small[4];
    FormatWriter(small, 4, 1, "(I6)", 0, &iostat).Item(1).End();
    EXPECT_EQ(iostat, 5);
    iostat = 0;
    FormatWriter(small, 4, 1, "(I2/I2)", 0, &iostat).Item(1).Item(2).End();
    EXPECT_EQ(iostat, 2);  // past the last record
    EXPECT_EQ(std::string(small, 4), " 1  ");
    // Ending a record behind the last one of an internal file is that error too, at once.
    iostat = 0;
    FormatWriter(small, 4, 1, "(I2,2000000000/)", 0, &iostat).Item(1).End();
    EXPECT_EQ(iostat, 2);
    EXPECT_EQ(std::string(small, 4), " 1  ");
    // A bad version of the format block.
    iostat = 0;
    int32_t unit = 6;
    VrnFormatBlock block{2, nullptr, 0, 0, nullptr};
    LocalContext* context = _vrnBeginIO(&unit, vrntest::FormattedWrite, nullptr, 0, &iostat, 0, &block);
    _vrnEndIO(context);
    EXPECT_EQ(iostat, 135);
    // A format text the encoder refuses.
    iostat = 0;
    Formatted("(I5,K)", [](FormatWriter& w) { w.Item(1); }, 0, &iostat);
    EXPECT_NE(iostat, 0);
}

TEST_F(FormattedOutput, StandardLevelsCheckTheType) {
    vrntest::SetOptions("langlvl=90std");
    int32_t iostat = 0;
    Formatted("(I5)", [](FormatWriter& w) { w.Item(1.5f); }, 0, &iostat);
    EXPECT_EQ(iostat, 53);
    iostat = 0;
    EXPECT_EQ(Formatted("(G10.3,'|')", [](FormatWriter& w) { w.Item(2); }, 0, &iostat), "         2|\n");
    EXPECT_EQ(iostat, 0);
}

// Expressions in "<...>": the compiler's functions, called with the environment word.
intptr_t WidthOf(intptr_t environment) {
    auto* counter = reinterpret_cast<int32_t*>(environment);
    ++counter[1];
    return counter[0];
}

std::vector<uint8_t> Encode(const char* text) {
    void* code = nullptr;
    int32_t bytes = 0, count = 0;
    VrnFormatExpression* table = nullptr;
    intptr_t result = _vrnencodeformat(text, static_cast<int32_t>(std::strlen(text)),
                                       VRN_FMT_COMPILE_TIME | VRN_FMT_EXPRESSIONS |
                                           (sizeof(void*) == 8 ? VRN_FMT_64BIT : 0u),
                                       nullptr, &count, &table, &code, &bytes);
    EXPECT_EQ(result, 1) << text;
    const auto* start = static_cast<const uint8_t*>(code);
    return std::vector<uint8_t>(start, start + bytes);
}

TEST_F(FormattedOutput, VariableOperandsAndPreEncodedCodes) {
    vrntest::TempDir dir;
    vrntest::CapturedRun run;
    Specifiers open;
    open.Text(VRN_KEY_FILE, dir.Path("v"));
    ASSERT_EQ(vrntest::Open(10, open), 0);
    const VrnFormatExpressionFunction table[] = {WidthOf};
    std::vector<uint8_t> code = Encode("(3I<w>)");
    int32_t counter[2] = {4, 0};
    FormatWriter(10, code.data(), nullptr, 0, nullptr, reinterpret_cast<intptr_t>(counter), table)
        .Item(1).Item(2).Item(3).Item(4).End();
    EXPECT_EQ(counter[1], 2);  // once for each pass over the repeated descriptor
    // Out of range: message 61, and with IOSTAT= the statement stops there.
    counter[0] = 3000;
    int32_t iostat = 0;
    FormatWriter(10, code.data(), nullptr, 0, &iostat, reinterpret_cast<intptr_t>(counter), table).Item(9).End();
    EXPECT_EQ(iostat, 58);
    // Without IOSTAT= the program recovers with the default width for the item's size.
    FormatWriter(10, code.data(), nullptr, 0, nullptr, reinterpret_cast<intptr_t>(counter), table)
        .Integer(9, 2).End();
    // Omitted operands, which a compiler's repaired code leaves to the run-time: the
    // defaults by the item's size.
    std::vector<uint8_t> defaults = Encode("(I,'|',F,'|',E,'|',EN,'|',L,'|',Z)");
    double two = 2.5;
    float twoFloat = 2.5f;
    int32_t truth = 1;
    FormatWriter(10, defaults.data()).Item(5).Raw(&two, 8, 8, 4).Raw(&twoFloat, 4, 4, 4)
        .Raw(&twoFloat, 4, 4, 4).Raw(&truth, 4, 4, 1).Integer(255, 2).End();
    vrntest::Close(10);
    EXPECT_EQ(vrntest::ReadFile(dir.Path("v")),
              "   1   2   3\n   4\n      9\n           5|                2.5000000000000000|  0.2500000E+01|"
              "    2.5000000E+00| T|   FF\n");
    run.Finish();
    EXPECT_NE(run.err().find("3714-061"), std::string::npos) << run.err();
}

TEST_F(FormattedOutput, ExternalRecordsAdvanceAndDollar) {
    vrntest::TempDir dir;
    Specifiers open;
    open.Text(VRN_KEY_FILE, dir.Path("f"));
    ASSERT_EQ(vrntest::Open(11, open), 0);
    Specifiers noAdvance;
    noAdvance.Location("report.f", 3).Keyword(VRN_KEY_ADVANCE, VRN_KEY_NO);
    FormatWriter(11, "(A)", &noAdvance).Item("ab").End();
    FormatWriter(11, "(A,$)").Item("cd").End();
    FormatWriter(11, "(I3)").Item(5).End();
    FormatWriter(11, "(T3,A,T1,A)").Item("xy").Item("12").End();
    FormatWriter(11, "('only')").End();
    vrntest::Close(11);
    EXPECT_EQ(vrntest::ReadFile(dir.Path("f")), "abcd  5\n12xy\nonly\n");

    // A record longer than RECL: message 4, and the part written before stays.
    Specifiers fixed;
    fixed.Text(VRN_KEY_FILE, dir.Path("g")).Value(VRN_KEY_RECL, 6);
    ASSERT_EQ(vrntest::Open(12, fixed), 0);
    int32_t iostat = 0;
    FormatWriter(12, "(I4,I4)", nullptr, 0, &iostat).Item(1).Item(2).End();
    EXPECT_EQ(iostat, 4);
    vrntest::Close(12);
    EXPECT_EQ(vrntest::ReadFile(dir.Path("g")).substr(0, 6), "   1  ");
}

// Iw of random values of every kind on a file, against the C library's "%*lld".
TEST_F(FormattedOutput, RandomIntegersOnAFileMatchTheCLibrary) {
    struct Layout {
        const char* format;
        int32_t perRecord, width;
        bool plus;
    };
    const Layout layouts[] = {{"(4I12)", 4, 12, false}, {"(SP,3I7)", 3, 7, true}, {"(I21)", 1, 21, false},
                              {"(5I3)", 5, 3, false}};
    const int32_t kinds[] = {1, 2, 4, 8};
    std::mt19937_64 random(39);
    vrntest::TempDir dir;
    for (const Layout& layout : layouts) {
        Specifiers open;
        open.Text(VRN_KEY_FILE, dir.Path("i"));
        ASSERT_EQ(vrntest::Open(13, open), 0);
        std::string expected;
        FormatWriter writer(13, layout.format);
        for (int i = 0; i < 600; ++i) {
            int32_t kind = kinds[random() % 4];
            int64_t v = static_cast<int64_t>(random()) >> (random() % 64);
            if (kind == 1) v = static_cast<int8_t>(v);
            if (kind == 2) v = static_cast<int16_t>(v);
            if (kind == 4) v = static_cast<int32_t>(v);
            if (i == 7) v = INT64_MIN;
            if (i == 8) v = 0;
            writer.Integer(v, i == 7 ? 8 : kind);
            char field[64];
            std::snprintf(field, sizeof field, layout.plus ? "%+*lld" : "%*lld", layout.width, static_cast<long long>(v));
            std::string text = field;
            if (static_cast<int32_t>(text.size()) > layout.width) text = std::string(layout.width, '*');
            expected += text;
            if ((i + 1) % layout.perRecord == 0) expected += "\n";
        }
        if (!expected.empty() && expected.back() != '\n') expected += "\n";
        writer.End();
        vrntest::Close(13);
        ASSERT_EQ(vrntest::ReadFile(dir.Path("i")), expected) << layout.format;
        std::remove(dir.Path("i").c_str());
    }
}

TEST_F(FormattedOutput, SegmentsMatchItemByItem) {
    const int32_t values[7] = {1, -22, 333, 4444, -5, 66, 7};
    std::string bySegment(8 * 300, '\x01');
    FormatWriter segment(bySegment.data(), 300, 8, "(3I6)");
    _vrnWriteFmtSeg(segment.context(), values, sizeof values, 4, 0, 0);
    segment.End();
    std::string byItem = Formatted("(3I6)", [&](FormatWriter& w) { for (int32_t v : values) w.Item(v); });
    EXPECT_EQ(vrntest::InternalRecords(bySegment.data(), 300, 8), byItem);
    EXPECT_EQ(byItem, "     1   -22   333\n  4444    -5    66\n     7\n");

    const double reals[3] = {1.5, -2.25, 1.0e10};
    std::string realSegment(8 * 300, '\x01');
    FormatWriter realWriter(realSegment.data(), 300, 8, "(2G12.4)");
    _vrnWriteFmtSeg(realWriter.context(), reals, sizeof reals, 8, 4, 0);
    realWriter.End();
    EXPECT_EQ(vrntest::InternalRecords(realSegment.data(), 300, 8), "   1.500      -2.250\n  0.1000E+11\n");
}

}  // namespace
