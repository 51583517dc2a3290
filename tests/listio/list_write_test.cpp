// List-directed output: literal records for each type, kind and mode, the record
// boundaries, internal files, and reals that read back exactly.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "core/context.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class ListOutput : public RuntimeTest {
protected:
    // Runs `write` as a program with standard output on a file and returns what it wrote.
    template <typename Write>
    std::string Printed(Write write) {
        CapturedRun run;
        write();
        run.Finish();
        EXPECT_EQ(run.err(), "");
        return run.out();
    }

    // One statement's record (without its newline) through an internal file.
    template <typename Items>
    std::string Record(Items items, uint32_t options = 0, Specifiers* specifiers = nullptr, int length = 200) {
        std::string line(static_cast<size_t>(length), '#');
        ListWriter write(line.data(), static_cast<uint32_t>(length), 1, options, nullptr, specifiers);
        items(write);
        write.End();
        line.erase(line.find_last_not_of(' ') + 1);
        return line;
    }
    TempDir dir;
};

TEST_F(ListOutput, OneRecordOfEveryType) {
    std::string out = Printed([] {
        ListWriter().Item(1).Item(2.5f).Logical(1).Item("AB").Complex(1.0f, 2.0f).End();
    });
    EXPECT_EQ(out, " 1 2.500000000 T AB (1.000000000,2.000000000)\n");
}

TEST_F(ListOutput, Integers) {
    EXPECT_EQ(Record([](ListWriter& w) { w.Item(0).Item(-7).Item(2147483647); }), " 0 -7 2147483647");
    EXPECT_EQ(Record([](ListWriter& w) {
                  w.Integer(-128, 1).Integer(-32768, 2).Integer(std::numeric_limits<int64_t>::min(), 8).Byte(-1);
              }),
              " -128 -32768 -9223372036854775808 -1");
    Specifiers plus;
    plus.Location("t.f", 1).Keyword(VRN_KEY_SIGN, VRN_KEY_PLUS);
    EXPECT_EQ(Record([](ListWriter& w) { w.Item(1).Item(0).Item(-1); }, 0, &plus), " +1 +0 -1");
}

TEST_F(ListOutput, RealsOfEachKind) {
    struct Case {
        double value;
        const char* single;  // as REAL(4)
        const char* dbl;     // as REAL(8)
    } cases[] = {
        {1.0, "1.000000000", "1.00000000000000000"},
        {0.5, "0.5000000000", "0.500000000000000000"},
        {0.01, "0.9999999776E-02", "0.100000000000000002E-01"},  // 0.01f is 0.0099999998
        {1e10, "0.1000000000E+11", "10000000000.0000000"},
        {1e9, "0.1000000000E+10", "1000000000.00000000"},
        {-123456.7, "-123456.7031", "-123456.699999999997"},
        {0.0, "0.0000000000E+00", "0.000000000000000000E+00"},
        {1e100, "Inf", "0.100000000000000002E+101"},
        {2.2250738585072014e-308, "0.0000000000E+00", "0.222507385850720138E-307"},
    };
    for (const Case& c : cases) {
        float single = static_cast<float>(c.value);
        if (std::isfinite(single)) EXPECT_EQ(Record([&](ListWriter& w) { w.Item(single); }), std::string(" ") + c.single);
        EXPECT_EQ(Record([&](ListWriter& w) { w.Item(c.value); }), std::string(" ") + c.dbl) << c.value;
    }
    EXPECT_EQ(Record([](ListWriter& w) { w.Real16(1.0, 0.0); }), " 1.0000000000000000000000000000000000");
    EXPECT_EQ(Record([](ListWriter& w) { w.Real16(0.1, -5.551115123125783e-18); }),
              " 0.10000000000000000000000000000000000");
    EXPECT_EQ(Record([](ListWriter& w) { w.Real16(0.0, 0.0); }), " 0.00000000000000000000000000000000000E+00");
}

