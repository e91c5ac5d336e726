#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

class FilesTest : public testing::Test {
  protected:
    int32_t rename(const std::string &from, const std::string &to) {
        return session.call(14, nullptr, from + '\0', to + '\0', -127).status;
    }
    int32_t remove(const std::string &name) {
        return session.call(14, nullptr, "", name + '\0', -128).status;
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    std::string request = createRequest(4, 0, {{{0, 4, extendedType, unsignedType}}});
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(FilesTest, CreateModes) {
    EXPECT_EQ(session.create(path, request, -1), 0);
    EXPECT_EQ(session.create(path, request, -1), 59);
    EXPECT_EQ(session.create(path, request, 7), 59);
    EXPECT_EQ(session.create(path, request, 0), 0);
    EXPECT_EQ(session.create(path, request, 6), 0);
    EXPECT_EQ(session.create(path, request, 99), 3014);
    EXPECT_EQ(session.create(path, request, 100), 3014);
    for (int32_t mode : {1, 5, 8, 98, 127, 256, -2, -126, -129})
        EXPECT_EQ(session.create(directory / "other", request, mode), 139) << mode;
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"file"}));
}

TEST_F(FilesTest, CreateReplacesOnlyWhatNobodyHasOpen) {
    ASSERT_EQ(session.create(path, request), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    ASSERT_EQ(session.call(2, &block, "aaaa", "", -1).status, 0);
    EXPECT_EQ(session.create(path, request), 85);
    EngineSession other(2);
    EXPECT_EQ(other.create(path, request), 85);
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(other.create(path, request), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    EXPECT_EQ(session.call(12, &block, "", "kkkk", 0, 4).status, 9);
}

TEST_F(FilesTest, TheKeyNumberMayNameTheIndex) {
    ASSERT_EQ(session.create(path, request, 0x83), 0);
    EXPECT_EQ(session.create(path, request, 0x83), 59);
    ASSERT_EQ(session.open(&block, path), 0);
    EXPECT_EQ(session.call(12, &block, "", "kkkk", 0, 4).status, 6);
    EXPECT_EQ(session.call(12, &block, "", "kkkk", 3, 4).status, 9);
    EXPECT_EQ(session.create(directory / "highest", request, 0x80 + 118), 0);
    EXPECT_EQ(session.create(directory / "above", request, 0x80 + 119), 6);
    EXPECT_EQ(session.create(directory / "above", request, 0xFF), 6);
}

TEST_F(FilesTest, CreateRefusesWhatIsNoFileOfItsFormat) {
    std::ofstream(path) << "somebody's notes";
    EXPECT_EQ(session.create(path, request), 30);
    EXPECT_EQ(session.create(directory.path(), request), 30);
    std::string notes;
    std::ifstream(path) >> notes;
    EXPECT_EQ(notes, "somebody's");
}

TEST_F(FilesTest, NamesThatCannotBe) {
    EXPECT_EQ(session.create("", request), 11);
    EXPECT_EQ(session.create(std::string(4096, 'a'), request), 11);
    EXPECT_EQ(session.create(directory / std::string(300, 'a'), request), 11);
    EXPECT_EQ(session.create(directory / "none/file", request), 12);
    EXPECT_EQ(session.open(&block, path), 12);
    EXPECT_EQ(session.open(&block, ""), 11);
    EXPECT_EQ(session.open(&block, directory.path()), 30);
    EXPECT_EQ(session.call(0, &block, "", "", 0).status, 21);
    EXPECT_EQ(session.call(14, nullptr, request, "", 0).status, 21);
    EXPECT_EQ(session.call(0, nullptr, "", path + '\0', 0).status, 3);
}

TEST_F(FilesTest, ANameOf4095BytesIsTaken) {
    std::string name = path;
    ASSERT_EQ(session.create(path, request), 0);
    while (name.size() < 4094)
        name.insert(name.rfind('/'), "/.");
    if (name.size() < 4095)
        name.insert(name.rfind('/'), "/");
    ASSERT_EQ(name.size(), 4095u);
    EXPECT_EQ(session.open(&block, name), 0);
    EXPECT_EQ(session.open(&block, '/' + name), 11);
}

TEST_F(FilesTest, OpenRecognisesTheFormat) {
    std::ofstream(path) << "";
    EXPECT_EQ(session.open(&block, path), 30);
    std::ofstream(path) << std::string(10000, 'x');
    EXPECT_EQ(session.open(&block, path), 30);
    EXPECT_EQ(block, EngineSession::PositionBlock{});
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"file"}));
}

