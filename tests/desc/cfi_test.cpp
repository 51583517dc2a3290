// The C descriptor procedures as a C programmer calls them: every error code where the
// standard says the procedure detects it, descriptors untouched by a failed call, and the
// elements of sections and parts checked against index arithmetic done here.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "ISO_Fortran_binding.h"
#include "tests/support/fortran.h"
#include "vrn90.h"

namespace {

constexpr size_t kWord = sizeof(void*);

// The record's order and size are those of the standard on every platform: two address
// words, the version, then rank, attribute and type packed into one more word.
static_assert(offsetof(CFI_cdesc_t, base_addr) == 0);
static_assert(offsetof(CFI_cdesc_t, elem_len) == kWord);
static_assert(offsetof(CFI_cdesc_t, version) == 2 * kWord);
static_assert(offsetof(CFI_cdesc_t, rank) == 2 * kWord + 4);
static_assert(offsetof(CFI_cdesc_t, attribute) == 2 * kWord + 5);
static_assert(offsetof(CFI_cdesc_t, type) == 2 * kWord + 6);
static_assert(offsetof(CFI_cdesc_t, dim) == 2 * kWord + 8);
static_assert(sizeof(CFI_dim_t) == 3 * kWord);
typedef CFI_CDESC_T(3) Rank3Descriptor;
static_assert(sizeof(Rank3Descriptor) == sizeof(CFI_cdesc_t) + 3 * sizeof(CFI_dim_t));
static_assert(CFI_MAX_RANK == RTD_MAX_RANK);

// A descriptor with room for any rank, filled with a pattern so that a call that should
// not write can be caught writing.
struct Descriptor {
    alignas(CFI_cdesc_t) unsigned char storage[sizeof(CFI_cdesc_t) + CFI_MAX_RANK * sizeof(CFI_dim_t)];
    Descriptor() { std::memset(storage, 0xA5, sizeof storage); }
    CFI_cdesc_t* get() { return reinterpret_cast<CFI_cdesc_t*>(storage); }
    CFI_cdesc_t* operator->() { return get(); }
    std::vector<unsigned char> Bytes() const { return {storage, storage + sizeof storage}; }
};

Descriptor Established(void* base, CFI_attribute_t attribute, CFI_type_t type, size_t length,
                       std::vector<CFI_index_t> extents) {
    Descriptor d;
    EXPECT_EQ(CFI_establish(d.get(), base, attribute, type, length, static_cast<CFI_rank_t>(extents.size()),
                            extents.data()),
              CFI_SUCCESS);
    return d;
}

TEST(CDescriptorTypes, EveryCodeOfTheHeaderIsDistinctWhereItsTypeDiffers) {
    struct Code {
        CFI_type_t value;
        size_t length;  // of an element; 0 where the caller gives it
    };
    const Code interoperable[] = {
        {CFI_type_signed_char, 1}, {CFI_type_short, sizeof(short)}, {CFI_type_int, sizeof(int)},
        {CFI_type_long, sizeof(long)}, {CFI_type_long_long, sizeof(long long)}, {CFI_type_size_t, sizeof(size_t)},
        {CFI_type_int8_t, 1}, {CFI_type_int16_t, 2}, {CFI_type_int32_t, 4}, {CFI_type_int64_t, 8},
        {CFI_type_int_least8_t, 1}, {CFI_type_int_least16_t, 2}, {CFI_type_int_least32_t, 4},
        {CFI_type_int_least64_t, 8}, {CFI_type_int_fast8_t, sizeof(int_fast8_t)},
        {CFI_type_int_fast16_t, sizeof(int_fast16_t)}, {CFI_type_int_fast32_t, sizeof(int_fast32_t)},
        {CFI_type_int_fast64_t, sizeof(int_fast64_t)}, {CFI_type_intmax_t, sizeof(intmax_t)},
        {CFI_type_intptr_t, sizeof(intptr_t)}, {CFI_type_ptrdiff_t, sizeof(ptrdiff_t)}, {CFI_type_float, 4},
        {CFI_type_double, 8}, {CFI_type_float_Complex, 8}, {CFI_type_double_Complex, 16}, {CFI_type_Bool, 1},
        {CFI_type_char, 0}, {CFI_type_cptr, sizeof(void*)}, {CFI_type_cfunptr, sizeof(void (*)())},
        {CFI_type_struct, 0}, {CFI_type_logical2, 2}, {CFI_type_logical4, 4}, {CFI_type_logical8, 8},
        {CFI_type_real16, 16}, {CFI_type_complex32, 32}, {CFI_type_byte, 1},
    };
    for (const Code& code : interoperable) {
        EXPECT_GT(code.value, 0);
        EXPECT_NE(code.value, CFI_type_other);
        // The element length the type fixes is the one CFI_establish records.
        char data[64];
        Descriptor d;
        ASSERT_EQ(CFI_establish(d.get(), data, CFI_attribute_other, code.value, 3, 0, nullptr), CFI_SUCCESS)
            << code.value;
        EXPECT_EQ(d->elem_len, code.length == 0 ? 3u : code.length) << code.value;
    }
    EXPECT_LT(CFI_type_other, 0);
    // struct is its own code; types of one size and category share theirs, the others not.
    EXPECT_NE(CFI_type_struct, CFI_type_int);
    EXPECT_EQ(CFI_type_int, CFI_type_int32_t);
    EXPECT_NE(CFI_type_int8_t, CFI_type_Bool);
    EXPECT_NE(CFI_type_Bool, CFI_type_char);
    EXPECT_NE(CFI_type_double, CFI_type_int64_t);
    EXPECT_NE(CFI_type_float_Complex, CFI_type_double);
    EXPECT_NE(CFI_type_cptr, CFI_type_cfunptr);
}

TEST(CDescriptorEstablish, ResultsAndErrorsOfTheTable) {
    char data[4096];
    CFI_index_t extents[3] = {4, 0, 5};
    CFI_index_t negative[2] = {3, -1};
    CFI_index_t huge[2] = {PTRDIFF_MAX / 2, 8};
    struct Case {
        void* base;
        CFI_attribute_t attribute;
        CFI_type_t type;
        size_t length;
        CFI_rank_t rank;
        const CFI_index_t* extents;
        int expected;
    };
    const Case cases[] = {
        {data, CFI_attribute_other, CFI_type_double, 0, 3, extents, CFI_SUCCESS},
        {data, CFI_attribute_pointer, CFI_type_int, 99, 2, extents, CFI_SUCCESS},  // length ignored
        {nullptr, CFI_attribute_allocatable, CFI_type_float, 0, 3, nullptr, CFI_SUCCESS},
        {nullptr, CFI_attribute_pointer, CFI_type_char, 7, 1, nullptr, CFI_SUCCESS},
        {nullptr, CFI_attribute_other, CFI_type_struct, 24, 0, nullptr, CFI_SUCCESS},
        {data, CFI_attribute_other, CFI_type_int, 0, CFI_MAX_RANK, nullptr, CFI_INVALID_EXTENT},
        {data, CFI_attribute_allocatable, CFI_type_float, 0, 1, extents, CFI_INVALID_ATTRIBUTE},
        {data, 0, CFI_type_float, 0, 1, extents, CFI_INVALID_ATTRIBUTE},
        {data, 4, CFI_type_float, 0, 1, extents, CFI_INVALID_ATTRIBUTE},
        {data, CFI_attribute_other, 0, 0, 1, extents, CFI_INVALID_TYPE},
        {data, CFI_attribute_other, -7, 0, 1, extents, CFI_INVALID_TYPE},
        {data, CFI_attribute_other, CFI_TYPE_CODE(CFI_category_integer, 3), 0, 1, extents, CFI_INVALID_TYPE},
        {data, CFI_attribute_other, CFI_TYPE_CODE(CFI_category_character, 4), 4, 1, extents, CFI_INVALID_TYPE},
        {data, CFI_attribute_other, CFI_type_struct, 0, 1, extents, CFI_INVALID_ELEM_LEN},
        {data, CFI_attribute_other, CFI_type_other, 0, 1, extents, CFI_INVALID_ELEM_LEN},
        {data, CFI_attribute_other, CFI_type_char, 0, 1, extents, CFI_INVALID_ELEM_LEN},
        {data, CFI_attribute_other, CFI_type_int, 0, CFI_MAX_RANK + 1, extents, CFI_INVALID_RANK},
        {data, CFI_attribute_other, CFI_type_int, 0, -1, extents, CFI_INVALID_RANK},
        {data, CFI_attribute_other, CFI_type_int, 0, 2, negative, CFI_INVALID_EXTENT},
        {data, CFI_attribute_other, CFI_type_double, 0, 2, huge, CFI_INVALID_EXTENT},
    };
    for (const Case& c : cases) {
        Descriptor d;
        auto before = d.Bytes();
        int code = CFI_establish(d.get(), c.base, c.attribute, c.type, c.length, c.rank, c.extents);
        ASSERT_EQ(code, c.expected) << "type " << c.type << " rank " << int(c.rank);
        if (code != CFI_SUCCESS) {
            EXPECT_EQ(d.Bytes(), before) << "a failed call wrote the descriptor";
            continue;
        }
        EXPECT_EQ(d->base_addr, c.base);
        EXPECT_EQ(d->version, CFI_VERSION);
        EXPECT_EQ(d->rank, c.rank);
        EXPECT_EQ(d->attribute, c.attribute);
        EXPECT_EQ(d->type, c.type);
        if (c.base == nullptr) continue;
        // Data of known shape: lower bounds 0, strides of a contiguous array.
        CFI_index_t stride = static_cast<CFI_index_t>(d->elem_len);
        for (int i = 0; i < c.rank; ++i) {
            EXPECT_EQ(d->dim[i].lower_bound, 0);
            EXPECT_EQ(d->dim[i].extent, c.extents[i]);
            EXPECT_EQ(d->dim[i].sm, stride);
            stride *= c.extents[i];
        }
    }
    EXPECT_EQ(CFI_establish(nullptr, data, CFI_attribute_other, CFI_type_int, 0, 0, nullptr), CFI_INVALID_DESCRIPTOR);
}

TEST(CDescriptorAllocate, BoundsLengthsAndEveryByteUsable) {
    struct Case {
        CFI_type_t type;
        size_t length;  // the argument: only character reads it
        std::vector<CFI_index_t> lower, upper;
        size_t elementLength;
        std::vector<CFI_index_t> extents;
    };
    const Case cases[] = {
        {CFI_type_double, 99, {1, -3}, {4, 2}, 8, {4, 6}},
        {CFI_type_int16_t, 0, {5}, {4}, 2, {0}},  // upper below lower: empty
        {CFI_type_char, 13, {0, 1, 2}, {1, 1, 4}, 13, {2, 1, 3}},
        {CFI_type_char, 0, {1}, {3}, 0, {3}},
        {CFI_type_float_Complex, 0, {}, {}, 8, {}},
        {CFI_type_real16, 0, {-10}, {10}, 16, {21}},
    };
    for (CFI_attribute_t attribute : {CFI_attribute_allocatable, CFI_attribute_pointer}) {
        for (const Case& c : cases) {
            Descriptor d = Established(nullptr, attribute, c.type, c.type == CFI_type_char ? 1 : 0,
                                       std::vector<CFI_index_t>(c.lower.size()));
            ASSERT_EQ(CFI_allocate(d.get(), c.lower.data(), c.upper.data(), c.length), CFI_SUCCESS);
            ASSERT_NE(d->base_addr, nullptr);
            EXPECT_EQ(d->elem_len, c.elementLength);
            size_t bytes = c.elementLength;
            for (size_t i = 0; i < c.extents.size(); ++i) {
                EXPECT_EQ(d->dim[i].lower_bound, c.lower[i]);
                EXPECT_EQ(d->dim[i].extent, c.extents[i]);
                EXPECT_EQ(d->dim[i].sm, static_cast<CFI_index_t>(bytes));
                bytes *= static_cast<size_t>(c.extents[i]);
            }
            std::memset(d->base_addr, 1, bytes);  // the sanitizers catch a short block
            EXPECT_EQ(CFI_is_contiguous(d.get()), c.extents.empty() ? 0 : 1);
            auto allocated = d.Bytes();
            EXPECT_EQ(CFI_allocate(d.get(), c.lower.data(), c.upper.data(), c.length), CFI_ERROR_BASE_ADDR_NOT_NULL);
            EXPECT_EQ(d.Bytes(), allocated);
            EXPECT_EQ(CFI_deallocate(d.get()), CFI_SUCCESS);
            EXPECT_EQ(d->base_addr, nullptr);
            EXPECT_EQ(CFI_deallocate(d.get()), CFI_ERROR_BASE_ADDR_NULL);
        }
    }
}

TEST(CDescriptorAllocate, ErrorsLeaveTheDescriptorAsItWas) {
    CFI_index_t one[1] = {1}, ten[1] = {10};
    CFI_index_t low[2] = {1, 1}, high[2] = {PTRDIFF_MAX / 4, PTRDIFF_MAX / 4};
    CFI_index_t widest[1] = {PTRDIFF_MIN}, widestHigh[1] = {PTRDIFF_MAX};
    char data[80];
    {
        Descriptor d = Established(data, CFI_attribute_other, CFI_type_double, 0, {10});
        auto before = d.Bytes();
        EXPECT_EQ(CFI_allocate(d.get(), one, ten, 0), CFI_INVALID_ATTRIBUTE);
        EXPECT_EQ(CFI_deallocate(d.get()), CFI_INVALID_ATTRIBUTE);
        EXPECT_EQ(d.Bytes(), before);
    }
    {
        Descriptor d = Established(nullptr, CFI_attribute_allocatable, CFI_type_double, 0, {0, 0});
        auto before = d.Bytes();
        EXPECT_EQ(CFI_allocate(d.get(), low, high, 0), CFI_ERROR_MEM_ALLOCATION);
        EXPECT_EQ(CFI_allocate(d.get(), nullptr, high, 0), CFI_INVALID_EXTENT);
        EXPECT_EQ(d.Bytes(), before);
    }
    {
        Descriptor d = Established(nullptr, CFI_attribute_allocatable, CFI_type_int8_t, 0, {0});
        auto before = d.Bytes();
        EXPECT_EQ(CFI_allocate(d.get(), widest, widestHigh, 0), CFI_ERROR_MEM_ALLOCATION);
        EXPECT_EQ(d.Bytes(), before);
    }
    Descriptor unestablished;
    EXPECT_EQ(CFI_allocate(unestablished.get(), one, ten, 0), CFI_INVALID_DESCRIPTOR);
    EXPECT_EQ(CFI_deallocate(unestablished.get()), CFI_INVALID_DESCRIPTOR);
    EXPECT_EQ(CFI_allocate(nullptr, one, ten, 0), CFI_INVALID_DESCRIPTOR);
    EXPECT_EQ(CFI_deallocate(nullptr), CFI_INVALID_DESCRIPTOR);
}

// The header's inline CFI_address and the library's function must answer alike.
void* Address(const CFI_cdesc_t* dv, const CFI_index_t* subscripts) {
    void* inlined = CFI_address(dv, subscripts);
    EXPECT_EQ(inlined, (CFI_address)(dv, subscripts));
    return inlined;
}

TEST(CDescriptorAddress, ElementsWithinBoundsAndNullOutside) {
    int32_t data[60];
    Descriptor source = Established(data, CFI_attribute_other, CFI_type_int32_t, 0, {3, 4, 5});
    Descriptor p = Established(nullptr, CFI_attribute_pointer, CFI_type_int32_t, 0, {0, 0, 0});
    CFI_index_t lower[3] = {-1, 10, 0};
    ASSERT_EQ(CFI_setpointer(p.get(), source.get(), lower), CFI_SUCCESS);
    for (CFI_index_t k = 0; k < 5; ++k) {
        for (CFI_index_t j = 0; j < 4; ++j) {
            for (CFI_index_t i = 0; i < 3; ++i) {
                CFI_index_t at[3] = {i - 1, j + 10, k};
                EXPECT_EQ(Address(p.get(), at), &data[i + 3 * j + 12 * k]);
            }
        }
    }
    const CFI_index_t outside[][3] = {{-2, 10, 0}, {2, 10, 0}, {0, 9, 0}, {0, 14, 0}, {0, 10, 5}, {0, 10, -1},
                                      {PTRDIFF_MIN, 10, 0}};
    for (const auto& at : outside) EXPECT_EQ(Address(p.get(), at), nullptr);
    EXPECT_EQ(Address(p.get(), nullptr), nullptr);
    EXPECT_EQ(Address(nullptr, lower), nullptr);

    // A scalar ignores the subscripts; the last extent of an assumed-size array is -1.
    Descriptor scalar = Established(data + 7, CFI_attribute_other, CFI_type_int32_t, 0, {});
    EXPECT_EQ(Address(scalar.get(), nullptr), data + 7);
    source->dim[2].extent = -1;
    CFI_index_t far[3] = {2, 3, 4};
    EXPECT_EQ(Address(source.get(), far), &data[59]);
    EXPECT_EQ(CFI_is_contiguous(source.get()), 1);
}

TEST(CDescriptorContiguity, StridesThatLeaveNoGaps) {
    char data[8];
    struct Case {
        std::vector<CFI_dim_t> dims;
        int expected;
    };
    const Case cases[] = {
        {{{0, 3, 4}, {0, 2, 12}}, 1},
        {{{0, 3, 8}, {0, 2, 24}}, 0},
        {{{0, 3, -4}, {0, 2, 12}}, 0},
        {{{0, 1, 999}, {0, 5, 4}}, 1},  // a dimension of extent 1 never steps
        {{{0, 3, 4}, {0, 1, -7}, {0, 2, 12}}, 1},
        {{{0, 3, 8}, {0, 0, 24}}, 1},   // empty
        {{{0, 3, 4}, {0, 2, 16}}, 0},
        {{{0, 2, 4}, {0, 2, 8}, {0, -1, 16}}, 1},  // assumed size
    };
    for (const Case& c : cases) {
        Descriptor d = Established(data, CFI_attribute_other, CFI_type_float, 0,
                                   std::vector<CFI_index_t>(c.dims.size(), 1));
        std::memcpy(d->dim, c.dims.data(), c.dims.size() * sizeof(CFI_dim_t));
        EXPECT_EQ(CFI_is_contiguous(d.get()), c.expected) << c.dims.size() << " " << c.dims[0].sm;
    }
    Descriptor scalar = Established(data, CFI_attribute_other, CFI_type_float, 0, {});
    EXPECT_EQ(CFI_is_contiguous(scalar.get()), 0);
    Descriptor unallocated = Established(nullptr, CFI_attribute_allocatable, CFI_type_float, 0, {3});
    EXPECT_EQ(CFI_is_contiguous(unallocated.get()), 0);
    EXPECT_EQ(CFI_is_contiguous(nullptr), 0);
}

// One dimension of a section as Fortran writes it: a subscript (stride 0) or a triplet.
struct Subscript {
    CFI_index_t lower, upper, stride;
};

// The elements a section selects, found by plain index arithmetic on the source's
// subscripts, in array element order.
std::vector<int64_t> SelectedByHand(const std::vector<CFI_index_t>& sourceLower,
                                    const std::vector<CFI_index_t>& extents, const std::vector<Subscript>& section) {
    std::vector<std::vector<CFI_index_t>> chosen(section.size());
    for (size_t d = 0; d < section.size(); ++d) {
        const Subscript& s = section[d];
        if (s.stride == 0) {
            chosen[d].push_back(s.lower);
            continue;
        }
        for (CFI_index_t i = s.lower; s.stride > 0 ? i <= s.upper : i >= s.upper; i += s.stride) chosen[d].push_back(i);
    }
    std::vector<int64_t> values;
    std::vector<size_t> at(section.size(), 0);
    for (const auto& c : chosen)
        if (c.empty()) return values;
    while (true) {
        int64_t linear = 0, scale = 1;
        for (size_t d = 0; d < section.size(); ++d) {
            linear += (chosen[d][at[d]] - sourceLower[d]) * scale;
            scale *= extents[d];
        }
        values.push_back(linear);
        size_t d = 0;
        while (d < section.size() && ++at[d] == chosen[d].size()) at[d++] = 0;
        if (d == section.size()) return values;
    }
}

// Walks every element of `d` through CFI_address, in array element order.
std::vector<int64_t> WalkedByAddress(CFI_cdesc_t* d) {
    std::vector<int64_t> values;
    std::vector<CFI_index_t> at(static_cast<size_t>(d->rank));
    for (int i = 0; i < d->rank; ++i) {
        if (d->dim[i].extent == 0) return values;
        at[i] = d->dim[i].lower_bound;
    }
    while (true) {
        values.push_back(*static_cast<int64_t*>(CFI_address(d, at.data())));
        int i = 0;
        while (i < d->rank && ++at[i] == d->dim[i].lower_bound + d->dim[i].extent) at[i] = d->dim[i].lower_bound, ++i;
        if (i == d->rank) return values;
    }
}

TEST(CDescriptorSection, RandomSectionsSelectWhatFortranWould) {
    std::mt19937 random(20261124);
    for (int trial = 0; trial < 3000; ++trial) {
        int rank = 1 + static_cast<int>(random() % 4);
        std::vector<CFI_index_t> extents(rank), lower(rank);
        size_t count = 1;
        for (int d = 0; d < rank; ++d) {
            extents[d] = 1 + static_cast<CFI_index_t>(random() % 6);
            lower[d] = static_cast<CFI_index_t>(random() % 7) - 3;
            count *= static_cast<size_t>(extents[d]);
        }
        std::vector<int64_t> data(count);
        for (size_t i = 0; i < count; ++i) data[i] = static_cast<int64_t>(i);
        Descriptor whole = Established(data.data(), CFI_attribute_other, CFI_type_int64_t, 0, extents);
        Descriptor source = Established(nullptr, CFI_attribute_pointer, CFI_type_int64_t, 0, extents);
        ASSERT_EQ(CFI_setpointer(source.get(), whole.get(), lower.data()), CFI_SUCCESS);

        std::vector<Subscript> section(rank);
        int kept = 0;
        for (int d = 0; d < rank; ++d) {
            CFI_index_t a = lower[d] + static_cast<CFI_index_t>(random() % extents[d]);
            CFI_index_t b = lower[d] + static_cast<CFI_index_t>(random() % extents[d]);
            switch (random() % 5) {
            case 0: section[d] = {a, a, 0}; break;
            case 1: section[d] = {a, a - 1 - static_cast<CFI_index_t>(random() % 3), 1}; break;  // empty
            case 2: section[d] = {std::max(a, b), std::min(a, b), -1 - static_cast<CFI_index_t>(random() % 3)}; break;
            default: section[d] = {std::min(a, b), std::max(a, b), 1 + static_cast<CFI_index_t>(random() % 3)};
            }
            if (section[d].stride != 0) ++kept;
        }
        std::vector<CFI_index_t> lo(rank), hi(rank), st(rank);
        for (int d = 0; d < rank; ++d) lo[d] = section[d].lower, hi[d] = section[d].upper, st[d] = section[d].stride;
        for (CFI_attribute_t attribute : {CFI_attribute_other, CFI_attribute_pointer}) {
            Descriptor result = Established(nullptr, attribute, CFI_type_int64_t, 0, std::vector<CFI_index_t>(kept));
            ASSERT_EQ(CFI_section(result.get(), source.get(), lo.data(), hi.data(), st.data()), CFI_SUCCESS);
            ASSERT_EQ(result->rank, kept);
            for (int d = 0; d < kept; ++d) EXPECT_EQ(result->dim[d].lower_bound, 0);
            EXPECT_EQ(WalkedByAddress(result.get()), SelectedByHand(lower, extents, section)) << "trial " << trial;
        }
    }
}

TEST(CDescriptorSection, OmittedArgumentsMeanTheWholeWithStrideOne) {
    double data[12];
    for (int i = 0; i < 12; ++i) data[i] = i;
    Descriptor whole = Established(data, CFI_attribute_other, CFI_type_double, 0, {3, 4});
    Descriptor result = Established(nullptr, CFI_attribute_other, CFI_type_double, 0, {0, 0});
    ASSERT_EQ(CFI_section(result.get(), whole.get(), nullptr, nullptr, nullptr), CFI_SUCCESS);
    EXPECT_EQ(result->base_addr, data);
    EXPECT_EQ(result->dim[1].extent, 4);
    EXPECT_EQ(result->dim[1].sm, 24);
    CFI_index_t upper[2] = {2, 1};
    ASSERT_EQ(CFI_section(result.get(), whole.get(), nullptr, upper, nullptr), CFI_SUCCESS);
    EXPECT_EQ(result->dim[0].extent, 3);
    EXPECT_EQ(result->dim[1].extent, 2);
    // An assumed-size source has no upper bound of its own.
    whole->dim[1].extent = -1;
    EXPECT_EQ(CFI_section(result.get(), whole.get(), nullptr, nullptr, nullptr), CFI_INVALID_EXTENT);
    CFI_index_t far[2] = {2, 40}, back[2] = {0, 30}, before[2] = {0, -1}, step[2] = {1, -1};
    ASSERT_EQ(CFI_section(result.get(), whole.get(), back, far, nullptr), CFI_SUCCESS);
    EXPECT_EQ(result->dim[1].extent, 11);
    ASSERT_EQ(CFI_section(result.get(), whole.get(), far, before, step), CFI_ERROR_OUT_OF_BOUNDS);
}

TEST(CDescriptorSection, ErrorsLeaveTheResultAsItWas) {
    float data[20];
    Descriptor source = Established(data, CFI_attribute_other, CFI_type_float, 0, {4, 5});
    CFI_index_t lower[2] = {0, 0}, upper[2] = {3, 4}, strides[2] = {1, 1};
    CFI_index_t beyond[2] = {0, 5}, below[2] = {-1, 0}, unequal[2] = {1, 2}, zero[2] = {0, 0};
    CFI_index_t huge[2] = {PTRDIFF_MAX, 1}, hugeLow[2] = {PTRDIFF_MIN, 0}, minusOne[2] = {-1, 1};
    struct Case {
        CFI_attribute_t attribute;
        CFI_type_t type;
        CFI_rank_t rank;
        const CFI_index_t *lower, *upper, *strides;
        int expected;
    };
    const Case cases[] = {
        {CFI_attribute_other, CFI_type_float, 2, lower, beyond, strides, CFI_ERROR_OUT_OF_BOUNDS},
        {CFI_attribute_other, CFI_type_float, 2, below, upper, strides, CFI_ERROR_OUT_OF_BOUNDS},
        {CFI_attribute_other, CFI_type_float, 1, lower, unequal, zero, CFI_ERROR_OUT_OF_BOUNDS},
        {CFI_attribute_other, CFI_type_float, 1, lower, upper, strides, CFI_INVALID_RANK},
        {CFI_attribute_other, CFI_type_float, 0, lower, lower, zero, CFI_SUCCESS},
        {CFI_attribute_other, CFI_type_float, 1, lower, lower, zero, CFI_INVALID_RANK},
        {CFI_attribute_allocatable, CFI_type_float, 2, lower, upper, strides, CFI_INVALID_ATTRIBUTE},
        {CFI_attribute_other, CFI_type_int32_t, 2, lower, upper, strides, CFI_INVALID_TYPE},
        {CFI_attribute_other, CFI_type_float, 2, lower, huge, strides, CFI_ERROR_OUT_OF_BOUNDS},
        {CFI_attribute_other, CFI_type_float, 2, hugeLow, huge, minusOne, CFI_ERROR_OUT_OF_BOUNDS},
        {CFI_attribute_other, CFI_type_float, 2, huge, hugeLow, minusOne, CFI_ERROR_OUT_OF_BOUNDS},
    };
    for (const Case& c : cases) {
        Descriptor result = Established(nullptr, c.attribute, c.type, 0, std::vector<CFI_index_t>(c.rank));
        auto before = result.Bytes();
        int code = CFI_section(result.get(), source.get(), c.lower, c.upper, c.strides);
        EXPECT_EQ(code, c.expected) << "rank " << int(c.rank);
        if (code != CFI_SUCCESS) EXPECT_EQ(result.Bytes(), before);
    }
    Descriptor result = Established(nullptr, CFI_attribute_other, CFI_type_struct, 8, {0});
    Descriptor wide = Established(data, CFI_attribute_other, CFI_type_struct, 8, {10});
    Descriptor narrow = Established(data, CFI_attribute_other, CFI_type_struct, 4, {10});
    EXPECT_EQ(CFI_section(result.get(), narrow.get(), nullptr, nullptr, nullptr), CFI_INVALID_ELEM_LEN);
    EXPECT_EQ(CFI_section(result.get(), wide.get(), nullptr, nullptr, nullptr), CFI_SUCCESS);
    Descriptor scalar = Established(data, CFI_attribute_other, CFI_type_struct, 8, {});
    EXPECT_EQ(CFI_section(result.get(), scalar.get(), nullptr, nullptr, nullptr), CFI_INVALID_RANK);
    Descriptor unassociated = Established(nullptr, CFI_attribute_pointer, CFI_type_struct, 8, {0});
    EXPECT_EQ(CFI_section(result.get(), unassociated.get(), nullptr, nullptr, nullptr), CFI_ERROR_BASE_ADDR_NULL);
    Descriptor unestablished;
    EXPECT_EQ(CFI_section(result.get(), unestablished.get(), nullptr, nullptr, nullptr), CFI_INVALID_DESCRIPTOR);
    EXPECT_EQ(CFI_section(unestablished.get(), wide.get(), nullptr, nullptr, nullptr), CFI_INVALID_DESCRIPTOR);
}

struct Particle {
    double mass;
    float charge;
    char name[8];
    int32_t tag;
};

TEST(CDescriptorSelectPart, ComponentsAndSubstringsOfEveryElement) {
    Particle particles[6];
    for (int i = 0; i < 6; ++i) {
        particles[i] = Particle{1.5 * i, 0.25f * static_cast<float>(i), {}, 100 + i};
        std::snprintf(particles[i].name, sizeof particles[i].name, "atom%03d", i);
    }
    Descriptor whole = Established(particles, CFI_attribute_other, CFI_type_struct, sizeof(Particle), {3, 2});
    Descriptor source = Established(nullptr, CFI_attribute_pointer, CFI_type_struct, sizeof(Particle), {0, 0});
    CFI_index_t lower[2] = {1, -1};
    ASSERT_EQ(CFI_setpointer(source.get(), whole.get(), lower), CFI_SUCCESS);

    for (CFI_attribute_t attribute : {CFI_attribute_other, CFI_attribute_pointer}) {
        Descriptor charge = Established(nullptr, attribute, CFI_type_float, 0, {0, 0});
        ASSERT_EQ(CFI_select_part(charge.get(), source.get(), offsetof(Particle, charge), 0), CFI_SUCCESS);
        EXPECT_EQ(charge->elem_len, sizeof(float));
        // Only a pointer keeps the source's bounds.
        EXPECT_EQ(charge->dim[1].lower_bound, attribute == CFI_attribute_pointer ? -1 : 0);
        Descriptor digits = Established(nullptr, attribute, CFI_type_char, 1, {0, 0});
        ASSERT_EQ(CFI_select_part(digits.get(), source.get(), offsetof(Particle, name) + 4, 3), CFI_SUCCESS);
        EXPECT_EQ(digits->elem_len, 3u);
        for (int j = 0; j < 2; ++j) {
            for (int i = 0; i < 3; ++i) {
                CFI_index_t at[2] = {charge->dim[0].lower_bound + i, charge->dim[1].lower_bound + j};
                EXPECT_EQ(*static_cast<float*>(CFI_address(charge.get(), at)), 0.25f * static_cast<float>(i + 3 * j));
                char expected[4];
                std::snprintf(expected, sizeof expected, "%03d", i + 3 * j);
                EXPECT_EQ(std::string(static_cast<char*>(CFI_address(digits.get(), at)), 3), expected);
            }
        }
    }

    struct Case {
        CFI_attribute_t attribute;
        CFI_type_t type;
        CFI_rank_t rank;
        size_t displacement, length;
        int expected;
    };
    const Case errors[] = {
        {CFI_attribute_other, CFI_type_int32_t, 2, sizeof(Particle), 0, CFI_ERROR_OUT_OF_BOUNDS},
        {CFI_attribute_other, CFI_type_double, 2, offsetof(Particle, tag), 0, CFI_ERROR_OUT_OF_BOUNDS},
        {CFI_attribute_other, CFI_type_char, 2, offsetof(Particle, tag), 5, CFI_INVALID_ELEM_LEN},
        {CFI_attribute_other, CFI_type_char, 2, 0, 0, CFI_INVALID_ELEM_LEN},
        {CFI_attribute_other, CFI_type_int32_t, 1, offsetof(Particle, tag), 0, CFI_INVALID_RANK},
        {CFI_attribute_allocatable, CFI_type_int32_t, 2, offsetof(Particle, tag), 0, CFI_INVALID_ATTRIBUTE},
    };
    for (const Case& c : errors) {
        Descriptor result = Established(nullptr, c.attribute, c.type, 1, std::vector<CFI_index_t>(c.rank));
        auto before = result.Bytes();
        EXPECT_EQ(CFI_select_part(result.get(), source.get(), c.displacement, c.length), c.expected);
        EXPECT_EQ(result.Bytes(), before);
    }
    Descriptor tag = Established(nullptr, CFI_attribute_other, CFI_type_int32_t, 0, {0, 0});
    Descriptor nothing = Established(nullptr, CFI_attribute_pointer, CFI_type_struct, sizeof(Particle), {0, 0});
    EXPECT_EQ(CFI_select_part(tag.get(), nothing.get(), 0, 0), CFI_ERROR_BASE_ADDR_NULL);
    EXPECT_EQ(CFI_select_part(tag.get(), source.get(), offsetof(Particle, tag), 0), CFI_SUCCESS);
    CFI_index_t last[2] = {2, 1};
    EXPECT_EQ(CFI_address(tag.get(), last), &particles[5].tag);
}

TEST(CDescriptorSetPointer, AssociationBoundsAndDisassociation) {
    int16_t data[30];
    Descriptor target = Established(data, CFI_attribute_other, CFI_type_int16_t, 0, {5, 6});
    Descriptor p = Established(nullptr, CFI_attribute_pointer, CFI_type_int16_t, 0, {0, 0});
    ASSERT_EQ(CFI_setpointer(p.get(), target.get(), nullptr), CFI_SUCCESS);
    EXPECT_EQ(p->base_addr, data);
    EXPECT_EQ(p->dim[1].lower_bound, 0);
    EXPECT_EQ(p->dim[1].sm, 10);
    CFI_index_t lower[2] = {7, -2};
    ASSERT_EQ(CFI_setpointer(p.get(), p.get(), lower), CFI_SUCCESS);  // p => p, rebounded
    EXPECT_EQ(p->dim[0].lower_bound, 7);
    EXPECT_EQ(p->dim[1].lower_bound, -2);
    EXPECT_EQ(p->dim[1].extent, 6);

    Descriptor q = Established(nullptr, CFI_attribute_pointer, CFI_type_int16_t, 0, {0, 0});
    ASSERT_EQ(CFI_setpointer(q.get(), p.get(), nullptr), CFI_SUCCESS);
    EXPECT_EQ(q->dim[0].lower_bound, 7);
    ASSERT_EQ(CFI_setpointer(q.get(), nullptr, nullptr), CFI_SUCCESS);
    EXPECT_EQ(q->base_addr, nullptr);
    ASSERT_EQ(CFI_setpointer(p.get(), q.get(), lower), CFI_SUCCESS);  // to a disassociated one
    EXPECT_EQ(p->base_addr, nullptr);

    Descriptor other = Established(data, CFI_attribute_other, CFI_type_int16_t, 0, {5, 6});
    Descriptor wrongRank = Established(data, CFI_attribute_other, CFI_type_int16_t, 0, {30});
    Descriptor wrongType = Established(data, CFI_attribute_other, CFI_type_short + 1, 0, {5, 6});
    Descriptor wrongLength = Established(data, CFI_attribute_other, CFI_type_struct, 2, {5, 6});
    Descriptor structPointer = Established(nullptr, CFI_attribute_pointer, CFI_type_struct, 4, {0, 0});
    Descriptor unestablished;
    struct Case {
        CFI_cdesc_t* result;
        CFI_cdesc_t* source;
        int expected;
    };
    const Case cases[] = {
        {other.get(), target.get(), CFI_INVALID_ATTRIBUTE}, {q.get(), wrongRank.get(), CFI_INVALID_RANK},
        {q.get(), wrongType.get(), CFI_INVALID_TYPE},       {structPointer.get(), wrongLength.get(), CFI_INVALID_ELEM_LEN},
        {q.get(), unestablished.get(), CFI_INVALID_DESCRIPTOR}, {unestablished.get(), target.get(), CFI_INVALID_DESCRIPTOR},
    };
    for (const Case& c : cases) {
        std::vector<unsigned char> before(reinterpret_cast<unsigned char*>(c.result),
                                          reinterpret_cast<unsigned char*>(c.result) + sizeof(Descriptor));
        EXPECT_EQ(CFI_setpointer(c.result, c.source, nullptr), c.expected);
        EXPECT_EQ(std::memcmp(before.data(), c.result, before.size()), 0);
    }
}

std::string Hex(const void* pointer) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%.8lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(pointer)));
    return text;
}

