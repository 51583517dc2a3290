// Namelist READ and WRITE as compiled code issues them: exact records written, and a
// table of input texts with the values and IOSTAT= they must give.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>

#include <random>
#include <vector>

#include "tests/listio/namelist_support.h"

namespace vrntest {
namespace {

// A derived type as the compiler lays it out, with its table and component names.
struct Point {
    int32_t x;
    double y;
    char s[3];
    int32_t v[3];
};

struct PointType {
    alignas(8) unsigned char storage[sizeof(VrnDTTable) + 4 * sizeof(VrnDTRow)] = {};
    VrnNamelistComponent components[4] = {{"X", nullptr, nullptr, 1}, {"Y", nullptr, nullptr, 1},
                                          {"S", nullptr, nullptr, 1}, {"V", nullptr, nullptr, 1}};
    VrnNamelistType type{};
    PointType() {
        auto* table = reinterpret_cast<VrnDTTable*>(storage);
        table->count = 4;
        table->size = sizeof(Point);
        table->rows[0] = VrnDTRow{0, 4, 4, {0, 0}, offsetof(Point, x)};
        table->rows[1] = VrnDTRow{4, 8, 8, {0, 0}, offsetof(Point, y)};
        table->rows[2] = VrnDTRow{2, 3, 3, {0, 0}, offsetof(Point, s)};
        table->rows[3] = VrnDTRow{VRN_ARRAY_RUN, 4, 12, {0, 0}, offsetof(Point, v)};
        type = VrnNamelistType{table, nullptr, nullptr, components};
    }
};

// The variables of one group: every type, arrays of ranks 1 to 3, a derived type.
struct Variables {
    int32_t i = 0;
    int32_t a[5] = {};
    int32_t m[2][3] = {};  // M(2,3) in Fortran order: m[column][row] is M(row+1, column+1)... see Init
    double x = 0;
    float r = 0;
    double z[2] = {};
    int32_t l = 0;
    int32_t la[3] = {};
    char c[6] = {' ', ' ', ' ', ' ', ' ', ' '};
    char ca[3][4] = {};
    int16_t i2 = 0;
    int64_t i8 = 0;
    int32_t total = 0;
    Point t{};
    PointType pointType;
    ArrayDescriptor aRtd, mRtd, laRtd, caRtd;
    Group group{"G"};

    Variables() {
        std::memset(ca, ' ', sizeof ca);
        std::memcpy(t.s, "   ", 3);
        aRtd = DescribeArray(a, 4, RTD_TYPE_INTEGER, {{1, 5}});
        mRtd = DescribeArray(m, 4, RTD_TYPE_INTEGER, {{1, 3}, {1, 2}});
        laRtd = DescribeArray(la, 4, RTD_TYPE_LOGICAL, {{1, 3}});
        caRtd = DescribeArray(ca, 4, RTD_TYPE_CHARACTER, {{1, 3}});
        group.Scalar("I", &i, 0, 4).Array("A", aRtd.head(), 0, 4).Array("M", mRtd.head(), 0, 4);
        group.Scalar("X", &x, 4, 8).Scalar("R", &r, 4, 4).Scalar("Z", z, 5, 8).Scalar("L", &l, 1, 4);
        group.Array("LA", laRtd.head(), 1, 4).Scalar("C", c, 2, 0, 6).Array("CA", caRtd.head(), 2, 0, 4);
        group.Scalar("I2", &i2, 0, 2).Scalar("I8", &i8, 0, 8).Scalar("TOTAL", &total, 0, 4);
        group.Derived("T", &t, &pointType.type);
    }

