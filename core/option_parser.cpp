// The text of run-time options: VRNRTEOPTS at start-up and setrteopts during the run.
//
// "name=value" pairs separated by colons, in any letter case, white space allowed around
// the tokens, empty options allowed. Every error ends the program with its message: there
// is no recovery and no skipping to the next option, and the block changes only when the
// whole text is good.
#include <pthread.h>

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "core/keywords.h"
#include "core/options.h"
#include "vrn90.h"

namespace {

constexpr int32_t kMinimumBufferSize = 4096;

bool IsWordCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// What may follow a word or a number; anything else makes the token bad. A dash may
// follow both, as in the unit range "1-5" and "20-".
bool EndsToken(char c) { return c == 0 || c == ':' || c == '=' || c == ',' || c == '-' || IsSpace(c); }

}  // namespace

// Skips white space and reads one token; the result is the position behind it. Lower-case
// letters of a word are changed to upper case in the text.
char* FindToken(char* text, Token* token) {
    while (IsSpace(*text)) ++text;
    token->start = text;
    token->length = 0;
    char c = *text;
    if (c == 0) {
        token->type = kTokenEnd;
        return text;
    }
    auto single = [&](int type) {
        token->type = type;
        token->length = 1;
        return text + 1;
    };
    switch (c) {
    case ':': return single(kTokenColon);
    case '=': return single(kTokenEquals);
    case ',': return single(kTokenComma);
    case '\'': {
        char* close = std::strchr(text + 1, '\'');
        if (close == nullptr) {
            token->type = kTokenBad;
            token->length = static_cast<int>(std::strlen(text));
            return text + token->length;
        }
        token->type = kTokenString;
        token->start = text + 1;
        token->length = static_cast<int>(close - text - 1);
        return close + 1;
    }
    case '-':
        if (!IsDigit(text[1])) return single(kTokenDash);
        break;
    default: break;
    }
    char* end = text;
    if (*end == '-') ++end;
    bool allDigits = true;
    while (IsWordCharacter(*end)) {
        if (!IsDigit(*end)) allDigits = false;
        ++end;
    }
    if (end == text) return single(kTokenBad);
    token->length = static_cast<int>(end - text);
    token->type = allDigits ? kTokenNumber : kTokenWord;
    if (token->type == kTokenWord) {
        for (char* p = text; p < end; ++p) *p = static_cast<char>(std::toupper(static_cast<unsigned char>(*p)));
    }
    if (!EndsToken(*end)) token->type = kTokenBad;
    return end;
}

void AddUnitRange(UnitRange** list, uint32_t* count, uint32_t* capacity, UnitRange* range) {
    ++*count;
    if (*count > *capacity) {
        // The capacity is compared with the count of ranges; growing by 256 keeps it simple.
        *capacity += 256;
        auto* grown = static_cast<UnitRange*>(std::realloc(*list, *capacity * sizeof(UnitRange)));
        if (grown == nullptr) {
            ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
            --*count;
            return;
        }
        *list = grown;
    }
    UnitRange* ranges = *list;
    uint32_t i = *count - 1;
    ranges[i] = *range;
    *range = UnitRange{-1, -1};
    // From the end towards the start: merge with a predecessor that shares a number, swap
    // with one that lies above, stop at one that lies below.
    while (i > 0) {
        UnitRange& current = ranges[i];
        UnitRange& before = ranges[i - 1];
        if (current.high < before.low) {
            UnitRange kept = before;
            before = current;
            current = kept;
            --i;
        } else if (current.low > before.high) {
            break;
        } else {
            before.low = current.low < before.low ? current.low : before.low;
            before.high = current.high > before.high ? current.high : before.high;
            for (uint32_t j = i; j + 1 < *count; ++j) ranges[j] = ranges[j + 1];
            --*count;
            --i;
        }
    }
}

namespace {

// Reads a whole option text into a working copy of the block. A failure leaves its
// message and arguments behind and the block untouched.
struct OptionParser {
    OptionBlock work;
    char* position;
    Token token{};
    uint32_t option = 0;  // keyword number of the option whose value is read
    char name[64] = {};
    int32_t failure = 0;
    char failureText[256] = {};
    bool failureWithText = false;

