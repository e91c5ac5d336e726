#include "record/record_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class RecordCreateTest : public RecordTest {};

TEST_F(RecordCreateTest, SendsTheRecordWithTheCachedKey) {
    uint8_t record[] = {1, 2, 3, 4};
    engine.reply({.status = 5, .key = {6, 6}});
    EXPECT_EQ(VantrelFileRecordCreate(file, record, 4), 5);
    EXPECT_EQ(fileStatus(), 5);

    expectCall(engine.onlyCall(), 2, 3);
    expectData(engine.onlyCall(), record, 4);
    EXPECT_EQ(engine.onlyCall().dataBytes, (Bytes{1, 2, 3, 4}));
    expectKeyBuffer(engine.onlyCall(), 5);
    EXPECT_EQ(engine.onlyCall().keyBytes, Bytes(5, 0x4B));
    EXPECT_EQ(keyBuffer(3), (Bytes{6, 6, 0x4B}));
    expectCachedKey(3, 5);
}

TEST_F(RecordCreateTest, RightAfterOpenThereIsNoKeyNumber) {
    cacheKey(-7, 0);
    uint8_t record[] = {1};
    EXPECT_EQ(VantrelFileRecordCreate(file, record, 1), 0);
    expectCall(engine.onlyCall(), 2, -1);
    expectKeyBuffer(engine.onlyCall(), 0);
    expectCachedKey(-7, 0);
}

TEST_F(RecordCreateTest, AfterAReadItNamesTheIndexRead) {
    uint8_t key[10] = {}, record[4] = {};
    EXPECT_EQ(VantrelFileRecordRetrieve(file, 1, 2, key, 10, record, 4, 0), 4);
    EXPECT_EQ(VantrelFileRecordCreate(file, record, 4), 0);
    expectCall(engine.calls().at(1), 2, 2);
    expectKeyBuffer(engine.calls().at(1), 10);
}

TEST_F(RecordCreateTest, AfterAPhysicalReadItNamesNone) {
    uint8_t key[10] = {}, record[4] = {};
    EXPECT_EQ(VantrelFileRecordRetrieveFirst(file, -1, key, 10, record, 4, 0), 4);
    EXPECT_EQ(VantrelFileRecordCreate(file, record, 4), 0);
    expectCall(engine.calls().at(1), 2, -1);
    expectKeyBuffer(engine.calls().at(1), 0);
    expectCachedKey(-1, 10);
}

TEST_F(RecordCreateTest, TheEngineMayFillTheRecord) {
    uint8_t record[] = {0, 0};
    engine.reply({.data = {7, 8}});
    EXPECT_EQ(VantrelFileRecordCreate(file, record, 2), 0);
    EXPECT_EQ(record[0], 7);
    EXPECT_EQ(record[1], 8);
}

TEST_F(RecordCreateTest, TakesLengthsUpTo65535) {
    std::vector<uint8_t> record(65535);
    EXPECT_EQ(VantrelFileRecordCreate(file, record.data(), 65535), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 65535u);
    engine.reset();
    EXPECT_EQ(VantrelFileRecordCreate(file, nullptr, 0), 0);
    expectData(engine.onlyCall(), nullptr, 0);
}

TEST_F(RecordCreateTest, RefusesLongerRecordsBeforeAMissingClient) {
    uint8_t record[4] = {};
    makeFileUnusable();
    for (uint32_t length : {65536u, 0xFFFFFFFFu}) {
        EXPECT_EQ(VantrelFileRecordCreate(file, record, length), 2002);
        expectRefused(2002);
    }
    EXPECT_EQ(VantrelFileRecordCreate(file, record, 4), 2007);
    expectRefused(2007);
    EXPECT_EQ(VantrelFileRecordCreate(nullptr, record, 65536), 3);
    expectRefused(untouchedStatus);
}

class RecordUpdateTest : public RecordTest {};

TEST_F(RecordUpdateTest, SendsTheRecordWithoutTheCachedKey) {
    const uint8_t record[] = {1, 2, 3, 4};
    engine.reply({.status = 80});
    EXPECT_EQ(VantrelFileRecordUpdate(file, record, 4), 80);
    EXPECT_EQ(fileStatus(), 80);
    expectCall(engine.onlyCall(), 3, -1);
    expectData(engine.onlyCall(), record, 4);
    EXPECT_EQ(engine.onlyCall().dataBytes, (Bytes{1, 2, 3, 4}));
    expectKeyBuffer(engine.onlyCall(), 0);
    expectCachedKey(3, 5);
}

