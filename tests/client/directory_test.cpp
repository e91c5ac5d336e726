#include <climits>
#include <clocale>
#include <cwchar>

#include "support/client_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class DirectoryTest : public ClientTest {
  protected:
    ~DirectoryTest() override { setlocale(LC_CTYPE, "C"); }

    void replyDirectory(const std::string &directory) {
        Bytes bytes = bytesOf(directory);
        bytes.push_back(0);
        engine.reply({.key = bytes});
    }
};

TEST_F(DirectoryTest, WritesIntoTheCallersBuffer) {
    replyDirectory("/data");
    char buffer[8] = {'#', '#', '#', '#', '#', '#', '#', '#'};
    EXPECT_EQ(VantrelClientGetCurrentDirectory(client, 26, buffer, 7), 0);
    EXPECT_EQ(lastStatus(client), 0);
    EXPECT_EQ(std::string(buffer, 8), std::string("/data\0##", 8));

    const EngineCall &call = engine.onlyCall();
    EXPECT_EQ(call.operation, 18u);
    EXPECT_EQ(call.positionBlock, nullptr);
    EXPECT_EQ(call.data, nullptr);
    EXPECT_EQ(call.dataLength, 0u);
    EXPECT_EQ(call.key, buffer);
    EXPECT_EQ(call.keyLength, 7);
    EXPECT_EQ(call.keyNumber, 0);
    EXPECT_EQ(call.clientIdentifier, client);
}

TEST_F(DirectoryTest, CountsDrivesFromOne) {
    char buffer[8];
    for (uint32_t drive = 0; drive <= 25; ++drive)
        EXPECT_EQ(VantrelClientGetCurrentDirectory(client, drive, buffer, 8), 0);
    ASSERT_EQ(engine.calls().size(), 26u);
    int32_t keyNumber = 1;
    for (const EngineCall &call : engine.calls())
        EXPECT_EQ(call.keyNumber, keyNumber++);
}

TEST_F(DirectoryTest, RefusesDrivesThatDoNotExist) {
    char buffer[8];
    for (uint32_t drive : {27u, 256u, 0x80000000u, 0xFFFFFFFFu}) {
        keepStatus(client, untouchedStatus);
        EXPECT_EQ(VantrelClientGetCurrentDirectory(client, drive, buffer, 8), 2002);
        EXPECT_EQ(lastStatus(client), 2002);
    }
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(DirectoryTest, ChecksClientThenBufferThenDrive) {
    char buffer[8];
    EXPECT_EQ(VantrelClientGetCurrentDirectory(nullptr, 27, buffer, 8), 2007);
    EXPECT_EQ(VantrelClientGetCurrentDirectory(nullptr, 27, nullptr, 8), 2007);
    EXPECT_EQ(VantrelClientGetCurrentDirectory(client, 27, nullptr, 8), 2007);
    EXPECT_EQ(lastStatus(client), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(DirectoryTest, LeavesTheBufferLengthToTheEngine) {
    char buffer[8];
    for (int32_t length : {0, -1, INT_MIN}) {
        engine.reset();
        engine.reply({.status = 21});
        EXPECT_EQ(VantrelClientGetCurrentDirectory(client, 0, buffer, length), 21);
        EXPECT_EQ(engine.onlyCall().keyLength, length);
        EXPECT_EQ(lastStatus(client), 21);
    }
}

class WideDirectoryTest : public DirectoryTest {
  protected:
    WideDirectoryTest() { wmemset(buffer, L'#', 10); }

    wchar_t buffer[10];
};

TEST_F(WideDirectoryTest, AsksForTheNarrowDirectory) {
    replyDirectory("/data");
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 3, buffer, 10), 0);
    EXPECT_EQ(lastStatus(client), 0);
    EXPECT_STREQ(buffer, L"/data");

    const EngineCall &call = engine.onlyCall();
    EXPECT_EQ(call.operation, 18u);
    EXPECT_EQ(call.positionBlock, nullptr);
    EXPECT_EQ(call.data, nullptr);
    EXPECT_EQ(call.dataLength, 0u);
    EXPECT_NE(call.key, nullptr);
    EXPECT_EQ(call.keyLength, 4096);
    EXPECT_EQ(call.keyNumber, 4);
    EXPECT_EQ(call.clientIdentifier, client);
}

TEST_F(WideDirectoryTest, ConvertsInTheCurrentLocale) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    replyDirectory("/m\xC3\xBCll");
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, buffer, 10), 0);
    EXPECT_STREQ(buffer, L"/m\u00FCll");
}

