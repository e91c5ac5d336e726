#include <climits>
#include <clocale>

#include "client/expected_call.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class FileOpenTest : public ClientTest {
  protected:
    ~FileOpenTest() override { setlocale(LC_CTYPE, "C"); }

    // An open that failed leaves no file to close.
    void expectUntouched() const { EXPECT_EQ(file, &sentinel); }

    VantrelFile sentinel{};
    VantrelFile *file = &sentinel;
};

TEST_F(FileOpenTest, HandsOutAFileOfTheClient) {
    engine.reply({.positionBlock = Bytes(128, 0xAB)});
    ASSERT_EQ(VantrelClientFileOpen(client, &file, "parts.vnt", nullptr, 0, 0), 0);
    EXPECT_EQ(lastStatus(client), 0);
    expectCall(engine.onlyCall(), client, {.operation = 0, .key = "parts.vnt", .file = file});
    EXPECT_EQ(engine.onlyCall().positionBlockBytes, Bytes(128, 0));

    EXPECT_EQ(Bytes(file->positionBlock, file->positionBlock + 128), Bytes(128, 0xAB));
    EXPECT_EQ(VantrelFileGetLastStatusCode(file), 0);
    EXPECT_EQ(owningClient(file), client);
    EXPECT_EQ(loadI32(file->cachedKeyNumber), -7);
    EXPECT_EQ(loadU32(file->cachedKeyLength), 0u);
    EXPECT_EQ(Bytes(file->keyBuffer, file->keyBuffer + 1024), Bytes(1024, 0));
    EXPECT_EQ(loadU64(file->savedCursorPosition), 0u);
    EXPECT_EQ(VantrelClientFileClose(client, file), 0);
}

TEST_F(FileOpenTest, IsTheClientsOnlyAfterTheEngineAgreed) {
    const VantrelClient *ownerDuringTheRequest = client;
    engine.reply({.effect = [&](const EngineCall &) { ownerDuringTheRequest = owningClient(file); }});
    ASSERT_EQ(VantrelClientFileOpen(client, &file, "parts.vnt", nullptr, 0, 0), 0);
    EXPECT_EQ(ownerDuringTheRequest, nullptr);
    VantrelClientFileClose(client, file);
}

TEST_F(FileOpenTest, SendsTheOwnerNameAsData) {
    for (const char *owner : {"secret", ""}) {
        engine.reset();
        ASSERT_EQ(VantrelClientFileOpen(client, &file, "parts.vnt", owner, 0, 0), 0);
        expectCall(engine.onlyCall(), client,
                   {.operation = 0, .data = owner, .key = "parts.vnt", .file = file});
        VantrelClientFileClose(client, file);
    }
}

TEST_F(FileOpenTest, SendsNamesOfAnyLength) {
    std::string name(5000, 'n'), owner(70000, 'o');
    ASSERT_EQ(VantrelClientFileOpen(client, &file, name.c_str(), owner.c_str(), 0, 0), 0);
    expectCall(engine.onlyCall(), client, {.operation = 0, .data = owner, .key = name, .file = file});
    VantrelClientFileClose(client, file);
}

TEST_F(FileOpenTest, TranslatesModeAndVariant) {
    constexpr int32_t keyNumbers[5][3] = {
        {0, 6, 99}, {-1, 7, 100}, {-2, 8, 101}, {-4, 10, 103}, {-3, 9, 102}};
    for (int32_t mode = 0; mode < 5; ++mode) {
        for (int32_t variant = 0; variant < 3; ++variant) {
            engine.reset();
            ASSERT_EQ(VantrelClientFileOpen(client, &file, "a", nullptr, mode, variant), 0);
            EXPECT_EQ(engine.onlyCall().keyNumber, keyNumbers[mode][variant]) << mode << ' ' << variant;
            VantrelClientFileClose(client, file);
        }
    }
}

