#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "embedded/commit/shell.h"
#include "embedded/operation/owner_fixture.h"

namespace {

using namespace vantrel::test;

constexpr int32_t deletion = -128, renaming = -127, replacing = 0;

class HostileNamesTest : public testing::Test {
  protected:
    HostileNamesTest() { alarm(60); }
    ~HostileNamesTest() override { alarm(0); }

    // The status that every way to use a name gives.
    std::string statusesOf(const std::string &name) {
        std::string statuses;
        auto add = [&](int32_t status) { statuses += std::to_string(status) + ' '; };
        for (int32_t mode = 0; mode >= -4; --mode)
            add(session.open(&block, name, mode));
        add(session.create(name, request, replacing));
        add(session.call(14, nullptr, "", name + '\0', deletion).status);
        add(session.call(14, nullptr, name + '\0', directory / "renamed" + '\0', renaming).status);
        add(session.call(42, nullptr, name + '\0').status);
        return statuses;
    }
    void makeSocket(const std::string &name) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        strncpy(address.sun_path, name.c_str(), sizeof address.sun_path - 1);
        int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
        EXPECT_EQ(bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        close(descriptor);
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    std::string request = createRequest(4, 0, {{{0, 4}}});
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(HostileNamesTest, WhatIsNoOrdinaryFileIsNone) {
    ASSERT_EQ(mkfifo((directory / "fifo").c_str(), 0666), 0);
    makeSocket(directory / "socket");
    std::filesystem::create_directory(directory / "directory");
    std::string all = "30 30 30 30 30 30 30 30 30 ";
    for (const std::string &name :
         {directory / "fifo", directory / "socket", directory / "directory", directory.path(),
          std::string("/dev/null"), std::string("/dev/zero"), std::string("/dev/tty"), std::string("/")})
        EXPECT_EQ(statusesOf(name), all) << name;
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"directory", "fifo", "socket"}));
}

TEST_F(HostileNamesTest, WhatOtherProgramsWroteIsLeftAlone) {
    std::string all = "30 30 30 30 30 30 30 30 30 ";
    for (const std::string &content : {std::string(), std::string("x"), std::string(8192, '\0'),
                                       std::string(100000, 'x'), std::string("SQLite format 3\0", 16),
                                       std::string("SQLite format 3\0", 16) + std::string(8176, 'z')}) {
        writeContent(path, content);
        EXPECT_EQ(statusesOf(path), all) << content.size();
        EXPECT_EQ(contentOf(path), content);
        EXPECT_EQ(directory.names(), (std::vector<std::string>{"file"}));
    }
}

TEST_F(HostileNamesTest, DatabasesOfOtherProgramsAndFormatsAreLeftAlone) {
    std::string all = "30 30 30 30 30 30 30 30 30 ";
    runSql(path, "CREATE TABLE notes(text); INSERT INTO notes VALUES('somebody''s')");
    EXPECT_EQ(statusesOf(path), all);
    EXPECT_EQ(readSql(path, "SELECT count(*) FROM notes"), 1);
    std::filesystem::remove(path);
    ASSERT_EQ(session.create(path, request), 0);
    for (const char *change : {"PRAGMA user_version = 2", "PRAGMA user_version = 0",
                               "PRAGMA user_version = 1; PRAGMA application_id = 1"}) {
        runSql(path, change);
        EXPECT_EQ(statusesOf(path), all) << change;
    }
    EXPECT_EQ(readSql(path, "SELECT count(*) FROM definition"), 1);
}

TEST_F(HostileNamesTest, LinksThatLeadNowhere) {
    ASSERT_EQ(symlink("nowhere", (directory / "dangling").c_str()), 0);
    ASSERT_EQ(symlink("none/nowhere", (directory / "far").c_str()), 0);
    ASSERT_EQ(symlink("two", (directory / "one").c_str()), 0);
    ASSERT_EQ(symlink("one", (directory / "two").c_str()), 0);
    EXPECT_EQ(statusesOf(directory / "one"), "11 11 11 11 11 11 11 11 11 ");
    EXPECT_EQ(statusesOf(directory / "one/file"), "11 11 11 11 11 11 11 11 11 ");
    EXPECT_EQ(statusesOf(directory / "far"), "12 12 12 12 12 12 12 12 12 ");
    EXPECT_EQ(session.open(&block, directory / "dangling"), 12);
    EXPECT_EQ(session.call(14, nullptr, "", directory / "dangling" + '\0', deletion).status, 12);
}

TEST_F(HostileNamesTest, LinksToAFileAreTheFile) {
    ASSERT_EQ(session.create(path, request), 0);
    ASSERT_EQ(symlink("file", (directory / "link").c_str()), 0);
    ASSERT_EQ(session.open(&block, directory / "link"), 0);
    EXPECT_EQ(session.call(2, &block, "aaaa", "", -1).status, 0);
    EXPECT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(session.call(14, nullptr, "", directory / "link" + '\0', deletion).status, 0);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"link"}));
}

TEST_F(HostileNamesTest, LongNamesAndMissingDirectories) {
    EXPECT_EQ(statusesOf(std::string(4096, 'x')), "11 11 11 11 11 11 11 11 11 ");
    for (size_t length : {4096, 4095}) {
        std::string name = directory / std::string(length - directory.path().size() - 1, 'x');
        EXPECT_EQ(name.size(), length);
        EXPECT_EQ(statusesOf(name), "11 11 11 11 11 11 11 11 11 ");
    }
    EXPECT_EQ(statusesOf(directory / std::string(256, 'x')), "11 11 11 11 11 11 11 11 11 ");
    EXPECT_EQ(statusesOf(directory / "none/file"), "12 12 12 12 12 12 12 12 12 ");
    writeContent(path, "x");
    EXPECT_EQ(statusesOf(path + "/file"), "12 12 12 12 12 12 12 12 12 ");
}

TEST_F(HostileNamesTest, NamesWithoutRoomForTheSideFiles) {
    std::string longest = directory / std::string(255, 'x');
    EXPECT_EQ(session.create(longest, request), 11);
    EXPECT_TRUE(directory.names().empty());
    std::string fits = directory / std::string(240, 'x');
    ASSERT_EQ(session.create(fits, request), 0);
    ASSERT_EQ(session.open(&block, fits), 0);
    EXPECT_EQ(session.call(2, &block, "aaaa", "", -1).status, 0);
}

TEST_F(HostileNamesTest, SideFilesThatAreNoneDoNotHoldUp) {
    struct {
        const char *side;
        int32_t opened;
    } expected[] = {{"-commit", 2}, {"-wal", 0}, {"-shm", 2}, {"-lock", 2}};
    for (const auto &[side, status] : expected) {
        ASSERT_EQ(session.create(path, request), 0);
        ASSERT_EQ(mkfifo((path + side).c_str(), 0666), 0);
        int32_t opened = session.open(&block, path);
        EXPECT_EQ(opened, status) << side;
        EXPECT_EQ(session.call(28, nullptr).status, 0);
        std::filesystem::remove(path + side);
        EXPECT_EQ(session.open(&block, path), 0) << side;
        EXPECT_EQ(session.call(1, &block).status, 0);
    }
    for (const char *side : {"-commit", "-wal", "-shm", "-lock"}) {
        std::filesystem::create_directory(path + side);
        session.open(&block, path);
        EXPECT_EQ(session.call(28, nullptr).status, 0);
        std::filesystem::remove(path + side);
        EXPECT_EQ(session.open(&block, path), 0) << side;
        EXPECT_EQ(session.call(1, &block).status, 0);
    }
}

}  // namespace
