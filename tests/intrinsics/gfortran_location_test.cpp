// MAXLOC, MINLOC and FINDLOC beside a gfortran-compiled program: the same calls on the same
// arrays, printed line by line in the program's form.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/intrinsics/arrays.h"
#include "tests/support/fortran.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The subscripts of a result, in array element order, freed after reading.
std::vector<int64_t> Subscripts(const std::function<void(ResultRecord*)>& call) {
    ResultRecord record = Unallocated(4);
    call(&record);
    std::vector<int64_t> values;
    if (record.base_ptr == 0) return values;
    int64_t count = 1;
    for (int32_t d = 0; d < record.rank; ++d) count *= record.dims[d].extent;
    for (int64_t i = 0; i < count; ++i) values.push_back(reinterpret_cast<const int32_t*>(record.base_ptr)[i]);
    std::free(reinterpret_cast<void*>(record.base_ptr));
    return values;
}

std::string Line(const std::string& name, const std::vector<int64_t>& values) {
    std::string line = name;
    for (int64_t v : values) line += " " + std::to_string(v);
    return line + "\n";
}

TEST(GfortranLocations, TheSameCallsGiveGfortransSubscripts) {
    const double a[12] = {2, -1, kNaN, 2, -0.0, 7, 0, -3, 7, kNaN, 1, -3};
    int32_t positive[12];
    for (int i = 0; i < 12; ++i) positive[i] = a[i] > 0;
    const double allNaN[3] = {kNaN, kNaN, kNaN};
    const int32_t k[7] = {3, 9, -2, 9, 0, -2, 4};
    int32_t cube[12];
    for (int i = 1; i <= 12; ++i) cube[i - 1] = i * 5 % 7;
    const char words[] = "ab abczz ab    ";
    const int32_t truths[5] = {0, 1, 0, 1, 0};
    const int32_t no = 0;

    Array matrix({4, 3}, 8, RTD_TYPE_REAL);
    Array mask({4, 3}, 4, RTD_TYPE_LOGICAL);
    Array scalarMask({}, 4, RTD_TYPE_LOGICAL);
    scalarMask.rtd->header.dscr_type = RTD_SCALAR;
    Array reversed({4, 3}, 8, RTD_TYPE_REAL, {-1, 4});
    Array corners({2, 3}, 8, RTD_TYPE_REAL, {2, -4});
    Array three({3}, 8, RTD_TYPE_REAL);
    Array none({0}, 8, RTD_TYPE_REAL);
    Array seven({7}, 4, RTD_TYPE_INTEGER);
    Array box({2, 3, 2}, 4, RTD_TYPE_INTEGER);
    Array texts({5}, 3, RTD_TYPE_CHARACTER);
    Array logicals({5}, 4, RTD_TYPE_LOGICAL);
    const double two = 2, zero = 0, seven7 = 7, nan = kNaN;
    const int32_t minusTwo = -2, yes = 1;

    using R = ResultRecord*;
    std::string ours;
    ours += Line("maxloc_a", Subscripts([&](R r) { _vrmxlocr8g(r, a, 0, nullptr, matrix.rtd, nullptr, 0, 0); }));
    ours += Line("minloc_a", Subscripts([&](R r) { _vrmnlocr8g(r, a, 0, nullptr, matrix.rtd, nullptr, 0, 0); }));
    ours += Line("maxloc_a_back",
                 Subscripts([&](R r) { _vrmxlocwbackr8g(r, a, 0, nullptr, matrix.rtd, nullptr, 0, 0, 1); }));
    ours += Line("minloc_a_back",
                 Subscripts([&](R r) { _vrmnlocwbackr8g(r, a, 0, nullptr, matrix.rtd, nullptr, 0, 0, 1); }));
    ours += Line("maxloc_a_dim1", Subscripts([&](R r) { _vrmxlocr8g(r, a, 1, nullptr, matrix.rtd, nullptr, 1, 0); }));
    ours += Line("maxloc_a_dim2", Subscripts([&](R r) { _vrmxlocr8g(r, a, 2, nullptr, matrix.rtd, nullptr, 1, 0); }));
    ours += Line("minloc_a_dim2_back",
                 Subscripts([&](R r) { _vrmnlocwbackr8g(r, a, 2, nullptr, matrix.rtd, nullptr, 1, 0, 1); }));
    ours += Line("maxloc_a_mask", Subscripts([&](R r) { _vrmxlocr8g(r, a, 0, positive, matrix.rtd, mask.rtd, 0, 1); }));
    ours += Line("minloc_a_mask_dim1",
                 Subscripts([&](R r) { _vrmnlocr8g(r, a, 1, positive, matrix.rtd, mask.rtd, 1, 1); }));
    ours += Line("maxloc_a_reversed",
                 Subscripts([&](R r) { _vrmxlocr8g(r, a + 3, 0, nullptr, reversed.rtd, nullptr, 0, 0); }));
    ours += Line("maxloc_a_rows", Subscripts([&](R r) { _vrmxlocr8g(r, a + 8, 1, nullptr, corners.rtd, nullptr, 1, 0); }));
    ours += Line("findloc_a_2",
                 Subscripts([&](R r) { _vrfindlocr8g(r, a, &two, 0, nullptr, matrix.rtd, nullptr, 0, 0, 8); }));
    ours += Line("findloc_a_2_back", Subscripts([&](R r) {
                     _vrfindlocwbackr8g(r, a, &two, 0, nullptr, matrix.rtd, nullptr, 0, 0, 8, 1);
                 }));
    ours += Line("findloc_a_zero",
                 Subscripts([&](R r) { _vrfindlocr8g(r, a, &zero, 0, nullptr, matrix.rtd, nullptr, 0, 0, 8); }));
    ours += Line("findloc_a_7_dim2",
                 Subscripts([&](R r) { _vrfindlocr8g(r, a, &seven7, 2, nullptr, matrix.rtd, nullptr, 1, 0, 8); }));
    ours += Line("findloc_a_nan",
                 Subscripts([&](R r) { _vrfindlocr8g(r, a, &nan, 0, nullptr, matrix.rtd, nullptr, 0, 0, 8); }));
    ours += Line("maxloc_all_nan", Subscripts([&](R r) { _vrmxlocr8g(r, allNaN, 0, nullptr, three.rtd, nullptr, 0, 0); }));
    ours += Line("maxloc_empty", Subscripts([&](R r) { _vrmxlocr8g(r, a, 0, nullptr, none.rtd, nullptr, 0, 0); }));
    ours += Line("maxloc_masked_out",
                 Subscripts([&](R r) { _vrmxlocr8g(r, a, 0, &no, matrix.rtd, scalarMask.rtd, 0, 1); }));
    ours += Line("maxloc_k", Subscripts([&](R r) { _vrmxloci4g(r, k, 0, nullptr, seven.rtd, nullptr, 0, 0); }));
    ours += Line("maxloc_k_back",
                 Subscripts([&](R r) { _vrmxlocwbacki4g(r, k, 0, nullptr, seven.rtd, nullptr, 0, 0, 1); }));
    ours += Line("minloc_k_back",
                 Subscripts([&](R r) { _vrmnlocwbacki4g(r, k, 0, nullptr, seven.rtd, nullptr, 0, 0, 1); }));
    ours += Line("findloc_k",
                 Subscripts([&](R r) { _vrfindloci4g(r, k, &minusTwo, 0, nullptr, seven.rtd, nullptr, 0, 0, 4); }));
    ours += Line("findloc_k_back", Subscripts([&](R r) {
                     _vrfindlocwbacki4g(r, k, &minusTwo, 0, nullptr, seven.rtd, nullptr, 0, 0, 4, 1);
                 }));
    ours += Line("maxloc_cube", Subscripts([&](R r) { _vrmxloci4g(r, cube, 0, nullptr, box.rtd, nullptr, 0, 0); }));
    ours += Line("maxloc_cube_dim3", Subscripts([&](R r) { _vrmxloci4g(r, cube, 3, nullptr, box.rtd, nullptr, 1, 0); }));
    ours += Line("minloc_cube_dim2_back",
                 Subscripts([&](R r) { _vrmnlocwbacki4g(r, cube, 2, nullptr, box.rtd, nullptr, 1, 0, 1); }));
    ours += Line("maxloc_words", Subscripts([&](R r) { _vrmxloccg(r, words, 0, nullptr, texts.rtd, nullptr, 0, 0); }));
    ours += Line("minloc_words", Subscripts([&](R r) { _vrmnloccg(r, words, 0, nullptr, texts.rtd, nullptr, 0, 0); }));
    ours += Line("findloc_words_ab",
                 Subscripts([&](R r) { _vrfindloccg(r, words, "ab", 0, nullptr, texts.rtd, nullptr, 0, 0, 2); }));
    ours += Line("findloc_words_ab_back", Subscripts([&](R r) {
                     _vrfindlocwbackcg(r, words, "ab", 0, nullptr, texts.rtd, nullptr, 0, 0, 2, 1);
                 }));
    ours += Line("findloc_words_blank",
                 Subscripts([&](R r) { _vrfindloccg(r, words, "", 0, nullptr, texts.rtd, nullptr, 0, 0, 0); }));
    ours += Line("findloc_truths",
                 Subscripts([&](R r) { _vrfindlocl4g(r, truths, &yes, 0, nullptr, logicals.rtd, nullptr, 0, 0, 4); }));
    ours += Line("findloc_truths_back", Subscripts([&](R r) {
                     _vrfindlocwbackl4g(r, truths, &yes, 0, nullptr, logicals.rtd, nullptr, 0, 0, 4, 1);
                 }));

    EXPECT_EQ(ours, vrntest::ProgramOutput(VRN_LOCATION_PROBE));
}

}  // namespace
