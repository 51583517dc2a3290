// RTD to C descriptor and back, as compiled code converts around a call of a BIND(C)
// procedure: every element reached through CFI_address is the one the RTD addresses, and
// the way back reproduces the RTD.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "ISO_Fortran_binding.h"
#include "desc/rtd.h"
#include "vrn90.h"

namespace {

constexpr uint8_t kVersion1 = sizeof(void*) == 8 ? (RTD_VERSION_64BIT | 1) : 1;

struct RTDStorage {
    alignas(8) unsigned char bytes[sizeof(RTDArray) + RTD_MAX_RANK * sizeof(RTDDimension)];
    RTDStorage() { std::memset(bytes, 0x5A, sizeof bytes); }
    RTDArray* get() { return reinterpret_cast<RTDArray*>(bytes); }
    std::vector<unsigned char> Bytes() const { return {bytes, bytes + sizeof bytes}; }
};

typedef CFI_CDESC_T(CFI_MAX_RANK) AnyRankDescriptor;

struct CStorage {
    alignas(CFI_cdesc_t) unsigned char bytes[sizeof(AnyRankDescriptor)];
    CStorage() { std::memset(bytes, 0xA5, sizeof bytes); }
    CFI_cdesc_t* get() { return reinterpret_cast<CFI_cdesc_t*>(bytes); }
    std::vector<unsigned char> Bytes() const { return {bytes, bytes + sizeof bytes}; }
};

// Dimension i of Fortran (from 0) lives in table entry rank - 1 - i.
RTDDimension Fortran(const RTDArray* rtd, int i) { return DimensionEntry(reinterpret_cast<const RTD*>(rtd), rtd->rank - 1 - i); }

void SetFortran(RTDArray* rtd, int i, RTDDimension entry) {
    std::memcpy(&rtd->dims[rtd->rank - 1 - i], &entry, sizeof entry);
}

// A random section of INTEGER(4) elements inside `buffer`: lower bounds anywhere, strides
// of either sign with gaps, the dimensions laid out in a shuffled order.
void RandomArray(RTDArray* rtd, int rank, std::vector<int32_t>& buffer, uint8_t flags, std::mt19937& random) {
    rtd->header = RTDHeader{RTD_ARRAY, RTD_TYPE_INTEGER, flags, kVersion1};
    rtd->element_len = 4;
    rtd->rank = rank;
    std::vector<int32_t> extents(rank), strides(rank), order(rank);
    int64_t running = 1;
    for (int i = 0; i < rank; ++i) {
        // Rank 20 keeps most extents at 1 so that the buffer stays small.
        extents[i] = random() % (rank > 6 ? 8 : 2) == 0 ? 1 + static_cast<int32_t>(random() % 3) : 1;
        if (rank <= 6) extents[i] = static_cast<int32_t>(random() % 5);
        order[i] = i;
    }
    std::shuffle(order.begin(), order.end(), random);
    for (int i : order) {
        strides[i] = static_cast<int32_t>(running) * (random() % 2 ? -1 : 1);
        bool gap = (rank <= 6 || extents[i] > 1) && random() % 2;
        running *= std::max(extents[i], 1) + (gap ? 1 : 0);
    }
    int64_t first = 0;
    for (int i = 0; i < rank; ++i) {
        if (strides[i] < 0) first -= static_cast<int64_t>(std::max(extents[i] - 1, 0)) * strides[i];
    }
    buffer.assign(static_cast<size_t>(running + 1), 0);
    for (size_t k = 0; k < buffer.size(); ++k) buffer[k] = static_cast<int32_t>(k);
    rtd->base_ptr = reinterpret_cast<uintptr_t>(buffer.data() + first);
    int64_t origin = 0;
    for (int i = 0; i < rank; ++i) {
        RTDDimension entry{static_cast<int32_t>(random() % 9) - 4, extents[i], 4 * strides[i]};
        SetFortran(rtd, i, entry);
        origin -= static_cast<int64_t>(entry.low_bound) * entry.multiplier;
    }
    rtd->rel_virtual_org = static_cast<int32_t>(origin);
}

// Visits every index of the RTD's shape, first dimension fastest.
template <typename Visit>
void ForEachIndex(const RTDArray* rtd, Visit visit) {
    int rank = rtd->rank;
    std::vector<int32_t> index(rank);
    for (int i = 0; i < rank; ++i) {
        if (Fortran(rtd, i).extent <= 0) return;
        index[i] = Fortran(rtd, i).low_bound;
    }
    while (true) {
        visit(index);
        int i = 0;
        while (i < rank && ++index[i] == Fortran(rtd, i).low_bound + Fortran(rtd, i).extent) {
            index[i] = Fortran(rtd, i).low_bound;
            ++i;
        }
        if (i == rank) return;
    }
}

TEST(CDescriptorConversion, EveryRankSignAndAttributeRoundTrips) {
    std::mt19937 random(7);
    for (int rank = 0; rank <= RTD_MAX_RANK; ++rank) {
        for (int trial = 0; trial < 20; ++trial) {
            for (CFI_attribute_t attribute : {CFI_attribute_other, CFI_attribute_allocatable, CFI_attribute_pointer}) {
                uint8_t flags = attribute == CFI_attribute_pointer ? RTD_FLAG_IS_ASSOCIATED : RTD_FLAG_IS_ALLOCATED;
                RTDStorage original;
                std::vector<int32_t> buffer;
                RandomArray(original.get(), rank, buffer, flags, random);
                CStorage c;
                ASSERT_EQ(__vrn_rtd_to_cfi(c.get(), original.get(), attribute), CFI_SUCCESS);
                EXPECT_EQ(c.get()->rank, rank);
                EXPECT_EQ(c.get()->type, CFI_type_int32_t);
                EXPECT_EQ(c.get()->attribute, attribute);
                bool keepsBounds = attribute != CFI_attribute_other;
                ForEachIndex(original.get(), [&](const std::vector<int32_t>& index) {
                    auto address = static_cast<intptr_t>(original.get()->base_ptr);
                    std::vector<CFI_index_t> subscripts(rank);
                    for (int i = 0; i < rank; ++i) {
                        RTDDimension entry = Fortran(original.get(), i);
                        address += static_cast<intptr_t>(index[i] - entry.low_bound) * entry.multiplier;
                        subscripts[i] = keepsBounds ? index[i] : index[i] - entry.low_bound;
                    }
                    ASSERT_EQ(CFI_address(c.get(), subscripts.data()), reinterpret_cast<void*>(address));
                });

                RTDStorage back;
                ASSERT_EQ(__vrn_cfi_to_rtd(back.get(), c.get()), CFI_SUCCESS);
                const RTDArray* a = original.get();
                const RTDArray* b = back.get();
                EXPECT_EQ(b->base_ptr, a->base_ptr);
                EXPECT_EQ(b->header.dscr_type, RTD_ARRAY);
                EXPECT_EQ(b->header.data_type, RTD_TYPE_INTEGER);
                EXPECT_EQ(b->header.version, kVersion1);
                EXPECT_EQ(b->header.flags & ~RTD_FLAG_IS_CONTIGUOUS,
                          attribute == CFI_attribute_other ? 0
                          : attribute == CFI_attribute_pointer ? RTD_FLAG_IS_ASSOCIATED
                                                               : RTD_FLAG_IS_ALLOCATED | RTD_FLAG_OK_TO_DEALLOCATE);
                EXPECT_EQ((b->header.flags & RTD_FLAG_IS_CONTIGUOUS) != 0, rank == 0 || CFI_is_contiguous(c.get()));
                EXPECT_EQ(b->element_len, 4);
                EXPECT_EQ(b->rank, rank);
                EXPECT_EQ(b->rel_virtual_org, keepsBounds ? a->rel_virtual_org : 0);
                for (int i = 0; i < rank; ++i) {
                    RTDDimension x = Fortran(a, i), y = Fortran(b, i);
                    EXPECT_EQ(y.low_bound, keepsBounds ? x.low_bound : 0);
                    EXPECT_EQ(y.extent, x.extent);
                    EXPECT_EQ(y.multiplier, x.multiplier);
                }
            }
        }
    }
}

TEST(CDescriptorConversion, AllocationStatusCrossesBothWays) {
    RTDStorage unallocated;
    RTDArray* rtd = unallocated.get();
    rtd->base_ptr = 0;
    rtd->header = RTDHeader{RTD_ARRAY, RTD_TYPE_REAL, 0, kVersion1};
    rtd->element_len = 8;
    rtd->rank = 2;
    rtd->rel_virtual_org = 0;
    SetFortran(rtd, 0, RTDDimension{1, 0, 8});
    SetFortran(rtd, 1, RTDDimension{1, 0, 8});
    for (CFI_attribute_t attribute : {CFI_attribute_allocatable, CFI_attribute_pointer}) {
        CStorage c;
        ASSERT_EQ(__vrn_rtd_to_cfi(c.get(), rtd, attribute), CFI_SUCCESS);
        EXPECT_EQ(c.get()->base_addr, nullptr);
        EXPECT_EQ(c.get()->type, CFI_type_double);

        // The C procedure allocates; the RTD learns of it on the way back.
        CFI_index_t lower[2] = {0, -5}, upper[2] = {9, 5};
        ASSERT_EQ(CFI_allocate(c.get(), lower, upper, 0), CFI_SUCCESS);
        RTDStorage back;
        ASSERT_EQ(__vrn_cfi_to_rtd(back.get(), c.get()), CFI_SUCCESS);
        const RTDArray* b = back.get();
        EXPECT_EQ(b->base_ptr, reinterpret_cast<uintptr_t>(c.get()->base_addr));
        EXPECT_TRUE(b->header.flags & RTD_FLAG_IS_CONTIGUOUS);
        EXPECT_TRUE(b->header.flags & (attribute == CFI_attribute_pointer ? RTD_FLAG_IS_ASSOCIATED : RTD_FLAG_IS_ALLOCATED));
        EXPECT_EQ(Fortran(b, 1).low_bound, -5);
        EXPECT_EQ(Fortran(b, 1).extent, 11);
        EXPECT_EQ(Fortran(b, 1).multiplier, 80);
        EXPECT_EQ(b->rel_virtual_org, 5 * 80);

        ASSERT_EQ(CFI_deallocate(c.get()), CFI_SUCCESS);
        ASSERT_EQ(__vrn_cfi_to_rtd(back.get(), c.get()), CFI_SUCCESS);
        EXPECT_EQ(back.get()->base_ptr, 0u);
        EXPECT_EQ(back.get()->header.flags, 0);
    }
}

TEST(CDescriptorConversion, TypesAndLengthsOfEveryIntrinsicKind) {
    struct Case {
        uint8_t dataType;
        int32_t length;
        CFI_type_t type;
    };
    const Case cases[] = {
        {RTD_TYPE_INTEGER, 1, CFI_type_int8_t},   {RTD_TYPE_INTEGER, 2, CFI_type_int16_t},
        {RTD_TYPE_INTEGER, 4, CFI_type_int32_t},  {RTD_TYPE_INTEGER, 8, CFI_type_int64_t},
        {RTD_TYPE_LOGICAL, 1, CFI_type_Bool},     {RTD_TYPE_LOGICAL, 2, CFI_type_logical2},
        {RTD_TYPE_LOGICAL, 4, CFI_type_logical4}, {RTD_TYPE_LOGICAL, 8, CFI_type_logical8},
        {RTD_TYPE_REAL, 4, CFI_type_float},       {RTD_TYPE_REAL, 8, CFI_type_double},
        {RTD_TYPE_REAL, 16, CFI_type_real16},     {RTD_TYPE_COMPLEX, 8, CFI_type_float_Complex},
        {RTD_TYPE_COMPLEX, 16, CFI_type_double_Complex}, {RTD_TYPE_COMPLEX, 32, CFI_type_complex32},
        {RTD_TYPE_CHARACTER, 17, CFI_type_char},  {RTD_TYPE_DERIVED, 40, CFI_type_struct},
        {RTD_TYPE_BYTE, 1, CFI_type_byte},
    };
    int32_t data[16] = {};
    for (const Case& c : cases) {
        RTDStorage s;
        RTDArray* rtd = s.get();
        rtd->base_ptr = reinterpret_cast<uintptr_t>(data);
        // The flags that the way back gives an allocated, contiguous allocatable.
        rtd->header = RTDHeader{RTD_ARRAY, c.dataType,
                                RTD_FLAG_IS_ALLOCATED | RTD_FLAG_OK_TO_DEALLOCATE | RTD_FLAG_IS_CONTIGUOUS, kVersion1};
        rtd->element_len = c.length;
        rtd->rank = 1;
        rtd->rel_virtual_org = -c.length;
        SetFortran(rtd, 0, RTDDimension{1, 1, c.length});
        CStorage cd;
        ASSERT_EQ(__vrn_rtd_to_cfi(cd.get(), rtd, CFI_attribute_allocatable), CFI_SUCCESS);
        EXPECT_EQ(cd.get()->type, c.type) << int(c.dataType) << " " << c.length;
        EXPECT_EQ(cd.get()->elem_len, static_cast<size_t>(c.length));
        RTDStorage back;
        ASSERT_EQ(__vrn_cfi_to_rtd(back.get(), cd.get()), CFI_SUCCESS);
        EXPECT_EQ(std::memcmp(back.get(), rtd, sizeof(RTDArray) + sizeof(RTDDimension)), 0)
            << int(c.dataType) << " " << c.length;
    }
    // A C_PTR and other non-intrinsic codes come back as derived types.
    CStorage cptr;
    ASSERT_EQ(CFI_establish(cptr.get(), data, CFI_attribute_other, CFI_type_cptr, 0, 0, nullptr), CFI_SUCCESS);
    RTDStorage back;
    ASSERT_EQ(__vrn_cfi_to_rtd(back.get(), cptr.get()), CFI_SUCCESS);
    EXPECT_EQ(back.get()->header.data_type, RTD_TYPE_DERIVED);
    EXPECT_EQ(back.get()->element_len, static_cast<int32_t>(sizeof(void*)));
    EXPECT_EQ(back.get()->rank, 0);
}

TEST(CDescriptorConversion, ScalarsOfEveryForm) {
    char text[12] = "hello world";
    // A character scalar always has its length, even at version 0.
    struct {
        uintptr_t base_ptr;
        RTDHeader header;
        int32_t element_len;
    } character{reinterpret_cast<uintptr_t>(text), {RTD_SCALAR_CHAR, RTD_TYPE_CHARACTER, 0, 0}, 11};
    CStorage c;
    ASSERT_EQ(__vrn_rtd_to_cfi(c.get(), &character, CFI_attribute_other), CFI_SUCCESS);
    EXPECT_EQ(c.get()->rank, 0);
    EXPECT_EQ(c.get()->elem_len, 11u);
    EXPECT_EQ(CFI_address(c.get(), nullptr), text);

    // A version 1 INTEGER scalar ends before element_len: its kind is unknown.
    struct {
        uintptr_t base_ptr;
        RTDHeader header;
    } integer{reinterpret_cast<uintptr_t>(text), {RTD_SCALAR, RTD_TYPE_INTEGER, 0, 1}};
    auto before = c.Bytes();
    EXPECT_EQ(__vrn_rtd_to_cfi(c.get(), &integer, CFI_attribute_other), CFI_INVALID_ELEM_LEN);
    EXPECT_EQ(c.Bytes(), before);
    // At version 2 it has one.
    struct {
        uintptr_t base_ptr;
        RTDHeader header;
        int32_t element_len;
        RTDV2Fields v2;
    } versioned{reinterpret_cast<uintptr_t>(text), {RTD_SCALAR, RTD_TYPE_INTEGER, 0, 2}, 8, {}};
    ASSERT_EQ(__vrn_rtd_to_cfi(c.get(), &versioned, CFI_attribute_pointer), CFI_SUCCESS);
    EXPECT_EQ(c.get()->type, CFI_type_int64_t);
    EXPECT_EQ(c.get()->base_addr, nullptr);  // a pointer without is_associated
}

TEST(CDescriptorConversion, ErrorsLeaveTheResultAsItWas) {
    int32_t data[4];
    RTDStorage s;
    RTDArray* rtd = s.get();
    rtd->base_ptr = reinterpret_cast<uintptr_t>(data);
    rtd->header = RTDHeader{RTD_ARRAY, RTD_TYPE_INTEGER, RTD_FLAG_IS_ALLOCATED, kVersion1};
    rtd->element_len = 4;
    rtd->rank = 1;
    rtd->rel_virtual_org = -4;
    SetFortran(rtd, 0, RTDDimension{1, 4, 4});
    struct Case {
        void (*spoil)(RTDArray*);
        CFI_attribute_t attribute;
        int expected;
    };
    const Case cases[] = {
        {[](RTDArray*) {}, 0, CFI_INVALID_ATTRIBUTE},
        {[](RTDArray* r) { r->rank = RTD_MAX_RANK + 1; }, CFI_attribute_other, CFI_INVALID_RANK},
        {[](RTDArray* r) { r->rank = -1; }, CFI_attribute_other, CFI_INVALID_RANK},
        {[](RTDArray* r) { r->element_len = 3; }, CFI_attribute_other, CFI_INVALID_TYPE},
        {[](RTDArray* r) { r->element_len = -1; }, CFI_attribute_other, CFI_INVALID_ELEM_LEN},
        {[](RTDArray* r) { r->header.dscr_type = 0; }, CFI_attribute_other, CFI_INVALID_DESCRIPTOR},
        {[](RTDArray* r) { r->header.data_type = RTD_TYPE_COMPLEX; r->element_len = 12; }, CFI_attribute_other,
         CFI_INVALID_TYPE},
    };
    for (const Case& k : cases) {
        RTDStorage copy = s;
        k.spoil(copy.get());
        CStorage c;
        auto before = c.Bytes();
        EXPECT_EQ(__vrn_rtd_to_cfi(c.get(), copy.get(), k.attribute), k.expected);
        EXPECT_EQ(c.Bytes(), before);
    }
    CStorage c;
    EXPECT_EQ(__vrn_rtd_to_cfi(nullptr, rtd, CFI_attribute_other), CFI_INVALID_DESCRIPTOR);
    EXPECT_EQ(__vrn_rtd_to_cfi(c.get(), nullptr, CFI_attribute_other), CFI_INVALID_DESCRIPTOR);

    // What 32-bit words cannot hold does not become an RTD.
    ASSERT_EQ(__vrn_rtd_to_cfi(c.get(), rtd, CFI_attribute_pointer), CFI_SUCCESS);
    RTDStorage target;
    auto before = target.Bytes();
    for (CFI_index_t CFI_dim_t::*field : {&CFI_dim_t::lower_bound, &CFI_dim_t::extent, &CFI_dim_t::sm}) {
        if (sizeof(CFI_index_t) == 4) continue;  // every value fits on a 32-bit target
        CStorage spoiled = c;
        spoiled.get()->dim[0].*field = static_cast<CFI_index_t>(int64_t{1} << 40);
        EXPECT_EQ(__vrn_cfi_to_rtd(target.get(), spoiled.get()), CFI_INVALID_EXTENT);
        EXPECT_EQ(target.Bytes(), before);
    }
    CStorage farOrigin = c;
    farOrigin.get()->dim[0].lower_bound = INT32_MAX;  // rvo = -lower * sm overflows
    EXPECT_EQ(__vrn_cfi_to_rtd(target.get(), farOrigin.get()), CFI_INVALID_EXTENT);
    EXPECT_EQ(target.Bytes(), before);
    CStorage unestablished;
    EXPECT_EQ(__vrn_cfi_to_rtd(target.get(), unestablished.get()), CFI_INVALID_DESCRIPTOR);
    EXPECT_EQ(__vrn_cfi_to_rtd(nullptr, c.get()), CFI_INVALID_DESCRIPTOR);
}

}  // namespace
