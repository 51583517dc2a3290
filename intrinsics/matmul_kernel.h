// The blocked conventional MATMUL kernel: C(m x n) = A(m x k) B(k x n), every stride in
// elements and signed. Blocks of rows, K and columns; A packed into the thread's buffer
// when the operands are large against the cache, B too when it is effectively transposed;
// C computed in register tiles, each element summing its K terms in ascending order.
//
// The tile is 3 rows by 2 columns of scalars. Where the machine has 32-byte vectors the
// rows of a tile are 3 vectors and the columns 4: the same sums, three times the work per
// load.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#if defined(__AVX__)
#include <immintrin.h>
#endif

#include "intrinsics/matmul_arith.h"
#include "intrinsics/matmul_cache.h"

// The operands and result of one product, as the flat interface gives them.
struct Flat {
    const void* a;
    ptrdiff_t aRow, aCol;
    const void* b;
    ptrdiff_t bRow, bCol;
    void* c;
    ptrdiff_t cRow, cCol;
    ptrdiff_t m, k, n;
};

// Lanes<Acc>: what a tile row group holds. One scalar unless the host has vectors.
template <typename Acc, typename = void>
struct Lanes {
    using V = Acc;
    static constexpr int kCount = 1;
    static constexpr int kColumns = 2;
    static V Broadcast(const Acc& x) { return x; }
    static V BroadcastLoad(const Acc* p) { return *p; }
    static V Load(const Acc* p) { return *p; }
    static void Store(Acc* p, const V& v) { *p = v; }
};

#if defined(__AVX__)
// Floating-point lanes need the fused multiply-add instruction: an unfused one would
// round each product.
template <typename Acc>
constexpr bool kVectorLanes = std::is_integral_v<Acc>
#if defined(__FMA__)
                              || std::is_same_v<Acc, float> || std::is_same_v<Acc, double>
#endif
    ;

template <typename Acc>
struct Lanes<Acc, std::enable_if_t<kVectorLanes<Acc>>> {
    typedef Acc V __attribute__((vector_size(32)));
    static constexpr int kCount = 32 / sizeof(Acc);
    static constexpr int kColumns = 4;
    // Lane by lane: V{} + x would also turn -0 into +0.
    static V Broadcast(Acc x) {
        V v;
        for (int l = 0; l < kCount; ++l) v[l] = x;
        return v;
    }
    // One load that fills every lane: a lane-by-lane broadcast of a loaded value costs a
    // shuffle, and shuffles compete with the multiply-adds for the same pipes.
    static V BroadcastLoad(const Acc* p) {
        if constexpr (std::is_same_v<Acc, double>) return _mm256_set1_pd(*p);
        else if constexpr (std::is_same_v<Acc, float>) return _mm256_set1_ps(*p);
        else return Broadcast(*p);
    }
    static V Load(const Acc* p) {
        V v;
        std::memcpy(&v, p, sizeof v);
        return v;
    }
    static void Store(Acc* p, const V& v) { std::memcpy(p, &v, sizeof v); }
    static V MulAdd(const V& a, const V& b, const V& s) {
#if defined(__FMA__)
        if constexpr (std::is_same_v<Acc, double>) return _mm256_fmadd_pd(a, b, s);
        if constexpr (std::is_same_v<Acc, float>) return _mm256_fmadd_ps(a, b, s);
#endif
        return a * b + s;  // integers, which wrap
    }
};
#endif

template <typename C, typename TA, typename TB>
class ConventionalKernel {
public:
    using Math = Arith<C>;
    using Acc = typename Math::Acc;
    using L = Lanes<Acc>;
    using V = typename L::V;
    static constexpr int kGroups = 3;                     // row groups of a tile
    static constexpr int kRows = kGroups * L::kCount;     // rows of a tile
    static constexpr int kColumns = L::kColumns;

    static void Run(const Flat& f, BlockParameters& params) {
        if (params.line.load(std::memory_order_acquire) == 0) _mat_cache(&params, sizeof(TA), TileMultiple());
        ConventionalKernel kernel(f, params);
        kernel.Blocks();
    }

