#include "embedded/operation/lock_attempt.h"

#include "vantrel.h"

namespace vantrel::embedded {

namespace {

HoldKind holdKindOf(ReadLock lock) {
    if (lock.kind == LockKind::single)
        return lock.waits ? HoldKind::singleWait : HoldKind::singleNoWait;
    return lock.waits ? HoldKind::multipleWait : HoldKind::multipleNoWait;
}

}  // namespace

ReadLock readLockOf(const Session &session, const Request &request) {
    LockBias bias = request.lock;
    if (bias == LockBias::none && session.insideTransaction() && !request.keyOnly)
        bias = session.transactionLock;
    bool mayWait = session.waiting() == Waiting::yes;
    switch (bias) {
        case LockBias::singleWait:
            return {LockKind::single, mayWait};
        case LockBias::singleNoWait:
            return {LockKind::single, false};
        case LockBias::multipleWait:
            return {LockKind::multiple, mayWait};
        case LockBias::multipleNoWait:
            return {LockKind::multiple, false};
        default:
            return {};
    }
}

LockAttempt::LockAttempt(Session &session, Position &position, ReadLock lock)
    : session_(session), position_(position), lock_(lock) {}

LockAttempt::~LockAttempt() {
    release();
}

bool LockAttempt::holds(int64_t address) {
    if (position_.lockKind != LockKind::none && position_.lockKind != lock_.kind)
        throw StatusError{VANTREL_STATUS_INCOMPATIBLE_LOCK_TYPE};
    OpenFile &file = *position_.file;
    if (wait_ && wait_->part() != address)
        wait_.reset();
    if (held_ != address) {
        release();
        if (!file.recordLocks().tryHold(address, holdKindOf(lock_))) {
            wait(address);
            return false;
        }
        held_ = address;
    }
    if (!file.storage().snapshotIsCurrent())
        return false;
    wait_.reset();
    file.addLock(position_, address, lock_.kind, session_.insideTransaction());
    held_ = 0;
    return true;
}

void LockAttempt::release() {
    if (held_ == 0)
        return;
    wait_.reset();
    position_.file->recordLocks().release(held_);
    held_ = 0;
}

// The first time nothing is waited for yet, since the record may have been released before the wait began.
void LockAttempt::wait(int64_t address) {
    OpenFile &file = *position_.file;
    if (!lock_.waits)
        refuse(address);
    if (!deadline_)
        deadline_ = waitDeadline();
    if (!wait_) {
        wait_.emplace(file.lockFile(), address, *deadline_);
        return;
    }
    if (!file.storage().isWriting())
        file.storage().releaseSnapshot();
    if (!wait_->pause())
        refuse(address);
}

void LockAttempt::refuse(int64_t address) {
    position_.file->lockFile().noteRefusal(address);
    throw StatusError{VANTREL_STATUS_RECORD_IN_USE};
}

}  // namespace vantrel::embedded
