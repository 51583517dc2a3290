#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "core/context.h"
#include "core/errors.h"
#include "core/unit.h"
#include "tests/support/fortran.h"
#include "transport/transport.h"

namespace vrntest {
namespace {

class RecordOutput : public RuntimeTest {
protected:
    // OPEN (unit, FILE=name, ...) with a formatted connection; returns IOSTAT=.
    int32_t OpenFile(int32_t unit, const std::string& name, uint32_t access, int32_t recl = 0) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, name).Keyword(VRN_KEY_FORM, VRN_KEY_FORMATTED).Keyword(VRN_KEY_ACCESS, access);
        if (recl > 0) s.Value(VRN_KEY_RECL, static_cast<uintptr_t>(recl));
        int32_t iostat = -1;
        Open(unit, s, &iostat);
        return iostat;
    }

    TempDir dir;
};

TEST_F(RecordOutput, FormattedSequentialRecordStopsAtMaxRecord) {
    ASSERT_EQ(OpenFile(10, dir.Path("r.txt"), VRN_KEY_SEQUENTIAL, 10), 0);
    Statement write(10, ListWrite);  // the leading blank takes column 0
    LocalContext* context = write.context();
    EXPECT_EQ(context->recordMax, 10);
    EXPECT_EQ(IOWrite(context, "123456789", 9), 9);  // exactly fills the record
    EXPECT_EQ(context->recordOverflow, 0u);
    EXPECT_EQ(IOPutByte(context, 'x'), 0);
    EXPECT_EQ(context->recordOverflow, 1u);
    EXPECT_EQ(IOWrite(context, "yz", 2), 0);
    EXPECT_EQ(IOFill(context, ' ', 3), 0);
    write.End();
    Statement second(10, ListWrite);
    EXPECT_EQ(IOWrite(second.context(), "abcdefghijkl", 12), 9);  // cut at the record end
    second.End();
    Close(10);
    EXPECT_EQ(ReadFile(dir.Path("r.txt")), " 123456789\n abcdefghi\n");
}

TEST_F(RecordOutput, DirectRecordsArePaddedToRecl) {
    ASSERT_EQ(OpenFile(11, dir.Path("d.txt"), VRN_KEY_DIRECT, 8), 0);
    Statement(11, DirectListWrite, nullptr, 0, nullptr, 3).Bytes("AB").End();
    Statement(11, DirectListWrite, nullptr, 0, nullptr, 1).End();  // an empty record: all blanks
    Statement(11, DirectListWrite, nullptr, 0, nullptr, 2).Bytes("0123456789").End();
    Close(11);
    EXPECT_EQ(ReadFile(dir.Path("d.txt")), std::string("        ") + " 0123456" + " AB     ");
}

TEST_F(RecordOutput, StreamFormattedRecordsEndWithNewlines) {
    ASSERT_EQ(OpenFile(12, dir.Path("s.txt"), VRN_KEY_STREAM), 0);
    Statement(12, ListWrite).Bytes("one").End();
    Statement(12, ListWrite).Bytes("two").End();
    Specifiers at;
    at.Location("s.f", 3).Value(VRN_KEY_POS, 2);
    Statement(12, StreamListWrite, &at).Bytes("X").End();  // overwrites from the second byte on
    Close(12);
    EXPECT_EQ(ReadFile(dir.Path("s.txt")), "  X\n\n two\n");
}

TEST_F(RecordOutput, PositioningLeftKeepsTheWholeRecord) {
    ASSERT_EQ(OpenFile(13, dir.Path("t.txt"), VRN_KEY_SEQUENTIAL), 0);
    Statement write(13, ListWrite);
    LocalContext* context = write.context();
    IOWrite(context, "ABCDEFGH", 8);
    context->unit->pendingColumn = 3;  // T4
    IOWrite(context, "x", 1);
    context->unit->pendingColumn = 12;  // T13: beyond the record so far
    IOWrite(context, "y", 1);
    context->unit->pendingColumn = 2;  // TL back, and the statement ends there
    write.End();
    Close(13);
    EXPECT_EQ(ReadFile(dir.Path("t.txt")), " ABxDEFGH   y\n");
}

