// The error services that compiled code and the intrinsics call outside I/O statements.
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "core/statement.h"
#include "vrn90.h"

// omp_get_thread_num is only used to label messages; a program without a thread library
// runs all the same.
extern "C" int omp_get_thread_num() __attribute__((weak));

int32_t ResolveThreadNumFunc() {
    omp_get_thread_num_ptr = omp_get_thread_num;
    if (omp_get_thread_num_ptr != nullptr) return 1;
    ErrorHandler(kClassRecoverable, kKindError, 232, 232, 0u);
    return 0;
}

namespace {

void BlankPadInto(const CharacterVariable* variable, const char* text, int32_t length) {
    if (variable == nullptr || variable->address == 0 || length <= 0) return;
    auto* to = reinterpret_cast<char*>(variable->address);
    int32_t room = static_cast<int32_t>(variable->length);
    int32_t count = length < room ? length : room;
    std::memcpy(to, text, static_cast<size_t>(count));
    std::memset(to + count, ' ', static_cast<size_t>(room - count));
}

// Runs ErrorHandler on a context of its own, with a message buffer on the stack, so that
// a statement in progress keeps its own state.
void ReportOutsideStatement(int32_t errorClass, int32_t kind, int32_t message, int32_t iostat, int32_t* iostatAddress,
                            const CharacterVariable* iomsg, const CharacterVariable* fileName, int32_t line,
                            const char* text) {
    EnsureRuntimeStarted();
    LocalContext* current = _LocalContext[0];
    if (current->next == nullptr) GrowLocalContext(current);
    LocalContext* context = current->next;
    char buffer[kMessageBufferSize];
    NeuterLocalContext(context);
    context->anchor = current->anchor;
    context->scanBuffer = current->scanBuffer;
    context->messageBuffer = buffer;
    context->messageLength = 0;
    context->iostatAddress = iostatAddress;
    context->iostatValue = 0;
    context->iomsgAddress = iomsg != nullptr ? reinterpret_cast<char*>(iomsg->address) : nullptr;
    context->iomsgLength = iomsg != nullptr ? static_cast<int32_t>(iomsg->length) : 0;
    context->msgLine = fileName != nullptr ? line : 0;
    context->msgFile = fileName != nullptr ? reinterpret_cast<const char*>(fileName->address) : nullptr;
    context->msgFileLength = fileName != nullptr ? static_cast<int32_t>(fileName->length) : 0;
    context->busy = 1;
    _LocalContext[0] = context;
    ErrorHandler(errorClass, kind, message, iostat, ArgText(1), text != nullptr ? text : "", 0u);
    BlankPadInto(iomsg, buffer, context->messageLength);
    if (iostatAddress != nullptr) *iostatAddress = static_cast<int32_t>(context->iostatValue);
    context->busy = 0;
    context->messageBuffer = nullptr;
    context->iomsgAddress = nullptr;
    _LocalContext[0] = current;
}

}  // namespace

VRN_EXPORT void _vrnRecoverableError(int32_t message) {
    EnsureRuntimeStarted();
    if (message == 162 && !_GlobalContext->options.optOptArgWarn) return;
    NeuterLocalContext(_LocalContext[0]);
    ErrorHandler(kClassRecoverable, kKindError, message, 0, 0u);
}

VRN_EXPORT void _vrnErrorExit(int32_t message) {
    EnsureRuntimeStarted();
    NeuterLocalContext(_LocalContext[0]);
    ErrorHandler(kClassSevere, kKindError, message, 0, 0u);
    AbnormalExit(1);
}

VRN_EXPORT void _vrnGetErrorMsg1(int32_t errorClass, int32_t kind, int32_t message, int32_t iostat,
                                 int32_t* iostatAddress, const void* iomsg, const char* text) {
    ReportOutsideStatement(errorClass, kind, message, iostat, iostatAddress,
                           static_cast<const CharacterVariable*>(iomsg), nullptr, 0, text);
}

VRN_EXPORT void _vrnGetErrorMsgWithLoc1(int32_t errorClass, int32_t kind, int32_t message, int32_t iostat,
                                        int32_t* iostatAddress, const void* iomsg, const void* fileName, int32_t line,
                                        const char* text) {
    ReportOutsideStatement(errorClass, kind, message, iostat, iostatAddress,
                           static_cast<const CharacterVariable*>(iomsg),
                           static_cast<const CharacterVariable*>(fileName), line, text);
}

VRN_EXPORT void _vrnErrorExitWithLoc(int32_t errorClass, int32_t kind, int32_t message, int32_t iostat,
                                     int32_t* iostatAddress, const void* iomsg, const void* fileName, int32_t line,
                                     const char* text) {
    _vrnGetErrorMsgWithLoc1(errorClass, kind, message, iostat, iostatAddress, iomsg, fileName, line, text);
    AbnormalExit(1);
}
