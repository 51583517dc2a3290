// MATMUL of complex results. Their Strassen recursion ends in three real products
// (`_vrmmx83` and its kin) rather than the complex kernel.
#include "intrinsics/matmul_member.h"
#include "intrinsics/matmul_real_members.h"

namespace {

template <class RealMember, typename... Other>
struct ComplexMember : NumericMember<Complex<typename RealMember::Type>, Other...> {
    using R = typename RealMember::Type;
    using E = Complex<R>;
    using Conventional = NumericMember<E, Other...>;

    static void ThreeProducts(const Flat& f, void* work, void* workEnd) {
        auto real = [](const Flat& product) { RealMember::Kernel(product, PairCode<R, R>()); };
        auto complex = [](View<const E> a, View<const E> b, View<E> c, ptrdiff_t m, ptrdiff_t k, ptrdiff_t n) {
            Conventional::Kernel(FlatOf<E>(a, b, c, m, k, n), PairCode<E, E>());
        };
        ThreeRealProducts<R>({static_cast<const E*>(f.a), f.aRow, f.aCol}, {static_cast<const E*>(f.b), f.bRow, f.bCol},
                             {static_cast<E*>(f.c), f.cRow, f.cCol}, f.m, f.k, f.n, static_cast<E*>(work),
                             static_cast<E*>(workEnd), real, complex);
    }

    static void Strassen(const Flat& f, int32_t cutoff, void* work, void* workEnd) {
        auto base = [](View<const E> a, View<const E> b, View<E> c, ptrdiff_t m, ptrdiff_t k, ptrdiff_t n, E* from,
                       E* to) { ThreeProducts(FlatOf<E>(a, b, c, m, k, n), from, to); };
        StrassenWinograd<E, decltype(base)> product(cutoff, static_cast<E*>(workEnd), base);
        product.Multiply({static_cast<const E*>(f.a), f.aRow, f.aCol}, {static_cast<const E*>(f.b), f.bRow, f.bCol},
                         {static_cast<E*>(f.c), f.cRow, f.cCol}, f.m, f.k, f.n, static_cast<E*>(work));
    }
};

using X8Member = ComplexMember<R4Member, R4, I8, I4, I2, I1>;
using X16Member = ComplexMember<R8Member, X8, R8, R4, I8, I4, I2, I1>;
using X32Member = ComplexMember<R16Member, X16, X8, R16, R8, R4, I8, I4, I2, I1>;

}  // namespace

void _vrmmx83(VRN_MATMUL_FLAT_PARAMETERS, void* work, void* workEnd) {
    X8Member::ThreeProducts(VRN_MATMUL_FLAT_ARGUMENTS, work, workEnd);
}
void _vrmmx163(VRN_MATMUL_FLAT_PARAMETERS, void* work, void* workEnd) {
    X16Member::ThreeProducts(VRN_MATMUL_FLAT_ARGUMENTS, work, workEnd);
}
void _vrmmx323(VRN_MATMUL_FLAT_PARAMETERS, void* work, void* workEnd) {
    X32Member::ThreeProducts(VRN_MATMUL_FLAT_ARGUMENTS, work, workEnd);
}

VRN_MATMUL_MEMBER(x8, X8Member)
VRN_MATMUL_MEMBER(x16, X16Member)
VRN_MATMUL_MEMBER(x32, X32Member)
VRN_MATMUL_STRASSEN(x8, X8Member, VRN_EXPORT)
VRN_MATMUL_STRASSEN(x16, X16Member, VRN_EXPORT)
VRN_MATMUL_STRASSEN(x32, X32Member, VRN_EXPORT)
