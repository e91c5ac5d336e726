#include "embedded/storage/sqlite_counts.h"

#include <algorithm>

#include "embedded/storage/sqlite_schema.h"
#include "embedded/storage/storage.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

// How many rows of the level below a bucket covers.
struct Limits {
    uint64_t largest;
    uint64_t built;
    uint64_t split;  // the left one of the two that a split makes
    uint64_t merged;
    uint64_t smallest;
};
constexpr Limits limitsOfEntries{128, 96, 64, 64, 32};
constexpr Limits limitsOfBuckets{48, 36, 24, 24, 12};

const Limits &limitsAt(int level) {
    return level == 1 ? limitsOfEntries : limitsOfBuckets;
}

constexpr size_t mostChanges = 10000;
constexpr int greatestHeight = 12;

// In front of every entry; the first bucket of each level begins there.
const OrderPlace orderStart;

[[noreturn]] void throwDamage() {
    throw StatusError{VANTREL_STATUS_INPUT_OUTPUT_ERROR};
}

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

void SqliteCounts::load() {
    heights_ = {};
    isReshaped_ = false;
    entries_.clear();
    if (database_.integer("SELECT 1 FROM sqlite_master WHERE name = 'counted_order'") == 0)
        return;
    Statement trees = database_.prepare("SELECT number, height FROM counted_order");
    while (trees.step()) {
        int64_t order = trees.integer(0);
        int64_t height = trees.integer(1);
        if (order < 0 || order > UINT8_MAX || height < 1 || height > greatestHeight)
            throwDamage();
        heights_[static_cast<size_t>(order)] = static_cast<uint8_t>(height);
    }
}

void SqliteCounts::setHeight(uint8_t order, int height) {
    Statement set = database_.prepare(height == 0 ? "DELETE FROM counted_order WHERE number = ?1"
                                                  : "REPLACE INTO counted_order VALUES(?1, ?2)");
    set.bind(1, int64_t{order});
    if (height != 0)
        set.bind(2, int64_t{height});
    set.run();
    heights_[order] = static_cast<uint8_t>(height);
    isReshaped_ = true;
}

// Rows

Statement &SqliteCounts::prepared(Statement &statement, const char *sql) {
    if (!statement)
        statement = database_.prepare(sql);
    return statement;
}

