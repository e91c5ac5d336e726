#ifndef VANTREL_EMBEDDED_FILE_IDENTITY_H
#define VANTREL_EMBEDDED_FILE_IDENTITY_H

#include <sys/stat.h>

#include <compare>
#include <optional>
#include <string>

namespace vantrel::embedded {

// Tells a file apart from others, by whatever name it was opened, and from those that stand at its path
// before or afterwards.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;

    auto operator<=>(const FileIdentity &) const = default;
};

// None where no file is.
inline std::optional<FileIdentity> identityAt(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

// None where the system cannot say.
inline std::optional<FileIdentity> identityOf(int descriptor) {
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        return std::nullopt;
    return FileIdentity{status.st_dev, status.st_ino};
}

}  // namespace vantrel::embedded

#endif
