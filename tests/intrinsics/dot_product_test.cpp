// DOT_PRODUCT against a loop written here: the operand pairs, strides, conjugation of the
// first argument, the logical OR of ANDs and the return conventions.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "tests/intrinsics/arrays.h"

namespace {

// Rank-1 descriptors over a buffer, stride in elements (negative starts at the end).
template <typename T>
struct Vector {
    std::vector<T> data;
    int32_t extent, stride;
    Array descriptor;
    Vector(std::vector<T> values, int32_t s, uint8_t type, int32_t length = sizeof(T))
        : extent(static_cast<int32_t>(values.size())), stride(s), descriptor({extent}, length, type, {s}) {
        data.resize(values.size() * (s < 0 ? -s : s) + 1);
        for (int32_t i = 0; i < extent; ++i) At(i) = values[i];
    }
    T& At(int32_t i) { return data[Origin() + static_cast<size_t>(i * stride)]; }
    size_t Origin() const { return stride < 0 ? static_cast<size_t>(-stride) * (extent - 1) : 0; }
    const T* Base() const { return data.data() + Origin(); }
};

TEST(DotProduct, IntegersWrapAtTheResultWidth) {
    Vector<int16_t> a({300, -7, 250}, 2, RTD_TYPE_INTEGER);
    Vector<int8_t> b({100, 3, 2}, -1, RTD_TYPE_INTEGER);
    int16_t expected = static_cast<int16_t>(300 * 100 - 21 + 500);
    EXPECT_EQ(_vrdpi2(a.Base(), b.Base(), a.descriptor.rtd, b.descriptor.rtd), expected);
    EXPECT_EQ(_vrdpi2(b.Base(), a.Base(), b.descriptor.rtd, a.descriptor.rtd), expected);
    Vector<int8_t> c({100, 100}, 1, RTD_TYPE_BYTE);
    EXPECT_EQ(_vrdpi1(c.Base(), c.Base(), c.descriptor.rtd, c.descriptor.rtd), static_cast<int8_t>(20000));
    Vector<int64_t> d({INT64_MAX, 2}, 1, RTD_TYPE_INTEGER);
    Vector<int32_t> e({2, 1}, 1, RTD_TYPE_INTEGER);
    EXPECT_EQ(_vrdpi8(d.Base(), e.Base(), d.descriptor.rtd, e.descriptor.rtd), static_cast<int64_t>(0));  // wraps
}

// Reals: one fused multiply-add an element, in element order, over lengths that exercise
// the unrolled loop's remainder.
TEST(DotProduct, RealsAreAFusedChain) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> unit(-1, 1);
    for (int32_t n : {0, 1, 3, 4, 5, 17, 1000}) {
        std::vector<double> x(n), y(n);
        std::vector<int32_t> z(n);
        for (int32_t i = 0; i < n; ++i) x[i] = unit(random), y[i] = unit(random), z[i] = static_cast<int32_t>(random());
        Vector<double> a(x, 3, RTD_TYPE_REAL), b(y, -2, RTD_TYPE_REAL);
        Vector<int32_t> c(z, 1, RTD_TYPE_INTEGER);
        double s = 0, t = 0;
        float f = 0;
        for (int32_t i = 0; i < n; ++i) {
            s = std::fma(x[i], y[i], s);
            t = std::fma(static_cast<double>(z[i]), x[i], t);
        }
        std::vector<float> xf(x.begin(), x.end());
        for (int32_t i = 0; i < n; ++i) f = std::fma(xf[i], static_cast<float>(z[i]), f);
        Vector<float> af(xf, 1, RTD_TYPE_REAL);
        EXPECT_EQ(_vrdpr8(a.Base(), b.Base(), a.descriptor.rtd, b.descriptor.rtd), s) << n;
        EXPECT_EQ(_vrdpr8(c.Base(), a.Base(), c.descriptor.rtd, a.descriptor.rtd), t) << n;
        EXPECT_EQ(_vrdpr4(af.Base(), c.Base(), af.descriptor.rtd, c.descriptor.rtd), f) << n;
    }
}

