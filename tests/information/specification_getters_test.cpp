#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

constexpr size_t fileFlags = 4;

constexpr FlagCase specificationFlags[] = {
    {"key only", VantrelFileInformationGetKeyOnly, 0x0010},
    {"balanced indexes", VantrelFileInformationGetBalancedIndexes, 0x0020},
    {"page preallocation", VantrelFileInformationGetPagePreallocation, 0x0004},
    {"page compression", VantrelFileInformationGetPageCompression, 0x2000},
};

class SpecificationGettersTest : public InformationTest {};

TEST_F(SpecificationGettersTest, MissingHandles) {
    EXPECT_EQ(VantrelFileInformationGetFixedRecordLength(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetPageSize(nullptr), -7);
    EXPECT_EQ(VantrelFileInformationGetIndexCount(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetFileVersion(nullptr), -7);
    EXPECT_EQ(VantrelFileInformationGetRecordCount(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetUnusedDuplicatePointerCount(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetUnusedPageCount(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetFreeSpaceThreshold(nullptr), -7);
    EXPECT_EQ(VantrelFileInformationGetVariableLengthRecordsMode(nullptr), -7);
    EXPECT_EQ(VantrelFileInformationGetRecordCompressionMode(nullptr), -7);
    EXPECT_EQ(VantrelFileInformationGetSystemDataMode(nullptr), -7);
    EXPECT_EQ(VantrelFileInformationGetSegmented(nullptr), -1);
    for (const FlagCase &flag : specificationFlags)
        EXPECT_EQ(flag.get(nullptr), -1) << flag.name;
}

TEST_F(SpecificationGettersTest, Numbers) {
    auto identity = [](uint16_t value) { return value; };
    expectEveryWord(VantrelFileInformationGetFixedRecordLength, 0, identity);
    expectEveryByte(VantrelFileInformationGetUnusedDuplicatePointerCount, 20, identity);
    expectEveryWord(VantrelFileInformationGetUnusedPageCount, 22, identity);
    expectLongLong(VantrelFileInformationGetRecordCount, 8);
}

TEST_F(SpecificationGettersTest, IndexCountIsSigned) {
    expectEveryWord(VantrelFileInformationGetIndexCount, 16,
                    [](uint16_t value) { return value < 32768 ? value : value - 65536; });
}

TEST_F(SpecificationGettersTest, Flags) {
    for (const FlagCase &flag : specificationFlags) {
        SCOPED_TRACE(flag.name);
        expectFlag(flag.get, fileFlags, static_cast<uint16_t>(flag.mask));
    }
}

TEST_F(SpecificationGettersTest, PageSizeIsNeverTheDefaultValue) {
    expectEnumeration(
        VantrelFileInformationGetPageSize, 2, 0xFFFF,
        {{512, 0}, {1024, 1}, {1536, 2}, {2048, 3}, {3072, 4}, {3584, 5}, {4096, 6}, {8192, 7}, {16384, 8}});
}

TEST_F(SpecificationGettersTest, FileVersion) {
    expectEnumeration(
        VantrelFileInformationGetFileVersion, 18, 0xFFFF,
        {{0x60, 0}, {0x61, 1}, {0x70, 2}, {0x80, 3}, {0x90, 4}, {0x95, 5}, {0x00, 6}, {0xD0, 7}, {0xD3, 8}});
}

TEST_F(SpecificationGettersTest, FreeSpaceThreshold) {
    expectEnumeration(VantrelFileInformationGetFreeSpaceThreshold, fileFlags, 0x00C0,
                      {{0x0040, 0}, {0x0080, 1}, {0x00C0, 2}, {0x0000, 3}});
}

TEST_F(SpecificationGettersTest, VariableAllocationTailsNeedVariableLengthRecords) {
    expectEnumeration(VantrelFileInformationGetVariableLengthRecordsMode, fileFlags, 0x0801,
                      {{0x0000, 0}, {0x0001, 1}, {0x0801, 2}});
}

TEST_F(SpecificationGettersTest, OnlyOneRecordCompressionAtATime) {
    expectEnumeration(VantrelFileInformationGetRecordCompressionMode, fileFlags, 0x000A,
                      {{0x0000, 0}, {0x0002, 1}, {0x0008, 2}});
}

TEST_F(SpecificationGettersTest, SystemDataMode) {
    expectEnumeration(VantrelFileInformationGetSystemDataMode, fileFlags, 0x5200,
                      {{0x0200, 0}, {0x1200, 1}, {0x0000, 2}, {0x4200, 3}});
}

TEST_F(SpecificationGettersTest, SegmentedIsTheFirstByteOfTheKeyBuffer) {
    expectEveryByte(VantrelFileInformationGetSegmented, statisticsKeyArea,
                    [](uint16_t value) { return value == 0 ? 0 : 1; });
}

}  // namespace
