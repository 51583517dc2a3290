// MATMUL of logical results. One kernel takes any pair of logical kinds: it reads the
// least significant byte of each element at the lengths the operand code gives.
#include "intrinsics/matmul_member.h"

namespace {

template <typename C>
struct LogicalMember {
    using Type = C;
    static constexpr bool kLogical = true;
    static inline BlockParameters params;

    // Every element is the OR over p of A(i, p) AND B(p, j), two terms a step, and stops
    // at the first step that sets bit 0. A later K block starts from the stored value,
    // so an element already true is not scanned again.
    static void Kernel(const Flat& f, uint32_t code) {
        const int32_t lenA = code >> 16 & 0xFF, lenB = code & 0xFF;
        if (lenA == 0 || lenB == 0) return;
        if (params.line.load(std::memory_order_acquire) == 0) _mat_cache(&params, lenA, 6);
        const auto* a = static_cast<const unsigned char*>(f.a);
        const auto* b = static_cast<const unsigned char*>(f.b);
        const ptrdiff_t block = params.square;
        for (ptrdiff_t i0 = 0; i0 < f.m; i0 += block) {
            ptrdiff_t i1 = std::min(f.m, i0 + block);
            for (ptrdiff_t p0 = 0; p0 < f.k; p0 += block) {
                ptrdiff_t p1 = std::min(f.k, p0 + block);
                for (ptrdiff_t j0 = 0; j0 < f.n; j0 += block) {
                    ptrdiff_t j1 = std::min(f.n, j0 + block);
                    for (ptrdiff_t j = j0; j < j1; ++j) {
                        for (ptrdiff_t i = i0; i < i1; ++i) {
                            C* out = static_cast<C*>(f.c) + i * f.cRow + j * f.cCol;
                            unsigned char sum = 0;
                            if (p0 != 0) sum = TruthByte(reinterpret_cast<const unsigned char*>(out), static_cast<int32_t>(sizeof(C)));
                            auto term = [&](ptrdiff_t p) {
                                return static_cast<unsigned char>(TruthByte(a + (i * f.aRow + p * f.aCol) * lenA, lenA) &
                                                                  TruthByte(b + (p * f.bRow + j * f.bCol) * lenB, lenB));
                            };
                            for (ptrdiff_t p = p0; p < p1 && !(sum & 1); p += 2) {
                                sum |= term(p);
                                if (p + 1 < p1) sum |= term(p + 1);
                            }
                            *out = static_cast<C>(sum);
                        }
                    }
                }
            }
        }
    }
};

}  // namespace

VRN_MATMUL_MEMBER(l1, LogicalMember<int8_t>)
VRN_MATMUL_MEMBER(l2, LogicalMember<int16_t>)
VRN_MATMUL_MEMBER(l4, LogicalMember<int32_t>)
VRN_MATMUL_MEMBER(l8, LogicalMember<int64_t>)
