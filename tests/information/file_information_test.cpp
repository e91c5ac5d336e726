#include <climits>

#include "definition/key_segment.h"
#include "information/information_test.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

TEST(FileInformationRecord, HoldsTheRepliesBackToBack) {
    EXPECT_EQ(offsetof(VantrelFileInformation, statistics), statisticsArea);
    EXPECT_EQ(offsetof(VantrelFileInformation, replyLength), replyLengthField);
    EXPECT_EQ(offsetof(VantrelFileInformation, duplicateConflict), duplicateConflictArea);
    EXPECT_EQ(offsetof(VantrelFileInformation, fileUsage), fileUsageArea);
    EXPECT_EQ(offsetof(VantrelFileInformation, gateway), gatewayArea);
    EXPECT_EQ(offsetof(VantrelFileInformation, lockOwner), lockOwnerArea);
    EXPECT_EQ(offsetof(VantrelFileInformation, referentialIntegrity), referentialIntegrityArea);
    EXPECT_EQ(offsetof(VantrelFileInformation, security), securityArea);
    EXPECT_EQ(offsetof(VantrelFileInformation, segmentFiles), segmentFilesArea);
    EXPECT_EQ(offsetof(VantrelFileInformation, systemData), systemDataArea);
    EXPECT_EQ(offsetof(VantrelFileInformation, statisticsKey), statisticsKeyArea);
    EXPECT_EQ(offsetof(VantrelFileInformation, lastStatus), lastStatusField);
    EXPECT_EQ(sizeof(VantrelFileInformation), 198118u);
}

TEST(FileInformationAllocate, RefusesAMissingOutPointer) {
    EXPECT_EQ(VantrelFileInformationAllocate(nullptr), 2007);
}

TEST(FileInformationAllocate, GivesARecordOfZeros) {
    VantrelFileInformation *information = nullptr;
    ASSERT_EQ(VantrelFileInformationAllocate(&information), 0);
    const uint8_t *bytes = reinterpret_cast<uint8_t *>(information);
    EXPECT_EQ(Bytes(bytes, bytes + 198118), Bytes(198118, 0));
    EXPECT_EQ(VantrelFileInformationFree(information), 0);
}

TEST(FileInformationAllocate, MemoryRunsOut) {
    VantrelFileInformation sentinel, *information = &sentinel;
    FailingAllocation failing;
    EXPECT_EQ(VantrelFileInformationAllocate(&information), 101);
    EXPECT_EQ(information, nullptr);
}

TEST(FileInformationFree, TakesNull) {
    EXPECT_EQ(VantrelFileInformationFree(nullptr), 0);
}

class FileInformationTest : public InformationTest {};

TEST_F(FileInformationTest, LastStatusStays) {
    EXPECT_EQ(VantrelFileInformationGetLastStatusCode(nullptr), 2007);
    keepStatus(information, -123456789);
    EXPECT_EQ(VantrelFileInformationGetLastStatusCode(information), -123456789);
    EXPECT_EQ(VantrelFileInformationGetLastStatusCode(information), -123456789);
}

TEST_F(FileInformationTest, NeverFilledReportsDefaults) {
    EXPECT_EQ(VantrelFileInformationGetPageSize(information), -7);
    EXPECT_EQ(VantrelFileInformationGetLastStatusCode(information), 2002);
    EXPECT_EQ(VantrelFileInformationGetFileVersion(information), 6);
    EXPECT_EQ(VantrelFileInformationGetFreeSpaceThreshold(information), 3);
    EXPECT_EQ(VantrelFileInformationGetSystemDataMode(information), 2);
    EXPECT_EQ(VantrelFileInformationGetSegmentCount(information), 0);
    EXPECT_EQ(VantrelFileInformationGetSecurityPermissionNoRights(information), 1);
    EXPECT_EQ(VantrelFileInformationGetLastStatusCode(information), 0);
}

// Segments are told apart by their null value.
class KeySegmentOfInformationTest : public InformationTest {
  protected:
    KeySegmentOfInformationTest() { memset(&segment, 0xA5, sizeof segment); }

    void setIndexCount(uint16_t count) { storeU16(at(16), count); }

