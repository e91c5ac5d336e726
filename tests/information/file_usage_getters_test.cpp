#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

constexpr size_t usageFlagsAt = fileUsageArea + 16;

constexpr NumberCase usageNumbers[] = {
    {"identifier", VantrelFileInformationGetIdentifier, fileUsageArea},
    {"handle count", VantrelFileInformationGetHandleCount, fileUsageArea + 4},
    {"open timestamp", VantrelFileInformationGetOpenTimestamp, fileUsageArea + 8},
    {"usage count", VantrelFileInformationGetUsageCount, fileUsageArea + 12},
};

constexpr FlagCase usageFlags[] = {
    {"explicit locks", VantrelFileInformationGetExplicitLocks, 0x0001},
    {"client transactions", VantrelFileInformationGetClientTransactions, 0x0002},
    {"read only", VantrelFileInformationGetReadOnly, 0x0004},
    {"continuous operation", VantrelFileInformationGetContinuousOperation, 0x0008},
    {"referential integrity", VantrelFileInformationGetReferentialIntegrityConstraints, 0x0010},
    {"wrong owner", VantrelFileInformationGetWrongOwner, 0x0080},
};

class FileUsageGettersTest : public InformationTest {};

TEST_F(FileUsageGettersTest, MissingHandles) {
    for (const NumberCase &number : usageNumbers)
        EXPECT_EQ(number.get(nullptr), number.nullValue) << number.name;
    for (const FlagCase &flag : usageFlags)
        EXPECT_EQ(flag.get(nullptr), -1) << flag.name;
    EXPECT_EQ(VantrelFileInformationGetOwnerMode(nullptr), -7);
    EXPECT_EQ(VantrelFileInformationGetEncryptionType(nullptr), -7);
}

TEST_F(FileUsageGettersTest, Numbers) {
    for (const NumberCase &number : usageNumbers) {
        SCOPED_TRACE(number.name);
        expectLong(number.get, number.offset);
    }
}

TEST_F(FileUsageGettersTest, Flags) {
    for (const FlagCase &flag : usageFlags) {
        SCOPED_TRACE(flag.name);
        expectFlag(flag.get, usageFlagsAt, static_cast<uint16_t>(flag.mask));
    }
}

TEST_F(FileUsageGettersTest, OwnerMode) {
    expectEnumeration(VantrelFileInformationGetOwnerMode, usageFlagsAt, 0x0160,
                      {{0x0000, 0}, {0x0020, 1}, {0x0040, 2}, {0x0120, 3}, {0x0140, 4}});
}

TEST_F(FileUsageGettersTest, EncryptionWithoutReadModeIsNoOwnerMode) {
    put(usageFlagsAt, Bytes{0x00, 0x01});
    EXPECT_EQ(VantrelFileInformationGetOwnerMode(information), -7);
    EXPECT_EQ(status(), 2002);
}

TEST_F(FileUsageGettersTest, EncryptionType) {
    expectEnumeration(VantrelFileInformationGetEncryptionType, usageFlagsAt, 0x3C00,
                      {{0x0000, 0}, {0x0400, 1}, {0x0800, 2}, {0x1000, 3}, {0x2000, 4}});
}

}  // namespace
