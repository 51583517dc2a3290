#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstring>

#include "core/context.h"
#include "core/unit.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class StatementFrame : public RuntimeTest {};

TEST_F(StatementFrame, PrintWithNoItemsWritesOneBlankRecord) {
    CapturedRun run;
    EXPECT_EQ(PrintEmpty(), 0);
    EXPECT_EQ(RTE_Initialized, 1u);  // the first I/O call started the run-time
    EXPECT_EQ(PrintEmpty(), 0);
    run.Finish();
    EXPECT_EQ(run.out(), " \n \n");
    EXPECT_EQ(run.err(), "");
}

TEST_F(StatementFrame, BufferedOutputOfUnitSixReachesTheFileAtExit) {
    TempDir dir;
    std::string path = dir.Path("out.txt");
    EXPECT_EXIT(
        {
            freopen(path.c_str(), "w", stdout);
            ResetRuntime();
            for (int i = 0; i < 1000; ++i) Statement(6, ListWrite).Bytes("record").End();
            _vrnExit(3);
        },
        ::testing::ExitedWithCode(3), "");
    std::string expected;
    for (int i = 0; i < 1000; ++i) expected += " record\n";
    EXPECT_EQ(ReadFile(path), expected);
}

TEST_F(StatementFrame, ElevenDeepNestingSharesOneMessageBuffer) {
    EnsureRuntimeStarted();
    LocalContext* bottom = _LocalContext[0];
    char lines[11][4];
    std::vector<std::unique_ptr<InternalWrite>> open;
    for (int depth = 0; depth < 11; ++depth) {
        open.push_back(std::make_unique<InternalWrite>(lines[depth], 4, 1));
        LocalContext* context = open.back()->context();
        EXPECT_EQ(context->messageBuffer, bottom->messageBuffer) << depth;
        EXPECT_EQ(context->scanBuffer, bottom->scanBuffer) << depth;
        EXPECT_EQ(context->nested, depth > 0 ? 1u : 0u);
        EXPECT_EQ(_LocalContext[0], context);
    }
    // The eleventh context came from a second block.
    EXPECT_EQ(open[10]->context()->prev, open[9]->context());
    EXPECT_NE(open[10]->context(), open[9]->context() + 1);
    for (int depth = 10; depth >= 0; --depth) {
        open[depth]->Bytes("ab");
        EXPECT_EQ(open[depth]->End(), 0);
        EXPECT_EQ(_LocalContext[0], open[depth > 0 ? depth - 1 : 0]->context());
    }
    EXPECT_EQ(_LocalContext[0], bottom);
    EXPECT_EQ(bottom->busy, 0u);
    EXPECT_EQ(std::string(lines[3], 4), " ab ");
}

TEST_F(StatementFrame, InternalWriteInsideAPrintListWorks) {
    CapturedRun run;
    Statement print(6, ListWrite);
    print.Bytes("value=");
    char text[8];
    InternalWrite inner(text, 8, 1);  // a function called from the PRINT list
    inner.Bytes("42");
    EXPECT_EQ(inner.End(), 0);
    print.Bytes(std::string(text, 8));
    EXPECT_EQ(print.End(), 0);
    run.Finish();
    EXPECT_EQ(run.out(), " value= 42     \n");
}

// Only the start is anchored: an emulator may report the signal on the same stream.
TEST_F(StatementFrame, ExternalStatementInsideAnotherAbortsAsRecursion) {
    EXPECT_EXIT(
        {
            Statement outer(6, ListWrite);
            PrintEmpty();
        },
        ::testing::KilledBySignal(SIGABRT), "^VR Fortran \\(I/O initialization\\): I/O recursion detected\\.\n");
    EXPECT_EXIT(
        {
            Statement outer(6, ListWrite);
            Specifiers s;
            s.Keyword(VRN_KEY_STATUS, VRN_KEY_SCRATCH);
            Open(40, s);
        },
        ::testing::KilledBySignal(SIGABRT),
        "^VR Fortran \\(I/O command initialization\\): I/O recursion detected\\.\n");
}

TEST_F(StatementFrame, InvalidCommandAborts) {
    EXPECT_EXIT(_vrnIOCmd(6, VRN_COMMAND_INVALID, nullptr, 0, nullptr), ::testing::KilledBySignal(SIGABRT),
                "^VR Fortran \\(I/O command\\): Invalid I/O command\\.\n");
    EXPECT_EXIT(_vrnIOCmd(6, 42, nullptr, 0, nullptr), ::testing::KilledBySignal(SIGABRT), "Invalid I/O command");
}

