// Whole arrays as items. The dense case is the one that matters: a contiguous array is one
// call of the item routine, an array dense in its first dimension one call per column,
// and only the rest goes element by element.
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "core/context.h"
#include "core/errors.h"
#include "core/export.h"
#include "core/unit.h"
#include "desc/rtd.h"
#include "desc/transfer_forms.h"
#include "format/format_control.h"

namespace {

const RTDArray* DescriptorAt(const uintptr_t* lengthWord) { return reinterpret_cast<const RTDArray*>(*lengthWord); }

constexpr int32_t kGatherBytes = 64 * 1024;
constexpr int32_t kGatherElements = 8192;

// Copies one element of `size` bytes; the common sizes as single moves.
inline void CopyElement(char* to, const char* from, int32_t size) {
    switch (size) {
    case 4: std::memcpy(to, from, 4); break;
    case 8: std::memcpy(to, from, 8); break;
    case 16: std::memcpy(to, from, 16); break;
    default: std::memcpy(to, from, static_cast<size_t>(size)); break;
    }
}

// An unformatted array whose elements lie apart: they reach the record in pieces of up to
// 64 KB, gathered before a write and scattered after a read, where one call for each
// element would cost several times the bytes' own time. The bytes in the record are the
// same; a swapped unit reverses each element of a piece as it would a run.
template <class Transfer>
int32_t Gathered(LocalContext* context, void* first, const uintptr_t* lengthWord, const ItemShape& shape,
                 int32_t size) {
    const RTDArray* rtd = DescriptorAt(lengthWord);
    const RTD* head = reinterpret_cast<const RTD*>(rtd);
    int32_t rank = ReadField<int32_t>(&rtd->rank);
    int32_t extent[RTD_MAX_RANK], multiplier[RTD_MAX_RANK], position[RTD_MAX_RANK] = {};
    for (int32_t i = 0; i < rank; ++i) {
        RTDDimension entry = DimensionEntry(head, i);
        if (entry.extent < 1) return context->status;
        extent[i] = entry.extent;
        multiplier[i] = entry.multiplier;
    }
    int32_t perPiece = std::max(1, std::min(kGatherElements, kGatherBytes / size));
    struct Memory {
        void* area;
        ~Memory() { std::free(area); }
    } memory{std::malloc(static_cast<size_t>(perPiece) * (static_cast<size_t>(size) + sizeof(char*)))};
    if (memory.area == nullptr) {
        ErrorHandler(kClassSevere, kKindResources, 37, 37, 0u);
        if (context->unit != nullptr) context->unit->permanentError = 1;
        return context->status;
    }
    auto* area = static_cast<char*>(memory.area);
    auto** places = reinterpret_cast<char**>(area + static_cast<size_t>(perPiece) * size);
    ItemShape run = shape;
    run.typeWord = (shape.typeWord & ~kArrayBits) | kArrayRun;
    int32_t count = 0;
    auto flush = [&]() {
        run.length = count * size;
        if (Transfer::Element(context, area, run) != 0 || context->itemsStopped) return false;
        if (Transfer::kReading) {
            for (int32_t i = 0; i < count; ++i) CopyElement(places[i], area + static_cast<ptrdiff_t>(i) * size, size);
        }
        count = 0;
        return true;
    };
    int32_t inner = rank - 1;
    char* row = static_cast<char*>(first);
    for (;;) {
        char* at = row;
        for (int32_t k = 0; k < extent[inner]; ++k, at += multiplier[inner]) {
            if (Transfer::kReading) {
                places[count] = at;
            } else {
                CopyElement(area + static_cast<ptrdiff_t>(count) * size, at, size);
            }
            if (++count == perPiece && !flush()) return context->status;
        }
        int32_t d = inner - 1;
        while (d >= 0 && position[d] == extent[d] - 1) {
            row -= static_cast<intptr_t>(position[d]) * multiplier[d];
            position[d] = 0;
            --d;
        }
        if (d < 0) break;
        ++position[d];
        row += multiplier[d];
    }
    if (count > 0) flush();
    return context->status;
}

// The described array in runs of its innermost rows when they are dense, else in runs of
// whatever neighbours the walk finds (unformatted) or element by element.
template <class Transfer>
int32_t Described(LocalContext* context, void* first, const uintptr_t* lengthWord, const ItemShape& shape) {
    int32_t size = CheckSegment(lengthWord, shape.kindWord, shape.typeWord, shape.elementLength, 0);
    if (size > 0) return IterateSegment(context, first, DescriptorAt(lengthWord), shape, size, Transfer::Element);
    if constexpr (Transfer::kForm == Form::Unformatted) {
        int32_t type = static_cast<int32_t>(shape.typeWord & kArrayTypeMask);
        int32_t step = ArrayStepSize(type, shape.kindWord, shape.elementLength);
        int32_t rank = ReadField<int32_t>(&DescriptorAt(lengthWord)->rank);
        if (step > 0 && rank >= 1 && rank <= RTD_MAX_RANK) {
            return Gathered<Transfer>(context, first, lengthWord, shape, step);
        }
    }
    return IterateArray(context, first, lengthWord, shape, Transfer::Element, Transfer::kForm == Form::Unformatted);
}

}  // namespace