TEST_F(ListOutput, ZerosSignsAndModes) {
    // A negative zero shows its sign only under the statement flag, and never as REAL(16).
    EXPECT_EQ(Record([](ListWriter& w) { w.Item(-0.0f).Item(-0.0); }), " 0.0000000000E+00 0.000000000000000000E+00");
    EXPECT_EQ(Record([](ListWriter& w) { w.Item(-0.0f).Item(-0.0).Real16(-0.0, 0.0); }, VRN_OPTION_NEGATIVE_ZERO_SIGN),
              " -0.0000000000E+00 -0.000000000000000000E+00 0.00000000000000000000000000000000000E+00");
    Specifiers plus;
    plus.Location("t.f", 1).Keyword(VRN_KEY_SIGN, VRN_KEY_PLUS);
    EXPECT_EQ(Record([](ListWriter& w) { w.Item(1.0f).Item(0.0f).Item(-0.0f); }, 0, &plus),
              " +1.000000000 +0.0000000000E+00 +0.0000000000E+00");
    Specifiers comma;
    comma.Location("t.f", 1).Keyword(VRN_KEY_DECIMAL, VRN_KEY_COMMA);
    EXPECT_EQ(Record([](ListWriter& w) { w.Item(1.5f).Complex(1.0f, -2.0f); }, 0, &comma),
              " 1,500000000 (1,000000000;-2,000000000)");
    Specifiers down;
    down.Location("t.f", 1).Keyword(VRN_KEY_ROUND, VRN_KEY_DOWN);
    EXPECT_EQ(Record([](ListWriter& w) { w.Item(0.1); }), " 0.100000000000000006");
    EXPECT_EQ(Record([](ListWriter& w) { w.Item(0.1); }, 0, &down), " 0.100000000000000005");
}

TEST_F(ListOutput, NotANumberAndInfinityInEachStyle) {
    double nan = std::nan("");
    double inf = HUGE_VAL;
    EXPECT_EQ(Record([&](ListWriter& w) { w.Item(nan).Item(inf).Item(-inf); }), " NAN INF -INF");
    EXPECT_EQ(Record([&](ListWriter& w) { w.Item(nan).Item(inf); }, VRN_OPTION_REAL_OUTPUT_RULE), " NaN(Q) Inf");
    Specifiers plus;
    plus.Location("t.f", 1).Keyword(VRN_KEY_SIGN, VRN_KEY_PLUS);
    EXPECT_EQ(Record([&](ListWriter& w) { w.Item(nan).Item(inf); }, 0, &plus), " +NAN +INF");
    SetOptions("naninfoutput=2003std");
    EXPECT_EQ(Record([&](ListWriter& w) { w.Item(nan).Item(inf).Item(-nan); }, 0, &plus), " NaN(Q) +Inf -NaN(Q)");
    // Signalling NaNs of both kinds stay signalling, whatever the machine's conversions do.
    auto floatOf = [](uint32_t bits) {
        float f;
        std::memcpy(&f, &bits, sizeof f);
        return f;
    };
    auto doubleOf = [](uint64_t bits) {
        double d;
        std::memcpy(&d, &bits, sizeof d);
        return d;
    };
    EXPECT_EQ(Record([&](ListWriter& w) {
                  w.Item(floatOf(0x7F855555u)).Item(floatOf(0xFF800001u)).Item(floatOf(0x7FC00000u));
                  w.Item(doubleOf(0x7FF5555555555555ull)).Item(doubleOf(0x7FF8000000000000ull));
              }),
              " NaN(S) -NaN(S) NaN(Q) NaN(S) NaN(Q)");
}

TEST_F(ListOutput, Logicals) {
    EXPECT_EQ(Record([](ListWriter& w) { w.Logical(1, 1).Logical(0, 2).Logical(1, 4).Logical(1, 8); }), " T F T T");
    // Truth is bit 0, unless the program was compiled to take any non-zero value.
    EXPECT_EQ(Record([](ListWriter& w) { w.Logical(2).Logical(-1); }), " F T");
    EXPECT_EQ(Record([](ListWriter& w) { w.Logical(2).Logical(0); }, VRN_OPTION_LOGICAL_OUTPUT), " T F");
}

