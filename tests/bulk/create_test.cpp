#include "bulk/handles.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class BulkCreateTest : public FileTest {
  protected:
    BulkCreateTest() {
        keepStatus(payload.get(), untouchedStatus);
        keepStatus(result.get(), untouchedStatus);
    }

    VantrelStatus add(const Bytes &record) {
        return VantrelBulkCreatePayloadAddRecord(payload, record.data(),
                                                 static_cast<uint32_t>(record.size()));
    }
    Bytes request() const { return Bytes(payload->area, payload->area + loadU32(payload->usedLength)); }
    VantrelCursorPosition position(int32_t index) {
        return VantrelBulkCreateResultGetRecordCursorPosition(result, index);
    }
    Bytes resultBytes(size_t length) const { return Bytes(result->area, result->area + length); }

    CreatePayload payload;
    CreateResult result;
};

TEST(BulkCreateAllocate, GivesEmptyRecords) {
    CreatePayload payload;
    CreateResult result;
    Bytes expected(258056);
    expected[258048] = 4;
    EXPECT_EQ(bytesOfRecord(payload.get()), expected);
    EXPECT_EQ(bytesOfRecord(result.get()), Bytes(258052));
}

TEST(BulkCreateAllocate, RefusesAMissingOutPointer) {
    EXPECT_EQ(VantrelBulkCreatePayloadAllocate(nullptr), 2007);
    EXPECT_EQ(VantrelBulkCreateResultAllocate(nullptr), 2007);
}

TEST(BulkCreateAllocate, MemoryRunsOut) {
    CreatePayload somePayload;
    CreateResult someResult;
    VantrelBulkCreatePayload *payload = somePayload;
    VantrelBulkCreateResult *result = someResult;
    FailingAllocation failing;
    EXPECT_EQ(VantrelBulkCreatePayloadAllocate(&payload), 101);
    EXPECT_EQ(VantrelBulkCreateResultAllocate(&result), 101);
    EXPECT_EQ(payload, nullptr);
    EXPECT_EQ(result, nullptr);
}

TEST(BulkCreateMissing, EveryFunctionAnswers) {
    EXPECT_EQ(VantrelBulkCreatePayloadFree(nullptr), 2007);
    EXPECT_EQ(VantrelBulkCreatePayloadAddRecord(nullptr, nullptr, 65536), 2007);
    EXPECT_EQ(VantrelBulkCreateResultFree(nullptr), 0);
    EXPECT_EQ(VantrelBulkCreateResultGetLastStatusCode(nullptr), 2007);
    EXPECT_EQ(VantrelBulkCreateResultGetRecordCount(nullptr), -1);
    EXPECT_EQ(VantrelBulkCreateResultGetRecordCursorPosition(nullptr, 1), -1);
}

TEST_F(BulkCreateTest, RecordsStandBehindTheirLengths) {
    EXPECT_EQ(add(bytesOf("abc")), 0);
    EXPECT_EQ(VantrelBulkCreatePayloadAddRecord(payload, "", 0), 0);
    EXPECT_EQ(add(bytesOf("d")), 0);
    EXPECT_EQ(request(), (Bytes{3, 0, 0, 0, 3, 0, 0, 0, 'a', 'b', 'c', 0, 0, 0, 0, 1, 0, 0, 0, 'd'}));
    EXPECT_EQ(lastStatus(payload.get()), untouchedStatus);
}

TEST_F(BulkCreateTest, MissingRecordIsKeptAsTheStatus) {
    const Bytes before = request();
    EXPECT_EQ(VantrelBulkCreatePayloadAddRecord(payload, nullptr, 65536), 2007);
    EXPECT_EQ(lastStatus(payload.get()), 2007);
    EXPECT_EQ(request(), before);
}

TEST_F(BulkCreateTest, RecordsHaveAtMost65535Bytes) {
    const Bytes record(65536, 1);
    EXPECT_EQ(add(record), 2002);
    EXPECT_EQ(VantrelBulkCreatePayloadAddRecord(payload, record.data(), 0xFFFFFFFF), 2002);
    EXPECT_EQ(request(), Bytes(4));
    EXPECT_EQ(VantrelBulkCreatePayloadAddRecord(payload, record.data(), 65535), 0);
    EXPECT_EQ(loadU32(payload->usedLength), 65543u);
    EXPECT_EQ(lastStatus(payload.get()), untouchedStatus);
}

