// DOT_PRODUCT: one accumulator over the elements in order, for the operand pairs of the
// MATMUL kernel of the result type; the first argument is conjugated when complex.
#include <cstdint>
#include <cstring>

#include "core/export.h"
#include "intrinsics/frame.h"
#include "intrinsics/matmul_arith.h"
#include "vrn90.h"

namespace {

struct Vectors {
    const char* a;
    const char* b;
    ptrdiff_t strideA, strideB;  // bytes
    ptrdiff_t extent;
};

Vectors Read(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd) {
    RTDDimension da, db;
    std::memcpy(&da, &aRtd->dims[0], sizeof da);
    std::memcpy(&db, &bRtd->dims[0], sizeof db);
    return {static_cast<const char*>(a), static_cast<const char*>(b), da.multiplier, db.multiplier,
            da.extent < 0 ? 0 : da.extent};
}

template <typename T>
T Element(const char* base, ptrdiff_t index, ptrdiff_t stride) {
    T value;
    std::memcpy(&value, base + index * stride, sizeof value);
    return value;
}

// The product term added for each element pair: x y, with x conjugated for complex.
template <typename C>
struct Term {
    using Math = Arith<C>;
    using Acc = typename Math::Acc;
    static Acc Step(Acc s, Acc x, Acc y) { return Math::MulAdd(x, y, s); }
};

// With x = (a, -b) and y = (c, d): a c - d (-b) and a d + c (-b), each a rounded product
// and a fused multiply-add onto it; the terms are then added plainly.
template <typename T>
struct Term<Complex<T>> {
    using Acc = Complex<T>;
    static Acc Step(Acc s, Acc x, Acc y) {
        T nb = -x.im;
        T re = std::fma(x.re, y.re, -(y.im * nb));
        T im = std::fma(x.re, y.im, y.re * nb);
        return {s.re + re, s.im + im};
    }
};
template <>
struct Term<X32> {
    using Acc = X32;
    static Acc Step(Acc s, Acc x, Acc y) {
        R16 nb = Negate(x.im);
        R16 re = Add(mf2x2(x.re, y.re), Negate(mf2x2(y.im, nb)));
        R16 im = Add(mf2x2(x.re, y.im), mf2x2(y.re, nb));
        return {Add(s.re, re), Add(s.im, im)};
    }
};

// The element loop, unrolled by four with the remainder first; element order is kept.
template <typename C, typename TA, typename TB>
typename Arith<C>::Acc Accumulate(const Vectors& v) {
    using Math = Arith<C>;
    auto s = Math::Zero();
    auto step = [&](ptrdiff_t i) {
        s = Term<C>::Step(s, Math::From(Element<TA>(v.a, i, v.strideA)), Math::From(Element<TB>(v.b, i, v.strideB)));
    };
    ptrdiff_t i = 0;
    for (; i < v.extent % 4; ++i) step(i);
    for (; i < v.extent; i += 4) {
        step(i);
        step(i + 1);
        step(i + 2);
        step(i + 3);
    }
    return s;
}

// The pair the code names among (C, C), (C, Other) and (Other, C); an unlisted pair gives
// zero.
template <typename C, typename... Other>
typename Arith<C>::Acc Dot(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd) {
    const Vectors v = Read(a, b, aRtd, bRtd);
    const uint32_t code = OperandCode(aRtd, EffectiveLength(aRtd)) << 16 | OperandCode(bRtd, EffectiveLength(bRtd));
    auto s = Arith<C>::Zero();
    if (code == PairCode<C, C>()) return Accumulate<C, C, C>(v);
    (void)((code == PairCode<C, Other>() ? (s = Accumulate<C, C, Other>(v), true)
            : code == PairCode<Other, C>() ? (s = Accumulate<C, Other, C>(v), true)
                                           : false) ||
           ...);
    return s;
}

template <typename Result>
Result Integer(typename Arith<Result>::Acc s) {
    return static_cast<Result>(s);
}

vrn_real16 Real16(R16 x) {
    vrn_real16 out;
    static_assert(sizeof out == sizeof x, "a REAL(16) result is a pair of doubles");
    std::memcpy(&out, &x, sizeof out);
    return out;
}

template <typename Out, typename Part>
Out ComplexResult(Part re, Part im) {
    Out z;
    std::memcpy(reinterpret_cast<char*>(&z), &re, sizeof re);
    std::memcpy(reinterpret_cast<char*>(&z) + sizeof re, &im, sizeof im);
    return z;
}

// Logical: the OR of the ANDs of the truth bytes, over the whole vectors, widened with its
// sign to the result kind.
template <typename Result>
Result Logical(const void* a, const void* b, const RTDArray* aRtd, const RTDArray* bRtd) {
    const Vectors v = Read(a, b, aRtd, bRtd);
    const int32_t lenA = EffectiveLength(aRtd), lenB = EffectiveLength(bRtd);
    if (lenA <= 0 || lenB <= 0) return 0;
    const auto* x = reinterpret_cast<const unsigned char*>(v.a);
    const auto* y = reinterpret_cast<const unsigned char*>(v.b);
    unsigned char s = 0;
    for (ptrdiff_t i = 0; i < v.extent; ++i) {
        s |= static_cast<unsigned char>(TruthByte(x + i * v.strideA, lenA) & TruthByte(y + i * v.strideB, lenB));
    }
    return static_cast<Result>(static_cast<int8_t>(s));
}

}  // namespace

