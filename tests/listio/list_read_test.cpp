// List-directed READ as compiled code issues it: records, items of every type; then the
// values stored, IOSTAT=, the messages and where the file stands.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <vector>
#include <string>

#include "convert/convert.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class ListInput : public RuntimeTest {};

// READ (record, *) with IOSTAT=, from an internal file of one record.
int32_t ReadRecord(const std::string& record, const std::function<void(ListReader&)>& items,
                   Specifiers* specifiers = nullptr, uint32_t options = 0) {
    int32_t iostat = 0;
    ListReader reader(record.data(), static_cast<uint32_t>(record.size()), 1, options, &iostat, specifiers);
    items(reader);
    reader.End();
    return iostat;
}

std::string Chars(const char* text, size_t length) { return std::string(text, length); }

TEST_F(ListInput, ValuesOfEveryType) {
    int32_t n = 0, m = 0;
    double x = 0;
    float z[2] = {0, 0};
    int32_t truth = 0;
    char quoted[6], plain[4];
    std::string record = " 12,-3  4.5E1 (1.5, -2) .TRUE. 'It''s' abc";
    EXPECT_EQ(ReadRecord(record, [&](ListReader& r) {
                  r.Item(&n).Item(&m).Item(&x).Complex(z).Logical(&truth, 4).Text(quoted, 6).Text(plain, 4);
              }),
              0);
    EXPECT_EQ(n, 12);
    EXPECT_EQ(m, -3);
    EXPECT_EQ(x, 45.0);
    EXPECT_EQ(z[0], 1.5f);
    EXPECT_EQ(z[1], -2.0f);
    EXPECT_EQ(truth, 1);
    EXPECT_EQ(Chars(quoted, 6), "It's  ");
    EXPECT_EQ(Chars(plain, 4), "abc ");

    // Kinds: integers of 1, 2 and 8 bytes, a byte, logicals, REAL(4) and REAL(16).
    int8_t i1 = 0, byte = 0;
    int16_t i2 = 0;
    int64_t i8 = 0, l8 = 5;
    int8_t l1 = 5;
    float r4 = 0;
    double r16[2] = {0, 0};
    EXPECT_EQ(ReadRecord("-128 32767 -9223372036854775808 7 f .t. 0.1 0.1", [&](ListReader& r) {
                  r.Integer(&i1, 1).Integer(&i2, 2).Integer(&i8, 8).Byte(&byte).Logical(&l1, 1).Logical(&l8, 8);
                  r.Item(&r4).Real16(r16);
              }),
              0);
    EXPECT_EQ(i1, -128);
    EXPECT_EQ(i2, 32767);
    EXPECT_EQ(i8, INT64_MIN);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(l1, 0);
    EXPECT_EQ(l8, 1);
    EXPECT_EQ(r4, 0.1f);
    EXPECT_EQ(r16[0], 0.1);
    EXPECT_EQ(r16[1], -5.551115123125783e-18);
}

