/* One sequence of C descriptor calls, written against ISO_Fortran_binding.h alone. Built
 * once with this library's header and once with gfortran's, it must print the same lines:
 * the layouts may differ, the answers may not. Only what the standard fixes is printed. */
#include <ISO_Fortran_binding.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

static const char* Name(int code) {
    switch (code) {
    case CFI_SUCCESS: return "CFI_SUCCESS";
    case CFI_ERROR_BASE_ADDR_NULL: return "CFI_ERROR_BASE_ADDR_NULL";
    case CFI_ERROR_BASE_ADDR_NOT_NULL: return "CFI_ERROR_BASE_ADDR_NOT_NULL";
    case CFI_INVALID_ELEM_LEN: return "CFI_INVALID_ELEM_LEN";
    case CFI_INVALID_RANK: return "CFI_INVALID_RANK";
    case CFI_INVALID_TYPE: return "CFI_INVALID_TYPE";
    case CFI_INVALID_ATTRIBUTE: return "CFI_INVALID_ATTRIBUTE";
    case CFI_INVALID_EXTENT: return "CFI_INVALID_EXTENT";
    case CFI_INVALID_DESCRIPTOR: return "CFI_INVALID_DESCRIPTOR";
    case CFI_ERROR_MEM_ALLOCATION: return "CFI_ERROR_MEM_ALLOCATION";
    case CFI_ERROR_OUT_OF_BOUNDS: return "CFI_ERROR_OUT_OF_BOUNDS";
    default: return "unknown";
    }
}

static void Report(const char* what, int code) { printf("%s: %s\n", what, Name(code)); }

static void Shape(const char* what, const CFI_cdesc_t* d) {
    printf("%s: rank %d elem_len %zu", what, (int)d->rank, d->elem_len);
    for (int i = 0; i < d->rank; ++i) {
        printf(" [%td %td %td]", d->dim[i].lower_bound, d->dim[i].extent, d->dim[i].sm);
    }
    printf("\n");
}

/* Every element of a rank-2 array of doubles, in array element order. */
static void Doubles2(const char* what, const CFI_cdesc_t* d) {
    printf("%s:", what);
    CFI_index_t at[2];
    for (CFI_index_t j = 0; j < d->dim[1].extent; ++j) {
        for (CFI_index_t i = 0; i < d->dim[0].extent; ++i) {
            at[0] = d->dim[0].lower_bound + i;
            at[1] = d->dim[1].lower_bound + j;
            printf(" %g", *(double*)CFI_address(d, at));
        }
    }
    printf("\n");
}

typedef struct {
    double weight;
    int count;
    char label[6];
} Item;

