// Tracebacks and fatal signals, each in a child process whose standard error the test
// reads: the frames' functions and lines against markers in this file, the message, the
// exit status, and the files the program had written.
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/fortran.h"
#include "vrn90.h"

extern "C" int traced_library_entry(int depth);
extern "C" int stripped_library_entry(int x);

// Kept out of line, and no tail calls: each frame stays on the stack.
#define KEEP_FRAME() __asm__ __volatile__("" ::: "memory")

// The scenarios, outside any namespace so that their names are plain.
__attribute__((noinline)) static void TraceThree() {
    vr__trbk();  // MARK: three
    KEEP_FRAME();
}
__attribute__((noinline)) static void TraceTwo() {
    TraceThree();  // MARK: two
    KEEP_FRAME();
}
__attribute__((noinline)) static void TraceOne() {
    TraceTwo();  // MARK: one
    KEEP_FRAME();
}

volatile double zero = 0.0;
volatile double quotient = 0.0;
__attribute__((noinline)) static double Divide(double x) {
    quotient = x / zero;  // MARK: divide
    KEEP_FRAME();
    return quotient;
}

// Not null, which the undefined-behaviour sanitizer would catch first: the first page.
int* volatile nowhere = reinterpret_cast<int*>(16);
__attribute__((noinline)) static int Recurse(int depth) {
    volatile char frame[512];
    frame[0] = static_cast<char>(depth);
    return Recurse(depth + 1) + frame[0];  // MARK: recurse
}

__attribute__((noinline)) static void OpenMissingFile(const std::string& path) {
    vrntest::Specifiers s;
    s.Text(VRN_KEY_FILE, path).Keyword(VRN_KEY_STATUS, VRN_KEY_OLD);
    vrntest::Open(41, s);  // MARK: open
    KEEP_FRAME();
}

namespace {

// The line of this file that carries "MARK: name".
int MarkedLine(const std::string& name) {
    std::ifstream source(__FILE__);
    std::string line;
    for (int number = 1; std::getline(source, line); ++number) {
        if (line.find("// MARK: " + name) != std::string::npos) return number;
    }
    ADD_FAILURE() << "no mark " << name;
    return -1;
}

struct Outcome {
    int status = -1;  // the exit status, or 128 + the signal
    std::string err;
    std::vector<std::string> lines;
};

// Runs `body` in a child whose standard error goes to a file; the child ends with status
// 0 when `body` returns.
Outcome RunChild(const std::function<void()>& body) {
    vrntest::TempDir dir;
    std::string errPath = dir.Path("stderr");
    fflush(nullptr);
    pid_t child = fork();
    if (child == 0) {
        int fd = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        dup2(fd, 2);
        close(fd);
        // The sanitizers' own handlers give way: the program chooses the run-time's.
        for (int signal : {SIGFPE, SIGSEGV, SIGBUS, SIGILL}) ::signal(signal, SIG_DFL);
        body();
        _exit(0);
    }
    int raw = 0;
    waitpid(child, &raw, 0);
    Outcome outcome;
    outcome.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    outcome.err = vrntest::ReadFile(errPath);
    std::istringstream lines(outcome.err);
    for (std::string line; std::getline(lines, line);) outcome.lines.push_back(line);
    return outcome;
}

// "#N  0xADDRESS in FUNCTION at FILE:LINE" for this file.
std::string Frame(int number, const std::string& function, const std::string& file, int line) {
    return "#" + std::to_string(number) + "  0x[0-9a-f]+ in " + function + " at .*" + file + ":" +
           std::to_string(line);
}

void ExpectLine(const Outcome& outcome, size_t index, const std::string& pattern) {
    ASSERT_LT(index, outcome.lines.size()) << outcome.err;
    EXPECT_TRUE(std::regex_match(outcome.lines[index], std::regex(pattern)))
        << "line " << index << ": " << outcome.lines[index] << "\nexpected: " << pattern << "\n" << outcome.err;
}

void ExpectThreeFrames(const Outcome& outcome, size_t first) {
    ExpectLine(outcome, first, Frame(0, "TraceThree\\(\\)", "traceback_test.cpp", MarkedLine("three")));
    ExpectLine(outcome, first + 1, Frame(1, "TraceTwo\\(\\)", "traceback_test.cpp", MarkedLine("two")));
    ExpectLine(outcome, first + 2, Frame(2, "TraceOne\\(\\)", "traceback_test.cpp", MarkedLine("one")));
}

TEST(Traceback, ShowsTheCallersFramesWithFunctionsAndLines) {
    Outcome outcome = RunChild([] { TraceOne(); });
    EXPECT_EQ(outcome.status, 0);
    ExpectThreeFrames(outcome, 0);
    // The test's own frames follow; the run-time's (vr__trbk and below) are left out.
    EXPECT_GT(outcome.lines.size(), 3u);
    EXPECT_EQ(outcome.err.find("vr__trbk"), std::string::npos);
}

TEST(Traceback, WorksInAThread) {
    Outcome outcome = RunChild([] { std::thread(TraceOne).join(); });
    EXPECT_EQ(outcome.status, 0);
    ExpectThreeFrames(outcome, 0);
}

TEST(Traceback, ReadsTheLinesOfASharedObject) {
    Outcome outcome = RunChild([] { traced_library_entry(2); });
    EXPECT_EQ(outcome.status, 0);
    std::ifstream source(VRN_TRACED_LIBRARY_SOURCE);
    int traceLine = 0, recursionLine = 0;
    std::string line;
    for (int number = 1; std::getline(source, line); ++number) {
        if (line.find("TRACE: library") != std::string::npos) traceLine = number;
        if (line.find("traced_library_entry(depth - 1)") != std::string::npos) recursionLine = number;
    }
    ExpectLine(outcome, 0, Frame(0, "traced_library_entry", "traced_library.cpp", traceLine));
    ExpectLine(outcome, 1, Frame(1, "traced_library_entry", "traced_library.cpp", recursionLine));
    ExpectLine(outcome, 2, Frame(2, "traced_library_entry", "traced_library.cpp", recursionLine));
}

TEST(Traceback, NamesAStrippedObjectAndItsExportedFunctionsOnly) {
    Outcome outcome = RunChild([] { stripped_library_entry(1); });
    EXPECT_EQ(outcome.status, 0);
    ExpectLine(outcome, 0, "#0  0x[0-9a-f]+ in \\?\\? \\(.*libdiag_stripped_library\\.so\\)");
    ExpectLine(outcome, 1, "#1  0x[0-9a-f]+ in stripped_library_entry \\(.*libdiag_stripped_library\\.so\\)");
}

TEST(Traceback, NamesTheObjectWhoseFileIsGone) {
    vrntest::TempDir dir;
    std::string copy = dir.Path("vanished.so");
    Outcome outcome = RunChild([&] {
        Dl_info info;
        if (dladdr(reinterpret_cast<void*>(&traced_library_entry), &info) == 0) _exit(2);
        std::ifstream in(info.dli_fname, std::ios::binary);
        std::ofstream(copy, std::ios::binary) << in.rdbuf();
        void* handle = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) _exit(3);
        std::remove(copy.c_str());
        auto entry = reinterpret_cast<int (*)(int)>(dlsym(handle, "traced_library_entry"));
        if (entry == nullptr) _exit(4);
        entry(0);
    });
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    ExpectLine(outcome, 0, "#0  0x[0-9a-f]+ in \\?\\? \\(.*vanished\\.so\\)");
}

