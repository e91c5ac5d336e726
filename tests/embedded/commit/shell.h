#ifndef VANTREL_TESTS_EMBEDDED_COMMIT_SHELL_H
#define VANTREL_TESTS_EMBEDDED_COMMIT_SHELL_H

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

// Looks into a file, or damages it, behind the engine's back.

namespace vantrel::test {

inline int64_t readSql(const std::string &path, const std::string &sql) {
    sqlite3 *database = nullptr;
    sqlite3_stmt *statement = nullptr;
    EXPECT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr), SQLITE_OK);
    EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
    int64_t value = sqlite3_column_int64(statement, 0);
    sqlite3_finalize(statement);
    sqlite3_close(database);
    return value;
}

inline void runSql(const std::string &path, const std::string &sql) {
    sqlite3 *database = nullptr;
    EXPECT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
}

}  // namespace vantrel::test

#endif
