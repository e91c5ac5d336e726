#include <random>

#include "embedded/emulation.h"
#include "embedded/operation/encryption_fixture.h"

namespace {

using namespace vantrel::test;

class DamagedFileTest : public EncryptionTest {
  protected:
    void SetUp() override {
        create(readableEncrypted);
        for (uint32_t number = 0; number < 60; ++number)
            ASSERT_EQ(insert(record(number)), 0);
        close();
        whole = contentOf(path);
    }
    // Opens with the right name and reads what can be read.
    int32_t openDamaged(const std::string &content, int32_t mode = 0) {
        writeContent(path, content);
        int32_t opened = openWith(session, &block, path, "harbour", mode);
        if (opened != 0)
            return opened;
        Reply reply = session.call(12, &block, "", "", 0, 2000);
        while (reply.status == 0)
            reply = session.call(6, &block, "", "", 0, 2000);
        int32_t inserted = insert(record(500));
        EXPECT_TRUE(inserted == 0 || inserted == 2 || inserted == 5 || inserted == 30) << inserted;
        close();
        return reply.status;
    }

    std::string whole;
};

TEST_F(DamagedFileTest, AFlippedBitInTheHeaderIsFound) {
    for (size_t offset = 0; offset < 340; offset += rounds(offset < 48 ? 3 : 29, 97)) {
        std::string content = whole;
        content[offset] = static_cast<char>(content[offset] ^ 0x10);
        bool isInNames = offset < 20;  // magic and format number
        EXPECT_EQ(openDamaged(content), isInNames ? 30 : 2) << offset;
    }
}

TEST_F(DamagedFileTest, AFlippedBitInAPageIsFoundOrHarmsOnlyRecords) {
    std::mt19937 random(5);
    for (int flip = 0; flip < rounds(20, 2); ++flip) {
        std::string content = whole;
        size_t offset = 8192 + random() % (content.size() - 8192);
        content[offset] = static_cast<char>(content[offset] ^ (1 << random() % 8));
        int32_t status = openDamaged(content);
        EXPECT_TRUE(status == 9 || status == 2 || status == 30) << offset << " gives " << status;
    }
    std::string content = whole;
    content[8192] = static_cast<char>(content[8192] ^ 1);
    EXPECT_EQ(openDamaged(content), 30);
}

TEST_F(DamagedFileTest, ACutFileIsFound) {
    EXPECT_EQ(openDamaged(whole.substr(0, 300)), 2);
    for (size_t size : {size_t{0}, size_t{16}, size_t{8191}, size_t{8192}, size_t{8200}, size_t{12000}})
        EXPECT_EQ(openDamaged(whole.substr(0, size)), 30) << size;
    EXPECT_EQ(openDamaged(whole.substr(0, whole.size() - 8192), -3), 2);
}

TEST_F(DamagedFileTest, ADamagedLogEndsBeforeTheDamage) {
    runAndKill([&] {
        EngineSession mine{3};
        EngineSession::PositionBlock at{};
        EXPECT_EQ(openWith(mine, &at, path, "harbour"), 0);
        EXPECT_EQ(mine.call(2, &at, record(100), "", -1).status, 0);
        kill(getpid(), SIGKILL);
    });
    std::string log = contentOf(path + "-wal");
    for (size_t offset : {size_t{0}, size_t{40}, size_t{3000}}) {
        writeContent(path, whole);
        std::string damaged = log;
        damaged[offset] = static_cast<char>(damaged[offset] ^ 1);
        writeContent(path + "-wal", damaged);
        ASSERT_EQ(openWith(session, &block, path, "harbour", -3), 0);
        EXPECT_EQ(records().size(), 60u) << offset;
        close();
    }
    writeContent(path, whole);
    writeContent(path + "-wal", log);
    ASSERT_EQ(openWith(session, &block, path, "harbour", -3), 0);
    EXPECT_EQ(records().size(), 61u);
}

}  // namespace
