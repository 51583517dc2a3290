// The C descriptor procedures of ISO_Fortran_binding.h. Every one checks what it can of
// its arguments and, on an error, leaves the descriptors it would write as they were: the
// new contents are worked out first and stored only when nothing failed.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/export.h"
#include "desc/cfi.h"

namespace {

using cfi::Valid;

// Index arithmetic that reports overflow instead of wrapping: wild arguments must give an
// error code, not undefined behaviour.
bool Multiply(CFI_index_t a, CFI_index_t b, CFI_index_t* result) { return !__builtin_mul_overflow(a, b, result); }
bool Add(CFI_index_t a, CFI_index_t b, CFI_index_t* result) { return !__builtin_add_overflow(a, b, result); }
bool Subtract(CFI_index_t a, CFI_index_t b, CFI_index_t* result) { return !__builtin_sub_overflow(a, b, result); }

// Memory strides of a contiguous array of `length`-byte elements; false on overflow.
bool ContiguousStrides(CFI_dim_t* dims, int rank, size_t length, size_t* bytes) {
    CFI_index_t running = static_cast<CFI_index_t>(length);
    if (running < 0) return false;
    for (int d = 0; d < rank; ++d) {
        dims[d].sm = running;
        if (!Multiply(running, dims[d].extent, &running)) return false;
    }
    *bytes = static_cast<size_t>(running);
    return true;
}

// A subscript inside dimension `d` of `dv`; the last dimension of an assumed-size array
// has no upper bound.
bool InBounds(const CFI_cdesc_t* dv, int d, CFI_index_t subscript) {
    const CFI_dim_t& dim = dv->dim[d];
    CFI_index_t offset;
    if (!Subtract(subscript, dim.lower_bound, &offset)) return false;
    if (dim.extent == -1 && d == dv->rank - 1) return offset >= 0;
    return offset >= 0 && offset < dim.extent;
}

}  // namespace

// The header gives the same code inline; this is the function behind it, for callers
// that take its address or define CFI_NO_INLINE_ADDRESS.
VRN_EXPORT void* (CFI_address)(const CFI_cdesc_t* dv, const CFI_index_t subscripts[]) {
    return __vrn_cfi_address(dv, subscripts);
}

VRN_EXPORT int CFI_establish(CFI_cdesc_t* dv, void* base_addr, CFI_attribute_t attribute, CFI_type_t type,
                             size_t elem_len, CFI_rank_t rank, const CFI_index_t extents[]) {
    if (dv == nullptr) return CFI_INVALID_DESCRIPTOR;
    if (attribute < CFI_attribute_pointer || attribute > CFI_attribute_other) return CFI_INVALID_ATTRIBUTE;
    // Data makes the object nonallocatable, so the attribute is what is wrong.
    if (attribute == CFI_attribute_allocatable && base_addr != nullptr) return CFI_INVALID_ATTRIBUTE;
    cfi::TypeFacts facts = cfi::Facts(type);
    if (!facts.known) return CFI_INVALID_TYPE;
    size_t length = facts.length;
    if (cfi::LengthIsGiven(type)) {
        if (elem_len == 0) return CFI_INVALID_ELEM_LEN;
        length = elem_len;
    }
    if (rank < 0 || rank > CFI_MAX_RANK) return CFI_INVALID_RANK;

    // Without data the extents are not read: an unallocated allocatable, a disassociated
    // pointer, or a descriptor that describes nothing yet.
    CFI_dim_t dims[CFI_MAX_RANK];
    bool hasShape = base_addr != nullptr && rank > 0;
    if (hasShape) {
        if (extents == nullptr) return CFI_INVALID_EXTENT;
        for (int d = 0; d < rank; ++d) {
            if (extents[d] < 0) return CFI_INVALID_EXTENT;
            dims[d].lower_bound = 0;
            dims[d].extent = extents[d];
        }
        size_t bytes;
        if (!ContiguousStrides(dims, rank, length, &bytes)) return CFI_INVALID_EXTENT;
    }
    dv->base_addr = base_addr;
    dv->elem_len = length;
    dv->version = CFI_VERSION;
    dv->rank = rank;
    dv->attribute = attribute;
    dv->type = type;
    if (hasShape) std::memcpy(dv->dim, dims, sizeof(CFI_dim_t) * static_cast<size_t>(rank));
    return CFI_SUCCESS;
}

