// Run-time descriptors as compiled code builds them: the accessors, their assertions,
// and the dump's text byte for byte.
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "desc/rtd.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

std::string Hex(const void* pointer) {
    char text[32];
    std::snprintf(text, sizeof text, "0x%.8lx", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(pointer)));
    return text;
}

constexpr uint8_t kVersion1 = sizeof(void*) == 8 ? (RTD_VERSION_64BIT | 1) : 1;
constexpr uint8_t kVersion2 = sizeof(void*) == 8 ? (RTD_VERSION_64BIT | 2) : 2;
const char* const kLayout = sizeof(void*) == 8 ? "64-bit" : "32-bit";

// An array descriptor of rank 3 over a 4 x 3 x 2 INTEGER(4) array, as the compiler lays
// it out: the table holds dimension 3 first.
struct Rank3 {
    alignas(8) unsigned char storage[sizeof(RTDArray) + 3 * sizeof(RTDDimension) + sizeof(RTDV2Fields)] = {};
    int32_t data[24] = {};
    RTDArray* rtd = reinterpret_cast<RTDArray*>(storage);

    explicit Rank3(uint8_t version = kVersion1) {
        rtd->base_ptr = reinterpret_cast<uintptr_t>(data);
        rtd->header = RTDHeader{RTD_ARRAY, RTD_TYPE_INTEGER, RTD_FLAG_IS_CONTIGUOUS | RTD_FLAG_IS_ALLOCATED, version};
        rtd->element_len = 4;
        rtd->rank = 3;
        rtd->rel_virtual_org = -(1 * 4 + 1 * 16 + 1 * 48);
        RTDDimension table[3] = {{1, 2, 48}, {1, 3, 16}, {1, 4, 4}};
        std::memcpy(rtd->dims, table, sizeof table);
    }
};

TEST(RunTimeDescriptors, AccessorsReadEachField) {
    Rank3 array;
    EXPECT_EQ(__vrnrtdgetversion(array.rtd), 1);
    EXPECT_EQ(__vrnrtdgetflags(array.rtd), RTD_FLAG_IS_CONTIGUOUS | RTD_FLAG_IS_ALLOCATED);
    EXPECT_EQ(__vrnrtdgetdscr_type(array.rtd), RTD_ARRAY);
    EXPECT_EQ(__vrnrtdgetdata_type(array.rtd), RTD_TYPE_INTEGER);
    EXPECT_EQ(__vrnrtdgetelement_len(array.rtd), 4);
    EXPECT_EQ(__vrnrtdgetrank(array.rtd), 3);
    EXPECT_EQ(__vrnrtdgetrvo(array.rtd), -68);
    // dim counts the table's entries: dim = rank is Fortran dimension 1.
    EXPECT_EQ(__vrnrtdgetextent(array.rtd, 3), 4);
    EXPECT_EQ(__vrnrtdgetmultiplier(array.rtd, 3), 4);
    EXPECT_EQ(__vrnrtdgetextent(array.rtd, 1), 2);
    EXPECT_EQ(__vrnrtdgetlow_bound(array.rtd, 2), 1);

    // A scalar of version 2 has its V2 fields right behind element_len.
    alignas(8) unsigned char storage[sizeof(RTD) + sizeof(RTDV2Fields)] = {};
    auto* scalar = reinterpret_cast<RTD*>(storage);
    scalar->header = RTDHeader{RTD_SCALAR, RTD_TYPE_REAL, 0, kVersion2};
    scalar->element_len = 8;
    RTDV2Fields v2{RTD_HAS_LEN_PARM, 17, 0x1234, 0x5678, 0, 0, 0};
    std::memcpy(storage + sizeof(RTD), &v2, sizeof v2);
    EXPECT_EQ(get_v2_fields(scalar), storage + sizeof(RTD));
    EXPECT_EQ(__vrnrtdgetflagsa(scalar), RTD_HAS_LEN_PARM);
    EXPECT_EQ(__vrnrtdgetreserved(scalar), 17u);
    EXPECT_EQ(__vrnrtdgetreserved_ptr(scalar), 0x1234u);
    EXPECT_EQ(__vrnrtdgetchain_ptr(scalar), 0x5678u);
}

