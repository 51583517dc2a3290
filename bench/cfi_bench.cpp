// C descriptors: walking a section element by element through CFI_address beside the
// stride loop a C programmer would write by hand, and the cost of converting an RTD to a
// C descriptor and back around a BIND(C) call.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "ISO_Fortran_binding.h"
#include "vrn90.h"

namespace {

// a(1:4000:2, 1:5000) of a REAL(8) array of 4000 x 5000: 10,000,000 elements, every other
// one of each column.
constexpr CFI_index_t kRows = 4000, kColumns = 5000;

struct Section {
    std::vector<double> data = std::vector<double>(kRows * kColumns);
    CFI_CDESC_T(2) whole, section;
    Section() {
        for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<double>(i % 1000);
        CFI_index_t extents[2] = {kRows, kColumns};
        CFI_establish(reinterpret_cast<CFI_cdesc_t*>(&whole), data.data(), CFI_attribute_other, CFI_type_double, 0,
                      2, extents);
        CFI_establish(reinterpret_cast<CFI_cdesc_t*>(&section), nullptr, CFI_attribute_other, CFI_type_double, 0,
                      2, nullptr);
        CFI_index_t lower[2] = {0, 0}, upper[2] = {kRows - 1, kColumns - 1}, strides[2] = {2, 1};
        CFI_section(reinterpret_cast<CFI_cdesc_t*>(&section), reinterpret_cast<CFI_cdesc_t*>(&whole), lower, upper,
                    strides);
    }
    const CFI_cdesc_t* get() const { return reinterpret_cast<const CFI_cdesc_t*>(&section); }
};

Section& TheSection() {
    static Section section;
    return section;
}

// CFI_address as the header gives it, inline, or the library's function behind it.
template <bool kInline>
void WalkThroughCFIAddress(benchmark::State& state) {
    const CFI_cdesc_t* d = TheSection().get();
    for (auto _ : state) {
        double sum = 0;
        CFI_index_t at[2];
        for (at[1] = 0; at[1] < d->dim[1].extent; ++at[1]) {
            for (at[0] = 0; at[0] < d->dim[0].extent; ++at[0]) {
                const void* element = kInline ? CFI_address(d, at) : (CFI_address)(d, at);
                sum += *static_cast<const double*>(element);
            }
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * d->dim[0].extent * d->dim[1].extent);
}
BENCHMARK(WalkThroughCFIAddress<true>)->Name("WalkThroughCFIAddress")->Unit(benchmark::kMillisecond);
BENCHMARK(WalkThroughCFIAddress<false>)->Name("WalkThroughCFIAddressFunction")->Unit(benchmark::kMillisecond);

void WalkByHandWithStrides(benchmark::State& state) {
    const CFI_cdesc_t* d = TheSection().get();
    for (auto _ : state) {
        double sum = 0;
        const char* base = static_cast<const char*>(d->base_addr);
        for (CFI_index_t j = 0; j < d->dim[1].extent; ++j) {
            const char* column = base + j * d->dim[1].sm;
            for (CFI_index_t i = 0; i < d->dim[0].extent; ++i) {
                sum += *reinterpret_cast<const double*>(column + i * d->dim[0].sm);
            }
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * d->dim[0].extent * d->dim[1].extent);
}
BENCHMARK(WalkByHandWithStrides)->Unit(benchmark::kMillisecond);

// A rank-3 section as compiled code describes it, and the descriptors it converts into.
struct Rank3 {
    alignas(8) unsigned char rtd[sizeof(RTDArray) + 3 * sizeof(RTDDimension)];
    alignas(8) unsigned char back[sizeof(RTDArray) + 3 * sizeof(RTDDimension)];
    CFI_CDESC_T(3) c;
    double data[64];
    Rank3() {
        auto* array = reinterpret_cast<RTDArray*>(rtd);
        array->base_ptr = reinterpret_cast<uintptr_t>(data);
        array->header = RTDHeader{RTD_ARRAY, RTD_TYPE_REAL, RTD_FLAG_IS_ALLOCATED,
                                  static_cast<uint8_t>(sizeof(void*) == 8 ? RTD_VERSION_64BIT | 1 : 1)};
        array->element_len = 8;
        array->rank = 3;
        RTDDimension dims[3] = {{1, 4, 128}, {0, 4, -32}, {2, 2, 16}};
        std::memcpy(array->dims, dims, sizeof dims);
        array->rel_virtual_org = -(1 * 128 + 0 * -32 + 2 * 16);
    }
};

void ConvertRank3RTDToCDescriptor(benchmark::State& state) {
    Rank3 r;
    for (auto _ : state) {
        benchmark::DoNotOptimize(__vrn_rtd_to_cfi(reinterpret_cast<CFI_cdesc_t*>(&r.c), r.rtd, CFI_attribute_pointer));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(ConvertRank3RTDToCDescriptor);

void ConvertRank3CDescriptorToRTD(benchmark::State& state) {
    Rank3 r;
    __vrn_rtd_to_cfi(reinterpret_cast<CFI_cdesc_t*>(&r.c), r.rtd, CFI_attribute_pointer);
    for (auto _ : state) {
        benchmark::DoNotOptimize(__vrn_cfi_to_rtd(r.back, reinterpret_cast<CFI_cdesc_t*>(&r.c)));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(ConvertRank3CDescriptorToRTD);

}  // namespace

BENCHMARK_MAIN();
