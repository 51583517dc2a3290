// Plays the compiler: builds KeywordLists and statement calls the way compiled code
// does, and captures what a program's standard output and standard error receive.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "vrn90.h"

namespace vrntest {

// A KeywordList as the compiler lays it out.
class Specifiers {
public:
    Specifiers();
    // A character value given as text (a = address, b = length); the text is kept alive.
    Specifiers& Text(uint32_t tag, std::string_view text);
    // A character value the compiler knew: a = 0, b = its keyword number.
    Specifiers& Keyword(uint32_t tag, uint32_t keyword);
    Specifiers& Value(uint32_t tag, uintptr_t a, uint32_t b = 0);
    Specifiers& Address(uint32_t tag, void* address, uint32_t length = 0);
    Specifiers& Version(uint32_t version);
    // The location the compiler sends first with every statement.
    Specifiers& Location(std::string_view file, int32_t line);
    const KeywordList* list();

private:
    std::vector<KeywordEntry> entries_;
    std::deque<std::string> texts_;
    std::vector<uint64_t> storage_;
    uint32_t version_ = 1;
};

constexpr uint32_t ListWrite = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t ListRead = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t DirectListWrite = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_DIRECT);
constexpr uint32_t DirectListRead = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_READ, VRN_ACCESS_DIRECT);
constexpr uint32_t StreamListWrite = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_WRITE, VRN_ACCESS_STREAM);
constexpr uint32_t InternalListWrite = ListWrite | VRN_FLAG_INTERNAL;
constexpr uint32_t InternalListRead = ListRead | VRN_FLAG_INTERNAL;
constexpr uint32_t FormattedWrite = VRN_STATEMENT_FLAGS(VRN_KIND_FORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t FormattedRead = VRN_STATEMENT_FLAGS(VRN_KIND_FORMATTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t StreamListRead = VRN_STATEMENT_FLAGS(VRN_KIND_LIST_DIRECTED, VRN_DIRECTION_READ, VRN_ACCESS_STREAM);
constexpr uint32_t UfmtWrite = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t UfmtRead = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t DirectUfmtWrite = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_DIRECT);
constexpr uint32_t DirectUfmtRead = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_READ, VRN_ACCESS_DIRECT);
constexpr uint32_t StreamUfmtWrite = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_STREAM);
constexpr uint32_t StreamUfmtRead = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_READ, VRN_ACCESS_STREAM);

// One data transfer statement on an external unit: BeginIO now, End() at the end.
class Statement {
public:
    Statement(int32_t unit, uint32_t flags, Specifiers* specifiers = nullptr, uint32_t options = 0,
              void* iostat = nullptr, int32_t record = 0);
    LocalContext* context() const { return context_; }
    // Puts bytes into the current record through the record layer, as an item would.
    Statement& Bytes(std::string_view bytes);
    // Reads up to `count` bytes of the current record through the record layer.
    std::string Read(int32_t count);
    // T (absolute, from 1), or TR/X and TL (relative), as a format item would ask for them.
    Statement& Tab(int32_t column);
    Statement& Skip(int32_t columns);
    int32_t End();

private:
    int32_t unit_;
    LocalContext* context_;
};

// An internal WRITE (or READ) on a character variable or array of `records` elements of
// `length`.
class InternalWrite {
public:
    InternalWrite(char* base, uint32_t length, uint32_t records, Specifiers* specifiers = nullptr,
                  uint32_t flags = InternalListWrite, void* iostat = nullptr);
    LocalContext* context() const { return context_; }
    InternalWrite& Bytes(std::string_view bytes);
    std::string Read(int32_t count);
    int32_t End();

private:
    InternalFile description_;
    InternalFile* address_;
    LocalContext* context_;
};

// WRITE (unit, *) items, as the compiler calls the item routines:
//   ListWrite().Item(42).Item(2.5).Item("AB").End()
class ListWriter {
public:
    explicit ListWriter(int32_t unit = 6, Specifiers* specifiers = nullptr, uint32_t options = 0, void* iostat = nullptr);
    // An internal WRITE to `records` elements of `length` characters.
    ListWriter(char* base, uint32_t length, uint32_t records, uint32_t options = 0, void* iostat = nullptr,
               Specifiers* specifiers = nullptr);
    ListWriter& Item(int32_t value);
    ListWriter& Integer(int64_t value, int32_t kind);
    ListWriter& Byte(int8_t value);
    ListWriter& Item(float value);
    ListWriter& Item(double value);
    ListWriter& Real16(double high, double low);
    ListWriter& Logical(int64_t value, int32_t kind = 4);
    ListWriter& Complex(float real, float imaginary);
    ListWriter& Complex(double real, double imaginary);
    ListWriter& Item(std::string_view text);
    LocalContext* context() const { return context_; }
    int32_t End();

private:
    int32_t unit_ = 0;
    InternalFile file_{};
    InternalFile* fileAddress_ = nullptr;
    LocalContext* context_;
};

