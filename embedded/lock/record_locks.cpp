#include "embedded/lock/record_locks.h"

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr size_t recordLockLimit = 10000;
constexpr size_t singleOperationLimit = 1000;

}  // namespace

bool RecordLocks::take(int64_t address, HoldKind kind) {
    auto [hold, isNew] = holds_.try_emplace(address, Hold{kind, 0});
    if (isNew) {
        bool isTaken = false;
        try {
            isTaken = file_.tryLock(address, kind);
        } catch (...) {
            holds_.erase(hold);
            throw;
        }
        if (!isTaken) {
            holds_.erase(hold);
            return false;
        }
    }
    ++hold->second.count;
    return true;
}

bool RecordLocks::tryHold(int64_t address, HoldKind kind) {
    if (!file_.canLock())
        throw StatusError{VANTREL_STATUS_PERMISSION_ERROR};
    if (holds_.size() >= recordLockLimit && holds_.count(address) == 0)
        throw StatusError{VANTREL_STATUS_NO_SYSTEM_LOCKS_AVAILABLE};
    return take(address, kind);
}

void RecordLocks::release(int64_t address) noexcept {
    auto hold = holds_.find(address);
    if (hold == holds_.end() || --hold->second.count != 0)
        return;
    holds_.erase(hold);
    if (!holdsAll_)
        file_.unlock(address);
}

RecordLocks::ChangeLock RecordLocks::tryLockForChange(int64_t address, bool insideTransaction) {
    if (changed_.count(address) != 0)
        return ChangeLock::hadAlready;
    if (!file_.canLock())
        return file_.isLockedByAnother(address) ? ChangeLock::refused : ChangeLock::hadAlready;
    bool isOneTooMany =
        holds_.size() >= recordLockLimit || (!insideTransaction && changed_.size() >= singleOperationLimit);
    if (!holdsAll_ && isOneTooMany && holds_.count(address) == 0) {
        // Where it fails, those it did lock go with the others.
        holdsAll_ = true;
        file_.lockAllRecords();
    }
    if (holdsAll_) {
        // What another session had locked then may be free now.
        return file_.tryLock(address, HoldKind::change) ? ChangeLock::hadAlready : ChangeLock::refused;
    }
    if (!take(address, HoldKind::change))
        return ChangeLock::refused;
    try {
        changed_.insert(address);
    } catch (...) {
        release(address);
        throw;
    }
    return ChangeLock::taken;
}

void RecordLocks::releaseChanged(int64_t address) noexcept {
    if (changed_.erase(address) != 0)
        release(address);
}

void RecordLocks::releaseAllChanged() noexcept {
    for (int64_t address : changed_)
        release(address);
    changed_.clear();
    if (holdsAll_)
        shrinkToHolds();
}

void RecordLocks::shrinkToHolds() noexcept {
    holdsAll_ = false;
    int64_t unlockedTo = 1;
    for (auto &[address, hold] : holds_) {
        file_.unlockRecords(unlockedTo, address);
        file_.keepOnlyLock(address, hold.kind);
        unlockedTo = address + 1;
    }
    file_.unlockRecords(unlockedTo, endOfRecords);
}

}  // namespace vantrel::embedded
