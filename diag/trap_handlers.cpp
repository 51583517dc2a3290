// The handlers for the signals that end a program by a fault: SIGFPE, SIGSEGV, SIGBUS and
// SIGILL. Each reports the signal (for SIGFPE the floating-point exception, from the
// signal's code and the processor's status register), where it struck, the traceback,
// flushes every unit and ends the program with status 1. They run on an alternate stack,
// so that a stack overflow is reported too; a signal during the report ends the program
// at once, and an alarm ends a report or clean-up that hangs.
#include <signal.h>
#include <sys/prctl.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cfenv>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "core/float_status.h"
#include "diag/diag.h"
#include "diag/safe_text.h"
#include "vrn90.h"

namespace diag {
namespace {

constexpr int kMessageSignal = 241;
constexpr int kMessageFloatingPoint = 242;
constexpr int kMessageSignalDuringReport = 243;
// The catalogue's texts, for a handler that finds no catalogue open: opening one
// allocates, which a signal handler may not.
constexpr const char* kTextSignal = "3714-241 The program received signal $C1, $C2, at $C3.\n";
constexpr const char* kTextFloatingPoint =
    "3714-242 The program received signal SIGFPE, floating-point exception: $C1 (flags raised: $C2), at $C3.\n";
constexpr const char* kTextSignalDuringReport =
    "3714-243 Signal $C1 arrived while signal $C2 was being reported; the program ends.\n";

constexpr int kTrappedSignals[] = {SIGFPE, SIGSEGV, SIGBUS, SIGILL};
constexpr unsigned kCleanupSeconds = 10;
constexpr size_t kAlternateStackSize = 256 * 1024;

alignas(16) char alternateStack[kAlternateStackSize];
std::atomic<int> signalBeingReported{0};

const char* SignalName(int signal) {
    switch (signal) {
    case SIGFPE: return "SIGFPE";
    case SIGSEGV: return "SIGSEGV";
    case SIGBUS: return "SIGBUS";
    case SIGILL: return "SIGILL";
    case SIGALRM: return "SIGALRM";
    default: return "?";
    }
}

// The exception bits of VRN_FPE_*, in the order of the report.
struct ExceptionName {
    int32_t bit;
    const char* name;
};
constexpr ExceptionName kExceptionNames[] = {
    {VRN_FPE_INVALID, "invalid operation"}, {VRN_FPE_DIVIDE_BY_ZERO, "division by zero"},
    {VRN_FPE_OVERFLOW, "overflow"},         {VRN_FPE_UNDERFLOW, "underflow"},
    {VRN_FPE_INEXACT, "inexact result"},
};

// The processor's floating-point status at the signal: the flags raised, as VRN_FPE_ bits.
struct FloatStatus {
    bool known = false;
    int32_t raised = 0;
    int32_t enabled = 0;
};

#if defined(__x86_64__)
uintptr_t ContextPc(const ucontext_t* context) { return static_cast<uintptr_t>(context->uc_mcontext.gregs[REG_RIP]); }
uintptr_t ContextSp(const ucontext_t* context) { return static_cast<uintptr_t>(context->uc_mcontext.gregs[REG_RSP]); }
FloatStatus ContextFloatStatus(const ucontext_t* context) {
    FloatStatus status;
    if (context->uc_mcontext.fpregs == nullptr) return status;
    uint32_t mxcsr = context->uc_mcontext.fpregs->mxcsr;
    // Flags in bits 0 (invalid), 2 (zero divide), 3 (overflow), 4 (underflow), 5
    // (precision); their masks seven places up.
    constexpr int kBits[][2] = {{0, VRN_FPE_INVALID}, {2, VRN_FPE_DIVIDE_BY_ZERO}, {3, VRN_FPE_OVERFLOW},
                                {4, VRN_FPE_UNDERFLOW}, {5, VRN_FPE_INEXACT}};
    for (const auto& bit : kBits) {
        if (mxcsr & (1u << bit[0])) status.raised |= bit[1];
        if (!(mxcsr & (1u << (bit[0] + 7)))) status.enabled |= bit[1];
    }
    status.known = true;
    return status;
}
#elif defined(__powerpc__) && !defined(__powerpc64__)
uintptr_t ContextPc(const ucontext_t* context) { return context->uc_mcontext.uc_regs->gregs[32]; }
uintptr_t ContextSp(const ucontext_t* context) { return context->uc_mcontext.uc_regs->gregs[1]; }
FloatStatus FpscrStatus(uint32_t fpscr) {
    FloatStatus status;
    // Exception bits: VX 0x20000000, OX 0x10000000, UX 0x08000000, ZX 0x04000000, XX
    // 0x02000000; enables VE 0x80, OE 0x40, UE 0x20, ZE 0x10, XE 0x08.
    constexpr uint32_t kBits[][3] = {{0x20000000u, 0x80u, VRN_FPE_INVALID}, {0x04000000u, 0x10u, VRN_FPE_DIVIDE_BY_ZERO},
                                     {0x10000000u, 0x40u, VRN_FPE_OVERFLOW}, {0x08000000u, 0x20u, VRN_FPE_UNDERFLOW},
                                     {0x02000000u, 0x08u, VRN_FPE_INEXACT}};
    for (const auto& bit : kBits) {
        if (fpscr & bit[0]) status.raised |= static_cast<int32_t>(bit[2]);
        if (fpscr & bit[1]) status.enabled |= static_cast<int32_t>(bit[2]);
    }
    status.known = true;
    return status;
}
FloatStatus ContextFloatStatus(const ucontext_t* context) {
    // The FPSCR is the low word of the image after the 32 registers.
    double image = context->uc_mcontext.uc_regs->fpregs.fpscr;
    uint64_t bits;
    std::memcpy(&bits, &image, sizeof bits);
    return FpscrStatus(static_cast<uint32_t>(bits));
}
#else
uintptr_t ContextPc(const ucontext_t*) { return 0; }
uintptr_t ContextSp(const ucontext_t*) { return 0; }
FloatStatus ContextFloatStatus(const ucontext_t*) { return {}; }
#endif

void AppendExceptions(SafeText& text, int32_t bits) {
    bool first = true;
    for (const ExceptionName& exception : kExceptionNames) {
        if (!(bits & exception.bit)) continue;
        if (!first) text.Text(", ");
        text.Text(exception.name);
        first = false;
    }
    if (first) text.Text("none");
}

// Which floating-point exception trapped: the signal's code says, else the status's
// flags that are both raised and enabled.
void DescribeFloatingPoint(SafeText& text, const siginfo_t* info, const FloatStatus& status) {
    switch (info->si_code) {
    case FPE_FLTINV: text.Text("invalid operation"); return;
    case FPE_FLTDIV: text.Text("division by zero"); return;
    case FPE_FLTOVF: text.Text("overflow"); return;
    case FPE_FLTUND: text.Text("underflow"); return;
    case FPE_FLTRES: text.Text("inexact result"); return;
    case FPE_INTDIV: text.Text("integer division by zero"); return;
    case FPE_INTOVF: text.Text("integer overflow"); return;
    case FPE_FLTSUB: text.Text("subscript out of range"); return;
    default: break;
    }
    if (status.known && (status.raised & status.enabled) != 0) {
        AppendExceptions(text, status.raised & status.enabled);
    } else {
        text.Text("unknown");
    }
}

void DescribeFault(SafeText& text, int signal, const siginfo_t* info, uintptr_t sp) {
    auto address = reinterpret_cast<uintptr_t>(info->si_addr);
    switch (signal) {
    case SIGSEGV: {
        text.Text("invalid memory reference to ").Address(address);
        uintptr_t distance = address > sp ? address - sp : sp - address;
        if (sp != 0 && distance < 65536) text.Text(" (stack overflow)");
        break;
    }
    case SIGBUS: text.Text("bus error at ").Address(address); break;
    case SIGILL: text.Text("illegal instruction"); break;
    default: text.Text("fatal signal"); break;
    }
}

// A message of the catalogue, with text arguments, on descriptor 2.
void WriteMessage(int message, const char* builtIn, const char* first, const char* second, const char* third) {
    const char* text = CatalogTextIfOpen(message);
    if (text == nullptr) text = builtIn;
    MessageArgument arguments[3] = {{ArgText(1), 0, first}, {ArgText(2), 0, second}, {ArgText(3), 0, third}};
    char line[2048];
    int32_t length = SubstituteArguments(line, sizeof line, text, arguments, 3);
    ssize_t ignored = ::write(2, line, static_cast<size_t>(length));
    (void)ignored;
}

void EndAfterCleanupHangs(int) { ::_exit(1); }

#if defined(__powerpc__) && !defined(__powerpc64__)
// The stack of the interrupted code by its back chain, which every frame of this ABI
// keeps: word 0 of a frame is the caller's frame, and word 1 of that the return address
// its callee saved. (The unwinder cannot pass every kernel's, or qemu's, signal frame.)
int SignalFrames(const ucontext_t* context, const Frame& fault, Frame* frames, int capacity) {
    int count = 0;
    frames[count++] = fault;
    uintptr_t frame = context->uc_mcontext.uc_regs->gregs[1];
    while (count < capacity && frame != 0 && frame % 8 == 0) {
        uintptr_t caller = *reinterpret_cast<const uint32_t*>(frame);
        if (caller <= frame) break;  // the chain only grows toward the stack's base
        uintptr_t returnAddress = reinterpret_cast<const uint32_t*>(caller)[1];
        if (returnAddress == 0) break;
        frames[count++] = Frame{returnAddress, false};
        frame = caller;
    }
    return count;
}
#else
// The unwinder passes the signal frame: the frames above the one that faulted are the
// handler's own.
int SignalFrames(const ucontext_t*, const Frame& fault, Frame* frames, int capacity) {
    int count = CaptureFrames(frames, capacity);
    int first = 0;
    while (first < count && frames[first].pc != fault.pc) ++first;
    if (first == count) {
        frames[0] = fault;
        return 1;
    }
    for (int f = first; f < count; ++f) frames[f - first] = frames[f];
    frames[0].exact = true;
    return count - first;
}
#endif

void ReportAndEnd(int signal, siginfo_t* info, void* rawContext) {
    int expected = 0;
    if (!signalBeingReported.compare_exchange_strong(expected, signal)) {
        // The report itself failed, or another thread faulted meanwhile: no second report.
        WriteMessage(kMessageSignalDuringReport, kTextSignalDuringReport, SignalName(signal), SignalName(expected),
                     "");
        ::_exit(1);
    }
    // A report or clean-up that cannot finish (a lock held by the code that faulted) is cut
    // short, and the program still ends with its status.
    struct sigaction alarmAction {};
    alarmAction.sa_handler = EndAfterCleanupHangs;
    sigaction(SIGALRM, &alarmAction, nullptr);
    alarm(kCleanupSeconds);

    const auto* context = static_cast<const ucontext_t*>(rawContext);
    uintptr_t pc = ContextPc(context);
    Frame fault{pc != 0 ? pc : reinterpret_cast<uintptr_t>(info->si_addr), true};

    char where[1200];
    DescribeAddress(fault, where, sizeof where);
    char what[256];
    SafeText description(what, sizeof what - 1);
    if (signal == SIGFPE) {
        FloatStatus status = ContextFloatStatus(context);
        DescribeFloatingPoint(description, info, status);
        what[description.size()] = '\0';
        char flags[128];
        SafeText raised(flags, sizeof flags - 1);
        if (status.known) {
            AppendExceptions(raised, status.raised);
        } else {
            raised.Text("unknown");
        }
        flags[raised.size()] = '\0';
        WriteMessage(kMessageFloatingPoint, kTextFloatingPoint, what, flags, where);
    } else {
        DescribeFault(description, signal, info, ContextSp(context));
        what[description.size()] = '\0';
        WriteMessage(kMessageSignal, kTextSignal, SignalName(signal), what, where);
    }

    Frame frames[kMaxFrames];
    int count = SignalFrames(context, fault, frames, kMaxFrames);
    PrintFrames(frames, count, 2, false);

    // Every unit's output is flushed, and every asynchronous transfer completed.
    RTECleanup();
    ::_exit(1);
}

void InstallAlternateStack() {
    stack_t current{};
    if (sigaltstack(nullptr, &current) == 0 && !(current.ss_flags & SS_DISABLE)) return;
    stack_t ours{};
    ours.ss_sp = alternateStack;
    ours.ss_size = sizeof alternateStack;
    sigaltstack(&ours, nullptr);
}

#if defined(__powerpc__) && !defined(__powerpc64__) && !defined(__NO_FPRS__)
uint32_t ReadFpscr() {
    double image;
    __asm__ __volatile__("mffs %0" : "=f"(image));
    uint64_t bits;
    std::memcpy(&bits, &image, sizeof bits);
    return static_cast<uint32_t>(bits);
}
#endif

}  // namespace
}  // namespace diag

