// Reading records back, positioning inside them, and the file statements around them,
// looking at the bytes on disk and at IOSTAT=.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "core/context.h"
#include "core/unit.h"
#include "tests/support/fortran.h"
#include "transport/transport.h"

namespace vrntest {
namespace {

class RecordInput : public RuntimeTest {
protected:
    void WriteFile(const std::string& name, const std::string& bytes) {
        int fd = open(dir.Path(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ASSERT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        close(fd);
    }
    int32_t OpenFile(int32_t unit, const std::string& name, uint32_t access = VRN_KEY_SEQUENTIAL, int32_t recl = 0,
                     uint32_t pad = 0) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, dir.Path(name)).Keyword(VRN_KEY_FORM, VRN_KEY_FORMATTED).Keyword(VRN_KEY_ACCESS, access);
        if (recl > 0) s.Value(VRN_KEY_RECL, static_cast<uintptr_t>(recl));
        if (pad != 0) s.Keyword(VRN_KEY_PAD, pad);
        int32_t iostat = -1;
        Open(unit, s, &iostat);
        return iostat;
    }
    // A READ statement that skips its record at the end; IOSTAT= of the statement.
    int32_t ReadRecord(int32_t unit, std::string* got = nullptr, int32_t count = 100) {
        int32_t iostat = 0;
        Statement read(unit, ListRead, nullptr, 0, &iostat);
        std::string bytes = read.Read(count);
        read.End();
        if (got != nullptr) *got = bytes;
        return iostat;
    }
    TempDir dir;
};

TEST_F(RecordInput, WriteRewindReadPositionBackspaceEndfile) {
    ASSERT_EQ(OpenFile(10, "e2e.txt"), 0);
    for (const char* record : {"0123456789", "abcdefghij", "KLMNOPQRST", "last"}) {
        Statement(10, ListWrite).Bytes(record).End();
    }
    EXPECT_EQ(FileCommand(10, VRN_COMMAND_REWIND), 0);

    Statement first(10, ListRead);
    first.Tab(5);  // T5
    EXPECT_EQ(first.Read(3), "345");
    first.Skip(-5);  // TL5
    EXPECT_EQ(first.Read(2), "12");
    first.Skip(3);  // X3
    EXPECT_EQ(first.Read(2), "67");
    first.End();

    Specifiers noAdvance;
    noAdvance.Location("e2e.f", 9).Keyword(VRN_KEY_ADVANCE, VRN_KEY_NO);
    Statement partial(10, ListRead, &noAdvance);
    EXPECT_EQ(partial.Read(4), " abc");
    partial.End();
    Statement rest(10, ListRead);  // goes on where the non-advancing READ stopped
    EXPECT_EQ(rest.context()->column, 4);
    EXPECT_EQ(rest.Read(3), "def");
    rest.End();

    EXPECT_EQ(FileCommand(10, VRN_COMMAND_BACKSPACE), 0);
    EXPECT_EQ(FileCommand(10, VRN_COMMAND_BACKSPACE), 0);
    std::string record;
    EXPECT_EQ(ReadRecord(10, &record), 0);
    EXPECT_EQ(record, " 0123456789");
    EXPECT_EQ(FileCommand(10, VRN_COMMAND_ENDFILE), 0);
    EXPECT_EQ(ReadFile(dir.Path("e2e.txt")), " 0123456789\n");
    EXPECT_EQ(FileCommand(10, VRN_COMMAND_REWIND), 0);
    EXPECT_EQ(ReadRecord(10, &record), 0);
    EXPECT_EQ(ReadRecord(10), -1);  // end of file
    EXPECT_EQ(FileCommand(10, VRN_COMMAND_BACKSPACE), 0);  // before the end-of-file record
    EXPECT_EQ(ReadRecord(10), -1);
    EXPECT_EQ(ReadRecord(10), 145);  // past it: I/O after the end-of-file record
    Close(10);
}

TEST_F(RecordInput, ShortRecordsAreePaddedOnlyUnderPadYes) {
    WriteFile("short.txt", "abc\nde\nno newline at the end");
    ASSERT_EQ(OpenFile(11, "short.txt"), 0);
    Statement padded(11, FormattedRead);
    EXPECT_EQ(padded.context()->padInput, 1u);
    EXPECT_EQ(padded.Read(6), "abc   ");
    EXPECT_EQ(padded.context()->recordOverflow, 1u);
    padded.Tab(10);  // T10, beyond the record: blanks
    EXPECT_EQ(padded.Read(2), "  ");
    IOTerminateRecord(padded.context());
    padded.End();
    Close(11);
    ASSERT_EQ(OpenFile(11, "short.txt", VRN_KEY_SEQUENTIAL, 0, VRN_KEY_NO), 0);
    Statement unpadded(11, FormattedRead);
    EXPECT_EQ(unpadded.context()->padInput, 0u);
    EXPECT_EQ(unpadded.Read(6), "abc");
    EXPECT_EQ(unpadded.context()->recordOverflow, 1u);
    IOTerminateRecord(unpadded.context());
    EXPECT_EQ(unpadded.Read(1), "d");
    IOTerminateRecord(unpadded.context());
    EXPECT_EQ(unpadded.Read(100), "no newline at the end");  // a full record
    unpadded.End();
    EXPECT_EQ(ReadRecord(11), 0);
    EXPECT_EQ(ReadRecord(11), -1);
}

TEST_F(RecordInput, FieldsEndAtTheirSeparatorAndTheRecordAtItsNewline) {
    WriteFile("fields.txt", "12,345,6\nnext\n");
    ASSERT_EQ(OpenFile(26, "fields.txt"), 0);
    Statement read(26, FormattedRead);
    LocalContext* context = read.context();
    char field[8];
    int32_t found = 0;
    EXPECT_EQ(IOReadAndScan(context, field, 5, ',', &found), 2);
    EXPECT_EQ(found, 1);
    EXPECT_EQ(std::string(field, 2), "12");
    EXPECT_EQ(IOReadAndScan(context, field, 2, ',', &found), 2);  // the width ends it first
    EXPECT_EQ(found, 0);
    EXPECT_EQ(IOFindRemainingLength(context), 3);  // "5,6" is left
    EXPECT_EQ(IOReadAndScan(context, field, 1, ',', &found), 1);
    EXPECT_EQ(IOReadAndScan(context, field, 1, ',', &found), 0);
    EXPECT_EQ(found, 1);
    EXPECT_EQ(IOReadAndScan(context, field, 4, ',', &found), 4);  // "6" and the padding
    EXPECT_EQ(std::string(field, 4), "6   ");
    EXPECT_EQ(IOGetByte(context), -1);
    EXPECT_EQ(context->recordOverflow, 1u);
    IOTerminateRecord(context);
    EXPECT_EQ(IOGetByte(context), 'n');
    read.End();
}

TEST_F(RecordInput, AnEmptyFileIsAtItsEndAtOnce) {
    WriteFile("empty.txt", "");
    ASSERT_EQ(OpenFile(12, "empty.txt"), 0);
    EXPECT_EQ(ReadRecord(12), -1);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 12)->afterEndfile, 1u);
    // A program compiled to allow it may read on and meets the end again.
    int32_t iostat = 0;
    Statement again(12, ListRead, nullptr, VRN_OPTION_IO_AFTER_ENDFILE, &iostat);
    EXPECT_EQ(again.Read(1), "");
    again.End();
    EXPECT_EQ(iostat, -1);
}

