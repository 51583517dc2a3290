// Connecting files to units: the OPEN statement, preconnection of units 0, 5 and 6, and
// the implicit open of a sequential statement on an unconnected unit. All three end in
// the same routines, which decide the properties, find the InodeRecord, apply the
// multiple-connection rules and attach the buffer.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/keywords.h"
#include "core/unit.h"
#include "transport/transport.h"
#include "ufmt/async_io.h"
#include "vrn90.h"

namespace {

constexpr char kPreconnectOutOfMemory[] = "VR Fortran (preconnection): Out of memory.\n";

struct OpenProperties {
    InodeRecord* inode;
    int32_t recl;
    uint32_t status, access, form, asynch, blank, position, action, delim, pad, sign, decimal, round, encoding;
    struct stat64 fileStat;
    uint32_t blockSize;
    char name[kMaxFileName + 1];
    bool existed;         // the file was there before this OPEN
    void* newUnitAddress;
    bool newUnit64;
};

struct GivenSpecifiers {
    bool recl, status, access, form, asynch, blank, position, action, delim, pad, sign, decimal, round, encoding;
    bool file, newUnit;
};

struct SpecifierRule {
    uint32_t tag;
    int32_t message;
    uint32_t OpenProperties::*field;
    bool GivenSpecifiers::*given;
    uint32_t allowed[6];
};

constexpr SpecifierRule kSpecifierRules[] = {
    {VRN_KEY_ACCESS, 27, &OpenProperties::access, &GivenSpecifiers::access,
     {VRN_KEY_DIRECT, VRN_KEY_SEQUENTIAL, VRN_KEY_STREAM}},
    {VRN_KEY_ACTION, 129, &OpenProperties::action, &GivenSpecifiers::action,
     {VRN_KEY_READ, VRN_KEY_READWRITE, VRN_KEY_WRITE}},
    {VRN_KEY_BLANK, 30, &OpenProperties::blank, &GivenSpecifiers::blank, {VRN_KEY_NULL, VRN_KEY_ZERO}},
    {VRN_KEY_DELIM, 132, &OpenProperties::delim, &GivenSpecifiers::delim,
     {VRN_KEY_APOSTROPHE, VRN_KEY_QUOTE, VRN_KEY_NONE}},
    {VRN_KEY_FORM, 28, &OpenProperties::form, &GivenSpecifiers::form, {VRN_KEY_FORMATTED, VRN_KEY_UNFORMATTED}},
    {VRN_KEY_PAD, 134, &OpenProperties::pad, &GivenSpecifiers::pad, {VRN_KEY_YES, VRN_KEY_NO}},
    {VRN_KEY_POSITION, 128, &OpenProperties::position, &GivenSpecifiers::position,
     {VRN_KEY_APPEND, VRN_KEY_ASIS, VRN_KEY_REWIND}},
    {VRN_KEY_STATUS, 29, &OpenProperties::status, &GivenSpecifiers::status,
     {VRN_KEY_NEW, VRN_KEY_OLD, VRN_KEY_REPLACE, VRN_KEY_SCRATCH, VRN_KEY_UNKNOWN}},
    {VRN_KEY_ASYNCH, 225, &OpenProperties::asynch, &GivenSpecifiers::asynch, {VRN_KEY_YES, VRN_KEY_NO}},
    {VRN_KEY_ASYNCHRONOUS, 225, &OpenProperties::asynch, &GivenSpecifiers::asynch, {VRN_KEY_YES, VRN_KEY_NO}},
    {VRN_KEY_SIGN, 218, &OpenProperties::sign, &GivenSpecifiers::sign,
     {VRN_KEY_PLUS, VRN_KEY_SUPPRESS, VRN_KEY_PROCESSOR_DEFINED}},
    {VRN_KEY_DECIMAL, 219, &OpenProperties::decimal, &GivenSpecifiers::decimal, {VRN_KEY_COMMA, VRN_KEY_POINT}},
    {VRN_KEY_ROUND, 223, &OpenProperties::round, &GivenSpecifiers::round,
     {VRN_KEY_UP, VRN_KEY_DOWN, VRN_KEY_ZERO, VRN_KEY_NEAREST, VRN_KEY_COMPATIBLE, VRN_KEY_PROCESSOR_DEFINED}},
    {VRN_KEY_ENCODING, 236, &OpenProperties::encoding, &GivenSpecifiers::encoding, {VRN_KEY_DEFAULT}},
};

bool Allowed(const SpecifierRule& rule, uint32_t value) {
    if (value == 0) return false;
    for (uint32_t allowed : rule.allowed) {
        if (allowed == value) return true;
    }
    return false;
}

// Class 1 kind 3 with the text of the value and the unit, the arguments that the checks
// of READ and WRITE give the same numbers; true when the caller is to go on.
bool Recovered(int32_t message, int32_t iostat, int32_t unitNumber, const char* text) {
    return ErrorHandler(kClassRecoverable, kKindError, message, iostat, ArgText(1), text, ArgInt(2), unitNumber,
                        0u) == kRecover;
}

int32_t SevereWithName(int32_t message, int32_t unitNumber, const char* name) {
    return ErrorHandler(kClassSevere, kKindError, message, message, ArgInt(1), unitNumber, ArgText(2), name, 0u);
}

int32_t FileSystemError(int32_t unitNumber, int errnoValue, const char* name) {
    return ErrorHandler(kClassSevere, kKindError, 14, 14, ArgInt(1), unitNumber, ArgErrno(2), errnoValue,
                        ArgText(3), name, 0u);
}

void OutOfMemory() { ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u); }

