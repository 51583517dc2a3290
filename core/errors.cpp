#include "core/errors.h"

#include <nl_types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "core/context.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "vrn90.h"

int (*omp_get_thread_num_ptr)() = nullptr;
const char* vrnFallbackCatalogPath = "/opt/vrcmp/msg/en_US/vrqmsg90.cat";

namespace {

constexpr int kCatalogSet = 2;
constexpr const char* kCatalogName = "vrqmsg90.cat";
constexpr const char* kMessagePrefix = "3714-";
constexpr int kMessageProgramStopping = 99;
constexpr int kMaxArguments = 16;
constexpr int kMaxFileNameInMessage = 4096;

// Appends to a fixed buffer and never overruns it; text beyond the end is dropped.
struct TextBuilder {
    char* buffer;
    int capacity;
    int length = 0;

    void Append(const char* text, int count) {
        if (count > capacity - length) count = capacity - length;
        if (count <= 0) return;
        std::memcpy(buffer + length, text, count);
        length += count;
    }
    void Append(const char* text) { Append(text, static_cast<int>(std::strlen(text))); }
    template <typename... Args>
    void Format(const char* format, Args... args) {
        char piece[512];
        int count = std::snprintf(piece, sizeof piece, format, args...);
        if (count > 0) Append(piece, count < static_cast<int>(sizeof piece) ? count : static_cast<int>(sizeof piece) - 1);
    }
};

int ReadArguments(va_list arguments, MessageArgument* out) {
    int count = 0;
    for (;;) {
        uint32_t tag = va_arg(arguments, uint32_t);
        if (tag == 0) break;
        MessageArgument argument{tag, 0, nullptr};
        switch (tag & 0xF0000000u) {
        case 0x40000000u: argument.number = va_arg(arguments, int32_t); break;
        case 0x20000000u: argument.number = va_arg(arguments, int); break;
        case 0x80000000u: argument.text = va_arg(arguments, const char*); break;
        case 0x10000000u: {
            uint32_t high = va_arg(arguments, uint32_t);
            uint32_t low = va_arg(arguments, uint32_t);
            argument.number = static_cast<int64_t>((static_cast<uint64_t>(high) << 32) | low);
            break;
        }
        default: return count;  // an unknown tag: nothing after it can be trusted
        }
        if (count < kMaxArguments) out[count++] = argument;
    }
    return count;
}

const char* CatalogText(GlobalContext* global, int message) {
    if (global == nullptr) return nullptr;
    if (global->catalog == reinterpret_cast<nl_catd>(-1) && !global->catalogFailed) {
        global->catalog = catopen(kCatalogName, 0);
        if (global->catalog == reinterpret_cast<nl_catd>(-1)) global->catalogFailed = 1;
    }
    if (global->catalog != reinterpret_cast<nl_catd>(-1)) {
        if (const char* text = catgets(global->catalog, kCatalogSet, message, nullptr)) return text;
    }
    if (global->fallbackCatalog == reinterpret_cast<nl_catd>(-1) && !global->fallbackCatalogFailed) {
        global->fallbackCatalog = catopen(vrnFallbackCatalogPath, 0);
        if (global->fallbackCatalog == reinterpret_cast<nl_catd>(-1)) global->fallbackCatalogFailed = 1;
    }
    if (global->fallbackCatalog != reinterpret_cast<nl_catd>(-1)) {
        return catgets(global->fallbackCatalog, kCatalogSet, message, nullptr);
    }
    return nullptr;
}

bool ThreadPrefixWanted(const GlobalContext* global) {
    return global != nullptr && global->options.optErrThrdNum && omp_get_thread_num_ptr != nullptr;
}

bool LocationWanted(const GlobalContext* global, const LocalContext* context) {
    return context != nullptr && context->msgLine != 0 && (global == nullptr || global->options.optErrLoc);
}

// The source file name without trailing blanks and NULs, "???" when empty.
int SourceNameLength(const LocalContext* context) {
    int length = context->msgFileLength < kMaxFileNameInMessage ? context->msgFileLength : kMaxFileNameInMessage;
    if (context->msgFile == nullptr) return 0;
    while (length > 0 && (context->msgFile[length - 1] == ' ' || context->msgFile[length - 1] == 0)) --length;
    return length;
}

void AppendPrefixes(TextBuilder& out, GlobalContext* global, LocalContext* context) {
    if (ThreadPrefixWanted(global)) out.Format("<Thread %d> ", omp_get_thread_num_ptr());
    if (LocationWanted(global, context)) {
        int length = SourceNameLength(context);
        out.Append("\"");
        if (length > 0) out.Append(context->msgFile, length); else out.Append("???");
        out.Format("\", line %d: ", static_cast<int>(context->msgLine));
    }
}

void AppendArgument(TextBuilder& out, const MessageArgument& argument) {
    switch (argument.tag & 0xF0000000u) {
    case 0x40000000u: out.Format("%ld", static_cast<long>(argument.number)); break;
    case 0x10000000u: out.Format("%lld", static_cast<long long>(argument.number)); break;
    case 0x20000000u:
        out.Format("%ld (%s)", static_cast<long>(argument.number), std::strerror(static_cast<int>(argument.number)));
        break;
    case 0x80000000u: out.Append(argument.text != nullptr ? argument.text : ""); break;
    }
}

void Substitute(TextBuilder& out, const char* text, const MessageArgument* arguments, int count) {
    while (*text != 0) {
        const char* dollar = std::strchr(text, '$');
        if (dollar == nullptr || dollar[1] == 0) {
            out.Append(text);
            return;
        }
        out.Append(text, static_cast<int>(dollar - text));
        char letter = dollar[1];
        const char* p = dollar + 2;
        uint32_t number = 0;
        while (*p >= '0' && *p <= '9') number = number * 10 + static_cast<uint32_t>(*p++ - '0');
        // "$E1" and "$C1" may both be argument 1: the letter picks the kind of argument.
        uint32_t kind = letter == 'C' ? 0x80000000u : letter == 'E' ? 0x20000000u : letter == 'I' ? 0x40000000u
                      : letter == 'L' ? 0x10000000u : 0u;
        if (kind != 0) {
            const MessageArgument* chosen = nullptr;
            for (int i = 0; i < count && chosen == nullptr; ++i) {
                if ((arguments[i].tag & 0xFFu) == number && (arguments[i].tag & 0xF0000000u) == kind) chosen = &arguments[i];
            }
            for (int i = 0; i < count && chosen == nullptr; ++i) {
                if ((arguments[i].tag & 0xFFu) == number) chosen = &arguments[i];
            }
            if (chosen != nullptr) AppendArgument(out, *chosen);
        }
        text = p;
    }
}

}  // namespace

