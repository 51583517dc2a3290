// Formatted READ as compiled code issues it: a record, a format, items; then the values
// stored, IOSTAT= and the file's position.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class FormattedInput : public RuntimeTest {};

// READ (record, format) with IOSTAT=, on an internal file of one record.
int32_t ReadRecord(const std::string& record, const char* format, const std::function<void(FormatReader&)>& items,
                   uint32_t options = 0) {
    int32_t iostat = 0;
    FormatReader reader(record.data(), static_cast<uint32_t>(record.size()), 1, format, options, &iostat);
    items(reader);
    reader.End();
    return iostat;
}

template <class T>
T ReadValue(const std::string& record, const char* format, int32_t* iostat = nullptr, int32_t kind = sizeof(T)) {
    T value{};
    int32_t status = ReadRecord(record, format, [&](FormatReader& r) { r.Integer(&value, kind); });
    if (iostat != nullptr) *iostat = status;
    return value;
}

double ReadDouble(const std::string& record, const char* format, int32_t* iostat = nullptr) {
    double value = -99;
    int32_t status = ReadRecord(record, format, [&](FormatReader& r) { r.Item(&value); });
    if (iostat != nullptr) *iostat = status;
    return value;
}

TEST_F(FormattedInput, IntegerFieldsBlanksSignsAndLimits) {
    int32_t iostat = -7;
    EXPECT_EQ(ReadValue<int32_t>("   ", "(I3)", &iostat), 0);
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(ReadValue<int32_t>(" 1 2", "(I4)"), 12);
    EXPECT_EQ(ReadValue<int32_t>(" 1 2 ", "(BZ,I5)"), 1020);
    EXPECT_EQ(ReadValue<int32_t>(" 1 2", "(BZ,I6)"), 102);  // the padding is not part of the field
    EXPECT_EQ(ReadValue<int32_t>("  -42", "(I5)"), -42);
    EXPECT_EQ(ReadValue<int32_t>("+7", "(I2)"), 7);
    EXPECT_EQ(ReadValue<int8_t>("-128", "(I4)", &iostat), -128);
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(ReadValue<int8_t>("128", "(I3)", &iostat), 127);  // clamped, message 96
    EXPECT_EQ(iostat, 96);
    EXPECT_EQ(ReadValue<int16_t>("-99999", "(I6)", &iostat), -32768);
    EXPECT_EQ(iostat, 96);
    EXPECT_EQ(ReadValue<int32_t>("-2147483648", "(I11)"), INT32_MIN);
    EXPECT_EQ(ReadValue<int64_t>("-9223372036854775808", "(I20)"), INT64_MIN);
    EXPECT_EQ(ReadValue<int64_t>(" 9223372036854775808", "(I20)", &iostat), INT64_MAX);
    EXPECT_EQ(iostat, 96);
    ReadValue<int32_t>("12x", "(I3)", &iostat);
    EXPECT_EQ(iostat, 97);
    ReadValue<int32_t>("1-2", "(I3)", &iostat);
    EXPECT_EQ(iostat, 97);

    // A comma ends a field early; the next field starts behind it.
    int32_t a = 0, b = 0, c = 0;
    EXPECT_EQ(ReadRecord("1,2   ", "(2I5)", [&](FormatReader& r) { r.Item(&a).Item(&b); }), 0);
    EXPECT_EQ(a, 1);
    EXPECT_EQ(b, 2);
    EXPECT_EQ(ReadRecord("12;3 4", "(DC,3I5)", [&](FormatReader& r) { r.Item(&a).Item(&b).Item(&c); }), 0);
    EXPECT_EQ(a, 12);
    EXPECT_EQ(b, 34);  // the record ends the second field; PAD supplies the third
    EXPECT_EQ(c, 0);
    // I with m reads as I; the items of a segment go through the same descriptors.
    EXPECT_EQ(ReadValue<int32_t>("  0042", "(I6.4)"), 42);
    int32_t values[4] = {};
    std::string record = " 1 2 3 4";
    FormatReader seg(record.data(), 8, 1, "(4I2)");
    _vrnReadFmtSeg(seg.context(), values, sizeof values, 4, 0, 0);
    seg.End();
    EXPECT_EQ(values[0] + values[1] * 10 + values[2] * 100 + values[3] * 1000, 4321);
}

