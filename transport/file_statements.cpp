// CLOSE, REWIND, BACKSPACE, ENDFILE and FLUSH: the commands of _vrnIOCmd that position
// or close a unit. They share one prologue and call the record layer.
#include <cerrno>

#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "core/keywords.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "ufmt/async_io.h"
#include "vrn90.h"

namespace {

constexpr uint32_t kImplicitOpenForPositioning = 260;  // kind 4: the form stays open

int32_t RaiseWithUnit(int32_t errorClass, int32_t message, int32_t iostat, int32_t unitNumber) {
    return ErrorHandler(errorClass, kKindError, message, iostat, ArgInt(1), unitNumber, 0u);
}

int32_t RaiseWithWord(int32_t errorClass, int32_t message, int32_t unitNumber, const char* word) {
    return ErrorHandler(errorClass, kKindError, message, message, ArgInt(1), unitNumber, ArgText(2), word, 0u);
}

int32_t RaiseWithErrno(int32_t message, int32_t iostat, int32_t unitNumber, int errnoValue) {
    return ErrorHandler(kClassSevere, kKindError, message, iostat, ArgInt(1), unitNumber, ArgErrno(2), errnoValue, 0u);
}

// Specifiers that REWIND, BACKSPACE and ENDFILE accept carry the positioning flag.
bool OnlyPositioningSpecifiers(const KeywordList* keywords) {
    if (keywords == nullptr || keywords->version != 1) return true;
    for (uint32_t i = 0; i < keywords->count; ++i) {
        uint32_t tag = keywords->entries[i].tag & 0xFFFFu;
        if (tag == VRN_TAG_IOSTAT8) continue;
        if (tag >= static_cast<uint32_t>(kKeywordRows) || !(_RTE_key_info[tag].flags & VRN_KEYWORD_IN_POSITIONING)) {
            return false;
        }
    }
    return true;
}

enum class Positioning { Rewind, Backspace, Endfile };

const char* WordOf(Positioning statement) {
    switch (statement) {
    case Positioning::Rewind: return "REWIND";
    case Positioning::Backspace: return "BACKSPACE";
    default: return "ENDFILE";
    }
}

// The prologue of REWIND, BACKSPACE and ENDFILE. The unit to act on, or null when the
// statement ends here (with or without an error).
UnitRecord* Prologue(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords,
                     Positioning statement) {
    const char* word = WordOf(statement);
    if (!OnlyPositioningSpecifiers(keywords)) {
        ErrorHandler(kClassRecoverable, kKindError, 93, 93, ArgText(1), word, 0u);
        return nullptr;
    }
    UnitRecord* unit = LookUpUnit(global, unitNumber);
    if (unit != nullptr && unit->permanentError) {
        ErrorHandler(kClassRecoverable, kKindError, 15, 15, ArgText(1), UnitNameForMessages(unit), ArgInt(2),
                     unitNumber, 0u);
        return nullptr;
    }
    if (unit != nullptr && unit->access == VRN_KEY_DIRECT) {
        RaiseWithWord(kClassRecoverable, 17, unitNumber, word);
        return nullptr;
    }
    if (unit == nullptr) {
        if (unitNumber < 0) {
            ErrorHandler(kClassRecoverable, kKindError, 36, 36, ArgInt(1), unitNumber, ArgText(2), word, 0u);
            return nullptr;
        }
        if (statement == Positioning::Backspace) return nullptr;
        if (StrictLanguageLevel(global->options) &&
            ErrorHandler(kClassLanguage, kKindError, 140, 140, ArgText(1), word, ArgInt(2), unitNumber, 0u) != kRecover) {
            return nullptr;
        }
        int32_t existed;
        unit = GetUnit(global, context, unitNumber, &existed);
        if (unit == nullptr) {
            ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
            return nullptr;
        }
        if (ImplicitOpen(global, context, unit, kImplicitOpenForPositioning) != 1) return nullptr;
        unit = LookUpUnit(global, unitNumber);
    }
    // Positioning acts on the file as the pending transfers leave it.
    if (unit != nullptr && (!AIOWaitUnit(global, context, unit, 1) || (unit->aioMode && !LeaveAIOMode(context, unit)))) {
        return nullptr;
    }
    return unit;
}

}  // namespace

int32_t RewindCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords) {
    UnitRecord* unit = Prologue(global, context, unitNumber, keywords, Positioning::Rewind);
    if (unit == nullptr) return context->status;
    if (!SeekUnitToRecord(global, unit, 0, kSeekStart)) RaiseWithErrno(38, 38, unitNumber, errno);
    return context->status;
}

int32_t BackspaceCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords) {
    UnitRecord* unit = Prologue(global, context, unitNumber, keywords, Positioning::Backspace);
    if (unit == nullptr) return context->status;
    if (unit->access == VRN_KEY_STREAM && unit->form == VRN_KEY_UNFORMATTED) {
        RaiseWithUnit(kClassRecoverable, 194, 194, unitNumber);
        return context->status;
    }
    // Going back needs a file that can be positioned: a pipe or a terminal cannot.
    if (!unit->seekable && !unit->isNullDevice) {
        RaiseWithUnit(kClassSevere, 119, 119, unitNumber);
        return context->status;
    }
    if (unit->action == VRN_KEY_WRITE) {
        RaiseWithWord(kClassRecoverable, 233, unitNumber, "BACKSPACE");
        return context->status;
    }
    if (!SeekUnitToRecord(global, unit, 0, kSeekBackOneRecord)) RaiseWithErrno(40, 40, unitNumber, errno);
    return context->status;
}