// WRITE (unit, format) items, with the format given as text (encoded at run time) or as
// a code the compiler encoded:
//   FormatWriter(6, "(I5,F6.2)").Item(42).Item(2.5).End()
class FormatWriter {
public:
    FormatWriter(int32_t unit, std::string_view format, Specifiers* specifiers = nullptr, uint32_t options = 0,
                 void* iostat = nullptr);
    // An internal WRITE to `records` elements of `length` characters.
    FormatWriter(char* base, uint32_t length, uint32_t records, std::string_view format, uint32_t options = 0,
                 void* iostat = nullptr, Specifiers* specifiers = nullptr);
    // A pre-encoded format, with the environment and table of its "<...>" expressions.
    FormatWriter(int32_t unit, const uint8_t* code, Specifiers* specifiers = nullptr, uint32_t options = 0,
                 void* iostat = nullptr, intptr_t environment = 0, const VrnFormatExpressionFunction* table = nullptr);
    FormatWriter& Item(int32_t value) { return Integer(value, 4); }
    FormatWriter& Integer(int64_t value, int32_t kind);
    FormatWriter& Item(float value);
    FormatWriter& Item(double value);
    FormatWriter& Real16(double high, double low);
    FormatWriter& Logical(int64_t value, int32_t kind = 4);
    FormatWriter& Complex(float real, float imaginary);
    FormatWriter& Complex(double real, double imaginary);
    FormatWriter& Item(std::string_view text);
    // Any item as the compiler passes it.
    FormatWriter& Raw(const void* item, int32_t totalLength, int32_t elementLength, int32_t type);
    LocalContext* context() const { return context_; }
    int32_t End();

private:
    std::string text_;
    VrnFormatBlock block_{};
    int32_t unit_ = 0;
    InternalFile file_{};
    InternalFile* fileAddress_ = nullptr;
    LocalContext* context_;
};

// READ (unit, format) items into the caller's variables:
//   FormatReader(10, "(I5,F8.2)").Item(&n).Item(&x).End()
class FormatReader {
public:
    FormatReader(int32_t unit, std::string_view format, Specifiers* specifiers = nullptr, uint32_t options = 0,
                 void* iostat = nullptr);
    // An internal READ of `records` elements of `length` characters.
    FormatReader(const char* base, uint32_t length, uint32_t records, std::string_view format, uint32_t options = 0,
                 void* iostat = nullptr, Specifiers* specifiers = nullptr);
    FormatReader& Item(int32_t* value) { return Raw(value, 4, 4, 0); }
    FormatReader& Item(float* value) { return Raw(value, 4, 4, 4); }
    FormatReader& Item(double* value) { return Raw(value, 8, 8, 4); }
    FormatReader& Integer(void* value, int32_t kind) { return Raw(value, kind, kind, 0); }
    FormatReader& Logical(void* value, int32_t kind) { return Raw(value, kind, kind, 1); }
    FormatReader& Real16(double* pair) { return Raw(pair, 16, 16, 4); }
    FormatReader& Complex(float* parts) { return Raw(parts, 8, 4, 5); }
    FormatReader& Complex(double* parts) { return Raw(parts, 16, 8, 5); }
    FormatReader& Text(char* buffer, int32_t length) { return Raw(buffer, length, length, 2); }
    FormatReader& Raw(void* item, int32_t totalLength, int32_t elementLength, int32_t type);
    LocalContext* context() const { return context_; }
    int32_t End();

private:
    std::string text_;
    VrnFormatBlock block_{};
    int32_t unit_ = 0;
    InternalFile file_{};
    InternalFile* fileAddress_ = nullptr;
    LocalContext* context_;
};

// READ (unit, *) items into the caller's variables:
//   ListReader(10).Item(&n).Item(&x).Text(name, 8).End()
class ListReader {
public:
    explicit ListReader(int32_t unit, Specifiers* specifiers = nullptr, uint32_t options = 0, void* iostat = nullptr);
    // An internal READ of `records` elements of `length` characters.
    ListReader(const char* base, uint32_t length, uint32_t records, uint32_t options = 0, void* iostat = nullptr,
               Specifiers* specifiers = nullptr);
    ListReader& Item(int32_t* value) { return Integer(value, 4); }
    ListReader& Item(float* value) { return Real(value, 4); }
    ListReader& Item(double* value) { return Real(value, 8); }
    ListReader& Integer(void* value, int32_t kind);
    ListReader& Byte(int8_t* value);
    ListReader& Logical(void* value, int32_t kind);
    ListReader& Real(void* value, int32_t kind);
    ListReader& Real16(double* pair) { return Real(pair, 16); }
    ListReader& Complex(float* parts) { return Complex(parts, 8, 4); }
    ListReader& Complex(double* parts) { return Complex(parts, 16, 8); }
    ListReader& Complex(void* parts, int32_t totalLength, int32_t partKind);
    ListReader& Text(char* buffer, int32_t length);
    LocalContext* context() const { return context_; }
    int32_t End();

private:
    int32_t unit_ = 0;
    InternalFile file_{};
    InternalFile* fileAddress_ = nullptr;
    LocalContext* context_;
};

