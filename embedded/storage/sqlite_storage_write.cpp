#include <utility>

#include "embedded/storage/commit_pointer.h"
#include "embedded/storage/pending_commit.h"
#include "embedded/storage/sqlite_schema.h"
#include "embedded/storage/sqlite_storage.h"
#include "vantrel.h"

namespace vantrel::embedded {

// The log is synced inside the commit of a transaction, so that a commit whose sync fails is none. Which file
// decides about the others shows only at the end.
void SqliteStorage::begin(Waiting waiting, TransactionPart part) {
    if (writing_)
        rollback();
    releaseSnapshot();
    if (part != TransactionPart::none)
        requireInPlace();
    if (!accelerated_)
        setSynchronous(part == TransactionPart::none ? Synchronous::normal : Synchronous::full);
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
        committedState_ = state_;
    } catch (...) {
        rollback();
        throw;
    }
    changesBefore_ = sqlite3_total_changes64(database_.get());
}

void SqliteStorage::takeWriteSide(Waiting waiting) {
    prepareTransactions();
    writeGate_->enter(waiting, [this] { return tryBeginWriting(); });
    writing_ = true;
}

void SqliteStorage::requireTransaction() const {
    require(!hasLostChanges(), VANTREL_STATUS_INPUT_OUTPUT_ERROR);
}

void SqliteStorage::prepareToChange() {
    requireTransaction();
    resetScans();
}

void SqliteStorage::writeState() {
    requireTransaction();
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
    struct NoTimeout {
        sqlite3 *database;
        explicit NoTimeout(sqlite3 *limited) : database(limited) { sqlite3_busy_timeout(database, 0); }
        ~NoTimeout() { sqlite3_busy_timeout(database, waitMilliseconds); }
    } noTimeout(database_.get());
    try {
        beginImmediate_.run();
    } catch (const StatusError &error) {
        if (error.status != VANTREL_STATUS_FILE_IN_USE)
            throw;
        return false;
    }
    return true;
}

void SqliteStorage::endWriting() noexcept {
    if (std::exchange(writing_, false))
        writeGate_->leave();
}

void SqliteStorage::commit(Durability durability) {
    commitChanges();
    writeGate_->committed();
    endCommit(durability);
}

void SqliteStorage::commitChanges() {
    try {
        requireInPlace();
        writeState();
        commit_.run();
    } catch (...) {
        rollback();
        throw;
    }
}

void SqliteStorage::endCommit(Durability durability) {
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
    transactionsArePrepared_ = false;
    endWriting();
    recorder_.reset();
    counts_.rolledBack();
    if (isRedefined_ || counts_.isReshaped())
        generation_ = -1;
    isRedefined_ = false;
}

void SqliteStorage::insertRecord(const StoredRecord &record) {
    prepareToChange();
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
    prepareToChange();
    prepared(updateRecord_, "UPDATE record SET updated = ?2, length = ?3, data = ?4 WHERE address = ?1")
        .bind(1, record.address)
        .bind(2, record.updateTime)
        .bind(3, record.length)
        .bind(4, record.data)
        .run();
}

void SqliteStorage::replaceInTail(int64_t address, uint64_t offset, uint64_t removed, ByteView inserted) {
    prepareToChange();
    tail_.replace(address, offset, removed, inserted);
}

void SqliteStorage::deleteRecord(int64_t address) {
    prepareToChange();
    prepared(deleteRecord_, "DELETE FROM record WHERE address = ?1").bind(1, address).run();
    counts_.deleted(physicalOrder, {}, address);
}

void SqliteStorage::insertEntry(uint8_t index, ByteView key, int64_t address) {
    prepareToChange();
    prepared(statementsOf(index).insert, index, "INSERT INTO index_%u", "(key, address) VALUES(?1, ?2)")
        .bind(1, key)
        .bind(2, address)
        .run();
    counts_.inserted(index, key, address);
}

void SqliteStorage::deleteEntry(uint8_t index, ByteView key, int64_t address) {
    prepareToChange();
    prepared(statementsOf(index).erase, index, "DELETE FROM index_%u ", "WHERE key = ?1 AND address = ?2")
        .bind(1, key)
        .bind(2, address)
        .run();
    counts_.deleted(index, key, address);
}

void SqliteStorage::createIndexTable(uint8_t index) {
    prepareToChange();
    indexes_.clear();
    createIndexTableIn(database_, index);
}

void SqliteStorage::dropIndexTable(uint8_t index) {
    prepareToChange();
    indexes_.clear();
    counts_.drop(index);
    database_.execute("DROP TABLE " + indexTableName(index));
}

void SqliteStorage::writeDefinition(const FileDefinition &definition) {
    prepareToChange();
    isRedefined_ = true;
    saveDefinition(database_, definition);
    reload();
}

}  // namespace vantrel::embedded
