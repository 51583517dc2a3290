#include "tests/support/fortran.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "core/context.h"
#include "core/errors.h"
#include "transport/transport.h"

namespace vrntest {

Specifiers::Specifiers() = default;

Specifiers& Specifiers::Text(uint32_t tag, std::string_view text) {
    texts_.emplace_back(text);
    const std::string& kept = texts_.back();
    return Value(tag, reinterpret_cast<uintptr_t>(kept.data()), static_cast<uint32_t>(kept.size()));
}

Specifiers& Specifiers::Keyword(uint32_t tag, uint32_t keyword) { return Value(tag, 0, keyword); }

Specifiers& Specifiers::Value(uint32_t tag, uintptr_t a, uint32_t b) {
    entries_.push_back(KeywordEntry{tag, a, b});
    return *this;
}

Specifiers& Specifiers::Address(uint32_t tag, void* address, uint32_t length) {
    return Value(tag, reinterpret_cast<uintptr_t>(address), length);
}

Specifiers& Specifiers::Version(uint32_t version) {
    version_ = version;
    return *this;
}

Specifiers& Specifiers::Location(std::string_view file, int32_t line) {
    Value(VRN_KEY_MSGLINE, static_cast<uintptr_t>(line));
    return Text(VRN_KEY_MSGFILE, file);
}

const KeywordList* Specifiers::list() {
    size_t bytes = sizeof(KeywordList) + entries_.size() * sizeof(KeywordEntry);
    storage_.assign((bytes + sizeof(uint64_t) - 1) / sizeof(uint64_t), 0);
    auto* list = reinterpret_cast<KeywordList*>(storage_.data());
    list->version = version_;
    list->count = static_cast<uint32_t>(entries_.size());
    for (size_t i = 0; i < entries_.size(); ++i) list->entries[i] = entries_[i];
    return list;
}

Statement::Statement(int32_t unit, uint32_t flags, Specifiers* specifiers, uint32_t options, void* iostat,
                     int32_t record)
    : unit_(unit) {
    context_ = _vrnBeginIO(&unit_, flags, specifiers != nullptr ? specifiers->list() : nullptr, options, iostat, record,
                           nullptr);
}

Statement& Statement::Bytes(std::string_view bytes) {
    if (!context_->itemsStopped) IOWrite(context_, bytes.data(), static_cast<int32_t>(bytes.size()));
    return *this;
}

namespace {

// Reads as an item routine does: an item that meets the end of the file reports it.
std::string ReadItem(LocalContext* context, int32_t count) {
    std::string bytes(static_cast<size_t>(count), '\0');
    int32_t got = context->itemsStopped ? 0 : IORead(context, bytes.data(), count);
    if (got <= 0 && context->atEndOfFile && !context->itemsStopped) IORaiseEndOfFile(context);
    bytes.resize(static_cast<size_t>(got > 0 ? got : 0));
    return bytes;
}

}  // namespace

std::string Statement::Read(int32_t count) { return ReadItem(context_, count); }

Statement& Statement::Tab(int32_t column) {
    IOSeekToColumn(context_, column, kSeekAbsolute, 1);
    return *this;
}

Statement& Statement::Skip(int32_t columns) {
    IOSeekToColumn(context_, columns, kSeekRelative, 1);
    return *this;
}

int32_t Statement::End() { return _vrnEndIO(context_); }

InternalWrite::InternalWrite(char* base, uint32_t length, uint32_t records, Specifiers* specifiers, uint32_t flags,
                             void* iostat)
    : description_{reinterpret_cast<uintptr_t>(base), static_cast<uintptr_t>(length) * records, length},
      address_(&description_) {
    context_ = _vrnBeginIO(&address_, flags, specifiers != nullptr ? specifiers->list() : nullptr, 0, iostat, 0,
                           nullptr);
}

std::string InternalWrite::Read(int32_t count) { return ReadItem(context_, count); }

InternalWrite& InternalWrite::Bytes(std::string_view bytes) {
    if (!context_->itemsStopped) IOWrite(context_, bytes.data(), static_cast<int32_t>(bytes.size()));
    return *this;
}

int32_t InternalWrite::End() { return _vrnEndIO(context_); }

namespace {
constexpr uint32_t kFormattedWrite = FormattedWrite;
constexpr uint32_t kInternalFormattedWrite = FormattedWrite | VRN_FLAG_INTERNAL;

template <class T>
const void* OfKind(const T& value, int32_t kind, int8_t& one, int16_t& two, int32_t& four) {
    one = static_cast<int8_t>(value);
    two = static_cast<int16_t>(value);
    four = static_cast<int32_t>(value);
    return kind == 1 ? static_cast<const void*>(&one) : kind == 2 ? static_cast<const void*>(&two)
         : kind == 4 ? static_cast<const void*>(&four) : static_cast<const void*>(&value);
}
}  // namespace

FormatWriter::FormatWriter(int32_t unit, std::string_view format, Specifiers* specifiers, uint32_t options,
                           void* iostat)
    : text_(format), unit_(unit) {
    block_ = VrnFormatBlock{1, text_.data(), text_.size(), 0, nullptr};
    context_ = _vrnBeginIO(&unit_, kFormattedWrite, specifiers != nullptr ? specifiers->list() : nullptr, options,
                           iostat, 0, &block_);
}

FormatWriter::FormatWriter(char* base, uint32_t length, uint32_t records, std::string_view format, uint32_t options,
                           void* iostat, Specifiers* specifiers)
    : text_(format),
      file_{reinterpret_cast<uintptr_t>(base), static_cast<uintptr_t>(length) * records, length},
      fileAddress_(&file_) {
    block_ = VrnFormatBlock{1, text_.data(), text_.size(), 0, nullptr};
    context_ = _vrnBeginIO(&fileAddress_, kInternalFormattedWrite, specifiers != nullptr ? specifiers->list() : nullptr,
                           options, iostat, 0, &block_);
}

FormatWriter::FormatWriter(int32_t unit, const uint8_t* code, Specifiers* specifiers, uint32_t options, void* iostat,
                           intptr_t environment, const VrnFormatExpressionFunction* table)
    : unit_(unit) {
    block_ = VrnFormatBlock{1, nullptr, reinterpret_cast<uintptr_t>(code), environment, table};
    context_ = _vrnBeginIO(&unit_, kFormattedWrite, specifiers != nullptr ? specifiers->list() : nullptr, options,
                           iostat, 0, &block_);
}

FormatWriter& FormatWriter::Raw(const void* item, int32_t totalLength, int32_t elementLength, int32_t type) {
    _vrnWriteFmt(context_, item, &totalLength, &elementLength, type);
    return *this;
}

FormatWriter& FormatWriter::Integer(int64_t value, int32_t kind) {
    int8_t one;
    int16_t two;
    int32_t four;
    return Raw(OfKind(value, kind, one, two, four), kind, kind, 0);
}

FormatWriter& FormatWriter::Item(float value) { return Raw(&value, 4, 4, 4); }
FormatWriter& FormatWriter::Item(double value) { return Raw(&value, 8, 8, 4); }

FormatWriter& FormatWriter::Real16(double high, double low) {
    double pair[2] = {high, low};
    return Raw(pair, 16, 16, 4);
}

FormatWriter& FormatWriter::Logical(int64_t value, int32_t kind) {
    int8_t one;
    int16_t two;
    int32_t four;
    return Raw(OfKind(value, kind, one, two, four), kind, kind, 1);
}

FormatWriter& FormatWriter::Complex(float real, float imaginary) {
    float parts[2] = {real, imaginary};
    return Raw(parts, 8, 4, 5);
}

FormatWriter& FormatWriter::Complex(double real, double imaginary) {
    double parts[2] = {real, imaginary};
    return Raw(parts, 16, 8, 5);
}

FormatWriter& FormatWriter::Item(std::string_view text) {
    return Raw(text.data(), static_cast<int32_t>(text.size()), static_cast<int32_t>(text.size()), 2);
}

int32_t FormatWriter::End() { return _vrnEndIO(context_); }

constexpr uint32_t kInternalFormattedRead = FormattedRead | VRN_FLAG_INTERNAL;

FormatReader::FormatReader(int32_t unit, std::string_view format, Specifiers* specifiers, uint32_t options,
                           void* iostat)
    : text_(format), unit_(unit) {
    block_ = VrnFormatBlock{1, text_.data(), text_.size(), 0, nullptr};
    context_ = _vrnBeginIO(&unit_, FormattedRead, specifiers != nullptr ? specifiers->list() : nullptr, options, iostat,
                           0, &block_);
}

FormatReader::FormatReader(const char* base, uint32_t length, uint32_t records, std::string_view format,
                           uint32_t options, void* iostat, Specifiers* specifiers)
    : text_(format),
      file_{reinterpret_cast<uintptr_t>(base), static_cast<uintptr_t>(length) * records, length},
      fileAddress_(&file_) {
    block_ = VrnFormatBlock{1, text_.data(), text_.size(), 0, nullptr};
    context_ = _vrnBeginIO(&fileAddress_, kInternalFormattedRead, specifiers != nullptr ? specifiers->list() : nullptr,
                           options, iostat, 0, &block_);
}

FormatReader& FormatReader::Raw(void* item, int32_t totalLength, int32_t elementLength, int32_t type) {
    _vrnReadFmt(context_, item, &totalLength, &elementLength, type);
    return *this;
}

int32_t FormatReader::End() { return _vrnEndIO(context_); }

ListReader::ListReader(int32_t unit, Specifiers* specifiers, uint32_t options, void* iostat) : unit_(unit) {
    context_ = _vrnBeginIO(&unit_, ListRead, specifiers != nullptr ? specifiers->list() : nullptr, options, iostat, 0,
                           nullptr);
}

ListReader::ListReader(const char* base, uint32_t length, uint32_t records, uint32_t options, void* iostat,
                       Specifiers* specifiers)
    : file_{reinterpret_cast<uintptr_t>(base), static_cast<uintptr_t>(length) * records, length}, fileAddress_(&file_) {
    context_ = _vrnBeginIO(&fileAddress_, InternalListRead, specifiers != nullptr ? specifiers->list() : nullptr,
                           options, iostat, 0, nullptr);
}

ListReader& ListReader::Integer(void* value, int32_t kind) {
    _vrnReadLDInt(context_, value, 0, &kind);
    return *this;
}

ListReader& ListReader::Byte(int8_t* value) {
    int32_t kind = 1;
    _vrnReadLDByte(context_, value, 0, &kind);
    return *this;
}

ListReader& ListReader::Logical(void* value, int32_t kind) {
    _vrnReadLDLog(context_, value, 0, &kind);
    return *this;
}

ListReader& ListReader::Real(void* value, int32_t kind) {
    _vrnReadLDReal(context_, value, 0, &kind);
    return *this;
}

ListReader& ListReader::Complex(void* parts, int32_t totalLength, int32_t partKind) {
    _vrnReadLDCmplx(context_, parts, &totalLength, &partKind);
    return *this;
}

ListReader& ListReader::Text(char* buffer, int32_t length) {
    _vrnReadLDChar(context_, buffer, &length);
    return *this;
}

int32_t ListReader::End() { return _vrnEndIO(context_); }

Unformatted::Unformatted(int32_t unit, uint32_t flags, Specifiers* specifiers, uint32_t options, void* iostat,
                         int32_t record, int64_t knownLength)
    : unit_(unit), knownLength_(knownLength) {
    context_ = _vrnBeginIO(&unit_, flags, specifiers != nullptr ? specifiers->list() : nullptr, options, iostat, record,
                           knownLength_ >= 0 ? &knownLength_ : nullptr);
}

Unformatted& Unformatted::Raw(const void* item, int32_t length, int32_t kind, uint32_t typeWord) {
    _vrnWriteUfmt(context_, item, &length, &kind, typeWord);
    return *this;
}

Unformatted& Unformatted::Into(void* item, int32_t length, int32_t kind, uint32_t typeWord) {
    _vrnReadUfmt(context_, item, &length, &kind, typeWord);
    return *this;
}

int32_t Unformatted::End() { return _vrnEndIO(context_); }

std::string InternalRecords(const char* base, uint32_t length, uint32_t records) {
    std::string out;
    for (uint32_t r = 0; r < records; ++r) {
        std::string record(base + static_cast<size_t>(r) * length, length);
        if (record[0] == '\x01') break;  // never written
        size_t last = record.find_last_not_of(' ');
        out += record.substr(0, last == std::string::npos ? 0 : last + 1);
        out += '\n';
    }
    return out;
}

ListWriter::ListWriter(int32_t unit, Specifiers* specifiers, uint32_t options, void* iostat) : unit_(unit) {
    context_ = _vrnBeginIO(&unit_, ListWrite, specifiers != nullptr ? specifiers->list() : nullptr, options, iostat, 0,
                           nullptr);
}

ListWriter::ListWriter(char* base, uint32_t length, uint32_t records, uint32_t options, void* iostat,
                       Specifiers* specifiers)
    : file_{reinterpret_cast<uintptr_t>(base), static_cast<uintptr_t>(length) * records, length}, fileAddress_(&file_) {
    context_ = _vrnBeginIO(&fileAddress_, InternalListWrite, specifiers != nullptr ? specifiers->list() : nullptr,
                           options, iostat, 0, nullptr);
}

ListWriter& ListWriter::Item(int32_t value) { return Integer(value, 4); }

ListWriter& ListWriter::Integer(int64_t value, int32_t kind) {
    int8_t one = static_cast<int8_t>(value);
    int16_t two = static_cast<int16_t>(value);
    int32_t four = static_cast<int32_t>(value);
    const void* address = kind == 1 ? static_cast<const void*>(&one) : kind == 2 ? static_cast<const void*>(&two)
                        : kind == 4 ? static_cast<const void*>(&four) : static_cast<const void*>(&value);
    _vrnWriteLDInt(context_, address, 0, &kind);
    return *this;
}

ListWriter& ListWriter::Byte(int8_t value) {
    _vrnWriteLDByte(context_, &value);
    return *this;
}

ListWriter& ListWriter::Item(float value) {
    int32_t kind = 4;
    _vrnWriteLDReal(context_, &value, 0, &kind);
    return *this;
}

ListWriter& ListWriter::Item(double value) {
    int32_t kind = 8;
    _vrnWriteLDReal(context_, &value, 0, &kind);
    return *this;
}

ListWriter& ListWriter::Real16(double high, double low) {
    double pair[2] = {high, low};
    int32_t kind = 16;
    _vrnWriteLDReal(context_, pair, 0, &kind);
    return *this;
}

ListWriter& ListWriter::Logical(int64_t value, int32_t kind) {
    int8_t one = static_cast<int8_t>(value);
    int16_t two = static_cast<int16_t>(value);
    int32_t four = static_cast<int32_t>(value);
    const void* address = kind == 1 ? static_cast<const void*>(&one) : kind == 2 ? static_cast<const void*>(&two)
                        : kind == 4 ? static_cast<const void*>(&four) : static_cast<const void*>(&value);
    _vrnWriteLDLog(context_, address, 0, &kind);
    return *this;
}

ListWriter& ListWriter::Complex(float real, float imaginary) {
    float parts[2] = {real, imaginary};
    int32_t total = sizeof parts;
    int32_t kind = 4;
    _vrnWriteLDCmplx(context_, parts, &total, &kind);
    return *this;
}

ListWriter& ListWriter::Complex(double real, double imaginary) {
    double parts[2] = {real, imaginary};
    int32_t total = sizeof parts;
    int32_t kind = 8;
    _vrnWriteLDCmplx(context_, parts, &total, &kind);
    return *this;
}

ListWriter& ListWriter::Item(std::string_view text) {
    int32_t length = static_cast<int32_t>(text.size());
    _vrnWriteLDChar(context_, text.data(), &length);
    return *this;
}

int32_t ListWriter::End() { return _vrnEndIO(context_); }

int32_t PrintEmpty() { return Statement(6, ListWrite).End(); }

int32_t Open(int32_t unit, Specifiers& specifiers, void* iostat, uint32_t options) {
    return _vrnIOCmd(unit, VRN_COMMAND_OPEN, specifiers.list(), options, iostat);
}

int32_t Close(int32_t unit, void* iostat) { return _vrnIOCmd(unit, VRN_COMMAND_CLOSE, nullptr, 0, iostat); }

int32_t FileCommand(int32_t unit, int32_t command, void* iostat, Specifiers* specifiers) {
    return _vrnIOCmd(unit, command, specifiers != nullptr ? specifiers->list() : nullptr, 0, iostat);
}

void ResetRuntime() { RTECleanup(); }

void SetOptions(std::string_view text) { setrteopts(text.data(), static_cast<int32_t>(text.size())); }

void UseCatalogue(Catalogue catalogue) {
    static const char* const kInstalled = vrnFallbackCatalogPath;  // before any test changed it
    static const char* const kNowhere = "/nonexistent/vrqmsg90.cat";
    switch (catalogue) {
    case Catalogue::Built: setenv("NLSPATH", VRN_TEST_CATALOG_DIR "/%N", 1); break;
    case Catalogue::Absent: setenv("NLSPATH", "/nonexistent/%N", 1); break;
    case Catalogue::Installed: unsetenv("NLSPATH"); break;
    }
    // The fixed fallback path may hold an installed catalogue; tests decide for themselves.
    vrnFallbackCatalogPath = catalogue == Catalogue::Installed ? kInstalled : kNowhere;
}

void RuntimeTest::SetUp() {
    unsetenv("VRNRTEOPTS");
    unsetenv("vrq_messages");
    unsetenv("cnverr");
    UseCatalogue(Catalogue::Absent);
    ResetRuntime();
}

namespace {

std::string MakeTempFile(const char* stem) {
    const char* directory = std::getenv("TMPDIR");
    std::string path = std::string(directory != nullptr ? directory : "/tmp") + "/" + stem + "XXXXXX";
    int fd = mkstemp(path.data());
    if (fd >= 0) close(fd);
    return path;
}

}  // namespace

CapturedRun::CapturedRun() {
    std::fflush(stdout);
    std::fflush(stderr);
    ResetRuntime();
    outPath_ = MakeTempFile("vrn_out");
    errPath_ = MakeTempFile("vrn_err");
    savedOut_ = dup(1);
    savedErr_ = dup(2);
    int out = open(outPath_.c_str(), O_WRONLY | O_TRUNC);
    int err = open(errPath_.c_str(), O_WRONLY | O_TRUNC);
    dup2(out, 1);
    dup2(err, 2);
    close(out);
    close(err);
}

void CapturedRun::Finish() {
    if (finished_) return;
    finished_ = true;
    ResetRuntime();
    dup2(savedOut_, 1);
    dup2(savedErr_, 2);
    close(savedOut_);
    close(savedErr_);
    out_ = ReadFile(outPath_);
    err_ = ReadFile(errPath_);
    unlink(outPath_.c_str());
    unlink(errPath_.c_str());
}

CapturedRun::~CapturedRun() { Finish(); }

TempDir::TempDir() {
    const char* directory = std::getenv("TMPDIR");
    path_ = std::string(directory != nullptr ? directory : "/tmp") + "/vrn_testXXXXXX";
    if (mkdtemp(path_.data()) == nullptr) path_.clear();
}

TempDir::~TempDir() {
    if (DIR* dir = opendir(path_.c_str())) {
        while (dirent* entry = readdir(dir)) {
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
                unlink(Path(entry->d_name).c_str());
            }
        }
        closedir(dir);
    }
    rmdir(path_.c_str());
}

std::string TempDir::Path(std::string_view name) const { return path_ + "/" + std::string(name); }

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string ProgramOutput(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return "cannot run " + command;
    std::string out;
    char chunk[256];
    while (size_t got = std::fread(chunk, 1, sizeof chunk, pipe)) out.append(chunk, got);
    pclose(pipe);
    return out;
}

}  // namespace vrntest