bool TakeFileName(const KeywordEntry& entry, int32_t unitNumber, OpenProperties& properties,
                  GivenSpecifiers& given) {
    const char* text = reinterpret_cast<const char*>(entry.a);
    int32_t length = text != nullptr ? static_cast<int32_t>(entry.b) : 0;
    bool hasNul = TrimFileName(text, &length) != 0;
    char shown[kMaxValueText + 1];
    KeywordValueText(entry, shown);
    if (length > kMaxFileName) return Recovered(154, 31, unitNumber, shown);
    if (hasNul && !Recovered(126, 126, unitNumber, shown)) return false;
    if (length == 0) return Recovered(155, 155, unitNumber, shown);
    std::memcpy(properties.name, text, static_cast<size_t>(length));
    properties.name[length] = 0;
    given.file = true;
    return true;
}

// 1 when the scan went through, 0 when a message ended the statement.
int32_t CheckSpecifiers(LocalContext* context, int32_t unitNumber, const KeywordList* keywords,
                        GivenSpecifiers& given, OpenProperties& properties) {
    if (keywords == nullptr) return 1;
    if (keywords->version != 1) {
        ErrorHandler(kClassSevere, kKindError, 135, 135, ArgInt(1), static_cast<int32_t>(keywords->version),
                     ArgInt(2), 1, 0u);
        return 0;
    }
    for (uint32_t i = 0; i < keywords->count; ++i) {
        const KeywordEntry& entry = keywords->entries[i];
        uint32_t tag = entry.tag & 0xFFFFu;
        char text[kMaxValueText + 1];
        if (tag == VRN_KEY_RECL) {
            int32_t recl = static_cast<int32_t>(entry.a);
            if (recl > 0) {
                properties.recl = recl;
                given.recl = true;
            } else {
                std::snprintf(text, sizeof text, "%ld", static_cast<long>(recl));
                if (!Recovered(26, 26, unitNumber, text)) return 0;
            }
            continue;
        }
        if (tag == VRN_KEY_FILE) {
            if (!TakeFileName(entry, unitNumber, properties, given)) return 0;
            continue;
        }
        if (tag == VRN_KEY_NEWUNIT || tag == VRN_TAG_NEWUNIT8) {
            properties.newUnitAddress = reinterpret_cast<void*>(entry.a);
            properties.newUnit64 = tag == VRN_TAG_NEWUNIT8;
            given.newUnit = true;
            continue;
        }
        for (const SpecifierRule& rule : kSpecifierRules) {
            if (rule.tag != tag) continue;
            uint32_t value = KeywordOfValue(entry.a, entry.b);
            if (Allowed(rule, value)) {
                properties.*rule.field = value;
                given.*rule.given = true;
            } else {
                KeywordValueText(entry, text);
                if (rule.message == 225) {  // no recovery: the scan ends with a failure
                    Recovered(225, 225, unitNumber, text);
                    return 0;
                }
                if (!Recovered(rule.message, rule.message, unitNumber, text)) return 0;
            }
            break;
        }
    }
    (void)context;
    return 1;
}

void SetDefaults(LocalContext* context, UnitRecord* unit, const GivenSpecifiers& given,
                 OpenProperties& properties) {
    if (!given.asynch) properties.asynch = VRN_KEY_NO;
    if (!given.access) properties.access = VRN_KEY_SEQUENTIAL;
    if (!given.form) {
        properties.form = properties.access == VRN_KEY_SEQUENTIAL ? VRN_KEY_FORMATTED : VRN_KEY_UNFORMATTED;
    }
    if (!given.blank) properties.blank = VRN_KEY_NULL;
    if (!given.position) {
        properties.position = VRN_KEY_ASIS;
        if (properties.status == VRN_KEY_UNKNOWN) unit->appendPending = (context->options & VRN_OPTION_OPEN_APPEND_UNKNOWN) != 0;
        if (properties.status == VRN_KEY_OLD) unit->appendPending = (context->options & VRN_OPTION_OPEN_APPEND_OLD) != 0;
    }
    if (!given.action) properties.action = 0;
    if (!given.delim) properties.delim = 0;
    if (!given.pad) {
        bool padYes = properties.access == VRN_KEY_SEQUENTIAL || (context->options & VRN_OPTION_PAD_RULE);
        properties.pad = padYes ? VRN_KEY_YES : VRN_KEY_NO;
    }
    if (!given.sign) properties.sign = 0;
    if (!given.recl) properties.recl = -1;
    if (!given.decimal) properties.decimal = VRN_KEY_POINT;
    if (!given.round) properties.round = VRN_KEY_PROCESSOR_DEFINED;
    if (!given.encoding) properties.encoding = VRN_KEY_DEFAULT;
}

// Names a file from an environment variable; 0 when unset, -1 when too long.
int32_t NameFromVariable(const char* prefix, int32_t unitNumber, OpenProperties& properties) {
    char variable[64];
    std::snprintf(variable, sizeof variable, "%s%ld", prefix, static_cast<long>(unitNumber));
    const char* value = std::getenv(variable);
    if (value == nullptr) return 0;
    size_t length = std::strlen(value);
    if (length > kMaxFileName) return -1;
    std::memcpy(properties.name, value, length + 1);
    return 1;
}

