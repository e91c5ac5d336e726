#include "bulk/handles.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

constexpr size_t areaSize = 258048;

// One record of a bulk retrieve's reply.
Bytes replyRecord(uint16_t length, VantrelCursorPosition position, uint8_t filler) {
    Bytes record(10u + length, filler);
    storeU16(record.data(), length);
    storeI64(record.data() + 2, position);
    return record;
}

class BulkRetrieveResultTest : public FileTest {
  protected:
    BulkRetrieveResultTest() { keepStatus(result.get(), untouchedStatus); }

    void writeReply(const Bytes &reply) { std::copy(reply.begin(), reply.end(), result->area); }
    // Three records of 3, 0 and 300 bytes.
    void writeThreeRecords() {
        writeReply(Bytes{3, 0} + replyRecord(3, 0x0102030405060708, 0xA1) + replyRecord(0, -2, 0) +
                   replyRecord(300, 77, 0xA3));
    }
    void expectFailure(int64_t value, VantrelStatus status) {
        EXPECT_EQ(value, -1);
        EXPECT_EQ(VantrelBulkRetrieveResultGetLastStatusCode(result), status);
        keepStatus(result.get(), untouchedStatus);
    }
    void expectEveryGetterToFail(int32_t index, VantrelStatus status) {
        uint8_t buffer[1];
        expectFailure(VantrelBulkRetrieveResultGetRecordLength(result, index), status);
        expectFailure(VantrelBulkRetrieveResultGetRecordCursorPosition(result, index), status);
        expectFailure(VantrelBulkRetrieveResultGetRecord(result, index, buffer, 1), status);
    }
    VantrelCursorPosition position(int32_t index) {
        return VantrelBulkRetrieveResultGetRecordCursorPosition(result, index);
    }

    RetrieveResult result;
};

TEST(BulkResults, AllocateGivesEmptyRecords) {
    RetrieveResult retrieved;
    DeleteResult deleted;
    EXPECT_EQ(bytesOfRecord(retrieved.get()), Bytes(258070));
    EXPECT_EQ(bytesOfRecord(deleted.get()), Bytes(258052));
}

TEST(BulkResults, AllocateRefusesAMissingOutPointer) {
    EXPECT_EQ(VantrelBulkRetrieveResultAllocate(nullptr), 2007);
    EXPECT_EQ(VantrelBulkDeleteResultAllocate(nullptr), 2007);
}

TEST(BulkResults, MemoryRunsOut) {
    RetrieveResult someResult;
    DeleteResult otherResult;
    VantrelBulkRetrieveResult *retrieved = someResult;
    VantrelBulkDeleteResult *deleted = otherResult;
    FailingAllocation failing;
    EXPECT_EQ(VantrelBulkRetrieveResultAllocate(&retrieved), 101);
    EXPECT_EQ(VantrelBulkDeleteResultAllocate(&deleted), 101);
    EXPECT_EQ(retrieved, nullptr);
    EXPECT_EQ(deleted, nullptr);
}

TEST(BulkResults, MissingResults) {
    uint8_t buffer[1];
    EXPECT_EQ(VantrelBulkRetrieveResultFree(nullptr), 2007);
    EXPECT_EQ(VantrelBulkRetrieveResultGetLastStatusCode(nullptr), 2007);
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecordCount(nullptr), -1);
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecordLength(nullptr, 1), -1);
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecordCursorPosition(nullptr, 1), -1);
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecord(nullptr, 1, buffer, 1), -1);
    EXPECT_EQ(VantrelBulkDeleteResultFree(nullptr), 2007);
    EXPECT_EQ(VantrelBulkDeleteResultGetLastStatusCode(nullptr), 2007);
    EXPECT_EQ(VantrelBulkDeleteResultGetRecordCount(nullptr), -1);
    EXPECT_EQ(VantrelBulkDeleteResultGetRecordCursorPosition(nullptr, 1), -1);
}

TEST_F(BulkRetrieveResultTest, FreshResultHasNoRecords) {
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecordCount(result), 0);
    expectEveryGetterToFail(1, 2002);
}

TEST_F(BulkRetrieveResultTest, LastStatusStays) {
    EXPECT_EQ(VantrelBulkRetrieveResultGetLastStatusCode(result), untouchedStatus);
    EXPECT_EQ(VantrelBulkRetrieveResultGetLastStatusCode(result), untouchedStatus);
}

TEST_F(BulkRetrieveResultTest, RecordCountClearsTheLastStatus) {
    writeReply({0xFF, 0xFF});
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecordCount(result), 65535);
    EXPECT_EQ(VantrelBulkRetrieveResultGetLastStatusCode(result), 0);
}

