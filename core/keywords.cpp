#include "core/keywords.h"

#include <cstddef>
#include <cstring>

#include "core/export.h"
#include "vrn90.h"

#define VRN_KEY_INFO_ROW(number, identifier, text, flags) {flags, sizeof(text) - 1, text},
const KeyInfo _RTE_key_info[kKeywordRows] = {
    {0, 17, "<unknown keyword>"},
    VRN_KEYWORD_TABLE(VRN_KEY_INFO_ROW)
};
#undef VRN_KEY_INFO_ROW

namespace {

// The trie is derived from the table at compile time: every name in lower case, a node
// being a count followed by that many (character, target) pairs in ascending character
// order. The pair (0, k) ends keyword k; any other target is the word index of a node.
struct TrieBuilder {
    struct Name {
        char text[24];
        uint16_t length;
        uint16_t keyword;
    };
    Name names[kKeywordRows - 1]{};
    std::array<uint16_t, kKeyTrieWords> words{};
    int used = 0;

    static constexpr char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

    static constexpr bool Less(const Name& x, const Name& y) {
        for (int i = 0;; ++i) {
            unsigned char cx = i < x.length ? static_cast<unsigned char>(x.text[i]) : 0;
            unsigned char cy = i < y.length ? static_cast<unsigned char>(y.text[i]) : 0;
            if (cx != cy) return cx < cy;
            if (cx == 0) return false;
        }
    }

    constexpr TrieBuilder() {
        constexpr const char* kNames[] = {
#define VRN_KEY_NAME(number, identifier, text, flags) text,
            VRN_KEYWORD_TABLE(VRN_KEY_NAME)
#undef VRN_KEY_NAME
        };
        for (int k = 0; k < kKeywordRows - 1; ++k) {
            Name& name = names[k];
            name.keyword = static_cast<uint16_t>(k + 1);
            for (name.length = 0; kNames[k][name.length] != 0; ++name.length) {
                name.text[name.length] = Lower(kNames[k][name.length]);
            }
        }
        for (int i = 1; i < kKeywordRows - 1; ++i) {  // insertion sort: sorted names make siblings contiguous
            Name item = names[i];
            int j = i - 1;
            for (; j >= 0 && Less(item, names[j]); --j) names[j + 1] = names[j];
            names[j + 1] = item;
        }
        Emit(0, kKeywordRows - 1, 0);
    }

    // Emits the node for the names [begin, end), which share their first depth characters.
    constexpr int Emit(int begin, int end, int depth) {
        int node = used;
        int pairs = 0;
        for (int i = begin; i < end;) {
            int j = i + 1;
            if (names[i].length > depth) {
                while (j < end && names[j].length > depth && names[j].text[depth] == names[i].text[depth]) ++j;
            }
            ++pairs;
            i = j;
        }
        words[used++] = static_cast<uint16_t>(pairs);
        int pair = used;
        used += 2 * pairs;
        for (int i = begin; i < end; pair += 2) {
            if (names[i].length == depth) {  // sorts first: the terminating pair has character 0
                words[pair] = 0;
                words[pair + 1] = names[i].keyword;
                ++i;
                continue;
            }
            int j = i + 1;
            while (j < end && names[j].length > depth && names[j].text[depth] == names[i].text[depth]) ++j;
            words[pair] = static_cast<unsigned char>(names[i].text[depth]);
            words[pair + 1] = static_cast<uint16_t>(Emit(i, j, depth + 1));
            i = j;
        }
        return node;
    }
};

constexpr TrieBuilder kTrie{};
static_assert(kTrie.used == kKeyTrieWords, "the keyword trie must fill its 2,540 words exactly");

bool RestIsBlank(const char* text, int32_t from, int32_t length) {
    for (int32_t i = from; i < length && text[i] != 0; ++i) {
        if (text[i] != ' ') return false;
    }
    return true;
}

}  // namespace

const std::array<uint16_t, kKeyTrieWords> _RTE_key_trie = kTrie.words;

VRN_EXPORT uint32_t _vrnFindIOKeyword(const char* text, int32_t length) {
    if (text == nullptr) length = 0;
    uint32_t node = 0;
    for (int32_t i = 0;; ++i) {
        char c = i < length ? text[i] : 0;
        if (c == 0 || c == ' ') {
            // A name ends here; trailing blanks are allowed, an embedded blank is not.
            if (c == ' ' && !RestIsBlank(text, i, length)) return 0;
            if (_RTE_key_trie[node] > 0 && _RTE_key_trie[node + 1] == 0) {
                uint32_t keyword = _RTE_key_trie[node + 2];
                return _RTE_key_info[keyword].flags | keyword;
            }
            return 0;
        }
        auto wanted = static_cast<uint16_t>(static_cast<unsigned char>(TrieBuilder::Lower(c)));
        uint32_t pairs = _RTE_key_trie[node];
        uint32_t nextNode = 0;
        for (uint32_t p = 0; p < pairs; ++p) {
            uint16_t character = _RTE_key_trie[node + 1 + 2 * p];
            if (character == wanted) {
                nextNode = _RTE_key_trie[node + 2 + 2 * p];
                break;
            }
            if (character > wanted) return 0;
        }
        if (nextNode == 0) return 0;
        node = nextNode;
    }
}

VRN_EXPORT uint32_t _vrnfindiokeyword(const char* text, int32_t length) {
    return _vrnFindIOKeyword(text, length);
}

uint32_t KeywordOfValue(uintptr_t a, uint32_t b) {
    if (a == 0) return b;
    return _vrnFindIOKeyword(reinterpret_cast<const char*>(a), static_cast<int32_t>(b)) & 0xFFFFu;
}

void KeywordValueText(const KeywordEntry& entry, char (&out)[kMaxValueText + 1]) {
    if (entry.a == 0) {
        const char* name = entry.b < static_cast<uint32_t>(kKeywordRows) ? _RTE_key_info[entry.b].name : "";
        std::strncpy(out, name, kMaxValueText);
        out[kMaxValueText] = 0;
        return;
    }
    int32_t length = static_cast<int32_t>(entry.b);
    if (length > kMaxValueText) length = kMaxValueText;
    if (length < 0) length = 0;
    std::memcpy(out, reinterpret_cast<const char*>(entry.a), static_cast<size_t>(length));
    while (length > 0 && (out[length - 1] == ' ' || out[length - 1] == 0)) --length;
    out[length] = 0;
}

namespace {

template <typename Word>
void StoreTruth(void* variable, bool value) {
    Word word = value;
    std::memcpy(variable, &word, sizeof word);
}

}  // namespace

void StoreLogicalSpecifier(void* variable, uint32_t size, bool value) {
    if (variable == nullptr) return;
    switch (size) {
    case 1: StoreTruth<uint8_t>(variable, value); break;
    case 2: StoreTruth<uint16_t>(variable, value); break;
    case 8: StoreTruth<uint64_t>(variable, value); break;
    default: StoreTruth<uint32_t>(variable, value); break;
    }
}
