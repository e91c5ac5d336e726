#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <random>

#include "embedded/storage/sqlite_counts.h"
#include "embedded/storage/sqlite_schema.h"
#include "embedded/storage/storage.h"
#include "tests/embedded/emulation.h"
#include "vantrel.h"

namespace {

using namespace vantrel::embedded;

constexpr uint8_t indexNumber = 3;

// An index and the physical order of one file, with the entries also in a sorted list. The buckets are small,
// so that trees are high.
class CountsTest : public testing::Test {
  protected:
    CountsTest() {
        createTables(database, {});
        createIndexTableIn(database, indexNumber);
        insertEntry = database.prepare("INSERT INTO index_3 VALUES(?1, ?2)");
        deleteEntry = database.prepare("DELETE FROM index_3 WHERE key = ?1 AND address = ?2");
        counts.load();
    }

    void insert(const OrderPlace &place) {
        entries.insert(std::lower_bound(entries.begin(), entries.end(), place), place);
        write(place);
    }
    void write(const OrderPlace &place) {
        insertEntry.bind(1, ByteView(place.key)).bind(2, place.address).run();
        counts.inserted(indexNumber, place.key, place.address);
        usual.inserted(indexNumber, place.key, place.address);
    }
    void erase(size_t rank) {
        OrderPlace place = entries[rank];
        entries.erase(entries.begin() + static_cast<ptrdiff_t>(rank));
        deleteEntry.bind(1, ByteView(place.key)).bind(2, place.address).run();
        counts.deleted(indexNumber, place.key, place.address);
    }
    void insertMany(int64_t number, uint32_t keys) {
        database.execute("BEGIN");
        for (int64_t i = 0; i < number; ++i) {
            entries.push_back({keyOf(below(keys)), ++lastAddress});
            write(entries.back());
        }
        std::sort(entries.begin(), entries.end());
        database.execute("COMMIT");
    }
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random() % limit); }
    static Bytes keyOf(uint32_t number) {
        return {static_cast<char>(number >> 16), static_cast<char>(number >> 8), static_cast<char>(number)};
    }

    // All of them, or some of many.
    void expectTrueRanks() {
        ASSERT_EQ(counts.total(indexNumber), entries.size());
        for (size_t rank = 0; rank < entries.size(); rank += 1 + entries.size() / 2000) {
            ASSERT_EQ(counts.countInFront(indexNumber, entries[rank]), rank);
            ASSERT_EQ(counts.find(indexNumber, rank), entries[rank]);
        }
        ASSERT_TRUE(counts.areTrue());
    }
    int64_t buckets(const char *condition) {
        counts.flush();
        return database.integer((std::string("SELECT count(*) FROM bucket WHERE ") + condition).c_str());
    }
    int64_t height() {
        counts.flush();
        return database.integer("SELECT height FROM counted_order WHERE number = 3");
    }

    // Steps of SQLite's virtual machine that a request takes.
    template <class Work>
    uint64_t stepsOf(Work work) {
        uint64_t steps = 0;
        auto count = [](void *counter) {
            ++*static_cast<uint64_t *>(counter);
            return 0;
        };
        sqlite3_progress_handler(database.get(), 1, count, &steps);
        work();
        sqlite3_progress_handler(database.get(), 0, nullptr, nullptr);
        return steps;
    }

    Database database{":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE};
    SqliteCounts counts{database, {8, 6, 4, 4, 2}, {8, 6, 4, 4, 2}};
    SqliteCounts usual{database};
    Statement insertEntry, deleteEntry;
    std::vector<OrderPlace> entries;
    std::mt19937 random{17};
    int64_t lastAddress = 0;
};

TEST_F(CountsTest, EntriesAreCountedWithoutATree) {
    insertMany(300, 50);
    EXPECT_FALSE(counts.isBuilt(indexNumber));
    expectTrueRanks();
    EXPECT_EQ(counts.find(indexNumber, 300), std::nullopt);
    EXPECT_EQ(database.integer("SELECT count(*) FROM sqlite_master WHERE name = 'bucket'"), 0);
}