TEST_F(ListInput, RepeatCountsNullValuesAndSlash) {
    int32_t n = -1, a = -1, b = -1, c = -1, d = -1;
    double x = -1;
    char text[3];
    // One value served to three types: the text is read again for each.
    EXPECT_EQ(ReadRecord("3*5", [&](ListReader& r) { r.Item(&n).Item(&x).Text(text, 3); }), 0);
    EXPECT_EQ(n, 5);
    EXPECT_EQ(x, 5.0);
    EXPECT_EQ(Chars(text, 3), "5  ");
    // "2*" is two null values; ",," gives nulls too; the items keep their values.
    EXPECT_EQ(ReadRecord("2* 7", [&](ListReader& r) { r.Item(&a).Item(&b).Item(&c); }), 0);
    EXPECT_EQ(a, -1);
    EXPECT_EQ(b, -1);
    EXPECT_EQ(c, 7);
    a = b = c = -1;
    EXPECT_EQ(ReadRecord(",,5", [&](ListReader& r) { r.Item(&a).Item(&b).Item(&c); }), 0);
    EXPECT_EQ(a, -1);
    EXPECT_EQ(b, -1);
    EXPECT_EQ(c, 5);
    // "/" ends the input: the rest keep their values and the statement ends well.
    a = b = c = d = -1;
    EXPECT_EQ(ReadRecord("1 2/3", [&](ListReader& r) { r.Item(&a).Item(&b).Item(&c).Item(&d); }), 0);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 2);
    EXPECT_EQ(c, -1);
    EXPECT_EQ(d, -1);
    // A repeated delimited text, and a repeat count followed by other values.
    char t1[4], t2[2];
    int32_t after = 0;
    EXPECT_EQ(ReadRecord("2*'ab' 9", [&](ListReader& r) { r.Text(t1, 4).Text(t2, 2).Item(&after); }), 0);
    EXPECT_EQ(Chars(t1, 4), "ab  ");
    EXPECT_EQ(Chars(t2, 2), "ab");
    EXPECT_EQ(after, 9);
    // A repeated complex value comes from the cache at the same kind.
    double z1[2], z2[2];
    EXPECT_EQ(ReadRecord("2*(1,2)", [&](ListReader& r) { r.Complex(z1).Complex(z2); }), 0);
    EXPECT_EQ(z2[0], 1.0);
    EXPECT_EQ(z2[1], 2.0);
}

TEST_F(ListInput, IntegerRangeAndBadBytes) {
    int8_t small = 0;
    int32_t n = 0;
    int64_t wide = 0;
    // With IOSTAT= the report takes over and the item keeps its value.
    EXPECT_EQ(ReadRecord("300", [&](ListReader& r) { r.Integer(&small, 1); }), 96);
    EXPECT_EQ(ReadRecord("1.5", [&](ListReader& r) { r.Item(&n); }), 97);
    EXPECT_EQ(ReadRecord("12345678901234567890", [&](ListReader& r) { r.Integer(&wide, 8); }), 96);
    EXPECT_EQ(ReadRecord("0*5", [&](ListReader& r) { r.Item(&n); }), 95);
    EXPECT_EQ(ReadRecord("+3*5", [&](ListReader& r) { r.Item(&n); }), 95);
    EXPECT_EQ(ReadRecord("x", [&](ListReader& r) { r.Logical(&n, 4); }), 42);
    EXPECT_EQ(ReadRecord("1", [&](ListReader& r) { r.Complex(reinterpret_cast<float*>(&wide)); }), 44);
    EXPECT_EQ(ReadRecord("(1", [&](ListReader& r) { r.Item(&n); }), 8);

    // When the program goes on, the value is used as changed: the limit of the item's
    // kind, a bad byte as a zero digit.
    SetOptions("err_recovery=yes");
    CapturedRun run;
    int8_t limits[2];
    int32_t fromBad = 0;
    int16_t clipped = 0;
    std::string record = "300 -300 1.5 2*99999";
    ListReader(record.data(), static_cast<uint32_t>(record.size()), 1)
        .Integer(&limits[0], 1)
        .Integer(&limits[1], 1)
        .Item(&fromBad)
        .Integer(&clipped, 2)
        .Item(&n)
        .End();
    run.Finish();
    EXPECT_EQ(limits[0], 127);
    EXPECT_EQ(limits[1], -128);
    EXPECT_EQ(fromBad, 105);
    EXPECT_EQ(clipped, 32767);
    EXPECT_EQ(n, 99999);  // the same value fits the next item of the repeat
    EXPECT_NE(run.err().find("3714-096"), std::string::npos) << run.err();
    EXPECT_NE(run.err().find("3714-097"), std::string::npos) << run.err();
}

