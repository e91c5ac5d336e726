#include <sqlite3.h>

#include "embedded/emulation.h"
#include "embedded/operation/percentage_fixture.h"

namespace {

using namespace vantrel::test;

class PercentageChangeTest : public PercentageFixture {
  protected:
    std::string randomRecord() {
        return u16(static_cast<uint16_t>(random() % 60)) + static_cast<char>(random() % 4) +
               static_cast<char>(random() % 4);
    }
    // Inserts, updates and deletes, more of the one or the other.
    void change(EngineSession &through, EngineSession::PositionBlock &at, uint32_t insertsOfTen) {
        if (random() % 10 < insertsOfTen) {
            ASSERT_EQ(through.call(2, &at, randomRecord(), "", -1).status, 0);
            return;
        }
        auto value = static_cast<uint32_t>(random() % 10001);
        if (through.call(44, &at, percentage(value), "", physical, 4).status == 9)
            return;
        bool updates = random() % 2 == 0;
        ASSERT_EQ(updates ? through.call(3, &at, randomRecord(), "", -1).status : through.call(4, &at).status,
                  0);
    }
    void inShell(const char *sql) {
        sqlite3 *database = nullptr;
        EXPECT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }
    int64_t numberInShell(const char *sql) {
        sqlite3 *database = nullptr;
        sqlite3_stmt *statement = nullptr;
        EXPECT_EQ(sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
        sqlite3_prepare_v2(database, sql, -1, &statement, nullptr);
        int64_t value = sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int64(statement, 0) : -1;
        sqlite3_finalize(statement);
        sqlite3_close(database);
        return value;
    }

    static constexpr unsigned seed = 44;
    std::mt19937 random{seed};
};

TEST_F(PercentageChangeTest, RandomChangesKeepEveryRank) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    askForAll();
    for (uint32_t round = 0; round < 8; ++round) {
        ASSERT_EQ(session.call(1019, nullptr).status, 0);
        for (int step = 0; step < rounds(250, 25); ++step)
            ASSERT_NO_FATAL_FAILURE(change(session, block, round % 4 < 2 ? 9 : 2));
        ASSERT_NO_FATAL_FAILURE(expectTrueRanks(session, block));
        ASSERT_EQ(session.call(round % 3 == 2 ? 21 : 20, nullptr).status, 0);
        ASSERT_NO_FATAL_FAILURE(expectTrueRanks(session, block));
        expectVerifies();
    }
}

TEST_F(PercentageChangeTest, ATransactionIsSeenByItsSessionOnly) {
    insertMany(3);
    askForAll();
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    for (int step = 0; step < 300; ++step)
        insert(randomRecord());
    EXPECT_EQ(proportion(session, block, place(2, 302), physical, ""), 1);
    EXPECT_EQ(proportion(other, otherBlock, place(2, 302), physical, ""), 151);
    EXPECT_EQ(proportion(other, otherBlock, place(4), physical, ""), -43);
    ASSERT_EQ(session.call(21, nullptr).status, 0);
    EXPECT_EQ(proportion(session, block, place(2, 302), physical, ""), 151);
    expectTrueRanks(session, block);
    expectTrueRanks(other, otherBlock);
    expectVerifies();
}

TEST_F(PercentageChangeTest, OtherSessionsKeepTheCountsTrue) {
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(other.call(2, &otherBlock, randomRecord(), "", -1).status, 0);
    askForAll();
    for (int step = 0; step < 300; ++step) {
        ASSERT_NO_FATAL_FAILURE(change(other, otherBlock, 8));
        ASSERT_NO_FATAL_FAILURE(change(session, block, 8));
    }
    expectTrueRanks(session, block);
    expectTrueRanks(other, otherBlock);
    expectVerifies();
}

TEST_F(PercentageChangeTest, CountsOutliveTheSessions) {
    insertMany(200);
    askForAll();
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(numberInShell("SELECT count(*) FROM counted_order"), 6);
    ASSERT_EQ(session.open(&block, path), 0);
    insertMany(200);
    expectTrueRanks(session, block);
    expectVerifies();
}

TEST_F(PercentageChangeTest, OnlyWhatWasAskedForIsCounted) {
    insertMany(10);
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(numberInShell("SELECT count(*) FROM sqlite_master WHERE name IN ('counted_order', 'bucket')"),
              0);
    ASSERT_EQ(session.open(&block, path), 0);
    read(percentage(0), 1);
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(numberInShell("SELECT group_concat(number) FROM counted_order"), 1);
    EXPECT_EQ(numberInShell("SELECT count(*) FROM counted_order"), 1);
    ASSERT_EQ(session.open(&block, path), 0);
}

TEST_F(PercentageChangeTest, ADroppedIndexLeavesNoCounts) {
    insertMany(300);
    askForAll();
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(session.call(32, &block, "", "", 1).status, 0);
    EXPECT_EQ(read(percentage(0), 1), "6");
    EXPECT_EQ(read(other, otherBlock, percentage(0), 1), "6");
    for (uint32_t number = 0; number < 200; ++number)
        ASSERT_EQ(other.call(2, &otherBlock, recordOf(number), "", -1).status, 0);
    ASSERT_EQ(session.call(31, &block, segmentBytes({0, 3, common}), "", 0x81).status, 0);
    for (uint32_t number = 0; number < 200; ++number)
        ASSERT_EQ(other.call(2, &otherBlock, recordOf(number), "", -1).status, 0);
    expectTrueRanks(session, block);
    expectTrueRanks(other, otherBlock);
    expectVerifies();
}

// Whatever keeps the counts from being built, the answers are the same.
TEST_F(PercentageChangeTest, AFileInAnotherTransactionIsCountedAsItStands) {
    insertMany(150);
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(other.call(1019, nullptr).status, 0);
    ASSERT_EQ(other.call(2, &otherBlock, "zzzz", "", -1).status, 0);
    expectTrueRanks(session, block);
    expectTrueRanks(other, otherBlock);
    ASSERT_EQ(other.call(20, nullptr).status, 0);
    expectTrueRanks(session, block);
}

TEST_F(PercentageChangeTest, ReadingInATransactionWritesNothingIntoIt) {
    insertMany(150);
    for (uint32_t begin : {19u, 1019u}) {
        ASSERT_EQ(session.call(begin, nullptr).status, 0);
        insertMany(1);
        expectTrueRanks(session, block);
        ASSERT_EQ(session.call(20, nullptr).status, 0);
    }
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(numberInShell("SELECT count(*) FROM sqlite_master WHERE name = 'bucket'"), 0);
    ASSERT_EQ(session.open(&block, path), 0);
}

TEST_F(PercentageChangeTest, AReadOnlyPositionCountsToo) {
    insertMany(150);
    ASSERT_EQ(session.call(1, &block).status, 0);
    ASSERT_EQ(session.open(&block, path, -2), 0);
    expectTrueRanks(session, block);
    EXPECT_EQ(session.call(4, &block).status, 46);
}

TEST_F(PercentageChangeTest, VerifyNoticesWrongCounts) {
    insertMany(150);
    askForAll();
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(session.open(&block, path, -3), 0);
    ASSERT_EQ(session.call(1, &block).status, 0);
    inShell("UPDATE bucket SET count = count + 1 WHERE number = 125 AND key = x''");
    EXPECT_EQ(session.open(&block, path, -3), 2);
    EXPECT_EQ(session.open(&block, path), 0);
}

}  // namespace
