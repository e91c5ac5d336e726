#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <random>
#include <thread>

#include "embedded/operation/engine_session.h"
#include "embedded/quiet_fork.h"

namespace {

using namespace vantrel::test;

constexpr uint32_t recordCount = 4;
constexpr uint32_t recordLength = 5;

// What the workers have in common: what was counted for each record, before and after the change.
struct Tally {
    std::atomic<uint32_t> begun[recordCount], done[recordCount], deadlocks;
};

// A worker counts in records that it has locked, so that no count may be lost.
class Worker {
  public:
    Worker(uint8_t number, const std::string &path, uint32_t seed) : session_(number), random_(seed) {
        EXPECT_EQ(session_.open(&block_, path), 0);
    }

    // Locks one record at a time, and sees that nobody changes it meanwhile.
    void countOne(Tally *tally) {
        auto record = static_cast<uint32_t>(random_() % recordCount);
        uint32_t bias = random_() % 2 == 0 ? 100 : 300;
        ASSERT_EQ(read(record, bias), 0);
        uint32_t value = value_;
        if (random_() % 4 == 0)
            std::this_thread::sleep_for(std::chrono::microseconds(random_() % 500));
        ASSERT_EQ(read(record, 0), 0);
        ASSERT_EQ(value_, value);
        ++tally->begun[record];
        ASSERT_EQ(write(record, value + 1), 0);
        ++tally->done[record];
        ASSERT_EQ(unlockAll(), 0);
    }

    // Locks several records, always in the same order, so that no wait is for ever.
    void countInOrder(Tally *tally) {
        ASSERT_EQ(session_.call(1019, nullptr).status, 0);
        auto mask = static_cast<uint32_t>(random_() % (1u << recordCount));
        for (uint32_t record = 0; record < recordCount; ++record) {
            if ((mask >> record & 1) == 0)
                continue;
            ASSERT_EQ(read(record, 300), 0);
        }
        countLocked(mask, tally);
    }

    // Locks two records in any order. False where somebody else has to go first.
    bool countInAnyOrder(Tally *tally) {
        EXPECT_EQ(session_.call(random_() % 2 == 0 ? 1019 : 19, nullptr).status, 0);
        auto first = static_cast<uint32_t>(random_() % recordCount);
        auto second = static_cast<uint32_t>(random_() % recordCount);
        for (uint32_t record : {first, second}) {
            int32_t status = read(record, 300);
            if (status == 78) {
                ++tally->deadlocks;
                EXPECT_EQ(session_.call(21, nullptr).status, 0);
                return false;
            }
            EXPECT_EQ(status, 0);
        }
        countLocked(1u << first | 1u << second, tally);
        return true;
    }

  private:
    void countLocked(uint32_t mask, Tally *tally) {
        for (uint32_t record = 0; record < recordCount; ++record) {
            if ((mask >> record & 1) == 0)
                continue;
            ASSERT_EQ(read(record, 0), 0);
            int32_t status = write(record, value_ + 1);
            if (status == 78) {
                ++tally->deadlocks;
                ASSERT_EQ(session_.call(21, nullptr).status, 0);
                return;
            }
            ASSERT_EQ(status, 0);
        }
        bool keeps = random_() % 4 != 0;
        for (uint32_t record = 0; keeps && record < recordCount; ++record)
            tally->begun[record] += mask >> record & 1;
        ASSERT_EQ(session_.call(keeps ? 20 : 21, nullptr).status, 0);
        for (uint32_t record = 0; keeps && record < recordCount; ++record)
            tally->done[record] += mask >> record & 1;
    }

    int32_t read(uint32_t record, uint32_t bias) {
        Reply reply =
            session_.call(5 + bias, &block_, "", {static_cast<char>('a' + record)}, 0, recordLength);
        if (reply.status == 0)
            value_ = static_cast<uint32_t>(number(reply.data, 1, 4));
        return reply.status;
    }
    int32_t write(uint32_t record, uint32_t value) {
        return session_.call(3, &block_, static_cast<char>('a' + record) + u32(value), "", -1).status;
    }
    int32_t unlockAll() { return session_.call(27, &block_, "", "", -2).status; }