TEST_F(ListOutput, Characters) {
    EXPECT_EQ(Record([](ListWriter& w) { w.Item("AB").Item("CD").Item(5).Item("x"); }), " ABCD 5 x");
    Specifiers quote;
    quote.Location("t.f", 1).Keyword(VRN_KEY_DELIM, VRN_KEY_QUOTE);
    EXPECT_EQ(Record([](ListWriter& w) { w.Item("A\"B").Item("").Item("C"); }, 0, &quote), " \"A\"\"B\" \"\" \"C\"");
    Specifiers apostrophe;
    apostrophe.Location("t.f", 1).Text(VRN_KEY_DELIM, "apostrophe");
    EXPECT_EQ(Record([](ListWriter& w) { w.Item("it's"); }, 0, &apostrophe), " 'it''s'");
}

class ListRecords : public ListOutput {
protected:
    // WRITE (20, *) items on a file with RECL=`recl`; the file's text after CLOSE.
    template <typename Items>
    std::string OnFile(int32_t recl, Items items, int32_t* iostat = nullptr, Specifiers* extra = nullptr) {
        std::string name = dir.Path("r" + std::to_string(++files_) + ".txt");
        Specifiers s;
        s.Text(VRN_KEY_FILE, name).Value(VRN_KEY_RECL, static_cast<uintptr_t>(recl));
        Open(20, s);
        ListWriter write(20, extra, 0, iostat);
        items(write);
        write.End();
        Close(20);
        return ReadFile(name);
    }
    int files_ = 0;
};

TEST_F(ListRecords, ValuesMoveToTheNextRecordWhole) {
    // 12 columns: " 1.000000000" fills the record exactly and stays.
    EXPECT_EQ(OnFile(12, [](ListWriter& w) { w.Item(1.0f).Item(2.0f); }), " 1.000000000\n 2.000000000\n");
    EXPECT_EQ(OnFile(10, [](ListWriter& w) { w.Item(12345).Item(678).Item(9); }), " 12345 678\n 9\n");
    // A value as long as the record can never fit beside a record's leading blank: the
    // statement stops there.
    int32_t iostat = 0;
    EXPECT_EQ(OnFile(11, [](ListWriter& w) { w.Item(1.0f).Item(7); }, &iostat), " \n");
    EXPECT_EQ(iostat, 4);
}

// The records list-directed output makes of integers, by the rules alone: each record
// starts with a blank, values are parted by one blank, and a value that does not fit
// moves whole to the next record (behind the separator, which stays if there is room).
std::string ModelIntegerRecords(const std::vector<int64_t>& values, int32_t recl, bool plus) {
    std::string out, record = " ";
    bool first = true;
    for (int64_t v : values) {
        std::string text = (plus && v >= 0 ? "+" : "") + std::to_string(v);
        int32_t column = static_cast<int32_t>(record.size());
        if (first) {
            first = false;
        } else if (static_cast<int32_t>(text.size()) + 1 <= recl - column) {
            record += ' ';
            column += 1;
        } else {
            if (column < recl) record += ' ';
            column = recl;
        }
        if (static_cast<int32_t>(text.size()) > recl - column) {
            out += record + "\n";
            record = " ";
        }
        record += text;
    }
    return out + record + "\n";
}

TEST_F(ListRecords, RandomIntegersOfEveryKindFollowTheRecordRules) {
    std::mt19937_64 random(39);
    const int32_t kinds[] = {1, 2, 4, 8};
    for (int32_t recl : {8, 13, 80, 133, 1500, 3000}) {
        for (bool plus : {false, true}) {
            std::vector<int64_t> values;
            std::vector<int32_t> itemKinds;
            for (int i = 0; i < 300; ++i) {
                int32_t kind = kinds[random() % 4];
                int64_t v = static_cast<int64_t>(random());
                // Every length of number, not only the long ones random bits give.
                v >>= random() % 64;
                if (kind == 1) v = static_cast<int8_t>(v);
                if (kind == 2) v = static_cast<int16_t>(v);
                if (kind == 4) v = static_cast<int32_t>(v);
                if (i % 50 == 0) v = kind == 8 ? INT64_MIN : kind == 4 ? INT32_MIN : 0;
                if (recl < 20) v %= 10000;  // a value must fit a record beside its blank
                values.push_back(v);
                itemKinds.push_back(kind);
            }
            Specifiers sign;
            sign.Location("t.f", 1).Keyword(VRN_KEY_SIGN, plus ? VRN_KEY_PLUS : VRN_KEY_SUPPRESS);
            std::string file = OnFile(
                recl,
                [&](ListWriter& w) {
                    for (size_t i = 0; i < values.size(); ++i) w.Integer(values[i], itemKinds[i]);
                },
                nullptr, &sign);
            ASSERT_EQ(file, ModelIntegerRecords(values, recl, plus)) << "RECL=" << recl << " plus=" << plus;
        }
    }
}

