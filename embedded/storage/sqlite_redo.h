#ifndef VANTREL_EMBEDDED_STORAGE_SQLITE_REDO_H
#define VANTREL_EMBEDDED_STORAGE_SQLITE_REDO_H

#include <functional>
#include <vector>

#include "embedded/storage/redo_seal.h"
#include "embedded/storage/sqlite_database.h"

struct sqlite3_session;

namespace vantrel::embedded {

// Records what a write transaction changes, row by row, from its construction on.
class RedoRecorder {
  public:
    explicit RedoRecorder(Database &database);
    ~RedoRecorder();
    RedoRecorder(const RedoRecorder &) = delete;
    RedoRecorder &operator=(const RedoRecorder &) = delete;

    // Hands the changes over, in pieces of a size that suits a row.
    void stream(const std::function<void(ByteView)> &take);

  private:
    Database &database_;
    sqlite3_session *session_ = nullptr;
};

// Makes the changes again that pieces tell of, until there are none left; inside a write transaction. Where
// the file is not in the state that they were made in, it is damaged: status 2.
void applyRedo(Database &database, const std::function<bool(Bytes *)> &nextPiece);

// What a file says about commits over several files: who it is and what it took part in last, and the
// changes that it keeps for others until those have them.
class RedoTables {
  public:
    explicit RedoTables(Database &database) : database_(database) {}

    static void create(Database &database);

    static Bytes newCommit();
    Bytes fileIdentifier();
    // The last commit that others decided about.
    Bytes applied();
    void setApplied(ByteView commit);
    // The last commit that was decided against here. A write transaction with this takes the place of
    // whatever a failed one left in the log.
    Bytes refused();
    void setRefused(ByteView commit);

    struct Participant {
        Bytes commit;
        Bytes file;
        std::string path;
    };
    std::vector<Participant> participants();
    bool keepsAny();
    bool keeps(ByteView commit, ByteView file);
    void keep(const Participant &participant, RedoRecorder &recorder, const RedoSeal &seal);
    void drop(ByteView commit, ByteView file);
    // For all files.
    void drop(ByteView commit);

    // Makes the changes here that another file keeps.
    void applyFrom(Database &coordinator, ByteView commit, const RedoSeal &seal);

  private:
    Bytes value(const char *select);
    void change(const char *sql, ByteView commit);

    Database &database_;
};

}  // namespace vantrel::embedded

#endif