TEST_F(RecordInput, EndOfFileTakesEndOrEndsTheProgram) {
    WriteFile("one.txt", "only\n");
    WriteFile("two.txt", "only\n");
    ASSERT_EQ(OpenFile(13, "one.txt"), 0);
    EXPECT_EQ(ReadRecord(13), 0);
    EXPECT_EQ(Statement(13, ListRead, nullptr, VRN_OPTION_END).End(), 1);  // END= branch
    EXPECT_EXIT(
        {
            OpenFile(14, "two.txt");
            ReadRecord(14);
            Statement(14, ListRead, nullptr, VRN_OPTION_ERR).End();  // ERR= does not take it
        },
        ::testing::ExitedWithCode(1), "^3714-001\n$");
}

TEST_F(RecordInput, InternalRecordsRunOutWithTheirIostat) {
    char lines[2][4] = {{'a', 'b', 'c', 'd'}, {'e', 'f', 'g', 'h'}};
    int32_t iostat = 0;
    InternalWrite read(&lines[0][0], 4, 2, nullptr, InternalListRead, &iostat);
    EXPECT_EQ(read.Read(2), "ab");
    IOTerminateRecord(read.context());
    EXPECT_EQ(read.Read(9), "efgh     ");  // an internal file pads unless PAD='NO'
    EXPECT_EQ(read.context()->recordOverflow, 1u);
    EXPECT_EQ(IOTerminateRecord(read.context()), 1);
    read.End();
    EXPECT_EQ(iostat, 0);
    InternalWrite past(&lines[0][0], 4, 2, nullptr, InternalListRead, &iostat);
    IOTerminateRecord(past.context());
    IOTerminateRecord(past.context());
    EXPECT_EQ(past.Read(1), "");  // an item past the last record
    past.End();
    EXPECT_EQ(iostat, -2);
    SetOptions("iostat_end=2003std");
    InternalWrite standard(&lines[0][0], 4, 2, nullptr, InternalListRead, &iostat);
    IOTerminateRecord(standard.context());
    IOTerminateRecord(standard.context());
    standard.Read(1);
    standard.End();
    EXPECT_EQ(iostat, -1);
}

