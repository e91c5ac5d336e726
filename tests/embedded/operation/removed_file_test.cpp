#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "embedded/operation/owner_fixture.h"

namespace {

using namespace vantrel::test;

constexpr int32_t notFound = 12, inputOutputError = 2;

// A file with the records aaaa to dddd, open in one session, that somebody takes away or changes underneath.
class RemovedFileTest : public testing::Test {
  protected:
    RemovedFileTest() {
        createWithRecords(path, "abcd");
        EXPECT_EQ(session.open(&block, path), 0);
        EXPECT_EQ(readFirst(), 0);
    }

    void createWithRecords(const std::string &file, const std::string &letters) {
        std::string request = createRequest(4, 0, {{{0, 4, modifiable}}});
        EngineSession maker(9);
        EngineSession::PositionBlock made{};
        EXPECT_EQ(maker.create(file, request), 0);
        EXPECT_EQ(maker.open(&made, file), 0);
        for (char letter : letters)
            EXPECT_EQ(maker.call(2, &made, std::string(4, letter), "", -1).status, 0);
    }
    int32_t readFirst() { return session.call(12, &block, "", "kkkk", 0, 4).status; }
    int32_t insert(const char *record) { return session.call(2, &block, record, "", -1).status; }
    // Views are let go regularly, and the next one is another.
    int32_t readWithNewView() {
        int32_t status = readFirst();
        for (int attempts = 0; attempts < 5000 && status == 0; ++attempts) {
            usleep(1000);
            status = readFirst();
        }
        return status;
    }
    // What a new position finds in a file.
    std::string recordsIn(const std::string &file) {
        EngineSession other(2);
        EngineSession::PositionBlock found{};
        int32_t status = other.open(&found, file, -3);
        if (status != 0)
            return std::to_string(status);
        std::string letters;
        for (const std::string &record : recordsOf(other, &found, 4))
            letters += record[0];
        return letters;
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(RemovedFileTest, NothingIsAcknowledgedIntoARemovedFile) {
    std::filesystem::remove(path);
    EXPECT_EQ(insert("eeee"), notFound);
    EXPECT_EQ(readWithNewView(), notFound);
    EXPECT_EQ(session.call(3, &block, "zzzz", "", -1).status, notFound);
    EngineSession::PositionBlock second{};
    EXPECT_EQ(session.open(&second, path), notFound);
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"file-shm", "file-wal"}));
    createWithRecords(path, "xyz");
    EXPECT_EQ(recordsIn(path), "xyz");
}

TEST_F(RemovedFileTest, ATransactionOverARemovedFileDoesNotEnd) {
    EXPECT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(insert("eeee"), 0);
    std::filesystem::remove(path);
    EXPECT_EQ(session.call(20, nullptr).status, notFound);
    EXPECT_EQ(session.call(20, nullptr).status, 39);
    EXPECT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(insert("eeee"), notFound);
    EXPECT_EQ(session.call(21, nullptr).status, 0);
}

TEST_F(RemovedFileTest, NeitherFileChangesWhereOneOfATransactionIsGone) {
    std::string second = directory / "second";
    for (bool firstGoes : {true, false}) {
        EXPECT_EQ(session.call(28, nullptr).status, 0);
        createWithRecords(path, "abcd");
        createWithRecords(second, "abcd");
        EngineSession both(3);
        EngineSession::PositionBlock blocks[2]{};
        ASSERT_EQ(both.open(&blocks[0], path), 0);
        ASSERT_EQ(both.open(&blocks[1], second), 0);
        ASSERT_EQ(both.call(1019, nullptr).status, 0);
        for (auto &changed : blocks)
            EXPECT_EQ(both.call(2, &changed, "eeee", "", -1).status, 0);
        std::filesystem::remove(firstGoes ? path : second);
        EXPECT_EQ(both.call(20, nullptr).status, notFound);
        EXPECT_EQ(recordsIn(firstGoes ? second : path), "abcd");
    }
}

TEST_F(RemovedFileTest, AFileMovedAwayKeepsWhatItHad) {
    EXPECT_EQ(insert("eeee"), 0);
    ASSERT_EQ(rename(path.c_str(), (directory / "moved").c_str()), 0);
    EXPECT_EQ(insert("ffff"), notFound);
    EXPECT_EQ(readWithNewView(), notFound);
    // The log is found by the name again.
    ASSERT_EQ(rename((directory / "moved").c_str(), path.c_str()), 0);
    EXPECT_EQ(readFirst(), 0);
    EXPECT_EQ(insert("ffff"), 0);
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(recordsIn(path), "abcdef");
}

TEST_F(RemovedFileTest, AFileClosedWhileItIsAwayLosesNothing) {
    EXPECT_EQ(insert("eeee"), 0);
    ASSERT_EQ(rename(path.c_str(), (directory / "moved").c_str()), 0);
    EXPECT_EQ(session.call(1, &block).status, 0);
    ASSERT_EQ(rename((directory / "moved").c_str(), path.c_str()), 0);
    EXPECT_EQ(recordsIn(path), "abcde");
}