TEST_F(ListInput, RealsSpecialValuesAndDecimalComma) {
    double values[6];
    EXPECT_EQ(ReadRecord("1.5D2 -2Q-1 3+2 .5 -0 7.", [&](ListReader& r) {
                  for (double& v : values) r.Item(&v);
              }),
              0);
    EXPECT_EQ(values[0], 150.0);
    EXPECT_EQ(values[1], -0.2);
    EXPECT_EQ(values[2], 300.0);
    EXPECT_EQ(values[3], 0.5);
    EXPECT_EQ(values[4], 0.0);
    EXPECT_EQ(values[5], 7.0);

    float f[4];
    double d[2];
    EXPECT_EQ(ReadRecord("Inf -infinity NaN -NAN(abc) nan -Inf", [&](ListReader& r) {
                  for (float& v : f) r.Item(&v);
                  for (double& v : d) r.Item(&v);
              }),
              0);
    uint32_t bits[4];
    std::memcpy(bits, f, sizeof bits);
    EXPECT_EQ(bits[0], 0x7F800000u);
    EXPECT_EQ(bits[1], 0xFF800000u);
    EXPECT_EQ(bits[2], 0x7FC00000u);
    EXPECT_EQ(bits[3], 0xFFC00000u);
    uint64_t wide[2];
    std::memcpy(wide, d, sizeof wide);
    EXPECT_EQ(wide[0], 0x7FF8000000000000ull);
    EXPECT_EQ(wide[1], 0xFFF0000000000000ull);
    // The signalling forms outside the standard levels; the odd 16-byte pattern.
    double quad[2];
    EXPECT_EQ(ReadRecord("-nans", [&](ListReader& r) { r.Real16(quad); }), 0);
    uint64_t quadBits[2];
    std::memcpy(quadBits, quad, sizeof quadBits);
    EXPECT_EQ(quadBits[0], 0xFFF0AAAA00000000ull);
    EXPECT_EQ(quadBits[1], 0u);
    SetOptions("langlvl=95std");
    EXPECT_EQ(ReadRecord("Inf", [&](ListReader& r) { r.Item(&d[0]); }), 97);

    Specifiers comma;
    comma.Location("comma.f", 3).Keyword(VRN_KEY_DECIMAL, VRN_KEY_COMMA);
    float pair[2] = {0, 0};
    double a = 0, b = 0;
    EXPECT_EQ(ReadRecord("1,5;2,5 ; (3,5;-1)", [&](ListReader& r) { r.Item(&a).Item(&b).Complex(pair); }, &comma), 0);
    EXPECT_EQ(a, 1.5);
    EXPECT_EQ(b, 2.5);
    EXPECT_EQ(pair[0], 3.5f);
    EXPECT_EQ(pair[1], -1.0f);
    EXPECT_EQ(ReadRecord("1;5", [&](ListReader& r) { r.Item(&a); }), 97);  // ";" in decimal point mode
}

// Plain numbers are taken in place at once; behind a repeat count "1*" the same text goes
// through the scanner's table. Both must store the same bits.
TEST_F(ListInput, PlainNumbersAsTheTableReadsThem) {
    std::mt19937 random(7);
    const char* const pieces[] = {"0", "00", "1", "9", "12345678", "123456789012345678", "1234567890123456789", "."};
    for (int round = 0; round < 20000; ++round) {
        std::string token;
        int form = static_cast<int>(random() % 4);
        if (random() % 3 == 0) token += random() % 2 ? "-" : "+";
        token += pieces[random() % 8];
        if (form > 0) token += std::string(".") + pieces[random() % 7];
        if (form > 1) token += std::string(random() % 2 ? "E" : "e") + (random() % 2 ? "-" : "") + pieces[random() % 3];
        std::string lead = form == 3 && random() % 2 ? "  " : "";
        std::string tail = random() % 2 ? " 1" : ",1";
        for (int type = 0; type < 3; ++type) {
            uint64_t plain[2] = {0, 0}, table[2] = {0, 0};
            int32_t plainStatus = ReadRecord(lead + token + tail, [&](ListReader& r) {
                if (type == 0) r.Integer(plain, 8); else if (type == 1) r.Real(plain, 8); else r.Real16(reinterpret_cast<double*>(plain));
            });
            int32_t tableStatus = ReadRecord(lead + "1*" + token + tail, [&](ListReader& r) {
                if (type == 0) r.Integer(table, 8); else if (type == 1) r.Real(table, 8); else r.Real16(reinterpret_cast<double*>(table));
            });
            ASSERT_EQ(plainStatus, tableStatus) << token << " type " << type;
            ASSERT_EQ(plain[0], table[0]) << token << " type " << type;
            ASSERT_EQ(plain[1], table[1]) << token << " type " << type;
        }
    }
}

