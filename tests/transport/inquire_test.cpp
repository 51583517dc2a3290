// INQUIRE by unit and by file, and INQUIRE(IOLENGTH=): the answers a program reads back
// from its variables, for units and files in each state.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "tests/support/fortran.h"
#include "tests/transport/inquire_answers.h"

namespace vrntest {
namespace {

class InquireStatement : public RuntimeTest {
protected:
    TempDir dir;
    void OpenFile(int32_t unit, const std::string& name, std::initializer_list<std::pair<uint32_t, uint32_t>> modes,
                  int32_t recl = 0) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, name);
        for (auto [tag, value] : modes) s.Keyword(tag, value);
        if (recl > 0) s.Value(VRN_KEY_RECL, static_cast<uintptr_t>(recl));
        int32_t iostat = 0;
        ASSERT_EQ(Open(unit, s, &iostat), 0);
        ASSERT_EQ(iostat, 0);
    }
};

TEST_F(InquireStatement, NothingConnectedAndNoFile) {
    Answers unit = ByUnit(42);
    EXPECT_TRUE(unit.logical[VRN_KEY_EXIST]);
    EXPECT_FALSE(unit.logical[VRN_KEY_OPENED]);
    EXPECT_FALSE(unit.logical[VRN_KEY_NAMED]);
    EXPECT_FALSE(unit.logical[VRN_KEY_PENDING]);
    EXPECT_EQ(unit.integer[VRN_KEY_NUMBER], -1);
    EXPECT_EQ(unit.integer[VRN_KEY_RECL], -1);
    EXPECT_EQ(unit.integer[VRN_KEY_SIZE], -1);
    EXPECT_EQ(unit.integer[VRN_KEY_NEXTREC], kUntouched);
    EXPECT_EQ(unit.integer[VRN_KEY_POS], kUntouched);
    for (uint32_t keyword : {VRN_KEY_ACCESS, VRN_KEY_ACTION, VRN_KEY_ASYNCHRONOUS, VRN_KEY_BLANK, VRN_KEY_DECIMAL,
                             VRN_KEY_DELIM, VRN_KEY_ENCODING, VRN_KEY_FORM, VRN_KEY_PAD, VRN_KEY_POSITION,
                             VRN_KEY_ROUND, VRN_KEY_SIGN}) {
        EXPECT_EQ(unit[keyword], "UNDEFINED") << keyword;
    }
    for (uint32_t keyword : {VRN_KEY_DIRECT, VRN_KEY_FORMATTED, VRN_KEY_READ, VRN_KEY_READWRITE, VRN_KEY_SEQUENTIAL,
                             VRN_KEY_STREAM, VRN_KEY_UNFORMATTED, VRN_KEY_WRITE}) {
        EXPECT_EQ(unit[keyword], "UNKNOWN") << keyword;
    }
    EXPECT_EQ(unit[VRN_KEY_NAME], "");
    EXPECT_EQ(unit.iostat, 0);

    // Negative numbers exist only as NEWUNIT hands them out.
    EXPECT_FALSE(ByUnit(-7).logical[VRN_KEY_EXIST]);
    EXPECT_FALSE(ByUnit(-1).logical[VRN_KEY_EXIST]);

    Answers file = ByFile(dir.Path("absent") + "  ");
    EXPECT_FALSE(file.logical[VRN_KEY_EXIST]);
    EXPECT_FALSE(file.logical[VRN_KEY_OPENED]);
    EXPECT_TRUE(file.logical[VRN_KEY_NAMED]);
    EXPECT_EQ(file[VRN_KEY_NAME], dir.Path("absent"));
    EXPECT_EQ(file.integer[VRN_KEY_NUMBER], -1);
    EXPECT_EQ(file.integer[VRN_KEY_SIZE], -1);
    EXPECT_EQ(file[VRN_KEY_SEQUENTIAL], "UNKNOWN");
    EXPECT_EQ(file[VRN_KEY_ACCESS], "UNDEFINED");
    EXPECT_FALSE(ByFile("").logical[VRN_KEY_EXIST]);
}

