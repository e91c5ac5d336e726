#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "embedded/storage/commit_pointer.h"
#include "embedded/storage/pending_commit.h"
#include "embedded/storage/sqlite_schema.h"
#include "embedded/storage/storage.h"
#include "embedded/storage/system_file.h"

namespace vantrel::embedded {

namespace {

constexpr int64_t largestFiller = int64_t{64} << 20;

std::string newFilePath(const std::string &path) {
    return path + "-new";
}

void removeSideFiles(const std::string &path) {
    removeIfThere(path + "-wal");
    removeIfThere(path + "-shm");
    removeIfThere(path + "-journal");
    CommitPointer::removeLeftBeside(path);
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
        "PRAGMA secure_delete = OFF; PRAGMA application_id = " +
        std::to_string(applicationId) + "; PRAGMA user_version = " + std::to_string(formatNumber));
    database.execute("BEGIN");
    createTables(database, definition);
    preallocate(database, definition);
    database.execute("COMMIT; PRAGMA synchronous = FULL; PRAGMA journal_mode = WAL");
}

}  // namespace

// The file is made under another name, so that the path never holds a half-made one.
void createStorage(const std::string &path, const FileDefinition &definition) {
    std::string madePath = newFilePath(path);
    if (access(path.c_str(), F_OK) == 0)
        requireSettled(path);
    removeIfThere(madePath);
    try {
        fill(madePath, definition);
        removeSideFiles(madePath);
        Descriptor(madePath, O_RDWR).sync();
        removeSideFiles(path);
        moveOnto(madePath, path);
    } catch (...) {
        unlink(madePath.c_str());
        unlink((madePath + "-wal").c_str());
        unlink((madePath + "-shm").c_str());
        throw;
    }
    syncDirectory(directoryWith(path));
}

void removeStorage(const std::string &path) {
    requireSettled(path);
    removeSideFiles(path);
    removeIfThere(path);
    syncDirectory(directoryWith(path));
}

void moveStorage(const std::string &from, const std::string &to) {
    requireSettled(from);
    // Opening and closing brings the log into the file.
    openStorage(from, {});
    removeSideFiles(from);
    removeSideFiles(to);
    moveOnto(from, to);
    syncDirectory(directoryWith(from));
    syncDirectory(directoryWith(to));
}

}  // namespace vantrel::embedded
