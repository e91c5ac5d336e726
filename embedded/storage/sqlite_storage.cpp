#include "embedded/storage/sqlite_storage.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <new>

#include "embedded/storage/commit_pointer.h"
#include "embedded/storage/pending_commit.h"
#include "embedded/storage/sqlite_schema.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr int cacheBudgetKiB = sizeof(void *) == 8 ? 65536 : 16384;
constexpr int smallestCacheKiB = 1024;

// The connections of this process, which share the cache budget.
std::atomic<int> connections{0};

}  // namespace

SqliteStorage::SqliteStorage(const std::string &path, const StorageOptions &options)
    : path_(path),
      logPath_(path + "-wal"),
      logIndexPath_(path + "-shm"),
      writeGate_(options.writeGate),
      database_(path, options.readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE, options.ownerName) {
    sqlite3_busy_timeout(database_.get(), waitMilliseconds);
    checkFormat(database_);
    settleForReading(path_);
    keepsRedo_ = RedoTables(database_).keepsAny();
    settle();
    database_.execute(
        "PRAGMA secure_delete = OFF; PRAGMA temp_store = MEMORY;"
        "PRAGMA mmap_size = 0; PRAGMA cell_size_check = ON; PRAGMA wal_autocheckpoint = 10000;"
        "PRAGMA synchronous = NORMAL");
    prepareTransactions();
    readGeneration_ = database_.prepare("SELECT generation FROM definition WHERE id = 1");
    reload();
    // As openings of the log are refused that took it for reading for a failure of the moment.
    if (!options.readOnly && WalIndex::isReadOnly(database_.mainFile()) &&
        access(logIndexPath_.c_str(), W_OK) == 0)
        throw StatusError{VANTREL_STATUS_PERMISSION_ERROR};
    log_ = identityAt(logPath_);
    logIndex_ = identityAt(logIndexPath_);
    setAccelerated(options.accelerated);
    ++connections;
}

// The log of a file that was replaced must not be taken for the other one's. One that is only gone may come
// back.
SqliteStorage::~SqliteStorage() {
    --connections;
    bool isReplaced = !database_.isInPlace() && identityAt(path_);
    if (!isReplaced || !log_ || identityAt(logPath_) != log_)
        return;
    unlink(logPath_.c_str());
    unlink(logIndexPath_.c_str());
}

void SqliteStorage::setAccelerated(bool accelerated) {
    if (accelerated == accelerated_ || writing_)
        return;
    releaseSnapshot();
    setSynchronous(accelerated ? Synchronous::off : Synchronous::normal);
    accelerated_ = accelerated;
}

// SQLite can change it between transactions only.
void SqliteStorage::setSynchronous(Synchronous level) {
    if (level == synchronous_)
        return;
    synchronous_.reset();
    const char *const pragmas[] = {"PRAGMA synchronous = OFF", "PRAGMA synchronous = NORMAL",
                                   "PRAGMA synchronous = FULL"};
    database_.execute(pragmas[static_cast<size_t>(level)]);
    synchronous_ = level;
}

// Reading

std::shared_ptr<const FileDefinition> SqliteStorage::definition() {
    beginReading();
    return definition_;
}

void SqliteStorage::beginReading() {
    if (!writing_ && !(reading_ && snapshotIsCurrent())) {
        releaseSnapshot();
        takeSnapshot();
    }
    scansAreOpen_ = true;
}

// The header is read before the snapshot begins: a commit in between makes the comparison fail, never pass.
void SqliteStorage::takeSnapshot() {
    requireFileInPlace();
    settleForReading(path_);
    if (logIsOpen_)
        snapshotHeader_ = walIndex_.read(database_.mainFile());
    prepareTransactions();
    begin_.run();
    reading_ = true;
    try {
        reloadIfRedefined();
        shareCache();
    } catch (...) {
        releaseSnapshot();
        throw;
    }
    logIsOpen_ = true;
}

// Anew where they may have expired with a change of the schema that was taken back: what ends a transaction
// must not need memory.
void SqliteStorage::prepareTransactions() {
    if (transactionsArePrepared_)
        return;
    begin_ = database_.prepare("BEGIN");
    beginImmediate_ = database_.prepare("BEGIN IMMEDIATE");
    commit_ = database_.prepare("COMMIT");
    rollback_ = database_.prepare("ROLLBACK");
    transactionsArePrepared_ = true;
}

bool SqliteStorage::snapshotIsCurrent() {
    return writing_ || (reading_ && walIndex_.equals(snapshotHeader_));
}

void SqliteStorage::releaseSnapshot() {
    if (!reading_)
        return;
    resetScans();
    endReading();
    reading_ = false;
}

// SQLite may have ended the transaction on its own after a failure.
void SqliteStorage::endReading() {
    if (sqlite3_get_autocommit(database_.get()) == 0)
        commit_.run();
}

void SqliteStorage::reloadIfRedefined() {
    StatementUse generation(readGeneration_);
    if (generation->step() && generation->integer(0) == generation_)
        return;
    reload();
}

void SqliteStorage::reload() {
    generation_ = -1;
    indexes_.clear();
    definition_ = std::make_shared<FileDefinition>(loadDefinition(database_));
    counts_.load();
    StatementUse generation(readGeneration_);
    if (generation->step())
        generation_ = generation->integer(0);
}