// An unformatted READ or WRITE (by `flags`), items as the compiler passes them:
//   Unformatted(10, UfmtWrite).Item(42).Item(2.5).Text("AB").End()
// `knownLength` is the record length the compiler could tell, or -1 for none.
class Unformatted {
public:
    Unformatted(int32_t unit, uint32_t flags, Specifiers* specifiers = nullptr, uint32_t options = 0,
                void* iostat = nullptr, int32_t record = 0, int64_t knownLength = -1);
    Unformatted& Item(int32_t value) { return Raw(&value, 4, 4, 0); }
    Unformatted& Item(double value) { return Raw(&value, 8, 8, 4); }
    Unformatted& Text(std::string_view text) { return Raw(text.data(), static_cast<int32_t>(text.size()), 1, 2); }
    Unformatted& Raw(const void* item, int32_t length, int32_t kind, uint32_t typeWord);
    // The read forms.
    Unformatted& Into(int32_t* value) { return Into(value, 4, 4, 0); }
    Unformatted& Into(double* value) { return Into(value, 8, 8, 4); }
    Unformatted& Into(void* item, int32_t length, int32_t kind, uint32_t typeWord);
    LocalContext* context() const { return context_; }
    int32_t End();

private:
    int32_t unit_;
    int64_t knownLength_;
    LocalContext* context_;
};

// The records an internal formatted WRITE produced, each with its trailing blanks cut and
// ended by "\n"; records never reached are left out.
//   EXPECT_EQ(Formatted("(I5)", [](FormatWriter& w) { w.Item(7); }), "    7\n");
template <class Items>
std::string Formatted(std::string_view format, Items items, uint32_t options = 0, void* iostat = nullptr);

// PRINT * with no items.
int32_t PrintEmpty();

// A file statement; returns the routine's status.
int32_t Open(int32_t unit, Specifiers& specifiers, void* iostat = nullptr, uint32_t options = 0);
int32_t Close(int32_t unit, void* iostat = nullptr);
// REWIND, BACKSPACE, ENDFILE, FLUSH and the like.
int32_t FileCommand(int32_t unit, int32_t command, void* iostat = nullptr, Specifiers* specifiers = nullptr);

// Starts the run-time afresh with standard output and standard error going to files, so
// that the preconnected units see them. Finish() flushes everything and gives the text.
class CapturedRun {
public:
    CapturedRun();
    ~CapturedRun();
    void Finish();
    const std::string& out() const { return out_; }
    const std::string& err() const { return err_; }

private:
    int savedOut_ = -1, savedErr_ = -1;
    std::string outPath_, errPath_, out_, err_;
    bool finished_ = false;
};

// A fresh directory for the files of one test, removed with its files at the end.
class TempDir {
public:
    TempDir();
    ~TempDir();
    std::string Path(std::string_view name) const;
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

std::string ReadFile(const std::string& path);

// What a command (a peer program, for instance) writes to its standard output.
std::string ProgramOutput(const std::string& command);

// CALL SETRTEOPTS(text).
void SetOptions(std::string_view text);

// Ends the run-time so that the next call starts it again (a fresh program).
void ResetRuntime();

// Which message catalogue the next start of the run-time finds: none, so that messages
// are number lines such as "3714-006"; the one the build compiled, through NLSPATH; or
// whatever an installation left, with no variable set.
enum class Catalogue { Absent, Built, Installed };
void UseCatalogue(Catalogue catalogue);

// Each test runs as a fresh program without a catalogue and without run-time options:
// the run-time starts on its first call.
class RuntimeTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override { ResetRuntime(); }
};

// The records of an internal WRITE of up to eight records of 300 characters.
std::string InternalRecords(const char* base, uint32_t length, uint32_t records);

template <class Items>
std::string Formatted(std::string_view format, Items items, uint32_t options, void* iostat) {
    std::string area(8 * 300, '\x01');
    FormatWriter writer(area.data(), 300, 8, format, options, iostat);
    items(writer);
    writer.End();
    return InternalRecords(area.data(), 300, 8);
}

}  // namespace vrntest
