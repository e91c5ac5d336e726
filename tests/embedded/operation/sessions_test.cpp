#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <thread>

#include "embedded/operation/engine_session.h"
#include "embedded/quiet_fork.h"

namespace {

using namespace vantrel::test;

class SessionsTest : public testing::Test {
  protected:
    SessionsTest() {
        EXPECT_EQ(session.create(path, createRequest(2, 0, {{{0, 1, extendedType, unsignedType}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        EXPECT_EQ(session.call(2, &block, "b1", "", -1).status, 0);
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(SessionsTest, UnknownOperationsAreRefused) {
    for (uint32_t operation :
         {16u,  41u,  43u,  46u,   54u,   64u,    73u,    99u,    100u,        102u,       114u,
          155u, 500u, 505u, 1018u, 1520u, 17028u, 17030u, 17129u, 0x80000005u, 0xFFFFFFFFu})
        EXPECT_EQ(session.call(operation, &block, "", "k", 0, 2).status, 1) << operation;
}

TEST_F(SessionsTest, BlocksThatTheEngineDidNotWriteAreRefused) {
    EngineSession::PositionBlock zero{};
    EXPECT_EQ(session.call(12, &zero, "", "k", 0, 2).status, 3);
    EXPECT_EQ(session.call(12, nullptr, "", "k", 0, 2).status, 3);
    EngineSession::PositionBlock copy = block;
    EXPECT_EQ(session.call(12, &copy, "", "k", 0, 2).status, 3);
    for (size_t byte = 0; byte < block.size(); ++byte) {
        block[byte] ^= 1;
        EXPECT_EQ(session.call(12, &block, "", "k", 0, 2).status, 3) << byte;
        block[byte] ^= 1;
    }
    EXPECT_EQ(session.call(12, &block, "", "k", 0, 2).status, 0);
}

TEST_F(SessionsTest, PositionsBelongToTheirSession) {
    EngineSession other(2);
    EXPECT_EQ(other.call(12, &block, "", "k", 0, 2).status, 3);
    EXPECT_EQ(other.call(1, &block).status, 3);
    EXPECT_EQ(session.call(12, &block, "", "k", 0, 2).status, 0);
}

TEST_F(SessionsTest, AClosedPositionIsStale) {
    EngineSession::PositionBlock stale = block;
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(session.call(1, &block).status, 3);
    block = stale;
    EXPECT_EQ(session.call(12, &block, "", "k", 0, 2).status, 3);
}

TEST_F(SessionsTest, ResetEndsEverything) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(2, &block, "c1", "", -1).status, 0);
    ASSERT_EQ(session.call(28, nullptr).status, 0);
    EXPECT_EQ(session.call(12, &block, "", "k", 0, 2).status, 3);
    EXPECT_EQ(session.call(20, nullptr).status, 39);
    ASSERT_EQ(session.open(&block, path), 0);
    EXPECT_EQ(session.call(13, &block, "", "k", 0, 2).data, "b1");
}

TEST_F(SessionsTest, StopEndsAllSessionsOfTheProcess) {
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    EXPECT_EQ(other.call(25, nullptr).status, 0);
    EXPECT_EQ(session.call(12, &block, "", "k", 0, 2).status, 3);
    EXPECT_EQ(other.call(12, &otherBlock, "", "k", 0, 2).status, 3);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"file"}));
}

TEST_F(SessionsTest, TheLastCloseLeavesTheFileAlone) {
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"file", "file-lock", "file-shm", "file-wal"}));
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"file"}));
}

TEST_F(SessionsTest, VersionWritesFifteenBytes) {
    Reply reply = session.call(26, nullptr, std::string(19, '\xEE'));
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.data, std::string("\x10\0\0\0N\x10\0\0\0B\0\0\0\0\0", 15));
    EXPECT_EQ(session.call(26, &block, std::string(15, '\0')).status, 0);
    EXPECT_EQ(session.call(26, nullptr, std::string(14, '\0')).status, 22);
}

