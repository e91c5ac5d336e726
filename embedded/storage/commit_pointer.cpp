#include "embedded/storage/commit_pointer.h"

#include <fcntl.h>
#include <unistd.h>

#include "embedded/system_error.h"

namespace vantrel::embedded {

namespace {

// Sign, commit, coordinator and, up to the end, the coordinator's path.
constexpr ByteView sign = "VNTLCMT1";
constexpr size_t coordinatorOffset = sign.size() + identifierSize;
constexpr size_t pathOffset = coordinatorOffset + identifierSize;
constexpr size_t longestPath = 4096;

std::string unfinishedPath(const std::string &pointerPath) {
    return pointerPath + "-new";
}

bool tryLockWhole(const Descriptor &file, short type) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    if (fcntl(file.get(), F_OFD_SETLK, &lock) == 0)
        return true;
    if (errno == EAGAIN || errno == EACCES)
        return false;
    throwSystemError(errno);
}

void writeAll(const Descriptor &file, ByteView bytes) {
    while (!bytes.empty()) {
        ssize_t written = write(file.get(), bytes.data(), bytes.size());
        if (written < 0)
            throwSystemError(errno);
        bytes.remove_prefix(static_cast<size_t>(written));
    }
}

}  // namespace

std::string CommitPointer::pathBeside(const std::string &path) {
    return path + "-commit";
}

bool CommitPointer::isBeside(const std::string &path) {
    return access(pathBeside(path).c_str(), F_OK) == 0;
}

std::vector<std::string> CommitPointer::pathsLeftBeside(const std::string &path) {
    return {pathBeside(path), unfinishedPath(pathBeside(path))};
}

CommitPointer CommitPointer::place(const std::string &path, const CommitReference &reference) {
    std::string pointerPath = pathBeside(path), unfinished = unfinishedPath(pointerPath);
    Descriptor file(unfinished, O_RDWR | O_CREAT | O_TRUNC);
    try {
        require(tryLockWhole(file, F_WRLCK), VANTREL_STATUS_FILE_IN_USE);
        writeAll(file, Bytes(sign) + reference.commit + reference.coordinator + reference.coordinatorPath);
        file.sync();
        moveOnto(unfinished, pointerPath);
    } catch (...) {
        unlink(unfinished.c_str());
        throw;
    }
    return CommitPointer(std::move(pointerPath), std::move(file));
}

// Without write permission a shared lock still tells whether the writer lives.
std::optional<CommitPointer> CommitPointer::find(const std::string &path) {
    std::string pointerPath = pathBeside(path);
    bool isWritable = access(pointerPath.c_str(), W_OK) == 0;
    try {
        CommitPointer found(pointerPath,
                            Descriptor(pointerPath, (isWritable ? O_RDWR : O_RDONLY) | O_NONBLOCK));
        found.lockType_ = isWritable ? F_WRLCK : F_RDLCK;
        return found;
    } catch (const StatusError &error) {
        if (error.status == VANTREL_STATUS_FILE_NOT_FOUND)
            return std::nullopt;
        throw;
    }
}

CommitPointer::Holder CommitPointer::tryLock() {
    if (!tryLockWhole(file_, lockType_))
        return Holder::another;
    return file_.isAt(path_) ? Holder::self : Holder::gone;
}

CommitReference CommitPointer::read() const {
    Bytes bytes(pathOffset + longestPath, '\0');
    ssize_t length = pread(file_.get(), bytes.data(), bytes.size(), 0);
    if (length < 0)
        throwSystemError(errno);
    bytes.resize(static_cast<size_t>(length));
    if (bytes.size() <= pathOffset || ByteView(bytes).substr(0, sign.size()) != sign)
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
    return {bytes.substr(sign.size(), identifierSize), bytes.substr(coordinatorOffset, identifierSize),
            bytes.substr(pathOffset)};
}

void CommitPointer::remove() {
    removeIfThere(path_);
}

}  // namespace vantrel::embedded
