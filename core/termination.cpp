// The end of a program: STOP, ERROR STOP, PAUSE, normal and abnormal exit, and the
// clean-up that flushes and closes every unit.
#include <unistd.h>

#include <atomic>
#include <cfenv>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/float_status.h"
#include "core/export.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "vrn90.h"

namespace {

// Row 0 is STOP, row 1 ERROR STOP: the string in front of a code, and the one alone.
constexpr const char* stop_str[2][2] = {{"STOP ", "STOP\n"}, {"ERROR STOP ", "ERROR STOP\n"}};
constexpr int kRowStop = 0;
constexpr int kRowErrorStop = 1;
constexpr int32_t kPauseNotInteractive = 14;

const char* const pause_wr_catastrophic_msg = "VR Fortran (PAUSE): Standard error write failed.\n";
const char* const pause_rd_catastrophic_msg = "VR Fortran (PAUSE): Read failure on standard input.\n";

bool HasText(const StopCode* code) { return code != nullptr && code->text != 0; }
bool HasInteger(const StopCode* code) { return code != nullptr && code->text == 0 && code->length != 0; }

// Writes to unit 0, or to descriptor 2 when the program has no unit 0. Failures are
// ignored: a stop message must not stop the stop.
bool PutOnErrorUnit(const char* text, size_t length) {
    GlobalContext* global = _GlobalContext;
    UnitRecord* unit = FindErrorUnit(global);
    if (unit == nullptr) return WriteNonstop(2, text, static_cast<int32_t>(length)) >= 0;
    return WriteUnit(global, unit, text, static_cast<int32_t>(length)) >= 0;
}

bool FlushErrorUnit() {
    UnitRecord* unit = FindErrorUnit(_GlobalContext);
    return unit == nullptr || FlushUnit(_GlobalContext, unit, 1);
}

int ThreadPrefix(char* out, size_t size) {
    if (!_GlobalContext->options.optErrThrdNum || omp_get_thread_num_ptr == nullptr) return 0;
    return std::snprintf(out, size, "<Thread %d> ", omp_get_thread_num_ptr());
}

// The floating-point flags raised, in the fixed order OVERFLOW, DIV-BY-ZERO, INVALID,
// UNDERFLOW, INEXACT; an empty line when none is.
int FlagReport(char* out, size_t size) {
    struct Flag {
        int exception;
        const char* name;
    };
    const Flag flags[] = {{FE_OVERFLOW, "OVERFLOW, "},   {FE_DIVBYZERO, "DIV-BY-ZERO, "}, {FE_INVALID, "INVALID, "},
                          {FE_UNDERFLOW, "UNDERFLOW, "}, {FE_INEXACT, "INEXACT, "}};
    int raised = float_status::RaisedExceptions();
    if ((raised & (FE_OVERFLOW | FE_DIVBYZERO | FE_INVALID | FE_UNDERFLOW | FE_INEXACT)) == 0) return 0;
    int length = ThreadPrefix(out, size);
    length += std::snprintf(out + length, size - length, "(");
    for (const Flag& flag : flags) {
        if (raised & flag.exception) length += std::snprintf(out + length, size - length, "%s", flag.name);
    }
    std::memcpy(out + length - 2, ")\n", 2);  // the last ", " becomes the end of the line
    return length;
}

}  // namespace

void PrintStop(const StopCode* code, int32_t value, const int32_t* flags, int row) {
    char report[256];
    int reportLength = flags != nullptr && (*flags & 1) ? FlagReport(report, sizeof report) : 0;
    char prefix[64];
    int prefixLength = ThreadPrefix(prefix, sizeof prefix);
    bool hasCode = HasText(code) || HasInteger(code);
    if (hasCode || reportLength > 0) PutOnErrorUnit(prefix, static_cast<size_t>(prefixLength));
    if (HasText(code)) {
        PutOnErrorUnit(stop_str[row][0], std::strlen(stop_str[row][0]));
        PutOnErrorUnit(reinterpret_cast<const char*>(code->text), code->length);
        PutOnErrorUnit("\n", 1);
    } else if (HasInteger(code)) {
        char line[64];
        int length = std::snprintf(line, sizeof line, "%s%ld\n", stop_str[row][0], static_cast<long>(value));
        PutOnErrorUnit(line, static_cast<size_t>(length));
    } else if (reportLength > 0) {
        PutOnErrorUnit(stop_str[row][1], std::strlen(stop_str[row][1]));  // the report's heading
    }
    if (reportLength > 0) PutOnErrorUnit(report, static_cast<size_t>(reportLength));
    FlushErrorUnit();
}

