#ifndef VANTREL_EMBEDDED_OPERATION_READ_H
#define VANTREL_EMBEDDED_OPERATION_READ_H

#include <limits>

#include "embedded/operation/reply.h"
#include "embedded/operation/session.h"

namespace vantrel::embedded {

// Whether and how a read locks what it finds.
struct ReadLock {
    LockKind kind = LockKind::none;
    bool waits = false;
};
ReadLock readLockOf(const Session &session, const Request &request);

// One try to lock a record that was found: taken, taken but to be read again since somebody committed, or
// held by another session (waited for a moment, to be tried again; status 84 is thrown when that is over).
class LockAttempt {
  public:
    LockAttempt(Session &session, Position &position, ReadLock lock);
    // True where the record read is still what is stored under the lock.
    bool holds(int64_t address);
    // Gives the lock back where the record is not found any more.
    void release();

  private:
    void wait();

    Session &session_;
    Position &position_;
    ReadLock lock_;
    int64_t lockedHere_ = 0;
    int64_t waitedMicroseconds_ = 0;
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
        if (status != 0) {
            attempt.release();
            return status;
        }
        if (attempt.holds(entry->record.address))
            return status;
    }
}

// Copies bytes of a record, wherever in head and tail they lie.
void copyRecord(Storage &storage, const StoredRecord &record, uint64_t start, uint64_t length, void *target);

// Hands a found record to the caller: as many of its bytes as fit, or nothing for a key-only read.
int32_t deliverRecord(Request &request, Storage &storage, const StoredRecord &record);

// Makes a found record current, sets the place in the index where there is one, and hands key and record to
// the caller.
int32_t deliverFound(Position &position, Request &request, const IndexDefinition *index,
                     const StoredEntry &entry);

// Finds the entry that a search for an encoded key reads first: codes 5 and 8 to 11. Returns 4 or 9 where
// there is none.
int32_t searchKey(Storage &storage, uint16_t operation, uint8_t index, const Bytes &key, StoredEntry *entry);

// Behind every record, and behind every entry of a key.
constexpr int64_t behindAllAddresses = std::numeric_limits<int64_t>::max();

}  // namespace vantrel::embedded

#endif
