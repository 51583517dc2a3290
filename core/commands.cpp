// _vrnIOCmd: the file statements, each one call with a KeywordList.
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/statement.h"
#include "core/export.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "ufmt/async_io.h"
#include "vrn90.h"

namespace {

using CommandRoutine = int32_t (*)(GlobalContext*, LocalContext*, int32_t, const KeywordList*);

constexpr char kCommandRecursion[] = "VR Fortran (I/O command initialization): I/O recursion detected.\n";
constexpr char kInvalidCommand[] = "VR Fortran (I/O command): Invalid I/O command.\n";

int32_t InvalidCmd(GlobalContext*, LocalContext*, int32_t, const KeywordList*) { CatastrophicExit(kInvalidCommand); }

constexpr CommandRoutine kCommands[] = {
    OpenCmd,      // 0 OPEN
    CloseCmd,     // 1 CLOSE
    InquireCmd,   // 2 INQUIRE
    BackspaceCmd, // 3 BACKSPACE
    RewindCmd,    // 4 REWIND
    EndfileCmd,   // 5 ENDFILE
    FlushCmd,     // 6 FLUSH
    InvalidCmd,   // 7
    WaitCmd,      // 8 WAIT
};
constexpr int32_t kCommandCount = static_cast<int32_t>(sizeof kCommands / sizeof kCommands[0]);

bool AllowedWhileBusy(const LocalContext* context, int32_t command, int32_t unitNumber) {
    bool fromDerivedTypeIo = context->nested &&
                             (command == VRN_COMMAND_INQUIRE || command == VRN_COMMAND_FLUSH || command == VRN_COMMAND_WAIT);
    return fromDerivedTypeIo || (command == VRN_COMMAND_INQUIRE && unitNumber == 0);
}

// A command allowed inside a derived-type I/O procedure takes the parent's modes along.
LocalContext* PushCommandContext(LocalContext* beneath) {
    LocalContext* pushed = PushLocalContext(beneath);
    pushed->parentUnit = beneath->parentUnit;
    pushed->parentFlags = beneath->parentFlags;
    pushed->modeBlank = pushed->parentBlank = beneath->parentBlank;
    pushed->modeDelim = pushed->parentDelim = beneath->parentDelim;
    pushed->modeSign = pushed->parentSign = beneath->parentSign;
    pushed->modeDecimal = pushed->parentDecimal = beneath->parentDecimal;
    pushed->modeRound = pushed->parentRound = beneath->parentRound;
    pushed->modePad = pushed->parentPad = beneath->parentPad;
    return pushed;
}

}  // namespace

VRN_EXPORT int32_t _vrnIOCmd(int32_t unitNumber, int32_t command, const KeywordList* keywords, uint32_t options,
                             void* iostatAddress) {
    EnsureRuntimeStarted();
    GlobalContext* global = _GlobalContext;
    LocalContext* current = _LocalContext[0];
    LocalContext* context = current;
    bool pushed = false;
    if (current->busy) {
        if (!AllowedWhileBusy(current, command, unitNumber)) CatastrophicExit(kCommandRecursion);
        context = PushCommandContext(current);
        pushed = true;
    } else {
        context->busy = 1;
    }
    context->options = options;
    context->iostatAddress = iostatAddress;
    context->command = command;
    context->status = 0;
    context->itemsStopped = 0;
    context->iostatValue = 0;
    context->messageLength = 0;
    context->iomsgLength = 0;
    context->msgLine = 0;
    context->msgFileLength = 0;
    if (iostatAddress != nullptr) context->iostatWidth = 4;
    // INQUIRE takes its message specifiers in its own single pass over the list.
    if (command != VRN_COMMAND_INQUIRE) ReadMessageSpecifiers(context, keywords);
    CommandRoutine routine = command >= 0 && command < kCommandCount ? kCommands[command] : InvalidCmd;
    int32_t result = routine(global, context, unitNumber, keywords);

    DeliverIostatAndIomsg(context);
    context->command = kCommandNone;
    if (pushed) {
        context->busy = 0;
        context->nested = 0;
        _LocalContext[0] = current;
    } else {
        context->busy = 0;
    }
    return result;
}
