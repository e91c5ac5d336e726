#ifndef VANTREL_EMBEDDED_LOCK_RECORD_LOCKS_H
#define VANTREL_EMBEDDED_LOCK_RECORD_LOCKS_H

#include <map>
#include <set>

#include "embedded/lock/lock_file.h"

namespace vantrel::embedded {

// The record locks of one session in one file: those that were asked for, each as often as it is held, and
// those of changes that are not committed. Beyond a limit a lock that is asked for is refused, and a change
// locks all records that no other session has locked.
class RecordLocks {
  public:
    explicit RecordLocks(LockFile &file) : file_(file) {}

    // False where another session holds the record. Too many are thrown as status 130, a side file without
    // write permission as 94.
    bool tryHold(int64_t address, HoldKind kind);
    void release(int64_t address) noexcept;

    // The same for a change, once however often the record is changed. Those of a single operation lock all
    // records earlier, since locks one by one take longer and longer and all of them go at once soon.
    enum class ChangeLock { refused, taken, hadAlready };
    ChangeLock tryLockForChange(int64_t address, bool insideTransaction);
    void releaseChanged(int64_t address) noexcept;
    void releaseAllChanged() noexcept;

  private:
    struct Hold {
        HoldKind kind;
        uint32_t count;
    };

    bool take(int64_t address, HoldKind kind);
    void shrinkToHolds() noexcept;

    LockFile &file_;
    std::map<int64_t, Hold> holds_;
    std::set<int64_t> changed_;
    bool holdsAll_ = false;
};

}  // namespace vantrel::embedded

#endif
