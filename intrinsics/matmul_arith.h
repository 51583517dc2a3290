// Element arithmetic of MATMUL and DOT_PRODUCT: the accumulator of each result type, the
// conversion of an operand of another type to it as it is loaded, and the multiply-add.
// Floating-point products are added with a fused multiply-add, so that every element is
// the same chain of roundings whatever the blocking, the tile or the thread split.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "convert/double_double.h"
#include "intrinsics/complex.h"
#include "vrn90.h"

// Storage types of the elements, by type letter.
using I1 = int8_t;
using I2 = int16_t;
using I4 = int32_t;
using I8 = int64_t;
using R4 = float;
using R8 = double;
using R16 = DoubleDouble;
using X8 = Complex<float>;
using X16 = Complex<double>;
using X32 = Complex<DoubleDouble>;

// The (type, length) half of an operand code for each storage type.
template <typename T> inline constexpr uint32_t kOperandCode = 0;
template <> inline constexpr uint32_t kOperandCode<I1> = 0x0D01;
template <> inline constexpr uint32_t kOperandCode<I2> = 0x0D02;
template <> inline constexpr uint32_t kOperandCode<I4> = 0x0D04;
template <> inline constexpr uint32_t kOperandCode<I8> = 0x0D08;
template <> inline constexpr uint32_t kOperandCode<R4> = 0x0E04;
template <> inline constexpr uint32_t kOperandCode<R8> = 0x0E08;
template <> inline constexpr uint32_t kOperandCode<R16> = 0x0E10;
template <> inline constexpr uint32_t kOperandCode<X8> = 0x0F08;
template <> inline constexpr uint32_t kOperandCode<X16> = 0x0F10;
template <> inline constexpr uint32_t kOperandCode<X32> = 0x0F20;

template <typename A, typename B>
constexpr uint32_t PairCode() {
    return kOperandCode<A> << 16 | kOperandCode<B>;
}

// The half of an operand code a descriptor gives, for an element of `length` bytes; byte
// counts as integer.
inline uint32_t OperandCode(const RTDArray* rtd, int32_t length) {
    uint32_t type = rtd->header.data_type == RTD_TYPE_BYTE ? RTD_TYPE_INTEGER : rtd->header.data_type;
    return type << 8 | static_cast<uint32_t>(length & 0xFF);
}

// A value converted to double-double exactly: a 64-bit integer may need both words.
inline R16 ToPair(int64_t x) {
    double hi = static_cast<double>(x);
    // hi is within half an ulp of x, so x - hi fits in 64 bits unless hi rounded up to 2^63.
    if (hi >= 9223372036854775808.0) return {hi, static_cast<double>(x - INT64_MAX - 1)};
    return {hi, static_cast<double>(x - static_cast<int64_t>(hi))};
}
inline R16 ToPair(double x) { return {x, 0.0}; }
inline R16 ToPair(R16 x) { return x; }

// Arith<T> for a result type T: Acc is what a sum is held in, From converts an operand
// element, MulAdd adds a product, Store narrows back. Integer sums wrap at the result
// width: they are held unsigned, at least 32 bits wide, and truncated when stored.
template <typename T, typename = void>
struct Arith;

template <typename T>
struct Arith<T, std::enable_if_t<std::is_integral_v<T>>> {
    using Acc = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;
    static Acc Zero() { return 0; }
    template <typename X>
    static Acc From(X x) {
        return static_cast<Acc>(static_cast<T>(x));
    }
    static Acc MulAdd(Acc a, Acc b, Acc s) { return s + a * b; }
    static T Store(Acc s) { return static_cast<T>(s); }
};

template <typename T>
struct Arith<T, std::enable_if_t<std::is_floating_point_v<T>>> {
    using Acc = T;
    static Acc Zero() { return 0; }
    template <typename X>
    static Acc From(X x) {
        return static_cast<T>(x);
    }
    static Acc MulAdd(Acc a, Acc b, Acc s) { return std::fma(a, b, s); }
    static T Store(Acc s) { return s; }
};

template <>
struct Arith<R16> {
    using Acc = R16;
    static Acc Zero() { return {0.0, 0.0}; }
    template <typename X>
    static Acc From(X x) {
        if constexpr (std::is_integral_v<X>) return ToPair(static_cast<int64_t>(x));
        else if constexpr (std::is_floating_point_v<X>) return ToPair(static_cast<double>(x));
        else return x;
    }
    static Acc MulAdd(Acc a, Acc b, Acc s) { return Add(s, mf2x2(a, b)); }
    static R16 Store(Acc s) { return s; }
};

// A real or integer operand of a complex product is the complex value (x, 0).
template <typename T>
struct Arith<Complex<T>> {
    using Part = Arith<T>;
    using Acc = Complex<T>;
    static Acc Zero() { return {Part::Zero(), Part::Zero()}; }
    template <typename X>
    static Acc From(X x) {
        if constexpr (std::is_arithmetic_v<X> || std::is_same_v<X, R16>) return {Part::From(x), Part::Zero()};
        else return {Part::From(x.re), Part::From(x.im)};
    }
    // (a.re b.re - a.im b.im, a.re b.im + a.im b.re), each term fused onto its part.
    static Acc MulAdd(const Acc& a, const Acc& b, Acc s) {
        s.re = Part::MulAdd(a.re, b.re, s.re);
        s.re = Part::MulAdd(Negated(a.im), b.im, s.re);
        s.im = Part::MulAdd(a.re, b.im, s.im);
        s.im = Part::MulAdd(a.im, b.re, s.im);
        return s;
    }
    static Acc Store(Acc s) { return s; }

private:
    static T Negated(T x) {
        if constexpr (std::is_same_v<T, R16>) return Negate(x);
        else return -x;
    }
};
