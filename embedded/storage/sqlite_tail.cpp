#include "embedded/storage/sqlite_tail.h"

#include <algorithm>
#include <cstring>

#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr size_t pieceSize = 32768;
constexpr size_t largestPiece = pieceSize + pieceSize / 2;
constexpr size_t largestGroup = 256;  // pieces
constexpr int64_t placeStride = int64_t{1} << 32;
constexpr int64_t largestPlace = int64_t{1} << 62;

[[noreturn]] void throwDamage() {
    throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
}

}  // namespace

void SqliteTail::createTables(Database &database) {
    database.execute(
        "CREATE TABLE piece(id INTEGER PRIMARY KEY, bytes BLOB NOT NULL);"
        "CREATE TABLE piece_group(id INTEGER PRIMARY KEY, address INTEGER NOT NULL, place INTEGER NOT NULL, "
        "length INTEGER NOT NULL);"
        "CREATE UNIQUE INDEX piece_group_place ON piece_group(address, place, length);"
        "CREATE TABLE piece_place(piece_group INTEGER NOT NULL, place INTEGER NOT NULL, piece INTEGER NOT "
        "NULL, "
        "length INTEGER NOT NULL, PRIMARY KEY(piece_group, place)) WITHOUT ROWID");
}

Statement &SqliteTail::prepared(Statement &statement, const char *sql) {
    if (!statement)
        statement = database_.prepare(sql);
    return statement;
}

// The group in which the byte at the offset lies or, for insertion, ends.
bool SqliteTail::findGroup(int64_t address, uint64_t offset, bool atItsEnd, Group *group) {
    StatementUse groups(
        prepared(groups_, "SELECT id, length FROM piece_group WHERE address = ?1 ORDER BY place"));
    groups->bind(1, address);
    uint64_t start = 0;
    bool isFound = false;
    while (groups->step()) {
        *group = {groups->integer(0), static_cast<uint64_t>(groups->integer(1)), start};
        isFound = offset < start + group->length || (atItsEnd && offset == start + group->length);
        if (isFound)
            break;
        start += group->length;
    }
    return isFound;
}

std::vector<SqliteTail::Piece> SqliteTail::piecesOf(const Group &group) {
    std::vector<Piece> found;
    StatementUse pieces(
        prepared(pieces_, "SELECT piece, length FROM piece_place WHERE piece_group = ?1 ORDER BY place"));
    pieces->bind(1, group.id);
    uint64_t start = group.start;
    while (pieces->step()) {
        found.push_back({pieces->integer(0), static_cast<uint64_t>(pieces->integer(1)), start});
        start += found.back().length;
    }
    if (start != group.start + group.length)
        throwDamage();
    return found;
}

Bytes SqliteTail::bytesOf(const Piece &piece) {
    StatementUse read(prepared(readPiece_, "SELECT bytes FROM piece WHERE id = ?1"));
    read->bind(1, piece.id);
    if (!read->step() || read->bytes(0).size() != piece.length)
        throwDamage();
    return Bytes(read->bytes(0));
}

void SqliteTail::read(int64_t address, uint64_t offset, uint64_t length, char *target) {
    while (length != 0) {
        Group group;
        if (!findGroup(address, offset, false, &group))
            throwDamage();
        for (const Piece &piece : piecesOf(group)) {
            if (length == 0 || offset >= piece.start + piece.length)
                continue;
            Bytes bytes = bytesOf(piece);
            auto within = static_cast<size_t>(offset - piece.start);
            auto count = static_cast<size_t>(std::min<uint64_t>(length, bytes.size() - within));
            memcpy(target, bytes.data() + within, count);
            target += count;
            offset += count;
            length -= count;
        }
    }
}

