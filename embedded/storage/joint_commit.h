#ifndef VANTREL_EMBEDDED_STORAGE_JOINT_COMMIT_H
#define VANTREL_EMBEDDED_STORAGE_JOINT_COMMIT_H

#include <vector>

#include "embedded/storage/commit_pointer.h"
#include "embedded/storage/sqlite_storage.h"

namespace vantrel::embedded {

// The commit of write transactions of several files. The first file coordinates: its own commit carries the
// changes of the others and decides about all of them. Beside each other file, a pointer to the first one
// stands from before the decision until the file durably has its part.
class JointCommit {
  public:
    explicit JointCommit(const std::vector<SqliteStorage *> &files);

    // After a failure nothing is committed.
    void run();

  private:
    struct Participant {
        SqliteStorage *file;
        CommitPointer pointer;
    };

    void placePointers();
    void keepChanges();
    void decide();
    void complete() noexcept;
    bool commitPart(SqliteStorage &file) noexcept;
    void dropChanges() noexcept;
    void removePointers() noexcept;

    SqliteStorage &coordinator_;
    std::vector<SqliteStorage *> others_;
    std::vector<Participant> participants_;  // the others, with their pointers
    Bytes commit_;
};

}  // namespace vantrel::embedded

#endif