int32_t EndfileCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords) {
    UnitRecord* unit = Prologue(global, context, unitNumber, keywords, Positioning::Endfile);
    if (unit == nullptr) return context->status;
    if (unit->action == VRN_KEY_READ) {
        RaiseWithWord(kClassSevere, 139, unitNumber, "ENDFILE");
        return context->status;
    }
    if (unit->afterEndfile) {
        // A second ENDFILE: an error only at a standard language level.
        if (StrictLanguageLevel(global->options)) RaiseWithUnit(kClassLanguage, 141, 141, unitNumber);
        return context->status;
    }
    if (!TruncateUnit(global, unit)) {
        RaiseWithErrno(39, 39, unitNumber, errno);
        return context->status;
    }
    if (unit->access == VRN_KEY_SEQUENTIAL) unit->afterEndfile = 1;
    unit->endfileWritten = 1;
    return context->status;
}

int32_t FlushCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList*) {
    UnitRecord* unit = LookUpUnit(global, unitNumber);
    if (unit == nullptr) {
        if (unitNumber < 0) ErrorHandler(kClassRecoverable, kKindError, 36, 36, ArgInt(1), unitNumber, ArgText(2), "FLUSH", 0u);
        return context->status;  // FLUSH of an unconnected positive unit is no error
    }
    if (unit->permanentError) {
        ErrorHandler(kClassRecoverable, kKindError, 15, 15, ArgText(1), UnitNameForMessages(unit), ArgInt(2),
                     unitNumber, 0u);
        return context->status;
    }
    if (!AIOWaitUnit(global, context, unit, 1)) return context->status;
    // Read-ahead on a pipe cannot be given back: such a unit cannot be flushed.
    bool unreadOnPipe = unit->direction == kDirectionRead && !unit->seekable && !unit->isNullDevice &&
                        unit->bufferFill > static_cast<int32_t>(unit->bufferOffset);
    if (unreadOnPipe) {
        RaiseWithUnit(kClassSevere, 201, -201, unitNumber);
        return context->status;
    }
    if (!FlushUnit(global, unit, 1)) RaiseWithErrno(200, 200, unitNumber, errno);
    return context->status;
}

int32_t CloseCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords) {
    uint32_t disposition = 0;
    if (keywords != nullptr && keywords->version == 1) {
        for (uint32_t i = 0; i < keywords->count; ++i) {
            const KeywordEntry& entry = keywords->entries[i];
            if ((entry.tag & 0xFFFFu) != VRN_KEY_STATUS) continue;
            disposition = KeywordOfValue(entry.a, entry.b);
            if (disposition != VRN_KEY_KEEP && disposition != VRN_KEY_DELETE) {
                char text[kMaxValueText + 1];
                KeywordValueText(entry, text);
                if (ErrorHandler(kClassRecoverable, kKindError, 29, 29, ArgText(1), text, ArgInt(2), unitNumber, 0u) !=
                    kRecover) {
                    return context->status;
                }
                disposition = 0;
            }
        }
    }
    UnitRecord* unit = LookUpUnit(global, unitNumber);
    if (unit == nullptr) return context->status;  // closing an unconnected unit does nothing
    if (!AIOWaitUnit(global, context, unit, 1)) return context->status;
    if (disposition == VRN_KEY_DELETE) unit->deleteOnClose = 1;
    if (disposition == VRN_KEY_KEEP) unit->deleteOnClose = 0;
    // A unit poisoned earlier has reported its failure already; closing it stays silent.
    // The standard descriptors stay open: other code of the program may still use them.
    bool reported = unit->permanentError != 0;
    if (!CloseUnit(global, context, unit, !unit->preconnected) && !reported) {
        RaiseWithErrno(142, 142, unitNumber, errno);
    }
    return context->status;
}

// CALL FLUSH(unit): the FLUSH statement; with no unit, every unit that was written.
VRN_EXPORT void flush_(const int32_t* unit) {
    EnsureRuntimeStarted();
    if (unit == nullptr) {
        FlushAllOutputUnits(_GlobalContext);
        return;
    }
    _vrnIOCmd(*unit, VRN_COMMAND_FLUSH, nullptr, 0, nullptr);
}

// CALL FIOSETUP(unit, command, value): the unit's two switches. Command 1 flushes after
// every write when value is not 0; command 2 discards read-ahead before every read.
// The result is 0, 36 for a unit that is not connected, or 29 for an unknown command.
VRN_EXPORT int32_t fiosetup_(const int32_t* unit, const int32_t* command, const int32_t* value) {
    EnsureRuntimeStarted();
    UnitRecord* record = LookUpUnit(_GlobalContext, *unit);
    if (record == nullptr) return 36;
    switch (*command) {
    case 1: record->flushAfterWrite = *value != 0; return 0;
    case 2: record->discardBeforeRead = *value != 0; return 0;
    default: return 29;
    }
}
