// The encoder's exported entries, the run-time's own callback, and the folding of
// constants into a compiled code.
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "core/options.h"
#include "format/descriptor_table.h"
#include "format/encoded_format.h"

constinit const FmtErrorRow FmtErrorCodeTable[kFmtErrorCodes] = {
    {-1, 1},  {58, 1},  {71, 1},  {63, 1},  {66, 1},  {67, 1}, {65, 1},  {78, 1},   {76, 1},  {62, 1},   // 0-9
    {69, 1},  {70, 1},  {104, 1}, {74, 1},  {79, 1},  {72, 1}, {82, 1},  {75, 1},   {82, 1},  {111, 1},  // 10-19
    {112, 1}, {61, 1},  {80, 1},  {81, 1},  {83, 1},  {51, 1}, {73, 1},  {-1, 1},   {143, 3}, {-1, 1},   // 20-29
    {-1, 1},  {103, 1}, {57, 1},  {35, 1},  {52, 1},  {-1, 1}, {37, 0},  {-1, 1},   {-1, 1},  {-1, 1},   // 30-39
    {-1, 1},  {59, 3},  {-1, 1},  {68, 1},  {188, 3}, {189, 3}, {-1, 1}, {208, 1},  {229, 1}, {230, 1},  // 40-49
};

intptr_t EncodeError(intptr_t code, intptr_t, intptr_t, intptr_t virtualCode, intptr_t a, intptr_t b, intptr_t c,
                     intptr_t) {
    // Codes without a row (50, the 2008 level check) have no message, like those of -1.
    FmtErrorRow row = code >= 0 && code < kFmtErrorCodes ? FmtErrorCodeTable[code] : FmtErrorRow{-1, 1};
    char bad[2] = {static_cast<char>(a), 0};
    const char* name = code == 14 ? bad
                       : virtualCode >= 0 && virtualCode < kVirtualCodes ? VirtualDescName[virtualCode]
                                                                          : "";
    int32_t answer = ErrorHandler(row.errorClass, kKindError, row.message, 58, ArgText(1), name, ArgInt(2),
                                  static_cast<int32_t>(a), ArgInt(3), static_cast<int32_t>(b), ArgInt(4),
                                  static_cast<int32_t>(c), 0u);
    return answer == kRecover ? 1 : 0;
}

uint32_t RuntimeEncodingFlags(const OptionBlock& options, uint32_t statementOptions) {
    uint32_t flags = 0;
    switch (options.optLangLvl) {
    case VRN_KEY_90STD: flags |= VRN_FMT_LEVEL_F90; break;
    case VRN_KEY_95STD: flags |= VRN_FMT_LEVEL_F95; break;
    case VRN_KEY_2003STD: flags |= VRN_FMT_LEVEL_F2003; break;
    case VRN_KEY_2008STD: flags |= VRN_FMT_LEVEL_F2008; break;
    default: break;
    }
    if (statementOptions & 0x1u) flags |= VRN_FMT_Q_COUNT;
    if (statementOptions & 0x2u) flags |= VRN_FMT_MULTIBYTE;
    if (statementOptions & 0x4u) flags |= VRN_FMT_ESCAPES;
    if (statementOptions & 0x20000u) flags |= VRN_FMT_INTEGER2;
    else if (statementOptions & 0x40000u) flags |= VRN_FMT_INTEGER8;
    return flags;
}

namespace {

// Diagnostics raised by run-time encodings so far, so that a caller can tell a code that
// came with a warning from one that came clean. The I/O run-time is single-threaded;
// thread_local only keeps a stray thread's count apart.
thread_local uint32_t runtimeEncodeDiagnostics = 0;

intptr_t CountedEncodeError(intptr_t code, intptr_t descriptorNumber, intptr_t position, intptr_t virtualCode,
                            intptr_t a, intptr_t b, intptr_t c, intptr_t reserved) {
    ++runtimeEncodeDiagnostics;
    return EncodeError(code, descriptorNumber, position, virtualCode, a, b, c, reserved);
}

}  // namespace

RuntimeEncoding EncodeRuntimeFormatWithDetail(LocalContext* context, const char* text, int32_t length,
                                              uint32_t flags) {
    EncodedResult result{};
    uint32_t diagnosticsBefore = runtimeEncodeDiagnostics;
    // The encoding a run-time of this machine's word size reads: on a 64-bit machine only
    // the 64-bit slots can hold the addresses that chain a long code.
    intptr_t outcome = sizeof(void*) > 4
                           ? EncodeFormat64(text, length, flags, CountedEncodeError, &context->formatBuffer, &result)
                           : EncodeFormat(text, length, flags, CountedEncodeError, &context->formatBuffer, &result);
    if (outcome != 1) return {nullptr, 0, true};
    return {result.code, result.bytes, runtimeEncodeDiagnostics != diagnosticsBefore};
}