SqliteCounts::EntryStatements &SqliteCounts::entriesOf(uint8_t order) {
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

std::optional<OrderPlace> SqliteCounts::nth(uint8_t order, int level, const OrderPlace &from,
                                            uint64_t number) {
    bool isEntry = level == 0;
    StatementUse row(isEntry ? entriesOf(order).nth
                             : prepared(nthBucket_,
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

uint64_t SqliteCounts::countBetween(uint8_t order, const OrderPlace &from, const OrderPlace &to) {
    StatementUse count(entriesOf(order).between);
    bindPlace(bindPlace(*count, 1, from), 3, to).step();
    return static_cast<uint64_t>(count->integer(0));
}

uint64_t SqliteCounts::countEntries(uint8_t order) {
    StatementUse count(entriesOf(order).total);
    count->step();
    return static_cast<uint64_t>(count->integer(0));
}

// The entries that so many rows of a level cover.
uint64_t SqliteCounts::countUnder(uint8_t order, int level, const OrderPlace &from, uint64_t rows) {
    if (level == 0)
        return rows;
    StatementUse buckets(bucketsFrom(order, level, from));
    uint64_t count = 0;
    for (; rows > 0 && buckets->step(); --rows)
        count += countIn(*buckets);
    return count;
}

Statement &SqliteCounts::bucketsFrom(uint8_t order, int level, const OrderPlace &from) {
    return bindLevel(prepared(bucketsFrom_,
                              "SELECT key, address, count FROM bucket WHERE number = ?1 AND level = ?2 "
                              "AND (key, address) >= (?3, ?4) ORDER BY key, address"),
                     order, level, from);
}

SqliteCounts::Bucket SqliteCounts::bucketAt(uint8_t order, int level, const OrderPlace &place) {
    StatementUse bucket(prepared(bucketAt_,
                                 "SELECT key, address, count FROM bucket WHERE number = ?1 AND level = ?2 "
                                 "AND (key, address) <= (?3, ?4) ORDER BY key DESC, address DESC LIMIT 1"));
    if (!bindLevel(*bucket, order, level, place).step())
        throwDamage();
    return {placeIn(*bucket), countIn(*bucket)};
}

std::vector<SqliteCounts::Bucket> SqliteCounts::bucketsOf(uint8_t order, int level) {
    std::vector<Bucket> found;
    StatementUse buckets(bucketsFrom(order, level, orderStart));
    while (buckets->step())
        found.push_back({placeIn(*buckets), countIn(*buckets)});
    return found;
}

void SqliteCounts::insertBucket(uint8_t order, int level, const Bucket &bucket) {
    Statement &insert = prepared(insertBucket_, "INSERT INTO bucket VALUES(?1, ?2, ?3, ?4, ?5)");
    bindLevel(insert, order, level, bucket.start).bind(5, bucket.count).run();
}

void SqliteCounts::setCount(uint8_t order, int level, const Bucket &bucket) {
    Statement &set = prepared(setCount_,
                              "UPDATE bucket SET count = ?5 WHERE number = ?1 AND level = ?2 AND key = ?3 "
                              "AND address = ?4");
    bindLevel(set, order, level, bucket.start).bind(5, bucket.count).run();
}

void SqliteCounts::eraseBucket(uint8_t order, int level, const Bucket &bucket) {
    Statement &erase = prepared(eraseBucket_,
                                "DELETE FROM bucket WHERE number = ?1 AND level = ?2 AND key = ?3 "
                                "AND address = ?4");
    bindLevel(erase, order, level, bucket.start).run();
}

// Counting

uint64_t SqliteCounts::total(uint8_t order) {
    flush();
    return countAll(order);
}

uint64_t SqliteCounts::countAll(uint8_t order) {
    if (!isBuilt(order))
        return countEntries(order);
    StatementUse sum(prepared(sum_, "SELECT sum(count) FROM bucket WHERE number = ?1 AND level = ?2"));
    sum->bind(1, int64_t{order}).bind(2, int64_t{heights_[order]}).step();
    return static_cast<uint64_t>(sum->integer(0));
}

uint64_t SqliteCounts::countInFront(uint8_t order, const OrderPlace &place) {
    flush();
    OrderPlace start = orderStart;
    uint64_t count = 0;
    for (int level = heights_[order]; level > 0; --level)
        count += enterBucketOf(order, level, place, &start);
    return count + countBetween(order, start, place);
}

std::optional<OrderPlace> SqliteCounts::find(uint8_t order, uint64_t rank) {
    flush();
    OrderPlace start = orderStart;
    for (int level = heights_[order]; level > 0; --level)
        rank -= enterBucketOf(order, level, rank, &start);
    return nth(order, 0, start, rank);
}

bool SqliteCounts::hasEntry(uint8_t order, const OrderPlace &place) {
    return nth(order, 0, place, 0) == place;
}

// Moves the start on to the bucket of the level that has the place; returns what lies between.
uint64_t SqliteCounts::enterBucketOf(uint8_t order, int level, const OrderPlace &place, OrderPlace *start) {
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

// The same for the entry that stands so far behind the start.
uint64_t SqliteCounts::enterBucketOf(uint8_t order, int level, uint64_t rank, OrderPlace *start) {
    OrderPlace from = *start;
    StatementUse buckets(bucketsFrom(order, level, from));
    uint64_t passed = 0;
    for (;; passed += countIn(*buckets)) {
        if (!buckets->step())
            throwDamage();
        if (passed + countIn(*buckets) > rank)
            break;
    }
    *start = placeIn(*buckets);
    return passed;
}

// Upkeep

void SqliteCounts::build(uint8_t order) {
    database_.execute(
        "CREATE TABLE IF NOT EXISTS counted_order(number INTEGER PRIMARY KEY, height INTEGER NOT NULL);"
        "CREATE TABLE IF NOT EXISTS bucket(number INTEGER NOT NULL, level INTEGER NOT NULL, key BLOB NOT "
        "NULL, "
        "address INTEGER NOT NULL, count INTEGER NOT NULL, PRIMARY KEY(number, level, key, address)) "
        "WITHOUT ROWID");
    do
        addLevel(order);
    while (isTooWide(order));
}

// Whether the uppermost level has too many buckets.
bool SqliteCounts::isTooWide(uint8_t order) {
    return nth(order, heights_[order], orderStart, limitsOfBuckets.largest).has_value();
}

void SqliteCounts::addLevel(uint8_t order) {
    int height = heights_[order] + 1;
    buildLevel(order, height);
    setHeight(order, height);
}

void SqliteCounts::buildLevel(uint8_t order, int level) {
    uint64_t rows = limitsAt(level).built;
    uint64_t left = countAll(order);
    OrderPlace start = orderStart;
    for (;;) {
        std::optional<OrderPlace> next = nth(order, level - 1, start, rows);
        uint64_t count = next ? countUnder(order, level - 1, start, rows) : left;
        insertBucket(order, level, {start, count});
        if (!next)
            return;
        left -= count;
        start = std::move(*next);
    }
}

void SqliteCounts::drop(uint8_t order) {
    if (!isBuilt(order))
        return;
    changes_.erase(order);
    Statement erase = database_.prepare("DELETE FROM bucket WHERE number = ?1");
    erase.bind(1, int64_t{order}).run();
    setHeight(order, 0);
}

void SqliteCounts::change(uint8_t order, ByteView key, int64_t address, int64_t difference) {
    if (!isBuilt(order))
        return;
    changes_[order].push_back({{Bytes(key), address}, difference});
    if (++changeCount_ >= mostChanges)
        flush();
}

void SqliteCounts::rolledBack() {
    changes_.clear();
    changeCount_ = 0;
    isHalfCounted_ = false;
}

void SqliteCounts::flush() {
    if (isHalfCounted_)
        throwDamage();
    if (changeCount_ == 0)
        return;
    isHalfCounted_ = true;
    for (auto &[order, changes] : changes_) {
        std::sort(changes.begin(), changes.end(),
                  [](const Change &one, const Change &other) { return one.place < other.place; });
        count(order, changes);
    }
    rolledBack();
}

// The tree takes its new shape when the counts of all levels are right.
void SqliteCounts::count(uint8_t order, const Changes &changes) {
    for (int level = heights_[order]; level > 1; --level)
        count(order, level, changes);
    for (const Bucket &bucket : count(order, 1, changes)) {
        if (bucket.count > limitsOfEntries.largest || bucket.count < limitsOfEntries.smallest)
            reshape(order, bucket.start);
    }
}

// Returns the buckets that changed. The last change is looked up first: what follows the start of its bucket
// lies in it.
std::vector<SqliteCounts::Bucket> SqliteCounts::count(uint8_t order, int level, const Changes &changes) {
    std::vector<Bucket> changed;
    for (size_t left = changes.size(); left > 0;) {
        Bucket bucket = bucketAt(order, level, changes[left - 1].place);
        for (; left > 0 && changes[left - 1].place >= bucket.start; --left)
            bucket.count += static_cast<uint64_t>(changes[left - 1].difference);
        setCount(order, level, bucket);
        changed.push_back(std::move(bucket));
    }
    return changed;
}

// Splits the bucket that a place now lies in until none is too large, or merges it.
void SqliteCounts::reshape(uint8_t order, const OrderPlace &start) {
    Bucket bucket = bucketAt(order, 1, start);
    if (bucket.count < limitsOfEntries.smallest)
        return mergeWithNeighbour(order, 1, bucket);
    while (bucket.count > limitsOfEntries.largest) {
        split(order, 1, bucket);
        bucket = bucketAt(order, 1, *nth(order, 1, bucket.start, 1));
    }
}

void SqliteCounts::split(uint8_t order, int level, const Bucket &bucket) {
    uint64_t rows = limitsAt(level).split;
    std::optional<OrderPlace> middle = nth(order, level - 1, bucket.start, rows);
    if (!middle)
        throwDamage();
    uint64_t count = countUnder(order, level - 1, bucket.start, rows);
    setCount(order, level, {bucket.start, count});
    insertBucket(order, level, {*middle, bucket.count - count});
    if (level == heights_[order]) {
        if (isTooWide(order))
            addLevel(order);
        return;
    }
    Bucket parent = bucketAt(order, level + 1, bucket.start);
    if (holdMore(order, level + 1, parent, parent, limitsOfBuckets.largest))
        split(order, level + 1, parent);
}

// Only children of one parent are merged, so that every bucket begins where one of its children does.
void SqliteCounts::mergeWithNeighbour(uint8_t order, int level, const Bucket &bucket) {
    std::optional<OrderPlace> next = nth(order, level, bucket.start, 1);
    if (next && !isFirstChild(order, level, *next) &&
        merge(order, level, bucket, bucketAt(order, level, *next)))
        return;
    if (isFirstChild(order, level, bucket.start))
        return;
    OrderPlace before{bucket.start.key, bucket.start.address - 1};
    merge(order, level, bucketAt(order, level, before), bucket);
}

bool SqliteCounts::merge(uint8_t order, int level, const Bucket &left, const Bucket &right) {
    if (holdMore(order, level, left, right, limitsAt(level).merged))
        return false;
    eraseBucket(order, level, right);
    setCount(order, level, {left.start, left.count + right.count});
    if (level == heights_[order])
        return true;
    Bucket parent = bucketAt(order, level + 1, left.start);
    if (!holdMore(order, level + 1, parent, parent, limitsOfBuckets.smallest))
        mergeWithNeighbour(order, level + 1, parent);
    return true;
}

bool SqliteCounts::isFirstChild(uint8_t order, int level, const OrderPlace &start) {
    if (level == heights_[order])
        return start == orderStart;
    return bucketAt(order, level + 1, start).start == start;
}

// Whether one bucket or two neighbours hold more than so many entries or buckets.
bool SqliteCounts::holdMore(uint8_t order, int level, const Bucket &first, const Bucket &last,
                            uint64_t rows) {
    if (level == 1)
        return first.count + (first.start == last.start ? 0 : last.count) > rows;
    std::optional<OrderPlace> child = nth(order, level - 1, first.start, rows);
    return child && bucketAt(order, level, *child).start <= last.start;
}

// Verification

bool SqliteCounts::areTrue() {
    flush();
    for (size_t order = 0; order < heights_.size(); ++order) {
        if (heights_[order] != 0 && !isTrue(static_cast<uint8_t>(order)))
            return false;
    }
    return true;
}

bool SqliteCounts::entriesAreCovered(uint8_t order, const std::vector<Bucket> &buckets) {
    uint64_t left = countEntries(order);
    for (size_t bucket = 0; bucket + 1 < buckets.size(); ++bucket) {
        uint64_t count = countBetween(order, buckets[bucket].start, buckets[bucket + 1].start);
        if (buckets[bucket].count != count)
            return false;
        left -= count;
    }
    return !buckets.empty() && buckets.front().start == orderStart && buckets.back().count == left;
}

bool SqliteCounts::isTrue(uint8_t order) {
    std::vector<Bucket> children = bucketsOf(order, 1);
    if (!entriesAreCovered(order, children))
        return false;
    for (int level = 2; level <= heights_[order]; ++level) {
        std::vector<Bucket> parents = bucketsOf(order, level);
        auto parent = parents.begin();
        std::vector<Bucket> expected;
        for (const Bucket &child : children) {
            bool beginsParent = parent != parents.end() && parent->start == child.start;
            if (beginsParent) {
                expected.push_back({child.start, 0});
                ++parent;
            }
            if (expected.empty())
                return false;
            expected.back().count += child.count;
        }
        bool areEqual = std::equal(parents.begin(), parents.end(), expected.begin(), expected.end(),
                                   [](const Bucket &one, const Bucket &other) {
                                       return one.start == other.start && one.count == other.count;
                                   });
        if (!areEqual)
            return false;
        children = std::move(parents);
    }
    return true;
}

}  // namespace vantrel::embedded
