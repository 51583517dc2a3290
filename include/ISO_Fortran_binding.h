/*
 * ISO_Fortran_binding.h: C descriptors of Fortran objects, and the procedures that make
 * and use them, as the Fortran 2018 standard gives them. C code that receives an
 * assumed-shape, assumed-rank, allocatable or pointer dummy of a BIND(C) procedure sees
 * it through a CFI_cdesc_t. Usable from C11 and from C++.
 */
#ifndef ISO_FORTRAN_BINDING_H
#define ISO_FORTRAN_BINDING_H

#include <limits.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define CFI_VERSION  1
#define CFI_MAX_RANK 20

typedef ptrdiff_t CFI_index_t;
typedef signed char CFI_rank_t;
typedef signed char CFI_attribute_t;
typedef short CFI_type_t;

typedef struct CFI_dim_t {
    CFI_index_t lower_bound;
    CFI_index_t extent; /* -1 in the last dimension of an assumed-size array */
    CFI_index_t sm;     /* bytes between successive elements along the dimension */
} CFI_dim_t;

typedef struct CFI_cdesc_t {
    void* base_addr;
    size_t elem_len;
    int version;
    CFI_rank_t rank;
    CFI_attribute_t attribute;
    CFI_type_t type;
    CFI_dim_t dim[]; /* dim[0] is the first Fortran dimension */
} CFI_cdesc_t;

/* A C descriptor of rank r, to be used through a cast to CFI_cdesc_t *. Rank 0 keeps one
 * entry, as C has no arrays of length 0. */
#define CFI_CDESC_T(r)                \
    struct {                          \
        void* base_addr;              \
        size_t elem_len;              \
        int version;                  \
        CFI_rank_t rank;              \
        CFI_attribute_t attribute;    \
        CFI_type_t type;              \
        CFI_dim_t dim[(r) > 0 ? (r) : 1]; \
    }

#define CFI_attribute_pointer     1
#define CFI_attribute_allocatable 2
#define CFI_attribute_other       3

/* ---- Type codes --------------------------------------------------------------------
 * An intrinsic type's code is its category in the low byte and its Fortran kind above it,
 * so that CFI_type_int32_t is INTEGER(4) and CFI_type_double_Complex is COMPLEX(8). A type
 * that has no interoperable Fortran type here has a negative code. */
#define CFI_KIND_SHIFT     8
#define CFI_CATEGORY_MASK  0xff
#define CFI_category_integer   1
#define CFI_category_logical   2
#define CFI_category_real      3
#define CFI_category_complex   4
#define CFI_category_character 5
#define CFI_category_byte      9
#define CFI_TYPE_CODE(category, kind) ((category) + ((kind) << CFI_KIND_SHIFT))
#define CFI_INTEGER_OF_SIZE(bytes) CFI_TYPE_CODE(CFI_category_integer, bytes)