TEST_F(FormattedInput, RadixFields) {
    int32_t iostat = 0;
    EXPECT_EQ(ReadValue<int8_t>("FF", "(Z2)"), -1);
    EXPECT_EQ(ReadValue<int8_t>("1FF", "(Z3)", &iostat), -1);  // the low-order bits stand
    EXPECT_EQ(iostat, 98);
    EXPECT_EQ(ReadValue<int8_t>("377", "(O3)", &iostat), -1);
    EXPECT_EQ(iostat, 0);
    ReadValue<int8_t>("400", "(O3)", &iostat);
    EXPECT_EQ(iostat, 98);
    EXPECT_EQ(ReadValue<int16_t>("0177777", "(O7)", &iostat), -1);
    EXPECT_EQ(iostat, 0);
    ReadValue<int16_t>("277777", "(O6)", &iostat);
    EXPECT_EQ(iostat, 98);
    EXPECT_EQ(ReadValue<int32_t>(" 1 0 1", "(B6)"), 5);
    EXPECT_EQ(ReadValue<int32_t>(" 1 0 1", "(BZ,B6)"), 0b10001);
    EXPECT_EQ(ReadValue<int32_t>("00000000ff", "(Z10)"), 255);  // leading zeros do not count
    EXPECT_EQ(ReadValue<int64_t>("8000000000000001", "(Z16)"), static_cast<int64_t>(0x8000000000000001ull));
    EXPECT_EQ(ReadValue<int64_t>("1777777777777777777777", "(O22)"), -1);
    ReadValue<int32_t>("12G", "(Z3)", &iostat);
    EXPECT_EQ(iostat, 56);
    ReadValue<int32_t>("-1", "(Z2)", &iostat);
    EXPECT_EQ(iostat, 56);
    // Z on a real reads its bit pattern.
    double pattern = 0;
    EXPECT_EQ(ReadRecord("3FF8000000000000", "(Z16)", [&](FormatReader& r) { r.Item(&pattern); }), 0);
    EXPECT_EQ(pattern, 1.5);
}

TEST_F(FormattedInput, LogicalAndCharacterFields) {
    int32_t iostat = 0;
    EXPECT_EQ(ReadValue<int32_t>(".TRUE.", "(L6)"), 1);
    EXPECT_EQ(ReadValue<int32_t>("   ", "(L3)", &iostat, 4), 0);
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(ReadValue<int8_t>(" xT", "(L3)"), 1);
    EXPECT_EQ(ReadValue<int16_t>(" .f", "(L3)"), 0);
    int64_t wide = -5;
    EXPECT_EQ(ReadRecord("t", "(L1)", [&](FormatReader& r) { r.Logical(&wide, 8); }), 0);
    EXPECT_EQ(wide, 1);
    int32_t kept = 77;
    EXPECT_EQ(ReadRecord("X", "(L1)", [&](FormatReader& r) { r.Logical(&kept, 4); }), 42);  // internal file
    EXPECT_EQ(kept, 77);

    char three[3];
    EXPECT_EQ(ReadRecord("abcde", "(A5)", [&](FormatReader& r) { r.Text(three, 3); }), 0);
    EXPECT_EQ(std::string(three, 3), "cde");
    EXPECT_EQ(ReadRecord("abcde", "(A2)", [&](FormatReader& r) { r.Text(three, 3); }), 0);
    EXPECT_EQ(std::string(three, 3), "ab ");
    EXPECT_EQ(ReadRecord("a,c", "(A)", [&](FormatReader& r) { r.Text(three, 3); }), 0);  // no separator for A
    EXPECT_EQ(std::string(three, 3), "a,c");
    char five[5];
    EXPECT_EQ(ReadRecord("xy", "(A)", [&](FormatReader& r) { r.Text(five, 5); }), 0);  // padded
    EXPECT_EQ(std::string(five, 5), "xy   ");
    // Positions on input: T, TL, TR and X.
    char one[1], two[2];
    EXPECT_EQ(ReadRecord("0123456789", "(T5,A1,TL3,A2,2X,A1)",
                         [&](FormatReader& r) { r.Text(one, 1).Text(two, 2).Text(three, 1); }),
              0);
    EXPECT_EQ(one[0], '4');
    EXPECT_EQ(std::string(two, 2), "23");
    EXPECT_EQ(three[0], '6');
    // Q (with the statement's Q-count option): the bytes left in the record.
    int32_t left = 0;
    EXPECT_EQ(ReadRecord("abcdefg", "(A2,Q)", [&](FormatReader& r) { r.Text(two, 2).Item(&left); }, 1), 0);
    EXPECT_EQ(left, 5);
}

