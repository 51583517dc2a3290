// SUM, PRODUCT, MAXVAL, MINVAL (the masked template) and ALL, ANY, COUNT (the logical
// template). Each exported name is an instantiation for one element type.
//
// Walk order matters for floating-point results and for NaN handling, so it follows
// fixed rules: rank 1 in element order; rank 2 with the dimension of the smaller stride
// inner (dimension 1 on a tie); rank 3 and above with dimension 1 inner unless the
// table's first entry has the smaller stride. Sums keep one accumulator and are never
// reassociated.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "convert/double_double.h"
#include "core/export.h"
#include "intrinsics/complex.h"
#include "intrinsics/frame.h"
#include "intrinsics/array_walk.h"

namespace {

// ---- Fold steps ----

template <typename T>
struct Sum {
    using Type = T;
    static T Initial() { return T(0); }
    static void Register(T& m, const T& x) { m = static_cast<T>(m + x); }
    static void Guarded(T& m, const T& x) { m = static_cast<T>(m + x); }
};

// Integer sums and products wrap at the width of the kind.
template <typename T>
struct WrappingSum {
    using Type = T;
    using U = std::make_unsigned_t<T>;
    static T Initial() { return T(0); }
    static void Register(T& m, const T& x) { m = static_cast<T>(static_cast<U>(m) + static_cast<U>(x)); }
    static void Guarded(T& m, const T& x) { Register(m, x); }
};

template <typename T>
struct WrappingProduct {
    using Type = T;
    using U = std::make_unsigned_t<T>;
    static T Initial() { return T(1); }
    static void Register(T& m, const T& x) {
        // Promotion of 16-bit operands to int must not overflow: multiply as unsigned 64.
        m = static_cast<T>(static_cast<U>(static_cast<uint64_t>(static_cast<U>(m)) * static_cast<uint64_t>(static_cast<U>(x))));
    }
    static void Guarded(T& m, const T& x) { Register(m, x); }
};

template <typename T>
struct Product {
    using Type = T;
    static T Initial() { return T(1); }
    static void Register(T& m, const T& x) { m = m * x; }
    static void Guarded(T& m, const T& x) { m = m * x; }
};

template <typename T>
struct ComplexSum {
    using Type = Complex<T>;
    static Type Initial() { return {0, 0}; }
    static void Register(Type& m, const Type& x) {
        m.re = m.re + x.re;
        m.im = m.im + x.im;
    }
    static void Guarded(Type& m, const Type& x) { Register(m, x); }
};

// (a, b)(c, d) with two roundings saved by fused multiply-adds, from the old a and b.
template <typename T>
struct ComplexProduct {
    using Type = Complex<T>;
    static Type Initial() { return {1, 0}; }
    static void Register(Type& m, const Type& x) {
        T t = m.im * x.re;
        T u = m.im * x.im;
        T re = std::fma(m.re, x.re, -u);
        T im = std::fma(m.re, x.im, t);
        m = {re, im};
    }
    static void Guarded(Type& m, const Type& x) { Register(m, x); }
};

struct PairSum {
    using Type = DoubleDouble;
    static Type Initial() { return {0, 0}; }
    static void Register(Type& m, const Type& x) { m = Add(m, x); }
    static void Guarded(Type& m, const Type& x) { m = Add(m, x); }
};

struct PairProduct {
    using Type = DoubleDouble;
    static Type Initial() { return {1, 0}; }
    static void Register(Type& m, const Type& x) { m = mf2x2(m, x); }
    static void Guarded(Type& m, const Type& x) { m = mf2x2(m, x); }
};

// Complex pairs of 16-byte reals.
struct PairComplexSum {
    using Type = Complex<DoubleDouble>;
    static Type Initial() { return {{0, 0}, {0, 0}}; }
    static void Register(Type& m, const Type& x) {
        m.re = Add(m.re, x.re);
        m.im = Add(m.im, x.im);
    }
    static void Guarded(Type& m, const Type& x) { Register(m, x); }
};

struct PairComplexProduct {
    using Type = Complex<DoubleDouble>;
    static Type Initial() { return {{1, 0}, {0, 0}}; }
    static void Register(Type& m, const Type& x) {
        DoubleDouble re = Add(mf2x2(m.re, x.re), Negate(mf2x2(m.im, x.im)));
        DoubleDouble im = Add(mf2x2(m.re, x.im), mf2x2(m.im, x.re));
        m = {re, im};
    }
    static void Guarded(Type& m, const Type& x) { Register(m, x); }
};

template <typename T>
struct IntegerMax {
    using Type = T;
    static T Initial() { return std::numeric_limits<T>::min(); }
    static void Register(T& m, const T& x) {
        if (m < x) m = x;
    }
    static void Guarded(T& m, const T& x) { Register(m, x); }
};

template <typename T>
struct IntegerMin {
    using Type = T;
    static T Initial() { return std::numeric_limits<T>::max(); }
    static void Register(T& m, const T& x) {
        if (m > x) m = x;
    }
    static void Guarded(T& m, const T& x) { Register(m, x); }
};

// The register form lets an element that compares false (a NaN) replace the maximum;
// the guarded form ignores it. Which one a path uses is part of the result.
template <typename T>
struct RealMax {
    using Type = T;
    static T Initial() { return -HUGE_VAL; }
    static void Register(T& m, const T& x) { m = x < m ? m : x; }
    static void Guarded(T& m, const T& x) {
        if (m < x) m = x;
    }
};

template <typename T>
struct RealMin {
    using Type = T;
    static T Initial() { return HUGE_VAL; }
    static void Register(T& m, const T& x) {
        if (x < m) m = x;
    }
    static void Guarded(T& m, const T& x) {
        if (m > x) m = x;
    }
};

struct PairMax {
    using Type = DoubleDouble;
    static Type Initial() { return {-HUGE_VAL, 0}; }
    static void Register(Type& m, const Type& x) {
        if (PairLess(m, x)) m = x;
    }
    static void Guarded(Type& m, const Type& x) { Register(m, x); }
};

struct PairMin {
    using Type = DoubleDouble;
    static Type Initial() { return {HUGE_VAL, 0}; }
    static void Register(Type& m, const Type& x) {
        if (PairLess(x, m)) m = x;
    }
    static void Guarded(Type& m, const Type& x) { Register(m, x); }
};

// ---- The masked template ----

template <typename Fold>
void FillResult(unsigned char* base, const RTDArray* rtd) {
    using T = typename Fold::Type;
    T initial = Fold::Initial();
    ForEachElement(Describe(base, rtd), [&](int64_t offset) { Store(base, offset, initial); });
}

template <typename Fold>
void MaskedReduction(ResultRecord* record, const void* sourceData, int32_t dim, const void* maskData,
                     const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask) {
    using T = typename Fold::Type;
    bool withDim = (hasDim & 1) != 0;
    if (!PrepareResult(record, [&](RTDArray* rtd) { return BuildReducedResult(rtd, sourceRtd, dim, withDim); })) return;
    RTDArray* resultRtd = ResultRTD(record);
    auto* result = reinterpret_cast<unsigned char*>(record->base_ptr);
    Operand source = Describe(sourceData, sourceRtd);
    bool arrayMask = false;
    Operand mask;
    if (hasMask & 1) {
        mask = Describe(maskData, maskRtd);
        if (mask.rank == 0) {
            // A scalar mask: true is no mask, false is an array mask false everywhere.
            if (!IsTrue(mask.data, mask.length)) {
                if (withDim && source.rank >= 2) FillResult<Fold>(result, resultRtd); else Store(result, 0, Fold::Initial());
                return;
            }
        } else {
            arrayMask = true;
        }
    }
    int32_t order[kMaxRank];
    LoopOrder(source, order);

    if (!withDim || source.rank < 2) {
        // A scalar result: one accumulator, in the register form unless a mask guards it.
        Loops loops = MakeLoops(source, arrayMask ? &mask : nullptr, order, nullptr);
        T m = Fold::Initial();
        if (arrayMask) {
            Walk(loops, [&](int64_t s, int64_t k, int64_t) {
                if (MaskTrue(mask, k)) Fold::Guarded(m, Load<T>(source.data, s));
            });
        } else if (source.rank <= 1) {
            const int64_t n = source.rank == 0 ? 1 : source.extent[0];
            const int64_t stride = source.rank == 0 ? 0 : source.stride[0];
            if (stride == 1) {
                // Contiguous: a loop the compiler may vectorize where the fold is associative
                // (integers); real folds keep their order.
                for (int64_t i = 0; i < n; ++i) Fold::Register(m, Load<T>(source.data, i));
            } else {
                for (int64_t i = 0; i < n; ++i) Fold::Register(m, Load<T>(source.data, i * stride));
            }
        } else {
            Walk(loops, [&](int64_t s, int64_t, int64_t) { Fold::Register(m, Load<T>(source.data, s)); });
        }
        Store(result, 0, m);
        return;
    }

    // DIM on rank 2 and above: each result element is its own accumulator.
    FillResult<Fold>(result, resultRtd);
    Operand out = Describe(result, resultRtd);
    int32_t resultStride[kMaxRank] = {};
    for (int32_t d = 0, r = 0; d < source.rank; ++d) resultStride[d] = d + 1 == dim ? 0 : out.stride[r++];
    if (source.rank == 2 && !arrayMask && order[0] == dim - 1) {
        // The reduced dimension is inner: a register per result element.
        int32_t inner = order[0];
        int32_t outer = order[1];
        for (int64_t j = 0; j < source.extent[outer]; ++j) {
            int64_t resultOffset = j * resultStride[outer];
            T m = Load<T>(result, resultOffset);
            for (int64_t i = 0; i < source.extent[inner]; ++i) {
                Fold::Register(m, Load<T>(source.data, i * source.stride[inner] + j * source.stride[outer]));
            }
            Store(result, resultOffset, m);
        }
        return;
    }
    if (source.rank == 2 && !arrayMask && order[1] == dim - 1 && source.stride[order[0]] == 1 &&
        resultStride[order[0]] == 1) {
        // The reduced dimension is outer and the result row and the source columns are
        // contiguous: the walk's own order, with an inner loop over the row that the
        // compiler can turn into vectors (each element still folds its terms in order).
        int32_t inner = order[0];
        int32_t outer = order[1];
        const int64_t n = source.extent[inner];
        for (int64_t j = 0; j < source.extent[outer]; ++j) {
            const unsigned char* column = source.data + j * source.stride[outer] * static_cast<int64_t>(sizeof(T));
            for (int64_t i = 0; i < n; ++i) {
                T m = Load<T>(result, i);
                Fold::Guarded(m, Load<T>(column, i));
                Store(result, i, m);
            }
        }
        return;
    }
    Loops loops = MakeLoops(source, arrayMask ? &mask : nullptr, order, resultStride);
    Walk(loops, [&](int64_t s, int64_t k, int64_t r) {
        if (arrayMask && !MaskTrue(mask, k)) return;
        T m = Load<T>(result, r);
        Fold::Guarded(m, Load<T>(source.data, s));
        Store(result, r, m);
    });
}

// ---- Character MAXVAL and MINVAL ----

template <bool Maximum>
void CharacterExtremum(ResultRecord* record, const void* sourceData, int32_t dim, const void* maskData,
                       const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask) {
    bool withDim = (hasDim & 1) != 0;
    if (!PrepareResult(record, [&](RTDArray* rtd) { return BuildReducedResult(rtd, sourceRtd, dim, withDim); })) return;
    Operand source = Describe(sourceData, sourceRtd);
    if (source.rank == 0) return;
    // The compared length is the spacing of dimension 1, not the element length: compiled
    // code passes character sources contiguously, where the two agree.
    int32_t spacing = std::abs(FortranDimension(sourceRtd, 1).multiplier);
    if (sourceRtd->header.flags & RTD_FLAG_IS_PADDED) spacing >>= 1;
    if (spacing == 0) return;
    RTDArray* resultRtd = ResultRTD(record);
    auto* result = reinterpret_cast<unsigned char*>(record->base_ptr);
    const int32_t length = EffectiveLength(reinterpret_cast<const RTD*>(resultRtd));
    const unsigned char initial = Maximum ? 0x00 : 0x7F;
    auto better = [&](const unsigned char* x, const unsigned char* m) {
        int order = CompareBlankPadded(x, spacing, m, length);
        return Maximum ? order > 0 : order < 0;
    };
    // Byte offsets throughout: the walk's strides become the multipliers.
    Operand bytes = source;
    for (int32_t d = 0; d < source.rank; ++d) bytes.stride[d] = source.multiplier[d];
    bool arrayMask = false;
    Operand mask;
    bool skipAll = false;
    if (hasMask & 1) {
        mask = Describe(maskData, maskRtd);
        if (mask.rank == 0) {
            skipAll = !IsTrue(mask.data, mask.length);
        } else {
            arrayMask = true;
        }
    }
    int32_t order[kMaxRank];
    LoopOrder(source, order);

    if (!withDim || source.rank < 2) {
        unsigned char small[256];
        std::vector<unsigned char> large;
        unsigned char* m = small;
        if (length > static_cast<int32_t>(sizeof small)) {
            large.resize(static_cast<size_t>(length));
            m = large.data();
        }
        std::memset(m, initial, static_cast<size_t>(length));
        if (!skipAll) {
            Loops loops = MakeLoops(bytes, arrayMask ? &mask : nullptr, order, nullptr);
            Walk(loops, [&](int64_t s, int64_t k, int64_t) {
                if (arrayMask && !MaskTrue(mask, k)) return;
                const unsigned char* x = source.data + s;
                if (better(x, m)) CopyBlankPadded(m, length, x, spacing);
            });
        }
        std::memcpy(result, m, static_cast<size_t>(length));
        return;
    }

    Operand out = Describe(result, resultRtd);
    ForEachElement(out, [&](int64_t offset) { std::memset(result + offset * length, initial, static_cast<size_t>(length)); });
    if (skipAll) return;
    int32_t resultStride[kMaxRank] = {};
    for (int32_t d = 0, r = 0; d < source.rank; ++d) resultStride[d] = d + 1 == dim ? 0 : out.multiplier[r++];
    Loops loops = MakeLoops(bytes, arrayMask ? &mask : nullptr, order, resultStride);
    Walk(loops, [&](int64_t s, int64_t k, int64_t r) {
        if (arrayMask && !MaskTrue(mask, k)) return;
        const unsigned char* x = source.data + s;
        if (better(x, result + r)) CopyBlankPadded(result + r, length, x, spacing);
    });
}

// ---- The logical template ----

enum class Logical { All, Any, Count };

template <Logical Kind, typename R>
void LogicalReduction(ResultRecord* record, const void* sourceData, int32_t dim, const RTDArray* sourceRtd,
                      int32_t hasDim) {
    bool withDim = (hasDim & 1) != 0;
    auto build = [&](RTDArray* rtd) {
        if (Kind == Logical::Count) {
            int32_t kind = rtd->element_len = static_cast<int32_t>(sizeof(R));
            int32_t size = _vrcnsz(rtd, sourceRtd, dim, hasDim);
            rtd->element_len = kind;
            return size;
        }
        return BuildReducedResult(rtd, sourceRtd, dim, withDim);
    };
    if (!PrepareResult(record, build)) return;
    auto* result = reinterpret_cast<unsigned char*>(record->base_ptr);
    Operand source = Describe(sourceData, sourceRtd);
    const R initial = Kind == Logical::All ? R(1) : R(0);
    int32_t order[kMaxRank];
    LoopOrder(source, order);

    if (!withDim || source.rank < 2) {
        Loops loops = MakeLoops(source, nullptr, order, nullptr);
        if (Kind == Logical::Count) {
            R count = 0;
            Walk(loops, [&](int64_t s, int64_t, int64_t) {
                if (IsTrue(source.data + s * source.length, source.length)) count = static_cast<R>(count + 1);
            });
            Store(result, 0, count);
            return;
        }
        // The negative answer is stored first, and the scan ends at the deciding element.
        Store(result, 0, static_cast<R>(Kind == Logical::All ? 0 : 1));
        bool undecided = Walk(loops, [&](int64_t s, int64_t, int64_t) {
            return IsTrue(source.data + s * source.length, source.length) == (Kind == Logical::All);
        });
        if (undecided) Store(result, 0, initial);
        return;
    }

    RTDArray* resultRtd = ResultRTD(record);
    Operand out = Describe(result, resultRtd);
    ForEachElement(out, [&](int64_t offset) { Store(result, offset, initial); });
    int32_t resultStride[kMaxRank] = {};
    for (int32_t d = 0, r = 0; d < source.rank; ++d) resultStride[d] = d + 1 == dim ? 0 : out.stride[r++];
    Loops loops = MakeLoops(source, nullptr, order, resultStride);
    Walk(loops, [&](int64_t s, int64_t, int64_t r) {
        bool truth = IsTrue(source.data + s * source.length, source.length);
        R m = Load<R>(result, r);
        if (Kind == Logical::Count) {
            if (truth) m = static_cast<R>(m + 1);
        } else if (Kind == Logical::All) {
            if (!truth) m = 0;
        } else if (truth) {
            m = 1;
        }
        Store(result, r, m);
    });
}

}  // namespace