    // The block edge is a whole number of tiles both ways.
    static constexpr int32_t TileMultiple() {
        int32_t a = kRows, b = kColumns;
        while (b != 0) {
            int32_t t = a % b;
            a = b;
            b = t;
        }
        return kRows / a * kColumns;
    }

private:
    ConventionalKernel(const Flat& f, const BlockParameters& params)
        : f_(f),
          a_(static_cast<const TA*>(f.a)),
          b_(static_cast<const TB*>(f.b)),
          c_(static_cast<C*>(f.c)),
          params_(params) {}

    // Where A's block lies: packed in panels of kRows rows, (i, p) at p * kRows + i within
    // its panel, or in place.
    struct PackedA {
        const Acc* base;
        ptrdiff_t kc;
        V Load(ptrdiff_t row, int group, ptrdiff_t p) const {
            return L::Load(base + (row / kRows) * kRows * kc + p * kRows + group * L::kCount);
        }
    };
    struct StridedA {
        const TA* base;  // element (0, 0) of the block
        ptrdiff_t aRow, aCol, rows;
        V Load(ptrdiff_t row, int group, ptrdiff_t p) const {
            // Rows past the block's last repeat it; their sums are not stored.
            auto element = [&](int lane) {
                ptrdiff_t r = std::min<ptrdiff_t>(row + group * L::kCount + lane, rows - 1);
                return Math::From(base[r * aRow + p * aCol]);
            };
            if constexpr (L::kCount == 1) {
                return element(0);
            } else {
                V v;
                for (int l = 0; l < L::kCount; ++l) v[l] = element(l);
                return v;
            }
        }
    };
    // B's block: (p, j) at p * pStride + j * jStride from its (0, 0).
    struct BlockB {
        const TB* base;
        ptrdiff_t pStride, jStride;
    };

