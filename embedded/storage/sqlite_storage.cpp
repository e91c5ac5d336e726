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

constexpr int waitMilliseconds = 30000;
constexpr int cacheBudgetKiB = sizeof(void *) == 8 ? 65536 : 16384;
constexpr int smallestCacheKiB = 1024;
constexpr uint64_t longestRecord = INT32_MAX;

// The connections of this process, which share the cache budget.
std::atomic<int> connections{0};

// In the order of the columns of every read.
enum Column : int { addressColumn, createTimeColumn, updateTimeColumn, lengthColumn, dataColumn, keyColumn };

// A record that does not fit the file's definition, or itself, is thrown as an input/output error.
void takeRecord(const Statement &statement, size_t fixedLength, StoredRecord *record) {
    record->address = statement.integer(addressColumn);
    record->createTime = static_cast<uint64_t>(statement.integer(createTimeColumn));
    record->updateTime = static_cast<uint64_t>(statement.integer(updateTimeColumn));
    record->length = static_cast<uint64_t>(statement.integer(lengthColumn));
    record->data = statement.bytes(dataColumn);
    require(record->data.size() >= fixedLength && record->length <= longestRecord &&
                record->data.size() == std::min(record->length, headSize),
            VANTREL_STATUS_INPUT_OUTPUT_ERROR);
}

constexpr const char *entryColumns =
    "SELECT r.address, r.created, r.updated, r.length, r.data, e.key FROM index_%u e CROSS JOIN record r "
    "ON r.address = e.address ";
std::string logPath(const std::string &path) {
    return path + "-wal";
}

std::string logIndexPath(const std::string &path) {
    return path + "-shm";
}

constexpr const char *recordColumns = "SELECT address, created, updated, length, data FROM record ";

}  // namespace

void SqliteStorage::Scan::reset() {
    if (onRow)
        statement.reset();
    onRow = false;
}

SqliteStorage::SqliteStorage(const std::string &path, const StorageOptions &options)
    : path_(path),
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
    begin_ = database_.prepare("BEGIN");
    beginImmediate_ = database_.prepare("BEGIN IMMEDIATE");
    commit_ = database_.prepare("COMMIT");
    rollback_ = database_.prepare("ROLLBACK");
    readGeneration_ = database_.prepare("SELECT generation FROM definition WHERE id = 1");
    reload();
    log_ = identityAt(logPath(path_));
    logIndex_ = identityAt(logIndexPath(path_));
    setAccelerated(options.accelerated);
    ++connections;
}

// The log of a file that was replaced must not be taken for the other one's. One that is only gone may come
// back.
SqliteStorage::~SqliteStorage() {
    --connections;
    bool isReplaced = !database_.isInPlace() && identityAt(path_);
    if (!isReplaced || !log_ || identityAt(logPath(path_)) != log_)
        return;
    unlink(logPath(path_).c_str());
    unlink(logIndexPath(path_).c_str());
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
    begin_.run();
    try {
        reloadIfRedefined();
        shareCache();
    } catch (...) {
        endReading();
        throw;
    }
    reading_ = true;
    logIsOpen_ = true;
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
    indexes_.clear();
    definition_ = std::make_shared<FileDefinition>(loadDefinition(database_));
    StatementUse generation(readGeneration_);
    generation_ = generation->step() ? generation->integer(0) : -1;
    counts_.load();
}

