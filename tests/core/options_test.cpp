#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "core/context.h"
#include "core/options.h"
#include "core/unit.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class Options : public RuntimeTest {
protected:
    // Starts the run-time as a program whose environment holds this VRNRTEOPTS.
    void StartWith(const char* text) {
        setenv("VRNRTEOPTS", text, 1);
        ResetRuntime();
        EnsureRuntimeStarted();
        unsetenv("VRNRTEOPTS");
    }

    std::vector<std::pair<int32_t, int32_t>> Ranges() {
        const OptionBlock& o = _GlobalContext->options;
        std::vector<std::pair<int32_t, int32_t>> ranges;
        for (uint32_t i = 0; i < o.ufmtUnitCount; ++i) ranges.emplace_back(o.ufmtUnits[i].low, o.ufmtUnits[i].high);
        return ranges;
    }
};

TEST_F(Options, DefaultsAndTheirAnswers) {
    StartWith("");
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_CNVERR), VRN_KEY_YES);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_ERRLOC), 1);  // a raw 1, not YES
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_ERRTRACE), 0);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_MULTCONN), VRN_KEY_NO);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_AGGRESSIVE_ARRAY_IO), VRN_KEY_YES);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_LANGLVL), VRN_KEY_EXTENDED);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_CPU_TIME_TYPE), VRN_KEY_TOTAL_ALLTIME);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_NANINFOUTPUT), VRN_KEY_DEFAULT);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_BUFFER_SIZE), -1);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_INTRINTHDS), 0);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_UNIT), -1);  // not an option
    EXPECT_EQ(_vrnGetRTEOpts(9999), -1);
}

TEST_F(Options, TextsInAnyCaseWithSpacesAndEmptyOptions) {
    StartWith(" :: LangLvl = 2003std :buffering=disable_all: cnverr=no:ERRLOC=NO:nlwidth=72:intrinthds = 3:"
              "buffer_size=4096:default_recl=32:random=generator2:multconnio=combined:");
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_LANGLVL), VRN_KEY_2003STD);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_BUFFERING), VRN_KEY_DISABLE_ALL);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_CNVERR), VRN_KEY_NO);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_ERRLOC), 0);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_NLWIDTH), 72);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_INTRINTHDS), 3);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_BUFFER_SIZE), 4096);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_RANDOM), VRN_KEY_GENERATOR2);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_MULTCONNIO), VRN_KEY_COMBINED);
    // Later options override earlier ones, and setrteopts changes the block at once.
    SetOptions("cnverr=yes:cnverr=no:buffer_size=-1");
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_CNVERR), VRN_KEY_NO);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_BUFFER_SIZE), -1);
    setrteopts_("errloc=yes", 10);
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_ERRLOC), 1);
    setrteopts("garbage that is never read", 0);  // a length of 0 reads nothing
}

TEST_F(Options, UnitRangesMergeOnlyWhenTheyShareANumber) {
    using Ranges = std::vector<std::pair<int32_t, int32_t>>;
    StartWith("ufmt_littleendian=1-5,9,20-");
    EXPECT_EQ(this->Ranges(), (Ranges{{1, 5}, {9, 9}, {20, 2147483647}}));
    StartWith("ufmt_littleendian=3-6,5-10");
    EXPECT_EQ(this->Ranges(), (Ranges{{3, 10}}));
    StartWith("ufmt_littleendian=3,4-10");
    EXPECT_EQ(this->Ranges(), (Ranges{{3, 3}, {4, 10}}));
    StartWith("ufmt_littleendian=,,12,,-4, 8");
    EXPECT_EQ(this->Ranges(), (Ranges{{1, 4}, {8, 8}, {12, 12}}));
    // Ranges accumulate over calls; a wide one swallows those it overlaps.
    SetOptions("ufmt_littleendian=2-9");
    EXPECT_EQ(this->Ranges(), (Ranges{{1, 9}, {12, 12}}));
    // UFMT_BIGENDIAN checks its list, drops it, and adds the empty range.
    SetOptions("ufmt_bigendian=1-3:ufmt_littleendian=40");
    EXPECT_EQ(this->Ranges(), (Ranges{{-1, -1}, {1, 9}, {12, 12}, {40, 40}}));
}

TEST_F(Options, OlderVariablesOverrideTheText) {
    setenv("cnverr", "no", 1);
    setenv("vrq_messages", "No", 1);
    StartWith("cnverr=yes:vrq_messages=yes");
    EXPECT_EQ(_GlobalContext->options.optCnvErr, 0u);
    EXPECT_EQ(_GlobalContext->options.optMessages, 0u);
    setenv("cnverr", "YES", 1);
    setenv("vrq_messages", "nope", 1);  // anything but NO means YES
    StartWith("cnverr=no:vrq_messages=no");
    EXPECT_EQ(_GlobalContext->options.optCnvErr, 1u);
    EXPECT_EQ(_GlobalContext->options.optMessages, 1u);
    unsetenv("cnverr");
    unsetenv("vrq_messages");
}

