#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

constexpr size_t lockFlags = lockOwnerArea + 16;

constexpr NumberCase wordCases[] = {
    {"service agent identifier", VantrelFileInformationGetLockOwnerServiceAgentIdentifier, lockOwnerArea + 12,
     2007},
    {"client identifier", VantrelFileInformationGetLockOwnerClientIdentifier, lockOwnerArea + 14, 2007},
};

constexpr NumberCase longCases[] = {
    {"time in transaction", VantrelFileInformationGetLockOwnerTimeInTransaction, lockOwnerArea + 20},
    {"index", VantrelFileInformationGetLockOwnerIndex, lockOwnerArea + 24, -7},
    {"transaction level", VantrelFileInformationGetLockOwnerTransactionLevel, lockOwnerArea + 28},
};

constexpr FlagCase lockOwnerFlags[] = {
    {"implicit lock", VantrelFileInformationGetLockOwnerImplicitLock, 0x0001},
    {"file lock", VantrelFileInformationGetLockOwnerFileLock, 0x0010},
    {"record lock", VantrelFileInformationGetLockOwnerRecordLock, 0x0040},
    {"same process", VantrelFileInformationGetLockOwnerSameProcess, 0x0800},
    {"write no wait", VantrelFileInformationGetLockOwnerWriteNoWait, 0x1000},
    {"write hold", VantrelFileInformationGetLockOwnerWriteHold, 0x2000},
};

class LockOwnerGettersTest : public InformationTest {};

TEST_F(LockOwnerGettersTest, MissingHandles) {
    for (const NumberCase &number : wordCases)
        EXPECT_EQ(number.get(nullptr), number.nullValue) << number.name;
    for (const NumberCase &number : longCases)
        EXPECT_EQ(number.get(nullptr), number.nullValue) << number.name;
    for (const FlagCase &flag : lockOwnerFlags)
        EXPECT_EQ(flag.get(nullptr), -1) << flag.name;
    EXPECT_EQ(VantrelFileInformationGetLockOwnerExplicitLockMode(nullptr), -7);
    EXPECT_EQ(VantrelFileInformationGetLockOwnerPageLockType(nullptr), -7);
}

TEST_F(LockOwnerGettersTest, Numbers) {
    for (const NumberCase &number : wordCases) {
        SCOPED_TRACE(number.name);
        expectEveryWord(number.get, number.offset, [](uint16_t value) { return value; });
    }
    for (const NumberCase &number : longCases) {
        SCOPED_TRACE(number.name);
        expectLong(number.get, number.offset);
    }
}

TEST_F(LockOwnerGettersTest, Flags) {
    for (const FlagCase &flag : lockOwnerFlags) {
        SCOPED_TRACE(flag.name);
        expectFlag(flag.get, lockFlags, static_cast<uint16_t>(flag.mask));
    }
}

TEST_F(LockOwnerGettersTest, ExplicitLockModeNeedsAnExplicitLock) {
    expectEnumeration(VantrelFileInformationGetLockOwnerExplicitLockMode, lockFlags, 0xC002,
                      {{0x0000, 0},
                       {0x4000, 0},
                       {0x8000, 0},
                       {0xC000, 0},
                       {0x0002, 1},
                       {0x4002, 2},
                       {0x8002, 3},
                       {0xC002, 4}});
}

TEST_F(LockOwnerGettersTest, TheFirstPageTypeSetDecides) {
    expectEnumeration(VantrelFileInformationGetLockOwnerPageLockType, lockFlags, 0x0720,
                      {{0x0000, 0},
                       {0x0100, 0},
                       {0x0200, 0},
                       {0x0300, 0},
                       {0x0400, 0},
                       {0x0500, 0},
                       {0x0600, 0},
                       {0x0700, 0},
                       {0x0120, 1},
                       {0x0320, 1},
                       {0x0520, 1},
                       {0x0720, 1},
                       {0x0220, 2},
                       {0x0620, 2},
                       {0x0420, 3}});
}

TEST_F(LockOwnerGettersTest, APageLockWithoutAPageTypeIsRefused) {
    put(lockFlags, Bytes{0x20, 0x00});
    EXPECT_EQ(VantrelFileInformationGetLockOwnerPageLockType(information), -7);
    EXPECT_EQ(status(), 2002);
}

TEST_F(LockOwnerGettersTest, NameNeeds64Bytes) {
    expectFixedText(VantrelFileInformationGetLockOwnerName, lockOwnerArea + 40, 64);
}

}  // namespace
