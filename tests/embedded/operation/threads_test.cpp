#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

#include "embedded/operation/lock_fixture.h"

namespace {

using namespace vantrel::test;

// Threads make calls of all kinds at the same time, mostly for the thread sanitizer to watch.
class ThreadsTest : public LockFixture {
  protected:
    ThreadsTest() : LockFixture(2, 1) {}

    static constexpr int threads = 4;
    static constexpr int rounds = 60;

    void run(const std::function<void(int thread, std::mt19937 &random)> &work) {
        uint32_t seed = std::random_device()();
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::vector<std::thread> running;
        for (int thread = 0; thread < threads; ++thread) {
            running.emplace_back([&work, thread, seed] {
                std::mt19937 random(seed + static_cast<uint32_t>(thread));
                work(thread, random);
            });
        }
        for (std::thread &thread : running)
            thread.join();
    }

    static void expectOneOf(int32_t status, const std::vector<int32_t> &statuses) {
        EXPECT_NE(std::find(statuses.begin(), statuses.end(), status), statuses.end()) << status;
    }

    static void change(LockClient &client, size_t file, std::mt19937 &random) {
        std::string record{static_cast<char>('a' + random() % 6), static_cast<char>('0' + random() % 10)};
        switch (random() % 3) {
            case 0:
                expectOneOf(client.insert(record, file), {0, 5, 78, 84, 85});
                break;
            case 1:
                if (client.read(record[0], 0, file) == 0)
                    expectOneOf(client.update(record, file), {0, 78, 80, 84, 85});
                break;
            default:
                if (client.read(record[0], 200, file) == 0)
                    expectOneOf(client.erase(file), {0, 78, 80, 84, 85});
        }
    }

    static void readSomething(LockClient &client, size_t file, std::mt19937 &random) {
        EngineSession &session = client.session;
        EngineSession::PositionBlock *block = client.block(file);
        static constexpr uint32_t reads[] = {8, 9, 10, 11, 12, 13, 33, 34, 62, 212, 312, 433};
        uint32_t operation = reads[random() % std::size(reads)];
        bool isStep = operation % 100 == 33 || operation % 100 == 34;
        expectOneOf(session.call(operation, block, "", "c", isStep ? -1 : 0, 2).status, {0, 9, 78, 84, 93});
        expectOneOf(session.call(6, block, "", "c", 0, 2).status, {0, 7, 8, 9});
        expectOneOf(session.call(22, block, "", "", 0, 8).status, {0, 8});
        EXPECT_EQ(session.call(15, block, std::string(500, '\0'), "k", -1).status, 0);
        for (uint32_t subFunction = 1; subFunction <= 8; ++subFunction)
            EXPECT_EQ(session.call(65, block, "ExSt" + u32(subFunction), "", 0, 5000).status, 0);
        client.unlock(-2, file);
    }

