#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "embedded/operation/lock_fixture.h"
#include "embedded/operation/lock_process.h"
#include "embedded/quiet_fork.h"

namespace {

using namespace vantrel::test;

class LockWaitTest : public LockFixture {
  protected:
    LockWaitTest() : LockFixture(1, 3) {}

    // Somebody waits for the record a, which the holder has locked, until the holder does something.
    void endsTheWait(uint32_t bias, const std::function<int32_t()> &holds,
                     const std::function<int32_t()> &ends) {
        ASSERT_EQ(holds(), 0);
        std::future<int32_t> waiter = later([&] { return other.read('a', bias); });
        EXPECT_TRUE(isWaiting(waiter));
        EXPECT_EQ(ends(), 0);
        ASSERT_TRUE(endsSoon(waiter));
        EXPECT_EQ(waiter.get(), 0);
        EXPECT_TRUE(third.findsLocked('a'));
        EXPECT_EQ(other.unlock(bias == 100 ? 0 : -2), 0);
        EXPECT_FALSE(third.findsLocked('a'));
    }

    LockClient &holder = *clients[0], &other = *clients[1], &third = *clients[2];
};

TEST_F(LockWaitTest, EndsWithTheUnlock) {
    for (uint32_t bias : {100u, 300u})
        endsTheWait(
            bias, [&] { return holder.read('a', 200); }, [&] { return holder.unlock(0); });
}

TEST_F(LockWaitTest, EndsWhenTheSingleLockMovesOn) {
    endsTheWait(
        100, [&] { return holder.read('a', 200); }, [&] { return holder.read('b', 200); });
}

TEST_F(LockWaitTest, EndsWithAChangeOutsideATransaction) {
    endsTheWait(
        100, [&] { return holder.read('a', 200); }, [&] { return holder.update("a1"); });
    EXPECT_EQ(other.data('a'), "a1");
}

TEST_F(LockWaitTest, EndsWithTheClose) {
    endsTheWait(
        100, [&] { return holder.read('a', 200); }, [&] { return holder.close(); });
}

TEST_F(LockWaitTest, EndsWithTheReset) {
    endsTheWait(
        100, [&] { return holder.read('a', 400); }, [&] { return holder.reset(); });
}

TEST_F(LockWaitTest, EndsWithTheEndOfATransaction) {
    auto changes = [&] { return holder.begin() + holder.read('a') + holder.update("a1"); };
    endsTheWait(100, changes, [&] { return holder.end(); });
    EXPECT_EQ(other.data('a'), "a1");
}

TEST_F(LockWaitTest, EndsWithTheAbortOfATransaction) {
    auto locks = [&] { return holder.begin() + holder.read('a', 200) + holder.update("a1"); };
    endsTheWait(300, locks, [&] { return holder.abort(); });
    EXPECT_EQ(other.data('a'), "a0");
}

TEST_F(LockWaitTest, EndsWithTheDeathOfTheHolder) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer follows no child of a process that had threads";
#endif
    LockProcess process([&] {
        auto *client = new LockClient(9, paths);
        return client->read('a', 400) == 0 && client->read('b', 400) == 0;
    });
    std::future<int32_t> waiter = later([&] { return other.read('a', 100); });
    EXPECT_TRUE(isWaiting(waiter));
    EXPECT_TRUE(holder.findsLocked('b'));
    process.kill();
    ASSERT_TRUE(endsSoon(waiter));
    EXPECT_EQ(waiter.get(), 0);
    EXPECT_FALSE(holder.findsLocked('b'));
}

TEST_F(LockWaitTest, EndsWhenTheRecordIsDeleted) {
    ASSERT_EQ(holder.read('a', 400), 0);
    std::future<int32_t> waiter = later([&] { return other.read('a', 100); });
    EXPECT_TRUE(isWaiting(waiter));
    ASSERT_EQ(holder.erase(), 0);
    ASSERT_TRUE(endsSoon(waiter));
    EXPECT_EQ(waiter.get(), 4);
}

TEST_F(LockWaitTest, StopEndsSessionsThatWaitForEachOther) {
    ASSERT_EQ(holder.read('a', 200), 0);
    std::future<int32_t> waiter = later([&] { return other.read('a', 100); });
    EXPECT_TRUE(isWaiting(waiter));
    std::future<int32_t> stop = later([&] { return third.session.call(25, nullptr).status; });
    ASSERT_TRUE(endsSoon(stop));
    EXPECT_EQ(stop.get(), 0);
    EXPECT_EQ(waiter.get(), 0);
    EXPECT_EQ(other.read('a'), 3);
}

