#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "embedded/operation/engine_session.h"
#include "embedded/quiet_fork.h"

namespace {

using namespace vantrel::test;

constexpr uint32_t continuousOperation = 42;
constexpr int32_t begin = 0, end = 1;

class ContinuousOperationTest : public testing::Test {
  protected:
    ContinuousOperationTest() {
        for (const std::string &name : {path, secondPath})
            EXPECT_EQ(session.create(name, createRequest(8, 0, {{{0, 8, extendedType, unsignedType}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
    }

    static int32_t insert(EngineSession &by, EngineSession::PositionBlock &at, uint64_t record) {
        return by.call(2, &at, u64(record), "", -1).status;
    }
    int32_t change(EngineSession &by, const std::string &paths, int32_t keyNumber) {
        return by.call(continuousOperation, nullptr, paths + '\0', "", keyNumber).status;
    }
    uint64_t count(const std::string &name) {
        EngineSession::PositionBlock reader{};
        EXPECT_EQ(other.open(&reader, name), 0);
        uint64_t records = number(other.call(15, &reader, std::string(65535, '\0')).data, 8, 8);
        EXPECT_EQ(other.call(1, &reader).status, 0);
        return records;
    }
    // Another process reads the file: closing it in this one would drop the locks of the engine.
    std::string bytesOnDisk() {
        std::array<char, 128> line{};
        FILE *pipe = popen(("sha256sum < '" + path + "'").c_str(), "r");
        EXPECT_NE(fgets(line.data(), line.size(), pipe), nullptr);
        EXPECT_EQ(pclose(pipe), 0);
        return line.data();
    }
    std::string copyOf(const std::string &file) {
        std::string to = directory / "copy";
        EXPECT_EQ(system(("cp '" + file + "' '" + to + "'").c_str()), 0);
        return to;
    }
    std::string copy() { return copyOf(path); }

    TemporaryDirectory directory;
    std::string path = directory / "file", secondPath = directory / "second";
    EngineSession session{1}, other{2};
    EngineSession::PositionBlock block{};
};

TEST_F(ContinuousOperationTest, TheFileStaysAsItIsWhileWorkGoesOn) {
    for (uint64_t record = 0; record < 100; ++record)
        ASSERT_EQ(insert(session, block, record), 0);
    ASSERT_EQ(change(other, path, begin), 0);
    std::string before = bytesOnDisk();
    std::vector<std::thread> writers;
    for (uint8_t writer = 0; writer < 3; ++writer) {
        writers.emplace_back([this, writer] {
            EngineSession mine(static_cast<uint8_t>(10 + writer));
            EngineSession::PositionBlock own{};
            ASSERT_EQ(mine.open(&own, path), 0);
            for (uint64_t record = 0; record < 300; ++record)
                ASSERT_EQ(insert(mine, own, 1000 + writer * 1000u + record), 0);
        });
    }
    EXPECT_EQ(bytesOnDisk(), before);
    EXPECT_EQ(count(copy()), 100u);
    for (std::thread &writer : writers)
        writer.join();
    EXPECT_EQ(bytesOnDisk(), before);
    EXPECT_EQ(count(path), 1000u);
    ASSERT_EQ(change(other, path, end), 0);
    EXPECT_NE(bytesOnDisk(), before);
    EXPECT_EQ(count(copy()), 1000u);
}

TEST_F(ContinuousOperationTest, BeginsWhileWritersWork) {
    std::atomic<bool> isOver = false;
    std::thread writer([&] {
        EngineSession mine(10);
        EngineSession::PositionBlock own{};
        ASSERT_EQ(mine.open(&own, path), 0);
        for (uint64_t record = 0; !isOver; ++record)
            ASSERT_EQ(insert(mine, own, record), 0);
    });
    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(change(session, path, begin), 0);
        std::string before = bytesOnDisk();
        uint64_t copied = count(copy());
        EXPECT_EQ(bytesOnDisk(), before);
        EXPECT_LE(copied, count(path));
        EXPECT_EQ(change(session, path, end), 0);
    }
    isOver = true;
    writer.join();
}

TEST_F(ContinuousOperationTest, ReadersDoNotKeepItFromBeginning) {
    ASSERT_EQ(insert(session, block, 1), 0);
    EngineSession::PositionBlock reader{};
    ASSERT_EQ(other.open(&reader, path), 0);
    ASSERT_EQ(insert(session, block, 2), 0);
    ASSERT_EQ(other.call(33, &reader, "", "", 0, 8).status, 0);
    ASSERT_EQ(session.call(33, &block, "", "", 0, 8).status, 0);
    EXPECT_EQ(change(session, path, begin), 0);
    EXPECT_EQ(other.call(24, &reader, "", "", 0, 8).data, u64(2));
    EXPECT_EQ(change(session, path, end), 0);
}

TEST_F(ContinuousOperationTest, SeveralFilesBeginTogetherOrNotAtAll) {
    EXPECT_EQ(change(session, path + "," + secondPath, begin), 0);
    EXPECT_EQ(change(session, secondPath + "," + path, end), 0);
    EXPECT_EQ(change(session, path + "," + directory / "none", begin), 12);
    EXPECT_EQ(change(session, path + "," + path, begin), 41);
    EXPECT_EQ(change(session, path, begin), 0);
    EXPECT_EQ(change(session, path + "," + secondPath, end), 41);
    EXPECT_EQ(change(session, path, begin), 41);
    EXPECT_EQ(change(session, path, end), 0);
}

TEST_F(ContinuousOperationTest, SeveralFilesBeginAtOneMoment) {
    std::atomic<bool> isOver = false;
    std::thread writer([&] {
        EngineSession mine(10);
        std::array<EngineSession::PositionBlock, 2> own{};
        ASSERT_EQ(mine.open(&own[0], path), 0);
        ASSERT_EQ(mine.open(&own[1], secondPath), 0);
        for (uint64_t record = 0; !isOver; ++record) {
            ASSERT_EQ(mine.call(1019, nullptr).status, 0);
            for (auto &at : own)
                ASSERT_EQ(insert(mine, at, record), 0);
            ASSERT_EQ(mine.call(20, nullptr).status, 0);
        }
    });
    std::string both = path + "," + secondPath;
    for (int round = 0; round < 20; ++round) {
        ASSERT_EQ(change(session, both, begin), 0);
        uint64_t records = count(copyOf(path)), recordsOfSecond = count(copyOf(secondPath));
        EXPECT_EQ(records, recordsOfSecond) << round;
        ASSERT_EQ(change(session, both, end), 0);
    }
    isOver = true;
    writer.join();
    EXPECT_GT(count(path), 20u);
}

TEST_F(ContinuousOperationTest, RelativeNamesStandInTheDirectoryOfTheSession) {
    ASSERT_EQ(session.call(17, nullptr, "", directory.path() + '\0').status, 0);
    EXPECT_EQ(change(session, "file,second", begin), 0);
    EXPECT_EQ(change(session, path, end), 0);
    EXPECT_EQ(change(session, "second", end), 0);
}

TEST_F(ContinuousOperationTest, OneAtATime) {
    EXPECT_EQ(change(session, path, end), 41);
    ASSERT_EQ(change(session, path, begin), 0);
    EXPECT_EQ(change(other, path, begin), 41);
    EXPECT_EQ(change(other, path, end), 41);
    EXPECT_EQ(change(session, path, end), 0);
    EXPECT_EQ(change(session, path, end), 41);
}

TEST_F(ContinuousOperationTest, Refusals) {
    EXPECT_EQ(change(session, directory / "none", begin), 12);
    EXPECT_EQ(change(session, directory.path(), begin), 30);
    EXPECT_EQ(change(session, "", begin), 11);
    EXPECT_EQ(change(session, path, 2), 139);
    EXPECT_EQ(session.call(continuousOperation, nullptr).status, 22);
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(change(session, path, begin), 41);
    EXPECT_EQ(change(session, path, end), 41);
    EXPECT_EQ(change(other, path, begin), 0);
    EXPECT_EQ(change(other, path, end), 0);
    ASSERT_EQ(insert(session, block, 1), 0);
    EXPECT_EQ(change(other, path, begin), 85);
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(change(other, path, begin), 0);
    EXPECT_EQ(session.create(path, createRequest(8, 0, {}), 0), 85);
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(session.call(14, nullptr, "", path + '\0', -128).status, 85);
    EXPECT_EQ(session.open(&block, path, -4), 85);
}

TEST_F(ContinuousOperationTest, TheUsageTellsOfIt) {
    constexpr uint64_t flag = 0x0008;
    auto flags = [&] { return number(session.call(65, &block, "ExSt" + u32(4), "", 0, 20).data, 16, 2); };
    EXPECT_EQ(flags() & flag, 0u);
    ASSERT_EQ(change(other, path, begin), 0);
    EXPECT_EQ(flags() & flag, flag);
    ASSERT_EQ(change(other, path, end), 0);
    EXPECT_EQ(flags() & flag, 0u);
}

TEST_F(ContinuousOperationTest, AResetEndsIt) {
    ASSERT_EQ(change(session, path, begin), 0);
    ASSERT_EQ(session.call(28, nullptr).status, 0);
    EXPECT_EQ(change(other, path, begin), 0);
    EXPECT_EQ(change(other, path, end), 0);
}

TEST_F(ContinuousOperationTest, EndsWithItsProcess) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    pid_t child = forkWhileQuiet([&] {
        EngineSession mine(3);
        char began = change(mine, path, begin) == 0 ? 'y' : 'n';
        if (write(ready[1], &began, 1) == 1)
            pause();
        return 1;
    });
    char began = 0;
    ASSERT_EQ(read(ready[0], &began, 1), 1);
    EXPECT_EQ(began, 'y');
    EXPECT_EQ(change(session, path, begin), 41);
    EXPECT_EQ(kill(child, SIGKILL), 0);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    close(ready[0]);
    close(ready[1]);
    EXPECT_EQ(change(session, path, begin), 0);
    EXPECT_EQ(change(session, path, end), 0);
}

TEST_F(ContinuousOperationTest, AForkedChildDoesNotInheritIt) {
    ASSERT_EQ(change(session, path, begin), 0);
    std::string before = bytesOnDisk();
    pid_t child = forkWhileQuiet([&] { return change(session, path, end) == 41 ? 0 : 1; });
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    ASSERT_EQ(insert(session, block, 1), 0);
    EXPECT_EQ(bytesOnDisk(), before);
    EXPECT_EQ(change(session, path, end), 0);
    EXPECT_NE(bytesOnDisk(), before);
}

TEST_F(ContinuousOperationTest, NeedsTheKeyOfAnEncryptedFile) {
    constexpr int32_t deniedEncrypted = 2, readableEncrypted = 3, invalidOwner = 51;
    for (int32_t mode : {deniedEncrypted, readableEncrypted}) {
        ASSERT_EQ(session.call(29, &block, "harbour", "harbour", mode).status, 0);
        EXPECT_EQ(change(other, path, begin), 0);
        EXPECT_EQ(change(other, path, end), 0);
        ASSERT_EQ(session.call(1, &block).status, 0);
        EXPECT_EQ(change(other, path, begin), mode == readableEncrypted ? 0 : invalidOwner);
        ASSERT_EQ(session.call(0, &block, "harbour", path + '\0', 0).status, 0);
        if (mode == readableEncrypted) {
            std::string before = bytesOnDisk();
            EXPECT_EQ(insert(session, block, 1), 0);
            EXPECT_EQ(bytesOnDisk(), before);
            EXPECT_EQ(change(other, path, end), 0);
            EXPECT_NE(bytesOnDisk(), before);
        }
        ASSERT_EQ(session.call(30, &block).status, 0);
    }
}

}  // namespace
