#include <chrono>
#include <thread>

#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

class LocksTest : public testing::Test {
  protected:
    LocksTest() {
        EXPECT_EQ(session.create(path, createRequest(2, 0, {{{0, 1}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        EXPECT_EQ(other.open(&otherBlock, path), 0);
        for (const char *record : {"a1", "b1", "c1"})
            EXPECT_EQ(session.call(2, &block, record, "", -1).status, 0);
    }

    int32_t lock(uint32_t bias, const std::string &key) {
        return session.call(5 + bias, &block, "", key, 0, 2).status;
    }
    bool isLocked(const std::string &key) {
        int32_t status = other.call(205, &otherBlock, "", key, 0, 2).status;
        EXPECT_TRUE(status == 0 || status == 84) << status;
        other.call(27, &otherBlock, "", "", 0);
        return status == 84;
    }
    int32_t unlock(int32_t keyNumber, const std::string &data = {}) {
        return session.call(27, &block, data, "", keyNumber).status;
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1}, other{2};
    EngineSession::PositionBlock block{}, otherBlock{};
};

TEST_F(LocksTest, ASingleLockIsReplaced) {
    EXPECT_EQ(lock(100, "a"), 0);
    EXPECT_TRUE(isLocked("a"));
    EXPECT_EQ(lock(200, "b"), 0);
    EXPECT_FALSE(isLocked("a"));
    EXPECT_TRUE(isLocked("b"));
    EXPECT_EQ(lock(0, "c"), 0);
    EXPECT_TRUE(isLocked("b"));
    EXPECT_EQ(unlock(0), 0);
    EXPECT_FALSE(isLocked("b"));
}

TEST_F(LocksTest, MultipleLocksAddUp) {
    EXPECT_EQ(lock(300, "a"), 0);
    EXPECT_EQ(lock(400, "b"), 0);
    EXPECT_TRUE(isLocked("a"));
    EXPECT_TRUE(isLocked("b"));
    EXPECT_EQ(unlock(-1, u64(1)), 0);
    EXPECT_FALSE(isLocked("a"));
    EXPECT_EQ(unlock(-1, u64(1)), 81);
    EXPECT_EQ(unlock(-2), 0);
    EXPECT_FALSE(isLocked("b"));
    EXPECT_EQ(unlock(-3), 139);
    EXPECT_EQ(unlock(-1, "short"), 22);
}

TEST_F(LocksTest, KindsDoNotMixOnOnePosition) {
    EXPECT_EQ(lock(100, "a"), 0);
    EXPECT_EQ(lock(300, "b"), 93);
    EXPECT_TRUE(isLocked("a"));
    EXPECT_EQ(unlock(0), 0);
    EXPECT_EQ(lock(300, "b"), 0);
    EXPECT_EQ(lock(200, "a"), 93);
}

TEST_F(LocksTest, ASessionNeverBlocksItself) {
    EngineSession::PositionBlock second{};
    ASSERT_EQ(session.open(&second, path), 0);
    EXPECT_EQ(lock(200, "a"), 0);
    EXPECT_EQ(session.call(205, &second, "", "a", 0, 2).status, 0);
    EXPECT_EQ(unlock(0), 0);
    EXPECT_TRUE(isLocked("a"));
    EXPECT_EQ(session.call(1, &second).status, 0);
    EXPECT_FALSE(isLocked("a"));
}

TEST_F(LocksTest, LockedRecordsAreReadButNotChangedByOthers) {
    ASSERT_EQ(lock(200, "a"), 0);
    ASSERT_EQ(other.call(5, &otherBlock, "", "a", 0, 2).status, 0);
    EXPECT_EQ(other.call(3, &otherBlock, "a2", "", -1).status, 84);
    EXPECT_EQ(other.call(4, &otherBlock).status, 84);
    ASSERT_EQ(unlock(0), 0);
    EXPECT_EQ(other.call(3, &otherBlock, "a2", "", -1).status, 0);
}

TEST_F(LocksTest, ARefusedLockMovesNothing) {
    ASSERT_EQ(lock(200, "b"), 0);
    ASSERT_EQ(other.call(5, &otherBlock, "", "a", 0, 2).status, 0);
    EXPECT_EQ(other.call(206, &otherBlock, "", "?", 0, 2).status, 84);
    EXPECT_EQ(other.call(22, &otherBlock, "", "", 0, 8).data, u64(1));
    EXPECT_EQ(other.call(6, &otherBlock, "", "?", 0, 2).data, "b1");
}

TEST_F(LocksTest, AChangeOutsideATransactionReleasesTheSingleLock) {
    ASSERT_EQ(lock(200, "a"), 0);
    ASSERT_EQ(session.call(3, &block, "a2", "", -1).status, 0);
    EXPECT_FALSE(isLocked("a"));
    ASSERT_EQ(lock(400, "b"), 0);
    ASSERT_EQ(session.call(3, &block, "b2", "", -1).status, 0);
    EXPECT_TRUE(isLocked("b"));
}

TEST_F(LocksTest, TransactionsKeepTheirLocksUntilTheyEnd) {
    for (uint32_t end : {20u, 21u}) {
        ASSERT_EQ(session.call(1019, nullptr).status, 0);
        ASSERT_EQ(lock(200, "a"), 0);
        ASSERT_EQ(session.call(3, &block, "a2", "", -1).status, 0);
        ASSERT_EQ(lock(200, "b"), 0);
        EXPECT_TRUE(isLocked("a"));
        EXPECT_TRUE(isLocked("b"));
        ASSERT_EQ(session.call(end, nullptr).status, 0);
        EXPECT_FALSE(isLocked("a"));
        EXPECT_FALSE(isLocked("b"));
    }
}

TEST_F(LocksTest, ATransactionsBiasIsItsReadsDefault) {
    ASSERT_EQ(session.call(1419, nullptr).status, 0);
    ASSERT_EQ(lock(0, "a"), 0);
    ASSERT_EQ(lock(0, "b"), 0);
    EXPECT_TRUE(isLocked("a"));
    EXPECT_TRUE(isLocked("b"));
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_FALSE(isLocked("a"));
}

TEST_F(LocksTest, EverythingThatEndsReleasesItsLocks) {
    ASSERT_EQ(lock(400, "a"), 0);
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_FALSE(isLocked("a"));
    ASSERT_EQ(session.open(&block, path), 0);
    ASSERT_EQ(lock(400, "a"), 0);
    ASSERT_EQ(session.call(28, nullptr).status, 0);
    EXPECT_FALSE(isLocked("a"));
}

TEST_F(LocksTest, AWaitEndsWithTheLockAndReadsWhatIsThen) {
    ASSERT_EQ(lock(100, "a"), 0);
    std::thread holder([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_EQ(session.call(3, &block, "a9", "", -1).status, 0);
    });
    Reply reply = other.call(105, &otherBlock, "", "a", 0, 2);
    holder.join();
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.data, "a9");
    EXPECT_EQ(other.call(3, &otherBlock, "a8", "", -1).status, 0);
}

TEST_F(LocksTest, LockedReadsByStepAndAddress) {
    EXPECT_EQ(session.call(233, &block, "", "", -1, 2).data, "a1");
    EXPECT_TRUE(isLocked("a"));
    EXPECT_EQ(session.call(223, &block, u64(3), "", -1).data, "c1");
    EXPECT_FALSE(isLocked("a"));
    EXPECT_TRUE(isLocked("c"));
}

}  // namespace
