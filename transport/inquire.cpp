// INQUIRE by unit and by file: what a program may learn about a connection or a file,
// stored into the variables the statement names. INQUIRE has no effect on units or
// files: it reads the unit record and, for a file nobody holds, what stat(2) says.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "core/context.h"
#include "core/errors.h"
#include "core/keywords.h"
#include "core/statement.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "ufmt/async_io.h"
#include "vrn90.h"

namespace {

// The unit a derived-type I/O procedure receives for an internal parent.
constexpr int32_t kInternalUnitNumber = -2;

// What one INQUIRE is about.
struct Subject {
    UnitRecord* unit = nullptr;  // the connection, or null when there is none
    bool byFile = false;
    bool exists = false;         // the unit or the file exists
    bool fileSeen = false;       // by file: stat(2) found the file
    struct stat64 fileStat;      // read only when fileSeen
    const char* name = nullptr;  // by file: the name, trimmed and NUL-ended
    bool pending = false;        // PENDING=: an asynchronous transfer is still running
};

bool Formatted(const Subject& subject) { return subject.unit != nullptr && subject.unit->form == VRN_KEY_FORMATTED; }

// Answers are views: a keyword's name has its length in the table, and a default view
// (no data) leaves the variable alone.
using Text = std::string_view;

Text KeywordName(uint32_t keyword) {
    if (keyword == 0 || keyword >= kKeywordRows) return "UNDEFINED";
    return Text(_RTE_key_info[keyword].name, _RTE_key_info[keyword].length);
}

Text YesNo(bool yes) { return yes ? "YES" : "NO"; }

// A file that the library could connect: anything that exists but a directory.
bool Connectable(const Subject& subject) { return subject.fileSeen && !S_ISDIR(subject.fileStat.st_mode); }

bool Positionable(const struct stat64& fileStat) { return S_ISREG(fileStat.st_mode) || S_ISBLK(fileStat.st_mode); }

// SEQUENTIAL=, DIRECT= and STREAM=: a connection answers for its own access method; a
// file nobody holds, for what an OPEN could choose.
Text AccessAllowed(const Subject& subject, uint32_t access) {
    if (subject.unit != nullptr) return YesNo(subject.unit->access == access);
    if (!subject.fileSeen) return "UNKNOWN";
    if (!Connectable(subject)) return "NO";
    return YesNo(access == VRN_KEY_SEQUENTIAL || Positionable(subject.fileStat));
}

// FORMATTED= and UNFORMATTED=: a connection whose form is not decided yet could take either.
Text FormAllowed(const Subject& subject, uint32_t form) {
    if (subject.unit != nullptr) return subject.unit->form == 0 ? "UNKNOWN" : YesNo(subject.unit->form == form);
    if (!subject.fileSeen) return "UNKNOWN";
    return YesNo(Connectable(subject));
}

// READ=, WRITE= and READWRITE=: the connection's action, or the file's permissions.
Text ActionAllowed(const Subject& subject, bool read, bool write) {
    if (UnitRecord* unit = subject.unit) {
        uint32_t action = unit->action;
        bool canRead = action == VRN_KEY_READ || action == VRN_KEY_READWRITE;
        bool canWrite = action == VRN_KEY_WRITE || action == VRN_KEY_READWRITE;
        return YesNo((!read || canRead) && (!write || canWrite));
    }
    if (!subject.fileSeen) return "UNKNOWN";
    if (!Connectable(subject)) return "NO";
    int mode = (read ? R_OK : 0) | (write ? W_OK : 0);
    return YesNo(access(subject.name, mode) == 0);
}

// A mode of a formatted connection; `unset` stands for a property OPEN left at 0.
Text FormattedMode(const Subject& subject, uint32_t UnitRecord::*mode, uint32_t unset) {
    if (!Formatted(subject)) return "UNDEFINED";
    uint32_t value = subject.unit->*mode;
    return KeywordName(value != 0 ? value : unset);
}

bool Named(const Subject& subject) {
    if (subject.byFile) return true;
    const UnitRecord* unit = subject.unit;
    return unit != nullptr && unit->fileName != nullptr && unit->status != VRN_KEY_SCRATCH;
}

// The text a character specifier receives.
Text TextAnswer(const Subject& subject, uint32_t keyword) {
    const UnitRecord* unit = subject.unit;
    switch (keyword) {
    case VRN_KEY_ACCESS: return unit != nullptr ? KeywordName(unit->access) : "UNDEFINED";
    case VRN_KEY_ACTION: return unit != nullptr ? KeywordName(unit->action) : "UNDEFINED";
    case VRN_KEY_ASYNCH:
    case VRN_KEY_ASYNCHRONOUS: return unit != nullptr ? YesNo(unit->asynch == VRN_KEY_YES) : "UNDEFINED";
    case VRN_KEY_BLANK: return FormattedMode(subject, &UnitRecord::blank, VRN_KEY_NULL);
    case VRN_KEY_DECIMAL: return FormattedMode(subject, &UnitRecord::decimal, VRN_KEY_POINT);
    case VRN_KEY_DELIM: return FormattedMode(subject, &UnitRecord::delim, VRN_KEY_NONE);
    case VRN_KEY_PAD: return FormattedMode(subject, &UnitRecord::pad, VRN_KEY_YES);
    case VRN_KEY_ROUND: return FormattedMode(subject, &UnitRecord::round, VRN_KEY_PROCESSOR_DEFINED);
    case VRN_KEY_SIGN: return FormattedMode(subject, &UnitRecord::sign, VRN_KEY_PROCESSOR_DEFINED);
    case VRN_KEY_ENCODING: return Formatted(subject) ? "DEFAULT" : "UNDEFINED";
    case VRN_KEY_FORM: return unit != nullptr && unit->form != 0 ? KeywordName(unit->form) : "UNDEFINED";
    case VRN_KEY_FORMATTED: return FormAllowed(subject, VRN_KEY_FORMATTED);
    case VRN_KEY_UNFORMATTED: return FormAllowed(subject, VRN_KEY_UNFORMATTED);
    case VRN_KEY_SEQUENTIAL: return AccessAllowed(subject, VRN_KEY_SEQUENTIAL);
    case VRN_KEY_DIRECT: return AccessAllowed(subject, VRN_KEY_DIRECT);
    case VRN_KEY_STREAM: return AccessAllowed(subject, VRN_KEY_STREAM);
    case VRN_KEY_READ: return ActionAllowed(subject, true, false);
    case VRN_KEY_WRITE: return ActionAllowed(subject, false, true);
    case VRN_KEY_READWRITE: return ActionAllowed(subject, true, true);
    case VRN_KEY_POSITION:
        if (unit == nullptr || unit->access == VRN_KEY_DIRECT) return "UNDEFINED";
        if (unit->appendPending) return "APPEND";
        return unit->position != 0 ? KeywordName(unit->position) : "ASIS";
    case VRN_KEY_NAME:
        // A file without a name leaves blanks, which no OPEN takes for a name.
        if (!Named(subject)) return "";
        return unit != nullptr ? unit->fileName : subject.name;
    default: return Text();
    }
}

// Whether an integer specifier has a value; false leaves the variable as it was.
bool IntegerAnswer(const Subject& subject, uint32_t keyword, int64_t* value) {
    const UnitRecord* unit = subject.unit;
    switch (keyword) {
    case VRN_KEY_NUMBER: *value = unit != nullptr ? unit->unitNumber : -1; return true;
    case VRN_KEY_NEXTREC:
        if (unit == nullptr || unit->access != VRN_KEY_DIRECT) return false;
        *value = static_cast<int64_t>(unit->nextRecord);
        return true;
    case VRN_KEY_POS:
        if (unit == nullptr || unit->access != VRN_KEY_STREAM || unit->permanentError) return false;
        // With transfers pending, the position they will have left.
        *value = (unit->aioMode && unit->aioEndPosition >= 0 ? unit->aioEndPosition : unit->filePosition) + 1;
        return true;
    case VRN_KEY_RECL:
        if (unit == nullptr) {
            *value = -1;
        } else if (unit->access == VRN_KEY_STREAM) {
            *value = -2;
        } else {
            *value = unit->recl >= 0 ? unit->recl : unit->maxRecord > 0 ? unit->maxRecord : -1;
        }
        return true;
    case VRN_KEY_SIZE:
        if (unit != nullptr) {
            *value = UnitFileSize(unit);
        } else {
            *value = subject.fileSeen && Positionable(subject.fileStat) ? subject.fileStat.st_size : -1;
        }
        return true;
    default: return false;
    }
}

bool LogicalAnswer(const Subject& subject, uint32_t keyword, bool* value) {
    switch (keyword) {
    case VRN_KEY_EXIST: *value = subject.exists; return true;
    case VRN_KEY_OPENED: *value = subject.unit != nullptr; return true;
    case VRN_KEY_NAMED: *value = Named(subject); return true;
    case VRN_KEY_PENDING: *value = subject.pending; return true;
    default: return false;
    }
}

void StoreText(const KeywordEntry& entry, Text text) {
    auto* variable = reinterpret_cast<char*>(entry.a);
    if (variable == nullptr) return;
    size_t length = entry.b;
    size_t taken = std::min(text.size(), length);
    std::memcpy(variable, text.data(), taken);
    std::memset(variable + taken, ' ', length - taken);
}

void StoreInteger(void* variable, int32_t size, int64_t value) {
    if (variable == nullptr) return;
    if (size == 8) {
        std::memcpy(variable, &value, sizeof value);
    } else {
        auto narrow = static_cast<int32_t>(value);
        std::memcpy(variable, &narrow, sizeof narrow);
    }
}

// Which kind of answer each keyword has, so that an entry goes straight to its own.
enum class AnswerKind : uint8_t { kNone, kInteger, kLogical, kText };

constexpr auto kAnswerKinds = [] {
    std::array<AnswerKind, kKeywordRows> kinds{};
    for (uint32_t keyword : {VRN_KEY_NUMBER, VRN_KEY_NEXTREC, VRN_KEY_POS, VRN_KEY_RECL, VRN_KEY_SIZE}) {
        kinds[keyword] = AnswerKind::kInteger;
    }
    for (uint32_t keyword : {VRN_KEY_EXIST, VRN_KEY_OPENED, VRN_KEY_NAMED, VRN_KEY_PENDING}) {
        kinds[keyword] = AnswerKind::kLogical;
    }
    for (uint32_t keyword :
         {VRN_KEY_ACCESS, VRN_KEY_ACTION, VRN_KEY_ASYNCH, VRN_KEY_ASYNCHRONOUS, VRN_KEY_BLANK, VRN_KEY_DECIMAL,
          VRN_KEY_DELIM, VRN_KEY_PAD, VRN_KEY_ROUND, VRN_KEY_SIGN, VRN_KEY_ENCODING, VRN_KEY_FORM, VRN_KEY_FORMATTED,
          VRN_KEY_UNFORMATTED, VRN_KEY_SEQUENTIAL, VRN_KEY_DIRECT, VRN_KEY_STREAM, VRN_KEY_READ, VRN_KEY_WRITE,
          VRN_KEY_READWRITE, VRN_KEY_POSITION, VRN_KEY_NAME}) {
        kinds[keyword] = AnswerKind::kText;
    }
    return kinds;
}();

// One entry of the list: a character, integer or logical result, by its keyword. The
// 64-bit forms carry the keyword in b; each takes only answers of its own kind.
void Answer(const Subject& subject, const KeywordEntry& entry) {
    uint32_t tag = entry.tag & 0xFFFFu;
    auto* variable = reinterpret_cast<void*>(entry.a);
    bool wideInteger = tag == VRN_TAG_INQUIRE_INT8, wideLogical = tag == VRN_TAG_INQUIRE_LOG8;
    uint32_t keyword = wideInteger || wideLogical ? entry.b : tag;
    if (keyword >= static_cast<uint32_t>(kKeywordRows)) return;
    switch (kAnswerKinds[keyword]) {
    case AnswerKind::kInteger: {
        int64_t number;
        if (!wideLogical && IntegerAnswer(subject, keyword, &number)) StoreInteger(variable, wideInteger ? 8 : 4, number);
        return;
    }
    case AnswerKind::kLogical: {
        bool truth;
        if (wideInteger || !LogicalAnswer(subject, keyword, &truth)) return;
        StoreLogicalSpecifier(variable, wideLogical ? 8 : entry.b == 0 ? 4 : entry.b, truth);
        return;
    }
    case AnswerKind::kText:
        if (wideInteger || wideLogical) return;
        if (Text text = TextAnswer(subject, keyword); text.data() != nullptr) StoreText(entry, text);
        return;
    case AnswerKind::kNone: return;
    }
}

// What the statement's list holds besides its answers, taken in one pass: the message
// specifiers go to the context on the way.
struct ListFacts {
    const KeywordEntry* file = nullptr;
    bool pendingAsked = false;
    bool idGiven = false;
    int32_t id = 0;
};

ListFacts ReadList(LocalContext* context, const KeywordList* keywords) {
    ListFacts facts;
    if (keywords == nullptr || keywords->version != 1) return facts;
    for (uint32_t i = 0; i < keywords->count; ++i) {
        const KeywordEntry& entry = keywords->entries[i];
        switch (entry.tag & 0xFFFFu) {
        case VRN_KEY_FILE:
            if (facts.file == nullptr) facts.file = &entry;
            break;
        case VRN_KEY_PENDING: facts.pendingAsked = true; break;
        case VRN_TAG_INQUIRE_LOG8:
            if (entry.b == VRN_KEY_PENDING) facts.pendingAsked = true;
            break;
        case VRN_KEY_ID:
        case VRN_TAG_ID8:
            facts.idGiven = true;
            facts.id = RequestIdOf(entry);
            break;
        case VRN_KEY_IOMSG:
        case VRN_KEY_MSGLINE:
        case VRN_KEY_MSGFILE:
        case VRN_TAG_IOSTAT8: TakeMessageSpecifier(context, entry); break;
        default: break;
        }
    }
    return facts;
}

// The file named by FILE=, and the unit that holds it if any. false when the statement
// ends with an error.
bool FindFile(GlobalContext* global, LocalContext* context, const KeywordEntry& entry, char* name, Subject& subject) {
    const char* text = reinterpret_cast<const char*>(entry.a);
    int32_t length = text != nullptr ? static_cast<int32_t>(entry.b) : 0;
    bool hasNul = TrimFileName(text, &length) != 0;
    if (length > kMaxFileName || hasNul) {
        char shown[kMaxValueText + 1];
        KeywordValueText(entry, shown);
        if (length > kMaxFileName) {
            ErrorHandler(kClassRecoverable, kKindError, 154, 31, ArgText(1), shown, 0u);
            return false;
        }
        // As in OPEN, the name is cut at the NUL when the program goes on.
        if (ErrorHandler(kClassRecoverable, kKindError, 126, 126, ArgText(1), shown, 0u) != kRecover) return false;
    }
    std::memcpy(name, text, static_cast<size_t>(length));
    name[length] = 0;
    subject.byFile = true;
    subject.name = name;
    subject.fileSeen = length > 0 && stat64(name, &subject.fileStat) == 0;
    subject.exists = subject.fileSeen;
    if (subject.fileSeen) {
        ListNode* predecessor;
        InodeRecord* inode =
            FindInodeRecord(global, context, subject.fileStat.st_dev, subject.fileStat.st_ino, &predecessor);
        subject.unit = FirstUnitOnInode(inode);
    }
    return true;
}

// PENDING= asks the asynchronous layer, which performs the wait of a request that has
// finished; ID= names the request, otherwise it is every request of the unit. false when
// the report of a failed request stopped the statement.
bool FindPending(GlobalContext* global, LocalContext* context, const ListFacts& facts, Subject& subject) {
    if (!facts.pendingAsked || subject.byFile) return true;
    return AIOInquirePending(global, context, subject.unit, facts.idGiven, facts.id, &subject.pending);
}

}  // namespace