TEST_F(SessionsTest, RelativeNamesFollowTheDirectory) {
    EXPECT_EQ(session.call(17, nullptr, "", directory.path() + '\0', 0).status, 0);
    Reply reply = session.call(18, nullptr, "", std::string(4096, '\0'), 0);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.key.c_str(), directory.path());
    EngineSession::PositionBlock second{};
    EXPECT_EQ(session.open(&second, "file"), 0);
    EXPECT_EQ(
        session.open(&second, "./../" + directory.path().substr(directory.path().rfind('/') + 1) + "/file"),
        0);
    EngineSession other(2);
    EXPECT_EQ(other.open(&second, "file"), 12);
}

TEST_F(SessionsTest, DirectoryFailures) {
    EXPECT_EQ(session.call(17, nullptr, "", directory / "none" + '\0', 0).status, 35);
    EXPECT_EQ(session.call(17, nullptr, "", path + '\0', 0).status, 35);
    EXPECT_EQ(session.call(17, nullptr, "", directory.path() + '\0', 1).status, 35);
    EXPECT_EQ(session.call(18, nullptr, "", std::string(4096, '\0'), 26).status, 35);
    EXPECT_EQ(session.call(18, nullptr, "", "ab", 0).status, 21);
    EXPECT_EQ(session.call(17, nullptr, "", "", 0).status, 21);
}

TEST_F(SessionsTest, LoginKeepsNamesUntilLogout) {
    auto login = [&](const std::string &text, int32_t keyNumber) {
        return session.call(78, nullptr, "", text + '\0', keyNumber).status;
    };
    EXPECT_EQ(login("vantrel://ann@/stock?a=b&c=d", 0), 0);
    EXPECT_EQ(login("vantrel:///stock", 0), 173);
    EXPECT_EQ(login("vantrel:///", 1), 0);
    EXPECT_EQ(login("vantrel:///", 1), 174);
    EXPECT_EQ(login("vantrel://server/stock", 0), 3014);
    for (const char *text : {"", "vantrel:", "vantrel://", "other:///x", "vantrel://@/x", "vantrel:///x?y",
                             "vantrel:///x/y", "vantrel:///x?=y"})
        EXPECT_EQ(login(text, 0), 175) << text;
}

TEST_F(SessionsTest, ExclusiveOpeningKeepsOthersOut) {
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    EXPECT_EQ(other.open(&otherBlock, path, -4), 85);
    EXPECT_EQ(session.open(&otherBlock, path, -4), 85);
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(other.open(&otherBlock, path, -4), 0);
    EXPECT_EQ(session.open(&block, path), 85);
    EXPECT_EQ(other.call(1, &otherBlock).status, 0);
    EXPECT_EQ(session.open(&block, path), 0);
}

TEST_F(SessionsTest, OpenValues) {
    EngineSession::PositionBlock second{};
    for (int32_t mode : {0, -1, -2, -3, 6, 7, 8, 9}) {
        EXPECT_EQ(session.open(&second, path, mode), 0) << mode;
        EXPECT_EQ(session.call(1, &second).status, 0);
    }
    for (int32_t mode = 99; mode <= 103; ++mode)
        EXPECT_EQ(session.open(&second, path, mode), 3014);
    for (int32_t mode : {1, 5, 11, 98, 104, -5})
        EXPECT_EQ(session.open(&second, path, mode), 139) << mode;
}

TEST_F(SessionsTest, ReadOnlyPositionsRefuseChanges) {
    for (int32_t mode : {-2, 8}) {
        EngineSession::PositionBlock reader{};
        ASSERT_EQ(session.open(&reader, path, mode), 0);
        EXPECT_EQ(session.call(12, &reader, "", "k", 0, 2).data, "b1");
        EXPECT_EQ(session.call(2, &reader, "c1", "", -1).status, 46);
        EXPECT_EQ(session.call(3, &reader, "b2", "", -1).status, 46);
        EXPECT_EQ(session.call(4, &reader).status, 46);
        EXPECT_EQ(session.call(31, &reader, segmentBytes({1, 1}), "", 0).status, 46);
        EXPECT_EQ(session.call(32, &reader, "", "", 0).status, 46);
    }
}

