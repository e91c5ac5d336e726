#include "definition/file_attributes.h"

#include <climits>

#include "definition/definition_test.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class FileAttributesTest : public testing::Test {
  protected:
    Bytes specification() const { return bytesIn(attributes->specification); }
    uint16_t flags() const { return loadU16(attributes->specification.flags); }
    void setFlags(int32_t flags) { storeU16(attributes->specification.flags, static_cast<uint16_t>(flags)); }

    // The modes stand for the patterns in their order, in place of the bits under the mask and beside all
    // others; one mode more and negative ones are refused.
    void expectModes(VantrelStatus (*setter)(VantrelFileAttributes *, int32_t), uint16_t mask,
                     const std::vector<uint16_t> &patterns) {
        for (size_t mode = 0; mode < patterns.size(); ++mode) {
            setFlags(0);
            EXPECT_EQ(setter(attributes, static_cast<int32_t>(mode)), 0);
            EXPECT_EQ(flags(), patterns[mode]);
            setFlags(0xFFFF);
            EXPECT_EQ(setter(attributes, static_cast<int32_t>(mode)), 0);
            EXPECT_EQ(flags(), (0xFFFF & ~mask) | patterns[mode]);
        }
        Bytes before = specification();
        for (int32_t mode : {static_cast<int32_t>(patterns.size()), -1, INT_MAX, INT_MIN}) {
            EXPECT_EQ(setter(attributes, mode), 2002);
            EXPECT_EQ(specification(), before);
        }
        EXPECT_EQ(setter(nullptr, -1), 2007);
    }

    void expectFlag(VantrelStatus (*setter)(VantrelFileAttributes *, int32_t), uint16_t flag) {
        for (int32_t set : {1, -1, 0x10000}) {
            setFlags(0);
            EXPECT_EQ(setter(attributes, set), 0);
            EXPECT_EQ(flags(), flag);
        }
        setFlags(0xFFFF);
        EXPECT_EQ(setter(attributes, 0), 0);
        EXPECT_EQ(flags(), 0xFFFF & ~flag);
        EXPECT_EQ(setter(nullptr, 1), 2007);
    }

    FileAttributesPointer owner = newFileAttributes();
    VantrelFileAttributes *attributes = owner.get();
};

TEST(FileAttributesAllocate, GivesAZeroedRecordWithPagesOf4096Bytes) {
    FileAttributesPointer attributes = newFileAttributes();
    Bytes expected(65543);
    expected[3] = 0x10;
    EXPECT_EQ(bytesIn(*attributes), expected);
}

TEST(FileAttributesAllocate, RefusesAMissingOutPointer) {
    EXPECT_EQ(VantrelFileAttributesAllocate(nullptr), 2007);
}

TEST(FileAttributesAllocate, MemoryRunsOut) {
    FileAttributesPointer owner = newFileAttributes();
    VantrelFileAttributes *attributes = owner.get();
    FailingAllocation failing;
    EXPECT_EQ(VantrelFileAttributesAllocate(&attributes), 101);
    EXPECT_EQ(attributes, nullptr);
}

TEST(FileAttributesFree, TakesNull) {
    EXPECT_EQ(VantrelFileAttributesFree(nullptr), 0);
}