TEST(RunTimeDescriptors, AMissingFieldFailsItsAssertion) {
    Rank3 array;  // version 1: no V2 fields
    EXPECT_EXIT(__vrnrtdgetflagsa(array.rtd), ::testing::KilledBySignal(SIGABRT),
                "dumpdesc:[0-9]+: .*__vrnrtdgetflagsa.*Assertion `v2_fields != 0' failed");
    EXPECT_EXIT(__vrnrtdgetextent(array.rtd, 4), ::testing::KilledBySignal(SIGABRT), "Assertion `dim <= array->rank' failed");
    RTD scalar{0, {RTD_SCALAR, RTD_TYPE_REAL, 0, kVersion1}, 0};
    EXPECT_EXIT(__vrnrtdgetrank(&scalar), ::testing::KilledBySignal(SIGABRT),
                "Assertion `desc->header.dscr_type == DSCR_TYPE_ARRAY' failed");
    Rank3 untyped(kVersion2);
    EXPECT_EXIT(__vrnrtdgetvft_ptr(untyped.rtd), ::testing::KilledBySignal(SIGABRT),
                "Assertion `\\(v2_fields->flagsA & 0x80000000\\) != 0' failed");
}

std::string Dumped(const void* rtd, int32_t id) {
    CapturedRun run;
    _vrndmprtd(rtd, id);
    run.Finish();
    return run.err();
}

TEST(RunTimeDescriptors, DumpOfNothingAndOfAScalar) {
    EXPECT_EQ(Dumped(nullptr, 7), "[7] Descriptor not found.\n");
    double value = 1.0;
    RTD scalar{reinterpret_cast<uintptr_t>(&value), {RTD_SCALAR, RTD_TYPE_REAL, 0, kVersion1}, 8};
    // A scalar of version 1 that is not character has no element_len: no memory dump.
    std::string expected = "[1] ---- Descriptor at address " + Hex(&scalar) + " ----\n" + "addr = " + Hex(&value) +
                           "\nheader.dscr_type = 1 ( scalar )\nheader.data_type = 14 ( real )\n"
                           "header.flags = 0x00 (  )\nheader.version = 0x" +
                           (sizeof(void*) == 8 ? std::string("81") : std::string("01")) + " ( " + kLayout +
                           " version 1 )\n[1] -- End Descriptor at address " + Hex(&scalar) + " --\n";
    EXPECT_EQ(Dumped(&scalar, 1), expected);
}

TEST(RunTimeDescriptors, DumpOfACharacterScalarShowsItsBytes) {
    char text[12];
    std::memcpy(text, "ABCDEFGHIJK", 12);
    RTD scalar{reinterpret_cast<uintptr_t>(text), {RTD_SCALAR_CHAR, RTD_TYPE_CHARACTER, RTD_FLAG_IS_ASSOCIATED, kVersion1}, 11};
    uint32_t words[3];
    std::memcpy(words, text, 12);
    char memory[64];
    std::snprintf(memory, sizeof memory, "0x%08x 0x%08x 0x%08x\n", words[0], words[1], words[2]);
    std::string dump = Dumped(&scalar, 2);
    EXPECT_NE(dump.find("addr = " + Hex(text) + " -> " + memory), std::string::npos) << dump;
    EXPECT_NE(dump.find("header.dscr_type = 2 ( scalar_char )\nheader.data_type = 2 ( character )\n"
                        "header.flags = 0x40 ( is_associated  )\n"),
              std::string::npos)
        << dump;
    EXPECT_NE(dump.find("element_len = 11\n[2] -- End"), std::string::npos) << dump;
}