TEST_F(RecordOutput, LargeRecordsAndManyRecordsArriveIntact) {
    ASSERT_EQ(OpenFile(14, dir.Path("big.txt"), VRN_KEY_SEQUENTIAL), 0);
    std::string expected;
    std::string big(100000, 'b');
    for (int i = 0; i < 300; ++i) {
        std::string line = std::to_string(i) + std::string(80, 'a' + i % 26);
        Statement(14, ListWrite).Bytes(line).End();
        expected += " " + line + "\n";
        if (i % 100 == 7) {
            Statement(14, ListWrite).Bytes(big).End();  // larger than a block: written directly
            expected += " " + big + "\n";
        }
    }
    Close(14);
    EXPECT_EQ(ReadFile(dir.Path("big.txt")), expected);
}

TEST_F(RecordOutput, InternalRecordsAreBlankFilledAndRunOut) {
    char lines[3][6];
    std::memset(lines, '#', sizeof lines);
    InternalWrite write(&lines[0][0], 6, 3);
    LocalContext* context = write.context();
    EXPECT_EQ(IOWrite(context, "abcdefgh", 8), 5);  // the blank took column 0
    EXPECT_EQ(context->recordOverflow, 1u);
    for (int record = 0; record < 3; ++record) {
        EXPECT_EQ(IOTerminateRecord(context), 1);
        IOWrite(context, "z", 1);
    }
    EXPECT_EQ(context->atEndOfFile, 1u);  // ran off the last record
    EXPECT_EQ(IOWrite(context, "more", 4), 0);
    EXPECT_EQ(IOPutByte(context, 'm'), 0);
    write.End();
    EXPECT_EQ(std::string(&lines[0][0], 18), " abcdez     z     ");
}

TEST_F(RecordOutput, PipeRecordsAreLimitedTo32768Characters) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    CapturedRun run;
    // Standard output on a pipe is record buffered with the default limit.
    dup2(fds[1], 1);
    ResetRuntime();
    Statement write(6, ListWrite);
    EXPECT_EQ(write.context()->recordMax, 32768);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 6)->recordBuffered, 1u);
    write.End();
    run.Finish();
    close(fds[0]);
    close(fds[1]);
}

TEST_F(RecordOutput, AMessageInsideAFullRecordOnAPipeStaysInBounds) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    {
        CapturedRun run;
        dup2(fds[1], 2);  // unit 0 on a pipe: record buffered, 32,769 bytes of buffer
        ResetRuntime();
        Statement write(0, ListWrite);
        EXPECT_EQ(IOWrite(write.context(), std::string(32767, 'e').data(), 32767), 32767);
        ErrorHandler(kClassRecoverable, kKindError, 136, 136, 0u);  // printed on unit 0, mid-record
        write.End();
        run.Finish();
    }
    close(fds[1]);
    std::string received;
    char chunk[4096];
    for (ssize_t got; (got = read(fds[0], chunk, sizeof chunk)) > 0;) received.append(chunk, static_cast<size_t>(got));
    close(fds[0]);
    EXPECT_EQ(received, " " + std::string(32767, 'e') + "3714-136\n\n");
}

TEST_F(RecordOutput, FullDiskPoisonsTheUnitAndLaterFlushesStaySilent) {
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
    CapturedRun run;
    Specifiers s;
    s.Text(VRN_KEY_FILE, "/dev/full").Keyword(VRN_KEY_ACTION, VRN_KEY_WRITE);
    int32_t iostat = -1;
    Open(15, s, &iostat);
    ASSERT_EQ(iostat, 0);
    Statement(15, ListWrite, nullptr, 0, &iostat).Bytes("lost").End();
    EXPECT_EQ(iostat, 13);  // a sequential WRITE failed in a system call
    EXPECT_EQ(LookUpUnit(_GlobalContext, 15)->permanentError, 1u);
    Statement(15, ListWrite, nullptr, 0, &iostat).End();
    EXPECT_EQ(iostat, 15);  // the unit is poisoned
    EXPECT_EQ(Close(15, &iostat), 0);
    EXPECT_EQ(iostat, 0);  // the failure was reported once; closing is silent
    run.Finish();
    EXPECT_EQ(run.err(), "");
    EXPECT_EXIT(
        {
            Specifiers full;
            full.Text(VRN_KEY_FILE, "/dev/full").Keyword(VRN_KEY_ACTION, VRN_KEY_WRITE);
            Open(15, full);
            Statement(15, ListWrite).Bytes("lost").End();
        },
        ::testing::ExitedWithCode(1), "^3714-013\n$");
}

}  // namespace
}  // namespace vrntest
