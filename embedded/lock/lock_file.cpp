#include "embedded/lock/lock_file.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <atomic>
#include <vector>

#include "embedded/file_rights.h"
#include "embedded/lock/holder_slot.h"
#include "embedded/lock/lock_wait.h"
#include "embedded/system_error.h"

namespace vantrel::embedded {

namespace {

// What can be held has a range of bytes each. A lock always begins with the first of them, so that two
// conflict, and its length tells who holds it and how.
constexpr int64_t partBytes = 8192;
constexpr int64_t kindCount = 8;
static_assert((lastHolderSlot + 1) * kindCount < partBytes);

// Behind these ranges every slot has a byte, locked by the session that uses it, and every open handle.
constexpr int64_t firstSlotByte = (endOfRecords + 1) * partBytes;
constexpr int64_t firstHandleByte = int64_t{1} << 62;
constexpr int64_t handleRange = int64_t{1} << 61;
constexpr int64_t continuousOperationByte = firstHandleByte + handleRange;

int64_t lengthOf(uint16_t slot, HoldKind kind) {
    return slot * kindCount + static_cast<int64_t>(kind) + 1;
}

int64_t randomHandleByte() {
    uint64_t random = 0;
    if (getrandom(&random, sizeof random, 0) != sizeof random)
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
    // Even numbers only, so that the kernel never merges two marks into one lock.
    return firstHandleByte + static_cast<int64_t>(random % static_cast<uint64_t>(handleRange / 2)) * 2;
}

// A missing one is made for all who may use the record file. A link is followed nowhere: who may put one here
// need have no right to what it names.
int openOrMake(const std::string &path, const std::optional<FileRights> &rights) {
    constexpr int flags = O_RDWR | O_NOFOLLOW | O_CLOEXEC;
    for (;;) {
        int found = open(path.c_str(), flags);
        if (found >= 0 || errno != ENOENT)
            return found;
        int made = open(path.c_str(), flags | O_CREAT | O_EXCL, rights ? rights->mode : 0666);
        if (made >= 0 && rights)
            giveRights(made, *rights);
        if (made >= 0 || errno != EEXIST)
            return made;
    }
}

// Sessions of one process begin their search for a free slot at different ones.
// Every second byte, so that two locks of one holder are never merged.
int64_t slotByte(uint16_t slot) {
    return firstSlotByte + 2 * slot;
}

struct flock rangeLock(short type, int64_t start, int64_t length) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return lock;
}

uint16_t firstSlotToTry() {
    static std::atomic<uint32_t> next{0};
    return static_cast<uint16_t>(next++ % lastHolderSlot);
}

}  // namespace

std::string lockFilePath(const std::string &path) {
    return path + "-lock";
}

LockFile::LockFile(const std::string &path, Sharing sharing, LockUser &user)
    : path_(lockFilePath(path)), user_(user) {
    // A user that leaves last removes the side file, perhaps between its opening and its locking here.
    do {
        openSideFile(path, sharing);
        if (descriptor_ < 0)
            return;
    } while (!enter(sharing));
}

// False where the side file was removed meanwhile.
bool LockFile::enter(Sharing sharing) {
    try {
        identify();
        bool isExclusive = sharing == Sharing::exclusive;
        if (isWritable_ && takeSlot())
            describeUserFirst();
        if (!trySetOpened(isExclusive ? F_WRLCK : F_RDLCK,
                          isExclusive ? HoldKind::exclusiveOpening : HoldKind::sharedOpening)) {
            noteRefusal(openedFile);
            throw StatusError{VANTREL_STATUS_FILE_IN_USE};
        }
        if (isInPlace()) {
            addLockUser(id_, slot_, &user_);
            return true;
        }
    } catch (...) {
        close(descriptor_);
        throw;
    }
    close(descriptor_);
    slot_ = 0;
    return false;
}

// Without write permission an existing side file is still used for reading, and a missing one done without;
// but nobody can be kept out.
void LockFile::openSideFile(const std::string &path, Sharing sharing) {
    descriptor_ = openOrMake(path_, rightsOf(path));
    isWritable_ = descriptor_ >= 0;
    if (isWritable_)
        return;
    bool isDenied = errno == EACCES || errno == EROFS || errno == EPERM;
    if (!isDenied || sharing == Sharing::exclusive)
        throwSystemError(errno);
    descriptor_ = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
}

