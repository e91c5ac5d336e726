#include "embedded/operation/session.h"

#include <sys/random.h>

#include <algorithm>
#include <cstring>
#include <exception>

#include "embedded/operation/continuous_operation.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr uint32_t slotOffset = 0;
constexpr uint32_t cookieOffset = 8;

// What ends something goes on to its end, whatever fails on the way; the first failure is told then.
class Ending {
  public:
    template <class Work>
    void attempt(Work work) {
        try {
            work();
        } catch (...) {
            failure_ = failure_ ? failure_ : std::current_exception();
        }
    }
    void rethrowFailure() const {
        if (failure_)
            std::rethrow_exception(failure_);
    }

  private:
    std::exception_ptr failure_;
};

// A slot number, and a random cookie that fills the rest of the block.
PositionBlock makeBlock(uint32_t slot) {
    PositionBlock block{};
    storeU32(block.data() + slotOffset, slot);
    size_t cookieSize = block.size() - cookieOffset;
    if (getrandom(block.data() + cookieOffset, cookieSize, 0) != static_cast<ssize_t>(cookieSize))
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
    return block;
}

}  // namespace

Session::Session(const ClientIdentifier &identifier) : lockUser(identifier) {}

Session::~Session() {
    Ending().attempt([this] { reset(); });
}

Position &Session::position(const void *block) {
    if (block != nullptr) {
        uint32_t slot = loadU32(static_cast<const uint8_t *>(block) + slotOffset);
        Position *found = slot < positions_.size() ? positions_[slot].get() : nullptr;
        if (found != nullptr && found->blockAddress == block &&
            memcmp(found->block.data(), block, found->block.size()) == 0)
            return *found;
    }
    throw StatusError{VANTREL_STATUS_FILE_NOT_OPEN};
}

Position &Session::addPosition(OpenFile &file, void *block) {
    uint32_t slot = 0;
    while (slot < positions_.size() && positions_[slot] != nullptr)
        ++slot;
    if (slot == positions_.size())
        positions_.emplace_back();
    auto position = std::make_unique<Position>();
    position->file = &file;
    position->block = makeBlock(slot);
    position->blockAddress = block;
    position->handleMark = file.lockFile().addHandle();
    try {
        file.positions().insert(position.get());
    } catch (...) {
        file.lockFile().removeHandle(position->handleMark);
        throw;
    }
    memcpy(block, position->block.data(), position->block.size());
    positions_[slot] = std::move(position);
    return *positions_[slot];
}

void Session::removePosition(Position &position) {
    OpenFile &file = *position.file;
    file.unlockAll(position);
    file.lockFile().removeHandle(position.handleMark);
    if (position.isExclusive)
        file.lockFile().makeShared();
    file.positions().erase(&position);
    positions_[loadU32(position.block.data() + slotOffset)].reset();
    removeFileIfUnused(file);
}

OpenFile *Session::findFile(const std::string &path) {
    auto found = files_.find(path);
    return found == files_.end() ? nullptr : found->second.get();
}

OpenFile &Session::addFile(std::unique_ptr<OpenFile> file) {
    std::string path = file->path();
    return *(files_[path] = std::move(file));
}

// A transaction's changes keep the file open until it ends.
void Session::removeFileIfUnused(OpenFile &file) {
    if (!file.positions().empty() || file.storage().isWriting())
        return;
    if (file.storage().hasUnsyncedCommits()) {
        file.storage().setAccelerated(false);
        file.storage().sync();
    }
    files_.erase(files_.find(file.path()));
}

void Session::takeForChange(OpenFile &file) {
    if (!insideTransaction()) {
        file.storage().begin(waiting());
        return;
    }
    takenFiles_.reserve(takenFiles_.size() + 1);
    try {
        beginPart(file);
    } catch (...) {
        // Changes of a file that is not among the taken ones would be lost at the end.
        if (file.storage().isWriting())
            file.storage().rollback();
        throw;
    }
    takenFiles_.push_back(&file);
}

// A file whose writer died may have been about to decide about others, which then takes the file for a
// moment: once the transaction holds it, its own change of one of these would wait for that in vain.
void Session::beginPart(OpenFile &file) {
    TransactionPart part = takenFiles_.empty() ? TransactionPart::first : TransactionPart::further;
    file.storage().begin(waiting(), part);
    auto isPending = [&](const auto &other) {
        return other.second.get() != &file && other.second->storage().isPending();
    };
    if (std::none_of(files_.begin(), files_.end(), isPending))
        return;
    file.storage().rollback();
    for (auto &[path, other] : files_) {
        if (!other->storage().isWriting())
            other->storage().settle();
    }
    file.storage().begin(waiting(), part);
}

void Session::dropLostFile(OpenFile &file) {
    for (auto &position : positions_) {
        if (position != nullptr && position->file == &file)
            position.reset();
    }
    files_.erase(files_.find(file.path()));
}

