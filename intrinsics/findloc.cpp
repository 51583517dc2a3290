// FINDLOC: one search for the first element equal to VALUE, or with BACK the last. Numbers
// compare with ==, so a NaN matches nothing and -0.0 matches 0.0; complex values match in
// both parts and REAL(16) in both halves; logicals by their truth, at any kind; characters
// with the shorter string extended with blanks.
//
// VALUE comes as the address of a scalar of the array's type and kind, converted by the
// compiled code where Fortran allows another, except a character VALUE of any length and a
// logical VALUE of any kind, whose length in bytes comes beside it.
#include <cstdint>
#include <cstring>

#include "convert/double_double.h"
#include "core/export.h"
#include "intrinsics/complex.h"
#include "intrinsics/location_search.h"

namespace {

// What VALUE is, as given.
struct ValueArgument {
    const unsigned char* data;
    int32_t length;
};

template <typename T>
struct NumberMatch {
    T value{};
    explicit NumberMatch(ValueArgument v = {}, const RTDArray* = nullptr) {
        if (v.data != nullptr) value = Load<T>(v.data, 0);
    }
    bool Equals(const unsigned char* element) const { return Load<T>(element, 0) == value; }
};

template <typename T>
struct ComplexMatch {
    Complex<T> value{};
    explicit ComplexMatch(ValueArgument v = {}, const RTDArray* = nullptr) {
        if (v.data != nullptr) value = Load<Complex<T>>(v.data, 0);
    }
    bool Equals(const unsigned char* element) const {
        Complex<T> x = Load<Complex<T>>(element, 0);
        return x.re == value.re && x.im == value.im;
    }
};

bool SamePair(const DoubleDouble& a, const DoubleDouble& b) { return a.hi == b.hi && a.lo == b.lo; }

struct PairMatch {
    DoubleDouble value{};
    explicit PairMatch(ValueArgument v = {}, const RTDArray* = nullptr) {
        if (v.data != nullptr) value = Load<DoubleDouble>(v.data, 0);
    }
    bool Equals(const unsigned char* element) const { return SamePair(Load<DoubleDouble>(element, 0), value); }
};

struct PairComplexMatch {
    Complex<DoubleDouble> value{};
    explicit PairComplexMatch(ValueArgument v = {}, const RTDArray* = nullptr) {
        if (v.data != nullptr) value = Load<Complex<DoubleDouble>>(v.data, 0);
    }
    bool Equals(const unsigned char* element) const {
        Complex<DoubleDouble> x = Load<Complex<DoubleDouble>>(element, 0);
        return SamePair(x.re, value.re) && SamePair(x.im, value.im);
    }
};

struct LogicalMatch {
    bool truth = false;
    int32_t length = 0;
    explicit LogicalMatch(ValueArgument v = {}, const RTDArray* source = nullptr) {
        if (source == nullptr) return;
        length = EffectiveLength(source);
        truth = IsTrue(v.data, v.length > 0 ? v.length : length);
    }
    bool Equals(const unsigned char* element) const { return IsTrue(element, length) == truth; }
};

struct CharacterMatch {
    ValueArgument value{};
    int32_t length = 0;
    explicit CharacterMatch(ValueArgument v = {}, const RTDArray* source = nullptr)
        : value(v), length(source != nullptr ? EffectiveLength(source) : 0) {}
    bool Equals(const unsigned char* element) const {
        return CompareBlankPadded(element, length, value.data, value.length) == 0;
    }
};

template <typename Match, bool Back>
struct FindSearch {
    Match match{};
    int64_t where = 0;

