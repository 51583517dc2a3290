// Double-double arithmetic: a value held as the unevaluated sum of two doubles, high and
// low, with |low| at most half an ulp of high. About 106 bits of precision from plain
// doubles and a fused multiply-add; 16-byte reals are stored in this form.
//
// The error-free transformations below rely on round-to-nearest for their exactness
// claims; the conversions that round in other modes switch the mode only for their last
// addition.
#pragma once

#include <cfenv>
#include <cmath>

#include "core/rounding_scope.h"

struct DoubleDouble {
    double hi;
    double lo;
};

// a + b = s + e exactly, for any a and b.
inline DoubleDouble TwoSum(double a, double b) {
    double s = a + b;
    double bb = s - a;
    double e = (a - (s - bb)) + (b - bb);
    return {s, e};
}

// a + b = s + e exactly, when |a| >= |b| or a is 0.
inline DoubleDouble FastTwoSum(double a, double b) {
    double s = a + b;
    return {s, b - (s - a)};
}

// a * b = p + e exactly (barring overflow and underflow), with one fused multiply-add.
inline DoubleDouble TwoProduct(double a, double b) {
    double p = a * b;
    return {p, std::fma(a, b, -p)};
}

inline DoubleDouble Normalize(double hi, double lo) { return FastTwoSum(hi, lo); }

inline DoubleDouble Add(DoubleDouble x, DoubleDouble y) {
    DoubleDouble s = TwoSum(x.hi, y.hi);
    DoubleDouble t = TwoSum(x.lo, y.lo);
    s.lo += t.hi;
    s = FastTwoSum(s.hi, s.lo);
    s.lo += t.lo;
    return FastTwoSum(s.hi, s.lo);
}

inline DoubleDouble AddDouble(DoubleDouble x, double y) {
    DoubleDouble s = TwoSum(x.hi, y);
    s.lo += x.lo;
    return FastTwoSum(s.hi, s.lo);
}

// Double-double times double, with exact partial products.
inline DoubleDouble mf2x1(DoubleDouble x, double y) {
    DoubleDouble p = TwoProduct(x.hi, y);
    if (!std::isfinite(p.hi)) return {p.hi, 0.0};
    DoubleDouble q = TwoProduct(x.lo, y);
    DoubleDouble s = TwoSum(p.lo, q.hi);
    DoubleDouble r = FastTwoSum(p.hi, s.hi);
    return FastTwoSum(r.hi, r.lo + (s.lo + q.lo));
}

// Double-double times double-double.
inline DoubleDouble mf2x2(DoubleDouble x, DoubleDouble y) {
    DoubleDouble p = TwoProduct(x.hi, y.hi);
    if (!std::isfinite(p.hi)) return {p.hi, 0.0};  // an overflow stays infinite, not NaN
    double cross = std::fma(x.hi, y.lo, x.lo * y.hi);
    return FastTwoSum(p.hi, p.lo + cross);
}

inline DoubleDouble Negate(DoubleDouble x) { return {-x.hi, -x.lo}; }

// The error-free transformations need round-to-nearest.
using NearestRoundingScope = RoundingScope<FE_TONEAREST>;
