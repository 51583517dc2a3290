// The keyword table and the trie through which text becomes a keyword number.
#pragma once

#include <array>
#include <cstdint>

#include "vrn90_keywords.h"

struct KeyInfo {
    uint32_t flags;    // upper 16 bits only
    uint32_t length;
    const char* name;  // upper case
};

constexpr int kKeywordRows = VRN_KEYWORD_COUNT;
constexpr int kKeyTrieWords = 2540;

extern const KeyInfo _RTE_key_info[kKeywordRows];
extern const std::array<uint16_t, kKeyTrieWords> _RTE_key_trie;

// The keyword number of a character specifier value: a = 0 means the compiler sent the
// number in b; otherwise the text at a with length b goes through the trie. 0 for none.
uint32_t KeywordOfValue(uintptr_t a, uint32_t b);

struct KeywordEntry;
constexpr int kMaxValueText = 255;
// The text of a specifier value for a message: at most 255 characters, trailing blanks and
// NULs removed; a value the compiler sent as a number gives its keyword's name.
void KeywordValueText(const KeywordEntry& entry, char (&out)[kMaxValueText + 1]);

// A LOGICAL variable of a specifier: 1, 2, 4 or 8 bytes (any other size is 4); true is 1.
void StoreLogicalSpecifier(void* variable, uint32_t size, bool value);
