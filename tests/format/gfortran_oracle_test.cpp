// Formatted output beside gfortran's, on tens of thousands of random values and edit
// descriptors where the two follow the same rules of the standard. The few places where
// this library deliberately differs are left out of the comparison, each for its reason.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/fortran.h"
#include "vrn90.h"

namespace {

struct Case {
    std::string format;
    char letter;  // I, J, R, S, L as the oracle reads them
    int64_t bits;
};

std::string Pick(std::mt19937_64& random, std::initializer_list<const char*> names) {
    std::uniform_int_distribution<size_t> index(0, names.size() - 1);
    return names.begin()[index(random)];
}

int Between(std::mt19937_64& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

// A value with a random number of significant digits and a random decade.
double RandomReal(std::mt19937_64& random) {
    double mantissa = std::uniform_real_distribution<double>(1.0, 10.0)(random);
    int digits = Between(random, 1, 17);
    mantissa = std::round(mantissa * std::pow(10.0, digits - 1)) / std::pow(10.0, digits - 1);
    double value = mantissa * std::pow(10.0, Between(random, -12, 14));
    if (Between(random, 0, 3) == 0) value = std::uniform_real_distribution<double>(-1e6, 1e6)(random);
    return Between(random, 0, 1) ? -value : value;
}

Case RandomCase(std::mt19937_64& random) {
    char text[80];
    int family = Between(random, 0, 9);
    if (family <= 2) {
        int64_t value = static_cast<int32_t>(random()) >> Between(random, 0, 31);
        std::string name = Pick(random, {"I", "I", "B", "O", "Z"});
        int w = Between(random, 0, 34);
        if (w != 0 && Between(random, 0, 2) == 0) {
            std::snprintf(text, sizeof text, "(%s%d.%d,'|')", name.c_str(), w, Between(random, 0, w));
        } else {
            std::snprintf(text, sizeof text, "(%s%d,'|')", name.c_str(), w);
        }
        if (name == "I" && Between(random, 0, 3) == 0) return {text, 'J', static_cast<int64_t>(random()) >> Between(random, 0, 63)};
        return {text, 'I', value};
    }
    if (family == 3) {
        std::snprintf(text, sizeof text, "(L%d,'|')", Between(random, 1, 5));
        return {text, 'L', Between(random, 0, 1)};
    }
    double value = RandomReal(random);
    bool single = Between(random, 0, 4) == 0;
    int d = Between(random, 0, single ? 8 : 15);
    std::string name = Pick(random, {"F", "E", "ES", "EN", "G"});
    // G with d of 0 is a processor's choice, and E with d of 0 and no scale factor an error.
    if ((name == "G" || name == "E") && d == 0) d = 1;
    int w = Between(random, d + 1, d + 12);
    if (name == "F" && Between(random, 0, 5) == 0) w = 0;
    if (name != "F" && Between(random, 0, 2) == 0) {
        std::snprintf(text, sizeof text, "(%s%d.%dE%d,'|')", name.c_str(), w, d, Between(random, 1, 4));
    } else {
        std::snprintf(text, sizeof text, "(%s%d.%d,'|')", name.c_str(), w, d);
    }
    if (single) {
        float narrow = static_cast<float>(value);
        int32_t bits;
        std::memcpy(&bits, &narrow, sizeof bits);
        return {text, 'S', bits};
    }
    int64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return {text, 'R', bits};
}

std::string Ours(const Case& c) {
    return vrntest::Formatted(c.format, [&](vrntest::FormatWriter& w) {
        switch (c.letter) {
        case 'I': w.Integer(c.bits, 4); break;
        case 'J': w.Integer(c.bits, 8); break;
        case 'L': w.Logical(c.bits); break;
        case 'S': {
            float value;
            int32_t bits = static_cast<int32_t>(c.bits);
            std::memcpy(&value, &bits, sizeof value);
            w.Item(value);
            break;
        }
        default: {
            double value;
            std::memcpy(&value, &c.bits, sizeof value);
            w.Item(value);
            break;
        }
        }
    });
}

// gfortran writes "-0.00" for a negative value that rounds to zero, or asterisks where
// the sign does not fit; this library writes the sign of such a zero only under the
// negative-zero option, as its rules say.
bool NegativeRoundedToZero(const Case& c, const std::string& ours) {
    if ((c.letter != 'R' && c.letter != 'S') || c.bits >= 0 || (c.letter == 'S' && static_cast<int32_t>(c.bits) >= 0)) {
        return false;
    }
    std::string field = ours.substr(ours.find_first_not_of(' '));
    if (field[0] == '-' || field[0] == '+') return false;  // its sign shows: not a rounded zero
    std::string mantissa = field.substr(0, field.find_first_of("EDQ+-|"));
    return mantissa.find_first_of("123456789*") == std::string::npos;
}

class GfortranOracle : public vrntest::RuntimeTest {};

TEST_F(GfortranOracle, FormattedOutputMatches) {
    std::mt19937_64 random(20261122);
    std::vector<Case> cases;
    for (int i = 0; i < 40000; ++i) cases.push_back(RandomCase(random));
    std::string input = std::string(std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "/tmp") +
                        "/oracle_cases.txt";
    {
        std::ofstream out(input);
        for (const Case& c : cases) out << c.format << "\n" << c.letter << " " << c.bits << "\n";
    }
    std::string command = std::string(VRN_ORACLE_WRITER) + " < " + input;
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string output;
    char chunk[65536];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, pipe)) > 0) output.append(chunk, got);
    ASSERT_EQ(pclose(pipe), 0);
    std::istringstream lines(output);
    int compared = 0, skipped = 0, mismatches = 0;
    for (const Case& c : cases) {
        std::string theirs;
        ASSERT_TRUE(std::getline(lines, theirs)) << "the oracle stopped early";
        theirs = theirs.substr(0, theirs.find_last_not_of(' ') + 1) + "\n";
        std::string ours = Ours(c);
        if (ours == theirs) {
            ++compared;
            continue;
        }
        if (NegativeRoundedToZero(c, ours)) {
            ++skipped;
            continue;
        }
        if (++mismatches <= 20) ADD_FAILURE() << c.format << " " << c.letter << " " << c.bits << "\n ours: " << ours << " gfortran: " << theirs;
    }
    EXPECT_EQ(mismatches, 0);
    EXPECT_GT(compared, 38000) << skipped << " skipped";
}

}  // namespace
