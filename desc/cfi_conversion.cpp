// Conversions between the RTD and the C descriptor, which compiled code calls around a
// call of a BIND(C) procedure. The two records hold the same facts in opposite orders: the
// RTD keeps its dimension table reversed with 32-bit words, the C descriptor in Fortran
// order with pointer-sized ones. Lower bounds cross only for allocatables and pointers; a
// C descriptor of any other object has lower bounds of zero.
#include <cstring>

#include "core/export.h"
#include "desc/cfi.h"
#include "desc/rtd.h"

namespace {

// The C type of an RTD's data type and element length; 0 where the length is no kind of
// the type.
CFI_type_t TypeOfRTD(uint8_t dataType, int32_t length) {
    auto sized = [](int category, int kind) -> CFI_type_t {
        return cfi::Facts(static_cast<CFI_type_t>(CFI_TYPE_CODE(category, kind))).known
                   ? static_cast<CFI_type_t>(CFI_TYPE_CODE(category, kind))
                   : 0;
    };
    switch (dataType) {
    case RTD_TYPE_DERIVED: return CFI_type_struct;
    case RTD_TYPE_CHARACTER: return CFI_type_char;
    case RTD_TYPE_INTEGER: return sized(CFI_category_integer, length);
    case RTD_TYPE_LOGICAL: return sized(CFI_category_logical, length);
    case RTD_TYPE_REAL: return sized(CFI_category_real, length);
    case RTD_TYPE_COMPLEX: return length % 2 == 0 ? sized(CFI_category_complex, length / 2) : 0;
    case RTD_TYPE_BYTE: return length == 1 ? static_cast<CFI_type_t>(CFI_type_byte) : 0;
    default: return CFI_type_other;  // invalid and vector types have no C counterpart
    }
}

uint8_t DataTypeOfCFI(CFI_type_t type) {
    if (type <= 0) return RTD_TYPE_DERIVED;
    switch (cfi::Category(type)) {
    case CFI_category_integer: return RTD_TYPE_INTEGER;
    case CFI_category_logical: return RTD_TYPE_LOGICAL;
    case CFI_category_real: return RTD_TYPE_REAL;
    case CFI_category_complex: return RTD_TYPE_COMPLEX;
    case CFI_category_character: return RTD_TYPE_CHARACTER;
    case CFI_category_byte: return RTD_TYPE_BYTE;
    default: return RTD_TYPE_DERIVED;  // struct, C_PTR and C_FUNPTR are derived types in Fortran
    }
}

bool FitsWord(CFI_index_t value) { return value >= INT32_MIN && value <= INT32_MAX; }

}  // namespace

VRN_EXPORT int __vrn_rtd_to_cfi(CFI_cdesc_t* result, const void* rtd, CFI_attribute_t attribute) {
    if (result == nullptr || rtd == nullptr) return CFI_INVALID_DESCRIPTOR;
    if (attribute < CFI_attribute_pointer || attribute > CFI_attribute_other) return CFI_INVALID_ATTRIBUTE;
    const auto* head = static_cast<const RTD*>(rtd);
    int32_t rank = 0;
    if (head->header.dscr_type == RTD_ARRAY) {
        rank = static_cast<const RTDArray*>(rtd)->rank;
        if (rank < 0 || rank > CFI_MAX_RANK) return CFI_INVALID_RANK;
    } else if (head->header.dscr_type != RTD_SCALAR && head->header.dscr_type != RTD_SCALAR_CHAR) {
        return CFI_INVALID_DESCRIPTOR;
    }
    // A scalar of version 0 or 1 that is not character does not record its length.
    if (!HasElementLength(head) || head->element_len < 0) return CFI_INVALID_ELEM_LEN;
    CFI_type_t type = TypeOfRTD(head->header.data_type, head->element_len);
    if (type == 0) return CFI_INVALID_TYPE;

    bool present = true;
    if (attribute == CFI_attribute_allocatable) present = (head->header.flags & RTD_FLAG_IS_ALLOCATED) != 0;
    if (attribute == CFI_attribute_pointer) {
        present = (head->header.flags & (RTD_FLAG_IS_ASSOCIATED | RTD_FLAG_IS_ALLOCATED)) != 0;
    }
    result->base_addr = present ? reinterpret_cast<void*>(head->base_ptr) : nullptr;
    result->elem_len = static_cast<size_t>(head->element_len);
    result->version = CFI_VERSION;
    result->rank = static_cast<CFI_rank_t>(rank);
    result->attribute = attribute;
    result->type = type;
    bool keepBounds = attribute != CFI_attribute_other;
    for (int32_t d = 0; d < rank; ++d) {
        RTDDimension entry = DimensionEntry(head, rank - 1 - d);
        result->dim[d] = CFI_dim_t{keepBounds ? entry.low_bound : 0, entry.extent, entry.multiplier};
    }
    return CFI_SUCCESS;
}

VRN_EXPORT int __vrn_cfi_to_rtd(void* rtd, const CFI_cdesc_t* source) {
    if (rtd == nullptr || !cfi::Valid(source)) return CFI_INVALID_DESCRIPTOR;
    if (source->elem_len > INT32_MAX) return CFI_INVALID_ELEM_LEN;
    int rank = source->rank;
    // Everything is checked before the first store, so that a failure leaves the RTD whole.
    RTDDimension dims[CFI_MAX_RANK];
    CFI_index_t origin = 0;
    for (int d = 0; d < rank; ++d) {
        const CFI_dim_t& dim = source->dim[d];
        CFI_index_t term;
        if (!FitsWord(dim.lower_bound) || !FitsWord(dim.extent) || !FitsWord(dim.sm)) return CFI_INVALID_EXTENT;
        if (__builtin_mul_overflow(dim.lower_bound, dim.sm, &term) || __builtin_sub_overflow(origin, term, &origin)) {
            return CFI_INVALID_EXTENT;
        }
        dims[rank - 1 - d] = RTDDimension{static_cast<int32_t>(dim.lower_bound), static_cast<int32_t>(dim.extent),
                                          static_cast<int32_t>(dim.sm)};
    }
    if (!FitsWord(origin)) return CFI_INVALID_EXTENT;

    uint8_t flags = 0;
    if (source->base_addr != nullptr) {
        if (source->attribute == CFI_attribute_allocatable) flags = RTD_FLAG_IS_ALLOCATED | RTD_FLAG_OK_TO_DEALLOCATE;
        if (source->attribute == CFI_attribute_pointer) flags = RTD_FLAG_IS_ASSOCIATED;
        if (cfi::Contiguous(source)) flags |= RTD_FLAG_IS_CONTIGUOUS;
    }
    auto* array = static_cast<RTDArray*>(rtd);
    array->base_ptr = reinterpret_cast<uintptr_t>(source->base_addr);
    array->header = RTDHeader{RTD_ARRAY, DataTypeOfCFI(source->type), flags,
                              static_cast<uint8_t>(sizeof(void*) == 8 ? RTD_VERSION_64BIT | 1 : 1)};
    array->element_len = static_cast<int32_t>(source->elem_len);
    array->rank = rank;
    array->rel_virtual_org = static_cast<int32_t>(origin);
    std::memcpy(array->dims, dims, sizeof(RTDDimension) * static_cast<size_t>(rank));
    return CFI_SUCCESS;
}
