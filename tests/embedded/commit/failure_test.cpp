#include "embedded/commit/crash_fixture.h"
#include "embedded/emulation.h"

namespace {

using namespace vantrel::test;

class CommitFailingTest : public CrashTest {};

TEST_F(CommitFailingTest, AStatusTellsWhetherTheTransactionHappened) {
    int failed = 0, kept = 0;
    bool isDone = false;
    for (size_t step = 1; !isDone; step += rounds<size_t>(1, 4)) {
        SCOPED_TRACE(step);
        startAnew();
        StepCount count;
        ThreeFiles mine(directory, 1), other(directory, 2);
        ASSERT_EQ(mine.open(), 0);
        ASSERT_EQ(other.open(), 0);
        ASSERT_EQ(other.contents(), ThreeFiles::before);
        ASSERT_EQ(mine.begin(), 0);
        mine.change();
        int32_t status = 0;
        {
            SystemCallWatch watch(directory.path(), [&](const SystemCall &call) {
                return count.stepOf(call) == step ? Fate::fails : Fate::happens;
            });
            status = mine.end();
        }
        isDone = count.steps() < step;
        ASSERT_TRUE(status == 0 || status == 2) << status;
        failed += status == 2;
        kept += status == 0 && !isDone;
        const char *expected = status == 0 ? ThreeFiles::after : ThreeFiles::before;
        ASSERT_EQ(mine.contents(), expected);
        ASSERT_EQ(mine.end(), 39);

        // The positions stand on what they stood on, and go on.
        for (auto &block : mine.blocks) {
            ASSERT_EQ(mine.session.call(5, &block, "", "a", 0, 2).data, status == 0 ? "a2" : "a1");
            ASSERT_EQ(mine.session.call(3, &block, "a3", "", -1).status, 0);
            ASSERT_EQ(mine.session.call(3, &block, status == 0 ? "a2" : "a1", "", -1).status, 0);
        }
        ASSERT_EQ(other.contents({2, 1, 0}), expected);
        ASSERT_EQ(contentsAfterwards(directory, {1, 0, 2}), expected);
    }
    EXPECT_GT(failed, rounds(5, 1));
    EXPECT_GT(kept, rounds(5, 1));
}

class FailedSyncTest : public CrashTest {
  protected:
    enum class First { isChanged, isRead, refusesAChange };

    // Ends a transaction over the files, while the first of those changed cannot be synced, and dies without
    // closing them.
    std::string endAndDie(First first, const std::vector<size_t> &changed) {
        return ChildProcess::run([&] {
            auto &files = *new ThreeFiles(directory, 1);  // never closed
            EXPECT_EQ(files.open(), 0);
            // Their logs have a header then.
            for (auto &block : files.blocks)
                EXPECT_EQ(files.session.call(2, &block, "e1", "", -1).status, 0);
            EXPECT_EQ(files.begin(first == First::isRead ? 19 : 1019), 0);
            if (first == First::isRead) {
                EXPECT_EQ(files.session.call(12, &files.blocks[0], "", "?", 0, 2).status, 0);
            } else if (first == First::refusesAChange) {
                EXPECT_EQ(files.session.call(2, &files.blocks[0], "a1", "", -1).status, 5);
            }
            for (size_t file : changed)
                EXPECT_EQ(files.session.call(2, &files.blocks[file], "c2", "", -1).status, 0);
            std::string log = ThreeFiles::path(directory, changed.front()) + "-wal";
            bool hasFailed = false;
            SystemCallWatch watch(directory.path(), [&](const SystemCall &call) {
                bool fails = call.name == "fsync" && call.path == log && !hasFailed;
                hasFailed |= fails;
                return fails ? Fate::fails : Fate::happens;
            });
            std::string status = std::to_string(files.end());
            EXPECT_TRUE(hasFailed);
            EXPECT_EQ(files.contents(), unchanged);
            for (const std::string &name : directory.names())
                EXPECT_EQ(name.find("-commit"), std::string::npos) << name;
            return status;
        });
    }

    static constexpr const char *unchanged = "a1 b1 d65000 e1 ";
};

TEST_F(FailedSyncTest, WhatFailedDoesNotComeBack) {
    for (First first : {First::isChanged, First::isRead, First::refusesAChange}) {
        for (bool isMany : {false, true}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(first) << isMany);
            startAnew();
            std::vector<size_t> changed = isMany ? std::vector<size_t>{1, 2} : std::vector<size_t>{1};
            if (first == First::isChanged)
                changed.front() = 0;
            ASSERT_EQ(endAndDie(first, changed), "2");
            EXPECT_EQ(contentsAfterwards(directory, {0, 1, 2}), unchanged);
        }
    }
}

// Of one log or all, in the background too, which would have synced before. The first change of a log, which
// is synced itself, has to be made before.
class FailingSyncs {
  public:
    explicit FailingSyncs(const std::string &directory, const std::string &path = {})
        : decide_([path](const SystemCall &call) {
              return call.name == "fsync" && (path.empty() || call.path == path) ? Fate::fails
                                                                                 : Fate::happens;
          }),
          mine_(directory, decide_),
          others_(directory, decide_, SystemCallWatch::Threads::others) {}

  private:
    SystemCallWatch::Decision decide_;
    SystemCallWatch mine_, others_;
};

using ResetTest = CrashTest;

TEST_F(ResetTest, AllIsEndedWhateverFails) {
    constexpr uint32_t stop = 25, reset = 28;
    constexpr int32_t exclusive = -4;
    for (uint32_t operation : {stop, reset}) {
        ThreeFiles files(directory, 1);
        ASSERT_EQ(files.open(), 0);
        auto insert = [&](const std::string &record) {
            for (auto &block : files.blocks)
                ASSERT_EQ(files.session.call(2, &block, record, "", -1).status, 0);
        };
        insert(operation == stop ? "e1" : "f1");
        {
            FailingSyncs failing(directory.path(), directory / "first-wal");
            insert(operation == stop ? "g1" : "h1");
            EXPECT_EQ(files.session.call(operation, nullptr).status, 2);
        }
        ThreeFiles other(directory, 2);
        EXPECT_EQ(other.open({0, 1, 2}, exclusive), 0);
    }
}

TEST_F(FailedSyncTest, AFileStaysOpenWhereItCannotBeSyncedToClose) {
    for (int32_t mode : {0, -4}) {
        startAnew();
        ThreeFiles mine(directory, 1);
        ASSERT_EQ(mine.open({0, 1, 2}, mode), 0);
        ASSERT_EQ(mine.session.call(2, mine.blocks.data(), "c2", "", -1).status, 0);
        {
            FailingSyncs failing(directory.path());
            ASSERT_EQ(mine.session.call(2, mine.blocks.data(), "g2", "", -1).status, 0);
            ASSERT_EQ(mine.close(0), 2);
        }
        ASSERT_EQ(mine.session.call(2, mine.blocks.data(), "e2", "", -1).status, 0);
        ASSERT_EQ(mine.close(0), 0);
        ASSERT_EQ(mine.close(0), 3);
    }
}

}  // namespace