const char* CatalogTextIfOpen(int message) {
    GlobalContext* global = _GlobalContext;
    if (global == nullptr) return nullptr;
    if (global->catalog != reinterpret_cast<nl_catd>(-1)) {
        if (const char* text = catgets(global->catalog, kCatalogSet, message, nullptr)) return text;
    }
    if (global->fallbackCatalog != reinterpret_cast<nl_catd>(-1)) {
        return catgets(global->fallbackCatalog, kCatalogSet, message, nullptr);
    }
    return nullptr;
}

int32_t SubstituteArguments(char* out, int32_t capacity, const char* text, const MessageArgument* arguments,
                            int count) {
    TextBuilder builder{out, capacity};
    Substitute(builder, text, arguments, count);
    return builder.length;
}

namespace {

void ComposeMessage(char* buffer, int32_t* length, GlobalContext* global, LocalContext* context, int message,
                    const MessageArgument* arguments, int count) {
    const char* text = CatalogText(global, message);
    std::memset(buffer, 0, kMessageBufferSize);
    TextBuilder out{buffer, kMessageBufferSize - 1};
    AppendPrefixes(out, global, context);
    if (text != nullptr) {
        if (count > 0) Substitute(out, text, arguments, count); else out.Append(text);
    } else {
        out.Format("%s%03ld\n", kMessagePrefix, static_cast<long>(message));
    }
    *length = out.length;
}

// The line written straight to descriptor 2 when unit 0 is gone: no catalogue.
void WriteNumberLine(GlobalContext* global, LocalContext* context, int message) {
    char line[kMaxFileNameInMessage + 128];
    TextBuilder out{line, static_cast<int>(sizeof line)};
    AppendPrefixes(out, global, context);
    out.Format("%s%03ld\n", kMessagePrefix, static_cast<long>(message));
    WriteNonstop(2, line, out.length);
}

void PrintMessage(GlobalContext* global, LocalContext* context, const char* text, int32_t length, int message) {
    UnitRecord* errorUnit = global != nullptr ? FindErrorUnit(global) : nullptr;
    if (errorUnit != nullptr) {
        WriteUnit(global, errorUnit, text, length);
        FlushUnit(global, errorUnit, 1);
    } else {
        WriteNumberLine(global, context, message);
    }
}

bool TakenOverBySpecifier(const GlobalContext* global, const LocalContext* context, int32_t kind) {
    uint32_t options = context->options;
    switch (kind) {
    case kKindEndOfFile:
        if (options & VRN_OPTION_END) return true;
        // ERR= takes over end of file only outside data transfer and WAIT, or by option.
        if ((global != nullptr && global->options.optErrorEof) ||
            (context->command != kCommandTransfer && context->command != VRN_COMMAND_WAIT)) {
            return (options & VRN_OPTION_ERR) != 0;
        }
        return false;
    case kKindEndOfRecord: return (options & VRN_OPTION_EOR) != 0;
    default: return (options & VRN_OPTION_ERR) != 0;
    }
}

bool IostatKeptUnderConversion(int32_t iostat) {
    switch (iostat) {
    case 7: case 8: case 9: case 84: case 85: case 121: return true;
    default: return false;
    }
}

}  // namespace