    void Blocks() {
        const ptrdiff_t m = f_.m, k = f_.k, n = f_.n;
        Acc* buffer = static_cast<Acc*>(_vracache());
        ptrdiff_t mb = params_.square, kb = params_.square, nb = params_.square;
        bool packA = false, packB = false;
        TB* bufferB = nullptr;
        const ptrdiff_t lenA = sizeof(Acc), lenB = sizeof(TB);  // A is packed converted
        if (buffer != nullptr) {
            ptrdiff_t footprint = (Abs(f_.cRow) + Abs(f_.aRow)) * m + (Abs(f_.bRow) + Abs(f_.aCol)) * k +
                                  (Abs(f_.bCol) + Abs(f_.cCol)) * n;
            if (4 * static_cast<ptrdiff_t>(params_.size) <= footprint * static_cast<ptrdiff_t>(sizeof(TA))) {
                packA = true;
                kb = params_.kblock;
                nb = n;
                mb = std::max<ptrdiff_t>(3 * params_.line / lenA, 1);
                if (Abs(f_.bCol) < Abs(f_.bRow) && Abs(f_.bRow) * lenB > 2048) {
                    ptrdiff_t packed = (kb * RoundUp(mb, kRows) * lenA + 7) & ~ptrdiff_t{7};
                    ptrdiff_t columns = (params_.scratch - packed) / (kb * lenB);
                    if (columns > 0) {
                        packB = true;
                        nb = columns;
                        bufferB = reinterpret_cast<TB*>(reinterpret_cast<char*>(buffer) + packed);
                    }
                }
            }
        }
        auto rowBlock = [&](ptrdiff_t i0, ptrdiff_t p0, ptrdiff_t columns, ptrdiff_t columnsEnd) {
            ptrdiff_t mc = std::min(mb, m - i0);
            ptrdiff_t kc = std::min(kb, k - p0);
            const TA* aBlock = a_ + i0 * f_.aRow + p0 * f_.aCol;
            if (packA) PackA(aBlock, mc, kc, buffer);
            for (ptrdiff_t j0 = columns; j0 < columnsEnd; j0 += nb) {
                ptrdiff_t nc = std::min(nb, columnsEnd - j0);
                const TB* bBlock = b_ + p0 * f_.bRow + j0 * f_.bCol;
                BlockB bView{bBlock, f_.bRow, f_.bCol};
                if (packB) {
                    PackB(bBlock, kc, nc, kb, bufferB);
                    bView = {bufferB, 1, kb};
                }
                C* cBlock = c_ + i0 * f_.cRow + j0 * f_.cCol;
                if (packA) {
                    MultiplyBlock(PackedA{buffer, kc}, bView, cBlock, mc, kc, nc, p0 == 0);
                } else {
                    MultiplyBlock(StridedA{aBlock, f_.aRow, f_.aCol, mc}, bView, cBlock, mc, kc, nc, p0 == 0);
                }
            }
        };
        if (L::kCount > 1 && packA) {
            // With vector tiles B is what streams: every row block reads all of it, and
            // from memory once B outgrows the last cache. So K blocks go outermost and
            // columns are taken in sweeps whose K block stays in a second-level cache
            // (16 data caches' worth), read from there by every row block. Only the
            // visiting order changes: each element still sums its K terms in order.
            ptrdiff_t sweep = std::max<ptrdiff_t>(16 * static_cast<ptrdiff_t>(params_.size) / (kb * lenB), 1);
            // With B in panels, A's row block grows to as many tiles as the scratch buffer
            // holds: each panel then serves several tiles while it is in the first cache.
            ptrdiff_t panelRows = std::max<ptrdiff_t>(params_.scratch / (kb * lenA) / kRows * kRows, mb);
            if (!packB && SweepsOfPanels(kb, RoundUp(std::min(sweep, n), kColumns), panelRows, buffer)) return;
            sweep = RoundUp(sweep, std::min(nb, n));
            for (ptrdiff_t p0 = 0; p0 < k; p0 += kb) {
                for (ptrdiff_t j0 = 0; j0 < n; j0 += sweep) {
                    for (ptrdiff_t i0 = 0; i0 < m; i0 += mb) rowBlock(i0, p0, j0, std::min(n, j0 + sweep));
                }
            }
            return;
        }
        for (ptrdiff_t i0 = 0; i0 < m; i0 += mb) {
            for (ptrdiff_t p0 = 0; p0 < k; p0 += kb) rowBlock(i0, p0, 0, n);
        }
    }

    // The vector path with B packed too: each sweep's K block of B is copied once into
    // panels of kColumns columns, (p, j) at p * kColumns + j within its panel, so that a
    // tile reads one stream of B rather than kColumns, and every row block reuses the
    // copy. false, having done nothing, when the panels cannot be allocated.
    bool SweepsOfPanels(ptrdiff_t kb, ptrdiff_t sweep, ptrdiff_t mb, Acc* bufferA) {
        const ptrdiff_t m = f_.m, k = f_.k, n = f_.n;
        auto* panels = static_cast<Acc*>(std::malloc(static_cast<size_t>(kb * sweep) * sizeof(Acc)));
        if (panels == nullptr) return false;
        for (ptrdiff_t p0 = 0; p0 < k; p0 += kb) {
            ptrdiff_t kc = std::min(kb, k - p0);
            for (ptrdiff_t j0 = 0; j0 < n; j0 += sweep) {
                ptrdiff_t nc = std::min(sweep, n - j0);
                PackPanels(b_ + p0 * f_.bRow + j0 * f_.bCol, kc, nc, panels);
                for (ptrdiff_t i0 = 0; i0 < m; i0 += mb) {
                    ptrdiff_t mc = std::min(mb, m - i0);
                    PackA(a_ + i0 * f_.aRow + p0 * f_.aCol, mc, kc, bufferA);
                    C* cBlock = c_ + i0 * f_.cRow + j0 * f_.cCol;
                    for (ptrdiff_t j = 0; j < nc; j += kColumns) {
                        int columns = static_cast<int>(std::min<ptrdiff_t>(kColumns, nc - j));
                        const Acc* panel = panels + j * kc;
                        const Acc* bColumn[kColumns];
                        for (int jj = 0; jj < kColumns; ++jj) bColumn[jj] = panel + jj;
                        for (ptrdiff_t i = 0; i < mc; i += kRows) {
                            int rows = static_cast<int>(std::min<ptrdiff_t>(kRows, mc - i));
                            Tile(PackedA{bufferA, kc}, i, bColumn, kColumns, cBlock + i * f_.cRow + j * f_.cCol, rows,
                                 columns, kc, p0 == 0);
                        }
                    }
                }
            }
        }
        std::free(panels);
        return true;
    }

