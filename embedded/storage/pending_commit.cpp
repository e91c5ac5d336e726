#include "embedded/storage/pending_commit.h"

#include <sys/stat.h>

#include <chrono>
#include <exception>
#include <optional>
#include <thread>

#include "embedded/storage/commit_pointer.h"
#include "embedded/storage/sqlite_redo.h"
#include "embedded/storage/sqlite_schema.h"
#include "embedded/system_error.h"

namespace vantrel::embedded {

namespace {

constexpr auto longestWait = std::chrono::seconds(30);
constexpr int readingWaitMilliseconds = 30000;
constexpr auto retryInterval = std::chrono::milliseconds(1);

enum class Outcome {
    settled,
    writerLives,
    undecided,  // nothing is to be done here, but the coordinator cannot be told so now
    busy,       // somebody else is at it
};

// A write transaction that does not wait for others; leaving the scope without a commit takes it back.
class WriteSide {
  public:
    explicit WriteSide(Database &database) : database_(database) {
        sqlite3_busy_timeout(database.get(), 0);
        try {
            database.execute("BEGIN IMMEDIATE");
            isTaken_ = true;
        } catch (const StatusError &error) {
            if (error.status != VANTREL_STATUS_FILE_IN_USE)
                throw;
        }
    }
    ~WriteSide() {
        if (sqlite3_get_autocommit(database_.get()) == 0)
            sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
    WriteSide(const WriteSide &) = delete;
    WriteSide &operator=(const WriteSide &) = delete;

    bool isTaken() const { return isTaken_; }
    void commitDurably() {
        database_.execute("COMMIT");
        database_.syncLog();
    }

  private:
    Database &database_;
    bool isTaken_ = false;
};

bool exists(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) == 0)
        return true;
    if (errno == ENOENT)
        return false;
    throwSystemError(errno);
}

// A missing file was removed by hand, a missing directory may come back.
bool existsInItsDirectory(const std::string &path) {
    if (exists(path))
        return true;
    require(exists(directoryWith(path)), VANTREL_STATUS_INPUT_OUTPUT_ERROR);
    return false;
}

// None for an encrypted file that this process has no key for. Reading waits where the log is being
// recovered.
std::optional<Database> tryOpenFile(const std::string &path) {
    try {
        Database database(path, SQLITE_OPEN_READWRITE, Database::withHeldKey);
        sqlite3_busy_timeout(database.get(), readingWaitMilliseconds);
        checkFormat(database);
        return database;
    } catch (const StatusError &error) {
        if (error.status != VANTREL_STATUS_INVALID_OWNER)
            throw;
        return std::nullopt;
    }
}

Database openFile(const std::string &path) {
    std::optional<Database> file = tryOpenFile(path);
    require(file.has_value(), VANTREL_STATUS_FILE_IN_USE);
    return std::move(*file);
}

// None where the file at the path is not the one that decided.
std::optional<Database> openCoordinator(const CommitReference &reference) {
    try {
        if (!existsInItsDirectory(reference.coordinatorPath))
            return std::nullopt;
        Database database = openFile(reference.coordinatorPath);
        if (RedoTables(database).fileIdentifier() != reference.coordinator)
            return std::nullopt;
        return database;
    } catch (const StatusError &error) {
        if (error.status == VANTREL_STATUS_NOT_A_VANTREL_FILE)
            return std::nullopt;
        throw;
    }
}

// The decision against a commit. Its writer may have died inside the coordinator's own commit, and left it
// in the log where nobody sees it, but where a recovery of the log would find it; a later commit takes its
// place for good.
Outcome refuse(Database &coordinator, const CommitReference &reference, ByteView participant) {
    try {
        RedoTables redo(coordinator);
        if (redo.refused() == reference.commit) {
            coordinator.syncLog();
            return Outcome::settled;
        }
        WriteSide side(coordinator);
        if (!side.isTaken())
            return Outcome::undecided;
        if (redo.keeps(reference.commit, participant))
            return Outcome::busy;
        redo.setRefused(reference.commit);
        side.commitDurably();
        return Outcome::settled;
    } catch (const StatusError &) {
        return Outcome::undecided;
    }
}

Outcome giveItsPart(Database &participant, Database &coordinator, const CommitReference &reference) {
    // What is decided must not be lost after it was acted upon.
    coordinator.syncLog();
    WriteSide side(participant);
    if (!side.isTaken())
        return Outcome::busy;
    RedoTables(participant).applyFrom(coordinator, reference.commit, RedoSeal(participant));
    side.commitDurably();
    return Outcome::settled;
}

// While the pointer is locked. Both files are closed again when this returns.
Outcome finish(const std::string &path, const CommitReference &reference) {
    Database participant = openFile(path);
    RedoTables own(participant);
    if (own.applied() == reference.commit) {
        participant.syncLog();
        return Outcome::settled;
    }
    std::optional<Database> coordinator = openCoordinator(reference);
    if (!coordinator)
        return Outcome::settled;
    Bytes identifier = own.fileIdentifier();
    if (RedoTables(*coordinator).keeps(reference.commit, identifier))
        return giveItsPart(participant, *coordinator, reference);
    return refuse(*coordinator, reference, identifier);
}

Outcome settle(CommitPointer &pointer, const std::string &path) {
    switch (pointer.tryLock()) {
        case CommitPointer::Holder::another:
            return Outcome::writerLives;
        case CommitPointer::Holder::gone:
            return Outcome::busy;
        case CommitPointer::Holder::self:
            break;
    }
    Outcome outcome = finish(path, pointer.read());
    if (outcome == Outcome::settled)
        pointer.remove();
    return outcome;
}

Outcome settle(const std::string &path) {
    std::optional<CommitPointer> pointer = CommitPointer::find(path);
    return pointer ? settle(*pointer, path) : Outcome::settled;
}

// Without its pointer, or with one of a later commit, a file has its part.
Outcome settleParticipant(const RedoTables::Participant &participant) {
    if (!existsInItsDirectory(participant.path))
        return Outcome::settled;
    std::optional<CommitPointer> pointer = CommitPointer::find(participant.path);
    if (!pointer || pointer->read().commit != participant.commit)
        return Outcome::settled;
    return settle(*pointer, participant.path);
}

class Deadline {
  public:
    // False when the time is over, else after a moment.
    bool waitAMoment() const {
        if (std::chrono::steady_clock::now() >= end_)
            return false;
        std::this_thread::sleep_for(retryInterval);
        return true;
    }

