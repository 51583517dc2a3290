// Asynchronous unformatted statements, WAIT and PENDING=: the file holds exactly what the
// same statements run synchronously leave; transfers overlap the program; failures are
// reported once, by the statement that waits; nothing queued is lost at the end.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/fortran.h"

namespace vrntest {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(NDEBUG) || UINTPTR_MAX == 0xFFFFFFFFu
constexpr size_t kOverlapBytes = size_t{32} << 20;
#else
constexpr size_t kOverlapBytes = size_t{256} << 20;
#endif

constexpr uint32_t kAsync = VRN_UFMT_ASYNCHRONOUS;

struct Complex16 {
    double re, pad, im, pad2;  // a compiler-made pair: the parts 16 bytes apart
};

// One program, run either with ASYNCHRONOUS='YES' on its unit and its transfers, or
// without: the same statements, and WAITs that the synchronous run skips.
class Program {
public:
    Program(const TempDir& dir, bool async) : dir_(dir), async_(async) {}

    void OpenUnit(int32_t unit, const char* name, uint32_t access, int32_t recl = 0) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, dir_.Path(name)).Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED).Keyword(VRN_KEY_ACCESS, access);
        if (recl > 0) s.Value(VRN_KEY_RECL, static_cast<uintptr_t>(recl));
        if (async_) s.Keyword(VRN_KEY_ASYNCHRONOUS, VRN_KEY_YES);
        ASSERT_EQ(Open(unit, s), 0);
    }
    // A transfer statement with ID= when asynchronous, and its items.
    Unformatted Transfer(int32_t unit, uint32_t flags, int32_t record = 0, void* iostat = nullptr, uint32_t options = 0,
                         Specifiers* extra = nullptr) {
        // The compiler's location comes first; the frame reads no more of a shorter list.
        Specifiers* s = extra != nullptr ? extra : &specifiers_.emplace_back();
        if (extra == nullptr) s->Location("async.f", 1);
        if (async_) s->Address(VRN_KEY_ID, &ids_.emplace_back(-7));
        return Unformatted(unit, async_ ? flags | VRN_FLAG_ASYNCHRONOUS : flags, s, options, iostat, record);
    }
    void Wait(int32_t unit) {
        if (async_) EXPECT_EQ(_vrnIOCmd(unit, VRN_COMMAND_WAIT, nullptr, 0, nullptr), 0);
    }
    const std::deque<int32_t>& ids() const { return ids_; }

private:
    const TempDir& dir_;
    bool async_;
    std::deque<Specifiers> specifiers_;
    std::deque<int32_t> ids_;
};

std::vector<double> Ramp(size_t count, double scale) {
    std::vector<double> values(count);
    for (size_t i = 0; i < count; ++i) values[i] = static_cast<double>(i) * scale;
    return values;
}

// The statements of each case, and what its reads found.
using Script = std::function<std::string(Program&)>;