    // Every flag but "key continues" is set in a segment that ends its index.
    void putSegment(int number, bool continues) {
        size_t offset = 32 + 24 * static_cast<size_t>(number - 1);
        for (size_t i = 0; i < 24; ++i)
            *at(offset + i) = static_cast<uint8_t>(number + static_cast<int>(i));
        storeU16(at(offset + 4), continues ? 0x0010 : 0xFFEF);
    }

    void expectSegment(int number) {
        SCOPED_TRACE(number);
        memset(&segment, 0xA5, sizeof segment);
        resetStatus();
        EXPECT_EQ(VantrelFileInformationGetKeySegment(information, &segment, number), 0);
        EXPECT_EQ(status(), 0);
        const uint8_t *bytes = reinterpret_cast<uint8_t *>(&segment);
        size_t offset = 32 + 24 * static_cast<size_t>(number - 1);
        EXPECT_EQ(Bytes(bytes, bytes + 24), Bytes(at(offset), at(offset) + 24));
        EXPECT_EQ(Bytes(bytes + 24, bytes + 28), Bytes(4, 0xA5));
    }

    void expectNoSegment(int number) {
        SCOPED_TRACE(number);
        memset(&segment, 0xA5, sizeof segment);
        resetStatus();
        EXPECT_EQ(VantrelFileInformationGetKeySegment(information, &segment, number), 2002);
        EXPECT_EQ(status(), 2002);
        const uint8_t *bytes = reinterpret_cast<uint8_t *>(&segment);
        EXPECT_EQ(Bytes(bytes, bytes + 28), Bytes(28, 0xA5));
    }

    VantrelKeySegment segment;
};

TEST_F(KeySegmentOfInformationTest, RefusesMissingHandles) {
    EXPECT_EQ(VantrelFileInformationGetKeySegment(nullptr, nullptr, 0), 2007);
    EXPECT_EQ(VantrelFileInformationGetKeySegment(nullptr, &segment, 1), 2007);
    EXPECT_EQ(status(), 7777);
    EXPECT_EQ(VantrelFileInformationGetKeySegment(information, nullptr, 0), 2007);
    EXPECT_EQ(status(), 2007);
}

TEST_F(KeySegmentOfInformationTest, CountsSegmentsOverAllIndexes) {
    setIndexCount(2);
    putSegment(1, true);
    putSegment(2, false);
    putSegment(3, false);
    putSegment(4, false);
    expectSegment(1);
    expectSegment(2);
    expectSegment(3);
    expectNoSegment(4);
    expectNoSegment(5);
    expectNoSegment(INT_MAX);
}

TEST_F(KeySegmentOfInformationTest, CopiesAllOfASegment) {
    setIndexCount(1);
    put(32, Bytes{0x0B, 0x00, 0x04, 0x00, 0x42, 0x01, 0xEE, 0xDD, 0x01, 0x02, 0x03, 0x04,
                  0x05, 0x06, 0x07, 0x08, 0x0E, 0x00, 0x20, 0xCC, 0x7C, 0x00, 0x09, 0xBB});
    expectSegment(1);
    EXPECT_EQ(loadU16(segment.specification.position), 11);
    EXPECT_EQ(loadU64(segment.specification.uniqueValueCount), 0x0807060504030201u);
    EXPECT_EQ(loadU16(segment.specification.index), 124);
    EXPECT_EQ(segment.specification.acsNumber, 9);
}

TEST_F(KeySegmentOfInformationTest, RefusesNumbersBelowOne) {
    setIndexCount(1);
    putSegment(1, false);
    expectNoSegment(0);
    expectNoSegment(-1);
    expectNoSegment(INT_MIN);
}

TEST_F(KeySegmentOfInformationTest, FindsNothingInAFileWithoutIndexes) {
    putSegment(1, false);
    setIndexCount(0);
    expectNoSegment(1);
}

TEST_F(KeySegmentOfInformationTest, TakesTheIndexCountSigned) {
    putSegment(1, false);
    setIndexCount(0xFFFF);
    expectNoSegment(1);
    setIndexCount(0x8000);
    expectNoSegment(1);
    setIndexCount(0x7FFF);
    expectSegment(1);
}

TEST_F(KeySegmentOfInformationTest, EndsWithTheReply) {
    fill(0xFF);
    setIndexCount(1);
    for (int number = 1; number <= 2729; ++number)
        putSegment(number, true);
    expectSegment(2729);
    expectNoSegment(2730);
    expectNoSegment(INT_MAX);
}

}  // namespace