#define CFI_type_signed_char CFI_INTEGER_OF_SIZE(1)
#define CFI_type_short       CFI_INTEGER_OF_SIZE(2)
#define CFI_type_int         CFI_INTEGER_OF_SIZE(4)
#if LONG_MAX == INT32_MAX
#define CFI_type_long CFI_INTEGER_OF_SIZE(4)
#else
#define CFI_type_long CFI_INTEGER_OF_SIZE(8)
#endif
#define CFI_type_long_long CFI_INTEGER_OF_SIZE(8)
#if SIZE_MAX == UINT32_MAX
#define CFI_type_size_t    CFI_INTEGER_OF_SIZE(4)
#define CFI_type_intptr_t  CFI_INTEGER_OF_SIZE(4)
#define CFI_type_ptrdiff_t CFI_INTEGER_OF_SIZE(4)
#else
#define CFI_type_size_t    CFI_INTEGER_OF_SIZE(8)
#define CFI_type_intptr_t  CFI_INTEGER_OF_SIZE(8)
#define CFI_type_ptrdiff_t CFI_INTEGER_OF_SIZE(8)
#endif
#define CFI_type_int8_t        CFI_INTEGER_OF_SIZE(1)
#define CFI_type_int16_t       CFI_INTEGER_OF_SIZE(2)
#define CFI_type_int32_t       CFI_INTEGER_OF_SIZE(4)
#define CFI_type_int64_t       CFI_INTEGER_OF_SIZE(8)
#define CFI_type_int_least8_t  CFI_INTEGER_OF_SIZE(1)
#define CFI_type_int_least16_t CFI_INTEGER_OF_SIZE(2)
#define CFI_type_int_least32_t CFI_INTEGER_OF_SIZE(4)
#define CFI_type_int_least64_t CFI_INTEGER_OF_SIZE(8)
#define CFI_type_int_fast8_t   CFI_INTEGER_OF_SIZE(1)
#if INT_FAST16_MAX == INT16_MAX
#define CFI_type_int_fast16_t CFI_INTEGER_OF_SIZE(2)
#elif INT_FAST16_MAX == INT32_MAX
#define CFI_type_int_fast16_t CFI_INTEGER_OF_SIZE(4)
#else
#define CFI_type_int_fast16_t CFI_INTEGER_OF_SIZE(8)
#endif
#if INT_FAST32_MAX == INT32_MAX
#define CFI_type_int_fast32_t CFI_INTEGER_OF_SIZE(4)
#else
#define CFI_type_int_fast32_t CFI_INTEGER_OF_SIZE(8)
#endif
#define CFI_type_int_fast64_t CFI_INTEGER_OF_SIZE(8)
#define CFI_type_intmax_t     CFI_INTEGER_OF_SIZE(8)

#define CFI_type_float          CFI_TYPE_CODE(CFI_category_real, 4)
#define CFI_type_double         CFI_TYPE_CODE(CFI_category_real, 8)
#define CFI_type_float_Complex  CFI_TYPE_CODE(CFI_category_complex, 4)
#define CFI_type_double_Complex CFI_TYPE_CODE(CFI_category_complex, 8)
/* REAL(16) is a pair of doubles; C's long double is that only where it has 106 bits. */
#if defined(__LDBL_MANT_DIG__) && __LDBL_MANT_DIG__ == 106
#define CFI_type_long_double         CFI_TYPE_CODE(CFI_category_real, 16)
#define CFI_type_long_double_Complex CFI_TYPE_CODE(CFI_category_complex, 16)
#else
#define CFI_type_long_double         (-2)
#define CFI_type_long_double_Complex (-3)
#endif

#define CFI_type_Bool    CFI_TYPE_CODE(CFI_category_logical, 1)
#define CFI_type_char    CFI_TYPE_CODE(CFI_category_character, 1)
#define CFI_type_struct  6
#define CFI_type_cptr    7
#define CFI_type_cfunptr 8
#define CFI_type_other   (-1)

/* The library's intrinsic types that have no C counterpart. */
#define CFI_type_logical2  CFI_TYPE_CODE(CFI_category_logical, 2)
#define CFI_type_logical4  CFI_TYPE_CODE(CFI_category_logical, 4)
#define CFI_type_logical8  CFI_TYPE_CODE(CFI_category_logical, 8)
#define CFI_type_real16    CFI_TYPE_CODE(CFI_category_real, 16)
#define CFI_type_complex32 CFI_TYPE_CODE(CFI_category_complex, 16)
#define CFI_type_byte      CFI_TYPE_CODE(CFI_category_byte, 1)

