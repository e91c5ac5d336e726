#ifndef VANTREL_EMBEDDED_STORAGE_SQLITE_TAIL_H
#define VANTREL_EMBEDDED_STORAGE_SQLITE_TAIL_H

#include <vector>

#include "embedded/storage/sqlite_database.h"

namespace vantrel::embedded {

// The tails of long records: what lies behind the head that the record's own row holds. A tail is a sequence
// of pieces in groups, both with their lengths in small rows, so that a place in it is found, and bytes are
// put in or taken out there, at a cost that depends neither on the tail's length nor on the place.
class SqliteTail {
  public:
    explicit SqliteTail(Database &database) : database_(database) {}

    static void createTables(Database &database);

    // Copies bytes of a tail; they must lie inside it.
    void read(int64_t address, uint64_t offset, uint64_t length, char *target);

    // Puts bytes in the place of a range of a tail.
    void replace(int64_t address, uint64_t offset, uint64_t removed, ByteView inserted);

  private:
    struct Group {
        int64_t id;
        uint64_t length;
        uint64_t start;  // in the tail
    };
    struct Piece {
        int64_t id;
        uint64_t length;
        uint64_t start;  // in the tail
    };

    bool findGroup(int64_t address, uint64_t offset, bool atItsEnd, Group *group);
    std::vector<Piece> piecesOf(const Group &group);
    // Other bytes than the piece has are thrown as an input/output error.
    Bytes bytesOf(const Piece &piece);
    int64_t addPiece(ByteView bytes);
    void writePieces(const Group &group, const std::vector<Piece> &pieces);
    void setGroupLength(int64_t group, uint64_t length);
    int64_t addGroup(int64_t address, int64_t place, uint64_t length);
    void addGroupBehind(int64_t address, const Group &group, const std::vector<Piece> &pieces);
    void dropGroup(const Group &group);

    void overwrite(int64_t address, uint64_t offset, ByteView bytes);
    uint64_t removeSome(int64_t address, uint64_t offset, uint64_t length);
    void insert(int64_t address, uint64_t offset, ByteView bytes);
    Statement &prepared(Statement &statement, const char *sql);

    Database &database_;
    Statement groups_, pieces_, readPiece_, insertPiece_, writePiece_, erasePiece_;
    Statement insertGroup_, setLength_, eraseGroup_, groupPlaces_, insertRow_, eraseRows_;
};

}  // namespace vantrel::embedded

#endif
