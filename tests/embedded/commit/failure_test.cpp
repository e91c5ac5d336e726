#include "embedded/commit/crash_fixture.h"

namespace {

using namespace vantrel::test;

class CommitFailingTest : public CrashTest {};

TEST_F(CommitFailingTest, AStatusTellsWhetherTheTransactionHappened) {
    int failed = 0, kept = 0;
    bool isDone = false;
    for (size_t step = 1; !isDone; ++step) {
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
    EXPECT_GT(failed, 5);
    EXPECT_GT(kept, 5);
}

}  // namespace
