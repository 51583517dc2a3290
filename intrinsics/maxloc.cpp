// MAXLOC and MINLOC: one search over an order of the element type, for the largest or the
// smallest element, the first of equal ones or with BACK the last. A NaN never wins a
// comparison; when every element considered is a NaN the answer is the first of them (the
// last with BACK), and when none is considered it is 0.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "convert/double_double.h"
#include "core/export.h"
#include "intrinsics/location_search.h"

namespace {

template <typename T>
struct NumberOrder {
    using Value = T;
    Value Read(const unsigned char* element) const { return Load<T>(element, 0); }
    bool Less(const T& a, const T& b) const { return a < b; }
    bool IsNaN(const T& x) const {
        if constexpr (std::is_floating_point_v<T>) return std::isnan(x);
        return false;
    }
};

struct PairOrder {
    using Value = DoubleDouble;
    Value Read(const unsigned char* element) const { return Load<DoubleDouble>(element, 0); }
    bool Less(const Value& a, const Value& b) const { return PairLess(a, b); }
    bool IsNaN(const Value& x) const { return std::isnan(x.hi) || std::isnan(x.lo); }
};

// The collating sequence of the bytes, the shorter string extended with blanks.
struct CharacterOrder {
    using Value = const unsigned char*;
    int32_t length = 0;
    Value Read(const unsigned char* element) const { return element; }
    bool Less(Value a, Value b) const { return CompareBlankPadded(a, length, b, length) < 0; }
    bool IsNaN(Value) const { return false; }
};

template <typename Order, bool Maximum, bool Back>
struct ExtremumSearch {
    using Value = typename Order::Value;
    [[no_unique_address]] Order order{};
    Value best{};
    // The position of `best`; while only NaNs have come, minus the position of the NaN that
    // answers so far. Searches along DIM lie side by side, so they are kept this small.
    int64_t where = 0;

    bool Consider(const unsigned char* element, int64_t position) {
        Value x = order.Read(element);
        if (where > 0) {
            if (Wins(x, best)) {
                best = x;
                where = position;
            }
        } else if (!order.IsNaN(x)) {
            best = x;
            where = position;
        } else if (where == 0 || Back) {
            where = -position;
        }
        return true;
    }

    bool Run(const unsigned char* first, int64_t count, int64_t step, int64_t position) {
        int64_t i = 0;
        for (; where <= 0 && i < count; ++i) Consider(first + i * step, position + i);
        if constexpr (std::is_integral_v<Value>) {
            if (step == static_cast<int64_t>(sizeof(Value))) return RunBlocks(first, i, count, position);
        }
        // From the first number on, the extremum stays in registers.
        Value b = best;
        int64_t w = where;
        const unsigned char* element = first + i * step;
        for (; i < count; ++i, element += step) {
            Value x = order.Read(element);
            if (Wins(x, b)) {
                b = x;
                w = position + i;
            }
        }
        best = b;
        where = w;
        return true;
    }

    // Contiguous integers block by block: the block's extremum comes from a loop the compiler
    // vectorises, and only a block that can change the answer is searched for its position.
    // (Reals keep the loop above: their comparisons may not be reordered around a NaN.)
    bool RunBlocks(const unsigned char* first, int64_t i, int64_t count, int64_t position) {
        constexpr int64_t kBlock = 1024;
        constexpr int64_t kSize = static_cast<int64_t>(sizeof(Value));
        // Whole blocks only: a loop of a known count is one the compiler vectorises without
        // a scalar tail of its own.
        for (; i + kBlock <= count; i += kBlock) {
            const unsigned char* block = first + i * kSize;
            Value extreme = order.Read(block);
            for (int64_t k = 0; k < kBlock; ++k) {
                Value x = order.Read(block + k * kSize);
                extreme = Maximum ? (x > extreme ? x : extreme) : (x < extreme ? x : extreme);
            }
            if (!Wins(extreme, best)) continue;
            for (int64_t k = 0; k < kBlock; ++k) {
                Value x = order.Read(block + k * kSize);
                if (Wins(x, best)) {
                    best = x;
                    where = position + i + k;
                }
            }
        }
        for (; i < count; ++i) Consider(first + i * kSize, position + i);
        return true;
    }

    // A run of which only the elements whose mask element is true count.
    bool RunMasked(const unsigned char* first, int64_t count, int64_t step, const unsigned char* mask,
                   int64_t maskStep, int32_t maskLength, int64_t position) {
        int64_t i = 0;
        for (; where <= 0 && i < count; ++i) {
            if (IsTrue(mask + i * maskStep, maskLength)) Consider(first + i * step, position + i);
        }
        Value b = best;
        int64_t w = where;
        const unsigned char* element = first + i * step;
        const unsigned char* truth = mask + i * maskStep;
        for (; i < count; ++i, element += step, truth += maskStep) {
            // One branch, on the rare win, not one on every mask element too.
            Value x = order.Read(element);
            if (int{IsTrue(truth, maskLength)} & int{Wins(x, b)}) {
                b = x;
                w = position + i;
            }
        }
        best = b;
        where = w;
        return true;
    }

    // Without BACK only a better element replaces the first extremum, with BACK an equal one
    // does too; a NaN does neither.
    bool Wins(const Value& x, const Value& current) const {
        const Value& below = Maximum ? current : x;
        const Value& above = Maximum ? x : current;
        if constexpr (Back) return !order.Less(above, below) && !order.IsNaN(x);
        return order.Less(below, above);
    }

