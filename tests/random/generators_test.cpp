// Random numbers: the sequences against an independent exact computation, array fills
// against element-by-element harvests, and the choice of generator. Each test that needs
// a fresh sequence runs on a new thread, which starts from its own seed record.
#include <gtest/gtest.h>
#include <unistd.h>

#include <pthread.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include "random/kernel_modules.h"
#include "tests/intrinsics/arrays.h"
#include "tests/support/fortran.h"

namespace {

constexpr uint64_t kModulus1 = 2147483647;
constexpr uint64_t kMultiplier2 = 44485709377909u;

// x * a mod 2^48 from 24-bit halves, so that no product needs more than 48 bits.
uint64_t Reference2(uint64_t x) {
    const uint64_t low = (uint64_t{1} << 24) - 1;
    uint64_t xl = x & low, xh = x >> 24, al = kMultiplier2 & low, ah = kMultiplier2 >> 24;
    uint64_t cross = (xh * al + xl * ah) & low;
    return (xl * al + (cross << 24)) & ((uint64_t{1} << 48) - 1);
}

uint64_t Reference1(uint64_t x) { return x * 16807 % kModulus1; }

template <typename Body>
void OnFreshThread(Body body) {
    std::thread thread(body);
    thread.join();
}

double Harvest(int32_t count = 1) {
    std::vector<double> values(static_cast<size_t>(count));
    Array rtd({count}, 8, RTD_TYPE_REAL);
    rtd.rtd->base_ptr = reinterpret_cast<uintptr_t>(values.data());
    _vrdrand(rtd.rtd);
    return values.back();
}

double Scalar() {
    double value = -1;
    RTD rtd{reinterpret_cast<uintptr_t>(&value), {RTD_SCALAR, RTD_TYPE_REAL, 0, 1}, 8};
    _vrdrand(&rtd);
    return value;
}

TEST(RandomNumbers, SequencesMatchExactArithmetic) {
    OnFreshThread([] {
        // No option and no call: generator 1 from seed 1.0, the minimal standard sequence.
        int32_t ask = 0;
        EXPECT_EQ(_smp_vrrnopt(&ask), 1);
        double seed = 0;
        EXPECT_EQ(_smp_vrrnget(&seed), 1);
        EXPECT_EQ(seed, 1.0);
        uint64_t state = 1;
        for (int i = 1; i <= 10000; ++i) {
            state = Reference1(state);
            double value = Scalar();
            // The harvest is state / (2^31 - 1) rounded toward zero.
            ASSERT_LE(value * static_cast<double>(kModulus1), static_cast<double>(state)) << i;
            ASSERT_GT(std::fma(std::nextafter(value, 1.0), static_cast<double>(kModulus1), -static_cast<double>(state)), 0) << i;
        }
        EXPECT_EQ(state, 1043618065u);  // the known 10,000th state from seed 1
        _smp_vrrnget(&seed);
        EXPECT_EQ(seed, 1043618065.0);

        // Generator 2 from seed 1: the first eight states are the powers of the multiplier.
        int32_t two = 2;
        EXPECT_EQ(_smp_vrrnopt(&two), 2);
        const uint64_t powers[] = {44485709377909u,  232253848878969u, 94800993741645u,  243522309605169u,
                                   20783065360997u,  154093299791145u, 161954398135485u, 183663036741473u};
        for (uint64_t power : powers) EXPECT_EQ(Scalar(), std::ldexp(static_cast<double>(power), -48));
        // From a seed set by the program, and past a million steps, in one array fill.
        double start = 123456789.0;
        int32_t one = 1;
        _smp_vrrnput(&start, &one);
        state = 123456789;
        for (int i = 0; i < 1'000'500; ++i) state = Reference2(state);
        EXPECT_EQ(Harvest(1'000'500), std::ldexp(static_cast<double>(state), -48));
        _smp_vrrnget(&seed);
        EXPECT_EQ(seed, static_cast<double>(state));
        // Generator 1 likewise, its seed kept apart from generator 2's.
        _smp_vrrnopt(&one);
        _smp_vrrnget(&seed);
        EXPECT_EQ(seed, 1043618065.0);
        state = 1043618065;
        for (int i = 0; i < 1'000'500; ++i) state = Reference1(state);
        double last = Harvest(1'000'500);
        EXPECT_LE(last * static_cast<double>(kModulus1), static_cast<double>(state));
        _smp_vrrnget(&seed);
        EXPECT_EQ(seed, static_cast<double>(state));
    });
}

// Every element of a harvest of the given shape and strides, in array element order.
template <typename T>
std::vector<T> FillSection(std::vector<int32_t> extents, std::vector<int32_t> strides, uint8_t kind) {
    int64_t low = 0, high = 0, count = 1;
    for (size_t d = 0; d < extents.size(); ++d) {
        int64_t reach = static_cast<int64_t>(extents[d] - 1) * strides[d];
        (reach < 0 ? low : high) += reach;
        count *= extents[d];
    }
    std::vector<T> buffer(static_cast<size_t>(high - low + 1));
    Array rtd(extents, sizeof(T), RTD_TYPE_REAL, strides);
    rtd.rtd->base_ptr = reinterpret_cast<uintptr_t>(buffer.data() - low);
    (kind == 4 ? _vrrrand : _vrdrand)(rtd.rtd);
    std::vector<T> ordered;
    std::vector<int32_t> index(extents.size(), 0);
    for (int64_t n = 0; n < count; ++n) {
        int64_t offset = -low;
        for (size_t d = 0; d < extents.size(); ++d) offset += static_cast<int64_t>(index[d]) * strides[d];
        ordered.push_back(buffer[static_cast<size_t>(offset)]);
        for (size_t d = 0; d < extents.size() && ++index[d] == extents[d]; ++d) index[d] = 0;
    }
    return ordered;
}

TEST(RandomNumbers, ArrayFillsGiveTheElementsOneAtATime) {
    for (int32_t generator : {1, 2}) {
        OnFreshThread([generator] {
            int32_t choice = generator;
            _smp_vrrnopt(&choice);
            struct Shape {
                std::vector<int32_t> extents, strides;
            };
            std::vector<Shape> shapes;
            for (int32_t n : {3, 4, 5, 511, 512, 513, 2046, 2047, 2048}) {
                shapes.push_back({{n}, {1}});
                shapes.push_back({{n}, {2}});
                shapes.push_back({{n}, {-1}});
            }
            for (int32_t stride : {4, 5, -4}) shapes.push_back({{600}, {stride}});  // the stride limit
            shapes.push_back({{40000}, {1}});  // shares of several blocks, and an empty one
            shapes.push_back({{7, 5}, {1, 7}});
            shapes.push_back({{7, 5}, {5, 1}});      // the transposed walk
            shapes.push_back({{3, 4, 600}, {-1, 3, 12}});
            // Either side of the length where the fill is shared among threads (twice the
            // processors online, 2,048 elements each), and a shared fill of rank 3.
            long online = sysconf(_SC_NPROCESSORS_ONLN);
            int32_t limit = (online > 1 ? 2 * static_cast<int32_t>(online) : 1) * 2048;
            shapes.push_back({{limit - 1}, {1}});
            shapes.push_back({{limit + 1}, {-1}});
            shapes.push_back({{5, 3, limit / 15 + 7}, {3, 1, 15}});
            for (const Shape& shape : shapes) {
                double seed;
                _smp_vrrnget(&seed);
                std::vector<double> whole = FillSection<double>(shape.extents, shape.strides, 8);
                int32_t one = 1;
                _smp_vrrnput(&seed, &one);
                for (size_t i = 0; i < whole.size(); ++i) {
                    ASSERT_EQ(whole[i], Scalar()) << "generator " << generator << " element " << i;
                }
                // REAL(4) harvests are the same values rounded toward zero, never 1.
                _smp_vrrnput(&seed, &one);
                std::vector<float> single = FillSection<float>(shape.extents, shape.strides, 4);
                _smp_vrrnput(&seed, &one);
                for (size_t i = 0; i < single.size(); ++i) {
                    double value = Scalar();
                    ASSERT_LE(single[i], value);
                    ASSERT_GT(std::nextafter(single[i], 2.0f), value);
                    ASSERT_LT(single[i], 1.0f);
                }
            }
        });
    }
}

// A contiguous run reaches a 128-byte line one element at a time and then goes eight at
// a time: every starting alignment gives the numbers of single steps.
TEST(RandomNumbers, EveryAlignmentOfALongRun) {
    OnFreshThread([] {
        std::vector<double> buffer(800);
        for (int32_t offset = 0; offset < 18; ++offset) {
            double seed;
            _smp_vrrnget(&seed);
            Array rtd({700}, 8, RTD_TYPE_REAL);
            rtd.rtd->base_ptr = reinterpret_cast<uintptr_t>(buffer.data() + offset);
            _vrdrand(rtd.rtd);
            int32_t one = 1;
            _smp_vrrnput(&seed, &one);
            for (int32_t i = 0; i < 700; ++i) ASSERT_EQ(buffer[offset + i], Scalar()) << offset << " " << i;
        }
    });
}

// The kernels' tables hold the powers the sequences are defined by, and both skips land
// where single steps do.
TEST(RandomNumbers, SkippingTables) {
    const uint64_t squares2[] = {44485709377909u, 232253848878969u, 243522309605169u, 183663036741473u,
                                 84667698696897u,  93578557994369u,  247908122798849u, 84725635634689u};
    const uint64_t powers2[] = {44485709377909u,  232253848878969u, 94800993741645u,  243522309605169u,
                                20783065360997u,  154093299791145u, 161954398135485u, 183663036741473u};
    const uint64_t squares1[] = {16807, 282475249, 984943658, 1457850878, 1137522503, 1636807826};
    for (int k = 0; k < 8; ++k) {
        EXPECT_EQ(_hpf_random_module2d::kSkip.value[k], squares2[k]);
        EXPECT_EQ(_hpf_random_module2r::kPowers.value[k], powers2[k]);
    }
    for (int k = 0; k < 6; ++k) EXPECT_EQ(_hpf_random_module1q::kSkip.value[k], squares1[k]);
    uint64_t x1 = 12345, x2 = 12345;
    for (uint64_t n = 0; n < 3000; ++n) {
        EXPECT_EQ(_hpf_random_module1d::random_skip_f(n, 12345), x1);
        EXPECT_EQ(_hpf_random_module1d::power_a(n, 12345), x1);
        EXPECT_EQ(_hpf_random_module2d::random_skip_f(n, 12345), x2);
        EXPECT_EQ(_hpf_random_module2q::power_a(n, 12345), x2);
        x1 = Reference1(x1);
        x2 = Reference2(x2);
    }
}

// A seed that reduces to 0 would give zeros for ever: it is rewritten to a live state,
// (seed AND 0x7FFFFFFE) OR 4.
TEST(RandomNumbers, ASeedOfZeroIsMadeLive) {
    for (int32_t generator : {1, 2}) {
        OnFreshThread([generator] {
            int32_t choice = generator, one = 1;
            _smp_vrrnopt(&choice);
            const double dead = generator == 1 ? 2147483647.0 : 0x1p48, live = generator == 1 ? 2147483646.0 : 4.0;
            for (double seed : {0.0, dead}) {
                _smp_vrrnput(&seed, &one);
                double first = Scalar();
                EXPECT_GT(first, 0.0);
                double fixed = seed == 0.0 ? 4.0 : live;
                _smp_vrrnput(&fixed, &one);
                EXPECT_EQ(Scalar(), first) << generator << " " << seed;
            }
        });
    }
}

TEST(RandomNumbers, ZeroSizedHarvestsWriteNothingAndKeepTheSeed) {
    OnFreshThread([] {
        double seed = 12345, one = 1;
        int32_t count = 1;
        _smp_vrrnput(&seed, &count);
        double guard = -7;
        for (std::vector<int32_t> shape : {std::vector<int32_t>{0}, {4, 0}, {0, 3}}) {
            for (int32_t length : {4, 8, 16}) {
                Array rtd(shape, length, RTD_TYPE_REAL);
                rtd.rtd->base_ptr = reinterpret_cast<uintptr_t>(&guard);
                if (length == 4) _vrrrand(rtd.rtd);
                if (length == 8) _vrdrand(rtd.rtd);
                if (length == 16) _vrqrand(rtd.rtd);
            }
        }
        EXPECT_EQ(guard, -7);
        double now = 0;
        _smp_vrrnget(&now);
        EXPECT_EQ(now, seed);
        (void)one;
    });
}

}  // namespace

