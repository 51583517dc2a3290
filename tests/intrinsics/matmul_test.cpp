// MATMUL checked against a naive triple loop written here: exactly for integers, logicals
// and reals (each element is a chain of fused multiply-adds in K order, whatever the
// blocking, tile or thread split), within an error bound for complex, REAL(16) and the
// Strassen path.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <random>
#include <thread>
#include <type_traits>
#include <vector>

#include "intrinsics/matmul_cache.h"
#include "tests/intrinsics/arrays.h"
#include "tests/support/fortran.h"

namespace {

constexpr bool kTarget = UINTPTR_MAX == 0xFFFFFFFFu;

using Dispatcher = void (*)(ResultRecord*, const void*, const void*, int32_t, const RTDArray*, const RTDArray*,
                            int32_t);

struct DD {
    double hi, lo;
};
template <typename T>
struct Cx {
    T re, im;
};

// Type and length of each storage type, as a descriptor gives them.
template <typename T> constexpr uint8_t kType = RTD_TYPE_INTEGER;
template <> constexpr uint8_t kType<float> = RTD_TYPE_REAL;
template <> constexpr uint8_t kType<double> = RTD_TYPE_REAL;
template <> constexpr uint8_t kType<DD> = RTD_TYPE_REAL;
template <> constexpr uint8_t kType<Cx<float>> = RTD_TYPE_COMPLEX;
template <> constexpr uint8_t kType<Cx<double>> = RTD_TYPE_COMPLEX;
template <> constexpr uint8_t kType<Cx<DD>> = RTD_TYPE_COMPLEX;

template <typename T>
T RandomValue(std::mt19937_64& random) {
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    if constexpr (std::is_integral_v<T>) {
        return static_cast<T>(random());  // the whole range: sums wrap
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(unit(random));
    } else if constexpr (std::is_same_v<T, DD>) {
        double hi = unit(random);
        return {hi, hi * 0x1p-60 * unit(random)};
    } else {
        using P = decltype(T{}.re);
        return {RandomValue<P>(random), RandomValue<P>(random)};
    }
}

// A matrix in a buffer: element (i, j) at first + i * row + j * col.
template <typename T>
struct Matrix {
    int32_t rows, cols;
    int32_t row, col;  // strides in elements
    std::vector<T> data;
    int64_t first;