TEST_F(FormattedInput, RealFields) {
    EXPECT_EQ(ReadDouble("123", "(F3.2)"), 1.23);
    EXPECT_EQ(ReadDouble("1.5", "(F3.2)"), 1.5);
    EXPECT_EQ(ReadDouble("1E2", "(F3.0)"), 100.0);
    EXPECT_EQ(ReadDouble("123", "(2P,F3.0)"), 1.23);
    EXPECT_EQ(ReadDouble("1+2", "(F3.0)"), 100.0);
    EXPECT_EQ(ReadDouble("  12", "(F4.1)"), 1.2);
    EXPECT_EQ(ReadDouble("   5", "(F4.3)"), 0.005);  // zeros stand in front of a short mantissa
    EXPECT_EQ(ReadDouble("1.5E1", "(2P,F5.0)"), 15.0);  // an exponent cancels the scale factor
    EXPECT_EQ(ReadDouble("1.5", "(-1P,F3.0)"), 15.0);
    EXPECT_EQ(ReadDouble(" 1.1E+1", "(E7.0)"), 11.0);
    EXPECT_EQ(ReadDouble("1.D+00", "(D6.0)"), 1.0);
    EXPECT_EQ(ReadDouble("-0.5", "(F4.1)"), -0.5);
    EXPECT_EQ(ReadDouble("1.2 5", "(BZ,F5.0)"), 1.205);
    EXPECT_EQ(ReadDouble("1.2 5", "(F5.0)"), 1.25);
    EXPECT_EQ(ReadDouble("2.5 E 1", "(F7.0)"), 25.0);
    EXPECT_EQ(ReadDouble("     ", "(F5.2)"), 0.0);
    EXPECT_EQ(ReadDouble(".", "(F1.0)"), 0.0);
    EXPECT_EQ(ReadDouble("E5", "(F2.0)"), 0.0);
    EXPECT_EQ(ReadDouble("1.0e400", "(F7.0)"), INFINITY);
    EXPECT_TRUE(std::signbit(ReadDouble("-1e-400", "(F7.0)")));
    EXPECT_EQ(ReadDouble("1,25", "(DC,F4.0)"), 1.25);
    EXPECT_EQ(ReadDouble("3,125E1", "(DC,F7.0)"), 31.25);
    EXPECT_EQ(ReadDouble("  -Inf", "(F6.0)"), -INFINITY);
    EXPECT_EQ(ReadDouble("INFINITY", "(F8.0)"), INFINITY);
    EXPECT_TRUE(std::isnan(ReadDouble("NaN", "(F3.0)")));
    int32_t iostat = 0;
    ReadDouble("INFIN", "(F5.0)", &iostat);
    EXPECT_EQ(iostat, 97);
    ReadDouble("1.2.3", "(F5.0)", &iostat);
    EXPECT_EQ(iostat, 97);
    ReadDouble("1.5x", "(F4.0)", &iostat);
    EXPECT_EQ(iostat, 97);
    // The table values keep their bits: "-0.0" is the number 0 of the table.
    EXPECT_FALSE(std::signbit(ReadDouble("-0.0", "(F4.1)")));

    // ROUND= reaches the conversion; the table's short constants need none.
    float single = 0;
    EXPECT_EQ(ReadRecord("0.3", "(RU,F3.0)", [&](FormatReader& r) { r.Item(&single); }), 0);
    float up = single;
    EXPECT_EQ(ReadRecord("0.3", "(RD,F3.0)", [&](FormatReader& r) { r.Item(&single); }), 0);
    EXPECT_EQ(std::nextafter(single, 1.0f), up);
    EXPECT_EQ(ReadRecord("0.1", "(RU,F3.0)", [&](FormatReader& r) { r.Item(&single); }), 0);
    EXPECT_EQ(single, 0.1f);
    EXPECT_EQ(ReadRecord("0.10000000000001", "(RN,F16.0)", [&](FormatReader& r) { r.Item(&single); }), 0);
    EXPECT_EQ(single, 0.1f);
    double pair[2] = {};
    EXPECT_EQ(ReadRecord("0.1", "(F3.0)", [&](FormatReader& r) { r.Real16(pair); }), 0);
    EXPECT_EQ(pair[0], 0.1);
    EXPECT_EQ(pair[1], -5.551115123125783e-18);
    EXPECT_EQ(ReadRecord("1.0000000000000000000000000000001", "(F40.0)", [&](FormatReader& r) { r.Real16(pair); }), 0);
    EXPECT_EQ(pair[0], 1.0);
    EXPECT_NE(pair[1], 0.0);
    double complexParts[2] = {};
    EXPECT_EQ(ReadRecord(" 1.5 -2.25", "(2F5.2)", [&](FormatReader& r) { r.Complex(complexParts); }), 0);
    EXPECT_EQ(complexParts[0], 1.5);
    EXPECT_EQ(complexParts[1], -2.25);
}