TEST_F(BulkCreateTest, RecordsThatDoNotFitAreRefused) {
    const Bytes record(65000, 1);
    for (int count = 0; count < 3; ++count)
        EXPECT_EQ(add(record), 0);
    EXPECT_EQ(loadU32(payload->usedLength), 195016u);
    const Bytes before = bytesOfRecord(payload.get());
    EXPECT_EQ(add(record), 22);
    EXPECT_EQ(add(Bytes(63029, 2)), 22);
    EXPECT_EQ(add(Bytes(65536, 2)), 2002);
    EXPECT_EQ(bytesOfRecord(payload.get()), before);
    EXPECT_EQ(add(Bytes(63028, 2)), 0);
    EXPECT_EQ(loadU32(payload->usedLength), 258048u);
    EXPECT_EQ(VantrelBulkCreatePayloadAddRecord(payload, "", 0), 22);
    EXPECT_EQ(loadU32(payload->area), 4u);
    EXPECT_EQ(lastStatus(payload.get()), untouchedStatus);
}

TEST_F(BulkCreateTest, FullRecordCountIsCheckedBeforeTheRoom) {
    storeU32(payload->area, 0xFFFFFFFF);
    storeU32(payload->usedLength, 258048);
    EXPECT_EQ(add({1}), 101);
    EXPECT_EQ(add(Bytes(65536)), 2002);
    storeU32(payload->usedLength, 4);
    EXPECT_EQ(add({1}), 101);
    EXPECT_EQ(loadU32(payload->area), 0xFFFFFFFFu);
    storeU32(payload->area, 0xFFFFFFFE);
    EXPECT_EQ(add({1}), 0);
}

