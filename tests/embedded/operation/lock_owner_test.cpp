#include <thread>

#include "embedded/operation/lock_fixture.h"
#include "embedded/operation/lock_process.h"

namespace {

using namespace vantrel::test;

constexpr uint16_t implicitLock = 0x0001, explicitLock = 0x0002, fileLock = 0x0010, recordLock = 0x0040,
                   sameProcess = 0x0800, writeNoWait = 0x1000, writeHold = 0x2000, singleNoWait = 0x4000,
                   multipleWait = 0x8000, multipleNoWait = 0xC000;

class LockOwnerTest : public LockFixture {
  protected:
    LockOwnerTest() : LockFixture(1, 3) {}

    std::string owner(LockClient &client) {
        return client.session.call(65, client.block(), "ExSt" + u32(6), "", 0, 104).data;
    }
    static uint16_t flags(const std::string &reply) { return static_cast<uint16_t>(number(reply, 16, 2)); }

    LockClient &asker = *clients[0], &holder = *clients[1];
    const uint64_t ownProcess = static_cast<uint64_t>(getpid());
};

TEST_F(LockOwnerTest, IsNobodyWhereNothingWasRefused) {
    EXPECT_EQ(owner(asker), std::string(104, '\0'));
    ASSERT_EQ(asker.read('a', 200), 0);
    EXPECT_EQ(owner(asker), std::string(104, '\0'));
}

TEST_F(LockOwnerTest, IsTheSessionThatLockedTheRecord) {
    for (auto [bias, mode] :
         {std::pair{100, 0}, {200, singleNoWait}, {300, multipleWait}, {400, multipleNoWait}}) {
        ASSERT_EQ(holder.read('a', static_cast<uint32_t>(bias)), 0);
        ASSERT_EQ(asker.read('a', 200), 84);
        std::string reply = owner(asker);
        ASSERT_EQ(reply.size(), 104u);
        EXPECT_EQ(number(reply, 12, 2), 2u);
        EXPECT_EQ(number(reply, 14, 2), 0u);
        EXPECT_EQ(flags(reply), explicitLock | recordLock | sameProcess | mode);
        EXPECT_EQ(number(reply, 20, 4), 0u);
        EXPECT_EQ(number(reply, 24, 8), 0u);
        EXPECT_EQ(number(reply, 32, 4), ownProcess);
        ASSERT_EQ(holder.unlock(-2), 0);
    }
}

TEST_F(LockOwnerTest, IsToldToTheSessionThatWasRefused) {
    ASSERT_EQ(holder.read('a', 200), 0);
    ASSERT_EQ(clients[2]->read('b', 200), 0);
    ASSERT_EQ(asker.read('a', 200), 84);
    EXPECT_EQ(number(owner(asker), 12, 2), 2u);
    ASSERT_EQ(asker.read('b', 200), 84);
    EXPECT_EQ(number(owner(asker), 12, 2), 3u);
    EXPECT_EQ(owner(holder), std::string(104, '\0'));
}

TEST_F(LockOwnerTest, IsTheSessionThatChangedTheRecordInATransaction) {
    for (uint32_t begin : {1019u, 1519u}) {
        ASSERT_EQ(holder.begin(begin), 0);
        ASSERT_EQ(holder.read('a'), 0);
        ASSERT_EQ(holder.update("a1"), 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        ASSERT_EQ(asker.read('a', 200), 84);
        std::string reply = owner(asker);
        EXPECT_EQ(number(reply, 12, 2), 2u);
        EXPECT_EQ(flags(reply),
                  implicitLock | recordLock | sameProcess | (begin == 1519 ? writeNoWait : writeHold));
        EXPECT_GE(number(reply, 20, 4), 30u);
        EXPECT_LT(number(reply, 20, 4), 60000u);
        EXPECT_EQ(number(reply, 28, 4), 1u);
        ASSERT_EQ(holder.abort(), 0);
    }
    ASSERT_EQ(holder.read('a', 200), 0);
    ASSERT_EQ(asker.read('a', 200), 84);
    EXPECT_EQ(number(owner(asker), 20, 4), 0u);
    EXPECT_EQ(number(owner(asker), 28, 4), 0u);
}

TEST_F(LockOwnerTest, IsTheSessionThatKeepsARecordFromBeingChanged) {
    ASSERT_EQ(holder.read('a', 200), 0);
    ASSERT_EQ(asker.read('a'), 0);
    ASSERT_EQ(asker.update("a1"), 84);
    EXPECT_EQ(number(owner(asker), 12, 2), 2u);
    EXPECT_EQ(flags(owner(asker)), explicitLock | recordLock | sameProcess | singleNoWait);
}

TEST_F(LockOwnerTest, IsTheWriterOfTheFile) {
    ASSERT_EQ(holder.begin(), 0);
    ASSERT_EQ(holder.insert("x0"), 0);
    ASSERT_EQ(asker.begin(1519), 0);
    ASSERT_EQ(asker.insert("y0"), 85);
    EXPECT_EQ(number(owner(asker), 12, 2), 2u);
    EXPECT_EQ(flags(owner(asker)), implicitLock | fileLock | sameProcess | writeHold);
    EXPECT_EQ(number(owner(asker), 28, 4), 1u);
}

TEST_F(LockOwnerTest, IsTheSessionThatHasTheFileOpen) {
    ASSERT_EQ(clients[2]->reset(), 0);
    EngineSession::PositionBlock exclusive{};
    ASSERT_EQ(asker.session.create(directory / "other", createRequest(2, 0, {{{0, 1}}})), 0);
    ASSERT_EQ(holder.session.open(&exclusive, directory / "other", -4), 0);
    EngineSession::PositionBlock refused{};
    ASSERT_EQ(asker.session.open(&refused, directory / "other"), 85);
    EXPECT_EQ(number(owner(asker), 12, 2), 2u);
    EXPECT_EQ(flags(owner(asker)), fileLock | sameProcess);
    ASSERT_EQ(asker.close(), 0);
    ASSERT_EQ(asker.session.open(&refused, paths[0], -4), 85);
    ASSERT_EQ(asker.session.open(&refused, paths[0]), 0);
    std::string reply = asker.session.call(65, &refused, "ExSt" + u32(6), "", 0, 104).data;
    EXPECT_EQ(number(reply, 12, 2), 2u);
    EXPECT_EQ(flags(reply), fileLock | sameProcess);
}

TEST_F(LockOwnerTest, HasTheNameOfItsLogin) {
    ASSERT_EQ(holder.session.call(78, nullptr, "", std::string("vantrel://ann@/stock") + '\0', 0).status, 0);
    ASSERT_EQ(holder.read('a', 200), 0);
    ASSERT_EQ(asker.read('a', 200), 84);
    EXPECT_EQ(owner(asker).substr(40), "ann" + std::string(61, '\0'));
    ASSERT_EQ(holder.unlock(0), 0);
    ASSERT_EQ(holder.session.call(78, nullptr, "", std::string("vantrel:///") + '\0', 1).status, 0);
    ASSERT_EQ(holder.read('a', 200), 0);
    ASSERT_EQ(asker.read('a', 200), 84);
    EXPECT_EQ(owner(asker).substr(40), std::string(64, '\0'));
}

TEST_F(LockOwnerTest, IsForgottenByAReset) {
    ASSERT_EQ(holder.read('a', 200), 0);
    ASSERT_EQ(asker.read('a', 200), 84);
    ASSERT_EQ(asker.reset(), 0);
    ASSERT_EQ(asker.session.open(asker.block(), paths[0]), 0);
    EXPECT_EQ(owner(asker), std::string(104, '\0'));
}

// Each process that follows finds the slots of those before it in the side file, and the locks gone.
TEST_F(LockOwnerTest, IsNeverADeadSession) {
    for (uint8_t session = 10; session < 14; ++session) {
        LockProcess process([&] {
            auto *client = new LockClient(session, paths);
            auto *next = new LockClient(static_cast<uint8_t>(session + 100), paths);
            return client->read('a', 200) == 0 && next->read('b', 400) == 0;
        });
        ASSERT_EQ(asker.read('a', 200), 84);
        EXPECT_EQ(number(owner(asker), 12, 2), session);
        EXPECT_EQ(flags(owner(asker)), explicitLock | recordLock | singleNoWait);
        EXPECT_EQ(number(owner(asker), 32, 4), static_cast<uint64_t>(process.id()));
        ASSERT_EQ(asker.read('b', 200), 84);
        EXPECT_EQ(number(owner(asker), 12, 2), session + 100u);
        process.kill();
        EXPECT_EQ(asker.read('a', 200), 0);
        EXPECT_EQ(asker.unlock(0), 0);
    }
    ASSERT_EQ(holder.read('a', 200), 0);
    ASSERT_EQ(asker.read('a', 200), 84);
    EXPECT_EQ(number(owner(asker), 12, 2), 2u);
}

TEST_F(LockOwnerTest, HandlesOfTheDeadAreNotCounted) {
    auto handles = [&] {
        return number(asker.session.call(65, asker.block(), "ExSt" + u32(4), "", 0, 20).data, 4, 4);
    };
    EXPECT_EQ(handles(), 3u);
    auto opens = [&] {
        for (uint8_t session = 20; session < 28; ++session) {
            auto *client = new LockClient(session, paths);
            for (int more = 0; more < 3; ++more)
                EXPECT_EQ(client->session.open(new EngineSession::PositionBlock, paths[0]), 0);
        }
        return true;
    };
    {
        LockProcess first(opens), second(opens);
        EXPECT_EQ(handles(), 67u);
        first.kill();
        EXPECT_EQ(handles(), 35u);
    }
    EXPECT_EQ(handles(), 3u);
}

TEST_F(LockOwnerTest, IsTheSessionThatKeepsAFileFromBeingEncrypted) {
    ASSERT_EQ(clients[2]->reset(), 0);
    ASSERT_EQ(holder.read('a', 200), 0);
    ASSERT_EQ(asker.read('a', 200), 84);
    ASSERT_EQ(flags(owner(asker)), explicitLock | recordLock | sameProcess | singleNoWait);
    ASSERT_EQ(asker.session.call(29, asker.block(), "harbour", "harbour", 2).status, 85);
    EXPECT_EQ(number(owner(asker), 12, 2), 2u);
    EXPECT_EQ(flags(owner(asker)), fileLock | sameProcess);
}

}  // namespace