VRN_EXPORT int CFI_allocate(CFI_cdesc_t* dv, const CFI_index_t lower_bounds[], const CFI_index_t upper_bounds[],
                            size_t elem_len) {
    if (!Valid(dv)) return CFI_INVALID_DESCRIPTOR;
    if (dv->attribute == CFI_attribute_other) return CFI_INVALID_ATTRIBUTE;
    if (dv->base_addr != nullptr) return CFI_ERROR_BASE_ADDR_NOT_NULL;
    size_t length = cfi::IsCharacter(dv->type) ? elem_len : dv->elem_len;
    int rank = dv->rank;
    if (rank > 0 && (lower_bounds == nullptr || upper_bounds == nullptr)) return CFI_INVALID_EXTENT;

    CFI_dim_t dims[CFI_MAX_RANK];
    for (int d = 0; d < rank; ++d) {
        CFI_index_t extent;
        // As ALLOCATE, an upper bound below the lower one makes the dimension empty.
        if (upper_bounds[d] < lower_bounds[d]) {
            extent = 0;
        } else if (!Subtract(upper_bounds[d], lower_bounds[d], &extent) || !Add(extent, 1, &extent)) {
            return CFI_ERROR_MEM_ALLOCATION;
        }
        dims[d].lower_bound = lower_bounds[d];
        dims[d].extent = extent;
    }
    size_t bytes;
    if (!ContiguousStrides(dims, rank, length, &bytes)) return CFI_ERROR_MEM_ALLOCATION;
    // An empty object is allocated too: a null address would read as unallocated.
    void* data = std::malloc(bytes == 0 ? 1 : bytes);
    if (data == nullptr) return CFI_ERROR_MEM_ALLOCATION;
    dv->base_addr = data;
    dv->elem_len = length;
    std::memcpy(dv->dim, dims, sizeof(CFI_dim_t) * static_cast<size_t>(rank));
    return CFI_SUCCESS;
}

VRN_EXPORT int CFI_deallocate(CFI_cdesc_t* dv) {
    if (!Valid(dv)) return CFI_INVALID_DESCRIPTOR;
    if (dv->attribute == CFI_attribute_other) return CFI_INVALID_ATTRIBUTE;
    if (dv->base_addr == nullptr) return CFI_ERROR_BASE_ADDR_NULL;
    std::free(dv->base_addr);
    dv->base_addr = nullptr;
    return CFI_SUCCESS;
}

VRN_EXPORT int CFI_is_contiguous(const CFI_cdesc_t* dv) {
    // Only an array with data can be found contiguous; anything else answers 0.
    if (!Valid(dv) || dv->base_addr == nullptr || dv->rank == 0) return 0;
    return cfi::Contiguous(dv) ? 1 : 0;
}

VRN_EXPORT int CFI_section(CFI_cdesc_t* result, const CFI_cdesc_t* source, const CFI_index_t lower_bounds[],
                           const CFI_index_t upper_bounds[], const CFI_index_t strides[]) {
    if (!Valid(source) || !Valid(result)) return CFI_INVALID_DESCRIPTOR;
    if (result->attribute == CFI_attribute_allocatable) return CFI_INVALID_ATTRIBUTE;
    if (source->base_addr == nullptr) return CFI_ERROR_BASE_ADDR_NULL;
    if (source->rank == 0) return CFI_INVALID_RANK;
    if (result->type != source->type) return CFI_INVALID_TYPE;
    if (result->elem_len != source->elem_len) return CFI_INVALID_ELEM_LEN;
    if (cfi::AssumedSize(source) && upper_bounds == nullptr) return CFI_INVALID_EXTENT;

    CFI_dim_t dims[CFI_MAX_RANK];
    int kept = 0;
    bool empty = false;
    CFI_index_t offset = 0;
    for (int d = 0; d < source->rank; ++d) {
        const CFI_dim_t& from = source->dim[d];
        CFI_index_t first = lower_bounds ? lower_bounds[d] : from.lower_bound;
        CFI_index_t last = 0;
        if (upper_bounds != nullptr) {
            last = upper_bounds[d];
        } else if (!Add(from.lower_bound, from.extent, &last) || !Subtract(last, 1, &last)) {
            return CFI_INVALID_DESCRIPTOR;
        }
        CFI_index_t stride = strides ? strides[d] : 1;
        // Where the dimension starts, relative to the source's first element.
        CFI_index_t start = 0;
        if (stride == 0) {
            // A subscript, not a triplet: the dimension goes.
            if (first != last || !InBounds(source, d, first)) return CFI_ERROR_OUT_OF_BOUNDS;
            if (!Multiply(first - from.lower_bound, from.sm, &start) || !Add(offset, start, &offset)) {
                return CFI_ERROR_OUT_OF_BOUNDS;
            }
            continue;
        }
        CFI_index_t span;
        if (!Subtract(last, first, &span)) return CFI_ERROR_OUT_OF_BOUNDS;
        // Same signs: the triplet reaches span / stride steps beyond its first subscript.
        if (stride == -1 && span == PTRDIFF_MIN) return CFI_ERROR_OUT_OF_BOUNDS;
        CFI_index_t extent = 0;
        if ((span == 0 || (span < 0) == (stride < 0)) && !Add(span / stride, 1, &extent)) return CFI_ERROR_OUT_OF_BOUNDS;
        CFI_index_t memoryStride;
        if (!Multiply(stride, from.sm, &memoryStride)) return CFI_ERROR_OUT_OF_BOUNDS;
        if (extent > 0) {
            // The first and the last element chosen bound all the others.
            CFI_index_t reached = first + (extent - 1) * stride;
            if (!InBounds(source, d, first) || !InBounds(source, d, reached)) return CFI_ERROR_OUT_OF_BOUNDS;
            if (!Multiply(first - from.lower_bound, from.sm, &start) || !Add(offset, start, &offset)) {
                return CFI_ERROR_OUT_OF_BOUNDS;
            }
        } else {
            empty = true;
        }
        if (kept == result->rank) return CFI_INVALID_RANK;
        dims[kept++] = CFI_dim_t{0, extent, memoryStride};
    }
    if (kept != result->rank) return CFI_INVALID_RANK;
    result->base_addr = static_cast<char*>(source->base_addr) + (empty ? 0 : offset);
    std::memcpy(result->dim, dims, sizeof(CFI_dim_t) * static_cast<size_t>(kept));
    return CFI_SUCCESS;
}

