#ifndef VANTREL_EMBEDDED_STORAGE_SQLITE_STORAGE_H
#define VANTREL_EMBEDDED_STORAGE_SQLITE_STORAGE_H

#include <map>
#include <optional>

#include "embedded/file_identity.h"
#include "embedded/storage/commit_pointer.h"
#include "embedded/storage/sqlite_counts.h"
#include "embedded/storage/sqlite_database.h"
#include "embedded/storage/sqlite_redo.h"
#include "embedded/storage/sqlite_tail.h"
#include "embedded/storage/storage.h"
#include "embedded/storage/wal_index.h"

namespace vantrel::embedded {

// One connection to one SQLite database in write-ahead mode. Its read transaction is held between calls and
// renewed when somebody has committed; scans keep their statements open as long as they are followed.
class SqliteStorage final : public Storage {
  public:
    SqliteStorage(const std::string &path, const StorageOptions &options);
    ~SqliteStorage() override;

    std::shared_ptr<const FileDefinition> definition() override;
    bool findEntry(uint8_t index, Direction direction, ByteView key, int64_t address,
                   StoredEntry *found) override;
    bool findLastEntry(uint8_t index, StoredEntry *found) override;
    int64_t firstAddress(uint8_t index, ByteView key) override;
    bool readRecord(int64_t address, StoredRecord *found) override;
    bool findRecord(Direction direction, int64_t address, StoredRecord *found) override;
    std::optional<Rank> rankOf(uint8_t order, ByteView key, int64_t address) override;
    bool findAtRank(uint8_t order, const RankChoice &choice, StoredEntry *found) override;
    void readTail(int64_t address, uint64_t offset, uint64_t length, char *target) override;
    FileState readState() override;
    uint64_t unusedBytes() override;

    void begin(Waiting waiting, TransactionPart part) override;
    void commit(Durability durability) override;
    void rollback() override;
    bool isWriting() const override { return writing_; }
    bool hasLostChanges() const override { return writing_ && sqlite3_get_autocommit(database_.get()) != 0; }

    FileState &state() override { return state_; }
    void insertRecord(const StoredRecord &record) override;
    void updateRecord(const StoredRecord &record) override;
    void replaceInTail(int64_t address, uint64_t offset, uint64_t removed, ByteView inserted) override;
    void deleteRecord(int64_t address) override;
    void insertEntry(uint8_t index, ByteView key, int64_t address) override;
    void deleteEntry(uint8_t index, ByteView key, int64_t address) override;
    void createIndexTable(uint8_t index) override;
    void dropIndexTable(uint8_t index) override;
    void writeDefinition(const FileDefinition &definition) override;

    bool snapshotIsCurrent() override;
    void releaseSnapshot() override;
    void sync() override;
    void checkpointIfIdle() override;
    bool hasUnsyncedCommits() const override { return unsynced_; }
    void settle() override;
    bool isPending() const override { return CommitPointer::isBeside(path_); }
    void setAccelerated(bool accelerated) override;
    void verify() override;
    std::optional<OwnerMode> owner() override;
    Access authenticate(ByteView name) override;
    void setOwner(const NewOwner &owner) override;
    void clearOwner() override;
    void writeCopy(const std::string &path, const NewOwner *owner) override;
    void abandon() override;

    // For a commit over several files.
    const std::string &path() const { return path_; }
    Database &database() { return database_; }
    bool hasChanges() const { return sqlite3_total_changes64(database_.get()) != changesBefore_; }
    // What is changed otherwise would be committed by itself.
    void requireTransaction() const;
    // All that the write transaction changes is then in the tables.
    void writeState();
    // A file that was removed or replaced behind the engine's back is thrown as status 12, one whose log was
    // as an input/output error.
    void requireInPlace();
    RedoRecorder &recorder() { return *recorder_; }
    // The file keeps changes for others that settle is to drop.
    void setKeepsRedo(bool keeps) { keepsRedo_ = keeps; }

  private:
    static constexpr int waitMilliseconds = 30000;

    // A statement that walks in one direction, and the place of the row it stands on.
    struct Scan {
        Statement statement;
        bool onRow = false;
        Bytes boundKey;
        Bytes key;
        int64_t address = 0;

        bool standsAt(ByteView otherKey, int64_t otherAddress) const {
            return onRow && address == otherAddress && key == otherKey;
        }
        void reset();
    };
    struct IndexStatements {
        Scan forward, backward;
        Statement last, first, insert, erase;
    };

    enum class Synchronous { off, normal, full };

    void setSynchronous(Synchronous level);
    void takeWriteSide(Waiting waiting);
    void beginReading();
    void takeSnapshot();
    void prepareTransactions();
    void endReading();
    void reloadIfRedefined();
    void reload();
    void loadState();
    void requireFileInPlace() const;
    bool tryBeginWriting();
    void endWriting() noexcept;
    void commitChanges();
    void endCommit(Durability durability);
    void resetScans();
    void prepareToChange();
    void endTransaction(const char *how);
    void shareCache();
    IndexStatements &statementsOf(uint8_t index);
    Statement &prepared(Statement &statement, const char *head, const char *tail = "");
    Statement &prepared(Statement &statement, uint8_t index, const char *head, const char *tail);
    bool advance(Scan &scan, StoredRecord *found);
    bool takeRecordAt(int64_t address, StoredRecord *found);
    bool hasIndex(uint8_t number) const;
    void beginCounting(uint8_t order);
    void buildCounts(uint8_t order);
    void finishCounts();

    std::string path_, logPath_, logIndexPath_;
    WriteGate *writeGate_;
    Database database_;
    std::optional<RedoRecorder> recorder_;  // of a transaction's further files
    WalIndex walIndex_;
    WalIndex::Header snapshotHeader_{};
    bool transactionsArePrepared_ = false;
    bool logIsOpen_ = false;
    bool reading_ = false;
    bool writing_ = false;
    bool unsynced_ = false;
    bool accelerated_ = false;
    bool keepsRedo_ = false;
    WalIndex::Header headerAtLastTurn_{};
    std::optional<FileIdentity> log_, logIndex_;                    // as this connection opened them
    std::optional<Synchronous> synchronous_ = Synchronous::normal;  // none where it is not known
    int64_t changesBefore_ = 0;                                     // the write transaction
    bool scansAreOpen_ = false;
    bool isRedefined_ = false;  // by the write transaction
    int cacheShares_ = 0;

    std::shared_ptr<const FileDefinition> definition_;
    int64_t generation_ = -1;
    FileState state_;
    FileState committedState_;

    SqliteTail tail_{database_};
    SqliteCounts counts_{database_};
    OrderPlace placeAtRank_;
    std::map<uint8_t, IndexStatements> indexes_;
    Scan recordsForward_, recordsBackward_;
    Statement readGeneration_, readState_, writeState_, freePages_;
    Statement readRecord_, insertRecord_, updateRecord_, deleteRecord_;
    Statement begin_, beginImmediate_, commit_, rollback_;
};

}  // namespace vantrel::embedded

#endif
