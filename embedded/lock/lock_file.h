#ifndef VANTREL_EMBEDDED_LOCK_LOCK_FILE_H
#define VANTREL_EMBEDDED_LOCK_LOCK_FILE_H

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "embedded/file_identity.h"
#include "embedded/lock/lock_user.h"

namespace vantrel::embedded {

// What sessions exclude each other from: a record by its address, or one of these.
inline constexpr int64_t writeSide = 0;
inline constexpr int64_t endOfRecords = int64_t{1} << 48;
inline constexpr int64_t openedFile = endOfRecords;

// The side file of a record file, through which the sessions of all processes see each other: byte-range
// locks of one open file description say who has the file open, who writes and which records are locked, and
// go with their holder however it ends. It stands beside the file while anybody has that open.
class LockFile {
  public:
    enum class Sharing { shared, exclusive };

    // Announces a user of the file at the path: shared with others, or alone. A conflict is thrown as
    // status 85, a side file that may not be written as 94 where the user would be alone.
    LockFile(const std::string &path, Sharing sharing, LockUser &user);
    // Removes the side file where no other user is left.
    ~LockFile();
    LockFile(const LockFile &) = delete;
    LockFile &operator=(const LockFile &) = delete;

    LockUser &user() { return user_; }
    const FileIdentity &id() const { return id_; }

    // False where other users are left; status 94 is thrown where it cannot be seen to. Going back to shared
    // always succeeds.
    bool makeExclusive();
    void makeShared() noexcept;

    // Marks one open handle, until it is taken back.
    int64_t addHandle();
    void removeHandle(int64_t handle) noexcept;
    // The marks of all processes.
    uint32_t handleCount();

    // Of all users of the file one can mark it, until its lock file is closed.
    bool tryMarkContinuousOperation();
    bool isInContinuousOperation();

    // Locking needs write permission on the side file.
    bool canLock() const { return isWritable_; }
    // A record or the write side; false where another session holds it.
    bool tryLock(int64_t part, HoldKind kind);
    void unlock(int64_t part) noexcept;
    bool isLockedByAnother(int64_t part);

    // All records that no other session has locked.
    void lockAllRecords();
    // The end of that, from one address to before another.
    void unlockRecords(int64_t first, int64_t end) noexcept;
    // Shrinks what covered all records to the lock of one.
    void keepOnlyLock(int64_t address, HoldKind kind) noexcept;

    // The slot of the session that holds something, 0 where that has none; nothing where nobody else holds
    // it.
    struct Holder {
        uint16_t slot;
        HoldKind kind;
    };
    std::optional<Holder> holderOf(int64_t part);

    // Remembers for the session who refuses it what it asked for.
    void noteRefusal(int64_t part);

    // In a forked child, which must not keep the parent's locks alive.
    void closeInChild();

  private:
    struct Range {
        int64_t start, end;
    };

    void openSideFile(const std::string &path, Sharing sharing);
    bool isInPlace() const;
    void identify();
    bool enter(Sharing sharing);
    bool takeSlot();
    void describeUserFirst();
    void describeUser();
    std::optional<HolderDescription> descriptionOf(int64_t part, const Holder &holder);
    bool trySet(short type, int64_t start, int64_t length);
    void clear(int64_t start, int64_t length) noexcept;
    bool trySetOpened(short type, HoldKind kind);
    // One of the locks that others hold in a range, not always the first.
    std::optional<Range> findForeign(int64_t start, int64_t end);

    std::string path_;
    LockUser &user_;
    FileIdentity id_;
    int descriptor_ = -1;
    bool isWritable_ = false;
    uint16_t slot_ = 0;
    uint32_t describedRevision_ = 0;
    std::set<int64_t> handles_;
};

std::string lockFilePath(const std::string &path);

}  // namespace vantrel::embedded

#endif