    static void transact(LockClient &client, std::mt19937 &random) {
        static constexpr uint32_t kinds[] = {19, 1019, 1519, 419, 1219};
        EXPECT_EQ(client.begin(kinds[random() % std::size(kinds)]), 0);
        for (size_t step = 0; step < 3; ++step)
            change(client, random() % 2, random);
        expectOneOf(random() % 2 == 0 ? client.end() : client.abort(), {0});
    }
};

TEST_F(ThreadsTest, WorkOnTheSameFiles) {
    run([this](int thread, std::mt19937 &random) {
        LockClient client(static_cast<uint8_t>(10 + thread), paths);
        for (int round = 0; round < rounds; ++round) {
            size_t file = random() % 2;
            switch (random() % 4) {
                case 0:
                    change(client, file, random);
                    break;
                case 1:
                    transact(client, random);
                    break;
                default:
                    readSomething(client, file, random);
            }
            client.unlock(-2, file);
        }
    });
    Reply last = clients[0]->session.call(15, clients[0]->block(), std::string(500, '\0'), "k", -1);
    int count = 0;
    for (int32_t status = clients[0]->session.call(12, clients[0]->block(), "", "k", 0, 2).status;
         status == 0; ++count)
        status = clients[0]->session.call(6, clients[0]->block(), "", "k", 0, 2).status;
    EXPECT_EQ(number(last.data, 8, 8), static_cast<uint64_t>(count));
}

TEST_F(ThreadsTest, OpenAndCloseTheSameFiles) {
    run([this](int thread, std::mt19937 &random) {
        EngineSession session(static_cast<uint8_t>(10 + thread));
        for (int round = 0; round < rounds / 2; ++round) {
            EngineSession::PositionBlock block{}, other{};
            const std::string &path = paths[random() % 2];
            int32_t mode = -static_cast<int32_t>(random() % 4);
            ASSERT_EQ(session.open(&block, path, mode), 0);
            EXPECT_EQ(session.call(33, &block, "", "", -1, 2).status, 0);
            expectOneOf(session.open(&other, path, -4), {85});
            EXPECT_EQ(session.call(1, &block).status, 0);
            EXPECT_EQ(session.call(17, nullptr, "", directory.path() + '\0', 0).status, 0);
            EXPECT_EQ(session.call(28, nullptr).status, 0);
        }
    });
}

TEST_F(ThreadsTest, ShareOneSession) {
    run([this](int thread, std::mt19937 &random) {
        EngineSession session(50);
        for (int round = 0; round < rounds / 2; ++round) {
            EngineSession::PositionBlock block{};
            if (session.open(&block, paths[0]) != 0)
                continue;
            expectOneOf(session.call(12, &block, "", "k", 0, 2).status, {0, 3});
            expectOneOf(session.call(1, &block).status, {0, 3});
            if (thread == 0 && random() % 4 == 0) {
                EXPECT_EQ(session.call(28, nullptr).status, 0);
            }
        }
    });
}

TEST_F(ThreadsTest, MakeAndRemoveFilesOfTheirOwn) {
    run([this](int thread, std::mt19937 &random) {
        EngineSession session(static_cast<uint8_t>(10 + thread));
        std::string path = directory / ("own" + std::to_string(thread));
        for (int round = 0; round < 8; ++round) {
            EngineSession::PositionBlock block{};
            ASSERT_EQ(session.create(path, createRequest(2, 0, {{{0, 1}}})), 0);
            ASSERT_EQ(session.open(&block, path, random() % 2 == 0 ? 0 : -4), 0);
            EXPECT_EQ(session.call(2, &block, "a1", "", 0).status, 0);
            EXPECT_EQ(session.call(31, &block, segmentBytes({1, 1}), "", 0x81).status, 0);
            EXPECT_EQ(session.call(13, &block, "", "k", 1, 2).data, "a1");
            EXPECT_EQ(session.call(1, &block).status, 0);
            EXPECT_EQ(session.call(14, nullptr, "", path + '\0', -128).status, 0);
        }
    });
}

TEST_F(ThreadsTest, WaitForEachOtherUntilAllAreStopped) {
    run([this](int thread, std::mt19937 &random) {
        EngineSession stopper(static_cast<uint8_t>(20 + thread));
        for (int round = 0; round < rounds / 6; ++round) {
            LockClient client(static_cast<uint8_t>(10 + thread), paths);
            for (size_t step = 0; step < 4; ++step) {
                size_t file = random() % 2;
                expectOneOf(client.begin(), {0, 37});
                expectOneOf(client.read(static_cast<char>('a' + random() % 3), 300, file), {0, 3, 78});
                expectOneOf(client.update("a1", file), {0, 3, 5, 8, 10, 78, 80, 84});
            }
            if (random() % 4 == 0) {
                EXPECT_EQ(stopper.call(25, nullptr).status, 0);
            }
            expectOneOf(client.end(), {0, 39});
        }
    });
}

TEST_F(ThreadsTest, CopyAFileThatOthersChange) {
    std::atomic<int> begun{0};
    run([this, &begun](int thread, std::mt19937 &random) {
        LockClient client(static_cast<uint8_t>(10 + thread), paths);
        const std::string name = paths[0] + '\0';
        for (int round = 0; round < rounds / 10; ++round) {
            change(client, random() % 2, random);
            client.unlock(-2, 0);
            client.unlock(-2, 1);
            if (thread != 0)
                continue;
            int32_t status = client.session.call(42, nullptr, name, "", 0).status;
            expectOneOf(status, {0, 85});
            if (status != 0)
                continue;
            ++begun;
            change(client, random() % 2, random);
            EXPECT_EQ(client.session.call(42, nullptr, name, "", 1).status, 0);
        }
    });
    EXPECT_GT(begun, 0);
}

TEST_F(ThreadsTest, AskForPercentagesOfWhatOthersChange) {
    run([this](int thread, std::mt19937 &random) {
        LockClient client(static_cast<uint8_t>(10 + thread), paths);
        EngineSession &session = client.session;
        for (int round = 0; round < rounds; ++round) {
            change(client, 0, random);
            client.unlock(-2, 0);
            int32_t index = random() % 2 == 0 ? 0 : -1;
            std::string part = u32(static_cast<uint32_t>(random() % 10001));
            expectOneOf(session.call(44, client.block(), part, "k", index).status, {0, 9});
            Reply address = session.call(22, client.block(), "", "", 0, 8);
            if (address.status == 0)
                expectOneOf(session.call(45, client.block(), address.data, "a", index).status, {0, 43, 44});
        }
    });
}

TEST_F(ThreadsTest, OpenAndChangeEncryptedFiles) {
    for (size_t file : {0u, 1u})
        ASSERT_EQ(clients[0]
                      ->session.call(29, clients[0]->block(file), "harbour", "harbour", file == 0 ? 2 : 3)
                      .status,
                  0);
    run([this](int thread, std::mt19937 &random) {
        EngineSession session(static_cast<uint8_t>(10 + thread));
        for (int round = 0; round < rounds / 30; ++round) {
            EngineSession::PositionBlock block{};
            const std::string &path = paths[random() % 2];
            ASSERT_EQ(session.call(0, &block, "harbour", path + '\0', 0).status, 0);
            std::string record{static_cast<char>('d' + thread), '0'};
            EXPECT_EQ(session.call(2, &block, record, "", -1).status, 0);
            EXPECT_EQ(session.call(4, &block).status, 0);
            expectOneOf(session.call(42, nullptr, path + '\0', "", 0).status, {0, 41, 85});
            EXPECT_EQ(session.call(28, nullptr).status, 0);
        }
    });
}

}  // namespace
