#include "embedded/operation/lock_fixture.h"

namespace {

using namespace vantrel::test;

// A file of numbered records, more than a session may lock.
class LockLimitTest : public testing::Test {
  protected:
    static constexpr uint32_t limit = 10000, records = limit + 50;

    LockLimitTest() {
        EXPECT_EQ(session.create(path, createRequest(5, 0, {{{0, 4, extendedType, unsignedType}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        EXPECT_EQ(other.open(&otherBlock, path), 0);
        EXPECT_EQ(session.call(1019, nullptr).status, 0);
        for (uint32_t record = 1; record <= records; ++record)
            EXPECT_EQ(session.call(2, &block, u32(record) + "0", "", -1).status, 0);
        EXPECT_EQ(session.call(20, nullptr).status, 0);
    }

    int32_t read(uint32_t record, uint32_t bias = 0) {
        return session.call(5 + bias, &block, "", u32(record), 0, 5).status;
    }
    int32_t update(uint32_t record) {
        int32_t status = read(record);
        return status != 0 ? status : session.call(3, &block, u32(record) + "1", "", -1).status;
    }
    int32_t readOther(uint32_t record, uint32_t bias) {
        return other.call(5 + bias, &otherBlock, "", u32(record), 0, 5).status;
    }
    bool isLocked(uint32_t record) {
        int32_t status = readOther(record, 200);
        EXPECT_TRUE(status == 0 || status == 84) << status;
        other.call(27, &otherBlock, "", "", 0);
        return status == 84;
    }
    void changeTo(uint32_t last) {
        ASSERT_EQ(session.call(1019, nullptr).status, 0);
        for (uint32_t record = 3; record <= last; ++record)
            ASSERT_EQ(update(record), 0) << record;
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1}, other{2};
    EngineSession::PositionBlock block{}, otherBlock{};
};

TEST_F(LockLimitTest, RecordsChangedBeyondItStayLocked) {
    changeTo(limit + 20);
    for (uint32_t record : {3u, 500u, limit, limit + 3, limit + 20})
        EXPECT_TRUE(isLocked(record)) << record;
    ASSERT_EQ(readOther(limit + 20, 200), 84);
    std::string reply = other.call(65, &otherBlock, "ExSt" + u32(6), "", 0, 104).data;
    EXPECT_EQ(number(reply, 12, 2), 1u);
    EXPECT_EQ(number(reply, 16, 2), 0x0001u | 0x0040u | 0x0800u | 0x2000u);
    EXPECT_EQ(session.call(21, nullptr).status, 0);
    for (uint32_t record : {1u, 3u, 500u, limit, limit + 3, limit + 20, records})
        EXPECT_FALSE(isLocked(record)) << record;
}

TEST_F(LockLimitTest, LocksOfOthersAreLeftToThem) {
    ASSERT_EQ(readOther(limit + 30, 400), 0);
    ASSERT_EQ(readOther(1, 400), 0);
    changeTo(limit + 20);
    EXPECT_EQ(update(limit + 30), 84);
    EXPECT_EQ(read(limit + 30, 200), 130);
    EXPECT_EQ(readOther(2, 400), 84);
    ASSERT_EQ(other.call(27, &otherBlock, "", "", -2).status, 0);
    EXPECT_EQ(update(limit + 30), 0);
    EXPECT_TRUE(isLocked(limit + 30));
    EXPECT_FALSE(isLocked(1));
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_FALSE(isLocked(limit + 30));
}

TEST_F(LockLimitTest, LocksThatWereAskedForOutliveTheTransaction) {
    ASSERT_EQ(read(1, 400), 0);
    ASSERT_EQ(read(700, 400), 0);
    ASSERT_EQ(read(records, 400), 0);
    changeTo(limit + 20);
    EXPECT_EQ(session.call(27, &block, u64(700), "", -1).status, 0);
    EXPECT_TRUE(isLocked(700));
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    for (uint32_t record : {1u, 2u, 3u, 699u, 700u, 701u, records - 1, records})
        EXPECT_EQ(isLocked(record), record == 1 || record == records) << record;
    ASSERT_EQ(readOther(records, 200), 84);
    std::string reply = other.call(65, &otherBlock, "ExSt" + u32(6), "", 0, 104).data;
    EXPECT_EQ(number(reply, 16, 2), 0x0002u | 0x0040u | 0x0800u | 0xC000u);
    ASSERT_EQ(session.call(27, &block, "", "", -2).status, 0);
    EXPECT_FALSE(isLocked(1));
    EXPECT_FALSE(isLocked(records));
}

TEST_F(LockLimitTest, NoMoreMayBeAskedFor) {
    int32_t status = session.call(433, &block, "", "", -1, 5).status;
    uint32_t locked = 0;
    for (; status == 0; ++locked)
        status = session.call(424, &block, "", "", -1, 5).status;
    EXPECT_EQ(locked, limit);
    EXPECT_EQ(status, 130);
    EXPECT_EQ(read(limit + 1, 400), 130);
    EXPECT_EQ(read(limit, 400), 0);
    EXPECT_FALSE(isLocked(limit + 1));
    EXPECT_EQ(session.call(27, &block, u64(7), "", -1).status, 0);
    EXPECT_EQ(read(limit + 1, 400), 0);
    EXPECT_TRUE(isLocked(limit + 1));
}

TEST_F(LockLimitTest, AChangeOutsideATransactionNeedsNoneOfThem) {
    for (uint32_t record = 1; record <= limit; ++record)
        ASSERT_EQ(read(record, 400), 0);
    EXPECT_EQ(update(limit + 1), 0);
    EXPECT_FALSE(isLocked(limit + 1));
    EXPECT_TRUE(isLocked(limit));
    EXPECT_EQ(readOther(limit + 1, 0), 0);
}

TEST_F(LockLimitTest, AWaitForARecordBeyondItEndsWithTheTransaction) {
    changeTo(limit + 20);
    std::future<int32_t> waiter = std::async(std::launch::async, [&] { return readOther(limit + 20, 100); });
    EXPECT_EQ(waiter.wait_for(std::chrono::milliseconds(60)), std::future_status::timeout);
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(waiter.get(), 0);
}

}  // namespace