    void Next() { position = FindToken(position, &token); }

    bool Fail(int32_t message) {
        failure = message;
        return false;
    }
    bool FailWithText(int32_t message) {
        int length = token.length < 255 ? token.length : 255;
        std::memcpy(failureText, token.start, static_cast<size_t>(length));
        failureText[length] = 0;
        failureWithText = true;
        return Fail(message);
    }

    // A keyword value that must be one of `allowed`.
    bool KeywordValue(std::initializer_list<uint32_t> allowed, uint32_t* field) {
        if (token.type != kTokenWord) return Fail(118);
        uint32_t value = _vrnFindIOKeyword(token.start, token.length) & 0xFFFFu;
        for (uint32_t candidate : allowed) {
            if (candidate == value) {
                *field = value;
                return true;
            }
        }
        return Fail(118);
    }

    bool YesNo(uint32_t* field) {
        uint32_t value = 0;
        if (!KeywordValue({VRN_KEY_YES, VRN_KEY_NO}, &value)) return false;
        *field = value == VRN_KEY_YES ? 1 : 0;
        return true;
    }

    // strtol in base 10, the same on a 32-bit and a 64-bit long.
    int32_t Number(bool* outOfRange) const {
        char saved = token.start[token.length];
        token.start[token.length] = 0;
        errno = 0;
        long value = std::strtol(token.start, nullptr, 10);
        token.start[token.length] = saved;
        *outOfRange = errno == ERANGE || value > INT32_MAX || value < INT32_MIN;
        if (value > INT32_MAX) return INT32_MAX;
        if (value < INT32_MIN) return INT32_MIN;
        return static_cast<int32_t>(value);
    }

    bool PositiveInteger(uint32_t* field) {
        if (token.type != kTokenNumber) return Fail(118);
        bool outOfRange;
        int32_t value = Number(&outOfRange);
        if (value <= 0 || (value == INT32_MAX && outOfRange)) return FailWithText(116);
        *field = static_cast<uint32_t>(value);
        return true;
    }

    bool AddRange(bool keep, UnitRange range) {
        if (keep) AddUnitRange(&work.ufmtUnits, &work.ufmtUnitCount, &work.ufmtUnitCapacity, &range);
        return true;
    }

    // A list of unit ranges, ended by ":" or the end of the text, which is left current.
    bool UnitList(bool keep) {
        for (;;) {
            if (token.type == kTokenComma) {  // a comma with no range before it is ignored
                Next();
                continue;
            }
            if (token.type == kTokenColon || token.type == kTokenEnd) return true;
            if (token.type != kTokenNumber) return Fail(118);
            bool outOfRange;
            int32_t first = Number(&outOfRange);
            Token firstToken = token;  // the message on a unit 0 quotes it
            Next();
            UnitRange range;
            if (first < 0) {
                range = UnitRange{1, first == INT32_MIN ? INT32_MAX : -first};  // "-b": the units 1 to b
            } else if (token.type == kTokenNumber && token.start[0] == '-') {
                int32_t second = Number(&outOfRange);
                range = UnitRange{first, second == INT32_MIN ? INT32_MAX : -second};  // "a-b" arrives as a, -b
                Next();
            } else if (token.type == kTokenDash) {
                range = UnitRange{first, INT32_MAX};  // "a-": from a up
                Next();
            } else if (first == 0) {
                token = firstToken;
                return FailWithText(116);
            } else {
                range = UnitRange{first, first};
            }
            if (range.high < range.low) return Fail(118);
            AddRange(keep, range);
            if (token.type != kTokenComma && token.type != kTokenColon && token.type != kTokenEnd) return Fail(115);
        }
    }

