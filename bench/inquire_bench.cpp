// INQUIRE as compiled code issues it: by unit with nine specifiers, by file with EXIST=
// for a file nobody holds, and INQUIRE(IOLENGTH=) of five items.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "bench/open_unit.h"
#include "vrn90.h"

namespace {

struct List {
    std::vector<uint64_t> storage = std::vector<uint64_t>(64, 0);
    KeywordList* list() { return reinterpret_cast<KeywordList*>(storage.data()); }
    void Add(uint32_t tag, const void* a, uint32_t b) {
        KeywordList* l = list();
        l->version = 1;
        l->entries[l->count++] = KeywordEntry{tag, reinterpret_cast<uintptr_t>(a), b};
    }
};

// INQUIRE (30, EXIST=e, OPENED=o, NAMED=n, NUMBER=u, RECL=r, NAME=name, ACCESS=a, FORM=f, ACTION=act)
void InquireUnit(benchmark::State& state) {
    OpenUnit file("vrn_bench_inquire_unit");
    int32_t exist, opened, named, number, recl;
    char name[256], access[16], form[16], action[16];
    List s;
    s.Add(VRN_KEY_EXIST, &exist, 4);
    s.Add(VRN_KEY_OPENED, &opened, 4);
    s.Add(VRN_KEY_NAMED, &named, 4);
    s.Add(VRN_KEY_NUMBER, &number, 0);
    s.Add(VRN_KEY_RECL, &recl, 0);
    s.Add(VRN_KEY_NAME, name, sizeof name);
    s.Add(VRN_KEY_ACCESS, access, sizeof access);
    s.Add(VRN_KEY_FORM, form, sizeof form);
    s.Add(VRN_KEY_ACTION, action, sizeof action);
    for (auto _ : state) {
        _vrnIOCmd(file.unit, VRN_COMMAND_INQUIRE, s.list(), VRN_OPTION_INQUIRE_BY_UNIT, nullptr);
        benchmark::DoNotOptimize(number);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(InquireUnit);

// INQUIRE (FILE=path, EXIST=e) of a file that no unit holds.
void InquireFileExist(benchmark::State& state) {
    std::string path;
    {
        OpenUnit file("vrn_bench_inquire_file", true);
        path = file.path;
    }
    int32_t exist = 0;
    List s;
    s.Add(VRN_KEY_FILE, path.c_str(), static_cast<uint32_t>(path.size()));
    s.Add(VRN_KEY_EXIST, &exist, 4);
    for (auto _ : state) {
        _vrnIOCmd(0, VRN_COMMAND_INQUIRE, s.list(), 0, nullptr);
        benchmark::DoNotOptimize(exist);
    }
    unlink(path.c_str());
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(InquireFileExist);

// INQUIRE (IOLENGTH=n) 1_4, 2.5d0, 'characters', z, big(5)
void IOLength(benchmark::State& state) {
    int32_t length = 0, four = 4, eight = 8, one = 1, ten = 10, sixteen = 16, forty = 40;
    int32_t i4 = 1;
    double r8 = 2.5, z[2] = {};
    int64_t big[5] = {};
    List s;
    s.Add(VRN_KEY_IOLENGTH, &length, 0);
    uint32_t flags = VRN_STATEMENT_FLAGS(VRN_KIND_UNFORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_SEQUENTIAL);
    for (auto _ : state) {
        LocalContext* c = _vrnBeginIO(nullptr, flags, s.list(), 0, nullptr, 0, nullptr);
        _vrnWriteUfmt(c, &i4, &four, &four, 0);
        _vrnWriteUfmt(c, &r8, &eight, &eight, 4);
        _vrnWriteUfmt(c, "characters", &ten, &one, 2);
        _vrnWriteUfmt(c, z, &sixteen, &eight, 5);
        _vrnWriteUfmt(c, big, &forty, &eight, VRN_UFMT_RUN);
        _vrnEndIO(c);
        benchmark::DoNotOptimize(length);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(IOLength);

}  // namespace

BENCHMARK_MAIN();
