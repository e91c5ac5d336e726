#ifndef VANTREL_EMBEDDED_STORAGE_SYSTEM_FILE_H
#define VANTREL_EMBEDDED_STORAGE_SYSTEM_FILE_H

#include <string>

// Files of the operating system beside the databases; failures are thrown as StatusError. A database itself
// is opened by SQLite only, whose locks a second opening in the process would drop.

namespace vantrel::embedded {

// An open file description that is closed with its owner.
class Descriptor {
  public:
    Descriptor() = default;
    Descriptor(const std::string &path, int flags);
    ~Descriptor();
    Descriptor(Descriptor &&other) noexcept : descriptor_(other.descriptor_) { other.descriptor_ = -1; }
    Descriptor &operator=(Descriptor &&other) noexcept;

    int get() const { return descriptor_; }
    void sync() const;
    // Whether the path still names this file.
    bool isAt(const std::string &path) const;

  private:
    int descriptor_ = -1;
};

// With the slash at its end.
std::string directoryWith(const std::string &path);
// What was made, renamed or removed in a directory is durable only when the directory is. It is opened before
// its names change, so that only the disk can fail afterwards.
class Directory {
  public:
    explicit Directory(const std::string &path);
    void sync() const;

  private:
    Descriptor opened_;
};
void removeIfThere(const std::string &path);
void moveOnto(const std::string &from, const std::string &to);

}  // namespace vantrel::embedded

#endif
