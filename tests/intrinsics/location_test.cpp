// MAXLOC, MINLOC and FINDLOC against a plain reference: every index tuple in array element
// order, the considered values of each result element listed, and the standard's rule
// applied to the list. Random shapes, sections with negative and zero strides, masks of
// every kind, DIM, BACK and result kinds; then the cases where NaNs, signed zeros, blanks,
// truth bits and caller storage decide the answer.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "tests/intrinsics/arrays.h"

namespace {

using Search = void (*)(ResultRecord*, const void*, int32_t, const void*, const RTDArray*, const RTDArray*, int32_t,
                        int32_t);
using SearchBack = void (*)(ResultRecord*, const void*, int32_t, const void*, const RTDArray*, const RTDArray*, int32_t,
                            int32_t, int32_t);
using Find = void (*)(ResultRecord*, const void*, const void*, int32_t, const void*, const RTDArray*, const RTDArray*,
                      int32_t, int32_t, int32_t);
using FindBack = void (*)(ResultRecord*, const void*, const void*, int32_t, const void*, const RTDArray*,
                          const RTDArray*, int32_t, int32_t, int32_t, int32_t);

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Pair {
    double hi = 0, lo = 0;
};
template <typename R>
struct Cx {
    R re{}, im{};
};
using Text = std::array<char, 3>;

// One element type: how a small integer becomes an element, and the reference's order.
template <typename T>
struct Kind;

template <typename T>
struct IntegerKind {
    static constexpr uint8_t type = RTD_TYPE_INTEGER;
    static T Make(int v, std::mt19937&) { return static_cast<T>(v); }
    static bool Less(T a, T b) { return a < b; }
    static bool Equal(T a, T b) { return a == b; }
    static bool IsNaN(T) { return false; }
};
template <> struct Kind<int8_t> : IntegerKind<int8_t> {};
template <> struct Kind<int16_t> : IntegerKind<int16_t> {};
template <> struct Kind<int32_t> : IntegerKind<int32_t> {};
template <> struct Kind<int64_t> : IntegerKind<int64_t> {};

// Reals with NaNs and zeros of both signs among them.
template <typename T>
struct RealKind {
    static constexpr uint8_t type = RTD_TYPE_REAL;
    static T Make(int v, std::mt19937& random) {
        if (random() % 9 == 0) return static_cast<T>(kNaN);
        if (v == 0 && random() % 2) return static_cast<T>(-0.0);
        return static_cast<T>(v) / 4;
    }
    static bool Less(T a, T b) { return a < b; }
    static bool Equal(T a, T b) { return a == b; }
    static bool IsNaN(T x) { return std::isnan(x); }
};
template <> struct Kind<float> : RealKind<float> {};
template <> struct Kind<double> : RealKind<double> {};

// Normalised pairs whose low parts break ties of the high parts: their order is that of
// (high, low).
template <>
struct Kind<Pair> {
    static constexpr uint8_t type = RTD_TYPE_REAL;
    static Pair Make(int v, std::mt19937& random) {
        if (random() % 11 == 0) return {kNaN, 0};
        double lo = v == 0 ? 0 : std::ldexp(static_cast<double>(static_cast<int>(random() % 3) - 1), -60);
        return {static_cast<double>(v), lo};
    }
    static bool Less(Pair a, Pair b) { return a.hi < b.hi || (a.hi == b.hi && a.lo < b.lo); }
    static bool Equal(Pair a, Pair b) { return a.hi == b.hi && a.lo == b.lo; }
    static bool IsNaN(Pair x) { return std::isnan(x.hi) || std::isnan(x.lo); }
};

// Short strings where a trailing blank and a shorter string compare equal.
template <>
struct Kind<Text> {
    static constexpr uint8_t type = RTD_TYPE_CHARACTER;
    static Text Make(int v, std::mt19937& random) {
        static const char* const words[] = {"a  ", "ab ", "b  ", "ab\x7f", "\x01  ", "   ", "a\x80 "};
        Text t;
        std::memcpy(t.data(), words[(v + 50 + static_cast<int>(random() % 2)) % 7], 3);
        return t;
    }
    static bool Less(Text a, Text b) {
        return std::memcmp(reinterpret_cast<const unsigned char*>(a.data()), b.data(), 3) < 0;
    }
    static bool Equal(Text a, Text b) { return std::memcmp(a.data(), b.data(), 3) == 0; }
    static bool IsNaN(Text) { return false; }
};

template <typename R>
struct Kind<Cx<R>> {
    static constexpr uint8_t type = RTD_TYPE_COMPLEX;
    static Cx<R> Make(int v, std::mt19937& random) {
        return {Kind<R>::Make(v, random), Kind<R>::Make(static_cast<int>(random() % 2), random)};
    }
    static bool Equal(Cx<R> a, Cx<R> b) { return Kind<R>::Equal(a.re, b.re) && Kind<R>::Equal(a.im, b.im); }
};

// Logicals of every kind whose bits above bit 0 are noise.
template <typename T>
struct Logical {
    T bits;
};
template <typename T>
struct Kind<Logical<T>> {
    static constexpr uint8_t type = RTD_TYPE_LOGICAL;
    static Logical<T> Make(int v, std::mt19937& random) {
        unsigned char bytes[sizeof(T)];
        StoreInteger(bytes, sizeof(T), (random() & ~uint64_t{1}) | static_cast<uint64_t>(v & 1));
        Logical<T> l;
        std::memcpy(&l.bits, bytes, sizeof(T));
        return l;
    }
    static bool Truth(Logical<T> l) {
        unsigned char bytes[sizeof(T)];
        std::memcpy(bytes, &l.bits, sizeof(T));
        return (LoadInteger(bytes, sizeof(T)) & 1) != 0;
    }
    static bool Equal(Logical<T> a, Logical<T> b) { return Truth(a) == Truth(b); }
};

struct Case {
    Section source;
    Section mask;
    std::vector<int> values;
    std::vector<uint8_t> truths;
    int32_t maskKind = 1;
    int32_t dim = 0;  // 0: absent
    int mode = 0;     // 0 no mask, 1 array mask, 2 scalar true, 3 scalar false
    bool back = false;
    int32_t resultKind = 4;
};

Case RandomCase(std::mt19937& random) {
    static const size_t ranks[] = {1, 1, 2, 2, 3, 7, 20};
    size_t rank = ranks[random() % 7];
    Case c;
    std::vector<int32_t> extents = RandomExtents(rank, random);
    c.source = RandomSection(extents, random);
    c.mask = RandomSection(extents, random);
    c.values.resize(static_cast<size_t>(c.source.span));
    for (int& v : c.values) v = static_cast<int>(random() % 7) - 3;  // few values: many ties
    c.truths.resize(static_cast<size_t>(c.mask.span));
    for (auto& t : c.truths) t = static_cast<uint8_t>(random() % 4 != 0);
    c.maskKind = 1 << (random() % 4);
    c.dim = random() % 3 == 0 ? 0 : 1 + static_cast<int32_t>(random() % rank);
    c.mode = static_cast<int>(random() % 4);
    c.back = random() % 2;
    c.resultKind = 1 << (random() % 4);
    return c;
}

// The considered elements of each result element, as (position along the search, value).
template <typename T>
std::vector<std::vector<std::pair<int64_t, T>>> Considered(const Case& c, const std::vector<T>& data) {
    size_t rank = c.source.extents.size();
    bool reduced = c.dim != 0 && rank >= 2;
    size_t outer = 1;
    for (size_t d = 0; reduced && d < rank; ++d) {
        if (static_cast<int32_t>(d) + 1 != c.dim) outer *= static_cast<size_t>(std::max(c.source.extents[d], 0));
    }
    std::vector<std::vector<std::pair<int64_t, T>>> lists(outer);
    int64_t linear = 0;
    ForEachIndex(c.source.extents, [&](const std::vector<int32_t>& index) {
        ++linear;
        if (c.mode == 3) return;
        if (c.mode == 1 && !(c.truths[static_cast<size_t>(c.mask.Offset(index))] & 1)) return;
        size_t out = 0, scale = 1;
        for (size_t d = 0; reduced && d < rank; ++d) {
            if (static_cast<int32_t>(d) + 1 == c.dim) continue;
            out += static_cast<size_t>(index[d]) * scale;
            scale *= static_cast<size_t>(c.source.extents[d]);
        }
        int64_t position = reduced ? index[static_cast<size_t>(c.dim - 1)] + 1 : linear;
        lists[out].push_back({position, data[static_cast<size_t>(c.source.Offset(index))]});
    });
    return lists;
}

// The standard's MAXLOC (or MINLOC): the first (last with BACK) of the extreme non-NaN
// values; failing those the first (last) NaN; failing everything 0.
template <typename T>
int64_t ReferenceExtremum(const std::vector<std::pair<int64_t, T>>& list, bool maximum, bool back) {
    const T* best = nullptr;
    for (const auto& [position, x] : list) {
        if (Kind<T>::IsNaN(x)) continue;
        if (best == nullptr || (maximum ? Kind<T>::Less(*best, x) : Kind<T>::Less(x, *best))) best = &x;
    }
    int64_t found = 0;
    for (const auto& [position, x] : list) {
        bool match = best != nullptr ? !Kind<T>::IsNaN(x) && Kind<T>::Equal(x, *best) : Kind<T>::IsNaN(x);
        if (match && (found == 0 || back)) found = position;
    }
    return found;
}

template <typename T>
int64_t ReferenceFind(const std::vector<std::pair<int64_t, T>>& list, const T& value, bool back) {
    int64_t found = 0;
    for (const auto& [position, x] : list) {
        if (Kind<T>::Equal(x, value) && (found == 0 || back)) found = position;
    }
    return found;
}

// The mask as LOGICAL of the case's kind, with noise above bit 0.
std::vector<unsigned char> MaskBytes(const Case& c) {
    std::vector<unsigned char> bytes(c.truths.size() * static_cast<size_t>(c.maskKind));
    for (size_t e = 0; e < c.truths.size(); ++e) {
        StoreInteger(bytes.data() + e * static_cast<size_t>(c.maskKind), c.maskKind, 0x5A5A5A5A5A5A5A00u | c.truths[e]);
    }
    return bytes;
}

// Runs a search on the case and compares every result element with `expected`.
template <typename Call>
void Expect(const Case& c, const std::vector<std::vector<int64_t>>& expected, Call call, const std::string& name) {
    std::vector<unsigned char> maskBytes = MaskBytes(c);
    Array mask(c.mask.extents, c.maskKind, RTD_TYPE_LOGICAL, c.mask.strides);
    unsigned char scalarTruth[8] = {};
    StoreInteger(scalarTruth, c.maskKind, c.mode == 2 ? 0xFF01u : 0xFF00u);
    Array scalarMask({}, c.maskKind, RTD_TYPE_LOGICAL);
    scalarMask.rtd->header.dscr_type = RTD_SCALAR;
    const void* maskData = c.mode == 1 ? static_cast<const void*>(maskBytes.data() + c.mask.first * c.maskKind)
                                       : static_cast<const void*>(scalarTruth);
    ResultRecord record = Unallocated(c.resultKind);
    call(&record, c.mode ? maskData : nullptr, c.mode == 1 ? mask.rtd : c.mode ? scalarMask.rtd : nullptr);

    size_t rank = c.source.extents.size();
    bool reduced = c.dim != 0 && rank >= 2;
    std::string where = name + " rank " + std::to_string(rank) + " dim " + std::to_string(c.dim) + " mode " +
                        std::to_string(c.mode) + " back " + std::to_string(c.back) + " kind " +
                        std::to_string(c.resultKind);
    size_t count = reduced ? expected.size() : (c.dim != 0 ? 1 : rank);
    if (count == 0) {
        EXPECT_EQ(record.base_ptr, 0u) << where;
        return;
    }
    ASSERT_NE(record.base_ptr, 0u) << where;
    EXPECT_EQ(record.element_len, c.resultKind) << where;
    EXPECT_EQ(record.header.data_type, RTD_TYPE_INTEGER) << where;
    auto* result = reinterpret_cast<const unsigned char*>(record.base_ptr);
    for (size_t i = 0; i < count; ++i) {
        int64_t want = reduced || c.dim != 0 ? expected[i][0] : expected[0][i];
        ASSERT_EQ(LoadInteger(result + i * static_cast<size_t>(c.resultKind), c.resultKind), want)
            << where << " element " << i;
    }
    std::free(reinterpret_cast<void*>(record.base_ptr));
}

// Without DIM the linear position becomes subscripts from 1, all 0 for none.
std::vector<std::vector<int64_t>> Answers(const Case& c, const std::vector<int64_t>& positions) {
    std::vector<std::vector<int64_t>> answers;
    if (c.dim != 0) {
        for (int64_t p : positions) answers.push_back({p});
        return answers;
    }
    std::vector<int64_t> subscripts;
    int64_t rest = positions[0] - 1;
    for (int32_t extent : c.source.extents) {
        subscripts.push_back(positions[0] == 0 ? 0 : rest % extent + 1);
        if (positions[0] != 0) rest /= extent;
    }
    answers.push_back(subscripts);
    return answers;
}

template <typename T>
void CheckExtrema(const Case& c, std::mt19937& random, Search max, Search min, SearchBack maxBack, SearchBack minBack,
                  const std::string& name) {
    std::vector<T> data;
    for (int v : c.values) data.push_back(Kind<T>::Make(v, random));
    Array source(c.source.extents, sizeof(T), Kind<T>::type, c.source.strides);
    const T* first = data.data() + c.source.first;
    auto lists = Considered(c, data);
    for (bool maximum : {true, false}) {
        std::vector<int64_t> positions;
        for (const auto& list : lists) positions.push_back(ReferenceExtremum(list, maximum, c.back));
        Expect(c, Answers(c, positions), [&](ResultRecord* record, const void* mask, const RTDArray* maskRtd) {
            if (c.back) {
                (maximum ? maxBack : minBack)(record, first, c.dim, mask, source.rtd, maskRtd, c.dim != 0, c.mode != 0, 1);
            } else {
                (maximum ? max : min)(record, first, c.dim, mask, source.rtd, maskRtd, c.dim != 0, c.mode != 0);
            }
        }, name + (maximum ? " maxloc" : " minloc"));
    }
}

template <typename T>
void CheckFind(const Case& c, std::mt19937& random, Find find, FindBack findBack, const std::string& name) {
    std::vector<T> data;
    for (int v : c.values) data.push_back(Kind<T>::Make(v, random));
    Array source(c.source.extents, sizeof(T), Kind<T>::type, c.source.strides);
    const T* first = data.data() + c.source.first;
    T value = Kind<T>::Make(static_cast<int>(random() % 9) - 4, random);
    auto lists = Considered(c, data);
    std::vector<int64_t> positions;
    for (const auto& list : lists) positions.push_back(ReferenceFind(list, value, c.back));
    Expect(c, Answers(c, positions), [&](ResultRecord* record, const void* mask, const RTDArray* maskRtd) {
        if (c.back) {
            findBack(record, first, &value, c.dim, mask, source.rtd, maskRtd, c.dim != 0, c.mode != 0, sizeof(T), 1);
        } else {
            find(record, first, &value, c.dim, mask, source.rtd, maskRtd, c.dim != 0, c.mode != 0, sizeof(T));
        }
    }, name + " findloc");
}

TEST(LocationSearches, MatchAPlainLoopOnRandomShapesLayoutsAndMasks) {
    std::mt19937 random(33);
    for (int trial = 0; trial < 300; ++trial) {
        Case c = RandomCase(random);
        CheckExtrema<int8_t>(c, random, _vrmxloci1g, _vrmnloci1g, _vrmxlocwbacki1g, _vrmnlocwbacki1g, "i1");
        CheckExtrema<int16_t>(c, random, _vrmxloci2g, _vrmnloci2g, _vrmxlocwbacki2g, _vrmnlocwbacki2g, "i2");
        CheckExtrema<int32_t>(c, random, _vrmxloci4g, _vrmnloci4g, _vrmxlocwbacki4g, _vrmnlocwbacki4g, "i4");
        CheckExtrema<int64_t>(c, random, _vrmxloci8g, _vrmnloci8g, _vrmxlocwbacki8g, _vrmnlocwbacki8g, "i8");
        CheckExtrema<float>(c, random, _vrmxlocr4g, _vrmnlocr4g, _vrmxlocwbackr4g, _vrmnlocwbackr4g, "r4");
        CheckExtrema<double>(c, random, _vrmxlocr8g, _vrmnlocr8g, _vrmxlocwbackr8g, _vrmnlocwbackr8g, "r8");
        CheckExtrema<Pair>(c, random, _vrmxlocr16g, _vrmnlocr16g, _vrmxlocwbackr16g, _vrmnlocwbackr16g, "r16");
        CheckExtrema<Text>(c, random, _vrmxloccg, _vrmnloccg, _vrmxlocwbackcg, _vrmnlocwbackcg, "c");
        CheckFind<int8_t>(c, random, _vrfindloci1g, _vrfindlocwbacki1g, "i1");
        CheckFind<int64_t>(c, random, _vrfindloci8g, _vrfindlocwbacki8g, "i8");
        CheckFind<double>(c, random, _vrfindlocr8g, _vrfindlocwbackr8g, "r8");
        CheckFind<float>(c, random, _vrfindlocr4g, _vrfindlocwbackr4g, "r4");
        CheckFind<Pair>(c, random, _vrfindlocr16g, _vrfindlocwbackr16g, "r16");
        CheckFind<Text>(c, random, _vrfindloccg, _vrfindlocwbackcg, "c");
        CheckFind<Cx<float>>(c, random, _vrfindlocx8g, _vrfindlocwbackx8g, "x8");
        CheckFind<Cx<double>>(c, random, _vrfindlocx16g, _vrfindlocwbackx16g, "x16");
        CheckFind<Cx<Pair>>(c, random, _vrfindlocx32g, _vrfindlocwbackx32g, "x32");
        CheckFind<Logical<int8_t>>(c, random, _vrfindlocl1g, _vrfindlocwbackl1g, "l1");
        CheckFind<Logical<int16_t>>(c, random, _vrfindlocl2g, _vrfindlocwbackl2g, "l2");
        CheckFind<Logical<int32_t>>(c, random, _vrfindlocl4g, _vrfindlocwbackl4g, "l4");
        CheckFind<Logical<int64_t>>(c, random, _vrfindlocl8g, _vrfindlocwbackl8g, "l8");
        if (HasFailure()) return;
    }
}

// MAXLOC or MINLOC of a REAL(8) vector, or FINDLOC of `value` in it, at kind 4.
int64_t Locate(const std::vector<double>& values, int which, bool back, double value = 0) {
    Array source({static_cast<int32_t>(values.size())}, 8, RTD_TYPE_REAL);
    int32_t answer = -1;
    ResultRecord record = Unallocated(4);
    record.base_ptr = reinterpret_cast<uintptr_t>(&answer);
    record.header.flags = RTD_FLAG_IS_ALLOCATED;
    if (which == 0) _vrmxlocwbackr8g(&record, values.data(), 1, nullptr, source.rtd, nullptr, 1, 0, back);
    if (which == 1) _vrmnlocwbackr8g(&record, values.data(), 1, nullptr, source.rtd, nullptr, 1, 0, back);
    if (which == 2) _vrfindlocwbackr8g(&record, values.data(), &value, 1, nullptr, source.rtd, nullptr, 1, 0, 8, back);
    return answer;
}

TEST(LocationSearches, NaNsInfinitiesAndSignedZerosFollowTheStandard) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    struct Row {
        std::vector<double> values;
        int which;  // 0 MAXLOC, 1 MINLOC, 2 FINDLOC of `value`
        double value;
        int64_t first, last;  // without and with BACK
    } rows[] = {
        {{kNaN, kNaN, kNaN}, 0, 0, 1, 3},         // all NaN: the first, or the last
        {{kNaN, kNaN}, 1, 0, 1, 2},
        {{kNaN, 1, kNaN, 1, kNaN}, 0, 0, 2, 4},   // a NaN never wins
        {{kNaN, 1, kNaN, 1, kNaN}, 1, 0, 2, 4},
        {{2, kNaN, 5}, 0, 0, 3, 3},
        {{-inf, -inf}, 0, 0, 1, 2},               // an infinity is a value like others
        {{inf, kNaN, inf}, 0, 0, 1, 3},
        {{inf, kNaN, -inf}, 1, 0, 3, 3},
        {{-0.0, 0.0, -0.0}, 0, 0, 1, 3},          // -0 equals 0
        {{0.0, -0.0}, 1, 0, 1, 2},
        {{-0.0, 1.0, 0.0}, 2, 0.0, 1, 3},
        {{1.0, -0.0}, 2, -0.0, 2, 2},
        {{kNaN, 1.0}, 2, kNaN, 0, 0},             // a NaN matches nothing
        {{}, 0, 0, 0, 0},                         // empty: 0
        {{}, 2, 0, 0, 0},
        {{3, 1, 3}, 2, 2.0, 0, 0},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Locate(row.values, row.which, false, row.value), row.first) << "row " << &row - rows;
        EXPECT_EQ(Locate(row.values, row.which, true, row.value), row.last) << "row " << &row - rows;
    }
}