void DefaultName(int32_t unitNumber, OpenProperties& properties) {
    std::snprintf(properties.name, sizeof properties.name, "fort.%ld", static_cast<long>(unitNumber));
}

bool MakeScratchName(GlobalContext* global, int32_t unitNumber, OpenProperties& properties) {
    if (global->options.optScratchVars) {
        int32_t named = NameFromVariable("VRNSCRATCH_", unitNumber, properties);
        if (named < 0) return Recovered(154, 31, unitNumber, "");
        if (named > 0) return true;
    }
    const char* directory = std::getenv("TMPDIR");
    if (directory == nullptr) directory = "/tmp";
    int written = std::snprintf(properties.name, sizeof properties.name, "%s/VrnRtXXXXXX", directory);
    if (written < 0 || written > kMaxFileName) return Recovered(154, 31, unitNumber, directory);
    int fd = mkstemp64(properties.name);
    if (fd < 0) {
        FileSystemError(unitNumber, errno, properties.name);
        return false;
    }
    // Only the unique name is kept; the OPEN creates the file anew.
    close(fd);
    unlink(properties.name);
    return true;
}

bool SetOpenProperties(GlobalContext* global, LocalContext* context, UnitRecord* unit, GivenSpecifiers& given,
                       OpenProperties& properties) {
    SetDefaults(context, unit, given, properties);
    int32_t number = unit->unitNumber;
    if (properties.access == VRN_KEY_DIRECT && !given.recl) {
        ErrorHandler(kClassRecoverable, kKindError, 25, 25, ArgInt(1), number, 0u);
        return false;
    }
    if (properties.access == VRN_KEY_DIRECT && given.position) {
        if (!Recovered(127, 127, number, "")) return false;
        properties.position = VRN_KEY_ASIS;
    }
    if (properties.access == VRN_KEY_STREAM && given.recl) {
        if (!Recovered(191, 191, number, "")) return false;
        properties.recl = -1;
    }
    if (properties.form == VRN_KEY_UNFORMATTED) {
        struct FormattedOnly {
            bool GivenSpecifiers::*given;
            uint32_t OpenProperties::*field;
            int32_t message;
            uint32_t fallback;
        };
        const FormattedOnly formattedOnly[] = {
            {&GivenSpecifiers::blank, &OpenProperties::blank, 125, VRN_KEY_NULL},
            {&GivenSpecifiers::delim, &OpenProperties::delim, 131, 0},
            {&GivenSpecifiers::pad, &OpenProperties::pad, 133, VRN_KEY_YES},
            {&GivenSpecifiers::sign, &OpenProperties::sign, 217, 0},
            {&GivenSpecifiers::decimal, &OpenProperties::decimal, 221, VRN_KEY_POINT},
            {&GivenSpecifiers::round, &OpenProperties::round, 222, VRN_KEY_PROCESSOR_DEFINED},
            {&GivenSpecifiers::encoding, &OpenProperties::encoding, 235, VRN_KEY_DEFAULT},
        };
        for (const FormattedOnly& rule : formattedOnly) {
            if (!(given.*rule.given)) continue;
            if (!Recovered(rule.message, rule.message, number, "")) return false;
            properties.*rule.field = rule.fallback;
        }
    }
    if (properties.status == VRN_KEY_SCRATCH) return MakeScratchName(global, number, properties);
    if (!given.file) {
        if (StrictLanguageLevel(global->options) &&
            ErrorHandler(kClassLanguage, kKindError, 151, 151, ArgInt(1), number, 0u) != kRecover) {
            return false;
        }
        int32_t named = global->options.optUnitVars ? NameFromVariable("VRNUNIT_", number, properties) : 0;
        if (named < 0) return Recovered(154, 31, number, "");
        if (named == 0) DefaultName(number, properties);
    }
    return true;
}

bool MultipleConnectionExcused(const GlobalContext* global, const UnitRecord* first) {
    uint32_t devices = global->options.optMultConnIo;
    bool ttyAllowed = devices == VRN_KEY_TTY || devices == VRN_KEY_COMBINED;
    bool nullAllowed = devices == VRN_KEY_NULLDEV || devices == VRN_KEY_COMBINED;
    return (ttyAllowed && first->fd >= 0 && isatty(first->fd)) || (nullAllowed && first->isNullDevice);
}

// The rules for a file that another unit already holds. true when the connection may go on.
bool AllowSecondConnection(GlobalContext* global, UnitRecord* unit, OpenProperties& properties,
                           const GivenSpecifiers& given) {
    UnitRecord* first = FirstUnitOnInode(properties.inode);
    if (first == nullptr) return true;
    const char* name = properties.name;
    auto refuse = [&](int32_t message, bool withUnits) {
        if (withUnits) {
            ErrorHandler(kClassSevere, kKindError, message, message, ArgText(1), name, ArgInt(2), first->unitNumber,
                         ArgInt(3), unit->unitNumber, 0u);
        } else {
            SevereWithName(message, unit->unitNumber, name);
        }
        return false;
    };
    if (MultipleConnectionExcused(global, first)) {
        properties.asynch = VRN_KEY_NO;
        return true;
    }
    if (!global->options.optMultConn) return refuse(23, true);
    if (first->asynch == VRN_KEY_YES || properties.asynch == VRN_KEY_YES) return refuse(181, false);
    if (!first->seekable) return refuse(163, false);
    if (given.action && properties.action != VRN_KEY_READ) return refuse(164, false);
    if (first->action == VRN_KEY_WRITE) return refuse(23, true);
    properties.action = VRN_KEY_READ;
    properties.asynch = VRN_KEY_NO;
    return true;
}

