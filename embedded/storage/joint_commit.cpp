#include "embedded/storage/joint_commit.h"

#include <set>

namespace vantrel::embedded {

namespace {

bool trySync(SqliteStorage &file) noexcept {
    try {
        file.sync();
        return true;
    } catch (...) {
        return false;
    }
}

void takeBack(SqliteStorage &file) noexcept {
    try {
        if (file.isWriting())
            file.rollback();
    } catch (...) {
        // The session tries again.
    }
}

// A commit that failed in its last write or its sync may still stand in the log, whole, where a recovery
// would find it. Another one takes its place.
bool refuse(SqliteStorage &file, ByteView commit) noexcept {
    try {
        file.begin(Waiting::no, TransactionPart::first);
        RedoTables(file.database()).setRefused(commit.empty() ? ByteView(RedoTables::newCommit()) : commit);
        file.commit(Durability::synced);
        return true;
    } catch (...) {
        takeBack(file);
        return false;
    }
}

}  // namespace

JointCommit::JointCommit(const std::vector<SqliteStorage *> &files)
    : coordinator_(*files.front()),
      others_(files.begin() + 1, files.end()),
      commit_(RedoTables::newCommit()) {}

void JointCommit::run() {
    try {
        placePointers();
        keepChanges();
    } catch (...) {
        removePointers();
        throw;
    }
    decide();
    complete();
}

void JointCommit::placePointers() {
    CommitReference reference{commit_, RedoTables(coordinator_.database()).fileIdentifier(),
                              coordinator_.path()};
    std::set<std::string> directories;
    participants_.reserve(others_.size());
    for (SqliteStorage *file : others_) {
        participants_.push_back({file, CommitPointer::place(file->path(), reference)});
        directories.insert(directoryWith(file->path()));
    }
    for (const std::string &directory : directories)
        Directory(directory).sync();
}

void JointCommit::keepChanges() {
    RedoTables redo(coordinator_.database());
    for (SqliteStorage *file : others_) {
        file->requireInPlace();
        file->writeState();
        Bytes identifier = RedoTables(file->database()).fileIdentifier();
        redo.keep({commit_, identifier, file->path()}, file->recorder(), RedoSeal(file->database()));
    }
}

// While a failed commit stands in the log, the pointers are needed.
void JointCommit::decide() {
    try {
        coordinator_.commit(Durability::synced);
    } catch (...) {
        if (refuse(coordinator_, commit_))
            removePointers();
        throw;
    }
}

// It is decided: what fails from here on is done by whoever comes next to the file, when its pointer is no
// longer locked.
void JointCommit::complete() noexcept {
    coordinator_.setKeepsRedo(true);
    size_t all = participants_.size();
    auto cannotCommit = [this](Participant &participant) { return !commitPart(*participant.file); };
    std::erase_if(participants_, cannotCommit);
    if (!trySync(coordinator_))
        return;
    std::erase_if(participants_, [](Participant &participant) { return !trySync(*participant.file); });
    if (participants_.size() == all)
        dropChanges();
    removePointers();
}

bool JointCommit::commitPart(SqliteStorage &file) noexcept {
    try {
        file.requireTransaction();
        RedoTables(file.database()).setApplied(commit_);
        file.commit(Durability::soon);
        return true;
    } catch (...) {
        takeBack(file);
        return false;
    }
}

// They are dropped later where the file is not free now.
void JointCommit::dropChanges() noexcept {
    try {
        coordinator_.begin(Waiting::no, TransactionPart::none);
        RedoTables(coordinator_.database()).drop(commit_);
        coordinator_.commit(Durability::soon);
        coordinator_.setKeepsRedo(false);
    } catch (...) {
        takeBack(coordinator_);
    }
}

void JointCommit::removePointers() noexcept {
    for (Participant &participant : participants_) {
        try {
            participant.pointer.remove();
        } catch (const StatusError &) {
            // Who finds it finds out that it is of no more use.
        }
    }
}

void commitAlone(Storage &storage, Durability durability) {
    try {
        storage.commit(durability);
    } catch (...) {
        refuse(dynamic_cast<SqliteStorage &>(storage), {});
        throw;
    }
}

void commitTogether(const std::vector<Storage *> &storages) {
    std::vector<SqliteStorage *> changed;
    for (Storage *storage : storages) {
        auto *file = dynamic_cast<SqliteStorage *>(storage);
        if (file != nullptr && file->hasChanges())
            changed.push_back(file);
    }
    if (changed.size() == 1)
        commitAlone(*changed.front(), Durability::synced);
    else if (!changed.empty())
        JointCommit(changed).run();
}

}  // namespace vantrel::embedded
