#include "embedded/storage/sqlite_database.h"

#include <cerrno>
#include <new>
#include <utility>

#include "embedded/storage/encrypting_vfs.h"
#include "embedded/storage/wal_index.h"
#include "embedded/system_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

// What the system runs short of says more than what SQLite could not do for it.
int32_t statusOfShortage(int systemError, int32_t otherwise) {
    int32_t status = statusOfErrno(systemError);
    switch (status) {
        case VANTREL_STATUS_DISK_FULL:
        case VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE:
        case VANTREL_STATUS_NO_HANDLES_AVAILABLE:
            return status;
        default:
            return systemError == EIO ? status : otherwise;
    }
}

int32_t statusOfSqliteError(int code, int systemError) {
    switch (code & 0xFF) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return VANTREL_STATUS_FILE_IN_USE;
        case SQLITE_NOMEM:
            return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
        case SQLITE_READONLY:
            return VANTREL_STATUS_ACCESS_TO_FILE_DENIED;
        case SQLITE_FULL:
            return VANTREL_STATUS_DISK_FULL;
        case SQLITE_CANTOPEN:
            return statusOfShortage(systemError, VANTREL_STATUS_PERMISSION_ERROR);
        case SQLITE_PERM:
            return VANTREL_STATUS_PERMISSION_ERROR;
        case SQLITE_AUTH:
            return VANTREL_STATUS_INVALID_OWNER;
        case SQLITE_NOTADB:
            return VANTREL_STATUS_NOT_A_VANTREL_FILE;
        case SQLITE_IOERR:
            return statusOfShortage(systemError, VANTREL_STATUS_INPUT_OUTPUT_ERROR);
        case SQLITE_CORRUPT:
        case SQLITE_PROTOCOL:
        // The statements are right, so the tables are not what a file has.
        case SQLITE_ERROR:
        case SQLITE_CONSTRAINT:
        case SQLITE_MISMATCH:
        case SQLITE_SCHEMA:
            return VANTREL_STATUS_INPUT_OUTPUT_ERROR;
        case SQLITE_TOOBIG:
            return VANTREL_STATUS_FILE_FULL;
        default:
            return VANTREL_STATUS_UNRECOVERABLE_ERROR;
    }
}

}  // namespace

// SQLite keeps no number for some writes; errno is still that of the one that failed then.
int systemErrorOf(int code, sqlite3 *database) {
    bool isWriting = code == SQLITE_IOERR_WRITE || code == SQLITE_IOERR_SHMSIZE;
    return isWriting ? errno : sqlite3_system_errno(database);
}

void throwSqliteError(int code, int systemError) {
    if (code == SQLITE_IOERR_NOMEM)
        throw std::bad_alloc();
    throw StatusError{statusOfSqliteError(code, systemError)};
}

void checkSqlite(int code, sqlite3 *database) {
    if (code != SQLITE_OK)
        throwSqliteError(code, systemErrorOf(code, database));
}

Statement::Statement(sqlite3 *database, const char *sql) {
    checkSqlite(sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement_, nullptr),
                database);
}

Statement &Statement::operator=(Statement &&other) noexcept {
    std::swap(statement_, other.statement_);
    return *this;
}

Statement &Statement::bind(int parameter, int64_t value) {
    checkSqlite(sqlite3_bind_int64(statement_, parameter, value), sqlite3_db_handle(statement_));
    return *this;
}

Statement &Statement::bind(int parameter, ByteView bytes) {
    // A null pointer would bind NULL rather than no bytes.
    const char *first = bytes.empty() ? "" : bytes.data();
    checkSqlite(sqlite3_bind_blob64(statement_, parameter, first, bytes.size(), SQLITE_STATIC),
                sqlite3_db_handle(statement_));
    return *this;
}

bool Statement::step() {
    int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW)
        return true;
    if (code == SQLITE_DONE)
        return false;
    int systemError = systemErrorOf(code, sqlite3_db_handle(statement_));
    sqlite3_reset(statement_);
    throwSqliteError(code, systemError);
}

void Statement::run() {
    step();
    reset();
}

ByteView Statement::bytes(int column) const {
    const void *first = sqlite3_column_blob(statement_, column);
    auto length = static_cast<size_t>(sqlite3_column_bytes(statement_, column));
    if (first == nullptr && length != 0)
        throw std::bad_alloc();
    return ByteView(static_cast<const char *>(first), length);
}

Database::Database(const std::string &path, int flags, ByteView ownerName) {
    OpeningScope scope(ownerName);
    open(path, flags);
}

Database::Database(const std::string &path, int flags, HeldKey) {
    OpeningScope scope(OpeningScope::HeldKey::only);
    open(path, flags);
}

Database::Database(const std::string &path, int flags, const NewOwner &owner) {
    OpeningScope scope(owner);
    open(path, flags);
}

void Database::open(const std::string &path, int flags) {
    int code = sqlite3_open_v2(path.c_str(), &database_, flags | SQLITE_OPEN_NOMUTEX, encryptingVfs());
    if (code == SQLITE_OK)
        code = sqlite3_extended_result_codes(database_, 1);
    // A file's schema is whatever somebody wrote there.
    for (int allowed :
         {SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_ENABLE_VIEW, SQLITE_DBCONFIG_TRUSTED_SCHEMA}) {
        if (code == SQLITE_OK)
            code = sqlite3_db_config(database_, allowed, 0, nullptr);
    }
    if (code != SQLITE_OK) {
        int systemError = systemErrorOf(code, database_);
        sqlite3_close_v2(database_);
        throwSqliteError(code, systemError);
    }
}

Database &Database::operator=(Database &&other) noexcept {
    std::swap(database_, other.database_);
    return *this;
}

void Database::execute(const std::string &sql) {
    checkSqlite(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr), database_);
}

int64_t Database::integer(const char *sql) {
    Statement statement = prepare(sql);
    return statement.step() ? statement.integer(0) : 0;
}

void Database::abandon() {
    WalIndex::makePrivate(mainFile());
    sqlite3_db_config(database_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

void Database::syncLog() const {
    sqlite3_file *log = logFile();
    int code = log == nullptr ? SQLITE_OK : log->pMethods->xSync(log, SQLITE_SYNC_NORMAL);
    if (code != SQLITE_OK)
        throwSqliteError(code, errno);
}

bool Database::isInPlace() const {
    int hasMoved = 0;
    return sqlite3_file_control(database_, "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved) != SQLITE_OK ||
           hasMoved == 0;
}

sqlite3_file *Database::file(int control) const {
    sqlite3_file *found = nullptr;
    sqlite3_file_control(database_, "main", control, &found);
    return found != nullptr && found->pMethods != nullptr ? found : nullptr;
}

}  // namespace vantrel::embedded
