// The cache of run-time format codes; see format_cache.h for what it promises.
#include "format/format_cache.h"

#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "core/context.h"
#include "format/encoded_format.h"

namespace {

// The unit a run-time encoding is made of on this machine.
using CodeUnit = std::conditional_t<(sizeof(void*) > 4), int64_t, int32_t>;

struct CachedFormat {
    const char* address;  // where the text stood when it was encoded: the likeliest match
    int32_t length;
    uint32_t flags;
    uint32_t lastUse;
    CodeUnit* code;       // one block: the code, then the text's bytes
    const char* text;
};

}  // namespace

struct FormatCache {
    CachedFormat entries[kCachedFormats];
    int32_t used;
    int32_t latest;  // the entry the last lookup found or made
    uint32_t clock;
};

namespace {

bool Matches(const CachedFormat& entry, const char* text, int32_t length, uint32_t flags) {
    return entry.length == length && entry.flags == flags &&
           (length == 0 || std::memcmp(entry.text, text, static_cast<size_t>(length)) == 0);
}

CachedFormat* Find(FormatCache* cache, const char* text, int32_t length, uint32_t flags) {
    CachedFormat& latest = cache->entries[cache->latest];
    if (cache->used > 0 && latest.address == text && Matches(latest, text, length, flags)) return &latest;
    for (int32_t i = 0; i < cache->used; ++i) {
        if (Matches(cache->entries[i], text, length, flags)) {
            cache->latest = i;
            return &cache->entries[i];
        }
    }
    return nullptr;
}

// A copy of a contiguous code and of its text in one block. The closing Cont record and
// the tail behind it come along; the header's link to that record is moved to the copy.
CodeUnit* CopyOf(const CodeUnit* code, const char* text, int32_t length, size_t* codeBytes) {
    const CodeUnit* cont = FirstCont(const_cast<CodeUnit*>(code));
    *codeBytes = static_cast<size_t>(cont - code + 3) * sizeof(CodeUnit) + kChunkTailBytes;
    auto* copy = static_cast<CodeUnit*>(std::malloc(*codeBytes + static_cast<size_t>(length)));
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, code, *codeBytes);
    SetFirstCont(copy, copy + (cont - code));
    std::memcpy(reinterpret_cast<char*>(copy) + *codeBytes, text, static_cast<size_t>(length));
    return copy;
}

// The slot a new code goes into: a free one, or the one used longest ago.
CachedFormat* Slot(FormatCache* cache) {
    if (cache->used < kCachedFormats) return &cache->entries[cache->used++];
    CachedFormat* oldest = &cache->entries[0];
    for (CachedFormat& entry : cache->entries) {
        if (entry.lastUse < oldest->lastUse) oldest = &entry;
    }
    std::free(oldest->code);
    return oldest;
}

const void* Keep(FormatCache* cache, const RuntimeEncoding& encoded, const char* text, int32_t length,
                 uint32_t flags) {
    const auto* code = static_cast<const CodeUnit*>(encoded.code);
    // A code chained over several chunks, or one that came with a diagnostic, is made
    // again each time, so that its chunks are freed and its warning raised as before.
    bool contiguous = (code[VRN_FMT_HEADER_FLAGS] & VRN_FMT_CONTIGUOUS) != 0;
    if (encoded.diagnosed || !contiguous || length > kMaxCachedFormatBytes ||
        encoded.bytes > kMaxCachedFormatBytes) {
        return encoded.code;
    }
    size_t codeBytes;
    CodeUnit* copy = CopyOf(code, text, length, &codeBytes);
    if (copy == nullptr) return encoded.code;  // no room to keep it: this statement runs all the same
    CachedFormat* slot = Slot(cache);
    *slot = {text, length, flags, ++cache->clock, copy, reinterpret_cast<const char*>(copy) + codeBytes};
    cache->latest = static_cast<int32_t>(slot - cache->entries);
    return copy;
}

}  // namespace

const void* RuntimeFormatCode(LocalContext* context, const char* text, int32_t length, uint32_t flags) {
    FormatCache* cache = context->formatCache;
    if (cache == nullptr) {
        cache = static_cast<FormatCache*>(std::calloc(1, sizeof(FormatCache)));
        context->formatCache = cache;
    }
    if (cache != nullptr && length >= 0) {
        if (CachedFormat* hit = Find(cache, text, length, flags)) {
            hit->address = text;
            hit->lastUse = ++cache->clock;
            return hit->code;
        }
    }
    RuntimeEncoding encoded = EncodeRuntimeFormatWithDetail(context, text, length, flags);
    if (encoded.code == nullptr || cache == nullptr || length < 0) return encoded.code;
    return Keep(cache, encoded, text, length, flags);
}

void FreeFormatCache(FormatCache* cache) {
    if (cache == nullptr) return;
    for (int32_t i = 0; i < cache->used; ++i) std::free(cache->entries[i].code);
    std::free(cache);
}
