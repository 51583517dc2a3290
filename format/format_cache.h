// Formats given as text at run time, encoded once per context.
//
// A statement whose format is a character expression names it by address and length.
// The cache keeps the encoded code of recent texts beside a copy of their bytes; a lookup
// compares the bytes every time, so a format variable rewritten between two statements
// is encoded again and never served its old code, and the same text at another address
// is still found. Only encodings that ran without a diagnostic are kept: a text that
// draws a warning draws it on every statement, as it did before there was a cache.
#pragma once

#include <cstdint>

struct LocalContext;
struct FormatCache;

// The code of the statement's format text: cached, or encoded now (and cached when it
// can be). Null when the encoding stopped on an error, which has been raised.
const void* RuntimeFormatCode(LocalContext* context, const char* text, int32_t length, uint32_t flags);

// Releases a context's cache; its codes must not be in use.
void FreeFormatCache(FormatCache* cache);

// How much a context's cache may hold: at most this many codes, each with its text no
// larger than kMaxCachedFormatBytes; a larger one is encoded each time as before.
constexpr int kCachedFormats = 16;
constexpr int32_t kMaxCachedFormatBytes = 8192;
