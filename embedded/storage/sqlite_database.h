#ifndef VANTREL_EMBEDDED_STORAGE_SQLITE_DATABASE_H
#define VANTREL_EMBEDDED_STORAGE_SQLITE_DATABASE_H

#include <sqlite3.h>

#include <cstdint>
#include <string>

#include "embedded/cipher/owner.h"
#include "embedded/key/definition.h"
#include "embedded/status_error.h"

namespace vantrel::embedded {

// The error number of the system call that failed, where one did, tells a full disk from a broken one. It is
// asked for at once after the failure.
int systemErrorOf(int code, sqlite3 *database);
[[noreturn]] void throwSqliteError(int code, int systemError);
// Right after the call that gave the code.
void checkSqlite(int code, sqlite3 *database);

// A prepared statement that goes with its owner. Texts and blobs bound must outlive the next reset.
class Statement {
  public:
    Statement() = default;
    Statement(sqlite3 *database, const char *sql);
    ~Statement() { sqlite3_finalize(statement_); }
    Statement(Statement &&other) noexcept : statement_(other.statement_) { other.statement_ = nullptr; }
    Statement &operator=(Statement &&other) noexcept;

    explicit operator bool() const { return statement_ != nullptr; }

    Statement &bind(int parameter, int64_t value);
    Statement &bind(int parameter, uint64_t value) { return bind(parameter, static_cast<int64_t>(value)); }
    Statement &bind(int parameter, ByteView bytes);

    // True where there is a row, false at the end.
    bool step();
    // Steps a statement that gives no rows, and resets it.
    void run();
    void reset() { sqlite3_reset(statement_); }

    int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }
    // Valid until the statement is stepped or reset.
    ByteView bytes(int column) const;

  private:
    sqlite3_stmt *statement_ = nullptr;
};

// Resets a statement at the end of a scope.
class StatementUse {
  public:
    explicit StatementUse(Statement &statement) : statement_(statement) {}
    ~StatementUse() { statement_.reset(); }
    StatementUse(const StatementUse &) = delete;
    StatementUse &operator=(const StatementUse &) = delete;
    Statement *operator->() { return &statement_; }
    Statement &operator*() { return statement_; }

  private:
    Statement &statement_;
};

class Database {
  public:
    Database() = default;
    // An encrypted database that the owner's name does not open is thrown as status 51.
    Database(const std::string &path, int flags, ByteView ownerName = {});
    // For what the engine does by itself: an encrypted one opens where another connection has it open, or
    // where anybody may read it.
    enum HeldKey { withHeldKey };
    Database(const std::string &path, int flags, HeldKey);
    // Makes an encrypted one.
    Database(const std::string &path, int flags, const NewOwner &owner);
    ~Database() { sqlite3_close_v2(database_); }
    Database(Database &&other) noexcept : database_(other.database_) { other.database_ = nullptr; }
    Database &operator=(Database &&other) noexcept;

    sqlite3 *get() const { return database_; }
    Statement prepare(const char *sql) const { return Statement(database_, sql); }
    void execute(const std::string &sql);
    // The first column of the first row.
    int64_t integer(const char *sql);

    // Makes what is committed survive power loss.
    void syncLog() const;

    sqlite3_file *mainFile() const { return file(SQLITE_FCNTL_FILE_POINTER); }
    sqlite3_file *logFile() const { return file(SQLITE_FCNTL_JOURNAL_POINTER); }

    // Whether the file is still found under its name.
    bool isInPlace() const;

    // In a forked child: what is still done through the connection does not reach the parent's.
    void abandon();

  private:
    void open(const std::string &path, int flags);
    sqlite3_file *file(int control) const;

    sqlite3 *database_ = nullptr;
};

}  // namespace vantrel::embedded

#endif
