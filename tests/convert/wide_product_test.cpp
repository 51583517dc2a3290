// Decimal to binary through the wide product, held against independent results: the C
// library's strtod in round-to-nearest on 17-digit texts of random doubles, and the exact
// road (double-double and big-integer comparison, itself checked against big integers by
// the hard-case tests) in every ROUND= mode and both widths.
#include <gtest/gtest.h>

#include <atomic>
#include <cfenv>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "convert/convert.h"

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || !defined(NDEBUG) || UINTPTR_MAX == 0xFFFFFFFFu
constexpr int64_t kDefaultTexts = 300000;
#else
constexpr int64_t kDefaultTexts = 100000000;
#endif

// VRN_PROPERTY_TEXTS overrides the number of random texts.
int64_t TextCount() {
    const char* given = std::getenv("VRN_PROPERTY_TEXTS");
    return given != nullptr ? std::strtoll(given, nullptr, 10) : kDefaultTexts;
}

const int kModes[] = {kRoundNearest, kRoundCompatible, kRoundZero, kRoundUp, kRoundDown, kRoundProcessorDefined};

template <typename T>
uint64_t BitsOf(T x) {
    if constexpr (sizeof(T) == 4) {
        uint32_t bits;
        std::memcpy(&bits, &x, 4);
        return bits;
    } else {
        uint64_t bits;
        std::memcpy(&bits, &x, 8);
        return bits;
    }
}

// Runs `check(random, failures)` for `count` cases split over two threads; each thread
// stops reporting after a few failures.
template <typename Check>
int RunSplit(int64_t count, uint64_t seed, Check check) {
    std::atomic<int> failures{0};
    auto worker = [&](int part) {
        std::mt19937_64 random(seed + static_cast<uint64_t>(part));
        for (int64_t i = part; i < count && failures < 20; i += 2) check(random, failures);
    };
    std::thread other(worker, 1);
    worker(0);
    other.join();
    return failures;
}

TEST(WideProduct, SeventeenDigitTextsOfRandomDoublesMatchStrtodAndTheExactRoad) {
    int failures = RunSplit(TextCount(), 17, [](std::mt19937_64& random, std::atomic<int>& failed) {
        double value;
        do {
            uint64_t bits = random();
            std::memcpy(&value, &bits, 8);
        } while (!std::isfinite(value));
        char text[40];
        *std::to_chars(text, text + sizeof text - 1, value, std::chars_format::scientific, 16).ptr = 0;
        double ours = ubx_atof(text, kRoundNearest);
        double theirs = std::strtod(text, nullptr);
        if (BitsOf(ours) != BitsOf(theirs)) {
            ++failed;
            ADD_FAILURE() << text << " nearest: " << std::hexfloat << ours << " strtod " << theirs;
        }
        // The directed modes and COMPATIBLE on every fourth text: the exact road is slow.
        if ((random() & 3) != 0) return;
        for (int mode : {kRoundCompatible, kRoundZero, kRoundUp, kRoundDown}) {
            double fast = ubx_atof(text, mode);
            double exact = ExactRoadAtof(text, mode);
            if (BitsOf(fast) != BitsOf(exact)) {
                ++failed;
                ADD_FAILURE() << text << " key " << mode << ": " << std::hexfloat << fast << " exact road " << exact;
            }
        }
    });
    EXPECT_EQ(failures, 0);
}

// Texts of 1 to 36 digits with the point anywhere and exponents past both ends of the
// range, so that mantissas cut at 19 digits, exact powers of five, subnormals, overflow
// and the far ends of the table all come up.
std::string RandomText(std::mt19937_64& random) {
    int digits = 1 + static_cast<int>(random() % 36);
    std::string text = random() % 2 ? "-" : "";
    int point = static_cast<int>(random() % static_cast<uint64_t>(digits + 1));
    for (int i = 0; i < digits; ++i) {
        if (i == point) text += '.';
        // Runs of zeros and nines now and then: trailing zeros, carries into the next digit.
        uint64_t pick = random() % 16;
        text += static_cast<char>(pick < 3 ? '0' : pick < 6 ? '9' : '0' + static_cast<int>(random() % 10));
    }
    int exponent = static_cast<int>(random() % 760) - 380;
    return text + "e" + std::to_string(exponent);
}

