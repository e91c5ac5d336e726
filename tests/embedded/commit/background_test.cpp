#include <atomic>
#include <chrono>
#include <filesystem>
#include <thread>

#include "embedded/commit/crash_fixture.h"

namespace {

using namespace vantrel::test;
using namespace std::chrono_literals;

// What is done for a session without a call of its own.
class BackgroundTest : public CrashTest {
  protected:
    int32_t insert(ThreeFiles &files, const std::string &record) {
        return files.session.call(2, &files.blocks[0], record, "", -1).status;
    }
    template <class Condition>
    static bool comesWithin(std::chrono::milliseconds longest, Condition condition) {
        auto end = std::chrono::steady_clock::now() + longest;
        while (!condition() && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(5ms);
        return condition();
    }

    std::atomic<int> syncs = 0;
    SystemCallWatch::Decision countSyncs = [this](const SystemCall &call) {
        syncs += call.name == "fsync" && call.path == directory / "first-wal";
        return Fate::happens;
    };
};

TEST_F(BackgroundTest, ASingleChangeIsSyncedWithinASecond) {
    ThreeFiles files(directory, 1);
    ASSERT_EQ(files.open(), 0);
    for (const char *record : {"e1", "f1"}) {
        SystemCallWatch watch(directory.path(), countSyncs, SystemCallWatch::Threads::others);
        ASSERT_EQ(insert(files, record), 0);
        EXPECT_TRUE(comesWithin(1s, [&] { return syncs == 1; }));
        std::this_thread::sleep_for(600ms);
        EXPECT_EQ(syncs.exchange(0), 1);
    }
}

TEST_F(BackgroundTest, AlsoWhenATransactionFollowsIt) {
    ThreeFiles files(directory, 1);
    ASSERT_EQ(files.open(), 0);
    ASSERT_EQ(insert(files, "e1"), 0);
    ASSERT_EQ(files.begin(), 0);
    ASSERT_EQ(insert(files, "f1"), 0);
    SystemCallWatch watch(directory.path(), countSyncs, SystemCallWatch::Threads::others);
    EXPECT_TRUE(comesWithin(1s, [&] { return syncs == 1; }));
    ASSERT_EQ(files.end(), 0);
}

TEST_F(BackgroundTest, AlsoWhileTheSessionWaitsForALock) {
    constexpr uint32_t getEqual = 5, singleWait = 100;
    ThreeFiles holder(directory, 1), waiter(directory, 2);
    ASSERT_EQ(holder.open(), 0);
    ASSERT_EQ(waiter.open(), 0);
    ASSERT_EQ(holder.session.call(getEqual + singleWait, &holder.blocks[1], "", "a", 0, 2).status, 0);
    // The log has a header then.
    ASSERT_EQ(insert(waiter, "e1"), 0);
    std::atomic<bool> isOver = false;
    SystemCallWatch watch(directory.path(), countSyncs, SystemCallWatch::Threads::others);
    ASSERT_TRUE(comesWithin(1s, [&] { return syncs == 1; }));
    syncs = 0;
    std::thread waiting([&] {
        EXPECT_EQ(insert(waiter, "f1"), 0);
        EXPECT_EQ(waiter.session.call(getEqual + singleWait, &waiter.blocks[1], "", "a", 0, 2).status, 0);
        isOver = true;
    });
    EXPECT_TRUE(comesWithin(1s, [&] { return syncs == 1; }));
    EXPECT_FALSE(isOver);
    EXPECT_EQ(holder.close(1), 0);
    waiting.join();
}

// What a session has read must not keep the log from being emptied as long as it waits for something else.
TEST_F(BackgroundTest, AWaitHoldsNoContinuousOperationUp) {
    constexpr uint32_t continuousOperation = 42, getFirst = 12;
    constexpr int32_t begin = 0;
    ThreeFiles holder(directory, 1), waiter(directory, 2);
    ASSERT_EQ(holder.open(), 0);
    ASSERT_EQ(waiter.open(), 0);
    ASSERT_EQ(holder.begin(), 0);
    ASSERT_EQ(insert(holder, "e1"), 0);
    ASSERT_EQ(waiter.session.call(2, &waiter.blocks[1], "e1", "", -1).status, 0);
    ASSERT_EQ(waiter.session.call(getFirst, &waiter.blocks[1], "", "?", 0, 2).status, 0);
    std::atomic<bool> isOver = false;
    std::thread waiting([&] {
        EXPECT_EQ(insert(waiter, "f1"), 0);
        isOver = true;
    });
    EngineSession other(3);
    std::string second = ThreeFiles::path(directory, 1) + '\0';
    EXPECT_EQ(other.call(continuousOperation, nullptr, second, "", begin).status, 0);
    EXPECT_FALSE(isOver);
    EXPECT_EQ(holder.end(), 0);
    waiting.join();
}

TEST_F(BackgroundTest, ALongLogIsBroughtIntoTheFileWhenNobodyWrites) {
    constexpr uintmax_t megabyte = 1 << 20;
    ThreeFiles files(directory, 1);
    ASSERT_EQ(files.open(), 0);
    for (char key = 'e'; key < 'q'; ++key)
        ASSERT_EQ(insert(files, key + std::string(60000, 'x')), 0);
    std::string path = ThreeFiles::path(directory, 0);
    std::this_thread::sleep_for(1s);
    ASSERT_LT(std::filesystem::file_size(path), megabyte);

    std::string bytes(megabyte, 'y');
    ASSERT_EQ(files.session.call(5, &files.blocks[0], "", "b", 0, 65535).status, 0);
    for (int length = 0; length < 12; ++length)
        ASSERT_EQ(files.append(&files.blocks[0], bytes), 0);
    EXPECT_TRUE(comesWithin(5s, [&] { return std::filesystem::file_size(path) > 12 * megabyte; }));
}

}  // namespace
