#ifndef VANTREL_EMBEDDED_OPERATION_LOCK_ATTEMPT_H
#define VANTREL_EMBEDDED_OPERATION_LOCK_ATTEMPT_H

#include "embedded/lock/lock_wait.h"
#include "embedded/operation/session.h"

namespace vantrel::embedded {

// Whether and how a read locks what it finds.
struct ReadLock {
    LockKind kind = LockKind::none;
    bool waits = false;
};
// In a transaction that never waits no read does.
ReadLock readLockOf(const Session &session, const Request &request);

// A read's way to the lock on the record it finds. Until the lock is known to be on what is stored now, the
// position keeps the locks that it had.
class LockAttempt {
  public:
    LockAttempt(Session &session, Position &position, ReadLock lock);
    ~LockAttempt();
    LockAttempt(const LockAttempt &) = delete;
    LockAttempt &operator=(const LockAttempt &) = delete;

    // True where the position now has the lock and the record is what is stored; false where it is to be
    // found again: somebody has committed, or it was waited for a moment. Status 84 is thrown where another
    // session keeps it, 78 where it would do so for ever, and 93 where kinds of locks would mix.
    bool holds(int64_t address);

  private:
    void release();
    void wait(int64_t address);
    [[noreturn]] void refuse(int64_t address);

    Session &session_;
    Position &position_;
    ReadLock lock_;
    int64_t held_ = 0;
    std::optional<LockWait> wait_;
    std::optional<WaitClock::time_point> deadline_;
};

// Finds a record and takes the lock that the read asks for on it. `find` looks the record up and is called
// again whenever another session may have changed it meanwhile; it returns a status and fills the entry.
template <class Find>
int32_t findAndLock(Session &session, Position &position, const Request &request, StoredEntry *entry,
                    Find find) {
    session.touch(*position.file);
    ReadLock lock = readLockOf(session, request);
    if (lock.kind == LockKind::none)
        return find(entry);
    LockAttempt attempt(session, position, lock);
    for (;;) {
        int32_t status = find(entry);
        if (status != 0 || attempt.holds(entry->record.address))
            return status;
    }
}

}  // namespace vantrel::embedded

#endif
