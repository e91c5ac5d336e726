#include <algorithm>

#include "embedded/storage/sqlite_storage.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr uint64_t longestRecord = INT32_MAX;

// In the order of the columns of every read.
enum Column : int { addressColumn, createTimeColumn, updateTimeColumn, lengthColumn, dataColumn, keyColumn };

// A record that does not fit the file's definition, or itself, is thrown as an input/output error.
void takeRecord(const Statement &statement, size_t fixedLength, StoredRecord *record) {
    record->address = statement.integer(addressColumn);
    record->createTime = static_cast<uint64_t>(statement.integer(createTimeColumn));
    record->updateTime = static_cast<uint64_t>(statement.integer(updateTimeColumn));
    record->length = static_cast<uint64_t>(statement.integer(lengthColumn));
    record->data = statement.bytes(dataColumn);
    require(record->data.size() >= fixedLength && record->length <= longestRecord &&
                record->data.size() == std::min(record->length, headSize),
            VANTREL_STATUS_INPUT_OUTPUT_ERROR);
}

constexpr const char *entryColumns =
    "SELECT r.address, r.created, r.updated, r.length, r.data, e.key FROM index_%u e CROSS JOIN record r "
    "ON r.address = e.address ";

constexpr const char *recordColumns = "SELECT address, created, updated, length, data FROM record ";

}  // namespace

void SqliteStorage::Scan::reset() {
    if (onRow)
        statement.reset();
    onRow = false;
}

bool SqliteStorage::advance(Scan &scan, StoredRecord *found) {
    scan.onRow = false;
    if (!scan.statement.step()) {
        scan.statement.reset();
        return false;
    }
    try {
        takeRecord(scan.statement, definition_->recordLength, found);
    } catch (...) {
        scan.statement.reset();
        throw;
    }
    scan.address = found->address;
    scan.onRow = true;
    return true;
}

bool SqliteStorage::findEntry(uint8_t index, Direction direction, ByteView key, int64_t address,
                              StoredEntry *found) {
    beginReading();
    IndexStatements &statements = statementsOf(index);
    bool isForward = direction == Direction::forward;
    Scan &scan = isForward ? statements.forward : statements.backward;
    if (!scan.standsAt(key, address)) {
        prepared(scan.statement, index, entryColumns,
                 isForward ? "WHERE (e.key, e.address) > (?1, ?2) ORDER BY e.key, e.address"
                           : "WHERE (e.key, e.address) < (?1, ?2) ORDER BY e.key DESC, e.address DESC");
        scan.reset();
        scan.boundKey.assign(key);
        scan.statement.bind(1, ByteView(scan.boundKey)).bind(2, address);
    }
    if (!advance(scan, &found->record))
        return false;
    found->key = scan.statement.bytes(keyColumn);
    scan.key.assign(found->key);
    return true;
}

bool SqliteStorage::findLastEntry(uint8_t index, StoredEntry *found) {
    beginReading();
    Statement &last = prepared(statementsOf(index).last, index, entryColumns,
                               "ORDER BY e.key DESC, e.address DESC LIMIT 1");
    last.reset();
    if (!last.step())
        return false;
    takeRecord(last, definition_->recordLength, &found->record);
    found->key = last.bytes(keyColumn);
    return true;
}

int64_t SqliteStorage::firstAddress(uint8_t index, ByteView key) {
    beginReading();
    StatementUse first(prepared(statementsOf(index).first, index, "SELECT address FROM index_%u ",
                                "WHERE key = ?1 ORDER BY address LIMIT 1"));
    first->bind(1, key);
    return first->step() ? first->integer(0) : 0;
}

bool SqliteStorage::readRecord(int64_t address, StoredRecord *found) {
    beginReading();
    return takeRecordAt(address, found);
}

bool SqliteStorage::takeRecordAt(int64_t address, StoredRecord *found) {
    Statement &read = prepared(readRecord_, recordColumns, "WHERE address = ?1");
    read.reset();
    if (!read.bind(1, address).step())
        return false;
    takeRecord(read, definition_->recordLength, found);
    return true;
}

bool SqliteStorage::findRecord(Direction direction, int64_t address, StoredRecord *found) {
    beginReading();
    bool isForward = direction == Direction::forward;
    Scan &scan = isForward ? recordsForward_ : recordsBackward_;
    if (!scan.standsAt({}, address)) {
        prepared(
            scan.statement, recordColumns,
            isForward ? "WHERE address > ?1 ORDER BY address" : "WHERE address < ?1 ORDER BY address DESC");
        scan.reset();
        scan.statement.bind(1, address);
    }
    return advance(scan, found);
}

void SqliteStorage::readTail(int64_t address, uint64_t offset, uint64_t length, char *target) {
    beginReading();
    tail_.read(address, offset, length, target);
}

}  // namespace vantrel::embedded