void* EncodeRuntimeFormat(LocalContext* context, const char* text, int32_t length, uint32_t flags) {
    return EncodeRuntimeFormatWithDetail(context, text, length, flags).code;
}

bool Is32BitEncoding(const void* code) {
    uint32_t words[4];
    std::memcpy(words, code, sizeof words);
    uint32_t high = words[0] >> 16;
    // A code is never empty, so its length word is not 0; in a 64-bit code read in a
    // little-endian machine's order that word is the upper half of the op slot, which is.
    return (high == 0x8001u || high == 0x803Bu) && (words[0] & 0xFFFFu) == 0 && words[1] != 0 &&
           !(words[VRN_FMT_HEADER_FLAGS] & VRN_FMT_ENCODING64);
}

bool Is64BitEncoding(const void* code) {
    uint64_t slots[4];
    std::memcpy(slots, code, sizeof slots);
    uint64_t high = (slots[0] >> 16) & 0xFFFFu;
    return (slots[0] >> 32) == 0 && (high == 0x8001u || high == 0x803Bu) && (slots[0] & 0xFFFFu) == 0 &&
           (slots[VRN_FMT_HEADER_FLAGS] & VRN_FMT_ENCODING64);
}

namespace {

intptr_t Encode(const char* text, int32_t length, uint32_t flags, VrnFormatCallback callback,
                int32_t* expressionCount, VrnFormatExpression** expressionTable, void** encoded,
                int32_t* encodedBytes) {
    bool encoding64 = (flags & (VRN_FMT_COMPILE_TIME | VRN_FMT_64BIT)) == (VRN_FMT_COMPILE_TIME | VRN_FMT_64BIT);
    FormatCodeBuffer* buffer;
    if (flags & VRN_FMT_COMPILE_TIME) {
        buffer = CompileTimeBuffer(encoding64);
    } else {
        EnsureRuntimeStarted();
        buffer = &_LocalContext[0]->formatBuffer;
    }
    EncodedResult result{};
    intptr_t outcome = encoding64 ? EncodeFormat64(text, length, flags, callback, buffer, &result)
                                  : EncodeFormat(text, length, flags, callback, buffer, &result);
    if (outcome != 1) return outcome;
    if (expressionCount != nullptr) *expressionCount = result.expressionCount;
    if (expressionTable != nullptr && result.expressionCount > 0) *expressionTable = result.expressions;
    if (encoded != nullptr) *encoded = result.code;
    if (encodedBytes != nullptr) *encodedBytes = result.bytes;
    return 1;
}

// Which diagnostic a folded value that fails its operand's range raises.
int RangeErrorCode(uint32_t descriptor, int32_t operandIndex) {
    switch (descriptor) {
    case VRN_FMT_REPEAT: return 6;
    case VRN_FMT_P: return 11;
    case VRN_FMT_T:
    case VRN_FMT_TL:
    case VRN_FMT_TR:
    case VRN_FMT_X: return 13;
    default: break;
    }
    if (operandIndex == 0) return 21;
    if (operandIndex == 2) return 24;
    bool withM = descriptor == VRN_FMT_IM || descriptor == VRN_FMT_BM || descriptor == VRN_FMT_OM ||
                 descriptor == VRN_FMT_ZM;
    return withM ? 22 : 23;
}

intptr_t Complain(VrnFormatCallback callback, int code, const VrnFormatExpression* record, uint32_t descriptor,
                  int64_t value) {
    if (callback == nullptr) return 1;
    return callback(code, record->descriptorNumber, record->descriptorPosition, VirtualDescCode[descriptor],
                    static_cast<intptr_t>(value), 0, 0, 0);
}

// A DT v-list entry: its group of one expression becomes a group of one folded constant.
template <class Unit>
intptr_t SetListConstant(Unit* op, VrnFormatCallback callback, const VrnFormatExpression* record, int64_t value) {
    int32_t width = static_cast<int32_t>(op[2]);
    int32_t listBytes = static_cast<int32_t>(op[3]);
    int32_t typeUnits = static_cast<int32_t>((op[1] + sizeof(Unit) - 1) / sizeof(Unit));
    auto* list = reinterpret_cast<uint8_t*>(op + 5 + typeUnits);
    int32_t wanted = record->operandIndex - 3;
    int32_t ordinal = 0;
    for (int32_t offset = 0; offset + 4 <= listBytes;) {
        uint32_t head;
        std::memcpy(&head, list + offset, 4);
        uint32_t count = head & 0x3FFFFFFFu;
        if ((head >> 30) == 0) {
            ordinal += static_cast<int32_t>(count);
            offset += 4 + static_cast<int32_t>(count) * width;
            continue;
        }
        if (ordinal == wanted) {
            int64_t limit = width == 2 ? 32767 : 2147483647;
            if (value < -limit - 1 || value > limit) {
                intptr_t answer = Complain(callback, 43, record, VRN_FMT_DT, value);
                if (answer != 1) return answer;
                value = 0;
            }
            head = 0x80000000u | 1u;
            auto folded = static_cast<int32_t>(value);
            std::memcpy(list + offset, &head, 4);
            std::memcpy(list + offset + 4, &folded, 4);
            return 1;
        }
        ++ordinal;
        offset += 8;
    }
    return 1;
}

template <class Unit>
intptr_t SetFormatConstant(void* encoded, VrnFormatCallback callback, const VrnFormatExpression* record,
                           int64_t value) {
    int32_t offset = record->byteOffset;
    if (offset < 0) return 1;  // its descriptor was dropped as bad
    if constexpr (sizeof(Unit) == 8) offset &= ~7;
    auto* op = reinterpret_cast<Unit*>(static_cast<uint8_t*>(encoded) + offset);
    auto word = static_cast<uint32_t>(op[0]);
    if ((word >> 16) == 0x8000u) return 1;  // a repeat kept as a no-op
    uint32_t descriptor = DescriptorCode(word);
    if (descriptor >= kDescriptorCodes) return 1;
    if (descriptor == VRN_FMT_DT) return SetListConstant(op, callback, record, value);
    int32_t index = record->operandIndex;
    if (index < 0 || index > 2) return 1;
    const DescDefaultRow& row = (sizeof(Unit) == 8 ? DescDefaultTable64 : DescDefaultTable)[descriptor];
    bool fits = index < row.rangeCount && value >= row.ranges[index].minimum && value <= row.ranges[index].maximum;
    uint32_t kind = VRN_FMT_CONSTANT;
    if (!fits) {
        intptr_t answer = Complain(callback, RangeErrorCode(descriptor, index), record, descriptor, value);
        if (answer != 1) return answer;
        kind = VRN_FMT_OMITTED;
        value = 0;
    }
    op[1 + index] = static_cast<Unit>(value);
    uint32_t shift = 4u * static_cast<uint32_t>(index);
    word = (word & ~(0xFu << shift)) | (kind << shift);
    op[0] = static_cast<Unit>(word);
    return 1;
}

int32_t EncodingMode(const void* encoded) {
    if (encoded == nullptr) return 0;
    if (Is32BitEncoding(encoded)) return 1;
    return Is64BitEncoding(encoded) ? 2 : 0;
}

intptr_t SetConstant(void* encoded, VrnFormatCallback callback, const VrnFormatExpression* record, int64_t value) {
    if (encoded == nullptr || record == nullptr) return 0;
    if (Is32BitEncoding(encoded)) return SetFormatConstant<int32_t>(encoded, callback, record, value);
    return SetFormatConstant<int64_t>(encoded, callback, record, value);
}

}  // namespace

