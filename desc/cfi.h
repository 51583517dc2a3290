// What the C descriptor procedures, the RTD conversions and the dump share: which type
// codes exist, how long their elements are, and when a descriptor can be trusted.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ISO_Fortran_binding.h"

namespace cfi {

// A type code this library knows, with the element length its kind fixes; 0 for the
// codes whose length the caller gives (character, struct, other).
struct TypeFacts {
    bool known;
    size_t length;
};

constexpr int Category(CFI_type_t type) { return type & CFI_CATEGORY_MASK; }
constexpr int Kind(CFI_type_t type) { return type >> CFI_KIND_SHIFT; }

constexpr TypeFacts Facts(CFI_type_t type) {
    switch (type) {
    case CFI_type_struct:
    case CFI_type_other: return {true, 0};
    case CFI_type_cptr: return {true, sizeof(void*)};
    case CFI_type_cfunptr: return {true, sizeof(void (*)())};
    default: break;
    }
    if (type <= 0) return {false, 0};
    int kind = Kind(type);
    switch (Category(type)) {
    case CFI_category_integer:
    case CFI_category_logical:
        return {kind == 1 || kind == 2 || kind == 4 || kind == 8, static_cast<size_t>(kind)};
    case CFI_category_real: return {kind == 4 || kind == 8 || kind == 16, static_cast<size_t>(kind)};
    case CFI_category_complex: return {kind == 4 || kind == 8 || kind == 16, 2 * static_cast<size_t>(kind)};
    case CFI_category_character: return {kind == 1, 0};
    case CFI_category_byte: return {kind == 1, 1};
    default: return {false, 0};
    }
}

constexpr bool IsCharacter(CFI_type_t type) { return Category(type) == CFI_category_character && type > 0; }

// Whether the caller gives the element length rather than the type fixing it.
constexpr bool LengthIsGiven(CFI_type_t type) {
    return type == CFI_type_struct || type == CFI_type_other || IsCharacter(type);
}

// A descriptor the procedures may read: established here or by compiled code, with a
// rank, attribute and type in range.
inline bool Valid(const CFI_cdesc_t* dv) {
    return dv != nullptr && dv->version == CFI_VERSION && dv->rank >= 0 && dv->rank <= CFI_MAX_RANK &&
           dv->attribute >= CFI_attribute_pointer && dv->attribute <= CFI_attribute_other && Facts(dv->type).known;
}

// The last dimension of an assumed-size array has the extent -1.
inline bool AssumedSize(const CFI_cdesc_t* dv) { return dv->rank > 0 && dv->dim[dv->rank - 1].extent == -1; }

// Whether the elements of an array with data follow one another in array element order
// with no gaps. An empty or assumed-size array is contiguous; a dimension of extent 1
// never steps, so its stride says nothing.
inline bool Contiguous(const CFI_cdesc_t* dv) {
    if (AssumedSize(dv)) return true;
    CFI_index_t expected = static_cast<CFI_index_t>(dv->elem_len);
    bool gapless = true;
    for (int d = 0; d < dv->rank; ++d) {
        const CFI_dim_t& dim = dv->dim[d];
        if (dim.extent == 0) return true;
        if (dim.extent == 1) continue;
        if (dim.sm != expected || __builtin_mul_overflow(expected, dim.extent, &expected)) gapless = false;
    }
    return gapless;
}

}  // namespace cfi
