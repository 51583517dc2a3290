// The element routines of the six transfer forms: an element, a run of elements or a
// derived-type object, handed to the item routines that the compiler would call for it.
#include <cstring>

#include "core/context.h"
#include "desc/transfer_forms.h"
#include "format/edit_input.h"
#include "format/edit_output.h"
#include "format/format_control.h"
#include "listio/listio.h"

namespace {

int32_t TypeOf(const ItemShape& shape) { return static_cast<int32_t>(shape.typeWord & kArrayTypeMask); }

template <class Transfer>
int32_t Derived(LocalContext* context, void* item, const ItemShape& shape) {
    return TransferDerived<Transfer>(context, static_cast<char*>(item), DerivedTable(shape.kindWord),
                                     static_cast<const VrnDTIORow*>(shape.dtio));
}

using LdNumberWriter = int32_t (*)(LocalContext*, const void*, int32_t, const int32_t*);
using LdNumberReader = int32_t (*)(LocalContext*, void*, int32_t, const int32_t*);

}  // namespace

int32_t LdWrite::Element(LocalContext* context, void* item, const ItemShape& shape) {
    int32_t type = TypeOf(shape);
    int32_t kind = KindOf(type, shape.kindWord);
    int32_t length = shape.length;
    switch (type) {
    case kTypeDerived: return Derived<LdWrite>(context, item, shape);
    case kTypeCharacter: return _vrnWriteLDChar(context, static_cast<const char*>(item), &length);
    case kTypeComplex: return _vrnWriteLDCmplx(context, item, &length, &kind);
    case kTypeByte: return _vrnWriteLDByte(context, item);
    default:
        if (type < 0 || type > kTypeComplex) return context->status;
        return reinterpret_cast<LdNumberWriter>(LdWriteFunctions[type])(context, item, 0, &kind);
    }
}

int32_t LdRead::Element(LocalContext* context, void* item, const ItemShape& shape) {
    int32_t type = TypeOf(shape);
    int32_t kind = KindOf(type, shape.kindWord);
    int32_t length = shape.length;
    switch (type) {
    case kTypeDerived: return Derived<LdRead>(context, item, shape);
    case kTypeCharacter: return _vrnReadLDChar(context, static_cast<char*>(item), &length);
    case kTypeComplex: return _vrnReadLDCmplx(context, item, &length, &kind);
    default:
        if (type < 0 || type > kTypeComplex) return context->status;
        return reinterpret_cast<LdNumberReader>(ReadLDFns[type])(context, item, 0, &kind);
    }
}

// A formatted element takes its total length (both parts of a complex value) and the
// length of one part; a run goes to the segment routine, which repeats the descriptor
// without a trip through format control.
int32_t FmtWrite::Element(LocalContext* context, void* item, const ItemShape& shape) {
    int32_t type = TypeOf(shape);
    if (type == kTypeDerived) return Derived<FmtWrite>(context, item, shape);
    int32_t part = type == kTypeCharacter ? shape.elementLength : KindOf(type, shape.kindWord);
    if (shape.typeWord & kArrayRun) return _vrnWriteFmtSeg(context, item, shape.length, part, type, shape.elementLength);
    int32_t total = shape.length;
    return _vrnWriteFmt(context, item, &total, &part, type);
}

int32_t FmtRead::Element(LocalContext* context, void* item, const ItemShape& shape) {
    int32_t type = TypeOf(shape);
    if (type == kTypeDerived) return Derived<FmtRead>(context, item, shape);
    int32_t part = type == kTypeCharacter ? shape.elementLength : KindOf(type, shape.kindWord);
    if (shape.typeWord & kArrayRun) return _vrnReadFmtSeg(context, item, shape.length, part, type, shape.elementLength);
    int32_t total = shape.length;
    return _vrnReadFmt(context, item, &total, &part, type);
}

// The unformatted item routines take runs themselves, swapped or not; a derived-type run
// is one of them unless its elements have defined I/O.
int32_t UfmtWrite::Element(LocalContext* context, void* item, const ItemShape& shape) {
    int32_t type = TypeOf(shape);
    if (type == kTypeDerived && !(shape.typeWord & kArrayRun)) return Derived<UfmtWrite>(context, item, shape);
    int32_t length = shape.length;
    return _vrnWriteUfmt(context, item, &length, static_cast<const int32_t*>(shape.kindWord), shape.typeWord);
}

int32_t UfmtRead::Element(LocalContext* context, void* item, const ItemShape& shape) {
    int32_t type = TypeOf(shape);
    if (type == kTypeDerived && !(shape.typeWord & kArrayRun)) return Derived<UfmtRead>(context, item, shape);
    int32_t length = shape.length;
    return _vrnReadUfmt(context, item, &length, static_cast<const int32_t*>(shape.kindWord), shape.typeWord);
}
