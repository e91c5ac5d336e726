#ifndef VANTREL_EMBEDDED_FILE_RIGHTS_H
#define VANTREL_EMBEDDED_FILE_RIGHTS_H

#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <string>

namespace vantrel::embedded {

// Whom a file belongs to, and who may use it.
struct FileRights {
    uid_t owner;
    gid_t group;
    mode_t mode;
};

// None where no file is.
inline std::optional<FileRights> rightsOf(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return FileRights{status.st_uid, status.st_gid, status.st_mode & 07777};
}

// To a new file: owner and group where this process may give files away. False with errno where its mode
// cannot be changed.
inline bool giveRights(int descriptor, const FileRights &rights) {
    static_cast<void>(fchown(descriptor, rights.owner, rights.group) == 0);
    return fchmod(descriptor, rights.mode) == 0;
}

}  // namespace vantrel::embedded

#endif