TEST(CDescriptorDump, FieldsTypeNameAndDimensions) {
    {
        vrntest::CapturedRun run;
        _vrndmprtd_cfi(nullptr, 3);
        run.Finish();
        EXPECT_EQ(run.err(), "[3] Descriptor not found.\n");
    }
    double data[6] = {};
    Descriptor d = Established(nullptr, CFI_attribute_allocatable, CFI_type_double, 0, {0, 0});
    CFI_index_t lower[2] = {0, -1}, upper[2] = {2, 0};
    ASSERT_EQ(CFI_allocate(d.get(), lower, upper, 0), CFI_SUCCESS);
    vrntest::CapturedRun run;
    _vrndmprtd_cfi(d.get(), 4);
    run.Finish();
    EXPECT_EQ(run.err(), "[4] ---- C Descriptor at address " + Hex(d.get()) + " ----\nbase_addr = " +
                             Hex(d->base_addr) + "\nelem_len = 8\nversion = 1\nrank = 2\n" +
                             "attribute = 2 ( allocatable )\ntype = " + std::to_string(CFI_type_double) +
                             " ( REAL(8) )\n"
                             "  Dimension 0:  lower_bound=0  extent=3  sm=8\n"
                             "  Dimension 1:  lower_bound=-1  extent=2  sm=24\n"
                             "[4] -- End C Descriptor at address " + Hex(d.get()) + " --\n");
    CFI_deallocate(d.get());
    (void)data;
}

}  // namespace
