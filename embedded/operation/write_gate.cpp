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

// Nothing may fail behind a commit.
void FileWriteGate::committed() {
    try {
        releaseRecords_();
    } catch (const StatusError &) {
        // They go with the end of the operation or of the session's transaction.
    }
}

void FileWriteGate::leave() {
    if (file_.canLock())
        file_.unlock(writeSide);
}

void FileWriteGate::refuse() {
    file_.noteRefusal(writeSide);
    throw StatusError{VANTREL_STATUS_FILE_IN_USE};
}

}  // namespace vantrel::embedded