// ---- The exported names ----

#define VRN_MASKED(name, fold)                                                                                 \
    VRN_EXPORT void name(ResultRecord* result, const void* source, int32_t dim, const void* mask,              \
                         const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask) { \
        MaskedReduction<fold>(result, source, dim, mask, sourceRtd, maskRtd, hasDim, hasMask);                 \
    }

VRN_MASKED(_vrsmi1g, WrappingSum<int8_t>)
VRN_MASKED(_vrsmi2g, WrappingSum<int16_t>)
VRN_MASKED(_vrsmi4g, WrappingSum<int32_t>)
VRN_MASKED(_vrsmi8g, WrappingSum<int64_t>)
VRN_MASKED(_vrsmr4g, Sum<float>)
VRN_MASKED(_vrsmr8g, Sum<double>)
VRN_MASKED(_vrsmr16g, PairSum)
VRN_MASKED(_vrsmx8g, ComplexSum<float>)
VRN_MASKED(_vrsmx16g, ComplexSum<double>)
VRN_MASKED(_vrsmx32g, PairComplexSum)
VRN_MASKED(_vrpri1g, WrappingProduct<int8_t>)
VRN_MASKED(_vrpri2g, WrappingProduct<int16_t>)
VRN_MASKED(_vrpri4g, WrappingProduct<int32_t>)
VRN_MASKED(_vrpri8g, WrappingProduct<int64_t>)
VRN_MASKED(_vrprr4g, Product<float>)
VRN_MASKED(_vrprr8g, Product<double>)
VRN_MASKED(_vrprr16g, PairProduct)
VRN_MASKED(_vrprx8g, ComplexProduct<float>)
VRN_MASKED(_vrprx16g, ComplexProduct<double>)
VRN_MASKED(_vrprx32g, PairComplexProduct)
VRN_MASKED(_vrmxi1g, IntegerMax<int8_t>)
VRN_MASKED(_vrmxi2g, IntegerMax<int16_t>)
VRN_MASKED(_vrmxi4g, IntegerMax<int32_t>)
VRN_MASKED(_vrmxi8g, IntegerMax<int64_t>)
VRN_MASKED(_vrmxr4g, RealMax<float>)
VRN_MASKED(_vrmxr8g, RealMax<double>)
VRN_MASKED(_vrmxr16g, PairMax)
VRN_MASKED(_vrmni1g, IntegerMin<int8_t>)
VRN_MASKED(_vrmni2g, IntegerMin<int16_t>)
VRN_MASKED(_vrmni4g, IntegerMin<int32_t>)
VRN_MASKED(_vrmni8g, IntegerMin<int64_t>)
VRN_MASKED(_vrmnr4g, RealMin<float>)
VRN_MASKED(_vrmnr8g, RealMin<double>)
VRN_MASKED(_vrmnr16g, PairMin)
#undef VRN_MASKED

