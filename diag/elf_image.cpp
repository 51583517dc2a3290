// The ELF reader. Every offset and count of the file is checked against the mapping
// before use: a truncated or damaged object gives fewer sections, never a fault.
#include "diag/elf_image.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace diag {
namespace {

constexpr uint32_t kSectionSymbols = 2;         // SHT_SYMTAB
constexpr uint32_t kSectionDynamicSymbols = 11;  // SHT_DYNSYM
constexpr uint64_t kSectionCompressed = 0x800;   // SHF_COMPRESSED
constexpr uint16_t kSectionIndexExtended = 0xFFFF;
constexpr int kSymbolFunction = 2;  // STT_FUNC
constexpr int kSymbolIndirect = 10;  // STT_GNU_IFUNC

struct SectionHeader {
    uint32_t name = 0;
    uint32_t type = 0;
    uint64_t flags = 0;
    uint64_t offset = 0;
    uint64_t size = 0;
    uint32_t link = 0;
    uint64_t entrySize = 0;
};

SectionHeader ReadSectionHeader(const ElfImage& image, ByteView table, uint64_t entrySize, uint64_t index) {
    SectionHeader header;
    ByteReader in(table.Part(index * entrySize, entrySize), image.bigEndian);
    header.name = in.U32();
    header.type = in.U32();
    if (image.is64) {
        header.flags = in.U64();
        in.U64();  // address
        header.offset = in.U64();
        header.size = in.U64();
        header.link = in.U32();
        in.U32();  // info
        in.U64();  // alignment
        header.entrySize = in.U64();
    } else {
        header.flags = in.U32();
        in.U32();
        header.offset = in.U32();
        header.size = in.U32();
        header.link = in.U32();
        in.U32();
        in.U32();
        header.entrySize = in.U32();
    }
    if (!in.ok()) return SectionHeader{};
    return header;
}

ByteView Contents(const ElfImage& image, const SectionHeader& header) {
    // A compressed section would need zlib; it counts as absent.
    if (header.flags & kSectionCompressed) return {};
    ByteView file{image.mapped, image.mappedSize};
    return file.Part(header.offset, header.size);
}

bool SameName(const char* name, const char* wanted) { return name != nullptr && std::strcmp(name, wanted) == 0; }

void FindSections(ElfImage* image) {
    ByteView file{image->mapped, image->mappedSize};
    ByteReader in(file, image->bigEndian);
    in.Seek(image->is64 ? 0x28 : 0x20);
    uint64_t tableOffset = image->is64 ? in.U64() : in.U32();
    in.U32();  // flags
    in.U16();  // header size
    in.U16();  // program header entry size
    in.U16();  // program header count
    uint64_t entrySize = in.U16();
    uint64_t count = in.U16();
    uint64_t namesIndex = in.U16();
    if (!in.ok() || entrySize < (image->is64 ? 64u : 40u)) return;
    ByteView first = file.Part(tableOffset, entrySize);
    if (first.empty()) return;
    SectionHeader zero = ReadSectionHeader(*image, file.Part(tableOffset, entrySize), entrySize, 0);
    if (count == 0) count = zero.size;
    if (namesIndex == kSectionIndexExtended) namesIndex = zero.link;
    ByteView table = file.Part(tableOffset, count * entrySize);
    if (table.empty() || namesIndex >= count) return;
    ByteView names = Contents(*image, ReadSectionHeader(*image, table, entrySize, namesIndex));

    SectionHeader dynamicSymbols;
    for (uint64_t i = 1; i < count; ++i) {
        SectionHeader header = ReadSectionHeader(*image, table, entrySize, i);
        const char* name = StringAt(names, header.name);
        if (header.type == kSectionSymbols || header.type == kSectionDynamicSymbols) {
            if (header.link >= count) continue;
            if (header.type == kSectionDynamicSymbols) {
                dynamicSymbols = header;
                continue;
            }
            image->symbols = Contents(*image, header);
            image->symbolNames = Contents(*image, ReadSectionHeader(*image, table, entrySize, header.link));
        } else if (SameName(name, ".debug_line")) {
            image->debugLine = Contents(*image, header);
        } else if (SameName(name, ".debug_line_str")) {
            image->debugLineStr = Contents(*image, header);
        } else if (SameName(name, ".debug_str")) {
            image->debugStr = Contents(*image, header);
        }
    }
    if (image->symbols.empty() && dynamicSymbols.type == kSectionDynamicSymbols) {
        image->symbols = Contents(*image, dynamicSymbols);
        image->symbolNames = Contents(*image, ReadSectionHeader(*image, table, entrySize, dynamicSymbols.link));
    }
}

}  // namespace