void ReleaseEmptyInode(GlobalContext* global, LocalContext* context, OpenProperties& properties) {
    if (properties.inode != nullptr && properties.inode->unitCount == 0) {
        FreeInodeRecord(global, context, properties.inode);
    }
    properties.inode = nullptr;
}

bool SetOpenFlags(GlobalContext* global, LocalContext* context, UnitRecord* unit, OpenProperties& properties,
                  const GivenSpecifiers& given, int* openFlags) {
    int32_t number = unit->unitNumber;
    const char* name = properties.name;
    *openFlags = properties.action == VRN_KEY_READ ? O_RDONLY : properties.action == VRN_KEY_WRITE ? O_WRONLY : O_RDWR;
    properties.existed = stat64(name, &properties.fileStat) == 0;
    if (!properties.existed && errno != ENOENT) {
        FileSystemError(number, errno, name);
        return false;
    }
    if (!properties.existed) {
        *openFlags |= O_CREAT;
        if (properties.status == VRN_KEY_OLD) {
            SevereWithName(6, number, name);
            return false;
        }
        if (properties.status == VRN_KEY_SCRATCH) *openFlags |= O_TRUNC;
        return true;
    }
    switch (properties.status) {
    case VRN_KEY_NEW: SevereWithName(107, number, name); return false;
    case VRN_KEY_SCRATCH: *openFlags |= O_CREAT | O_TRUNC; break;
    case VRN_KEY_REPLACE: {
        ListNode* predecessor;
        InodeRecord* connected = FindInodeRecord(global, context, properties.fileStat.st_dev,
                                                 properties.fileStat.st_ino, &predecessor);
        if (UnitRecord* holder = FirstUnitOnInode(connected)) {
            ErrorHandler(kClassSevere, kKindError, 23, 23, ArgText(1), name, ArgInt(2), holder->unitNumber, ArgInt(3),
                         number, 0u);
            return false;
        }
        if (unlink(name) != 0) {
            FileSystemError(number, errno, name);
            return false;
        }
        properties.existed = false;
        *openFlags |= O_CREAT;
        return true;
    }
    default: break;
    }
    if (S_ISFIFO(properties.fileStat.st_mode)) {
        if (properties.action == VRN_KEY_READWRITE) {
            SevereWithName(130, number, name);
            return false;
        }
        if (properties.position == VRN_KEY_REWIND || properties.position == VRN_KEY_APPEND) {
            SevereWithName(153, number, name);
            return false;
        }
    }
    properties.blockSize = static_cast<uint32_t>(properties.fileStat.st_blksize);
    int32_t existed = 0;
    properties.inode = GetInodeRecord(global, context, properties.fileStat.st_dev, properties.fileStat.st_ino, &existed);
    if (properties.inode == nullptr) {
        OutOfMemory();
        return false;
    }
    if (existed && !AllowSecondConnection(global, unit, properties, given)) {
        ReleaseEmptyInode(global, context, properties);
        return false;
    }
    return true;
}

bool TryOpen(GlobalContext* global, LocalContext* context, UnitRecord* unit, OpenProperties& properties,
             bool actionGiven, int openFlags) {
    int32_t number = unit->unitNumber;
    int fd = open64(properties.name, openFlags, 0666);
    if (fd < 0 && !actionGiven) {
        int firstError = errno;
        if (properties.existed && (firstError == EACCES || firstError == EROFS)) {
            fd = open64(properties.name, (openFlags & ~O_ACCMODE) | O_RDONLY, 0666);
            if (fd >= 0) properties.action = VRN_KEY_READ;
        }
        if (fd < 0 && firstError == EACCES) {
            fd = open64(properties.name, (openFlags & ~O_ACCMODE) | O_WRONLY, 0666);
            if (fd >= 0) properties.action = VRN_KEY_WRITE;
        }
        if (fd < 0) errno = firstError;
    }
    if (fd < 0) {
        FileSystemError(number, errno, properties.name);
        return false;
    }
    unit->fd = fd;
    if (properties.action == 0) properties.action = VRN_KEY_READWRITE;
    if (!properties.existed) {
        if (fstat64(fd, &properties.fileStat) != 0) {
            FileSystemError(number, errno, properties.name);
            return false;
        }
        properties.blockSize = static_cast<uint32_t>(properties.fileStat.st_blksize);
        int32_t existed = 0;
        properties.inode =
            GetInodeRecord(global, context, properties.fileStat.st_dev, properties.fileStat.st_ino, &existed);
        if (properties.inode == nullptr) {
            OutOfMemory();
            return false;
        }
        if (UnitRecord* holder = existed ? FirstUnitOnInode(properties.inode) : nullptr) {
            ErrorHandler(kClassSevere, kKindError, 23, 23, ArgText(1), properties.name, ArgInt(2), holder->unitNumber,
                         ArgInt(3), number, 0u);
            return false;
        }
    }
    return true;
}