#ifdef VRN_FORTRAN_TRACE
// A gfortran-compiled program: its module procedure is shown as module::name.
TEST(Traceback, NamesFortranModuleProceduresAndTheirLines) {
    std::string out = vrntest::ProgramOutput(std::string(VRN_FORTRAN_TRACE) + " 2>&1");
    std::string source = VRN_FORTRAN_TRACE_SOURCE;
    EXPECT_TRUE(std::regex_search(out, std::regex("#0  0x[0-9a-f]+ in solver::step at " + source + ":9\n"
                                                  "#1  0x[0-9a-f]+ in solver::step at " + source + ":7\n"
                                                  "#2  0x[0-9a-f]+ in solver::step at " + source + ":7\n"
                                                  "#3  0x[0-9a-f]+ in MAIN__ at " + source + ":16\n")))
        << out;
}
#endif

TEST(Traceback, FollowsAnErrorThatEndsTheProgramUnderErrtrace) {
    vrntest::TempDir dir;
    std::string missing = dir.Path("missing.dat");
    Outcome outcome = RunChild([&] {
        vrntest::ResetRuntime();
        vrntest::UseCatalogue(vrntest::Catalogue::Built);
        vrntest::SetOptions("errtrace=yes");
        OpenMissingFile(missing);
    });
    EXPECT_EQ(outcome.status, 1);
    ASSERT_FALSE(outcome.lines.empty());
    EXPECT_NE(outcome.lines[0].find("3714-006"), std::string::npos) << outcome.err;
    // The program's frames follow, the run-time's are not shown: the first is the support
    // library's Open, unless it only passed the call on, then the scenario.
    ASSERT_GE(outcome.lines.size(), 3u);
    size_t scenario = outcome.lines[1].find("vrntest::Open") != std::string::npos ? 2 : 1;
    ExpectLine(outcome, scenario,
               Frame(static_cast<int>(scenario) - 1, "OpenMissingFile\\(std::.*\\)", "traceback_test.cpp",
                     MarkedLine("open")));
}

