#include "embedded/lock/lock_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "embedded/system_error.h"

namespace vantrel::embedded {

namespace {

// Byte 0 is locked by every user of the file, the byte at a record's address by who has locked the record, a
// byte of its own in the range of handles for each open handle, and the byte behind that range by who keeps
// the file from changing on disk.
constexpr int64_t userByte = 0;
constexpr int64_t firstHandleByte = int64_t{1} << 61;
constexpr int64_t handleRange = int64_t{1} << 61;
constexpr int64_t continuousOperationByte = firstHandleByte + handleRange;

int64_t randomHandleByte() {
    uint64_t random = 0;
    if (getrandom(&random, sizeof random, 0) != sizeof random)
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
    // Even numbers only, so that the kernel never merges two marks into one lock.
    return firstHandleByte + static_cast<int64_t>(random % static_cast<uint64_t>(handleRange / 2)) * 2;
}

}  // namespace

std::string lockFilePath(const std::string &path) {
    return path + "-lock";
}

LockFile::LockFile(const std::string &path, Sharing sharing) : path_(lockFilePath(path)) {
    // A user that leaves last removes the side file, perhaps between its opening and its locking here.
    for (;;) {
        if (!openSideFile())
            return;
        bool isExclusive = sharing == Sharing::exclusive;
        if (!trySet(isExclusive ? F_WRLCK : F_RDLCK, userByte, 1)) {
            close(descriptor_);
            throw StatusError{VANTREL_STATUS_FILE_IN_USE};
        }
        if (isStillInPlace())
            return;
        close(descriptor_);
    }
}

// Without write permission an existing side file is still used for reading, and a missing one done without.
bool LockFile::openSideFile() {
    descriptor_ = open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    isWritable_ = descriptor_ >= 0;
    if (isWritable_)
        return true;
    int error = errno;
    if (error != EACCES && error != EROFS && error != EPERM)
        throwSystemError(error);
    descriptor_ = open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    return descriptor_ >= 0;
}

bool LockFile::isStillInPlace() const {
    struct stat opened, placed;
    return fstat(descriptor_, &opened) == 0 && stat(path_.c_str(), &placed) == 0 &&
           opened.st_dev == placed.st_dev && opened.st_ino == placed.st_ino;
}

LockFile::~LockFile() {
    if (descriptor_ < 0)
        return;
    try {
        if (makeExclusive())
            unlink(path_.c_str());
    } catch (const StatusError &) {
        // The side file stays, which harms nobody.
    }
    close(descriptor_);
}

bool LockFile::trySet(short type, int64_t start, int64_t length) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    if (fcntl(descriptor_, F_OFD_SETLK, &lock) == 0)
        return true;
    if (errno == EAGAIN || errno == EACCES)
        return false;
    throwSystemError(errno);
}

bool LockFile::findForeign(int64_t start, int64_t length, int64_t *lockStart, int64_t *lockLength) {
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    if (fcntl(descriptor_, F_OFD_GETLK, &lock) != 0)
        throwSystemError(errno);
    *lockStart = lock.l_start;
    *lockLength = lock.l_len;
    return lock.l_type != F_UNLCK;
}

bool LockFile::makeExclusive() {
    return isWritable_ && trySet(F_WRLCK, userByte, 1);
}

void LockFile::makeShared() {
    trySet(F_RDLCK, userByte, 1);
}

int64_t LockFile::addHandle() {
    int64_t handle = randomHandleByte();
    if (descriptor_ >= 0)
        trySet(F_RDLCK, handle, 1);
    handles_.insert(handle);
    return handle;
}

void LockFile::removeHandle(int64_t handle) {
    if (handles_.erase(handle) != 0 && descriptor_ >= 0)
        trySet(F_UNLCK, handle, 1);
}

uint32_t LockFile::handleCount() {
    auto count = static_cast<uint32_t>(handles_.size());
    int64_t start = firstHandleByte, found, length;
    while (descriptor_ >= 0 && findForeign(start, firstHandleByte + handleRange - start, &found, &length)) {
        ++count;
        start = found + length;
    }
    return count;
}

bool LockFile::tryMarkContinuousOperation() {
    if (!isWritable_)
        throw StatusError{VANTREL_STATUS_PERMISSION_ERROR};
    return trySet(F_WRLCK, continuousOperationByte, 1);
}

bool LockFile::isInContinuousOperation() {
    int64_t start, length;
    return descriptor_ >= 0 && findForeign(continuousOperationByte, 1, &start, &length);
}

bool LockFile::tryLockRecord(int64_t address) {
    if (!isWritable_)
        throw StatusError{VANTREL_STATUS_PERMISSION_ERROR};
    return trySet(F_WRLCK, address, 1);
}

void LockFile::unlockRecord(int64_t address) {
    trySet(F_UNLCK, address, 1);
}

bool LockFile::recordIsLockedByAnother(int64_t address) {
    int64_t start, length;
    return descriptor_ >= 0 && findForeign(address, 1, &start, &length);
}

void LockFile::closeInChild() {
    if (descriptor_ >= 0)
        close(descriptor_);
    descriptor_ = -1;
}

}  // namespace vantrel::embedded