TEST_F(StatementFrame, DirectReadWithRecordZeroIsMessage16AndLeavesTheContextIdle) {
    int32_t iostat = -1;
    Statement read(5, DirectListRead, nullptr, 0, &iostat, 0);
    EXPECT_EQ(read.context()->itemsStopped, 1u);
    EXPECT_EQ(read.End(), 0);  // IOSTAT= took it over: no branch
    EXPECT_EQ(iostat, 16);
    LocalContext* context = _LocalContext[0];
    EXPECT_EQ(context->busy, 0u);
    EXPECT_EQ(context->statementFlags, kNoStatement);
    EXPECT_EQ(context->command, kCommandNone);
    EXPECT_EQ(context, _LocalContext[1]);
}

TEST_F(StatementFrame, IostatOfEightBytesReceivesBothHalves) {
    int64_t iostat = -1;  // all ones: a 4-byte store would leave half of them
    Specifiers s;
    s.Location("prog.f", 10).Address(VRN_TAG_IOSTAT8, &iostat);
    Statement(5, DirectListRead, &s, 0, nullptr, -7).End();
    EXPECT_EQ(iostat, 16);
}

TEST_F(StatementFrame, IomsgIsFilledOnErrorAndLeftAloneOnSuccess) {
    CapturedRun run;
    char message[40];
    std::memset(message, '*', sizeof message);
    int32_t iostat = 0;
    Specifiers good;
    good.Location("prog.f", 12).Address(VRN_KEY_IOMSG, message, sizeof message);
    Statement(6, ListWrite, &good, 0, &iostat).End();
    EXPECT_EQ(std::string(message, sizeof message), std::string(40, '*'));

    Specifiers bad;
    bad.Location("prog.f  ", 13).Address(VRN_KEY_IOMSG, message, sizeof message);
    Statement(6, DirectListWrite, &bad, 0, &iostat, 0).End();
    EXPECT_EQ(iostat, 16);
    std::string text(message, sizeof message);
    EXPECT_EQ(text.substr(0, 27), "\"prog.f\", line 13: 3714-016");  // the line without its newline
    EXPECT_EQ(text.substr(27), std::string(13, ' '));
    run.Finish();
    EXPECT_EQ(run.err(), "");  // IOSTAT= was given: nothing printed
}

TEST_F(StatementFrame, UnknownListVersionIsRefusedOnlyWithMoreThanTwoEntries) {
    int32_t iostat = -1;
    Specifiers two;
    two.Version(9).Location("prog.f", 1);
    Statement(6, ListWrite, &two, 0, &iostat).End();
    EXPECT_EQ(iostat, 0);  // MSGLINE and MSGFILE only: the pass is skipped

    Specifiers three;
    three.Version(9).Location("prog.f", 1).Keyword(VRN_KEY_ADVANCE, VRN_KEY_YES);
    uint32_t err = VRN_OPTION_ERR;
    Statement statement(6, ListWrite, &three, err, &iostat);
    EXPECT_EQ(statement.End(), 6);  // kind 6, taken over by ERR=
    EXPECT_EQ(iostat, 135);
    EXPECT_EXIT(
        {
            Specifiers list;
            list.Version(2).Location("prog.f", 1).Keyword(VRN_KEY_ADVANCE, VRN_KEY_YES);
            Statement(6, ListWrite, &list).End();
        },
        ::testing::ExitedWithCode(1), "3714-135");
}

struct BadValue {
    uint32_t tag;
    const char* text;
    bool internal;
    int32_t message;
};

TEST_F(StatementFrame, BadModeTextsGiveTheirMessagesAndCountAsNotGiven) {
    const BadValue cases[] = {
        {VRN_KEY_ADVANCE, "MAYBE", false, 136}, {VRN_KEY_BLANK, "ZEROS", false, 209},
        {VRN_KEY_DELIM, "COMMA", false, 211},   {VRN_KEY_DELIM, "COMMA", true, 214},
        {VRN_KEY_PAD, "PERHAPS", false, 210},   {VRN_KEY_SIGN, "MINUS", false, 215},
        {VRN_KEY_SIGN, "MINUS", true, 216},     {VRN_KEY_DECIMAL, "DOT", false, 219},
        {VRN_KEY_DECIMAL, "DOT", true, 220},    {VRN_KEY_ROUND, "HALFWAY", false, 223},
    };
    for (const BadValue& bad : cases) {
        int32_t iostat = 0;
        Specifiers s;
        s.Location("prog.f", 1).Text(bad.tag, bad.text);
        if (bad.internal) {
            char line[10];
            InternalFile file{reinterpret_cast<uintptr_t>(line), 10, 10};
            InternalFile* address = &file;
            _vrnEndIO(_vrnBeginIO(&address, InternalListWrite, s.list(), 0, &iostat, 0, nullptr));
        } else {
            Statement(6, ListWrite, &s, 0, &iostat).End();
        }
        EXPECT_EQ(iostat, bad.message) << bad.text;
    }
    // Recovered (no specifier, ERR_RECOVERY=YES): printed, and the mode is the unit's.
    CapturedRun run;
    Specifiers s;
    s.Location("prog.f", 7).Text(VRN_KEY_DECIMAL, "dot").Text(VRN_KEY_ADVANCE, "sometimes");
    Statement statement(6, ListWrite, &s);
    EXPECT_EQ(statement.context()->modeDecimal, static_cast<uint32_t>(VRN_KEY_POINT));
    EXPECT_EQ(statement.context()->advancing, 1u);
    EXPECT_EQ(statement.End(), 0);
    run.Finish();
    EXPECT_EQ(run.err(), "\"prog.f\", line 7: 3714-219\n\"prog.f\", line 7: 3714-136\n");
    EXPECT_EQ(run.out(), " \n");
}