TEST(LocationSearches, CharactersCompareWithBlanksAndLogicalsByTheirTruth) {
    // CHARACTER(4) elements; VALUE of another length, blank-extended.
    const char text[] = "ab  abc ab\0\0    zz  ";
    Array words({5}, 4, RTD_TYPE_CHARACTER);
    auto find = [&](const char* value, int32_t length, bool back) {
        int32_t answer = -1;
        ResultRecord record = Unallocated(4);
        _vrfindlocwbackcg(&record, text, value, 1, nullptr, words.rtd, nullptr, 1, 0, length, back);
        return answer = *reinterpret_cast<int32_t*>(record.base_ptr), std::free(reinterpret_cast<void*>(record.base_ptr)),
               answer;
    };
    EXPECT_EQ(find("ab", 2, false), 1);
    EXPECT_EQ(find("ab      ", 8, false), 1);
    EXPECT_EQ(find("abc", 3, false), 2);
    EXPECT_EQ(find("", 0, false), 4);           // blanks match the empty string
    EXPECT_EQ(find("", 0, true), 4);
    EXPECT_EQ(find("zz", 2, true), 5);
    EXPECT_EQ(find("ab\0\0", 4, false), 3);
    EXPECT_EQ(find("ab\0", 3, false), 0);  // a NUL is not a blank
    EXPECT_EQ(find("a", 1, false), 0);
    // MAXLOC: the collating sequence of the bytes, unsigned: "zz" is largest, blanks smallest.
    ResultRecord record = Unallocated(2);
    _vrmxloccg(&record, text, 0, nullptr, words.rtd, nullptr, 0, 0);
    EXPECT_EQ(*reinterpret_cast<int16_t*>(record.base_ptr), 5);
    std::free(reinterpret_cast<void*>(record.base_ptr));
    record = Unallocated(2);
    _vrmnloccg(&record, text, 0, nullptr, words.rtd, nullptr, 0, 0);
    EXPECT_EQ(*reinterpret_cast<int16_t*>(record.base_ptr), 4);
    std::free(reinterpret_cast<void*>(record.base_ptr));

    // LOGICAL(8) elements whose upper bytes are noise; VALUE a LOGICAL(1).
    unsigned char logicals[3 * 8];
    StoreInteger(logicals, 8, 0xFFFFFFFFFFFFFF00u);
    StoreInteger(logicals + 8, 8, 0x0000000000000003u);
    StoreInteger(logicals + 16, 8, 0x8000000000000001u);
    Array truths({3}, 8, RTD_TYPE_LOGICAL);
    for (auto [truth, back, want] : {std::tuple{1, false, 2}, {1, true, 3}, {0, false, 1}, {0, true, 1}}) {
        unsigned char value = static_cast<unsigned char>(0xF0 | truth);
        int64_t answer = -1;
        ResultRecord r = Unallocated(8);
        r.base_ptr = reinterpret_cast<uintptr_t>(&answer);
        r.header.flags = RTD_FLAG_IS_ALLOCATED;
        _vrfindlocwbackl8g(&r, logicals, &value, 1, nullptr, truths.rtd, nullptr, 1, 0, 1, back);
        EXPECT_EQ(answer, want) << truth << back;
    }
}

