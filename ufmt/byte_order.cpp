// The word loops of swapped arrays.
#include "ufmt/byte_order.h"

#include "core/context.h"

namespace {

inline uint16_t Swapped(uint16_t word) { return __builtin_bswap16(word); }
inline uint32_t Swapped(uint32_t word) { return __builtin_bswap32(word); }
inline uint64_t Swapped(uint64_t word) { return __builtin_bswap64(word); }

// A 16-byte element is two 8-byte halves, each reversed where it stands: as words, the
// same loop over twice as many 8-byte words.
template <class Word>
void CopyWords(uint8_t* to, const uint8_t* from, size_t words) {
    for (size_t i = 0; i < words; ++i) {
        Word word;
        std::memcpy(&word, from + i * sizeof(Word), sizeof(Word));
        word = Swapped(word);
        std::memcpy(to + i * sizeof(Word), &word, sizeof(Word));
    }
}

}  // namespace

void CopyReversed(void* to, const void* from, size_t count, uint32_t size) {
    auto* out = static_cast<uint8_t*>(to);
    const auto* in = static_cast<const uint8_t*>(from);
    switch (size) {
    case 2: CopyWords<uint16_t>(out, in, count); return;
    case 4: CopyWords<uint32_t>(out, in, count); return;
    case 8: CopyWords<uint64_t>(out, in, count); return;
    case 16: CopyWords<uint64_t>(out, in, 2 * count); return;
    default: ElementSizeFault();
    }
}

void ReverseEach(void* bytes, size_t count, uint32_t size) { CopyReversed(bytes, bytes, count, size); }

void ElementSizeFault() { CatastrophicExit("((void)\"Size should not be larger than 16\", 0)\n"); }