TEST_F(RecordInput, DirectAndStreamRecords) {
    ASSERT_EQ(OpenFile(15, "d.txt", VRN_KEY_DIRECT, 6), 0);
    Statement(15, DirectListWrite, nullptr, 0, nullptr, 2).Bytes("two").End();
    Statement(15, DirectListWrite, nullptr, 0, nullptr, 1).Bytes("one").End();
    Statement second(15, DirectListRead, nullptr, 0, nullptr, 2);
    EXPECT_EQ(second.Read(10), " two  ");  // cut at RECL
    second.End();
    Statement first(15, DirectListRead, nullptr, 0, nullptr, 1);
    EXPECT_EQ(first.Read(4), " one");
    first.End();
    Statement(15, DirectListWrite, nullptr, 0, nullptr, 3).Bytes("3").End();
    Close(15);
    EXPECT_EQ(ReadFile(dir.Path("d.txt")), " one   two   3    ");

    WriteFile("s.txt", "abc\ndef\n");
    ASSERT_EQ(OpenFile(16, "s.txt", VRN_KEY_STREAM), 0);
    Specifiers at;
    at.Location("s.f", 1).Value(VRN_KEY_POS, 6);
    Statement positioned(16, StreamListRead, &at);
    EXPECT_EQ(positioned.Read(5), "ef");
    positioned.End();
}

TEST_F(RecordInput, WritingAfterReadingCutsTheFile) {
    WriteFile("cut.txt", "one\ntwo\nthree\n");
    ASSERT_EQ(OpenFile(17, "cut.txt"), 0);
    EXPECT_EQ(ReadRecord(17), 0);
    Statement(17, ListWrite).Bytes("new").End();
    EXPECT_EQ(LookUpUnit(_GlobalContext, 17)->savedRecordLength, -1);
    Close(17);
    EXPECT_EQ(ReadFile(dir.Path("cut.txt")), "one\n new\n");
}

