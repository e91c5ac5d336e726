#include "embedded/storage/sqlite_buckets.h"

#include "embedded/storage/sqlite_schema.h"
#include "embedded/storage/storage.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

OrderPlace placeIn(const Statement &row) {
    return {Bytes(row.bytes(0)), row.integer(1)};
}

uint64_t countIn(const Statement &row) {
    return static_cast<uint64_t>(row.integer(2));
}

Statement &bindPlace(Statement &statement, int parameter, const OrderPlace &place) {
    return statement.bind(parameter, ByteView(place.key)).bind(parameter + 1, place.address);
}

Statement &bindLevel(Statement &statement, uint8_t order, int level, const OrderPlace &place) {
    statement.bind(1, int64_t{order}).bind(2, int64_t{level});
    return bindPlace(statement, 3, place);
}

}  // namespace

void throwBucketDamage() {
    throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
}

void SqliteBuckets::createTable() {
    database_.execute(
        "CREATE TABLE IF NOT EXISTS bucket(number INTEGER NOT NULL, level INTEGER NOT NULL, "
        "key BLOB NOT NULL, address INTEGER NOT NULL, count INTEGER NOT NULL, "
        "PRIMARY KEY(level, number, key, address)) WITHOUT ROWID");
}

Statement &SqliteBuckets::prepared(Statement &statement, const char *sql) {
    if (!statement)
        statement = database_.prepare(sql);
    return statement;
}

SqliteBuckets::EntryStatements &SqliteBuckets::entriesOf(uint8_t order) {
    EntryStatements &statements = entries_[order];
    if (statements.total)
        return statements;
    bool isPhysical = order == physicalOrder;
    std::string key = isPhysical ? "x'', " : "key, ";
    std::string table = isPhysical ? "record" : indexTableName(order);
    std::string from = isPhysical ? " WHERE address >= ?2" : " WHERE (key, address) >= (?1, ?2)";
    std::string to = isPhysical ? " AND address < ?4" : " AND (key, address) < (?3, ?4)";
    std::string sorted = isPhysical ? " ORDER BY address" : " ORDER BY key, address";
    statements.nth = database_.prepare(
        ("SELECT " + key + "address FROM " + table + from + sorted + " LIMIT 1 OFFSET ?3").c_str());
    statements.between = database_.prepare(("SELECT count(*) FROM " + table + from + to).c_str());
    statements.total = database_.prepare(("SELECT count(*) FROM " + table).c_str());
    return statements;
}

std::optional<OrderPlace> SqliteBuckets::nth(uint8_t order, int level, const OrderPlace &from,
                                             uint64_t number) {
    bool isEntry = level == 0;
    StatementUse row(isEntry ? entriesOf(order).nth
                             : prepared(nth_,
                                        "SELECT key, address FROM bucket WHERE number = ?1 AND level = ?2 "
                                        "AND (key, address) >= (?3, ?4) ORDER BY key, address "
                                        "LIMIT 1 OFFSET ?5"));
    if (isEntry)
        bindPlace(*row, 1, from).bind(3, number);
    else
        bindLevel(*row, order, level, from).bind(5, number);
    if (!row->step())
        return std::nullopt;
    return placeIn(*row);
}

uint64_t SqliteBuckets::countBetween(uint8_t order, const OrderPlace &from, const OrderPlace &to) {
    StatementUse count(entriesOf(order).between);
    bindPlace(bindPlace(*count, 1, from), 3, to).step();
    return static_cast<uint64_t>(count->integer(0));
}

uint64_t SqliteBuckets::countEntries(uint8_t order) {
    StatementUse count(entriesOf(order).total);
    count->step();
    return static_cast<uint64_t>(count->integer(0));
}

uint64_t SqliteBuckets::countUnder(uint8_t order, int level, const OrderPlace &from, uint64_t rows) {
    if (level == 0)
        return rows;
    StatementUse buckets(bucketsFrom(order, level, from));
    uint64_t count = 0;
    for (; rows > 0 && buckets->step(); --rows)
        count += countIn(*buckets);
    return count;
}