    int64_t Location() const { return where >= 0 ? where : -where; }
};

// The order of a source: a character one compares at the source's length.
template <typename Order>
Order OrderOf(const RTDArray*) {
    return {};
}
template <>
CharacterOrder OrderOf<CharacterOrder>(const RTDArray* source) {
    return {EffectiveLength(source)};
}

template <typename Order, bool Maximum>
void Extremum(const LocationArguments& arguments, int32_t back) {
    Order order = OrderOf<Order>(arguments.sourceRtd);
    if (back & 1) {
        RunLocationSearch(arguments, ExtremumSearch<Order, Maximum, true>{order});
    } else {
        RunLocationSearch(arguments, ExtremumSearch<Order, Maximum, false>{order});
    }
}

LocationArguments Arguments(ResultRecord* result, const void* source, int32_t dim, const void* mask,
                            const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask) {
    return {result, source, sourceRtd, dim, (hasDim & 1) != 0, mask, maskRtd, (hasMask & 1) != 0};
}

// The entries that take the element type from the source's RTD.
template <bool Maximum>
void ByDescriptor(const LocationArguments& arguments) {
    const RTDArray* rtd = arguments.sourceRtd;
    int32_t length = EffectiveLength(rtd);
    switch (rtd->header.data_type) {
    case RTD_TYPE_INTEGER:
    case RTD_TYPE_BYTE:
        switch (length) {
        case 1: return Extremum<NumberOrder<int8_t>, Maximum>(arguments, 0);
        case 2: return Extremum<NumberOrder<int16_t>, Maximum>(arguments, 0);
        case 4: return Extremum<NumberOrder<int32_t>, Maximum>(arguments, 0);
        case 8: return Extremum<NumberOrder<int64_t>, Maximum>(arguments, 0);
        }
        break;
    case RTD_TYPE_REAL:
        switch (length) {
        case 4: return Extremum<NumberOrder<float>, Maximum>(arguments, 0);
        case 8: return Extremum<NumberOrder<double>, Maximum>(arguments, 0);
        case 16: return Extremum<PairOrder, Maximum>(arguments, 0);
        }
        break;
    case RTD_TYPE_CHARACTER: return Extremum<CharacterOrder, Maximum>(arguments, 0);
    }
    _vrmerr1(rtd);  // a type MAXLOC and MINLOC do not take
}

}  // namespace

// ---- The exported names ----

#define VRN_LOCATION(prefix, letters, order, maximum)                                                            \
    VRN_EXPORT void prefix##letters##g(ResultRecord* result, const void* source, int32_t dim, const void* mask,     \
                                       const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim,           \
                                       int32_t hasMask) {                                                            \
        Extremum<order, maximum>(Arguments(result, source, dim, mask, sourceRtd, maskRtd, hasDim, hasMask), 0);    \
    }                                                                                                                \
    VRN_EXPORT void prefix##wback##letters##g(ResultRecord* result, const void* source, int32_t dim,                \
                                              const void* mask, const RTDArray* sourceRtd, const RTDArray* maskRtd, \
                                              int32_t hasDim, int32_t hasMask, int32_t back) {                      \
        Extremum<order, maximum>(Arguments(result, source, dim, mask, sourceRtd, maskRtd, hasDim, hasMask), back); \
    }

#define VRN_LOCATIONS(prefix, maximum)                       \
    VRN_LOCATION(prefix, c, CharacterOrder, maximum)         \
    VRN_LOCATION(prefix, i1, NumberOrder<int8_t>, maximum)   \
    VRN_LOCATION(prefix, i2, NumberOrder<int16_t>, maximum)  \
    VRN_LOCATION(prefix, i4, NumberOrder<int32_t>, maximum)  \
    VRN_LOCATION(prefix, i8, NumberOrder<int64_t>, maximum)  \
    VRN_LOCATION(prefix, r4, NumberOrder<float>, maximum)    \
    VRN_LOCATION(prefix, r8, NumberOrder<double>, maximum)   \
    VRN_LOCATION(prefix, r16, PairOrder, maximum)

VRN_LOCATIONS(_vrmxloc, true)
VRN_LOCATIONS(_vrmnloc, false)
#undef VRN_LOCATIONS
#undef VRN_LOCATION

VRN_EXPORT void _vrhai4g(ResultRecord* result, const void* source, int32_t dim, const void* mask,
                         const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask) {
    ByDescriptor<true>(Arguments(result, source, dim, mask, sourceRtd, maskRtd, hasDim, hasMask));
}
VRN_EXPORT void _vrhzi4g(ResultRecord* result, const void* source, int32_t dim, const void* mask,
                         const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask) {
    ByDescriptor<false>(Arguments(result, source, dim, mask, sourceRtd, maskRtd, hasDim, hasMask));
}
VRN_EXPORT void _vrlai4g(ResultRecord* result, const void* source, const void* mask, const RTDArray* sourceRtd,
                         const RTDArray* maskRtd, int32_t hasMask) {
    ByDescriptor<true>(Arguments(result, source, 0, mask, sourceRtd, maskRtd, 0, hasMask));
}
VRN_EXPORT void _vrlzi4g(ResultRecord* result, const void* source, const void* mask, const RTDArray* sourceRtd,
                         const RTDArray* maskRtd, int32_t hasMask) {
    ByDescriptor<false>(Arguments(result, source, 0, mask, sourceRtd, maskRtd, 0, hasMask));
}
