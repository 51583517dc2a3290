#include <gtest/gtest.h>
#include <fcntl.h>
#include <unistd.h>

#include "core/context.h"
#include "core/unit.h"
#include "tests/support/fortran.h"

namespace vrntest {
namespace {

class UnitTable : public RuntimeTest {
protected:
    int32_t OpenScratch() {
        int32_t unit = 0;
        int32_t iostat = -1;
        Specifiers s;
        s.Address(VRN_KEY_NEWUNIT, &unit).Keyword(VRN_KEY_STATUS, VRN_KEY_SCRATCH);
        Open(VRN_NEWUNIT_MARKER, s, &iostat);
        EXPECT_EQ(iostat, 0);
        return unit;
    }
};

TEST_F(UnitTable, NewUnitNumbersAcrossTheMinus99Boundary) {
    // -3 to -99 are each handed out once, in order, whatever was closed meanwhile.
    EXPECT_EQ(OpenScratch(), -3);
    Close(-3);
    EXPECT_EQ(OpenScratch(), -4);
    for (int32_t expected = -5; expected >= -99; --expected) ASSERT_EQ(OpenScratch(), expected);
    // Past the counter, the lowest free number of -3 to -99 comes first...
    EXPECT_EQ(OpenScratch(), -3);
    Close(-50);
    Close(-10);
    EXPECT_EQ(OpenScratch(), -10);
    EXPECT_EQ(OpenScratch(), -50);
    // ...and with all 97 in use the counter moves on into the hash table.
    EXPECT_EQ(OpenScratch(), -100);
    EXPECT_EQ(OpenScratch(), -101);
    EXPECT_NE(LookUpUnit(_GlobalContext, -101), nullptr);
    Close(-101);
    EXPECT_EQ(LookUpUnit(_GlobalContext, -101), nullptr);
}

TEST_F(UnitTable, NumbersOutsideTheArraysLiveInOrderedBuckets) {
    EnsureRuntimeStarted();
    GlobalContext* global = _GlobalContext;
    int32_t existed;
    // -1, -2, large and very negative numbers; 127 and 254 share a bucket with 0.
    for (int32_t number : {-1, -2, 254, 127, 1000000, INT32_MIN + 1, 100}) {
        ASSERT_NE(GetUnit(global, nullptr, number, &existed), nullptr);
        EXPECT_EQ(existed, 0);
    }
    EXPECT_EQ(GetUnit(global, nullptr, 127, &existed)->unitNumber, 127);
    EXPECT_EQ(existed, 1);
    ListHeader* bucket = &global->unitHash[0];
    std::vector<int32_t> keys;
    for (ListNode* node = bucket->first; node->next != nullptr; node = node->next) {
        keys.push_back(reinterpret_cast<UnitRecord*>(node)->unitNumber);
    }
    EXPECT_EQ(keys, (std::vector<int32_t>{127, 254}));
    EXPECT_EQ(LookUpUnit(global, -1)->unitNumber, -1);
    EXPECT_EQ(global->negativeUnits[1], nullptr);  // -1 and -2 never use the array
    FreeUnit(global, nullptr, LookUpUnit(global, 254));
    EXPECT_EQ(LookUpUnit(global, 254), nullptr);
    EXPECT_NE(LookUpUnit(global, 127), nullptr);
}

TEST_F(UnitTable, InodeRecordGoesWithTheLastUnitOnTheFile) {
    TempDir dir;
    EnsureRuntimeStarted();
    _GlobalContext->options.optMultConn = 1;
    std::string name = dir.Path("shared.txt");
    for (int32_t unit : {20, 10}) {
        Specifiers s;
        s.Text(VRN_KEY_FILE, name).Keyword(VRN_KEY_ACTION, VRN_KEY_READ);
        int32_t iostat = -1;
        Open(unit, s, &iostat);
        ASSERT_EQ(iostat, 0) << unit;
    }
    InodeRecord* inode = LookUpUnit(_GlobalContext, 10)->inode;
    ASSERT_EQ(inode, LookUpUnit(_GlobalContext, 20)->inode);
    EXPECT_EQ(inode->unitCount, 2u);
    EXPECT_EQ(FirstUnitOnInode(inode)->unitNumber, 10);  // links ascend by unit number
    Close(10);
    EXPECT_EQ(inode->unitCount, 1u);
    EXPECT_EQ(FirstUnitOnInode(inode)->unitNumber, 20);
    Close(20);
    ListNode* predecessor;
    struct stat64 fileStat;
    ASSERT_EQ(stat64(name.c_str(), &fileStat), 0);
    EXPECT_EQ(FindInodeRecord(_GlobalContext, nullptr, fileStat.st_dev, fileStat.st_ino, &predecessor), nullptr);
}

TEST_F(UnitTable, CloseAllUnitsKeepsTheStandardDescriptorsOpen) {
    TempDir dir;
    Specifiers s;
    s.Text(VRN_KEY_FILE, dir.Path("a.txt"));
    Open(30, s);
    int fd = LookUpUnit(_GlobalContext, 30)->fd;
    ASSERT_GE(fd, 3);
    ResetRuntime();
    EXPECT_EQ(fcntl(fd, F_GETFD), -1);  // the file's descriptor is closed
    for (int standard : {0, 1, 2}) EXPECT_NE(fcntl(standard, F_GETFD), -1) << standard;
    EXPECT_EQ(RTE_Initialized, 0u);
}

TEST(Tasks, ThereAreNoTasks) {
    int dummy;
    EXPECT_EQ(_vrnRegisterTask(&dummy), 7);
    EXPECT_EQ(_vrnRegisterTask(nullptr), 0);
    EXPECT_EQ(_vrnDeregisterTask(&dummy), 7);
    EXPECT_EQ(_vrnDeregisterTask(nullptr), 0);
}

}  // namespace
}  // namespace vrntest