/* ---- Error codes ---------------------------------------------------------------- */
#define CFI_SUCCESS                  0
#define CFI_ERROR_BASE_ADDR_NULL     1
#define CFI_ERROR_BASE_ADDR_NOT_NULL 2
#define CFI_INVALID_ELEM_LEN         3
#define CFI_INVALID_RANK             4
#define CFI_INVALID_TYPE             5
#define CFI_INVALID_ATTRIBUTE        6
#define CFI_INVALID_EXTENT           7
#define CFI_INVALID_DESCRIPTOR       8
#define CFI_ERROR_MEM_ALLOCATION     9
#define CFI_ERROR_OUT_OF_BOUNDS      10

/* ---- Procedures ------------------------------------------------------------------ */
void* CFI_address(const CFI_cdesc_t* dv, const CFI_index_t subscripts[]);
int CFI_allocate(CFI_cdesc_t* dv, const CFI_index_t lower_bounds[], const CFI_index_t upper_bounds[],
                 size_t elem_len);
int CFI_deallocate(CFI_cdesc_t* dv);
int CFI_establish(CFI_cdesc_t* dv, void* base_addr, CFI_attribute_t attribute, CFI_type_t type, size_t elem_len,
                  CFI_rank_t rank, const CFI_index_t extents[]);
int CFI_is_contiguous(const CFI_cdesc_t* dv);
int CFI_section(CFI_cdesc_t* result, const CFI_cdesc_t* source, const CFI_index_t lower_bounds[],
                const CFI_index_t upper_bounds[], const CFI_index_t strides[]);
int CFI_select_part(CFI_cdesc_t* result, const CFI_cdesc_t* source, size_t displacement, size_t elem_len);
int CFI_setpointer(CFI_cdesc_t* result, CFI_cdesc_t* source, const CFI_index_t lower_bounds[]);

/* CFI_address is called once an element, so the header also gives it inline, where the
 * compiler can keep the subscripts in registers; the function above answers the same.
 * Define CFI_NO_INLINE_ADDRESS to call the function always. */
#ifndef CFI_NO_INLINE_ADDRESS
/* Moves *address to the subscript along dimension d; 0 when it lies outside. Unsigned
 * arithmetic: a subscript below the lower bound wraps to a huge offset and fails the same
 * comparison as one beyond the upper bound. */
static inline int __vrn_cfi_step(const CFI_cdesc_t* dv, int d, CFI_index_t subscript, uintptr_t* address) {
    const CFI_dim_t* dim = &dv->dim[d];
    size_t offset = (size_t)subscript - (size_t)dim->lower_bound;
    if (offset >= (size_t)dim->extent && !(dim->extent == -1 && d == dv->rank - 1 && (CFI_index_t)offset >= 0)) {
        return 0;
    }
    *address += offset * (size_t)dim->sm;
    return 1;
}

static inline void* __vrn_cfi_address(const CFI_cdesc_t* dv, const CFI_index_t subscripts[]) {
    if (dv == NULL || dv->base_addr == NULL) return NULL;
    int rank = dv->rank;
    if (rank == 0) return dv->base_addr;
    if (subscripts == NULL) return NULL;
    /* An address, not a char *: a negative stride adds a wrapped unsigned step. */
    uintptr_t address = (uintptr_t)dv->base_addr;
    int inside = 1;
    switch (rank) {
    case 1: inside = __vrn_cfi_step(dv, 0, subscripts[0], &address); break;
    case 2:
        inside = __vrn_cfi_step(dv, 0, subscripts[0], &address) && __vrn_cfi_step(dv, 1, subscripts[1], &address);
        break;
    case 3:
        inside = __vrn_cfi_step(dv, 0, subscripts[0], &address) && __vrn_cfi_step(dv, 1, subscripts[1], &address) &&
                 __vrn_cfi_step(dv, 2, subscripts[2], &address);
        break;
    default:
        for (int d = 0; d < rank && inside; ++d) inside = __vrn_cfi_step(dv, d, subscripts[d], &address);
    }
    return inside ? (void*)address : NULL;
}
#define CFI_address(dv, subscripts) __vrn_cfi_address((dv), (subscripts))
#endif

#ifdef __cplusplus
}
#endif

#endif
