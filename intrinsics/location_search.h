// The frame of MAXLOC, MINLOC and FINDLOC: which elements a search sees, in which order, and
// where its answers go. "First" and "last" are defined in array element order, so a search
// sees its elements in that order whatever the strides: dimension 1 innermost, never
// exchanged for a smaller stride as the reductions do. Positions count from 1 whatever the
// lower bounds, and 0 means that no element was found.
//
// A Search is a small value: Consider(element, position) takes the next element,
// Run(first, count, step, position) a run of `count` elements `step` bytes apart whose
// first stands at `position`, and RunMasked the same with a mask's run beside it; each
// returns false once the answer can no longer change. Location() gives the answer.
// Searches along DIM keep one Search per result element: in a register when DIM is 1,
// else side by side for the whole of dimension 1, so that the source is still read in
// the order it lies in memory.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "intrinsics/array_walk.h"
#include "intrinsics/frame.h"
#include "vrn90.h"

struct LocationArguments {
    ResultRecord* record;
    const void* source;
    const RTDArray* sourceRtd;
    int32_t dim;
    bool hasDim;
    const void* mask;
    const RTDArray* maskRtd;
    bool hasMask;
};

// A subscript at the result's kind: 1, 2, 4 or 8 bytes.
inline void StoreLocation(unsigned char* at, int32_t kind, int64_t value) {
    switch (kind) {
    case 1: Store(at, 0, static_cast<int8_t>(value)); break;
    case 2: Store(at, 0, static_cast<int16_t>(value)); break;
    case 8: Store(at, 0, value); break;
    default: Store(at, 0, static_cast<int32_t>(value)); break;
    }
}

// Loops over the given Fortran dimensions (from 0) of source and mask in that order, first
// innermost, with the result strides given per loop.
inline Loops LoopsOver(const Operand& source, const Operand* mask, const int32_t* dims, int32_t count,
                       const int32_t* resultStrides) {
    Loops loops;
    loops.rank = count;
    for (int32_t i = 0; i < kMaxRank; ++i) {
        loops.extent[i] = 1;
        loops.source[i] = loops.mask[i] = loops.result[i] = 0;
    }
    for (int32_t i = 0; i < count; ++i) {
        loops.extent[i] = source.extent[dims[i]];
        loops.source[i] = source.stride[dims[i]];
        loops.mask[i] = mask != nullptr ? mask->stride[dims[i]] : 0;
        loops.result[i] = resultStrides != nullptr ? resultStrides[i] : 0;
    }
    return loops;
}

// The result's kind as compiled code preset it; the default integer when it set none.
inline int32_t LocationKind(const RTDArray* rtd) {
    int32_t kind = rtd->element_len;
    return kind == 1 || kind == 2 || kind == 4 || kind == 8 ? kind : 4;
}