TEST_F(InquireStatement, SequentialConnectionByUnitAndByFileThenClosed) {
    std::string name = dir.Path("seq");
    OpenFile(10, name, {{VRN_KEY_DELIM, VRN_KEY_QUOTE}, {VRN_KEY_SIGN, VRN_KEY_PLUS}});
    ListWriter(10).Item(12345).End();  // still in the buffer
    int64_t sizeWhileOpen = ByUnit(10).integer[VRN_KEY_SIZE];
    for (bool wide : {false, true}) {
        for (Answers a : {ByUnit(10, wide), ByFile(name, wide)}) {
            EXPECT_TRUE(a.logical[VRN_KEY_EXIST]);
            EXPECT_TRUE(a.logical[VRN_KEY_OPENED]);
            EXPECT_TRUE(a.logical[VRN_KEY_NAMED]);
            EXPECT_EQ(a[VRN_KEY_NAME], name);
            EXPECT_EQ(a.integer[VRN_KEY_NUMBER], 10);
            EXPECT_EQ(a.integer[VRN_KEY_SIZE], sizeWhileOpen);
            EXPECT_GT(a.integer[VRN_KEY_RECL], 0);
            EXPECT_EQ(a.integer[VRN_KEY_NEXTREC], kUntouched);
            EXPECT_EQ(a.integer[VRN_KEY_POS], kUntouched);
            EXPECT_EQ(a[VRN_KEY_ACCESS], "SEQUENTIAL");
            EXPECT_EQ(a[VRN_KEY_FORM], "FORMATTED");
            EXPECT_EQ(a[VRN_KEY_SEQUENTIAL], "YES");
            EXPECT_EQ(a[VRN_KEY_DIRECT], "NO");
            EXPECT_EQ(a[VRN_KEY_STREAM], "NO");
            EXPECT_EQ(a[VRN_KEY_FORMATTED], "YES");
            EXPECT_EQ(a[VRN_KEY_UNFORMATTED], "NO");
            EXPECT_EQ(a[VRN_KEY_ACTION], "READWRITE");
            EXPECT_EQ(a[VRN_KEY_READ], "YES");
            EXPECT_EQ(a[VRN_KEY_WRITE], "YES");
            EXPECT_EQ(a[VRN_KEY_READWRITE], "YES");
            EXPECT_EQ(a[VRN_KEY_POSITION], "ASIS");
            EXPECT_EQ(a[VRN_KEY_ASYNCHRONOUS], "NO");
            EXPECT_EQ(a[VRN_KEY_BLANK], "NULL");
            EXPECT_EQ(a[VRN_KEY_DELIM], "QUOTE");
            EXPECT_EQ(a[VRN_KEY_PAD], "YES");
            EXPECT_EQ(a[VRN_KEY_SIGN], "PLUS");
            EXPECT_EQ(a[VRN_KEY_DECIMAL], "POINT");
            EXPECT_EQ(a[VRN_KEY_ROUND], "PROCESSOR_DEFINED");
            EXPECT_EQ(a[VRN_KEY_ENCODING], "DEFAULT");
        }
    }
    Close(10);
    Answers closed = ByFile(name);
    EXPECT_TRUE(closed.logical[VRN_KEY_EXIST]);
    EXPECT_FALSE(closed.logical[VRN_KEY_OPENED]);
    EXPECT_EQ(closed.integer[VRN_KEY_NUMBER], -1);
    EXPECT_EQ(closed.integer[VRN_KEY_SIZE], sizeWhileOpen);
    EXPECT_EQ(ReadFile(name).size(), static_cast<size_t>(sizeWhileOpen));
    EXPECT_EQ(closed.integer[VRN_KEY_RECL], -1);
    EXPECT_EQ(closed[VRN_KEY_ACCESS], "UNDEFINED");
    EXPECT_EQ(closed[VRN_KEY_DELIM], "UNDEFINED");
    EXPECT_EQ(closed[VRN_KEY_SEQUENTIAL], "YES");
    EXPECT_EQ(closed[VRN_KEY_DIRECT], "YES");
    EXPECT_EQ(closed[VRN_KEY_STREAM], "YES");
    EXPECT_EQ(closed[VRN_KEY_FORMATTED], "YES");
    EXPECT_EQ(closed[VRN_KEY_READWRITE], "YES");
    EXPECT_EQ(closed[VRN_KEY_ENCODING], "UNDEFINED");
    EXPECT_FALSE(ByUnit(10).logical[VRN_KEY_OPENED]);
    chmod(name.c_str(), 0444);
    if (geteuid() != 0) {
        EXPECT_EQ(ByFile(name)[VRN_KEY_WRITE], "NO");
        EXPECT_EQ(ByFile(name)[VRN_KEY_READ], "YES");
    }
}