int32_t InquireCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords) {
    bool byUnit = (context->options & VRN_OPTION_INQUIRE_BY_UNIT) != 0;
    ListFacts facts = ReadList(context, keywords);
    const KeywordEntry* file = facts.file;
    if (byUnit == (file != nullptr)) {
        ErrorHandler(kClassRecoverable, kKindError, 34, 34, 0u);
        return context->status;
    }
    Subject subject;
    char name[kMaxFileName + 1];
    if (byUnit) {
        // Inside a defined I/O procedure of an internal parent, the unit it was given
        // is the internal file, which is no unit to inquire about.
        bool internalParent = context->nested && (context->parentFlags & VRN_FLAG_INTERNAL);
        if (unitNumber == kInternalUnitNumber && internalParent) {
            ErrorHandler(kClassRecoverable, kKindError, 33, 33, ArgInt(1), unitNumber, 0u);
            return context->status;
        }
        subject.unit = LookUpUnit(global, unitNumber);
        subject.exists = unitNumber >= 0 || subject.unit != nullptr;
    } else if (!FindFile(global, context, *file, name, subject)) {
        return context->status;
    }
    if (keywords == nullptr || keywords->version != 1) return context->status;
    if (!FindPending(global, context, facts, subject)) return context->status;
    for (uint32_t i = 0; i < keywords->count; ++i) Answer(subject, keywords->entries[i]);
    return context->status;
}