int main(void) {
    double grid[5][6]; /* a 6 x 5 Fortran array */
    for (int j = 0; j < 5; ++j)
        for (int i = 0; i < 6; ++i) grid[j][i] = i + 10 * j;
    CFI_index_t extents[2] = {6, 5};
    CFI_CDESC_T(2) whole;
    Report("establish grid", CFI_establish((CFI_cdesc_t*)&whole, grid, CFI_attribute_other, CFI_type_double, 0, 2, extents));
    Shape("grid", (CFI_cdesc_t*)&whole);
    printf("grid contiguous: %d\n", CFI_is_contiguous((CFI_cdesc_t*)&whole));

    /* grid(1:5:2, 4:0:-2) and grid(3, 1:4) */
    CFI_CDESC_T(2) section;
    CFI_CDESC_T(1) row;
    CFI_establish((CFI_cdesc_t*)&section, NULL, CFI_attribute_other, CFI_type_double, 0, 2, NULL);
    CFI_establish((CFI_cdesc_t*)&row, NULL, CFI_attribute_other, CFI_type_double, 0, 1, NULL);
    CFI_index_t lower[2] = {1, 4}, upper[2] = {5, 0}, strides[2] = {2, -2};
    Report("section", CFI_section((CFI_cdesc_t*)&section, (CFI_cdesc_t*)&whole, lower, upper, strides));
    Shape("section", (CFI_cdesc_t*)&section);
    Doubles2("section values", (CFI_cdesc_t*)&section);
    printf("section contiguous: %d\n", CFI_is_contiguous((CFI_cdesc_t*)&section));
    CFI_index_t rowLower[2] = {3, 1}, rowUpper[2] = {3, 4}, rowStrides[2] = {0, 1};
    Report("row", CFI_section((CFI_cdesc_t*)&row, (CFI_cdesc_t*)&whole, rowLower, rowUpper, rowStrides));
    Shape("row", (CFI_cdesc_t*)&row);
    printf("row values:");
    for (CFI_index_t i = 0; i < row.dim[0].extent; ++i) printf(" %g", *(double*)CFI_address((CFI_cdesc_t*)&row, &i));
    printf("\n");
    /* A section of a section: every other element of the row, backwards. */
    CFI_CDESC_T(1) sparse;
    CFI_establish((CFI_cdesc_t*)&sparse, NULL, CFI_attribute_other, CFI_type_double, 0, 1, NULL);
    CFI_index_t from[1] = {3}, to[1] = {0}, by[1] = {-2};
    Report("sparse", CFI_section((CFI_cdesc_t*)&sparse, (CFI_cdesc_t*)&row, from, to, by));
    printf("sparse values:");
    for (CFI_index_t i = 0; i < sparse.dim[0].extent; ++i) printf(" %g", *(double*)CFI_address((CFI_cdesc_t*)&sparse, &i));
    printf("\n");

    /* Components and substrings of an array of structures, through pointers. */
    Item items[4];
    for (int i = 0; i < 4; ++i) {
        items[i].weight = 0.5 * i;
        items[i].count = 100 + i;
        snprintf(items[i].label, sizeof items[i].label, "it-%d", i);
    }
    CFI_CDESC_T(1) all, counts, labels;
    CFI_index_t four[1] = {4};
    Report("establish items", CFI_establish((CFI_cdesc_t*)&all, items, CFI_attribute_other, CFI_type_struct, sizeof(Item), 1, four));
    CFI_establish((CFI_cdesc_t*)&counts, NULL, CFI_attribute_pointer, CFI_type_int, 0, 1, NULL);
    CFI_establish((CFI_cdesc_t*)&labels, NULL, CFI_attribute_pointer, CFI_type_char, 1, 1, NULL);
    Report("counts", CFI_select_part((CFI_cdesc_t*)&counts, (CFI_cdesc_t*)&all, offsetof(Item, count), 0));
    Shape("counts", (CFI_cdesc_t*)&counts);
    Report("labels", CFI_select_part((CFI_cdesc_t*)&labels, (CFI_cdesc_t*)&all, offsetof(Item, label) + 1, 3));
    Shape("labels", (CFI_cdesc_t*)&labels);
    for (CFI_index_t i = 0; i < 4; ++i) {
        printf("item %td: count %d label %.3s\n", i, *(int*)CFI_address((CFI_cdesc_t*)&counts, &i),
               (char*)CFI_address((CFI_cdesc_t*)&labels, &i));
    }

    /* Allocation with bounds of the caller's choosing, then a pointer into it. */
    CFI_CDESC_T(2) heap;
    CFI_establish((CFI_cdesc_t*)&heap, NULL, CFI_attribute_allocatable, CFI_type_int64_t, 0, 2, NULL);
    CFI_index_t low[2] = {-2, 3}, high[2] = {1, 5};
    Report("allocate", CFI_allocate((CFI_cdesc_t*)&heap, low, high, 0));
    Shape("heap", (CFI_cdesc_t*)&heap);
    printf("heap contiguous: %d\n", CFI_is_contiguous((CFI_cdesc_t*)&heap));
    for (CFI_index_t j = 3; j <= 5; ++j) {
        for (CFI_index_t i = -2; i <= 1; ++i) {
            CFI_index_t at[2] = {i, j};
            *(long long*)CFI_address((CFI_cdesc_t*)&heap, at) = 100 * j + i;
        }
    }
    Report("allocate again", CFI_allocate((CFI_cdesc_t*)&heap, low, high, 0));
    CFI_CDESC_T(2) view;
    CFI_establish((CFI_cdesc_t*)&view, NULL, CFI_attribute_pointer, CFI_type_int64_t, 0, 2, NULL);
    CFI_index_t origin[2] = {1, 1};
    Report("setpointer", CFI_setpointer((CFI_cdesc_t*)&view, (CFI_cdesc_t*)&heap, origin));
    Shape("view", (CFI_cdesc_t*)&view);
    CFI_index_t corner[2] = {4, 3};
    printf("view(4,3): %lld\n", *(long long*)CFI_address((CFI_cdesc_t*)&view, corner));
    Report("setpointer null", CFI_setpointer((CFI_cdesc_t*)&view, NULL, NULL));
    printf("view associated: %d\n", view.base_addr != NULL);
    Report("deallocate", CFI_deallocate((CFI_cdesc_t*)&heap));
    printf("heap allocated: %d\n", heap.base_addr != NULL);

    CFI_CDESC_T(1) text;
    CFI_establish((CFI_cdesc_t*)&text, NULL, CFI_attribute_allocatable, CFI_type_char, 1, 1, NULL);
    CFI_index_t one[1] = {1}, three[1] = {3};
    Report("allocate text", CFI_allocate((CFI_cdesc_t*)&text, one, three, 12));
    Shape("text", (CFI_cdesc_t*)&text);
    Report("deallocate text", CFI_deallocate((CFI_cdesc_t*)&text));

    /* Errors the standard names. */
    Report("deallocate twice", CFI_deallocate((CFI_cdesc_t*)&heap));
    Report("allocate other", CFI_allocate((CFI_cdesc_t*)&whole, low, high, 0));
    Report("establish allocatable with data",
           CFI_establish((CFI_cdesc_t*)&section, grid, CFI_attribute_allocatable, CFI_type_double, 0, 2, extents));
    Report("establish struct of length 0",
           CFI_establish((CFI_cdesc_t*)&section, grid, CFI_attribute_other, CFI_type_struct, 0, 2, extents));
    Report("establish rank beyond the maximum",
           CFI_establish((CFI_cdesc_t*)&section, grid, CFI_attribute_other, CFI_type_double, 0, CFI_MAX_RANK + 1, extents));
    Report("section into an allocatable", CFI_section((CFI_cdesc_t*)&heap, (CFI_cdesc_t*)&whole, NULL, NULL, NULL));
    Report("setpointer into an allocatable", CFI_setpointer((CFI_cdesc_t*)&heap, (CFI_cdesc_t*)&whole, NULL));
    Report("select from an unallocated array", CFI_select_part((CFI_cdesc_t*)&counts, (CFI_cdesc_t*)&text, 0, 0));
    return 0;
}