bool OpenElfImage(const char* path, ElfImage* image) {
    *image = ElfImage{};
    int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat status;
    if (::fstat(fd, &status) != 0 || status.st_size < 64) {
        ::close(fd);
        return false;
    }
    size_t size = static_cast<size_t>(status.st_size);
    void* mapped = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
    ::close(fd);
    if (mapped == MAP_FAILED) return false;
    const auto* bytes = static_cast<const uint8_t*>(mapped);
    if (std::memcmp(bytes, "\x7F" "ELF", 4) != 0 || (bytes[4] != 1 && bytes[4] != 2) || (bytes[5] != 1 && bytes[5] != 2)) {
        ::munmap(mapped, size);
        return false;
    }
    image->mapped = bytes;
    image->mappedSize = size;
    image->is64 = bytes[4] == 2;
    image->bigEndian = bytes[5] == 2;
    FindSections(image);
    return true;
}

void CloseElfImage(ElfImage* image) {
    if (image->mapped != nullptr) ::munmap(const_cast<uint8_t*>(image->mapped), image->mappedSize);
    *image = ElfImage{};
}

void FindFunctions(const ElfImage& image, FunctionQuery* queries, size_t count) {
    // Sorted by address, so that a symbol finds the queries it covers by bisection.
    for (size_t i = 1; i < count; ++i) {
        FunctionQuery moving = queries[i];
        size_t j = i;
        for (; j > 0 && queries[j - 1].address > moving.address; --j) queries[j] = queries[j - 1];
        queries[j] = moving;
    }
    for (size_t i = 0; i < count; ++i) queries[i].covering = queries[i].below = FunctionSymbol{};
    if (count == 0) return;
    const size_t entrySize = image.is64 ? 24 : 16;
    const size_t symbols = image.symbols.size / entrySize;
    for (size_t i = 1; i < symbols; ++i) {
        ByteReader in(image.symbols.Part(i * entrySize, entrySize), image.bigEndian);
        uint32_t nameOffset = in.U32();
        uint64_t value, size;
        uint8_t info;
        uint16_t section;
        if (image.is64) {
            info = in.U8();
            in.U8();
            section = in.U16();
            value = in.U64();
            size = in.U64();
        } else {
            value = in.U32();
            size = in.U32();
            info = in.U8();
            in.U8();
            section = in.U16();
        }
        int type = info & 0xF;
        if (section == 0 || (type != kSymbolFunction && type != kSymbolIndirect)) continue;
        // The first query at or above the symbol's start.
        size_t low = 0, high = count;
        while (low < high) {
            size_t middle = (low + high) / 2;
            if (queries[middle].address < value) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        if (low == count) continue;
        const char* name = nullptr;
        auto named = [&] {
            if (name == nullptr) name = StringAt(image.symbolNames, nameOffset);
            return name != nullptr && *name != '\0';
        };
        if (size != 0) {
            for (size_t q = low; q < count && queries[q].address - value < size; ++q) {
                FunctionSymbol& covering = queries[q].covering;
                if (!named()) break;
                // Of two names for one function, the one without a suffix (".localalias",
                // ".part.0") that the compiler's aliases carry.
                bool better = covering.name == nullptr || value > covering.start ||
                              (value == covering.start && std::strchr(covering.name, '.') != nullptr &&
                               std::strchr(name, '.') == nullptr);
                if (better) covering = {name, value};
            }
        } else {
            // A symbol without a size stands for everything up to the next one.
            for (size_t q = low; q < count; ++q) {
                FunctionSymbol& below = queries[q].below;
                if (below.name != nullptr && below.start >= value) continue;
                if (!named()) break;
                below = {name, value};
            }
        }
    }
}

bool Answer(const FunctionQuery& query, FunctionSymbol* found) {
    const FunctionSymbol& covering = query.covering;
    const FunctionSymbol& below = query.below;
    if (covering.name != nullptr && (below.name == nullptr || covering.start >= below.start)) {
        *found = covering;
        return true;
    }
    if (below.name != nullptr) {
        *found = below;
        return true;
    }
    return false;
}

bool FindFunction(const ElfImage& image, uint64_t address, FunctionSymbol* found) {
    FunctionQuery query;
    query.address = address;
    FindFunctions(image, &query, 1);
    return Answer(query, found);
}

}  // namespace diag