    // The values, compactly, in a form the table below spells out.
    std::string Show() const {
        char text[1024];
        auto ints = [](const int32_t* v, int n) {
            std::string s;
            for (int k = 0; k < n; ++k) s += (k ? "," : "") + std::to_string(v[k]);
            return s;
        };
        std::snprintf(text, sizeof text,
                      "I=%d A=%s M=%s X=%g R=%g Z=(%g,%g) L=%d LA=%s C='%.6s' CA='%.4s','%.4s','%.4s' I2=%d I8=%lld "
                      "TOTAL=%d T=%d,%g,'%.3s',%s",
                      i, ints(a, 5).c_str(), ints(&m[0][0], 6).c_str(), x, static_cast<double>(r), z[0], z[1], l,
                      ints(la, 3).c_str(), c, ca[0], ca[1], ca[2], i2, static_cast<long long>(i8), total, t.x, t.y,
                      t.s, ints(t.v, 3).c_str());
        return text;
    }
};

const std::string kUntouched =
    "I=0 A=0,0,0,0,0 M=0,0,0,0,0,0 X=0 R=0 Z=(0,0) L=0 LA=0,0,0 C='      ' CA='    ','    ','    ' I2=0 I8=0 "
    "TOTAL=0 T=0,0,'   ',0,0,0";

// The values after reading `text`, with the parts that differ from kUntouched.
std::string Expect(std::initializer_list<std::pair<std::string, std::string>> changes) {
    std::string shown = kUntouched;
    for (const auto& [from, to] : changes) {
        size_t at = shown.find(" " + from);
        if (at == std::string::npos) at = shown.find(from);
        else at += 1;
        shown.replace(at, from.size(), to);
    }
    return shown;
}

class Namelist : public RuntimeTest {};

struct InputCase {
    const char* text;
    int32_t iostat;
    std::string values;
};

TEST_F(Namelist, InputTable) {
    const InputCase cases[] = {
        {"&G I=5 /", 0, Expect({{"I=0", "I=5"}})},
        {"&g\n i = 5,\n /", 0, Expect({{"I=0", "I=5"}})},
        {"$G I=5 $END", 0, Expect({{"I=0", "I=5"}})},
        {"&G I=5 &END", 0, Expect({{"I=0", "I=5"}})},
        {"&G I=5\n/", 0, Expect({{"I=0", "I=5"}})},
        // Records before the group, other groups, comments.
        {"junk\n&OTHER I=9 /\n &G I=2 /", 0, Expect({{"I=0", "I=2"}})},
        {"! a comment\n&G I=1 ! the count\n A=4 /", 0, Expect({{"I=0", "I=1"}, {"A=0", "A=4"}})},
        // Arrays: in order, repeat counts, null values, elements and sections.
        {"&G A=1,2,3,4,5 /", 0, Expect({{"A=0,0,0,0,0", "A=1,2,3,4,5"}})},
        {"&G A=1 2\n 3 /", 0, Expect({{"A=0,0,0", "A=1,2,3"}})},
        {"&G A=3*7 /", 0, Expect({{"A=0,0,0", "A=7,7,7"}})},
        {"&G A=1,,3,2* /", 0, Expect({{"A=0,0,0,0,0", "A=1,0,3,0,0"}})},
        {"&G A=1,,3, 2* ,5 /", 121, Expect({{"A=0,0,0,0,0", "A=1,0,3,0,0"}})},
        {"&G A(3)=9 /", 0, Expect({{"A=0,0,0", "A=0,0,9"}})},
        {"&G A(2:4:2)=8,9 /", 0, Expect({{"A=0,0,0,0,0", "A=0,8,0,9,0"}})},
        {"&G A(5:1:-2)=1,2,3 /", 0, Expect({{"A=0,0,0,0,0", "A=3,0,2,0,1"}})},
        {"&G A(4:)=6,7 /", 0, Expect({{"A=0,0,0,0,0", "A=0,0,0,6,7"}})},
        {"&G M(:,2)=1,2,3 /", 0, Expect({{"M=0,0,0,0,0,0", "M=0,0,0,1,2,3"}})},
        {"&G M(2,1)=6 M(1:3:2,2)=4,5 /", 0, Expect({{"M=0,0,0,0,0,0", "M=0,6,0,4,0,5"}})},
        // A name ends the values of an array early; a word of T and F may be either.
        {"&G A=1,2 I=3 /", 0, Expect({{"I=0", "I=3"}, {"A=0,0", "A=1,2"}})},
        {"&G LA=T,.false. TOTAL=3 /", 0, Expect({{"LA=0,0,0", "LA=1,0,0"}, {"TOTAL=0", "TOTAL=3"}})},
        {"&G LA=T F T L=T /", 0, Expect({{"LA=0,0,0", "LA=1,0,1"}, {"L=0", "L=1"}})},
        // Every type.
        {"&G X=1.5D0 R=-2.5e1 Z=(1,-2) L=.TRUE. I2=-300 I8=9000000000 /", 0,
         Expect({{"X=0", "X=1.5"}, {"R=0", "R=-25"}, {"Z=(0,0)", "Z=(1,-2)"}, {"L=0", "L=1"}, {"I2=0", "I2=-300"},
                 {"I8=0", "I8=9000000000"}})},
        {"&G C='It''s' CA='ab', \"cd\" /", 0,
         Expect({{"C='      '", "C='It's  '"}, {"CA='    ','    '", "CA='ab  ','cd  '"}})},
        {"&G C='spans\ntwo' /", 0, Expect({{"C='      '", "C='spanst'"}})},
        {"&G C=plain /", 0, Expect({{"C='      '", "C='plain '"}})},
        // Substrings.
        {"&G C(2:4)='xyz' /", 0, Expect({{"C='      '", "C=' xyz  '"}})},
        {"&G CA(2)(3:4)='qq' CA(3)(:1)='w' /", 0, Expect({{"CA='    ','    ','    '", "CA='    ','  qq','w   '"}})},
        // Components, by name or the whole object in order.
        {"&G T%X=4 t%s='ab' /", 0, Expect({{"T=0,0,'   '", "T=4,0,'ab '"}})},
        {"&G T%V(2)=5 T%V(3:3)=6 /", 0, Expect({{"T=0,0,'   ',0,0,0", "T=0,0,'   ',0,5,6"}})},
        {"&G T=1, 2.5, 'abc', 7,8,9 /", 0, Expect({{"T=0,0,'   ',0,0,0", "T=1,2.5,'abc',7,8,9"}})},
        {"&G T=1, 2.5 I=4 /", 0, Expect({{"I=0", "I=4"}, {"T=0,0", "T=1,2.5"}})},
        // Errors leave what was read before them and nothing after.
        {"&G I=1 Q=1 A=2 /", 92, Expect({{"I=0", "I=1"}})},
        {"&G T%Q=1 /", 92, kUntouched},
        {"&G A(9)=1 I=2 /", 45, kUntouched},
        {"&G A(1,2)=1 /", 45, kUntouched},
        {"&G I(1)=1 /", 45, kUntouched},
        {"&G C(0:2)='a' /", 45, kUntouched},
        {"&G A(1:9:4000000000000000000)=1 /", 0, Expect({{"A=0", "A=1"}})},
        {"&G A(3:2)=1 I=2 /", 121, kUntouched},
        {"&G A(-9223372036854775807:5)=1 /", 45, kUntouched},
        {"&G A=1,2,3,4,5,6 I=2 /", 121, Expect({{"A=0,0,0,0,0", "A=1,2,3,4,5"}})},
        {"&G A=6*1 /", 121, Expect({{"A=0,0,0,0,0", "A=1,1,1,1,1"}})},
        {"&G I=1, 2 /", 121, Expect({{"I=0", "I=1"}})},
        {"&G I 5 /", 213, Expect({{"I=0", "I=5"}})},
        {"&G 5=1 /", 90, kUntouched},
        {"&G I=1.5 /", 97, kUntouched},
        {"&G I2=70000 /", 96, kUntouched},
        {"&G L=5 /", 42, kUntouched},
    };
    for (const auto& c : cases) {
        Variables v;
        SCOPED_TRACE(c.text);
        EXPECT_EQ(ReadInternal(v.group, c.text), c.iostat);
        EXPECT_EQ(v.Show(), c.values);
    }
}

TEST_F(Namelist, MissingGroupIsTheEndOfTheFile) {
    for (const char* text : {"", "&OTHER I=1 /", "&GG I=1 /", " I=1 /"}) {
        Variables v;
        SCOPED_TRACE(text);
        EXPECT_LT(ReadInternal(v.group, text), 0);
        EXPECT_EQ(v.Show(), kUntouched);
    }
}

TEST_F(Namelist, WritesEachObjectOnItsOwnRecord) {
    Variables v;
    v.i = 10;
    v.a[0] = 1, v.a[4] = -5;
    v.x = 1.5;
    v.l = 1;
    std::memcpy(v.c, "It's  ", 6);
    v.t = Point{3, 0.25, {'a', 'b', 'c'}, {7, 8, 9}};
    EXPECT_EQ(WriteInternal(v.group),
              "&G\n"
              " I=10,\n"
              " A=1, 0, 0, 0, -5,\n"
              " M=0, 0, 0, 0, 0, 0,\n"
              " X=1.50000000000000000,\n"
              " R=0.0000000000E+00,\n"
              " Z=(0.000000000000000000E+00,0.000000000000000000E+00),\n"
              " L=T,\n"
              " LA=F, F, F,\n"
              " C='It''s  ',\n"
              " CA='    ', '    ', '    ',\n"
              " I2=0,\n"
              " I8=0,\n"
              " TOTAL=0,\n"
              " T%X=3,\n"
              " T%Y=0.250000000000000000,\n"
              " T%S='abc',\n"
              " T%V=7, 8, 9,\n"
              " /\n");
}

TEST_F(Namelist, OutputOptions) {
    int32_t n = 7;
    int32_t a[4] = {1, 2, 3, 4};
    auto rtd = DescribeArray(a, 4, RTD_TYPE_INTEGER, {{1, 4}});
    char text[3] = {'a', '"', 'b'};
    Group group("cfg");
    group.Scalar("n", &n, 0, 4).Array("a", rtd.head(), 0, 4).Scalar("s", text, 2, 0, 3);
    // One record after another, breaking only when full.
    EXPECT_EQ(WriteInternal(group, 30, VRN_OPTION_NAMELIST_OUTPUT_RULE),
              "&CFG\n N=7, A=1, 2, 3, 4, S='a\"b',\n /\n");
    EXPECT_EQ(WriteInternal(group, 20, VRN_OPTION_NAMELIST_OUTPUT_RULE),
              "&CFG\n N=7, A=1, 2, 3, 4,\n S='a\"b',\n /\n");
    // DELIM= and DECIMAL= of the statement.
    Specifiers quote;
    quote.Location("t.f", 1).Keyword(VRN_KEY_DELIM, VRN_KEY_QUOTE).Keyword(VRN_KEY_DECIMAL, VRN_KEY_COMMA);
    EXPECT_EQ(WriteInternal(group, 80, 0, nullptr, &quote), "&CFG\n N=7;\n A=1; 2; 3; 4;\n S=\"a\"\"b\";\n /\n");
    Specifiers none;
    none.Location("t.f", 1).Keyword(VRN_KEY_DELIM, VRN_KEY_NONE);
    EXPECT_EQ(WriteInternal(group, 80, 0, nullptr, &none), "&CFG\n N=7,\n A=1, 2, 3, 4,\n S=a\"b,\n /\n");
    // The older dialect, and lines no wider than NLWIDTH.
    SetOptions("namelist=old:nlwidth=12");
    EXPECT_EQ(WriteInternal(group, 80), " &CFG\n N=7,\n A=1, 2, 3,\n 4,\n S='a\"b',\n &END\n");
}

TEST_F(Namelist, OldDialectDoesNotReadColumnOne) {
    int32_t n = 0, m = 0;
    Group group("G");
    group.Scalar("N", &n, 0, 4).Scalar("M", &m, 0, 4);
    // Column 1 of a record after the first: a blank there is dropped; anything else is
    // dropped only in the older dialect.
    EXPECT_EQ(ReadInternal(group, "&G\nN=1\nM=2\n/"), 0);
    EXPECT_EQ(n * 10 + m, 12);
    SetOptions("namelist=old");
    EXPECT_EQ(ReadInternal(group, " $G\n N=3\nXM=4\n $END"), 0);
    EXPECT_EQ(n * 10 + m, 34);
}

TEST_F(Namelist, LongCharacterValuesContinueAndReadBack) {
    char text[50];
    for (int k = 0; k < 50; ++k) text[k] = static_cast<char>('a' + k % 26);
    text[10] = '\'';
    Group group("G");
    group.Scalar("TEXT", text, 2, 0, 50);
    std::string written = WriteInternal(group, 24);
    EXPECT_EQ(written, "&G\n TEXT='abcdefghij''lmnop\n qrstuvwxyzabcdefghijklm\n nopqrstuvwx',\n /\n");
    char back[50];
    std::memset(back, ' ', 50);
    Group reader("G");
    reader.Scalar("TEXT", back, 2, 0, 50);
    EXPECT_EQ(ReadInternal(reader, written), 0);
    EXPECT_EQ(std::string(back, 50), std::string(text, 50));
}

// Every type and kind written to a file and read back into zeroed storage gives the same
// bytes: integers and logicals of 1 to 8 bytes, a byte, reals and complex values of 4, 8
// and 16 bytes, character values with delimiters inside, a rank 3 array.
TEST_F(Namelist, RoundTripsEveryKindThroughAFile) {
    struct Member {
        const char* name;
        uint32_t type;
        int32_t kind;
        int32_t length;  // bytes of the storage
    };
    const Member members[] = {
        {"I1", 0, 1, 1}, {"I2", 0, 2, 2}, {"I4", 0, 4, 4},  {"I8", 0, 8, 8},   {"L1", 1, 1, 1},
        {"L2", 1, 2, 2}, {"L4", 1, 4, 4}, {"L8", 1, 8, 8},  {"B", 3, 1, 1},    {"R4", 4, 4, 4},
        {"R8", 4, 8, 8}, {"R16", 4, 16, 16}, {"Z4", 5, 4, 8}, {"Z8", 5, 8, 16}, {"Z16", 5, 16, 32},
        {"TEXT", 2, 0, 9},
    };
    std::mt19937_64 random(12345);
    TempDir dir;
    for (int round = 0; round < 20; ++round) {
        std::vector<std::vector<unsigned char>> values, back;
        Group out("roundtrip"), in("ROUNDTRIP");
        for (const Member& m : members) {
            std::vector<unsigned char> bytes(static_cast<size_t>(m.length));
            for (auto& b : bytes) b = static_cast<unsigned char>(random());
            if (m.type == 1) {  // a logical is 0 or 1 at its kind
                int64_t truth = static_cast<int64_t>(random() & 1);
                if (m.kind == 1) bytes[0] = static_cast<unsigned char>(truth);
                if (m.kind == 2) { int16_t t = static_cast<int16_t>(truth); std::memcpy(bytes.data(), &t, 2); }
                if (m.kind == 4) { int32_t t = static_cast<int32_t>(truth); std::memcpy(bytes.data(), &t, 4); }
                if (m.kind == 8) std::memcpy(bytes.data(), &truth, 8);
            } else if (m.type == 4 || m.type == 5) {  // finite reals, the low double of a pair exact
                int parts = m.type == 5 ? 2 : 1;
                int32_t part = m.kind;
                for (int p = 0; p < parts; ++p) {
                    unsigned char* at = bytes.data() + p * part;
                    double value = std::ldexp(static_cast<double>(random() % 2000000) - 1e6, static_cast<int>(random() % 80) - 40);
                    if (part == 4) {
                        float f = static_cast<float>(value);
                        std::memcpy(at, &f, 4);
                    } else if (part == 8) {
                        std::memcpy(at, &value, 8);
                    } else {
                        double pair[2] = {value, 0};
                        std::memcpy(at, pair, 16);
                    }
                }
            } else if (m.type == 2) {
                const char* pool = "ab' \"!&/=,xyz";
                for (auto& b : bytes) b = static_cast<unsigned char>(pool[random() % 13]);
            }
            values.push_back(bytes);
            back.emplace_back(bytes.size(), 0);
        }
        int32_t cube[2][3][4];
        int32_t cubeBack[2][3][4] = {};
        for (auto& v : cube[0][0]) v = static_cast<int32_t>(random());
        for (int k = 1; k < 24; ++k) (&cube[0][0][0])[k] = static_cast<int32_t>(random());
        auto cubeRtd = DescribeArray(cube, 4, RTD_TYPE_INTEGER, {{1, 4}, {0, 3}, {-1, 2}});
        auto cubeBackRtd = DescribeArray(cubeBack, 4, RTD_TYPE_INTEGER, {{1, 4}, {0, 3}, {-1, 2}});
        for (size_t k = 0; k < std::size(members); ++k) {
            const Member& m = members[k];
            out.Scalar(m.name, values[k].data(), m.type, m.kind, m.type == 2 ? m.length : 0);
            in.Scalar(m.name, back[k].data(), m.type, m.kind, m.type == 2 ? m.length : 0);
        }
        out.Array("CUBE", cubeRtd.head(), 0, 4);
        in.Array("cube", cubeBackRtd.head(), 0, 4);
        Specifiers file;
        file.Text(VRN_KEY_FILE, dir.Path("nml"));
        ASSERT_EQ(Open(20, file), 0);
        ASSERT_EQ(WriteUnit(20, out), 0);
        ASSERT_EQ(Close(20), 0);
        ASSERT_EQ(Open(20, file), 0);
        ASSERT_EQ(ReadUnit(20, in), 0) << ReadFile(dir.Path("nml"));
        ASSERT_EQ(Close(20), 0);
        for (size_t k = 0; k < std::size(members); ++k) {
            if (members[k].kind == 16) {
                // A pair of doubles: the 16-byte conversion works in pair arithmetic, so the
                // value comes back to within the pair's precision, not always bit for bit.
                for (size_t p = 0; p < values[k].size(); p += 16) {
                    double a[2], b[2];
                    std::memcpy(a, values[k].data() + p, 16);
                    std::memcpy(b, back[k].data() + p, 16);
                    EXPECT_EQ(a[0], b[0]) << members[k].name;
                    EXPECT_LE(std::fabs((a[1] - b[1])), std::ldexp(std::fabs(a[0]), -100)) << members[k].name;
                }
                continue;
            }
            EXPECT_EQ(values[k], back[k]) << members[k].name << "\n" << ReadFile(dir.Path("nml"));
        }
        EXPECT_EQ(std::memcmp(cube, cubeBack, sizeof cube), 0);
    }
}

// Several groups in one file are read in turn; a READ of a group that is not ahead is the
// end of the file, and DECIMAL='COMMA' takes ";" between values.
TEST_F(Namelist, GroupsInTurnAndDecimalComma) {
    TempDir dir;
    {
        int fd = open(dir.Path("groups").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        std::string text = "&ONE N=1 /\n&TWO N=2, X=1,5; 2,5 /\n&ONE N=3 /\n";
        ASSERT_EQ(write(fd, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        close(fd);
    }
    int32_t n = 0;
    double x[2] = {0, 0};
    auto xRtd = DescribeArray(x, 8, RTD_TYPE_REAL, {{1, 2}});
    Group one("one"), two("two");
    one.Scalar("N", &n, 0, 4);
    two.Scalar("N", &n, 0, 4).Array("X", xRtd.head(), 4, 8);
    Specifiers file;
    file.Text(VRN_KEY_FILE, dir.Path("groups"));
    ASSERT_EQ(Open(21, file), 0);
    EXPECT_EQ(ReadUnit(21, one), 0);
    EXPECT_EQ(n, 1);
    Specifiers comma;
    comma.Location("t.f", 1).Keyword(VRN_KEY_DECIMAL, VRN_KEY_COMMA);
    // "," is the decimal symbol there: "2," is the number 2, and ";" separates.
    EXPECT_EQ(ReadUnit(21, two, 0, &comma), 0);
    EXPECT_EQ(n, 2);
    EXPECT_EQ(x[0], 1.5);
    EXPECT_EQ(x[1], 2.5);
    EXPECT_EQ(ReadUnit(21, one), 0);
    EXPECT_EQ(n, 3);
    EXPECT_EQ(ReadUnit(21, two), -1);
    ASSERT_EQ(Close(21), 0);
}

// A file as gfortran writes it: blank-padded values, quotation marks, a comma behind each.
TEST_F(Namelist, ReadsTheLayoutOfOtherCompilers) {
    int32_t n = 0, a[3] = {};
    double x = 0;
    char s[8];
    int32_t l = 0;
    float z[2] = {};
    auto rtd = DescribeArray(a, 4, RTD_TYPE_INTEGER, {{1, 3}});
    Group group("grp");
    group.Scalar("N", &n, 0, 4).Array("A", rtd.head(), 0, 4).Scalar("X", &x, 4, 8).Scalar("S", s, 2, 0, 8);
    group.Scalar("L", &l, 1, 4).Scalar("Z", z, 5, 4);
    EXPECT_EQ(ReadInternal(group, "&GRP\n N=7          ,\n A=1          ,2          ,3          ,\n"
                                  " X=  1.5000000000000000     ,\n S=\"it's ok \",\n L=T,\n"
                                  " Z=(1.00000000,-2.00000000),\n /"),
              0);
    EXPECT_EQ(n, 7);
    EXPECT_EQ(a[2], 3);
    EXPECT_EQ(x, 1.5);
    EXPECT_EQ(std::string(s, 8), "it's ok ");
    EXPECT_EQ(l, 1);
    EXPECT_EQ(z[1], -2.0f);
}

}  // namespace
}  // namespace vrntest
