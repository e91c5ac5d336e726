#ifndef VANTREL_EMBEDDED_OPERATION_SESSION_H
#define VANTREL_EMBEDDED_OPERATION_SESSION_H

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "embedded/operation/open_file.h"
#include "embedded/operation/position.h"

namespace vantrel::embedded {

enum class TransactionKind : uint8_t { none, exclusive, concurrent, concurrentNoWait };

struct Login {
    bool isActive = false;
    std::string user;
    std::string database;
};

class ContinuousOperation;

// Everything that one client identifier block holds.
class Session {
  public:
    explicit Session(const ClientIdentifier &identifier);
    ~Session();

    // Serialises the calls of the session; housekeeping takes it too.
    std::mutex mutex;
    std::atomic<bool> housekeepingIsDue{false};
    bool isLockedForFork = false;

    std::string directory;  // empty: the process's own
    Login login;

    // The session as others see it.
    LockUser lockUser;

    // By path.
    using ContinuousOperations = std::map<std::string, std::unique_ptr<ContinuousOperation>>;
    ContinuousOperations continuousOperations;

    TransactionKind transaction = TransactionKind::none;
    LockBias transactionLock = LockBias::none;
    // A change failed halfway: the transaction can only be taken back.
    bool transactionIsDoomed = false;

    // The position a caller's block stands for, else status 3 is thrown.
    Position &position(const void *block);
    // Opens a position on a file already or newly opened, and fills the block.
    Position &addPosition(OpenFile &file, void *block);
    void removePosition(Position &position);

    // Null where the session has no file of that path open.
    OpenFile *findFile(const std::string &path);
    OpenFile &addFile(std::unique_ptr<OpenFile> file);
    void removeFileIfUnused(OpenFile &file);
    // Ends all positions on a file that could not be kept open.
    void dropLostFile(OpenFile &file);

    bool insideTransaction() const { return transaction != TransactionKind::none; }
    Waiting waiting() const {
        return transaction == TransactionKind::concurrentNoWait ? Waiting::no : Waiting::yes;
    }
    // Takes the write side of a file, for the transaction where there is one.
    void takeForChange(OpenFile &file);
    // After a call: what a failure took away cannot be changed further.
    void noticeLostChanges();
    // Called before a file is read: an exclusive transaction takes it for itself.
    void touch(OpenFile &file);
    // Ends the transaction with all its changes, or with none of them.
    void commitTransaction();
    void rollbackTransaction();

    // Ends everything that the session holds.
    void reset();
    // Whether the session is as good as a new one.
    bool holdsNothing() const;

    void housekeep() noexcept;
    // The part of it that a wait of the session for a lock does not keep from being done.
    void housekeepInWait() noexcept;
    const std::map<std::string, std::unique_ptr<OpenFile>> &files() const { return files_; }
    // The files are no longer this process's.
    void abandon();

  private:
    void beginPart(OpenFile &file);
    void endTransaction();
    void removeUnusedFiles() noexcept;
    void forEachFile(void (OpenFile::*work)()) noexcept;

    std::map<std::string, std::unique_ptr<OpenFile>> files_;
    std::vector<OpenFile *> takenFiles_;                // by the transaction, in the order of taking
    std::vector<std::unique_ptr<Position>> positions_;  // by slot, null where free
};

// The changes of one operation: a transaction of its own, or part of the session's. Leaving the scope
// without a commit takes them back, or dooms the session's transaction if they had begun.
class ChangeScope {
  public:
    ChangeScope(Session &session, OpenFile &file);
    ~ChangeScope();
    ChangeScope(const ChangeScope &) = delete;
    ChangeScope &operator=(const ChangeScope &) = delete;

    // From here on a failure leaves something half done.
    void beginChanges() { hasBegun_ = true; }
    // Of a record that changes, or none where it is new: before the commit, since nothing may fail behind it.
    void noteVersionBefore(int64_t address, std::optional<uint64_t> before) {
        file_.noteVersionBefore(address, before, session_.insideTransaction());
    }
    void commit();

    // Locks a record that is to change, until the change has ended or, inside the session's transaction, that
    // has. False where another session holds it.
    bool tryLock(int64_t address);

  private:
    Session &session_;
    OpenFile &file_;
    Storage &storage_;
    int64_t lastLocked_ = 0;
    bool hasBegun_ = false;
    bool isDone_ = false;
};

}  // namespace vantrel::embedded

#endif
