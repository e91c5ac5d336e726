#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "embedded/file_rights.h"
#include "embedded/storage/commit_pointer.h"
#include "embedded/storage/pending_commit.h"
#include "embedded/storage/sqlite_schema.h"
#include "embedded/storage/storage.h"
#include "embedded/storage/system_file.h"
#include "embedded/system_error.h"

namespace vantrel::embedded {

namespace {

constexpr int64_t largestFiller = int64_t{64} << 20;

std::string newFilePath(const std::string &path) {
    return path + "-new";
}

using Paths = std::vector<std::string>;

Paths sideFilesOf(const std::string &path) {
    Paths paths = CommitPointer::pathsLeftBeside(path);
    for (const char *ending : {"-wal", "-shm", "-journal"})
        paths.push_back(path + ending);
    paths.push_back(copyPath(path));
    return paths;
}

void remove(const Paths &paths) {
    for (const std::string &path : paths)
        removeIfThere(path);
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

// Opening and closing brings the log into the file; or does not, where opening takes the owner's name, the
// disk is full or the file may not be written.
void tryToBringLogIn(const std::string &path) {
    try {
        Database database(path, SQLITE_OPEN_READWRITE);
        checkFormat(database);
    } catch (const StatusError &error) {
        if (error.status != VANTREL_STATUS_INVALID_OWNER)
            throw;
    }
}

// A log that is still there is found by the name of its file.
void copyLog(const std::string &from, const std::string &to) {
    std::error_code error;
    bool isCopied = std::filesystem::copy_file(from + "-wal", to + "-wal", error);
    if (isCopied)
        Descriptor(to + "-wal", O_RDWR).sync();
    else if (error != std::errc::no_such_file_or_directory)
        throwSystemError(error.value());
}

}  // namespace

void syncDirectoryOf(const std::string &path) {
    Directory(directoryWith(path)).sync();
}

std::string copyPath(const std::string &path) {
    return path + "-rekey";
}

void removeLeftCopy(const std::string &path) {
    unlink(copyPath(path).c_str());
}

void requireStorage(const std::string &path) {
    tryToBringLogIn(path);
}

void replaceByCopy(const std::string &path) {
    std::string copy = copyPath(path);
    Descriptor opened(copy, O_RDWR);
    std::optional<FileRights> rights = rightsOf(path);
    if (!rights || !giveRights(opened.get(), *rights))
        throwSystemError(errno);
    opened.sync();
    moveOnto(copy, path);
}

// The file is made under another name, so that the path never holds a half-made one. Here and below, all that
// takes memory is done before the names change, so that nothing has happened where there is none.
void createStorage(const std::string &path, const FileDefinition &definition) {
    std::string madePath = newFilePath(path);
    Directory directory(directoryWith(path));
    if (access(path.c_str(), F_OK) == 0)
        requireSettled(path);
    removeIfThere(madePath);
    try {
        fill(madePath, definition);
        remove(sideFilesOf(madePath));
        Descriptor(madePath, O_RDWR).sync();
        remove(sideFilesOf(path));
        moveOnto(madePath, path);
    } catch (...) {
        unlink(madePath.c_str());
        unlink((madePath + "-wal").c_str());
        unlink((madePath + "-shm").c_str());
        throw;
    }
    directory.sync();
}

// The log of an encrypted file may hold changes that the file lacks, and stays as long as that.
void removeStorage(const std::string &path) {
    requireSettled(path);
    Paths sideFiles = sideFilesOf(path);
    Directory directory(directoryWith(path));
    removeIfThere(path);
    remove(sideFiles);
    directory.sync();
}

void moveStorage(const std::string &from, const std::string &to) {
    requireSettled(from);
    remove(sideFilesOf(to));
    Paths sideFiles = sideFilesOf(from);
    std::string movedLog = to + "-wal";
    Directory oldDirectory(directoryWith(from)), newDirectory(directoryWith(to));
    tryToBringLogIn(from);
    try {
        copyLog(from, to);
        moveOnto(from, to);
    } catch (...) {
        unlink(movedLog.c_str());
        throw;
    }
    remove(sideFiles);
    oldDirectory.sync();
    newDirectory.sync();
}

}  // namespace vantrel::embedded