bool UnitIsLittleEndian(const GlobalContext* global, int32_t number) {
    const OptionBlock& options = global->options;
    for (uint32_t i = 0; i < options.ufmtUnitCount; ++i) {
        if (number >= options.ufmtUnits[i].low && number <= options.ufmtUnits[i].high) return true;
    }
    return false;
}

bool FillProperties(GlobalContext* global, LocalContext* context, UnitRecord* unit, OpenProperties& properties) {
    unit->status = properties.status == VRN_KEY_SCRATCH ? VRN_KEY_SCRATCH : VRN_KEY_OLD;
    unit->access = properties.access;
    unit->form = properties.form;
    unit->asynch = properties.asynch;
    unit->blank = properties.blank;
    unit->position = properties.position;
    unit->action = properties.action;
    unit->delim = properties.delim;
    unit->pad = properties.pad;
    unit->sign = properties.sign;
    unit->decimal = properties.decimal;
    unit->round = properties.round;
    unit->recl = properties.recl;
    unit->blockSize = properties.blockSize > 0 ? properties.blockSize : 4096;
    if (!QueryDeviceInfo(unit, properties.name)) return false;
    unit->fileName = strdup(properties.name);
    if (unit->fileName == nullptr) {
        OutOfMemory();
        return false;
    }
    if (UnitIsLittleEndian(global, unit->unitNumber)) {
        if (unit->form == VRN_KEY_FORMATTED) {
            SevereWithName(228, unit->unitNumber, properties.name);
        } else {
            unit->byteSwap = 1;
        }
    }
    if (!InsertUnitPtrRecord(unit, properties.inode)) {
        OutOfMemory();
        return false;
    }
    unit->deleteOnClose = properties.status == VRN_KEY_SCRATCH;
    if (global->options.optBuffering == VRN_KEY_DISABLE_ALL && unit->seekable) unit->unbuffered = 1;
    (void)context;
    return true;
}

// A file that now has two connections is read-only for all of them.
bool MakeOtherConnectionsReadOnly(GlobalContext* global, UnitRecord* unit, InodeRecord* inode) {
    if (inode->unitCount != 2) return true;
    UnitRecord* first = FirstUnitOnInode(inode);
    if (first != nullptr && MultipleConnectionExcused(global, first)) return true;
    for (ListNode* node = inode->units.first; node->next != nullptr; node = node->next) {
        UnitRecord* other = reinterpret_cast<UnitLink*>(node)->unit;
        if (other == unit || other->action == VRN_KEY_READ) continue;
        if (other->direction == kDirectionWrite && !FlushUnit(global, other, 1)) {
            ErrorHandler(kClassSevere, kKindError, 13, 13, ArgErrno(1), errno, ArgText(2), UnitNameForMessages(other),
                         0u);
            return false;
        }
        other->direction = kDirectionRead;
        other->action = VRN_KEY_READ;
    }
    return true;
}

// Closes a unit whose OPEN failed after the file was opened: a file it created goes away.
void AbandonOpen(GlobalContext* global, LocalContext* context, UnitRecord* unit, const OpenProperties& properties) {
    unit->permanentError = 1;
    if (!properties.existed) {
        unit->deleteOnClose = 1;
        if (unit->fileName == nullptr) unlink(properties.name);
    }
    if (unit->inode == nullptr && properties.inode != nullptr && properties.inode->unitCount == 0) {
        FreeInodeRecord(global, context, properties.inode);
    }
    CloseUnit(global, context, unit, 1);
}

int32_t DoOpen(GlobalContext* global, LocalContext* context, UnitRecord** unitAddress, OpenProperties& properties,
               const GivenSpecifiers& given) {
    UnitRecord* unit = *unitAddress;
    if (unit->fd >= 0) {
        int32_t number = unit->unitNumber;
        if (unit->aioMode) LeaveAIOMode(context, unit);
        if (!CloseUnit(global, context, unit, 1)) {
            FileSystemError(number, errno, properties.name);
            return 0;
        }
        int32_t existed;
        unit = *unitAddress = GetUnit(global, context, number, &existed);
        if (unit == nullptr) {
            OutOfMemory();
            return 0;
        }
    }
    int openFlags = 0;
    if (!SetOpenFlags(global, context, unit, properties, given, &openFlags)) {
        FreeUnit(global, context, unit);
        *unitAddress = nullptr;
        return 0;
    }
    bool ok = TryOpen(global, context, unit, properties, given.action, openFlags) &&
              FillProperties(global, context, unit, properties);
    if (ok && unit->form != 0) {
        int32_t attached = AttachBufferToUnit(global, unit);
        if (attached == kAttachNoMemory) {
            OutOfMemory();
            ok = false;
        } else if (attached == kAttachReclTooLarge) {
            ErrorHandler(kClassSevere, kKindError, 156, 156, ArgText(1), properties.name, ArgInt(2), unit->recl, 0u);
            ok = false;
        }
    }
    if (ok && properties.position == VRN_KEY_APPEND && properties.existed &&
        !SeekUnitToRecord(global, unit, 0, kSeekEnd)) {
        FileSystemError(unit->unitNumber, errno, properties.name);
        ok = false;
    }
    if (ok) ok = MakeOtherConnectionsReadOnly(global, unit, properties.inode);
    if (!ok) {
        AbandonOpen(global, context, unit, properties);
        *unitAddress = nullptr;
        return 0;
    }
    return 1;
}