VRN_EXPORT int32_t vr__trap_install(void) {
    diag::InstallAlternateStack();
    int32_t installed = 0;
    for (int signal : diag::kTrappedSignals) {
        struct sigaction current {};
        if (sigaction(signal, nullptr, &current) != 0) continue;
        // A handler the program installed, or an ignored signal, stays as it is.
        bool isDefault = !(current.sa_flags & SA_SIGINFO) && current.sa_handler == SIG_DFL;
        bool isOurs = (current.sa_flags & SA_SIGINFO) && current.sa_sigaction == diag::ReportAndEnd;
        if (isOurs) {
            ++installed;
            continue;
        }
        if (!isDefault) continue;
        struct sigaction action {};
        action.sa_sigaction = diag::ReportAndEnd;
        sigemptyset(&action.sa_mask);
        // SA_NODEFER: a fault inside the report enters the handler again, which ends the
        // program, rather than being held back until the report is done.
        action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER | SA_RESTART;
        if (sigaction(signal, &action, nullptr) == 0) ++installed;
    }
    return installed;
}

VRN_EXPORT int32_t vr__trap_install_(void) { return vr__trap_install(); }

VRN_EXPORT int32_t vr__fpe_trap(const int32_t* exceptions) {
    int32_t wanted = exceptions != nullptr ? *exceptions & 31 : 0;
    int32_t before = 0;
#if defined(__x86_64__)
    uint32_t mxcsr = __builtin_ia32_stmxcsr();
    constexpr int kBits[][2] = {{0, VRN_FPE_INVALID}, {2, VRN_FPE_DIVIDE_BY_ZERO}, {3, VRN_FPE_OVERFLOW},
                                {4, VRN_FPE_UNDERFLOW}, {5, VRN_FPE_INEXACT}};
    for (const auto& bit : kBits) {
        uint32_t mask = 1u << (bit[0] + 7);
        if (!(mxcsr & mask)) before |= bit[1];
        if (wanted & bit[1]) {
            mxcsr &= ~mask;
            mxcsr &= ~(1u << bit[0]);  // a flag raised earlier is not this trap's
        } else {
            mxcsr |= mask;
        }
    }
    __builtin_ia32_ldmxcsr(mxcsr);
#elif defined(__powerpc__) && !defined(__powerpc64__) && !defined(__NO_FPRS__)
    uint32_t fpscr = diag::ReadFpscr();
    constexpr uint32_t kBits[][3] = {{0x80u, 0x20000000u | 0x01F80700u, VRN_FPE_INVALID},
                                     {0x10u, 0x04000000u, VRN_FPE_DIVIDE_BY_ZERO},
                                     {0x40u, 0x10000000u, VRN_FPE_OVERFLOW},
                                     {0x20u, 0x08000000u, VRN_FPE_UNDERFLOW},
                                     {0x08u, 0x02000000u, VRN_FPE_INEXACT}};
    for (const auto& bit : kBits) {
        if (fpscr & bit[0]) before |= static_cast<int32_t>(bit[2]);
        if (wanted & static_cast<int32_t>(bit[2])) {
            fpscr |= bit[0];
            fpscr &= ~bit[1];  // an exception raised earlier would trap at once
        } else {
            fpscr &= ~bit[0];
        }
    }
    fpscr &= ~0x80000000u;  // FX
    // The kernel must also deliver the traps: the precise mode.
    prctl(PR_SET_FPEXC, wanted != 0 ? PR_FP_EXC_PRECISE : PR_FP_EXC_DISABLED);
    uint64_t bits = fpscr;
    double image;
    std::memcpy(&image, &bits, sizeof image);
    __asm__ __volatile__("mtfsf 0xFF, %0" : : "f"(image) : "memory");
#else
    constexpr int kBits[][2] = {{FE_INVALID, VRN_FPE_INVALID}, {FE_DIVBYZERO, VRN_FPE_DIVIDE_BY_ZERO},
                                {FE_OVERFLOW, VRN_FPE_OVERFLOW}, {FE_UNDERFLOW, VRN_FPE_UNDERFLOW},
                                {FE_INEXACT, VRN_FPE_INEXACT}};
    int enabled = fegetexcept();
    int on = 0;
    for (const auto& bit : kBits) {
        if (enabled & bit[0]) before |= bit[1];
        if (wanted & bit[1]) on |= bit[0];
    }
    feclearexcept(on);
    fedisableexcept(FE_ALL_EXCEPT & ~on);
    feenableexcept(on);
#endif
    return before;
}

VRN_EXPORT int32_t vr__fpe_trap_(const int32_t* exceptions) { return vr__fpe_trap(exceptions); }
