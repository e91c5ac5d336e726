#include <dlfcn.h>

#include <atomic>
#include <chrono>
#include <random>

#include "embedded/emulation.h"
#include "embedded/file_size_limit.h"
#include "embedded/operation/encryption_fixture.h"
#include "embedded/quiet_fork.h"

struct sqlite3;

namespace {

// Connections to be made until one fails; none fails below that.
std::atomic<int> connectionsUntilFailure{0};

}  // namespace

// Stands in front of the database library's function of this name.
extern "C" __attribute__((visibility("default"))) int sqlite3_open_v2(const char *name, sqlite3 **database,
                                                                      int flags, const char *vfs) {
    using Function = int(const char *, sqlite3 **, int, const char *);
    constexpr int outOfMemory = 7;
    static auto *const real = reinterpret_cast<Function *>(dlsym(RTLD_NEXT, "sqlite3_open_v2"));
    if (connectionsUntilFailure > 0 && --connectionsUntilFailure == 0) {
        *database = nullptr;
        return outOfMemory;
    }
    return real(name, database, flags, vfs);
}

namespace {

using namespace vantrel::test;
using namespace std::chrono_literals;

// Fills, updates and deletes so that pages, log and long records all hold the texts.
void work(EngineSession &session, EngineSession::PositionBlock &block, const std::string &recordOf0) {
    std::string record = recordOf0;
    for (int number = 0; number < 200; ++number) {
        record[15] = static_cast<char>('0' + number % 10);
        record[14] = static_cast<char>('0' + number / 10 % 10);
        record[13] = static_cast<char>('0' + number / 100);
        EXPECT_EQ(session.call(2, &block, record, "", -1).status, 0);
    }
    std::string tail;
    while (tail.size() < 300000)
        tail += recordText;
    std::string chunk = u32(0xA0000001) + u32(1) + u32(0) + u32(static_cast<uint32_t>(tail.size()));
    const char *address = tail.data();
    chunk.append(reinterpret_cast<const char *>(&address), sizeof address);
    EXPECT_EQ(session.call(53, &block, chunk, "", -1).status, 0);
}

TEST_F(EncryptionTest, PlainFilesShowRecordsAndKeys) {
    ASSERT_EQ(createPlain(path), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    work(session, block, record(0));
    EXPECT_NE(filesWith(directory, recordText), std::vector<std::string>{});
    EXPECT_NE(filesWith(directory, record(0).substr(0, 12)), std::vector<std::string>{});
}

TEST_F(EncryptionTest, NothingIsReadableInAnyFile) {
    const std::vector<std::string> none;
    for (int32_t mode : {deniedEncrypted, readableEncrypted}) {
        ASSERT_EQ(createPlain(path), 0);
        ASSERT_EQ(session.open(&block, path), 0);
        work(session, block, record(1000000));
        ASSERT_EQ(setOwner(session, &block, mode, "harbour"), 0);
        work(session, block, record(0));
        EXPECT_EQ(directory.names(), (std::vector<std::string>{"file", "file-lock", "file-shm", "file-wal"}));
        for (const std::string &text :
             {recordText, keyText.substr(0, 10), std::string("SQLite format"), std::string("CREATE TABLE")}) {
            EXPECT_EQ(filesWith(directory, text), none) << text;
        }
        close();
        runAndKill([&] {
            EngineSession mine{3};
            EngineSession::PositionBlock at{};
            EXPECT_EQ(openWith(mine, &at, path, "harbour"), 0);
            work(mine, at, record(2000));
            kill(getpid(), SIGKILL);
        });
        ASSERT_GT(contentOf(path + "-wal").size(), 300000u);
        EXPECT_EQ(filesWith(directory, recordText), none);
        EXPECT_EQ(filesWith(directory, keyText.substr(0, 10)), none);
        ASSERT_EQ(openWith(session, &block, path, "harbour", -3), 0);
        close();
        EXPECT_EQ(directory.names(), std::vector<std::string>{"file"});
        EXPECT_EQ(filesWith(directory, recordText), none);
    }
}

TEST_F(EncryptionTest, ACopyNeedsTheNameToo) {
    create();
    ASSERT_EQ(insert(record(1)), 0);
    close();
    std::string copy = directory / "copy";
    writeContent(copy, contentOf(path));
    EXPECT_EQ(session.open(&block, copy), 51);
    ASSERT_EQ(openWith(session, &block, copy, "harbour"), 0);
    EXPECT_EQ(records(), std::vector<std::string>{record(1)});
}

TEST_F(EncryptionTest, TwoFilesOfTheSameContentHaveNothingInCommon) {
    std::string contents[2];
    for (std::string &content : contents) {
        create();
        ASSERT_EQ(insert(record(1)), 0);
        close();
        content = contentOf(path);
    }
    size_t equalBlocks = 0;
    for (size_t offset = 8192; offset + 16 <= std::min(contents[0].size(), contents[1].size()); offset += 16)
        equalBlocks += contents[0].compare(offset, 16, contents[1], offset, 16) == 0;
    EXPECT_EQ(equalBlocks, 0u);
}

// Two files, of which one is encrypted, through the same random requests.
class TwinFiles {
  public:
    TwinFiles(EngineSession &session, std::mt19937 &random) : session_(session), random_(random) {}

    EngineSession::PositionBlock blocks[2]{};

    void step() {
        static const uint32_t operations[] = {2, 2, 2, 2, 3, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 33, 35, 24};
        uint32_t operation = operations[random_() % std::size(operations)];
        std::string data, key = keyText.substr(0, 10) + std::to_string(100000 + random_() % 3000);
        if (operation == 2 || operation == 3)
            data = key + static_cast<char>('a' + random_() % 8) + "m" + std::string(random_() % 3000, 'r');
        both(operation, data, key);
    }
    // Both answer the same.
    void both(uint32_t operation, const std::string &data, const std::string &key, int32_t keyNumber = 0) {
        uint32_t offered = data.empty() ? 4000 : EngineSession::sameAsData;
        Reply replies[2];
        for (int file : {0, 1})
            replies[file] = session_.call(operation, &blocks[file], data, key, keyNumber, offered);
        EXPECT_EQ(replies[0].status, replies[1].status) << operation;
        EXPECT_EQ(replies[0].data, replies[1].data) << operation;
        EXPECT_EQ(replies[0].key, replies[1].key) << operation;
    }

  private:
    EngineSession &session_;
    std::mt19937 &random_;
};

TEST_F(EncryptionTest, AnEncryptedFileBehavesLikeAPlainOne) {
    constexpr unsigned seed = 20240131;
    std::mt19937 random(seed);
    std::string plain = directory / "plain";
    ASSERT_EQ(createPlain(plain), 0);
    create();
    TwinFiles twins(session, random);
    close();
    for (int round = 0; round < rounds(8, 1); ++round) {
        ASSERT_EQ(session.open(&twins.blocks[0], plain), 0);
        ASSERT_EQ(openWith(session, &twins.blocks[1], path, "harbour", round == 7 ? -3 : 0), 0);
        for (uint32_t end : {20u, 21u, 0u}) {
            if (end != 0) {
                ASSERT_EQ(session.call(1019, nullptr).status, 0);
            }
            for (int step = 0; step < 150 && !HasFailure(); ++step)
                twins.step();
            if (end != 0) {
                ASSERT_EQ(session.call(end, nullptr).status, 0);
            }
        }
        ASSERT_FALSE(HasFailure()) << "seed " << seed;
        twins.both(31, segmentBytes({17, 1, duplicates}), "", 0x80 + 3 + round);
        for (auto &at : twins.blocks)
            ASSERT_EQ(session.call(1, &at).status, 0);
    }
}

TEST_F(EncryptionTest, ALogOfTheFormerContentIsIgnored) {
    for (bool wasEncrypted : {false, true}) {
        const char *name = wasEncrypted ? "harbour" : "";
        ASSERT_EQ(createPlain(path), 0);
        ASSERT_EQ(session.open(&block, path), 0);
        if (wasEncrypted) {
            ASSERT_EQ(setOwner(session, &block, deniedEncrypted, "harbour"), 0);
        }
        close();
        runAndKill([&] {
            EngineSession mine{3};
            EngineSession::PositionBlock at{};
            EXPECT_EQ(openWith(mine, &at, path, name), 0);
            EXPECT_EQ(mine.call(2, &at, record(1), "", -1).status, 0);
            kill(getpid(), SIGKILL);
        });
        std::string log = contentOf(path + "-wal"), logIndex = contentOf(path + "-shm");
        ASSERT_GT(log.size(), 8192u);
        ASSERT_EQ(openWith(session, &block, path, name), 0);
        EXPECT_EQ(records(), std::vector<std::string>{record(1)});
        ASSERT_EQ(session.call(4, &block).status, 0);
        ASSERT_EQ(wasEncrypted ? clearOwner(session, &block)
                               : setOwner(session, &block, deniedEncrypted, "harbour"),
                  0);
        close();
        writeContent(path + "-wal", log);
        writeContent(path + "-shm", logIndex);
        ASSERT_EQ(openWith(session, &block, path, "harbour", -3), 0);
        EXPECT_EQ(records(), std::vector<std::string>{});
        close();
    }
}

TEST_F(EncryptionTest, LeftOverCopiesAreRemoved) {
    create();
    close();
    writeContent(path + "-rekey", "left over");
    ASSERT_EQ(openWith(session, &block, path, "harbour"), 0);
    EXPECT_EQ(contentOf(path + "-rekey"), "");
    writeContent(path + "-rekey", std::string(100000, 'x'));
    ASSERT_EQ(clearOwner(session, &block), 0);
    ASSERT_EQ(insert(record(1)), 0);
    EXPECT_EQ(records(), std::vector<std::string>{record(1)});
    close();
    EXPECT_EQ(directory.names(), std::vector<std::string>{"file"});
}

TEST_F(EncryptionTest, AFailingWriteLeavesTheFileAsItWas) {
    ASSERT_EQ(createPlain(path), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    std::vector<std::string> all;
    for (uint32_t number = 0; number < 200; ++number) {
        all.push_back(record(number, std::string(1500, 'r')));
        ASSERT_EQ(insert(all.back()), 0);
    }
    for (rlim_t size : {rlim_t{0}, rlim_t{8192}, rlim_t{20000}, rlim_t{200000}}) {
        FileSizeLimit limit(size);
        EXPECT_EQ(setOwner(session, &block, deniedEncrypted, "harbour"), 18) << size;
        EXPECT_EQ(records(), all);
    }
    EXPECT_EQ(contentOf(path + "-rekey"), "");
    ASSERT_EQ(setOwner(session, &block, deniedEncrypted, "harbour"), 0);
    for (rlim_t size : {rlim_t{0}, rlim_t{200000}}) {
        FileSizeLimit limit(size);
        EXPECT_EQ(clearOwner(session, &block), 18) << size;
        EXPECT_EQ(records(), all);
    }
    close();
    EXPECT_EQ(session.open(&block, path), 51);
    ASSERT_EQ(openWith(session, &block, path, "harbour"), 0);
    EXPECT_EQ(records(), all);
}

TEST_F(EncryptionTest, AnEncryptedFileThatCannotBeOpenedAgainIsClosed) {
    EngineSession::PositionBlock second{};
    ASSERT_EQ(createPlain(path), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    ASSERT_EQ(session.open(&second, path), 0);
    ASSERT_EQ(insert(record(1)), 0);
    connectionsUntilFailure = 1;
    EXPECT_EQ(setOwner(session, &block, deniedEncrypted, "harbour"), 101);
    EXPECT_EQ(records(), std::vector<std::string>{record(1)});
    connectionsUntilFailure = 2;
    EXPECT_EQ(setOwner(session, &block, deniedEncrypted, "harbour"), 101);
    EXPECT_EQ(connectionsUntilFailure, 0);
    for (auto *at : {&block, &second})
        EXPECT_EQ(session.call(12, at, "", "", 0, 2000).status, 3);
    EngineSession other{2};
    ASSERT_EQ(openWith(other, &second, path, "harbour", -4), 0);
    EXPECT_EQ(recordsOf(other, &second, 2000), std::vector<std::string>{record(1)});
}

TEST_F(EncryptionTest, ProcessesWorkTogether) {
    create();
    constexpr uint32_t count = 150;
    pid_t children[2];
    for (uint32_t number : {0u, 1u}) {
        children[number] = forkWhileQuiet([&] {
            EngineSession mine{static_cast<uint8_t>(3 + number)};
            EngineSession::PositionBlock at{};
            bool isDone = openWith(mine, &at, path, "harbour") == 0;
            for (uint32_t insertion = 0; insertion < count; ++insertion)
                isDone &= mine.call(2, &at, record(insertion * 2 + number), "", -1).status == 0;
            isDone &= mine.call(28, nullptr).status == 0;
            return isDone ? 0 : 1;
        });
        ASSERT_GE(children[number], 0);
    }
    for (pid_t child : children) {
        int status = 0;
        while (waitpid(child, &status, WNOHANG) == 0) {
            int32_t read = session.call(13, &block, "", "", 0, 2000).status;
            ASSERT_TRUE(read == 0 || read == 9) << read;
        }
        EXPECT_EQ(status, 0);
    }
    std::vector<std::string> all;
    for (uint32_t number = 0; number < 2 * count; ++number)
        all.push_back(record(number));
    EXPECT_EQ(records(), all);
}

TEST_F(EncryptionTest, AForkedChildLeavesTheParentsFileAlone) {
    create();
    ASSERT_EQ(insert(record(1)), 0);
    pid_t child = forkWhileQuiet([&] { return session.call(12, &block, "", "", 0, 2000).status; });
    ASSERT_GE(child, 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_EQ(insert(record(2)), 0);
    EXPECT_EQ(records(), (std::vector<std::string>{record(1), record(2)}));
}

}  // namespace