TEST_F(Options, BufferingReachesPreconnectedUnitsAtOnce) {
    TempDir dir;
    std::string path = dir.Path("out.txt");
    EXPECT_EXIT(
        {
            freopen(path.c_str(), "w", stdout);
            ResetRuntime();
            EnsureRuntimeStarted();
            bool before = LookUpUnit(_GlobalContext, 6)->unbuffered;
            SetOptions("buffering=disable_preconn");
            bool after = LookUpUnit(_GlobalContext, 6)->unbuffered;
            SetOptions("buffering=enable");  // does not reverse it
            std::_Exit(!before && after && LookUpUnit(_GlobalContext, 6)->unbuffered ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(Options, ThreadNumbersNeedAThreadLibrary) {
    CapturedRun run;
    setenv("VRNRTEOPTS", "errthrdnum=yes", 1);
    ResetRuntime();
    EnsureRuntimeStarted();
    unsetenv("VRNRTEOPTS");
    EXPECT_EQ(_vrnGetRTEOpts(VRN_KEY_ERRTHRDNUM), 0);  // stays NO
    run.Finish();
    EXPECT_EQ(run.err(), "3714-232\n");
}

struct BadText {
    const char* text;
    const char* message;
};

TEST_F(Options, EveryMalformedTextEndsTheProgramWithItsMessage) {
    const BadText cases[] = {
        {"=yes", "3714-113"},
        {"123=yes", "3714-113"},
        {",cnverr=yes", "3714-113"},
        {"cnverr", "3714-114"},
        {"cnverr yes", "3714-114"},
        {"cnverr=yes langlvl=extended", "3714-115"},
        {"cnverr=yes,", "3714-115"},
        {"nlwidth=0", "3714-116"},
        {"nlwidth=-5", "3714-116"},
        {"nlwidth=99999999999", "3714-116"},
        {"ufmt_littleendian=0", "3714-116"},
        {"bogus=1", "3714-117"},
        {"unit=1", "3714-117"},   // a specifier, not an option
        {"uwidth=64", "3714-117"},
        {"cnverr=maybe", "3714-118"},
        {"cnverr=1", "3714-118"},
        {"nlwidth=abc", "3714-118"},
        {"langlvl='2003std'", "3714-118"},
        {"langlvl='2003std", "3714-118"},  // an apostrophe that never closes
        {"default_recl=48", "3714-118"},
        {"ufmt_littleendian=5-3", "3714-118"},
        {"ufmt_littleendian=1,-", "3714-118"},
        {"ufmt_littleendian=-", "3714-118"},
        {"random=generator3", "3714-118"},
        {"buffer_size=100", "3714-237"},
        {"buffer_size=0", "3714-237"},
        {"cnverr=yes$", "3714-118"},  // a word run into a stray character
    };
    for (const BadText& bad : cases) {
        EXPECT_EXIT(
            {
                setenv("VRNRTEOPTS", bad.text, 1);
                ResetRuntime();
                EnsureRuntimeStarted();
            },
            ::testing::ExitedWithCode(1), std::string("^") + bad.message + "\n$")
            << bad.text;
    }
    // At run time the same, through setrteopts.
    EXPECT_EXIT(SetOptions("uwidth=32"), ::testing::ExitedWithCode(1), "^3714-117\n$");
}

TEST_F(Options, ABadNumberIsQuotedInItsMessage) {
    const BadText cases[] = {
        {"nlwidth=0", "the number \"0\" is not valid for NLWIDTH"},
        {"ufmt_littleendian=0", "the number \"0\" is not valid for UFMT_LITTLEENDIAN"},
        {"ufmt_bigendian=7,0", "the number \"0\" is not valid for UFMT_BIGENDIAN"},
        {"intrinthds=-3", "the number \"-3\" is not valid for INTRINTHDS"},
    };
    for (const BadText& bad : cases) {
        EXPECT_EXIT(
            {
                UseCatalogue(Catalogue::Built);
                setenv("VRNRTEOPTS", bad.text, 1);
                ResetRuntime();
                EnsureRuntimeStarted();
            },
            ::testing::ExitedWithCode(1), std::string("3714-116 .*") + bad.message)
            << bad.text;
    }
}

TEST_F(Options, FindTokenReadsTheSyntax) {
    char text[] = "ab_1 = 12 :'q x', -7 - -x 3y";  // "-x" is a dash, then a word
    struct Expected {
        int type;
        const char* token;
    } expected[] = {{1, "AB_1"}, {4, "="}, {2, "12"}, {3, ":"}, {5, "q x"}, {6, ","},
                    {2, "-7"},   {7, "-"}, {7, "-"}, {1, "X"}, {1, "3Y"}, {0, ""}};
    char* position = text;
    for (const Expected& e : expected) {
        Token token;
        position = FindToken(position, &token);
        EXPECT_EQ(token.type, e.type) << e.token;
        EXPECT_EQ(std::string(token.start, static_cast<size_t>(token.length)), e.token);
    }
}

}  // namespace
}  // namespace vrntest