TEST(RunTimeDescriptors, DumpOfARank3Array) {
    Rank3 array;
    for (int i = 0; i < 24; ++i) array.data[i] = i;
    // The memory dump shows element_len bytes at base_ptr: the first element.
    std::string expected = "[3] ---- Descriptor at address " + Hex(array.rtd) + " ----\n" + "addr = " + Hex(array.data) +
                           " -> 0x00000000\n"
                           "header.dscr_type = 3 ( array )\nheader.data_type = 13 ( integer )\n"
                           "header.flags = 0x90 ( is_allocated is_contiguous  )\nheader.version = 0x" +
                           (sizeof(void*) == 8 ? std::string("81") : std::string("01")) + " ( " + kLayout +
                           " version 1 )\n"
                           "rank = 3\nelement_len = 4\nrel_virtual_org = -68\n"
                           "  Dimension 0:  low_bound=1  extent=2  multiplier=48\n"
                           "  Dimension 1:  low_bound=1  extent=3  multiplier=16\n"
                           "  Dimension 2:  low_bound=1  extent=4  multiplier=4\n"
                           "[3] -- End Descriptor at address " + Hex(array.rtd) + " --\n";
    EXPECT_EQ(Dumped(array.rtd, 3), expected);
    // Sixteen bytes of a wider element wrap after four words, indented under the first.
    array.rtd->element_len = 20;
    std::string dump = Dumped(array.rtd, 3);
    EXPECT_NE(dump.find(" -> 0x00000000 0x00000001 0x00000002 0x00000003\n" + std::string(21, ' ') + "0x00000004\n"),
              std::string::npos)
        << dump;
}

TEST(RunTimeDescriptors, DumpOfAVersion2DescriptorWithItsTypeRecords) {
    Rank3 array(kVersion2);
    RTDTypeinfo typeinfo{reinterpret_cast<uintptr_t>("point"), reinterpret_cast<uintptr_t>("_T5point"), 0, 0, 0, 0, 2, 1, 2, 3, 4};
    RTDVft vft{0x1000, reinterpret_cast<uintptr_t>(&typeinfo)};
    int64_t tpt[3] = {2, 8, -1};
    int64_t tpv[2] = {1, 4};
    RTDV2Fields v2{RTD_HAS_VFT_TPT_TPV | RTD_PASS_DSCR_ARG, 5, 0, 0, reinterpret_cast<uintptr_t>(&vft),
                   reinterpret_cast<uintptr_t>(tpt), reinterpret_cast<uintptr_t>(tpv)};
    std::memcpy(const_cast<unsigned char*>(get_v2_fields(reinterpret_cast<RTD*>(array.rtd))), &v2, sizeof v2);
    EXPECT_EQ(__vrnrtdgetvft_ptr(array.rtd), reinterpret_cast<uintptr_t>(&vft));
    std::string dump = Dumped(array.rtd, 4);
    std::string expected = "flagsA = 0x90000000 ( has_vft_tpt_tpv pass_dscr_arg )\n"
                           "reserved = 5 ( 0x00000005 )\nreserved_ptr = 0x00000000\nchain_ptr = 0x00000000\n"
                           "vft_addr = " + Hex(&vft) + "\n  base_ptr = 0x00001000\n  typeinfo = " + Hex(&typeinfo) + "\n"
                           "    ---- Typeinfo: (" + Hex(&typeinfo) + ") ----\n"
                           "      name = point\n      mangled_name = _T5point\n"
                           "      parent typeinfo = 0x00000000\n      dt_descriptor = 0x00000000\n"
                           "      dt_param_descriptor = 0x00000000\n      template typeinfo = 0x00000000\n"
                           "      flags = 0x00000002 ( has_final  )\n"
                           "      final_proc_index = 1\n      copy_proc_index = 2\n      init_proc_index = 3\n"
                           "      expr_update_proc_index = 4\n"
                           "    -- End Typeinfo: (" + Hex(&typeinfo) + ") --\n"
                           "tpt_addr = " + Hex(tpt) + "\n  count = 2\n  typeparams[1] = 8 (0x0000000000000008)\n"
                           "  typeparams[2] = -1 (0xffffffffffffffff)\n"
                           "tpv_addr = " + Hex(tpv) + "\n  count = 1\n  typeparams[1] = 4 (0x0000000000000004)\n"
                           "[4] -- End Descriptor at address " + Hex(array.rtd) + " --\n";
    EXPECT_NE(dump.find(expected), std::string::npos) << dump;
}

}  // namespace
}  // namespace vrntest