TEST_F(StatementFrame, AdvanceInAnyCaseAndModesFromTheStatement) {
    Specifiers s;
    s.Location("p.f", 1).Text(VRN_KEY_ADVANCE, "nO  ").Text(VRN_KEY_SIGN, "plus").Keyword(VRN_KEY_ROUND, VRN_KEY_UP);
    Statement statement(6, ListWrite, &s);
    LocalContext* context = statement.context();
    EXPECT_EQ(context->advancing, 0u);
    EXPECT_TRUE(context->options & VRN_OPTION_NONADVANCING);
    EXPECT_EQ(context->modeSign, static_cast<uint32_t>(VRN_KEY_PLUS));
    EXPECT_EQ(context->modeRound, static_cast<uint32_t>(VRN_KEY_UP));
    EXPECT_EQ(context->modeDelim, 0u);  // the preconnected unit's DELIM: not set
    EXPECT_EQ(context->modePad, static_cast<uint32_t>(VRN_KEY_YES));
    statement.End();
}

TEST_F(StatementFrame, UnconnectedUnits) {
    TempDir dir;
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    ASSERT_EQ(chdir(dir.path().c_str()), 0);
    int32_t iostat = 0;
    Statement(-5, ListRead, nullptr, 0, &iostat).End();
    EXPECT_EQ(iostat, 36);  // a negative unit is only looked up
    Statement(-5, ListWrite, nullptr, 0, &iostat).End();
    EXPECT_EQ(iostat, 36);
    Statement(12, ListWrite, nullptr, 0, &iostat).Bytes("implicit").End();
    EXPECT_EQ(iostat, 0);
    Statement(12, DirectListWrite, nullptr, 0, &iostat, 1).End();
    EXPECT_EQ(iostat, 22);  // connected for sequential access
    Statement(13, DirectListWrite, nullptr, 0, &iostat, 1).End();
    EXPECT_EQ(iostat, 18);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 13), nullptr);  // a failed statement leaves no unit
    ResetRuntime();
    EXPECT_EQ(ReadFile(dir.Path("fort.12")), " implicit\n");
    ASSERT_EQ(chdir(cwd), 0);
}

TEST_F(StatementFrame, AnAsynchronousFormattedTransferRunsAsASynchronousOne) {
    TempDir dir;
    Specifiers open;
    open.Text(VRN_KEY_FILE, dir.Path("a.txt")).Keyword(VRN_KEY_ASYNCHRONOUS, VRN_KEY_YES);
    ASSERT_EQ(Open(30, open), 0);
    int32_t id = -1;
    Specifiers withId;
    withId.Location("prog.f", 3).Address(VRN_KEY_ID, &id);
    Statement(30, ListWrite | VRN_FLAG_ASYNCHRONOUS, &withId).Bytes("x").End();
    EXPECT_EQ(id, 0);
    Statement(30, ListWrite).Bytes("y").End();
    Statement(30, ListWrite | VRN_FLAG_ASYNCHRONOUS).Bytes("z").End();
    Close(30);
    EXPECT_EQ(ReadFile(dir.Path("a.txt")), " x\n y\n z\n");
}

TEST_F(StatementFrame, StartsWithoutDescriptorTwoAndHasNoUnitZero) {
    EXPECT_EXIT(
        {
            close(2);
            ResetRuntime();
            PrintEmpty();
            std::_Exit(LookUpUnit(_GlobalContext, 0) == nullptr && LookUpUnit(_GlobalContext, 6) != nullptr ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace vrntest