TEST_F(RecordInput, APartialNonAdvancingWriteIsFlushedBeforeARead) {
    WriteFile("mix.txt", "");
    ASSERT_EQ(OpenFile(18, "mix.txt"), 0);
    Specifiers noAdvance;
    noAdvance.Location("m.f", 2).Keyword(VRN_KEY_ADVANCE, VRN_KEY_NO);
    Statement(18, FormattedWrite, &noAdvance).Bytes("prompt").End();
    EXPECT_EQ(ReadFile(dir.Path("mix.txt")), "");  // still in the buffer
    int32_t iostat = -1;
    Statement(18, ListRead, nullptr, 0, &iostat).End();
    EXPECT_EQ(ReadFile(dir.Path("mix.txt")), "prompt");  // the partial record, no newline
    EXPECT_EQ(iostat, 0);
}

TEST_F(RecordInput, PipesReadForwardOnly) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    ASSERT_EQ(write(fds[1], "first\nsecond\n", 13), 13);
    close(fds[1]);  // the writer is gone
    std::string name = "/dev/fd/" + std::to_string(fds[0]);
    Specifiers s;
    s.Text(VRN_KEY_FILE, name).Keyword(VRN_KEY_ACTION, VRN_KEY_READ);
    int32_t iostat = -1;
    Open(19, s, &iostat);
    ASSERT_EQ(iostat, 0);
    EXPECT_EQ(LookUpUnit(_GlobalContext, 19)->recordBuffered, 1u);
    Statement read(19, ListRead);
    read.Skip(2);  // a forward move consumes
    EXPECT_EQ(read.Read(2), "rs");
    read.Skip(-3);  // TL back inside the record it keeps
    EXPECT_EQ(read.Read(4), "irst");
    read.End();
    std::string record;
    EXPECT_EQ(ReadRecord(19, &record), 0);
    EXPECT_EQ(record, "second");
    EXPECT_EQ(ReadRecord(19), -1);  // the writer died: end of file
    EXPECT_EQ(FileCommand(19, VRN_COMMAND_BACKSPACE, &iostat), 0);
    EXPECT_EQ(iostat, 119);
    Close(19);
    close(fds[0]);
}

TEST_F(RecordInput, FileStatementChecks) {
    int32_t iostat = 0;
    ASSERT_EQ(OpenFile(20, "d.txt", VRN_KEY_DIRECT, 4), 0);
    FileCommand(20, VRN_COMMAND_REWIND, &iostat);
    EXPECT_EQ(iostat, 17);
    Specifiers readOnly;
    readOnly.Text(VRN_KEY_FILE, dir.Path("r.txt")).Keyword(VRN_KEY_ACTION, VRN_KEY_READ);
    Open(21, readOnly);
    FileCommand(21, VRN_COMMAND_ENDFILE, &iostat);
    EXPECT_EQ(iostat, 139);
    ASSERT_EQ(OpenFile(22, "twice.txt"), 0);
    EXPECT_EQ(FileCommand(22, VRN_COMMAND_ENDFILE, &iostat), 0);
    FileCommand(22, VRN_COMMAND_ENDFILE, &iostat);
    EXPECT_EQ(iostat, 0);  // quietly, at EXTENDED
    SetOptions("langlvl=95std");
    FileCommand(22, VRN_COMMAND_ENDFILE, &iostat);
    EXPECT_EQ(iostat, 141);
    SetOptions("langlvl=extended");
    FileCommand(-7, VRN_COMMAND_REWIND, &iostat);
    EXPECT_EQ(iostat, 36);
    FileCommand(23, VRN_COMMAND_FLUSH, &iostat);
    EXPECT_EQ(iostat, 0);  // not connected, positive: no error
    FileCommand(-7, VRN_COMMAND_FLUSH, &iostat);
    EXPECT_EQ(iostat, 36);
    Specifiers wrong;
    wrong.Location("f.f", 1).Text(VRN_KEY_FILE, "x").Value(VRN_KEY_REC, 0, 1);
    FileCommand(22, VRN_COMMAND_REWIND, &iostat, &wrong);
    EXPECT_EQ(iostat, 93);
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    ASSERT_EQ(chdir(dir.path().c_str()), 0);
    EXPECT_EQ(FileCommand(24, VRN_COMMAND_REWIND, &iostat), 0);  // connects fort.24
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(access("fort.24", F_OK), 0);
    ASSERT_EQ(chdir(cwd), 0);
    Specifiers bad;
    bad.Text(VRN_KEY_STATUS, "THROW");
    _vrnIOCmd(22, VRN_COMMAND_CLOSE, bad.list(), 0, &iostat);
    EXPECT_EQ(iostat, 29);
    Specifiers deleting;
    deleting.Keyword(VRN_KEY_STATUS, VRN_KEY_DELETE);
    _vrnIOCmd(22, VRN_COMMAND_CLOSE, deleting.list(), 0, &iostat);
    EXPECT_EQ(iostat, 0);
    EXPECT_NE(access(dir.Path("twice.txt").c_str(), F_OK), 0);
}

