// Unformatted sequential files exchanged with a gfortran-compiled program: the same
// records written by both are the same bytes, and each side reads the other's file, in
// the machine's order and swapped (a listed unit here, CONVERT='SWAP' there).
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/fortran.h"

namespace vrntest {
namespace {

std::string RunPeer(const std::string& arguments) {
    return ProgramOutput(std::string(VRN_INTERCHANGE_PROGRAM) + " " + arguments);
}

class GfortranInterchange : public RuntimeTest {
protected:
    TempDir dir;

    void OpenUnit(int32_t unit, const std::string& path) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, path).Keyword(VRN_KEY_FORM, VRN_KEY_UNFORMATTED);
        ASSERT_EQ(Open(unit, s), 0);
    }

    // The records the peer writes, through the item calls the compiler would make.
    void WriteRecords(int32_t unit) {
        std::vector<double> a(1000);
        for (int i = 0; i < 1000; ++i) a[i] = (i + 1) * 0.5;
        double z[2] = {1.5, -2.5};
        int64_t i8 = -9;
        int16_t i2 = 3;
        int32_t flag = 1;
        float r4 = 1.25f;
        Unformatted(unit, UfmtWrite, nullptr, 0, nullptr, 0, 15).Item(7).Item(2.5).Text("XYZ").End();
        Unformatted(unit, UfmtWrite, nullptr, 0, nullptr, 0, 8000).Raw(a.data(), 8000, 8, 4 | VRN_UFMT_RUN).End();
        Unformatted(unit, UfmtWrite)
            .Raw(z, 16, 8, 5)
            .Raw(&i8, 8, 8, 0)
            .Raw(&i2, 2, 2, 0)
            .Raw(&flag, 4, 4, 1)
            .End();
        Unformatted(unit, UfmtWrite).End();
        Unformatted(unit, UfmtWrite).Raw(&r4, 4, 4, 4).End();
    }

    void ReadRecords(int32_t unit) {
        int32_t i4 = 0, flag = 0, iostat = 0;
        double r8 = 0, z[2] = {};
        char text[3] = {};
        std::vector<double> a(1000);
        int64_t i8 = 0;
        int16_t i2 = 0;
        float r4 = 0;
        Unformatted(unit, UfmtRead).Into(&i4).Into(&r8).Into(text, 3, 1, 2).End();
        Unformatted(unit, UfmtRead).Into(a.data(), 8000, 8, 4 | VRN_UFMT_RUN).End();
        Unformatted(unit, UfmtRead).Into(z, 16, 8, 5).Into(&i8, 8, 8, 0).Into(&i2, 2, 2, 0).Into(&flag, 4, 4, 1).End();
        Unformatted(unit, UfmtRead).End();
        Unformatted(unit, UfmtRead, nullptr, 0, &iostat).Into(&r4, 4, 4, 4).End();
        EXPECT_EQ(iostat, 0);
        EXPECT_EQ(i4, 7);
        EXPECT_EQ(r8, 2.5);
        EXPECT_EQ(std::string(text, 3), "XYZ");
        EXPECT_EQ(a[999], 500.0);
        EXPECT_EQ(z[0], 1.5);
        EXPECT_EQ(z[1], -2.5);
        EXPECT_EQ(i8, -9);
        EXPECT_EQ(i2, 3);
        EXPECT_EQ(flag, 1);
        EXPECT_EQ(r4, 1.25f);
    }
};

TEST_F(GfortranInterchange, FilesAreTheSameBytesAndReadOnBothSides) {
    SetOptions("ufmt_littleendian=41");
    for (int32_t unit : {40, 41}) {
        std::string order = unit == 41 ? "SWAP" : "NATIVE";
        std::string ours = dir.Path("ours" + order), theirs = dir.Path("theirs" + order);
        OpenUnit(unit, ours);
        WriteRecords(unit);
        Close(unit);
        EXPECT_EQ(RunPeer("write " + theirs + " " + order), "") << order;
        EXPECT_EQ(ReadFile(ours), ReadFile(theirs)) << order;
        EXPECT_EQ(RunPeer("read " + ours + " " + order), "OK\n") << order;
        OpenUnit(unit, theirs);
        ReadRecords(unit);
        Close(unit);
    }
}

}  // namespace
}  // namespace vrntest