void CopyToIomsg(LocalContext* context, const char* text, int32_t length) {
    if (context == nullptr || context->iomsgAddress == nullptr || context->iomsgLength <= 0) return;
    // The variable holds the message line; its newline belongs to the error unit only, and
    // would print as an empty line after TRIM(msg).
    if (length > 0 && text[length - 1] == '\n') --length;
    int32_t count = length < context->iomsgLength ? length : context->iomsgLength;
    std::memcpy(context->iomsgAddress, text, count);
    std::memset(context->iomsgAddress + count, ' ', context->iomsgLength - count);
}

int32_t ErrorHandler(int32_t errorClass, int32_t kind, int32_t message, int32_t iostat, ...) {
    GlobalContext* global = _GlobalContext;
    LocalContext* context = _LocalContext[0];
    const OptionBlock* options = global != nullptr ? &global->options : nullptr;
    bool messagesOn = options == nullptr || options->optMessages;

    int32_t effective = errorClass;
    if (errorClass == kClassLanguage && options != nullptr && StrictLanguageLevel(*options)) {
        effective = options->optErrRecovery ? kClassRecoverable : kClassSevere;
    } else if (errorClass == kClassConversion && (options == nullptr || options->optCnvErr)) {
        effective = kClassRecoverable;
    }

    bool takenOver = false;
    bool hasIostat = false;
    if ((effective == kClassSevere || effective == kClassRecoverable) && context != nullptr) {
        takenOver = TakenOverBySpecifier(global, context, kind);
        hasIostat = context->iostatAddress != nullptr;
    }
    bool print = !takenOver && !hasIostat && effective != kClassLanguage && messagesOn;

    MessageArgument arguments[kMaxArguments];
    va_list list;
    va_start(list, iostat);
    int argumentCount = ReadArguments(list, arguments);
    va_end(list);

    // The text is composed only when somebody will read it, which keeps IOSTAT= loops cheap.
    char localBuffer[kMessageBufferSize];
    char* text = context != nullptr && context->messageBuffer != nullptr ? context->messageBuffer : localBuffer;
    int32_t localLength = 0;
    int32_t* textLength = context != nullptr ? &context->messageLength : &localLength;
    bool wantsIomsg = context != nullptr && context->iomsgAddress != nullptr && context->iomsgLength > 0;
    bool toErrorUnit = print && global != nullptr && FindErrorUnit(global) != nullptr;
    if (wantsIomsg || toErrorUnit) ComposeMessage(text, textLength, global, context, message, arguments, argumentCount);

    if (takenOver) {
        context->iostatValue = iostat;
        context->status = kind;
        context->itemsStopped = 1;
        return kStatementStops;
    }
    if (hasIostat) {
        context->iostatValue = iostat;
        context->itemsStopped = 1;
        return kStatementStops;
    }

    bool endProgram = false;
    switch (effective) {
    case kClassSevere: endProgram = true; break;
    case kClassRecoverable: endProgram = options != nullptr && !options->optErrRecovery; break;
    case kClassConversion:
        if (context != nullptr && context->iostatAddress != nullptr && IostatKeptUnderConversion(iostat)) {
            context->iostatValue = iostat;
        }
        break;
    case kClassLanguage: return kRecover;
    default: break;
    }

    if (print) PrintMessage(global, context, text, *textLength, message);
    if (options != nullptr && options->optErrTrace) vr__trbk();

    if (endProgram) {
        if (wantsIomsg) CopyToIomsg(context, text, *textLength);
        if (messagesOn && errorClass >= kClassRecoverable && errorClass <= kClassLanguage) {
            char stopping[kMessageBufferSize];
            int32_t stoppingLength = 0;
            if (FindErrorUnit(global) != nullptr) {
                ComposeMessage(stopping, &stoppingLength, global, nullptr, kMessageProgramStopping, nullptr, 0);
            }
            PrintMessage(global, nullptr, stopping, stoppingLength, kMessageProgramStopping);
        }
        AbnormalExit(1);
    }
    return kRecover;
}

int32_t IORaisePermanentError(LocalContext* context, UnitRecord* unit, int errnoValue) {
    unit->permanentError = 1;
    uint32_t flags = context != nullptr ? context->statementFlags : kNoStatement;
    bool reading = flags != kNoStatement && ((flags >> 8) & 0xFFu) == VRN_DIRECTION_READ;
    bool direct = flags != kNoStatement && ((flags >> 16) & 0x7Fu) == VRN_ACCESS_DIRECT;
    int32_t message = reading ? (direct ? 10 : 12) : (direct ? 11 : 13);
    return ErrorHandler(kClassSevere, kKindError, message, message, ArgErrno(1), errnoValue, ArgText(1),
                        UnitNameForMessages(unit), 0u);
}

void ErrorCloseCatalog() {
    GlobalContext* global = _GlobalContext;
    if (global == nullptr) return;
    if (global->catalog != reinterpret_cast<nl_catd>(-1)) catclose(global->catalog);
    if (global->fallbackCatalog != reinterpret_cast<nl_catd>(-1)) catclose(global->fallbackCatalog);
    global->catalog = reinterpret_cast<nl_catd>(-1);
    global->fallbackCatalog = reinterpret_cast<nl_catd>(-1);
    global->catalogFailed = 0;
    global->fallbackCatalogFailed = 0;
}
