#include <sqlite3.h>

#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

uint64_t executedSteps = 0;
sqlite3 *openedDatabase = nullptr;

int countStep(void *) {
    ++executedSteps;
    return 0;
}

// SQLite calls this for each connection that opens.
int observe(sqlite3 *database, char **, const void *) {
    openedDatabase = database;
    sqlite3_progress_handler(database, 1, countStep, nullptr);
    return SQLITE_OK;
}

uint64_t fetchedPages() {
    uint64_t pages = 0;
    for (int kind : {SQLITE_DBSTATUS_CACHE_HIT, SQLITE_DBSTATUS_CACHE_MISS}) {
        int count = 0, unused = 0;
        EXPECT_EQ(sqlite3_db_status(openedDatabase, kind, &count, &unused, 0), SQLITE_OK);
        pages += static_cast<uint64_t>(count);
    }
    return pages;
}

class StatisticsCostTest : public testing::Test {
  protected:
    StatisticsCostTest() {
        EXPECT_EQ(session.create(path, createRequest(8, 0, {{{0, 4}}, {{4, 2, duplicates}}})), 0);
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(observe));
        EXPECT_EQ(session.open(&block, path), 0);
        sqlite3_reset_auto_extension();
    }

    // Records of a number and of what remains of it by 1,000.
    void insertUpTo(uint32_t count) {
        constexpr uint32_t together = 1000;
        for (; inserted < count; inserted += together) {
            std::string request = u32(together);
            for (uint32_t number = inserted; number < inserted + together; ++number)
                request += u32(8) + u32(number) + u32(number % 1000);
            ASSERT_EQ(session.call(40, &block, request, "", -1).status, 0);
        }
    }

    struct Cost {
        uint64_t steps, pages;
        bool operator==(const Cost &) const = default;
    };
    // Of the second call, which needs no new snapshot.
    Cost costOfStatistics(uint64_t expectedCount) {
        Cost cost{};
        for (int call = 0; call < 2; ++call) {
            uint64_t steps = executedSteps, pages = fetchedPages();
            std::string reply = session.call(15, &block, std::string(65535, '\0'), "k").data;
            cost = {executedSteps - steps, fetchedPages() - pages};
            EXPECT_EQ(number(reply, 8, 8), expectedCount);
            EXPECT_EQ(number(reply, 32 + 8, 8), expectedCount);
            EXPECT_EQ(number(reply, 56 + 8, 8), 1000u);
        }
        return cost;
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
    uint32_t inserted = 0;
};

TEST_F(StatisticsCostTest, IsTheSameForAHundredTimesTheRecords) {
    insertUpTo(1000);
    Cost few = costOfStatistics(1000);
    insertUpTo(100000);
    Cost many = costOfStatistics(100000);
    EXPECT_GT(few.steps, 0u);
    EXPECT_GT(few.pages, 0u);
    EXPECT_EQ(many.steps, few.steps);
    EXPECT_EQ(many.pages, few.pages);
}

}  // namespace
