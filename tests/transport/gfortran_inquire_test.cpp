// INQUIRE beside a gfortran-compiled program: the same units and files set up by both,
// and the answers that the standard fixes printed line by line in the program's form.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "tests/support/fortran.h"
#include "tests/transport/inquire_answers.h"

namespace vrntest {
namespace {

std::string RunProbe(const std::string& directory) {
    return ProgramOutput(std::string(VRN_INQUIRE_PROBE) + " " + directory);
}

// Fortran's L2, I4 and I6 and the rest of a line.
std::string L(bool value) { return value ? " T" : " F"; }
std::string I(int64_t value, int width) {
    char text[32];
    std::snprintf(text, sizeof text, "%*lld", width, static_cast<long long>(value));
    return text;
}

void OpenUnit(int32_t unit, const std::string& path, std::initializer_list<std::pair<uint32_t, uint32_t>> modes,
              int32_t recl = 0) {
    Specifiers s;
    if (!path.empty()) s.Text(VRN_KEY_FILE, path);
    for (auto [tag, value] : modes) s.Keyword(tag, value);
    if (recl > 0) s.Value(VRN_KEY_RECL, static_cast<uintptr_t>(recl));
    ASSERT_EQ(Open(unit, s), 0);
}

class GfortranInquire : public RuntimeTest {
protected:
    TempDir ours, theirs;
};

TEST_F(GfortranInquire, AnswersTheStandardFixesAreGfortrans) {
    std::string d = ours.path();
    std::string out;
    OpenUnit(10, d + "/seq", {{VRN_KEY_STATUS, VRN_KEY_REPLACE}, {VRN_KEY_DELIM, VRN_KEY_QUOTE}, {VRN_KEY_SIGN, VRN_KEY_PLUS}});
    FormatWriter(10, "(A)").Item("hello").End();
    Answers a = ByUnit(10);
    out += "unit10" + L(a.logical[VRN_KEY_EXIST]) + L(a.logical[VRN_KEY_OPENED]) + I(a.integer[VRN_KEY_NUMBER], 4) +
           L(a.logical[VRN_KEY_NAMED]);
    for (uint32_t k : {VRN_KEY_ACCESS, VRN_KEY_FORM, VRN_KEY_BLANK, VRN_KEY_DELIM, VRN_KEY_PAD, VRN_KEY_SIGN,
                       VRN_KEY_DECIMAL, VRN_KEY_ROUND, VRN_KEY_ASYNCHRONOUS}) {
        out += " " + a[k];
    }
    a = ByFile(d + "/seq");
    out += "\nseq" + L(a.logical[VRN_KEY_EXIST]) + L(a.logical[VRN_KEY_OPENED]) + I(a.integer[VRN_KEY_NUMBER], 4) +
           " " + a[VRN_KEY_ACCESS] + " " + a[VRN_KEY_FORM] + "\n";

    OpenUnit(11, d + "/dir",
             {{VRN_KEY_ACCESS, VRN_KEY_DIRECT}, {VRN_KEY_FORM, VRN_KEY_UNFORMATTED}, {VRN_KEY_STATUS, VRN_KEY_REPLACE},
              {VRN_KEY_ACTION, VRN_KEY_WRITE}},
             8);
    Unformatted(11, DirectUfmtWrite, nullptr, 0, nullptr, 3).Item(1).Item(2).End();
    a = ByUnit(11);
    out += "unit11 " + a[VRN_KEY_ACCESS] + " " + a[VRN_KEY_FORM] + I(a.integer[VRN_KEY_RECL], 4) +
           I(a.integer[VRN_KEY_NEXTREC], 4) + I(a.integer[VRN_KEY_SIZE], 6) + " " + a[VRN_KEY_ACTION] + "\n";

    OpenUnit(12, d + "/str",
             {{VRN_KEY_ACCESS, VRN_KEY_STREAM}, {VRN_KEY_FORM, VRN_KEY_UNFORMATTED}, {VRN_KEY_STATUS, VRN_KEY_REPLACE}});
    Unformatted(12, UfmtWrite).Item(7).Text("abcdef").End();
    a = ByUnit(12, true);
    out += "unit12 " + a[VRN_KEY_ACCESS] + I(a.integer[VRN_KEY_POS], 6) + I(a.integer[VRN_KEY_SIZE], 6) + "\n";

    OpenUnit(13, d + "/closed",
             {{VRN_KEY_STATUS, VRN_KEY_REPLACE}, {VRN_KEY_FORM, VRN_KEY_UNFORMATTED}, {VRN_KEY_ACCESS, VRN_KEY_STREAM}});
    Unformatted(13, UfmtWrite).Text("twelve bytes").End();
    Close(13);
    a = ByFile(d + "/closed");
    out += "closed" + L(a.logical[VRN_KEY_EXIST]) + L(a.logical[VRN_KEY_OPENED]) + I(a.integer[VRN_KEY_NUMBER], 4) +
           I(a.integer[VRN_KEY_SIZE], 6) + "\n";
    a = ByUnit(13);
    out += "unit13" + L(a.logical[VRN_KEY_EXIST]) + L(a.logical[VRN_KEY_OPENED]) + "\n";
    a = ByFile(d + "/absent");
    out += "absent" + L(a.logical[VRN_KEY_EXIST]) + L(a.logical[VRN_KEY_OPENED]) + "\n";

    OpenUnit(14, d + "/one", {{VRN_KEY_STATUS, VRN_KEY_REPLACE}});
    ASSERT_EQ(link((d + "/one").c_str(), (d + "/hard").c_str()), 0);
    ASSERT_EQ(symlink((d + "/one").c_str(), (d + "/soft").c_str()), 0);
    for (const char* name : {"hard", "soft"}) {
        a = ByFile(d + "/" + name);
        out += name + L(a.logical[VRN_KEY_OPENED]) + I(a.integer[VRN_KEY_NUMBER], 4) + "\n";
    }

    a = ByUnit(6);
    out += "unit6" + L(a.logical[VRN_KEY_OPENED]) + I(a.integer[VRN_KEY_NUMBER], 4) + " " + a[VRN_KEY_ACCESS] + " " +
           a[VRN_KEY_FORM] + "\n";
    OpenUnit(15, "", {{VRN_KEY_STATUS, VRN_KEY_SCRATCH}, {VRN_KEY_FORM, VRN_KEY_UNFORMATTED}});
    a = ByUnit(15);
    out += "scratch" + L(a.logical[VRN_KEY_OPENED]) + " " + a[VRN_KEY_FORM] + "\n";

    // 1_4, 2.5d0, 'characters', z, big(5), .true., 1_1
    int64_t length = IOLength([](LocalContext* c) {
        int32_t four = 4, eight = 8, one = 1, ten = 10, sixteen = 16, forty = 40;
        int32_t i4 = 1, flag = 1;
        double r8 = 2.5, z[2] = {};
        int64_t big[5] = {};
        int8_t i1 = 1;
        _vrnWriteUfmt(c, &i4, &four, &four, 0);
        _vrnWriteUfmt(c, &r8, &eight, &eight, 4);
        _vrnWriteUfmt(c, "characters", &ten, &one, 2);
        _vrnWriteUfmt(c, z, &sixteen, &eight, 5);
        _vrnWriteUfmt(c, big, &forty, &eight, VRN_UFMT_RUN);
        _vrnWriteUfmt(c, &flag, &four, &four, 1);
        _vrnWriteUfmt(c, &i1, &one, &one, 0);
    });
    out += "iolength" + I(length, 6) + "\n";
    for (int32_t unit = 10; unit <= 15; ++unit) Close(unit);

    EXPECT_EQ(out, RunProbe(theirs.path()));
}

}  // namespace
}  // namespace vrntest