void Session::touch(OpenFile &file) {
    bool isTaken = file.storage().isWriting() || file.isReadOnly();
    if (transaction == TransactionKind::exclusive && !isTaken)
        takeForChange(file);
}

void Session::noticeLostChanges() {
    transactionIsDoomed |= std::any_of(takenFiles_.begin(), takenFiles_.end(),
                                       [](OpenFile *file) { return file->storage().hasLostChanges(); });
}

void Session::commitTransaction() {
    bool isDoomed = transactionIsDoomed;
    if (!isDoomed) {
        std::vector<Storage *> storages;
        try {
            for (OpenFile *file : takenFiles_)
                storages.push_back(&file->storage());
            commitTogether(storages);
        } catch (...) {
            rollbackTransaction();
            throw;
        }
        for (OpenFile *file : takenFiles_)
            file->changesKept();
    }
    rollbackTransaction();
    if (isDoomed)
        throw StatusError{VANTREL_STATUS_END_CHANGED_TO_ABORT};
}

void Session::rollbackTransaction() {
    Ending ending;
    for (OpenFile *file : takenFiles_) {
        ending.attempt([file] {
            if (!file->storage().isWriting())
                return;
            file->unlockTransaction();
            file->storage().rollback();
        });
        file->changesTakenBack();
    }
    takenFiles_.clear();
    endTransaction();
    ending.rethrowFailure();
}

// Allocates nothing, since the transaction has ended.
void Session::endTransaction() {
    transaction = TransactionKind::none;
    transactionLock = LockBias::none;
    transactionIsDoomed = false;
    lockUser.endTransaction();
    for (auto &[path, file] : files_)
        file->unlockTransaction();
    removeUnusedFiles();
}

// What cannot be synced stays open; the background tries again.
void Session::removeUnusedFiles() noexcept {
    for (auto next = files_.begin(); next != files_.end();) {
        OpenFile &file = *(next++)->second;
        try {
            removeFileIfUnused(file);
        } catch (...) {
        }
    }
}

void Session::reset() {
    Ending ending;
    if (insideTransaction())
        ending.attempt([this] { rollbackTransaction(); });
    for (auto &position : positions_) {
        if (position != nullptr)
            ending.attempt([&] { removePosition(*position); });
    }
    positions_.clear();
    files_.clear();
    continuousOperations.clear();
    directory.clear();
    login = {};
    lockUser.setName({});
    lockUser.refusal.reset();
    ending.rethrowFailure();
}

bool Session::holdsNothing() const {
    return files_.empty() && continuousOperations.empty() && !insideTransaction() && directory.empty() &&
           !login.isActive && !lockUser.refusal;
}

// One file's failure is none of the others; it is tried again at the next turn, and a call that needs the
// file reports what is wrong.
void Session::forEachFile(void (OpenFile::*work)()) noexcept {
    for (auto &[path, file] : files_) {
        try {
            (file.get()->*work)();
        } catch (...) {
        }
    }
}

void Session::housekeepInWait() noexcept {
    forEachFile(&OpenFile::housekeepInWait);
}

void Session::housekeep() noexcept {
    forEachFile(&OpenFile::housekeep);
    if (!insideTransaction())
        removeUnusedFiles();
}

void Session::abandon() {
    for (auto &[path, file] : files_)
        file->abandon();
    files_.clear();
    for (auto &[path, operation] : continuousOperations)
        operation->abandon();
    continuousOperations.clear();
}

ChangeScope::ChangeScope(Session &session, OpenFile &file)
    : session_(session), file_(file), storage_(file.storage()) {
    if (session.insideTransaction() && session.transactionIsDoomed)
        throw StatusError{VANTREL_STATUS_END_CHANGED_TO_ABORT};
    if (!storage_.isWriting() || !session.insideTransaction())
        session.takeForChange(file);
}

ChangeScope::~ChangeScope() {
    if (session_.insideTransaction()) {
        if (!isDone_ && hasBegun_)
            session_.transactionIsDoomed = true;
        if (!hasBegun_)
            file_.recordLocks().releaseChanged(lastLocked_);
        return;
    }
    file_.recordLocks().releaseAllChanged();
    if (!isDone_)
        storage_.rollback();
}

bool ChangeScope::tryLock(int64_t address) {
    switch (file_.recordLocks().tryLockForChange(address, session_.insideTransaction())) {
        case RecordLocks::ChangeLock::refused:
            file_.lockFile().noteRefusal(address);
            return false;
        case RecordLocks::ChangeLock::taken:
            lastLocked_ = address;
            return true;
        default:
            return true;
    }
}

void ChangeScope::commit() {
    if (!session_.insideTransaction())
        commitAlone(storage_, Durability::soon);
    isDone_ = true;
}

}  // namespace vantrel::embedded
