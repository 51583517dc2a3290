// Derived-type objects as items: the components in the order of the compiler's table, each
// through the routine of its form, or the whole object through its defined procedure.
#include "core/context.h"
#include "core/export.h"
#include "desc/rtd.h"
#include "desc/transfer_forms.h"
#include "format/format_control.h"
#include "ufmt/unformatted.h"

namespace {

template <class Transfer>
int32_t Component(LocalContext* context, char* object, const VrnDTRow& row, const VrnDTIORow* dtioRow) {
    char* at = object + row.offset;
    auto typeWord = static_cast<uint32_t>(row.typeWord);
    int32_t type = static_cast<int32_t>(typeWord & kArrayTypeMask);
    // The row's words are pointer-sized; the item routines read an int32 kind.
    int32_t kind = static_cast<int32_t>(row.kind);
    const void* kindWord = type == kTypeDerived ? static_cast<const void*>(&row.kind) : &kind;
    const VrnDTIORow* typeTable = type == kTypeDerived ? ComponentTypeTable(dtioRow) : nullptr;
    // A character component's kind word is the length of one of its elements.
    int32_t elementLength = type == kTypeCharacter ? kind : 0;
    if (typeWord & kArrayRun) {
        return TransferArray<Transfer>(context, at, &row.length, kindWord, typeWord, elementLength, typeTable);
    }
    if (typeWord & kArrayDescribed) {
        const auto* rtd = reinterpret_cast<const RTD*>(row.length);
        ItemShape shape{0, kindWord, typeWord, ReadField<int32_t>(&rtd->element_len), typeTable};
        return IterateArray(context, at, &row.length, shape, Transfer::Element, false);
    }
    int32_t length = type == kTypeCharacter ? static_cast<int32_t>(row.length) : ArrayStepSize(type, kindWord, 0);
    return Transfer::Element(context, at, ItemShape{length, kindWord, typeWord, length, typeTable});
}

}  // namespace

template <class Transfer>
int32_t TransferDerived(LocalContext* context, char* object, const VrnDTTable* table, const VrnDTIORow* dtio) {
    if (context->itemsStopped) return context->status;
    // INQUIRE(IOLENGTH=) runs no procedure: the object counts as its components.
    if (dtio != nullptr && dtio->procedure != 0 && !CountsIOLength(context)) return RunDefinedIO(context, object, dtio);
    if (table == nullptr) return context->status;
    const VrnDTIORow* componentRows = dtio != nullptr ? dtio + 1 : nullptr;
    if (Transfer::kReading) context->ld_next_name = 0;
    for (uintptr_t i = 0; i < table->count; ++i) {
        const VrnDTIORow* dtioRow = componentRows != nullptr ? &componentRows[i] : nullptr;
        if (Component<Transfer>(context, object, table->rows[i], dtioRow) != 0 || context->itemsStopped) break;
        // A namelist read that met the next name leaves the rest of the object alone.
        if (Transfer::kReading && context->ld_next_name) break;
    }
    return context->status;
}

int32_t UfmtDerivedRun(LocalContext* context, void* run, int32_t length, const void* kindWord, bool writing) {
    uintptr_t bytes = static_cast<uintptr_t>(length);
    ItemShape shape{0, kindWord, kTypeDerived | kArrayRun, 0, nullptr};
    return writing ? IterateArray(context, run, &bytes, shape, UfmtWrite::Element, false)
                   : IterateArray(context, run, &bytes, shape, UfmtRead::Element, false);
}

#define VRN_DT_ENTRY(name, Transfer, Pointer)                                                                   \
    template int32_t TransferDerived<Transfer>(LocalContext*, char*, const VrnDTTable*, const VrnDTIORow*);     \
    VRN_EXPORT int32_t name(LocalContext* context, Pointer object, uintptr_t, const VrnDTTable* const* table) {  \
        return TransferDerived<Transfer>(context, static_cast<char*>(const_cast<void*>(object)),                \
                                         table != nullptr ? *table : nullptr, nullptr);                          \
    }                                                                                                           \
    VRN_EXPORT int32_t name##_DTIO(LocalContext* context, Pointer object, uintptr_t,                             \
                                   const VrnDTTable* const* table, const VrnDTIORow* const* dtio) {             \
        return TransferDerived<Transfer>(context, static_cast<char*>(const_cast<void*>(object)),                \
                                         table != nullptr ? *table : nullptr, dtio != nullptr ? *dtio : nullptr); \
    }

VRN_DT_ENTRY(_vrnWriteLDDT, LdWrite, const void*)
VRN_DT_ENTRY(_vrnReadLDDT, LdRead, void*)
VRN_DT_ENTRY(_vrnWriteFmtDT, FmtWrite, const void*)
VRN_DT_ENTRY(_vrnReadFmtDT, FmtRead, void*)
VRN_DT_ENTRY(_vrnWriteUfmtDT, UfmtWrite, const void*)
VRN_DT_ENTRY(_vrnReadUfmtDT, UfmtRead, void*)
