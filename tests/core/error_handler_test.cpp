// The specifier logic of ErrorHandler: which specifier takes an error over, what
// IOSTAT= and status receive, and when a message is printed or the program ends.
#include <gtest/gtest.h>

#include "core/context.h"
#include "core/errors.h"
#include "core/unit.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class ErrorSpecifiers : public RuntimeTest {
protected:
    // A statement as its context stands when an error is raised inside it.
    LocalContext* Context(uint32_t options, int32_t command, void* iostat) {
        EnsureRuntimeStarted();
        LocalContext* context = _LocalContext[0];
        context->options = options;
        context->command = command;
        context->iostatAddress = iostat;
        context->status = 0;
        context->itemsStopped = 0;
        context->iostatValue = 0;
        return context;
    }
};

TEST_F(ErrorSpecifiers, EndOfFileWithEndTakesTheBranchSilently) {
    CapturedRun run;
    LocalContext* context = Context(VRN_OPTION_END, kCommandTransfer, nullptr);
    EXPECT_EQ(ErrorHandler(kClassRecoverable, kKindEndOfFile, 1, -1, 0u), kStatementStops);
    EXPECT_EQ(context->status, 1);
    EXPECT_EQ(context->iostatValue, -1);
    EXPECT_EQ(context->itemsStopped, 1u);
    run.Finish();
    EXPECT_EQ(run.err(), "");
}

TEST_F(ErrorSpecifiers, EndOfFileWithIostatOnlyGivesMinusOneAndNoBranch) {
    CapturedRun run;
    int32_t iostat;
    LocalContext* context = Context(0, kCommandTransfer, &iostat);
    EXPECT_EQ(ErrorHandler(kClassRecoverable, kKindEndOfFile, 1, -1, 0u), kStatementStops);
    EXPECT_EQ(context->status, 0);
    EXPECT_EQ(context->iostatValue, -1);
    run.Finish();
    EXPECT_EQ(run.err(), "");
}

TEST_F(ErrorSpecifiers, ErrDoesNotTakeEndOfFileOnATransferButDoesOnBackspace) {
    CapturedRun run;
    LocalContext* context = Context(VRN_OPTION_ERR, kCommandTransfer, nullptr);
    EXPECT_EQ(ErrorHandler(kClassRecoverable, kKindEndOfFile, 1, -1, 0u), kRecover);  // reported, goes on
    EXPECT_EQ(context->status, 0);
    context = Context(VRN_OPTION_ERR, VRN_COMMAND_BACKSPACE, nullptr);
    EXPECT_EQ(ErrorHandler(kClassRecoverable, kKindEndOfFile, 1, -1, 0u), kStatementStops);
    EXPECT_EQ(context->status, 1);
    _GlobalContext->options.optErrorEof = 1;  // ERROREOF=YES: ERR= takes it on a READ too
    context = Context(VRN_OPTION_ERR, kCommandTransfer, nullptr);
    EXPECT_EQ(ErrorHandler(kClassRecoverable, kKindEndOfFile, 1, -1, 0u), kStatementStops);
    run.Finish();
    EXPECT_EQ(run.err(), "3714-001\n");
}

TEST_F(ErrorSpecifiers, EorAndErrTakeTheirOwnKinds) {
    LocalContext* context = Context(VRN_OPTION_EOR, kCommandTransfer, nullptr);
    EXPECT_EQ(ErrorHandler(kClassRecoverable, kKindEndOfRecord, 31, -4, 0u), kStatementStops);
    EXPECT_EQ(context->status, 2);
    EXPECT_EQ(context->iostatValue, -4);
    context = Context(VRN_OPTION_ERR | VRN_OPTION_END | VRN_OPTION_EOR, kCommandTransfer, nullptr);
    EXPECT_EQ(ErrorHandler(kClassSevere, kKindError, 13, 13, 0u), kStatementStops);
    EXPECT_EQ(context->status, 3);
}

TEST_F(ErrorSpecifiers, SevereErrorWithoutSpecifierEndsTheProgram) {
    EXPECT_EXIT(
        {
            Context(0, kCommandTransfer, nullptr);
            ErrorHandler(kClassSevere, kKindError, 37, 37, 0u);
        },
        ::testing::ExitedWithCode(1), "^3714-037\n$");
    // A recoverable one under ERR_RECOVERY=NO ends it too, and message 99 follows.
    EXPECT_EXIT(
        {
            Context(0, kCommandTransfer, nullptr);
            _GlobalContext->options.optErrRecovery = 0;
            ErrorHandler(kClassRecoverable, kKindError, 136, 136, 0u);
        },
        ::testing::ExitedWithCode(1), "^3714-136\n3714-099\n$");
}

TEST_F(ErrorSpecifiers, IomsgIsFilledBeforeTheProgramEnds) {
    // The variable is in a pipe's reach only through the process: check it in the child.
    EXPECT_EXIT(
        {
            char message[20];
            LocalContext* context = Context(0, kCommandTransfer, nullptr);
            context->iomsgAddress = message;
            context->iomsgLength = sizeof message;
            // Exiting runs the clean-up; the check happens in a handler run by exit().
            static char* seen = message;
            std::atexit([] { std::_Exit(std::string(seen, 9) == "3714-037 " ? 42 : 43); });
            ErrorHandler(kClassSevere, kKindError, 37, 37, 0u);
        },
        ::testing::ExitedWithCode(42), "3714-037");
}

TEST_F(ErrorSpecifiers, QuietOptionsAndClasses) {
    CapturedRun run;
    LocalContext* context = Context(0, kCommandTransfer, nullptr);
    _GlobalContext->options.optMessages = 0;
    EXPECT_EQ(ErrorHandler(kClassRecoverable, kKindError, 136, 136, 0u), kRecover);  // silent, goes on
    _GlobalContext->options.optMessages = 1;
    EXPECT_EQ(ErrorHandler(kClassLanguage, kKindError, 140, 140, 0u), kRecover);  // EXTENDED: silent
    _GlobalContext->options.optLangLvl = VRN_KEY_2003STD;
    EXPECT_EQ(ErrorHandler(kClassLanguage, kKindError, 140, 140, 0u), kRecover);  // now reported
    int32_t iostat;
    context = Context(0, kCommandTransfer, &iostat);
    _GlobalContext->options.optCnvErr = 0;
    EXPECT_EQ(ErrorHandler(kClassConversion, kKindError, 7, 7, 0u), kRecover);
    EXPECT_EQ(context->iostatValue, 7);  // one of the numbers kept under CNVERR=NO
    context->iostatValue = 0;
    EXPECT_EQ(ErrorHandler(kClassConversion, kKindError, 158, 4, 0u), kRecover);
    EXPECT_EQ(context->iostatValue, 0);
    EXPECT_EQ(context->status, 0);
    run.Finish();
    EXPECT_EQ(run.err(), "3714-140\n3714-007\n3714-158\n");
}

TEST_F(ErrorSpecifiers, MessagesGoToDescriptorTwoWhenUnitZeroIsGone) {
    CapturedRun run;
    LocalContext* context = Context(0, kCommandTransfer, nullptr);
    CloseUnit(_GlobalContext, context, FindErrorUnit(_GlobalContext), 0);
    context->msgLine = 9;
    context->msgFile = "x.f90";
    context->msgFileLength = 5;
    EXPECT_EQ(ErrorHandler(kClassRecoverable, kKindError, 209, 209, ArgText(1), "Q", 0u), kRecover);
    context->msgLine = 0;
    run.Finish();
    EXPECT_EQ(run.err(), "\"x.f90\", line 9: 3714-209\n");
}

}  // namespace
}  // namespace vrntest