class ListInputFile : public ListInput {
protected:
    void Put(const std::string& name, const std::string& bytes) {
        int fd = open(dir.Path(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ASSERT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        close(fd);
    }
    void OpenFile(int32_t unit, const std::string& name) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, dir.Path(name));
        ASSERT_EQ(Open(unit, s), 0);
    }
    TempDir dir;
};

TEST_F(ListInputFile, ValuesSpanRecordsAndTheFileEnds) {
    // A complex value and a delimited text across records; a READ skips the rest of its
    // last record; a last value with no newline; then the end of the file.
    Put("a", "1 (2.5,\n -1) 'ab\ncd' 4 5\n6 7\n8\n9");
    OpenFile(10, "a");
    int32_t a = 0, b = 0, iostat = 0;
    double z[2] = {0, 0};
    char text[6];
    EXPECT_EQ(ListReader(10, nullptr, 0, &iostat).Item(&a).Complex(z).Text(text, 6).Item(&b).End(), 0);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(z[0], 2.5);
    EXPECT_EQ(z[1], -1.0);
    EXPECT_EQ(Chars(text, 6), "abcd  ");
    EXPECT_EQ(b, 4);
    ListReader(10, nullptr, 0, &iostat).Item(&a).End();  // "5" was skipped with its record
    EXPECT_EQ(a, 6);
    ListReader(10, nullptr, 0, &iostat).Item(&a).Item(&b).End();  // values across a record end
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(a, 8);  // the "7" was left behind
    EXPECT_EQ(b, 9);  // and "9" has no newline
    ListReader(10, nullptr, 0, &iostat).Item(&a).End();
    EXPECT_EQ(iostat, -1);
    Close(10);

    // An item after the last value of the file: end of file, with the value kept.
    Put("b", "3");
    OpenFile(11, "b");
    a = b = 0;
    ListReader(11, nullptr, 0, &iostat).Item(&a).Item(&b).End();
    EXPECT_EQ(iostat, -1);
    EXPECT_EQ(a, 3);
    Close(11);

    // A delimited text that the end of the file cuts.
    Put("c", "'abc\n");
    OpenFile(12, "c");
    ListReader(12, nullptr, 0, &iostat).Text(text, 6).End();
    EXPECT_EQ(iostat, -1);
    Close(12);
}

TEST_F(ListInput, InternalFilesEndAndLongTexts) {
    int32_t a = 0, b = 0, c = 0, iostat = 0;
    std::string records = "1   2   ";
    ListReader(records.data(), 4, 2, 0, &iostat).Item(&a).Item(&b).Item(&c).End();
    EXPECT_EQ(iostat, -2);
    EXPECT_EQ(b, 2);
    SetOptions("iostat_end=2003std");
    ListReader(records.data(), 4, 2, 0, &iostat).Item(&a).Item(&b).Item(&c).End();
    EXPECT_EQ(iostat, -1);

    // A value longer than the rescan buffer's first 4096 bytes, and one repeated.
    std::string text = "'" + std::string(8999, 'x') + "'";
    std::string record = "2*" + text;
    std::string first(9100, '?'), second(5, '?');
    EXPECT_EQ(ReadRecord(record, [&](ListReader& r) {
                  r.Text(first.data(), static_cast<int32_t>(first.size()));
                  r.Text(second.data(), 5);
              }),
              0);
    EXPECT_EQ(first.substr(0, 8999), std::string(8999, 'x'));
    EXPECT_EQ(first.substr(8999), std::string(101, ' '));
    EXPECT_EQ(second, "xxxxx");
}


