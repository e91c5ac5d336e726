#include <algorithm>
#include <filesystem>

#include "embedded/commit/child_process.h"
#include "embedded/operation/encryption_fixture.h"
#include "embedded/system_calls.h"

namespace {

using namespace vantrel::test;

using Names = std::vector<std::string>;

// What can be read beside an encrypted file while something is done to it; and beside a plain one, where it
// is to be seen that it would be found.
class SecrecyTest : public EncryptionTest {
  protected:
    SecrecyTest() : recordBytes_(recordText), keyBytes_(keyText.substr(0, 10)) {}

    Names filesWithRecords() const { return filesWith(directory, recordBytes_); }
    Names filesWithKeys() const { return filesWith(directory, keyBytes_); }
    bool isReadable(std::string_view bytes) const {
        return bytes.find(recordBytes_) != bytes.npos || bytes.find(keyBytes_) != bytes.npos;
    }

    // Dies in the end of a transaction that has been decided about by a plain file, before the other file is
    // changed.
    void dieDecided(bool isEncrypted) {
        std::string decider = directory / "decider";
        auto work = [&]() -> std::string {
            EngineSession mine{3};
            EngineSession::PositionBlock first{}, second{};
            EXPECT_EQ(mine.create(decider, createRequest(4, 0, {{{0, 4}}})), 0);
            EXPECT_EQ(mine.create(path, createRequest(18, variableLength, {{{0, 16}}})), 0);
            EXPECT_EQ(mine.open(&first, decider), 0);
            EXPECT_EQ(mine.open(&second, path), 0);
            EXPECT_EQ(isEncrypted ? setOwner(mine, &second, deniedEncrypted, "harbour") : 0, 0);
            EXPECT_EQ(mine.call(1019, nullptr).status, 0);
            EXPECT_EQ(mine.call(2, &first, "aaaa", "", -1).status, 0);
            for (uint32_t number = 0; number < 100; ++number)
                EXPECT_EQ(mine.call(2, &second, record(number), "", -1).status, 0);
            SystemCallWatch watch(directory.path(), [&](const SystemCall &call) {
                return call.name == "write" && call.path == path + "-wal" ? Fate::kills : Fate::happens;
            });
            return std::to_string(mine.call(20, nullptr).status);
        };
        ASSERT_EQ(ChildProcess::run(work), "killed");
        Names names = directory.names();
        ASSERT_NE(std::find(names.begin(), names.end(), "file-commit"), names.end());
    }

  private:
    std::string recordBytes_, keyBytes_;
};

TEST_F(SecrecyTest, WhatAPlainFileKeepsForAnEncryptedOneIsSealed) {
    const Names none;
    dieDecided(false);
    EXPECT_EQ(filesWithRecords(), Names{"decider-wal"});
    EXPECT_EQ(filesWithKeys(), Names{"decider-wal"});
    for (const std::string &name : directory.names())
        std::filesystem::remove(directory / name);
    dieDecided(true);
    EXPECT_EQ(filesWithRecords(), none);
    EXPECT_EQ(filesWithKeys(), none);
    ASSERT_EQ(openWith(session, &block, path, "harbour"), 0);
    EXPECT_EQ(records().size(), 100u);
    EXPECT_EQ(filesWithRecords(), none);
}

// Each time a part of the copy is written, all that is there already.
TEST_F(SecrecyTest, TheCopyThatIsBeingEncryptedShowsNothing) {
    for (int32_t mode : {deniedEncrypted, readableEncrypted}) {
        ASSERT_EQ(createPlain(path), 0);
        ASSERT_EQ(session.open(&block, path), 0);
        for (uint32_t number = 0; number < 300; ++number)
            ASSERT_EQ(insert(record(number)), 0);
        int writes = 0, readableWrites = 0;
        auto countWrites = [&](const SystemCall &call) {
            bool isOfCopy = call.name == "write" && call.path.starts_with(path + "-rekey");
            writes += isOfCopy;
            readableWrites += isOfCopy && isReadable(call.bytes);
            return Fate::happens;
        };
        {
            SystemCallWatch watch(directory.path(), countWrites);
            ASSERT_EQ(setOwner(session, &block, mode, "harbour"), 0);
        }
        EXPECT_GT(writes, 5);
        EXPECT_EQ(readableWrites, 0);
        {
            SystemCallWatch watch(directory.path(), countWrites);
            ASSERT_EQ(clearOwner(session, &block), 0);
        }
        EXPECT_GT(readableWrites, 0);
        close();
    }
}

TEST_F(SecrecyTest, ACopyMadeUnderContinuousOperationShowsNothing) {
    for (bool isEncrypted : {false, true}) {
        ASSERT_EQ(createPlain(path), 0);
        ASSERT_EQ(session.open(&block, path), 0);
        if (isEncrypted) {
            ASSERT_EQ(setOwner(session, &block, deniedEncrypted, "harbour"), 0);
        }
        ASSERT_EQ(insert(record(1)), 0);
        ASSERT_EQ(session.call(42, nullptr, path + '\0', "", 0).status, 0);
        for (uint32_t number = 2; number < 100; ++number)
            ASSERT_EQ(insert(record(number)), 0);
        writeContent(directory / "copy", contentOf(path));
        Names expected = isEncrypted ? Names{} : Names{"copy", "file", "file-wal"};
        EXPECT_EQ(filesWithRecords(), expected);
        EXPECT_EQ(filesWithKeys(), expected);
        ASSERT_EQ(session.call(42, nullptr, path + '\0', "", 1).status, 0);
        close();
        ASSERT_EQ(openWith(session, &block, directory / "copy", "harbour", -3), 0);
        EXPECT_EQ(records(), Names{record(1)});
        close();
        std::filesystem::remove(directory / "copy");
    }
}

}  // namespace
