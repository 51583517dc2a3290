// The line-number program of DWARF: a header with the file table, then opcodes that
// drive a state machine whose rows are (address, file, line). A row covers the addresses
// from its own up to the next row's of the same sequence.
#include "diag/line_table.h"

#include <cstring>

namespace diag {
namespace {

// Opcodes of the line-number program.
enum : uint8_t {
    kExtended = 0,
    kCopy = 1,
    kAdvancePc = 2,
    kAdvanceLine = 3,
    kSetFile = 4,
    kSetColumn = 5,
    kNegateStatement = 6,
    kSetBasicBlock = 7,
    kConstAddPc = 8,
    kFixedAdvancePc = 9,
};
enum : uint8_t { kEndSequence = 1, kSetAddress = 2, kDefineFile = 3 };

// Forms and content types of the version 5 directory and file tables.
enum : uint64_t {
    kFormBlock2 = 0x03,
    kFormBlock4 = 0x04,
    kFormData2 = 0x05,
    kFormData4 = 0x06,
    kFormData8 = 0x07,
    kFormString = 0x08,
    kFormBlock = 0x09,
    kFormBlock1 = 0x0a,
    kFormData1 = 0x0b,
    kFormSdata = 0x0d,
    kFormStrp = 0x0e,
    kFormUdata = 0x0f,
    kFormData16 = 0x1e,
    kFormLineStrp = 0x1f,
};
enum : uint64_t { kContentPath = 1, kContentDirectory = 2 };

struct UnitHeader {
    uint64_t offset = 0;  // of the unit in the section
    size_t end = 0;       // one past the unit's last byte
    uint16_t version = 0;
    int offsetSize = 4;
    int addressSize = 0;  // 0 before version 5: the set-address operand says it
    uint8_t minimumInstructionLength = 1;
    bool defaultIsStatement = true;
    int8_t lineBase = 0;
    uint8_t lineRange = 1;
    uint8_t opcodeBase = 1;
    const uint8_t* standardLengths = nullptr;
    size_t tablesStart = 0;   // the directory and file tables
    size_t programStart = 0;  // the opcodes
};

bool ReadUnitHeader(ByteReader& in, uint64_t offset, UnitHeader* header) {
    in.Seek(static_cast<size_t>(offset));
    header->offset = offset;
    uint64_t length = in.U32();
    header->offsetSize = 4;
    if (length == 0xFFFFFFFFu) {
        length = in.U64();
        header->offsetSize = 8;
    } else if (length >= 0xFFFFFFF0u) {
        return false;
    }
    if (!in.ok() || length > in.remaining() || length < 2) return false;
    header->end = in.position() + static_cast<size_t>(length);
    header->version = in.U16();
    if (header->version < 2 || header->version > 5) return false;
    if (header->version >= 5) {
        header->addressSize = in.U8();
        in.U8();  // segment selector size
    }
    uint64_t headerLength = in.Unsigned(header->offsetSize);
    size_t afterHeaderLength = in.position();
    if (headerLength > header->end - afterHeaderLength) return false;
    header->programStart = afterHeaderLength + static_cast<size_t>(headerLength);
    header->minimumInstructionLength = in.U8();
    if (header->version >= 4) in.U8();  // maximum operations per instruction
    header->defaultIsStatement = in.U8() != 0;
    header->lineBase = static_cast<int8_t>(in.U8());
    header->lineRange = in.U8();
    header->opcodeBase = in.U8();
    if (header->lineRange == 0 || header->opcodeBase == 0) return false;
    header->standardLengths = in.here();
    in.Skip(header->opcodeBase - 1u);
    header->tablesStart = in.position();
    return in.ok() && header->tablesStart <= header->programStart;
}

struct Row {
    uint64_t address = 0;
    uint64_t file = 1;
    int64_t line = 1;
};

// Sorted queries: the first whose address is not below `address`.
size_t FirstAtOrAbove(const LineQuery* queries, size_t count, uint64_t address) {
    size_t low = 0, high = count;
    while (low < high) {
        size_t middle = (low + high) / 2;
        if (queries[middle].address < address) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

// The row `row` covers [row.address, next); the queries in that range take it.
void Cover(const UnitHeader& header, const Row& row, uint64_t next, LineQuery* queries, size_t count) {
    if (next <= row.address) return;
    for (size_t i = FirstAtOrAbove(queries, count, row.address); i < count && queries[i].address < next; ++i) {
        if (queries[i].found) continue;
        queries[i].found = true;
        queries[i].line = row.line > 0 ? static_cast<uint32_t>(row.line) : 0;
        queries[i].unitOffset = header.offset;
        queries[i].file = row.file;
    }
}

// A line advance in a damaged table may run past the 64-bit range: it wraps, as the
// machine's own addition would, and the line is merely wrong.
int64_t AddLines(int64_t line, int64_t delta) {
    return static_cast<int64_t>(static_cast<uint64_t>(line) + static_cast<uint64_t>(delta));
}

void RunProgram(ByteReader& in, const UnitHeader& header, LineQuery* queries, size_t count) {
    in.Seek(header.programStart);
    Row row, previous;
    bool havePrevious = false;
    auto emit = [&] {
        if (havePrevious) Cover(header, previous, row.address, queries, count);
        previous = row;
        havePrevious = true;
    };
    auto reset = [&] {
        row = Row{};
        havePrevious = false;
    };
    while (in.ok() && in.position() < header.end) {
        uint8_t opcode = in.U8();
        if (opcode >= header.opcodeBase) {
            uint8_t adjusted = static_cast<uint8_t>(opcode - header.opcodeBase);
            row.address += static_cast<uint64_t>(adjusted / header.lineRange) * header.minimumInstructionLength;
            row.line = AddLines(row.line, header.lineBase + adjusted % header.lineRange);
            emit();
            continue;
        }
        switch (opcode) {
        case kExtended: {
            uint64_t length = in.Uleb();
            size_t start = in.position();
            // A length read past the unit's end would wrap the seek below back into it.
            if (start > header.end || length == 0 || length > header.end - start) return;
            uint8_t sub = in.U8();
            if (sub == kEndSequence) {
                emit();
                reset();
            } else if (sub == kSetAddress) {
                row.address = in.Unsigned(static_cast<int>(length - 1));
            }
            in.Seek(start + static_cast<size_t>(length));
            break;
        }
        case kCopy: emit(); break;
        case kAdvancePc: row.address += in.Uleb() * header.minimumInstructionLength; break;
        case kAdvanceLine: row.line = AddLines(row.line, in.Sleb()); break;
        case kSetFile: row.file = in.Uleb(); break;
        case kSetColumn: in.Uleb(); break;
        case kNegateStatement:
        case kSetBasicBlock: break;
        case kConstAddPc:
            row.address += static_cast<uint64_t>((255 - header.opcodeBase) / header.lineRange) *
                           header.minimumInstructionLength;
            break;
        case kFixedAdvancePc: row.address += in.U16(); break;
        default:
            // A standard opcode this reader does not know: its operands are ULEB128s.
            for (uint8_t i = 0; i < header.standardLengths[opcode - 1]; ++i) in.Uleb();
            break;
        }
    }
}

// Sorts the queries by address (insertion sort: a traceback has few).
void SortQueries(LineQuery* queries, size_t count) {
    for (size_t i = 1; i < count; ++i) {
        LineQuery moving = queries[i];
        size_t j = i;
        for (; j > 0 && queries[j - 1].address > moving.address; --j) queries[j] = queries[j - 1];
        queries[j] = moving;
    }
}

// A version 5 entry's string or number in the given form; false for a form it cannot skip.
bool ReadForm(ByteReader& in, const ElfImage& image, const UnitHeader& header, uint64_t form, const char** text,
              uint64_t* number) {
    *text = nullptr;
    *number = 0;
    switch (form) {
    case kFormString: *text = in.CString(); return in.ok();
    case kFormLineStrp: *text = StringAt(image.debugLineStr, in.Unsigned(header.offsetSize)); return in.ok();
    case kFormStrp: *text = StringAt(image.debugStr, in.Unsigned(header.offsetSize)); return in.ok();
    case kFormUdata: *number = in.Uleb(); return in.ok();
    case kFormSdata: in.Sleb(); return in.ok();
    case kFormData1: *number = in.U8(); return in.ok();
    case kFormData2: *number = in.U16(); return in.ok();
    case kFormData4: *number = in.U32(); return in.ok();
    case kFormData8: *number = in.U64(); return in.ok();
    case kFormData16: in.Skip(16); return in.ok();
    case kFormBlock: in.Skip(in.Uleb()); return in.ok();
    case kFormBlock1: in.Skip(in.U8()); return in.ok();
    case kFormBlock2: in.Skip(in.U16()); return in.ok();
    case kFormBlock4: in.Skip(in.U32()); return in.ok();
    default: return false;
    }
}

struct Entry {
    const char* path = nullptr;
    uint64_t directory = 0;
};

// Entry `wanted` of a version 5 table (directories or files); the reader is left after
// the table.
bool ReadVersion5Table(ByteReader& in, const ElfImage& image, const UnitHeader& header, uint64_t wanted, Entry* entry) {
    uint8_t formatCount = in.U8();
    uint64_t formats[16][2];
    if (formatCount > 16) return false;
    for (uint8_t i = 0; i < formatCount; ++i) {
        formats[i][0] = in.Uleb();
        formats[i][1] = in.Uleb();
    }
    uint64_t entries = in.Uleb();
    // Entries of no fields take no bytes: however many a damaged table claims, they say
    // nothing, and counting through them could take forever.
    if (formatCount == 0) return false;
    bool found = false;
    for (uint64_t e = 0; e < entries && in.ok(); ++e) {
        Entry current;
        for (uint8_t i = 0; i < formatCount; ++i) {
            const char* text;
            uint64_t number;
            if (!ReadForm(in, image, header, formats[i][1], &text, &number)) {
                in.Skip(SIZE_MAX);  // the rest of the table cannot be found
                return false;
            }
            if (formats[i][0] == kContentPath) current.path = text;
            if (formats[i][0] == kContentDirectory) current.directory = number;
        }
        if (e == wanted) {
            *entry = current;
            found = true;
        }
    }
    return found && in.ok();
}

// Entry `wanted` (counted from 1) of a version 2 to 4 table of NUL-terminated strings;
// files carry three ULEB128s after the name.
bool ReadOldTable(ByteReader& in, bool files, uint64_t wanted, Entry* entry) {
    bool found = false;
    for (uint64_t number = 1; in.ok(); ++number) {
        const char* name = in.CString();
        if (name == nullptr || *name == '\0') break;
        Entry current{name, 0};
        if (files) {
            current.directory = in.Uleb();
            in.Uleb();
            in.Uleb();
        }
        if (number == wanted) {
            *entry = current;
            found = true;
        }
    }
    return found;
}

size_t Join(const char* directory, const char* name, char* out, size_t capacity) {
    if (capacity == 0) return 0;
    size_t length = 0;
    auto put = [&](const char* text) {
        while (*text != '\0' && length + 1 < capacity) out[length++] = *text++;
    };
    if (directory != nullptr && *directory != '\0' && name[0] != '/') {
        put(directory);
        if (length > 0 && out[length - 1] != '/') put("/");
    }
    put(name);
    out[length] = '\0';
    return length;
}

}  // namespace

void FindLines(const ElfImage& image, LineQuery* queries, size_t count) {
    if (image.debugLine.empty() || count == 0) return;
    SortQueries(queries, count);
    ByteReader in(image.debugLine, image.bigEndian);
    uint64_t offset = 0;
    while (offset < image.debugLine.size) {
        UnitHeader header;
        if (!ReadUnitHeader(in, offset, &header)) return;
        RunProgram(in, header, queries, count);
        offset = header.end;
        bool all = true;
        for (size_t i = 0; i < count && all; ++i) all = queries[i].found;
        if (all) return;
    }
}

size_t LineFileName(const ElfImage& image, const LineQuery& query, char* out, size_t capacity) {
    if (!query.found || capacity == 0) return 0;
    ByteReader in(image.debugLine, image.bigEndian);
    UnitHeader header;
    if (!ReadUnitHeader(in, query.unitOffset, &header)) return 0;
    in.Seek(header.tablesStart);
    Entry file, directory;
    if (header.version >= 5) {
        // Directories first: read them all to reach the files, then look the directory up.
        size_t directories = in.position();
        Entry unused;
        ReadVersion5Table(in, image, header, UINT64_MAX, &unused);
        if (!in.ok() || !ReadVersion5Table(in, image, header, query.file, &file) || file.path == nullptr) return 0;
        in.Seek(directories);
        ReadVersion5Table(in, image, header, file.directory, &directory);
    } else {
        size_t directories = in.position();
        ReadOldTable(in, false, UINT64_MAX, &directory);
        if (!ReadOldTable(in, true, query.file, &file)) return 0;
        directory = Entry{};
        if (file.directory != 0) {
            in.Seek(directories);
            ReadOldTable(in, false, file.directory, &directory);
        }
    }
    return Join(directory.path, file.path, out, capacity);
}

}  // namespace diag
