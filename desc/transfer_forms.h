// The six forms of item transfer (list-directed, formatted and unformatted; writing and
// reading) as seen by the array and derived-type layer: one element routine each, which
// hands a scalar, a run or a derived-type object to the item routines of its form.
#pragma once

#include <cstdint>

#include "desc/array_walk.h"
#include "vrn90.h"

struct LocalContext;

enum class Form { ListDirected, Formatted, Unformatted };

// `dtio` in an ItemShape of a derived type is the DTIO table of the element's type (its
// first row is the type's own), or null when nothing inside the type has defined I/O.
#define VRN_TRANSFER_FORM(Name, FormValue, Reading)                                        \
    struct Name {                                                                         \
        static constexpr Form kForm = FormValue;                                          \
        static constexpr bool kReading = Reading;                                         \
        static int32_t Element(LocalContext* context, void* item, const ItemShape& shape); \
    };
VRN_TRANSFER_FORM(LdWrite, Form::ListDirected, false)
VRN_TRANSFER_FORM(LdRead, Form::ListDirected, true)
VRN_TRANSFER_FORM(FmtWrite, Form::Formatted, false)
VRN_TRANSFER_FORM(FmtRead, Form::Formatted, true)
VRN_TRANSFER_FORM(UfmtWrite, Form::Unformatted, false)
VRN_TRANSFER_FORM(UfmtRead, Form::Unformatted, true)
#undef VRN_TRANSFER_FORM

// One object of a derived type: its defined procedure when the DTIO table gives one,
// otherwise its components in order.
template <class Transfer>
int32_t TransferDerived(LocalContext* context, char* object, const VrnDTTable* table, const VrnDTIORow* dtio);

// An array item of any form, as the array entry points take it.
template <class Transfer>
int32_t TransferArray(LocalContext* context, void* first, const uintptr_t* lengthWord, const void* kindWord,
                      uint32_t typeWord, int32_t elementLength, const VrnDTIORow* dtio);

// Runs the defined I/O procedure of `row` for one object as a child statement of the
// statement in progress, and brings its outcome back to it.
int32_t RunDefinedIO(LocalContext* context, void* object, const VrnDTIORow* row);

// A run of derived-type elements on a unit whose numbers are swapped: element by element,
// component by component. `kindWord` is the address of the type's table address.
int32_t UfmtDerivedRun(LocalContext* context, void* run, int32_t length, const void* kindWord, bool writing);

// The DTIO table of a component's type from its row (see VrnDTIORow).
inline const VrnDTIORow* ComponentTypeTable(const VrnDTIORow* row) {
    if (row == nullptr) return nullptr;
    if (row->nested != 0) return reinterpret_cast<const VrnDTIORow*>(row->nested);
    return row->procedure != 0 ? row : nullptr;
}
