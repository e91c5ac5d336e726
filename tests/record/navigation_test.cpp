#include "record/record_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class NavigationTest : public RecordTest {
  protected:
    int32_t first(VantrelIndex index, void *keyGiven) {
        return VantrelFileRecordRetrieveFirst(file, index, keyGiven, 3, record, 8, 0);
    }
    int32_t last(VantrelIndex index, void *keyGiven) {
        return VantrelFileRecordRetrieveLast(file, index, keyGiven, 3, record, 8, 0);
    }
    int32_t next(void *keyGiven) { return VantrelFileRecordRetrieveNext(file, keyGiven, 3, record, 8, 0); }
    int32_t previous(void *keyGiven) {
        return VantrelFileRecordRetrievePrevious(file, keyGiven, 3, record, 8, 0);
    }

    const EngineCall &latestCall() { return engine.calls().back(); }

    uint8_t key[3] = {9, 8, 7};
    uint8_t record[8] = {};
};

TEST_F(NavigationTest, OnlyThePhysicalOrderSteps) {
    const struct {
        int32_t index, sentNumber;
        uint32_t first, last, next, previous;
    } rows[] = {{-1, -1, 33, 34, 24, 35}, {0, 0, 12, 13, 6, 7},     {118, 118, 12, 13, 6, 7},
                {124, 124, 12, 13, 6, 7}, {125, 125, 12, 13, 6, 7}, {-7, -1, 12, 13, 6, 7},
                {-2, -2, 12, 13, 6, 7},   {119, 119, 12, 13, 6, 7}};
    for (auto row : rows) {
        cacheKey(row.index, 0);
        EXPECT_EQ(first(row.index, key), 8);
        expectCall(latestCall(), row.first, row.sentNumber);
        EXPECT_EQ(last(row.index, key), 8);
        expectCall(latestCall(), row.last, row.sentNumber);
        EXPECT_EQ(next(key), 8);
        expectCall(latestCall(), row.next, row.sentNumber);
        EXPECT_EQ(previous(key), 8);
        expectCall(latestCall(), row.previous, row.sentNumber);
    }
}

TEST_F(NavigationTest, LocksAndKeysAloneAreAddedToPhysicalSteps) {
    cacheKey(-1, 0);
    EXPECT_EQ(VantrelFileRecordRetrieveFirst(file, -1, key, 3, record, 8, 1), 8);
    EXPECT_EQ(latestCall().operation, 133u);
    EXPECT_EQ(VantrelFileRecordRetrieveLast(file, -1, key, 3, record, 8, 2), 8);
    EXPECT_EQ(latestCall().operation, 234u);
    EXPECT_EQ(VantrelFileRecordRetrieveNext(file, key, 3, record, 8, 3), 8);
    EXPECT_EQ(latestCall().operation, 324u);
    EXPECT_EQ(VantrelFileRecordRetrievePrevious(file, key, 3, record, 8, 4), 8);
    EXPECT_EQ(latestCall().operation, 435u);
    EXPECT_EQ(VantrelFileRecordRetrieveFirst(file, -1, key, 3, nullptr, 0, 0), 0);
    EXPECT_EQ(latestCall().operation, 83u);
    EXPECT_EQ(VantrelFileRecordRetrieveLast(file, -1, key, 3, nullptr, 0, 0), 0);
    EXPECT_EQ(latestCall().operation, 84u);
    EXPECT_EQ(VantrelFileRecordRetrieveNext(file, key, 3, nullptr, 0, 0), 0);
    EXPECT_EQ(latestCall().operation, 74u);
    EXPECT_EQ(VantrelFileRecordRetrievePrevious(file, key, 3, nullptr, 0, 0), 0);
    EXPECT_EQ(latestCall().operation, 85u);
}

TEST_F(NavigationTest, RightAfterOpenNextAndPreviousGoAlongNoIndex) {
    cacheKey(-7, 0);
    EXPECT_EQ(next(nullptr), 8);
    expectCall(latestCall(), 6, -1);
    expectKeyBuffer(latestCall(), 0);
    expectCachedKey(-7, 0);
    EXPECT_EQ(previous(key), 8);
    expectCall(latestCall(), 7, -1);
    expectKeyBuffer(latestCall(), 3);
    expectCachedKey(-7, 0);
}

TEST_F(NavigationTest, NextAndPreviousFollowTheOrderUsedLast) {
    EXPECT_EQ(first(2, key), 8);
    EXPECT_EQ(next(nullptr), 8);
    expectCall(latestCall(), 6, 2);
    expectKeyBuffer(latestCall(), 3);
    EXPECT_EQ(last(-1, key), 8);
    EXPECT_EQ(previous(nullptr), 8);
    expectCall(latestCall(), 35, -1);
    expectKeyBuffer(latestCall(), 0);
    EXPECT_EQ(next(nullptr), 8);
    expectCall(latestCall(), 24, -1);
    EXPECT_EQ(VantrelFileRecordUpdate(file, record, 8), 0);
    EXPECT_EQ(VantrelFileRecordDelete(file), 0);
    EXPECT_EQ(VantrelFileGetCursorPosition(file), 0);
    EXPECT_EQ(next(nullptr), 8);
    expectCall(latestCall(), 24, -1);
}

TEST_F(NavigationTest, WithoutAKeyTheKeyFoundLastGoesAlong) {
    EXPECT_EQ(next(nullptr), 8);
    expectCall(latestCall(), 6, 3);
    expectKeyBuffer(latestCall(), 5);
    EXPECT_EQ(latestCall().keyBytes, Bytes(5, 0x4B));
    expectCachedKey(3, 5);
    EXPECT_EQ(previous(nullptr), 8);
    expectKeyBuffer(latestCall(), 5);
    expectCachedKey(3, 5);
}

TEST_F(NavigationTest, WithoutAKeyFirstAndLastSendWhatTheIndexHolds) {
    const struct {
        int32_t index, sentNumber, sentLength, cachedNumber;
        uint32_t cachedLength;
    } rows[] = {{3, 3, 5, 3, 5}, {4, 4, 1024, 4, 1024}, {-1, -1, 0, -1, 0}, {-7, -1, 0, 3, 5}};
    for (auto row : rows) {
        cacheKey(3, 5);
        EXPECT_EQ(first(row.index, nullptr), 8);
        EXPECT_EQ(latestCall().keyNumber, row.sentNumber);
        expectKeyBuffer(latestCall(), row.sentLength);
        expectCachedKey(row.cachedNumber, row.cachedLength);
        cacheKey(3, 5);
        EXPECT_EQ(last(row.index, nullptr), 8);
        EXPECT_EQ(latestCall().keyNumber, row.sentNumber);
        expectKeyBuffer(latestCall(), row.sentLength);
        expectCachedKey(row.cachedNumber, row.cachedLength);
    }
}

TEST_F(NavigationTest, ANegativeKeyLengthIsRefusedWithoutAKeyToo) {
    EXPECT_EQ(VantrelFileRecordRetrieveFirst(file, 2, nullptr, -1, record, 8, 0), -1);
    expectRefused(2002);
    EXPECT_EQ(VantrelFileRecordRetrieveNext(file, nullptr, -1, record, 8, 0), -1);
    expectRefused(2002);
}

}  // namespace
