// The format subsystem: format text compiled to EncodedFormat, and the code's layout.
//
// A code is a run of units: 32-bit words (the encoding this library's format control
// reads on the 32-bit target) or 64-bit slots (the encoding of a 64-bit run-time, so the
// one a 64-bit host builds at run time). A unit holds the value of a word in the machine's
// own byte order. Long codes are chunks chained by Cont records; see ContTarget.
#pragma once

#include <cstdint>
#include <cstring>

#include "core/context.h"
#include "vrn90.h"


constexpr uint32_t kHeaderOpWord = 0x80010000u;
constexpr uint32_t kContOpWord = 0x80060011u;
constexpr int32_t kHeaderUnits = 5;
constexpr int32_t kFirstChunkUnits = 10240;
constexpr int32_t kChunkGrowthUnits = 5120;
// Behind every chunk: room for the third slot of a 64-bit Cont (only two are reserved)
// and for the full address behind a 32-bit Cont on a machine with wider addresses.
constexpr int32_t kChunkTailBytes = 16;

// Where a Cont record (op, next chunk, position) leads. Its second unit holds the next
// chunk's address; a 32-bit word cannot on a 64-bit machine, so there it holds the low
// half and the full address follows the record, inside the chunk's tail.
template <class Unit>
inline Unit* ContTarget(const Unit* cont) {
    if constexpr (sizeof(Unit) >= sizeof(void*)) {
        return reinterpret_cast<Unit*>(static_cast<uintptr_t>(cont[1]));
    } else {
        Unit* target;
        std::memcpy(&target, cont + 3, sizeof target);
        return target;
    }
}

template <class Unit>
inline void SetContTarget(Unit* cont, Unit* target) {
    cont[1] = static_cast<Unit>(reinterpret_cast<uintptr_t>(target));
    if constexpr (sizeof(Unit) < sizeof(void*)) std::memcpy(cont + 3, &target, sizeof target);
}

// Header unit 4 leads to the first Cont, which stands in the first chunk: its address, or
// where a unit cannot hold one, its byte offset from the header.
template <class Unit>
inline Unit* FirstCont(Unit* header) {
    if constexpr (sizeof(Unit) >= sizeof(void*)) {
        return reinterpret_cast<Unit*>(static_cast<uintptr_t>(header[VRN_FMT_HEADER_FIRST_CONT]));
    } else {
        return header + header[VRN_FMT_HEADER_FIRST_CONT] / static_cast<int32_t>(sizeof(Unit));
    }
}

template <class Unit>
inline void SetFirstCont(Unit* header, Unit* cont) {
    if constexpr (sizeof(Unit) >= sizeof(void*)) {
        header[VRN_FMT_HEADER_FIRST_CONT] = static_cast<Unit>(reinterpret_cast<uintptr_t>(cont));
    } else {
        header[VRN_FMT_HEADER_FIRST_CONT] = static_cast<Unit>((cont - header) * sizeof(Unit));
    }
}

struct EncodedResult {
    void* code;
    int32_t bytes;             // header unit 1 times the unit size
    int32_t expressionCount;
    VrnFormatExpression* expressions;
};

// The encoder. The result is 1, or 0 or the callback's stopping value.
intptr_t EncodeFormat(const char* text, int32_t length, uint32_t flags, VrnFormatCallback callback,
                      FormatCodeBuffer* buffer, EncodedResult* result);
intptr_t EncodeFormat64(const char* text, int32_t length, uint32_t flags, VrnFormatCallback callback,
                        FormatCodeBuffer* buffer, EncodedResult* result);

// Frees the chunks chained to a code that is not contiguous; never the first one.
void FreeFormatExtensions(void* code);
void FreeFormatExtensions64(void* code);

// The compile-time buffers, which live until _vrnFreeFormatMemory.
FormatCodeBuffer* CompileTimeBuffer(bool encoding64);
void FreeCompileTimeBuffers();

bool Is32BitEncoding(const void* code);
bool Is64BitEncoding(const void* code);

// The run-time's callback: each diagnostic becomes a numbered error of the statement.
intptr_t EncodeError(intptr_t code, intptr_t descriptorNumber, intptr_t position, intptr_t virtualCode,
                     intptr_t a, intptr_t b, intptr_t c, intptr_t reserved);

struct FmtErrorRow {
    int16_t message;  // -1: the run-time has no message for it
    int16_t errorClass;
};
constexpr int kFmtErrorCodes = 50;
extern const FmtErrorRow FmtErrorCodeTable[kFmtErrorCodes];

// The encoder flags of a run-time encoding: the language level and the statement options.
uint32_t RuntimeEncodingFlags(const OptionBlock& options, uint32_t statementOptions);

// A statement's character format, encoded into the context's own buffer in the encoding
// this machine's format control reads. Null when the encoding stopped on an error, which
// EncodeError has raised.
void* EncodeRuntimeFormat(LocalContext* context, const char* text, int32_t length, uint32_t flags);

// The same, with what a cache needs to know: the code's length in bytes (header unit 1
// times the unit size) and whether the encoding raised any diagnostic on its way.
struct RuntimeEncoding {
    void* code;
    int32_t bytes;
    bool diagnosed;
};
RuntimeEncoding EncodeRuntimeFormatWithDetail(LocalContext* context, const char* text, int32_t length,
                                              uint32_t flags);
