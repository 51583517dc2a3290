// The traceback: frames from the unwinder, the object of each from the dynamic loader's
// list, and names and lines from the object's file on disk, which is mapped once and kept
// for later tracebacks. The work areas are static, so that a handler on a small
// alternate stack can print one; a traceback that finds them in use (a second thread,
// a signal during one) prints bare addresses.
#include <link.h>
#include <unistd.h>
#include <unwind.h>

#include <atomic>
#include <cstring>

#include "core/export.h"
#include "diag/diag.h"
#include "diag/elf_image.h"
#include "diag/line_table.h"
#include "diag/safe_text.h"
#include "diag/symbol_names.h"
#include "vrn90.h"

namespace diag {
namespace {

constexpr int kMaxObjects = 256;
constexpr size_t kPathSize = 512;
constexpr size_t kNameSize = 512;

struct LoadedObject {
    char path[kPathSize];
    uintptr_t base;
    bool isMainProgram;
    bool imageTried;
    bool imageOpen;
    ElfImage image;
};

// Objects whose files were opened, kept from one traceback to the next.
LoadedObject objects[kMaxObjects];
int objectCount = 0;

struct FrameInfo {
    int object;  // index in `objects`, or -1
    char name[kNameSize];
    char file[kPathSize];
    uint32_t line;
};

struct Work {
    FrameInfo frames[kMaxFrames];
    LineQuery lines[kMaxFrames];
    FunctionQuery functions[kMaxFrames];
};
Work work;
std::atomic_flag workBusy = ATOMIC_FLAG_INIT;

uintptr_t LookupAddress(const Frame& frame) { return frame.exact ? frame.pc : frame.pc - 1; }

struct CaptureState {
    Frame* frames;
    int capacity;
    int count;
    int skip;
};

_Unwind_Reason_Code CaptureOne(_Unwind_Context* context, void* argument) {
    auto* state = static_cast<CaptureState*>(argument);
    int beforeInstruction = 0;
    uintptr_t pc = _Unwind_GetIPInfo(context, &beforeInstruction);
    if (pc == 0) return _URC_END_OF_STACK;
    if (state->skip > 0) {
        --state->skip;
        return _URC_NO_REASON;
    }
    if (state->count >= state->capacity) return _URC_END_OF_STACK;
    state->frames[state->count++] = Frame{pc, beforeInstruction != 0};
    return _URC_NO_REASON;
}

// The object's file: the main program's is /proc/self/exe, whose link also names it.
void ObjectPath(const char* loaderName, char* out) {
    if (loaderName != nullptr && loaderName[0] != '\0') {
        size_t length = std::strlen(loaderName);
        if (length >= kPathSize) length = kPathSize - 1;
        std::memcpy(out, loaderName, length);
        out[length] = '\0';
        return;
    }
    ssize_t length = ::readlink("/proc/self/exe", out, kPathSize - 1);
    if (length <= 0) {
        std::strcpy(out, "/proc/self/exe");
        return;
    }
    out[length] = '\0';
}

int ObjectIndex(const char* loaderName, uintptr_t base) {
    char path[kPathSize];
    ObjectPath(loaderName, path);
    for (int i = 0; i < objectCount; ++i) {
        if (objects[i].base == base && std::strcmp(objects[i].path, path) == 0) return i;
    }
    if (objectCount == kMaxObjects) return -1;
    LoadedObject& added = objects[objectCount];
    std::strcpy(added.path, path);
    added.base = base;
    added.isMainProgram = loaderName == nullptr || loaderName[0] == '\0';
    added.imageTried = added.imageOpen = false;
    return objectCount++;
}

struct MatchState {
    const Frame* frames;
    int count;
    FrameInfo* info;
};

int MatchObject(dl_phdr_info* object, size_t, void* argument) {
    auto* state = static_cast<MatchState*>(argument);
    int index = -2;  // not yet looked up
    for (int f = 0; f < state->count; ++f) {
        if (state->info[f].object != -1) continue;
        uintptr_t address = LookupAddress(state->frames[f]);
        for (int s = 0; s < object->dlpi_phnum; ++s) {
            const auto& segment = object->dlpi_phdr[s];
            if (segment.p_type != PT_LOAD) continue;
            uintptr_t start = object->dlpi_addr + segment.p_vaddr;
            if (address - start >= segment.p_memsz) continue;
            if (index == -2) index = ObjectIndex(object->dlpi_name, object->dlpi_addr);
            state->info[f].object = index;
            break;
        }
    }
    return 0;
}

void OpenImage(LoadedObject& object) {
    if (object.imageTried) return;
    object.imageTried = true;
    // The main program's file may have been renamed or replaced since it started.
    object.imageOpen = OpenElfImage(object.isMainProgram ? "/proc/self/exe" : object.path, &object.image);
}

bool IsMainFunction(const char* name) { return std::strcmp(name, "main") == 0; }

void Describe(const Frame* frames, int count, FrameInfo* info) {
    for (int f = 0; f < count; ++f) {
        info[f].object = -1;
        info[f].name[0] = info[f].file[0] = '\0';
        info[f].line = 0;
    }
    MatchState state{frames, count, info};
    dl_iterate_phdr(MatchObject, &state);
    for (int o = 0; o < objectCount; ++o) {
        LoadedObject& object = objects[o];
        size_t queries = 0;
        for (int f = 0; f < count; ++f) {
            if (info[f].object != o) continue;
            OpenImage(object);
            if (!object.imageOpen) break;
            uint64_t address = LookupAddress(frames[f]) - object.base;
            work.lines[queries] = LineQuery{};
            work.lines[queries].address = address;
            work.lines[queries].frame = static_cast<size_t>(f);
            work.functions[queries] = FunctionQuery{};
            work.functions[queries].address = address;
            work.functions[queries].frame = static_cast<size_t>(f);
            ++queries;
        }
        if (queries == 0 || !object.imageOpen) continue;
        // One pass over the object's symbols and one over its line tables for all its frames.
        FindFunctions(object.image, work.functions, queries);
        for (size_t q = 0; q < queries; ++q) {
            FunctionSymbol symbol;
            if (Answer(work.functions[q], &symbol)) {
                ReadableName(symbol.name, info[work.functions[q].frame].name, kNameSize);
            }
        }
        FindLines(object.image, work.lines, queries);
        for (size_t q = 0; q < queries; ++q) {
            const LineQuery& query = work.lines[q];
            FrameInfo& frame = info[query.frame];
            if (query.found && LineFileName(object.image, query, frame.file, kPathSize) > 0) frame.line = query.line;
        }
    }
}

void PrintBare(const Frame* frames, int count, int fd) {
    char buffer[64];
    for (int f = 0; f < count; ++f) {
        SafeText line(buffer, sizeof buffer);
        line.Char('#').Decimal(f).Text("  ").Address(frames[f].pc).Char('\n');
        line.WriteTo(fd);
    }
}

// "ADDRESS in FUNCTION at FILE:LINE", or "(OBJECT)" in place of the file and line.
void AppendFrame(SafeText& text, const Frame& frame, const FrameInfo& info) {
    text.Address(frame.pc).Text(" in ").Text(info.name[0] != '\0' ? info.name : "??");
    if (info.line != 0) {
        text.Text(" at ").Text(info.file).Char(':').Unsigned(info.line);
    } else if (info.object >= 0) {
        text.Text(" (").Text(objects[info.object].path).Char(')');
    }
}

// The exported entry points of the run-time, whose frames and those inside them are the
// run-time's own.
bool IsRuntimeEntry(const char* name) {
    static const char* const kPrefixes[] = {"_vr", "vr__", "__vr", "_smp_vrrn", "CFI_"};
    static const char* const kNames[] = {"exit_", "abort_", "flush_", "fiosetup_", "setrteopts", "setrteopts_", "#ABORT"};
    for (const char* prefix : kPrefixes) {
        if (std::strncmp(name, prefix, std::strlen(prefix)) == 0) return true;
    }
    for (const char* whole : kNames) {
        if (std::strcmp(name, whole) == 0) return true;
    }
    return false;
}

}  // namespace

int CaptureFrames(Frame* frames, int capacity) {
    CaptureState state{frames, capacity, 0, 1};  // not this function itself
    _Unwind_Backtrace(CaptureOne, &state);
    return state.count;
}

void PrintFrames(const Frame* frames, int count, int fd, bool leaveOutRuntime) {
    if (count > kMaxFrames) count = kMaxFrames;
    if (workBusy.test_and_set(std::memory_order_acquire)) {
        PrintBare(frames, count, fd);
        return;
    }
    Describe(frames, count, work.frames);
    int first = 0;
    if (leaveOutRuntime) {
        // The run-time's own object, when it is a shared one; when it is linked into the
        // program, its frames are those up to its outermost entry point.
        Frame self{reinterpret_cast<uintptr_t>(&vr__trbk), true};
        FrameInfo selfInfo;
        selfInfo.object = -1;
        MatchState state{&self, 1, &selfInfo};
        dl_iterate_phdr(MatchObject, &state);
        int runtimeObject = selfInfo.object >= 0 && !objects[selfInfo.object].isMainProgram ? selfInfo.object : -1;
        for (int f = 0; f < count; ++f) {
            const FrameInfo& info = work.frames[f];
            if ((runtimeObject >= 0 && info.object == runtimeObject) || IsRuntimeEntry(info.name)) first = f + 1;
        }
        if (first == count) first = 0;
    }
    char buffer[kNameSize + kPathSize + 64];
    for (int f = first; f < count; ++f) {
        // A deep recursion shows its frame twice, then how often it repeats.
        if (f >= first + 2 && frames[f].pc == frames[f - 1].pc && frames[f].pc == frames[f - 2].pc) {
            int repeats = 0;
            while (f < count && frames[f].pc == frames[f - 1].pc) {
                ++repeats;
                ++f;
            }
            SafeText line(buffer, sizeof buffer - 1);
            line.Text("    ... the frame above ").Decimal(repeats).Text(repeats == 1 ? " time more\n" : " times more\n");
            line.WriteTo(fd);
            --f;
            continue;
        }
        SafeText line(buffer, sizeof buffer - 1);
        line.Char('#').Decimal(f - first).Text("  ");
        AppendFrame(line, frames[f], work.frames[f]);
        line.Char('\n');
        line.WriteTo(fd);
        if (IsMainFunction(work.frames[f].name)) break;
    }
    workBusy.clear(std::memory_order_release);
}

size_t DescribeAddress(const Frame& frame, char* out, size_t capacity) {
    if (capacity == 0) return 0;
    SafeText text(out, capacity - 1);
    if (workBusy.test_and_set(std::memory_order_acquire)) {
        text.Address(frame.pc);
    } else {
        Describe(&frame, 1, work.frames);
        AppendFrame(text, frame, work.frames[0]);
        workBusy.clear(std::memory_order_release);
    }
    out[text.size()] = '\0';
    return text.size();
}

}  // namespace diag

// The traceback of the caller's stack on standard error, without the run-time's frames.
VRN_EXPORT void vr__trbk(void) {
    diag::Frame frames[diag::kMaxFrames];
    int count = diag::CaptureFrames(frames, diag::kMaxFrames);
    diag::PrintFrames(frames, count, 2, true);
}

// The same for Fortran programs of compilers that add an underscore.
VRN_EXPORT void vr__trbk_(void) { vr__trbk(); }
