// Unformatted files byte for byte: sequential records with their length tags, direct
// records of RECL bytes, stream bytes; the swapped order of listed units; and the reports
// of short, overrun and damaged records.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <vector>

#include "tests/support/fortran.h"

namespace vrntest {
namespace {

constexpr bool kBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;

template <class T>
std::string Native(T value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

// The bytes of a value as the big-endian target holds it.
template <class T>
std::string Big(T value) {
    std::string bytes = Native(value);
    if (!kBigEndian) std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

std::string Record(const std::string& payload) {
    int32_t length = static_cast<int32_t>(payload.size());
    return Native(length) + payload + Native(length);
}

class UnformattedFiles : public RuntimeTest {
protected:
    TempDir dir;

    void OpenFile(int32_t unit, const char* name, uint32_t access = VRN_KEY_SEQUENTIAL, int32_t recl = 0) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, dir.Path(name)).Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED).Keyword(VRN_KEY_ACCESS, access);
        if (recl > 0) s.Value(VRN_KEY_RECL, static_cast<uintptr_t>(recl));
        ASSERT_EQ(Open(unit, s), 0);
    }
    void Put(const char* name, const std::string& bytes) {
        std::ofstream(dir.Path(name), std::ios::binary) << bytes;
    }
    std::string File(const char* name) { return ReadFile(dir.Path(name)); }
};

TEST_F(UnformattedFiles, SequentialRecordsAreTaggedWhateverTheCompilerKnew) {
    OpenFile(10, "seq");
    Unformatted(10, UfmtWrite).Item(7).Item(2.5).Text("AB").End();
    Unformatted(10, UfmtWrite, nullptr, 0, nullptr, 0, 4).Item(9).End();   // the length was known
    Unformatted(10, UfmtWrite, nullptr, 0, nullptr, 0, 12).Item(1).End();  // and wrongly so
    Unformatted(10, UfmtWrite).End();
    // Longer than the unit's buffer: the tag is put right by going back in the file.
    std::vector<double> big(40000);
    for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<double>(i) / 3;
    Unformatted(10, UfmtWrite).Raw(big.data(), 320000, 8, 4 | VRN_UFMT_RUN).Item(5).End();
    Close(10);

    std::string bigPayload(reinterpret_cast<const char*>(big.data()), 320000);
    EXPECT_EQ(File("seq"), Record(Native(7) + Native(2.5) + "AB") + Record(Native(9)) + Record(Native(1)) + Record("") +
                               Record(bigPayload + Native(5)));

    OpenFile(10, "seq");
    int32_t i = 0, j = 0, iostat = 0;
    double x = 0;
    char text[2];
    Unformatted(10, UfmtRead).Into(&i).Into(&x).Into(text, 2, 1, 2).End();
    EXPECT_EQ(i, 7);
    EXPECT_EQ(x, 2.5);
    EXPECT_EQ(std::string(text, 2), "AB");
    Unformatted(10, UfmtRead).End();  // no items: the record is skipped
    Unformatted(10, UfmtRead).Into(&i).End();
    EXPECT_EQ(i, 1);
    Unformatted(10, UfmtRead, nullptr, 0, &iostat).Into(&j).End();  // the empty record
    EXPECT_EQ(iostat, 3);
    std::vector<double> back(40000);
    Unformatted(10, UfmtRead).Into(back.data(), 320000, 8, 4 | VRN_UFMT_RUN).Into(&j).End();
    EXPECT_EQ(back, big);
    EXPECT_EQ(j, 5);
    Unformatted(10, UfmtRead, nullptr, VRN_OPTION_END, &iostat).Into(&i).End();
    EXPECT_EQ(iostat, -1);
    Close(10);
}

TEST_F(UnformattedFiles, OverrunsAreMessageThreeUnlessNumIsGiven) {
    OpenFile(11, "over", VRN_KEY_SEQUENTIAL, 6);
    int32_t iostat = 0, num = -1;
    Unformatted(11, UfmtWrite, nullptr, 0, &iostat).Item(1).Item(2).Item(3).End();
    EXPECT_EQ(iostat, 3);
    Specifiers withNum;
    withNum.Location("u.f", 1).Address(VRN_KEY_NUM, &num);
    Unformatted(11, UfmtWrite, &withNum, 0, &iostat).Item(4).Item(5).End();
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(num, 6);
    Close(11);
    // What fitted was written, and the records stay well-formed.
    EXPECT_EQ(File("over"), Record(Native(1) + Native(2).substr(0, 2)) +
                                Record(Native(4) + Native(5).substr(0, 2)));

    OpenFile(12, "over");
    int32_t a = 0, b = 0, c = 0;
    Specifiers readNum;
    readNum.Location("u.f", 2).Address(VRN_KEY_NUM, &num);
    Unformatted(12, UfmtRead, &readNum, 0, &iostat).Into(&a).Into(&b).Into(&c).End();
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(num, 6);
    EXPECT_EQ(a, 1);
    Unformatted(12, UfmtRead, nullptr, 0, &iostat).Into(&a).Into(&b).End();
    EXPECT_EQ(iostat, 3);
    EXPECT_EQ(a, 4);
    // Under IOSTAT_END=2003STD a record shorter than the items is an end condition.
    SetOptions("iostat_end=2003std");
    FileCommand(12, VRN_COMMAND_REWIND);
    Unformatted(12, UfmtRead, nullptr, 0, &iostat).Into(&a).Into(&b).End();
    EXPECT_EQ(iostat, -1);
    Close(12);
}

// The file a big-endian machine writes unswapped, and a little-endian one writes for a unit
// listed in UFMT_LITTLEENDIAN, is the same file.
TEST_F(UnformattedFiles, SwappedFilesAreTheTargetsFilesOnEveryMachine) {
    SetOptions("ufmt_littleendian=21");
    OpenFile(20, "plain");
    OpenFile(21, "swapped");
    double real16[2] = {1.0 / 3, 1.0 / 3 * 0x1p-54};
    float complexTogether[2] = {1.5f, -2.25f};
    double complexApart[4] = {0.5, 99, -0.75, 99};  // parts 16 bytes apart
    double run[3] = {1e300, -2.5, 0x1p-1074};
    int16_t shorts[8] = {1, -2, 3, -4, 5, -6, 7, 256};
    for (int32_t unit : {20, 21}) {
        Unformatted(unit, UfmtWrite)
            .Raw("\x81", 1, 1, 3)
            .Raw(&shorts[1], 2, 2, 0)
            .Item(-123456)
            .Raw(&run[0], 8, 8, 4)
            .Raw(complexTogether, 8, 4, 5)
            .Raw(complexApart, 32, 8, 5)
            .Raw(real16, 16, 16, 4)
            .Text("XYZ")
            .Raw(shorts, 16, 2, 0 | VRN_UFMT_VECTOR)
            .Raw(run, 24, 8, 4 | VRN_UFMT_RUN)
            .End();
    }
    Close(20);
    Close(21);

    std::string target = std::string("\x81") + Big<int16_t>(-2) + Big(-123456) + Big(1e300) + Big(1.5f) + Big(-2.25f) +
                         Big(0.5) + Big(-0.75) + Big(real16[0]) + Big(real16[1]) + "XYZ";
    for (int16_t s : shorts) target += Big(s);
    for (double d : run) target += Big(d);
    std::string tag = Big(static_cast<int32_t>(target.size()));
    EXPECT_EQ(File(kBigEndian ? "plain" : "swapped"), tag + target + tag);

    // The swapped unit reads its own file back exactly.
    OpenFile(21, "swapped");
    int8_t byte = 0;
    int16_t shortBack = 0, vectorBack[8] = {};
    int32_t integer = 0;
    double real = 0, apartBack[4] = {0, 42, 0, 42}, real16Back[2] = {}, runBack[3] = {};
    float togetherBack[2] = {};
    char text[3];
    Unformatted(21, UfmtRead)
        .Into(&byte, 1, 1, 3)
        .Into(&shortBack, 2, 2, 0)
        .Into(&integer)
        .Into(&real)
        .Into(togetherBack, 8, 4, 5)
        .Into(apartBack, 32, 8, 5)
        .Into(real16Back, 16, 16, 4)
        .Into(text, 3, 1, 2)
        .Into(vectorBack, 16, 2, 0 | VRN_UFMT_VECTOR)
        .Into(runBack, 24, 8, 4 | VRN_UFMT_RUN)
        .End();
    Close(21);
    EXPECT_EQ(byte, -127);
    EXPECT_EQ(shortBack, -2);
    EXPECT_EQ(integer, -123456);
    EXPECT_EQ(real, 1e300);
    EXPECT_EQ(togetherBack[0], 1.5f);
    EXPECT_EQ(togetherBack[1], -2.25f);
    EXPECT_EQ(apartBack[0], 0.5);
    EXPECT_EQ(apartBack[1], 42);  // the storage between the parts is not touched
    EXPECT_EQ(apartBack[2], -0.75);
    EXPECT_EQ(std::memcmp(real16Back, real16, 16), 0);
    EXPECT_EQ(std::string(text, 3), "XYZ");
    EXPECT_EQ(std::memcmp(vectorBack, shorts, 16), 0);
    EXPECT_EQ(std::memcmp(runBack, run, 24), 0);
}

// Every type and kind through a plain and a swapped unit: each swapped element is the
// plain one reversed (a 16-byte one half by half), and both read back to the same bytes.
TEST_F(UnformattedFiles, EveryTypeAndKindRoundTripsInBothOrders) {
    struct Item {
        int32_t type, kind, length;
    };
    const std::vector<Item> items = {{0, 1, 1},  {0, 2, 2},  {0, 4, 4},   {0, 8, 8},  {1, 1, 1},  {1, 2, 2},
                                     {1, 4, 4},  {1, 8, 8},  {4, 4, 4},   {4, 8, 8},  {4, 16, 16}, {5, 4, 8},
                                     {5, 8, 16}, {5, 16, 32}, {3, 1, 1},  {2, 1, 5}};
    std::vector<std::vector<uint8_t>> values;
    uint32_t seed = 12345;
    for (const Item& item : items) {
        std::vector<uint8_t> bytes(static_cast<size_t>(item.length));
        for (uint8_t& b : bytes) b = static_cast<uint8_t>((seed = seed * 1103515245u + 12345u) >> 24);
        values.push_back(bytes);
    }
    SetOptions("ufmt_littleendian=25");
    OpenFile(24, "p");
    OpenFile(25, "s");
    for (int32_t unit : {24, 25}) {
        Unformatted writer(unit, UfmtWrite);
        for (size_t i = 0; i < items.size(); ++i) {
            writer.Raw(values[i].data(), items[i].length, items[i].kind, static_cast<uint32_t>(items[i].type));
        }
        writer.End();
        FileCommand(unit, VRN_COMMAND_REWIND);
        Unformatted reader(unit, UfmtRead);
        for (size_t i = 0; i < items.size(); ++i) {
            std::vector<uint8_t> back(values[i].size());
            reader.Into(back.data(), items[i].length, items[i].kind, static_cast<uint32_t>(items[i].type));
            EXPECT_EQ(back, values[i]) << "unit " << unit << " item " << i;
        }
        reader.End();
    }
    Close(24);
    Close(25);
    std::string plain = File("p"), swapped = File("s");
    ASSERT_EQ(plain.size(), swapped.size());
    size_t at = 4;
    for (const Item& item : items) {
        std::string expected = plain.substr(at, static_cast<size_t>(item.length));
        bool numeric = item.type != 2 && item.kind > 1;
        int32_t piece = std::min(item.kind, 8);
        for (int32_t from = 0; numeric && from < item.length; from += piece) {
            std::reverse(expected.begin() + from, expected.begin() + from + piece);
        }
        EXPECT_EQ(swapped.substr(at, static_cast<size_t>(item.length)), expected) << item.type << " " << item.kind;
        at += static_cast<size_t>(item.length);
    }
}

// A pipe cannot seek back to the leading tag: the record waits in the unit's buffer until
// its end, and is limited by that buffer.
TEST_F(UnformattedFiles, APipeHoldsTheRecordUntilItsEnd) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    Specifiers s;
    s.Text(VRN_KEY_FILE, "/dev/fd/" + std::to_string(ends[1])).Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED);
    ASSERT_EQ(Open(26, s), 0);
    int32_t iostat = 0;
    Unformatted(26, UfmtWrite).Item(1).Item(2.0).End();
    std::vector<char> tooLong(40000, 'x');
    Unformatted(26, UfmtWrite, nullptr, 0, &iostat).Raw(tooLong.data(), 40000, 1, 2).End();
    EXPECT_EQ(iostat, 3);
    Close(26);
    close(ends[1]);
    std::string got;
    char chunk[4096];
    for (ssize_t n; (n = read(ends[0], chunk, sizeof chunk)) > 0;) got.append(chunk, static_cast<size_t>(n));
    close(ends[0]);
    EXPECT_EQ(got.substr(0, 20), Record(Native(1) + Native(2.0)));
    EXPECT_EQ(got.size(), 20u + 8 + 32768);
    EXPECT_EQ(got.substr(20, 4), Native(32768));

    // And read back from a pipe: the largest record fits the buffer with both its tags.
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], got.data(), got.size()), static_cast<ssize_t>(got.size()));
    close(ends[1]);
    Specifiers r;
    r.Text(VRN_KEY_FILE, "/dev/fd/" + std::to_string(ends[0])).Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED);
    r.Keyword(VRN_KEY_ACTION, VRN_KEY_READ);  // READWRITE would hold a write end: no end of file
    ASSERT_EQ(Open(27, r), 0);
    int32_t one = 0;
    double two = 0;
    Unformatted(27, UfmtRead).Into(&one).Into(&two).End();
    Unformatted(27, UfmtRead, nullptr, 0, &iostat).Into(tooLong.data(), 32768, 1, 2).End();
    EXPECT_EQ(iostat, 0);
    Unformatted(27, UfmtRead, nullptr, 0, &iostat).Into(&one).End();
    EXPECT_EQ(iostat, -1);
    EXPECT_EQ(two, 2.0);
    Close(27);
    close(ends[0]);
}

