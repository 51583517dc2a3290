// The Strassen-Winograd product over the conventional kernel: seven half-size products
// and fifteen additions a level, in scratch bounded by StrassenWorkspace. Odd extents are
// handled by halves that overlap by one row or column, never by padding copies.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "intrinsics/matmul_kernel.h"

// Elements of the result type a Strassen product of m x k by k x n needs.
inline int64_t StrassenWorkspace(int64_t m, int64_t k, int64_t n) {
    int64_t x = std::max(n, k);
    return (x * m + n * k) / 3 + (3 * n + x + m + k) / 2 + 32;
}

// A matrix in place: element (i, j) at p + i * r + j * c.
template <typename T>
struct View {
    T* p;
    ptrdiff_t r, c;
    View At(ptrdiff_t i, ptrdiff_t j) const { return {p + i * r + j * c, r, c}; }
    T& operator()(ptrdiff_t i, ptrdiff_t j) const { return p[i * r + j * c]; }
    operator View<const T>() const { return {p, r, c}; }
};

// Addition, subtraction and negation of elements. Integers wrap.
template <typename E, typename = void>
struct Linear {
    static E Plus(E x, E y) { return x + y; }
    static E Minus(E x, E y) { return x - y; }
    static E Negative(E x) { return -x; }
};
template <typename E>
struct Linear<E, std::enable_if_t<std::is_integral_v<E>>> {
    using U = std::make_unsigned_t<E>;
    static E Plus(E x, E y) { return static_cast<E>(static_cast<U>(static_cast<U>(x) + static_cast<U>(y))); }
    static E Minus(E x, E y) { return static_cast<E>(static_cast<U>(static_cast<U>(x) - static_cast<U>(y))); }
    static E Negative(E x) { return static_cast<E>(static_cast<U>(-static_cast<U>(x))); }
};
template <>
struct Linear<R16> {
    static R16 Plus(R16 x, R16 y) { return Add(x, y); }
    static R16 Minus(R16 x, R16 y) { return Add(x, Negate(y)); }
    static R16 Negative(R16 x) { return Negate(x); }
};
template <typename T>
struct Linear<Complex<T>> {
    using P = Linear<T>;
    static Complex<T> Plus(Complex<T> x, Complex<T> y) { return {P::Plus(x.re, y.re), P::Plus(x.im, y.im)}; }
    static Complex<T> Minus(Complex<T> x, Complex<T> y) { return {P::Minus(x.re, y.re), P::Minus(x.im, y.im)}; }
    static Complex<T> Negative(Complex<T> x) { return {P::Negative(x.re), P::Negative(x.im)}; }
};

// z := op(x, y) elementwise on an n1 by n2 array; z may be x or y. When both sources run
// along the first dimension that is the inner loop; otherwise the first dimension is
// taken in tiles of 64, so that an operand that is effectively transposed stays in cache.
template <typename E, typename Op>
void Combine(View<const E> x, View<const E> y, View<E> z, ptrdiff_t n1, ptrdiff_t n2, Op op) {
    auto along = [](View<const E> v) { return (v.r < 0 ? -v.r : v.r) <= (v.c < 0 ? -v.c : v.c); };
    if (along(x) && along(y)) {
        for (ptrdiff_t j = 0; j < n2; ++j) {
            for (ptrdiff_t i = 0; i < n1; ++i) z(i, j) = op(x(i, j), y(i, j));
        }
        return;
    }
    constexpr ptrdiff_t kTile = 0x40;
    for (ptrdiff_t i0 = 0; i0 < n1; i0 += kTile) {
        ptrdiff_t i1 = std::min(n1, i0 + kTile);
        for (ptrdiff_t j = 0; j < n2; ++j) {
            for (ptrdiff_t i = i0; i < i1; ++i) z(i, j) = op(x(i, j), y(i, j));
        }
    }
}

