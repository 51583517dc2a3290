// One MATMUL member: the dispatcher that reads the shapes from the descriptors and picks
// the conventional kernel, the Strassen recursion and the threaded layer; the threaded
// entries and their thread bodies. A member type M gives
//   Type                      the result element,
//   kLogical                  whether it is a logical member,
//   Kernel(flat, code)        its conventional kernel,
//   Strassen(flat, cutoff, work, workEnd)   its recursion (not for logical members).
// `_smp_vrmmc<M>` is the member's `_smp_vrmm..c`, `__mt_vrmms<M>` its `__mt_vrmm..s`, and
// so on.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "core/export.h"
#include "intrinsics/frame.h"
#include "intrinsics/matmul_strassen.h"
#include "intrinsics/matmul_threads.h"
#include "vrn90.h"

constexpr int32_t kDefaultStrassenCutoff = 196;
constexpr int32_t kStrassenThreshold = 3600;  // m + n + k
constexpr float kThreadedThreshold = 216.0f;  // m + n + k

template <class M>
void __mt_vrmmc(const MatmulTask& task) {
    M::Kernel(task.slice, task.code);
}

// One slice's Strassen product in scratch of its own; without scratch, the kernel.
template <class M>
void __mt_vrmms(const MatmulTask& task) {
    using E = typename M::Type;
    const Flat& f = task.slice;
    int64_t elements = StrassenWorkspace(f.m, f.k, f.n);
    E* work = nullptr;
    if (static_cast<uint64_t>(elements) <= SIZE_MAX / sizeof(E)) {
        work = static_cast<E*>(std::malloc(static_cast<size_t>(elements) * sizeof(E)));
    }
    if (work == nullptr) {
        M::Kernel(f, task.code);
        return;
    }
    M::Strassen(f, task.t == 1 ? kDefaultStrassenCutoff : task.t, work, work + elements);
    std::free(work);
}

template <class M>
void _smp_vrmmc(const Flat& f, uint32_t code, int32_t lenA, int32_t /*lenB*/) {
    RunThreaded(f, code, 0, static_cast<size_t>(lenA), sizeof(typename M::Type), __mt_vrmmc<M>);
}

template <class M>
void _smp_vrmms(const Flat& f, uint32_t code, int32_t lenA, int32_t /*lenB*/, int32_t t) {
    RunThreaded(f, code, t, static_cast<size_t>(lenA), sizeof(typename M::Type), __mt_vrmms<M>);
}

// Strassen of a member whose base case is its own kernel on two operands of its type.
template <class M>
void StrassenOverKernel(const Flat& f, int32_t cutoff, void* work, void* workEnd) {
    using E = typename M::Type;
    auto base = [](View<const E> a, View<const E> b, View<E> c, ptrdiff_t m, ptrdiff_t k, ptrdiff_t n, E*, E*) {
        M::Kernel(FlatOf<E>(a, b, c, m, k, n), PairCode<E, E>());
    };
    StrassenWinograd<E, decltype(base)> product(cutoff, static_cast<E*>(workEnd), base);
    product.Multiply({static_cast<const E*>(f.a), f.aRow, f.aCol}, {static_cast<const E*>(f.b), f.bRow, f.bCol},
                     {static_cast<E*>(f.c), f.cRow, f.cCol}, f.m, f.k, f.n, static_cast<E*>(work));
}

namespace matmul_detail {

inline RTDDimension Entry(const RTDArray* rtd, int32_t index) {
    RTDDimension entry;
    std::memcpy(&entry, &rtd->dims[index], sizeof entry);
    return entry;
}

}  // namespace matmul_detail