    // Column-major, or transposed storage, or every other row backward.
    enum Layout { kColumnMajor, kTransposed, kStridedBackward };
    Matrix(int32_t r, int32_t c, Layout layout) : rows(r), cols(c) {
        switch (layout) {
        case kColumnMajor: row = 1, col = r; break;
        case kTransposed: row = c, col = 1; break;
        case kStridedBackward: row = -2, col = 2 * r + 1; break;
        }
        int64_t low = 0, high = 0;
        for (int64_t extent : {static_cast<int64_t>(row) * (r - 1), static_cast<int64_t>(col) * (c - 1)}) {
            (extent < 0 ? low : high) += extent;
        }
        first = -low;
        data.resize(static_cast<size_t>(high - low + 1));
    }
    T& At(int32_t i, int32_t j) { return data[static_cast<size_t>(first + int64_t{i} * row + int64_t{j} * col)]; }
    T* Base() { return data.data() + first; }
    // Rank 2, or rank 1 along the extent that is not 1 when `vector` is set.
    Array Descriptor(bool vector = false, bool alongRows = true) {
        if (vector) return Array({alongRows ? rows : cols}, sizeof(T), kType<T>, {alongRows ? row : col});
        return Array({rows, cols}, sizeof(T), kType<T>, {row, col});
    }
    void Fill(std::mt19937_64& random) {
        for (int32_t j = 0; j < cols; ++j) {
            for (int32_t i = 0; i < rows; ++i) At(i, j) = RandomValue<T>(random);
        }
    }
};

ResultRecord ResultFor(RTDArray* rtd, void* data) {
    ResultRecord record{};
    std::memcpy(&record.rtd_base_ptr, rtd, sizeof(RTDArray) + rtd->rank * sizeof(RTDDimension));
    record.base_ptr = reinterpret_cast<uintptr_t>(data);
    return record;
}

// The reference product of one element, and how close the library must come to it.
long double Wide(double x) { return x; }
long double Wide(DD x) { return static_cast<long double>(x.hi) + x.lo; }

// Integers: the sum modulo 2^64, narrowed. Reals: fused multiply-adds in K order.
template <typename C, typename TA, typename TB>
C ReferenceElement(Matrix<TA>& a, Matrix<TB>& b, int32_t i, int32_t j) {
    if constexpr (std::is_integral_v<C>) {
        uint64_t s = 0;
        for (int32_t p = 0; p < a.cols; ++p) {
            s += static_cast<uint64_t>(static_cast<int64_t>(a.At(i, p))) *
                 static_cast<uint64_t>(static_cast<int64_t>(b.At(p, j)));
        }
        return static_cast<C>(s);
    } else {
        C s = 0;
        for (int32_t p = 0; p < a.cols; ++p) s = std::fma(static_cast<C>(a.At(i, p)), static_cast<C>(b.At(p, j)), s);
        return s;
    }
}

template <typename T>
std::complex<long double> AsComplex(T x) {
    if constexpr (std::is_arithmetic_v<T>) return {static_cast<long double>(x), 0};
    else if constexpr (std::is_same_v<T, DD>) return {Wide(x), 0};
    else return {Wide(x.re), Wide(x.im)};
}

template <typename C> constexpr long double kEpsilon = 0;
template <> constexpr long double kEpsilon<Cx<float>> = 0x1p-23L;
template <> constexpr long double kEpsilon<Cx<double>> = 0x1p-52L;
template <> constexpr long double kEpsilon<DD> = 0x1p-62L;  // what the reference itself holds
template <> constexpr long double kEpsilon<Cx<DD>> = 0x1p-62L;

// Checks C against the reference; complex and REAL(16) within 4 k eps of sum |a||b|,
// scaled by `slack` (the Strassen path's growth).
template <typename C, typename TA, typename TB>
void ExpectProduct(Matrix<TA>& a, Matrix<TB>& b, Matrix<C>& c, double slack = 1) {
    for (int32_t j = 0; j < c.cols; ++j) {
        for (int32_t i = 0; i < c.rows; ++i) {
            if constexpr (std::is_arithmetic_v<C>) {
                if (slack == 1) {
                    ASSERT_EQ(c.At(i, j), (ReferenceElement<C, TA, TB>(a, b, i, j))) << i << "," << j;
                    continue;
                }
            }
            std::complex<long double> sum = 0;
            long double magnitude = 0;
            for (int32_t p = 0; p < a.cols; ++p) {
                sum += AsComplex(a.At(i, p)) * AsComplex(b.At(p, j));
                magnitude += std::abs(AsComplex(a.At(i, p))) * std::abs(AsComplex(b.At(p, j)));
            }
            long double epsilon = kEpsilon<C>;
            if constexpr (std::is_same_v<C, float>) epsilon = 0x1p-23L;
            if constexpr (std::is_same_v<C, double>) epsilon = 0x1p-52L;
            long double bound = 4 * slack * (a.cols + 1) * epsilon * magnitude + 1e-300L;
            ASSERT_LE(std::abs(AsComplex(c.At(i, j)) - sum), bound) << i << "," << j;
        }
    }
}

// Runs `entry` on A (m x k) and B (k x n) in the layouts given and checks the result.
template <typename C, typename TA, typename TB>
void CheckMatmul(Dispatcher entry, int32_t m, int32_t k, int32_t n, typename Matrix<TA>::Layout la,
                 typename Matrix<TB>::Layout lb, std::mt19937_64& random, int32_t cutoff = 0, int32_t hasCutoff = 0,
                 double slack = 1) {
    Matrix<TA> a(m, k, la);
    Matrix<TB> b(k, n, lb);
    Matrix<C> c(m, n, Matrix<C>::kColumnMajor);
    a.Fill(random);
    b.Fill(random);
    Array ad = a.Descriptor(), bd = b.Descriptor(), cd = c.Descriptor();
    ResultRecord result = ResultFor(cd.rtd, c.Base());
    entry(&result, a.Base(), b.Base(), cutoff, ad.rtd, bd.rtd, hasCutoff);
    SCOPED_TRACE(::testing::Message() << m << "x" << k << "x" << n << " layouts " << la << "," << lb);
    ExpectProduct(a, b, c, slack);
}

// Every operand pair of a member, both orders, on odd and prime shapes in three layouts,
// small enough for the unpacked path and large enough for packing and threads.
template <typename C, typename... Other>
void CheckMember(Dispatcher entry) {
    std::mt19937_64 random(sizeof(C) * 7 + sizeof...(Other));
    struct Shape {
        int32_t m, k, n;
    };
    const Shape shapes[] = {{7, 13, 5}, {1, 1, 1}, {17, 3, 2}, {67, 101, 73}};
    using Layout = typename Matrix<C>::Layout;
    const Layout layouts[] = {Matrix<C>::kColumnMajor, Matrix<C>::kTransposed, Matrix<C>::kStridedBackward};
    auto pair = [&](auto aType, auto bType) {
        using TA = decltype(aType);
        using TB = decltype(bType);
        for (const Shape& s : shapes) {
            for (Layout la : layouts) {
                // One large case a pair is enough; under emulation, one a member.
                if (s.m > 50 && (la != layouts[0] || (kTarget && !std::is_same_v<TA, TB>))) continue;
                CheckMatmul<C, TA, TB>(entry, s.m, s.k, s.n, static_cast<typename Matrix<TA>::Layout>(la),
                                       static_cast<typename Matrix<TB>::Layout>(layouts[(la + 1) % 3]), random);
            }
        }
    };
    pair(C{}, C{});
    (pair(C{}, Other{}), ...);
    (pair(Other{}, C{}), ...);
}

TEST(Matmul, IntegerMembersMatchTheTripleLoopExactly) {
    CheckMember<int8_t>(_vrmmi1);
    CheckMember<int16_t, int8_t>(_vrmmi2);
    CheckMember<int32_t, int16_t, int8_t>(_vrmmi4);
    CheckMember<int64_t, int32_t, int16_t, int8_t>(_vrmmi8);
}

TEST(Matmul, RealMembersAreFusedChainsInKOrder) {
    CheckMember<float, int64_t, int32_t, int16_t, int8_t>(_vrmmr4);
    CheckMember<double, float, int64_t, int32_t, int16_t, int8_t>(_vrmmr8);
    CheckMember<DD, double, float, int64_t, int32_t, int16_t, int8_t>(_vrmmr16);
}

TEST(Matmul, ComplexMembersWithinRounding) {
    CheckMember<Cx<float>, float, int64_t, int32_t, int16_t, int8_t>(_vrmmx8);
    CheckMember<Cx<double>, Cx<float>, double, float, int64_t, int32_t, int16_t, int8_t>(_vrmmx16);
    CheckMember<Cx<DD>, Cx<double>, Cx<float>, DD, double, float, int64_t, int32_t, int16_t, int8_t>(_vrmmx32);
}

// B stored transposed with a long row stride: both operands are packed. Then several K
// blocks and column sweeps of a packed product.
TEST(Matmul, PackedBlocksAndSweeps) {
    std::mt19937_64 random(3);
    CheckMatmul<double, double, double>(_vrmmr8, 40, 50, 300, Matrix<double>::kColumnMajor,
                                        Matrix<double>::kTransposed, random);
    CheckMatmul<float, float, int16_t>(_vrmmr4, 45, 230, 700, Matrix<float>::kStridedBackward,
                                       Matrix<int16_t>::kTransposed, random);
    CheckMatmul<double, double, double>(_vrmmr8, 30, 450, 700, Matrix<double>::kColumnMajor,
                                        Matrix<double>::kColumnMajor, random);
    // B in column panels, converted on the way, with edges that are no whole tile.
    CheckMatmul<double, float, double>(_vrmmr8, 37, 450, 701, Matrix<float>::kStridedBackward,
                                       Matrix<double>::kColumnMajor, random);
    CheckMatmul<double, double, int32_t>(_vrmmr8, 61, 333, 407, Matrix<double>::kColumnMajor,
                                         Matrix<int32_t>::kColumnMajor, random);
}

// m + n + k of 216 runs on the caller's thread, 217 through the threaded layer; three
// threads split 71 rows unevenly, and fewer rows than threads leave some slices empty.
class MatmulThreads : public vrntest::RuntimeTest {};

TEST_F(MatmulThreads, BoundaryAndSlices) {
    std::mt19937_64 random(4);
    vrntest::SetOptions("intrinthds=3");
    for (int32_t m : {71, 72, 2, 1}) {
        for (int32_t extra : {0, 1}) {
            int32_t k = 100, n = 216 - m - k + extra;
            CheckMatmul<double, double, double>(_vrmmr8, m, k, n, Matrix<double>::kColumnMajor,
                                                Matrix<double>::kColumnMajor, random);
            CheckMatmul<int32_t, int32_t, int8_t>(_vrmmi4, m, k, n, Matrix<int32_t>::kTransposed,
                                                  Matrix<int8_t>::kColumnMajor, random);
        }
    }
}

// Two program threads whose first library call is a threaded MATMUL: the option read
// that starts the run-time happens once between them.
TEST_F(MatmulThreads, TwoProgramThreadsStartTheRunTime) {
    auto product = [](uint64_t seed) {
        std::mt19937_64 random(seed);
        CheckMatmul<double, double, double>(_vrmmr8, 90, 80, 70, Matrix<double>::kColumnMajor,
                                            Matrix<double>::kColumnMajor, random);
    };
    std::thread first(product, 1), second(product, 2);
    first.join();
    second.join();
}

// Vector-matrix and matrix-vector shapes: the rank-1 operand and result have one stride.
TEST(Matmul, VectorShapes) {
    std::mt19937_64 random(5);
    Matrix<double> v(1, 9, Matrix<double>::kStridedBackward), m(9, 4, Matrix<double>::kTransposed);
    Matrix<double> out(1, 4, Matrix<double>::kStridedBackward);
    v.Fill(random);
    m.Fill(random);
    Array vd = v.Descriptor(true, false), md = m.Descriptor(), od = out.Descriptor(true, false);
    ResultRecord result = ResultFor(od.rtd, out.Base());
    _vrmmr8(&result, v.Base(), m.Base(), 0, vd.rtd, md.rtd, 0);
    ExpectProduct(v, m, out);

    Matrix<double> w(4, 9, Matrix<double>::kColumnMajor), x(9, 1, Matrix<double>::kStridedBackward);
    Matrix<double> y(4, 1, Matrix<double>::kStridedBackward);
    w.Fill(random);
    x.Fill(random);
    Array wd = w.Descriptor(), xd = x.Descriptor(true, true), yd = y.Descriptor(true, true);
    result = ResultFor(yd.rtd, y.Base());
    _vrmmr8(&result, w.Base(), x.Base(), 0, wd.rtd, xd.rtd, 0);
    ExpectProduct(w, x, y);
}

TEST(Matmul, ZeroExtents) {
    // k = 0: every element zero, a vector result included.
    std::vector<double> c(6, 7.0);
    double none = 0;
    Array a({3, 0}, 8, RTD_TYPE_REAL), b({0, 2}, 8, RTD_TYPE_REAL), cd({3, 2}, 8, RTD_TYPE_REAL);
    ResultRecord result = ResultFor(cd.rtd, c.data());
    _vrmmr8(&result, &none, &none, 0, a.rtd, b.rtd, 0);
    EXPECT_EQ(c, std::vector<double>(6, 0.0));
    std::vector<int32_t> row(4, 7);
    Array va({0}, 4, RTD_TYPE_INTEGER), mb({0, 4}, 4, RTD_TYPE_INTEGER), vr({4}, 4, RTD_TYPE_INTEGER);
    result = ResultFor(vr.rtd, row.data());
    _vrmmi4(&result, &none, &none, 0, va.rtd, mb.rtd, 0);
    EXPECT_EQ(row, std::vector<int32_t>(4, 0));
    std::vector<int8_t> flags(4, 7);
    Array vl({4}, 1, RTD_TYPE_LOGICAL);
    result = ResultFor(vl.rtd, flags.data());
    _vrmml1(&result, &none, &none, 0, va.rtd, mb.rtd, 0);
    EXPECT_EQ(flags, std::vector<int8_t>(4, 0));
    // m or n = 0: nothing is touched.
    c.assign(6, 7.0);
    Array a0({0, 5}, 8, RTD_TYPE_REAL), b5({5, 2}, 8, RTD_TYPE_REAL);
    result = ResultFor(cd.rtd, c.data());
    _vrmmr8(&result, &none, &none, 0, a0.rtd, b5.rtd, 0);
    EXPECT_EQ(c, std::vector<double>(6, 7.0));
}

TEST(Matmul, UnlistedPairLeavesTheResult) {
    std::vector<float> a(4, 1), c(4, 9);
    std::vector<double> b(4, 1);
    Array ad({2, 2}, 4, RTD_TYPE_REAL), bd({2, 2}, 8, RTD_TYPE_REAL), cd({2, 2}, 4, RTD_TYPE_REAL);
    ResultRecord result = ResultFor(cd.rtd, c.data());
    _vrmmr4(&result, a.data(), b.data(), 0, ad.rtd, bd.rtd, 0);
    EXPECT_EQ(c, std::vector<float>(4, 9));
}

// Logical: any pair of kinds, truth in the least significant byte; a K range longer than a
// block makes later blocks start from the stored value, true already or not.
TEST(Matmul, LogicalMembers) {
    std::mt19937_64 random(6);
    for (int32_t k : {1, 7, 200}) {
        Matrix<int32_t> a(13, k, Matrix<int32_t>::kColumnMajor);
        Matrix<int16_t> b(k, 11, Matrix<int16_t>::kTransposed);
        Matrix<int64_t> c(13, 11, Matrix<int64_t>::kColumnMajor);
        for (int32_t p = 0; p < k; ++p) {
            // Sparse truths with noise above bit 0, so that most elements need a long scan.
            for (int32_t i = 0; i < 13; ++i) a.At(i, p) = static_cast<int32_t>((random() % 29 == 0) | (random() % 4) << 1);
            for (int32_t j = 0; j < 11; ++j) b.At(p, j) = static_cast<int16_t>((random() % 23 == 0) | 0x100);
        }
        a.At(0, 0) = 1, b.At(0, 0) = 1;  // element (0, 0) is true in the first block
        Array ad = a.Descriptor(), bd = b.Descriptor(), cd = c.Descriptor();
        ad.rtd->header.data_type = bd.rtd->header.data_type = cd.rtd->header.data_type = RTD_TYPE_LOGICAL;
        ResultRecord result = ResultFor(cd.rtd, c.Base());
        _vrmml8(&result, a.Base(), b.Base(), 0, ad.rtd, bd.rtd, 0);
        for (int32_t i = 0; i < 13; ++i) {
            for (int32_t j = 0; j < 11; ++j) {
                bool truth = false;
                for (int32_t p = 0; p < k; ++p) truth |= (a.At(i, p) & b.At(p, j) & 1) != 0;
                EXPECT_EQ(c.At(i, j) & 1, truth) << i << "," << j << " k " << k;
                EXPECT_EQ(c.At(i, j) & ~int64_t{0xFF}, 0);
            }
        }
    }
}

TEST(Matmul, CachePararametersDefaults) {
    BlockParameters eight, one;
    _mat_cache(&eight, 8, 6);
    EXPECT_EQ(eight.line.load(), 32);
    EXPECT_EQ(eight.size, 32768);
    EXPECT_EQ(eight.scratch, 49152);
    EXPECT_EQ(eight.lines, 1024);
    EXPECT_EQ(eight.kblock, 204);
    EXPECT_EQ(eight.square, 36);
    _mat_cache(&one, 1, 6);
    EXPECT_EQ(one.square, 102);
    _mat_cache(&one, 8, 6);  // filled once: the first element length stays
    EXPECT_EQ(one.square, 102);
    auto address = reinterpret_cast<uintptr_t>(_vracache());
    EXPECT_EQ(address % 4096, 0u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(_vracache()), address);
}

using StrassenEntry = void (*)(const void*, int32_t, int32_t, const void*, int32_t, int32_t, void*, int32_t, int32_t,
                               int32_t, int32_t, int32_t, int32_t, void*, void*);

// The recursion called directly with a small cut-off: several levels on odd extents, with
// the scratch the formula gives.
template <typename C>
void CheckStrassen(StrassenEntry entry, int32_t m, int32_t k, int32_t n, int32_t cutoff, std::mt19937_64& random) {
    Matrix<C> a(m, k, Matrix<C>::kColumnMajor), b(k, n, Matrix<C>::kTransposed);
    Matrix<C> c(m, n, Matrix<C>::kStridedBackward);
    a.Fill(random);
    b.Fill(random);
    int64_t x = std::max(n, k);
    std::vector<C> work(static_cast<size_t>((x * m + int64_t{n} * k) / 3 + (3 * n + x + m + k) / 2 + 32));
    entry(a.Base(), a.row, a.col, b.Base(), b.row, b.col, c.Base(), c.row, c.col, m, k, n, cutoff, work.data(),
          work.data() + work.size());
    SCOPED_TRACE(::testing::Message() << m << "x" << k << "x" << n << " cut-off " << cutoff);
    ExpectProduct(a, b, c, 64);
}

TEST(Strassen, OddExtentsAtEveryLevel) {
    std::mt19937_64 random(7);
    for (int32_t cutoff : {2, 5, 9}) {
        CheckStrassen<float>(_vrmmr4s, 37, 29, 41, cutoff, random);
        CheckStrassen<double>(_vrmmr8s, 37, 29, 41, cutoff, random);
        CheckStrassen<double>(_vrmmr8s, 18, 33, 17, cutoff, random);
        CheckStrassen<DD>(_vrmmr16s, 21, 19, 23, cutoff, random);
        // Complex: the base case is three real products.
        CheckStrassen<Cx<float>>(_vrmmx8s, 23, 31, 19, cutoff, random);
        CheckStrassen<Cx<double>>(_vrmmx16s, 23, 31, 19, cutoff, random);
        CheckStrassen<Cx<DD>>(_vrmmx32s, 13, 11, 15, cutoff, random);
    }
}

// At the base case the complex product is three real ones: close to the complex kernel,
// not bit for bit.
TEST(Strassen, ComplexBaseCaseIsThreeRealProducts) {
    std::mt19937_64 random(8);
    const int32_t m = 30, k = 40, n = 20;
    Matrix<Cx<double>> a(m, k, Matrix<Cx<double>>::kColumnMajor), b(k, n, Matrix<Cx<double>>::kColumnMajor);
    Matrix<Cx<double>> viaReal(m, n, Matrix<Cx<double>>::kColumnMajor), direct = viaReal;
    a.Fill(random);
    b.Fill(random);
    std::vector<Cx<double>> work(4000);
    _vrmmx16s(a.Base(), a.row, a.col, b.Base(), b.row, b.col, viaReal.Base(), viaReal.row, viaReal.col, m, k, n, 1000,
              work.data(), work.data() + work.size());
    _vrmmx16c(a.Base(), a.row, a.col, b.Base(), b.row, b.col, direct.Base(), direct.row, direct.col, m, k, n,
              0x0F100F10);
    ExpectProduct(a, b, viaReal, 4);
    ExpectProduct(a, b, direct);
    EXPECT_NE(0, std::memcmp(viaReal.data.data(), direct.data.data(), direct.data.size() * sizeof(Cx<double>)));
}

// Through the dispatcher at 1201 on each side: the default cut-off, a cut-off of 300, and
// none at all, which is the conventional kernel bit for bit. REAL(8) by INTEGER(2) is
// never Strassen. Integers are exact either way.
TEST(Strassen, DispatcherAt1201) {
    if (kTarget) GTEST_SKIP() << "too slow under emulation; the recursion is checked directly above";
    std::mt19937_64 random(9);
    const int32_t size = 1201;
    Matrix<double> a(size, size, Matrix<double>::kColumnMajor), b(size, size, Matrix<double>::kColumnMajor);
    a.Fill(random);
    b.Fill(random);
    Array ad = a.Descriptor(), bd = b.Descriptor();
    auto product = [&](Dispatcher entry, const void* left, const void* right, const Array& ld, const Array& rd,
                       int32_t cutoff, int32_t has) {
        Matrix<double> c(size, size, Matrix<double>::kColumnMajor);
        Array cd = c.Descriptor();
        ResultRecord result = ResultFor(cd.rtd, c.Base());
        entry(&result, left, right, cutoff, ld.rtd, rd.rtd, has);
        return c;
    };
    Matrix<double> plain = product(_vrmmr8, a.Base(), b.Base(), ad, bd, 1, 0);
    std::uniform_int_distribution<int32_t> index(0, size - 1);
    for (int sample = 0; sample < 200; ++sample) {
        int32_t i = sample < 100 ? size / 2 : index(random), j = sample < 100 ? index(random) : size / 2;
        ASSERT_EQ(plain.At(i, j), (ReferenceElement<double, double, double>(a, b, i, j)));
    }
    for (int32_t cutoff : {1, 300}) {
        Matrix<double> fast = product(_vrmmr8, a.Base(), b.Base(), ad, bd, cutoff, 1);
        double worst = 0;
        for (size_t e = 0; e < fast.data.size(); ++e) worst = std::max(worst, std::fabs(fast.data[e] - plain.data[e]));
        EXPECT_GT(worst, 0.0) << "the recursion ran";
        EXPECT_LT(worst, 16.0 * size * size * 0x1p-52) << "cut-off " << cutoff;
        // Row m2 and column n2, where the halves overlap.
        for (int32_t t = 0; t < size; ++t) {
            ASSERT_NEAR(fast.At(size / 2, t), plain.At(size / 2, t), 16.0 * size * size * 0x1p-52);
            ASSERT_NEAR(fast.At(t, size / 2), plain.At(t, size / 2), 16.0 * size * size * 0x1p-52);
        }
    }
    Matrix<int16_t> small(size, size, Matrix<int16_t>::kColumnMajor);
    small.Fill(random);
    Array sd = small.Descriptor();
    Matrix<double> mixed = product(_vrmmr8, a.Base(), small.Base(), ad, sd, 1, 1);
    for (int sample = 0; sample < 100; ++sample) {
        int32_t i = index(random), j = index(random);
        ASSERT_EQ(mixed.At(i, j), (ReferenceElement<double, double, int16_t>(a, small, i, j)));
    }

    Matrix<int32_t> ia(size, size, Matrix<int32_t>::kColumnMajor), ib(size, size, Matrix<int32_t>::kTransposed);
    ia.Fill(random);
    ib.Fill(random);
    Array iad = ia.Descriptor(), ibd = ib.Descriptor();
    Matrix<int32_t> ic(size, size, Matrix<int32_t>::kColumnMajor);
    Array icd = ic.Descriptor();
    ResultRecord result = ResultFor(icd.rtd, ic.Base());
    _vrmmi4(&result, ia.Base(), ib.Base(), 1, iad.rtd, ibd.rtd, 1);
    for (int sample = 0; sample < 300; ++sample) {
        int32_t i = sample < 100 ? size / 2 : index(random), j = sample < 200 ? index(random) : size / 2;
        ASSERT_EQ(ic.At(i, j), (ReferenceElement<int32_t, int32_t, int32_t>(ia, ib, i, j)));
    }
}

}  // namespace