template <typename Search>
void RunLocationSearch(const LocationArguments& a, const Search& prototype) {
    RTDArray* resultRtd = ResultRTD(a.record);
    const int32_t sourceRank = a.sourceRtd->header.dscr_type == RTD_ARRAY ? a.sourceRtd->rank : 0;
    const bool withDim = a.hasDim && sourceRank >= 1;
    auto build = [&](RTDArray* rtd) {
        rtd->element_len = LocationKind(rtd);
        return withDim ? _vrhaszg(rtd, a.sourceRtd, a.dim, a.maskRtd, 1) : _vrlaszg(rtd, a.sourceRtd);
    };
    if (!PrepareResult(a.record, build)) return;
    if (withDim && (a.dim < 1 || a.dim > sourceRank)) {
        _vrmerr2(&a.dim, a.maskRtd);  // the result is undefined, and nothing is reported
        return;
    }
    auto* result = reinterpret_cast<unsigned char*>(a.record->base_ptr);
    const int32_t kind = LocationKind(resultRtd);
    Operand out = Describe(result, resultRtd);
    Operand source = Describe(a.source, a.sourceRtd);
    const int32_t length = source.length;

    Operand mask;
    const Operand* arrayMask = nullptr;
    bool nothingConsidered = false;
    if (a.hasMask) {
        mask = Describe(a.mask, a.maskRtd);
        // A scalar mask: true is no mask; false leaves no element to consider.
        if (mask.rank == 0) nothingConsidered = !IsTrue(mask.data, mask.length);
        else arrayMask = &mask;
    }

    if (!withDim || sourceRank == 1) {
        // One search over the whole array; its linear position becomes the subscripts.
        Search search = prototype;
        if (!nothingConsidered && arrayMask == nullptr) {
            // Runs along dimension 1, one for each combination of the others.
            int32_t dims[kMaxRank];
            for (int32_t d = 0; d < kMaxRank; ++d) dims[d] = d + 1;
            Loops rows = LoopsOver(source, nullptr, dims, source.rank > 0 ? source.rank - 1 : 0, nullptr);
            const int64_t extent = source.extent[0];
            const int64_t step = int64_t{source.stride[0]} * length;
            int64_t position = 1;
            Walk(rows, [&](int64_t s, int64_t, int64_t) {
                bool more = search.Run(source.data + s * length, extent, step, position);
                position += extent;
                return more;
            });
        } else if (!nothingConsidered) {
            // The same runs, each with the run of the mask beside it.
            int32_t dims[kMaxRank];
            for (int32_t d = 0; d < kMaxRank; ++d) dims[d] = d + 1;
            Loops rows = LoopsOver(source, arrayMask, dims, source.rank > 0 ? source.rank - 1 : 0, nullptr);
            const int64_t extent = source.extent[0];
            const int64_t step = int64_t{source.stride[0]} * length;
            const int64_t maskStep = int64_t{mask.stride[0]} * mask.length;
            int64_t position = 1;
            Walk(rows, [&](int64_t s, int64_t k, int64_t) {
                bool more = search.RunMasked(source.data + s * length, extent, step, mask.data + k * mask.length,
                                             maskStep, mask.length, position);
                position += extent;
                return more;
            });
        }
        int64_t linear = nothingConsidered ? 0 : search.Location();
        if (withDim) {
            StoreLocation(result, kind, linear);
            return;
        }
        // Subscripts from the position in array element order, all 0 when none was found.
        int64_t rest = linear - 1;
        for (int32_t d = 0; d < source.rank; ++d) {
            int64_t subscript = 0;
            if (linear != 0) {
                subscript = rest % source.extent[d] + 1;
                rest /= source.extent[d];
            }
            StoreLocation(result + static_cast<int64_t>(d) * out.stride[0] * kind, kind, subscript);
        }
        return;
    }

    // DIM on rank 2 and above. The other dimensions, in order, select the result element.
    const int32_t axis = a.dim - 1;
    int32_t others[kMaxRank];
    int32_t otherResultStride[kMaxRank];
    int32_t otherCount = 0;
    for (int32_t d = 0, r = 0; d < source.rank; ++d) {
        if (d == axis) continue;
        others[otherCount] = d;
        otherResultStride[otherCount++] = out.stride[r++];
    }
    const int64_t axisExtent = source.extent[axis];
    const int64_t axisStride = source.stride[axis];
    const int64_t axisMaskStride = arrayMask != nullptr ? mask.stride[axis] : 0;

    if (axis == 0) {
        // Each result element is one search along dimension 1, in a register.
        Loops loops = LoopsOver(source, arrayMask, others, otherCount, otherResultStride);
        const int64_t step = axisStride * length;
        Walk(loops, [&](int64_t s, int64_t k, int64_t r) {
            Search search = prototype;
            if (arrayMask == nullptr && !nothingConsidered) {
                search.Run(source.data + s * length, axisExtent, step, 1);
            } else if (!nothingConsidered) {
                search.RunMasked(source.data + s * length, axisExtent, step, mask.data + k * mask.length,
                                 axisMaskStride * mask.length, mask.length, 1);
            }
            StoreLocation(result + r * kind, kind, nothingConsidered ? 0 : search.Location());
        });
        return;
    }

    // DIM above 1: dimension 1 stays innermost, and the searches of all of it (or of a block
    // of it, when that much memory cannot be had) lie side by side while the walk goes along
    // DIM, so that the source is read in the order it lies in memory.
    const int64_t innerExtent = source.extent[0];
    constexpr int64_t kStackBlock = 256;
    Search onStack[kStackBlock];
    Search* searches = onStack;
    int64_t block = kStackBlock;
    if (innerExtent > kStackBlock) {
        auto* room = static_cast<Search*>(std::malloc(static_cast<size_t>(innerExtent) * sizeof(Search)));
        if (room != nullptr) {
            std::uninitialized_fill_n(room, innerExtent, prototype);
            searches = room;
            block = innerExtent;
        }
    }
    struct Release {
        void* room;
        ~Release() { std::free(room); }
    } release{searches != onStack ? searches : nullptr};
    const int64_t innerStep = int64_t{source.stride[0]} * length;
    const int64_t innerMaskStride = arrayMask != nullptr ? mask.stride[0] : 0;
    const int64_t innerResultStride = otherResultStride[0];
    Loops loops = LoopsOver(source, arrayMask, others + 1, otherCount - 1, otherResultStride + 1);
    Walk(loops, [&](int64_t s, int64_t k, int64_t r) {
        for (int64_t start = 0; start < innerExtent; start += block) {
            const int64_t count = innerExtent - start < block ? innerExtent - start : block;
            for (int64_t i = 0; i < count; ++i) searches[i] = prototype;
            for (int64_t j = 0; j < axisExtent && !nothingConsidered; ++j) {
                const unsigned char* row = source.data + (s + j * axisStride) * length + start * innerStep;
                if (arrayMask == nullptr) {
                    // Locals and a moving pointer: the stores into the searches could alias
                    // anything the loop would otherwise read back from memory.
                    const int64_t step = innerStep;
                    const int64_t position = j + 1;
                    const unsigned char* element = row;
                    for (Search* search = searches; search != searches + count; ++search, element += step) {
                        search->Consider(element, position);
                    }
                } else {
                    const int64_t maskRow = k + start * innerMaskStride + j * axisMaskStride;
                    for (int64_t i = 0; i < count; ++i) {
                        if (MaskTrue(mask, maskRow + i * innerMaskStride)) searches[i].Consider(row + i * innerStep, j + 1);
                    }
                }
            }
            for (int64_t i = 0; i < count; ++i) {
                StoreLocation(result + (r + (start + i) * innerResultStride) * kind, kind,
                              nothingConsidered ? 0 : searches[i].Location());
            }
        }
    });
}