TEST_F(RecordInput, FlushAndTheFortranServices) {
    ASSERT_EQ(OpenFile(25, "f.txt"), 0);
    Statement(25, ListWrite).Bytes("kept").End();
    EXPECT_EQ(ReadFile(dir.Path("f.txt")), "");
    int32_t unit = 25;
    flush_(&unit);
    EXPECT_EQ(ReadFile(dir.Path("f.txt")), " kept\n");
    int32_t on = 1;
    int32_t flushAfterWrite = 1;
    EXPECT_EQ(fiosetup_(&unit, &flushAfterWrite, &on), 0);
    Statement(25, ListWrite).Bytes("at once").End();
    EXPECT_EQ(ReadFile(dir.Path("f.txt")), " kept\n at once\n");
    int32_t nowhere = 99;
    EXPECT_EQ(fiosetup_(&nowhere, &flushAfterWrite, &on), 36);
}

}  // namespace
}  // namespace vrntest
namespace vrntest {
namespace {

TEST_F(RecordInput, AnUnterminatedLastRecordIsWholeAndTheNextReadMeetsTheEnd) {
    // However much of the last record a READ takes, the READ succeeds and the next one
    // meets the end of the file, on sequential and on stream units.
    for (uint32_t access : {VRN_KEY_SEQUENTIAL, VRN_KEY_STREAM}) {
        for (int32_t count : {0, 2, 10, 11, 100}) {
            WriteFile("last.txt", "abc\nno newline");
            ASSERT_EQ(OpenFile(12, "last.txt", access), 0);
            std::string got;
            EXPECT_EQ(ReadRecord(12, &got, 2), 0);
            EXPECT_EQ(got, "ab");
            EXPECT_EQ(ReadRecord(12, &got, count), 0) << access << " " << count;
            EXPECT_EQ(got, std::string("no newline").substr(0, static_cast<size_t>(count)));
            EXPECT_EQ(ReadRecord(12, &got, 2), -1) << access << " " << count;
            Close(12);
            // The same after a non-advancing READ took the first bytes of that record.
            ASSERT_EQ(OpenFile(12, "last.txt", access), 0);
            EXPECT_EQ(ReadRecord(12, &got, 2), 0);
            int32_t iostat = -1;
            Statement part(12, ListRead, nullptr, VRN_OPTION_NONADVANCING, &iostat);
            EXPECT_EQ(part.Read(3), "no ");
            part.End();
            EXPECT_EQ(iostat, 0);
            EXPECT_EQ(ReadRecord(12, &got, count), 0) << access << " " << count;
            EXPECT_EQ(got, std::string("newline").substr(0, static_cast<size_t>(count)));
            EXPECT_EQ(ReadRecord(12, &got, 2), -1) << access << " " << count;
            Close(12);
        }
    }
}

}  // namespace
}  // namespace vrntest
