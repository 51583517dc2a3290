// NAMELIST WRITE and READ of a group of 1,000 members, 500 REAL(8) scalars and 500
// INTEGER arrays of 99 elements (50,000 values), to and from a file in the page cache, as
// compiled code issues them: ns per value. bench/peers/namelist.f90 does the same.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/open_unit.h"
#include "vrn90.h"

namespace {

constexpr uint32_t kWrite = VRN_STATEMENT_FLAGS(VRN_KIND_NAMELIST, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
constexpr uint32_t kRead = VRN_STATEMENT_FLAGS(VRN_KIND_NAMELIST, VRN_DIRECTION_READ, VRN_ACCESS_SEQUENTIAL);
constexpr int kScalars = 500, kArrays = 500, kElements = 99;
constexpr int64_t kValues = kScalars + kArrays * kElements;

struct BigGroup {
    std::vector<double> scalars = std::vector<double>(kScalars);
    std::vector<int32_t> arrays = std::vector<int32_t>(kArrays * kElements);
    std::vector<std::string> names;
    std::vector<std::vector<unsigned char>> descriptors;
    std::vector<unsigned char> record;

    BigGroup() {
        for (int k = 0; k < kScalars; ++k) scalars[k] = (k + 0.25) * 1.5;
        for (int k = 0; k < kArrays; ++k) {
            for (int i = 0; i < kElements; ++i) arrays[k * kElements + i] = (i + 1) * (k + 1);
        }
        char name[8];
        for (int k = 0; k < kScalars; ++k) std::snprintf(name, sizeof name, "V%03d", k), names.emplace_back(name);
        for (int k = 0; k < kArrays; ++k) std::snprintf(name, sizeof name, "A%03d", k), names.emplace_back(name);
        record.assign(sizeof(VrnNamelistGroup) + (kScalars + kArrays) * sizeof(VrnNamelistMember), 0);
        auto* group = reinterpret_cast<VrnNamelistGroup*>(record.data());
        group->name = "BIG";
        group->nameLength = 3;
        group->count = kScalars + kArrays;
        for (int k = 0; k < kScalars; ++k) {
            group->members[k] = VrnNamelistMember{names[k].c_str(), &scalars[k], nullptr, nullptr, 4, 4, 8, 0};
        }
        for (int k = 0; k < kArrays; ++k) {
            std::vector<unsigned char> storage(sizeof(RTDArray) + sizeof(RTDDimension));
            auto* rtd = reinterpret_cast<RTDArray*>(storage.data());
            rtd->base_ptr = reinterpret_cast<uintptr_t>(&arrays[k * kElements]);
            rtd->header = RTDHeader{RTD_ARRAY, RTD_TYPE_INTEGER, 0,
                                    static_cast<uint8_t>(sizeof(void*) == 8 ? RTD_VERSION_64BIT | 1 : 1)};
            rtd->element_len = 4;
            rtd->rank = 1;
            rtd->dims[0] = RTDDimension{1, kElements, 4};
            descriptors.push_back(std::move(storage));
            group->members[kScalars + k] =
                VrnNamelistMember{names[kScalars + k].c_str(), nullptr, descriptors.back().data(), nullptr, 4, 0, 4, 0};
        }
    }
    VrnNamelistGroup* group() { return reinterpret_cast<VrnNamelistGroup*>(record.data()); }
};

void Statement(int32_t unit, uint32_t flags, VrnNamelistGroup* group) {
    _vrnEndIO(_vrnBeginIO(&unit, flags, nullptr, 0, nullptr, 0, group));
}

void WriteGroup(benchmark::State& state) {
    BigGroup big;
    OpenUnit file("vrn_bench_namelist", true);
    for (auto _ : state) {
        _vrnIOCmd(file.unit, VRN_COMMAND_REWIND, nullptr, 0, nullptr);
        Statement(file.unit, kWrite, big.group());
    }
    state.SetItemsProcessed(state.iterations() * kValues);
}

void ReadGroup(benchmark::State& state) {
    BigGroup big;
    OpenUnit file("vrn_bench_namelist", true);
    Statement(file.unit, kWrite, big.group());
    for (auto _ : state) {
        _vrnIOCmd(file.unit, VRN_COMMAND_REWIND, nullptr, 0, nullptr);
        Statement(file.unit, kRead, big.group());
    }
    state.SetItemsProcessed(state.iterations() * kValues);
}

}  // namespace

BENCHMARK(WriteGroup)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ReadGroup)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_MAIN();