namespace {

std::string ListDumped(const void* header, const void* data) {
    vrntest::CapturedRun run;
    _vrdmprtd(header, data);
    run.Finish();
    return run.out();
}

std::string Number(uintptr_t address) { return std::to_string(static_cast<unsigned long long>(address)); }

TEST(RunTimeDescriptors, ListDumpOfAnArrayWithItsWarnings) {
    // A 3 x 4 section of INTEGER(4) with a multiplier of 6 in dimension 1: not a multiple
    // of the element length, and the second multiplier is past the 4096 limit.
    alignas(8) unsigned char storage[sizeof(RTDArray) + 2 * sizeof(RTDDimension)] = {};
    auto* rtd = reinterpret_cast<RTDArray*>(storage);
    int32_t data[64] = {};
    rtd->base_ptr = reinterpret_cast<uintptr_t>(data);
    rtd->header = RTDHeader{RTD_ARRAY, RTD_TYPE_INTEGER, RTD_FLAG_IS_ALLOCATED, 1};
    rtd->element_len = 4;
    rtd->rank = 2;
    rtd->rel_virtual_org = 8;
    rtd->dims[1] = RTDDimension{1, 3, 6};      // Fortran dimension 1
    rtd->dims[0] = RTDDimension{0, -1, 8000};  // Fortran dimension 2
    // Each line is one list-directed record: a blank, then the label with its own blank.
    std::string expected = std::string(" = R T D =\n") +
                           "  arr location =  " + Number(reinterpret_cast<uintptr_t>(data)) + "\n" +
                           "  rtd location =  " + Number(reinterpret_cast<uintptr_t>(rtd)) + "\n" +
                           "     desc_type =  3\n      dataType =  13\n         flags =  128\n       version =  1\n"
                           "   element len =  4\n    array rank =  2\n    array  rvo =  8\n"
                           " 1 :  lbound, extent, mult =  1 3 6\n"
                           "  WARNING: multiplier is not divisible by elementLen\n"
                           " 2 :  lbound, extent, mult =  0 -1 8000\n"
                           "  WARNING: rvo may be invalid\n"
                           "  WARNING:     extent( 2 ) is invalid\n"
                           "  WARNING: multiplier( 2 ) exceeds 4096\n"
                           " = E N D =\n";
    EXPECT_EQ(ListDumped(&rtd->header, data), expected);
}

TEST(RunTimeDescriptors, ListDumpFlagsWhatNoOrdinaryArrayHas) {
    alignas(8) unsigned char storage[sizeof(RTDArray) + 21 * sizeof(RTDDimension)] = {};
    auto* rtd = reinterpret_cast<RTDArray*>(storage);
    rtd->header = RTDHeader{RTD_SCALAR, 18, 0, 1};  // byte counts as invalid here
    rtd->element_len = -1;
    rtd->rank = 21;
    rtd->rel_virtual_org = -4;
    std::string text = ListDumped(&rtd->header, nullptr);
    for (const char* line : {"  WARNING: desc_type is invalid\n", "  WARNING: dataType is invalid\n",
                             "  WARNING: elementLen is negative\n", "  WARNING: rank is invalid\n",
                             " 20 :  lbound, extent, mult =  0 0 0\n", "  WARNING: multiplier( 20 ) <= 0\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << text;
    }
    EXPECT_EQ(text.find(" 21 :"), std::string::npos);
    EXPECT_EQ(text.find("rvo may be invalid"), std::string::npos);
}

}  // namespace
