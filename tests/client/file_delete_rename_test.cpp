#include <sys/mman.h>
#include <unistd.h>

#include <clocale>

#include "client/expected_call.h"

// Deleting is tested with the other functions of one text.

namespace {

using namespace vantrel;
using namespace vantrel::test;

class FileRenameTest : public ClientTest {
  protected:
    ~FileRenameTest() override { setlocale(LC_CTYPE, "C"); }
};

TEST_F(FileRenameTest, SendsTheExistingNameAsDataAndTheNewOneAsKey) {
    engine.reply({.status = 59});
    EXPECT_EQ(VantrelClientFileRename(client, "old.vnt", "newer.vnt"), 59);
    EXPECT_EQ(lastStatus(client), 59);
    expectCall(engine.onlyCall(), client,
               {.operation = 14, .data = "old.vnt", .key = "newer.vnt", .keyNumber = -127});
}

TEST_F(FileRenameTest, SuccessClearsTheStatus) {
    EXPECT_EQ(VantrelClientFileRename(client, "", ""), 0);
    EXPECT_EQ(lastStatus(client), 0);
    expectCall(engine.onlyCall(), client, {.operation = 14, .data = "", .key = "", .keyNumber = -127});
}

TEST_F(FileRenameTest, RefusesMissingNames) {
    for (auto [existingName, newName] :
         {std::pair{"a", static_cast<const char *>(nullptr)}, {nullptr, "b"}}) {
        keepStatus(client, untouchedStatus);
        EXPECT_EQ(VantrelClientFileRename(client, existingName, newName), 2007);
        EXPECT_EQ(lastStatus(client), 2007);
        EXPECT_EQ(VantrelClientFileRename(nullptr, existingName, newName), 2007);
    }
    EXPECT_EQ(VantrelClientFileRename(nullptr, "a", "b"), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(FileRenameTest, ConvertsBothWideNames) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    engine.reply({.status = 12});
    EXPECT_EQ(VantrelClientFileRenameW(client, L"m\u00FCll", L"\u00FCber"), 12);
    EXPECT_EQ(lastStatus(client), 12);
    expectCall(engine.onlyCall(), client,
               {.operation = 14,
                .data = "m\xC3\xBCll",
                .key = "\xC3\xBC"
                       "ber",
                .keyNumber = -127});
}

TEST_F(FileRenameTest, TakesWideNamesOf4095Bytes) {
    std::wstring existingName(4095, L'e'), newName(4095, L'n');
    EXPECT_EQ(VantrelClientFileRenameW(client, existingName.c_str(), newName.c_str()), 0);
    expectCall(
        engine.onlyCall(), client,
        {.operation = 14, .data = std::string(4095, 'e'), .key = std::string(4095, 'n'), .keyNumber = -127});
}

TEST_F(FileRenameTest, RefusesAWideNameOf4096Bytes) {
    std::wstring tooLong(4096, L'x');
    for (auto [existingName, newName] : {std::pair{tooLong.c_str(), L"b"}, {L"a", tooLong.c_str()}}) {
        keepStatus(client, untouchedStatus);
        EXPECT_EQ(VantrelClientFileRenameW(client, existingName, newName), 2002);
        EXPECT_EQ(lastStatus(client), 2002);
        EXPECT_EQ(VantrelClientFileRenameW(nullptr, existingName, newName), 2002);
    }
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(FileRenameTest, LeavesTheSecondWideNameUnreadWhereTheFirstIsTooLong) {
    auto pageSize = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void *page = mmap(nullptr, pageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    std::wstring tooLong(4096, L'x');
    EXPECT_EQ(VantrelClientFileRenameW(client, tooLong.c_str(), static_cast<const wchar_t *>(page)), 2002);
    EXPECT_EQ(lastStatus(client), 2002);
    EXPECT_TRUE(engine.calls().empty());
    munmap(page, pageSize);
}

TEST_F(FileRenameTest, AMissingWideNameCountsBeforeOneTooLong) {
    std::wstring tooLong(4096, L'x');
    const wchar_t *missing = nullptr;
    for (auto [existingName, newName] : {std::pair{tooLong.c_str(), missing}, {missing, tooLong.c_str()}}) {
        keepStatus(client, untouchedStatus);
        EXPECT_EQ(VantrelClientFileRenameW(client, existingName, newName), 2007);
        EXPECT_EQ(lastStatus(client), 2007);
        EXPECT_EQ(VantrelClientFileRenameW(nullptr, existingName, newName), 2007);
    }
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(FileRenameTest, RefusesAMissingClientAfterTheWideNames) {
    EXPECT_EQ(VantrelClientFileRenameW(nullptr, L"a", L"b"), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

}  // namespace