TEST(LocationSearches, ResultsGoIntoCallerSectionsAndIgnoreLowerBounds) {
    // A 3 x 4 INTEGER(4) array with lower bounds 5 and -2; MAXLOC(A, DIM=2) into every other
    // element of a caller's array, and MAXLOC(A) into a reversed section.
    const int32_t a[12] = {1, 9, 3, 7, 2, 3, 7, 9, 0, 7, 1, 3};
    Array source({3, 4}, 4, RTD_TYPE_INTEGER);
    RTDDimension entry;
    for (int32_t i = 0; i < 2; ++i) {
        std::memcpy(&entry, &source.rtd->dims[i], sizeof entry);
        entry.low_bound = i == 0 ? -2 : 5;
        std::memcpy(&source.rtd->dims[i], &entry, sizeof entry);
    }
    int64_t storage[7];
    std::fill(std::begin(storage), std::end(storage), -1);
    Array sectionRtd({3}, 8, RTD_TYPE_INTEGER, {2});
    ResultRecord record{};
    std::memcpy(&record.rtd_base_ptr, sectionRtd.rtd, sizeof(RTDArray) + sizeof(RTDDimension));
    record.base_ptr = reinterpret_cast<uintptr_t>(storage + 1);
    _vrmxloci4g(&record, a, 2, nullptr, source.rtd, nullptr, 1, 0);
    EXPECT_EQ(std::vector<int64_t>(storage, storage + 7), (std::vector<int64_t>{-1, 2, -1, 1, -1, 1, -1}));

    int16_t pair[2] = {-1, -1};
    Array reversed({2}, 2, RTD_TYPE_INTEGER, {-1});
    std::memcpy(&record.rtd_base_ptr, reversed.rtd, sizeof(RTDArray) + sizeof(RTDDimension));
    record.base_ptr = reinterpret_cast<uintptr_t>(pair + 1);
    _vrmnloci4g(&record, a, 0, nullptr, source.rtd, nullptr, 0, 0);
    EXPECT_EQ(pair[1], 3);  // first subscript of the first minimum, 0 at (3, 3)
    EXPECT_EQ(pair[0], 3);
}

