// OPEN as far as the statement spine needs it: named, scratch and default files,
// NEWUNIT=, value checks, and a failed OPEN leaving nothing behind.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <fcntl.h>
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
    std::string savedTmpdir = std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "";
    setenv("TMPDIR", dir.path().c_str(), 1);
    Open(25, s, &iostat);
    setenv("TMPDIR", savedTmpdir.c_str(), 1);
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

TEST_F(OpenStatement, FilesThatCannotBeOpenedAsAsked) {
    int32_t iostat = 0;
    Specifiers directory;
    directory.Text(VRN_KEY_FILE, dir.path());
    Open(30, directory, &iostat);
    EXPECT_EQ(iostat, 14) << dir.path();  // EISDIR from open64
    EXPECT_EQ(LookUpUnit(_GlobalContext, 30), nullptr);

    std::string fifo = dir.Path("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0644), 0);
    Specifiers both;
    both.Text(VRN_KEY_FILE, fifo).Keyword(VRN_KEY_ACTION, VRN_KEY_READWRITE);
    Open(31, both, &iostat);
    EXPECT_EQ(iostat, 130);
    Specifiers rewound;
    rewound.Text(VRN_KEY_FILE, fifo).Keyword(VRN_KEY_ACTION, VRN_KEY_READ).Keyword(VRN_KEY_POSITION, VRN_KEY_REWIND);
    Open(31, rewound, &iostat);
    EXPECT_EQ(iostat, 153);

    Specifiers nul;
    nul.Text(VRN_KEY_FILE, dir.Path("cut") + std::string("\0tail", 5));
    Open(32, nul, &iostat);
    EXPECT_EQ(iostat, 126);
    SetOptions("err_recovery=yes");
    {
        CapturedRun run;  // recovered: the name ends at the NUL
        Open(32, nul);
        EXPECT_STREQ(LookUpUnit(_GlobalContext, 32)->fileName, dir.Path("cut").c_str());
        run.Finish();
        EXPECT_EQ(run.err(), "3714-126\n");
    }
}

TEST_F(OpenStatement, ReplaceAndAppend) {
    int32_t iostat = 0;
    std::string name = dir.Path("data.txt");
    Specifiers first;
    first.Text(VRN_KEY_FILE, name);
    Open(33, first);
    Statement(33, ListWrite).Bytes("one").End();
    Specifiers replace;
    replace.Text(VRN_KEY_FILE, name).Keyword(VRN_KEY_STATUS, VRN_KEY_REPLACE);
    Open(34, replace, &iostat);
    EXPECT_EQ(iostat, 23);  // connected to unit 33
    Close(33);
    Specifiers append;
    append.Text(VRN_KEY_FILE, name).Keyword(VRN_KEY_POSITION, VRN_KEY_APPEND);
    Open(34, append);
    Statement(34, ListWrite).Bytes("two").End();
    Close(34);
    EXPECT_EQ(ReadFile(name), " one\n two\n");
    Open(35, replace);
    Close(35);
    EXPECT_EQ(ReadFile(name), "");
}

TEST_F(OpenStatement, ReopeningAConnectedUnit) {
    int32_t iostat = 0;
    std::string name = dir.Path("re.txt");
    Specifiers first;
    first.Text(VRN_KEY_FILE, name);
    Open(36, first);
    Specifiers modes;
    modes.Text(VRN_KEY_FILE, name).Keyword(VRN_KEY_BLANK, VRN_KEY_ZERO).Text(VRN_KEY_DELIM, "quote");
    EXPECT_EQ(Open(36, modes, &iostat), 0);
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 36)->blank, static_cast<uint32_t>(VRN_KEY_ZERO));
    EXPECT_EQ(LookUpUnit(_GlobalContext, 36)->delim, static_cast<uint32_t>(VRN_KEY_QUOTE));
    Specifiers access;
    access.Keyword(VRN_KEY_ACCESS, VRN_KEY_DIRECT).Value(VRN_KEY_RECL, 10);
    Open(36, access, &iostat);
    EXPECT_EQ(iostat, 24);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 36)->access, static_cast<uint32_t>(VRN_KEY_SEQUENTIAL));
    // The specifiers are judged in the order given: the first wrong one is named.
    ResetRuntime();
    UseCatalogue(Catalogue::Built);
    Open(36, first);
    struct Order {
        std::vector<uint32_t> tags;
        const char* named;
    } orders[] = {
        {{VRN_KEY_ACCESS, VRN_KEY_RECL}, "ACCESS"},
        {{VRN_KEY_RECL, VRN_KEY_ACCESS}, "RECL"},
        {{VRN_KEY_FORM, VRN_KEY_ACTION}, "FORM"},
        {{VRN_KEY_ACTION, VRN_KEY_FORM}, "ACTION"},
        {{VRN_KEY_STATUS, VRN_KEY_ACCESS}, "STATUS"},
    };
    for (const Order& order : orders) {
        char message[200];
        Specifiers list;
        list.Address(VRN_KEY_IOMSG, message, sizeof message);
        for (uint32_t tag : order.tags) {
            if (tag == VRN_KEY_ACCESS) list.Keyword(tag, VRN_KEY_DIRECT);
            if (tag == VRN_KEY_RECL) list.Value(tag, 4);
            if (tag == VRN_KEY_FORM) list.Keyword(tag, VRN_KEY_UNFORMATTED);
            if (tag == VRN_KEY_ACTION) list.Keyword(tag, VRN_KEY_READ);
            if (tag == VRN_KEY_STATUS) list.Keyword(tag, VRN_KEY_NEW);
        }
        Open(36, list, &iostat);
        EXPECT_EQ(iostat, 24);
        std::string text(message, sizeof message);
        EXPECT_NE(text.find(std::string("specifier ") + order.named + " "), std::string::npos) << text;
    }
    // Another file on the same unit: the first connection is closed.
    Specifiers other;
    other.Text(VRN_KEY_FILE, dir.Path("other.txt"));
    EXPECT_EQ(Open(36, other, &iostat), 0);
    EXPECT_STREQ(LookUpUnit(_GlobalContext, 36)->fileName, dir.Path("other.txt").c_str());
}

