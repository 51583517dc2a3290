// The large arrays the intrinsic benchmarks share with their gfortran peers: the same
// values on both sides, made once and before the first timed loop, and their descriptors.
#pragma once

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "vrn90.h"

constexpr int32_t kLength = 50'000'000;
constexpr int32_t kSide = 5000;  // a matrix held in the first 25,000,000 elements

// A contiguous RTD of up to two dimensions, lbound 1; no extents makes a scalar one.
struct Descriptor {
    alignas(8) unsigned char storage[sizeof(RTDArray) + 2 * sizeof(RTDDimension)] = {};
    RTDArray* rtd = reinterpret_cast<RTDArray*>(storage);

    Descriptor(std::vector<int32_t> extents, int32_t length, uint8_t type) {
        rtd->header = RTDHeader{static_cast<uint8_t>(extents.empty() ? RTD_SCALAR : RTD_ARRAY), type,
                                RTD_FLAG_IS_ALLOCATED, 2};
        rtd->element_len = length;
        rtd->rank = static_cast<int32_t>(extents.size());
        int32_t running = 1;
        for (size_t d = 0; d < extents.size(); ++d) {
            rtd->dims[rtd->rank - 1 - static_cast<int32_t>(d)] = RTDDimension{1, extents[d], running * length};
            running *= extents[d];
        }
    }
};

// sin(i) * 1000, as the peers compute it.
inline const std::vector<double>& Reals() {
    static std::vector<double> values = [] {
        std::vector<double> v(kLength);
        for (int32_t i = 0; i < kLength; ++i) v[static_cast<size_t>(i)] = std::sin(i) * 1000.0;
        return v;
    }();
    return values;
}

// (i * 7919 mod 1001) - 500.
inline const std::vector<int32_t>& Integers() {
    static std::vector<int32_t> values = [] {
        std::vector<int32_t> v(kLength);
        for (int32_t i = 0; i < kLength; ++i) {
            v[static_cast<size_t>(i)] = static_cast<int32_t>(int64_t{i} * 7919 % 1001) - 500;
        }
        return v;
    }();
    return values;
}

// LOGICAL(4), true where the real is positive: about half, in runs no longer than three.
inline const std::vector<int32_t>& HalfMask() {
    static std::vector<int32_t> mask = [] {
        std::vector<int32_t> m(kLength);
        for (int32_t i = 0; i < kLength; ++i) m[static_cast<size_t>(i)] = Reals()[static_cast<size_t>(i)] > 0;
        return m;
    }();
    return mask;
}

// Makes the arrays before the first timed loop, not inside it.
inline void PrepareArrays() {
    benchmark::DoNotOptimize(Reals().data());
    benchmark::DoNotOptimize(Integers().data());
    benchmark::DoNotOptimize(HalfMask().data());
}