TEST_F(UnformattedFiles, AVectorOfTwoDoublesSwapsOnlyItsFirstElement) {
    SetOptions("ufmt_littleendian=23");
    OpenFile(22, "v1");
    OpenFile(23, "v2");
    double pair[2] = {1.25, -8.5};
    for (int32_t unit : {22, 23}) Unformatted(unit, UfmtWrite).Raw(pair, 16, 8, 4 | VRN_UFMT_VECTOR).End();
    Close(22);
    Close(23);
    std::string swappedFirst = Native(pair[0]);
    std::reverse(swappedFirst.begin(), swappedFirst.end());
    std::string tag = Native(16);
    std::reverse(tag.begin(), tag.end());
    EXPECT_EQ(File("v1"), Record(Native(pair[0]) + Native(pair[1])));
    EXPECT_EQ(File("v2"), tag + swappedFirst + Native(pair[1]) + tag);
}

TEST_F(UnformattedFiles, DirectRecordsAreReclBytesPaddedWithBlanks) {
    OpenFile(30, "direct", VRN_KEY_DIRECT, 12);
    Unformatted(30, DirectUfmtWrite, nullptr, 0, nullptr, 2).Item(5).Text("AB").End();
    Unformatted(30, DirectUfmtWrite, nullptr, 0, nullptr, 1).Text("0123456789ab").End();
    int32_t iostat = 0, num = -1;
    Unformatted(30, DirectUfmtWrite, nullptr, 0, &iostat, 3).Text("0123456789abc").End();
    EXPECT_EQ(iostat, 3);
    Close(30);
    EXPECT_EQ(File("direct"), "0123456789ab" + Native(5) + "AB      " + "0123456789ab");

    OpenFile(30, "direct", VRN_KEY_DIRECT, 12);
    int32_t five = 0;
    char text[2];
    Unformatted(30, DirectUfmtRead, nullptr, 0, nullptr, 2).Into(&five).Into(text, 2, 1, 2).End();
    EXPECT_EQ(five, 5);
    Unformatted(30, DirectUfmtRead, nullptr, VRN_OPTION_END, &iostat, 4).Into(&five).End();
    EXPECT_EQ(iostat, -1);
    Unformatted(30, DirectUfmtRead, nullptr, 0, &iostat, 4).Into(&five).End();
    EXPECT_EQ(iostat, 1);
    Specifiers withNum;
    withNum.Location("u.f", 1).Address(VRN_KEY_NUM, &num);
    double beyond[2];
    Unformatted(30, DirectUfmtRead, &withNum, 0, &iostat, 1).Into(beyond, 16, 8, 4 | VRN_UFMT_RUN).End();
    EXPECT_EQ(iostat, 0);
    EXPECT_EQ(num, 12);
    Close(30);

    Put("cut", "01234567" "0123");  // the second record of eight bytes is cut
    OpenFile(31, "cut", VRN_KEY_DIRECT, 8);
    double item = 0;
    Unformatted(31, DirectUfmtRead, nullptr, VRN_OPTION_END, &iostat, 2).Into(&item).End();
    EXPECT_EQ(iostat, 122);
    Close(31);
}

