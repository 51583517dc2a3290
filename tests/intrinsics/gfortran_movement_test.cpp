// The data-movement intrinsics beside a gfortran-compiled program: the same calls on the
// same arrays, printed line by line in the program's form.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "tests/intrinsics/arrays.h"
#include "tests/support/fortran.h"

namespace {

using R = ResultRecord*;

// A scalar's RTD: version 2, so that it holds element_len.
struct Scalar {
    Array array;
    Scalar(int32_t length, uint8_t type) : array({}, length, type) {
        array.rtd->header.dscr_type = type == RTD_TYPE_CHARACTER ? RTD_SCALAR_CHAR : RTD_SCALAR;
        array.rtd->header.version = 2;
    }
};

// The result's elements in array element order (the library's own contiguous result).
template <typename T>
std::vector<T> Elements(const std::function<void(R)>& call) {
    ResultRecord record = Unallocated();
    call(&record);
    std::vector<T> values;
    if (record.base_ptr == 0) return values;
    int64_t count = 1;
    for (int32_t d = 0; d < record.rank; ++d) count *= record.dims[d].extent;
    const auto* data = reinterpret_cast<const T*>(record.base_ptr);
    values.assign(data, data + count);
    std::free(reinterpret_cast<void*>(record.base_ptr));
    return values;
}

template <typename T>
std::string Line(const std::string& name, const std::vector<T>& values) {
    std::string line = name;
    for (T v : values) line += " " + std::to_string(v);
    return line + "\n";
}

std::string Words(const std::string& name, const std::function<void(R)>& call) {
    ResultRecord record = Unallocated();
    call(&record);
    std::string line = name;
    const char* text = reinterpret_cast<const char*>(record.base_ptr);
    for (int32_t i = 0; i < record.dims[0].extent; ++i) line += " [" + std::string(text + 2 * i, 2) + "]";
    std::free(reinterpret_cast<void*>(record.base_ptr));
    return line + "\n";
}

TEST(GfortranMovement, TheSameCallsGiveGfortransElements) {
    int32_t m[12];
    int32_t mask[12];
    int32_t even[12];
    int32_t minus[12];
    int32_t over5[12];
    for (int i = 0; i < 12; ++i) {
        m[i] = i + 1;
        mask[i] = m[i] % 3 == 1;
        even[i] = m[i] % 2 == 0;
        minus[i] = -m[i];
        over5[i] = m[i] > 5;
    }
    Array matrix({3, 4}, 4, RTD_TYPE_INTEGER);
    Array logicals({3, 4}, 4, RTD_TYPE_LOGICAL);
    Scalar integer(4, RTD_TYPE_INTEGER), logical(4, RTD_TYPE_LOGICAL);
    const int32_t one = 1, minusOne = -1, two = 2, ninetyNine = 99, zero = 0, five = 5, truth = 1;
    const int32_t shifts1[4] = {1, -2, 3, 0}, shifts2[3] = {5, -1, 2};
    const int8_t endShifts[4] = {1, 0, -1, 4};
    const int32_t boundaries[4] = {7, 8, 9, 10};
    Array four({4}, 4, RTD_TYPE_INTEGER), three({3}, 4, RTD_TYPE_INTEGER), fourBytes({4}, 1, RTD_TYPE_INTEGER);

    std::string ours;
    ours += Line("cshift_1", Elements<int32_t>([&](R r) { _vrcsi4(r, m, &one, 1, matrix.rtd, integer.array.rtd, 0); }));
    ours += Line("cshift_dim2",
                 Elements<int32_t>([&](R r) { _vrcsi4(r, m, &minusOne, 2, matrix.rtd, integer.array.rtd, 1); }));
    ours += Line("cshift_array", Elements<int32_t>([&](R r) { _vrcsi4(r, m, shifts1, 1, matrix.rtd, four.rtd, 1); }));
    ours += Line("cshift_array_dim2",
                 Elements<int32_t>([&](R r) { _vrcsi4(r, m, shifts2, 2, matrix.rtd, three.rtd, 1); }));
    ours += Line("eoshift_2", Elements<int32_t>([&](R r) {
                     _vresi4g(r, m, &two, nullptr, 1, matrix.rtd, integer.array.rtd, nullptr, 0, 0);
                 }));
    ours += Line("eoshift_boundary_dim2", Elements<int32_t>([&](R r) {
                     _vresi4g(r, m, &minusOne, &ninetyNine, 2, matrix.rtd, integer.array.rtd, integer.array.rtd, 1, 1);
                 }));
    ours += Line("eoshift_arrays", Elements<int32_t>([&](R r) {
                     _vresi4g(r, m, endShifts, boundaries, 1, matrix.rtd, fourBytes.rtd, four.rtd, 1, 0);
                 }));
    ours += Line("transpose", Elements<int32_t>([&](R r) { _vrtsi4(r, m, matrix.rtd); }));

    const int32_t fiveValues[5] = {1, 2, 3, 4, 5}, pad[2] = {0, -1}, shape24[2] = {2, 4};
    Array fiveRtd({5}, 4, RTD_TYPE_INTEGER), twoRtd({2}, 4, RTD_TYPE_INTEGER);
    ours += Line("reshape_pad", Elements<int32_t>([&](R r) {
                     _vrrsi4g(r, fiveValues, shape24, pad, nullptr, fiveRtd.rtd, twoRtd.rtd, twoRtd.rtd, nullptr, 1, 0);
                 }));
    const int64_t shape23[2] = {2, 3};
    const int16_t order21[2] = {2, 1};
    Array sixRtd({6}, 4, RTD_TYPE_INTEGER), shapeLong({2}, 8, RTD_TYPE_INTEGER), orderShort({2}, 2, RTD_TYPE_INTEGER);
    ours += Line("reshape_order", Elements<int32_t>([&](R r) {
                     _vrrsi4g(r, m, shape23, nullptr, order21, sixRtd.rtd, shapeLong.rtd, nullptr, orderShort.rtd, 0, 1);
                 }));
    int32_t counting[24];
    for (int i = 0; i < 24; ++i) counting[i] = i + 1;
    const int32_t shape234[3] = {2, 3, 4}, order312[3] = {3, 1, 2};
    Array twentyFour({24}, 4, RTD_TYPE_INTEGER), threeInts({3}, 4, RTD_TYPE_INTEGER);
    ours += Line("reshape_order3", Elements<int32_t>([&](R r) {
                     _vrrsi4g(r, counting, shape234, nullptr, order312, twentyFour.rtd, threeInts.rtd, nullptr,
                              threeInts.rtd, 0, 1);
                 }));
    ours += Line("spread_1", Elements<int32_t>([&](R r) { _vrspi4(r, m, 1, 2, three.rtd); }));
    ours += Line("spread_2", Elements<int32_t>([&](R r) { _vrspi4(r, m, 2, 2, three.rtd); }));
    ours += Line("spread_none", Elements<int32_t>([&](R r) { _vrspi4(r, m, 2, -1, three.rtd); }));
    ours += Line("spread_scalar", Elements<int32_t>([&](R r) { _vrspi4(r, &five, 1, 3, integer.array.rtd); }));

    ours += Line("pack", Elements<int32_t>([&](R r) {
                     _vrpki4g(r, m, over5, nullptr, matrix.rtd, logicals.rtd, nullptr, 0);
                 }));
    int32_t vector[10];
    for (int i = 0; i < 10; ++i) vector[i] = -(i + 1);
    Array tenRtd({10}, 4, RTD_TYPE_INTEGER);
    ours += Line("pack_vector", Elements<int32_t>([&](R r) {
                     _vrpki4g(r, m, over5, vector, matrix.rtd, logicals.rtd, tenRtd.rtd, 1);
                 }));
    Array row({4}, 4, RTD_TYPE_INTEGER, {3});
    ours += Line("pack_scalar_mask", Elements<int32_t>([&](R r) {
                     _vrpki4g(r, m + 1, &truth, nullptr, row.rtd, logical.array.rtd, nullptr, 0);
                 }));
    const int32_t tens[4] = {10, 20, 30, 40};
    ours += Line("unpack_scalar", Elements<int32_t>([&](R r) {
                     _vrupi4(r, tens, mask, &zero, four.rtd, logicals.rtd, integer.array.rtd);
                 }));
    ours += Line("unpack_field",
                 Elements<int32_t>([&](R r) { _vrupi4(r, tens, mask, m, four.rtd, logicals.rtd, matrix.rtd); }));
    ours += Line("merge",
                 Elements<int32_t>([&](R r) { _vrmri4(r, m, minus, even, matrix.rtd, matrix.rtd, logicals.rtd); }));
    ours += Line("merge_scalar", Elements<int32_t>([&](R r) {
                     _vrmri4(r, m, &zero, mask, matrix.rtd, integer.array.rtd, logicals.rtd);
                 }));
    Array longMold({1}, 8, RTD_TYPE_INTEGER);
    ours += Line("transfer",
                 Elements<int64_t>([&](R r) { _vrtfi1(r, m, nullptr, 0, four.rtd, longMold.rtd, 0); }));
    ours += Line("transfer_size",
                 Elements<int64_t>([&](R r) { _vrtfi1(r, m, nullptr, 3, matrix.rtd, longMold.rtd, 1); }));

    const char words[] = "abcdef";
    Array wordsRtd({3}, 2, RTD_TYPE_CHARACTER);
    Scalar text(2, RTD_TYPE_CHARACTER);
    ours += Words("cshift_words", [&](R r) { _vrcsc(r, words, &one, 1, wordsRtd.rtd, integer.array.rtd, 0); });
    ours += Words("eoshift_words",
                  [&](R r) { _vrescg(r, words, &one, nullptr, 1, wordsRtd.rtd, integer.array.rtd, nullptr, 0, 0); });
    const int32_t minusTwo = -2;
    ours += Words("eoshift_words_back", [&](R r) {
        _vrescg(r, words, &minusTwo, "zz", 1, wordsRtd.rtd, integer.array.rtd, text.array.rtd, 1, 0);
    });

    EXPECT_EQ(ours, vrntest::ProgramOutput(VRN_MOVEMENT_PROBE));
}

}  // namespace
