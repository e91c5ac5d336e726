#include <gtest/gtest.h>

#include <unistd.h>

#include "embedded/storage/storage.h"
#include "vantrel.h"

namespace {

using namespace vantrel::embedded;

// For a file that nobody else has open.
class OpenGate final : public WriteGate {
  public:
    void enter(Waiting, const std::function<bool()> &begin) override { ASSERT_TRUE(begin()); }
    void committed() noexcept override {}
    void leave() noexcept override {}
};

// The physical order of a file of records 1 to 300.
class RankTest : public testing::Test {
  protected:
    RankTest() {
        FileDefinition definition;
        definition.recordLength = 6;
        createStorage(path, definition);
        std::unique_ptr<Storage> storage = openForWriting();
        storage->begin(Waiting::yes);
        for (int64_t address = 1; address <= 300; ++address)
            storage->insertRecord({address, 1, 2, "record", 6});
        storage->state().recordCount = 300;
        storage->commit(Durability::soon);
    }
    ~RankTest() override { removeStorage(path); }

    std::unique_ptr<Storage> openForWriting() {
        StorageOptions options;
        options.writeGate = &gate;
        return openStorage(path, options);
    }
    static void expectTrueRanks(Storage &storage) {
        for (uint64_t rank = 0; rank < 300; ++rank) {
            StoredEntry found;
            ASSERT_TRUE(storage.findAtRank(
                physicalOrder, [&](uint64_t) { return rank; }, &found));
            ASSERT_EQ(found.record.address, static_cast<int64_t>(rank) + 1);
            std::optional<Rank> told = storage.rankOf(physicalOrder, {}, found.record.address);
            ASSERT_TRUE(told.has_value());
            ASSERT_EQ(told->inFront, rank);
            ASSERT_EQ(told->total, 300u);
        }
        EXPECT_FALSE(storage.rankOf(physicalOrder, {}, 301).has_value());
    }

    OpenGate gate;
    std::string path = testing::TempDir() + "rank_" + std::to_string(getpid());
};

TEST_F(RankTest, AReadOnlyFileIsCountedEntryByEntry) {
    StorageOptions options;
    options.readOnly = true;
    std::unique_ptr<Storage> storage = openStorage(path, options);
    expectTrueRanks(*storage);
    EXPECT_FALSE(storage->hasUnsyncedCommits());
}

TEST_F(RankTest, TheFirstRequestIsCommitted) {
    std::unique_ptr<Storage> storage = openForWriting();
    EXPECT_FALSE(storage->hasUnsyncedCommits());
    expectTrueRanks(*storage);
    EXPECT_TRUE(storage->hasUnsyncedCommits());
    EXPECT_FALSE(storage->isWriting());
    storage->sync();
    expectTrueRanks(*storage);
    EXPECT_FALSE(storage->hasUnsyncedCommits());
}

TEST_F(RankTest, AReadOnlyConnectionUsesWhatOthersBuilt) {
    StorageOptions options;
    options.readOnly = true;
    std::unique_ptr<Storage> reader = openStorage(path, options);
    expectTrueRanks(*reader);
    std::unique_ptr<Storage> writer = openForWriting();
    expectTrueRanks(*writer);
    writer->begin(Waiting::yes);
    writer->deleteRecord(1);
    writer->insertRecord({1, 1, 2, "record", 6});
    writer->rollback();
    expectTrueRanks(*reader);
    expectTrueRanks(*writer);
}

TEST_F(RankTest, ARollbackTakesBackWhatGrew) {
    std::unique_ptr<Storage> storage = openForWriting();
    expectTrueRanks(*storage);
    storage->begin(Waiting::yes);
    for (int64_t address = 301; address <= 20000; ++address)
        storage->insertRecord({address, 1, 2, "record", 6});
    std::optional<Rank> last = storage->rankOf(physicalOrder, {}, 20000);
    ASSERT_TRUE(last.has_value());
    EXPECT_EQ(last->inFront, 19999u);
    storage->rollback();
    expectTrueRanks(*storage);
}

TEST_F(RankTest, AMissingIndexIsRefused) {
    std::unique_ptr<Storage> storage = openForWriting();
    try {
        storage->rankOf(5, "key", 1);
        FAIL();
    } catch (const StatusError &error) {
        EXPECT_EQ(error.status, VANTREL_STATUS_INVALID_INDEX_NUMBER);
    }
    EXPECT_FALSE(storage->isWriting());
}

}  // namespace