TEST(DotProduct, Real16KeepsTheLowWord) {
    struct Pair {
        double hi, lo;
    };
    Vector<Pair> a({{1.0, 0x1p-70}, {3.0, 0}}, 1, RTD_TYPE_REAL);
    Vector<double> b({1.0, 0x1p-60}, 1, RTD_TYPE_REAL);
    vrn_real16 r = _vrdpr16(a.Base(), b.Base(), a.descriptor.rtd, b.descriptor.rtd);
    Pair p;
    std::memcpy(&p, &r, sizeof p);
    // 1 + 2^-70 + 3 * 2^-60
    EXPECT_EQ(p.hi, 1.0);
    EXPECT_EQ(p.lo, 0x1p-70 + 3 * 0x1p-60);
}

TEST(DotProduct, ComplexConjugatesTheFirstArgument) {
    using C8 = std::complex<float>;
    using C16 = std::complex<double>;
    Vector<C8> i8({C8(0, 1)}, 1, RTD_TYPE_COMPLEX);
    float _Complex one = _vrdpx8(i8.Base(), i8.Base(), i8.descriptor.rtd, i8.descriptor.rtd);
    EXPECT_EQ(__real__ one, 1.0f);
    EXPECT_EQ(__imag__ one, 0.0f);

    Vector<C16> a({C16(1, 2), C16(3, -4), C16(0.5, 0.25)}, -1, RTD_TYPE_COMPLEX);
    Vector<C16> b({C16(5, 6), C16(-7, 8), C16(2, 2)}, 2, RTD_TYPE_COMPLEX);
    C16 expected = 0;
    for (int32_t i = 0; i < 3; ++i) expected += std::conj(a.At(i)) * b.At(i);
    double _Complex got = _vrdpx16(a.Base(), b.Base(), a.descriptor.rtd, b.descriptor.rtd);
    EXPECT_EQ(C16(__real__ got, __imag__ got), expected);  // small integers and halves: exact

    // A real first argument has nothing to conjugate; a COMPLEX(4) one is widened.
    Vector<double> r({2, 3, 4}, 1, RTD_TYPE_REAL);
    got = _vrdpx16(r.Base(), b.Base(), r.descriptor.rtd, b.descriptor.rtd);
    EXPECT_EQ(C16(__real__ got, __imag__ got), C16(2, 0) * b.At(0) + C16(3, 0) * b.At(1) + C16(4, 0) * b.At(2));
    Vector<C8> narrow({C8(1, 1)}, 1, RTD_TYPE_COMPLEX);
    got = _vrdpx16(narrow.Base(), b.Base(), narrow.descriptor.rtd, b.descriptor.rtd);
    EXPECT_EQ(C16(__real__ got, __imag__ got), C16(1, -1) * b.At(0));

    struct Pair {
        double hi, lo;
    };
    struct C32 {
        Pair re, im;
    };
    Vector<C32> w({C32{{0, 0}, {1, 0}}}, 1, RTD_TYPE_COMPLEX);
    vrn_complex32 q = _vrdpx32(w.Base(), w.Base(), w.descriptor.rtd, w.descriptor.rtd);
    C32 qc;
    std::memcpy(&qc, &q, sizeof qc);
    EXPECT_EQ(qc.re.hi, 1.0);
    EXPECT_EQ(qc.im.hi, 0.0);
}

// The truth byte is the least significant; all of it is ORed and widened with its sign.
TEST(DotProduct, LogicalOrOfAnds) {
    auto truth = [](int32_t v) { return v; };
    Vector<int32_t> a({truth(0), truth(0x100), truth(0xFE)}, 1, RTD_TYPE_LOGICAL);
    Vector<int8_t> b({1, 1, -1}, 2, RTD_TYPE_LOGICAL);
    EXPECT_EQ(_vrdpl4(a.Base(), b.Base(), a.descriptor.rtd, b.descriptor.rtd), -2);  // 0xFE, not true
    Vector<int8_t> c({0, 1}, 1, RTD_TYPE_LOGICAL);
    EXPECT_EQ(_vrdpl8(c.Base(), c.Base(), c.descriptor.rtd, c.descriptor.rtd), 1);
    Vector<int8_t> none({}, 1, RTD_TYPE_LOGICAL);
    EXPECT_EQ(_vrdpl2(none.Base(), none.Base(), none.descriptor.rtd, none.descriptor.rtd), 0);
}

}  // namespace
