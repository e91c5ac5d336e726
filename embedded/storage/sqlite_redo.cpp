#include "embedded/storage/sqlite_redo.h"

#include <cstring>
#include <exception>

#include "embedded/storage/commit_pointer.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr size_t pieceSize = 262144;

// Runs what may throw inside a callback of SQLite, and keeps the exception for its caller.
template <class Work>
int guarded(std::exception_ptr &failure, Work work) {
    try {
        work();
        return SQLITE_OK;
    } catch (...) {
        failure = std::current_exception();
        return SQLITE_ABORT;
    }
}

// What a file keeps for others is no change of its own.
int isOwnTable(void *, const char *table) {
    return strcmp(table, "commit_state") != 0 && strncmp(table, "redo", strlen("redo")) != 0;
}

struct Output {
    const std::function<void(ByteView)> &take;
    Bytes piece;
    std::exception_ptr failure;

    static int add(void *output, const void *bytes, int length) {
        auto &self = *static_cast<Output *>(output);
        return guarded(self.failure, [&] {
            self.piece.append(static_cast<const char *>(bytes), static_cast<size_t>(length));
            if (self.piece.size() >= pieceSize)
                self.flush();
        });
    }
    void flush() {
        take(piece);
        piece.clear();
    }
};

struct Input {
    const std::function<bool(Bytes *)> &nextPiece;
    sqlite3 *database;
    Bytes piece;
    size_t used = 0;
    bool isMore = true;
    std::exception_ptr failure;

    static int take(void *input, void *bytes, int *length) {
        auto &self = *static_cast<Input *>(input);
        return guarded(self.failure, [&] {
            while (self.isMore && self.used == self.piece.size()) {
                self.piece.clear();
                self.used = 0;
                self.isMore = self.nextPiece(&self.piece);
            }
            auto room = static_cast<size_t>(*length);
            size_t count = self.piece.copy(static_cast<char *>(bytes), room, self.used);
            self.used += count;
            *length = static_cast<int>(count);
        });
    }
    // SQLite passes over a table that it does not find.
    static int requireTable(void *input, const char *table) {
        auto &self = *static_cast<Input *>(input);
        int code = sqlite3_table_column_metadata(self.database, "main", table, nullptr, nullptr, nullptr,
                                                 nullptr, nullptr, nullptr);
        if (code != SQLITE_OK)
            self.failure = std::make_exception_ptr(StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR});
        return code == SQLITE_OK;
    }
    static int refuseConflict(void *input, int, sqlite3_changeset_iter *) {
        auto &self = *static_cast<Input *>(input);
        self.failure = std::make_exception_ptr(StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR});
        return SQLITE_CHANGESET_ABORT;
    }
};

void finish(int code, const std::exception_ptr &failure, const Database &database) {
    if (failure)
        std::rethrow_exception(failure);
    checkSqlite(code, database.get());
}

}  // namespace

RedoRecorder::RedoRecorder(Database &database) : database_(database) {
    checkSqlite(sqlite3session_create(database.get(), "main", &session_), database.get());
    sqlite3session_table_filter(session_, isOwnTable, nullptr);
    int code = sqlite3session_attach(session_, nullptr);
    if (code != SQLITE_OK) {
        int systemError = systemErrorOf(code, database.get());
        sqlite3session_delete(session_);
        throwSqliteError(code, systemError);
    }
}

RedoRecorder::~RedoRecorder() {
    sqlite3session_delete(session_);
}

void RedoRecorder::stream(const std::function<void(ByteView)> &take) {
    Output output{take, {}, {}};
    int code = sqlite3session_changeset_strm(session_, Output::add, &output);
    finish(code, output.failure, database_);
    if (!output.piece.empty())
        output.flush();
}

void applyRedo(Database &database, const std::function<bool(Bytes *)> &nextPiece) {
    Input input{nextPiece, database.get(), {}, 0, true, {}};
    int code = sqlite3changeset_apply_v2_strm(database.get(), Input::take, &input, Input::requireTable,
                                              Input::refuseConflict, &input, nullptr, nullptr,
                                              SQLITE_CHANGESETAPPLY_NOSAVEPOINT);
    finish(code, input.failure, database);
}

