#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

// Two sessions on one file.
class ConflictsTest : public testing::Test {
  protected:
    ConflictsTest() {
        EXPECT_EQ(session.create(path, createRequest(2, variableLength, {{{0, 1}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        EXPECT_EQ(other.open(&otherBlock, path), 0);
        for (const char *record : {"a1", "b1"})
            EXPECT_EQ(session.call(2, &block, record, "", -1).status, 0);
    }

    std::string mine(const std::string &key) { return session.call(5, &block, "", key, 0, 2).data; }
    std::string theirs(const std::string &key) { return other.call(5, &otherBlock, "", key, 0, 2).data; }
    int32_t update(const std::string &record) { return session.call(3, &block, record, "", -1).status; }
    int32_t otherUpdate(const std::string &record) {
        return other.call(3, &otherBlock, record, "", -1).status;
    }
    int32_t overwriteChunk() {
        const char *bytes = "9";
        std::string address(sizeof bytes, '\0');
        memcpy(address.data(), &bytes, sizeof bytes);
        return session.call(53, &block, u32(0x80000001) + u32(1) + u32(1) + u32(1) + address, "", -1).status;
    }
    int32_t begin(uint32_t code) { return session.call(code, nullptr).status; }
    int32_t end() { return session.call(20, nullptr).status; }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1}, other{2};
    EngineSession::PositionBlock block{}, otherBlock{};
};

constexpr uint32_t begins[] = {0, 19, 1019, 1519};

TEST_F(ConflictsTest, ARecordThatAnotherChangedSinceItWasReadIsNotChanged) {
    for (uint32_t code : begins) {
        for (int way = 0; way < 3; ++way) {
            ASSERT_EQ(mine("a").size(), 2u);
            ASSERT_EQ(theirs("a").size(), 2u);
            ASSERT_EQ(otherUpdate("a" + std::to_string(way)), 0);
            if (code != 0) {
                ASSERT_EQ(begin(code), 0);
            }
            int32_t status = way == 0   ? update("a9")
                             : way == 1 ? session.call(4, &block).status
                                        : overwriteChunk();
            EXPECT_EQ(status, 80) << code << ' ' << way;
            if (code != 0) {
                ASSERT_EQ(end(), 0);
            }
            EXPECT_EQ(theirs("a"), "a" + std::to_string(way));
        }
    }
}

TEST_F(ConflictsTest, ARecordThatAnotherDeletedIsAConflictToo) {
    ASSERT_EQ(mine("a"), "a1");
    ASSERT_EQ(theirs("a"), "a1");
    ASSERT_EQ(other.call(4, &otherBlock).status, 0);
    EXPECT_EQ(update("a9"), 80);
    EXPECT_EQ(session.call(4, &block).status, 80);
}

TEST_F(ConflictsTest, ReadingAgainEndsTheConflict) {
    ASSERT_EQ(mine("a"), "a1");
    ASSERT_EQ(theirs("a"), "a1");
    ASSERT_EQ(otherUpdate("a2"), 0);
    ASSERT_EQ(update("a9"), 80);
    ASSERT_EQ(mine("a"), "a2");
    EXPECT_EQ(update("a9"), 0);
    EXPECT_EQ(update("a8"), 0);
}

TEST_F(ConflictsTest, AChangeThatWasTakenBackIsNone) {
    ASSERT_EQ(mine("a"), "a1");
    ASSERT_EQ(other.call(1019, nullptr).status, 0);
    ASSERT_EQ(theirs("a"), "a1");
    ASSERT_EQ(otherUpdate("a2"), 0);
    ASSERT_EQ(other.call(21, nullptr).status, 0);
    EXPECT_EQ(update("a9"), 0);
}

TEST_F(ConflictsTest, ARecordThatAnotherHasLockedIsNotChanged) {
    for (uint32_t code : begins) {
        ASSERT_EQ(other.call(205, &otherBlock, "", "a", 0, 2).status, 0);
        ASSERT_EQ(mine("a"), "a1");
        if (code != 0) {
            ASSERT_EQ(begin(code), 0);
        }
        EXPECT_EQ(update("a9"), 84) << code;
        EXPECT_EQ(session.call(4, &block).status, 84) << code;
        EXPECT_EQ(overwriteChunk(), 84) << code;
        // Other records are free.
        ASSERT_EQ(mine("b"), "b1");
        EXPECT_EQ(update("b1"), 0);
        if (code != 0) {
            ASSERT_EQ(end(), 0);
        }
        ASSERT_EQ(other.call(27, &otherBlock, "", "", 0).status, 0);
    }
}

TEST_F(ConflictsTest, AFileThatAnotherChangesIsRefusedAtOnceToWhoNeverWaits) {
    for (uint32_t code : {19u, 1019u, 1519u}) {
        ASSERT_EQ(begin(code), 0);
        ASSERT_EQ(mine("a"), "a1");
        ASSERT_EQ(update("a1"), 0);
        ASSERT_EQ(other.call(1519, nullptr).status, 0);
        ASSERT_EQ(theirs("b"), "b1");
        auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(otherUpdate("b2"), 85) << code;
        EXPECT_EQ(other.call(2, &otherBlock, "z1", "", -1).status, 85) << code;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
        // What was read stays current.
        ASSERT_EQ(end(), 0);
        EXPECT_EQ(otherUpdate("b1"), 0) << code;
        ASSERT_EQ(other.call(20, nullptr).status, 0);
    }
}

TEST_F(ConflictsTest, AChangerWaitsForTheOneBeforeIt) {
    ASSERT_EQ(begin(1019), 0);
    ASSERT_EQ(mine("a"), "a1");
    ASSERT_EQ(update("a2"), 0);
    std::atomic<bool> isEnding{false};
    int32_t status = -1;
    bool waited = false;
    std::thread waiter([&] {
        status = other.call(2, &otherBlock, "c1", "", -1).status;
        waited = isEnding;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    isEnding = true;
    ASSERT_EQ(end(), 0);
    waiter.join();
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(waited);
    EXPECT_EQ(theirs("a"), "a2");
}

TEST_F(ConflictsTest, BeforeItsFirstChangeATransactionSeesEachNewState) {
    for (uint32_t code : {1019u, 1519u}) {
        ASSERT_EQ(begin(code), 0);
        ASSERT_EQ(theirs("a").size(), 2u);
        for (const char *record : {"a4", "a5"}) {
            ASSERT_EQ(otherUpdate(record), 0);
            EXPECT_EQ(mine("a"), record);
        }
        ASSERT_EQ(mine("b"), "b1");
        ASSERT_EQ(update("b1"), 0);
        // From here on the file is its own.
        ASSERT_EQ(other.call(1519, nullptr).status, 0);
        EXPECT_EQ(otherUpdate("a6"), 85);
        EXPECT_EQ(mine("a"), "a5");
        ASSERT_EQ(other.call(20, nullptr).status, 0);
        ASSERT_EQ(end(), 0);
    }
}

TEST_F(ConflictsTest, ReadersAndWritersDoNotWaitForEachOther) {
    // A reader in the middle of a scan.
    ASSERT_EQ(other.call(12, &otherBlock, "", "?", 0, 2).data, "a1");
    auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(mine("b"), "b1");
    EXPECT_EQ(update("b2"), 0);
    ASSERT_EQ(begin(19), 0);
    ASSERT_EQ(mine("b"), "b2");
    EXPECT_EQ(update("b3"), 0);
    // And readers while a transaction has the file.
    EXPECT_EQ(other.call(6, &otherBlock, "", "?", 0, 2).data, "b2");
    EXPECT_EQ(other.call(12, &otherBlock, "", "?", 0, 2).data, "a1");
    EXPECT_EQ(end(), 0);
    EXPECT_EQ(other.call(6, &otherBlock, "", "?", 0, 2).data, "b3");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