TEST_F(UnformattedFiles, StreamFilesAreTheBytesAlone) {
    OpenFile(40, "stream", VRN_KEY_STREAM);
    Specifiers at1, at3, at9;
    at1.Location("u.f", 3).Value(VRN_KEY_POS, 1);
    at3.Location("u.f", 3).Value(VRN_KEY_POS, 3);
    at9.Location("u.f", 3).Value(VRN_KEY_POS, 9);
    Unformatted(40, StreamUfmtWrite, &at1).Item(0x41424344).Text("EF").End();
    Unformatted(40, UfmtWrite).Text("G").End();
    Unformatted(40, StreamUfmtWrite, &at3).Text("xy").End();
    Close(40);
    std::string first = Native(0x41424344);
    first.replace(2, 2, "xy");
    EXPECT_EQ(File("stream"), first + "EFG");

    OpenFile(40, "stream", VRN_KEY_STREAM);
    char text[3] = {};
    int32_t iostat = 0;
    Unformatted(40, StreamUfmtRead, &at3).Into(text, 3, 1, 2).End();
    EXPECT_EQ(std::string(text, 3), "xyE");
    double x;
    Unformatted(40, StreamUfmtRead, &at1, 0, &iostat).Into(&x).Into(&x).End();
    EXPECT_EQ(iostat, -1);
    Unformatted(40, StreamUfmtRead, &at9, 0, &iostat).Into(text, 1, 1, 2).End();
    EXPECT_EQ(iostat, -1);
    Close(40);
}

