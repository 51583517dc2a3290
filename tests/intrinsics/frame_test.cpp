// The intrinsic frame: result shapes, allocation, fills and element addresses, checked
// against plain loops over the same layouts.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "intrinsics/frame.h"
#include "tests/intrinsics/arrays.h"

namespace {

TEST(IntrinsicFrame, ReducedShapesFromTheSizingFunctions) {
    Array source({4, 3, 5}, 8, RTD_TYPE_REAL);
    ResultRecord result = Unallocated();
    RTDArray* rtd = ResultRTD(&result);
    // SUM(A, DIM=2) of a 4 x 3 x 5 REAL(8) array: 4 x 5, contiguous.
    EXPECT_EQ(_vrsmszg(rtd, source.rtd, 2, nullptr, 1), 4 * 5 * 8);
    EXPECT_EQ(rtd->rank, 2);
    EXPECT_EQ(rtd->element_len, 8);
    EXPECT_EQ(rtd->header.data_type, RTD_TYPE_REAL);
    EXPECT_EQ(FortranDimension(rtd, 1).extent, 4);
    EXPECT_EQ(FortranDimension(rtd, 1).multiplier, 8);
    EXPECT_EQ(FortranDimension(rtd, 2).extent, 5);
    EXPECT_EQ(FortranDimension(rtd, 2).multiplier, 32);
    EXPECT_EQ(FortranDimension(rtd, 2).low_bound, 1);
    EXPECT_EQ(rtd->rel_virtual_org, -40);
    // Without DIM, or on a rank-1 source, the result is a scalar of one element.
    EXPECT_EQ(_vrmxszg(rtd, source.rtd, 0, nullptr, 0), 8);
    EXPECT_EQ(rtd->rank, 0);
    Array vector({7}, 4, RTD_TYPE_INTEGER);
    EXPECT_EQ(_vrprszg(rtd, vector.rtd, 1, nullptr, 1), 4);
    EXPECT_EQ(rtd->rank, 0);
    // A padded source gives an unpadded result of half the stored length.
    Array padded({6, 2}, 16, RTD_TYPE_REAL);
    padded.rtd->header.flags |= RTD_FLAG_IS_PADDED;
    EXPECT_EQ(_vrmnszg(rtd, padded.rtd, 1, nullptr, 1), 2 * 8);
    // COUNT takes the integer kind compiled code preset.
    ResultRecord count = Unallocated(2);
    EXPECT_EQ(_vrcnsz(ResultRTD(&count), source.rtd, 3, 1), 4 * 3 * 2);
    EXPECT_EQ(count.header.data_type, RTD_TYPE_INTEGER);
    EXPECT_EQ(FortranDimension(ResultRTD(&count), 2).multiplier, 8);
    Array logical({9, 9}, 4, RTD_TYPE_LOGICAL);
    EXPECT_EQ(_vralsz(rtd, logical.rtd, 2, 1), 9 * 4);
    EXPECT_EQ(_vransz(rtd, logical.rtd, 2, 0), 4);
}

TEST(IntrinsicFrame, ResultsAreAllocatedOnlyWhenTheCallerDidNot) {
    Array source({3, 0}, 4, RTD_TYPE_INTEGER);
    ResultRecord empty = Unallocated();
    auto build = [&](RTDArray* rtd) { return BuildReducedResult(rtd, source.rtd, 1, true); };
    EXPECT_FALSE(PrepareResult(&empty, build));  // zero size: nothing to do
    EXPECT_EQ(empty.base_ptr, 0u);
    EXPECT_EQ(empty.header.flags, 0);
    ResultRecord given = Unallocated();
    given.header.flags = RTD_FLAG_IS_ALLOCATED;
    given.rank = 7;  // left exactly as given
    EXPECT_TRUE(PrepareResult(&given, build));
    EXPECT_EQ(given.rank, 7);
    Array wide({3, 2}, 4, RTD_TYPE_INTEGER);
    ResultRecord fresh = Unallocated();
    EXPECT_TRUE(PrepareResult(&fresh, [&](RTDArray* rtd) { return BuildReducedResult(rtd, wide.rtd, 2, true); }));
    EXPECT_NE(fresh.base_ptr, 0u);
    EXPECT_EQ(fresh.rtd_base_ptr, fresh.base_ptr);
    EXPECT_EQ(fresh.header.flags, RTD_FLAG_IS_ALLOCATED | RTD_FLAG_OK_TO_DEALLOCATE | RTD_FLAG_IS_CONTIGUOUS);
    std::free(reinterpret_cast<void*>(fresh.base_ptr));
}

TEST(IntrinsicFrame, FillsReachEveryElementOfTheNest) {
    int32_t extents[kMaxRank];
    int32_t strides[kMaxRank];
    for (int d = 0; d < kMaxRank; ++d) extents[d] = strides[d] = 1;
    // Every other element of a 3 x 4 section of a 6 x 4 INTEGER(4) array.
    std::vector<int32_t> data(24, 0);
    extents[0] = 3;
    strides[0] = 2;
    extents[1] = 4;
    strides[1] = 6;
    int32_t seven = 7;
    _vriai4(data.data(), &seven, extents, strides);
    for (int j = 0; j < 4; ++j) {
        for (int i = 0; i < 6; ++i) EXPECT_EQ(data[static_cast<size_t>(j * 6 + i)], i % 2 == 0 ? 7 : 0) << i << "," << j;
    }
    // A zero stride runs that loop once; a zero extent reaches nothing.
    std::vector<double> reals(4, 0.0);
    double half = 0.5;
    extents[1] = 5;
    strides[1] = 0;
    extents[0] = 4;
    strides[0] = 1;
    _vriar8(reals.data(), &half, extents, strides);
    EXPECT_EQ(reals, std::vector<double>(4, 0.5));
    extents[0] = 0;
    double never = 9.0;
    _vriar8(reals.data(), &never, extents, strides);
    EXPECT_EQ(reals[0], 0.5);
    // Characters are cut or padded with blanks to the target length.
    char text[3][4];
    extents[0] = 3;
    strides[0] = 1;
    strides[1] = 1;
    extents[1] = 1;
    _vriac(text, "ab", extents, strides, 2, 4);
    EXPECT_EQ(std::string(&text[0][0], 12), "ab  ab  ab  ");
    _vriac(text, "abcdef", extents, strides, 6, 4);
    EXPECT_EQ(std::string(&text[2][0], 4), "abcd");
    // The 16- and 32-byte members copy whole pairs.
    double pairs[2][4] = {};
    const double value[4] = {1, 2, 3, 4};
    extents[0] = 2;
    _vriax32(pairs, value, extents, strides);
    EXPECT_EQ(pairs[1][3], 4.0);
}

TEST(IntrinsicFrame, ElementAddressesInArrayElementOrder) {
    // A 3 x 2 x 2 section with a negative stride along dimension 2 and rank 3 (the nest).
    std::vector<int64_t> data(64);
    ResultRecord record{};
    record.base_ptr = reinterpret_cast<uintptr_t>(&data[40]);
    record.element_len = 8;
    record.rank = 3;
    RTDDimension table[3] = {{1, 2, 8 * 20}, {1, 2, -8 * 6}, {1, 3, 8 * 2}};
    std::memcpy(record.dims, table, sizeof table);
    uintptr_t addresses[12];
    _vrgetelemaddr(&record, addresses);
    size_t n = 0;
    for (int k = 0; k < 2; ++k) {
        for (int j = 0; j < 2; ++j) {
            for (int i = 0; i < 3; ++i) {
                EXPECT_EQ(addresses[n++], reinterpret_cast<uintptr_t>(&data[static_cast<size_t>(40 + 2 * i - 6 * j + 20 * k)]));
            }
        }
    }
    // Rank 0 has one element; a zero extent has none.
    record.rank = 0;
    _vrgetelemaddr(&record, addresses);
    EXPECT_EQ(addresses[0], record.base_ptr);
    record.rank = 1;
    RTDDimension none{1, 0, 8};
    std::memcpy(record.dims, &none, sizeof none);
    addresses[0] = 0;
    _vrgetelemaddr(&record, addresses);
    EXPECT_EQ(addresses[0], 0u);
    int dummy = 0;
    _vrmerr1(&dummy);  // the hooks do nothing
    _vrmerr4(&dummy, &dummy, &dummy, &dummy);
}

TEST(IntrinsicFrame, LogicalTruthIsBitZeroOfTheLeastSignificantByte) {
    for (int64_t value : {0LL, 1LL, 2LL, 3LL, 256LL, -1LL}) {
        unsigned char bytes[8];
        std::memcpy(bytes, &value, 8);
        EXPECT_EQ(IsTrue(bytes, 8), (value & 1) != 0) << value;
        int32_t narrow = static_cast<int32_t>(value);
        std::memcpy(bytes, &narrow, 4);
        EXPECT_EQ(IsTrue(bytes, 4), (narrow & 1) != 0) << value;
    }
}

}  // namespace

