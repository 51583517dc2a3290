// STOP, ERROR STOP, PAUSE and the exits: their lines, their statuses, and every byte
// written reaching its file.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cfenv>
#include <cstring>
#include <functional>
#include <string>
#include <thread>

#include "core/context.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class Termination : public RuntimeTest {
protected:
    TempDir dir;
};

StopCode TextCode(const char* text) { return StopCode{reinterpret_cast<uintptr_t>(text), static_cast<uint32_t>(strlen(text))}; }
constexpr StopCode kIntegerCode{0, 1};
constexpr StopCode kNoCode{0, 0};

TEST_F(Termination, StopLinesAndStatuses) {
    EXPECT_EXIT(_vrnStop(&kNoCode, 0), ::testing::ExitedWithCode(0), "^$");
    EXPECT_EXIT(_vrnStop(nullptr, 0), ::testing::ExitedWithCode(0), "^$");
    EXPECT_EXIT(_vrnStop(&kIntegerCode, 7), ::testing::ExitedWithCode(7), "^STOP 7\n$");
    EXPECT_EXIT(
        {
            StopCode done = TextCode("done");
            _vrnStop(&done, 0);
        },
        ::testing::ExitedWithCode(0), "^STOP done\n$");
    EXPECT_EXIT(_vrnErrorStop(&kNoCode, 0, nullptr), ::testing::ExitedWithCode(1), "^$");
    EXPECT_EXIT(_vrnErrorStop(&kIntegerCode, 3, nullptr), ::testing::ExitedWithCode(3), "^ERROR STOP 3\n$");
    EXPECT_EXIT(
        {
            StopCode why = TextCode("bad input");
            _vrnErrorStop(&why, 0, nullptr);
        },
        ::testing::ExitedWithCode(1), "^ERROR STOP bad input\n$");
}

TEST_F(Termination, FloatingPointFlagsAreReportedInTheirFixedOrder) {
    const int32_t report = 1;
    const int32_t noReport = 0;
    EXPECT_EXIT(
        {
            std::feclearexcept(FE_ALL_EXCEPT);
            std::feraiseexcept(FE_INEXACT | FE_OVERFLOW);
            _vrnErrorStop(&kNoCode, 0, &report);
        },
        ::testing::ExitedWithCode(1), "^ERROR STOP\n\\(OVERFLOW, INEXACT\\)\n$");
    EXPECT_EXIT(
        {
            std::feclearexcept(FE_ALL_EXCEPT);
            std::feraiseexcept(FE_INVALID | FE_UNDERFLOW | FE_DIVBYZERO);
            _vrnStopFPSCR(&kIntegerCode, 2, &report);
        },
        ::testing::ExitedWithCode(2), "^STOP 2\n\\(DIV-BY-ZERO, INVALID, UNDERFLOW\\)\n$");
    EXPECT_EXIT(
        {
            std::feclearexcept(FE_ALL_EXCEPT);
            std::feraiseexcept(FE_INVALID);
            _vrnStopFPSCR(&kNoCode, 0, &noReport);  // not asked for
        },
        ::testing::ExitedWithCode(0), "^$");
    EXPECT_EXIT(
        {
            std::feclearexcept(FE_ALL_EXCEPT);
            _vrnStopFPSCR(&kNoCode, 0, &report);  // asked for, but nothing raised
        },
        ::testing::ExitedWithCode(0), "^$");
}

TEST_F(Termination, PauseWithoutATerminalReturns14) {
    std::string input = dir.Path("in.txt");
    close(open(input.c_str(), O_WRONLY | O_CREAT, 0644));
    EXPECT_EXIT(
        {
            freopen(input.c_str(), "r", stdin);
            ResetRuntime();
            StopCode message = TextCode("now");
            int32_t a = _vrnPause(&message, 0);
            int32_t b = _vrnPause(&kIntegerCode, 5);
            int32_t c = _vrnPause(&kNoCode, 0);
            _vrnExit(a == 14 && b == 14 && c == 14 ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "^PAUSE now\nPAUSE 5\nPAUSE\n$");
}

TEST_F(Termination, PauseOnATerminalWaitsForAByte) {
    auto program = [] {
        int terminal = posix_openpt(O_RDWR | O_NOCTTY);
        if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) std::_Exit(2);
        int input = open(ptsname(terminal), O_RDWR | O_NOCTTY);
        if (input < 0 || dup2(input, 0) < 0 || write(terminal, "go\n", 3) != 3) std::_Exit(2);
        ResetRuntime();
        std::_Exit(_vrnPause(&kNoCode, 0));
    };
    EXPECT_EXIT(program(), ::testing::ExitedWithCode(0), "^PAUSE\n$");
}

TEST_F(Termination, NothingWrittenIsLostWhateverTheEnd) {
    // Each way out: STOP, ERROR STOP, _vrnExit, exit_, and with none of them the C
    // library's exit (a return from main) on the main thread or another; three units
    // each, one from NEWUNIT=.
    int32_t nine = 9;
    const std::function<void()> ends[] = {
        [] { _vrnStop(&kIntegerCode, 9); },
        [] { _vrnErrorStop(&kIntegerCode, 9, nullptr); },
        [] { _vrnExit(9); },
        [nine] { exit_(&nine); },
        [] { std::exit(9); },
        [] { std::thread([] { std::exit(9); }).join(); },
    };
    for (const auto& end : ends) {
        std::string out = dir.Path("stdout.txt");
        std::string expected;
        for (int i = 0; i < 300; ++i) expected += " line " + std::to_string(i) + "\n";
        auto program = [&] {
            freopen(out.c_str(), "w", stdout);
            ResetRuntime();
            int32_t newUnit = 0;
            Specifiers a;
            Specifiers b;
            a.Text(VRN_KEY_FILE, dir.Path("a.txt"));
            b.Address(VRN_KEY_NEWUNIT, &newUnit).Text(VRN_KEY_FILE, dir.Path("b.txt"));
            Open(20, a);
            Open(VRN_NEWUNIT_MARKER, b);
            const int32_t units[] = {6, 20, newUnit};
            for (int i = 0; i < 300; ++i) {
                for (int32_t unit : units) Statement(unit, ListWrite).Bytes("line " + std::to_string(i)).End();
            }
            end();
        };
        EXPECT_EXIT(program(), ::testing::ExitedWithCode(9), "");
        for (const char* name : {"stdout.txt", "a.txt", "b.txt"}) EXPECT_EQ(ReadFile(dir.Path(name)), expected) << name;
    }
}

TEST_F(Termination, AbortFlushesFirst) {
    std::string out = dir.Path("stdout.txt");
    EXPECT_EXIT(
        {
            freopen(out.c_str(), "w", stdout);
            ResetRuntime();
            Statement(6, ListWrite).Bytes("before the abort").End();
            abort_();
        },
        ::testing::KilledBySignal(SIGABRT), "");
    EXPECT_EQ(ReadFile(out), " before the abort\n");
}

}  // namespace
}  // namespace vrntest