void SqliteStorage::shareCache() {
    int shares = connections;
    if (shares == cacheShares_ || shares == 0)
        return;
    cacheShares_ = shares;
    int size = std::max(cacheBudgetKiB / shares, smallestCacheKiB);
    database_.execute("PRAGMA cache_size = -" + std::to_string(size));
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

bool SqliteStorage::advance(Scan &scan, StoredRecord *found) {
    scan.onRow = false;
    if (!scan.statement.step()) {
        scan.statement.reset();
        return false;
    }
    scan.onRow = true;
    takeRecord(scan.statement, definition_->recordLength, found);
    scan.address = found->address;
    return true;
}

bool SqliteStorage::findEntry(uint8_t index, Direction direction, ByteView key, int64_t address,
                              StoredEntry *found) {
    beginReading();
    IndexStatements &statements = statementsOf(index);
    bool isForward = direction == Direction::forward;
    Scan &scan = isForward ? statements.forward : statements.backward;
    if (!scan.standsAt(key, address)) {
        prepared(scan.statement, index, entryColumns,
                 isForward ? "WHERE (e.key, e.address) > (?1, ?2) ORDER BY e.key, e.address"
                           : "WHERE (e.key, e.address) < (?1, ?2) ORDER BY e.key DESC, e.address DESC");
        scan.statement.reset();
        scan.boundKey.assign(key);
        scan.statement.bind(1, ByteView(scan.boundKey)).bind(2, address);
    }
    if (!advance(scan, &found->record))
        return false;
    found->key = scan.statement.bytes(keyColumn);
    scan.key.assign(found->key);
    return true;
}

bool SqliteStorage::findLastEntry(uint8_t index, StoredEntry *found) {
    beginReading();
    Statement &last = prepared(statementsOf(index).last, index, entryColumns,
                               "ORDER BY e.key DESC, e.address DESC LIMIT 1");
    last.reset();
    if (!last.step())
        return false;
    takeRecord(last, definition_->recordLength, &found->record);
    found->key = last.bytes(keyColumn);
    return true;
}

int64_t SqliteStorage::firstAddress(uint8_t index, ByteView key) {
    beginReading();
    StatementUse first(prepared(statementsOf(index).first, index, "SELECT address FROM index_%u ",
                                "WHERE key = ?1 ORDER BY address LIMIT 1"));
    first->bind(1, key);
    return first->step() ? first->integer(0) : 0;
}

bool SqliteStorage::readRecord(int64_t address, StoredRecord *found) {
    beginReading();
    return takeRecordAt(address, found);
}

bool SqliteStorage::takeRecordAt(int64_t address, StoredRecord *found) {
    Statement &read = prepared(readRecord_, recordColumns, "WHERE address = ?1");
    read.reset();
    if (!read.bind(1, address).step())
        return false;
    takeRecord(read, definition_->recordLength, found);
    return true;
}

bool SqliteStorage::findRecord(Direction direction, int64_t address, StoredRecord *found) {
    beginReading();
    bool isForward = direction == Direction::forward;
    Scan &scan = isForward ? recordsForward_ : recordsBackward_;
    if (!scan.standsAt({}, address)) {
        prepared(
            scan.statement, recordColumns,
            isForward ? "WHERE address > ?1 ORDER BY address" : "WHERE address < ?1 ORDER BY address DESC");
        scan.statement.reset();
        scan.statement.bind(1, address);
    }
    return advance(scan, found);
}

void SqliteStorage::readTail(int64_t address, uint64_t offset, uint64_t length, char *target) {
    beginReading();
    tail_.read(address, offset, length, target);
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

// Writing

// The log of a transaction's first file is synced inside the commit, so that a commit whose sync fails is
// none.
void SqliteStorage::begin(Waiting waiting, TransactionPart part) {
    releaseSnapshot();
    if (part != TransactionPart::none)
        requireInPlace();
    if (!accelerated_)
        setSynchronous(part == TransactionPart::first ? Synchronous::full : Synchronous::normal);
    takeWriteSide(waiting);
    try {
        while (CommitPointer::isBeside(path_)) {
            rollback();
            settleForWriting(path_, waiting);
            takeWriteSide(waiting);
        }
        reloadIfRedefined();
        loadState();
        if (part == TransactionPart::further)
            recorder_.emplace(database_);
    } catch (...) {
        rollback();
        throw;
    }
    committedState_ = state_;
    changesBefore_ = sqlite3_total_changes64(database_.get());
}

void SqliteStorage::takeWriteSide(Waiting waiting) {
    writeGate_->enter(waiting, [this] { return tryBeginWriting(); });
    writing_ = true;
}

void SqliteStorage::writeState() {
    finishCounts();
    resetScans();
    if (state_ == committedState_)
        return;
    StatementUse write(prepared(writeState_,
                                "UPDATE state SET record_count = ?1, last_address = ?2, last_time = ?3, "
                                "unique_counts = ?4 WHERE id = 1"));
    Bytes counts = packCounts(state_.uniqueCounts);
    write->bind(1, state_.recordCount).bind(2, state_.lastAddress).bind(3, state_.lastTime);
    write->bind(4, ByteView(counts)).run();
    committedState_ = state_;
}

// Without the library's own waiting, which nothing could end.
bool SqliteStorage::tryBeginWriting() {
    bool hasBegun = true;
    sqlite3_busy_timeout(database_.get(), 0);
    try {
        beginImmediate_.run();
    } catch (const StatusError &error) {
        hasBegun = false;
        if (error.status != VANTREL_STATUS_FILE_IN_USE) {
            sqlite3_busy_timeout(database_.get(), waitMilliseconds);
            throw;
        }
    }
    sqlite3_busy_timeout(database_.get(), waitMilliseconds);
    return hasBegun;
}

void SqliteStorage::endWriting() {
    if (writing_)
        writeGate_->leave();
    writing_ = false;
}

void SqliteStorage::commit(Durability durability) {
    try {
        requireInPlace();
        writeState();
        commit_.run();
    } catch (...) {
        rollback();
        throw;
    }
    endWriting();
    isRedefined_ = false;
    counts_.committed();
    recorder_.reset();
    unsynced_ = synchronous_ != Synchronous::full;
    if (durability == Durability::synced && !accelerated_)
        sync();
}

// SQLite may have rolled back on its own after a failure.
void SqliteStorage::rollback() {
    resetScans();
    if (sqlite3_get_autocommit(database_.get()) == 0)
        rollback_.run();
    endWriting();
    recorder_.reset();
    counts_.rolledBack();
    if (isRedefined_ || counts_.isReshaped())
        generation_ = -1;
    isRedefined_ = false;
}

void SqliteStorage::insertRecord(const StoredRecord &record) {
    resetScans();
    prepared(insertRecord_,
             "INSERT INTO record(address, created, updated, length, data) VALUES(?1, ?2, ?3, ?4, ?5)")
        .bind(1, record.address)
        .bind(2, record.createTime)
        .bind(3, record.updateTime)
        .bind(4, record.length)
        .bind(5, record.data)
        .run();
    counts_.inserted(physicalOrder, {}, record.address);
}

void SqliteStorage::updateRecord(const StoredRecord &record) {
    resetScans();
    prepared(updateRecord_, "UPDATE record SET updated = ?2, length = ?3, data = ?4 WHERE address = ?1")
        .bind(1, record.address)
        .bind(2, record.updateTime)
        .bind(3, record.length)
        .bind(4, record.data)
        .run();
}

void SqliteStorage::replaceInTail(int64_t address, uint64_t offset, uint64_t removed, ByteView inserted) {
    resetScans();
    tail_.replace(address, offset, removed, inserted);
}

void SqliteStorage::deleteRecord(int64_t address) {
    resetScans();
    prepared(deleteRecord_, "DELETE FROM record WHERE address = ?1").bind(1, address).run();
    counts_.deleted(physicalOrder, {}, address);
}

void SqliteStorage::insertEntry(uint8_t index, ByteView key, int64_t address) {
    resetScans();
    prepared(statementsOf(index).insert, index, "INSERT INTO index_%u", "(key, address) VALUES(?1, ?2)")
        .bind(1, key)
        .bind(2, address)
        .run();
    counts_.inserted(index, key, address);
}

void SqliteStorage::deleteEntry(uint8_t index, ByteView key, int64_t address) {
    resetScans();
    prepared(statementsOf(index).erase, index, "DELETE FROM index_%u ", "WHERE key = ?1 AND address = ?2")
        .bind(1, key)
        .bind(2, address)
        .run();
    counts_.deleted(index, key, address);
}

void SqliteStorage::createIndexTable(uint8_t index) {
    resetScans();
    indexes_.clear();
    createIndexTableIn(database_, index);
}

void SqliteStorage::dropIndexTable(uint8_t index) {
    resetScans();
    indexes_.clear();
    counts_.drop(index);
    database_.execute("DROP TABLE " + indexTableName(index));
}

void SqliteStorage::writeDefinition(const FileDefinition &definition) {
    resetScans();
    isRedefined_ = true;
    saveDefinition(database_, definition);
    reload();
}

// Upkeep

void SqliteStorage::requireFileInPlace() const {
    require(database_.isInPlace(), VANTREL_STATUS_FILE_NOT_FOUND);
}

void SqliteStorage::requireInPlace() {
    requireFileInPlace();
    require(identityAt(logPath(path_)) == log_ && identityAt(logIndexPath(path_)) == logIndex_,
            VANTREL_STATUS_INPUT_OUTPUT_ERROR);
}

void SqliteStorage::sync() {
    if (unsynced_)
        database_.syncLog();
    unsynced_ = false;
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