    // Reads the value of `option`; the token after the value is left current.
    bool Value() {
        bool ok;
        switch (option) {
        case VRN_KEY_CNVERR: ok = YesNo(&work.optCnvErr); break;
        case VRN_KEY_VRQ_MESSAGES: ok = YesNo(&work.optMessages); break;
        case VRN_KEY_ERR_RECOVERY: ok = YesNo(&work.optErrRecovery); break;
        case VRN_KEY_UNIT_VARS: ok = YesNo(&work.optUnitVars); break;
        case VRN_KEY_SCRATCH_VARS: ok = YesNo(&work.optScratchVars); break;
        case VRN_KEY_OPTARG_WARN: ok = YesNo(&work.optOptArgWarn); break;
        case VRN_KEY_MULTCONN: ok = YesNo(&work.optMultConn); break;
        case VRN_KEY_WARN_MULT_THRD: ok = YesNo(&work.optWarnMultThrd); break;
        case VRN_KEY_ERROREOF: ok = YesNo(&work.optErrorEof); break;
        case VRN_KEY_ERRLOC: ok = YesNo(&work.optErrLoc); break;
        case VRN_KEY_ERRTRACE: ok = YesNo(&work.optErrTrace); break;
        case VRN_KEY_ERRTHRDNUM: ok = YesNo(&work.optErrThrdNum); break;
        case VRN_KEY_ERRIMAGENUM: ok = YesNo(&work.optErrImageNum); break;
        case VRN_KEY_AGGRESSIVE_ARRAY_IO: ok = YesNo(&work.optAggressiveArrayIo); break;
        case VRN_KEY_NAMELIST: ok = KeywordValue({VRN_KEY_NEW, VRN_KEY_OLD}, &work.optNamelist); break;
        case VRN_KEY_LANGLVL:
            ok = KeywordValue({VRN_KEY_90STD, VRN_KEY_90EXT, VRN_KEY_95STD, VRN_KEY_EXTENDED, VRN_KEY_2003STD,
                               VRN_KEY_2008STD},
                              &work.optLangLvl);
            break;
        case VRN_KEY_MULTCONNIO:
            ok = KeywordValue({VRN_KEY_NO, VRN_KEY_TTY, VRN_KEY_NULLDEV, VRN_KEY_COMBINED}, &work.optMultConnIo);
            break;
        case VRN_KEY_RANDOM: ok = KeywordValue({VRN_KEY_GENERATOR1, VRN_KEY_GENERATOR2}, &work.optRandom); break;
        case VRN_KEY_CPU_TIME_TYPE:
            ok = KeywordValue({VRN_KEY_USERTIME, VRN_KEY_SYSTIME, VRN_KEY_ALLTIME, VRN_KEY_TOTAL_USERTIME,
                               VRN_KEY_TOTAL_SYSTIME, VRN_KEY_TOTAL_ALLTIME},
                              &work.optCpuTimeType);
            break;
        case VRN_KEY_BUFFERING:
            ok = KeywordValue({VRN_KEY_ENABLE, VRN_KEY_DISABLE_PRECONN, VRN_KEY_DISABLE_ALL}, &work.optBuffering);
            break;
        case VRN_KEY_IOSTAT_END: ok = KeywordValue({VRN_KEY_EXTENDED, VRN_KEY_2003STD}, &work.optIostatEnd); break;
        case VRN_KEY_INTERNAL_NLDELIM:
            ok = KeywordValue({VRN_KEY_EXTENDED, VRN_KEY_2003STD}, &work.optInternalNlDelim);
            break;
        case VRN_KEY_NANINFOUTPUT:
            ok = KeywordValue({VRN_KEY_OLD, VRN_KEY_2003STD, VRN_KEY_DEFAULT}, &work.optNanInfOutput);
            break;
        case VRN_KEY_NLWIDTH: ok = PositiveInteger(&work.optNlWidth); break;
        case VRN_KEY_INTRINTHDS: ok = PositiveInteger(&work.optIntrinThds); break;
        case VRN_KEY_BUFFER_SIZE: {
            if (token.type != kTokenNumber) return Fail(118);
            bool outOfRange;
            int32_t value = Number(&outOfRange);
            if (value != -1 && (value < kMinimumBufferSize || outOfRange)) return FailWithText(237);
            work.optBufferSize = value;
            ok = true;
            break;
        }
        case VRN_KEY_DEFAULT_RECL: {
            // Accepted for programs built for the 64-bit library; it has no effect here.
            if (token.type != kTokenNumber) return Fail(118);
            bool outOfRange;
            int32_t value = Number(&outOfRange);
            if (value != 32 && value != 64) return Fail(118);
            ok = true;
            break;
        }
        case VRN_KEY_UFMT_LITTLEENDIAN: return UnitList(true);
        case VRN_KEY_UFMT_BIGENDIAN:
            // The normal state of every unit on this big-endian target: the numbers are
            // checked and dropped, and the list gains an empty range.
            if (!UnitList(false)) return false;
            return AddRange(true, UnitRange{-1, -1});
        default: return Fail(117);
        }
        if (ok) Next();
        return ok;
    }