// Counts the threads the library starts; the test program is linked to route its
// pthread_create calls here.
std::atomic<int> threadsStarted{0};
extern "C" int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
extern "C" int __wrap_pthread_create(pthread_t* id, const pthread_attr_t* attributes, void* (*body)(void*),
                                     void* argument) {
    ++threadsStarted;
    return __real_pthread_create(id, attributes, body, argument);
}

namespace {

class RandomGeneratorChoice : public vrntest::RuntimeTest {};

TEST_F(RandomGeneratorChoice, TheThreadedFillWaitsForTwoThousandElementsAThread) {
    if (sysconf(_SC_NPROCESSORS_ONLN) < 2) GTEST_SKIP() << "one processor: never threaded";
    std::vector<double> values(1'000'000);
    Array rtd({1'000'000}, 8, RTD_TYPE_REAL);
    rtd.rtd->base_ptr = reinterpret_cast<uintptr_t>(values.data());
    struct Case {
        const char* option;
        bool threaded;
    } cases[] = {{"intrinthds=1000", false}, {"intrinthds=488", true}, {"intrinthds=489", false}};
    for (const Case& c : cases) {
        vrntest::SetOptions(c.option);
        int before = threadsStarted;
        _vrdrand(rtd.rtd);
        EXPECT_EQ(threadsStarted > before, c.threaded) << c.option;
    }
}

TEST_F(RandomGeneratorChoice, AnUnknownGeneratorIsError166AndChangesNothing) {
    int32_t two = 2, three = 3, ask = 0;
    EXPECT_EQ(_vrrnopt(&two), 2);
    vrntest::CapturedRun run;
    EXPECT_EQ(_vrrnopt(&three), 2);
    run.Finish();
    EXPECT_NE(run.err().find("166"), std::string::npos) << run.err();
    EXPECT_EQ(_vrrnopt(&ask), 2);
    // The process record and a thread's record are separate.
    OnFreshThread([] {
        int32_t none = 0;
        EXPECT_EQ(_smp_vrrnopt(&none), 1);
    });
    int32_t one = 1;
    _vrrnopt(&one);
}

TEST_F(RandomGeneratorChoice, TheRandomOptionChoosesTheDefault) {
    vrntest::SetOptions("random=generator2");
    EXPECT_EQ(get_default_generator(), 2);
    OnFreshThread([] {
        int32_t ask = 0;
        EXPECT_EQ(_smp_vrrnopt(&ask), 2);
    });
    vrntest::SetOptions("random=generator1");
    EXPECT_EQ(get_default_generator(), 1);
}

}  // namespace