// Whether a re-OPEN may name this POSITION: ASIS always, REWIND at the start, APPEND at
// the end with nothing unread.
bool PositionAccepted(UnitRecord* unit, uint32_t position) {
    if (position == VRN_KEY_ASIS) return true;
    if (position == VRN_KEY_REWIND) return unit->filePosition == 0;
    if (position != VRN_KEY_APPEND || !unit->seekable) return false;
    off64_t here = lseek64(unit->fd, 0, SEEK_CUR);
    off64_t end = here < 0 ? -1 : lseek64(unit->fd, 0, SEEK_END);
    if (here < 0 || end < 0 || lseek64(unit->fd, here, SEEK_SET) < 0) unit->permanentError = 1;
    bool nothingUnread = unit->direction != kDirectionRead || unit->bufferFill == static_cast<int32_t>(unit->bufferOffset);
    return end >= 0 && unit->filePosition == end && nothingUnread;
}

// OPEN of a connected unit on the same file: only the changeable modes change. The
// specifiers are judged in the order the statement gives them, so that the first wrong
// one is the one reported.
int32_t ChangeProperties(GlobalContext* global, LocalContext* context, UnitRecord* unit, const KeywordList* keywords,
                         const OpenProperties& properties) {
    const char* name = UnitNameForMessages(unit);
    auto keywordName = [](uint32_t keyword) { return _RTE_key_info[keyword < 150 ? keyword : 0].name; };
    // false when the error handler did not let the statement go on.
    auto accepted = [&](bool allowed, const char* value, uint32_t specifier) {
        return allowed || ErrorHandler(kClassRecoverable, kKindError, 24, 24, ArgText(1), name, ArgText(2), value,
                                       ArgText(3), keywordName(specifier), 0u) == kRecover;
    };
    auto same = [&](uint32_t requested, uint32_t current, uint32_t specifier) {
        return accepted(requested == current, keywordName(requested), specifier);
    };
    bool formatted = unit->form == VRN_KEY_FORMATTED;
    bool strict = StrictLanguageLevel(global->options);
    bool dropped[150] = {};  // modes refused on an unformatted connection
    uint32_t count = keywords != nullptr && keywords->version == 1 ? keywords->count : 0;
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t tag = keywords->entries[i].tag & 0xFFFF;
        bool ok = true;
        switch (tag) {
        case VRN_KEY_ACCESS: ok = same(properties.access, unit->access, tag); break;
        case VRN_KEY_ACTION: ok = same(properties.action, unit->action, tag); break;
        case VRN_KEY_FORM: ok = same(properties.form, unit->form, tag); break;
        case VRN_KEY_ASYNCH:
        case VRN_KEY_ASYNCHRONOUS: ok = same(properties.asynch, unit->asynch, tag); break;
        case VRN_KEY_RECL: {
            char text[16];
            std::snprintf(text, sizeof text, "%ld", static_cast<long>(properties.recl));
            ok = accepted(properties.recl == unit->recl, text, tag);
            break;
        }
        case VRN_KEY_STATUS: {
            bool allowed = properties.status == VRN_KEY_OLD || (properties.status == VRN_KEY_UNKNOWN && !strict);
            ok = accepted(allowed, keywordName(properties.status), tag);
            break;
        }
        case VRN_KEY_POSITION: ok = accepted(PositionAccepted(unit, properties.position), keywordName(properties.position), tag); break;
        case VRN_KEY_BLANK:
        case VRN_KEY_DELIM:
        case VRN_KEY_PAD:
        case VRN_KEY_SIGN: {
            if (formatted) break;
            int32_t message = tag == VRN_KEY_BLANK ? 125 : tag == VRN_KEY_DELIM ? 131 : tag == VRN_KEY_PAD ? 133 : 217;
            ok = Recovered(message, message, unit->unitNumber, "");
            dropped[tag] = true;
            break;
        }
        default: break;
        }
        if (!ok) return context->status;
    }
    struct Mode {
        uint32_t tag;
        uint32_t OpenProperties::*value;
        uint32_t UnitRecord::*field;
    };
    const Mode modes[] = {
        {VRN_KEY_BLANK, &OpenProperties::blank, &UnitRecord::blank},
        {VRN_KEY_DELIM, &OpenProperties::delim, &UnitRecord::delim},
        {VRN_KEY_PAD, &OpenProperties::pad, &UnitRecord::pad},
        {VRN_KEY_SIGN, &OpenProperties::sign, &UnitRecord::sign},
        {VRN_KEY_DECIMAL, &OpenProperties::decimal, &UnitRecord::decimal},
        {VRN_KEY_ROUND, &OpenProperties::round, &UnitRecord::round},
    };
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t tag = keywords->entries[i].tag & 0xFFFF;
        for (const Mode& mode : modes) {
            if (mode.tag == tag && !dropped[tag]) unit->*mode.field = properties.*mode.value;
        }
    }
    return context->status;
}