TEST_F(RecordUpdateTest, TakesLengthsUpTo65535) {
    std::vector<uint8_t> record(65535);
    EXPECT_EQ(VantrelFileRecordUpdate(file, record.data(), 65535), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 65535u);
    engine.reset();
    EXPECT_EQ(VantrelFileRecordUpdate(file, nullptr, 0), 0);
    expectData(engine.onlyCall(), nullptr, 0);
}

TEST_F(RecordUpdateTest, RefusesLongerRecordsBeforeAMissingClient) {
    uint8_t record[4] = {};
    makeFileUnusable();
    for (uint32_t length : {65536u, 0xFFFFFFFFu}) {
        EXPECT_EQ(VantrelFileRecordUpdate(file, record, length), 2002);
        expectRefused(2002);
    }
    EXPECT_EQ(VantrelFileRecordUpdate(file, record, 4), 2007);
    expectRefused(2007);
    EXPECT_EQ(VantrelFileRecordUpdate(nullptr, record, 65536), 3);
    expectRefused(untouchedStatus);
}

class RecordDeleteTest : public RecordTest {};

TEST_F(RecordDeleteTest, SendsNeitherDataNorKey) {
    engine.reply({.status = 8});
    EXPECT_EQ(VantrelFileRecordDelete(file), 8);
    EXPECT_EQ(fileStatus(), 8);
    expectCall(engine.onlyCall(), 4, 0);
    expectData(engine.onlyCall(), nullptr, 0);
    expectNoKey(engine.onlyCall());
    expectCachedKey(3, 5);
}

TEST_F(RecordDeleteTest, RefusesAMissingFileAndAFileWithoutAClient) {
    EXPECT_EQ(VantrelFileRecordDelete(nullptr), 3);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    EXPECT_EQ(VantrelFileRecordDelete(file), 2007);
    expectRefused(2007);
}

class RecordRetrieveTest : public RecordTest {
  protected:
    int32_t retrieve(VantrelComparison comparison, VantrelIndex index) {
        return VantrelFileRecordRetrieve(file, comparison, index, key, 3, record, 8, 0);
    }

    uint8_t key[3] = {9, 8, 7};
    uint8_t record[8] = {};
};

TEST_F(RecordRetrieveTest, EachComparisonHasItsOperation) {
    const struct {
        int32_t comparison;
        uint32_t operation;
    } rows[] = {{1, 5}, {2, 8}, {3, 10}, {5, 9}, {6, 11}};
    for (auto row : rows) {
        engine.reset();
        EXPECT_EQ(retrieve(row.comparison, 2), 8);
        expectCall(engine.onlyCall(), row.operation, 2);
    }
}

TEST_F(RecordRetrieveTest, RefusesOtherComparisons) {
    for (int32_t comparison : {0, 4, 7, 8, 9, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(retrieve(comparison, 2), -1);
        expectRefused(2002);
    }
}

TEST_F(RecordRetrieveTest, RefusesAMissingKeyFirst) {
    makeFileUnusable();
    EXPECT_EQ(VantrelFileRecordRetrieve(file, 4, 2, nullptr, -1, record, 65536, 5), -1);
    expectRefused(2007);
    EXPECT_EQ(retrieve(4, 2), -1);
    expectRefused(2002);
}

TEST_F(RecordRetrieveTest, PassesAnyIndex) {
    for (int32_t index : {0, 118, 119, 123, 124, 125, 126, -1, -2, INT_MAX}) {
        engine.reset();
        EXPECT_EQ(retrieve(1, index), 8);
        expectCall(engine.onlyCall(), 5, index);
        expectCachedKey(index, 3);
    }
}

TEST_F(RecordRetrieveTest, TheIndexThatStandsForNoneIsSentAsThePhysicalOrderAndNotCached) {
    EXPECT_EQ(retrieve(1, -7), 8);
    expectCall(engine.onlyCall(), 5, -1);
    expectKeyBuffer(engine.onlyCall(), 3);
    expectCachedKey(3, 5);
}

}  // namespace