void LockFile::identify() {
    std::optional<FileIdentity> opened = identityOf(descriptor_);
    if (!opened)
        throwSystemError(errno);
    id_ = *opened;
}

bool LockFile::isInPlace() const {
    return identityAt(path_) == id_;
}

// Where all slots are in use, the session goes without: it locks as well, but is not known by its locks.
bool LockFile::takeSlot() {
    uint16_t first = firstSlotToTry();
    for (uint16_t tried = 0; tried < lastHolderSlot; ++tried) {
        auto slot = static_cast<uint16_t>((first + tried) % lastHolderSlot + 1);
        if (trySet(F_WRLCK, slotByte(slot), 1)) {
            slot_ = slot;
            return true;
        }
    }
    return false;
}

// On a full disk the side file may have no room for a slot that was never used; the session goes without.
void LockFile::describeUserFirst() {
    try {
        describeUser();
    } catch (const StatusError &error) {
        if (error.status != VANTREL_STATUS_DISK_FULL)
            throw;
        clear(slotByte(slot_), 1);
        slot_ = 0;
        describedRevision_ = user_.revision();
    }
}

void LockFile::describeUser() {
    uint32_t revision = user_.revision();
    if (slot_ != 0 && !writeHolderSlot(descriptor_, slot_, user_.description()))
        throwSystemError(errno);
    describedRevision_ = revision;
}

LockFile::~LockFile() {
    if (descriptor_ < 0)
        return;
    removeLockUser(id_, slot_);
    try {
        if (isInPlace() && makeExclusive())
            unlink(path_.c_str());
    } catch (const StatusError &) {
        // The side file stays, which harms nobody.
    }
    close(descriptor_);
    wakeLockWaits(id_, everyPart);
}

bool LockFile::trySet(short type, int64_t start, int64_t length) {
    struct flock lock = rangeLock(type, start, length);
    if (fcntl(descriptor_, F_OFD_SETLK, &lock) == 0)
        return true;
    if (errno == EAGAIN || errno == EACCES)
        return false;
    throwSystemError(errno);
}

// What the system cannot unlock stays locked until the side file is closed.
void LockFile::clear(int64_t start, int64_t length) noexcept {
    struct flock lock = rangeLock(F_UNLCK, start, length);
    fcntl(descriptor_, F_OFD_SETLK, &lock);
}

std::optional<LockFile::Range> LockFile::findForeign(int64_t start, int64_t end) {
    struct flock lock = rangeLock(F_WRLCK, start, end - start);
    if (fcntl(descriptor_, F_OFD_GETLK, &lock) != 0)
        throwSystemError(errno);
    if (lock.l_type == F_UNLCK)
        return std::nullopt;
    return Range{lock.l_start, lock.l_start + lock.l_len};
}

// A lock that changes its length leaves no bytes of the longer one behind.
bool LockFile::trySetOpened(short type, HoldKind kind) {
    int64_t start = openedFile * partBytes;
    if (!trySet(type, start, lengthOf(slot_, kind)))
        return false;
    clear(start + lengthOf(slot_, kind), partBytes - lengthOf(slot_, kind));
    return true;
}

bool LockFile::makeExclusive() {
    require(isWritable_, VANTREL_STATUS_PERMISSION_ERROR);
    return trySetOpened(F_WRLCK, HoldKind::exclusiveOpening);
}

void LockFile::makeShared() noexcept {
    try {
        trySetOpened(F_RDLCK, HoldKind::sharedOpening);
    } catch (const StatusError &) {
        // Others stay locked out until the session closes the file.
    }
}

int64_t LockFile::addHandle() {
    int64_t handle = randomHandleByte();
    handles_.insert(handle);
    try {
        if (descriptor_ >= 0)
            trySet(F_RDLCK, handle, 1);
    } catch (...) {
        handles_.erase(handle);
        throw;
    }
    return handle;
}

void LockFile::removeHandle(int64_t handle) noexcept {
    if (handles_.erase(handle) != 0 && descriptor_ >= 0)
        clear(handle, 1);
}

uint32_t LockFile::handleCount() {
    auto count = static_cast<uint32_t>(handles_.size());
    std::vector<Range> unseen{{firstHandleByte, firstHandleByte + handleRange}};
    while (descriptor_ >= 0 && !unseen.empty()) {
        Range range = unseen.back();
        unseen.pop_back();
        std::optional<Range> found =
            range.start < range.end ? findForeign(range.start, range.end) : std::nullopt;
        if (!found)
            continue;
        ++count;
        unseen.push_back({range.start, found->start});
        unseen.push_back({found->end, range.end});
    }
    return count;
}

