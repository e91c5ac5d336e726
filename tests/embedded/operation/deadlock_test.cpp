#include <algorithm>
#include <thread>

#include "embedded/operation/lock_fixture.h"

namespace {

using namespace vantrel::test;

class DeadlockTest : public LockFixture {
  protected:
    DeadlockTest() : LockFixture(3, 3) {}

    // The calls, each by its client, wait for each other: one gets 78, and as each client lets go of what it
    // holds afterwards, all others succeed.
    void oneIsRefused(const std::vector<std::function<int32_t()>> &calls) {
        std::vector<std::future<int32_t>> running;
        for (size_t client = 0; client < calls.size(); ++client) {
            running.push_back(later([this, client, call = calls[client]] {
                int32_t status = call();
                EXPECT_EQ(clients[client]->reset(), 0);
                return status;
            }));
        }
        std::vector<int32_t> statuses;
        for (auto &call : running) {
            ASSERT_TRUE(endsSoon(call));
            statuses.push_back(call.get());
        }
        std::sort(statuses.begin(), statuses.end());
        std::vector<int32_t> expected(calls.size(), 0);
        expected.back() = 78;
        EXPECT_EQ(statuses, expected);
    }

    static constexpr char letters[] = {'a', 'b', 'c'};
};

TEST_F(DeadlockTest, RecordsInACycle) {
    for (uint32_t length : {2u, 3u}) {
        for (size_t client = 0; client < length; ++client) {
            clients[client] = nullptr;
            clients[client] = std::make_unique<LockClient>(static_cast<uint8_t>(client + 1), paths);
            ASSERT_EQ(clients[client]->read(letters[client], 300), 0);
        }
        std::vector<std::function<int32_t()>> calls;
        for (size_t client = 0; client < length; ++client)
            calls.push_back([=, this] { return clients[client]->read(letters[(client + 1) % length], 300); });
        oneIsRefused(calls);
    }
}

TEST_F(DeadlockTest, WriteSidesInACycle) {
    for (uint32_t length : {2u, 3u}) {
        for (size_t client = 0; client < length; ++client) {
            clients[client] = nullptr;
            clients[client] = std::make_unique<LockClient>(static_cast<uint8_t>(client + 1), paths);
            ASSERT_EQ(clients[client]->begin(client == 0 ? 19 : 1019), 0);
            ASSERT_EQ(clients[client]->insert("x0", client), 0);
        }
        std::vector<std::function<int32_t()>> calls;
        for (size_t client = 0; client < length; ++client)
            calls.push_back([=, this] { return clients[client]->insert("y0", (client + 1) % length); });
        oneIsRefused(calls);
    }
}

TEST_F(DeadlockTest, ALockedRecordAgainstAWriteSide) {
    ASSERT_EQ(clients[0]->read('a', 300), 0);
    ASSERT_EQ(clients[1]->begin(), 0);
    ASSERT_EQ(clients[1]->insert("x0"), 0);
    oneIsRefused(
        {[this] { return clients[0]->insert("y0"); }, [this] { return clients[1]->read('a', 100); }});
}

TEST_F(DeadlockTest, ARecordChangedInATransactionAgainstALockedOne) {
    ASSERT_EQ(clients[0]->begin(), 0);
    ASSERT_EQ(clients[0]->read('a'), 0);
    ASSERT_EQ(clients[0]->update("a1"), 0);
    ASSERT_EQ(clients[1]->read('b', 300), 0);
    oneIsRefused(
        {[this] { return clients[0]->read('b', 100); }, [this] { return clients[1]->read('a', 300); }});
}

TEST_F(DeadlockTest, AnExclusiveTransactionsReadAgainstAWriteSide) {
    for (size_t client : {0u, 1u}) {
        ASSERT_EQ(clients[client]->begin(19), 0);
        ASSERT_EQ(clients[client]->read('a', 0, client), 0);
    }
    oneIsRefused(
        {[this] { return clients[0]->read('a', 0, 1); }, [this] { return clients[1]->read('a', 0, 0); }});
}

TEST_F(DeadlockTest, TheOneRefusedKeepsItsTransaction) {
    ASSERT_EQ(clients[0]->read('a', 300), 0);
    ASSERT_EQ(clients[1]->begin(), 0);
    ASSERT_EQ(clients[1]->insert("x0"), 0);
    std::future<int32_t> waiter = later([this] { return clients[1]->read('a', 100); });
    EXPECT_TRUE(isWaiting(waiter));
    auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(clients[0]->begin(), 0);
    EXPECT_EQ(clients[0]->insert("y0"), 78);
    EXPECT_EQ(clients[0]->insert("y0"), 78);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(clients[0]->abort(), 0);
    EXPECT_TRUE(isWaiting(waiter));
    EXPECT_EQ(clients[0]->unlock(-2), 0);
    EXPECT_EQ(waiter.get(), 0);
    EXPECT_EQ(clients[1]->end(), 0);
}

TEST_F(DeadlockTest, AWaitForADeletedRecordMakesNoCycle) {
    for (int round = 0; round < 10; ++round) {
        ASSERT_EQ(clients[0]->read('a', 300), 0);
        ASSERT_EQ(clients[1]->read('b', 300), 0);
        std::future<int32_t> waiter = later([this] {
            int32_t status = clients[1]->read('a', 300);
            EXPECT_EQ(clients[1]->unlock(-2), 0);
            return status;
        });
        EXPECT_TRUE(isWaiting(waiter));
        ASSERT_EQ(clients[0]->erase(), 0);
        EXPECT_EQ(clients[0]->read('b', 300), 0);
        EXPECT_EQ(waiter.get(), 4);
        ASSERT_EQ(clients[0]->unlock(-2), 0);
        ASSERT_EQ(clients[0]->insert("a0"), 0);
    }
}

TEST_F(DeadlockTest, TwoPositionsOfOneSessionAreNoCycle) {
    EngineSession::PositionBlock second{};
    ASSERT_EQ(clients[0]->session.open(&second, paths[0]), 0);
    ASSERT_EQ(clients[0]->read('a', 300), 0);
    EXPECT_EQ(clients[0]->session.call(305, &second, "", "a", 0, 2).status, 0);
    ASSERT_EQ(clients[0]->unlock(-2), 0);
    EXPECT_TRUE(clients[1]->findsLocked('a'));
    ASSERT_EQ(clients[0]->session.call(1, &second).status, 0);
    EXPECT_FALSE(clients[1]->findsLocked('a'));
}

}  // namespace