template <typename E>
void mat_add(View<const E> x, View<const E> y, View<E> z, ptrdiff_t n1, ptrdiff_t n2) {
    Combine<E>(x, y, z, n1, n2, Linear<E>::Plus);
}
template <typename E>
void mat_sub(View<const E> x, View<const E> y, View<E> z, ptrdiff_t n1, ptrdiff_t n2) {
    Combine<E>(x, y, z, n1, n2, Linear<E>::Minus);
}

// Base(a, b, c, m, k, n, work, workEnd) multiplies below the cut-off.
template <typename E, typename Base>
class StrassenWinograd {
public:
    StrassenWinograd(ptrdiff_t cutoff, E* workEnd, Base base) : cutoff_(cutoff), workEnd_(workEnd), base_(base) {}

    void Multiply(View<const E> a, View<const E> b, View<E> c, ptrdiff_t m, ptrdiff_t k, ptrdiff_t n, E* work) const {
        if (m < cutoff_ || k < cutoff_ || n < cutoff_) {
            base_(a, b, c, m, k, n, work, workEnd_);
            return;
        }
        const ptrdiff_t m2 = m / 2, m1 = m - m2, dm = m1 - m2;
        const ptrdiff_t k2 = k / 2, k1 = k - k2, dk = k1 - k2;
        const ptrdiff_t n2 = n / 2, n1 = n - n2, dn = n1 - n2;
        E* w2 = work + m1 * std::max(n1, k1);
        E* rest = w2 + k1 * n1;
        E* saved = rest;
        // The area is sized by StrassenWorkspace; a caller's smaller one ends the recursion.
        if (rest + dm * n2 > workEnd_) {
            base_(a, b, c, m, k, n, work, workEnd_);
            return;
        }
        const View<E> W1{work, k1, 1};       // m1 x k1, along rows
        const View<E> W1c{work, 1, m1};      // m1 x n1, along columns: steps 14, 15 and 23
        const View<E> W2{w2, 1, k1};         // k1 x n1
        const View<E> C = c;

        mat_sub<E>(b.At(k2, n2), b.At(0, n2), W2, k1, n1);                    // 1
        mat_sub<E>(a.At(dm, 0), a.At(m1, 0), W1, m2, k1);                     // 2
        Multiply(W1, W2, C.At(m1, 0), m2, k1, n1, rest);                      // 3
        if (dk) {                                                             // 4
            for (ptrdiff_t i = 0; i < m1; ++i) W1(i, 0) = a(m2 + i, 0);
        }
        mat_add<E>(a.At(m2, dk), a.At(m2, k1), W1.At(0, dk), m1, k2);
        mat_sub<E>(b.At(0, n2), b.At(0, 0), W2, k1, n1);                      // 5
        Multiply(W1, W2.At(0, dn), C.At(m2, n1), m1, k1, n2, rest);           // 6
        mat_sub<E>(b.At(k2, n2), W2, W2, k1, n1);                             // 7
        mat_sub<E>(W1, a, W1, m1, k1);                                        // 8
        Multiply(W1, W2, C, m1, k1, n1, rest);                                // 9
        if (dk) {                                                             // 10
            for (ptrdiff_t i = 0; i < m1; ++i) W1(i, 0) = Linear<E>::Negative(W1(i, 0));
        }
        mat_sub<E>(a.At(0, k1), W1.At(0, dk), W1.At(0, dk), m1, k2);          // 11
        if (dm) {                                                             // 12
            for (ptrdiff_t j = 0; j < n2; ++j) saved[j] = C(m2, n1 + j);
        }
        Multiply(W1, b.At(k2, n1), C.At(0, n1), m1, k1, n2, rest + dm * n2);
        if (dm) {
            for (ptrdiff_t j = 0; j < n2; ++j) C(0, n1 + j) = Linear<E>::Plus(C(0, n1 + j), saved[j]);
        }
        mat_add<E>(C.At(dm, n1), C.At(m1, n1), C.At(dm, n1), m2, n2);         // 13
        Multiply(a, b, W1c, m1, k1, n1, rest);                                // 14
        mat_add<E>(W1c, C, C, m1, n1);                                        // 15
        mat_add<E>(C.At(0, dn), C.At(0, n1), C.At(0, n1), m1, n2);            // 16
        mat_add<E>(C.At(dm, 0), C.At(m1, 0), C.At(dm, 0), m2, n1);            // 17
        mat_sub<E>(W2, b.At(k2, 0), W2, k1, n1);                              // 18
        Multiply(a.At(m1, k1), W2.At(dk, 0), C.At(m1, 0), m2, k2, n1, rest);  // 19
        mat_sub<E>(C.At(dm, 0), C.At(m1, 0), C.At(m1, 0), m2, n1);            // 20
        mat_add<E>(C.At(m1, n1), C.At(dm, dn), C.At(m1, n1), m2, n2);         // 21
        Multiply(a.At(0, k1), b.At(k1, 0), C, m1, k2, n1, rest);              // 22
        mat_add<E>(C, W1c, C, m1, n1);                                        // 23
    }

private:
    ptrdiff_t cutoff_;
    E* workEnd_;
    Base base_;
};