bool LockFile::tryMarkContinuousOperation() {
    require(isWritable_, VANTREL_STATUS_PERMISSION_ERROR);
    return trySet(F_WRLCK, continuousOperationByte, 1);
}

bool LockFile::isInContinuousOperation() {
    return descriptor_ >= 0 && findForeign(continuousOperationByte, continuousOperationByte + 1).has_value();
}

bool LockFile::tryLock(int64_t part, HoldKind kind) {
    if (part >= endOfRecords)
        throw StatusError{VANTREL_STATUS_NO_SYSTEM_LOCKS_AVAILABLE};
    // Others would not see the lock. The records of a change follow its lock of the write side.
    if ((part == writeSide || kind != HoldKind::change) && !isInPlace())
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
    if (describedRevision_ != user_.revision())
        describeUser();
    return trySet(F_WRLCK, part * partBytes, lengthOf(slot_, kind));
}

void LockFile::unlock(int64_t part) noexcept {
    if (descriptor_ < 0)
        return;
    clear(part * partBytes, partBytes);
    wakeLockWaits(id_, part);
}

bool LockFile::isLockedByAnother(int64_t part) {
    return descriptor_ >= 0 && part < endOfRecords &&
           findForeign(part * partBytes, part * partBytes + 1).has_value();
}

void LockFile::lockAllRecords() {
    std::vector<Range> wanted{{partBytes, endOfRecords * partBytes}};
    while (!wanted.empty()) {
        Range range = wanted.back();
        if (range.start >= range.end || trySet(F_WRLCK, range.start, range.end - range.start)) {
            wanted.pop_back();
            continue;
        }
        std::optional<Range> held = findForeign(range.start, range.end);
        if (!held)
            continue;
        wanted.back().end = held->start / partBytes * partBytes;
        wanted.push_back({(held->end + partBytes - 1) / partBytes * partBytes, range.end});
    }
}

void LockFile::unlockRecords(int64_t first, int64_t end) noexcept {
    if (descriptor_ < 0 || first >= end)
        return;
    clear(first * partBytes, (end - first) * partBytes);
    wakeLockWaits(id_, everyPart);
}

void LockFile::keepOnlyLock(int64_t address, HoldKind kind) noexcept {
    int64_t length = lengthOf(slot_, kind);
    if (descriptor_ >= 0)
        clear(address * partBytes + length, partBytes - length);
}

// Only the session that writes locks all records.
std::optional<LockFile::Holder> LockFile::holderOf(int64_t part) {
    if (descriptor_ < 0)
        return std::nullopt;
    std::optional<Range> found = findForeign(part * partBytes, part * partBytes + 1);
    if (!found)
        return std::nullopt;
    int64_t length = found->end - found->start;
    if (length >= partBytes)
        return holderOf(writeSide).value_or(Holder{0, HoldKind::change});
    return Holder{static_cast<uint16_t>((length - 1) / kindCount),
                  static_cast<HoldKind>((length - 1) % kindCount)};
}

// A holder that left while its slot was being read may have been followed by another one there.
std::optional<HolderDescription> LockFile::descriptionOf(int64_t part, const Holder &holder) {
    std::optional<HolderDescription> description = readHolderSlot(descriptor_, holder.slot);
    std::optional<Holder> now = holderOf(part);
    return now && now->slot == holder.slot ? description : std::nullopt;
}

void LockFile::noteRefusal(int64_t part) {
    user_.refusal.reset();
    user_.refusalIsOfThisCall = true;
    std::optional<Holder> holder = holderOf(part);
    if (!holder)
        return;
    Refusal refusal{.kind = holder->kind,
                    .isRecord = part != writeSide && part != openedFile,
                    .isSameProcess = lockUserOf(id_, holder->slot) != nullptr,
                    .time = millisecondsNow(),
                    .holder = {}};
    if (holder->slot != 0)
        refusal.holder = descriptionOf(part, *holder);
    user_.refusal = refusal;
}

void LockFile::closeInChild() {
    if (descriptor_ >= 0)
        close(descriptor_);
    descriptor_ = -1;
}

}  // namespace vantrel::embedded