  private:
    std::chrono::steady_clock::time_point end_ = std::chrono::steady_clock::now() + longestWait;
};

bool dropSettled(Database &coordinator, const std::vector<RedoTables::Participant> &settled) {
    if (settled.empty())
        return true;
    WriteSide side(coordinator);
    if (!side.isTaken())
        return false;
    for (const RedoTables::Participant &participant : settled)
        RedoTables(coordinator).drop(participant.commit, participant.file);
    side.commitDurably();
    return true;
}

}  // namespace

void settleForReading(const std::string &path) {
    Deadline deadline;
    while (CommitPointer::isBeside(path) && settle(path) == Outcome::busy)
        require(deadline.waitAMoment(), VANTREL_STATUS_FILE_IN_USE);
}

void settleForWriting(const std::string &path, Waiting waiting) {
    Deadline deadline;
    while (CommitPointer::isBeside(path) && settle(path) != Outcome::settled)
        require(waiting == Waiting::yes && deadline.waitAMoment(), VANTREL_STATUS_FILE_IN_USE);
}

bool settleParticipants(const std::string &path) {
    std::optional<Database> coordinator = tryOpenFile(path);
    if (!coordinator)
        return true;
    std::vector<RedoTables::Participant> participants = RedoTables(*coordinator).participants();
    std::vector<RedoTables::Participant> settled;
    std::exception_ptr failure;
    for (const RedoTables::Participant &participant : participants) {
        try {
            if (settleParticipant(participant) == Outcome::settled)
                settled.push_back(participant);
        } catch (const StatusError &) {
            failure = failure ? failure : std::current_exception();
        }
    }
    bool isDropped = dropSettled(*coordinator, settled);
    if (failure)
        std::rethrow_exception(failure);
    return isDropped && settled.size() == participants.size();
}

void requireSettled(const std::string &path) {
    settleForWriting(path, Waiting::yes);
    Deadline deadline;
    while (!settleParticipants(path))
        require(deadline.waitAMoment(), VANTREL_STATUS_FILE_IN_USE);
}

}  // namespace vantrel::embedded