TEST(Traceback, IsNotPrintedWithoutErrtrace) {
    vrntest::TempDir dir;
    std::string missing = dir.Path("missing.dat");
    Outcome outcome = RunChild([&] {
        vrntest::ResetRuntime();
        vrntest::UseCatalogue(vrntest::Catalogue::Built);
        OpenMissingFile(missing);
    });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err.find("#0 "), std::string::npos) << outcome.err;
}

TEST(TrapHandlers, ReportADivisionByZeroWithItsLineAndKeepEveryRecord) {
    vrntest::TempDir dir;
    std::string path = dir.Path("records.txt");
    Outcome outcome = RunChild([&] {
        vrntest::ResetRuntime();
        vrntest::UseCatalogue(vrntest::Catalogue::Built);
        vrntest::Specifiers s;
        s.Text(VRN_KEY_FILE, path);
        vrntest::Open(42, s);
        for (int i = 1; i <= 100; ++i) vrntest::ListWriter(42).Item(i).End();  // buffered
        EXPECT_EQ(vr__trap_install(), 4);
        int32_t traps = VRN_FPE_INVALID | VRN_FPE_DIVIDE_BY_ZERO;
        vr__fpe_trap(&traps);
        Divide(1.0);
    });
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    ASSERT_FALSE(outcome.lines.empty());
    EXPECT_TRUE(std::regex_match(outcome.lines[0],
                                 std::regex("3714-242 The program received signal SIGFPE, floating-point exception: "
                                            "division by zero \\(flags raised: division by zero\\), at 0x[0-9a-f]+ in "
                                            "Divide\\(double\\) at .*traceback_test.cpp:" +
                                            std::to_string(MarkedLine("divide")) + "\\.")))
        << outcome.err;
    ExpectLine(outcome, 1, Frame(0, "Divide\\(double\\)", "traceback_test.cpp", MarkedLine("divide")));
    std::string expected;
    for (int i = 1; i <= 100; ++i) expected += " " + std::to_string(i) + "\n";
    EXPECT_EQ(vrntest::ReadFile(path), expected);
}

TEST(TrapHandlers, ReportAStackOverflowOnTheirOwnStack) {
    Outcome outcome = RunChild([] {
        vr__trap_install();
        Recurse(0);
    });
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    ASSERT_FALSE(outcome.lines.empty());
    EXPECT_NE(outcome.lines[0].find("signal SIGSEGV, invalid memory reference to 0x"), std::string::npos);
    EXPECT_NE(outcome.lines[0].find("(stack overflow)"), std::string::npos) << outcome.lines[0];
    ExpectLine(outcome, 1, "#0  0x[0-9a-f]+ in Recurse\\(int\\) at .*traceback_test.cpp:[0-9]+");
    // The recursion is told once, with its count, not frame by frame.
    EXPECT_NE(outcome.err.find("... the frame above"), std::string::npos) << outcome.err;
    EXPECT_LT(outcome.lines.size(), 10u);
}

TEST(TrapHandlers, ReportAnInvalidReference) {
    Outcome outcome = RunChild([] {
        vr__trap_install();
        *nowhere = 1;
    });
    EXPECT_EQ(outcome.status, 1);
    ASSERT_FALSE(outcome.lines.empty());
    EXPECT_TRUE(std::regex_search(
        outcome.lines[0], std::regex("^3714-241 The program received signal SIGSEGV, invalid memory reference to 0x0+10, at ")))
        << outcome.err;
}

void ProgramHandler(int) { _exit(77); }

TEST(TrapHandlers, LeaveTheProgramsOwnHandlers) {
    Outcome outcome = RunChild([] {
        ::signal(SIGSEGV, ProgramHandler);
        if (vr__trap_install() != 3) _exit(2);
        *nowhere = 1;
    });
    EXPECT_EQ(outcome.status, 77) << outcome.err;
    EXPECT_TRUE(outcome.err.empty()) << outcome.err;
}

TEST(TrapHandlers, ChooseTheExceptionsThatTrap) {
    Outcome outcome = RunChild([] {
        int32_t overflowOnly = VRN_FPE_OVERFLOW;
        vr__fpe_trap(&overflowOnly);
        int32_t none = 0;
        if (vr__fpe_trap(&none) != VRN_FPE_OVERFLOW) _exit(3);
        // Nothing traps now: the quotient is an infinity.
        if (!std::isinf(Divide(1.0))) _exit(4);
    });
    EXPECT_EQ(outcome.status, 0) << outcome.err;
}

}  // namespace