TEST_F(FormattedInput, MismatchAndStandardChecks) {
    double x = 0;
    int16_t n = 0;
    // F for a 2-byte integer: message 110, and nothing consumed.
    EXPECT_EQ(ReadRecord("  1.5 7", "(F4.1,I3)", [&](FormatReader& r) { r.Integer(&n, 2); }), 110);
    // When the program goes on, the next item takes the next descriptor from the same
    // column.
    SetOptions("err_recovery=yes");
    int32_t m = 0;
    std::string record = "12 1.5";
    CapturedRun run;
    FormatReader(record.data(), 6, 1, "(F3.0,I2)").Integer(&n, 2).Item(&m).End();
    run.Finish();
    EXPECT_EQ(m, 12);
    EXPECT_NE(run.err().find("3714-110"), std::string::npos) << run.err();
    SetOptions("langlvl=95std");
    EXPECT_EQ(ReadRecord("1", "(Z1)", [&](FormatReader& r) { r.Item(&x); }), 53);
}

class FormattedInputFile : public FormattedInput {
protected:
    void Put(const std::string& name, const std::string& bytes) {
        int fd = open(dir.Path(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ASSERT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        close(fd);
    }
    void OpenFile(int32_t unit, const std::string& name, uint32_t pad = 0) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, dir.Path(name));
        if (pad != 0) s.Keyword(VRN_KEY_PAD, pad);
        ASSERT_EQ(Open(unit, s), 0);
    }
    TempDir dir;
};

TEST_F(FormattedInputFile, ShortRecordsPadAndEndOfFile) {
    Put("p", "12\n\n7");
    OpenFile(10, "p");
    int32_t a = -1, b = -1, iostat = 0;
    char text[4];
    EXPECT_EQ(FormatReader(10, "(I5,I3)", nullptr, 0, &iostat).Item(&a).Item(&b).End(), 0);
    EXPECT_EQ(a, 12);  // a short record under PAD="YES": blanks, not zeros under BZ
    EXPECT_EQ(b, 0);
    FormatReader(10, "(I2,A4)", nullptr, 0, &iostat).Item(&a).Text(text, 4).End();  // the empty record
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(a, 0);
    EXPECT_EQ(std::string(text, 4), "    ");
    FormatReader(10, "(BZ,I3)", nullptr, 0, &iostat).Item(&a).End();  // a last record without newline
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(a, 7);
    FormatReader(10, "(I3)", nullptr, 0, &iostat).Item(&a).End();
    EXPECT_EQ(iostat, -1);
    Close(10);

    Put("n", "123456\n12\n");
    OpenFile(11, "n", VRN_KEY_NO);
    FormatReader(11, "(I3,I3)", nullptr, 0, &iostat).Item(&a).Item(&b).End();
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(b, 456);
    FormatReader(11, "(I5)", nullptr, 0, &iostat).Item(&a).End();
    EXPECT_EQ(iostat, 4);  // record too short for PAD="NO"
    Close(11);

    // Internal files: PAD="NO" on a short record, and the end of the records.
    Specifiers noPad;
    noPad.Location("in.f", 4).Keyword(VRN_KEY_PAD, VRN_KEY_NO);
    std::string records = "1234";
    FormatReader(records.data(), 2, 2, "(I3)", 0, &iostat, &noPad).Item(&a).End();
    EXPECT_EQ(iostat, 5);
    FormatReader(records.data(), 2, 2, "(I2/I2/I2)", 0, &iostat).Item(&a).Item(&b).Item(&a).End();
    EXPECT_EQ(iostat, -2);
    EXPECT_EQ(b, 34);
    SetOptions("iostat_end=2003std");
    FormatReader(records.data(), 2, 2, "(I2/I2/I2)", 0, &iostat).Item(&a).Item(&b).Item(&a).End();
    EXPECT_EQ(iostat, -1);
}