bool SameFile(const UnitRecord* unit, const char* name) {
    struct stat64 fileStat;
    if (unit->inode == nullptr || stat64(name, &fileStat) != 0) return false;
    return fileStat.st_dev == unit->inode->device && fileStat.st_ino == unit->inode->inodeNumber;
}

void StoreNewUnit(const OpenProperties& properties, int32_t number) {
    if (properties.newUnitAddress == nullptr) return;
    if (properties.newUnit64) {
        int64_t wide = number;
        std::memcpy(properties.newUnitAddress, &wide, sizeof wide);
    } else {
        std::memcpy(properties.newUnitAddress, &number, sizeof number);
    }
}

}  // namespace

int32_t TrimFileName(const char* name, int32_t* length) {
    if (*length < 0) *length = 0;
    while (*length > 0 && (name[*length - 1] == ' ' || name[*length - 1] == 0)) --*length;
    if (*length == 0) return 0;
    const void* nul = std::memchr(name, 0, static_cast<size_t>(*length));
    if (nul == nullptr) return 0;
    *length = static_cast<int32_t>(static_cast<const char*>(nul) - name);
    return 1;
}

int32_t OpenCmd(GlobalContext* global, LocalContext* context, int32_t unitNumber, const KeywordList* keywords) {
    auto properties = static_cast<OpenProperties*>(std::calloc(1, sizeof(OpenProperties)));
    if (properties == nullptr) {
        OutOfMemory();
        return context->status;
    }
    GivenSpecifiers given{};
    struct Release {
        OpenProperties* p;
        ~Release() { std::free(p); }
    } release{properties};

    if (!CheckSpecifiers(context, unitNumber, keywords, given, *properties)) return context->status;
    if (!given.status) properties->status = VRN_KEY_UNKNOWN;
    if (properties->status == VRN_KEY_SCRATCH && given.file) {
        if (ErrorHandler(kClassRecoverable, kKindError, 32, 32, ArgInt(1), unitNumber, 0u) != kRecover) {
            return context->status;
        }
        properties->status = VRN_KEY_UNKNOWN;
    }
    if (given.newUnit && !given.file && given.status && properties->status != VRN_KEY_SCRATCH) {
        ErrorHandler(kClassRecoverable, kKindError, 240, 240, 0u);
        return context->status;
    }
    int32_t number = given.newUnit ? VRN_NEWUNIT_MARKER : unitNumber;
    if (number < 0 && number != VRN_NEWUNIT_MARKER && LookUpUnit(global, number) == nullptr) {
        ErrorHandler(kClassRecoverable, kKindError, 36, 36, ArgInt(1), number, ArgText(2), "OPEN", 0u);
        return context->status;
    }
    int32_t existed = 0;
    UnitRecord* unit = GetUnit(global, context, number, &existed);
    if (unit == nullptr) {
        OutOfMemory();
        return context->status;
    }
    // The connection's pending transfers finish first, whatever the OPEN goes on to do.
    if (existed && !AIOWaitUnit(global, context, unit, 1)) return context->status;
    if (existed && (!given.file || SameFile(unit, properties->name))) {
        return ChangeProperties(global, context, unit, keywords, *properties);
    }
    if (!existed) unit->fd = -1;
    if (existed && unit->unitNumber == 0) {
        ErrorHandler(kClassRecoverable, kKindError, 93, 93, ArgText(1), "OPEN", 0u);
        return context->status;
    }
    if (!SetOpenProperties(global, context, unit, given, *properties)) {
        if (unit->fd < 0) FreeUnit(global, context, unit);
        return context->status;
    }
    if (!DoOpen(global, context, &unit, *properties, given)) return context->status;
    if (unit->unitNumber < 0) StoreNewUnit(*properties, unit->unitNumber);
    return context->status;
}

int32_t ImplicitOpen(GlobalContext* global, LocalContext* context, UnitRecord* unit, uint32_t statementFlags) {
    auto properties = static_cast<OpenProperties*>(std::calloc(1, sizeof(OpenProperties)));
    if (properties == nullptr) {
        OutOfMemory();
        return 0;
    }
    struct Release {
        OpenProperties* p;
        ~Release() { std::free(p); }
    } release{properties};
    // ENDFILE passes a kind of 4: the form stays open until a transfer decides it.
    uint32_t kind = statementFlags & 0xFFu;
    bool endfile = kind == 4;
    properties->status = VRN_KEY_UNKNOWN;
    properties->access = VRN_KEY_SEQUENTIAL;
    properties->form = endfile ? 0 : kind == VRN_KIND_UNFORMATTED ? VRN_KEY_UNFORMATTED : VRN_KEY_FORMATTED;
    properties->asynch = endfile ? 0 : (statementFlags & VRN_FLAG_ASYNCHRONOUS) ? VRN_KEY_YES : VRN_KEY_NO;
    properties->blank = VRN_KEY_NULL;
    properties->position = VRN_KEY_ASIS;
    properties->pad = VRN_KEY_YES;
    properties->recl = -1;
    properties->decimal = VRN_KEY_POINT;
    properties->round = VRN_KEY_PROCESSOR_DEFINED;
    properties->encoding = VRN_KEY_DEFAULT;
    int32_t named = global->options.optUnitVars ? NameFromVariable("VRNUNIT_", unit->unitNumber, *properties) : 0;
    if (named < 0) {
        Recovered(154, 31, unit->unitNumber, "");
        FreeUnit(global, context, unit);
        return 0;
    }
    if (named == 0) DefaultName(unit->unitNumber, *properties);
    GivenSpecifiers given{};
    return DoOpen(global, context, &unit, *properties, given);
}

