#include "embedded/operation/open_file.h"

#include <unistd.h>

#include <algorithm>
#include <ctime>

#include "vantrel.h"

namespace vantrel::embedded {

void Position::setLogical(uint8_t index, ByteView key, int64_t address) {
    keepKey(key);
    setLogicalByKeptKey(index, address);
}

void Position::keepKey(ByteView key) {
    keptKey_.assign(key);
}

void Position::setLogicalByKeptKey(uint8_t index, int64_t address) noexcept {
    if (!logical)
        logical.emplace();
    logical->index = index;
    logical->key.swap(keptKey_);
    logical->address = address;
}

OpenFile::OpenFile(std::string path, LockFile::Sharing sharing, StorageOptions options, LockUser &user)
    : path_(std::move(path)),
      isReadOnly_(options.readOnly),
      lockFile_(path_, sharing, user),
      recordLocks_(lockFile_),
      writeGate_(lockFile_, [this] { unlockWritten(); }),
      openTime_(static_cast<uint32_t>(time(nullptr))) {
    options.writeGate = &writeGate_;
    storage_ = openStorage(path_, options);
}

std::shared_ptr<const IndexDefinition> OpenFile::index(int32_t keyNumber) {
    std::shared_ptr<const FileDefinition> definition = storage_->definition();
    for (const auto *indexes : {&definition->indexes, &definition->systemIndexes}) {
        for (const IndexDefinition &index : *indexes) {
            if (index.number == keyNumber)
                return {std::move(definition), &index};
        }
    }
    throw StatusError{VANTREL_STATUS_INVALID_INDEX_NUMBER};
}

void OpenFile::addLock(Position &position, int64_t address, LockKind kind, bool insideTransaction) {
    bool isNew = position.locks.emplace(address, insideTransaction).second;
    if (!isNew)
        recordLocks_.release(address);
    position.lockKind = kind;
    if (kind == LockKind::multiple)
        return;
    while (position.locks.size() > 1) {
        auto other = position.locks.begin();
        unlock(position, other->first == address ? std::next(other)->first : other->first);
    }
}

void OpenFile::unlock(Position &position, int64_t address) {
    if (position.locks.erase(address) != 0)
        recordLocks_.release(address);
    if (position.locks.empty())
        position.lockKind = LockKind::none;
}

void OpenFile::unlockAll(Position &position) {
    while (!position.locks.empty())
        unlock(position, position.locks.begin()->first);
}

void OpenFile::unlockTransaction() {
    recordLocks_.releaseAllChanged();
    for (Position *position : positions_) {
        for (auto lock = position->locks.begin(); lock != position->locks.end();) {
            auto [address, insideTransaction] = *lock++;
            if (insideTransaction)
                unlock(*position, address);
        }
    }
}

void OpenFile::unlockWritten() {
    if (lockFile_.user().isInTransaction())
        unlockTransaction();
    else
        recordLocks_.releaseAllChanged();
}

void OpenFile::noteVersionBefore(int64_t address, std::optional<uint64_t> before, bool insideTransaction) {
    if (insideTransaction)
        versionsBefore_.try_emplace(address, before);
}

void OpenFile::recordChanged(int64_t address, uint64_t before, uint64_t after) {
    for (Position *position : positions_) {
        if (position->isOn(address) && position->version == before)
            position->version = after;
    }
}

void OpenFile::recordDeleted(Position &deleter, int64_t address, uint64_t before, bool insideTransaction) {
    for (Position *position : positions_) {
        if (!position->isOn(address) || position->version != before)
            continue;
        position->clearCurrent();
        if (insideTransaction && position != &deleter)
            position->versionBeforeDeletion = before;
    }
}

void OpenFile::changesTakenBack() {
    for (Position *position : positions_) {
        if (position->versionBeforeDeletion)
            position->version = position->versionBeforeDeletion;
        position->versionBeforeDeletion.reset();
        if (!position->version)
            continue;
        auto changed = versionsBefore_.find(*position->physical);
        if (changed == versionsBefore_.end())
            continue;
        std::optional<uint64_t> before = changed->second;
        if (!before)
            position->clearCurrent();
        else if (*position->version > *before)
            position->version = before;
    }
    versionsBefore_.clear();
}

void OpenFile::changesKept() {
    for (Position *position : positions_)
        position->versionBeforeDeletion.reset();
    versionsBefore_.clear();
}

bool OpenFile::isOpenExclusively() const {
    return std::any_of(positions_.begin(), positions_.end(),
                       [](const Position *position) { return position->isExclusive; });
}

bool OpenFile::allAccelerated() const {
    return std::all_of(positions_.begin(), positions_.end(),
                       [](const Position *position) { return position->isAccelerated; });
}

void OpenFile::encrypt(const NewOwner *owner) {
    std::string copy = copyPath(path_);
    unlink(copy.c_str());
    try {
        storage_->writeCopy(copy, owner);
        replaceByCopy(path_);
    } catch (...) {
        unlink(copy.c_str());
        storage_->setAccelerated(allAccelerated());
        throw;
    }
    // The old storage has emptied its log, and must be gone before the new one opens its own in the same
    // place; on a disk that fails, SQLite would open that for reading only.
    storage_.reset();
    syncDirectoryOf(path_);
    StorageOptions options;
    options.accelerated = allAccelerated();
    options.writeGate = &writeGate_;
    options.ownerName = owner == nullptr ? ByteView() : owner->name;
    storage_ = openStorage(path_, options);
}

// No snapshot is held for long, since it keeps the log from being emptied.
void OpenFile::housekeepInWait() {
    if (!storage_->isWriting())
        storage_->releaseSnapshot();
    if (storage_->hasUnsyncedCommits())
        storage_->sync();
}

void OpenFile::housekeep() {
    housekeepInWait();
    if (storage_->isWriting())
        return;
    storage_->settle();
    storage_->checkpointIfIdle();
}

}  // namespace vantrel::embedded