template <typename T>
Flat FlatOf(View<const T> a, View<const T> b, View<T> c, ptrdiff_t m, ptrdiff_t k, ptrdiff_t n) {
    return {a.p, a.r, a.c, b.p, b.r, b.c, c.p, c.r, c.c, m, k, n};
}

// The complex base case in three real products, (Re A)(Re B - Im B), (Re A + Im A)(Re B)
// and (Re A - Im A)(Im B), through the real kernel of the same precision. `work` to
// `workEnd` holds the real temporaries; when it cannot hold a column, `fallback` runs the
// complex kernel instead.
template <typename R, typename RealKernel, typename Fallback>
void ThreeRealProducts(View<const Complex<R>> a, View<const Complex<R>> b, View<Complex<R>> c, ptrdiff_t m,
                       ptrdiff_t k, ptrdiff_t n, Complex<R>* work, Complex<R>* workEnd, RealKernel realKernel,
                       Fallback fallback) {
    auto part = [](auto v, int which) {
        using T = std::remove_pointer_t<decltype(v.p)>;
        using P = std::conditional_t<std::is_const_v<T>, const R, R>;
        return View<P>{reinterpret_cast<P*>(v.p) + which, 2 * v.r, 2 * v.c};
    };
    const View<const R> reA = part(a, 0), imA = part(a, 1), reB = part(b, 0), imB = part(b, 1);
    const View<R> reC = part(c, 0), imC = part(c, 1);
    R* t = reinterpret_cast<R*>(work);
    const ptrdiff_t room = reinterpret_cast<R*>(workEnd) - t;
    if (room / k == 0 || room / (n + k) == 0) {
        fallback(a, b, c, m, k, n);
        return;
    }
    const ptrdiff_t span = room / k;
    for (ptrdiff_t j0 = 0; j0 < n; j0 += span) {
        ptrdiff_t nc = std::min(span, n - j0);
        View<R> T{t, 1, k};
        mat_sub<R>(reB.At(0, j0), imB.At(0, j0), T, k, nc);
        realKernel(FlatOf<R>(reA, T, reC.At(0, j0), m, k, nc));
    }
    for (ptrdiff_t i0 = 0; i0 < m; i0 += span) {
        ptrdiff_t mc = std::min(span, m - i0);
        View<R> T{t, 1, mc};
        mat_add<R>(reA.At(i0, 0), imA.At(i0, 0), T, mc, k);
        realKernel(FlatOf<R>(T, reB, imC.At(i0, 0), mc, k, n));
    }
    mat_sub<R>(imC, reC, imC, m, n);
    const ptrdiff_t rows = room / (n + k);
    for (ptrdiff_t i0 = 0; i0 < m; i0 += rows) {
        ptrdiff_t mc = std::min(rows, m - i0);
        View<R> T{t, 1, mc};
        View<R> P{t + mc * k, 1, mc};
        mat_sub<R>(reA.At(i0, 0), imA.At(i0, 0), T, mc, k);
        realKernel(FlatOf<R>(T, imB, P, mc, k, n));
        mat_add<R>(reC.At(i0, 0), P, reC.At(i0, 0), mc, n);
    }
}
