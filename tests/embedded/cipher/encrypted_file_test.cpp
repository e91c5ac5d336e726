#include "embedded/storage/encrypted_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "embedded/storage/encrypting_vfs.h"

namespace {

using namespace vantrel::embedded;

constexpr NewOwner owner{.name = "harbour", .mode = {.isReadable = false, .isEncrypted = true}};
constexpr int databaseFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;

// An encrypted database as SQLite sees it.
class EncryptedFileTest : public testing::Test {
  protected:
    EncryptedFileTest() {
        OpeningScope scope(owner);
        EXPECT_EQ(sqlite3_open_v2(path.c_str(), &database, databaseFlags, encryptingVfs()), SQLITE_OK);
        sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file);
    }
    ~EncryptedFileTest() override {
        sqlite3_close(database);
        for (const char *suffix : {"", "-wal", "-shm"})
            std::filesystem::remove(path + suffix);
    }

    void execute(const char *sql) {
        ASSERT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    }
    int write(const std::string &bytes, int64_t offset) {
        return file->pMethods->xWrite(file, bytes.data(), static_cast<int>(bytes.size()), offset);
    }
    int64_t size() {
        sqlite3_int64 size = -1;
        EXPECT_EQ(file->pMethods->xFileSize(file, &size), SQLITE_OK);
        return size;
    }
    static std::string readFrom(sqlite3_file *read, int64_t offset, size_t length) {
        std::string bytes(length, '\xEE');
        EXPECT_EQ(read->pMethods->xRead(read, bytes.data(), static_cast<int>(length), offset), SQLITE_OK);
        return bytes;
    }
    // Every part of what was written reads as written.
    static void compareRanges(sqlite3_file *read, const std::string &model) {
        std::mt19937 random(3);
        for (int range = 0; range < 500; ++range) {
            size_t offset = random() % model.size();
            size_t length = 1 + random() % std::min<size_t>(model.size() - offset, 30000);
            std::string part(length, '\xEE');
            ASSERT_EQ(read->pMethods->xRead(read, part.data(), static_cast<int>(length),
                                            static_cast<sqlite3_int64>(offset)),
                      SQLITE_OK);
            ASSERT_TRUE(part == model.substr(offset, length)) << offset << ' ' << length;
        }
    }
    static std::string contentOf(const std::string &name) {
        std::ifstream stream(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static std::string firstBytes(const std::string &name, size_t count) {
        std::ifstream stream(name, std::ios::binary);
        std::string bytes(count, '\0');
        stream.read(bytes.data(), static_cast<std::streamsize>(count));
        return bytes;
    }

    std::string path =
        (std::filesystem::temp_directory_path() / ("vantrel-unit-" + std::to_string(getpid()))).string();
    sqlite3 *database = nullptr;
    sqlite3_file *file = nullptr;
};

TEST_F(EncryptedFileTest, AnyRangeOfADatabaseReadsAsWritten) {
    ASSERT_NE(EncryptedFile::from(file), nullptr);
    EXPECT_EQ(size(), 0);
    std::string model;
    for (char page = 'a'; page <= 'f'; ++page)
        model += std::string(8192, page);
    ASSERT_EQ(write(model.substr(8192 * 2), 8192 * 2), SQLITE_OK);
    ASSERT_EQ(write(model.substr(0, 8192 * 2), 0), SQLITE_OK);
    EXPECT_EQ(size(), 6 * 8192);
    compareRanges(file, model);
    EXPECT_EQ(contentOf(path).find("aaaa"), std::string::npos);
    EXPECT_EQ(contentOf(path).size(), 7u * 8192);
}

TEST_F(EncryptedFileTest, WhatLiesBehindTheEndReadsAsZeros) {
    ASSERT_EQ(write(std::string(8192, 'a'), 0), SQLITE_OK);
    std::string bytes(100, '\xEE');
    EXPECT_EQ(file->pMethods->xRead(file, bytes.data(), 100, 8192 - 50), SQLITE_IOERR_SHORT_READ);
    EXPECT_EQ(bytes, std::string(50, 'a') + std::string(50, '\0'));
}

TEST_F(EncryptedFileTest, TruncatingCountsWithoutTheHeader) {
    ASSERT_EQ(write(std::string(3 * 8192, 'a'), 0), SQLITE_OK);
    ASSERT_EQ(file->pMethods->xTruncate(file, 8192), SQLITE_OK);
    EXPECT_EQ(size(), 8192);
    ASSERT_EQ(file->pMethods->xTruncate(file, 0), SQLITE_OK);
    EXPECT_EQ(contentOf(path).size(), 8192u);
}

// An offset of 4 GiB cut to 32 bits would be that of the first page, one of 5 GiB that of the page at 1 GiB.
TEST_F(EncryptedFileTest, PagesLieWhereTheyBelongBeyondFourGibibytes) {
    constexpr int64_t gibibyte = 1'073'741'824;
    const std::pair<int64_t, char> pages[] = {
        {0, 'a'}, {gibibyte, 'b'}, {2 * gibibyte, 'c'}, {4 * gibibyte, 'd'}, {5 * gibibyte, 'e'}};
    for (auto [offset, content] : pages) {
        ASSERT_EQ(write(std::string(8192, content), offset), SQLITE_OK);
        EXPECT_EQ(size(), offset + 8192);
    }
    for (auto [offset, content] : pages)
        EXPECT_TRUE(readFrom(file, offset, 8192) == std::string(8192, content)) << offset;
    EXPECT_EQ(std::filesystem::file_size(path), 5'368'725'504u);
    ASSERT_EQ(file->pMethods->xTruncate(file, 4 * gibibyte), SQLITE_OK);
    EXPECT_EQ(std::filesystem::file_size(path), 4'294'975'488u);
}

TEST_F(EncryptedFileTest, PartsOfPagesAreNotWritten) {
    EXPECT_EQ(write(std::string(100, 'a'), 0), SQLITE_IOERR_WRITE);
    EXPECT_EQ(write(std::string(8192, 'a'), 100), SQLITE_IOERR_WRITE);
    EXPECT_EQ(size(), 0);
}

TEST_F(EncryptedFileTest, ALogReadsAsWrittenAndShowsNothing) {
    execute(
        "PRAGMA page_size = 8192; PRAGMA journal_mode = OFF; PRAGMA journal_mode = WAL; CREATE TABLE "
        "shown(text TEXT)");
    for (int row = 0; row < 50; ++row)
        execute("INSERT INTO shown VALUES('a text that is looked for')");
    sqlite3_file *log = nullptr;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
    ASSERT_NE(EncryptedFile::from(log), nullptr);
    std::string content = contentOf(path + "-wal"), plain(content.size(), '\0');
    ASSERT_EQ(log->pMethods->xRead(log, plain.data(), static_cast<int>(plain.size()), 0), SQLITE_OK);
    EXPECT_NE(plain.find("a text that is looked for"), std::string::npos);
    EXPECT_EQ(content.find("a text that is looked for"), std::string::npos);
    EXPECT_EQ(plain.substr(0, 4), std::string("\x37\x7F\x06\x82", 4));
    EXPECT_NE(content.substr(0, 4), plain.substr(0, 4));
    compareRanges(log, plain);
}

// The first frames behind 2, 4 and 5 GiB: each 8,216 bytes, behind the 32 of the log's header.
TEST_F(EncryptedFileTest, FramesOfALogLieWhereTheyBelongBeyondFourGibibytes) {
    execute(
        "PRAGMA page_size = 8192; PRAGMA journal_mode = OFF; PRAGMA journal_mode = WAL; CREATE TABLE "
        "shown(text TEXT)");
    sqlite3_file *log = nullptr;
    sqlite3_file_control(database, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
    std::string written = contentOf(path + "-wal");
    const std::pair<int64_t, char> frames[] = {
        {2'147'489'896, 'c'}, {4'294'971'544, 'd'}, {5'368'712'368, 'e'}};
    for (auto [offset, content] : frames)
        ASSERT_EQ(log->pMethods->xWrite(log, std::string(8216, content).data(), 8216, offset), SQLITE_OK);
    for (auto [offset, content] : frames)
        EXPECT_TRUE(readFrom(log, offset, 8216) == std::string(8216, content)) << offset;
    EXPECT_EQ(std::filesystem::file_size(path + "-wal"), 5'368'720'584u);
    EXPECT_TRUE(firstBytes(path + "-wal", written.size()) == written);
}

TEST_F(EncryptedFileTest, TheNameOpensItAgainAndAnotherDoesNot) {
    execute("PRAGMA page_size = 8192; PRAGMA journal_mode = OFF; CREATE TABLE shown(text TEXT)");
    sqlite3 *again = nullptr;
    for (const char *name : {"", "harbor"}) {
        OpeningScope scope{ByteView(name)};
        EXPECT_EQ(sqlite3_open_v2(path.c_str(), &again, SQLITE_OPEN_READWRITE, encryptingVfs()), SQLITE_AUTH);
        sqlite3_close(again);
    }
    OpeningScope scope{ByteView("harbour")};
    ASSERT_EQ(sqlite3_open_v2(path.c_str(), &again, SQLITE_OPEN_READWRITE, encryptingVfs()), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(again, "SELECT * FROM shown", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(again);
}

TEST_F(EncryptedFileTest, NoJournalIsWritten) {
    execute("PRAGMA page_size = 8192");
    EXPECT_EQ(sqlite3_exec(database, "CREATE TABLE shown(text TEXT)", nullptr, nullptr, nullptr),
              SQLITE_CANTOPEN);
}

TEST_F(EncryptedFileTest, NoTemporaryFileIsOpened) {
    execute(
        "PRAGMA page_size = 8192; PRAGMA journal_mode = MEMORY; PRAGMA temp_store = FILE;"
        "PRAGMA temp.cache_size = 1; CREATE TEMP TABLE kept(text TEXT)");
    EXPECT_NE(sqlite3_exec(database,
                           "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 5000) "
                           "INSERT INTO kept SELECT hex(zeroblob(500)) || i FROM n",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
}

}  // namespace