TEST_F(FilesTest, SymbolicLinksLeadToTheOneFile) {
    ASSERT_EQ(session.create(path, request), 0);
    ASSERT_EQ(symlink("file", (directory / "link").c_str()), 0);
    ASSERT_EQ(symlink("dangling-target", (directory / "dangling").c_str()), 0);
    ASSERT_EQ(symlink("loop", (directory / "loop").c_str()), 0);
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(session.open(&block, directory / "link"), 0);
    EXPECT_EQ(other.open(&otherBlock, path, -4), 85);
    EXPECT_EQ(session.create(directory / "dangling", request, -1), 0);
    EXPECT_EQ(access((directory / "dangling-target").c_str(), F_OK), 0);
    EXPECT_EQ(session.open(&otherBlock, directory / "loop"), 11);
}

TEST_F(FilesTest, RenameMovesTheRecords) {
    ASSERT_EQ(session.create(path, request), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    ASSERT_EQ(session.call(2, &block, "aaaa", "", -1).status, 0);
    EXPECT_EQ(rename(path, directory / "moved"), 85);
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(rename(path, directory / "moved"), 0);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"moved"}));
    ASSERT_EQ(session.open(&block, directory / "moved"), 0);
    EXPECT_EQ(session.call(12, &block, "", "kkkk", 0, 4).data, "aaaa");
}

TEST_F(FilesTest, RenameRefusals) {
    ASSERT_EQ(session.create(path, request), 0);
    ASSERT_EQ(session.create(directory / "there", request), 0);
    EXPECT_EQ(rename(directory / "none", directory / "moved"), 12);
    EXPECT_EQ(rename(path, directory / "there"), 59);
    EXPECT_EQ(rename(path, directory / "none/moved"), 12);
    EXPECT_EQ(session.call(14, nullptr, "", "x", -127).status, 22);
    std::ofstream(directory / "notes") << "somebody's";
    EXPECT_EQ(rename(directory / "notes", directory / "moved"), 30);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"file", "notes", "there"}));
}

TEST_F(FilesTest, DeleteRemovesTheFileAndItsSideFiles) {
    ASSERT_EQ(session.create(path, request), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    EXPECT_EQ(remove(path), 85);
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(remove(path), 0);
    EXPECT_EQ(remove(path), 12);
    EXPECT_TRUE(directory.names().empty());
    std::ofstream(path) << "somebody's";
    EXPECT_EQ(remove(path), 30);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"file"}));
}

TEST_F(FilesTest, StructureDoesNotChangeInsideATransaction) {
    ASSERT_EQ(session.create(path, request), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(session.create(directory / "other", request), 41);
    EXPECT_EQ(remove(path), 41);
    EXPECT_EQ(rename(path, directory / "other"), 41);
    EXPECT_EQ(session.call(31, &block, segmentBytes({0, 1, duplicates}), "", 0).status, 41);
    EXPECT_EQ(session.call(32, &block, "", "", 0).status, 41);
    ASSERT_EQ(session.call(2, &block, "aaaa", "", -1).status, 0);
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    EXPECT_EQ(other.call(31, &otherBlock, segmentBytes({0, 1, duplicates}), "", 0).status, 85);
    EXPECT_EQ(other.call(32, &otherBlock, "", "", 0).status, 85);
    ASSERT_EQ(session.call(21, nullptr).status, 0);
}

TEST_F(FilesTest, PreallocationReservesSpace) {
    std::string preallocated = createRequest(4, 0x0004, {});
    preallocated.replace(22, 2, u16(250));
    ASSERT_EQ(session.create(path, preallocated), 0);
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_GE(status.st_size, 250 * 4096);
    ASSERT_EQ(session.open(&block, path), 0);
    Reply reply = session.call(15, &block, std::string(100, '\0'), "", -1);
    EXPECT_EQ(reply.status, 0);
    EXPECT_GE(number(reply.data, 22, 2), 250u);
}

TEST_F(FilesTest, VerifyFindsDamage) {
    ASSERT_EQ(session.create(path, request), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    for (char digit = 'a'; digit <= 'z'; ++digit)
        ASSERT_EQ(session.call(2, &block, std::string(4, digit), "", -1).status, 0);
    ASSERT_EQ(session.call(1, &block).status, 0);
    EXPECT_EQ(session.open(&block, path, -3), 0);
    ASSERT_EQ(session.call(1, &block).status, 0);
    // The records fill the last bytes of their page; a header of nonsense makes it unreadable.
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(3 * 8192);
    file << std::string(200, '\x77');
    file.close();
    EXPECT_EQ(session.open(&block, path, -3), 2);
    EXPECT_EQ(block, EngineSession::PositionBlock{});
}

}  // namespace