TEST_F(OpenStatement, OptionsThatShapeConnections) {
    SetOptions("unit_vars=yes:scratch_vars=yes:multconn=yes:buffering=disable_all:ufmt_littleendian=40-41");
    setenv("VRNUNIT_40", dir.Path("named40").c_str(), 1);
    setenv("VRNSCRATCH_41", dir.Path("scratch41").c_str(), 1);
    Specifiers unformatted;
    unformatted.Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED);
    EXPECT_EQ(Open(40, unformatted), 0);
    UnitRecord* unit = LookUpUnit(_GlobalContext, 40);
    EXPECT_STREQ(unit->fileName, dir.Path("named40").c_str());
    EXPECT_EQ(unit->byteSwap, 1u);
    EXPECT_EQ(unit->unbuffered, 1u);
    Specifiers scratch;
    scratch.Keyword(VRN_KEY_STATUS, VRN_KEY_SCRATCH);
    int32_t iostat = 0;
    Open(41, scratch, &iostat);
    EXPECT_EQ(iostat, 228);  // little-endian and formatted
    Open(41, scratch);
    Specifiers second;
    second.Text(VRN_KEY_FILE, dir.Path("named40"));
    EXPECT_EQ(Open(42, second, &iostat), 0);  // MULTCONN=YES: both read-only now
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 42)->action, static_cast<uint32_t>(VRN_KEY_READ));
    EXPECT_EQ(LookUpUnit(_GlobalContext, 40)->action, static_cast<uint32_t>(VRN_KEY_READ));
    unsetenv("VRNUNIT_40");
    unsetenv("VRNSCRATCH_41");
    // Standard input may be /dev/null already: MULTCONNIO lets devices be shared.
    SetOptions("multconnio=nulldev");
    Specifiers nullDevice;
    nullDevice.Text(VRN_KEY_FILE, "/dev/null");
    Open(43, nullDevice, &iostat);
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 43)->isNullDevice, 1u);
}

TEST_F(OpenStatement, AReadOnlyFileOpensForReading) {
    // Root may write any file, so the program runs as an ordinary user in a child.
    std::string name = dir.Path("readonly.txt");
    std::string locked = dir.Path("locked.txt");
    close(open(name.c_str(), O_WRONLY | O_CREAT, 0444));
    close(open(locked.c_str(), O_WRONLY | O_CREAT, 0));
    chmod(name.c_str(), 0444);
    chmod(locked.c_str(), 0);
    chmod(dir.path().c_str(), 0777);
    auto program = [&] {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) std::_Exit(2);
        ResetRuntime();
        Specifiers readable;
        readable.Text(VRN_KEY_FILE, name);
        int32_t iostat = -1;
        Open(44, readable, &iostat);
        bool readOnly = iostat == 0 && LookUpUnit(_GlobalContext, 44)->action == VRN_KEY_READ;
        Specifiers none;
        none.Text(VRN_KEY_FILE, locked);
        Open(45, none, &iostat);
        std::_Exit(readOnly && iostat == 14 ? 0 : 1);
    };
    EXPECT_EXIT(program(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace vrntest
