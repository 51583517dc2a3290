// The message lines a user sees, with the catalogue the build compiled.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "core/context.h"
#include "core/errors.h"
#include "core/unit.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class Messages : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        UseCatalogue(Catalogue::Built);
        ResetRuntime();
    }
    TempDir dir;
};

TEST_F(Messages, ASevereErrorPrintsItsLineAndEndsTheProgram) {
    std::string missing = dir.Path("input.dat");
    EXPECT_EXIT(
        {
            Specifiers s;
            s.Location("prog.f", 12).Text(VRN_KEY_FILE, missing).Keyword(VRN_KEY_STATUS, VRN_KEY_OLD);
            Open(10, s);
        },
        ::testing::ExitedWithCode(1),
        "^\"prog.f\", line 12: 3714-006 OPEN on unit 10: the file " + missing +
            " was given STATUS='OLD' but does not exist\\.\n$");
}

TEST_F(Messages, ErrnoArgumentsCarryTheirText) {
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
    EXPECT_EXIT(
        {
            Specifiers s;
            s.Text(VRN_KEY_FILE, "/dev/full").Keyword(VRN_KEY_ACTION, VRN_KEY_WRITE);
            Open(11, s);
            Statement(11, ListWrite).Bytes("lost").End();
        },
        ::testing::ExitedWithCode(1),
        "^3714-013 A WRITE to file /dev/full failed: 28 \\(No space left on device\\)\\.\n$");
}

TEST_F(Messages, RecoveryOffEndsTheProgramWithMessage99) {
    EXPECT_EXIT(
        {
            setenv("VRNRTEOPTS", "err_recovery=no", 1);
            ResetRuntime();
            Specifiers s;
            s.Location("prog.f", 3).Text(VRN_KEY_ADVANCE, "sometimes");
            Statement(6, ListWrite, &s).End();
        },
        ::testing::ExitedWithCode(1),
        "^\"prog.f\", line 3: 3714-136 \"sometimes\" is not a value of ADVANCE=\\.\n"
        "3714-099 The program is stopping because of the error above\\.\n$");
}

TEST_F(Messages, QuietMessagesAndTheStatementGoesOn) {
    CapturedRun run;
    SetOptions("vrq_messages=no");
    Specifiers s;
    s.Location("prog.f", 4).Text(VRN_KEY_ADVANCE, "sometimes");
    EXPECT_EQ(Statement(6, ListWrite, &s).Bytes("still here").End(), 0);
    run.Finish();
    EXPECT_EQ(run.err(), "");
    EXPECT_EQ(run.out(), " still here\n");
}

TEST_F(Messages, IomsgReceivesTheCatalogueText) {
    char message[80];
    int32_t iostat = 0;
    Specifiers s;
    s.Location("prog.f", 20).Address(VRN_KEY_IOMSG, message, sizeof message).Text(VRN_KEY_DELIM, "slash");
    Statement(6, ListWrite, &s, 0, &iostat).End();
    EXPECT_EQ(iostat, 211);
    std::string text(message, sizeof message);
    std::string expected = "\"prog.f\", line 20: 3714-211 \"slash\" is not a value of DELIM= for unit 6.";  // no newline
    EXPECT_EQ(text.substr(0, expected.size()), expected);
    EXPECT_EQ(text.find_first_not_of(' ', expected.size()), std::string::npos);
}

TEST_F(Messages, ServicesOutsideStatements) {
    CapturedRun run;
    // ALLOCATE(..., STAT=, ERRMSG=): the variables get it all, nothing is printed.
    int32_t stat = -1;
    char errmsg[50];
    CharacterVariable variable{reinterpret_cast<uintptr_t>(errmsg), sizeof errmsg};
    _vrnGetErrorMsg1(kClassRecoverable, kKindError, 37, 37, &stat, &variable, "");
    EXPECT_EQ(stat, 37);
    EXPECT_EQ(std::string(errmsg, 32), "3714-037 The run-time ran out of");
    // Without STAT= the message is printed, with the location, and the program goes on.
    CharacterVariable file{reinterpret_cast<uintptr_t>("alloc.f90"), 9};
    _vrnGetErrorMsgWithLoc1(kClassRecoverable, kKindError, 37, 37, nullptr, nullptr, &file, 77, "");
    _vrnRecoverableError(166);
    _vrnRecoverableError(162);  // dropped unless OPTARG_WARN=YES
    SetOptions("optarg_warn=yes");
    _vrnRecoverableError(162);
    EXPECT_EQ(_LocalContext[0], _LocalContext[1]);  // the service's own context is gone
    run.Finish();
    EXPECT_EQ(run.err(),
              "\"alloc.f90\", line 77: 3714-037 The run-time ran out of memory.\n"
              "3714-166 The random number generator selected does not exist.\n"
              "3714-162 An optional argument that is not present was referenced.\n");
}

TEST_F(Messages, ErrorExitsEndTheProgram) {
    EXPECT_EXIT(_vrnErrorExit(108), ::testing::ExitedWithCode(1),
                "^3714-108 An intrinsic procedure was given arguments of shapes that do not conform\\.\n$");
    auto exitWithLocation = [] {
        CharacterVariable file{reinterpret_cast<uintptr_t>("m.f90  "), 7};
        _vrnErrorExitWithLoc(kClassSevere, kKindError, 167, 167, nullptr, nullptr, &file, 5, "");
    };
    EXPECT_EXIT(exitWithLocation(), ::testing::ExitedWithCode(1), "^\"m.f90\", line 5: 3714-167 ");
}

TEST_F(Messages, WithoutTheCatalogueNumbersStand) {
    UseCatalogue(Catalogue::Absent);
    CapturedRun run;
    _vrnRecoverableError(166);
    run.Finish();
    EXPECT_EQ(run.err(), "3714-166\n");
}

TEST_F(Messages, AnInstalledCatalogueIsFoundWithoutAnyVariable) {
    if (access("/opt/vrcmp/msg/en_US/vrqmsg90.cat", R_OK) != 0) {
        GTEST_SKIP() << "the catalogue is not installed (cmake --install puts it there)";
    }
    UseCatalogue(Catalogue::Installed);
    CapturedRun run;
    _vrnRecoverableError(166);
    run.Finish();
    EXPECT_EQ(run.err(), "3714-166 The random number generator selected does not exist.\n");
}

TEST(MessageText, ArgumentsArePutInByNumber) {
    MessageArgument arguments[] = {
        {ArgText(1), 0, "name"}, {ArgInt(2), -12, nullptr}, {ArgInt64(3), 5000000000LL, nullptr}, {ArgErrno(4), 2, nullptr}};
    char out[200];
    auto compose = [&](const char* text) {
        return std::string(out, static_cast<size_t>(SubstituteArguments(out, sizeof out, text, arguments, 4)));
    };
    EXPECT_EQ(compose("a $C1 b $I2 c $L3 d $E4."), "a name b -12 c 5000000000 d 2 (No such file or directory).");
    EXPECT_EQ(compose("$I1 falls back to the argument numbered 1"), "name falls back to the argument numbered 1");
    EXPECT_EQ(compose("$I2$C1$I2"), "-12name-12");
    EXPECT_EQ(compose("unknown $X1 and missing $I9 and $"), "unknown  and missing  and $");
    EXPECT_EQ(compose("plain"), "plain");
    EXPECT_EQ(SubstituteArguments(out, 5, "$C1 $C1 $C1", arguments, 4), 5);  // never past the end
}

}  // namespace
}  // namespace vrntest
