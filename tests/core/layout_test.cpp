// The records compiled code builds have a fixed binary layout: 32-bit words on the
// target, with only the words that hold an address widened on a 64-bit host.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "vrn90.h"

namespace {

constexpr size_t kAddress = sizeof(void*);

TEST(Layout, KeywordListIsVersionCountThenTagAB) {
    EXPECT_EQ(offsetof(KeywordList, version), 0u);
    EXPECT_EQ(offsetof(KeywordList, count), 4u);
    EXPECT_EQ(offsetof(KeywordList, entries), kAddress == 4 ? 8u : 8u);
    EXPECT_EQ(offsetof(KeywordEntry, tag), 0u);
    EXPECT_EQ(offsetof(KeywordEntry, a), kAddress);
    EXPECT_EQ(offsetof(KeywordEntry, b), 2 * kAddress);
    EXPECT_EQ(sizeof(KeywordEntry), 3 * kAddress);
}

TEST(Layout, InternalFileIsThreeWords) {
    EXPECT_EQ(offsetof(InternalFile, base), 0u);
    EXPECT_EQ(offsetof(InternalFile, lengthOrDescriptor), kAddress);
    EXPECT_EQ(offsetof(InternalFile, recordLength), 2 * kAddress);
}

TEST(Layout, DerivedTypeTablesAreRowsOfSixWords) {
    EXPECT_EQ(offsetof(VrnDTTable, size), kAddress);
    EXPECT_EQ(offsetof(VrnDTTable, rows), 2 * kAddress);
    EXPECT_EQ(sizeof(VrnDTRow), 6 * kAddress);
    EXPECT_EQ(offsetof(VrnDTRow, kind), kAddress);
    EXPECT_EQ(offsetof(VrnDTRow, length), 2 * kAddress);
    EXPECT_EQ(offsetof(VrnDTRow, offset), 5 * kAddress);
    EXPECT_EQ(sizeof(VrnDTIORow), 6 * kAddress);
    EXPECT_EQ(offsetof(VrnDTIORow, rtd), kAddress);
    EXPECT_EQ(offsetof(VrnDTIORow, value), 4 * kAddress);
}

#if UINTPTR_MAX == 0xFFFFFFFFu
TEST(Layout, NamelistRecordsAreAddressesThenWords) {
    EXPECT_EQ(offsetof(VrnNamelistGroup, nameLength), kAddress);
    EXPECT_EQ(offsetof(VrnNamelistGroup, count), kAddress + 4);
    EXPECT_EQ(offsetof(VrnNamelistGroup, members), kAddress + 8);
    EXPECT_EQ(offsetof(VrnNamelistMember, address), kAddress);
    EXPECT_EQ(offsetof(VrnNamelistMember, rtd), 2 * kAddress);
    EXPECT_EQ(offsetof(VrnNamelistMember, derived), 3 * kAddress);
    EXPECT_EQ(offsetof(VrnNamelistMember, nameLength), 4 * kAddress);
    EXPECT_EQ(offsetof(VrnNamelistMember, type), 4 * kAddress + 4);
    EXPECT_EQ(offsetof(VrnNamelistMember, kind), 4 * kAddress + 8);
    EXPECT_EQ(offsetof(VrnNamelistMember, length), 4 * kAddress + 12);
    EXPECT_EQ(sizeof(VrnNamelistMember), 4 * kAddress + 16);
    EXPECT_EQ(offsetof(VrnNamelistType, readDtio), kAddress);
    EXPECT_EQ(offsetof(VrnNamelistType, writeDtio), 2 * kAddress);
    EXPECT_EQ(offsetof(VrnNamelistType, components), 3 * kAddress);
    EXPECT_EQ(offsetof(VrnNamelistComponent, type), kAddress);
    EXPECT_EQ(offsetof(VrnNamelistComponent, shape), 2 * kAddress);
    EXPECT_EQ(offsetof(VrnNamelistComponent, nameLength), 3 * kAddress);
}

TEST(Layout, TargetRecordsAreExactlyTheirWords) {
    EXPECT_EQ(sizeof(KeywordEntry), 12u);
    EXPECT_EQ(sizeof(KeywordList), 8u);
    EXPECT_EQ(sizeof(InternalFile), 12u);
    // Big-endian: a 64-bit value sent as (high, low) reads back as one integer.
    uint32_t words[2] = {0x00000001u, 0x00000002u};
    uint64_t value;
    std::memcpy(&value, words, sizeof value);
    EXPECT_EQ(value, __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? 0x0000000100000002ull : 0x0000000200000001ull);
}
#endif

TEST(Layout, StatementFlagsPackKindDirectionAccess) {
    EXPECT_EQ(VRN_STATEMENT_FLAGS(VRN_KIND_FORMATTED, VRN_DIRECTION_WRITE, VRN_ACCESS_STREAM), 0x00040103u);
    EXPECT_EQ(VRN_FLAG_INTERNAL, 1u << 23);
    EXPECT_EQ(VRN_FLAG_ASYNCHRONOUS, 1u << 24);
}

}  // namespace