std::string Sequential(Program& p) {
    p.OpenUnit(20, "f", VRN_KEY_SEQUENTIAL);
    std::vector<double> big = Ramp(100000, 0.25);        // moved in place
    std::vector<int32_t> copied(3000, 7);                // the compiler may not leave it
    Complex16 z{1.5, 0, -2.5, 0};
    int32_t n = 42;
    char text[5] = {'H', 'E', 'L', 'L', 'O'};
    p.Transfer(20, UfmtWrite).Raw(&n, 4, 4, kAsync).Raw(text, 5, 1, 2 | kAsync).End();
    p.Transfer(20, UfmtWrite).Raw(big.data(), 800000, 8, 4 | VRN_UFMT_RUN | kAsync).Raw(&z, 32, 8, 5 | kAsync).End();
    p.Transfer(20, UfmtWrite).End();
    p.Transfer(20, UfmtWrite).Raw(copied.data(), 12000, 4, VRN_UFMT_RUN).Raw(&n, 4, 4, kAsync).End();
    copied.assign(copied.size(), -1);  // after the statement: the file keeps the 7s
    p.Wait(20);
    FileCommand(20, VRN_COMMAND_REWIND);
    // Read back: the first record, then the second.
    int32_t m = 0;
    char back[5] = {};
    std::vector<double> into(100000, -1);
    Complex16 w{};
    p.Transfer(20, UfmtRead).Into(&m, 4, 4, kAsync).Into(back, 5, 1, 2 | kAsync).End();
    p.Transfer(20, UfmtRead).Into(into.data(), 800000, 8, 4 | VRN_UFMT_RUN | kAsync).Into(&w, 32, 8, 5 | kAsync).End();
    p.Wait(20);
    // A write after reads ends the file behind it.
    p.Transfer(20, UfmtWrite).Raw(&n, 4, 4, kAsync).End();
    _vrnIOCmd(20, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
    return std::to_string(m) + std::string(back, 5) + std::to_string(into == big) + std::to_string(w.re) +
           std::to_string(w.im);
}

std::string Direct(Program& p) {
    p.OpenUnit(21, "f", VRN_KEY_DIRECT, 64);
    std::vector<int32_t> full(16, 3);
    int32_t a = 1, b = 2;
    p.Transfer(21, DirectUfmtWrite, 3).Raw(full.data(), 64, 4, VRN_UFMT_RUN | kAsync).End();
    p.Transfer(21, DirectUfmtWrite, 1).Raw(&a, 4, 4, kAsync).End();  // short: filled with blanks
    p.Transfer(21, DirectUfmtWrite, 3).Raw(&b, 4, 4, kAsync).Raw(&a, 4, 4, kAsync).End();
    p.Transfer(21, DirectUfmtWrite, 5).Raw(full.data(), 64, 4, VRN_UFMT_RUN).End();
    int32_t first[2] = {};
    p.Transfer(21, DirectUfmtRead, 3).Into(first, 8, 4, VRN_UFMT_RUN | kAsync).End();
    p.Wait(21);
    _vrnIOCmd(21, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
    return std::to_string(first[0]) + std::to_string(first[1]);
}

std::string Stream(Program& p) {
    p.OpenUnit(22, "f", VRN_KEY_STREAM);
    std::vector<double> big = Ramp(5000, 1.5);
    int32_t n = 9;
    p.Transfer(22, UfmtWrite).Raw(big.data(), 40000, 8, 4 | VRN_UFMT_RUN | kAsync).End();
    Specifiers at;
    at.Location("async.f", 2).Value(VRN_KEY_POS, 40101);
    p.Transfer(22, StreamUfmtWrite, 0, nullptr, 0, &at).Raw(&n, 4, 4, kAsync).End();  // a hole before it
    p.Transfer(22, UfmtWrite).Raw(&n, 4, 4, 0).End();                             // goes on behind
    Specifiers from;
    from.Location("async.f", 3).Value(VRN_KEY_POS, 40101);
    int32_t back[2] = {};
    p.Transfer(22, StreamUfmtRead, 0, nullptr, 0, &from).Into(back, 8, 4, VRN_UFMT_RUN | kAsync).End();
    p.Wait(22);
    _vrnIOCmd(22, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
    return std::to_string(back[0]) + std::to_string(back[1]);
}

class AsynchronousFiles : public RuntimeTest {
protected:
    TempDir syncDir, asyncDir;
};

TEST_F(AsynchronousFiles, LeaveTheBytesAndValuesOfTheSameSynchronousStatements) {
    for (auto [name, script] : {std::pair{"sequential", Script(Sequential)}, std::pair{"direct", Script(Direct)},
                                std::pair{"stream", Script(Stream)}}) {
        SCOPED_TRACE(name);
        Program plain(syncDir, false), overlapped(asyncDir, true);
        std::string plainResult = script(plain);
        std::string overlappedResult = script(overlapped);
        EXPECT_EQ(overlappedResult, plainResult);
        EXPECT_EQ(ReadFile(asyncDir.Path("f")), ReadFile(syncDir.Path("f")));
        for (int32_t id : overlapped.ids()) EXPECT_GT(id, 0);
    }
}

// The file's size as the system sees it now.
int64_t SizeOf(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 ? status.st_size : -1;
}

TEST_F(AsynchronousFiles, AWriteReturnsBeforeItsBytesAreInTheFileAndWaitAfter) {
    Program p(asyncDir, true);
    std::vector<char> data(kOverlapBytes, 'x');
    bool sawPartial = false;
    // Queued work cannot finish in the moment between the statement and the look, but a
    // busy machine might stop the program there: a few tries decide.
    for (int attempt = 0; attempt < 5 && !sawPartial; ++attempt) {
        p.OpenUnit(23, "big", VRN_KEY_STREAM);
        p.Transfer(23, UfmtWrite).Raw(data.data(), static_cast<int32_t>(data.size()), 1, 2 | kAsync).End();
        sawPartial = SizeOf(asyncDir.Path("big")) < static_cast<int64_t>(data.size());
        p.Wait(23);
        EXPECT_EQ(SizeOf(asyncDir.Path("big")), static_cast<int64_t>(data.size()));
        Specifiers deletion;
        deletion.Keyword(VRN_KEY_STATUS, VRN_KEY_DELETE);
        _vrnIOCmd(23, VRN_COMMAND_CLOSE, deletion.list(), 0, nullptr);
    }
    EXPECT_TRUE(sawPartial);
}

TEST_F(AsynchronousFiles, AReadFillsTheArrayOnlyByTheWait) {
    Program p(asyncDir, true);
    std::vector<char> data(kOverlapBytes, 'r');
    p.OpenUnit(24, "big", VRN_KEY_STREAM);
    p.Transfer(24, UfmtWrite).Raw(data.data(), static_cast<int32_t>(data.size()), 1, 2 | kAsync).End();
    bool sawUnfinished = false;
    for (int attempt = 0; attempt < 5 && !sawUnfinished; ++attempt) {
        std::vector<char> into(data.size(), '-');
        Specifiers from;
        from.Location("async.f", 4).Value(VRN_KEY_POS, 1);
        int32_t id = 0;
        from.Address(VRN_KEY_ID, &id);
        Unformatted(24, StreamUfmtRead | VRN_FLAG_ASYNCHRONOUS, &from)
            .Into(into.data(), static_cast<int32_t>(into.size()), 1, 2 | kAsync)
            .End();
        sawUnfinished = into.back() == '-';
        bool pending = false;
        Specifiers ask;
        ask.Value(VRN_KEY_ID, static_cast<uintptr_t>(id)).Address(VRN_KEY_PENDING, &pending, 1);
        _vrnIOCmd(24, VRN_COMMAND_INQUIRE, ask.list(), VRN_OPTION_INQUIRE_BY_UNIT, nullptr);
        Specifiers wait;
        wait.Value(VRN_KEY_ID, static_cast<uintptr_t>(id));
        EXPECT_EQ(_vrnIOCmd(24, VRN_COMMAND_WAIT, wait.list(), 0, nullptr), 0);
        EXPECT_EQ(into.back(), 'r');
        EXPECT_EQ(into.front(), 'r');
    }
    EXPECT_TRUE(sawUnfinished);
}

// WAIT(unit, ID=id) with IOSTAT= and IOMSG=; the IOSTAT= value.
int32_t WaitFor(int32_t unit, int32_t id, std::string* message = nullptr, uint32_t options = 0) {
    int32_t iostat = -99;
    char text[120];
    std::memset(text, ' ', sizeof text);
    Specifiers s;
    s.Address(VRN_KEY_IOMSG, text, sizeof text);
    if (id >= 0) s.Value(VRN_KEY_ID, static_cast<uintptr_t>(id));
    _vrnIOCmd(unit, VRN_COMMAND_WAIT, s.list(), options, &iostat);
    if (message != nullptr) {
        std::string all(text, sizeof text);
        *message = all.substr(0, all.find_last_not_of(' ') + 1);
    }
    return iostat;
}

bool PendingOf(int32_t unit, int32_t id) {
    uint32_t pending = 7;
    Specifiers s;
    s.Address(VRN_KEY_PENDING, &pending, 4);
    if (id >= 0) s.Value(VRN_KEY_ID, static_cast<uintptr_t>(id));
    _vrnIOCmd(unit, VRN_COMMAND_INQUIRE, s.list(), VRN_OPTION_INQUIRE_BY_UNIT, nullptr);
    return pending != 0;
}

TEST_F(AsynchronousFiles, RequestsAreWaitedForInAnyOrderAndEachOnce) {
    Program p(asyncDir, true);
    p.OpenUnit(25, "a", VRN_KEY_STREAM);
    p.OpenUnit(26, "b", VRN_KEY_STREAM);
    std::vector<char> large(8 << 20, 'L');
    char small[3] = {'s', 'm', 'l'};
    p.Transfer(25, UfmtWrite).Raw(large.data(), static_cast<int32_t>(large.size()), 1, 2 | kAsync).End();
    p.Transfer(26, UfmtWrite).Raw(small, 3, 1, 2 | kAsync).End();
    p.Transfer(25, UfmtWrite).Raw(small, 3, 1, 2 | kAsync).End();
    int32_t first = p.ids()[0], second = p.ids()[1], third = p.ids()[2];
    EXPECT_NE(first, second);
    EXPECT_NE(second, third);

    EXPECT_EQ(WaitFor(26, second), 0);
    EXPECT_EQ(WaitFor(25, third), 0);
    EXPECT_EQ(WaitFor(25, first), 0);
    EXPECT_FALSE(PendingOf(25, -1));
    // Each is gone once waited for: a second WAIT does not find it, nor does another unit.
    std::string message;
    EXPECT_EQ(WaitFor(25, first, &message), 224);
    EXPECT_EQ(message.substr(0, 8), "3714-224");
    p.Transfer(26, UfmtWrite).Raw(small, 3, 1, 2 | kAsync).End();
    EXPECT_EQ(WaitFor(25, p.ids().back()), 224);
    EXPECT_EQ(WaitFor(26, p.ids().back()), 0);
    // Nothing outstanding, ID= 0 of a statement that ran synchronously, no unit at all.
    EXPECT_EQ(WaitFor(25, -1), 0);
    EXPECT_EQ(WaitFor(25, 0), 0);
    EXPECT_EQ(WaitFor(77, -1), 0);
    _vrnIOCmd(25, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
    EXPECT_EQ(ReadFile(asyncDir.Path("a")), std::string(large.begin(), large.end()) + "sml");
}

TEST_F(AsynchronousFiles, PendingIsTrueWhileATransferRunsAndItsInquiryWaitsOnceDone) {
    Program p(asyncDir, true);
    p.OpenUnit(27, "p", VRN_KEY_STREAM);
    std::vector<char> data(kOverlapBytes, 'p');
    // On a loaded machine the transfer can finish before the first inquiry is made; a few
    // attempts make sure one is seen running.
    bool everPending = false;
    for (int attempt = 0; attempt < 5 && !everPending; ++attempt) {
        p.Transfer(27, UfmtWrite).Raw(data.data(), static_cast<int32_t>(data.size()), 1, 2 | kAsync).End();
        int32_t id = p.ids().back();
        everPending = PendingOf(27, id);
        while (PendingOf(27, id)) usleep(1000);
        // The inquiry that found it done performed the wait: the ID is gone.
        EXPECT_EQ(WaitFor(27, id), 224);
        EXPECT_EQ(SizeOf(asyncDir.Path("p")), static_cast<int64_t>(data.size()) * (attempt + 1));
    }
    EXPECT_TRUE(everPending);
}

TEST_F(AsynchronousFiles, AReadPastTheEndIsReportedByTheWait) {
    Program p(asyncDir, true);
    p.OpenUnit(28, "e", VRN_KEY_STREAM);
    char text[4] = {'a', 'b', 'c', 'd'};
    p.Transfer(28, UfmtWrite).Raw(text, 4, 1, 2 | kAsync).End();
    std::vector<char> into(10000, '-');
    Specifiers from;
    from.Location("async.f", 5).Value(VRN_KEY_POS, 1);
    p.Transfer(28, StreamUfmtRead, 0, nullptr, 0, &from).Into(into.data(), 10000, 1, 2 | kAsync).End();
    std::string message;
    EXPECT_EQ(WaitFor(28, p.ids().back(), &message, VRN_OPTION_END), -1);
    EXPECT_EQ(message.substr(0, 8), "3714-001");
    EXPECT_EQ(std::string(into.data(), 5), "abcd-");
    // Reported once: the unit goes on.
    EXPECT_EQ(WaitFor(28, -1), 0);
    EXPECT_EQ(Unformatted(28, UfmtWrite).Raw(text, 4, 1, 2).End(), 0);

    // A direct record beyond the file's end.
    p.OpenUnit(29, "d", VRN_KEY_DIRECT, 8);
    p.Transfer(29, DirectUfmtWrite, 1).Raw(text, 4, 1, 2 | kAsync).End();
    p.Transfer(29, DirectUfmtRead, 4).Into(into.data(), 8, 1, 2 | kAsync).End();
    EXPECT_EQ(WaitFor(29, -1, &message), 1);
    EXPECT_EQ(message.substr(0, 8), "3714-001");
}

std::string Reversed(std::string bytes) { return std::string(bytes.rbegin(), bytes.rend()); }

template <class T>
std::string Swapped(T value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return Reversed(bytes);
}

TEST_F(AsynchronousFiles, AStatementOnAUnitThatSwapsRunsSynchronouslyWithIdZero) {
    setenv("VRNRTEOPTS", "ufmt_littleendian=31", 1);
    ResetRuntime();
    Program p(asyncDir, true);
    p.OpenUnit(31, "s", VRN_KEY_SEQUENTIAL);
    unsetenv("VRNRTEOPTS");
    int32_t n = 0x01020304;
    Specifiers s;
    int32_t id = -5;
    s.Location("async.f", 6).Address(VRN_KEY_ID, &id);
    EXPECT_EQ(Unformatted(31, UfmtWrite | VRN_FLAG_ASYNCHRONOUS, &s).Raw(&n, 4, 4, kAsync).End(), 0);
    EXPECT_EQ(id, 0);
    EXPECT_EQ(WaitFor(31, 0), 0);
    _vrnIOCmd(31, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
    EXPECT_EQ(ReadFile(asyncDir.Path("s")), Swapped(int32_t{4}) + Swapped(n) + Swapped(int32_t{4}));
}

TEST_F(AsynchronousFiles, ASynchronousStatementAndCloseWaitFirst) {
    Program p(asyncDir, true);
    p.OpenUnit(32, "w", VRN_KEY_SEQUENTIAL);
    std::vector<double> values = Ramp(200000, 3.0);
    p.Transfer(32, UfmtWrite).Raw(values.data(), 1600000, 8, 4 | VRN_UFMT_RUN | kAsync).End();
    FileCommand(32, VRN_COMMAND_REWIND);  // waits, and leaves asynchronous mode
    std::vector<double> back(200000);
    EXPECT_EQ(Unformatted(32, UfmtRead).Into(back.data(), 1600000, 8, 4 | VRN_UFMT_RUN).End(), 0);
    EXPECT_EQ(back, values);
    p.Transfer(32, UfmtWrite).Raw(values.data(), 1600000, 8, 4 | VRN_UFMT_RUN | kAsync).End();
    _vrnIOCmd(32, VRN_COMMAND_CLOSE, nullptr, 0, nullptr);
    EXPECT_EQ(SizeOf(asyncDir.Path("w")), 2 * (1600000 + 8));
}

// In a child process: `body` runs, and its exit status is the child's. The C library
// runs asynchronous transfers on threads that stay idle for a second after their last
// one; a child made before they leave believes in threads it does not have, and its own
// transfers would wait for them forever.
int RunChild(const std::function<int()>& body) {
    usleep(1500000);
    pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

TEST_F(AsynchronousFiles, AFailedWriteIsReportedByTheWaitWithItsSystemError) {
    std::string path = asyncDir.Path("limited");
    int status = RunChild([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        struct rlimit limit = {1 << 20, 1 << 20};
        setrlimit(RLIMIT_FSIZE, &limit);
        Program p(asyncDir, true);
        p.OpenUnit(33, "limited", VRN_KEY_STREAM);
        std::vector<char> data(4 << 20, 'f');
        p.Transfer(33, UfmtWrite).Raw(data.data(), static_cast<int32_t>(data.size()), 1, 2 | kAsync).End();
        std::string message;
        int32_t iostat = WaitFor(33, -1, &message);
        if (iostat != 178 || message.substr(0, 8) != "3714-178") return 1;
        // Once: the next wait finds nothing, and the unit is still there to close.
        if (WaitFor(33, -1) != 0) return 2;
        return _vrnIOCmd(33, VRN_COMMAND_CLOSE, nullptr, 0, nullptr) == 0 ? 0 : 3;
    });
    EXPECT_EQ(status, 0);
}

TEST_F(AsynchronousFiles, AProgramThatEndsWithRequestsOutstandingLeavesCompleteFiles) {
    std::vector<double> values = Ramp(1 << 20, 0.5);
    for (int ending = 0; ending < 3; ++ending) {
        SCOPED_TRACE(ending);
        int status = RunChild([&] {
            Program p(asyncDir, true);
            p.OpenUnit(34, "end", VRN_KEY_SEQUENTIAL);
            for (int i = 0; i < 4; ++i) {
                p.Transfer(34, UfmtWrite).Raw(values.data(), 8 << 20, 8, 4 | VRN_UFMT_RUN | kAsync).End();
            }
            if (ending == 0) std::exit(0);             // return from the main program
            if (ending == 1) _vrnStop(nullptr, 0);     // STOP
            int32_t code = 0;
            exit_(&code);                              // CALL EXIT
            return 1;
        });
        EXPECT_EQ(status, 0);
        std::string file = ReadFile(asyncDir.Path("end"));
        ASSERT_EQ(file.size(), 4u * ((8u << 20) + 8));
        EXPECT_EQ(std::memcmp(file.data() + 4, values.data(), 8 << 20), 0);
        EXPECT_EQ(std::memcmp(file.data() + 3 * ((8 << 20) + 8) + 4, values.data(), 8 << 20), 0);
    }
}

}  // namespace
}  // namespace vrntest
