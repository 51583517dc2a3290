// Whole arrays as items. The dense case is the one that matters: a contiguous array is one
// call of the item routine, an array dense in its first dimension one call per column,
// and only the rest goes element by element.
#include "core/context.h"
#include "core/export.h"
#include "desc/transfer_forms.h"
#include "format/format_control.h"

namespace {

const RTDArray* DescriptorAt(const uintptr_t* lengthWord) { return reinterpret_cast<const RTDArray*>(*lengthWord); }

// The described array in runs of its innermost rows when they are dense, else in runs of
// whatever neighbours the walk finds (with `merge`) or element by element.
template <class Transfer>
int32_t Described(LocalContext* context, void* first, const uintptr_t* lengthWord, const ItemShape& shape,
                  bool merge) {
    int32_t size = CheckSegment(lengthWord, shape.kindWord, shape.typeWord, shape.elementLength, 0);
    if (size > 0) return IterateSegment(context, first, DescriptorAt(lengthWord), shape, size, Transfer::Element);
    return IterateArray(context, first, lengthWord, shape, Transfer::Element, merge);
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
    return Described<Transfer>(context, first, lengthWord, shape, Transfer::kForm == Form::Unformatted);
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