TEST_F(BulkRetrieveResultTest, GettersReadRecordsInAnyOrderAndClearTheLastStatus) {
    writeThreeRecords();
    const Bytes area(result->area, result->area + areaSize);
    for (int32_t index : {1, 2, 3, 3, 2, 1, 3, 1}) {
        keepStatus(result.get(), untouchedStatus);
        const int32_t lengths[] = {3, 0, 300};
        EXPECT_EQ(VantrelBulkRetrieveResultGetRecordLength(result, index), lengths[index - 1]);
        EXPECT_EQ(VantrelBulkRetrieveResultGetLastStatusCode(result), 0);
        keepStatus(result.get(), untouchedStatus);
        const VantrelCursorPosition positions[] = {0x0102030405060708, -2, 77};
        EXPECT_EQ(position(index), positions[index - 1]);
        EXPECT_EQ(VantrelBulkRetrieveResultGetLastStatusCode(result), 0);
    }
    EXPECT_EQ(Bytes(result->area, result->area + areaSize), area);
}

TEST_F(BulkRetrieveResultTest, GetRecordCopiesJustTheRecord) {
    writeThreeRecords();
    Bytes buffer(5, 0xEE);
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecord(result, 1, buffer.data() + 1, 3), 3);
    EXPECT_EQ(buffer, (Bytes{0xEE, 0xA1, 0xA1, 0xA1, 0xEE}));
    EXPECT_EQ(VantrelBulkRetrieveResultGetLastStatusCode(result), 0);
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecord(result, 2, buffer.data() + 1, 0), 0);
    EXPECT_EQ(buffer, (Bytes{0xEE, 0xA1, 0xA1, 0xA1, 0xEE}));
    Bytes large(310, 0xEE);
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecord(result, 3, large.data(), 310), 300);
    EXPECT_EQ(large, Bytes(300, 0xA3) + Bytes(10, 0xEE));
}

TEST_F(BulkRetrieveResultTest, GetRecordCopiesNothingIntoTooSmallABuffer) {
    writeThreeRecords();
    Bytes buffer(4, 0xEE);
    expectFailure(VantrelBulkRetrieveResultGetRecord(result, 1, buffer.data(), 2), 2002);
    expectFailure(VantrelBulkRetrieveResultGetRecord(result, 1, buffer.data(), -1), 2002);
    expectFailure(VantrelBulkRetrieveResultGetRecord(result, 2, buffer.data(), INT32_MIN), 2002);
    EXPECT_EQ(buffer, Bytes(4, 0xEE));
}

TEST_F(BulkRetrieveResultTest, MissingBufferComesBeforeSizeAndIndex) {
    writeThreeRecords();
    expectFailure(VantrelBulkRetrieveResultGetRecord(result, 1, nullptr, 0), 2007);
    expectFailure(VantrelBulkRetrieveResultGetRecord(result, 4, nullptr, -1), 2007);
}

TEST_F(BulkRetrieveResultTest, IndexesRunFrom1ToTheCount) {
    writeThreeRecords();
    for (int32_t index : {0, -1, 4, INT32_MIN, INT32_MAX})
        expectEveryGetterToFail(index, 2002);
}

TEST_F(BulkRetrieveResultTest, RecordsMayEndWithTheArea) {
    Bytes reply = Bytes{4, 0} + replyRecord(65000, 1, 1) + replyRecord(65000, 2, 2) +
                  replyRecord(65000, 3, 3) + replyRecord(63006, 4, 4);
    ASSERT_EQ(reply.size(), areaSize);
    writeReply(reply);
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecordLength(result, 4), 63006);
    EXPECT_EQ(position(4), 4);
    Bytes buffer(63006);
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecord(result, 4, buffer.data(), 63006), 63006);
    EXPECT_EQ(buffer, Bytes(63006, 4));
    result->area[0] = 5;
    expectEveryGetterToFail(5, 22);
    expectEveryGetterToFail(6, 2002);
}

TEST_F(BulkRetrieveResultTest, RecordWhoseBytesCrossTheEndOfTheAreaIsRefused) {
    Bytes reply = Bytes{6, 0} + replyRecord(65000, 1, 1) + replyRecord(65000, 2, 2) +
                  replyRecord(65000, 3, 3) + replyRecord(63006, 4, 4);
    reply[2 + 3 * 65010] = static_cast<uint8_t>(63007 & 0xFF);
    writeReply(reply);
    EXPECT_EQ(VantrelBulkRetrieveResultGetRecordLength(result, 3), 65000);
    for (int32_t index : {4, 5, 6, 4})
        expectEveryGetterToFail(index, 22);
    EXPECT_EQ(position(1), 1);
}

TEST_F(BulkRetrieveResultTest, RecordWhoseHeadCrossesTheEndOfTheAreaIsRefused) {
    Bytes reply = Bytes{5, 0} + replyRecord(65000, 1, 1) + replyRecord(65000, 2, 2) +
                  replyRecord(65000, 3, 3) + replyRecord(62997, 4, 4) + Bytes(9);
    ASSERT_EQ(reply.size(), areaSize);
    writeReply(reply);
    EXPECT_EQ(position(4), 4);
    expectEveryGetterToFail(5, 22);
}

TEST_F(BulkRetrieveResultTest, FullReplyOfShortRecords) {
    constexpr int32_t count = 25804;
    Bytes reply(2 + 10 * count);
    storeU16(reply.data(), count);
    for (int32_t record = 0; record < count; ++record)
        storeI64(reply.data() + 2 + 10 * record + 2, 1000 + record);
    writeReply(reply);
    for (int32_t index = 1; index <= count; ++index)
        ASSERT_EQ(position(index), 999 + index);
    EXPECT_EQ(position(1), 1000);
    EXPECT_EQ(position(count), 26803);
}

