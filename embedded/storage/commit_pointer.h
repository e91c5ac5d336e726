#ifndef VANTREL_EMBEDDED_STORAGE_COMMIT_POINTER_H
#define VANTREL_EMBEDDED_STORAGE_COMMIT_POINTER_H

#include <optional>
#include <string>
#include <vector>

#include "embedded/key/definition.h"
#include "embedded/storage/system_file.h"

namespace vantrel::embedded {

// Of a commit, and of a file: random, and so never given twice.
inline constexpr size_t identifierSize = 16;

// A commit over several files, and the file whose own commit decides about it.
struct CommitReference {
    Bytes commit;
    Bytes coordinator;
    std::string coordinatorPath;
};

// A small file beside a record file, from before a commit over several files is decided until the record
// file durably has its part of it. It is locked as long as its writer, or who finishes the writer's work,
// lives.
class CommitPointer {
  public:
    enum class Holder { self, another, gone };

    static std::string pathBeside(const std::string &path);
    static bool isBeside(const std::string &path);

    // Of a finished pointer and one that was not, which are of no more use where the file goes or was made
    // anew.
    static std::vector<std::string> pathsLeftBeside(const std::string &path);

    // Makes one that is locked and synced; its name is durable when the directory is.
    static CommitPointer place(const std::string &path, const CommitReference &reference);
    // The one that is there.
    static std::optional<CommitPointer> find(const std::string &path);

    // Gone means that another one, or none, is in its place.
    Holder tryLock();
    CommitReference read() const;
    // Only while it is locked.
    void remove();

  private:
    CommitPointer(std::string path, Descriptor file) : path_(std::move(path)), file_(std::move(file)) {}

    std::string path_;
    Descriptor file_;
    short lockType_ = 0;
};

}  // namespace vantrel::embedded

#endif
