#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "side.h"

namespace vantrel::bench {

namespace {

// The database as a program would write it by hand, with the engine's own choices of page size, cache,
// durability and checkpoints.
const char *const setUp =
    "PRAGMA page_size = 8192; PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
    "PRAGMA cache_size = -65536; PRAGMA wal_autocheckpoint = 10000; PRAGMA secure_delete = OFF;"
    "CREATE TABLE package (id INTEGER PRIMARY KEY, name TEXT NOT NULL, version TEXT NOT NULL,"
    " section TEXT NOT NULL, maintainer TEXT NOT NULL COLLATE NOCASE, installedSize INTEGER NOT NULL,"
    " packedSize INTEGER NOT NULL, text BLOB NOT NULL);"
    "CREATE UNIQUE INDEX byName ON package (name, version);";

const char *const addIndexes =
    "CREATE INDEX bySection ON package (section);"
    "CREATE INDEX byInstalledSize ON package (installedSize DESC);"
    "CREATE INDEX byMaintainer ON package (maintainer);";

#define COLUMNS "name, version, section, maintainer, installedSize, packedSize, text"

class SqlSide : public Side {
  public:
    explicit SqlSide(const std::string &path);
    ~SqlSide() override;

    Delivery load(const Packages &packages, size_t transactionSize) override;
    Delivery readByName(const std::vector<const PackageFields *> &names) override;
    Delivery walkByName() override { return walk(walkByName_); }
    Delivery walkPhysically() override { return walk(walkPhysically_); }

  private:
    void check(int result) const {
        if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE)
            giveUp(sqlite3_errmsg(database_));
    }
    void run(const char *sql) const { check(sqlite3_exec(database_, sql, nullptr, nullptr, nullptr)); }
    sqlite3_stmt *prepare(const char *sql) const;
    void bindText(sqlite3_stmt *statement, int number, const char *text) const {
        check(sqlite3_bind_text(statement, number, text, -1, SQLITE_STATIC));
    }
    bool insert(const Package &package);
    size_t takeRow(sqlite3_stmt *statement);
    Delivery walk(sqlite3_stmt *statement);

    std::string path_;
    sqlite3 *database_ = nullptr;
    sqlite3_stmt *insert_ = nullptr;
    sqlite3_stmt *readByName_ = nullptr;
    sqlite3_stmt *walkByName_ = nullptr;
    sqlite3_stmt *walkPhysically_ = nullptr;
    PackageRecord record_;
};

SqlSide::SqlSide(const std::string &path) : path_(path) {
    check(sqlite3_open_v2(path.c_str(), &database_,
                          SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr));
    run(setUp);
    insert_ = prepare("INSERT OR IGNORE INTO package (" COLUMNS ") VALUES (?, ?, ?, ?, ?, ?, ?)");
    readByName_ = prepare("SELECT " COLUMNS " FROM package WHERE name = ? AND version = ?");
    walkByName_ = prepare("SELECT " COLUMNS " FROM package INDEXED BY byName ORDER BY name, version");
    walkPhysically_ = prepare("SELECT " COLUMNS " FROM package ORDER BY id");
}

SqlSide::~SqlSide() {
    for (sqlite3_stmt *statement : {insert_, readByName_, walkByName_, walkPhysically_})
        sqlite3_finalize(statement);
    sqlite3_close(database_);
    remove(path_.c_str());
}

sqlite3_stmt *SqlSide::prepare(const char *sql) const {
    sqlite3_stmt *statement = nullptr;
    check(sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
    return statement;
}

bool SqlSide::insert(const Package &package) {
    const PackageFields &fields = package.fields;
    bindText(insert_, 1, fields.name);
    bindText(insert_, 2, fields.version);
    bindText(insert_, 3, fields.section);
    bindText(insert_, 4, fields.maintainer);
    check(sqlite3_bind_int64(insert_, 5, loadNumber(fields.installedSize)));
    check(sqlite3_bind_int64(insert_, 6, loadNumber(fields.packedSize)));
    check(sqlite3_bind_blob64(insert_, 7, package.text.data(), package.text.size(), SQLITE_STATIC));
    check(sqlite3_step(insert_));
    check(sqlite3_reset(insert_));
    return sqlite3_changes(database_) == 1;
}

Delivery SqlSide::load(const Packages &packages, size_t transactionSize) {
    Delivery delivery;
    for (size_t i = 0; i < packages.size(); i++) {
        if (i % transactionSize == 0)
            run("BEGIN IMMEDIATE");
        if (insert(packages[i]))
            delivery.add(packages[i].text.size());
        if ((i + 1) % transactionSize == 0 || i + 1 == packages.size())
            run("COMMIT");
    }
    run(addIndexes);
    return delivery;
}

// Puts a row into a record, as a program would use it. Returns the record's length, cut to one read.
size_t SqlSide::takeRow(sqlite3_stmt *statement) {
    auto text = [statement](int column) {
        return reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
    };
    auto number = [statement](int column) {
        return static_cast<uint32_t>(sqlite3_column_int64(statement, column));
    };
    PackageFields &fields = record_.fields;
    storeText(fields.name, sizeof fields.name, text(0));
    storeText(fields.version, sizeof fields.version, text(1));
    storeText(fields.section, sizeof fields.section, text(2));
    storeText(fields.maintainer, sizeof fields.maintainer, text(3));
    storeNumber(fields.installedSize, number(4));
    storeNumber(fields.packedSize, number(5));
    const void *bytes = sqlite3_column_blob(statement, 6);
    size_t length = std::min(static_cast<size_t>(sqlite3_column_bytes(statement, 6)), sizeof record_.text);
    if (length > 0)
        memcpy(record_.text, bytes, length);
    return sizeof fields + length;
}

Delivery SqlSide::readByName(const std::vector<const PackageFields *> &names) {
    Delivery delivery;
    for (const PackageFields *fields : names) {
        bindText(readByName_, 1, fields->name);
        bindText(readByName_, 2, fields->version);
        if (sqlite3_step(readByName_) != SQLITE_ROW)
            giveUp(std::string("no package ") + fields->name);
        delivery.add(takeRow(readByName_));
        check(sqlite3_reset(readByName_));
    }
    return delivery;
}

Delivery SqlSide::walk(sqlite3_stmt *statement) {
    Delivery delivery;
    int result;
    while ((result = sqlite3_step(statement)) == SQLITE_ROW)
        delivery.add(takeRow(statement));
    check(result);
    check(sqlite3_reset(statement));
    return delivery;
}

}  // namespace

std::unique_ptr<Side> makeSqlSide(const std::string &path) {
    return std::make_unique<SqlSide>(path);
}

}  // namespace vantrel::bench