TEST_F(LockWaitTest, AForkDoesNotWaitForIt) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer follows no child of a process that had threads";
#endif
    ASSERT_EQ(holder.read('a', 200), 0);
    std::future<int32_t> waiter = later([&] { return other.read('a', 100); });
    EXPECT_TRUE(isWaiting(waiter));
    std::future<int32_t> forked = later([&] {
        pid_t child =
            forkWhileQuiet([&] { return (new LockClient(9, paths))->read('a', 200) == 84 ? 7 : 8; });
        int status = 0;
        return waitpid(child, &status, 0) == child ? WEXITSTATUS(status) : -1;
    });
    ASSERT_TRUE(endsSoon(forked));
    EXPECT_EQ(forked.get(), 7);
    EXPECT_TRUE(isWaiting(waiter));
    ASSERT_EQ(holder.unlock(0), 0);
    EXPECT_EQ(waiter.get(), 0);
}

TEST_F(LockWaitTest, ChangersWaitForTheWriteSide) {
    for (bool ends : {true, false}) {
        ASSERT_EQ(holder.begin(), 0);
        ASSERT_EQ(holder.insert(ends ? "x0" : "y0"), 0);
        std::future<int32_t> waiter = later([&] { return other.insert(ends ? "x1" : "y1"); });
        EXPECT_TRUE(isWaiting(waiter));
        EXPECT_EQ(ends ? holder.end() : holder.abort(), 0);
        ASSERT_TRUE(endsSoon(waiter));
        EXPECT_EQ(waiter.get(), ends ? 5 : 0);
    }
}

TEST_F(LockWaitTest, AnExclusiveTransactionWaitsForTheFilesItReads) {
    ASSERT_EQ(holder.begin(), 0);
    ASSERT_EQ(holder.insert("x0"), 0);
    ASSERT_EQ(other.begin(19), 0);
    std::future<int32_t> reader = later([&] { return other.read('x'); });
    EXPECT_TRUE(isWaiting(reader));
    ASSERT_EQ(holder.end(), 0);
    EXPECT_EQ(reader.get(), 0);
    std::future<int32_t> changer = later([&] { return holder.insert("y0"); });
    EXPECT_TRUE(isWaiting(changer));
    ASSERT_EQ(other.end(), 0);
    EXPECT_EQ(changer.get(), 0);
}

// Both limits in one test, since each takes half a minute.
TEST_F(LockWaitTest, EndsAfterThirtySeconds) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer follows no child of a process that had threads";
#endif
    LockProcess process([&] {
        auto *client = new LockClient(9, paths);
        return client->read('a', 400) == 0 && client->begin() == 0 && client->insert("x0") == 0;
    });
    auto start = std::chrono::steady_clock::now();
    auto timed = [start](int32_t status) {
        auto seconds = std::chrono::steady_clock::now() - start;
        EXPECT_GT(seconds, std::chrono::seconds(29));
        EXPECT_LT(seconds, std::chrono::seconds(45));
        return status;
    };
    std::future<int32_t> record = later([&] { return timed(holder.read('a', 100)); });
    std::future<int32_t> change = later([&] { return timed(other.insert("y0")); });
    std::future<int32_t> exclusive =
        later([&] { return third.begin(19) == 0 ? timed(third.read('b')) : -1; });
    EXPECT_EQ(record.get(), 84);
    EXPECT_EQ(change.get(), 85);
    EXPECT_EQ(exclusive.get(), 85);
}

TEST_F(LockWaitTest, NothingWaitsInATransactionThatNeverWaits) {
    ASSERT_EQ(holder.read('a', 400), 0);
    ASSERT_EQ(holder.begin(), 0);
    ASSERT_EQ(holder.insert("x0"), 0);
    ASSERT_EQ(other.begin(1519), 0);
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(other.read('a', 100), 84);
    EXPECT_EQ(other.read('a', 300), 84);
    EXPECT_EQ(other.insert("y0"), 85);
    ASSERT_EQ(other.end(), 0);
    ASSERT_EQ(other.begin(1619), 0);
    EXPECT_EQ(other.read('a'), 84);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(other.read('b'), 0);
    EXPECT_TRUE(third.findsLocked('b'));
}

// The previous lock may only go when the new one is sure.
TEST_F(LockWaitTest, ALockIsKeptWhereTheNextRecordIsGone) {
    ASSERT_EQ(third.read('a', 100), 0);
    std::atomic<bool> isDone{false};
    std::thread changer([&] {
        while (!isDone) {
            EXPECT_EQ(holder.read('b'), 0);
            if (holder.erase() == 0) {
                EXPECT_EQ(holder.insert("b0"), 0);
            }
        }
    });
    int missed = 0;
    for (int round = 0; round < 3000; ++round) {
        int32_t status = third.read('b', 200);
        EXPECT_TRUE(status == 0 || status == 4 || status == 84) << status;
        missed += status == 4;
        EXPECT_EQ(other.read('a', 200), status == 0 ? 0 : 84);
        other.unlock(0);
        ASSERT_EQ(third.read('a', 100), 0);
        if (HasFailure())
            break;
    }
    isDone = true;
    changer.join();
    EXPECT_GT(missed, 0);
}

}  // namespace