Statement &SqliteBuckets::bucketsFrom(uint8_t order, int level, const OrderPlace &from) {
    return bindLevel(prepared(bucketsFrom_,
                              "SELECT key, address, count FROM bucket WHERE number = ?1 AND level = ?2 "
                              "AND (key, address) >= (?3, ?4) ORDER BY key, address"),
                     order, level, from);
}

Bucket SqliteBuckets::bucketAt(uint8_t order, int level, const OrderPlace &place) {
    StatementUse bucket(prepared(bucketAt_,
                                 "SELECT key, address, count FROM bucket WHERE number = ?1 AND level = ?2 "
                                 "AND (key, address) <= (?3, ?4) ORDER BY key DESC, address DESC LIMIT 1"));
    if (!bindLevel(*bucket, order, level, place).step())
        throwBucketDamage();
    return {placeIn(*bucket), countIn(*bucket)};
}

std::vector<Bucket> SqliteBuckets::bucketsOf(uint8_t order, int level) {
    std::vector<Bucket> found;
    OrderPlace start;
    StatementUse buckets(bucketsFrom(order, level, start));
    while (buckets->step())
        found.push_back({placeIn(*buckets), countIn(*buckets)});
    return found;
}

void SqliteBuckets::insert(uint8_t order, int level, const Bucket &bucket) {
    Statement &statement = prepared(insert_, "INSERT INTO bucket VALUES(?1, ?2, ?3, ?4, ?5)");
    bindLevel(statement, order, level, bucket.start).bind(5, bucket.count).run();
}

void SqliteBuckets::setCount(uint8_t order, int level, const Bucket &bucket) {
    Statement &statement =
        prepared(setCount_,
                 "UPDATE bucket SET count = ?5 WHERE number = ?1 AND level = ?2 AND key = ?3 "
                 "AND address = ?4");
    bindLevel(statement, order, level, bucket.start).bind(5, bucket.count).run();
}

void SqliteBuckets::erase(uint8_t order, int level, const Bucket &bucket) {
    Statement &statement = prepared(erase_,
                                    "DELETE FROM bucket WHERE number = ?1 AND level = ?2 AND key = ?3 "
                                    "AND address = ?4");
    bindLevel(statement, order, level, bucket.start).run();
}

uint64_t SqliteBuckets::sum(uint8_t order, int level) {
    StatementUse sum(prepared(sum_, "SELECT sum(count) FROM bucket WHERE number = ?1 AND level = ?2"));
    sum->bind(1, int64_t{order}).bind(2, int64_t{level}).step();
    return static_cast<uint64_t>(sum->integer(0));
}

void SqliteBuckets::eraseAll(uint8_t order) {
    Statement erase = database_.prepare("DELETE FROM bucket WHERE number = ?1");
    erase.bind(1, int64_t{order}).run();
}

uint64_t SqliteBuckets::enter(uint8_t order, int level, const OrderPlace &place, OrderPlace *start) {
    OrderPlace from = *start;
    StatementUse buckets(bucketsFrom(order, level, from));
    uint64_t passed = 0;
    uint64_t last = 0;
    while (buckets->step()) {
        OrderPlace next = placeIn(*buckets);
        if (next > place)
            break;
        passed += last;
        last = countIn(*buckets);
        *start = std::move(next);
    }
    return passed;
}

uint64_t SqliteBuckets::enter(uint8_t order, int level, uint64_t rank, OrderPlace *start) {
    OrderPlace from = *start;
    StatementUse buckets(bucketsFrom(order, level, from));
    uint64_t passed = 0;
    for (;; passed += countIn(*buckets)) {
        if (!buckets->step())
            throwBucketDamage();
        if (passed + countIn(*buckets) > rank)
            break;
    }
    *start = placeIn(*buckets);
    return passed;
}

}  // namespace vantrel::embedded