void SqliteTail::replace(int64_t address, uint64_t offset, uint64_t removed, ByteView inserted) {
    auto overwritten = static_cast<size_t>(std::min<uint64_t>(removed, inserted.size()));
    overwrite(address, offset, inserted.substr(0, overwritten));
    offset += overwritten;
    removed -= overwritten;
    inserted.remove_prefix(overwritten);
    while (removed != 0)
        removed -= removeSome(address, offset, removed);
    for (; !inserted.empty(); inserted.remove_prefix(std::min(inserted.size(), pieceSize))) {
        ByteView part = inserted.substr(0, pieceSize);
        insert(address, offset, part);
        offset += part.size();
    }
}

void SqliteTail::overwrite(int64_t address, uint64_t offset, ByteView bytes) {
    while (!bytes.empty()) {
        Group group;
        if (!findGroup(address, offset, false, &group))
            throwDamage();
        for (const Piece &piece : piecesOf(group)) {
            if (bytes.empty() || offset >= piece.start + piece.length)
                continue;
            auto within = static_cast<size_t>(offset - piece.start);
            auto count = static_cast<size_t>(std::min<uint64_t>(bytes.size(), piece.length - within));
            Bytes changed = count == piece.length ? Bytes(count, '\0') : bytesOf(piece);
            memcpy(changed.data() + within, bytes.data(), count);
            prepared(writePiece_, "UPDATE piece SET bytes = ?2 WHERE id = ?1")
                .bind(1, piece.id)
                .bind(2, ByteView(changed))
                .run();
            bytes.remove_prefix(count);
            offset += count;
        }
    }
}

// Takes out what lies in one group and returns how much that was.
uint64_t SqliteTail::removeSome(int64_t address, uint64_t offset, uint64_t length) {
    Group group;
    if (!findGroup(address, offset, false, &group))
        throwDamage();
    uint64_t count = std::min(length, group.start + group.length - offset);
    if (count == group.length) {
        dropGroup(group);
        return count;
    }
    std::vector<Piece> kept;
    uint64_t end = offset + count;
    for (const Piece &piece : piecesOf(group)) {
        uint64_t first = std::max(piece.start, offset), last = std::min(piece.start + piece.length, end);
        if (first >= last) {
            kept.push_back(piece);
            continue;
        }
        if (last - first < piece.length) {
            Bytes bytes = bytesOf(piece);
            bytes.erase(static_cast<size_t>(first - piece.start), static_cast<size_t>(last - first));
            kept.push_back({addPiece(bytes), bytes.size(), 0});
        }
        prepared(erasePiece_, "DELETE FROM piece WHERE id = ?1").bind(1, piece.id).run();
    }
    writePieces(group, kept);
    setGroupLength(group.id, group.length - count);
    return count;
}

// At most one piece's worth of bytes.
void SqliteTail::insert(int64_t address, uint64_t offset, ByteView bytes) {
    Group group;
    if (!findGroup(address, offset, true, &group)) {
        if (offset != 0)
            throwDamage();
        group = {addGroup(address, placeStride, 0), 0, 0};
    }
    std::vector<Piece> pieces = piecesOf(group);
    auto piece = std::find_if(pieces.begin(), pieces.end(), [offset](const Piece &candidate) {
        return offset <= candidate.start + candidate.length;
    });
    Bytes joined;
    if (piece != pieces.end()) {
        joined = bytesOf(*piece);
        prepared(erasePiece_, "DELETE FROM piece WHERE id = ?1").bind(1, piece->id).run();
        joined.insert(static_cast<size_t>(offset - piece->start), bytes);
        piece = pieces.erase(piece);
    } else {
        joined = bytes;
    }
    for (ByteView rest = joined; !rest.empty();) {
        ByteView part = rest.substr(0, rest.size() <= largestPiece ? rest.size() : pieceSize);
        piece = pieces.insert(piece, {addPiece(part), part.size(), 0}) + 1;
        rest.remove_prefix(part.size());
    }
    group.length += bytes.size();
    if (pieces.size() <= largestGroup) {
        writePieces(group, pieces);
        setGroupLength(group.id, group.length);
        return;
    }
    std::vector<Piece> behind(pieces.begin() + largestGroup / 2, pieces.end());
    pieces.resize(largestGroup / 2);
    uint64_t kept = 0;
    for (const Piece &stays : pieces)
        kept += stays.length;
    writePieces(group, pieces);
    setGroupLength(group.id, kept);
    group.length -= kept;
    addGroupBehind(address, group, behind);
}