    bool Run() {
        Next();
        for (;;) {
            // Expect a name; colons alone are empty options.
            if (token.type == kTokenColon) {
                Next();
                continue;
            }
            if (token.type == kTokenEnd) return true;
            if (token.type != kTokenWord) return Fail(113);
            int length = token.length < static_cast<int>(sizeof name) - 1 ? token.length : static_cast<int>(sizeof name) - 1;
            std::memcpy(name, token.start, static_cast<size_t>(length));
            name[length] = 0;
            uint32_t found = _vrnFindIOKeyword(token.start, token.length);
            option = found & 0xFFFFu;
            // UWIDTH belongs to the 64-bit library; its name is known so that it is refused.
            if (!(found & VRN_KEYWORD_OPTION) || option == VRN_KEY_UWIDTH) return Fail(117);
            Next();
            if (token.type != kTokenEquals) return Fail(114);
            Next();
            if (!Value()) return false;
            if (token.type == kTokenEnd) return true;
            if (token.type != kTokenColon) return Fail(115);
            Next();
        }
    }
};

}  // namespace

int32_t ParseRTEOptions(OptionBlock* options, char* text, char (&option)[64], char (&value)[256]) {
    OptionParser parser{*options, text};
    // The ranges are copied too, so that a failed text leaves the block as it was.
    parser.work.ufmtUnits = nullptr;
    if (options->ufmtUnitCapacity > 0) {
        size_t bytes = options->ufmtUnitCapacity * sizeof(UnitRange);
        parser.work.ufmtUnits = static_cast<UnitRange*>(std::malloc(bytes));
        if (parser.work.ufmtUnits == nullptr) return 37;
        std::memcpy(parser.work.ufmtUnits, options->ufmtUnits, options->ufmtUnitCount * sizeof(UnitRange));
    }
    if (!parser.Run()) {
        std::free(parser.work.ufmtUnits);
        std::memcpy(option, parser.name, sizeof option);
        std::memcpy(value, parser.failureText, sizeof value);
        return parser.failure;
    }
    std::free(options->ufmtUnits);
    *options = parser.work;
    return 0;
}

void ProcessRTEOptions(GlobalContext* global, const char* text, int32_t length) {
    if (text == nullptr || length < 1) return;
    char* copy = static_cast<char*>(std::malloc(static_cast<size_t>(length) + 1));
    if (copy == nullptr) {
        ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
        return;
    }
    std::memcpy(copy, text, static_cast<size_t>(length));
    copy[length] = 0;
    char option[64];
    char value[256];
    int32_t message = ParseRTEOptions(&global->options, copy, option, value);
    std::free(copy);
    if (message != 0) {
        // A bad option text ends the program: no specifier can take it over.
        switch (message) {
        case 113: ErrorHandler(kClassSevere, kKindError, message, message, 0u); break;
        case 37: ErrorHandler(kClassSevere, kKindResources, message, message, 0u); break;
        case 116: ErrorHandler(kClassSevere, kKindError, message, message, ArgText(1), option, ArgText(2), value, 0u); break;
        case 237: ErrorHandler(kClassSevere, kKindError, message, message, ArgText(1), value, 0u); break;
        default: ErrorHandler(kClassSevere, kKindError, message, message, ArgText(1), option, 0u); break;
        }
        AbnormalExit(1);
    }
    if (global->options.optErrThrdNum && !ResolveThreadNumFunc()) global->options.optErrThrdNum = 0;
}