TEST_F(WideDirectoryTest, TextAndTerminatorMayFillTheBuffer) {
    replyDirectory("/data");
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, buffer, 6), 0);
    EXPECT_EQ(std::wstring(buffer, 10), std::wstring(L"/data\0####", 10));
}

TEST_F(WideDirectoryTest, ZeroesTheLastCharacterAndLeavesThoseBetween) {
    replyDirectory("/data");
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, buffer, 10), 0);
    EXPECT_EQ(std::wstring(buffer, 10), std::wstring(L"/data\0###\0", 10));
}

TEST_F(WideDirectoryTest, CutsATextThatDoesNotFit) {
    replyDirectory("/data");
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, buffer, 5), 2002);
    EXPECT_EQ(lastStatus(client), 2002);
    EXPECT_EQ(std::wstring(buffer, 10), L"/data#####");
}

TEST_F(WideDirectoryTest, LengthOneHoldsTheEmptyTextOnly) {
    replyDirectory("");
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, buffer, 1), 0);
    EXPECT_EQ(std::wstring(buffer, 2), std::wstring(L"\0#", 2));
    replyDirectory("/");
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, buffer, 1), 2002);
    EXPECT_EQ(std::wstring(buffer, 2), L"/#");
}

TEST_F(WideDirectoryTest, RefusesALengthThatIsNotPositiveBeforeAllElse) {
    for (int32_t length : {0, -1, INT_MIN}) {
        keepStatus(client, untouchedStatus);
        EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 27, nullptr, length), 2002);
        EXPECT_EQ(lastStatus(client), 2002);
        EXPECT_EQ(VantrelClientGetCurrentDirectoryW(nullptr, 27, buffer, length), 2002);
    }
    EXPECT_EQ(std::wstring(buffer, 10), L"##########");
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(WideDirectoryTest, RefusesAMissingBufferAfterTheDirectoryCame) {
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 27, nullptr, 10), 2002);
    EXPECT_EQ(lastStatus(client), 2002);
    EXPECT_TRUE(engine.calls().empty());
    engine.reply({.status = 35});
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, nullptr, 10), 35);
    EXPECT_EQ(lastStatus(client), 35);
    engine.reset();
    replyDirectory("/data");
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, nullptr, 10), 2007);
    EXPECT_EQ(lastStatus(client), 2007);
    EXPECT_EQ(engine.onlyCall().operation, 18u);
}

TEST_F(WideDirectoryTest, RefusesAMissingClientBeforeTheDrive) {
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(nullptr, 27, buffer, 10), 2007);
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(nullptr, 27, nullptr, 10), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(WideDirectoryTest, KeepsFailuresAndLeavesTheBuffer) {
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 27, buffer, 10), 2002);
    EXPECT_EQ(lastStatus(client), 2002);
    engine.reply({.status = 35});
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 0, buffer, 10), 35);
    EXPECT_EQ(lastStatus(client), 35);
    EXPECT_EQ(std::wstring(buffer, 10), L"##########");
}

TEST_F(WideDirectoryTest, TakesATextOf4096BytesWithoutTerminator) {
    engine.reply({.key = Bytes(4096, 'x')});
    std::vector<wchar_t> large(4097, L'#');
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, large.data(), 4097), 0);
    EXPECT_EQ(std::wstring(large.data()), std::wstring(4096, L'x'));
}

TEST_F(WideDirectoryTest, AnUnconvertibleByteEndsTheText) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    replyDirectory("/d\xFFta");
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, buffer, 10), 0);
    EXPECT_EQ(lastStatus(client), 0);
    EXPECT_EQ(std::wstring(buffer, 10), std::wstring(L"/d\0\0\0\0\0\0\0\0", 10));
}

TEST_F(WideDirectoryTest, AnUnconvertibleByteBehindTheBufferDoesNotMatter) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    replyDirectory("/d\xFFta");
    EXPECT_EQ(VantrelClientGetCurrentDirectoryW(client, 26, buffer, 2), 2002);
    EXPECT_EQ(lastStatus(client), 2002);
    EXPECT_EQ(std::wstring(buffer, 10), L"/d########");
}

}  // namespace