TEST_F(BulkCreateTest, ResultGetters) {
    const Bytes reply = {2, 0, 0, 0, 8, 7, 6, 5, 4, 3, 2, 1, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    std::copy(reply.begin(), reply.end(), result->area);
    EXPECT_EQ(VantrelBulkCreateResultGetLastStatusCode(result), untouchedStatus);
    EXPECT_EQ(position(1), 0x0102030405060708);
    EXPECT_EQ(VantrelBulkCreateResultGetLastStatusCode(result), 0);
    EXPECT_EQ(position(2), -2);
    for (int32_t index : {0, -1, 3, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(position(index), -1);
        EXPECT_EQ(VantrelBulkCreateResultGetLastStatusCode(result), 2002);
        EXPECT_EQ(VantrelBulkCreateResultGetLastStatusCode(result), 2002);
    }
    EXPECT_EQ(VantrelBulkCreateResultGetRecordCount(result), 2);
    EXPECT_EQ(VantrelBulkCreateResultGetLastStatusCode(result), 0);
}

TEST_F(BulkCreateTest, PositionsStayInTheResult) {
    storeU32(result->area, 0xFFFFFFFF);
    storeI64(result->area + 4 + 8 * 32254, 55);
    EXPECT_EQ(VantrelBulkCreateResultGetRecordCount(result), -1);
    EXPECT_EQ(position(32255), 55);
    for (int32_t index : {32256, INT32_MAX}) {
        EXPECT_EQ(position(index), -1);
        EXPECT_EQ(VantrelBulkCreateResultGetLastStatusCode(result), 22);
    }
}

TEST_F(BulkCreateTest, SendsACopyOfThePayload) {
    add(bytesOf("abcdefghij"));
    cacheKey(3, 9);
    const Bytes before = bytesOfRecord(payload.get());
    engine.reply({.dataLength = 12, .data = {1, 0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 1}});
    EXPECT_EQ(VantrelFileBulkCreate(file, payload, result), 0);

    const EngineCall &call = engine.onlyCall();
    EXPECT_EQ(call.operation, 40u);
    EXPECT_EQ(call.positionBlock, file);
    EXPECT_NE(call.data, payload->area);
    EXPECT_EQ(call.dataLength, 18u);
    EXPECT_EQ(call.dataBytes, (Bytes{1, 0, 0, 0, 10, 0, 0, 0} + bytesOf("abcdefghij")));
    EXPECT_EQ(call.key, file->keyBuffer);
    EXPECT_EQ(call.keyLength, 0);
    EXPECT_EQ(call.keyNumber, -1);
    EXPECT_EQ(call.clientIdentifier, client);
    EXPECT_EQ(bytesOfRecord(payload.get()), before);
    expectCachedKey(3, 9);
    EXPECT_EQ(fileStatus(), 0);
    EXPECT_EQ(lastStatus(client), untouchedStatus);
    EXPECT_EQ(lastStatus(result.get()), untouchedStatus);
    EXPECT_EQ(resultBytes(20), (Bytes{1, 0, 0, 0, 5, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(BulkCreateTest, SendsTheCountAloneWithoutRecords) {
    EXPECT_EQ(VantrelFileBulkCreate(file, payload, result), 0);
    EXPECT_EQ(engine.onlyCall().dataBytes, Bytes(4));
    EXPECT_EQ(VantrelBulkCreateResultGetRecordCount(result), 0);
}

TEST_F(BulkCreateTest, SendsFullPayloads) {
    for (uint32_t length : {65000u, 65000u, 65000u, 63028u})
        add(Bytes(length, static_cast<uint8_t>(length)));
    EXPECT_EQ(VantrelFileBulkCreate(file, payload, result), 0);
    EXPECT_EQ(engine.onlyCall().dataBytes, Bytes(payload->area, payload->area + 258048));
}

TEST_F(BulkCreateTest, ReplyMayBeLongerThanTheRequest) {
    VantrelBulkCreatePayloadAddRecord(payload, "", 0);
    VantrelBulkCreatePayloadAddRecord(payload, "", 0);
    engine.reply({.data = Bytes{2, 0, 0, 0} + Bytes(8, 0x11) + Bytes(8, 0x22)});
    EXPECT_EQ(VantrelFileBulkCreate(file, payload, result), 0);
    EXPECT_EQ(position(1), 0x1111111111111111);
    EXPECT_EQ(position(2), 0x2222222222222222);
}

TEST_F(BulkCreateTest, EngineStatusPassesThroughAndTheReplyIsReadAllTheSame) {
    add(bytesOf("abcdefgh"));
    add(bytesOf("abcdefgh"));
    engine.reply({.status = 5, .dataLength = 12, .data = Bytes{1, 0, 0, 0} + Bytes(8, 0x11)});
    EXPECT_EQ(VantrelFileBulkCreate(file, payload, result), 5);
    EXPECT_EQ(fileStatus(), 5);
    EXPECT_EQ(VantrelBulkCreateResultGetRecordCount(result), 1);
    EXPECT_EQ(position(1), 0x1111111111111111);
}

TEST_F(BulkCreateTest, UnansweredRequestIsReadAsTheReply) {
    add(bytesOf("abcdefgh"));
    engine.reply({.status = 20});
    EXPECT_EQ(VantrelFileBulkCreate(file, payload, result), 20);
    EXPECT_EQ(resultBytes(13), (Bytes{1, 0, 0, 0, 8, 0, 0, 0, 'a', 'b', 'c', 'd', 0}));
    EXPECT_EQ(lastStatus(result.get()), untouchedStatus);
}

TEST_F(BulkCreateTest, NothingIsCopiedThatNobodyWrote) {
    VantrelBulkCreatePayloadAddRecord(payload, "", 0);
    std::fill_n(result->area, 258048, uint8_t{0xEE});
    engine.reply({.status = 20});
    VantrelFileBulkCreate(file, payload, result);
    EXPECT_EQ(resultBytes(258048), (Bytes{1, 0, 0, 0, 0, 0, 0, 0} + Bytes(258040, 0xEE)));
}

TEST_F(BulkCreateTest, CountBeyondTheReplyCopiesWhatWasWritten) {
    std::fill_n(result->area, 258048, uint8_t{0xEE});
    engine.reply({.dataLength = 12, .data = Bytes{0xFF, 0xFF, 0xFF, 0xFF} + Bytes(8, 0x11)});
    VantrelFileBulkCreate(file, payload, result);
    EXPECT_EQ(resultBytes(258048), (Bytes{0xFF, 0xFF, 0xFF, 0xFF} + Bytes(8, 0x11) + Bytes(258036, 0xEE)));
    EXPECT_EQ(lastStatus(result.get()), untouchedStatus);
}

TEST_F(BulkCreateTest, LengthBeyondTheReplyShowsOnlyRequestAndResult) {
    add(bytesOf("ab"));
    std::fill_n(result->area, 258048, uint8_t{0xEE});
    engine.reply({.dataLength = 258048, .data = {0xFF, 0xFF, 0xFF, 0xFF}});
    VantrelFileBulkCreate(file, payload, result);
    EXPECT_EQ(resultBytes(258048),
              (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 2, 0, 0, 0, 'a', 'b'} + Bytes(258038, 0xEE)));
    EXPECT_EQ(lastStatus(result.get()), untouchedStatus);
}

TEST_F(BulkCreateTest, WhatLiesBehindThePositionsStays) {
    add(bytesOf("abcdefgh"));
    VantrelBulkCreatePayloadAddRecord(payload, "", 0);
    std::fill_n(result->area, 258048, uint8_t{0xEE});
    engine.reply({.status = 5, .data = Bytes{1, 0, 0, 0} + Bytes(16, 0x11)});
    VantrelFileBulkCreate(file, payload, result);
    EXPECT_EQ(resultBytes(258048), (Bytes{1, 0, 0, 0} + Bytes(8, 0x11) + Bytes(258036, 0xEE)));
}

TEST_F(BulkCreateTest, CopyEndsWithTheArea) {
    const Bytes reply = Bytes{0xFF, 0xFF, 0xFF, 0x7F} + Bytes(258044, 0x11);
    engine.reply({.dataLength = 0xFFFFFFFF, .data = reply});
    VantrelFileBulkCreate(file, payload, result);
    EXPECT_EQ(resultBytes(258048), reply);
    EXPECT_EQ(lastStatus(result.get()), untouchedStatus);
}

TEST_F(BulkCreateTest, FullReplyIsCopied) {
    for (int count = 0; count < 32255; ++count)
        ASSERT_EQ(VantrelBulkCreatePayloadAddRecord(payload, "abcd", 4), 0);
    Bytes reply = Bytes{0xFF, 0x7D, 0, 0} + Bytes(258040, 0x11);
    engine.reply({.data = reply});
    VantrelFileBulkCreate(file, payload, result);
    EXPECT_EQ(resultBytes(258048), reply + Bytes(4));
    EXPECT_EQ(position(32255), 0x1111111111111111);
}

TEST_F(BulkCreateTest, MissingFileComesFirst) {
    EXPECT_EQ(VantrelFileBulkCreate(nullptr, nullptr, nullptr), 3);
}

TEST_F(BulkCreateTest, MissingPayloadOrResultIsKeptInTheFile) {
    makeFileUnusable();
    EXPECT_EQ(VantrelFileBulkCreate(file, nullptr, result), 2007);
    EXPECT_EQ(fileStatus(), 2007);
    keepStatus(file, untouchedStatus);
    EXPECT_EQ(VantrelFileBulkCreate(file, payload, nullptr), 2007);
    EXPECT_EQ(fileStatus(), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(BulkCreateTest, FileWithoutClientIsRefusedAndTheRequestReadAsTheReply) {
    add(bytesOf("abcdefgh"));
    makeFileUnusable();
    EXPECT_EQ(VantrelFileBulkCreate(file, payload, result), 2007);
    EXPECT_EQ(fileStatus(), 2007);
    EXPECT_TRUE(engine.calls().empty());
    EXPECT_EQ(resultBytes(13), (Bytes{1, 0, 0, 0, 8, 0, 0, 0, 'a', 'b', 'c', 'd', 0}));
}

TEST_F(BulkCreateTest, NeedsNoMemory) {
    FailingAllocation failing;
    EXPECT_EQ(VantrelBulkCreatePayloadAddRecord(payload, "abc", 3), 0);
    EXPECT_EQ(VantrelFileBulkCreate(file, payload, result), 0);
}

}  // namespace
