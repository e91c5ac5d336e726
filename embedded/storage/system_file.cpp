#include "embedded/storage/system_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

#include "embedded/file_identity.h"
#include "embedded/system_error.h"

namespace vantrel::embedded {

namespace {

constexpr mode_t newFileMode = 0666;

}  // namespace

Descriptor::Descriptor(const std::string &path, int flags)
    : descriptor_(open(path.c_str(), flags | O_CLOEXEC, newFileMode)) {
    if (descriptor_ < 0)
        throwSystemError(errno);
}

Descriptor::~Descriptor() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

Descriptor &Descriptor::operator=(Descriptor &&other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

void Descriptor::sync() const {
    if (fsync(descriptor_) != 0)
        throwSystemError(errno);
}

bool Descriptor::isAt(const std::string &path) const {
    std::optional<FileIdentity> opened = identityOf(descriptor_);
    return opened && identityAt(path) == opened;
}

std::string directoryWith(const std::string &path) {
    return path.substr(0, path.rfind('/') + 1);
}

Directory::Directory(const std::string &path) : opened_(path, O_RDONLY | O_DIRECTORY) {}

// Some file systems have no means to sync a directory, and say so.
void Directory::sync() const {
    if (fsync(opened_.get()) != 0 && errno != EINVAL)
        throwSystemError(errno);
}

void removeIfThere(const std::string &path) {
    if (unlink(path.c_str()) != 0 && errno != ENOENT)
        throwSystemError(errno);
}

void moveOnto(const std::string &from, const std::string &to) {
    if (rename(from.c_str(), to.c_str()) != 0)
        throwSystemError(errno);
}

}  // namespace vantrel::embedded