int32_t QueryDeviceInfo(UnitRecord* unit, const char* nameForMessages) {
    struct stat64 fileStat;
    if (fstat64(unit->fd, &fileStat) != 0) {
        if (unit->unitNumber != 0) FileSystemError(unit->unitNumber, errno, nameForMessages);
        return 0;
    }
    if (unit->blockSize == 0) unit->blockSize = fileStat.st_blksize > 0 ? static_cast<uint32_t>(fileStat.st_blksize) : 4096;
    switch (fileStat.st_mode & S_IFMT) {
    case S_IFREG:
        unit->deviceClass = kRegularFile;
        unit->seekable = 1;
        break;
    case S_IFBLK:
        unit->deviceClass = kBlockDevice;
        unit->seekable = 1;
        break;
    case S_IFCHR: {
        unit->deviceClass = kCharacterDevice;
        unit->seekable = 0;
        unit->flushEachRecord = 1;
        unit->isTty = isatty(unit->fd) == 1;
        struct stat64 nullStat;
        if (stat64("/dev/null", &nullStat) != 0) {
            FileSystemError(unit->unitNumber, errno, "/dev/null");
            return 0;
        }
        unit->isNullDevice = nullStat.st_dev == fileStat.st_dev && nullStat.st_ino == fileStat.st_ino;
        break;
    }
    case S_IFIFO:
        unit->deviceClass = kFifo;
        unit->seekable = 0;
        unit->flushEachRecord = 1;
        break;
    case S_IFSOCK:
        unit->deviceClass = kSocket;
        unit->seekable = 0;
        unit->flushEachRecord = 1;
        break;
    default: break;
    }
    unit->canAsync = unit->seekable;
    if (unit->asynch == VRN_KEY_YES && !unit->canAsync) {
        SevereWithName(172, unit->unitNumber, nameForMessages);
        return 0;
    }
    if (unit->access == VRN_KEY_DIRECT && !unit->seekable) {
        SevereWithName(152, unit->unitNumber, nameForMessages);
        return 0;
    }
    return 1;
}

int32_t PreconnectOneUnit(GlobalContext* global, LocalContext* context, int32_t unitNumber, int descriptor) {
    int32_t existed = 0;
    UnitRecord* unit = GetUnit(global, context, unitNumber, &existed);
    if (unit == nullptr) CatastrophicExit(kPreconnectOutOfMemory);
    if (existed) return 1;
    unit->deleteOnClose = 0;
    struct stat64 fileStat;
    if (fstat64(descriptor, &fileStat) != 0) {
        // A program started without this descriptor runs without the unit; messages then
        // go to descriptor 2 as number lines.
        unit->permanentError = 1;
        CloseUnit(global, context, unit, 0);
        return 0;
    }
    int32_t inodeExisted = 0;
    InodeRecord* inode = GetInodeRecord(global, context, fileStat.st_dev, fileStat.st_ino, &inodeExisted);
    if (inode == nullptr) CatastrophicExit(kPreconnectOutOfMemory);
    unit->blockSize = fileStat.st_blksize > 0 ? static_cast<uint32_t>(fileStat.st_blksize) : 4096;
    unit->fd = descriptor;
    unit->status = VRN_KEY_OLD;
    unit->access = VRN_KEY_SEQUENTIAL;
    unit->form = VRN_KEY_FORMATTED;
    unit->asynch = VRN_KEY_NO;
    unit->blank = VRN_KEY_NULL;
    unit->position = VRN_KEY_ASIS;
    unit->action = VRN_KEY_READWRITE;
    unit->delim = 0;
    unit->pad = VRN_KEY_YES;
    unit->sign = 0;
    unit->recl = -1;
    unit->preconnected = 1;
    unit->decimal = VRN_KEY_POINT;
    unit->round = VRN_KEY_PROCESSOR_DEFINED;
    if (!QueryDeviceInfo(unit, StandardUnitName(unitNumber))) {
        unit->permanentError = 1;
        if (inode->unitCount == 0) FreeInodeRecord(global, context, inode);
        CloseUnit(global, context, unit, 0);
        return 0;
    }
    unit->flushEachRecord = 1;
    unit->appendPending = unit->seekable;
    if (!InsertUnitPtrRecord(unit, inode)) CatastrophicExit(kPreconnectOutOfMemory);
    if (AttachBufferToUnit(global, unit) != kAttachOk) {
        unit->permanentError = 1;
        CloseUnit(global, context, unit, 0);
        return 0;
    }
    return 1;
}

void PreconnectUnits(GlobalContext* global, LocalContext* context) {
    PreconnectOneUnit(global, context, 5, 0);
    PreconnectOneUnit(global, context, 6, 1);
    PreconnectOneUnit(global, context, 0, 2);
    UnitRecord* output = global->lowUnits[6];
    UnitRecord* error = global->lowUnits[0];
    // Output to a file need not be flushed for the sake of a terminal on standard error.
    if (output != nullptr && output->seekable && (error == nullptr || !error->seekable)) output->flushEachRecord = 0;
}