template <class Transfer>
int32_t TransferArray(LocalContext* context, void* first, const uintptr_t* lengthWord, const void* kindWord,
                      uint32_t typeWord, int32_t elementLength, const VrnDTIORow* dtio) {
    if (context->itemsStopped) return context->status;
    int32_t type = static_cast<int32_t>(typeWord & kArrayTypeMask);
    ItemShape shape{0, kindWord, typeWord, elementLength, dtio};
    bool run = (typeWord & kArrayRun) != 0;
    bool described = (typeWord & kArrayDescribed) != 0;
    if (!run && !described) {
        shape.length = type == kTypeCharacter ? elementLength : ArrayStepSize(type, kindWord, elementLength);
        return IterateArray(context, first, lengthWord, shape, Transfer::Element, false);
    }
    if (run) shape.length = static_cast<int32_t>(*lengthWord);

    // A derived type is taken apart element by element wherever its bytes cannot move as
    // they lie: in formatted and list-directed I/O always, and when a defined procedure
    // may be inside it.
    bool whole = Transfer::kForm == Form::Unformatted || type != kTypeDerived;
    if (type == kTypeDerived && dtio != nullptr) whole = false;
    if (Transfer::kForm == Form::ListDirected || !whole) {
        return IterateArray(context, first, lengthWord, shape, Transfer::Element, false);
    }
    if (run) return Transfer::Element(context, first, shape);
    return Described<Transfer>(context, first, lengthWord, shape);
}

template int32_t TransferArray<LdWrite>(LocalContext*, void*, const uintptr_t*, const void*, uint32_t, int32_t,
                                        const VrnDTIORow*);
template int32_t TransferArray<LdRead>(LocalContext*, void*, const uintptr_t*, const void*, uint32_t, int32_t,
                                       const VrnDTIORow*);
template int32_t TransferArray<FmtWrite>(LocalContext*, void*, const uintptr_t*, const void*, uint32_t, int32_t,
                                         const VrnDTIORow*);
template int32_t TransferArray<FmtRead>(LocalContext*, void*, const uintptr_t*, const void*, uint32_t, int32_t,
                                        const VrnDTIORow*);
template int32_t TransferArray<UfmtWrite>(LocalContext*, void*, const uintptr_t*, const void*, uint32_t, int32_t,
                                          const VrnDTIORow*);
template int32_t TransferArray<UfmtRead>(LocalContext*, void*, const uintptr_t*, const void*, uint32_t, int32_t,
                                         const VrnDTIORow*);

// The exported names: the plain forms and the forms for types with defined I/O inside.
#define VRN_ARRAY_ENTRY(name, Transfer, Pointer)                                                               \
    VRN_EXPORT int32_t name(LocalContext* context, Pointer first, const uintptr_t* lengthWord,                  \
                            const void* kindWord, uint32_t typeWord, int32_t elementLength) {                   \
        return TransferArray<Transfer>(context, const_cast<void*>(first), lengthWord, kindWord, typeWord,       \
                                       elementLength, nullptr);                                                 \
    }                                                                                                          \
    VRN_EXPORT int32_t name##_DTIO(LocalContext* context, Pointer first, const uintptr_t* lengthWord,           \
                                   const void* kindWord, uint32_t typeWord, int32_t elementLength,              \
                                   const VrnDTIORow* const* dtio) {                                             \
        return TransferArray<Transfer>(context, const_cast<void*>(first), lengthWord, kindWord, typeWord,       \
                                       elementLength, dtio != nullptr ? *dtio : nullptr);                       \
    }

VRN_ARRAY_ENTRY(_vrnWriteLDArray, LdWrite, const void*)
VRN_ARRAY_ENTRY(_vrnReadLDArray, LdRead, void*)
VRN_ARRAY_ENTRY(_vrnWriteFmtArray, FmtWrite, const void*)
VRN_ARRAY_ENTRY(_vrnReadFmtArray, FmtRead, void*)
VRN_ARRAY_ENTRY(_vrnWriteUfmtArray, UfmtWrite, const void*)
VRN_ARRAY_ENTRY(_vrnReadUfmtArray, UfmtRead, void*)