    bool Consider(const unsigned char* element, int64_t position) {
        if (!Back && where != 0) return false;
        if (!match.Equals(element)) return true;
        where = position;
        return Back;  // a forward search ends at its first match
    }
    bool Run(const unsigned char* first, int64_t count, int64_t step, int64_t position) {
        if (!Back && where != 0) return false;
        if constexpr (Back) {
            // The last match of the run is the answer so far: look for it from the end.
            for (int64_t i = count - 1; i >= 0; --i) {
                if (match.Equals(first + i * step)) {
                    where = position + i;
                    return true;
                }
            }
            return true;
        }
        int64_t i = 0;
        // Four at a time, without a branch between them, until a block holds a match.
        for (; i + 4 <= count; i += 4) {
            int hits = int{match.Equals(first + i * step)} + int{match.Equals(first + (i + 1) * step)} +
                       int{match.Equals(first + (i + 2) * step)} + int{match.Equals(first + (i + 3) * step)};
            if (hits != 0) break;
        }
        for (; i < count; ++i) {
            if (match.Equals(first + i * step)) {
                where = position + i;
                return false;
            }
        }
        return true;
    }

    bool RunMasked(const unsigned char* first, int64_t count, int64_t step, const unsigned char* mask,
                   int64_t maskStep, int32_t maskLength, int64_t position) {
        if (!Back && where != 0) return false;
        for (int64_t i = 0; i < count; ++i) {
            // One branch, on the rare match, not one on every mask element too.
            if (int{IsTrue(mask + i * maskStep, maskLength)} & int{match.Equals(first + i * step)}) {
                where = position + i;
                if (!Back) return false;
            }
        }
        return true;
    }
    int64_t Location() const { return where; }
};

template <typename Match>
void Find(ResultRecord* result, const void* source, const void* value, int32_t dim, const void* mask,
          const RTDArray* sourceRtd, const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask, int32_t valueLength,
          int32_t back) {
    LocationArguments arguments{result, source, sourceRtd, dim, (hasDim & 1) != 0, mask, maskRtd, (hasMask & 1) != 0};
    Match match(ValueArgument{static_cast<const unsigned char*>(value), valueLength < 0 ? 0 : valueLength}, sourceRtd);
    if (back & 1) {
        RunLocationSearch(arguments, FindSearch<Match, true>{match});
    } else {
        RunLocationSearch(arguments, FindSearch<Match, false>{match});
    }
}

}  // namespace

// ---- The exported names ----

#define VRN_FINDLOC(letters, match)                                                                                  \
    VRN_EXPORT void _vrfindloc##letters##g(ResultRecord* result, const void* source, const void* value, int32_t dim,  \
                                           const void* mask, const RTDArray* sourceRtd, const RTDArray* maskRtd,      \
                                           int32_t hasDim, int32_t hasMask, int32_t valueLength) {                   \
        Find<match>(result, source, value, dim, mask, sourceRtd, maskRtd, hasDim, hasMask, valueLength, 0);          \
    }                                                                                                                 \
    VRN_EXPORT void _vrfindlocwback##letters##g(ResultRecord* result, const void* source, const void* value,          \
                                                int32_t dim, const void* mask, const RTDArray* sourceRtd,            \
                                                const RTDArray* maskRtd, int32_t hasDim, int32_t hasMask,            \
                                                int32_t valueLength, int32_t back) {                                 \
        Find<match>(result, source, value, dim, mask, sourceRtd, maskRtd, hasDim, hasMask, valueLength, back);       \
    }

VRN_FINDLOC(c, CharacterMatch)
VRN_FINDLOC(i1, NumberMatch<int8_t>)
VRN_FINDLOC(i2, NumberMatch<int16_t>)
VRN_FINDLOC(i4, NumberMatch<int32_t>)
VRN_FINDLOC(i8, NumberMatch<int64_t>)
VRN_FINDLOC(l1, LogicalMatch)
VRN_FINDLOC(l2, LogicalMatch)
VRN_FINDLOC(l4, LogicalMatch)
VRN_FINDLOC(l8, LogicalMatch)
VRN_FINDLOC(r4, NumberMatch<float>)
VRN_FINDLOC(r8, NumberMatch<double>)
VRN_FINDLOC(r16, PairMatch)
VRN_FINDLOC(x8, ComplexMatch<float>)
VRN_FINDLOC(x16, ComplexMatch<double>)
VRN_FINDLOC(x32, PairComplexMatch)
#undef VRN_FINDLOC