TEST(WideProduct, RandomTextsAgreeWithTheExactRoadInEveryModeAndWidth) {
    int failures = RunSplit(TextCount() / 20, 29, [](std::mt19937_64& random, std::atomic<int>& failed) {
        std::string text = RandomText(random);
        for (int mode : kModes) {
            double fast = ubx_atof(text.c_str(), mode);
            double exact = ExactRoadAtof(text.c_str(), mode);
            float fastSingle = ubx_strtof(text.c_str(), nullptr, mode);
            float exactSingle = ExactRoadStrtof(text.c_str(), mode);
            if (BitsOf(fast) != BitsOf(exact) || BitsOf(fastSingle) != BitsOf(exactSingle)) {
                ++failed;
                ADD_FAILURE() << text << " key " << mode << ": " << std::hexfloat << fast << " / " << exact << ", "
                              << fastSingle << " / " << exactSingle;
            }
        }
    });
    EXPECT_EQ(failures, 0);
}

// Where the product changes its rule: the last exact power of five and the first
// truncated one, the table's ends, 19 and 20 significant digits, halfway cases cut after
// 19 digits, the smallest subnormal's half and the largest finite value.
TEST(WideProduct, TheEdgesOfTheProductAgreeWithTheExactRoad) {
    const char* texts[] = {
        "9007199254740993e55", "9007199254740993e56", "9007199254740993e54", "1e55", "1e56", "3e-342", "3e-343",
        "1e308", "1.7976931348623157e308", "1.7976931348623158e308", "1.7976931348623159e308",
        "2.4703282292062327e-324", "2.4703282292062328e-324", "2.47032822920623272e-324", "4.9406564584124654e-324",
        "9999999999999999999", "99999999999999999999", "18446744073709551615", "18446744073709551616",
        "9007199254740992.5", "9007199254740993.0000000001", "9007199254740992.4999999999999",
        "0.1000000000000000055511151231257827", "0.10000000000000000555111512312578270211815834045410156250001",
        "1.00000000000000011102230246251565404", "1.000000000000000111022302462515654042363166809082031249",
        "16777216.5", "16777217.0000000000000000000001", "3.4028235677973366e38", "1.40129846432481707e-45",
        "7.00649232162408535e-46", "123456789012345678901234567890e-300", "0.000000000000000000000000000001e-290"};
    for (const char* text : texts) {
        for (int mode : kModes) {
            EXPECT_EQ(BitsOf(ubx_atof(text, mode)), BitsOf(ExactRoadAtof(text, mode))) << text << " key " << mode;
            EXPECT_EQ(BitsOf(ubx_strtof(text, nullptr, mode)), BitsOf(ExactRoadStrtof(text, mode)))
                << text << " key " << mode;
        }
    }
}

// PROCESSOR_DEFINED follows the caller's mode, which the conversion gives back.
TEST(WideProduct, ProcessorDefinedFollowsTheCallersMode) {
    struct {
        int mode;
        int key;
    } pairs[] = {{FE_UPWARD, kRoundUp}, {FE_DOWNWARD, kRoundDown}, {FE_TOWARDZERO, kRoundZero},
                 {FE_TONEAREST, kRoundNearest}};
    for (auto& p : pairs) {
        ASSERT_EQ(std::fesetround(p.mode), 0);
        for (const char* text : {"0.1", "-0.1", "1e23", "-2.5e-320", "1.0000000000000000000001"}) {
            double got = ubx_atof(text, kRoundProcessorDefined);
            float single = ubx_strtof(text, nullptr, kRoundProcessorDefined);
            EXPECT_EQ(std::fegetround(), p.mode);
            std::fesetround(FE_TONEAREST);
            EXPECT_EQ(BitsOf(got), BitsOf(ubx_atof(text, p.key))) << text;
            EXPECT_EQ(BitsOf(single), BitsOf(ubx_strtof(text, nullptr, p.key))) << text;
            std::fesetround(p.mode);
        }
        std::fesetround(FE_TONEAREST);
    }
}

}  // namespace
