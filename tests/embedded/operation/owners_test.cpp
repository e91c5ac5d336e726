#include "embedded/operation/owner_fixture.h"

namespace {

using namespace vantrel::test;

class OwnersTest : public testing::Test {
  protected:
    OwnersTest() {
        EXPECT_EQ(session.create(path, createRequest(4, variableLength, {{{0, 1, modifiable}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        for (const char *record : {"aaaa", "bbbb", "cccc"})
            EXPECT_EQ(session.call(2, &block, record, "", -1).status, 0);
    }

    int32_t set(int32_t mode, const std::string &name, uint32_t operation = 29) {
        return setOwner(session, &block, mode, name, operation);
    }
    void close() { ASSERT_EQ(session.call(1, &block).status, 0); }
    int32_t reopen(const std::string &name, int32_t mode = 0) {
        return openWith(session, &block, path, name, mode);
    }
    std::vector<std::string> records() { return recordsOf(session, &block, 4); }
    uint64_t usageFlags() {
        Reply reply = session.call(65, &block, "ExSt" + u32(4), "", 0, 20);
        EXPECT_EQ(reply.status, 0);
        return number(reply.data, 16, 2);
    }

    const std::vector<std::string> all{"aaaa", "bbbb", "cccc"};
    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1}, other{2};
    EngineSession::PositionBlock block{}, otherBlock{};
};

class OwnerModesTest : public OwnersTest, public testing::WithParamInterface<int32_t> {
  protected:
    int32_t mode() const { return GetParam(); }
    bool isReadable() const { return mode() == readable || mode() == readableEncrypted; }
};
INSTANTIATE_TEST_SUITE_P(All, OwnerModesTest,
                         testing::Values(denied, readable, deniedEncrypted, readableEncrypted));

TEST_P(OwnerModesTest, TheNameOpensTheFile) {
    ASSERT_EQ(set(mode(), "harbour"), 0);
    close();
    for (int32_t openMode : {0, -1, -2, -3, -4}) {
        ASSERT_EQ(reopen("harbour", openMode), 0) << openMode;
        EXPECT_EQ(records(), all);
        EXPECT_EQ(session.call(2, &block, "dddd", "", -1).status, openMode == -2 ? 46 : 0);
        if (openMode != -2) {
            EXPECT_EQ(session.call(4, &block).status, 0);
        }
        close();
    }
}

TEST_P(OwnerModesTest, WithoutTheNameItIsClosedOrOnlyRead) {
    ASSERT_EQ(set(mode(), "harbour"), 0);
    close();
    for (const char *name : {"", "harbou", "harbours", "Harbour", "a name that is longer than any owner's"}) {
        EXPECT_EQ(reopen(name), isReadable() ? 0 : 51) << name;
        if (!isReadable())
            continue;
        EXPECT_EQ(records(), all);
        EXPECT_EQ(session.call(2, &block, "dddd", "", -1).status, 46);
        close();
    }
    EXPECT_EQ(session.open(&block, path), isReadable() ? 0 : 51);
}

TEST_P(OwnerModesTest, LongNamesHaveAnOperationOfTheirOwn) {
    const std::string longest = "four and twenty letters.";
    ASSERT_EQ(longest.size(), 24u);
    EXPECT_EQ(set(mode(), longest), 51);
    EXPECT_EQ(set(mode(), "nineteen!"), 51);
    EXPECT_EQ(set(mode(), longest + "x", 17029), 51);
    ASSERT_EQ(set(mode(), longest, 17029), 0);
    close();
    for (const std::string &wrong : {longest.substr(0, 8), longest + "x"})
        EXPECT_EQ(openWith(session, &otherBlock, path, wrong), isReadable() ? 0 : 51);
    EXPECT_EQ(reopen(longest), 0);
    EXPECT_EQ(session.call(2, &block, "dddd", "", -1).status, 0);
}

TEST_P(OwnerModesTest, ANameSetTwiceIsRefused) {
    ASSERT_EQ(set(mode(), "harbour"), 0);
    for (int32_t second : {denied, readable, deniedEncrypted, readableEncrypted})
        EXPECT_EQ(set(second, "station"), 50) << second;
    close();
    EXPECT_EQ(reopen("harbour"), 0);
}

TEST_P(OwnerModesTest, PositionsGoOnWhenTheOwnerIsSetAndCleared) {
    EngineSession::PositionBlock second{};
    ASSERT_EQ(session.open(&second, path), 0);
    ASSERT_EQ(session.call(5, &block, "", "b", 0, 4).status, 0);
    ASSERT_EQ(session.call(5, &second, "", "a", 0, 4).status, 0);
    ASSERT_EQ(set(mode(), "harbour"), 0);
    EXPECT_EQ(session.call(6, &second, "", "", 0, 4).data, "bbbb");
    EXPECT_EQ(session.call(3, &block, "bb22", "", 0).status, 0);
    EXPECT_EQ(session.call(6, &block, "", "", 0, 4).data, "cccc");
    ASSERT_EQ(clearOwner(session, &block), 0);
    EXPECT_EQ(session.call(7, &block, "", "", 0, 4).data, "bb22");
    EXPECT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(recordsOf(session, &second, 4), (std::vector<std::string>{"aaaa", "cccc"}));
}

TEST_P(OwnerModesTest, AClearedFileIsOpenToAll) {
    ASSERT_EQ(set(mode(), "harbour"), 0);
    ASSERT_EQ(clearOwner(session, &block), 0);
    EXPECT_EQ(usageFlags(), 0u);
    close();
    ASSERT_EQ(session.open(&block, path), 0);
    EXPECT_EQ(records(), all);
    EXPECT_EQ(session.call(2, &block, "dddd", "", -1).status, 0);
    EXPECT_EQ(contentOf(path).substr(0, 15), "SQLite format 3");
    EXPECT_EQ(set(mode(), "station"), 0);
}

TEST_P(OwnerModesTest, AnotherPositionOfTheSessionNeedsTheNameToo) {
    EngineSession::PositionBlock second{}, third{};
    ASSERT_EQ(set(mode(), "harbour"), 0);
    EXPECT_EQ(session.open(&second, path), isReadable() ? 0 : 51);
    if (isReadable()) {
        EXPECT_EQ(session.call(2, &second, "dddd", "", -1).status, 46);
    }
    ASSERT_EQ(openWith(session, &third, path, "harbour"), 0);
    EXPECT_EQ(session.call(2, &third, "dddd", "", -1).status, 0);
}

TEST_P(OwnerModesTest, ARefusedSetOrClearChangesNothing) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(set(mode(), "harbour"), 41);
    EXPECT_EQ(session.call(20, nullptr).status, 0);

    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(other.call(1019, nullptr).status, 0);
    ASSERT_EQ(other.call(2, &otherBlock, "dddd", "", -1).status, 0);
    EXPECT_EQ(set(mode(), "harbour"), 85);
    EXPECT_EQ(clearOwner(session, &block), 85);
    ASSERT_EQ(other.call(21, nullptr).status, 0);
    EXPECT_EQ(set(mode(), "harbour"), isEncryptedMode(mode()) ? 85 : 0);
    EXPECT_EQ(other.call(2, &otherBlock, "dddd", "", -1).status, 0);
    ASSERT_EQ(other.call(4, &otherBlock).status, 0);
    ASSERT_EQ(other.call(1, &otherBlock).status, 0);

    ASSERT_EQ(set(mode(), "harbour"), isEncryptedMode(mode()) ? 0 : 50);
    EXPECT_EQ(openWith(other, &otherBlock, path, "harbour"), 0);
    ASSERT_EQ(other.call(1019, nullptr).status, 0);
    ASSERT_EQ(other.call(2, &otherBlock, "dddd", "", -1).status, 0);
    EXPECT_EQ(clearOwner(session, &block), 85);
    EXPECT_EQ(clearOwner(other, &otherBlock), 41);
    ASSERT_EQ(other.call(21, nullptr).status, 0);
    EXPECT_EQ(clearOwner(session, &block), isEncryptedMode(mode()) ? 85 : 0);
    EXPECT_EQ(records(), all);
}

TEST_P(OwnerModesTest, StatisticsTellMode) {
    const uint64_t expected[] = {0x0020, 0x0040, 0x2120, 0x2140};
    const uint64_t flags = expected[mode()];
    ASSERT_EQ(set(mode(), "harbour"), 0);
    EXPECT_EQ(usageFlags(), flags);
    close();
    ASSERT_EQ(reopen("harbour"), 0);
    EXPECT_EQ(usageFlags(), flags);
    close();
    if (!isReadable())
        return;
    ASSERT_EQ(reopen("nobody"), 0);
    EXPECT_EQ(usageFlags(), flags | 0x0080 | 0x0004);
    Reply rights = session.call(65, &block, "ExSt" + u32(7), "", 0, 200);
    EXPECT_EQ(number(rights.data, 8, 4), 1u);
}

TEST_P(OwnerModesTest, AFileOfTheSameDefinitionHasNoOwner) {
    ASSERT_EQ(set(mode(), "harbour"), 0);
    Reply definition = session.call(15, &block, "", "", -1, 1000);
    ASSERT_EQ(definition.status, 0);
    ASSERT_EQ(session.create(directory / "like", definition.data), 0);
    ASSERT_EQ(session.open(&otherBlock, directory / "like"), 0);
    EXPECT_EQ(session.call(2, &otherBlock, "dddd", "", -1).status, 0);
}

TEST_P(OwnerModesTest, FilesAreDeletedRenamedAndReplacedWithoutTheName) {
    ASSERT_EQ(set(mode(), "harbour"), 0);
    close();
    std::string renamed = directory / "renamed";
    ASSERT_EQ(session.call(14, nullptr, path + '\0', renamed + '\0', -127).status, 0);
    EXPECT_EQ(directory.names(), std::vector<std::string>{"renamed"});
    ASSERT_EQ(openWith(session, &block, renamed, "harbour"), 0);
    EXPECT_EQ(records(), all);
    close();
    EXPECT_EQ(session.create(renamed, createRequest(2, 0, {}), 0), 0);
    EXPECT_EQ(session.open(&block, renamed), 0);
    ASSERT_EQ(set(mode(), "harbour"), 0);
    close();
    EXPECT_EQ(session.call(14, nullptr, "", renamed + '\0', -128).status, 0);
    EXPECT_EQ(directory.names(), std::vector<std::string>{});
}

TEST_P(OwnerModesTest, ARenamedFileKeepsWhatAKilledProcessCommitted) {
    ASSERT_EQ(set(mode(), "harbour"), 0);
    close();
    runAndKill([&] {
        EngineSession mine{3};
        EngineSession::PositionBlock at{};
        if (openWith(mine, &at, path, "harbour") == 0)
            mine.call(2, &at, "dddd", "", -1);
        kill(getpid(), SIGKILL);
    });
    ASSERT_GT(contentOf(path + "-wal").size(), 0u);
    std::string renamed = directory / "renamed";
    ASSERT_EQ(session.call(14, nullptr, path + '\0', renamed + '\0', -127).status, 0);
    ASSERT_EQ(openWith(session, &block, renamed, "harbour"), 0);
    EXPECT_EQ(records(), (std::vector<std::string>{"aaaa", "bbbb", "cccc", "dddd"}));
    for (const std::string &name : directory.names())
        EXPECT_EQ(name.substr(0, 7), "renamed");
}

TEST_P(OwnerModesTest, TheNameStandsNowhereInTheFile) {
    const std::string name = "a name to be looked for";
    ASSERT_EQ(set(mode(), name, 17029), 0);
    EXPECT_EQ(filesWith(directory, name), std::vector<std::string>{});
    close();
    EXPECT_EQ(filesWith(directory, name), std::vector<std::string>{});
}

TEST_P(OwnerModesTest, WhoeverOnlyReadsChangesNothing) {
    ASSERT_EQ(session.call(31, &block, segmentBytes({1, 1, duplicates | modifiable}), "", 0x85).status, 0);
    ASSERT_EQ(set(mode(), "harbour"), 0);
    close();
    if (!isReadable())
        return;
    ASSERT_EQ(session.open(&block, path), 0);
    ASSERT_EQ(session.call(12, &block, "", "", 0, 4).status, 0);
    const std::string chunk = u32(0x80000001) + u32(1) + u32(0) + u32(0) + std::string(sizeof(void *), '\0');
    EXPECT_EQ(session.call(2, &block, "dddd", "", -1).status, 46);
    EXPECT_EQ(session.call(3, &block, "a222", "", -1).status, 46);
    EXPECT_EQ(session.call(4, &block).status, 46);
    EXPECT_EQ(session.call(53, &block, chunk, "", -1).status, 46);
    EXPECT_EQ(session.call(40, &block, u16(1) + u16(4) + "dddd", "", -1).status, 46);
    for (uint32_t operation : {85u, 86u, 87u, 88u})
        EXPECT_EQ(session.call(operation, &block, std::string(40, '\0'), "", 0).status, 46) << operation;
    EXPECT_EQ(set(mode(), "station"), 46);
    EXPECT_EQ(clearOwner(session, &block), 46);
    EXPECT_EQ(session.call(31, &block, segmentBytes({2, 1, duplicates}), "", 0).status, 46);
    EXPECT_EQ(session.call(32, &block, "", "", 5).status, 46);
    EXPECT_EQ(records(), all);
}

TEST_P(OwnerModesTest, ExclusivePositionsStayExclusive) {
    close();
    ASSERT_EQ(session.open(&block, path, -4), 0);
    ASSERT_EQ(set(mode(), "harbour"), 0);
    EXPECT_EQ(openWith(other, &otherBlock, path, "harbour"), 85);
    ASSERT_EQ(clearOwner(session, &block), 0);
    EXPECT_EQ(other.open(&otherBlock, path), 85);
    close();
    ASSERT_EQ(session.open(&block, path), 0);
    ASSERT_EQ(set(mode(), "harbour"), 0);
    EXPECT_EQ(openWith(other, &otherBlock, path, "harbour"), 0);
}

TEST_F(OwnersTest, NamesMustBeThereAndEqual) {
    auto set = [&](const std::string &data, const std::string &key) {
        return session.call(29, &block, data, key, denied).status;
    };
    const std::string zero(1, '\0');
    EXPECT_EQ(set("", "harbour" + zero), 22);
    EXPECT_EQ(set("harbour" + zero, ""), 21);
    EXPECT_EQ(set(zero, zero), 51);
    EXPECT_EQ(set(zero, "harbour" + zero), 51);
    EXPECT_EQ(set("harbour" + zero, zero), 51);
    EXPECT_EQ(set("harbour" + zero, "harboux" + zero), 51);
    EXPECT_EQ(set("harbour" + zero, "harbou" + zero), 51);
    EXPECT_EQ(set("harbour1" + zero, "harbour1" + zero), 0);
    EXPECT_EQ(clearOwner(session, &block), 0);
    EXPECT_EQ(set("harbour", "harbour" + zero + "rest"), 0);
    close();
    EXPECT_EQ(session.call(0, &block, "harbour", path + '\0').status, 0);
}

TEST_F(OwnersTest, OtherModesAndPositionsAreRefused) {
    EXPECT_EQ(set(-1, "harbour"), 139);
    EXPECT_EQ(set(4, "harbour"), 139);
    EXPECT_EQ(setOwner(session, &otherBlock, denied, "harbour"), 3);
    EXPECT_EQ(clearOwner(session, &otherBlock), 3);
    ASSERT_EQ(session.open(&otherBlock, path, -2), 0);
    EXPECT_EQ(setOwner(session, &otherBlock, denied, "harbour"), 46);
    EXPECT_EQ(clearOwner(session, &otherBlock), 46);
    EXPECT_EQ(usageFlags(), 0u);
}

TEST_F(OwnersTest, AFileWithoutAnOwnerIsClearedAndOpenedWithAnyName) {
    EXPECT_EQ(clearOwner(session, &block), 0);
    close();
    EXPECT_EQ(reopen("harbour"), 0);
    EXPECT_EQ(session.call(2, &block, "dddd", "", -1).status, 0);
}

TEST_F(OwnersTest, PositionsOfOthersGoOnWhereTheContentStays) {
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(other.call(12, &otherBlock, "", "", 0, 4).status, 0);
    ASSERT_EQ(set(denied, "harbour"), 0);
    EXPECT_EQ(other.call(6, &otherBlock, "", "", 0, 4).data, "bbbb");
    EXPECT_EQ(other.call(2, &otherBlock, "dddd", "", -1).status, 0);
    EXPECT_EQ(other.call(1, &otherBlock).status, 0);
    EXPECT_EQ(other.open(&otherBlock, path), 51);
}

TEST_F(OwnersTest, IndexesComeAndGoOnAnEncryptedFile) {
    ASSERT_EQ(set(deniedEncrypted, "harbour"), 0);
    ASSERT_EQ(session.call(31, &block, segmentBytes({1, 2, duplicates | descending}), "", 0x87).status, 0);
    EXPECT_EQ(session.call(12, &block, "", "", 7, 4).data, "cccc");
    EXPECT_EQ(session.call(31, &block, segmentBytes({0, 1}), "", 0x87).status, 6);
    ASSERT_EQ(session.call(32, &block, "", "", 7).status, 0);
    EXPECT_EQ(session.call(12, &block, "", "", 7, 4).status, 6);
    EXPECT_EQ(records(), all);
}

}  // namespace
