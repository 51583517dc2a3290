// The reductions, checked against a plain loop over index tuples in array element order
// on random shapes and layouts, and on the cases where the order or the path decides
// the answer.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/intrinsics/arrays.h"

namespace {

using Masked = void (*)(ResultRecord*, const void*, int32_t, const void*, const RTDArray*, const RTDArray*, int32_t,
                        int32_t);
using LogicalEntry = void (*)(ResultRecord*, const void*, int32_t, const RTDArray*, int32_t);

struct Case {
    Section source;
    Section mask;
    std::vector<int32_t> values;   // buffer behind the source
    std::vector<uint8_t> truths;   // buffer behind the mask, LOGICAL(1)
    int32_t dim = 0;               // 0: absent
    int mode = 0;                  // 0 no mask, 1 array mask, 2 scalar true, 3 scalar false
};

// REAL(16) and complex elements made from the integer values of a case: their sums are
// exact, so the order of the walk does not matter.
struct Wide {
    double hi = 0, lo = 0;
    Wide() = default;
    Wide(int32_t v) : hi(v) {}
    bool operator==(const Wide& other) const { return hi == other.hi && lo == other.lo; }
};

template <typename R>
struct Cx {
    R re = 0, im = 0;
    Cx() = default;
    Cx(int32_t v) : re(static_cast<R>(v)), im(static_cast<R>(v % 7)) {}
    bool operator==(const Cx& other) const { return re == other.re && im == other.im; }
};

template <typename T>
struct Reference {
    T initial;
    std::function<void(T&, T)> step;
};

// Runs `entry` on the case with elements of type T and checks every result element.
template <typename T>
void Check(Masked entry, const Case& c, const Reference<T>& reference, uint8_t type, const char* name) {
    std::vector<T> data(c.values.begin(), c.values.end());
    Array source(c.source.extents, sizeof(T), type, c.source.strides);
    Array mask(c.mask.extents, 1, RTD_TYPE_LOGICAL, c.mask.strides);
    uint8_t scalarTruth = c.mode == 2 ? 1 : 0;
    Array scalarMask({}, 1, RTD_TYPE_LOGICAL);
    scalarMask.rtd->header.dscr_type = RTD_SCALAR;
    const void* maskData = c.mode == 1 ? static_cast<const void*>(c.truths.data() + c.mask.first) : &scalarTruth;
    const RTDArray* maskRtd = c.mode == 1 ? mask.rtd : scalarMask.rtd;

    ResultRecord record = Unallocated();
    entry(&record, data.data() + c.source.first, c.dim, c.mode ? maskData : nullptr, source.rtd,
          c.mode ? maskRtd : nullptr, c.dim != 0, c.mode != 0);

    size_t rank = c.source.extents.size();
    bool reduced = c.dim != 0 && rank >= 2;
    std::vector<int32_t> outerExtents;
    for (size_t d = 0; d < rank; ++d) {
        if (!reduced || static_cast<int32_t>(d) + 1 != c.dim) outerExtents.push_back(c.source.extents[d]);
    }
    if (!reduced) outerExtents.clear();
    std::vector<T> expected;
    ForEachIndex(outerExtents, [&](const std::vector<int32_t>&) { expected.push_back(reference.initial); });
    if (!reduced) expected.assign(1, reference.initial);
    ForEachIndex(c.source.extents, [&](const std::vector<int32_t>& index) {
        if (c.mode == 3) return;
        if (c.mode == 1 && !(c.truths[static_cast<size_t>(c.mask.Offset(index))] & 1)) return;
        size_t out = 0;
        if (reduced) {
            size_t scale = 1;
            for (size_t d = 0; d < rank; ++d) {
                if (static_cast<int32_t>(d) + 1 == c.dim) continue;
                out += static_cast<size_t>(index[d]) * scale;
                scale *= static_cast<size_t>(c.source.extents[d]);
            }
        }
        reference.step(expected[out], data[static_cast<size_t>(c.source.Offset(index))]);
    });
    if (expected.empty()) {
        EXPECT_EQ(record.base_ptr, 0u) << name;
        return;
    }
    ASSERT_NE(record.base_ptr, 0u) << name;
    const T* result = reinterpret_cast<const T*>(record.base_ptr);
    for (size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(result[i], expected[i]) << name << " rank " << rank << " dim " << c.dim << " mode " << c.mode
                                          << " element " << i;
    }
    std::free(reinterpret_cast<void*>(record.base_ptr));
}

int64_t Wrap(int64_t value, int32_t kind) {
    unsigned char bytes[8];
    StoreInteger(bytes, kind, static_cast<uint64_t>(value));
    return LoadInteger(bytes, kind);
}

TEST(Reductions, MatchAPlainLoopOnRandomShapesAndLayouts) {
    std::mt19937 random(2026);
    const size_t ranks[] = {1, 2, 3, 4, 7, 20};
    for (int trial = 0; trial < 600; ++trial) {
        size_t rank = ranks[trial % 6];
        Case c;
        std::vector<int32_t> extents = RandomExtents(rank, random);
        c.source = RandomSection(extents, random);
        c.mask = RandomSection(extents, random);
        c.values.resize(static_cast<size_t>(c.source.span));
        for (auto& v : c.values) v = static_cast<int32_t>(random() % 2001) - 1000;
        c.truths.resize(static_cast<size_t>(c.mask.span));
        for (auto& t : c.truths) t = static_cast<uint8_t>(random() % 2 == 0 ? 0xFE : 0x01);  // only bit 0 counts
        c.dim = random() % 3 == 0 ? 0 : 1 + static_cast<int32_t>(random() % rank);
        c.mode = static_cast<int>(random() % 4);

        // Integer folds and integer-valued real sums do not depend on the order of the walk.
        Check<int32_t>(_vrsmi4g, c, {0, [](int32_t& m, int32_t x) { m += x; }}, RTD_TYPE_INTEGER, "sum i4");
        Check<int32_t>(_vrpri4g, c,
                       {1, [](int32_t& m, int32_t x) { m = static_cast<int32_t>(static_cast<uint32_t>(m) * static_cast<uint32_t>(x)); }},
                       RTD_TYPE_INTEGER, "product i4");
        Check<int16_t>(_vrmxi2g, c, {-32768, [](int16_t& m, int16_t x) { m = std::max(m, x); }}, RTD_TYPE_INTEGER,
                       "maxval i2");
        Check<int64_t>(_vrmni8g, c,
                       {std::numeric_limits<int64_t>::max(), [](int64_t& m, int64_t x) { m = std::min(m, x); }},
                       RTD_TYPE_INTEGER, "minval i8");
        Check<int8_t>(_vrsmi1g, c, {0, [](int8_t& m, int8_t x) { m = static_cast<int8_t>(m + x); }},
                      RTD_TYPE_INTEGER, "sum i1");
        Check<int8_t>(_vrmxi1g, c, {-128, [](int8_t& m, int8_t x) { m = std::max(m, x); }}, RTD_TYPE_INTEGER,
                      "maxval i1");
        Check<int64_t>(_vrpri8g, c,
                       {1, [](int64_t& m, int64_t x) { m = static_cast<int64_t>(static_cast<uint64_t>(m) * static_cast<uint64_t>(x)); }},
                       RTD_TYPE_INTEGER, "product i8");
        Check<float>(_vrsmr4g, c, {0.0f, [](float& m, float x) { m += x; }}, RTD_TYPE_REAL, "sum r4");
        Check<double>(_vrmxr8g, c, {-INFINITY, [](double& m, double x) { m = std::max(m, x); }}, RTD_TYPE_REAL,
                      "maxval r8");
        Check<Wide>(_vrsmr16g, c, {Wide(0), [](Wide& m, Wide x) { m.hi += x.hi; }}, RTD_TYPE_REAL, "sum r16");
        Check<Wide>(_vrmxr16g, c, {[] { Wide w; w.hi = -INFINITY; return w; }(), [](Wide& m, Wide x) { if (m.hi < x.hi) m = x; }}, RTD_TYPE_REAL,
                    "maxval r16");
        Check<Cx<float>>(_vrsmx8g, c, {Cx<float>(0), [](Cx<float>& m, Cx<float> x) { m.re += x.re; m.im += x.im; }},
                         RTD_TYPE_COMPLEX, "sum x8");
        Check<Cx<Wide>>(_vrsmx32g, c,
                        {Cx<Wide>(0), [](Cx<Wide>& m, Cx<Wide> x) { m.re.hi += x.re.hi; m.im.hi += x.im.hi; }},
                        RTD_TYPE_COMPLEX, "sum x32");
        Check<double>(_vrsmr8g, c, {0.0, [](double& m, double x) { m += x; }}, RTD_TYPE_REAL, "sum r8");
        Check<float>(_vrmxr4g, c, {-INFINITY, [](float& m, float x) { m = std::max(m, x); }}, RTD_TYPE_REAL,
                     "maxval r4");
        Check<double>(_vrmnr8g, c, {INFINITY, [](double& m, double x) { m = std::min(m, x); }}, RTD_TYPE_REAL,
                      "minval r8");

        // The logical template on the mask's truths at every kind, with the bits above
        // bit 0 set so that only bit 0 can decide.
        struct Family {
            int32_t kind;
            LogicalEntry all, any, count;
        };
        for (Family family : {Family{1, _vrall1, _vranl1, _vrcni1}, Family{2, _vrall2, _vranl2, _vrcni2},
                              Family{4, _vrall4, _vranl4, _vrcni4}, Family{8, _vrall8, _vranl8, _vrcni8}}) {
            std::vector<unsigned char> logicals(c.truths.size() * static_cast<size_t>(family.kind));
            for (size_t e = 0; e < c.truths.size(); ++e) {
                uint64_t word = 0xFEFEFEFEFEFEFE00u | (c.truths[e] & 1);
                StoreInteger(logicals.data() + e * static_cast<size_t>(family.kind), family.kind, word);
            }
            Array source(extents, family.kind, RTD_TYPE_LOGICAL, c.mask.strides);
            bool reduced = c.dim != 0 && rank >= 2;
            size_t outerSize = 1;
            for (size_t d = 0; reduced && d < rank; ++d) {
                if (static_cast<int32_t>(d) + 1 != c.dim) outerSize *= static_cast<size_t>(std::max(extents[d], 0));
            }
            std::vector<int64_t> counts(outerSize, 0), totals(outerSize, 0);
            ForEachIndex(extents, [&](const std::vector<int32_t>& index) {
                size_t out = 0, scale = 1;
                for (size_t d = 0; reduced && d < rank; ++d) {
                    if (static_cast<int32_t>(d) + 1 == c.dim) continue;
                    out += static_cast<size_t>(index[d]) * scale;
                    scale *= static_cast<size_t>(extents[d]);
                }
                counts[out] += c.truths[static_cast<size_t>(c.mask.Offset(index))] & 1;
                totals[out] += 1;
            });
            for (LogicalEntry entry : {family.all, family.any, family.count}) {
                ResultRecord record = Unallocated(family.kind);
                entry(&record, logicals.data() + c.mask.first * family.kind, c.dim, source.rtd, c.dim != 0);
                if (outerSize == 0) {
                    EXPECT_EQ(record.base_ptr, 0u);
                    continue;
                }
                for (size_t i = 0; i < outerSize; ++i) {
                    int64_t want = entry == family.count ? counts[i]
                                   : entry == family.all ? (counts[i] == totals[i] ? 1 : 0)
                                                         : (counts[i] > 0 ? 1 : 0);
                    int64_t got = LoadInteger(reinterpret_cast<const unsigned char*>(record.base_ptr) +
                                                  i * static_cast<size_t>(family.kind), family.kind);
                    ASSERT_EQ(got, Wrap(want, family.kind))
                        << "logical kind " << family.kind << " rank " << rank << " dim " << c.dim << " element " << i;
                }
                std::free(reinterpret_cast<void*>(record.base_ptr));
            }
        }
    }
}

// A scalar result of a masked entry on a vector.
template <typename T>
T Reduce(Masked entry, const std::vector<T>& values, const std::vector<int32_t>* mask = nullptr) {
    Array source({static_cast<int32_t>(values.size())}, sizeof(T), RTD_TYPE_REAL);
    Array maskRtd({static_cast<int32_t>(values.size())}, 4, RTD_TYPE_LOGICAL);
    T result{};
    ResultRecord record = Unallocated();
    record.base_ptr = reinterpret_cast<uintptr_t>(&result);
    record.header.flags = RTD_FLAG_IS_ALLOCATED;
    entry(&record, values.data(), 0, mask ? mask->data() : nullptr, source.rtd, maskRtd.rtd, 0, mask != nullptr);
    return result;
}

struct Pair {
    double hi, lo;
};

TEST(Reductions, NaNsFollowTheComparisonOfEachPath) {
    const double nan = std::nan("");
    std::vector<int32_t> allTrue(3, 1);
    EXPECT_EQ(Reduce<double>(_vrmxr8g, {2.0, nan, 1.0}), 1.0);
    EXPECT_EQ(Reduce<double>(_vrmxr8g, {2.0, nan, 1.0}, &allTrue), 2.0);
    EXPECT_EQ(Reduce<double>(_vrmnr8g, {2.0, nan, 1.0}), 1.0);
    EXPECT_EQ(Reduce<double>(_vrmnr8g, {2.0, nan, 1.0}, &allTrue), 1.0);
    EXPECT_TRUE(std::isnan(Reduce<double>(_vrmxr8g, {5.0, nan})));
    EXPECT_EQ(Reduce<float>(_vrmxr4g, {NAN, 1.0f}), 1.0f);
    EXPECT_EQ(Reduce<double>(_vrmnr8g, {nan, nan}), INFINITY);
    Pair pairs[] = {{2, 0}, {nan, 0}, {1, 0}};
    std::vector<Pair> wide(pairs, pairs + 3);
    EXPECT_EQ(Reduce<Pair>(_vrmxr16g, wide).hi, 2.0);
    EXPECT_EQ(Reduce<Pair>(_vrmnr16g, wide).hi, 1.0);

    // With DIM on rank 2 the reduced dimension decides: inner keeps the register form,
    // outer is updated in memory and ignores NaNs. The same memory viewed both ways:
    double grid[] = {2.0, nan, 1.0, 2.0, nan, 1.0};
    Array columns({3, 2}, 8, RTD_TYPE_REAL);           // two columns [2 NaN 1]
    Array rows({2, 3}, 8, RTD_TYPE_REAL, {3, 1});      // the transposed section
    ResultRecord inner = Unallocated();
    _vrmxr8g(&inner, grid, 2, nullptr, rows.rtd, nullptr, 1, 0);  // reduces the stride-1 dimension
    const double* innerResult = reinterpret_cast<const double*>(inner.base_ptr);
    EXPECT_EQ(innerResult[0], 1.0);
    EXPECT_EQ(innerResult[1], 1.0);
    ResultRecord outer = Unallocated();
    _vrmxr8g(&outer, grid, 2, nullptr, columns.rtd, nullptr, 1, 0);  // reduces across columns
    const double* outerResult = reinterpret_cast<const double*>(outer.base_ptr);
    EXPECT_EQ(outerResult[0], 2.0);
    EXPECT_EQ(outerResult[1], -INFINITY);  // NaN and NaN: both ignored
    EXPECT_EQ(outerResult[2], 1.0);
    std::free(reinterpret_cast<void*>(inner.base_ptr));
    std::free(reinterpret_cast<void*>(outer.base_ptr));
}

TEST(Reductions, EmptyAndMaskedOutReductionsGiveTheInitialValues) {
    std::vector<double> none;
    EXPECT_EQ(Reduce<double>(_vrmxr8g, none), -INFINITY);
    EXPECT_EQ(Reduce<double>(_vrmnr8g, none), INFINITY);
    EXPECT_EQ(Reduce<double>(_vrsmr8g, none), 0.0);
    EXPECT_EQ(Reduce<double>(_vrprr8g, none), 1.0);
    std::vector<int32_t> allFalse(3, 0);
    EXPECT_EQ(Reduce<int8_t>(_vrmxi1g, {1, 2, 3}, &allFalse), -128);
    Pair empty = Reduce<Pair>(_vrmnr16g, {});
    EXPECT_EQ(empty.hi, INFINITY);
    EXPECT_EQ(empty.lo, 0.0);

    // A reduced extent of 0 with DIM, and a false scalar mask with DIM, fill the result.
    Array flat({0, 3}, 4, RTD_TYPE_INTEGER);
    int32_t out[3] = {9, 9, 9};
    ResultRecord record = Unallocated();
    record.base_ptr = reinterpret_cast<uintptr_t>(out);
    Array outRtd({3}, 4, RTD_TYPE_INTEGER);
    std::memcpy(ResultRTD(&record), outRtd.rtd, sizeof(RTDArray) + sizeof(RTDDimension));
    record.base_ptr = record.rtd_base_ptr = reinterpret_cast<uintptr_t>(out);
    _vrmni4g(&record, nullptr, 1, nullptr, flat.rtd, nullptr, 1, 0);
    EXPECT_EQ(out[2], 2147483647);
    int32_t square[4] = {1, 2, 3, 4};
    Array two({2, 2}, 4, RTD_TYPE_INTEGER);
    uint8_t no = 0;
    Array scalar({}, 1, RTD_TYPE_LOGICAL);
    scalar.rtd->header.dscr_type = RTD_SCALAR;
    ResultRecord skipped = Unallocated();
    _vrsmi4g(&skipped, square, 2, &no, two.rtd, scalar.rtd, 1, 1);
    const int32_t* sums = reinterpret_cast<const int32_t*>(skipped.base_ptr);
    EXPECT_EQ(sums[0], 0);
    EXPECT_EQ(sums[1], 0);
    std::free(reinterpret_cast<void*>(skipped.base_ptr));
}

TEST(Reductions, ArithmeticStaysInTheKindOfTheElements) {
    // Single precision accumulates in single precision.
    std::vector<float> big(17, 1.0f);
    big[0] = 16777216.0f;
    EXPECT_EQ(Reduce<float>(_vrsmr4g, big), 16777216.0f);
    // Integers wrap at their width.
    EXPECT_EQ(Reduce<int8_t>(_vrsmi1g, {100, 100}), -56);
    EXPECT_EQ(Reduce<int16_t>(_vrpri2g, {300, 300}), static_cast<int16_t>(90000 - 65536));
    EXPECT_EQ(Reduce<int64_t>(_vrsmi8g, {INT64_MAX, 1}), INT64_MIN);
    // Complex products: (1 + 2i)(3 + 4i) = -5 + 10i, in single precision for x8.
    struct C8 {
        float re, im;
    };
    C8 product = Reduce<C8>(_vrprx8g, {{1, 2}, {3, 4}});
    EXPECT_EQ(product.re, -5.0f);
    EXPECT_EQ(product.im, 10.0f);
    // REAL(16) keeps what a double would lose.
    Pair sum = Reduce<Pair>(_vrsmr16g, {{1.0, 0}, {1e-20, 0}, {1e-20, 0}});
    EXPECT_EQ(sum.hi, 1.0);
    EXPECT_EQ(sum.lo, 2e-20);
    // COUNT into INTEGER(1) wraps: 300 trues give 44, at any logical kind of the source.
    std::vector<int64_t> trues(300, 1);
    Array source({300}, 8, RTD_TYPE_LOGICAL);
    int8_t count = 0;
    ResultRecord record = Unallocated(1);
    record.base_ptr = reinterpret_cast<uintptr_t>(&count);
    record.header.flags = RTD_FLAG_IS_ALLOCATED;
    _vrcni1(&record, trues.data(), 0, source.rtd, 0);
    EXPECT_EQ(count, 44);
}

TEST(Reductions, AllStopsAtTheFirstFalseElement) {
    // The false element ends the first page; the next page is unreadable.
    long page = sysconf(_SC_PAGESIZE);
    void* pages = mmap(nullptr, static_cast<size_t>(2 * page), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    auto* words = static_cast<int32_t*>(pages);
    size_t onFirstPage = static_cast<size_t>(page) / 4;
    for (size_t i = 0; i < onFirstPage; ++i) words[i] = 1;
    words[onFirstPage - 1] = 0;
    ASSERT_EQ(mprotect(static_cast<char*>(pages) + page, static_cast<size_t>(page), PROT_NONE), 0);
    Array source({static_cast<int32_t>(onFirstPage + 10)}, 4, RTD_TYPE_LOGICAL);
    int32_t all = 7, any = 7;
    ResultRecord record = Unallocated();
    record.base_ptr = reinterpret_cast<uintptr_t>(&all);
    record.header.flags = RTD_FLAG_IS_ALLOCATED;
    _vrall4(&record, words, 0, source.rtd, 0);
    EXPECT_EQ(all, 0);
    record.base_ptr = reinterpret_cast<uintptr_t>(&any);
    _vranl4(&record, words, 0, source.rtd, 0);
    EXPECT_EQ(any, 1);
    munmap(pages, static_cast<size_t>(2 * page));
}

}  // namespace

namespace {

std::string CharacterReduction(Masked entry, const char* data, std::vector<int32_t> extents, int32_t length,
                               int32_t dim = 0, const std::vector<int32_t>* mask = nullptr) {
    Array source(extents, length, RTD_TYPE_CHARACTER);
    Array maskRtd(extents, 4, RTD_TYPE_LOGICAL);
    ResultRecord record = Unallocated();
    entry(&record, data, dim, mask ? mask->data() : nullptr, source.rtd, maskRtd.rtd, dim != 0, mask != nullptr);
    const RTDArray* rtd = ResultRTD(&record);
    size_t elements = 1;
    for (int32_t d = 1; d <= rtd->rank; ++d) elements *= static_cast<size_t>(FortranDimension(rtd, d).extent);
    std::string text(reinterpret_cast<const char*>(record.base_ptr), elements * static_cast<size_t>(length));
    std::free(reinterpret_cast<void*>(record.base_ptr));
    return text;
}

TEST(Reductions, CharacterExtremaCompareWithBlankPadding) {
    const char words[] = "pear" "plum" "fig " "kiwi";
    EXPECT_EQ(CharacterReduction(_vrmxcg, words, {4}, 4), "plum");
    EXPECT_EQ(CharacterReduction(_vrmncg, words, {4}, 4), "fig ");
    // Per column of a 2 x 2 array, and with a mask that hides "plum".
    EXPECT_EQ(CharacterReduction(_vrmxcg, words, {2, 2}, 4, 1), "plumkiwi");
    EXPECT_EQ(CharacterReduction(_vrmncg, words, {2, 2}, 4, 2), "fig kiwi");
    std::vector<int32_t> hidePlum = {1, 0, 1, 1};
    EXPECT_EQ(CharacterReduction(_vrmxcg, words, {4}, 4, 0, &hidePlum), "pear");
    // A trailing control character sorts below the blank that pads the other string.
    const char close[] = "ab\x01" "ab ";
    EXPECT_EQ(CharacterReduction(_vrmxcg, close, {2}, 3), "ab ");
    // Nothing to compare: 0x00 bytes for MAXVAL, 0x7F for MINVAL.
    std::vector<int32_t> none = {0, 0, 0, 0};
    EXPECT_EQ(CharacterReduction(_vrmxcg, words, {4}, 4, 0, &none), std::string(4, '\0'));
    EXPECT_EQ(CharacterReduction(_vrmncg, words, {0}, 4), std::string(4, '\x7f'));
}

}  // namespace