TEST_F(UnformattedFiles, BackspaceStepsOverWholeRecords) {
    OpenFile(50, "back");
    for (int32_t n = 1; n <= 3; ++n) Unformatted(50, UfmtWrite).Item(n).Item(n * 10).End();
    FileCommand(50, VRN_COMMAND_BACKSPACE);
    FileCommand(50, VRN_COMMAND_BACKSPACE);
    int32_t a = 0, b = 0, iostat = 0;
    Unformatted(50, UfmtRead).Into(&a).End();
    EXPECT_EQ(a, 2);
    Unformatted(50, UfmtRead).Into(&a).Into(&b).End();
    EXPECT_EQ(b, 30);
    // Read to the end, step back over the end of file, and add a record there.
    Unformatted(50, UfmtRead, nullptr, 0, &iostat).Into(&a).End();
    EXPECT_EQ(iostat, -1);
    FileCommand(50, VRN_COMMAND_BACKSPACE);
    Unformatted(50, UfmtWrite).Item(4).End();
    FileCommand(50, VRN_COMMAND_REWIND);
    for (int32_t n = 1; n <= 4; ++n) Unformatted(50, UfmtRead).Into(&a).End();
    EXPECT_EQ(a, 4);
    Close(50);
}

TEST_F(UnformattedFiles, DamagedRecordsAreReportedWithoutReadingPastThem) {
    auto readOne = [&](const char* name, const std::string& bytes) {
        Put(name, bytes);
        OpenFile(60, name);
        int32_t iostat = 0;
        double value[2] = {};
        Unformatted(60, UfmtRead, nullptr, 0, &iostat).Into(value, 8, 8, 4).End();
        Close(60);
        return iostat;
    };
    EXPECT_EQ(readOne("negative", Native(-5) + Native(1.0) + Native(-5)), 3);
    EXPECT_EQ(readOne("unfinished", Native(-1) + Native(1.0) + Native(8)), 3);
    EXPECT_EQ(readOne("differs", Native(8) + Native(1.0) + Native(9)), 3);
    EXPECT_EQ(readOne("nottrailing", Native(8) + Native(1.0)), 3);
    EXPECT_EQ(readOne("longer", Native(80) + Native(1.0)), 3);
    EXPECT_EQ(readOne("cutinside", Native(80) + Native(1.0).substr(0, 3)), -1);
    EXPECT_EQ(readOne("cuttag", Native(8).substr(0, 2)), -1);
    EXPECT_EQ(readOne("empty", ""), -1);

    UseCatalogue(Catalogue::Built);
    ResetRuntime();
    Put("differs2", Native(8) + Native(1.0) + Native(9));
    OpenFile(61, "differs2");
    int32_t iostat = 0;
    char message[600];
    Specifiers s;
    s.Location("u.f", 4).Address(VRN_KEY_IOMSG, message, sizeof message);
    double value = 0;
    Unformatted(61, UfmtRead, &s, 0, &iostat).Into(&value).End();
    EXPECT_EQ(value, 1.0);
    EXPECT_NE(std::string(message, sizeof message).find("3714-003"), std::string::npos);
    EXPECT_NE(std::string(message, sizeof message).find("differs2"), std::string::npos);
}

TEST_F(UnformattedFiles, AFullDiskReportsItsNumber) {
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full";
    Specifiers s;
    s.Text(VRN_KEY_FILE, "/dev/full").Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED);
    ASSERT_EQ(Open(70, s), 0);
    std::vector<char> block(100000, 'x');
    int32_t iostat = 0;
    Unformatted(70, UfmtWrite, nullptr, 0, &iostat).Raw(block.data(), 100000, 1, 2).End();
    EXPECT_EQ(iostat, 13);
    Unformatted(70, UfmtWrite, nullptr, 0, &iostat).Item(1).End();
    EXPECT_EQ(iostat, 15);  // the unit has a permanent error now
    Close(70, &iostat);
}

}  // namespace
}  // namespace vrntest