TEST_F(CountsTest, ATreeIsBuiltFromTheEntries) {
    insertMany(1000, 300);
    counts.build(indexNumber);
    EXPECT_EQ(height(), 3);
    EXPECT_EQ(buckets("level = 1"), 167);
    EXPECT_EQ(buckets("level = 2"), 28);
    EXPECT_EQ(buckets("level = 3"), 5);
    expectTrueRanks();
    EXPECT_TRUE(counts.isReshaped());
}

TEST_F(CountsTest, AnEmptyOrderHasATreeToo) {
    counts.build(indexNumber);
    EXPECT_EQ(counts.total(indexNumber), 0u);
    insertMany(1000, 10);
    expectTrueRanks();
    EXPECT_GE(buckets("level = 1"), 1000 / 8);
}

TEST_F(CountsTest, TheTreeGrowsAndShrinksWithTheEntries) {
    counts.build(indexNumber);
    insertMany(5000, 200);
    EXPECT_EQ(height(), 5);
    EXPECT_EQ(buckets("level = 1 AND count > 8"), 0);
    expectTrueRanks();
    database.execute("BEGIN");
    while (entries.size() > 300)
        erase(below(static_cast<uint32_t>(entries.size())));
    expectTrueRanks();
    EXPECT_LE(buckets("level = 1"), 300);
    while (!entries.empty())
        erase(0);
    EXPECT_EQ(counts.total(indexNumber), 0u);
    EXPECT_TRUE(counts.areTrue());
    EXPECT_LE(buckets("1"), 10);
    database.execute("COMMIT");
}

TEST_F(CountsTest, AscendingInsertsAndDeletesKeepItTrue) {
    counts.build(indexNumber);
    database.execute("BEGIN");
    for (uint32_t number = 0; number < 5000; ++number) {
        insert({keyOf(number), ++lastAddress});
        if (entries.size() > 500)
            erase(0);
    }
    expectTrueRanks();
    EXPECT_LE(buckets("level = 1"), 500 / 2);
    database.execute("COMMIT");
}

// Queues would otherwise leave empty buckets behind for ever.
TEST_F(CountsTest, RunsThatComeAndGoLeaveNothingBehind) {
    counts.build(indexNumber);
    insertMany(100, 100);
    uint32_t number = 1000;
    for (int round = 0; round < vantrel::test::rounds(50, 5); ++round) {
        database.execute("BEGIN");
        for (int i = 0; i < 300; ++i)
            insert({keyOf(++number), ++lastAddress});
        counts.flush();
        while (entries.size() > 100)
            erase(100);
        counts.flush();
        database.execute("COMMIT");
        ASSERT_LE(buckets("level = 1"), 60) << round;
    }
    expectTrueRanks();
}

TEST_F(CountsTest, RandomChangesKeepItTrue) {
    constexpr unsigned seed = 20;
    SCOPED_TRACE("seed " + std::to_string(seed));
    random.seed(seed);
    insertMany(500, 20);
    counts.build(indexNumber);
    database.execute("BEGIN");
    for (int round = 0; round < vantrel::test::rounds(20, 2); ++round) {
        bool isGrowing = round % 4 < 2;
        for (int change = 0; change < 700; ++change) {
            bool inserts = below(10) < (isGrowing ? 8u : 2u) || entries.empty();
            if (inserts)
                insert({keyOf(below(40)), ++lastAddress});
            else
                erase(below(static_cast<uint32_t>(entries.size())));
        }
        expectTrueRanks();
    }
    database.execute("COMMIT");
}