TEST_F(ListRecords, ComplexValuesSplitAfterTheirSeparator) {
    EXPECT_EQ(OnFile(20, [](ListWriter& w) { w.Complex(1.0f, 2.0f); }), " (1.000000000,\n 2.000000000)\n");
    // The separator is written before the value finds it does not fit.
    EXPECT_EQ(OnFile(27, [](ListWriter& w) { w.Item(1).Complex(1.0f, 2.0f); }), " 1 \n (1.000000000,2.000000000)\n");
}

TEST_F(ListRecords, CharacterValuesContinueOnTheNextRecord) {
    // Undelimited: behind a blank. Delimited: in column 1, where a blank would be read.
    EXPECT_EQ(OnFile(8, [](ListWriter& w) { w.Item("abcdefghijklmnop"); }), " abcdefg\n hijklmn\n op\n");
    Specifiers quote;
    quote.Location("t.f", 1).Keyword(VRN_KEY_DELIM, VRN_KEY_QUOTE);
    EXPECT_EQ(OnFile(8, [](ListWriter& w) { w.Item("abcdefghijk"); }, nullptr, &quote), " \"abcdef\nghijk\"\n");
    EXPECT_EQ(OnFile(8, [](ListWriter& w) { w.Item("abcde\"\"f"); }, nullptr, &quote), " \"abcde\n\"\"\"\"f\"\n");
}

TEST_F(ListOutput, InternalFilesRunOutOfRecords) {
    char lines[2][12];
    int32_t iostat = 0;
    {
        ListWriter w(&lines[0][0], 12, 2, 0, &iostat);
        w.Item(1.0f).Item(2.0f).Item(3.0f).End();
    }
    EXPECT_EQ(std::string(&lines[0][0], 24), " 1.000000000 2.000000000");
    EXPECT_EQ(iostat, 2);
    {
        ListWriter w(&lines[0][0], 12, 2, VRN_OPTION_LD_OVERFLOW_MINUS2, &iostat);
        w.Item(1.0f).Item(2.0f).Item(3.0f).End();
    }
    EXPECT_EQ(iostat, -2);
    {
        ListWriter w(&lines[0][0], 5, 1, 0, &iostat);
        w.Item(123456).End();
    }
    EXPECT_EQ(iostat, 5);  // can never fit a record of 5
}

TEST_F(ListOutput, RealsReadBackExactly) {
#if UINTPTR_MAX == 0xFFFFFFFFu
    constexpr int kValues = 20000;
#else
    constexpr int kValues = 1000000;
#endif
    std::mt19937_64 random(5);
    char line[40];
    for (int i = 0; i < kValues; ++i) {
        uint64_t bits = random();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        ListWriter(line, sizeof line, 1).Item(value).End();
        ASSERT_EQ(std::strtod(line, nullptr), value) << std::string(line, sizeof line);
        float single;
        uint32_t low = static_cast<uint32_t>(bits);
        std::memcpy(&single, &low, sizeof single);
        if (!std::isfinite(single)) continue;
        ListWriter(line, sizeof line, 1).Item(single).End();
        ASSERT_EQ(std::strtof(line, nullptr), single) << std::string(line, sizeof line);
    }
}

}  // namespace
}  // namespace vrntest