TEST_F(FormattedInputFile, NonAdvancingReadsWithSizeAndEndOfRecord) {
    Put("a", "abcdefg\nxyz\n");
    OpenFile(12, "a");
    int32_t size = -1, iostat = 0;
    char part[3];
    auto noAdvance = [&]() {
        auto* s = new Specifiers;
        s->Location("na.f", 7).Keyword(VRN_KEY_ADVANCE, VRN_KEY_NO).Address(VRN_KEY_SIZE, &size, 4);
        return s;
    };
    Specifiers* first = noAdvance();
    FormatReader(12, "(A3)", first, VRN_OPTION_NONADVANCING, &iostat).Text(part, 3).End();
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(size, 3);
    EXPECT_EQ(std::string(part, 3), "abc");
    Specifiers* second = noAdvance();
    FormatReader(12, "(A3)", second, VRN_OPTION_NONADVANCING, &iostat).Text(part, 3).End();
    EXPECT_EQ(std::string(part, 3), "def");
    Specifiers* third = noAdvance();
    FormatReader(12, "(A3)", third, VRN_OPTION_NONADVANCING | VRN_OPTION_EOR, &iostat).Text(part, 3).End();
    EXPECT_EQ(iostat, -4);  // the end of the record, with the item padded
    EXPECT_EQ(size, 1);
    EXPECT_EQ(std::string(part, 3), "g  ");
    FormatReader(12, "(A3)", nullptr, 0, &iostat).Text(part, 3).End();  // the next record follows
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(std::string(part, 3), "xyz");
    delete first;
    delete second;
    delete third;
    Close(12);
}

