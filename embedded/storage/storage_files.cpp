#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "embedded/storage/sqlite_schema.h"
#include "embedded/storage/storage.h"
#include "embedded/system_error.h"

namespace vantrel::embedded {

namespace {

constexpr int64_t largestFiller = int64_t{64} << 20;

std::string newFilePath(const std::string &path) {
    return path + "-new";
}

void removeIfThere(const std::string &path) {
    if (unlink(path.c_str()) != 0 && errno != ENOENT)
        throwSystemError(errno);
}

void removeSideFiles(const std::string &path) {
    removeIfThere(path + "-wal");
    removeIfThere(path + "-shm");
    removeIfThere(path + "-journal");
    removeIfThere(copyPath(path));
}

void moveInto(const std::string &from, const std::string &to) {
    if (rename(from.c_str(), to.c_str()) != 0)
        throwSystemError(errno);
}

// Pages that were filled once and freed stay with the file for the records to come.
void preallocate(Database &database, const FileDefinition &definition) {
    if ((definition.fileFlags & fileFlag::preallocation) == 0)
        return;
    int64_t remaining = int64_t{definition.preallocatedPages} * definition.pageSize;
    database.execute("CREATE TABLE filler(bytes BLOB)");
    Statement insert = database.prepare("INSERT INTO filler VALUES(zeroblob(?1))");
    for (; remaining > 0; remaining -= largestFiller)
        insert.bind(1, std::min(remaining, largestFiller)).run();
    insert = Statement();
    database.execute("DROP TABLE filler");
}

void fill(const std::string &path, const FileDefinition &definition) {
    Database database(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    database.execute(
        "PRAGMA page_size = 8192; PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; "
        "PRAGMA secure_delete = OFF; PRAGMA temp_store = MEMORY; PRAGMA application_id = " +
        std::to_string(applicationId) + "; PRAGMA user_version = " + std::to_string(formatNumber));
    database.execute("BEGIN");
    createTables(database, definition);
    preallocate(database, definition);
    database.execute("COMMIT; PRAGMA synchronous = FULL; PRAGMA journal_mode = WAL");
}

void syncFile(const std::string &path) {
    int descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor < 0)
        throwSystemError(errno);
    bool isSynced = fsync(descriptor) == 0;
    close(descriptor);
    if (!isSynced)
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
}

// Opening and closing brings the log into the file. False where opening takes the owner's name.
bool bringLogIn(const std::string &path) {
    try {
        Database database(path, SQLITE_OPEN_READWRITE);
        checkFormat(database);
        return true;
    } catch (const StatusError &error) {
        if (error.status != VANTREL_STATUS_INVALID_OWNER)
            throw;
        return false;
    }
}

// A log is found by the name of its file.
void copyLog(const std::string &from, const std::string &to) {
    std::error_code error;
    bool isCopied = std::filesystem::copy_file(from + "-wal", to + "-wal", error);
    if (isCopied)
        syncFile(to + "-wal");
    else if (error != std::errc::no_such_file_or_directory)
        throwSystemError(error.value());
}

// Owner, group and rights go over as far as this process may give them.
void keepRights(const std::string &from, const std::string &to) {
    struct stat status;
    if (stat(from.c_str(), &status) != 0)
        throwSystemError(errno);
    if (chown(to.c_str(), status.st_uid, status.st_gid) != 0 && errno != EPERM)
        throwSystemError(errno);
    if (chmod(to.c_str(), status.st_mode & 07777) != 0)
        throwSystemError(errno);
}

}  // namespace

// A rename is durable only when the directory is.
void syncDirectoryOf(const std::string &path) {
    std::string directory = path.substr(0, path.rfind('/') + 1);
    int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        throwSystemError(errno);
    bool isSynced = fsync(descriptor) == 0 || errno == EINVAL;
    close(descriptor);
    if (!isSynced)
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
}

std::string copyPath(const std::string &path) {
    return path + "-rekey";
}

void removeLeftCopy(const std::string &path) {
    unlink(copyPath(path).c_str());
}

void requireStorage(const std::string &path) {
    bringLogIn(path);
}

void replaceByCopy(const std::string &path) {
    std::string copy = copyPath(path);
    keepRights(path, copy);
    syncFile(copy);
    moveInto(copy, path);
}

// The file is made under another name, so that the path never holds a half-made one.
void createStorage(const std::string &path, const FileDefinition &definition) {
    std::string madePath = newFilePath(path);
    removeIfThere(madePath);
    try {
        fill(madePath, definition);
        removeSideFiles(madePath);
        syncFile(madePath);
        removeSideFiles(path);
        moveInto(madePath, path);
    } catch (...) {
        unlink(madePath.c_str());
        unlink((madePath + "-wal").c_str());
        unlink((madePath + "-shm").c_str());
        throw;
    }
    syncDirectoryOf(path);
}

void removeStorage(const std::string &path) {
    removeSideFiles(path);
    removeIfThere(path);
    syncDirectoryOf(path);
}

void moveStorage(const std::string &from, const std::string &to) {
    removeSideFiles(to);
    if (!bringLogIn(from))
        copyLog(from, to);
    moveInto(from, to);
    removeSideFiles(from);
    syncDirectoryOf(from);
    syncDirectoryOf(to);
}

}  // namespace vantrel::embedded
