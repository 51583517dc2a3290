// Formats given as text at run time are encoded once and found again; a text that changes
// between statements is never served the code of what it used to say.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/support/fortran.h"
#include "vrn90.h"

namespace {

using namespace vrntest;

class FormatCache : public RuntimeTest {};

// WRITE (record, fmt) value with the format read from `text` where it stands, as compiled
// code passes a CHARACTER variable: its address and length, nothing copied.
std::string WriteWith(const char* text, int32_t length, int32_t value, int32_t* iostat = nullptr) {
    char record[64];
    std::memset(record, '\x01', sizeof record);
    InternalFile file{reinterpret_cast<uintptr_t>(record), sizeof record, sizeof record};
    InternalFile* fileAddress = &file;
    VrnFormatBlock block{1, text, static_cast<uintptr_t>(length), 0, nullptr};
    LocalContext* context = _vrnBeginIO(&fileAddress, FormattedWrite | VRN_FLAG_INTERNAL, nullptr, 0, iostat, 0, &block);
    int32_t size = 4;
    _vrnWriteFmt(context, &value, &size, &size, 0);
    _vrnEndIO(context);
    return InternalRecords(record, sizeof record, 1);
}

TEST_F(FormatCache, AFormatVariableRewrittenBetweenStatements) {
    // One variable, rewritten in place: same address, often the same length, differing
    // in one byte, the way a program builds a format with an internal WRITE.
    char format[16];
    struct Step {
        const char* text;
        const char* expected;
    };
    const Step steps[] = {
        {"(I5)", "   42\n"}, {"(I3)", " 42\n"},    {"(I5)", "   42\n"},   {"(Z5)", "   2A\n"},
        {"(O5)", "   52\n"}, {"(I5.4)", " 0042\n"}, {"(I5.3)", "  042\n"}, {"(SP,I5)", "  +42\n"},
        {"(SS,I5)", "   42\n"}, {"(I1)", "*\n"},    {"(I5)", "   42\n"},
    };
    for (const Step& step : steps) {
        std::memset(format, ' ', sizeof format);
        std::memcpy(format, step.text, std::strlen(step.text));
        // The whole variable, trailing blanks and all, as a fixed-length CHARACTER is passed.
        EXPECT_EQ(WriteWith(format, sizeof format, 42), step.expected) << step.text;
        EXPECT_EQ(WriteWith(format, static_cast<int32_t>(std::strlen(step.text)), 42), step.expected) << step.text;
    }
}

// What I<w>, I<w>.<m> and Z<w> make of a value, by the C library's rules for the same.
std::string Field(const std::string& digits, int width) {
    if (static_cast<int>(digits.size()) > width) return std::string(static_cast<size_t>(width), '*');
    return std::string(static_cast<size_t>(width) - digits.size(), ' ') + digits;
}

TEST_F(FormatCache, ManyFormatsInTurn) {
    // More distinct texts than the cache keeps, visited in a random order from one buffer
    // and from copies at other addresses.
    const int32_t value = -12345;
    std::vector<std::string> texts, expected;
    char digits[32];
    for (int width = 1; width <= 12; ++width) {
        int m = width / 2;
        texts.push_back("(I" + std::to_string(width) + ")");
        std::snprintf(digits, sizeof digits, "%d", value);
        expected.push_back(Field(digits, width) + "\n");
        texts.push_back("(I" + std::to_string(width) + "." + std::to_string(m) + ")");
        std::snprintf(digits, sizeof digits, "-%0*d", m, -value);
        expected.push_back(Field(digits, width) + "\n");
        texts.push_back("(1X,Z" + std::to_string(width) + ")");
        std::snprintf(digits, sizeof digits, "%X", static_cast<uint32_t>(value));
        expected.push_back(" " + Field(digits, width) + "\n");
    }
    std::mt19937 random(39);
    char shared[24];
    for (int i = 0; i < 2000; ++i) {
        size_t pick = random() % texts.size();
        const std::string& text = texts[pick];
        std::string elsewhere = text;  // another address with the same bytes
        bool inPlace = random() % 2 == 0;
        if (inPlace) std::memcpy(shared, text.data(), text.size());
        const char* at = inPlace ? shared : elsewhere.data();
        ASSERT_EQ(WriteWith(at, static_cast<int32_t>(text.size()), value), expected[pick]) << text;
    }
}

TEST_F(FormatCache, ARefusedTextIsRefusedEveryTime) {
    const char bad[] = "(I5,K)";
    for (int i = 0; i < 3; ++i) {
        int32_t iostat = 0;
        WriteWith(bad, sizeof bad - 1, 1, &iostat);
        EXPECT_NE(iostat, 0) << "statement " << i;
    }
}

TEST_F(FormatCache, TheLanguageLevelIsPartOfTheKey) {
    // Accepted as an extension, then refused once the level is the standard's, though the
    // text and its address are the same.
    const char text[] = "(DC,I5)";
    int32_t iostat = 0;
    EXPECT_EQ(WriteWith(text, sizeof text - 1, 7, &iostat), "    7\n");
    EXPECT_EQ(iostat, 0);
    SetOptions("langlvl=90std");
    WriteWith(text, sizeof text - 1, 7, &iostat);
    EXPECT_EQ(iostat, 58);
    SetOptions("langlvl=90ext");
    iostat = 0;
    EXPECT_EQ(WriteWith(text, sizeof text - 1, 7, &iostat), "    7\n");
    EXPECT_EQ(iostat, 0);
}

TEST_F(FormatCache, ALongTextStillWorksUncached) {
    // Larger than the cache keeps, and long enough to be chained over several chunks.
    std::string text = "('" + std::string(20000, 'x') + "',I3)";
    for (int i = 0; i < 3; ++i) {
        std::string record(20003, '\x01');
        int32_t iostat = 0;
        FormatWriter(record.data(), static_cast<uint32_t>(record.size()), 1, text, 0, &iostat).Item(5).End();
        EXPECT_EQ(iostat, 0);
        EXPECT_EQ(record, std::string(20000, 'x') + "  5");
    }
}

}  // namespace