TEST_F(InquireStatement, DirectAndStreamConnections) {
    std::string direct = dir.Path("direct");
    OpenFile(11, direct, {{VRN_KEY_ACCESS, VRN_KEY_DIRECT}, {VRN_KEY_ACTION, VRN_KEY_WRITE}}, 8);
    Answers fresh = ByUnit(11);
    EXPECT_EQ(fresh.integer[VRN_KEY_NEXTREC], 1);
    EXPECT_EQ(fresh.integer[VRN_KEY_RECL], 8);
    EXPECT_EQ(fresh[VRN_KEY_FORM], "UNFORMATTED");
    EXPECT_EQ(fresh[VRN_KEY_DIRECT], "YES");
    EXPECT_EQ(fresh[VRN_KEY_SEQUENTIAL], "NO");
    EXPECT_EQ(fresh[VRN_KEY_POSITION], "UNDEFINED");
    EXPECT_EQ(fresh[VRN_KEY_BLANK], "UNDEFINED");  // unformatted: no modes
    EXPECT_EQ(fresh[VRN_KEY_PAD], "UNDEFINED");
    EXPECT_EQ(fresh[VRN_KEY_READ], "NO");
    EXPECT_EQ(fresh[VRN_KEY_WRITE], "YES");
    EXPECT_EQ(fresh[VRN_KEY_READWRITE], "NO");
    Unformatted(11, DirectUfmtWrite, nullptr, 0, nullptr, 3).Item(1).Item(2).End();
    Answers written = ByUnit(11, true);
    EXPECT_EQ(written.integer[VRN_KEY_NEXTREC], 4);
    EXPECT_EQ(written.integer[VRN_KEY_SIZE], 24);

    std::string stream = dir.Path("stream");
    OpenFile(12, stream, {{VRN_KEY_ACCESS, VRN_KEY_STREAM}});
    EXPECT_EQ(ByUnit(12).integer[VRN_KEY_POS], 1);
    Unformatted(12, UfmtWrite).Item(7).Text("abcdef").End();
    Answers s = ByUnit(12);
    EXPECT_EQ(s.integer[VRN_KEY_POS], 11);
    EXPECT_EQ(s.integer[VRN_KEY_SIZE], 10);
    EXPECT_EQ(s.integer[VRN_KEY_RECL], -2);
    EXPECT_EQ(s[VRN_KEY_STREAM], "YES");
    EXPECT_EQ(s[VRN_KEY_ACCESS], "STREAM");
    int32_t value = 0;
    Specifiers at;
    at.Location("f", 1).Value(VRN_KEY_POS, 3);
    Unformatted(12, StreamUfmtRead, &at).Into(&value).End();
    EXPECT_EQ(ByUnit(12).integer[VRN_KEY_POS], 7);
}

