#include "embedded/storage/sqlite_schema.h"

#include "embedded/storage/sqlite_redo.h"
#include "embedded/storage/sqlite_tail.h"

#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr size_t countSize = 8;

}  // namespace

std::string indexTableName(uint8_t index) {
    return "index_" + std::to_string(index);
}

void createIndexTableIn(Database &database, uint8_t index) {
    database.execute(
        "CREATE TABLE " + indexTableName(index) +
        "(key BLOB NOT NULL, address INTEGER NOT NULL, PRIMARY KEY(key, address)) WITHOUT ROWID");
}

void createTables(Database &database, const FileDefinition &definition) {
    database.execute(
        "CREATE TABLE definition(id INTEGER PRIMARY KEY CHECK(id = 1), generation INTEGER NOT NULL, "
        "specification BLOB NOT NULL);"
        "CREATE TABLE state(id INTEGER PRIMARY KEY CHECK(id = 1), record_count INTEGER NOT NULL, "
        "last_address INTEGER NOT NULL, last_time INTEGER NOT NULL, unique_counts BLOB NOT NULL);"
        "CREATE TABLE record(address INTEGER PRIMARY KEY, created INTEGER NOT NULL, updated INTEGER NOT "
        "NULL, "
        "length INTEGER NOT NULL, data BLOB NOT NULL);"
        "INSERT INTO definition VALUES(1, 0, x'');"
        "INSERT INTO state VALUES(1, 0, 0, 0, x'')");
    SqliteTail::createTables(database);
    RedoTables::create(database);
    saveDefinition(database, definition);
    for (const IndexDefinition &index : definition.indexes)
        createIndexTableIn(database, index.number);
    for (const IndexDefinition &index : definition.systemIndexes)
        createIndexTableIn(database, index.number);
}

void checkFormat(Database &database) {
    if (database.integer("PRAGMA application_id") != applicationId ||
        database.integer("PRAGMA user_version") != formatNumber)
        throw StatusError{VANTREL_STATUS_NOT_A_VANTREL_FILE};
}

FileDefinition loadDefinition(Database &database) {
    Statement select = database.prepare("SELECT specification FROM definition WHERE id = 1");
    if (!select.step())
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
    try {
        return parseCreateRequest(select.bytes(0));
    } catch (const StatusError &) {
        // Refusals are for who asks for a file, not for who has one.
        throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
    }
}

void saveDefinition(Database &database, const FileDefinition &definition) {
    Bytes specification = statisticsReply(definition, 0, definition.preallocatedPages, {});
    Statement update = database.prepare(
        "UPDATE definition SET generation = generation + 1, specification = ?1 WHERE id = 1");
    update.bind(1, ByteView(specification)).run();
}

Bytes packCounts(const std::vector<uint64_t> &counts) {
    Bytes bytes(counts.size() * countSize, '\0');
    for (size_t count = 0; count < counts.size(); ++count)
        storeU64(reinterpret_cast<uint8_t *>(bytes.data()) + count * countSize, counts[count]);
    return bytes;
}

std::vector<uint64_t> unpackCounts(ByteView bytes) {
    std::vector<uint64_t> counts(bytes.size() / countSize);
    for (size_t count = 0; count < counts.size(); ++count)
        counts[count] = loadU64(reinterpret_cast<const uint8_t *>(bytes.data()) + count * countSize);
    return counts;
}

}  // namespace vantrel::embedded