    // Columns past the block's last repeat it, as MultiplyBlock's would; their sums are
    // not stored.
    void PackPanels(const TB* block, ptrdiff_t kc, ptrdiff_t nc, Acc* out) const {
        for (ptrdiff_t j0 = 0; j0 < nc; j0 += kColumns) {
            Acc* panel = out + j0 * kc;
            for (int jj = 0; jj < kColumns; ++jj) {
                const TB* column = block + std::min<ptrdiff_t>(j0 + jj, nc - 1) * f_.bCol;
                for (ptrdiff_t p = 0; p < kc; ++p) panel[p * kColumns + jj] = Math::From(column[p * f_.bRow]);
            }
        }
    }

    // Panels of kRows rows, K contiguous within each row group; rows past the block are
    // zero.
    void PackA(const TA* block, ptrdiff_t mc, ptrdiff_t kc, Acc* out) const {
        for (ptrdiff_t panel = 0; panel < mc; panel += kRows) {
            Acc* dest = out + panel * kc;
            ptrdiff_t rows = std::min<ptrdiff_t>(kRows, mc - panel);
            const TA* source = block + panel * f_.aRow;
            if (Abs(f_.aRow) <= Abs(f_.aCol)) {
                for (ptrdiff_t p = 0; p < kc; ++p) {
                    for (ptrdiff_t i = 0; i < rows; ++i) dest[p * kRows + i] = Math::From(source[i * f_.aRow + p * f_.aCol]);
                    for (ptrdiff_t i = rows; i < kRows; ++i) dest[p * kRows + i] = Math::Zero();
                }
            } else {
                for (ptrdiff_t i = 0; i < kRows; ++i) {
                    for (ptrdiff_t p = 0; p < kc; ++p) {
                        dest[p * kRows + i] = i < rows ? Math::From(source[i * f_.aRow + p * f_.aCol]) : Math::Zero();
                    }
                }
            }
        }
    }

    // (p, j) at j * kb + p.
    void PackB(const TB* block, ptrdiff_t kc, ptrdiff_t nc, ptrdiff_t kb, TB* out) const {
        for (ptrdiff_t p = 0; p < kc; ++p) {
            const TB* row = block + p * f_.bRow;
            for (ptrdiff_t j = 0; j < nc; ++j) out[j * kb + p] = row[j * f_.bCol];
        }
    }

    template <typename AView>
    void MultiplyBlock(const AView& a, const BlockB& b, C* c, ptrdiff_t mc, ptrdiff_t kc, ptrdiff_t nc,
                       bool first) const {
        for (ptrdiff_t j = 0; j < nc; j += kColumns) {
            int columns = static_cast<int>(std::min<ptrdiff_t>(kColumns, nc - j));
            const TB* bColumn[kColumns];
            // Columns past the block repeat its last one; their sums are not stored.
            for (int jj = 0; jj < kColumns; ++jj) bColumn[jj] = b.base + (j + std::min(jj, columns - 1)) * b.jStride;
            for (ptrdiff_t i = 0; i < mc; i += kRows) {
                int rows = static_cast<int>(std::min<ptrdiff_t>(kRows, mc - i));
                Tile(a, i, bColumn, b.pStride, c + i * f_.cRow + j * f_.cCol, rows, columns, kc, first);
            }
        }
    }