TEST_F(BulkRetrieveResultTest, ReadingOnStartsAtTheRecordLastFound) {
    writeThreeRecords();
    EXPECT_EQ(position(2), -2);
    storeU16(result->area + 2, 65000);  // a walk from the start would now miss the third
    EXPECT_EQ(position(3), 77);
    EXPECT_EQ(position(3), 77);
    EXPECT_NE(position(2), -2);
}

TEST_F(BulkRetrieveResultTest, RecordLastFoundIsForgottenWhereTheAreaHasChanged) {
    writeThreeRecords();
    EXPECT_EQ(position(3), 77);
    writeReply(Bytes{3, 0} + replyRecord(1, 11, 1) + replyRecord(1, 12, 2) + replyRecord(1, 13, 3));
    EXPECT_EQ(position(3), 13);
    writeThreeRecords();
    EXPECT_EQ(position(3), 77);
}

TEST_F(BulkRetrieveResultTest, RecordLastFoundIsForgottenAtTheNextRetrieve) {
    RetrieveAttributes attributes;
    // The same head at the same place, but as the third record instead of the second.
    engine.reply({.data = Bytes{2, 0} + replyRecord(20, 1, 0) + replyRecord(4, 2, 0x22)});
    engine.reply(
        {.data = Bytes{3, 0} + replyRecord(5, 1, 0) + replyRecord(5, 3, 0) + replyRecord(4, 2, 0x22)});
    VantrelFileBulkRetrieveNext(file, attributes, result, VANTREL_LOCK_MODE_NONE);
    EXPECT_EQ(position(2), 2);
    VantrelFileBulkRetrieveNext(file, attributes, result, VANTREL_LOCK_MODE_NONE);
    EXPECT_EQ(position(2), 3);
    EXPECT_EQ(position(3), 2);
}

TEST_F(BulkRetrieveResultTest, RecordLastFoundIsForgottenByARefusedRequest) {
    RetrieveAttributes attributes;
    Filter unfinished;
    VantrelBulkRetrieveAttributesAddFilter(attributes, unfinished);
    writeThreeRecords();
    EXPECT_EQ(position(2), -2);
    EXPECT_EQ(VantrelFileBulkRetrieveNext(file, attributes, result, VANTREL_LOCK_MODE_NONE), 2002);
    EXPECT_EQ(loadU32(result->foundNumber), 0u);
}

class BulkDeleteResultTest : public testing::Test {
  protected:
    DeleteResult result;
};

TEST_F(BulkDeleteResultTest, FreshResultHasNoRecords) {
    EXPECT_EQ(VantrelBulkDeleteResultGetRecordCount(result), 0);
    EXPECT_EQ(VantrelBulkDeleteResultGetRecordCursorPosition(result, 1), -1);
    EXPECT_EQ(VantrelBulkDeleteResultGetLastStatusCode(result), 2002);
}

TEST_F(BulkDeleteResultTest, PositionsLieTenBytesApart) {
    const Bytes reply = {3, 0, 0xFF, 0xFF, 8, 7, 6, 5, 4,    3,    2,    1,    9,    9,    2,    0,
                         0, 0, 0,    0,    0, 0, 0, 0, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    std::copy(reply.begin(), reply.end(), result->area);
    const VantrelCursorPosition positions[] = {0x0102030405060708, 2, -2};
    for (int32_t index : {1, 3, 2}) {
        keepStatus(result.get(), untouchedStatus);
        EXPECT_EQ(VantrelBulkDeleteResultGetRecordCursorPosition(result, index), positions[index - 1]);
        EXPECT_EQ(VantrelBulkDeleteResultGetLastStatusCode(result), 0);
    }
    for (int32_t index : {0, -1, 4, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(VantrelBulkDeleteResultGetRecordCursorPosition(result, index), -1);
        EXPECT_EQ(VantrelBulkDeleteResultGetLastStatusCode(result), 2002);
        EXPECT_EQ(VantrelBulkDeleteResultGetLastStatusCode(result), 2002);
    }
    EXPECT_EQ(VantrelBulkDeleteResultGetRecordCount(result), 3);
    EXPECT_EQ(VantrelBulkDeleteResultGetLastStatusCode(result), 0);
}

TEST_F(BulkDeleteResultTest, EntriesThatCrossTheEndOfTheAreaAreRefused) {
    storeU16(result->area, 65535);
    storeI64(result->area + 2 + 10 * 25803 + 2, 44);
    EXPECT_EQ(VantrelBulkDeleteResultGetRecordCursorPosition(result, 25804), 44);
    for (int32_t index : {25805, 25806, 65535}) {
        EXPECT_EQ(VantrelBulkDeleteResultGetRecordCursorPosition(result, index), -1);
        EXPECT_EQ(VantrelBulkDeleteResultGetLastStatusCode(result), 22);
    }
    EXPECT_EQ(VantrelBulkDeleteResultGetRecordCount(result), 65535);
}

}  // namespace
