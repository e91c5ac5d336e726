#include "embedded/storage/sqlite_freeze.h"

#include <unistd.h>

#include "embedded/storage/pending_commit.h"
#include "embedded/storage/sqlite_schema.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

// Longer than any change outside a transaction takes, and any snapshot is held.
constexpr int waitMilliseconds = 2000;

// Often enough to meet a moment between the changes of busy writers.
int waitAMillisecond(void *, int turn) {
    usleep(1000);
    return turn < waitMilliseconds;
}

constexpr int attempts = 100;

constexpr const char *emptyTheLog = "PRAGMA wal_checkpoint(TRUNCATE)";

}  // namespace

SqliteFreeze::SqliteFreeze(const std::string &path)
    : database_(path, SQLITE_OPEN_READWRITE, Database::withHeldKey) {
    sqlite3_busy_handler(database_.get(), waitAMillisecond, nullptr);
    checkFormat(database_);
    // Fails where somebody's transaction holds the file.
    database_.execute("BEGIN IMMEDIATE; ROLLBACK");
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (hold())
            return;
    }
    throw StatusError{VANTREL_STATUS_FILE_IN_USE};
}

// False where somebody has committed between the emptying of the log and the beginning of the transaction.
bool SqliteFreeze::hold() {
    if (database_.integer(emptyTheLog) != 0)
        return false;
    database_.execute("BEGIN");
    database_.integer("SELECT generation FROM definition");
    if (walIndex_.logIsEmpty(database_.mainFile()))
        return true;
    database_.execute("COMMIT");
    return false;
}

// The changes made meanwhile go into the database at once, except for those that a long read holds back.
// After a failure it can be called again.
void SqliteFreeze::end() {
    if (sqlite3_get_autocommit(database_.get()) == 0)
        database_.execute("COMMIT");
    database_.integer(emptyTheLog);
}

void SqliteFreeze::abandon() {
    database_.abandon();
}

// What was committed for the file elsewhere belongs to it.
std::unique_ptr<Freeze> freezeStorage(const std::string &path) {
    settleForWriting(path, Waiting::yes);
    return std::make_unique<SqliteFreeze>(path);
}

}  // namespace vantrel::embedded
