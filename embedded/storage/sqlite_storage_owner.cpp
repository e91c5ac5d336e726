#include "embedded/storage/encrypted_file.h"
#include "embedded/storage/pending_commit.h"
#include "embedded/storage/sqlite_owner.h"
#include "embedded/storage/sqlite_storage.h"
#include "vantrel.h"

// The owner of a file: in its table, or in the header of an encrypted one.

namespace vantrel::embedded {

namespace {

void copyDatabase(Database &from, Database &to) {
    to.execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA temp_store = MEMORY");
    sqlite3_backup *backup = sqlite3_backup_init(to.get(), "main", from.get(), "main");
    if (backup == nullptr)
        throwSqliteError(sqlite3_errcode(to.get()));
    int systemError = systemErrorOf(sqlite3_backup_step(backup, -1), to.get());
    int code = sqlite3_backup_finish(backup);
    if (code != SQLITE_OK)
        throwSqliteError(code, systemError);
}

}  // namespace

std::optional<OwnerMode> SqliteStorage::owner() {
    if (EncryptedFile *file = EncryptedFile::from(database_.mainFile()))
        return file->encryption()->header.mode();
    beginReading();
    std::optional<StoredOwner> stored = loadOwner(database_);
    return stored ? std::optional(stored->mode) : std::nullopt;
}

Access SqliteStorage::authenticate(ByteView name) {
    requireInPlace();
    if (EncryptedFile *file = EncryptedFile::from(database_.mainFile()))
        return file->access(name);
    beginReading();
    std::optional<StoredOwner> stored = loadOwner(database_);
    if (!stored || stored->verifier.accepts(name))
        return Access::full;
    require(stored->mode.isReadable, VANTREL_STATUS_INVALID_OWNER);
    return Access::reading;
}

void SqliteStorage::setOwner(const NewOwner &owner) {
    prepareToChange();
    saveOwner(database_, {owner.mode, NameVerifier::of(owner.name)});
}

void SqliteStorage::clearOwner() {
    prepareToChange();
    dropOwner(database_);
}

// The log is brought into the file too, so that neither needs it any more.
void SqliteStorage::writeCopy(const std::string &path, const NewOwner *owner) {
    setAccelerated(false);
    releaseSnapshot();
    // Others keep changes for it that only its present key opens.
    settleForWriting(path_, Waiting::yes);
    constexpr int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    Database copy = owner == nullptr ? Database(path, flags) : Database(path, flags, *owner);
    copyDatabase(database_, copy);
    Statement checkpoint = database_.prepare("PRAGMA wal_checkpoint(TRUNCATE)");
    require(checkpoint.step() && checkpoint.integer(0) == 0, VANTREL_STATUS_FILE_IN_USE);
}

}  // namespace vantrel::embedded
