#ifndef VANTREL_EMBEDDED_OPERATION_CONTINUOUS_OPERATION_H
#define VANTREL_EMBEDDED_OPERATION_CONTINUOUS_OPERATION_H

#include <memory>
#include <string>

#include "embedded/lock/lock_file.h"
#include "embedded/storage/storage.h"

namespace vantrel::embedded {

// A file whose bytes on disk do not change although work on it goes on, for as long as this lives.
class ContinuousOperation {
  public:
    // Status 41 is thrown where the file is in continuous operation already.
    ContinuousOperation(const std::string &path, LockUser &user);

    // Keeps writers waiting; false where one has begun.
    bool tryHoldWriters() { return lockFile_.tryLock(writeSide, HoldKind::change); }
    void letWritersGoOn() { lockFile_.unlock(writeSide); }
    void noteRefusal() { lockFile_.noteRefusal(writeSide); }

    // From here on the bytes stay.
    void begin() { freeze_ = freezeStorage(path_); }
    // Brings the changes made meanwhile into the file.
    void end() { freeze_->end(); }

    // In a forked child: at once for what would act on the parent, later for the rest.
    void closeLocksInChild() { lockFile_.closeInChild(); }
    void abandon() { freeze_->abandon(); }

  private:
    std::string path_;
    LockFile lockFile_;
    std::unique_ptr<Freeze> freeze_;
};

}  // namespace vantrel::embedded

#endif
