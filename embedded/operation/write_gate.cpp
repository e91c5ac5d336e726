#include "embedded/operation/write_gate.h"

#include "embedded/lock/lock_wait.h"
#include "vantrel.h"

namespace vantrel::embedded {

void FileWriteGate::enter(Waiting waiting, const std::function<bool()> &begin) {
    if (tryEnter(begin))
        return;
    if (waiting == Waiting::no)
        refuse();
    LockWait wait(file_, writeSide, waitDeadline());
    while (!tryEnter(begin)) {
        if (!wait.pause())
            refuse();
    }
}

bool FileWriteGate::tryEnter(const std::function<bool()> &begin) {
    if (file_.canLock() && !file_.tryLock(writeSide, HoldKind::change))
        return false;
    try {
        if (begin())
            return true;
    } catch (...) {
        leave();
        throw;
    }
    leave();
    return false;
}

void FileWriteGate::committed() noexcept {
    releaseRecords_();
}

void FileWriteGate::leave() noexcept {
    if (file_.canLock())
        file_.unlock(writeSide);
}

void FileWriteGate::refuse() {
    file_.noteRefusal(writeSide);
    throw StatusError{VANTREL_STATUS_FILE_IN_USE};
}

}  // namespace vantrel::embedded