TEST(LocationSearches, TheDescriptorEntriesChooseTheTypeFromTheSource) {
    const int16_t shorts[4] = {4, -9, 12, 12};
    const double reals[4] = {0.5, -1.0, 2.0, kNaN};
    const double pairs[8] = {1, 0, 1, 0x1p-60, -3, 0, 1, -0x1p-60};
    const char letters[] = "kazq";
    struct Row {
        const void* data;
        int32_t length;
        uint8_t type;
        int32_t max, min;
    } rows[] = {
        {shorts, 2, RTD_TYPE_INTEGER, 3, 2},
        {reals, 8, RTD_TYPE_REAL, 3, 2},
        {pairs, 16, RTD_TYPE_REAL, 2, 3},
        {letters, 1, RTD_TYPE_CHARACTER, 3, 2},
    };
    for (const Row& row : rows) {
        Array source({4}, row.length, row.type);
        for (auto [entry, want] : {std::pair{&_vrlai4g, row.max}, std::pair{&_vrlzi4g, row.min}}) {
            ResultRecord record = Unallocated();
            entry(&record, row.data, nullptr, source.rtd, nullptr, 0);
            EXPECT_EQ(*reinterpret_cast<int32_t*>(record.base_ptr), want) << int(row.type) << " " << row.length;
            std::free(reinterpret_cast<void*>(record.base_ptr));
        }
        for (auto [entry, want] : {std::pair{&_vrhai4g, row.max}, std::pair{&_vrhzi4g, row.min}}) {
            ResultRecord record = Unallocated(8);
            entry(&record, row.data, 1, nullptr, source.rtd, nullptr, 1, 0);
            EXPECT_EQ(*reinterpret_cast<int64_t*>(record.base_ptr), want) << int(row.type) << " " << row.length;
            std::free(reinterpret_cast<void*>(record.base_ptr));
        }
    }
    // A type they do not search leaves the caller's result alone.
    int32_t answer = 77;
    const int32_t truths[2] = {0, 1};
    Array logical({2}, 4, RTD_TYPE_LOGICAL);
    ResultRecord record = Unallocated(4);
    record.base_ptr = reinterpret_cast<uintptr_t>(&answer);
    record.header.flags = RTD_FLAG_IS_ALLOCATED;
    _vrlai4g(&record, truths, nullptr, logical.rtd, nullptr, 0);
    EXPECT_EQ(answer, 77);
}