void RedoTables::create(Database &database) {
    database.execute(
        "CREATE TABLE commit_state(id INTEGER PRIMARY KEY CHECK(id = 1), file BLOB NOT NULL, applied BLOB "
        "NOT NULL, refused BLOB NOT NULL);"
        "CREATE TABLE redo_file(commit_id BLOB NOT NULL, file BLOB NOT NULL, path BLOB NOT NULL, PRIMARY "
        "KEY(commit_id, file)) WITHOUT ROWID;"
        "CREATE TABLE redo_piece(commit_id BLOB NOT NULL, file BLOB NOT NULL, number INTEGER NOT NULL, "
        "bytes BLOB NOT NULL, PRIMARY KEY(commit_id, file, number)) WITHOUT ROWID;"
        "INSERT INTO commit_state VALUES(1, randomblob(16), x'', x'')");
}

Bytes RedoTables::value(const char *select) {
    Statement statement = database_.prepare(select);
    require(statement.step(), VANTREL_STATUS_INPUT_OUTPUT_ERROR);
    return Bytes(statement.bytes(0));
}

void RedoTables::change(const char *sql, ByteView commit) {
    database_.prepare(sql).bind(1, commit).run();
}

Bytes RedoTables::newCommit() {
    Bytes commit(identifierSize, '\0');
    sqlite3_randomness(static_cast<int>(commit.size()), commit.data());
    return commit;
}

Bytes RedoTables::fileIdentifier() {
    return value("SELECT file FROM commit_state WHERE id = 1");
}

Bytes RedoTables::applied() {
    return value("SELECT applied FROM commit_state WHERE id = 1");
}

void RedoTables::setApplied(ByteView commit) {
    change("UPDATE commit_state SET applied = ?1 WHERE id = 1", commit);
}

Bytes RedoTables::refused() {
    return value("SELECT refused FROM commit_state WHERE id = 1");
}

void RedoTables::setRefused(ByteView commit) {
    change("UPDATE commit_state SET refused = ?1 WHERE id = 1", commit);
}

std::vector<RedoTables::Participant> RedoTables::participants() {
    std::vector<Participant> found;
    Statement select = database_.prepare("SELECT commit_id, file, path FROM redo_file");
    while (select.step())
        found.push_back({Bytes(select.bytes(0)), Bytes(select.bytes(1)), std::string(select.bytes(2))});
    return found;
}

bool RedoTables::keepsAny() {
    return database_.integer("SELECT EXISTS(SELECT 1 FROM redo_file)") != 0;
}

bool RedoTables::keeps(ByteView commit, ByteView file) {
    Statement select = database_.prepare("SELECT 1 FROM redo_file WHERE commit_id = ?1 AND file = ?2");
    return select.bind(1, commit).bind(2, file).step();
}

void RedoTables::keep(const Participant &participant, RedoRecorder &recorder, const RedoSeal &seal) {
    database_.prepare("INSERT INTO redo_file VALUES(?1, ?2, ?3)")
        .bind(1, ByteView(participant.commit))
        .bind(2, ByteView(participant.file))
        .bind(3, ByteView(participant.path))
        .run();
    Statement insert = database_.prepare("INSERT INTO redo_piece VALUES(?1, ?2, ?3, ?4)");
    insert.bind(1, ByteView(participant.commit)).bind(2, ByteView(participant.file));
    int64_t number = 0;
    recorder.stream([&](ByteView piece) {
        Bytes sealed = seal.sealRedo(piece, participant.commit, number);
        insert.bind(3, number).bind(4, ByteView(sealed)).run();
        ++number;
    });
}

void RedoTables::drop(ByteView commit, ByteView file) {
    for (const char *sql : {"DELETE FROM redo_piece WHERE commit_id = ?1 AND file = ?2",
                            "DELETE FROM redo_file WHERE commit_id = ?1 AND file = ?2"})
        database_.prepare(sql).bind(1, commit).bind(2, file).run();
}

void RedoTables::drop(ByteView commit) {
    change("DELETE FROM redo_piece WHERE commit_id = ?1", commit);
    change("DELETE FROM redo_file WHERE commit_id = ?1", commit);
}

void RedoTables::applyFrom(Database &coordinator, ByteView commit, const RedoSeal &seal) {
    Bytes file = fileIdentifier();
    Statement select = coordinator.prepare(
        "SELECT number, bytes FROM redo_piece WHERE commit_id = ?1 AND file = ?2 ORDER BY number");
    select.bind(1, commit).bind(2, ByteView(file));
    int64_t expected = 0;
    applyRedo(database_, [&](Bytes *piece) {
        if (!select.step())
            return false;
        require(select.integer(0) == expected++, VANTREL_STATUS_INPUT_OUTPUT_ERROR);
        *piece = seal.openRedo(Bytes(select.bytes(1)), commit, select.integer(0));
        return true;
    });
    setApplied(commit);
}

}  // namespace vantrel::embedded
