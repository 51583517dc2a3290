#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>

#include "core/keywords.h"
#include "vrn90.h"

namespace {

struct Row {
    uint32_t number;
    const char* name;
    uint32_t flags;
};

constexpr Row kRows[] = {
#define VRN_ROW(number, identifier, name, flags) {number, name, flags},
    VRN_KEYWORD_TABLE(VRN_ROW)
#undef VRN_ROW
};

uint32_t Find(const std::string& text) { return _vrnFindIOKeyword(text.data(), static_cast<int32_t>(text.size())); }

TEST(Keywords, EveryNameMatchesInAnyCaseWithTrailingBlanks) {
    ASSERT_EQ(std::size(kRows), 149u);
    for (const Row& row : kRows) {
        std::string upper = row.name;
        std::string lower = upper;
        std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
        std::string mixed = upper;
        for (size_t i = 0; i < mixed.size(); i += 2) mixed[i] = static_cast<char>(std::tolower(mixed[i]));
        uint32_t expected = row.flags | row.number;
        EXPECT_EQ(Find(upper), expected) << upper;
        EXPECT_EQ(Find(lower), expected) << lower;
        EXPECT_EQ(Find(mixed + "   "), expected) << mixed;
        EXPECT_EQ(_vrnfindiokeyword(lower.data(), static_cast<int32_t>(lower.size())), expected) << lower;
        EXPECT_EQ(_RTE_key_info[row.number].length, upper.size());
        EXPECT_STREQ(_RTE_key_info[row.number].name, row.name);
    }
}

TEST(Keywords, OnlyCompleteNamesMatch) {
    EXPECT_EQ(Find("ACC"), 0u);               // no abbreviations
    EXPECT_EQ(Find("ACCESSX"), 0u);
    EXPECT_EQ(Find(" ACCESS"), 0u);           // leading blanks do not match
    EXPECT_EQ(Find("ACC ESS"), 0u);           // nor embedded ones
    EXPECT_EQ(Find("READ WRITE"), 0u);
    EXPECT_EQ(Find(""), 0u);
    EXPECT_EQ(Find("<unknown keyword>"), 0u); // row 0 cannot be matched
    EXPECT_EQ(Find("YES  "), VRN_KEYWORD_VALUE | VRN_KEYWORD_OPTION_VALUE | VRN_KEY_YES);
    // A NUL ends the text, whatever follows it.
    EXPECT_EQ(_vrnFindIOKeyword("NO\0XYZ", 6), _vrnFindIOKeyword("NO", 2));
    EXPECT_EQ(_vrnFindIOKeyword("UNIT  \0 x", 9) & 0xFFFFu, VRN_KEY_UNIT);
    EXPECT_EQ(_vrnFindIOKeyword(nullptr, 4), 0u);
    EXPECT_EQ(_vrnFindIOKeyword("UNIT", -1), 0u);
}

TEST(Keywords, FlagsSayWhatAWordIs) {
    EXPECT_TRUE(Find("ACCESS") & VRN_KEYWORD_SPECIFIER);
    EXPECT_TRUE(Find("ACCESS") & VRN_KEYWORD_IN_OPEN);
    EXPECT_TRUE(Find("STATUS") & VRN_KEYWORD_IN_CLOSE);
    EXPECT_TRUE(Find("ADVANCE") & VRN_KEYWORD_IN_TRANSFER);
    EXPECT_TRUE(Find("APPEND") & VRN_KEYWORD_VALUE);
    EXPECT_TRUE(Find("LANGLVL") & VRN_KEYWORD_OPTION);
    EXPECT_TRUE(Find("2003std") & VRN_KEYWORD_OPTION_VALUE);
    EXPECT_FALSE(Find("UNIT") & VRN_KEYWORD_OPTION);
    for (const Row& row : kRows) EXPECT_EQ(row.flags & 0xFFFFu, 0u) << row.name;  // upper 16 bits only
}

TEST(Keywords, TrieHoldsEveryNameOnceInAscendingOrder) {
    // Walk the trie: every node's pairs ascend, and the terminating pairs name every
    // keyword exactly once.
    std::vector<int> seen(kKeywordRows, 0);
    std::vector<uint32_t> stack{0};
    size_t words = 0;
    while (!stack.empty()) {
        uint32_t node = stack.back();
        stack.pop_back();
        uint32_t pairs = _RTE_key_trie[node];
        words += 1 + 2 * pairs;
        for (uint32_t p = 0; p < pairs; ++p) {
            uint16_t character = _RTE_key_trie[node + 1 + 2 * p];
            uint16_t target = _RTE_key_trie[node + 2 + 2 * p];
            if (p > 0) EXPECT_LT(_RTE_key_trie[node - 1 + 2 * p], character);
            if (character == 0) {
                ASSERT_LT(target, kKeywordRows);
                seen[target]++;
            } else {
                EXPECT_FALSE(character >= 'A' && character <= 'Z');
                stack.push_back(target);
            }
        }
    }
    EXPECT_EQ(words, static_cast<size_t>(kKeyTrieWords));
    EXPECT_EQ(seen[0], 0);
    for (int k = 1; k < kKeywordRows; ++k) EXPECT_EQ(seen[k], 1) << k;
}

}  // namespace