// Long contiguous runs, where the search goes by blocks or by lanes: ties across blocks, the
// extremum in the first and last block, NaNs scattered, with and without BACK.
template <typename T>
void CheckLongRun(Search max, Search min, SearchBack maxBack, SearchBack minBack, std::mt19937& random) {
    for (int32_t n : {1, 3, 1023, 1024, 1025, 5000}) {
        std::vector<T> values(static_cast<size_t>(n));
        for (T& v : values) v = Kind<T>::Make(static_cast<int>(random() % 7) - 3, random);
        std::vector<std::pair<int64_t, T>> list;
        for (int32_t i = 0; i < n; ++i) list.push_back({i + 1, values[static_cast<size_t>(i)]});
        Array source({n}, sizeof(T), Kind<T>::type);
        for (bool maximum : {true, false}) {
            for (bool back : {false, true}) {
                int64_t want = ReferenceExtremum(list, maximum, back);
                int32_t answer = -1;
                ResultRecord record = Unallocated(4);
                record.base_ptr = reinterpret_cast<uintptr_t>(&answer);
                record.header.flags = RTD_FLAG_IS_ALLOCATED;
                if (back) (maximum ? maxBack : minBack)(&record, values.data(), 1, nullptr, source.rtd, nullptr, 1, 0, 1);
                else (maximum ? max : min)(&record, values.data(), 1, nullptr, source.rtd, nullptr, 1, 0);
                ASSERT_EQ(answer, want) << "n " << n << " maximum " << maximum << " back " << back;
            }
        }
    }
}

TEST(LocationSearches, LongRunsAgreeWithAPlainLoop) {
    std::mt19937 random(3301);
    for (int trial = 0; trial < 20; ++trial) {
        CheckLongRun<int8_t>(_vrmxloci1g, _vrmnloci1g, _vrmxlocwbacki1g, _vrmnlocwbacki1g, random);
        CheckLongRun<int16_t>(_vrmxloci2g, _vrmnloci2g, _vrmxlocwbacki2g, _vrmnlocwbacki2g, random);
        CheckLongRun<int32_t>(_vrmxloci4g, _vrmnloci4g, _vrmxlocwbacki4g, _vrmnlocwbacki4g, random);
        CheckLongRun<int64_t>(_vrmxloci8g, _vrmnloci8g, _vrmxlocwbacki8g, _vrmnlocwbacki8g, random);
        CheckLongRun<float>(_vrmxlocr4g, _vrmnlocr4g, _vrmxlocwbackr4g, _vrmnlocwbackr4g, random);
        CheckLongRun<double>(_vrmxlocr8g, _vrmnlocr8g, _vrmxlocwbackr8g, _vrmnlocwbackr8g, random);
    }
}

}  // namespace