TEST_F(CountsTest, TheCostIsLogarithmic) {
    usual.build(indexNumber);
    uint64_t few = 0;
    for (int64_t number : {1000, vantrel::test::rounds(99000, 19000)}) {
        insertMany(number, 1 << 24);
        usual.flush();
        uint64_t most = 0;
        for (size_t rank = 0; rank < entries.size(); rank += entries.size() / 100) {
            most = std::max(most, stepsOf([&] { usual.find(indexNumber, rank); }));
            most = std::max(most, stepsOf([&] { usual.countInFront(indexNumber, entries[rank]); }));
            most = std::max(most, stepsOf([&] { usual.total(indexNumber); }));
        }
        RecordProperty("steps_at_" + std::to_string(entries.size()), static_cast<int>(most));
        if (few == 0)
            few = most;
        else
            EXPECT_LT(most, 3 * few);
    }
    size_t middle = entries.size() / 2;
    usual.inserted(indexNumber, entries[middle].key, INT64_MAX);
    EXPECT_LT(stepsOf([&] { usual.flush(); }), 200u);
    EXPECT_GT(stepsOf([&] { counts.countInFront(indexNumber, entries[middle]); }), middle);
}

TEST_F(CountsTest, WrongCountsAreNoticed) {
    insertMany(2000, 500);
    counts.build(indexNumber);
    for (const char *damage :
         {"UPDATE bucket SET count = count + 1 WHERE level = 1 AND key = x''",
          "UPDATE bucket SET count = count - 1 WHERE level = 2 AND key = x''",
          "DELETE FROM bucket WHERE level = 1 AND key = (SELECT max(key) FROM bucket WHERE level = 1)",
          "DELETE FROM bucket WHERE level = 2 AND key = x''", "DELETE FROM bucket",
          "UPDATE bucket SET address = 7 WHERE level = 1 AND key = x''"}) {
        database.execute("BEGIN");
        database.execute(damage);
        EXPECT_FALSE(counts.areTrue()) << damage;
        database.execute("ROLLBACK");
        EXPECT_TRUE(counts.areTrue());
    }
}

TEST_F(CountsTest, DamageIsRefused) {
    insertMany(1000, 5000);
    counts.build(indexNumber);
    auto statusOf = [](auto work) -> int32_t {
        try {
            work();
        } catch (const StatusError &error) {
            return error.status;
        }
        return VANTREL_STATUS_NO_ERROR;
    };
    EXPECT_EQ(statusOf([&] { counts.find(indexNumber, 1000); }), VANTREL_STATUS_INPUT_OUTPUT_ERROR);
    database.execute("DELETE FROM bucket");
    EXPECT_EQ(statusOf([&] { counts.find(indexNumber, 0); }), VANTREL_STATUS_INPUT_OUTPUT_ERROR);
    insert({"k", ++lastAddress});
    EXPECT_EQ(statusOf([&] { counts.flush(); }), VANTREL_STATUS_INPUT_OUTPUT_ERROR);
    EXPECT_EQ(statusOf([&] { counts.flush(); }), VANTREL_STATUS_INPUT_OUTPUT_ERROR);
    counts.rolledBack();
    EXPECT_EQ(statusOf([&] { counts.flush(); }), VANTREL_STATUS_NO_ERROR);
    database.execute("UPDATE counted_order SET height = 1000");
    EXPECT_EQ(statusOf([&] { counts.load(); }), VANTREL_STATUS_INPUT_OUTPUT_ERROR);
}

TEST_F(CountsTest, DroppingATreeLeavesTheOthers) {
    insertMany(1000, 5000);
    counts.build(indexNumber);
    counts.build(physicalOrder);
    counts.committed();
    counts.drop(indexNumber);
    EXPECT_FALSE(counts.isBuilt(indexNumber));
    EXPECT_TRUE(counts.isReshaped());
    EXPECT_EQ(buckets("number = 3"), 0);
    EXPECT_EQ(buckets("number = 255"), 1);
    SqliteCounts other(database);
    other.load();
    EXPECT_FALSE(other.isBuilt(indexNumber));
    EXPECT_TRUE(other.isBuilt(physicalOrder));
}

}  // namespace