#define VRN_DOT_ARGUMENTS const void *a, const void *b, const RTDArray *aRtd, const RTDArray *bRtd

VRN_EXPORT int8_t _vrdpi1(VRN_DOT_ARGUMENTS) { return Integer<I1>(Dot<I1>(a, b, aRtd, bRtd)); }
VRN_EXPORT int16_t _vrdpi2(VRN_DOT_ARGUMENTS) { return Integer<I2>(Dot<I2, I1>(a, b, aRtd, bRtd)); }
VRN_EXPORT int32_t _vrdpi4(VRN_DOT_ARGUMENTS) { return Integer<I4>(Dot<I4, I2, I1>(a, b, aRtd, bRtd)); }
VRN_EXPORT int64_t _vrdpi8(VRN_DOT_ARGUMENTS) { return Integer<I8>(Dot<I8, I4, I2, I1>(a, b, aRtd, bRtd)); }
VRN_EXPORT float _vrdpr4(VRN_DOT_ARGUMENTS) { return Dot<R4, I8, I4, I2, I1>(a, b, aRtd, bRtd); }
VRN_EXPORT double _vrdpr8(VRN_DOT_ARGUMENTS) { return Dot<R8, R4, I8, I4, I2, I1>(a, b, aRtd, bRtd); }
VRN_EXPORT vrn_real16 _vrdpr16(VRN_DOT_ARGUMENTS) {
    return Real16(Dot<R16, R8, R4, I8, I4, I2, I1>(a, b, aRtd, bRtd));
}
VRN_EXPORT float _Complex _vrdpx8(VRN_DOT_ARGUMENTS) {
    X8 s = Dot<X8, R4, I8, I4, I2, I1>(a, b, aRtd, bRtd);
    return ComplexResult<float _Complex>(s.re, s.im);
}
VRN_EXPORT double _Complex _vrdpx16(VRN_DOT_ARGUMENTS) {
    X16 s = Dot<X16, X8, R8, R4, I8, I4, I2, I1>(a, b, aRtd, bRtd);
    return ComplexResult<double _Complex>(s.re, s.im);
}
VRN_EXPORT vrn_complex32 _vrdpx32(VRN_DOT_ARGUMENTS) {
    X32 s = Dot<X32, X16, X8, R16, R8, R4, I8, I4, I2, I1>(a, b, aRtd, bRtd);
    return ComplexResult<vrn_complex32>(s.re, s.im);
}
VRN_EXPORT int8_t _vrdpl1(VRN_DOT_ARGUMENTS) { return Logical<int8_t>(a, b, aRtd, bRtd); }
VRN_EXPORT int16_t _vrdpl2(VRN_DOT_ARGUMENTS) { return Logical<int16_t>(a, b, aRtd, bRtd); }
VRN_EXPORT int32_t _vrdpl4(VRN_DOT_ARGUMENTS) { return Logical<int32_t>(a, b, aRtd, bRtd); }
VRN_EXPORT int64_t _vrdpl8(VRN_DOT_ARGUMENTS) { return Logical<int64_t>(a, b, aRtd, bRtd); }