void SetOldOptions(GlobalContext* global) {
    // Two variables older than VRNRTEOPTS, which override it. The names are lower case.
    if (const char* value = std::getenv("vrq_messages")) {
        bool no = std::strlen(value) == 2 && std::toupper(static_cast<unsigned char>(value[0])) == 'N' &&
                  std::toupper(static_cast<unsigned char>(value[1])) == 'O';
        global->options.optMessages = no ? 0 : 1;
    }
    if (const char* value = std::getenv("cnverr")) {
        bool yes = std::strlen(value) == 3 && std::toupper(static_cast<unsigned char>(value[0])) == 'Y' &&
                   std::toupper(static_cast<unsigned char>(value[1])) == 'E' &&
                   std::toupper(static_cast<unsigned char>(value[2])) == 'S';
        global->options.optCnvErr = yes ? 1 : 0;
    }
}

int32_t GetRTEOptsFromAnyThread(int32_t key) {
    static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&mutex);
    int32_t value = _vrnGetRTEOpts(key);
    pthread_mutex_unlock(&mutex);
    return value;
}

VRN_EXPORT int32_t _vrnGetRTEOpts(int32_t key) {
    EnsureRuntimeStarted();
    const OptionBlock& o = _GlobalContext->options;
    auto yesNo = [](uint32_t value) { return value ? static_cast<int32_t>(VRN_KEY_YES) : static_cast<int32_t>(VRN_KEY_NO); };
    switch (key) {
    case VRN_KEY_CNVERR: return yesNo(o.optCnvErr);
    case VRN_KEY_VRQ_MESSAGES: return yesNo(o.optMessages);
    case VRN_KEY_ERR_RECOVERY: return yesNo(o.optErrRecovery);
    case VRN_KEY_UNIT_VARS: return yesNo(o.optUnitVars);
    case VRN_KEY_SCRATCH_VARS: return yesNo(o.optScratchVars);
    case VRN_KEY_OPTARG_WARN: return yesNo(o.optOptArgWarn);
    case VRN_KEY_MULTCONN: return yesNo(o.optMultConn);
    case VRN_KEY_WARN_MULT_THRD: return yesNo(o.optWarnMultThrd);
    case VRN_KEY_ERROREOF: return yesNo(o.optErrorEof);
    case VRN_KEY_AGGRESSIVE_ARRAY_IO: return yesNo(o.optAggressiveArrayIo);
    case VRN_KEY_ERRLOC: return static_cast<int32_t>(o.optErrLoc);
    case VRN_KEY_ERRTRACE: return static_cast<int32_t>(o.optErrTrace);
    case VRN_KEY_ERRTHRDNUM: return static_cast<int32_t>(o.optErrThrdNum);
    case VRN_KEY_ERRIMAGENUM: return static_cast<int32_t>(o.optErrImageNum);
    case VRN_KEY_NAMELIST: return static_cast<int32_t>(o.optNamelist);
    case VRN_KEY_NLWIDTH: return static_cast<int32_t>(o.optNlWidth);
    case VRN_KEY_LANGLVL: return static_cast<int32_t>(o.optLangLvl);
    case VRN_KEY_MULTCONNIO: return static_cast<int32_t>(o.optMultConnIo);
    case VRN_KEY_RANDOM: return static_cast<int32_t>(o.optRandom);
    case VRN_KEY_CPU_TIME_TYPE: return static_cast<int32_t>(o.optCpuTimeType);
    case VRN_KEY_BUFFERING: return static_cast<int32_t>(o.optBuffering);
    case VRN_KEY_INTRINTHDS: return static_cast<int32_t>(o.optIntrinThds);
    case VRN_KEY_IOSTAT_END: return static_cast<int32_t>(o.optIostatEnd);
    case VRN_KEY_INTERNAL_NLDELIM: return static_cast<int32_t>(o.optInternalNlDelim);
    case VRN_KEY_NANINFOUTPUT: return static_cast<int32_t>(o.optNanInfOutput);
    case VRN_KEY_BUFFER_SIZE: return o.optBufferSize;
    default: return -1;
    }
}

VRN_EXPORT void setrteopts(const char* text, int32_t length) {
    EnsureRuntimeStarted();
    NeuterLocalContext(_LocalContext[0]);
    if (length > 0) {
        ProcessRTEOptions(_GlobalContext, text, length);
        SetBufferingFlag(_GlobalContext, _LocalContext[0]);
    }
}

VRN_EXPORT void setrteopts_(const char* text, int32_t length) { setrteopts(text, length); }