TEST_F(SessionsTest, ThreadsWorkThroughSessionsOfTheirOwn) {
    constexpr int threads = 4, each = 50;
    std::vector<std::thread> workers;
    for (int worker = 0; worker < threads; ++worker) {
        workers.emplace_back([&, worker] {
            EngineSession mine(static_cast<uint8_t>(10 + worker));
            EngineSession::PositionBlock own{};
            ASSERT_EQ(mine.open(&own, path), 0);
            for (int record = 0; record < each; ++record) {
                std::string bytes{static_cast<char>(worker * each + record + 1), 't'};
                int32_t status = mine.call(2, &own, bytes, "", -1).status;
                ASSERT_EQ(status, bytes[0] == 'b' ? 5 : 0);
                ASSERT_GE(mine.call(12, &own, "", "k", 0, 2).data.size(), 2u);
            }
        });
    }
    for (std::thread &worker : workers)
        worker.join();
    int count = 0;
    for (int32_t status = session.call(12, &block, "", "k", 0, 2).status; status == 0; ++count)
        status = session.call(6, &block, "", "k", 0, 2).status;
    EXPECT_EQ(count, threads * each);
}

size_t allocatedBytes() {
    return mallinfo2().uordblks;
}

TEST_F(SessionsTest, ClientsThatHoldNothingTakeNoMemory) {
    auto callAsClient = [](uint32_t number) {
        std::array<uint8_t, 16> identifier{};
        memcpy(identifier.data(), &number, sizeof number);
        uint8_t reply[15];
        uint32_t length = sizeof reply;
        ASSERT_EQ(VNTLEXID(26, nullptr, reply, &length, nullptr, 0, 0, identifier.data()), 0);
    };
    for (uint32_t client = 0; client < 100; ++client)
        callAsClient(client);
    [[maybe_unused]] size_t before = allocatedBytes();
    for (uint32_t client = 0; client < 10000; ++client)
        callAsClient(client);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(allocatedBytes(), before + 10000);
#endif
}

TEST_F(SessionsTest, WhatASessionHoldsOutlivesItsCalls) {
    EngineSession other(2);
    ASSERT_EQ(other.call(17, nullptr, "", directory.path() + '\0', 0).status, 0);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, "file"), 0);
    ASSERT_EQ(other.call(1, &otherBlock).status, 0);
    EXPECT_EQ(other.open(&otherBlock, "file"), 0);
    ASSERT_EQ(other.call(28, nullptr).status, 0);
    EXPECT_EQ(other.open(&otherBlock, "file"), 12);
    ASSERT_EQ(other.call(1019, nullptr).status, 0);
    EXPECT_EQ(other.call(1019, nullptr).status, 37);
    ASSERT_EQ(other.call(28, nullptr).status, 0);
    EXPECT_EQ(other.call(20, nullptr).status, 39);
    ASSERT_EQ(other.call(78, nullptr, "", std::string("vantrel:///stock") + '\0', 0).status, 0);
    EXPECT_EQ(other.call(78, nullptr, "", std::string("vantrel:///stock") + '\0', 0).status, 173);
}

// The child's exit code tells which of its expectations failed.
TEST_F(SessionsTest, AForkedChildOwnsNothingOfItsParent) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(2, &block, "c1", "", -1).status, 0);
    ASSERT_EQ(session.call(112, &block, "", "k", 0, 2).status, 0);
    pid_t child = forkWhileQuiet([&] {
        if (session.call(12, &block, "", "k", 0, 2).status != 3)
            return 1;
        EngineSession::PositionBlock own{};
        if (session.open(&own, path) != 0)
            return 2;
        if (session.call(13, &own, "", "k", 0, 2).data != "b1")
            return 3;
        if (session.call(212, &own, "", "k", 0, 2).status != 84)
            return 4;
        return session.call(1, &own).status == 0 ? 0 : 5;
    });
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "exit code " << WEXITSTATUS(status);
    EXPECT_EQ(session.call(13, &block, "", "k", 0, 2).data, "c1");
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    EXPECT_EQ(other.call(212, &otherBlock, "", "k", 0, 2).status, 84);
    EXPECT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(other.call(13, &otherBlock, "", "k", 0, 2).data, "c1");
}

}  // namespace