VRN_EXPORT intptr_t _vrnEncodeFormat(const VrnFormatText* format, uint32_t flags, VrnFormatCallback callback,
                                     int32_t* expressionCount, VrnFormatExpression** expressionTable,
                                     void** encoded, int32_t* encodedBytes) {
    const char* text = format != nullptr ? format->text : nullptr;
    int32_t length = format != nullptr ? format->length : 0;
    return Encode(text, length, flags, callback, expressionCount, expressionTable, encoded, encodedBytes);
}

VRN_EXPORT intptr_t _vrnencodeformat(const char* text, int32_t length, uint32_t flags, VrnFormatCallback callback,
                                     int32_t* expressionCount, VrnFormatExpression** expressionTable,
                                     void** encoded, int32_t* encodedBytes) {
    return Encode(text, length, flags, callback, expressionCount, expressionTable, encoded, encodedBytes);
}

VRN_EXPORT intptr_t _vrnencodeformat_fe(uint32_t flags, VrnFormatCallback callback, int32_t* expressionCount,
                                        VrnFormatExpression** expressionTable, void** encoded,
                                        int32_t* encodedBytes, const char* text, int32_t length) {
    return Encode(text, length, flags, callback, expressionCount, expressionTable, encoded, encodedBytes);
}

VRN_EXPORT intptr_t _vrnSetFormatConstant(void* encoded, VrnFormatCallback callback,
                                          const VrnFormatExpression* record, intptr_t value) {
    return SetConstant(encoded, callback, record, value);
}

VRN_EXPORT intptr_t _vrnsetformatconstant(void* encoded, VrnFormatCallback callback,
                                          const VrnFormatExpression* record, int32_t valueHigh,
                                          uint32_t valueLow) {
    auto value = static_cast<int64_t>((static_cast<uint64_t>(static_cast<uint32_t>(valueHigh)) << 32) | valueLow);
    return SetConstant(encoded, callback, record, value);
}

VRN_EXPORT int32_t _vrnEncodingMode(const void* encoded) { return EncodingMode(encoded); }
VRN_EXPORT int32_t _vrnencodingmode(const void* encoded) { return EncodingMode(encoded); }

VRN_EXPORT void _vrnFreeFormatMemory(void) { FreeCompileTimeBuffers(); }
VRN_EXPORT void _vrnfreeformatmemory(void) { FreeCompileTimeBuffers(); }