int64_t SqliteTail::addPiece(ByteView bytes) {
    prepared(insertPiece_, "INSERT INTO piece(bytes) VALUES(?1)").bind(1, bytes).run();
    return sqlite3_last_insert_rowid(database_.get());
}

void SqliteTail::writePieces(const Group &group, const std::vector<Piece> &pieces) {
    prepared(eraseRows_, "DELETE FROM piece_place WHERE piece_group = ?1").bind(1, group.id).run();
    Statement &insert = prepared(
        insertRow_, "INSERT INTO piece_place(piece_group, place, piece, length) VALUES(?1, ?2, ?3, ?4)");
    int64_t place = 0;
    for (const Piece &piece : pieces)
        insert.bind(1, group.id).bind(2, place++).bind(3, piece.id).bind(4, piece.length).run();
}

void SqliteTail::setGroupLength(int64_t group, uint64_t length) {
    prepared(setLength_, "UPDATE piece_group SET length = ?2 WHERE id = ?1")
        .bind(1, group)
        .bind(2, length)
        .run();
}

int64_t SqliteTail::addGroup(int64_t address, int64_t place, uint64_t length) {
    prepared(insertGroup_, "INSERT INTO piece_group(address, place, length) VALUES(?1, ?2, ?3)")
        .bind(1, address)
        .bind(2, place)
        .bind(3, length)
        .run();
    return sqlite3_last_insert_rowid(database_.get());
}

// Places have gaps between them; where one has been used up, all groups of the record are placed anew.
void SqliteTail::addGroupBehind(int64_t address, const Group &group, const std::vector<Piece> &pieces) {
    std::vector<std::pair<int64_t, int64_t>> places;
    size_t before = 0;
    {
        StatementUse groups(
            prepared(groupPlaces_, "SELECT id, place FROM piece_group WHERE address = ?1 ORDER BY place"));
        groups->bind(1, address);
        while (groups->step()) {
            if (groups->integer(0) == group.id)
                before = places.size();
            places.emplace_back(groups->integer(0), groups->integer(1));
            if (places.back().second < 0 || places.back().second > largestPlace)
                throwDamage();
        }
    }
    if (places.empty())
        throwDamage();
    bool isLast = before + 1 == places.size();
    int64_t place = isLast ? places[before].second + placeStride
                           : places[before].second + (places[before + 1].second - places[before].second) / 2;
    if (place == places[before].second) {
        Statement move = database_.prepare("UPDATE piece_group SET place = ?2 WHERE id = ?1");
        // From behind, so that no two groups ever have the same place.
        int64_t shift = places.back().second;
        for (size_t moved = places.size(); moved-- > 0;) {
            places[moved].second = shift + static_cast<int64_t>(moved + 1) * placeStride;
            move.bind(1, places[moved].first).bind(2, places[moved].second).run();
        }
        place = places[before].second + placeStride / 2;
    }
    Group added = {addGroup(address, place, group.length), group.length, 0};
    writePieces(added, pieces);
}

void SqliteTail::dropGroup(const Group &group) {
    for (const Piece &piece : piecesOf(group))
        prepared(erasePiece_, "DELETE FROM piece WHERE id = ?1").bind(1, piece.id).run();
    prepared(eraseRows_, "DELETE FROM piece_place WHERE piece_group = ?1").bind(1, group.id).run();
    prepared(eraseGroup_, "DELETE FROM piece_group WHERE id = ?1").bind(1, group.id).run();
}

}  // namespace vantrel::embedded
