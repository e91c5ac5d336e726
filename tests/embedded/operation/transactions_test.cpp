#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

class TransactionsTest : public testing::Test {
  protected:
    TransactionsTest() {
        EXPECT_EQ(session.create(path, createRequest(2, 0, {{{0, 1, modifiable}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        EXPECT_EQ(other.open(&otherBlock, path), 0);
        EXPECT_EQ(session.call(2, &block, "a1", "", -1).status, 0);
    }

    static std::string read(EngineSession &through, EngineSession::PositionBlock &at, const std::string &key,
                            uint32_t operation = 5) {
        Reply reply = through.call(operation, &at, "", key, 0, 2);
        return reply.status == 0 ? reply.data : std::to_string(reply.status);
    }
    std::string mine(const std::string &key) { return read(session, block, key); }
    std::string theirs(const std::string &key) { return read(other, otherBlock, key); }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1}, other{2};
    EngineSession::PositionBlock block{}, otherBlock{};
};

TEST_F(TransactionsTest, ChangesAreSeenByOthersAtTheEnd) {
    for (uint32_t begin : {19u, 1019u, 1519u}) {
        ASSERT_EQ(session.call(begin, nullptr).status, 0);
        ASSERT_EQ(session.call(2, &block, "b1", "", -1).status, 0);
        EXPECT_EQ(mine("b"), "b1");
        EXPECT_EQ(theirs("b"), "4");
        EXPECT_EQ(session.call(20, nullptr).status, 0);
        EXPECT_EQ(theirs("b"), "b1");
        ASSERT_EQ(mine("b"), "b1");
        ASSERT_EQ(session.call(4, &block).status, 0);
    }
}

TEST_F(TransactionsTest, AbortLeavesNothing) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(2, &block, "b1", "", -1).status, 0);
    ASSERT_EQ(mine("a"), "a1");
    ASSERT_EQ(session.call(3, &block, "a2", "", -1).status, 0);
    ASSERT_EQ(session.call(21, nullptr).status, 0);
    EXPECT_EQ(mine("b"), "4");
    EXPECT_EQ(mine("a"), "a1");
    Reply reply = session.call(15, &block, std::string(100, '\0'), "", -1);
    EXPECT_EQ(number(reply.data, 8, 8), 1u);
    EXPECT_EQ(number(reply.data, 40, 8), 1u);
}

TEST_F(TransactionsTest, BeginEndAndAbortOutOfTurn) {
    EXPECT_EQ(session.call(20, nullptr).status, 39);
    EXPECT_EQ(session.call(21, nullptr).status, 36);
    EXPECT_EQ(session.call(1019, nullptr).status, 0);
    for (uint32_t begin : {19u, 1019u, 1519u, 119u, 1419u})
        EXPECT_EQ(session.call(begin, nullptr).status, 37);
    EXPECT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(session.call(20, nullptr).status, 39);
}

TEST_F(TransactionsTest, UntilItsFirstChangeASessionSeesTheCommitted) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(mine("b"), "4");
    ASSERT_EQ(other.call(2, &otherBlock, "b1", "", -1).status, 0);
    EXPECT_EQ(mine("b"), "b1");
    ASSERT_EQ(session.call(20, nullptr).status, 0);
}

TEST_F(TransactionsTest, OneThatNeverWaitsIsRefusedAtOnce) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(2, &block, "b1", "", -1).status, 0);
    ASSERT_EQ(other.call(1519, nullptr).status, 0);
    EXPECT_EQ(other.call(2, &otherBlock, "c1", "", -1).status, 85);
    EXPECT_EQ(theirs("a"), "a1");
    EXPECT_EQ(other.call(20, nullptr).status, 0);
    EXPECT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(theirs("c"), "4");
}

TEST_F(TransactionsTest, AnExclusiveOneTakesTheFileByReading) {
    ASSERT_EQ(session.call(19, nullptr).status, 0);
    EXPECT_EQ(mine("a"), "a1");
    ASSERT_EQ(other.call(1519, nullptr).status, 0);
    EXPECT_EQ(other.call(2, &otherBlock, "c1", "", -1).status, 85);
    EXPECT_EQ(theirs("a"), "a1");
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(other.call(2, &otherBlock, "c1", "", -1).status, 0);
    ASSERT_EQ(other.call(20, nullptr).status, 0);
}

TEST_F(TransactionsTest, ClosingInsideOneKeepsItsChanges) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(2, &block, "b1", "", -1).status, 0);
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(theirs("b"), "4");
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(theirs("b"), "b1");
}

TEST_F(TransactionsTest, ARefusedChangeDoesNotHarmTheRest) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(2, &block, "b1", "", -1).status, 0);
    EXPECT_EQ(session.call(2, &block, "a9", "", -1).status, 5);
    EXPECT_EQ(session.call(2, &block, "toolong", "", -1).status, 22);
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(theirs("b"), "b1");
    EXPECT_EQ(theirs("a"), "a1");
}

TEST_F(TransactionsTest, SeveralFilesEndTogether) {
    std::string secondPath = directory / "second";
    EngineSession::PositionBlock second{}, otherSecond{};
    ASSERT_EQ(session.create(secondPath, createRequest(2, 0, {{{0, 1}}})), 0);
    ASSERT_EQ(session.open(&second, secondPath), 0);
    ASSERT_EQ(other.open(&otherSecond, secondPath), 0);
    for (uint32_t end : {21u, 20u}) {
        ASSERT_EQ(session.call(1019, nullptr).status, 0);
        ASSERT_EQ(session.call(2, &block, "b1", "", -1).status, 0);
        ASSERT_EQ(session.call(2, &second, "c1", "", -1).status, 0);
        ASSERT_EQ(session.call(end, nullptr).status, 0);
        EXPECT_EQ(theirs("b"), end == 20 ? "b1" : "4");
        EXPECT_EQ(read(other, otherSecond, "c"), end == 20 ? "c1" : "4");
    }
}

TEST_F(TransactionsTest, StaleReadsAreFoundAtTheFirstChange) {
    EXPECT_EQ(mine("a"), "a1");
    ASSERT_EQ(theirs("a"), "a1");
    ASSERT_EQ(other.call(3, &otherBlock, "a2", "", -1).status, 0);
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(session.call(3, &block, "a3", "", -1).status, 80);
    EXPECT_EQ(mine("a"), "a2");
    EXPECT_EQ(session.call(3, &block, "a3", "", -1).status, 0);
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(theirs("a"), "a3");
}

}  // namespace