// Random I fields (blanks anywhere, signs, junk, long digit runs) of every width that the
// eight-byte path takes and beyond, against a plain reading of the rules; random real
// fields against the C library's correctly rounded strtod.
TEST_F(FormattedInput, FieldsAgreeWithIndependentReadings) {
    std::mt19937 random(7);
    const char alphabet[] = "      0123456789012345678901234567890123456789+-x,";
    for (int i = 0; i < 20000; ++i) {
        int width = 1 + static_cast<int>(random() % 20);
        std::string field;
        int blanks = static_cast<int>(random() % (width + 1));
        field.assign(static_cast<size_t>(blanks), ' ');
        if (random() % 3 == 0 && static_cast<int>(field.size()) < width) field += random() % 2 ? '-' : '+';
        while (static_cast<int>(field.size()) < width) {
            field += random() % 8 == 0 ? alphabet[random() % (sizeof alphabet - 1)] : static_cast<char>('0' + random() % 10);
        }
        // The reading of the rules: blanks skipped, one leading sign, digits, and message 97
        // for anything else; a comma ends the field; 96 past the limit.
        std::string visible = field.substr(0, field.find(','));
        int64_t expected = 0;
        int32_t expectedStatus = 0;
        size_t at = visible.find_first_not_of(' ');
        bool negative = false;
        if (at != std::string::npos && (visible[at] == '+' || visible[at] == '-')) negative = visible[at++] == '-';
        for (; at != std::string::npos && at < visible.size(); ++at) {
            char c = visible[at];
            if (c == ' ') continue;
            if (c < '0' || c > '9') {
                expectedStatus = 97;
                break;
            }
            expected = expected * 10 + (c - '0');
            if (expected > (negative ? 2147483648LL : 2147483647LL)) {
                expectedStatus = 96;
                break;
            }
        }
        std::string format = "(I" + std::to_string(width) + ")";
        int32_t value = -777;
        int32_t status = ReadRecord(field, format.c_str(), [&](FormatReader& r) { r.Item(&value); });
        ASSERT_EQ(status, expectedStatus) << "[" << field << "]";
        if (expectedStatus == 0) ASSERT_EQ(value, negative ? -expected : expected) << "[" << field << "]";
    }
    for (int i = 0; i < 20000; ++i) {
        double magnitude = std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 120) - 90);
        char text[64];
        int digits = 1 + static_cast<int>(random() % 19);
        const char* style = random() % 2 ? "%.*e" : "%.*f";
        std::snprintf(text, sizeof text, style, digits, random() % 2 ? -magnitude : magnitude);
        std::string field = std::string(random() % 4, ' ') + text;
        if (field.size() > 40) continue;
        std::string format = "(F" + std::to_string(field.size()) + ".3)";
        double value = 0;
        ASSERT_EQ(ReadRecord(field, format.c_str(), [&](FormatReader& r) { r.Item(&value); }), 0) << field;
        ASSERT_EQ(value, std::strtod(text, nullptr)) << field;
        float single = 0;
        ASSERT_EQ(ReadRecord(field, format.c_str(), [&](FormatReader& r) { r.Item(&single); }), 0) << field;
        ASSERT_EQ(single, std::strtof(text, nullptr)) << field;
    }
}

// Values written with a format and read back with the same format keep every bit.
TEST_F(FormattedInput, RoundTripsThroughTheirOwnFormats) {
    std::mt19937_64 random(20261122);
    auto randomDouble = [&]() {
        double value;
        do {
            uint64_t bits = random();
            std::memcpy(&value, &bits, 8);
        } while (!std::isfinite(value));
        return value;
    };
    for (int i = 0; i < 2000; ++i) {
        double value = randomDouble();
        for (const char* format : {"(ES26.17E3)", "(E26.17E3)", "(D26.17)", "(1P,E26.17)"}) {
            std::string text(40, ' ');
            FormatWriter(text.data(), 40, 1, format).Item(value).End();
            double back = 0;
            ASSERT_EQ(ReadRecord(text, format, [&](FormatReader& r) { r.Item(&back); }), 0) << text;
            ASSERT_EQ(std::memcmp(&back, &value, 8), 0) << format << " " << text;
        }
        auto single = static_cast<float>(std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 200) - 150));
        std::string text(30, ' ');
        FormatWriter(text.data(), 30, 1, "(ES16.8E2)").Item(single).End();
        float backSingle = 0;
        ASSERT_EQ(ReadRecord(text, "(ES16.8E2)", [&](FormatReader& r) { r.Item(&backSingle); }), 0);
        ASSERT_EQ(backSingle, single) << text;
        double moderate = std::ldexp(static_cast<double>(random() >> 11), -53) * 1000;
        std::string fixed(40, ' ');
        FormatWriter(fixed.data(), 40, 1, "(F30.20)").Item(moderate).End();
        double backFixed = 0;
        ASSERT_EQ(ReadRecord(fixed, "(F30.20)", [&](FormatReader& r) { r.Item(&backFixed); }), 0);
        ASSERT_EQ(backFixed, moderate) << fixed;

        auto integer = static_cast<int64_t>(random());
        for (const char* format : {"(I21)", "(B64)", "(O22)", "(Z16)"}) {
            std::string field(70, ' ');
            FormatWriter(field.data(), 70, 1, format).Integer(integer, 8).End();
            int64_t back = 0;
            ASSERT_EQ(ReadRecord(field, format, [&](FormatReader& r) { r.Integer(&back, 8); }), 0) << field;
            ASSERT_EQ(back, integer) << format;
        }
        auto small = static_cast<int16_t>(random());
        for (const char* format : {"(I6)", "(B16)", "(O6)", "(Z4)"}) {
            std::string field(20, ' ');
            FormatWriter(field.data(), 20, 1, format).Integer(small, 2).End();
            int16_t back = 0;
            ASSERT_EQ(ReadRecord(field, format, [&](FormatReader& r) { r.Integer(&back, 2); }), 0) << field;
            ASSERT_EQ(back, small) << format;
        }
    }
}