namespace {
// Set while a clean-up runs: an exit from a signal handler or from another thread in the
// middle of one must not free the same units twice.
std::atomic_flag cleanupRunning = ATOMIC_FLAG_INIT;
}  // namespace

void RTECleanup() {
    if (RTE_Initialized == 0) return;
    if (cleanupRunning.test_and_set()) return;
    GlobalContext* global = _GlobalContext;
    CloseAllUnits(global, _LocalContext[0]);
    ErrorCloseCatalog();
    DestroyGlobalContext(global);
    _GlobalContext = nullptr;
    FreeLocalContext(_LocalContext);
    RTE_Initialized = 0;
    cleanupRunning.clear();
}

[[noreturn]] void AbnormalExit(int32_t status) {
    RTECleanup();
    std::exit(status);
}

VRN_EXPORT void _vrnExit(int32_t status) {
    RTECleanup();
    std::exit(status);
}

VRN_EXPORT void exit_(const int32_t* status) { _vrnExit(status != nullptr ? *status : 0); }

VRN_EXPORT void _vrnStop(const StopCode* code, int32_t value, ...) {
    EnsureRuntimeStarted();
    PrintStop(code, value, nullptr, kRowStop);
    _vrnExit(HasInteger(code) ? value : 0);
}

VRN_EXPORT void _vrnStopFPSCR(const StopCode* code, int32_t value, const int32_t* flags) {
    EnsureRuntimeStarted();
    PrintStop(code, value, flags, kRowStop);
    _vrnExit(HasInteger(code) ? value : 0);
}

VRN_EXPORT void _vrnErrorStop(const StopCode* code, int32_t value, const int32_t* flags) {
    EnsureRuntimeStarted();
    PrintStop(code, value, flags, kRowErrorStop);
    AbnormalExit(HasInteger(code) ? value : 1);
}

VRN_EXPORT int32_t _vrnPause(const StopCode* code, int32_t value) {
    EnsureRuntimeStarted();
    char line[64];
    bool written;
    if (HasText(code)) {
        written = PutOnErrorUnit("PAUSE ", 6) && PutOnErrorUnit(reinterpret_cast<const char*>(code->text), code->length) &&
                  PutOnErrorUnit("\n", 1);
    } else if (HasInteger(code)) {
        int length = std::snprintf(line, sizeof line, "%s%ld\n", "PAUSE ", static_cast<long>(value));
        written = PutOnErrorUnit(line, static_cast<size_t>(length));
    } else {
        written = PutOnErrorUnit("PAUSE\n", 6);
    }
    if (!written || !FlushErrorUnit()) CatastrophicExit(pause_wr_catastrophic_msg);
    UnitRecord* input = LookUpUnit(_GlobalContext, 5);
    bool readable = input != nullptr && (input->action == VRN_KEY_READ || input->action == VRN_KEY_READWRITE);
    if (!readable || isatty(input->fd) != 1) return kPauseNotInteractive;
    char byte;
    if (ReadUnit(_GlobalContext, input, &byte, 1) < 0) CatastrophicExit(pause_rd_catastrophic_msg);
    return 0;
}

VRN_EXPORT void abort_() {
    RTECleanup();
    std::abort();
}

VRN_EXPORT void _vrabort() { abort_(); }

// The name Fortran programs know it by cannot be spelled in C++.
extern "C" __attribute__((visibility("default"))) void AbortFromFortran() __asm__("\"#ABORT\"");
void AbortFromFortran() { abort_(); }