TEST_F(InquireStatement, PreconnectedScratchNewUnitAndNamedByVariable) {
    for (int32_t unit : {0, 5, 6}) {
        Answers a = ByUnit(unit);
        EXPECT_TRUE(a.logical[VRN_KEY_OPENED]) << unit;
        EXPECT_FALSE(a.logical[VRN_KEY_NAMED]) << unit;
        EXPECT_EQ(a.integer[VRN_KEY_NUMBER], unit);
        EXPECT_EQ(a[VRN_KEY_ACCESS], "SEQUENTIAL");
        EXPECT_EQ(a[VRN_KEY_FORM], "FORMATTED");
        EXPECT_EQ(a[VRN_KEY_ACTION], "READWRITE");
        EXPECT_EQ(a[VRN_KEY_NAME], "");
    }
    Specifiers scratch;
    scratch.Keyword(VRN_KEY_STATUS, VRN_KEY_SCRATCH).Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED);
    Open(13, scratch);
    Answers s = ByUnit(13);
    EXPECT_TRUE(s.logical[VRN_KEY_OPENED]);
    EXPECT_FALSE(s.logical[VRN_KEY_NAMED]);
    EXPECT_EQ(s[VRN_KEY_NAME], "");
    EXPECT_EQ(s[VRN_KEY_FORM], "UNFORMATTED");

    int32_t newUnit = 0;
    Specifiers fresh;
    fresh.Address(VRN_KEY_NEWUNIT, &newUnit).Text(VRN_KEY_FILE, dir.Path("new"));
    Open(VRN_NEWUNIT_MARKER, fresh);
    Answers n = ByUnit(newUnit);
    EXPECT_TRUE(n.logical[VRN_KEY_EXIST]);
    EXPECT_TRUE(n.logical[VRN_KEY_OPENED]);
    EXPECT_EQ(ByFile(dir.Path("new")).integer[VRN_KEY_NUMBER], newUnit);
    Close(newUnit);
    EXPECT_FALSE(ByUnit(newUnit).logical[VRN_KEY_EXIST]);

    ResetRuntime();
    SetOptions("unit_vars=yes");
    setenv("VRNUNIT_14", dir.Path("by-variable").c_str(), 1);
    ListWriter(14).Item(1).End();
    unsetenv("VRNUNIT_14");
    EXPECT_EQ(ByUnit(14)[VRN_KEY_NAME], dir.Path("by-variable"));
}

TEST_F(InquireStatement, OneFileUnderTwoNamesIsOneFile) {
    std::string name = dir.Path("one");
    OpenFile(15, name, {});
    ASSERT_EQ(link(name.c_str(), dir.Path("hard").c_str()), 0);
    ASSERT_EQ(symlink(name.c_str(), dir.Path("soft").c_str()), 0);
    for (const char* other : {"hard", "soft"}) {
        Answers a = ByFile(dir.Path(other));
        EXPECT_TRUE(a.logical[VRN_KEY_OPENED]) << other;
        EXPECT_EQ(a.integer[VRN_KEY_NUMBER], 15) << other;
        EXPECT_EQ(a[VRN_KEY_NAME], name) << other;
    }
    Answers directory = ByFile(dir.path());
    EXPECT_TRUE(directory.logical[VRN_KEY_EXIST]);
    EXPECT_FALSE(directory.logical[VRN_KEY_OPENED]);
    EXPECT_EQ(directory[VRN_KEY_SEQUENTIAL], "NO");
    EXPECT_EQ(directory[VRN_KEY_READ], "NO");
    EXPECT_EQ(directory.integer[VRN_KEY_SIZE], -1);
}