TEST_F(RemovedFileTest, AReplacedFileIsNotTakenForTheOther) {
    createWithRecords(directory / "other", "xyz");
    EXPECT_EQ(insert("eeee"), 0);
    ASSERT_EQ(rename((directory / "other").c_str(), path.c_str()), 0);
    EXPECT_EQ(insert("ffff"), notFound);
    EXPECT_EQ(readWithNewView(), notFound);
    EngineSession::PositionBlock second{};
    EXPECT_EQ(session.open(&second, path), notFound);
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(recordsIn(path), "xyz");
    ASSERT_EQ(session.open(&second, path), 0);
    EXPECT_EQ(session.call(2, &second, "ffff", "", -1).status, 0);
}

TEST_F(RemovedFileTest, ADirectoryThatIsGoneTakesItsFilesAlong) {
    std::string inner = directory / "inner";
    ASSERT_EQ(mkdir(inner.c_str(), 0777), 0);
    createWithRecords(inner + "/file", "abc");
    EngineSession other(3);
    EngineSession::PositionBlock opened{};
    ASSERT_EQ(other.open(&opened, inner + "/file"), 0);
    std::filesystem::remove_all(inner);
    EXPECT_EQ(other.call(2, &opened, "dddd", "", -1).status, notFound);
    EXPECT_EQ(other.call(1, &opened).status, 0);
}

TEST_F(RemovedFileTest, ATruncatedFileIsDamaged) {
    EXPECT_EQ(session.call(1, &block).status, 0);
    ASSERT_EQ(session.open(&block, path), 0);
    ASSERT_EQ(truncate(path.c_str(), 0), 0);
    int32_t read = readWithNewView(), inserted = insert("eeee");
    EXPECT_TRUE(read == 2 || read == 30) << read;
    EXPECT_TRUE(inserted == 2 || inserted == 30) << inserted;
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(recordsIn(path), "30");
}

TEST_F(RemovedFileTest, AFileOverwrittenWithOtherBytesIsDamaged) {
    EXPECT_EQ(session.call(1, &block).status, 0);
    std::string content = contentOf(path);
    for (char filler : {'\0', '\xFF', 'x'}) {
        writeContent(path, content);
        ASSERT_EQ(session.open(&block, path), 0);
        int descriptor = open(path.c_str(), O_WRONLY);
        std::string other(content.size(), filler);
        ASSERT_EQ(write(descriptor, other.data(), other.size()), static_cast<ssize_t>(other.size()));
        close(descriptor);
        int32_t read = readWithNewView(), inserted = insert("eeee");
        EXPECT_TRUE(read == 2 || read == 30) << read;
        EXPECT_TRUE(inserted == 2 || inserted == 30) << inserted;
        EXPECT_EQ(session.call(1, &block).status, 0);
        EXPECT_EQ(recordsIn(path), "30");
    }
}

TEST_F(RemovedFileTest, NothingIsAcknowledgedIntoARemovedLog) {
    for (const char *side : {"-wal", "-shm"}) {
        EXPECT_EQ(session.call(28, nullptr).status, 0);
        createWithRecords(path, "abcd");
        ASSERT_EQ(session.open(&block, path), 0);
        EXPECT_EQ(insert("eeee"), 0);
        std::filesystem::remove(path + side);
        EXPECT_EQ(insert("ffff"), inputOutputError) << side;
        EXPECT_EQ(readFirst(), 0);
        EXPECT_EQ(session.call(1019, nullptr).status, 0);
        EXPECT_EQ(insert("ffff"), inputOutputError) << side;
        EXPECT_EQ(session.call(21, nullptr).status, 0);
        EXPECT_EQ(session.call(1, &block).status, 0);
        EXPECT_EQ(recordsIn(path), "abcde") << side;
    }
}

TEST_F(RemovedFileTest, NothingIsLockedOrChangedWithoutTheLockFile) {
    std::filesystem::remove(path + "-lock");
    EXPECT_EQ(session.call(12 + 200, &block, "", "kkkk", 0, 4).status, inputOutputError);
    EXPECT_EQ(insert("eeee"), inputOutputError);
    EXPECT_EQ(readFirst(), 0);
    EngineSession other(2);
    EngineSession::PositionBlock opened{};
    ASSERT_EQ(other.open(&opened, path), 0);
    EXPECT_EQ(insert("eeee"), inputOutputError);
    EXPECT_EQ(other.call(12 + 200, &opened, "", "kkkk", 0, 4).status, 0);
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_TRUE(std::filesystem::exists(path + "-lock"));
    ASSERT_EQ(session.open(&block, path), 0);
    EXPECT_EQ(session.call(12 + 200, &block, "", "kkkk", 0, 4).status, 84);
    EXPECT_EQ(insert("eeee"), 0);
}

}  // namespace
