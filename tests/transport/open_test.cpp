// OPEN as far as the statement spine needs it: named, scratch and default files,
// NEWUNIT=, value checks, and a failed OPEN leaving nothing behind.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "core/context.h"
#include "core/unit.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class OpenStatement : public RuntimeTest {
protected:
    TempDir dir;
};

TEST_F(OpenStatement, NewUnitGoesToItsVariableInFourOrEightBytes) {
    int32_t unit32 = 0;
    int64_t unit64 = 0;
    Specifiers a, b;
    a.Address(VRN_KEY_NEWUNIT, &unit32).Text(VRN_KEY_FILE, dir.Path("a"));
    b.Address(VRN_TAG_NEWUNIT8, &unit64).Text(VRN_KEY_FILE, dir.Path("b"));
    EXPECT_EQ(Open(VRN_NEWUNIT_MARKER, a), 0);
    EXPECT_EQ(Open(VRN_NEWUNIT_MARKER, b), 0);
    EXPECT_EQ(unit32, -3);
    EXPECT_EQ(unit64, -4);
}

TEST_F(OpenStatement, BadSpecifierValuesHaveTheirNumbers) {
    struct Case {
        uint32_t tag;
        const char* text;
        int32_t iostat;
    } cases[] = {
        {VRN_KEY_ACCESS, "RANDOM", 27}, {VRN_KEY_FORM, "BINARY", 28},   {VRN_KEY_STATUS, "GONE", 29},
        {VRN_KEY_BLANK, "ONE", 30},     {VRN_KEY_POSITION, "TOP", 128}, {VRN_KEY_ACTION, "RUN", 129},
        {VRN_KEY_DELIM, "SLASH", 132},  {VRN_KEY_PAD, "MAYBE", 134},    {VRN_KEY_ASYNCH, "SOON", 225},
    };
    for (const Case& c : cases) {
        int32_t iostat = 0;
        Specifiers s;
        s.Text(VRN_KEY_FILE, dir.Path("x")).Text(c.tag, c.text);
        Open(20, s, &iostat);
        EXPECT_EQ(iostat, c.iostat) << c.text;
        EXPECT_EQ(LookUpUnit(_GlobalContext, 20), nullptr) << c.text;
    }
}

TEST_F(OpenStatement, FileNamesAreCheckedAndTrimmed) {
    int32_t iostat = 0;
    Specifiers blanks;
    blanks.Text(VRN_KEY_FILE, "    ");
    Open(21, blanks, &iostat);
    EXPECT_EQ(iostat, 155);
    Specifiers longName;
    longName.Text(VRN_KEY_FILE, std::string(4097, 'n'));
    Open(21, longName, &iostat);
    EXPECT_EQ(iostat, 31);  // message 154
    Specifiers trailing;
    trailing.Text(VRN_KEY_FILE, dir.Path("trim") + "   ");
    Open(21, trailing, &iostat);
    EXPECT_EQ(iostat, 0);
    EXPECT_STREQ(LookUpUnit(_GlobalContext, 21)->fileName, dir.Path("trim").c_str());
}

TEST_F(OpenStatement, StatusRulesAndAFailedOpenLeavesNothing) {
    int32_t iostat = 0;
    Specifiers old;
    old.Text(VRN_KEY_FILE, dir.Path("none")).Keyword(VRN_KEY_STATUS, VRN_KEY_OLD);
    Open(22, old, &iostat);
    EXPECT_EQ(iostat, 6);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 22), nullptr);
    Specifiers scratchWithName;
    scratchWithName.Text(VRN_KEY_FILE, dir.Path("s")).Keyword(VRN_KEY_STATUS, VRN_KEY_SCRATCH);
    Open(22, scratchWithName, &iostat);
    EXPECT_EQ(iostat, 32);
    Specifiers directWithoutRecl;
    directWithoutRecl.Text(VRN_KEY_FILE, dir.Path("d")).Keyword(VRN_KEY_ACCESS, VRN_KEY_DIRECT);
    Open(22, directWithoutRecl, &iostat);
    EXPECT_EQ(iostat, 25);
    // RECL too large for a formatted sequential file: the file the OPEN made goes away.
    Specifiers huge;
    huge.Text(VRN_KEY_FILE, dir.Path("huge")).Keyword(VRN_KEY_FORM, VRN_KEY_FORMATTED).Value(VRN_KEY_RECL, 0x7FFFFFFF);
    Open(22, huge, &iostat);
    EXPECT_EQ(iostat, 156);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 22), nullptr);
    EXPECT_NE(access(dir.Path("huge").c_str(), F_OK), 0);
    Specifiers fresh;
    fresh.Text(VRN_KEY_FILE, dir.Path("new")).Keyword(VRN_KEY_STATUS, VRN_KEY_NEW);
    Open(23, fresh, &iostat);
    EXPECT_EQ(iostat, 0);
    Open(24, fresh, &iostat);
    EXPECT_EQ(iostat, 107);  // NEW file exists
}

TEST_F(OpenStatement, ScratchFilesLiveUnderTmpdirUntilClosed) {
    int32_t iostat = -1;
    Specifiers s;
    s.Keyword(VRN_KEY_STATUS, VRN_KEY_SCRATCH);
    setenv("TMPDIR", dir.path().c_str(), 1);
    Open(25, s, &iostat);
    ASSERT_EQ(iostat, 0);
    std::string name = LookUpUnit(_GlobalContext, 25)->fileName;
    EXPECT_EQ(name.rfind(dir.Path("VrnRt"), 0), 0u) << name;
    EXPECT_EQ(access(name.c_str(), F_OK), 0);
    Close(25);
    EXPECT_NE(access(name.c_str(), F_OK), 0);
}

TEST_F(OpenStatement, TwoUnitsOnOneFileNeedMultconn) {
    int32_t iostat = 0;
    Specifiers s;
    s.Text(VRN_KEY_FILE, dir.Path("one"));
    Open(26, s, &iostat);
    ASSERT_EQ(iostat, 0);
    Open(27, s, &iostat);
    EXPECT_EQ(iostat, 23);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 27), nullptr);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 26)->inode->unitCount, 1u);
}

}  // namespace
}  // namespace vrntest