TEST_F(InquireStatement, VariablesOfEveryLength) {
    OpenFile(16, dir.Path("lengths"), {});
    char shortText[3];
    char longText[14];
    uint8_t logical1 = 9;
    uint16_t logical2 = 9;
    int64_t logical8 = 9;
    int64_t number8 = -9;
    Specifiers s;
    s.Location("f", 1)
        .Address(VRN_KEY_ACCESS, shortText, sizeof shortText)
        .Address(VRN_KEY_FORM, longText, sizeof longText)
        .Address(VRN_KEY_OPENED, &logical1, 1)
        .Address(VRN_KEY_NAMED, &logical2, 2)
        .Address(VRN_KEY_EXIST, &logical8, 8)
        .Address(VRN_TAG_INQUIRE_INT8, &number8, VRN_KEY_NUMBER);
    EXPECT_EQ(_vrnIOCmd(16, VRN_COMMAND_INQUIRE, s.list(), VRN_OPTION_INQUIRE_BY_UNIT, nullptr), 0);
    EXPECT_EQ(std::string(shortText, 3), "SEQ");
    EXPECT_EQ(std::string(longText, 14), "FORMATTED     ");
    EXPECT_EQ(logical1, 1);
    EXPECT_EQ(logical2, 1);
    EXPECT_EQ(logical8, 1);
    EXPECT_EQ(number8, 16);
}

TEST_F(InquireStatement, ErrorsHaveTheirNumbers) {
    UseCatalogue(Catalogue::Built);
    ResetRuntime();
    int32_t iostat = 0;
    Specifiers neither;
    neither.Location("f", 1).Value(VRN_KEY_IOSTAT, 0);
    _vrnIOCmd(0, VRN_COMMAND_INQUIRE, neither.list(), 0, &iostat);
    EXPECT_EQ(iostat, 34);
    Specifiers both;
    both.Location("f", 1).Text(VRN_KEY_FILE, dir.Path("x"));
    _vrnIOCmd(3, VRN_COMMAND_INQUIRE, both.list(), VRN_OPTION_INQUIRE_BY_UNIT, &iostat);
    EXPECT_EQ(iostat, 34);

    Answers tooLong = ByFile(std::string(4097, 'n'));
    EXPECT_EQ(tooLong.iostat, 31);  // message 154, as in OPEN
    EXPECT_NE(tooLong.iomsg.find("3714-154"), std::string::npos) << tooLong.iomsg;
    EXPECT_EQ(tooLong.integer[VRN_KEY_NUMBER], kUntouched);
    Answers withNul = ByFile(std::string("a\0b", 3));
    EXPECT_EQ(withNul.iostat, 126);
    EXPECT_EQ(withNul.integer[VRN_KEY_NUMBER], kUntouched);
}

TEST_F(InquireStatement, IOLengthCountsTheItemsOfAnUnformattedRecord) {
    int32_t four = 4, eight = 8, one = 1, sixteen = 16;
    int32_t i4 = 1;
    double r8[2] = {};
    char text[11] = "0123456789";
    int8_t byte = 0;
    double complex8[2] = {};
    long double r16 = 0;
    int64_t big[1000] = {};
    int32_t textLength = 10, complexLength = 16, arrayLength = sizeof big;
    EXPECT_EQ(IOLength([&](LocalContext* c) {
                  _vrnWriteUfmt(c, &i4, &four, &four, 0);
                  _vrnWriteUfmt(c, r8, &eight, &eight, 4);
                  _vrnWriteUfmt(c, text, &textLength, &one, 2);
                  _vrnWriteUfmt(c, &byte, &one, &one, 3);
                  _vrnWriteUfmt(c, complex8, &complexLength, &eight, 5);
                  _vrnWriteUfmt(c, &r16, &sixteen, &sixteen, 4);
                  _vrnWriteUfmt(c, big, &arrayLength, &eight, 0 | 0x80000000u);
              }),
              4 + 8 + 10 + 1 + 16 + 16 + 8000);
    EXPECT_EQ(IOLength([](LocalContext*) {}, true), 0);
    EXPECT_EQ(IOLength([&](LocalContext* c) { _vrnWriteUfmt(c, &i4, &four, &four, 0); }, true), 4);
    // Nothing was written anywhere: no unit was connected on the way.
    EXPECT_FALSE(ByUnit(0 + 1).logical[VRN_KEY_OPENED]);
}

}  // namespace
}  // namespace vrntest
