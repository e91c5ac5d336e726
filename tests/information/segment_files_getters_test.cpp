#include <climits>

#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

constexpr size_t firstEntry = segmentFilesArea + 8;
constexpr size_t segmentFilesEnd = segmentFilesArea + 65535;

class SegmentFilesGettersTest : public InformationTest {
  protected:
    void setEntryCount(uint32_t count) { storeU32(at(segmentFilesArea + 4), count); }

    void putEntry(size_t offset, uint32_t length, const std::string &text) {
        storeU32(at(offset), length);
        put(offset + 4, text);
    }

    // Three entries, the last one without a terminator.
    void putEntries() {
        fill(0xFF);
        setEntryCount(3);
        putEntry(firstEntry, 10, std::string("parts.vnt\0", 10));
        putEntry(firstEntry + 14, 2, std::string("x\0", 2));
        putEntry(firstEntry + 20, 4, "long");
        resetStatus();
    }

    void expectRefused(int32_t segmentNumber, int32_t size) {
        SCOPED_TRACE(segmentNumber);
        GuardedText buffer(20);
        resetStatus();
        EXPECT_EQ(VantrelFileInformationGetSegmentFileName(information, segmentNumber, buffer.get(), size),
                  2002);
        EXPECT_EQ(status(), 2002);
        buffer.expectUntouched();
    }

    void expectName(int32_t segmentNumber, size_t size, const std::string &expected) {
        SCOPED_TRACE(segmentNumber);
        GuardedText buffer(size);
        resetStatus();
        EXPECT_EQ(VantrelFileInformationGetSegmentFileName(information, segmentNumber, buffer.get(),
                                                           static_cast<int32_t>(size)),
                  0);
        EXPECT_EQ(status(), 0);
        buffer.expectContents(expected);
    }
};

TEST_F(SegmentFilesGettersTest, SegmentCountLeavesTheFirstOneOut) {
    auto count = VantrelFileInformationGetSegmentCount;
    EXPECT_EQ(count(nullptr), -1);
    expectReads(count, segmentFilesArea, {0, 0, 0, 0}, 0);
    expectReads(count, segmentFilesArea, {1, 0, 0, 0}, 0);
    expectReads(count, segmentFilesArea, {3, 0, 0, 0}, 2);
    expectReads(count, segmentFilesArea, {0x78, 0x56, 0x34, 0x12}, 0x12345677);
    expectReads(count, segmentFilesArea, {0, 0, 0, 0x80}, INT32_MAX);
    expectReads(count, segmentFilesArea, {0xFF, 0xFF, 0xFF, 0xFF}, -2);
}

TEST_F(SegmentFilesGettersTest, MissingPointers) {
    GuardedText buffer(20);
    EXPECT_EQ(VantrelFileInformationGetSegmentFileName(nullptr, 1, buffer.get(), 20), 2007);
    EXPECT_EQ(VantrelFileInformationGetSegmentFileName(nullptr, 0, nullptr, -1), 2007);
    EXPECT_EQ(status(), 7777);
    buffer.expectUntouched();
    EXPECT_EQ(VantrelFileInformationGetSegmentFileName(information, 0, nullptr, -1), 2007);
    EXPECT_EQ(status(), 2007);
}

TEST_F(SegmentFilesGettersTest, FindsNamesByTheirNumber) {
    putEntries();
    expectName(1, 10, std::string("parts.vnt\0", 10));
    expectName(2, 2, std::string("x\0", 2));
}

TEST_F(SegmentFilesGettersTest, LeavesWhatLiesBehindTheName) {
    putEntries();
    expectName(2, 5, std::string("x\0ZZZ", 5));
}

TEST_F(SegmentFilesGettersTest, TheTerminatorReplacesTheLastByte) {
    putEntries();
    expectName(3, 4, std::string("lon\0", 4));
}

TEST_F(SegmentFilesGettersTest, ANameIsPaddedBehindItsTerminator) {
    setEntryCount(1);
    putEntry(firstEntry, 6, std::string("ab\0cde", 6));
    expectName(1, 6, std::string("ab\0\0\0\0", 6));
}

TEST_F(SegmentFilesGettersTest, RefusesNumbersOutsideTheEntries) {
    putEntries();
    for (int32_t number : {0, -1, INT_MIN, 4, INT_MAX})
        expectRefused(number, 20);
    setEntryCount(0);
    expectRefused(1, 20);
    setEntryCount(2);
    expectRefused(3, 20);
}

TEST_F(SegmentFilesGettersTest, RefusesBuffersSmallerThanTheEntry) {
    putEntries();
    for (int32_t size : {9, 0, -1, INT_MIN})
        expectRefused(1, size);
}

TEST_F(SegmentFilesGettersTest, AnEmptyEntryWritesNothing) {
    setEntryCount(1);
    putEntry(firstEntry, 0, "");
    expectName(1, 0, "");
    expectName(1, 3, "ZZZ");
    expectRefused(1, -1);
}

TEST_F(SegmentFilesGettersTest, AnEntryMayReachTheEndOfTheReply) {
    setEntryCount(2);
    putEntry(firstEntry, 65535 - 8 - 4 - 4 - 4, "");
    putEntry(segmentFilesEnd - 8, 4, std::string("end\0", 4));
    expectName(2, 4, std::string("end\0", 4));
}

TEST_F(SegmentFilesGettersTest, AnEmptyEntryMayEndTheReply) {
    setEntryCount(2);
    putEntry(firstEntry, 65535 - 8 - 4 - 4, "");
    putEntry(segmentFilesEnd - 4, 0, "");
    expectName(2, 0, "");
}

TEST_F(SegmentFilesGettersTest, RefusesAnEntryBeyondTheEndOfTheReply) {
    setEntryCount(2);
    putEntry(firstEntry, 65535 - 8 - 4 - 4 - 4, "");
    putEntry(segmentFilesEnd - 8, 5, "");
    expectRefused(2, 20);
    putEntry(firstEntry, 65535 - 8 - 4 + 1, "");
    expectRefused(1, INT_MAX);
    expectRefused(2, 20);
}

TEST_F(SegmentFilesGettersTest, RefusesALengthBeyondTheEndOfTheReply) {
    setEntryCount(2);
    for (uint32_t lengthBytesLeft : {0u, 1u, 3u}) {
        putEntry(firstEntry, 65535 - 8 - 4 - lengthBytesLeft, "");
        expectRefused(2, 20);
    }
}

TEST_F(SegmentFilesGettersTest, AnAbsurdReplyIsRefused) {
    fill(0xFF);
    expectRefused(1, INT_MAX);
    expectRefused(INT_MAX, INT_MAX);
    fill(0x00);
    setEntryCount(0xFFFFFFFF);
    expectName(16381, 0, "");
    expectRefused(16382, 20);
    expectRefused(INT_MAX, 20);
}

}  // namespace
