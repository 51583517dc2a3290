// The run-time's own encodings: diagnostics become numbered errors of the statement, and
// the thread's buffer is reused.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "core/context.h"
#include "format/encoded_format.h"
#include "tests/support/fortran.h"

extern "C" void* __real_malloc(size_t size);

namespace {
int mallocCalls = 0;
}

extern "C" void* __wrap_malloc(size_t size) {
    ++mallocCalls;
    return __real_malloc(size);
}

namespace {

using namespace vrntest;

class RuntimeEncoding : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        UseCatalogue(Catalogue::Built);
        ResetRuntime();
    }
};

// Encodes `text` inside a WRITE with IOSTAT= and IOMSG=: the code, the IOSTAT value and
// the message.
struct Outcome {
    void* code;
    int32_t iostat;
    std::string message;
};

Outcome EncodeInStatement(const std::string& text, uint32_t flags = 0) {
    char message[120];
    int32_t iostat = 0;
    Specifiers s;
    s.Location("fmt.f", 3).Address(VRN_KEY_IOMSG, message, sizeof message);
    char record[20];
    InternalWrite statement(record, sizeof record, 1, &s, InternalListWrite, &iostat);
    void* code = EncodeRuntimeFormat(statement.context(), text.data(), static_cast<int32_t>(text.size()), flags);
    statement.End();
    std::string line(message, sizeof message);
    line.erase(line.find_last_not_of(' ') + 1);
    return {code, iostat, line};
}

TEST_F(RuntimeEncoding, ADiagnosticIsTheStatementsErrorWithIostat58) {
    struct Case {
        const char* text;
        const char* message;
    } cases[] = {
        {"(I5,,I5)", "3714-078 Format: a comma is misplaced."},
        {"(I5,K)", "3714-079 Format: the character \"K\" is not valid in a format."},
        {"(I2001)", "3714-061 Format: the width 2001 of I is out of range."},
        {"(I5.2001)", "3714-080 Format: the m 2001 of I is out of range."},
        {"(F9.2001)", "3714-081 Format: the d 2001 of F is out of range."},
        {"(E9.2E2001)", "3714-083 Format: the exponent width 2001 of E is out of range."},
        {"(I5", "3714-072 Format: a parenthesis is not closed."},
        {"", "3714-058 Format: the format is empty."},
        {"(2I5,3)", "3714-066 Format: a repeat count is not allowed before )."},
    };
    for (const Case& c : cases) {
        Outcome outcome = EncodeInStatement(c.text);
        EXPECT_EQ(outcome.code, nullptr) << c.text;
        EXPECT_EQ(outcome.iostat, 58) << c.text;
        EXPECT_EQ(outcome.message, std::string("\"fmt.f\", line 3: ") + c.message) << c.text;
    }
    Outcome good = EncodeInStatement("(1X,I5,2(F10.3,1X),A,ES24.16)");
    EXPECT_NE(good.code, nullptr);
    EXPECT_EQ(good.iostat, 0);
}

TEST_F(RuntimeEncoding, WithoutSpecifiersTheMessageIsPrintedAndTheCodeRepaired) {
    CapturedRun run;
    Statement statement(6, ListWrite);
    const char text[] = "(I5 I5)";
    void* code = EncodeRuntimeFormat(statement.context(), text, sizeof text - 1, 0);
    EXPECT_NE(code, nullptr);
    statement.End();
    run.Finish();
    EXPECT_NE(run.err().find("3714-076 Format: a comma is missing before I."), std::string::npos) << run.err();
}

TEST_F(RuntimeEncoding, LanguageLevelsComeFromTheOptionsAndTheStatement) {
    SetOptions("langlvl=95std");
    OptionBlock& options = _GlobalContext->options;
    EXPECT_EQ(RuntimeEncodingFlags(options, 0), VRN_FMT_LEVEL_F95);
    EXPECT_EQ(RuntimeEncodingFlags(options, 0x7u | 0x60000u),
              VRN_FMT_LEVEL_F95 | VRN_FMT_Q_COUNT | VRN_FMT_MULTIBYTE | VRN_FMT_ESCAPES | VRN_FMT_INTEGER2);
    SetOptions("langlvl=2008std");
    EXPECT_EQ(RuntimeEncodingFlags(options, 0x40000u), VRN_FMT_LEVEL_F2008 | VRN_FMT_INTEGER8);
    SetOptions("langlvl=90ext");
    EXPECT_EQ(RuntimeEncodingFlags(options, 0), 0u);
    SetOptions("langlvl=90std");
    EXPECT_EQ(RuntimeEncodingFlags(options, 0), VRN_FMT_LEVEL_F90);
    // A language-level diagnostic is an error at a standard level.
    Outcome outcome = EncodeInStatement("(DC,I5)", RuntimeEncodingFlags(options, 0));
    EXPECT_EQ(outcome.code, nullptr);
    EXPECT_EQ(outcome.iostat, 58);
    EXPECT_NE(outcome.message.find("3714-143 Format: DC is an extension"), std::string::npos) << outcome.message;
}

TEST_F(RuntimeEncoding, TheBufferIsReusedWithoutAllocating) {
    CapturedRun run;
    Statement statement(6, ListWrite);
    const char text[] = "(1X,I5,2(F10.3,1X),A,ES24.16)";
    void* first = EncodeRuntimeFormat(statement.context(), text, sizeof text - 1, 0);
    ASSERT_NE(first, nullptr);
    mallocCalls = 0;
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(EncodeRuntimeFormat(statement.context(), text, sizeof text - 1, 0), first);
    }
    EXPECT_EQ(mallocCalls, 0);
    statement.End();
}

TEST_F(RuntimeEncoding, AChainedRuntimeCodeIsFreedAtTheEnd) {
    std::string text = "('" + std::string(100000, 'x') + "')";
    CapturedRun run;
    Statement statement(6, ListWrite);
    void* code = EncodeRuntimeFormat(statement.context(), text.data(), static_cast<int32_t>(text.size()), 0);
    ASSERT_NE(code, nullptr);
    bool wide = _vrnEncodingMode(code) == 2;
    if (wide) {
        EXPECT_EQ(static_cast<int64_t*>(code)[3] & VRN_FMT_CONTIGUOUS, 0);
        FreeFormatExtensions64(code);
    } else {
        EXPECT_EQ(static_cast<int32_t*>(code)[3] & VRN_FMT_CONTIGUOUS, 0);
        FreeFormatExtensions(code);
    }
    statement.End();
}

}  // namespace