VRN_EXPORT int CFI_select_part(CFI_cdesc_t* result, const CFI_cdesc_t* source, size_t displacement,
                               size_t elem_len) {
    if (!Valid(source) || !Valid(result)) return CFI_INVALID_DESCRIPTOR;
    if (result->attribute == CFI_attribute_allocatable) return CFI_INVALID_ATTRIBUTE;
    if (source->base_addr == nullptr) return CFI_ERROR_BASE_ADDR_NULL;
    if (result->rank != source->rank) return CFI_INVALID_RANK;
    if (displacement >= source->elem_len) return CFI_ERROR_OUT_OF_BOUNDS;
    size_t room = source->elem_len - displacement;
    size_t length = result->elem_len;
    if (cfi::IsCharacter(result->type)) {
        if (elem_len == 0 || elem_len > room) return CFI_INVALID_ELEM_LEN;
        length = elem_len;
    } else if (length > room) {
        return CFI_ERROR_OUT_OF_BOUNDS;
    }
    // The part has the shape and strides of the whole; only a pointer keeps its bounds.
    result->base_addr = static_cast<char*>(source->base_addr) + displacement;
    result->elem_len = length;
    bool keepBounds = result->attribute == CFI_attribute_pointer;
    for (int d = 0; d < source->rank; ++d) {
        const CFI_dim_t& from = source->dim[d];
        result->dim[d] = CFI_dim_t{keepBounds ? from.lower_bound : 0, from.extent, from.sm};
    }
    return CFI_SUCCESS;
}

VRN_EXPORT int CFI_setpointer(CFI_cdesc_t* result, CFI_cdesc_t* source, const CFI_index_t lower_bounds[]) {
    if (!Valid(result)) return CFI_INVALID_DESCRIPTOR;
    if (result->attribute != CFI_attribute_pointer) return CFI_INVALID_ATTRIBUTE;
    if (source != nullptr) {
        if (!Valid(source)) return CFI_INVALID_DESCRIPTOR;
        if (source->rank != result->rank) return CFI_INVALID_RANK;
        if (source->type != result->type) return CFI_INVALID_TYPE;
        if (source->elem_len != result->elem_len) return CFI_INVALID_ELEM_LEN;
    }
    if (source == nullptr || source->base_addr == nullptr) {
        result->base_addr = nullptr;
        return CFI_SUCCESS;
    }
    // result may be source itself, so each entry is read before it is written.
    result->base_addr = source->base_addr;
    for (int d = 0; d < source->rank; ++d) {
        CFI_dim_t from = source->dim[d];
        if (lower_bounds != nullptr) from.lower_bound = lower_bounds[d];
        result->dim[d] = from;
    }
    return CFI_SUCCESS;
}