void SqliteStorage::shareCache() {
    int shares = connections;
    if (shares == cacheShares_ || shares == 0)
        return;
    int size = std::max(cacheBudgetKiB / shares, smallestCacheKiB);
    database_.execute("PRAGMA cache_size = -" + std::to_string(size));
    cacheShares_ = shares;
}

void SqliteStorage::resetScans() {
    if (!scansAreOpen_)
        return;
    scansAreOpen_ = false;
    for (auto &[number, statements] : indexes_) {
        statements.forward.reset();
        statements.backward.reset();
        if (statements.last)
            statements.last.reset();
    }
    recordsForward_.reset();
    recordsBackward_.reset();
    if (readRecord_)
        readRecord_.reset();
}

bool SqliteStorage::hasIndex(uint8_t number) const {
    auto isMeant = [number](const IndexDefinition &index) { return index.number == number; };
    return std::any_of(definition_->indexes.begin(), definition_->indexes.end(), isMeant) ||
           std::any_of(definition_->systemIndexes.begin(), definition_->systemIndexes.end(), isMeant);
}

SqliteStorage::IndexStatements &SqliteStorage::statementsOf(uint8_t index) {
    return indexes_[index];
}

Statement &SqliteStorage::prepared(Statement &statement, const char *head, const char *tail) {
    if (!statement)
        statement = database_.prepare((std::string(head) + tail).c_str());
    return statement;
}

Statement &SqliteStorage::prepared(Statement &statement, uint8_t index, const char *head, const char *tail) {
    if (!statement) {
        if (!hasIndex(index))
            throw StatusError{VANTREL_STATUS_INVALID_INDEX_NUMBER};
        std::unique_ptr<char, decltype(&sqlite3_free)> sql(
            sqlite3_mprintf(head, static_cast<unsigned>(index)), sqlite3_free);
        if (sql == nullptr)
            throw std::bad_alloc();
        statement = database_.prepare((std::string(sql.get()) + tail).c_str());
    }
    return statement;
}

FileState SqliteStorage::readState() {
    beginReading();
    if (writing_)
        return state_;
    loadState();
    return state_;
}

void SqliteStorage::loadState() {
    StatementUse state(prepared(
        readState_, "SELECT record_count, last_address, last_time, unique_counts FROM state WHERE id = 1"));
    if (!state->step())
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
    state_.recordCount = static_cast<uint64_t>(state->integer(0));
    state_.lastAddress = state->integer(1);
    require(state_.lastAddress >= 0 && state_.lastAddress < INT64_MAX, VANTREL_STATUS_INPUT_OUTPUT_ERROR);
    state_.lastTime = static_cast<uint64_t>(state->integer(2));
    state_.uniqueCounts = unpackCounts(state->bytes(3));
    state_.uniqueCounts.resize(definition_->indexes.size());
}

uint64_t SqliteStorage::unusedBytes() {
    beginReading();
    return static_cast<uint64_t>(database_.integer("PRAGMA freelist_count") *
                                 database_.integer("PRAGMA page_size"));
}

// Upkeep

void SqliteStorage::requireFileInPlace() const {
    require(database_.isInPlace(), VANTREL_STATUS_FILE_NOT_FOUND);
}

void SqliteStorage::requireInPlace() {
    requireFileInPlace();
    require(identityAt(logPath_) == log_ && identityAt(logIndexPath_) == logIndex_,
            VANTREL_STATUS_INPUT_OUTPUT_ERROR);
}

void SqliteStorage::sync() {
    if (unsynced_)
        database_.syncLog();
    unsynced_ = false;
}

// While work goes on, the change that fills the log brings it in. What cannot be brought in is tried again.
void SqliteStorage::checkpointIfIdle() {
    constexpr uint32_t longLog = 1000;
    WalIndex::Header header = walIndex_.read(database_.mainFile());
    bool isIdle = header == headerAtLastTurn_;
    headerAtLastTurn_ = header;
    if (isIdle && walIndex_.pagesOnlyInLog(database_.mainFile()) >= longLog)
        sqlite3_wal_checkpoint_v2(database_.get(), "main", SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
}

// What fails is told to those who open the file that it is about.
void SqliteStorage::settle() {
    try {
        if (CommitPointer::isBeside(path_)) {
            releaseSnapshot();
            settleForReading(path_);
        }
        keepsRedo_ = keepsRedo_ && !settleParticipants(path_);
    } catch (const StatusError &) {
    }
}

void SqliteStorage::verify() {
    beginReading();
    Statement check = database_.prepare("PRAGMA integrity_check(1)");
    bool isWhole = check.step() && check.bytes(0) == "ok";
    check.reset();
    if (!isWhole || !counts_.areTrue() ||
        database_.integer("SELECT count(*) FROM record") != static_cast<int64_t>(readState().recordCount))
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
}

void SqliteStorage::abandon() {
    database_.abandon();
    log_.reset();
    accelerated_ = true;
}

std::unique_ptr<Storage> openStorage(const std::string &path, const StorageOptions &options) {
    removeLeftCopy(path);
    return std::make_unique<SqliteStorage>(path, options);
}

}  // namespace vantrel::embedded
