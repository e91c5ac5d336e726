#include "embedded/operation/path.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

#include "embedded/system_error.h"

namespace vantrel::embedded {

namespace {

constexpr size_t longestName = 4095;
constexpr int longestLinkChain = 40;

std::string realPath(const std::string &path) {
    char resolved[PATH_MAX];
    if (realpath(path.c_str(), resolved) == nullptr)
        throwSystemError(errno);
    return resolved;
}

// Where a symbolic link whose target does not exist yet points to; empty for anything else.
std::string linkTarget(const std::string &path) {
    char target[PATH_MAX];
    ssize_t length = readlink(path.c_str(), target, sizeof target);
    if (length <= 0)
        return {};
    return std::string(target, static_cast<size_t>(length));
}

std::string directoryOf(const std::string &path) {
    size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string absolute(const std::string &directory, const std::string &name) {
    return name.front() == '/' ? name : directory + '/' + name;
}

}  // namespace

bool pathExists(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0;
}

void requireFile(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        throwSystemError(errno);
    if (!S_ISREG(status.st_mode))
        throw StatusError{VANTREL_STATUS_NOT_A_VANTREL_FILE};
}

void requireAccess(const std::string &path, int rights) {
    if (access(path.c_str(), rights) != 0)
        throw StatusError{VANTREL_STATUS_PERMISSION_ERROR};
}

std::string resolvePath(const Session &session, const std::string &name) {
    if (name.empty() || name.size() > longestName)
        throw StatusError{VANTREL_STATUS_FILE_NAME_BAD};
    std::string path = absolute(session.directory.empty() ? realPath(".") : session.directory, name);
    for (int links = 0; links < longestLinkChain; ++links) {
        if (pathExists(path))
            return realPath(path);
        std::string target = linkTarget(path);
        if (target.empty()) {
            std::string base = path.substr(path.rfind('/') + 1);
            if (base.empty() || base == "." || base == "..")
                throw StatusError{VANTREL_STATUS_FILE_NAME_BAD};
            std::string directory = realPath(directoryOf(path));
            if (directory != "/")
                directory += '/';
            return directory += base;
        }
        path = absolute(directoryOf(path), target);
    }
    throw StatusError{VANTREL_STATUS_FILE_NAME_BAD};
}

}  // namespace vantrel::embedded
