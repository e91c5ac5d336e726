#ifndef VANTREL_EMBEDDED_LOCK_LOCK_FILE_H
#define VANTREL_EMBEDDED_LOCK_LOCK_FILE_H

#include <cstdint>
#include <set>
#include <string>

namespace vantrel::embedded {

// The side file of a record file, through which the sessions of all processes see each other: byte-range
// locks of one open file description say who has the file open and which records are locked, and go with
// their holder however it ends. It stands beside the file while anybody has that open.
class LockFile {
  public:
    enum class Sharing { shared, exclusive };

    // Announces a user of the file at the path: shared with others, or alone. A conflict is thrown as
    // status 85.
    LockFile(const std::string &path, Sharing sharing);
    // Removes the side file where no other user is left.
    ~LockFile();
    LockFile(const LockFile &) = delete;
    LockFile &operator=(const LockFile &) = delete;

    // False where other users are left. Going back to shared always succeeds.
    bool makeExclusive();
    void makeShared();

    // Marks one open handle, until it is taken back.
    int64_t addHandle();
    void removeHandle(int64_t handle);
    // The marks of all processes.
    uint32_t handleCount();

    // Of all users of the file one can mark it, until its lock file is closed.
    bool tryMarkContinuousOperation();
    bool isInContinuousOperation();

    // Locking a record needs write permission on the side file, else status 94 is thrown.
    bool canLockRecords() const { return isWritable_; }
    // False where another session holds the lock.
    bool tryLockRecord(int64_t address);
    void unlockRecord(int64_t address);
    bool recordIsLockedByAnother(int64_t address);

    // In a forked child, which must not keep the parent's locks alive.
    void closeInChild();

  private:
    bool openSideFile();
    bool isStillInPlace() const;
    bool trySet(short type, int64_t start, int64_t length);
    // The first lock of another holder at or behind the start; false where there is none.
    bool findForeign(int64_t start, int64_t length, int64_t *lockStart, int64_t *lockLength);

    std::string path_;
    int descriptor_ = -1;
    bool isWritable_ = false;
    std::set<int64_t> handles_;
};

std::string lockFilePath(const std::string &path);

}  // namespace vantrel::embedded

#endif