TEST_F(ListInputFile, BadValuesGetTheirNumbersWithTheFileName) {
    UseCatalogue(Catalogue::Built);
    ResetRuntime();
    Put("bad", std::string("maybe\n(1 x\n1 x\n") + std::string("12\0", 3) + "\n\xE9\n'open\n");
    OpenFile(13, "bad");
    char message[120];
    int32_t iostat = 0, n = 0;
    auto read = [&](const std::function<void(ListReader&)>& items) {
        Specifiers s;
        s.Location("bad.f", 9).Address(VRN_KEY_IOMSG, message, sizeof message);
        ListReader reader(13, &s, 0, &iostat);
        items(reader);
        reader.End();
        return std::string(message, sizeof message).substr(0, std::string(message, sizeof message).find_last_not_of(' ') + 1);
    };
    std::string text = read([&](ListReader& r) { r.Logical(&n, 4); });
    EXPECT_EQ(iostat, 41);
    EXPECT_NE(text.find(dir.Path("bad")), std::string::npos) << text;
    float z[2];
    read([&](ListReader& r) { r.Complex(z); });  // no comma behind the real part
    EXPECT_EQ(iostat, 43);
    read([&](ListReader& r) { r.Item(&n).Item(&n); });
    EXPECT_EQ(iostat, 97);
    EXPECT_EQ(n, 1);
    read([&](ListReader& r) { r.Item(&n); });  // a NUL byte behind the digits
    EXPECT_EQ(iostat, 97);
    read([&](ListReader& r) { r.Item(&n); });  // a byte above 127
    EXPECT_EQ(iostat, 97);
    char word[8];
    read([&](ListReader& r) { r.Text(word, 8); });  // a delimited text the file ends
    EXPECT_EQ(iostat, -1);
    Close(13);

    // A 10,000-digit number: the limit for an integer, a value for a real, no fault.
    std::string digits(10000, '7');
    int64_t wide = 0;
    EXPECT_EQ(ReadRecord(digits, [&](ListReader& r) { r.Integer(&wide, 8); }), 96);
    double x = 0;
    EXPECT_EQ(ReadRecord("0." + digits, [&](ListReader& r) { r.Item(&x); }), 0);
    EXPECT_EQ(x, 7.0 / 9.0);
    EXPECT_EQ(ReadRecord(digits, [&](ListReader& r) { r.Item(&x); }), 0);
    EXPECT_TRUE(std::isinf(x));
}

