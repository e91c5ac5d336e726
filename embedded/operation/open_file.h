#ifndef VANTREL_EMBEDDED_OPERATION_OPEN_FILE_H
#define VANTREL_EMBEDDED_OPERATION_OPEN_FILE_H

#include <memory>
#include <set>
#include <string>

#include "embedded/lock/record_locks.h"
#include "embedded/operation/position.h"
#include "embedded/operation/write_gate.h"
#include "embedded/storage/storage.h"

namespace vantrel::embedded {

// A file as one session has it open: one storage connection and one side file for all positions on it.
class OpenFile {
  public:
    OpenFile(std::string path, LockFile::Sharing sharing, StorageOptions options, LockUser &user);

    const std::string &path() const { return path_; }
    Storage &storage() { return *storage_; }
    LockFile &lockFile() { return lockFile_; }
    RecordLocks &recordLocks() { return recordLocks_; }
    bool isReadOnly() const { return isReadOnly_; }
    uint32_t openTime() const { return openTime_; }

    std::set<Position *> &positions() { return positions_; }
    const std::set<Position *> &positions() const { return positions_; }

    // The index of a number, else status 6 is thrown.
    std::shared_ptr<const IndexDefinition> index(int32_t keyNumber);

    // Gives a position a record lock that was taken for it, in the place of the one before where it is
    // single.
    void addLock(Position &position, int64_t address, LockKind kind, bool insideTransaction);
    void unlock(Position &position, int64_t address);
    void unlockAll(Position &position);
    void unlockTransaction();
    // The same where a single change may have written without one.
    void unlockWritten();

    // The version of a record that the transaction changes, none where it inserts it.
    void noteVersionBefore(int64_t address, std::optional<uint64_t> before, bool insideTransaction);
    // This session's own changes are no conflict for its positions that had read the version before.
    void recordChanged(int64_t address, uint64_t before, uint64_t after);
    void recordDeleted(Position &deleter, int64_t address, uint64_t before, bool insideTransaction);
    // The transaction's changes were taken back: what was current before them is so again, and what they
    // inserted is not.
    void changesTakenBack();
    void changesKept();

    bool isOpenExclusively() const;
    // Whether every position does without syncing commits.
    bool allAccelerated() const;

    // Rewrites the content: encrypted for an owner, or plain. Anybody else who has the file open is thrown as
    // status 85. Positions go on, unless the file cannot be opened again afterwards: then it is lost.
    void encrypt(const NewOwner *owner);
    bool isLost() const { return storage_ == nullptr; }

    // Called regularly between calls.
    void housekeep();
    // While the session waits in a call that reads nothing here: what others may be waiting for.
    void housekeepInWait();
    // In a forked child: at once for what would act on the parent, later for the rest.
    void closeLocksInChild() { lockFile_.closeInChild(); }
    void abandon() { storage_->abandon(); }

  private:
    std::string path_;
    bool isReadOnly_;
    LockFile lockFile_;
    RecordLocks recordLocks_;
    FileWriteGate writeGate_;
    std::unique_ptr<Storage> storage_;
    uint32_t openTime_;
    std::set<Position *> positions_;
    // Of the records that the transaction changed; none for those that it inserted.
    std::map<int64_t, std::optional<uint64_t>> versionsBefore_;
};

}  // namespace vantrel::embedded

#endif