TEST_F(FileAttributesTest, RecordLengthsAreTwoBytes) {
    EXPECT_EQ(VantrelFileAttributesSetFixedRecordLength(attributes, 65535), 0);
    EXPECT_EQ(VantrelFileAttributesSetFixedRecordLength(attributes, 0), 0);
    EXPECT_EQ(VantrelFileAttributesSetFixedRecordLength(attributes, 0x1234), 0);
    Bytes expected(32);
    expected[0] = 0x34;
    expected[1] = 0x12;
    expected[3] = 0x10;
    EXPECT_EQ(specification(), expected);
    for (int32_t length : {65536, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(VantrelFileAttributesSetFixedRecordLength(attributes, length), 2002);
    EXPECT_EQ(specification(), expected);
    EXPECT_EQ(VantrelFileAttributesSetFixedRecordLength(nullptr, 65536), 2007);
}

TEST_F(FileAttributesTest, RecordLengthsReachTheirMaximum) {
    EXPECT_EQ(VantrelFileAttributesSetFixedRecordLength(attributes, 65535), 0);
    EXPECT_EQ(loadU16(attributes->specification.recordLength), 65535);
}

TEST_F(FileAttributesTest, PageSizesAreStoredInBytes) {
    const uint16_t sizes[] = {512, 1024, 1536, 2048, 3072, 3584, 4096, 8192, 16384, 4096};
    for (int32_t value = 0; value < 10; ++value) {
        storeU16(attributes->specification.pageSize, 0);
        EXPECT_EQ(VantrelFileAttributesSetPageSize(attributes, value, 0), 0);
        EXPECT_EQ(loadU16(attributes->specification.pageSize), sizes[value]);
    }
}

TEST_F(FileAttributesTest, PageCompressionIsAFlagAndAByte) {
    for (int32_t set : {1, -1, 0x10000}) {
        ASSERT_EQ(VantrelFileAttributesSetPageSize(attributes, VANTREL_PAGE_SIZE_512, 0), 0);
        EXPECT_EQ(VantrelFileAttributesSetPageSize(attributes, VANTREL_PAGE_SIZE_512, set), 0);
        Bytes expected(32);
        expected[3] = 0x02;
        expected[5] = 0x20;
        expected[21] = 1;
        EXPECT_EQ(specification(), expected);
    }
    setFlags(0xFFFF);
    EXPECT_EQ(VantrelFileAttributesSetPageSize(attributes, VANTREL_PAGE_SIZE_512, 0), 0);
    EXPECT_EQ(flags(), 0xDFFF);
    EXPECT_EQ(attributes->specification.pageCompression, 0);
}

TEST_F(FileAttributesTest, OtherPageSizesChangeNothing) {
    Bytes before = specification();
    for (int32_t value : {10, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(VantrelFileAttributesSetPageSize(attributes, value, 1), 2002);
    EXPECT_EQ(specification(), before);
    EXPECT_EQ(VantrelFileAttributesSetPageSize(nullptr, 10, 1), 2007);
}

TEST_F(FileAttributesTest, FileVersionsAreCodes) {
    const uint8_t codes[] = {0x60, 0x61, 0x70, 0x80, 0x90, 0x95, 0x00, 0xD0, 0xD3};
    for (int32_t value = 0; value < 9; ++value) {
        storeU16(attributes->specification.version, 0xFFFF);
        EXPECT_EQ(VantrelFileAttributesSetFileVersion(attributes, value), 0);
        EXPECT_EQ(bytesIn(attributes->specification.version), (Bytes{codes[value], 0}));
    }
    EXPECT_EQ(specification()[18], 0xD3);
    Bytes before = specification();
    for (int32_t value : {9, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(VantrelFileAttributesSetFileVersion(attributes, value), 2002);
    EXPECT_EQ(specification(), before);
    EXPECT_EQ(VantrelFileAttributesSetFileVersion(nullptr, 9), 2007);
}

TEST_F(FileAttributesTest, ReservedDuplicatePointersAreAFlagAndAByte) {
    EXPECT_EQ(VantrelFileAttributesSetReservedDuplicatePointerCount(attributes, 1), 0);
    EXPECT_EQ(flags(), 0x0100);
    EXPECT_EQ(VantrelFileAttributesSetReservedDuplicatePointerCount(attributes, 255), 0);
    Bytes expected(32);
    expected[3] = 0x10;
    expected[5] = 0x01;
    expected[20] = 255;
    EXPECT_EQ(specification(), expected);
    for (int32_t count : {256, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(VantrelFileAttributesSetReservedDuplicatePointerCount(attributes, count), 2002);
    EXPECT_EQ(specification(), expected);
    setFlags(0xFFFF);
    EXPECT_EQ(VantrelFileAttributesSetReservedDuplicatePointerCount(attributes, 0), 0);
    EXPECT_EQ(flags(), 0xFEFF);
    EXPECT_EQ(attributes->specification.duplicatePointerCount, 0);
    EXPECT_EQ(VantrelFileAttributesSetReservedDuplicatePointerCount(nullptr, 256), 2007);
}

TEST_F(FileAttributesTest, PreallocatedPagesAreAFlagAndACount) {
    EXPECT_EQ(VantrelFileAttributesSetPreallocatedPageCount(attributes, 1), 0);
    EXPECT_EQ(flags(), 0x0004);
    EXPECT_EQ(VantrelFileAttributesSetPreallocatedPageCount(attributes, 65535), 0);
    EXPECT_EQ(loadU16(attributes->specification.pageCount), 65535);
    EXPECT_EQ(VantrelFileAttributesSetPreallocatedPageCount(attributes, 0x0164), 0);
    Bytes expected(32);
    expected[3] = 0x10;
    expected[4] = 0x04;
    expected[22] = 0x64;
    expected[23] = 0x01;
    EXPECT_EQ(specification(), expected);
    for (int32_t count : {65536, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(VantrelFileAttributesSetPreallocatedPageCount(attributes, count), 2002);
    EXPECT_EQ(specification(), expected);
    setFlags(0xFFFF);
    EXPECT_EQ(VantrelFileAttributesSetPreallocatedPageCount(attributes, 0), 0);
    EXPECT_EQ(flags(), 0xFFFB);
    EXPECT_EQ(loadU16(attributes->specification.pageCount), 0);
    EXPECT_EQ(VantrelFileAttributesSetPreallocatedPageCount(nullptr, 65536), 2007);
}

TEST_F(FileAttributesTest, ModesAreBitsOfTheFlags) {
    expectModes(VantrelFileAttributesSetRecordCompressionMode, 0x000A, {0x0000, 0x0002, 0x0008});
    expectModes(VantrelFileAttributesSetVariableLengthRecordsMode, 0x0801, {0x0000, 0x0001, 0x0801});
    expectModes(VantrelFileAttributesSetFreeSpaceThreshold, 0x00C0, {0x0040, 0x0080, 0x00C0, 0x0000});
    expectModes(VantrelFileAttributesSetSystemDataMode, 0x5200, {0x0200, 0x1200, 0x0000, 0x4200});
}

TEST_F(FileAttributesTest, AModeReplacesAnotherOne) {
    EXPECT_EQ(VantrelFileAttributesSetRecordCompressionMode(attributes, 1), 0);
    EXPECT_EQ(VantrelFileAttributesSetRecordCompressionMode(attributes, 2), 0);
    EXPECT_EQ(VantrelFileAttributesSetSystemDataMode(attributes, 1), 0);
    EXPECT_EQ(VantrelFileAttributesSetSystemDataMode(attributes, 3), 0);
    EXPECT_EQ(flags(), 0x4208);
}

TEST_F(FileAttributesTest, OptionsAreFlags) {
    expectFlag(VantrelFileAttributesSetBalancedIndexes, 0x0020);
    expectFlag(VantrelFileAttributesSetKeyOnly, 0x0010);
}

}  // namespace