    EngineSession session_;
    EngineSession::PositionBlock block_{};
    std::mt19937 random_;
    uint32_t value_ = 0;
};

class LockStressTest : public testing::Test {
  protected:
    LockStressTest() {
        void *shared =
            mmap(nullptr, sizeof(Tally), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        EXPECT_NE(shared, MAP_FAILED);
        tally = new (shared) Tally{};
        EXPECT_EQ(session.create(path, createRequest(recordLength, 0, {{{0, 1}}})), 0);
        EXPECT_EQ(session.open(&block, path, -1), 0);
        for (uint32_t record = 0; record < recordCount; ++record)
            EXPECT_EQ(session.call(2, &block, static_cast<char>('a' + record) + u32(0), "", -1).status, 0);
    }
    ~LockStressTest() override { munmap(tally, sizeof(Tally)); }

    // Nothing that ended well is lost; what was cut off counts or not.
    void checkCounts() {
        for (uint32_t record = 0; record < recordCount; ++record) {
            Reply reply = session.call(5, &block, "", {static_cast<char>('a' + record)}, 0, recordLength);
            ASSERT_EQ(reply.status, 0);
            EXPECT_GE(number(reply.data, 1, 4), tally->done[record]);
            EXPECT_LE(number(reply.data, 1, 4), tally->begun[record]);
            counted += tally->done[record];
        }
        EXPECT_GT(counted, 0u);
    }

    void runThreads(int threads, const std::function<void(Worker &)> &work) {
        std::vector<std::thread> running;
        for (int thread = 0; thread < threads; ++thread) {
            running.emplace_back([this, thread, &work] {
                Worker worker(static_cast<uint8_t>(10 + thread), path, seed + static_cast<uint32_t>(thread));
                work(worker);
            });
        }
        for (std::thread &thread : running)
            thread.join();
        checkCounts();
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
    Tally *tally = nullptr;
    uint64_t counted = 0;
    const uint32_t seed = std::random_device()();
    testing::ScopedTrace trace{__FILE__, __LINE__, "seed " + std::to_string(seed)};
};

TEST_F(LockStressTest, ThreadsLoseNoChangeOfALockedRecord) {
    runThreads(6, [&](Worker &worker) {
        for (int round = 0; round < 150 && !HasFailure(); ++round)
            worker.countOne(tally);
    });
    EXPECT_EQ(counted, 900u);
}

TEST_F(LockStressTest, ThreadsThatLockInOneOrderNeverMeetADeadlock) {
    runThreads(6, [&](Worker &worker) {
        for (int round = 0; round < 60 && !HasFailure(); ++round)
            worker.countInOrder(tally);
    });
    EXPECT_EQ(tally->deadlocks, 0u);
}

TEST_F(LockStressTest, DeadlocksOfThreadsAreAllBroken) {
    auto start = std::chrono::steady_clock::now();
    runThreads(4, [&](Worker &worker) {
        for (int round = 0; round < 40 && !HasFailure(); ++round) {
            while (!HasFailure() && !worker.countInAnyOrder(tally)) {
            }
        }
    });
    EXPECT_GT(tally->deadlocks, 0u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

// Some of them are killed at any moment.
TEST_F(LockStressTest, ProcessesLoseNoChangeOfALockedRecord) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer follows no child of a process that had threads";
#endif
    std::mt19937 random(seed);
    for (size_t count : {2u, 5u, 8u}) {
        std::vector<pid_t> processes;
        for (size_t process = 0; process < count; ++process) {
            auto childSeed = static_cast<uint32_t>(random());
            processes.push_back(forkWhileQuiet([&] {
                auto *worker = new Worker(20, path, childSeed);
                for (int round = 0; round < 80 && !HasFailure(); ++round)
                    round % 4 == 0 ? worker->countInOrder(tally) : worker->countOne(tally);
                return HasFailure() ? 1 : 0;
            }));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 300));
        for (size_t process = 0; process < count / 2; ++process)
            kill(processes[process], SIGKILL);
        for (size_t process = 0; process < count; ++process) {
            int status = 0;
            ASSERT_EQ(waitpid(processes[process], &status, 0), processes[process]);
            EXPECT_TRUE(status == 0 || (process < count / 2 && status == SIGKILL)) << status;
        }
        checkCounts();
    }
}

}  // namespace