// A real field of the common shape is read in one pass; the same field with a decimal
// comma goes through the scanner's tables. Both must store the same bits, for every
// descriptor, ROUND= mode and width of item: the short constants the tables know (0.1,
// 1.1 with trailing zeros and zero exponents), signed zeros, long mantissas, and the
// shapes that only look plain.
TEST_F(FormattedInput, RealFieldsReadInOnePassAgreeWithTheScanner) {
    std::mt19937_64 random(77);
    auto digits = [&](int count) {
        std::string d;
        for (int i = 0; i < count; ++i) d += static_cast<char>('0' + random() % 10);
        return d;
    };
    std::vector<std::string> fields = {"0.1", "1.1", "-1.10", "+0.100E+00", "1.1D0", "0.5", "-1.5q-0", "1.0",
                                       "0.000", "-0.0", "-0.0E5", "-.0", ".5", "-.1", "01.1", "1.", "12.",
                                       "1.5E", "1.5+3", "1.5 ", "1.5E+", "9.999999999999999999999", "1E5",
                                       "0.00000000000000000000000000001234", "1.5e-400", "-1.5E400"};
    for (int i = 0; i < 400; ++i) {
        std::string field = std::string(random() % 3, ' ');
        if (random() % 3 == 0) field += random() % 2 ? "-" : "+";
        field += std::string(random() % 4 == 0 ? random() % 3 : 0, '0') + digits(static_cast<int>(random() % 13));
        field += "." + digits(1 + static_cast<int>(random() % 14));
        if (random() % 2 == 0) {
            field += "EeDdQq"[random() % 6];
            if (random() % 2) field += random() % 2 ? "-" : "+";
            field += digits(1 + static_cast<int>(random() % 3));
        }
        fields.push_back(field);
    }
    const char* descriptors[] = {"F", "E", "ES", "D", "G"};
    const char* suffixes[] = {"", "12345678901234567890", "         ", "E+05", "5"};
    const char* modes[] = {"", "RN,", "RC,", "RU,", "RD,", "RZ,", "RP,"};
    int failures = 0;
    for (size_t i = 0; i < fields.size() && failures < 10; ++i) {
        const std::string& field = fields[i];
        std::string comma = field;
        for (char& c : comma) {
            if (c == '.') c = ',';
        }
        std::string width = std::to_string(field.size());
        std::string edit = std::string(descriptors[i % 5]) + width + "." + std::to_string(i % 3);
        for (const char* mode : modes) {
            std::string point = std::string("(") + mode + edit + ")";
            std::string decimalComma = std::string("(DC,") + mode + edit + ")";
            double fast = -7, table = -7;
            float fastSingle = -7, tableSingle = -7;
            // What follows the field in the record must not reach its value.
            std::string behind = suffixes[i % 5];
            int32_t fastStatus = ReadRecord(field + behind, point.c_str(), [&](FormatReader& r) { r.Item(&fast); });
            int32_t tableStatus =
                ReadRecord(comma + behind, decimalComma.c_str(), [&](FormatReader& r) { r.Item(&table); });
            ReadRecord(field + behind, point.c_str(), [&](FormatReader& r) { r.Item(&fastSingle); });
            ReadRecord(comma + behind, decimalComma.c_str(), [&](FormatReader& r) { r.Item(&tableSingle); });
            bool same = std::memcmp(&fast, &table, 8) == 0 && std::memcmp(&fastSingle, &tableSingle, 4) == 0;
            if (!same || fastStatus != tableStatus) {
                ++failures;
                ADD_FAILURE() << "'" << field << "' " << point << ": " << std::hexfloat << fast << " / " << table << ", "
                              << fastSingle << " / " << tableSingle << std::defaultfloat << ", IOSTAT " << fastStatus
                              << " / " << tableStatus;
            }
        }
    }
}

}  // namespace
}  // namespace vrntest