TEST_F(FileOpenTest, RefusesModesAndVariantsThatDoNotExistBeforeAllocating) {
    FailingAllocation failing;
    for (auto [mode, variant] : {std::pair{5, 0}, {0, 3}, {-1, 0}, {0, -1}, {INT_MIN, 0}, {0, INT_MAX}}) {
        keepStatus(client, untouchedStatus);
        EXPECT_EQ(VantrelClientFileOpen(client, &file, "a", nullptr, mode, variant), 2002);
        EXPECT_EQ(lastStatus(client), 2002);
        expectUntouched();
    }
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(FileOpenTest, ChecksClientThenPointersThenModes) {
    EXPECT_EQ(VantrelClientFileOpen(nullptr, &file, "a", nullptr, 5, 3), 2007);
    EXPECT_EQ(VantrelClientFileOpen(client, &file, nullptr, nullptr, 5, 3), 2007);
    EXPECT_EQ(lastStatus(client), 2007);
    keepStatus(client, untouchedStatus);
    EXPECT_EQ(VantrelClientFileOpen(client, nullptr, "a", nullptr, 5, 3), 2007);
    EXPECT_EQ(lastStatus(client), 2007);
    expectUntouched();
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(FileOpenTest, MemoryRunsOut) {
    FailingAllocation failing;
    EXPECT_EQ(VantrelClientFileOpen(client, &file, "a", nullptr, 0, 0), 101);
    EXPECT_EQ(lastStatus(client), 101);
    EXPECT_EQ(file, nullptr);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(FileOpenTest, AFailedOpenLeavesNull) {
    engine.reply({.status = 12});
    EXPECT_EQ(VantrelClientFileOpen(client, &file, "a", nullptr, 0, 0), 12);
    EXPECT_EQ(lastStatus(client), 12);
    EXPECT_EQ(file, nullptr);
}

TEST_F(FileOpenTest, TakesAWideFileName) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    ASSERT_EQ(VantrelClientFileOpenW(client, &file, L"m\u00FCll", "secret", 3, 2), 0);
    expectCall(engine.onlyCall(), client,
               {.operation = 0, .data = "secret", .key = "m\xC3\xBCll", .keyNumber = 103, .file = file});
    EXPECT_EQ(owningClient(file), client);
    VantrelClientFileClose(client, file);
}

TEST_F(FileOpenTest, HandsOnTheResultOfTheNarrowForm) {
    engine.reply({.status = 46});
    EXPECT_EQ(VantrelClientFileOpenW(client, &file, L"a", nullptr, 0, 0), 46);
    EXPECT_EQ(lastStatus(client), 46);
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(VantrelClientFileOpenW(client, nullptr, L"a", nullptr, 0, 0), 2007);
    EXPECT_EQ(VantrelClientFileOpenW(client, &file, L"a", nullptr, 5, 0), 2002);
    EXPECT_EQ(VantrelClientFileOpenW(nullptr, &file, L"a", nullptr, 0, 0), 2007);
}

TEST_F(FileOpenTest, ChecksTheWideNameBeforeAllElse) {
    EXPECT_EQ(VantrelClientFileOpenW(client, nullptr, nullptr, nullptr, 5, 3), 2007);
    EXPECT_EQ(lastStatus(client), 2007);
    EXPECT_EQ(VantrelClientFileOpenW(nullptr, &file, nullptr, nullptr, 0, 0), 2007);
    std::wstring tooLong(4096, L'n');
    EXPECT_EQ(VantrelClientFileOpenW(client, nullptr, tooLong.c_str(), nullptr, 0, 0), 2002);
    EXPECT_EQ(lastStatus(client), 2002);
    EXPECT_EQ(VantrelClientFileOpenW(nullptr, &file, tooLong.c_str(), nullptr, 0, 0), 2002);
    expectUntouched();
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(FileOpenTest, TakesAWideNameOf4095Bytes) {
    ASSERT_EQ(VantrelClientFileOpenW(client, &file, std::wstring(4095, L'n').c_str(), nullptr, 0, 0), 0);
    expectCall(engine.onlyCall(), client, {.operation = 0, .key = std::string(4095, 'n'), .file = file});
    VantrelClientFileClose(client, file);
}

}  // namespace
