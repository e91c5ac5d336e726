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
    // Ends a transaction over the files, of which the first cannot be synced, and dies without closing them.
    std::string endAndDie(const std::vector<size_t> &changed) {
        return ChildProcess::run([&] {
            auto &files = *new ThreeFiles(directory, 1);  // never closed
            EXPECT_EQ(files.open(), 0);
            EXPECT_EQ(files.begin(), 0);
            for (size_t file : changed)
                EXPECT_EQ(files.session.call(2, &files.blocks[file], "c2", "", -1).status, 0);
            bool hasFailed = false;
            SystemCallWatch watch(directory.path(), [&](const SystemCall &call) {
                // The log's header is synced first.
                bool isCommit = call.name == "fsync" && call.path == directory / "first-wal" && hasHeader;
                hasHeader |= call.name == "fsync" && call.path == directory / "first-wal";
                bool fails = isCommit && !hasFailed;
                hasFailed |= fails;
                return fails ? Fate::fails : Fate::happens;
            });
            std::string status = std::to_string(files.end());
            for (const std::string &name : directory.names())
                EXPECT_EQ(name.find("-commit"), std::string::npos) << name;
            return status;
        });
    }

    bool hasHeader = false;
};

TEST_F(FailedSyncTest, WhatFailedDoesNotComeBack) {
    for (const std::vector<size_t> &changed : {std::vector<size_t>{0}, {0, 1, 2}}) {
        startAnew();
        ASSERT_EQ(endAndDie(changed), "2");
        EXPECT_EQ(contentsAfterwards(directory, {0, 1, 2}), ThreeFiles::before) << changed.size();
    }
}

TEST_F(FailedSyncTest, AFileStaysOpenWhereItCannotBeSyncedToClose) {
    for (int32_t mode : {0, -4}) {
        startAnew();
        ThreeFiles mine(directory, 1);
        ASSERT_EQ(mine.open({0, 1, 2}, mode), 0);
        ASSERT_EQ(mine.session.call(2, mine.blocks.data(), "c2", "", -1).status, 0);
        {
            SystemCallWatch watch(directory.path(), [](const SystemCall &call) {
                return call.name == "fsync" ? Fate::fails : Fate::happens;
            });
            ASSERT_EQ(mine.close(0), 2);
        }
        ASSERT_EQ(mine.session.call(2, mine.blocks.data(), "e2", "", -1).status, 0);
        ASSERT_EQ(mine.close(0), 0);
        ASSERT_EQ(mine.close(0), 3);
    }
}

}  // namespace