namespace {

std::vector<int32_t> Shape(const RTDArray* rtd) {
    std::vector<int32_t> extents;
    for (int32_t d = 1; d <= rtd->rank; ++d) extents.push_back(FortranDimension(rtd, d).extent);
    return extents;
}

TEST(IntrinsicFrame, SizingOfTheOtherTransformationals) {
    alignas(8) unsigned char storage[sizeof(RTDArray) + kMaxRank * sizeof(RTDDimension)] = {};
    auto* rtd = reinterpret_cast<RTDArray*>(storage);
    Array source({4, 3, 5}, 8, RTD_TYPE_REAL);
    using Shape3 = std::vector<int32_t>;

    // MAXLOC and MINLOC: subscripts of the preset kind, one per dimension or along DIM.
    rtd->element_len = 2;
    EXPECT_EQ(_vrhaszg(rtd, source.rtd, 2, nullptr, 0), 3 * 2);
    EXPECT_EQ(Shape(rtd), Shape3({3}));
    EXPECT_EQ(rtd->header.data_type, RTD_TYPE_INTEGER);
    EXPECT_EQ(_vrhzszg(rtd, source.rtd, 2, nullptr, 1), 4 * 5 * 2);
    EXPECT_EQ(Shape(rtd), Shape3({4, 5}));
    rtd->element_len = 4;
    EXPECT_EQ(_vrlaszg(rtd, source.rtd), 12);
    // CSHIFT keeps the shape; SPREAD adds a dimension, and negative copies make it empty.
    EXPECT_EQ(_vrcssz(rtd, source.rtd), 4 * 3 * 5 * 8);
    EXPECT_EQ(Shape(rtd), Shape3({4, 3, 5}));
    EXPECT_EQ(_vrspsz(rtd, source.rtd, 2, 7), 4 * 7 * 3 * 5 * 8);
    EXPECT_EQ(Shape(rtd), Shape3({4, 7, 3, 5}));
    EXPECT_EQ(FortranDimension(rtd, 4).multiplier, 4 * 7 * 3 * 8);
    EXPECT_EQ(_vrspsz(rtd, source.rtd, 4, -1), 0);
    EXPECT_EQ(Shape(rtd), Shape3({4, 3, 5, 0}));
    // MERGE takes the first shaped argument; UNPACK the mask's shape; PACK a vector.
    Array scalar({}, 8, RTD_TYPE_REAL);
    scalar.rtd->header.dscr_type = RTD_SCALAR;
    Array mask({6, 2}, 4, RTD_TYPE_LOGICAL);
    EXPECT_EQ(_vrmrsz(rtd, scalar.rtd, scalar.rtd, mask.rtd), 6 * 2 * 8);
    EXPECT_EQ(Shape(rtd), Shape3({6, 2}));
    Array vector({9}, 2, RTD_TYPE_INTEGER);
    EXPECT_EQ(_vrupsz(rtd, vector.rtd, mask.rtd), 6 * 2 * 2);
    EXPECT_EQ(_vrpkszg(rtd, source.rtd, nullptr, vector.rtd, 1), 9 * 8);
    EXPECT_EQ(_vrpkszg(rtd, source.rtd, nullptr, vector.rtd, 0), 60 * 8);
    // TRANSPOSE exchanges the extents.
    EXPECT_EQ(_vrtssz(rtd, mask.rtd), 12 * 4);
    EXPECT_EQ(Shape(rtd), Shape3({2, 6}));
    // TRANSFER: SIZE, else as many mold elements as cover the source, else a scalar.
    Array mold({1}, 3, RTD_TYPE_CHARACTER);
    EXPECT_EQ(_vrtfsz(rtd, source.rtd, mold.rtd, 5, 1), 15);
    EXPECT_EQ(_vrtfsz(rtd, source.rtd, mold.rtd, 0, 0), 160 * 3);  // 480 bytes of source
    EXPECT_EQ(Shape(rtd), Shape3({160}));
    Array empty({0}, 8, RTD_TYPE_REAL);
    EXPECT_EQ(_vrtfsz(rtd, empty.rtd, mold.rtd, 0, 0), 3);  // the formula as it stands: one element
    Array moldScalar({}, 4, RTD_TYPE_INTEGER);
    moldScalar.rtd->header.dscr_type = RTD_SCALAR;
    EXPECT_EQ(_vrtfsz(rtd, source.rtd, moldScalar.rtd, 0, 0), 4);
    EXPECT_EQ(rtd->rank, 0);
    // RESHAPE reads SHAPE through its data at the shape's own element size and stride.
    int64_t shapeData[4] = {2, -1, 30, -1};  // every other element of INTEGER(8)
    Array shape({2}, 8, RTD_TYPE_INTEGER, {2});
    EXPECT_EQ(_vrrssz(rtd, source.rtd, shape.rtd, 0, 0, shapeData), 2 * 30 * 8);
    EXPECT_EQ(Shape(rtd), Shape3({2, 30}));
    // MATMUL: the larger type code, lengths by the type rules, shape by the ranks.
    Array integers({3, 4}, 4, RTD_TYPE_INTEGER);
    Array complexes({4, 2}, 8, RTD_TYPE_COMPLEX);
    Array reals({4}, 8, RTD_TYPE_REAL);
    EXPECT_EQ(_vrmmsz(rtd, integers.rtd, complexes.rtd), 3 * 2 * 8);
    EXPECT_EQ(rtd->header.data_type, RTD_TYPE_COMPLEX);
    EXPECT_EQ(Shape(rtd), Shape3({3, 2}));
    EXPECT_EQ(_vrmmsz(rtd, reals.rtd, complexes.rtd), 2 * 16);  // twice the real's length
    EXPECT_EQ(Shape(rtd), Shape3({2}));
    EXPECT_EQ(_vrmmsz(rtd, integers.rtd, reals.rtd), 3 * 8);
    EXPECT_EQ(Shape(rtd), Shape3({3}));
    // REPEAT is a length, not a descriptor.
    EXPECT_EQ(_vrrptsz(0, 5, 3), 15);
    EXPECT_EQ(_vrrptsz(0, 5, -1), 0);
}

}  // namespace