VRN_EXPORT void _vrmxcg(ResultRecord* result, const void* source, int32_t dim, const void* mask,
                        const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask) {
    CharacterExtremum<true>(result, source, dim, mask, sourceRtd, maskRtd, hasDim, hasMask);
}

VRN_EXPORT void _vrmncg(ResultRecord* result, const void* source, int32_t dim, const void* mask,
                        const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask) {
    CharacterExtremum<false>(result, source, dim, mask, sourceRtd, maskRtd, hasDim, hasMask);
}

#define VRN_LOGICAL(name, kind, type)                                                                       \
    VRN_EXPORT void name(ResultRecord* result, const void* source, int32_t dim, const RTDArray* sourceRtd, \
                         int32_t hasDim) {                                                                  \
        LogicalReduction<kind, type>(result, source, dim, sourceRtd, hasDim);                              \
    }

VRN_LOGICAL(_vrall1, Logical::All, int8_t)
VRN_LOGICAL(_vrall2, Logical::All, int16_t)
VRN_LOGICAL(_vrall4, Logical::All, int32_t)
VRN_LOGICAL(_vrall8, Logical::All, int64_t)
VRN_LOGICAL(_vranl1, Logical::Any, int8_t)
VRN_LOGICAL(_vranl2, Logical::Any, int16_t)
VRN_LOGICAL(_vranl4, Logical::Any, int32_t)
VRN_LOGICAL(_vranl8, Logical::Any, int64_t)
VRN_LOGICAL(_vrcni1, Logical::Count, int8_t)
VRN_LOGICAL(_vrcni2, Logical::Count, int16_t)
VRN_LOGICAL(_vrcni4, Logical::Count, int32_t)
VRN_LOGICAL(_vrcni8, Logical::Count, int64_t)
#undef VRN_LOGICAL