// What list-directed output writes, list-directed input reads back to the same bits:
// random values of every type, many to a record of 120 bytes.
TEST_F(ListInputFile, RoundTripsThroughListDirectedOutput) {
    std::mt19937_64 random(20261122);
    auto anyDouble = [&]() {
        for (;;) {
            uint64_t bits = random();
            double d;
            std::memcpy(&d, &bits, 8);
            if (!std::isnan(d)) return d;
        }
    };
    auto anyFloat = [&]() {
        for (;;) {
            uint32_t bits = static_cast<uint32_t>(random());
            float f;
            std::memcpy(&f, &bits, 4);
            if (!std::isnan(f)) return f;
        }
    };
    constexpr int kCount = 400;
    std::vector<double> doubles(kCount), quads(2 * kCount), complexes(2 * kCount);
    std::vector<float> floats(kCount);
    std::vector<int64_t> integers(kCount);
    std::vector<std::string> texts(kCount);
    for (int i = 0; i < kCount; ++i) {
        doubles[i] = anyDouble();
        floats[i] = anyFloat();
        // REAL(16) output carries 30 significant digits: the pairs are those of random
        // 30-digit decimals.
        std::string digits = "0.";
        for (int d = 0; d < 30; ++d) digits += static_cast<char>('0' + (d == 0 ? 1 + random() % 9 : random() % 10));
        digits += "E" + std::to_string(static_cast<int>(random() % 560) - 280);
        ubx_qatof(&quads[2 * i], digits.c_str(), kRoundNearest);
        complexes[2 * i] = anyDouble();
        complexes[2 * i + 1] = anyDouble();
        integers[i] = static_cast<int64_t>(random());
        std::string text;
        for (int n = static_cast<int>(random() % 12); n > 0; --n) text += static_cast<char>(' ' + random() % 95);
        texts[i] = text;
    }
    const int32_t kKinds[4] = {1, 2, 4, 8};
    auto fitted = [&](int i) {
        int32_t kind = kKinds[i % 4];
        return kind == 8 ? integers[i] : integers[i] >> (64 - 8 * kind);
    };

    Specifiers connection;
    connection.Text(VRN_KEY_FILE, dir.Path("trip")).Value(VRN_KEY_RECL, 120).Keyword(VRN_KEY_DELIM, VRN_KEY_QUOTE);
    ASSERT_EQ(Open(20, connection), 0);
    ListWriter writer(20);
    for (int i = 0; i < kCount; ++i) {
        writer.Item(doubles[i]).Item(floats[i]).Real16(quads[2 * i], quads[2 * i + 1]);
        writer.Complex(complexes[2 * i], complexes[2 * i + 1]).Integer(fitted(i), kKinds[i % 4]);
        writer.Logical(i % 3 == 0, 4).Item(texts[i]);
    }
    ASSERT_EQ(writer.End(), 0);

    ASSERT_EQ(FileCommand(20, VRN_COMMAND_REWIND), 0);
    int32_t iostat = 0;
    ListReader reader(20, nullptr, 0, &iostat);
    for (int i = 0; i < kCount && iostat == 0; ++i) {
        double d = 0, q[2] = {0, 0}, z[2] = {0, 0};
        float f = 0;
        int64_t n = 0;
        int32_t truth = -1;
        char text[12];
        reader.Item(&d).Item(&f).Real16(q).Complex(z).Integer(&n, kKinds[i % 4]).Logical(&truth, 4).Text(text, 12);
        ASSERT_EQ(iostat, 0) << "item group " << i;
        EXPECT_EQ(std::memcmp(&d, &doubles[i], 8), 0) << doubles[i] << " read as " << d;
        EXPECT_EQ(std::memcmp(&f, &floats[i], 4), 0) << floats[i] << " read as " << f;
        EXPECT_EQ(std::memcmp(q, &quads[2 * i], 16), 0) << quads[2 * i] << " + " << quads[2 * i + 1];
        EXPECT_EQ(std::memcmp(z, &complexes[2 * i], 16), 0) << complexes[2 * i];
        int64_t stored = 0;
        switch (kKinds[i % 4]) {
        case 1: { int8_t v; std::memcpy(&v, &n, 1); stored = v; break; }
        case 2: { int16_t v; std::memcpy(&v, &n, 2); stored = v; break; }
        case 4: { int32_t v; std::memcpy(&v, &n, 4); stored = v; break; }
        default: stored = n; break;
        }
        EXPECT_EQ(stored, fitted(i));
        EXPECT_EQ(truth, i % 3 == 0 ? 1 : 0);
        EXPECT_EQ(Chars(text, 12), texts[i] + std::string(12 - texts[i].size(), ' '));
    }
    reader.End();
    EXPECT_EQ(iostat, 0);
    Close(20);
}

}  // namespace
}  // namespace vrntest