template <class M>
void DispatchMatmul(ResultRecord* result, const void* a, const void* b, int32_t cutoff, const RTDArray* aRtd,
                    const RTDArray* bRtd, int32_t hasCutoff) {
    using matmul_detail::Entry;
    using E = typename M::Type;
    const int32_t lenA = EffectiveLength(aRtd), lenB = EffectiveLength(bRtd);
    const ptrdiff_t divA = lenA > 0 ? lenA : 1, divB = lenB > 0 ? lenB : 1, lenC = sizeof(E);
    Flat f{};
    f.a = a;
    f.b = b;
    f.c = reinterpret_cast<void*>(result->base_ptr);
    RTDDimension a0 = Entry(aRtd, 0);
    f.k = a0.extent;
    f.aCol = a0.multiplier / divA;
    if (aRtd->rank == 2) {
        RTDDimension a1 = Entry(aRtd, 1);
        f.m = a1.extent;
        f.aRow = a1.multiplier / divA;
    } else {
        f.m = 1;
    }
    RTDDimension b0 = Entry(bRtd, 0);
    if (bRtd->rank == 2) {
        f.n = b0.extent;
        f.bRow = Entry(bRtd, 1).multiplier / divB;
        f.bCol = b0.multiplier / divB;
    } else {
        f.n = 1;
        f.bRow = b0.multiplier / divB;
    }
    const RTDArray* cRtd = ResultRTD(result);
    RTDDimension c0 = Entry(cRtd, 0);
    if (cRtd->rank == 2) {
        f.cRow = Entry(cRtd, 1).multiplier / lenC;
        f.cCol = c0.multiplier / lenC;
    } else if (aRtd->rank == 1) {
        f.cCol = c0.multiplier / lenC;
    } else {
        f.cRow = c0.multiplier / lenC;
    }
    if (f.m <= 0 || f.n <= 0) return;
    if (f.k <= 0) {
        // A vector result has a zero stride on one side: it still gets every element.
        ptrdiff_t row = f.cRow != 0 ? f.cRow : 1, column = f.cCol != 0 ? f.cCol : 1;
        for (ptrdiff_t j = 0; j < f.n; ++j) {
            for (ptrdiff_t i = 0; i < f.m; ++i) std::memset(static_cast<E*>(f.c) + i * row + j * column, 0, sizeof(E));
        }
        return;
    }
    const uint32_t code = OperandCode(aRtd, lenA) << 16 | OperandCode(bRtd, lenB);
    const ptrdiff_t s = f.m + f.n + f.k;
    const int32_t t = (hasCutoff & 1) ? cutoff : 0;
    if constexpr (!M::kLogical) {
        if (s >= kStrassenThreshold && t > 0 && aRtd->header.data_type == bRtd->header.data_type && lenA == lenB) {
            _smp_vrmms<M>(f, code, lenA, lenB, t);
            return;
        }
    }
    if (static_cast<float>(s) > kThreadedThreshold) {
        _smp_vrmmc<M>(f, code, lenA, lenB);
    } else {
        M::Kernel(f, code);
    }
}

inline Flat FlatArguments(const void* a, int32_t aRow, int32_t aCol, const void* b, int32_t bRow, int32_t bCol,
                          void* c, int32_t cRow, int32_t cCol, int32_t m, int32_t k, int32_t n) {
    return {a, aRow, aCol, b, bRow, bCol, c, cRow, cCol, m, k, n};
}

#define VRN_MATMUL_FLAT_PARAMETERS                                                                             \
    const void *a, int32_t aRow, int32_t aCol, const void *b, int32_t bRow, int32_t bCol, void *c, int32_t cRow, \
        int32_t cCol, int32_t m, int32_t k, int32_t n
#define VRN_MATMUL_FLAT_ARGUMENTS FlatArguments(a, aRow, aCol, b, bRow, bCol, c, cRow, cCol, m, k, n)

// The dispatcher and the conventional kernel of a member, both exported.
#define VRN_MATMUL_MEMBER(name, Member)                                                                         \
    VRN_EXPORT void _vrmm##name(ResultRecord* result, const void* a, const void* b, int32_t cutoff,            \
                                const RTDArray* aRtd, const RTDArray* bRtd, int32_t hasCutoff) {               \
        DispatchMatmul<Member>(result, a, b, cutoff, aRtd, bRtd, hasCutoff);                                   \
    }                                                                                                          \
    VRN_EXPORT void _vrmm##name##c(VRN_MATMUL_FLAT_PARAMETERS, uint32_t code) {                                \
        Member::Kernel(VRN_MATMUL_FLAT_ARGUMENTS, code);                                                       \
    }

// The Strassen member, exported for real and complex results only.
#define VRN_MATMUL_STRASSEN(name, Member, visibility)                                                           \
    visibility void _vrmm##name##s(VRN_MATMUL_FLAT_PARAMETERS, int32_t cutoff, void* work, void* workEnd) {    \
        Member::Strassen(VRN_MATMUL_FLAT_ARGUMENTS, cutoff, work, workEnd);                                    \
    }

// An integer or real member: its kernel takes its own type with each of `Other`, in
// either order; its Strassen base case is that kernel.
template <typename C, typename... Other>
struct NumericMember {
    using Type = C;
    static constexpr bool kLogical = false;
    static inline BlockParameters params;
    static void Kernel(const Flat& f, uint32_t code) { RunConventional<C, Other...>(f, code, params); }
    static void Strassen(const Flat& f, int32_t cutoff, void* work, void* workEnd) {
        StrassenOverKernel<NumericMember>(f, cutoff, work, workEnd);
    }
};