    // One register tile over the block's K range.
    template <typename AView, typename BElement>
    void Tile(const AView& a, ptrdiff_t row, const BElement* const (&bColumn)[kColumns], ptrdiff_t pStride, C* c,
              int rows, int columns, ptrdiff_t kc, bool first) const {
        V acc[kColumns][kGroups];
        alignas(64) Acc spill[kColumns][kRows];
        // A whole tile of a result whose columns are contiguous moves by vectors.
        const bool direct = std::is_same_v<C, Acc> && rows == kRows && columns == kColumns && f_.cRow == 1;
        if (direct) {
            if constexpr (std::is_same_v<C, Acc>) {
                for (int jj = 0; jj < kColumns; ++jj) {
                    for (int g = 0; g < kGroups; ++g) {
                        acc[jj][g] = first ? L::Broadcast(Math::Zero()) : L::Load(c + jj * f_.cCol + g * L::kCount);
                    }
                }
            }
        } else if (first) {
            for (auto& column : acc) {
                for (auto& v : column) v = L::Broadcast(Math::Zero());
            }
        } else {
            for (int jj = 0; jj < kColumns; ++jj) {
                for (int ii = 0; ii < kRows; ++ii) {
                    spill[jj][ii] = ii < rows && jj < columns ? Math::From(c[ii * f_.cRow + jj * f_.cCol]) : Math::Zero();
                }
                for (int g = 0; g < kGroups; ++g) acc[jj][g] = L::Load(&spill[jj][g * L::kCount]);
            }
        }
        for (ptrdiff_t p = 0; p < kc; ++p) {
            V av[kGroups];
            for (int g = 0; g < kGroups; ++g) av[g] = a.Load(row, g, p);
            for (int jj = 0; jj < kColumns; ++jj) {
                V bv;
                if constexpr (std::is_same_v<BElement, Acc>) bv = L::BroadcastLoad(&bColumn[jj][p * pStride]);
                else bv = L::Broadcast(Math::From(bColumn[jj][p * pStride]));
                for (int g = 0; g < kGroups; ++g) acc[jj][g] = MulAdd(av[g], bv, acc[jj][g]);
            }
        }
        if (direct) {
            if constexpr (std::is_same_v<C, Acc>) {
                for (int jj = 0; jj < kColumns; ++jj) {
                    for (int g = 0; g < kGroups; ++g) L::Store(c + jj * f_.cCol + g * L::kCount, acc[jj][g]);
                }
            }
            return;
        }
        for (int jj = 0; jj < columns; ++jj) {
            for (int g = 0; g < kGroups; ++g) L::Store(&spill[jj][g * L::kCount], acc[jj][g]);
            for (int ii = 0; ii < rows; ++ii) c[ii * f_.cRow + jj * f_.cCol] = Math::Store(spill[jj][ii]);
        }
    }

    static V MulAdd(const V& a, const V& b, const V& s) {
        if constexpr (L::kCount == 1) return Math::MulAdd(a, b, s);
        else return L::MulAdd(a, b, s);
    }

    static ptrdiff_t Abs(ptrdiff_t x) { return x < 0 ? -x : x; }
    static ptrdiff_t RoundUp(ptrdiff_t x, ptrdiff_t to) { return (x + to - 1) / to * to; }

    const Flat& f_;
    const TA* a_;
    const TB* b_;
    C* c_;
    const BlockParameters& params_;
};

// Runs the kernel for the operand pair the code names, among the result type's list:
// (C, C) and, for each Other, (C, Other) and (Other, C). An unlisted pair does nothing.
template <typename C, typename... Other>
void RunConventional(const Flat& f, uint32_t code, BlockParameters& params) {
    if (code == PairCode<C, C>()) {
        ConventionalKernel<C, C, C>::Run(f, params);
        return;
    }
    (void)((code == PairCode<C, Other>() ? (ConventionalKernel<C, C, Other>::Run(f, params), true)
            : code == PairCode<Other, C>() ? (ConventionalKernel<C, Other, C>::Run(f, params), true)
                                           : false) ||
           ...);
}
